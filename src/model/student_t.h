// SPDX-License-Identifier: Apache-2.0
// Student's t distribution: the confidence intervals of scores and the tests that compare
// two runs both need it, with the few degrees of freedom that a handful of slices or
// passes give.
#pragma once

namespace quarbel {

// P(T <= t) for T with `degreesOfFreedom` (> 0, need not be whole). Infinite degrees of
// freedom give the standard normal distribution.
double studentTCdf(double t, double degreesOfFreedom);

// The t with P(T <= t) = p, for 0 < p < 1.
double studentTQuantile(double p, double degreesOfFreedom);

// Two-sided p-value of an observed t.
double twoSidedPValue(double t, double degreesOfFreedom);

// The multiplier of a two-sided 95 % interval: studentTQuantile(0.975, df).
double t95(double degreesOfFreedom);

} // namespace quarbel
