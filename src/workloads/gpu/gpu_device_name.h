// SPDX-License-Identifier: Apache-2.0
// The GPU the workloads would run on, for the system description, and what the user should
// hear about how it was chosen.
#pragma once

#include <optional>
#include <string>

namespace quarbel::gpu {

// The name of the system default Vulkan device (see device_selection.h; QUARBEL_GPU
// overrides), e.g. "llvmpipe (LLVM 15.0.6, 256 bits)"; nullopt when Vulkan has no device.
// Any thread; opens and closes a Vulkan instance, so it costs a few milliseconds.
std::optional<std::string> defaultDeviceName();

// When QUARBEL_GPU is set but names no Vulkan device (an index out of range, a text in no
// device's name), one line saying so and listing the devices by index and name, e.g.
// "QUARBEL_GPU="foo" matches no Vulkan device; using the default. Devices: 0 llvmpipe (...)."
// The workloads then use the default device. nullopt when QUARBEL_GPU is unset, empty or
// matches. Computed at the first call from the environment of that moment and kept for the
// process; later calls only copy it. Any thread; prints nothing.
std::optional<std::string> deviceSelectionWarning();

} // namespace quarbel::gpu
