// SPDX-License-Identifier: Apache-2.0
#include "app/about_window.h"

#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

namespace quarbel::app {
namespace {

QLabel* centredLabel(const QString& text, qreal pointScale, QFont::Weight weight, const QColor& colour) {
    QLabel* label = makeTextLabel(text, pointScale, weight, colour);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

} // namespace

QuarbelAboutView::QuarbelAboutView(const QString& version, QWidget* parent) : QWidget(parent) {
    setWindowTitle(tr("About Quarbel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 28, 32, 28);
    layout->setSpacing(8);

    auto* icon = new QLabel;
    icon->setAlignment(Qt::AlignHCenter);
    icon->setPixmap(QApplication::windowIcon().pixmap(96, 96));
    layout->addWidget(icon);
    layout->addWidget(centredLabel(QStringLiteral("Quarbel"), 1.9, QFont::Bold, kPrimaryText));
    layout->addWidget(centredLabel(tr("Version %1").arg(version), 1.0, QFont::Normal, kSecondaryText));
    layout->addSpacing(8);
    layout->addWidget(centredLabel(tr("Sustained CPU, memory, storage, RAW and GPU benchmarks, scored "
                                      "in Quarbel points."),
                                   1.0, QFont::Normal, kPrimaryText));
    layout->addWidget(
        centredLabel(tr("Everything stays on this machine."), 1.0, QFont::Normal, kPrimaryText));
    layout->addSpacing(8);
    layout->addWidget(centredLabel(tr("Interface font: Inter, copyright 2016-2022 The Inter Project "
                                      "Authors, under the SIL Open Font License 1.1."),
                                   0.85, QFont::Normal, kSecondaryText));
    layout->addStretch(1);
    applyDarkPalette(*this);
    setFixedWidth(440);
    adjustSize();
}

QuarbelAboutWindowController::QuarbelAboutWindowController(QString version)
    : SharedWindowController(
          [version = std::move(version)] { return std::make_unique<QuarbelAboutView>(version); }) {}

} // namespace quarbel::app
