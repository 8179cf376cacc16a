// SPDX-License-Identifier: Apache-2.0
// The fly-through scene's pipeline, shared by the offscreen benchmark and the scene window.
#pragma once

#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/render_pipeline.h"
#include "workloads/gpu/scene_uniforms.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quarbel::gpu {

struct ScenePipeline {
    std::unique_ptr<RenderPipeline> pipeline; // set on success
    std::string error;                        // compiler message or VkResult name on failure
};

// Compiles the scene's vertex and fragment stages (the built-in ones unless replaced) and
// builds the pipeline for `renderPass`.
ScenePipeline buildScenePipeline(const Context& context, VkRenderPass renderPass,
                                 std::optional<std::string_view> vertexSource = std::nullopt,
                                 std::optional<std::string_view> fragmentSource = std::nullopt);

} // namespace quarbel::gpu
