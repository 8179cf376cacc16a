// SPDX-License-Identifier: Apache-2.0
// Mesa's software Vulkan driver keeps a few allocations in its globals for as long as the
// library is loaded. The loader unloads the driver when the last instance goes, which
// leaves those allocations unreachable, and LeakSanitizer then reports them with no module
// to name or suppress. Holding one reference for the whole test process keeps them reachable,
// so the leak check stays strict for the workloads' own objects.
#include <dlfcn.h>

namespace {

[[maybe_unused]] void* const kDriver = dlopen("libvulkan_lvp.so", RTLD_NOW | RTLD_LOCAL);

} // namespace
