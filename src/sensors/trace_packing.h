// SPDX-License-Identifier: Apache-2.0
// The sensor trace as one packed text, as the report keeps it: base64 (no padding) of a bit
// stream in which every column is kept to its step (keptTraceColumn), its missing samples
// listed, its values as the misses of the best of a few predictions in a Rice code, a flat
// column as its first value only; the flags as runs; the remaining numbers as they are.
#pragma once

#include "model/sensor_trace.h"

#include <optional>
#include <string>

namespace quarbel {

std::string packTrace(const SensorTrace& trace);

// The trace in `text`, or the problem that stopped it ("trace ends early", "trace is neither
// an object nor packed base64 text"); unpackTrace(packTrace(t)) is t with its columns kept.
std::optional<std::string> unpackTrace(const std::string& text, SensorTrace& trace);

} // namespace quarbel
