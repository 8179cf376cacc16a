// SPDX-License-Identifier: Apache-2.0
// The main window as assistive technology reads it (the AT-SPI test of the desktop program hears
// the events that carry its changes), and the Save Result Card dialog and what it writes.
#include "support/window_fixture.h"
#include "ui/views/comparison_view.h"
#include "ui/views/result_card_saver.h"
#include "ui/views/result_panel.h"
#include "ui/views/sidebar_view.h"
#include "ui/views/stage_view.h"
#include "ui/views/summary_panel.h"
#include "ui/views/theme.h"
#include "ui/views/trend_view.h"

#include <QAccessible>
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

void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

namespace {

struct Window : test::Window {
    Window() : test::Window({}, {}, true) {}
};

QAccessibleInterface* view(QWidget* widget) { return QAccessible::queryAccessibleInterface(widget); }
QString said(QWidget* w, QAccessible::Text text = QAccessible::Description) { return view(w)->text(text); }

QString titleOf(BenchmarkID id) { return theme::qstring(title(id)); }

QAccessibleInterface* itemOf(const Window& w, BenchmarkID id) {
    QAccessibleInterface* list = view(w.window.sidebar());
    for (int i = 0; i < list->childCount(); ++i)
        if (list->child(i)->text(QAccessible::Name) == titleOf(id)) return list->child(i);
    return nullptr;
}

struct CardWindow : test::Window {
    ResultCardSaver* saver = new ResultCardSaver(store, window);

    QFileDialog* openDialog(QPushButton* button) {
        QTest::mouseClick(button, Qt::LeftButton);
        return window.findChild<QFileDialog*>(QStringLiteral("resultCardDialog"));
    }
    QMessageBox* errorBox() const { return window.findChild<QMessageBox*>("resultCardError"); }
    QLabel* savedNote() const { return window.findChild<QLabel*>(QStringLiteral("resultCardSaved")); }
    // Saves through the dialog `button` opens, as its Save button would; returns where it opened.
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

TEST(AccessibleViews, TheListHasAnItemPerPaintedRowThatPressingSelects) {
    Window w;
    SidebarView* sidebar = w.window.sidebar();
    QAccessibleInterface* list = view(sidebar);
    ASSERT_EQ(list->role(), QAccessible::List);
    ASSERT_EQ(list->childCount(), int(kBenchmarkCount));
    int lastTop = -1;
    for (int i = 0; i < list->childCount(); ++i) {
        QAccessibleInterface* item = list->child(i);
        const auto id = std::find_if(kAllBenchmarks.begin(), kAllBenchmarks.end(),
                                     [&](BenchmarkID b) { return itemOf(w, b) == item; });
        ASSERT_NE(id, kAllBenchmarks.end()) << item->text(QAccessible::Name).toStdString();
        EXPECT_EQ(item->rect(),
                  QRect(sidebar->mapToGlobal(sidebar->rowRect(*id).topLeft()), sidebar->rowRect(*id).size()));
        EXPECT_GT(item->rect().top(), lastTop) << "items in the order they are painted";
        lastTop = item->rect().top();
        EXPECT_EQ(list->childAt(item->rect().center().x(), item->rect().center().y()), item);
        EXPECT_EQ(list->indexOfChild(item), i);

        item->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        EXPECT_EQ(w.store.selectedID(), *id);
        EXPECT_TRUE(item->state().selected);
        EXPECT_EQ(said(w.window.resultPanel(), QAccessible::Name), "Result of " + titleOf(*id));
    }
    EXPECT_EQ(list->focusChild(), nullptr);
    w.window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&w.window));
    sidebar->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(list->focusChild(), itemOf(w, w.store.selectedID()))
        << "the focused list speaks for its selection";
    EXPECT_TRUE(list->focusChild()->state().focused);
}

TEST(AccessibleViews, AnItemAndTheResultSayWhatBecameOfTheirBenchmark) {
    const struct {
        BenchmarkID id;
        FakeBehaviour behaviour;
        QString item;   // the item's description
        QString result; // in the result panel's description
    } cases[] = {
        {BenchmarkID::ssdRandom, FakeBehaviour::instantOk,
         "Done, " + theme::qstring(scoreText(250)) + " points",
         theme::qstring(scoreText(250)) + " Quarbel points"},
        {BenchmarkID::ssdSequential, FakeBehaviour::failing, QStringLiteral("Failed"),
         QStringLiteral("Failed: Disk exploded.")},
        {BenchmarkID::cpuCrypto, FakeBehaviour::skipping, QStringLiteral("Skipped"),
         QStringLiteral("Skipped: No device here.")},
    };
    Window w;
    for (const auto& [id, behaviour, itemText, result] : cases) {
        w.fakes.set(id, behaviour, 250);
        w.store.setSelectedID(id);
        QAccessibleInterface* item = itemOf(w, id);
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->text(QAccessible::Description), QStringLiteral("Not run"));
        w.store.runSelected();
        ASSERT_TRUE(w.waitIdle());
        EXPECT_EQ(item->text(QAccessible::Description), itemText);
        EXPECT_TRUE(said(w.window.resultPanel()).startsWith(result))
            << said(w.window.resultPanel()).toStdString();
    }
}

