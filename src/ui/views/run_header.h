// SPDX-License-Identifier: Apache-2.0
// The run controls and the active benchmark: Run, All, Stop and the Accuracy Mode and
// Quick switches, enabled exactly when they can act; the active title, elapsed against target,
// a progress bar and the live rate; while the run waits for the machine to cool, the wait.
#pragma once

#include "model/catalogue.h"

#include <QWidget>

#include <optional>

class QAbstractButton;
class QPushButton;

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class RunHeader : public QWidget {
    Q_OBJECT
  public:
    explicit RunHeader(BenchmarkStore& store, QWidget* parent = nullptr);

    QPushButton* runButton() const { return run_; }
    QPushButton* allButton() const { return all_; }
    QPushButton* stopButton() const { return stop_; }
    QAbstractButton* accuracySwitch() const { return accuracy_; }
    QAbstractButton* quickSwitch() const { return quick_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void updateControls();
    QRect statusRect() const;

    BenchmarkStore& store_;
    QPushButton* run_;
    QPushButton* all_;
    QPushButton* stop_;
    QAbstractButton* accuracy_;
    QAbstractButton* quick_;
};

// The first benchmark of the active run that has not ended: the one running, or the one a wait
// for the machine to cool comes before; none when no run is active.
std::optional<BenchmarkID> nextInRun(const BenchmarkStore& store);

} // namespace quarbel::ui
