// The fly-through scene's pipeline, shared by the offscreen benchmark and the scene window.
#pragma once

#include "workloads/gpu/gpu_context.h"
#include "workloads/gpu/render_pipeline.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quarbel::gpu {

// Fragment arguments of suite_fragment.frag, 16 bytes, uploaded inline before each draw.
struct SceneUniforms {
    float time;   // seconds of scene time
    float aspect; // target width / height
    float detail; // workload level; not read by the shader
    float mode;   // pass index; not read by the shader
};
static_assert(sizeof(SceneUniforms) == 16);

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
