// The name of the GPU the workloads would run on, for the system description.
#pragma once

#include <optional>
#include <string>

namespace quarbel::gpu {

// The name of the system default Vulkan device (see device_selection.h; QUARBEL_GPU
// overrides), e.g. "llvmpipe (LLVM 15.0.6, 256 bits)"; nullopt when Vulkan has no device.
// Any thread; opens and closes a Vulkan instance, so it costs a few milliseconds.
std::optional<std::string> defaultDeviceName();

} // namespace quarbel::gpu
