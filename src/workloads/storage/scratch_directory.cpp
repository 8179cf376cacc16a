#include "workloads/storage/scratch_directory.h"

#include "workloads/storage/storage_workloads.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quarbel::storage {
namespace {

// Directories held right now, readable from a signal handler: fixed storage, no locks.
// A slot is claimed (1) while its text is written and published (2) once complete.
struct ActiveSlot {
    std::atomic<int> state{0};
    char directory[PATH_MAX]{};
    char fileName[NAME_MAX + 1]{};
};
constexpr int kSlotCount = 8;
std::array<ActiveSlot, kSlotCount> gActiveSlots;

enum SlotState : int { kFree = 0, kWriting = 1, kPublished = 2 };

int registerDirectory(const std::string& path) {
    if (path.size() >= PATH_MAX) return -1;
    for (int i = 0; i < kSlotCount; ++i) {
        ActiveSlot& slot = gActiveSlots[static_cast<std::size_t>(i)];
        int expected = kFree;
        if (!slot.state.compare_exchange_strong(expected, kWriting, std::memory_order_acquire)) continue;
        std::memcpy(slot.directory, path.c_str(), path.size() + 1);
        slot.fileName[0] = '\0';
        slot.state.store(kPublished, std::memory_order_release);
        return i;
    }
    return -1; // more concurrent tests than slots: only the normal removal applies
}

void rememberFileName(int index, std::string_view name) {
    if (index < 0 || name.size() > NAME_MAX) return;
    ActiveSlot& slot = gActiveSlots[static_cast<std::size_t>(index)];
    slot.state.store(kWriting, std::memory_order_relaxed);
    std::memcpy(slot.fileName, name.data(), name.size());
    slot.fileName[name.size()] = '\0';
    slot.state.store(kPublished, std::memory_order_release);
}

void unregisterDirectory(int index) {
    if (index >= 0)
        gActiveSlots[static_cast<std::size_t>(index)].state.store(kFree, std::memory_order_release);
}

void fillRandomBytes(std::array<std::uint8_t, 16>& bytes) {
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t got = getrandom(bytes.data() + filled, bytes.size() - filled, 0);
        if (got > 0) {
            filled += static_cast<std::size_t>(got);
        } else if (got < 0 && errno != EINTR) {
            break;
        }
    }
    if (filled == bytes.size()) return;
    // No getrandom (very old kernel or seccomp policy): the library's entropy source.
    std::random_device device;
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(device() & 0xFF);
}

} // namespace

std::string temporaryRoot() {
    const char* value = std::getenv("TMPDIR");
    if (value != nullptr && value[0] != '\0') return value;
    return "/tmp";
}

std::string makeUUIDText() {
    std::array<std::uint8_t, 16> bytes{};
    fillRandomBytes(bytes);
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40); // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80); // RFC 4122 variant
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
        text.push_back(kHex[bytes[i] >> 4]);
        text.push_back(kHex[bytes[i] & 0x0F]);
    }
    return text;
}

TemporaryDirectory makeTemporaryDirectory() {
    std::string root = temporaryRoot();
    while (root.size() > 1 && root.back() == '/')
        root.pop_back();
    const std::string parent = root == "/" ? "" : root;
    // A clash with an existing name is astronomically unlikely; retry a few times anyway.
    int error = 0;
    for (int attempt = 0; attempt < 4; ++attempt) {
        std::string path = parent + "/Quarbel-" + makeUUIDText();
        if (::mkdir(path.c_str(), 0700) == 0) return {std::move(path), 0};
        error = errno;
        if (error != EEXIST) break;
    }
    return {"", error};
}

int ScratchDirectory::create() {
    remove();
    TemporaryDirectory made = makeTemporaryDirectory();
    if (made.error != 0) return made.error;
    path_ = std::move(made.path);
    slot_ = registerDirectory(path_);
    return 0;
}

std::string ScratchDirectory::filePath(std::string_view name) {
    rememberFileName(slot_, name);
    return path_ + "/" + std::string(name);
}

void ScratchDirectory::remove() noexcept {
    if (path_.empty()) return;
    unregisterDirectory(slot_);
    slot_ = -1;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    path_.clear();
}

} // namespace quarbel::storage

namespace quarbel {

void removeActiveScratchDirectories() noexcept {
    using namespace storage;
    for (ActiveSlot& slot : gActiveSlots) {
        if (slot.state.load(std::memory_order_acquire) != kPublished) continue;
        if (slot.fileName[0] != '\0') {
            const int directory = ::open(slot.directory, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (directory >= 0) {
                ::unlinkat(directory, slot.fileName, 0);
                ::close(directory);
            }
        }
        ::rmdir(slot.directory);
    }
}

} // namespace quarbel
