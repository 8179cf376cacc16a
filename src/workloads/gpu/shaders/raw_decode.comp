#version 450
// SPDX-License-Identifier: Apache-2.0
// Demosaics a 16-bit Bayer-style frame with its four edge-clamped neighbours and writes
// opaque 8-bit ARGB pixels (0xAARRGGBB).

layout(local_size_x_id = 0) in;

// Two little-endian 16-bit samples per word: plain 32-bit storage works on every device,
// 16-bit storage buffers are an optional feature.
layout(std430, binding = 0) readonly buffer Raw {
    uint rawWords[];
};

layout(std430, binding = 1) writeonly buffer Pixels {
    uint pixels[];
};

layout(push_constant) uniform FrameSize {
    uint width;
    uint height;
} size;

uint sampleAt(uint index) {
    uint word = rawWords[index >> 1];
    return (index & 1u) == 0u ? (word & 0xFFFFu) : (word >> 16);
}

void main() {
    uint id = (gl_WorkGroupID.y * gl_NumWorkGroups.x + gl_WorkGroupID.x) * gl_WorkGroupSize.x +
              gl_LocalInvocationID.x;
    uint width = size.width;
    uint height = size.height;
    uint count = width * height;
    if (id >= count) return;

    uint x = id % width;
    uint y = id / width;
    uint left = y * width + uint(max(int(x) - 1, 0));
    uint right = y * width + min(x + 1u, width - 1u);
    uint up = uint(max(int(y) - 1, 0)) * width + x;
    uint down = min(y + 1u, height - 1u) * width + x;

    float c = float(sampleAt(id)) / 65535.0;
    float h = float(sampleAt(left) + sampleAt(right)) / 131070.0;
    float v = float(sampleAt(up) + sampleAt(down)) / 131070.0;

    vec3 rgb = vec3(c * 1.38 - v * 0.18, (h + v) * 0.54, c * 0.82 + h * 0.22);
    rgb = pow(clamp(rgb, 0.0, 1.0), vec3(0.4545));
    uvec3 channel = uvec3(clamp(rgb, 0.0, 1.0) * 255.0);
    pixels[id] = 0xFF000000u | (channel.r << 16) | (channel.g << 8) | channel.b;
}
