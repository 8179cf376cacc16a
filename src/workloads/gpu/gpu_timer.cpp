// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/gpu_timer.h"

#include <array>
#include <cstdint>

namespace quarbel::gpu {

std::unique_ptr<GpuTimer> GpuTimer::create(const Context& context) {
    if (context.timestampPeriod() <= 0) return nullptr;
    std::unique_ptr<GpuTimer> timer(new GpuTimer());
    timer->device_ = context.device();
    timer->period_ = context.timestampPeriod();
    VkQueryPoolCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_QUERY_POOL_CREATE_INFO;
    info.queryType = VK_QUERY_TYPE_TIMESTAMP;
    info.queryCount = 2;
    if (vkCreateQueryPool(timer->device_, &info, nullptr, &timer->pool_) != VK_SUCCESS) return nullptr;
    return timer;
}

GpuTimer::~GpuTimer() {
    if (pool_ != VK_NULL_HANDLE) vkDestroyQueryPool(device_, pool_, nullptr);
}

void GpuTimer::recordStart(VkCommandBuffer commands) const {
    vkCmdResetQueryPool(commands, pool_, 0, 2);
    vkCmdWriteTimestamp(commands, VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT, pool_, 0);
}

void GpuTimer::recordEnd(VkCommandBuffer commands) const {
    vkCmdWriteTimestamp(commands, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, pool_, 1);
}

std::optional<double> GpuTimer::seconds() const {
    std::array<std::uint64_t, 2> ticks{};
    if (vkGetQueryPoolResults(device_, pool_, 0, 2, sizeof(ticks), ticks.data(), sizeof(std::uint64_t),
                              VK_QUERY_RESULT_64_BIT) != VK_SUCCESS ||
        ticks[1] < ticks[0])
        return std::nullopt;
    return static_cast<double>(ticks[1] - ticks[0]) * period_ * 1e-9;
}

} // namespace quarbel::gpu
