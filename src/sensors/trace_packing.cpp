// SPDX-License-Identifier: Apache-2.0
#include "sensors/trace_packing.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace quarbel {
namespace {

struct Malformed {
    std::string text;
};

// The packed form: one base64 text (no padding) of a bit stream, most significant bit first.
// Integers are Exp-Golomb codes; each column is its step, its missing samples and its values
// on that step, the first as it is and the rest as differences (of the first or second order,
// whichever is shorter) in a Rice code; a flat column is its first value only.
constexpr std::uint64_t kPackedVersion = 1;
constexpr std::uint64_t kMostPackedPoints = 1 << 16;
constexpr std::int64_t kLargestStep = std::int64_t{1} << 40; // far beyond any kept column
constexpr std::uint64_t kRiceEscape = 6;
constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint64_t zigzag(std::int64_t v) {
    return v < 0 ? (static_cast<std::uint64_t>(-(v + 1)) << 1) | 1 : static_cast<std::uint64_t>(v) << 1;
}
std::int64_t unzigzag(std::uint64_t v) {
    return (v & 1) ? -static_cast<std::int64_t>(v >> 1) - 1 : static_cast<std::int64_t>(v >> 1);
}

class BitWriter {
  public:
    void bit(bool on) {
        if (used_ == 8) bytes_.push_back(0), used_ = 0;
        if (on) bytes_.back() = static_cast<char>(bytes_.back() | (0x80 >> used_));
        ++used_;
    }
    void bits(std::uint64_t value, int count) {
        for (int i = count - 1; i >= 0; --i)
            bit((value >> i) & 1);
    }
    void number(std::uint64_t value) {
        const int width = static_cast<int>(std::bit_width(value + 1));
        bits(0, width - 1);
        bits(value + 1, width);
    }
    // A Rice code whose quotient, from kRiceEscape on, continues as a number: a step in a
    // column costs a few bits more than noise, not a run as long as the step.
    void rice(std::uint64_t value, int k) {
        const std::uint64_t q = value >> k;
        bits((std::uint64_t{1} << std::min(q, kRiceEscape)) - 1, static_cast<int>(std::min(q, kRiceEscape)));
        if (q >= kRiceEscape)
            number(q - kRiceEscape);
        else
            bit(false);
        bits(value, k);
    }
    std::string base64() const {
        std::string text;
        for (std::size_t i = 0; i < bytes_.size() * 8; i += 6) {
            int sextet = 0;
            for (std::size_t b = i; b < i + 6; ++b)
                sextet = sextet << 1 | (b < bytes_.size() * 8 ? (bytes_[b / 8] >> (7 - b % 8)) & 1 : 0);
            text += kBase64[sextet];
        }
        return text;
    }

  private:
    std::string bytes_;
    int used_ = 8;
};

class BitReader {
  public:
    explicit BitReader(const std::string& text) {
        std::size_t filled = 0;
        for (char c : text) {
            const char* at = std::strchr(kBase64, c);
            if (c == 0 || at == nullptr) throw Malformed{"trace is neither an object nor packed base64 text"};
            for (int b = 5; b >= 0; --b, ++filled) {
                if (filled % 8 == 0) bytes_.push_back(0);
                if (((at - kBase64) >> b) & 1)
                    bytes_.back() = static_cast<char>(bytes_.back() | (0x80 >> filled % 8));
            }
        }
    }
    bool bit() {
        if (at_ >= bytes_.size() * 8) throw Malformed{"trace ends early"};
        const bool on = (bytes_[at_ / 8] >> (7 - at_ % 8)) & 1;
        ++at_;
        return on;
    }
    std::uint64_t bits(int count) {
        std::uint64_t value = 0;
        for (int i = 0; i < count; ++i)
            value = value << 1 | (bit() ? 1 : 0);
        return value;
    }
    std::uint64_t number() {
        int zeros = 0;
        while (!bit())
            if (++zeros > 62) throw Malformed{"trace holds a number out of range"};
        return ((std::uint64_t{1} << zeros) | bits(zeros)) - 1;
    }
    std::uint64_t rice(int k) {
        std::uint64_t q = 0;
        while (q < kRiceEscape && bit())
            ++q;
        if (q == kRiceEscape) q += number();
        if (q >> (63 - k) != 0) throw Malformed{"trace holds a number out of range"};
        return q << k | bits(k);
    }

