// SPDX-License-Identifier: Apache-2.0
// The name of a VkResult, the "localized description" of a Vulkan failure in outcome details.
#pragma once

#include <vulkan/vulkan.h>

#include <string>

namespace quarbel::gpu {

// "VK_ERROR_OUT_OF_DEVICE_MEMORY" and so on; codes this build does not know read "VkResult <n>".
std::string vkResultName(VkResult result);

} // namespace quarbel::gpu
