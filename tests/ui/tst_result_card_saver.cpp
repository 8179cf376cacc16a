// SPDX-License-Identifier: Apache-2.0
// The window's Save Result Card buttons, the dialog they open and what it writes.
#include "support/window_fixture.h"
#include "ui/views/result_card_saver.h"
#include "ui/views/result_panel.h"
#include "ui/views/summary_panel.h"

#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace quarbel;
using namespace quarbel::ui;
using quarbel::test::FakeBehaviour;

namespace {

struct Window : test::Window {
    ResultCardSaver* saver = new ResultCardSaver(store, window);

    void runSelected() {
        store.runSelected();
        ASSERT_TRUE(waitIdle());
    }
    // Clicks `button` and returns the dialog it opened.
    QFileDialog* openDialog(QPushButton* button) {
        QTest::mouseClick(button, Qt::LeftButton);
        return window.findChild<QFileDialog*>(QStringLiteral("resultCardDialog"));
    }
    QMessageBox* errorBox() const {
        return window.findChild<QMessageBox*>(QStringLiteral("resultCardError"));
    }
    QLabel* savedNote() const { return window.findChild<QLabel*>(QStringLiteral("resultCardSaved")); }
    // Saves through the dialog `button` opens, as its Save button would; returns the folder
    // the dialog opened in.
    QString saveTo(QPushButton* button, const QString& path) {
        QFileDialog* dialog = openDialog(button);
        if (!dialog) return {};
        const QString opened = dialog->directory().absolutePath();
        dialog->selectFile(path);
        static_cast<QDialog*>(dialog)->accept();
        QTest::qWait(1); // the finished dialog goes on the next turn of the event loop
        return opened;
    }
};

} // namespace

// Cancel writes nothing; a failed write warns with the system's reason, and the folder that
// refused the card is not offered again; a benchmark without a score has no card to save.
TEST(ResultCardSaver, SavesThroughANonModalDialogWarnsOnAFailedWriteAndNeedsAScore) {
    Window w;
    w.fakes.set(BenchmarkID::openCLCompute, FakeBehaviour::skipping);
    w.fakes.set(BenchmarkID::cpuCrypto, FakeBehaviour::failing);
    w.store.setSelectedID(BenchmarkID::cpuInteger);
    QPushButton* single = w.window.resultPanel()->saveCardButton();
    EXPECT_FALSE(single->isEnabled()) << "no outcome yet, nothing to save";
    w.runSelected();
    ASSERT_TRUE(single->isEnabled());

    QTemporaryDir dir;
    const struct {
        QPushButton* button;
        QString prefix;
        QSize size;
    } cases[] = {
        {single, QStringLiteral("Quarbel-CPU-Single-Core-Result-"), QSize(1400, 900)},
        {w.window.summaryPanel()->saveCardButton(), QStringLiteral("Quarbel-Global-Result-"),
         QSize(1500, 1220)},
    };
    for (const auto& c : cases) {
        QFileDialog* dialog = w.openDialog(c.button);
        ASSERT_NE(dialog, nullptr) << c.prefix.toStdString();
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_FALSE(dialog->isModal()) << "the window stays usable";
        EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptSave);
        const QString suggested = QFileInfo(dialog->selectedFiles().value(0)).fileName();
        EXPECT_TRUE(suggested.startsWith(c.prefix) && suggested.endsWith(QStringLiteral(".png")))
            << suggested.toStdString();

        const QString path = dir.filePath(suggested);
        dialog->selectFile(path);
        static_cast<QDialog*>(dialog)->accept(); // the dialog's own accept, as its Save button
        EXPECT_EQ(QImage(path).size(), c.size) << suggested.toStdString();
        EXPECT_EQ(w.errorBox(), nullptr);
        ASSERT_NE(w.savedNote(), nullptr) << "a saved card says where it went";
        EXPECT_TRUE(w.savedNote()->isVisible());
        EXPECT_TRUE(w.savedNote()->text().contains(path)) << w.savedNote()->text().toStdString();
        QTest::qWait(1); // the finished dialog goes on the next turn of the event loop
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !w.savedNote()->isVisible(); },
                                ResultCardSaver::kNoticeMilliseconds + 2000))
        << "the note goes by itself";

    QFileDialog* dialog = w.openDialog(single);
    ASSERT_NE(dialog, nullptr);
    dialog->selectFile(dir.filePath(QStringLiteral("cancelled.png")));
    dialog->reject();
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("cancelled.png"))));
    EXPECT_EQ(w.errorBox(), nullptr);
    QTest::qWait(1);

    const QString unreachable = dir.filePath(QStringLiteral("missing/second.png"));
    EXPECT_EQ(w.saveTo(single, unreachable), QDir(dir.path()).absolutePath());
    QMessageBox* box = w.errorBox();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->icon(), QMessageBox::Warning);
    EXPECT_EQ(box->text(), QStringLiteral("Could not save result card"));
    EXPECT_FALSE(box->informativeText().isEmpty());
    EXPECT_NE(box->informativeText(), QStringLiteral("Quarbel could not render the PNG card."));
    EXPECT_FALSE(QFileInfo::exists(unreachable));
    box->close();
    QTest::qWait(1);
    EXPECT_EQ(w.saveTo(single, dir.filePath(QStringLiteral("third.png"))), QDir(dir.path()).absolutePath())
        << "the folder that refused the card is not offered again";

    for (const BenchmarkID id : {BenchmarkID::openCLCompute, BenchmarkID::cpuCrypto}) {
        w.store.setSelectedID(id);
        w.runSelected();
        EXPECT_FALSE(single->isEnabled()) << title(id);
        w.saver->saveSelectedBenchmarkCard();
        EXPECT_EQ(w.window.findChild<QFileDialog*>(QStringLiteral("resultCardDialog")), nullptr) << title(id);
    }
}
