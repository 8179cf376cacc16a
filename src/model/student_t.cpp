// SPDX-License-Identifier: Apache-2.0
#include "model/student_t.h"

#include <boost/math/distributions/students_t.hpp>

#include <array>
#include <cmath>
#include <limits>

namespace quarbel {
namespace {

// Doubles throughout: the default policy would work in long double, which is slower and
// gives nothing an interval can show.
using Policy = boost::math::policies::policy<boost::math::policies::promote_double<false>>;
using Distribution = boost::math::students_t_distribution<double, Policy>;

} // namespace

double studentTCdf(double t, double degreesOfFreedom) {
    if (std::isnan(t) || !(degreesOfFreedom > 0)) return std::numeric_limits<double>::quiet_NaN();
    if (std::isinf(degreesOfFreedom)) return 0.5 * std::erfc(-t / std::sqrt(2.0));
    if (std::isinf(t)) return t > 0 ? 1.0 : 0.0;
    return boost::math::cdf(Distribution(degreesOfFreedom), t);
}

double studentTQuantile(double p, double degreesOfFreedom) {
    if (!(p > 0 && p < 1) || !(degreesOfFreedom > 0)) return std::numeric_limits<double>::quiet_NaN();
    if (std::isinf(degreesOfFreedom)) return -std::sqrt(2.0) * boost::math::erfc_inv(2.0 * p, Policy());
    return boost::math::quantile(Distribution(degreesOfFreedom), p);
}
double twoSidedPValue(double t, double degreesOfFreedom) {
    return 2.0 * studentTCdf(-std::abs(t), degreesOfFreedom);
}

double t95(double degreesOfFreedom) {
    // Intervals are drawn for every result of a long history, nearly all with the whole
    // degrees of freedom of their slices: those are worked out once.
    static const auto wholeDegrees = [] {
        std::array<double, 65> quantiles{};
        for (std::size_t n = 1; n < quantiles.size(); ++n)
            quantiles[n] = studentTQuantile(0.975, double(n));
        return quantiles;
    }();
    if (degreesOfFreedom >= 1 && degreesOfFreedom < double(wholeDegrees.size()) &&
        degreesOfFreedom == std::floor(degreesOfFreedom))
        return wholeDegrees[std::size_t(degreesOfFreedom)];
    return studentTQuantile(0.975, degreesOfFreedom);
}

} // namespace quarbel
