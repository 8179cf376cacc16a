// SPDX-License-Identifier: Apache-2.0
#include "storage_test_support.h"
#include "workloads/storage/posix_io.h"
#include "workloads/storage/scratch_directory.h"
#include "workloads/storage/storage_locations.h"
#include "workloads/storage/storage_workloads.h"

#include <atomic>
#include <latch>
#include <regex>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

using namespace quarbel;
using namespace quarbel::storage;
using namespace quarbel::storage::testing;

namespace {

namespace fs = std::filesystem;

unsigned modeOf(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

bool entryExists(const std::string& path) {
    return fs::symlink_status(path).type() != fs::file_type::not_found;
}

// Whether a new open file description could take the directory's flock now.
bool lockIsFree(const std::string& directory) {
    const FileDescriptor fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return fd.isOpen() && ::flock(fd.get(), LOCK_EX | LOCK_NB) == 0;
}

} // namespace

TEST(ScratchDirectory, IsAPrivateLockedUniquelyNamedDirectoryUnderTheTemporaryRootMadePrivatelyIfMissing) {
    TestDirectory root;
    ScopedTemporaryRoot tmpdir(root.path() + "/a/b/c/"); // a trailing slash must not double up
    ScratchDirectory first;
    ScratchDirectory second;
    ASSERT_EQ(first.create(), 0);
    ASSERT_EQ(second.create(), 0);
    EXPECT_NE(first.path(), second.path());
    const std::regex form(R"(Quarbel-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12})");
    EXPECT_EQ(fs::path(first.path()).parent_path(), root.path() + "/a/b/c");
    for (const char* created : {"/a", "/a/b", "/a/b/c"})
        EXPECT_EQ(modeOf(root.path() + created), 0700u) << created;
    EXPECT_TRUE(std::regex_match(fs::path(first.path()).filename().string(), form)) << first.path();
    EXPECT_TRUE(fs::is_directory(first.path()));
    EXPECT_EQ(modeOf(first.path()), 0700u);
    EXPECT_FALSE(lockIsFree(first.path())) << "a live scratch directory holds its lock";
    // The root falls back to /tmp when TMPDIR is empty or unset.
    ScopedTemporaryRoot set("/var/somewhere//");
    EXPECT_EQ(temporaryRoot(), "/var/somewhere");
    ::setenv("TMPDIR", "", 1);
    EXPECT_EQ(temporaryRoot(), "/tmp");
    ::unsetenv("TMPDIR");
    EXPECT_EQ(temporaryRoot(), "/tmp");
}

TEST(ScratchDirectory, AFailedCreationLeavesNothingBehind) {
    TestDirectory root;
    writeFile(root.path() + "/file", 1);
    struct Case {
        std::string tmpdir;
        int error;
        std::string absentAfterwards; // what a failure must not leave behind
    };
    const Case cases[] = {
        {root.path() + "/file/tmp", ENOTDIR, root.path() + "/file/tmp"},
        {root.path() + "/new/" + std::string(300, 'n'), ENAMETOOLONG, root.path() + "/new"},
    };
    for (const Case& c : cases) {
        ScopedTemporaryRoot tmpdir(c.tmpdir);
        ScratchDirectory directory;
        EXPECT_EQ(directory.create(), c.error) << c.tmpdir;
        EXPECT_TRUE(directory.path().empty());
        EXPECT_FALSE(entryExists(c.absentAfterwards));
    }
}

TEST(ScratchDirectory, RemoveEverythingNowLeavesNothingWhateverTheOwnersAreDoingAndNeverFollowsALink) {
    TestDirectory root;
    TestDirectory outside;
    writeFile(outside.path() + "/keep.bin", 100);
    ScopedTemporaryRoot tmpdir(root.path());
    {
        ScratchDirectory first;
        ScratchDirectory second;
        ASSERT_EQ(first.create(), 0);
        ASSERT_EQ(second.create(), 0);
        writeFile(first.filePath("sequential-media.bin"), 1000);
        fs::create_directory(second.path() + "/nested");
        writeFile(second.path() + "/nested/random.bin", 1000);
        fs::create_directory_symlink(outside.path(), second.path() + "/nested/outside");

        removeActiveScratchDirectories();
        EXPECT_TRUE(scratchEntries(root.path()).empty());
        EXPECT_EQ(fs::file_size(outside.path() + "/keep.bin"), 100u);
    } // the guards still end cleanly afterwards

    // A second Ctrl-C while the workload removes its own file: both removers, and the
    // owner's own removal, may get to each entry first; once a call returns, it is gone.
    for (int round = 0; round < 5; ++round) {
        ScratchDirectory directory;
        ASSERT_EQ(directory.create(), 0);
        writeFile(directory.filePath("sequential-media.bin"), static_cast<std::size_t>(4 * kMiB));
        const std::string path = directory.path();
        std::latch start(3);
        std::atomic<int> leftAfterCall{0};
        auto remover = [&] {
            start.arrive_and_wait();
            removeActiveScratchDirectories();
            if (entryExists(path)) ++leftAfterCall;
        };
        std::thread a(remover);
        std::thread b(remover);
        start.arrive_and_wait();
        directory.remove();
        a.join();
        b.join();
        EXPECT_EQ(leftAfterCall.load(), 0) << "round " << round;
    }
    EXPECT_TRUE(scratchEntries(root.path()).empty());
}

TEST(ScratchDirectory, CreationHoldsItsDirectoryAgainstAReclaimRunningAtTheSameTime) {
    TestDirectory root;
    ScopedTemporaryRoot tmpdir(root.path());
    std::atomic<bool> done{false};
    std::thread reclaimer([&] {
        while (!done.load())
            reclaimStaleScratchDirectories(root.path());
    });
    int lost = 0;
    for (int i = 0; i < 50; ++i) {
        ScratchDirectory directory;
        if (directory.create() != 0 || !fs::is_directory(directory.path()) || lockIsFree(directory.path()))
            ++lost;
    }
    done = true;
    reclaimer.join();
    EXPECT_EQ(lost, 0);
}

TEST(ScratchReclaim, RemovesOnlyUnlockedScratchDirectoriesAndCountsTheirFiles) {
    TestDirectory root;
    TestDirectory outside;
    writeFile(outside.path() + "/keep.bin", 10'000);
    enum class Kind { staleWithContent, directory, locked, regularFile, linkToDirectory };
    struct Row {
        const char* name;
        Kind kind;
        bool removed;
    };
    const Row rows[] = {
        {"Quarbel-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D", Kind::staleWithContent, true},
        {"Quarbel-00000000-0000-0000-0000-000000000000", Kind::directory, true}, // no lock ever taken
        {"Quarbel-11111111-2222-4333-8444-555555555555", Kind::locked, false},
        {"Quarbel-0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d", Kind::directory, false},
        {"Quarbel-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4", Kind::directory, false},
        {"Quarbel-0A1B2C3D4-E5F-4A6B-8C7D-9E0F1A2B3C4D", Kind::directory, false},
        {"quarbel-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D", Kind::directory, false},
        {"Quarbel-22222222-2222-4222-8222-222222222222", Kind::regularFile, false},
        {"Quarbel-33333333-3333-4333-8333-333333333333", Kind::linkToDirectory, false},
    };
    std::int64_t expectedBytes = 0;
    std::optional<FileDescriptor> heldLock;
    for (const Row& row : rows) {
        const std::string path = root.path() + "/" + row.name;
        switch (row.kind) {
        case Kind::staleWithContent:
            fs::create_directories(path + "/nested");
            writeFile(path + "/sequential-media.bin", 100'000);
            writeFile(path + "/nested/more.bin", 5'000);
            fs::create_directory_symlink(outside.path(), path + "/outside");
            for (const char* file : {"/sequential-media.bin", "/nested/more.bin", "/outside"})
                if (struct stat info{}; ::lstat((path + file).c_str(), &info) == 0)
                    expectedBytes += static_cast<std::int64_t>(info.st_blocks) * 512;
            break;
        case Kind::directory: fs::create_directory(path); break;
        case Kind::locked:
            // Another open file description, as another run's would be.
            fs::create_directory(path);
            heldLock.emplace(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            ASSERT_EQ(::flock(heldLock->get(), LOCK_EX), 0);
            break;
        case Kind::regularFile: writeFile(path, 100); break;
        case Kind::linkToDirectory: fs::create_directory_symlink(outside.path(), path); break;
        }
    }
    ScopedTemporaryRoot tmpdir(root.path());
    ScratchDirectory live;
    ASSERT_EQ(live.create(), 0);

    const ReclaimReport report = reclaimStaleScratchDirectories(root.path());

    EXPECT_EQ(report.directoriesRemoved, 2);
    EXPECT_GT(expectedBytes, 0);
    EXPECT_EQ(report.bytesGivenBack, expectedBytes);
    EXPECT_TRUE(report.failures.empty());
    for (const Row& row : rows)
        EXPECT_EQ(entryExists(root.path() + "/" + row.name), !row.removed) << row.name;
    EXPECT_TRUE(fs::is_directory(live.path()));
    EXPECT_EQ(fs::file_size(outside.path() + "/keep.bin"), 10'000u);
    EXPECT_EQ(reclaimStaleScratchDirectories(root.path() + "/missing").directoriesRemoved, 0);
}

TEST(ScratchReclaim, NoticeSaysWhatWasGivenBackAndWhatCouldNotBeRemoved) {
    const std::string busy = "/tmp/Quarbel-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D";
    struct Row {
        ReclaimReport report;
        std::string text;
    };
    const Row rows[] = {
        {{}, ""},
        {{1, 4096, {}},
         "Removed 1 scratch directory left by an interrupted run in /tmp (less than 1 MB given back)."},
        {{2, 1'610'612'736, {}},
         "Removed 2 scratch directories left by an interrupted run in /tmp (1.5 GB given back)."},
        {{3, 512 * kMiB, {}},
         "Removed 3 scratch directories left by an interrupted run in /tmp (512 MB given back)."},
        {{1, 2048 * kMiB, {{busy, EBUSY}}},
         "Removed 1 scratch directory left by an interrupted run in /tmp (2.0 GB given back).\n"
         "Could not remove the scratch directory " +
             busy + " left by an interrupted run: Device or resource busy."},
        {{0, 0, {{busy, EACCES}}},
         "Could not remove the scratch directory " + busy +
             " left by an interrupted run: Permission denied."},
    };
    for (const Row& row : rows)
        EXPECT_EQ(reclaimNotice(row.report, "/tmp"), row.text);
}

TEST(StorageLocations, ListsFileSystemsThatHoldFilesAndChecksAChosenFolder) {
    const std::string mountinfo = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/old rw\n"
                                  "23 22 0:5 / /proc rw,nosuid - proc proc rw\n"
                                  "24 22 8:2 / /tmp ro,relatime - xfs /dev/my\\040disk ro\n"
                                  "25 22 8:3 / / rw,relatime - ext4 /dev/new rw\n"
                                  "26 22 8:4 / /no/such/mount rw - ext4 /dev/gone rw\n";
    const auto mounts = mountedFilesystems(mountinfo);
    ASSERT_EQ(mounts.size(), 2u) << "proc is no place for files, a missing mount has no size, and a later "
                                    "mount on / hides the earlier one";
    EXPECT_EQ(mounts[0].mountPoint, "/tmp");
    EXPECT_EQ(mounts[0].source, "/dev/my disk");
    EXPECT_TRUE(mounts[0].readOnly);
    EXPECT_EQ(mounts[1].source, "/dev/new");
    EXPECT_GT(mounts[1].totalBytes, 0u);
    EXPECT_LE(mounts[1].freeBytes, mounts[1].totalBytes);

    EXPECT_EQ(storageDirectoryProblem("/tmp"), std::nullopt);
    EXPECT_EQ(storageDirectoryProblem("/proc/version"), "/proc/version is not a folder");
    EXPECT_EQ(storageDirectoryProblem("/no/such/folder"), "/no/such/folder: No such file or directory");
    if (::geteuid() != 0) {
        EXPECT_NE(storageDirectoryProblem("/proc"), std::nullopt);
    }
}
