// SPDX-License-Identifier: Apache-2.0
#include "workloads/storage/scratch_directory.h"

#include "model/storage_root.h"

#include "workloads/storage/storage_workloads.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <random>
#include <sched.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quarbel::storage {
namespace {

// ---- Registry of the directories held right now ----
//
// Fixed storage and lock-free atomics only, so that removeActiveScratchDirectories() may
// run anywhere, a signal handler included. Each slot's word holds its state in the low two
// bits and, above them, how many removers are reading its path at this moment. A slot's
// path is written only when the word is exactly "free, no readers", and a reader reads it
// only after seeing "active" or "retiring", which is published after the path is complete;
// a slot becomes free again only when no reader is left.
struct ActiveSlot {
    std::atomic<std::uint32_t> word{0};
    char directory[PATH_MAX]{};
};
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

enum SlotWord : std::uint32_t {
    kFree = 0,
    kClaimed = 1,  // the path is being written
    kActive = 2,   // the directory exists, or is about to
    kRetiring = 3, // its owner is removing it; still removable by anyone
    kStateMask = 3,
    kOneReader = 4,
};

constexpr int kSlotCount = 8;
constexpr int kMostCreationAttempts = 64; // names tried before creation gives up
std::array<ActiveSlot, kSlotCount> gActiveSlots;

// Creations under way, and how many "remove everything now" calls have begun: a creation
// that overlaps such a call undoes itself, and the call waits for creations to settle.
std::atomic<int> gCreationsInProgress{0};
std::atomic<std::uint64_t> gRemovalsRequested{0};

int claimSlot(const std::string& path) noexcept {
    if (path.size() >= PATH_MAX) return -1;
    for (int i = 0; i < kSlotCount; ++i) {
        ActiveSlot& slot = gActiveSlots[static_cast<std::size_t>(i)];
        std::uint32_t expected = kFree;
        if (!slot.word.compare_exchange_strong(expected, kClaimed, std::memory_order_acq_rel)) continue;
        std::memcpy(slot.directory, path.c_str(), path.size() + 1);
        slot.word.fetch_add(kActive - kClaimed, std::memory_order_acq_rel);
        return i;
    }
    return -1; // more concurrent tests than slots: only the owner's removal applies
}

// Active -> retiring; a retiring slot stays retiring (the two states differ in one bit).
void retireSlot(int index) noexcept {
    static_assert((kActive | 1u) == kRetiring && (kRetiring | 1u) == kRetiring);
    gActiveSlots[static_cast<std::size_t>(index)].word.fetch_or(1u, std::memory_order_acq_rel);
}

// Frees a retiring slot once no remover reads its path any more.
void releaseSlot(int index) noexcept {
    std::atomic<std::uint32_t>& word = gActiveSlots[static_cast<std::size_t>(index)].word;
    for (;;) {
        std::uint32_t expected = kRetiring;
        if (word.compare_exchange_weak(expected, kFree, std::memory_order_acq_rel)) return;
        ::sched_yield();
    }
}

struct CreationInProgress {
    CreationInProgress() { gCreationsInProgress.fetch_add(1); }
    ~CreationInProgress() { gCreationsInProgress.fetch_sub(1); }
    CreationInProgress(const CreationInProgress&) = delete;
    CreationInProgress& operator=(const CreationInProgress&) = delete;
};

// ---- Removal ----

constexpr int kMaxDepth = 16;          // nesting the storage tests never come near
constexpr std::size_t kListing = 4096; // bytes of directory entries read at a time
constexpr int kSweeps = 4;             // listings of one directory while entries keep appearing

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

struct EntryInfo {
    bool found = false;
    bool directory = false;
    bool mountRoot = false;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t bytes = 0; // allocated, st_blocks * 512
};

// The entry `name` of the directory at `directoryFd`, or with an empty name the directory
// itself; never follows a symbolic link.
EntryInfo describe(int directoryFd, const char* name, int& error) noexcept {
    struct statx info {};
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | (name[0] == '\0' ? AT_EMPTY_PATH : 0);
    if (::statx(directoryFd, name, flags, STATX_TYPE | STATX_INO | STATX_BLOCKS, &info) != 0) {
        error = errno;
        return {};
    }
    error = 0;
    EntryInfo entry;
    entry.found = true;
    entry.directory = S_ISDIR(info.stx_mode);
    entry.mountRoot = (info.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0 &&
                      (info.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    entry.device = (static_cast<std::uint64_t>(info.stx_dev_major) << 32) | info.stx_dev_minor;
    entry.inode = info.stx_ino;
    entry.bytes = static_cast<std::int64_t>(info.stx_blocks) * 512;
    return entry;
}

int removeContentsAt(int directoryFd, std::int64_t& bytesRemoved, int depth) noexcept;

// Removes one entry of the directory at `directoryFd`; returns 0 or errno.
int removeEntry(int directoryFd, const char* name, std::uint64_t device, std::int64_t& bytesRemoved,
                int depth) noexcept {
    int error = 0;
    const EntryInfo entry = describe(directoryFd, name, error);
    if (!entry.found) return error == ENOENT ? 0 : error;
    if (!entry.directory) {
        // Files, links, sockets...: unlinking a symbolic link never touches its target.
        if (::unlinkat(directoryFd, name, 0) == 0) {
            bytesRemoved += entry.bytes;
            return 0;
        }
        return errno == ENOENT ? 0 : errno;
    }
    // Another file system mounted here keeps its content; rmdir then reports EBUSY.
    if (entry.mountRoot || entry.device != device) return EBUSY;
    if (depth >= kMaxDepth) return ELOOP;
    const int child = ::openat(directoryFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (child < 0) return errno == ENOENT ? 0 : errno;
    int childError = 0;
    const EntryInfo opened = describe(child, "", childError);
    // Only the directory that was looked at, not one renamed into its place meanwhile.
    if (childError == 0 && opened.inode == entry.inode && opened.device == entry.device) {
        childError = removeContentsAt(child, bytesRemoved, depth + 1);
    }
    ::close(child);
    if (childError != 0) return childError;
    if (::unlinkat(directoryFd, name, AT_REMOVEDIR) != 0 && errno != ENOENT) return errno;
    return 0;
}

int removeContentsAt(int directoryFd, std::int64_t& bytesRemoved, int depth) noexcept {
    int error = 0;
    const EntryInfo self = describe(directoryFd, "", error);
    if (!self.found) return error;
    int firstError = 0;
    // Deleting while listing may hide entries from the listing: list again until a whole
    // listing finds nothing left (or only what cannot be removed).
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
        if (::lseek(directoryFd, 0, SEEK_SET) < 0) return errno;
        bool foundEntries = false;
        alignas(struct dirent64) char listing[kListing];
        for (;;) {
            const ssize_t got = ::getdents64(directoryFd, listing, sizeof listing);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return firstError != 0 ? firstError : errno;
            if (got == 0) break;
            for (ssize_t offset = 0; offset < got;) {
                const auto* entry = reinterpret_cast<const struct dirent64*>(listing + offset);
                offset += entry->d_reclen;
                if (isDotOrDotDot(entry->d_name)) continue;
                foundEntries = true;
                const int entryError =
                    removeEntry(directoryFd, entry->d_name, self.device, bytesRemoved, depth);
                if (firstError == 0) firstError = entryError;
            }
        }
        if (!foundEntries || firstError != 0) break;
    }
    return firstError;
}

// Removes the directory at `path` with everything in it. ENOENT counts as done, since
// another remover may get there first. Returns 0 or errno.
int removeDirectoryAt(const char* path) noexcept {
    for (int attempt = 0; attempt < kSweeps; ++attempt) {
        const int directory = ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (directory >= 0) {
            std::int64_t ignored = 0;
            removeContentsAt(directory, ignored, 0);
            ::close(directory);
        }
        if (::rmdir(path) == 0 || errno == ENOENT) return 0;
        // A file created just after the listing: list again.
        if (errno != ENOTEMPTY && errno != EEXIST) return errno;
    }
    return ENOTEMPTY;
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

bool isUpperHex(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

} // namespace

std::string temporaryRoot() { return storageRootDirectory(); }

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

bool isScratchDirectoryName(std::string_view name) {
    constexpr std::string_view kPrefix = "Quarbel-";
    if (name.size() != kPrefix.size() + 36 || !name.starts_with(kPrefix)) return false;
    const std::string_view uuid = name.substr(kPrefix.size());
    for (std::size_t i = 0; i < uuid.size(); ++i) {
        const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
        if (hyphen ? uuid[i] != '-' : !isUpperHex(uuid[i])) return false;
    }
    return true;
}

std::string joinPath(const std::string& directory, std::string_view name) {
    std::string path = directory;
    if (path.empty() || path.back() != '/') path.push_back('/');
    path.append(name);
    return path;
}

int createDirectories(const std::string& path) {
    std::vector<std::string> created;
    int error = 0;
    for (std::size_t end = 0; end != std::string::npos && error == 0;) {
        end = path.find('/', end + 1);
        const std::string prefix = path.substr(0, end);
        if (prefix.empty() || prefix.back() == '/') continue; // "//" inside the path
        if (::mkdir(prefix.c_str(), 0700) == 0) {
            created.push_back(prefix);
        } else if (errno != EEXIST) {
            error = errno;
        }
    }
    struct stat info {};
    if (error == 0 && ::stat(path.c_str(), &info) != 0) error = errno;
    if (error == 0 && !S_ISDIR(info.st_mode)) error = ENOTDIR;
    if (error != 0) {
        for (auto it = created.rbegin(); it != created.rend(); ++it)
            ::rmdir(it->c_str());
    }
    return error;
}

int removeDirectoryContents(int directoryFd, std::int64_t& bytesRemoved) noexcept {
    return removeContentsAt(directoryFd, bytesRemoved, 0);
}

int ScratchDirectory::create() {
    remove();
    const CreationInProgress creating;
    const std::uint64_t removals = gRemovalsRequested.load();
    const std::string root = temporaryRoot();
    if (const int error = createDirectories(root); error != 0) return error;

    // A clash with an existing name is astronomically unlikely; a reclaim that takes the
    // fresh directory before its lock is held is not (another process reclaiming in a loop
    // on a busy machine took eight in a row about once in 27,000 creations). Both just pick
    // a new name, as often as it takes within reason.
    int error = EEXIST;
    for (int attempt = 0; attempt < kMostCreationAttempts; ++attempt) {
        path_ = joinPath(root, "Quarbel-" + makeUUIDText());
        slot_ = claimSlot(path_); // listed before it exists, so that no removal can miss it
        if (::mkdir(path_.c_str(), 0700) != 0) {
            error = errno;
            forget();
            if (error != EEXIST) return error;
            continue;
        }
        error = lockNewDirectory();
        if (error == 0 && gRemovalsRequested.load() != removals) error = ECANCELED;
        if (error == kVanished) {
            forget();
            if (gRemovalsRequested.load() != removals) return ECANCELED;
            error = EEXIST;
            continue;
        }
        if (error != 0) remove();
        return error;
    }
    return error;
}

int ScratchDirectory::lockNewDirectory() {
    lockFd_ = ::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (lockFd_ < 0) return errno == ENOENT ? kVanished : errno;
    while (::flock(lockFd_, LOCK_EX) != 0) {
        if (errno != EINTR) return errno;
    }
    // A reclaim may have locked and removed the directory between mkdir and flock; then
    // the lock is held on a directory that is no longer at this path.
    struct stat held {};
    struct stat named {};
    if (::fstat(lockFd_, &held) != 0) return errno;
    if (::lstat(path_.c_str(), &named) != 0) return errno == ENOENT ? kVanished : errno;
    if (held.st_ino != named.st_ino || held.st_dev != named.st_dev) return kVanished;
    return 0;
}

void ScratchDirectory::forget() noexcept {
    if (lockFd_ >= 0) ::close(lockFd_);
    lockFd_ = -1;
    if (slot_ >= 0) {
        retireSlot(slot_);
        releaseSlot(slot_);
    }
    slot_ = -1;
    path_.clear();
}

void ScratchDirectory::remove() noexcept {
    if (path_.empty()) return;
    if (slot_ >= 0) retireSlot(slot_); // still listed: a concurrent removal helps, not skips
    removeDirectoryAt(path_.c_str());
    forget(); // the lock goes last, once the directory is gone
}

} // namespace quarbel::storage

namespace quarbel {

void removeActiveScratchDirectories() noexcept {
    using namespace storage;
    gRemovalsRequested.fetch_add(1);
    auto sweep = [] {
        for (ActiveSlot& slot : gActiveSlots) {
            const std::uint32_t word = slot.word.fetch_add(kOneReader, std::memory_order_acq_rel);
            const std::uint32_t state = word & kStateMask;
            if (state == kActive || state == kRetiring) removeDirectoryAt(slot.directory);
            slot.word.fetch_sub(kOneReader, std::memory_order_release);
        }
    };
    sweep();
    // A creation already past its check of gRemovalsRequested may make its directory
    // after the sweep; wait briefly for it to finish, then sweep once more.
    if (gCreationsInProgress.load() == 0) return;
    struct timespec start {};
    ::clock_gettime(CLOCK_MONOTONIC, &start);
    for (;;) {
        if (gCreationsInProgress.load() == 0) break;
        struct timespec now {};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        if ((now.tv_sec - start.tv_sec) * 1000 + (now.tv_nsec - start.tv_nsec) / 1'000'000 > 250) break;
        const struct timespec pause { 0, 1'000'000 };
        ::nanosleep(&pause, nullptr);
    }
    sweep();
}

} // namespace quarbel
