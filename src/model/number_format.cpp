// SPDX-License-Identifier: Apache-2.0
#include "model/number_format.h"

#include <array>
#include <charconv>
#include <cmath>

namespace quarbel {

std::string format(double value, int digits) {
    if (digits < 0) digits = 0;
    // std::to_chars rounds exactly like printf but never consults the C locale, which a
    // Qt application sets from the environment.
    std::array<char, 512> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    if (result.ec != std::errc{}) return std::isnan(value) ? "nan" : (value < 0 ? "-inf" : "inf");
    return std::string(buffer.data(), result.ptr);
}

std::string signedFormat(double value, int digits) {
    const std::string text = format(value, digits);
    return std::signbit(value) || std::isnan(value) ? text : "+" + text;
}

std::string formatGeneral(double value) {
    std::array<char, 64> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 6);
    if (result.ec != std::errc{}) return "?";
    return std::string(buffer.data(), result.ptr);
}

std::string formatBytes(std::int64_t bytes) {
    const double gib = static_cast<double>(bytes) * 0x1p-30;
    if (gib >= 1.0) return format(gib, gib < 10.0 ? 1 : 0) + " GB";
    return format(static_cast<double>(bytes) * 0x1p-20, 0) + " MB";
}

} // namespace quarbel
