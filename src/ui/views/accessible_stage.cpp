// SPDX-License-Identifier: Apache-2.0
#include "ui/views/accessible_stage.h"

#include "run/benchmark_store.h"
#include "ui/views/accessible_panel.h"
#include "ui/views/accessible_text.h"
#include "ui/views/run_header.h"
#include "ui/views/stage_view.h"
#include "ui/views/theme.h"

#include <QAccessibleEvent>
#include <QCoreApplication>
#include <QWindow>

namespace quarbel::ui {
namespace {

struct Speech {
    Q_DECLARE_TR_FUNCTIONS(Speech)
};

// The stage's progress bar, painted under the status line. It lives as long as the
// stage's interface, which deletes it.
class AccessibleStageProgress : public AccessiblePaintedPart, public QAccessibleValueInterface {
  public:
    explicit AccessibleStageProgress(const AccessibleStage& stage) : stage_(stage) {}

    QString text(QAccessible::Text t) const override {
        switch (t) {
        case QAccessible::Name: return Speech::tr("Progress");
        case QAccessible::Description: return spokenProgressDetail(stage_.store());
        case QAccessible::Value: return Speech::tr("%1 %").arg(progressPercent(stage_.store()));
        default: return {};
        }
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override { return stage_.rect(); }
    QAccessible::Role role() const override { return QAccessible::ProgressBar; }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.readOnly = true;
        state.invisible = !stage_.stage()->isVisible();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return nullptr;
    }
    QVariant currentValue() const override { return progressPercent(stage_.store()); }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

  protected:
    QWidget* owner() const override { return stage_.stage(); }

  private:
    const AccessibleStage& stage_;
};

} // namespace

AccessibleStage::AccessibleStage(StageView* stage, BenchmarkStore& store)
    : AccessiblePanel(
          stage, QAccessible::Grouping,
          [store = &store] {
              // Through a wait for the machine to cool, the stage names the benchmark it waits for.
              const auto running = store->runningID();
              if (!running) return Speech::tr("Live stage");
              return theme::qstring(title(nextInRun(*store).value_or(*running)));
          },
          [store = &store] { return spokenStageStatus(*store); }),
      store_(store),
      progressId_(QAccessible::registerAccessibleInterface(new AccessibleStageProgress(*this))) {
    follow(&store_, &BenchmarkStore::runningIDChanged);
    follow(&store_, &BenchmarkStore::currentRunTickChanged);
    follow(&store_, &BenchmarkStore::passTextChanged);
    follow(&store_, &BenchmarkStore::cooldownTextChanged);
}

StageView* AccessibleStage::stage() const { return static_cast<StageView*>(widget()); }

AccessibleStage::~AccessibleStage() { QAccessible::deleteAccessibleInterface(progressId_); }

QAccessibleInterface* AccessibleStage::progress() const {
    return QAccessible::accessibleInterface(progressId_);
}

int AccessibleStage::childCount() const { return AccessiblePanel::childCount() + 1; }

QAccessibleInterface* AccessibleStage::child(int index) const {
    return index == AccessiblePanel::childCount() ? progress() : AccessiblePanel::child(index);
}

int AccessibleStage::indexOfChild(const QAccessibleInterface* child) const {
    return child == progress() ? AccessiblePanel::childCount() : AccessiblePanel::indexOfChild(child);
}

QAccessibleInterface* AccessibleStage::childAt(int x, int y) const {
    // The bar covers no widget child; a point on the stage is the stage's own.
    for (int i = 0; i < AccessiblePanel::childCount(); ++i)
        if (QAccessibleInterface* child = AccessiblePanel::child(i); child && child->rect().contains(x, y))
            return child;
    return nullptr;
}

void AccessibleStage::announceChanges() {
    AccessiblePanel::announceChanges();
    const int percent = progressPercent(store_);
    const int step = store_.runningID() ? announcedStep(percent) : -1;
    if (step == spokenStep_) return;
    spokenStep_ = step;
    if (step < 0) return;
    QAccessibleValueChangeEvent event(progress(), percent);
    QAccessible::updateAccessibility(&event);
}

} // namespace quarbel::ui
