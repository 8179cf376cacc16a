// SPDX-License-Identifier: Apache-2.0
#include "sensors/power_sensors.h"

#include "sensors/plausible_temperature.h"
#include "sensors/sysfs_text.h"

#include <algorithm>
#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace quarbel {
namespace {

enum class ReadError { none, permission, other };

// A sysfs integer, telling a permission problem from a missing file.
std::optional<long long> readInteger(const std::string& path, ReadError* error = nullptr) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (error != nullptr)
            *error = errno == EACCES || errno == EPERM ? ReadError::permission : ReadError::other;
        return std::nullopt;
    }
    char buffer[64];
    const ssize_t got = ::read(fd, buffer, sizeof buffer - 1);
    const int readErrno = errno;
    ::close(fd);
    if (got <= 0) {
        if (error != nullptr)
            *error = got < 0 && (readErrno == EACCES || readErrno == EPERM) ? ReadError::permission
                                                                            : ReadError::other;
        return std::nullopt;
    }
    if (error != nullptr) *error = ReadError::none;
    return sysfs::parseInteger(std::string_view(buffer, static_cast<std::size_t>(got)));
}

std::vector<std::string> sortedEntries(const std::string& path) {
    auto names = sysfs::directoryEntries(path);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

std::uint64_t counterDelta(std::uint64_t before, std::uint64_t after, std::uint64_t range) noexcept {
    if (after >= before) return after - before;
    // The counter passed its range and started again from zero.
    return range > before ? range - before + after : after;
}

RaplPackageMeter::RaplPackageMeter(const ConditionLocations& locations) {
    const std::string root = locations.sysRoot + "/class/powercap";
    bool denied = false;
    for (const std::string& entry : sortedEntries(root)) {
        // The MMIO interface repeats the package zone of the MSR one on some laptops.
        if (entry.rfind("intel-rapl:", 0) != 0 || std::count(entry.begin(), entry.end(), ':') != 1) continue;
        const std::string zone = root + "/" + entry;
        const std::string name = sysfs::readLine(zone + "/name");
        if (name.rfind("package-", 0) != 0) continue;
        ReadError error = ReadError::none;
        const auto energy = readInteger(zone + "/energy_uj", &error);
        if (!energy) {
            denied = denied || error == ReadError::permission;
            continue;
        }
        const auto range = readInteger(zone + "/max_energy_range_uj");
        zones_.push_back({name, zone + "/energy_uj",
                          static_cast<std::uint64_t>(std::max(range.value_or(0), 0LL)),
                          static_cast<std::uint64_t>(std::max(*energy, 0LL)), 0});
        for (int constraint = 0; constraint < 3; ++constraint) {
            const std::string prefix = zone + "/constraint_" + std::to_string(constraint);
            if (sysfs::readLine(prefix + "_name") != "long_term") continue;
            if (const auto limit = readInteger(prefix + "_power_limit_uw"); limit && *limit > 0)
                limitWatts_ = limitWatts_.value_or(0) + static_cast<double>(*limit) * 1e-6;
        }
    }
    if (!zones_.empty()) return;
    limitWatts_.reset();
    if (denied)
        problem_ =
            "no permission to read the RAPL energy counters (root only since Linux 5.10; the package's "
            "udev rule lets the quarbel group read them)";
    else if (runsVirtualized(locations))
        problem_ = "a virtual machine exposes no power sensors";
    else
        problem_ = "no RAPL power sensor (powercap)";
}

std::string RaplPackageMeter::source() const {
    std::string text = "RAPL";
    for (std::size_t i = 0; i < zones_.size(); ++i)
        text += (i == 0 ? " " : " + ") + zones_[i].name;
    return text;
}

std::optional<double> RaplPackageMeter::joulesSinceStart() {
    if (zones_.empty()) return std::nullopt;
    double total = 0;
    for (Zone& zone : zones_) {
        const auto now = readInteger(zone.energyPath);
        if (!now || *now < 0) return std::nullopt;
        const auto value = static_cast<std::uint64_t>(*now);
        zone.microjoules += static_cast<double>(counterDelta(zone.last, value, zone.range));
        zone.last = value;
        total += zone.microjoules;
    }
    return total * 1e-6;
}

namespace {

class AmdgpuPowerSource final : public GpuPowerSource {
  public:
    AmdgpuPowerSource(std::string hwmon, std::string entry)
        : hwmon_(std::move(hwmon)), entry_(std::move(entry)) {}
    std::string name() const override { return "amdgpu " + entry_; }
    std::optional<GpuPowerReading> read() override {
        GpuPowerReading reading;
        auto micro = readInteger(hwmon_ + "/power1_average");
        if (!micro) micro = readInteger(hwmon_ + "/power1_input");
        if (micro) reading.watts = static_cast<double>(*micro) * 1e-6;
        if (const auto hertz = readInteger(hwmon_ + "/freq1_input"))
            reading.mhz = static_cast<double>(*hertz) * 1e-6;
        if (const auto milli = readInteger(hwmon_ + "/temp1_input")) {
            const double celsius = static_cast<double>(*milli) / 1000.0;
            if (isPlausibleTemperature(celsius)) reading.celsius = celsius;
        }
        if (!reading.watts) return std::nullopt;
        return reading;
    }

  private:
    std::string hwmon_;
    std::string entry_;
};

// The few NVML declarations used here, as nvml.h states them.
using NvmlReturn = int;
using NvmlDevice = struct NvmlDeviceOpaque*;
constexpr NvmlReturn kNvmlSuccess = 0;
using NvmlInit = NvmlReturn (*)();
using NvmlShutdown = NvmlReturn (*)();
using NvmlGetCount = NvmlReturn (*)(unsigned int*);
using NvmlGetHandle = NvmlReturn (*)(unsigned int, NvmlDevice*);
using NvmlGetEnergy = NvmlReturn (*)(NvmlDevice, unsigned long long*); // millijoules since the driver loaded
using NvmlGetPower = NvmlReturn (*)(NvmlDevice, unsigned int*);        // milliwatts
using NvmlGetClock = NvmlReturn (*)(NvmlDevice, int, unsigned int*);   // MHz
using NvmlGetTemperature = NvmlReturn (*)(NvmlDevice, int, unsigned int*);
using NvmlGetReasons = NvmlReturn (*)(NvmlDevice, unsigned long long*);
constexpr int kNvmlClockGraphics = 0;
constexpr int kNvmlTemperatureGpu = 0;

template <typename Function> Function symbol(void* handle, const char* name) {
    return reinterpret_cast<Function>(::dlsym(handle, name));
}

class NvmlPowerSource final : public GpuPowerSource {
  public:
    ~NvmlPowerSource() override {
        if (shutdown_ != nullptr) shutdown_();
        if (handle_ != nullptr) ::dlclose(handle_);
    }

    static std::unique_ptr<NvmlPowerSource> open(const std::string& library) {
        void* handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) return nullptr;
        std::unique_ptr<NvmlPowerSource> source(new NvmlPowerSource());
        source->handle_ = handle;
        const auto init = symbol<NvmlInit>(handle, "nvmlInit_v2");
        const auto count = symbol<NvmlGetCount>(handle, "nvmlDeviceGetCount_v2");
        const auto device = symbol<NvmlGetHandle>(handle, "nvmlDeviceGetHandleByIndex_v2");
        source->energy_ = symbol<NvmlGetEnergy>(handle, "nvmlDeviceGetTotalEnergyConsumption");
        source->power_ = symbol<NvmlGetPower>(handle, "nvmlDeviceGetPowerUsage");
        source->clock_ = symbol<NvmlGetClock>(handle, "nvmlDeviceGetClockInfo");
        source->temperature_ = symbol<NvmlGetTemperature>(handle, "nvmlDeviceGetTemperature");
        source->reasons_ = symbol<NvmlGetReasons>(handle, "nvmlDeviceGetCurrentClocksEventReasons");
        if (source->reasons_ == nullptr)
            source->reasons_ = symbol<NvmlGetReasons>(handle, "nvmlDeviceGetCurrentClocksThrottleReasons");
        if (init == nullptr || count == nullptr || device == nullptr || source->power_ == nullptr ||
            init() != kNvmlSuccess)
            return nullptr;
        source->shutdown_ = symbol<NvmlShutdown>(handle, "nvmlShutdown");
        unsigned int devices = 0;
        if (count(&devices) == kNvmlSuccess)
            for (unsigned int index = 0; index < devices; ++index)
                if (NvmlDevice d = nullptr; device(index, &d) == kNvmlSuccess) source->devices_.push_back(d);
        if (source->devices_.empty()) return nullptr;
        return source;
    }

    std::string name() const override { return "NVML"; }

    std::optional<GpuPowerReading> read() override {
        GpuPowerReading reading;
        double watts = 0, joules = 0;
        bool allEnergy = energy_ != nullptr, anyPower = false;
        for (std::size_t i = 0; i < devices_.size(); ++i) {
            NvmlDevice device = devices_[i];
            if (unsigned int milliwatts = 0; power_(device, &milliwatts) == kNvmlSuccess) {
                watts += milliwatts * 1e-3;
                anyPower = true;
            }
            unsigned long long millijoules = 0;
            allEnergy = allEnergy && energy_(device, &millijoules) == kNvmlSuccess;
            joules += static_cast<double>(millijoules) * 1e-3;
            if (unsigned long long reasons = 0;
                reasons_ != nullptr && reasons_(device, &reasons) == kNvmlSuccess)
                reading.throttleReasons =
                    reading.throttleReasons.value_or(0) | static_cast<std::uint32_t>(reasons);
            if (i != 0) continue;
            if (unsigned int mhz = 0;
                clock_ != nullptr && clock_(device, kNvmlClockGraphics, &mhz) == kNvmlSuccess)
                reading.mhz = mhz;
            if (unsigned int celsius = 0;
                temperature_ != nullptr &&
                temperature_(device, kNvmlTemperatureGpu, &celsius) == kNvmlSuccess &&
                isPlausibleTemperature(celsius))
                reading.celsius = celsius;
        }
        if (!anyPower) return std::nullopt;
        reading.watts = watts;
        if (allEnergy) reading.totalJoules = joules;
        return reading;
    }

  private:
    NvmlPowerSource() = default;
    void* handle_ = nullptr;
    NvmlShutdown shutdown_ = nullptr;
    NvmlGetEnergy energy_ = nullptr;
    NvmlGetPower power_ = nullptr;
    NvmlGetClock clock_ = nullptr;
    NvmlGetTemperature temperature_ = nullptr;
    NvmlGetReasons reasons_ = nullptr;
    std::vector<NvmlDevice> devices_;
};

} // namespace

