// SPDX-License-Identifier: Apache-2.0
// The GLSL sources built into the program (the files under shaders/).
#pragma once

#include <string_view>

namespace quarbel::gpu {

enum class EmbeddedShader { suiteCompute, rawDecode, suiteVertex, suiteFragment };

// The shader's GLSL text.
std::string_view shaderSource(EmbeddedShader shader) noexcept;
// Its file name ("suite_compute.comp"), which tags compiler messages.
std::string_view shaderFileName(EmbeddedShader shader) noexcept;

} // namespace quarbel::gpu
