// SPDX-License-Identifier: Apache-2.0
// GLSL text to SPIR-V at run time, and a look into the result for its entry points.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarbel::gpu {

enum class ShaderStage { compute, vertex, fragment };

// GLSL names every stage's entry point "main"; the SPIR-V keeps that name.
inline constexpr std::string_view kEntryPointName = "main";

struct CompiledShader {
    std::vector<std::uint32_t> spirv; // empty on failure
    std::string error;                // the compiler's message on failure, else empty
    bool ok() const noexcept { return error.empty(); }
};

// Compiles for Vulkan 1.1. `sourceName` tags the compiler's messages, which read like
// "suite_compute.comp:12: error: 'x' : undeclared identifier". Any thread.
CompiledShader compileGlsl(std::string_view source, ShaderStage stage, std::string_view sourceName);

// Whether the module declares an entry point called `name` for `stage`.
bool hasEntryPoint(std::span<const std::uint32_t> spirv, ShaderStage stage, std::string_view name);

} // namespace quarbel::gpu
