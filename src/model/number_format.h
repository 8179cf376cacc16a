// SPDX-License-Identifier: Apache-2.0
// The number texts every workload uses, so that all benchmarks round the same way.
// Locale-independent: the decimal separator is always a point.
#pragma once

#include <cstdint>
#include <string>

namespace quarbel {

// Fixed-point with exactly `digits` decimals, rounded as printf's "%.<digits>f".
std::string format(double value, int digits);

// The same with a sign always written: "+4.2", "-0.3", as printf's "%+.<digits>f".
std::string signedFormat(double value, int digits);

// Six significant digits in the shorter of fixed and scientific notation, as printf's "%g".
std::string formatGeneral(double value);

// Binary size: "x.y GB" below 10 GiB, "x GB" above, else whole " MB".
std::string formatBytes(std::int64_t bytes);

} // namespace quarbel
