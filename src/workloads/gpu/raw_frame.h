// SPDX-License-Identifier: Apache-2.0
// The synthetic RAW frame and the layout the decode kernel reads it in.
#pragma once

#include <cstdint>
#include <span>

namespace quarbel::gpu {

// Push-constant block of raw_decode.comp.
struct RawFrameSize {
    std::uint32_t width;  // samples per row
    std::uint32_t height; // rows
};

// sample i = low 16 bits of (i * 257) XOR low 16 bits of ((i >> 5) XOR 0x4A5B): a fixed,
// busy pattern decoded identically on every frame.
void fillSyntheticRawFrame(std::span<std::uint16_t> samples) noexcept;

// Bytes of the input buffer for `samples` samples: the kernel reads whole 32-bit words.
std::uint64_t rawInputBytes(std::uint64_t samples) noexcept;

} // namespace quarbel::gpu