std::unique_ptr<GpuPowerSource> openNvmlPowerSource(const std::string& library) {
    return NvmlPowerSource::open(library);
}

std::unique_ptr<GpuPowerSource> openAmdgpuPowerSource(const ConditionLocations& locations) {
    const std::string root = locations.sysRoot + "/class/hwmon";
    for (const std::string& entry : sortedEntries(root)) {
        const std::string hwmon = root + "/" + entry;
        if (sysfs::readLine(hwmon + "/name") != "amdgpu") continue;
        auto source = std::make_unique<AmdgpuPowerSource>(hwmon, entry);
        if (source->read()) return source;
    }
    return nullptr;
}

BatteryMeter::BatteryMeter(const ConditionLocations& locations) {
    const std::string root = locations.sysRoot + "/class/power_supply";
    for (const std::string& entry : sortedEntries(root)) {
        const std::string supply = root + "/" + entry;
        const std::string type = sysfs::readLine(supply + "/type");
        if (type == "Mains") mainsPaths_.push_back(supply + "/online");
        // A mouse's or a phone's battery reports a scope of "Device".
        if (type == "Battery" && path_.empty() && sysfs::readLine(supply + "/scope") != "Device") {
            path_ = supply;
            name_ = entry;
        }
    }
}

std::string BatteryMeter::source() const { return "battery " + name_; }

