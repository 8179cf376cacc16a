// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/shader_compiler.h"

#include <shaderc/shaderc.h>

#include <cstring>
#include <memory>

namespace quarbel::gpu {
namespace {

shaderc_shader_kind kindOf(ShaderStage stage) {
    switch (stage) {
    case ShaderStage::compute: return shaderc_compute_shader;
    case ShaderStage::vertex: return shaderc_vertex_shader;
    case ShaderStage::fragment: return shaderc_fragment_shader;
    }
    return shaderc_compute_shader;
}

// SPIR-V execution models (the first operand of OpEntryPoint).
std::uint32_t executionModelOf(ShaderStage stage) {
    switch (stage) {
    case ShaderStage::vertex: return 0;
    case ShaderStage::fragment: return 4;
    case ShaderStage::compute: return 5;
    }
    return 5;
}

std::string statusText(shaderc_compilation_status status) {
    switch (status) {
    case shaderc_compilation_status_invalid_stage: return "invalid shader stage";
    case shaderc_compilation_status_compilation_error: return "compilation error";
    case shaderc_compilation_status_internal_error: return "internal compiler error";
    case shaderc_compilation_status_null_result_object: return "the compiler returned no result";
    case shaderc_compilation_status_invalid_assembly: return "invalid assembly";
    case shaderc_compilation_status_validation_error: return "validation error";
    case shaderc_compilation_status_configuration_error: return "configuration error";
    default: return "compilation failed";
    }
}

struct CompilerDeleter {
    void operator()(shaderc_compiler_t compiler) const { shaderc_compiler_release(compiler); }
};
struct OptionsDeleter {
    void operator()(shaderc_compile_options_t options) const { shaderc_compile_options_release(options); }
};
struct ResultDeleter {
    void operator()(shaderc_compilation_result_t result) const { shaderc_result_release(result); }
};

} // namespace

CompiledShader compileGlsl(std::string_view source, ShaderStage stage, std::string_view sourceName) {
    std::unique_ptr<shaderc_compiler, CompilerDeleter> compiler(shaderc_compiler_initialize());
    std::unique_ptr<shaderc_compile_options, OptionsDeleter> options(shaderc_compile_options_initialize());
    if (!compiler || !options) return {{}, "the shader compiler could not be started"};
    shaderc_compile_options_set_target_env(options.get(), shaderc_target_env_vulkan,
                                           shaderc_env_version_vulkan_1_1);
    shaderc_compile_options_set_optimization_level(options.get(), shaderc_optimization_level_performance);

    const std::string name(sourceName);
    const std::string entry(kEntryPointName);
    std::unique_ptr<shaderc_compilation_result, ResultDeleter> result(
        shaderc_compile_into_spv(compiler.get(), source.data(), source.size(), kindOf(stage), name.c_str(),
                                 entry.c_str(), options.get()));
    if (!result) return {{}, statusText(shaderc_compilation_status_null_result_object)};

    const shaderc_compilation_status status = shaderc_result_get_compilation_status(result.get());
    if (status != shaderc_compilation_status_success) {
        std::string message = shaderc_result_get_error_message(result.get());
        while (!message.empty() && (message.back() == '\n' || message.back() == ' '))
            message.pop_back();
        return {{}, message.empty() ? statusText(status) : message};
    }
    const std::size_t bytes = shaderc_result_get_length(result.get());
    CompiledShader compiled;
    compiled.spirv.resize(bytes / sizeof(std::uint32_t));
    std::memcpy(compiled.spirv.data(), shaderc_result_get_bytes(result.get()),
                compiled.spirv.size() * sizeof(std::uint32_t));
    return compiled;
}

bool hasEntryPoint(std::span<const std::uint32_t> spirv, ShaderStage stage, std::string_view name) {
    constexpr std::size_t kHeaderWords = 5;
    constexpr std::uint32_t kOpEntryPoint = 15;
    if (spirv.size() < kHeaderWords) return false;
    std::size_t at = kHeaderWords;
    while (at < spirv.size()) {
        const std::uint32_t wordCount = spirv[at] >> 16;
        const std::uint32_t opcode = spirv[at] & 0xFFFFu;
        if (wordCount == 0 || at + wordCount > spirv.size()) return false;
        // OpEntryPoint: execution model, function id, then the name as a nul-terminated literal.
        if (opcode == kOpEntryPoint && wordCount >= 4 && spirv[at + 1] == executionModelOf(stage)) {
            const char* literal = reinterpret_cast<const char*>(&spirv[at + 3]);
            const std::size_t room = (wordCount - 3) * sizeof(std::uint32_t);
            if (std::string_view(literal, strnlen(literal, room)) == name) return true;
        }
        at += wordCount;
    }
    return false;
}

} // namespace quarbel::gpu