  private:
    std::string bytes_;
    std::size_t at_ = 0;
};

// How the next value of a column is predicted from those before it.
constexpr int kFlat = 0, kPreviousValue = 1, kPreviousSlope = 2, kSteadyRate = 3;

std::int64_t predicted(int way, const std::vector<std::int64_t>& steps, std::size_t i, std::int64_t rate) {
    if (way == kPreviousSlope && i > 1) return 2 * steps[i - 1] - steps[i - 2];
    return steps[i - 1] + (way == kSteadyRate ? rate : 0);
}

void packColumn(BitWriter& out, const std::vector<float>& values, const TraceColumn& column) {
    const int exponent = traceStepExponent(values, column);
    std::vector<std::int64_t> steps;
    std::size_t last = 0, missing = 0;
    for (float v : values)
        missing += std::isfinite(v) ? 0 : 1;
    out.number(missing);
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!std::isfinite(values[i]))
            out.number(i - last), last = i + 1;
        else
            steps.push_back(static_cast<std::int64_t>(std::round(std::ldexp(values[i], -exponent))));
    if (steps.empty()) return;
    out.number(zigzag(exponent));
    out.number(zigzag(steps[0]));
    // Each way of predicting the next value, and the Rice parameter that codes its misses
    // shortest; a flat column needs none.
    const std::int64_t rate = steps.size() > 1 ? std::llround(static_cast<double>(steps.back() - steps[0]) /
                                                              static_cast<double>(steps.size() - 1))
                                               : 0;
    std::vector<std::uint64_t> best;
    int bestWay = 0, bestK = 0;
    std::uint64_t bestBits = 0;
    for (int way = kPreviousValue; way <= kSteadyRate; ++way) {
        std::vector<std::uint64_t> misses;
        for (std::size_t i = 1; i < steps.size(); ++i)
            misses.push_back(zigzag(steps[i] - predicted(way, steps, i, rate)));
        for (int k = 0; k < 16; ++k) {
            std::uint64_t total = way == kSteadyRate ? 2 * std::bit_width(zigzag(rate) + 1) - 1 : 0;
            for (std::uint64_t r : misses) {
                const std::uint64_t q = r >> k;
                total +=
                    static_cast<std::uint64_t>(k) +
                    (q < kRiceEscape ? q + 1 : kRiceEscape + 2 * std::bit_width(q - kRiceEscape + 1) - 1);
            }
            if (bestWay == 0 || total < bestBits) best = misses, bestWay = way, bestK = k, bestBits = total;
        }
    }
    const bool flat = std::all_of(steps.begin(), steps.end(), [&](std::int64_t s) { return s == steps[0]; });
    out.bits(static_cast<std::uint64_t>(flat ? kFlat : bestWay), 2);
    if (flat) return;
    out.bits(static_cast<std::uint64_t>(bestK), 4);
    if (bestWay == kSteadyRate) out.number(zigzag(rate));
    for (std::uint64_t r : best)
        out.rice(r, bestK);
}

std::vector<float> unpackColumn(BitReader& in, std::size_t points, const std::string& name) {
    const std::uint64_t missingCount = in.number();
    if (missingCount > points) throw Malformed{"trace." + name + " misses more samples than it has"};
    std::vector<bool> missing(points, false);
    for (std::uint64_t i = 0, at = 0; i < missingCount; ++i, ++at) {
        at += in.number();
        if (at >= points) throw Malformed{"trace." + name + " misses a sample past its end"};
        missing[at] = true;
    }
    std::vector<float> values(points, std::numeric_limits<float>::quiet_NaN());
    if (missingCount == points) return values;
    const std::int64_t exponent = unzigzag(in.number());
    if (exponent < -150 || exponent > 150) throw Malformed{"trace." + name + " has a step out of range"};
    std::vector<std::int64_t> steps{unzigzag(in.number())};
    const auto way = static_cast<int>(in.bits(2));
    const int k = way == kFlat ? 0 : static_cast<int>(in.bits(4));
    const std::int64_t rate = way == kSteadyRate ? unzigzag(in.number()) : 0;
    if (rate > kLargestStep || rate < -kLargestStep)
        throw Malformed{"trace." + name + " holds a value out of range"};
    for (std::size_t i = 1; i < points - missingCount; ++i) {
        const std::int64_t next =
            way == kFlat ? steps[0] : predicted(way, steps, i, rate) + unzigzag(in.rice(k));
        if (next > kLargestStep || next < -kLargestStep)
            throw Malformed{"trace." + name + " holds a value out of range"};
        steps.push_back(next);
    }
    for (std::size_t i = 0, s = 0; i < points; ++i) {
        if (missing[i]) continue;
        values[i] = std::ldexp(static_cast<float>(steps[s++]), static_cast<int>(exponent));
        if (!std::isfinite(values[i])) throw Malformed{"trace." + name + " holds a value out of range"};
    }
    return values;
}