std::optional<BatteryReading> BatteryMeter::read() const {
    if (path_.empty()) return std::nullopt;
    BatteryReading reading;
    const std::string status = sysfs::readLine(path_ + "/status");
    bool mainsOnline = false;
    for (const std::string& online : mainsPaths_)
        mainsOnline = mainsOnline || readInteger(online).value_or(0) == 1;
    reading.onBattery = status == "Discharging" && !mainsOnline;
    if (!reading.onBattery) return reading;
    if (const auto micro = readInteger(path_ + "/power_now"); micro && *micro != 0) {
        reading.watts = std::abs(static_cast<double>(*micro)) * 1e-6;
    } else {
        const auto current = readInteger(path_ + "/current_now");
        const auto voltage = readInteger(path_ + "/voltage_now");
        if (current && voltage)
            reading.watts =
                std::abs(static_cast<double>(*current) * 1e-6) * (static_cast<double>(*voltage) * 1e-6);
    }
    return reading;
}

CoreClockReader::CoreClockReader(const ConditionLocations& locations) {
    const std::string root = locations.sysRoot + "/devices/system/cpu";
    for (const std::string& entry : sortedEntries(root)) {
        if (entry.size() < 4 || entry.rfind("cpu", 0) != 0 ||
            !std::all_of(entry.begin() + 3, entry.end(), [](char c) { return c >= '0' && c <= '9'; }))
            continue;
        const std::string path = root + "/" + entry + "/cpufreq/scaling_cur_freq";
        if (readInteger(path)) paths_.push_back(path);
    }
}

