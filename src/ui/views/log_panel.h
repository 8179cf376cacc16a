// SPDX-License-Identifier: Apache-2.0
// The store's log: every line it keeps, newest at the bottom, in a read-only view that
// scrolls and whose text can be selected and copied.
#pragma once

#include <QStringList>
#include <QWidget>

class QPlainTextEdit;

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class LogPanel : public QWidget {
    Q_OBJECT
  public:
    explicit LogPanel(BenchmarkStore& store, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {600, 150}; }

    QPlainTextEdit* textView() const { return text_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void follow();

    BenchmarkStore& store_;
    QPlainTextEdit* text_;
    QStringList shown_; // the lines the view holds, as the store last listed them
};

} // namespace quarbel::ui