template <typename Flag> void packFlags(BitWriter& out, const std::vector<Flag>& flags) {
    out.bit(!flags.empty());
    for (std::size_t i = 0; i < flags.size();) {
        std::size_t run = 1;
        while (i + run < flags.size() && flags[i + run] == flags[i])
            ++run;
        out.number(flags[i]);
        out.number(run - 1);
        i += run;
    }
}

template <typename Flag> std::vector<Flag> unpackFlags(BitReader& in, std::size_t points, const char* name) {
    std::vector<Flag> flags;
    if (!in.bit()) return flags;
    while (flags.size() < points) {
        const std::uint64_t value = in.number(), run = in.number() + 1;
        if (value > std::numeric_limits<Flag>::max() || run > points - flags.size())
            throw Malformed{std::string("trace.") + name + " holds something other than flags"};
        flags.insert(flags.end(), run, static_cast<Flag>(value));
    }
    return flags;
}

// A number kept as a whole number of up to 2^32, else as a double.
void packNumber(BitWriter& out, std::optional<double> value) {
    out.bit(value.has_value());
    if (!value) return;
    const bool whole = *value >= 0 && *value <= 4294967296.0 && std::floor(*value) == *value;
    out.bit(whole);
    if (whole)
        out.number(static_cast<std::uint64_t>(*value));
    else
        out.bits(std::bit_cast<std::uint64_t>(*value), 64);
}

std::optional<double> unpackNumber(BitReader& in, const char* name) {
    if (!in.bit()) return std::nullopt;
    const double value = in.bit() ? static_cast<double>(in.number()) : std::bit_cast<double>(in.bits(64));
    if (!std::isfinite(value)) throw Malformed{std::string("trace.") + name + " is not finite"};
    return value;
}

} // namespace

std::string packTrace(const SensorTrace& trace) {
    BitWriter out;
    const std::size_t points = trace.seconds.size();
    out.number(kPackedVersion);
    out.number(points);
    for (const TraceColumn& column : kTraceColumns) {
        const auto& values = trace.*column.values;
        out.bit(!values.empty() && values.size() == points);
        if (!values.empty() && values.size() == points) packColumn(out, values, column);
    }
    packFlags(out, trace.gpuThrottleReasons.size() == points ? trace.gpuThrottleReasons
                                                             : std::vector<std::uint32_t>{});
    packFlags(out, trace.onBattery.size() == points ? trace.onBattery : std::vector<std::uint8_t>{});
    out.number(trace.thermalThrottleEvents);
    packNumber(out, trace.packageLimitWatts);
    packNumber(out, trace.criticalCelsius);
    return out.base64();
}

std::optional<std::string> unpackTrace(const std::string& text, SensorTrace& trace) {
    try {
        trace = {};
        BitReader in(text);
        if (in.number() != kPackedVersion)
            throw Malformed{"trace is packed in a form this version cannot read"};
        const std::uint64_t points = in.number();
        if (points > kMostPackedPoints) throw Malformed{"trace has too many points"};
        for (const TraceColumn& column : kTraceColumns)
            if (in.bit()) trace.*column.values = unpackColumn(in, points, column.name);
        if (trace.seconds.size() != points) throw Malformed{"trace has no seconds"};
        trace.gpuThrottleReasons = unpackFlags<std::uint32_t>(in, points, "gpuThrottleReasons");
        trace.onBattery = unpackFlags<std::uint8_t>(in, points, "onBattery");
        trace.thermalThrottleEvents = in.number();
        if (trace.thermalThrottleEvents > 1'000'000'000'000'000u)
            throw Malformed{"trace.thermalThrottleEvents is out of range"};
        trace.packageLimitWatts = unpackNumber(in, "packageLimitWatts");
        trace.criticalCelsius = unpackNumber(in, "criticalCelsius");
    } catch (const Malformed& problem) {
        trace = {};
        return problem.text;
    }
    return std::nullopt;
}

} // namespace quarbel
