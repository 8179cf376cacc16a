// SPDX-License-Identifier: Apache-2.0
// The Student t quantiles of Boost.Math beside the continued fraction and bisection that the
// model used before, kept here only to compare: the largest difference over df 1 ... 1000
// and the time of one quantile each way.
//   build/bench/bench/bench_student_t [--benchmark_filter=...]
#include "model/student_t.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

// Continued fraction of the regularized incomplete beta function, evaluated with the
// modified Lentz method; converges quickly for x < (a + 1) / (a + b + 2).
double betaContinuedFraction(double a, double b, double x) {
    constexpr double kTiny = 1e-300;
    constexpr double kEpsilon = 1e-15;
    double c = 1.0;
    double d = 1.0 - (a + b) * x / (a + 1.0);
    if (std::abs(d) < kTiny) d = kTiny;
    d = 1.0 / d;
    double result = d;
    for (int m = 1; m <= 400; ++m) {
        const double m2 = 2.0 * m;
        double term = m * (b - m) * x / ((a + m2 - 1.0) * (a + m2));
        d = 1.0 + term * d;
        if (std::abs(d) < kTiny) d = kTiny;
        c = 1.0 + term / c;
        if (std::abs(c) < kTiny) c = kTiny;
        d = 1.0 / d;
        result *= d * c;
        term = -(a + m) * (a + b + m) * x / ((a + m2) * (a + m2 + 1.0));
        d = 1.0 + term * d;
        if (std::abs(d) < kTiny) d = kTiny;
        c = 1.0 + term / c;
        if (std::abs(c) < kTiny) c = kTiny;
        d = 1.0 / d;
        const double step = d * c;
        result *= step;
        if (std::abs(step - 1.0) < kEpsilon) break;
    }
    return result;
}

// I_x(a, b), the regularized incomplete beta function, for 0 <= x <= 1.
double regularizedBeta(double a, double b, double x) {
    if (x <= 0) return 0;
    if (x >= 1) return 1;
    const double logFront =
        std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) + a * std::log(x) + b * std::log1p(-x);
    const double front = std::exp(logFront);
    if (x < (a + 1.0) / (a + b + 2.0)) return front * betaContinuedFraction(a, b, x) / a;
    return 1.0 - front * betaContinuedFraction(b, a, 1.0 - x) / b;
}

double handStudentTCdf(double t, double degreesOfFreedom) {
    if (std::isnan(t) || !(degreesOfFreedom > 0)) return std::numeric_limits<double>::quiet_NaN();
    if (std::isinf(degreesOfFreedom)) return 0.5 * std::erfc(-t / std::sqrt(2.0));
    const double tail =
        0.5 * regularizedBeta(degreesOfFreedom / 2.0, 0.5, degreesOfFreedom / (degreesOfFreedom + t * t));
    return t >= 0 ? 1.0 - tail : tail;
}

double handStudentTQuantile(double p, double degreesOfFreedom) {
    if (!(p > 0 && p < 1) || !(degreesOfFreedom > 0)) return std::numeric_limits<double>::quiet_NaN();
    if (p == 0.5) return 0;
    // Bisection on the monotonic distribution function: slow to write off, but exact to
    // the last digit and cheap enough for the few quantiles a comparison needs.
    double low = -1.0, high = 1.0;
    while (handStudentTCdf(low, degreesOfFreedom) > p)
        low *= 2;
    while (handStudentTCdf(high, degreesOfFreedom) < p)
        high *= 2;
    for (int i = 0; i < 200 && high - low > 1e-12 * std::max(1.0, std::abs(high)); ++i) {
        const double middle = 0.5 * (low + high);
        (handStudentTCdf(middle, degreesOfFreedom) < p ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

} // namespace

namespace {

// Welch degrees of freedom are fractional: a spread of them, as comparisons meet them.
constexpr double kDegrees[] = {1, 2, 2.5, 4, 7.3, 12, 19, 33.7, 64, 150.2, 999};

void handQuantiles(benchmark::State& state) {
    for (auto _ : state)
        for (double df : kDegrees)
            benchmark::DoNotOptimize(handStudentTQuantile(0.975, df));
}
BENCHMARK(handQuantiles);

void boostQuantiles(benchmark::State& state) {
    for (auto _ : state)
        for (double df : kDegrees)
            benchmark::DoNotOptimize(quarbel::studentTQuantile(0.975, df));
}
BENCHMARK(boostQuantiles);

} // namespace

int main(int argc, char** argv) {
    double largest = 0, where = 0, at = 0;
    for (int df = 1; df <= 1000; ++df)
        for (double p : {0.6, 0.75, 0.9, 0.95, 0.975, 0.99, 0.995, 0.999}) {
            const double difference =
                std::abs(handStudentTQuantile(p, df) - quarbel::studentTQuantile(p, df));
            if (difference > largest) largest = difference, where = df, at = p;
        }
    std::printf("largest quantile difference over df 1-1000: %.3g (df %g, p %g)\n", largest, where, at);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return largest < 1e-9 ? 0 : 1;
}
