// SPDX-License-Identifier: Apache-2.0
// A past run's results, read only, as its report holds them: the run summary (or the word
// that it was stopped) and a row per benchmark with status, score, both measurements and
// duration; the reason under each benchmark that was skipped or failed.
#pragma once

#include "results/run_report.h"

#include <QString>
#include <QWidget>

#include <optional>

namespace quarbel::ui {

class RunResultsView : public QWidget {
    Q_OBJECT
  public:
    explicit RunResultsView(QWidget* parent = nullptr);

    // Shows `report`; without one, shows `problem` (why the run could not be read).
    void setReport(std::optional<RunReport> report, QString problem = {});
    const std::optional<RunReport>& report() const { return report_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::optional<RunReport> report_;
    QString problem_;
};

} // namespace quarbel::ui
