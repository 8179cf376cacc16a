// SPDX-License-Identifier: Apache-2.0
// The fragment arguments of the fly-through scene.
#pragma once

namespace quarbel::gpu {

// Fragment arguments of suite_fragment.frag, 16 bytes, uploaded inline before each draw.
struct SceneUniforms {
    float time;   // seconds of scene time
    float aspect; // target width / height
    float detail; // workload level; not read by the shader
    float mode;   // pass index; not read by the shader
};
static_assert(sizeof(SceneUniforms) == 16);

} // namespace quarbel::gpu
