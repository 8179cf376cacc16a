// SPDX-License-Identifier: Apache-2.0
// NVIDIA GPU temperatures through NVML, loaded at run time with dlopen so that the
// program neither builds nor links against the NVIDIA driver.
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace quarbel {

class NvmlTemperatureSource {
  public:
    // Loads `library` (a file name for the dynamic loader or a path) and initialises
    // NVML once. A missing library, a missing entry point or a failed initialisation
    // leave the source unavailable; nothing is reported.
    explicit NvmlTemperatureSource(const std::string& library = "libnvidia-ml.so.1");
    ~NvmlTemperatureSource();
    NvmlTemperatureSource(const NvmlTemperatureSource&) = delete;
    NvmlTemperatureSource& operator=(const NvmlTemperatureSource&) = delete;

    bool available() const;

    // The highest plausible core temperature over all NVIDIA GPUs, in degrees Celsius,
    // or nothing. Safe from any thread (NVML's own calls are thread-safe).
    std::optional<double> hottestGpu() const;

    // The process-wide source for the driver's library, loaded on first use.
    static const NvmlTemperatureSource& system();

  private:
    struct Library;
    std::unique_ptr<Library> library_;
};

} // namespace quarbel
