#version 450
// SPDX-License-Identifier: Apache-2.0
// Four corners drawn as a triangle strip cover the whole target.

layout(location = 0) out vec2 uv;

const vec2 kCorners[4] = vec2[4](vec2(-1.0, -1.0), vec2(1.0, -1.0), vec2(-1.0, 1.0), vec2(1.0, 1.0));

void main() {
    vec2 corner = kCorners[gl_VertexIndex];
    // Vulkan's clip space points y down; flipping it keeps uv.y = 1 at the top of the image.
    gl_Position = vec4(corner.x, -corner.y, 0.0, 1.0);
    uv = corner * 0.5 + 0.5;
}
