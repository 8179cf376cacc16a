#version 450
// SPDX-License-Identifier: Apache-2.0
// Procedural fly-through: sky, terrain with a grid, a glowing arch, a cube outline,
// moving sparks and a vignette.

layout(location = 0) in vec2 uv;
layout(location = 0) out vec4 color;

// detail and mode vary the bytes uploaded per pass; the image reads only time and aspect.
layout(push_constant) uniform Uniforms {
    float time;
    float aspect;
    float detail;
    float mode;
} u;

// GLSL leaves smoothstep undefined when edge0 >= edge1, and the scene fades several
// features out with descending edges; this is the Hermite ramp written out.
float smoothRamp(float edge0, float edge1, float x) {
    float t = clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

float hash21(vec2 p) {
    p = fract(p * vec2(123.34, 345.45));
    p += dot(p, p + 34.345);
    return fract(p.x * p.y);
}

float noise(vec2 p) {
    vec2 i = floor(p);
    vec2 f = fract(p);
    f = f * f * (3.0 - 2.0 * f);
    float a = hash21(i);
    float b = hash21(i + vec2(1.0, 0.0));
    float c = hash21(i + vec2(0.0, 1.0));
    float d = hash21(i + vec2(1.0, 1.0));
    return mix(mix(a, b, f.x), mix(c, d, f.x), f.y);
}

float terrain(vec2 p, float t) {
    return sin(p.x * 0.55 + t * 0.8) * 0.23 + cos(p.y * 0.47 - t * 0.55) * 0.18 +
           (noise(p * 0.65 + t * 0.08) - 0.5) * 0.52;
}

void main() {
    vec2 p = uv * 2.0 - 1.0;
    p.x *= u.aspect;
    float t = u.time;

    vec3 col = mix(vec3(0.015, 0.025, 0.035), vec3(0.040, 0.090, 0.105), smoothRamp(-0.45, 0.85, p.y));

    float horizon = smoothRamp(0.15, -0.42, p.y);
    vec2 world = vec2(p.x * (3.1 + horizon * 4.2), (1.0 - p.y) * 7.0 + t * 1.45);
    float h = terrain(world, t);
    float gridX = abs(fract(world.x * 0.72) - 0.5);
    float gridY = abs(fract(world.y * 0.72) - 0.5);
    float grid = 1.0 - smoothRamp(0.012, 0.046, min(gridX, gridY));
    float groundMask = smoothRamp(0.38 + h * 0.08, -0.55, p.y);
    vec3 ground = vec3(0.025, 0.060, 0.062) + vec3(0.02, 0.18, 0.18) * grid +
                  vec3(0.36, 0.22, 0.06) * smoothRamp(0.40, 0.78, noise(world * 0.38 + t));
    col = mix(col, ground, groundMask);

    float archWave = abs(sin((p.x + sin(t * 0.27) * 0.13) * 5.6));
    float archBody = smoothRamp(0.09, 0.0, abs(length(vec2(p.x, p.y + 0.18)) - 0.62));
    float archCut = smoothRamp(0.0, 0.18, p.y + 0.54);
    float arch = archBody * archCut * (0.45 + 0.55 * archWave);
    col += arch * vec3(0.08, 0.72, 0.78);

    vec2 cubeP = p - vec2(sin(t * 0.8) * 0.24, -0.10 + cos(t * 0.6) * 0.04);
    float cube = max(abs(cubeP.x * 1.1 + cubeP.y * 0.32), abs(cubeP.y * 1.35 - cubeP.x * 0.22));
    float cubeEdge = smoothRamp(0.34, 0.31, cube) - smoothRamp(0.30, 0.22, cube);
    float cubeCore = smoothRamp(0.25, 0.0, length(cubeP));
    col += cubeEdge * vec3(0.1, 0.95, 0.95) + cubeCore * vec3(0.85, 0.52, 0.12) * 0.55;

    float sparks = 0.0;
    for (int i = 0; i < 7; ++i) {
        float fi = float(i);
        vec2 center = vec2(sin(t * (0.42 + fi * 0.09) + fi) * 1.15, cos(t * (0.32 + fi * 0.11) + fi * 2.1) * 0.48);
        sparks += smoothRamp(0.026, 0.0, length(p - center));
    }
    col += sparks * vec3(0.95, 0.72, 0.28);

    float vignette = smoothRamp(1.55, 0.25, length(p * vec2(0.85, 1.0)));
    col *= 0.55 + vignette * 0.68;

    col = pow(max(col, vec3(0.0)), vec3(0.4545));
    color = vec4(col, 1.0);
}
