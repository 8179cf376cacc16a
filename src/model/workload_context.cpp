#include "model/workload_context.h"

#include <ctime>

namespace quarbel {

double monotonicSeconds() noexcept {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

} // namespace quarbel
