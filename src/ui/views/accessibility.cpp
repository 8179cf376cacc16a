// SPDX-License-Identifier: Apache-2.0
#include "ui/views/accessibility.h"

#include "run/benchmark_store.h"
#include "ui/views/accessible_panel.h"
#include "ui/views/accessible_sidebar.h"
#include "ui/views/accessible_stage.h"
#include "ui/views/accessible_text.h"
#include "ui/views/comparison_view.h"
#include "ui/views/log_panel.h"
#include "ui/views/result_panel.h"
#include "ui/views/run_header.h"
#include "ui/views/score_gauge.h"
#include "ui/views/sidebar_view.h"
#include "ui/views/stage_view.h"
#include "ui/views/summary_panel.h"
#include "ui/views/system_panel.h"
#include "ui/views/theme.h"
#include "ui/views/trend_view.h"

#include <QCoreApplication>
#include <QPointer>

namespace quarbel::ui {
namespace {

struct Speech {
    Q_DECLARE_TR_FUNCTIONS(Speech)
};

// The store the views of this process read; Qt's factories take no context of their own.
QPointer<BenchmarkStore>& viewedStore() {
    static QPointer<BenchmarkStore> store;
    return store;
}

QAccessibleInterface* storeViewInterface(QWidget* widget, BenchmarkStore* store) {
    if (auto* sidebar = qobject_cast<SidebarView*>(widget)) return new AccessibleSidebar(sidebar, *store);
    if (auto* stage = qobject_cast<StageView*>(widget)) return new AccessibleStage(stage, *store);
    if (qobject_cast<ScoreGauge*>(widget)) {
        auto* gauge = new AccessiblePanel(
            widget, QAccessible::StaticText, [] { return Speech::tr("Global score"); },
            [store] { return spokenGlobalScore(*store); });
        gauge->follow(store, &BenchmarkStore::rowsChanged);
        return gauge;
    }
    if (qobject_cast<ResultPanel*>(widget)) {
        auto* result = new AccessiblePanel(
            widget, QAccessible::Grouping,
            [store] { return Speech::tr("Result of %1").arg(theme::qstring(title(store->selectedID()))); },
            [store] { return spokenResult(*store, store->selectedID()); });
        result->follow(store, &BenchmarkStore::rowsChanged);
        result->follow(store, &BenchmarkStore::selectedIDChanged);
        return result;
    }
    if (qobject_cast<RunHeader*>(widget)) {
        auto* header = new AccessiblePanel(
            widget, QAccessible::ToolBar, [] { return Speech::tr("Run controls"); },
            [store] { return spokenRunState(*store); });
        header->follow(store, &BenchmarkStore::runningIDChanged);
        header->follow(store, &BenchmarkStore::busyChanged);
        return header;
    }
    if (auto* system = qobject_cast<SystemPanel*>(widget))
        return new AccessiblePanel(
            widget, QAccessible::Grouping, [] { return Speech::tr("System"); },
            [store, system] { return spokenSystem(*store, *system); });
    if (qobject_cast<LogPanel*>(widget))
        return new AccessiblePanel(
            widget, QAccessible::Grouping, [] { return Speech::tr("Log"); }, [] { return QString(); });
    if (qobject_cast<SummaryPanel*>(widget)) {
        auto* summary = new AccessiblePanel(
            widget, QAccessible::Grouping, [] { return Speech::tr("Run summary"); },
            [store] { return spokenRunSummary(*store); });
        summary->follow(store, &BenchmarkStore::runSummaryChanged);
        summary->follow(store, &BenchmarkStore::runConditionChanged);
        return summary;
    }
    return nullptr;
}

// The history charts are fed whole from outside and read when asked.
QAccessibleInterface* chartInterface(QWidget* widget) {
    if (auto* trend = qobject_cast<TrendView*>(widget))
        return new AccessiblePanel(
            widget, QAccessible::Chart, [] { return Speech::tr("Score trend"); },
            [trend] { return spokenTrend(*trend); });
    if (auto* comparison = qobject_cast<ComparisonView*>(widget))
        return new AccessiblePanel(
            widget, QAccessible::Chart, [] { return Speech::tr("Comparison of two runs"); },
            [comparison] { return spokenComparison(comparison->table()); });
    return nullptr;
}

QAccessibleInterface* viewFactory(const QString& className, QObject* object) {
    // Asked once per class up the hierarchy: answer for the view's own class only.
    if (!object || !object->isWidgetType() || className != QLatin1String(object->metaObject()->className()))
        return nullptr;
    auto* widget = static_cast<QWidget*>(object);
    if (QAccessibleInterface* chart = chartInterface(widget)) return chart;
    if (BenchmarkStore* store = viewedStore()) return storeViewInterface(widget, store);
    return nullptr;
}

} // namespace

void installAccessibility(BenchmarkStore& store) {
    viewedStore() = &store;
    QAccessible::removeFactory(viewFactory);
    QAccessible::installFactory(viewFactory);
}

} // namespace quarbel::ui
