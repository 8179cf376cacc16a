// SPDX-License-Identifier: Apache-2.0
#include "app/other_runs_question.h"

#include "app/shared_window.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace quarbel::app {

OtherRunsChoice askAboutOtherRuns(QWidget* parent, const QString& otherRuns) {
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Quarbel"),
                    QCoreApplication::translate("quarbel::app::OtherRunsQuestion",
                                                "Another Quarbel run is going on (%1).")
                        .arg(otherRuns),
                    QMessageBox::NoButton, parent);
    box.setObjectName(QStringLiteral("otherRunsQuestion"));
    box.setInformativeText(QCoreApplication::translate(
        "quarbel::app::OtherRunsQuestion",
        "Both runs would share the cores, the memory and the disk, and the results of both would be skewed. "
        "Wait for it to end, and this run starts then; Stop gives up waiting."));
    box.setStyleSheet(darkControlsStyle());
    QPushButton* wait =
        box.addButton(QCoreApplication::translate("quarbel::app::OtherRunsQuestion", "Wait for It"),
                      QMessageBox::AcceptRole);
    QPushButton* anyway =
        box.addButton(QCoreApplication::translate("quarbel::app::OtherRunsQuestion", "Run Anyway"),
                      QMessageBox::DestructiveRole);
    QPushButton* cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(wait);
    box.setEscapeButton(cancel);
    box.exec();
    if (box.clickedButton() == wait) return OtherRunsChoice::wait;
    if (box.clickedButton() == anyway) return OtherRunsChoice::runAnyway;
    return OtherRunsChoice::cancel;
}

} // namespace quarbel::app
