// SPDX-License-Identifier: Apache-2.0
// The processor's brand text from the contents of /proc/cpuinfo.
#pragma once

#include <string>
#include <string_view>

namespace quarbel {

// The first processor's "model name" (x86, and some Arm kernels); else the Arm
// "Processor" line of 32-bit kernels; else the core named from "CPU implementer" and
// "CPU part" (e.g. "ARM Cortex-A72"); else the "Hardware" line; else empty text.
// The value keeps any blanks after it, as the kernel wrote it.
std::string brandFromCpuinfo(std::string_view cpuinfo);

} // namespace quarbel