std::optional<CoreClocks> CoreClockReader::read() const {
    CoreClocks clocks;
    int count = 0;
    for (const std::string& path : paths_) {
        const auto kilohertz = readInteger(path);
        if (!kilohertz || *kilohertz <= 0) continue;
        const double mhz = static_cast<double>(*kilohertz) / 1000.0;
        clocks.lowMHz = count == 0 ? mhz : std::min(clocks.lowMHz, mhz);
        clocks.highMHz = count == 0 ? mhz : std::max(clocks.highMHz, mhz);
        clocks.meanMHz += mhz;
        ++count;
    }
    if (count == 0) return std::nullopt;
    clocks.meanMHz /= count;
    return clocks;
}

std::optional<std::uint64_t> readThermalThrottleCount(const ConditionLocations& locations) {
    const std::string root = locations.sysRoot + "/devices/system/cpu";
    std::optional<std::uint64_t> total;
    for (const std::string& entry : sysfs::directoryEntries(root)) {
        if (entry.rfind("cpu", 0) != 0) continue;
        for (const char* counter :
             {"/thermal_throttle/core_throttle_count", "/thermal_throttle/package_throttle_count"})
            if (const auto count = readInteger(root + "/" + entry + counter); count && *count >= 0)
                total = total.value_or(0) + static_cast<std::uint64_t>(*count);
    }
    return total;
}

bool runsVirtualized(const ConditionLocations& locations) {
    if (const auto cpuinfo = sysfs::readText(locations.procRoot + "/cpuinfo", 1 << 20)) {
        const auto flags = cpuinfo->find("\nflags");
        if (flags != std::string::npos) {
            const auto end = cpuinfo->find('\n', flags + 1);
            if (cpuinfo->substr(flags, end - flags).find(" hypervisor") != std::string::npos) return true;
        }
    }
    const std::string vendor = sysfs::readLine(locations.sysRoot + "/class/dmi/id/sys_vendor");
    for (const char* name : {"QEMU", "VMware", "innotek", "Xen", "Parallels"})
        if (vendor.find(name) != std::string::npos) return true;
    return false;
}

} // namespace quarbel
