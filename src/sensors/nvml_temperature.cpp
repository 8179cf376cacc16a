// SPDX-License-Identifier: Apache-2.0
#include "sensors/nvml_temperature.h"

#include "sensors/plausible_temperature.h"

#include <dlfcn.h>
#include <vector>

namespace quarbel {
namespace {

// The few NVML declarations used here, as nvml.h states them (a C enum is an int).
using NvmlReturn = int;
using NvmlDevice = struct NvmlDeviceOpaque*;
constexpr NvmlReturn kNvmlSuccess = 0;
constexpr int kNvmlTemperatureGpu = 0; // NVML_TEMPERATURE_GPU: the core sensor

using NvmlInit = NvmlReturn (*)();
using NvmlShutdown = NvmlReturn (*)();
using NvmlDeviceGetCount = NvmlReturn (*)(unsigned int*);
using NvmlDeviceGetHandleByIndex = NvmlReturn (*)(unsigned int, NvmlDevice*);
using NvmlDeviceGetTemperature = NvmlReturn (*)(NvmlDevice, int, unsigned int*);

template <typename Function> Function symbol(void* handle, const char* name) {
    return reinterpret_cast<Function>(::dlsym(handle, name));
}

} // namespace

struct NvmlTemperatureSource::Library {
    void* handle = nullptr;
    NvmlShutdown shutdown = nullptr;
    NvmlDeviceGetTemperature getTemperature = nullptr;
    std::vector<NvmlDevice> devices; // handles stay valid until shutdown
};

NvmlTemperatureSource::NvmlTemperatureSource(const std::string& library) {
    void* handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return;
    auto loaded = std::make_unique<Library>();
    loaded->handle = handle;
    const auto init = symbol<NvmlInit>(handle, "nvmlInit_v2");
    const auto getCount = symbol<NvmlDeviceGetCount>(handle, "nvmlDeviceGetCount_v2");
    const auto getHandle = symbol<NvmlDeviceGetHandleByIndex>(handle, "nvmlDeviceGetHandleByIndex_v2");
    loaded->shutdown = symbol<NvmlShutdown>(handle, "nvmlShutdown");
    loaded->getTemperature = symbol<NvmlDeviceGetTemperature>(handle, "nvmlDeviceGetTemperature");
    unsigned int count = 0;
    if (init == nullptr || getCount == nullptr || getHandle == nullptr || loaded->getTemperature == nullptr ||
        init() != kNvmlSuccess) {
        ::dlclose(handle);
        return;
    }
    if (getCount(&count) == kNvmlSuccess) {
        for (unsigned int index = 0; index < count; ++index) {
            NvmlDevice device = nullptr;
            if (getHandle(index, &device) == kNvmlSuccess) loaded->devices.push_back(device);
        }
    }
    library_ = std::move(loaded);
}

NvmlTemperatureSource::~NvmlTemperatureSource() {
    if (!library_) return;
    if (library_->shutdown != nullptr) library_->shutdown();
    ::dlclose(library_->handle);
}

bool NvmlTemperatureSource::available() const { return library_ != nullptr; }

std::optional<double> NvmlTemperatureSource::hottestGpu() const {
    if (!library_) return std::nullopt;
    std::optional<double> best;
    for (NvmlDevice device : library_->devices) {
        unsigned int celsius = 0;
        if (library_->getTemperature(device, kNvmlTemperatureGpu, &celsius) != kNvmlSuccess) continue;
        const double value = celsius;
        if (isPlausibleTemperature(value) && (!best || value > *best)) best = value;
    }
    return best;
}

const NvmlTemperatureSource& NvmlTemperatureSource::system() {
    // Loaded once, on first use; the static's initialisation is thread-safe. It is
    // never destroyed, so a reading during process exit cannot meet an unloaded library.
    static const NvmlTemperatureSource* const source = new NvmlTemperatureSource();
    return *source;
}

} // namespace quarbel
