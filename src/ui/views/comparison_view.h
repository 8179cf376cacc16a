// SPDX-License-Identifier: Apache-2.0
// Two runs side by side, benchmark by benchmark: both scores, the change from the first to
// the second in percent, the noise band and a coloured verdict. Fed with ready-made texts;
// knows nothing of where runs are kept.
#pragma once

#include "model/comparison.h"

#include <QStringList>
#include <QWidget>

#include <vector>

namespace quarbel::ui {

struct ComparisonTable {
    QString beforeLabel; // "A: 11/23/26 2:15 PM · Full suite · quick", the start in local time
    QString afterLabel;
    struct Row {
        QString title, before, after;
        QString change; // "+4.2 %", "−12.0 %"; "-" when either score is missing
        QString band;   // "±3.0 %": the change's 95 % interval, or the fixed noise band
        Verdict verdict = Verdict::withinNoise;
    };
    std::vector<Row> rows;
    QStringList warnings;
    QString emptyText; // shown instead of the table when there are no rows
};

class ComparisonView : public QWidget {
    Q_OBJECT
  public:
    explicit ComparisonView(QWidget* parent = nullptr);
    void setTable(ComparisonTable table);
    const ComparisonTable& table() const { return table_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    ComparisonTable table_;
};

// Green for faster, red for slower, grey for within noise.
QColor verdictColor(Verdict verdict);

} // namespace quarbel::ui
