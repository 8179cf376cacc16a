#include "run/model/scratch_registry.h"

#include <filesystem>
#include <mutex>
#include <set>

namespace quarbel {
namespace {

std::mutex& registryMutex() {
    static std::mutex mutex;
    return mutex;
}

std::set<std::string>& registry() {
    static std::set<std::string> paths;
    return paths;
}

} // namespace

void registerScratchDirectory(const std::string& path) {
    std::lock_guard lock(registryMutex());
    registry().insert(path);
}

void unregisterScratchDirectory(const std::string& path) {
    std::lock_guard lock(registryMutex());
    registry().erase(path);
}

void removeRegisteredScratchDirectories() noexcept {
    std::lock_guard lock(registryMutex());
    for (const auto& path : registry()) {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    registry().clear();
}

} // namespace quarbel
