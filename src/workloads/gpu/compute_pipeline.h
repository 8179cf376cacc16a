// SPDX-License-Identifier: Apache-2.0
// A compute pipeline over storage buffers with inline (push-constant) arguments, and the
// dispatch geometry that covers a one-dimensional grid of items.
#pragma once

#include "workloads/gpu/buffer.h"
#include "workloads/gpu/gpu_context.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace quarbel::gpu {

// Workgroup width for a kernel: the device's execution width, at least 1, at most what one
// workgroup may hold.
std::uint32_t threadgroupWidth(std::uint32_t executionWidth, std::uint32_t maxThreadsPerGroup) noexcept;

struct DispatchGrid {
    std::uint32_t groupsX = 0; // workgroups per row
    std::uint32_t groupsY = 0; // rows
    bool operator==(const DispatchGrid&) const = default;
};

// Workgroups of `width` invocations covering `items` items: ceil(items / width) groups (at
// least 1), in rows of at most `maxGroupsPerDimension`. It takes as few rows as the limit
// allows and spreads the groups evenly over them, so the groups launched beyond those needed
// are fewer than the rows and all sit at the end of the last row. Kernels number the groups
// row by row, (y * groupsX + x), and test that linear index against the item count: Vulkan
// runs whole groups, which stands in for a non-uniform dispatch. The index fits in 32 bits
// while items + groupsY * width does; rows exceed the limit only past width * limit^2 items.
DispatchGrid dispatchGridFor(std::uint64_t items, std::uint32_t width,
                             std::uint32_t maxGroupsPerDimension) noexcept;

// A run of whole rows of a grid, or of groups of its only row: the kernels number the groups
// (y * groupsX + x), which stays true for such a run dispatched from its base group.
struct GridPart {
    std::uint32_t baseX = 0;
    std::uint32_t baseY = 0;
    DispatchGrid groups;
    bool operator==(const GridPart&) const = default;
};

// How many nearly equal parts `grid` can be cut into, at most `wanted`: along its rows when it
// has several, else along its one row.
std::uint32_t partsAvailable(DispatchGrid grid, std::uint32_t wanted) noexcept;

// Parts [first, last) of `grid` cut into `parts` (from partsAvailable), as one run.
GridPart gridPart(DispatchGrid grid, std::uint32_t parts, std::uint32_t first, std::uint32_t last) noexcept;

// The workgroups in `groups`.
std::uint64_t groupCount(DispatchGrid groups) noexcept;

class ComputePipeline {
  public:
    // A pipeline for the "main" entry of `spirv`, whose storage buffers sit at bindings
    // 0 .. bufferCount-1 of set 0, whose push-constant block is `argumentBytes` long and
    // whose workgroup width (specialisation constant 0) is `groupWidth`. nullptr on failure,
    // with the failing VkResult in `error`.
    static std::unique_ptr<ComputePipeline> create(const Context& context,
                                                   std::span<const std::uint32_t> spirv,
                                                   std::uint32_t bufferCount, std::uint32_t argumentBytes,
                                                   std::uint32_t groupWidth, VkResult& error);
    ~ComputePipeline();
    ComputePipeline(const ComputePipeline&) = delete;
    ComputePipeline& operator=(const ComputePipeline&) = delete;

    // Points bindings 0, 1, ... at `buffers`, in order. Call before recording, not while the
    // pipeline's commands are in flight.
    void bindBuffers(std::initializer_list<const Buffer*> buffers);

    // Records one dispatch with `arguments` (argumentBytes long) as push constants, followed by
    // a barrier that makes its writes visible to later dispatches, copies and host reads.
    void recordDispatch(VkCommandBuffer commands, const void* arguments, DispatchGrid grid) const;
    // The same for a part of a grid, so that a dispatch longer than a submission should take
    // can be spread over several.
    void recordDispatch(VkCommandBuffer commands, const void* arguments, GridPart part) const;

  private:
    ComputePipeline() = default;

    VkDevice device_ = VK_NULL_HANDLE;
    VkShaderModule module_ = VK_NULL_HANDLE;
    VkDescriptorSetLayout setLayout_ = VK_NULL_HANDLE;
    VkPipelineLayout layout_ = VK_NULL_HANDLE;
    VkPipeline pipeline_ = VK_NULL_HANDLE;
    VkDescriptorPool pool_ = VK_NULL_HANDLE;
    VkDescriptorSet set_ = VK_NULL_HANDLE;
    std::uint32_t bufferCount_ = 0;
    std::uint32_t argumentBytes_ = 0;
};

// A compute pipeline built from GLSL text, or why it could not be built.
struct ComputeKernel {
    enum class Failure { none, compile, entryPointMissing, pipeline };
    std::unique_ptr<ComputePipeline> pipeline; // set exactly when failure is none
    Failure failure = Failure::none;
    std::string message; // the compiler's message or the VkResult name
};

// Compiles `source` (tagged `sourceName` in messages), checks its compute entry point and
// builds the pipeline as ComputePipeline::create describes.
ComputeKernel buildComputeKernel(const Context& context, std::string_view source, std::string_view sourceName,
                                 std::uint32_t bufferCount, std::uint32_t argumentBytes,
                                 std::uint32_t groupWidth);

// A shader module for `spirv`; VK_NULL_HANDLE on failure with the result in `error`.
VkShaderModule createShaderModule(VkDevice device, std::span<const std::uint32_t> spirv, VkResult& error);

} // namespace quarbel::gpu