TEST(AccessibleViews, TheStageNamesTheRunningBenchmarkAndItsProgressInPercent) {
    Window w;
    w.fakes.set(BenchmarkID::cpuInteger, FakeBehaviour::gated);
    w.store.setSelectedID(BenchmarkID::cpuInteger);
    w.store.runSelected();
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.store.currentRunProgress() >= 0.02; }, 5000));
    QAccessibleInterface* stage = view(w.window.stage());
    EXPECT_EQ(stage->text(QAccessible::Name), titleOf(BenchmarkID::cpuInteger));
    EXPECT_EQ(stage->text(QAccessible::Description), w.window.stage()->statusLine());
    QAccessibleInterface* progress = stage->child(stage->childCount() - 1);
    ASSERT_EQ(progress->role(), QAccessible::ProgressBar);
    const int percent = progress->valueInterface()->currentValue().toInt();
    EXPECT_EQ(percent, int(w.store.currentRunProgress() * 100));
    EXPECT_EQ(progress->text(QAccessible::Value), QStringLiteral("%1 %").arg(percent));
    w.fakes.release();
    ASSERT_TRUE(w.waitIdle());
    EXPECT_EQ(stage->text(QAccessible::Name), QStringLiteral("Live stage"));
    EXPECT_TRUE(stage->text(QAccessible::Description).isEmpty());
}

TEST(AccessibleViews, TheHistoryChartsSayWhatTheyDraw) {
    Window w; // installs the interfaces
    TrendView trend;
    const QString empty = QStringLiteral("Nothing to draw.");
    trend.setSeries({{QStringLiteral("Memory Stream"), Qt::red, {{120}}}}, QStringLiteral("Quick runs."),
                    empty);
    EXPECT_EQ(view(&trend)->text(QAccessible::Description), empty) << "one run draws no trend";
    trend.setSeries({{QStringLiteral("Memory Stream"), Qt::red, {{120}}},
                     {QStringLiteral("SSD Random"), Qt::blue, {{80}, {95}, {90}}},
                     {QStringLiteral("CPU Workflow"), Qt::green, {}}},
                    QStringLiteral("Quick runs."), empty);
    const QString said = view(&trend)->text(QAccessible::Description);
    for (const QString& part : {QStringLiteral("Quick runs."), QStringLiteral("Memory Stream: one run"),
                                QStringLiteral("SSD Random: 3 runs, from ") + theme::qstring(scoreText(80)) +
                                    " to " + theme::qstring(scoreText(90))})
        EXPECT_TRUE(said.contains(part)) << said.toStdString() << " lacks " << part.toStdString();
    EXPECT_FALSE(said.contains(QStringLiteral("CPU Workflow"))) << "a benchmark without runs is not drawn";

    ComparisonView comparison;
    comparison.setTable({QStringLiteral("A: first"),
                         QStringLiteral("B: second"),
                         {{QStringLiteral("SSD Random"), QStringLiteral("80.00"), QStringLiteral("90.00"),
                           QStringLiteral("+12.5 %"), QStringLiteral("±3.0 %"), Verdict::faster}},
                         {},
                         {}});
    EXPECT_EQ(view(&comparison)->text(QAccessible::Description),
              QStringLiteral("A: first. B: second. SSD Random: 80.00 then 90.00, +12.5 % ±3.0 %, ") +
                  theme::qstring(verdictText(Verdict::faster)));
}

// Cancel writes nothing; the folder that refused a card is not offered again.
TEST(ResultCardSaver, SavesThroughANonModalDialogWarnsOnAFailedWriteAndNeedsAScore) {
    CardWindow w;
    w.fakes.set(BenchmarkID::cpuCrypto, FakeBehaviour::failing);
    w.store.setSelectedID(BenchmarkID::cpuInteger);
    QPushButton* single = w.window.resultPanel()->saveCardButton();
    EXPECT_FALSE(single->isEnabled()) << "no outcome yet, nothing to save";
    w.store.runSelected();
    ASSERT_TRUE(w.waitIdle());
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
    box->close();
    QTest::qWait(1);
    EXPECT_EQ(w.saveTo(single, dir.filePath(QStringLiteral("third.png"))), QDir(dir.path()).absolutePath())
        << "the folder that refused the card is not offered again";

    w.store.setSelectedID(BenchmarkID::cpuCrypto); // failed: no score for a card
    w.store.runSelected();
    ASSERT_TRUE(w.waitIdle());
    w.saver->saveSelectedBenchmarkCard();
    EXPECT_EQ(w.window.findChild<QFileDialog*>(QStringLiteral("resultCardDialog")), nullptr);
}
