// SPDX-License-Identifier: Apache-2.0
// The window's saved settings kept in memory, for tests.
#pragma once

#include "app/main_window_placement.h"

#include <map>

namespace quarbel::test {

class MemorySettings : public app::FrameSettings {
  public:
    QVariant value(const QString& key) const override {
        const auto it = values.find(key);
        return it == values.end() ? QVariant() : it->second;
    }
    void setValue(const QString& key, const QVariant& value) override {
        values[key] = value;
        if (key == QLatin1String(app::MainWindowPlacement::kFrameKey)) ++frameWrites;
    }
    std::map<QString, QVariant> values;
    int frameWrites = 0;
};

} // namespace quarbel::test
