// SPDX-License-Identifier: Apache-2.0
// The live stage as assistive technology sees it: named after the running benchmark and
// described by its status line, with a progress bar child whose value is the run's
// progress in percent. The progress is announced in steps of a tenth, so that a screen
// reader is told how far the run has come without being flooded at the clock's rate.
#pragma once

#include "ui/views/accessible_panel.h"

namespace quarbel {
class BenchmarkStore;
}

namespace quarbel::ui {

class StageView;

class AccessibleStage : public AccessiblePanel {
  public:
    AccessibleStage(StageView* stage, BenchmarkStore& store);
    ~AccessibleStage() override;

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;

    StageView* stage() const;
    const BenchmarkStore& store() const { return store_; }

    // Progress is announced when it enters another tenth: 0 ... 10.
    static int announcedStep(int percent) { return percent / 10; }

  protected:
    void announceChanges() override;

  private:
    QAccessibleInterface* progress() const;

    BenchmarkStore& store_;
    QAccessible::Id progressId_;
    int spokenStep_ = -1;
};

} // namespace quarbel::ui
