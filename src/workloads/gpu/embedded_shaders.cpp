// SPDX-License-Identifier: Apache-2.0
#include "workloads/gpu/embedded_shaders.h"

#include "workloads/gpu/shaders/raw_decode_comp.h"
#include "workloads/gpu/shaders/suite_compute_comp.h"
#include "workloads/gpu/shaders/suite_fragment_frag.h"
#include "workloads/gpu/shaders/suite_vertex_vert.h"

namespace quarbel::gpu {

std::string_view shaderSource(EmbeddedShader shader) noexcept {
    switch (shader) {
    case EmbeddedShader::suiteCompute: return shaders::suite_compute_comp;
    case EmbeddedShader::rawDecode: return shaders::raw_decode_comp;
    case EmbeddedShader::suiteVertex: return shaders::suite_vertex_vert;
    case EmbeddedShader::suiteFragment: return shaders::suite_fragment_frag;
    }
    return {};
}

std::string_view shaderFileName(EmbeddedShader shader) noexcept {
    switch (shader) {
    case EmbeddedShader::suiteCompute: return "suite_compute.comp";
    case EmbeddedShader::rawDecode: return "raw_decode.comp";
    case EmbeddedShader::suiteVertex: return "suite_vertex.vert";
    case EmbeddedShader::suiteFragment: return "suite_fragment.frag";
    }
    return {};
}

} // namespace quarbel::gpu
