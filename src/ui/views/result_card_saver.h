// SPDX-License-Identifier: Apache-2.0
// The window's "Save Result Card" actions: a non-modal save dialog with the suggested
// name, the PNG written atomically, then a brief note naming where it went, or a warning
// when the card could not be saved.
#pragma once

#include "ui/cards/card_content.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class QImage;
class QLabel;
class QWidget;

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class MainWindow;

class ResultCardSaver : public QObject {
    Q_OBJECT
  public:
    // Wires the result panel's and the summary panel's save buttons. Both `store` and
    // `window` must outlive the saver. Main thread only.
    ResultCardSaver(BenchmarkStore& store, MainWindow& window);

    // How long the note that a card was saved stays up.
    static constexpr int kNoticeMilliseconds = 6000;

    // The card of the selected benchmark's completed result; nothing for a benchmark that
    // has none, or that was skipped or failed.
    void saveSelectedBenchmarkCard();
    // The global card of the last run summary; nothing without one.
    void saveSummaryCard();

    // What the cards would show now, captured whole: later changes do not reach a card
    // whose dialog is already open.
    static cards::BenchmarkCardContent benchmarkCardContent(const BenchmarkStore& store, BenchmarkID id);
    static cards::SummaryCardContent summaryCardContent(const BenchmarkStore& store);

  private:
    // Opens the dialog; on a chosen file renders and writes, warning on failure. A
    // cancelled dialog does nothing.
    void save(std::function<QImage()> render, const QString& suggestedName);
    void showSaveError(const QString& reason);
    void showSaved(const QString& path);
    static QString defaultDirectory(); // Pictures, else home

    BenchmarkStore& store_;
    QPointer<QWidget> window_;
    QString directory_; // where the last card went; the dialog opens there
    QPointer<QLabel> notice_;
    QTimer noticeTimer_;
};

} // namespace quarbel::ui
