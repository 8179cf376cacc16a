#version 450
// SPDX-License-Identifier: Apache-2.0
// Sustained vector arithmetic: each invocation owns one vec4 of the buffer and updates it
// in place, so every dispatch starts from the previous dispatch's results.

layout(local_size_x_id = 0) in;

layout(std430, binding = 0) buffer Values {
    vec4 values[];
};

layout(push_constant) uniform Arguments {
    uint iterations;
    uint count; // valid elements; whole workgroups may run past it
} args;

void main() {
    // The grid may be spread over two dimensions because one dimension holds at most
    // 65,535 workgroups on many devices.
    uint id = (gl_WorkGroupID.y * gl_NumWorkGroups.x + gl_WorkGroupID.x) * gl_WorkGroupSize.x +
              gl_LocalInvocationID.x;
    if (id >= args.count) return;

    vec4 v = values[id] + vec4(0.11, 0.23, 0.37, 0.41);
    for (uint i = 0u; i < args.iterations; ++i) {
        float f = float(i) * 0.00013;
        v = sin(v * 1.00019 + f) + cos(v.yzwx * 0.99991 - f);
        // Whether this rounds once or twice is the driver's choice: Vulkan does not require
        // fma() to be fused, and marking it precise would not change that (glslang puts no
        // NoContraction on the fma; it would only stop the multiply-adds above from fusing).
        // Mesa's lavapipe computes a rounded product and then the sum.
        v = fma(v, vec4(1.00001, 0.99999, 1.00003, 0.99997), vec4(0.0001, -0.0002, 0.0003, -0.0004));
    }
    values[id] = v;
}
