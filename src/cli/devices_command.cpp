// SPDX-License-Identifier: Apache-2.0
#include "cli/devices_command.h"

#include "model/number_format.h"
#include "model/storage_root.h"

#include <nlohmann/json.hpp>

namespace quarbel::cli {
namespace {

std::string sizeText(std::uint64_t bytes) { return formatBytes(static_cast<std::int64_t>(bytes)); }

std::string mark(bool chosen) { return chosen ? "* " : "  "; }

} // namespace

DeviceListing currentDevices() {
    return {gpu::listVulkanDevices(), gpu::listOpenCLDevices(), mountedFilesystems(), storageRootDirectory()};
}

std::string devicesText(const DeviceListing& l) {
    std::string text = "Vulkan devices (run --gpu INDEX|NAME; * the one the GPU benchmarks use):\n";
    if (l.vulkan.empty()) text += "  none: no Vulkan driver or device\n";
    for (const auto& d : l.vulkan)
        text += mark(d.chosen) + std::to_string(d.index) + "  " + d.name + "\n      " + d.type + ", " +
                d.vendor + ", " + d.location + ", driver " + d.driver + ", Vulkan " + d.apiVersion + ", " +
                (d.unifiedMemory ? "unified memory" : "own memory " + sizeText(d.deviceLocalBytes)) + "\n";
    text += "OpenCL devices (run --opencl-device INDEX|NAME):\n";
    if (l.opencl.empty()) text += "  none: no OpenCL platform or device\n";
    for (const auto& d : l.opencl)
        text += mark(d.chosen) + std::to_string(d.index) + "  " + d.name + "\n      " + d.type + ", " +
                d.platform + ", driver " + d.driver + ", " + d.version + ", " +
                std::to_string(d.computeUnits) + " compute units, " + sizeText(d.globalMemoryBytes) + "\n";
    text += "File systems (run --storage-dir DIR; the storage benchmarks now write under " + l.storageRoot +
            "):\n";
    for (const auto& f : l.filesystems)
        text += "  " + f.mountPoint + "  " + f.type + " on " + f.source + ", " + sizeText(f.freeBytes) +
                " free of " + sizeText(f.totalBytes) + (f.readOnly ? ", read-only" : "") + "\n";
    return text;
}

std::string devicesJson(const DeviceListing& l) {
    using json = nlohmann::ordered_json;
    json vulkan = json::array(), opencl = json::array(), filesystems = json::array();
    for (const auto& d : l.vulkan)
        vulkan.push_back({{"index", d.index},
                          {"name", d.name},
                          {"type", d.type},
                          {"vendor", d.vendor},
                          {"location", d.location},
                          {"driver", d.driver},
                          {"apiVersion", d.apiVersion},
                          {"unifiedMemory", d.unifiedMemory},
                          {"deviceLocalBytes", d.deviceLocalBytes},
                          {"chosen", d.chosen}});
    for (const auto& d : l.opencl)
        opencl.push_back({{"index", d.index},
                          {"name", d.name},
                          {"type", d.type},
                          {"platform", d.platform},
                          {"driver", d.driver},
                          {"version", d.version},
                          {"computeUnits", d.computeUnits},
                          {"globalMemoryBytes", d.globalMemoryBytes},
                          {"chosen", d.chosen}});
    for (const auto& f : l.filesystems)
        filesystems.push_back({{"mountPoint", f.mountPoint},
                               {"type", f.type},
                               {"source", f.source},
                               {"freeBytes", f.freeBytes},
                               {"totalBytes", f.totalBytes},
                               {"readOnly", f.readOnly}});
    const json document{{"schema", 1},
                        {"vulkan", vulkan},
                        {"opencl", opencl},
                        {"filesystems", filesystems},
                        {"storageRoot", l.storageRoot}};
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace quarbel::cli
