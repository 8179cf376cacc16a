// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/scene_pipeline.h"

#include "workloads/gpu/embedded_shaders.h"
#include "workloads/gpu/shader_compiler.h"
#include "workloads/gpu/vk_result_text.h"

namespace quarbel::gpu {

ScenePipeline buildScenePipeline(const Context& context, VkRenderPass renderPass,
                                 std::optional<std::string_view> vertexSource,
                                 std::optional<std::string_view> fragmentSource) {
    CompiledShader vertex = compileGlsl(vertexSource.value_or(shaderSource(EmbeddedShader::suiteVertex)),
                                        ShaderStage::vertex, shaderFileName(EmbeddedShader::suiteVertex));
    if (!vertex.ok()) return {nullptr, std::move(vertex.error)};
    CompiledShader fragment =
        compileGlsl(fragmentSource.value_or(shaderSource(EmbeddedShader::suiteFragment)),
                    ShaderStage::fragment, shaderFileName(EmbeddedShader::suiteFragment));
    if (!fragment.ok()) return {nullptr, std::move(fragment.error)};
    if (!hasEntryPoint(vertex.spirv, ShaderStage::vertex, kEntryPointName))
        return {nullptr, "the vertex stage has no entry point"};
    if (!hasEntryPoint(fragment.spirv, ShaderStage::fragment, kEntryPointName))
        return {nullptr, "the fragment stage has no entry point"};

    VkResult error = VK_SUCCESS;
    auto pipeline = RenderPipeline::create(context, vertex.spirv, fragment.spirv, renderPass,
                                           sizeof(SceneUniforms), error);
    if (!pipeline) return {nullptr, vkResultName(error)};
    return {std::move(pipeline), {}};
}

} // namespace quarbel::gpu
