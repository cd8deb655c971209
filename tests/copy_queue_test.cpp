// Copying while the owner of the queue goes on: everything arrives, failures come back in their order, and no
// thread is left.

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "fsutil/CopyQueue.h"
#include "support/TestFolder.h"

namespace {

using tvxconv::fsutil::CopyQueue;
using tvxconv::fsutil::FileCopy;

#ifdef __linux__
std::size_t threadsOfThisProcess() {
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}
#endif

class CopyQueueTest : public testing::Test {
protected:
    static constexpr int kFolders = 100;
    static constexpr int kFiles = 5;

    // Files "from/<folder>-<file>" with a text of their own, and folders "to/<folder>".
    CopyQueueTest() {
        for (int folder = 0; folder < kFolders; ++folder) {
            folder_.makeFolder(target(folder));
            for (int file = 0; file < kFiles; ++file) folder_.write(source(folder, file), text(folder, file));
        }
    }

    static std::string target(int folder) { return "to/" + std::to_string(folder); }
    static std::string source(int folder, int file) {
        return "from/" + std::to_string(folder) + "-" + std::to_string(file);
    }
    static std::string copy(int folder, int file) { return target(folder) + "/" + std::to_string(file); }
    static std::string text(int folder, int file) {
        return std::string(static_cast<std::size_t>(folder * 97), 'x') + std::to_string(file) + "\n";
    }

    void addFolder(int folder) {
        std::vector<FileCopy> copies;
        for (int file = 0; file < kFiles; ++file) {
            copies.push_back({folder_.path(source(folder, file)), folder_.path(copy(folder, file)),
                              static_cast<std::uint64_t>(folder * kFiles + file)});
        }
        queue_.add(folder_.path(target(folder)), std::move(copies));
    }

    const tests::TestFolder folder_;
    CopyQueue queue_;
};

TEST_F(CopyQueueTest, EverythingHasBeenCopiedWhenItIsFinished) {
    for (int folder = 0; folder < kFolders; ++folder) addFolder(folder);
    EXPECT_TRUE(queue_.finish().empty());
    for (int folder = 0; folder < kFolders; ++folder) {
        for (int file = 0; file < kFiles; ++file) {
            EXPECT_EQ(folder_.read(copy(folder, file)), text(folder, file));
        }
    }
}

TEST_F(CopyQueueTest, AFewFoldersAreCopiedToo) {
    addFolder(3);
    EXPECT_TRUE(queue_.finish().empty());
    EXPECT_EQ(folder_.read(copy(3, 4)), text(3, 4));
    addFolder(4);
    EXPECT_TRUE(queue_.finish().empty());
    EXPECT_EQ(folder_.read(copy(4, 0)), text(4, 0));
}

TEST_F(CopyQueueTest, NothingToCopyIsNoFailure) {
    queue_.add(folder_.path(target(0)), {});
    EXPECT_TRUE(queue_.finish().empty());
    EXPECT_TRUE(queue_.finish().empty());
}

TEST_F(CopyQueueTest, FailuresComeBackInTheOrderOfAdding) {
    for (int folder = 0; folder < kFolders; ++folder) {
        if (folder % 7 == 2) {  // a folder where the copy belongs, and a source that is gone
            folder_.makeFolder(copy(folder, 1));
            std::filesystem::remove(folder_.path(source(folder, 3)));
        }
        addFolder(folder);
    }
    const std::vector<FileCopy> failed = queue_.finish();
    std::vector<std::uint64_t> tags;
    for (const FileCopy& one : failed) tags.push_back(one.tag);
    std::vector<std::uint64_t> expectedTags;
    for (std::uint64_t folder = 2; folder < kFolders; folder += 7) {
        expectedTags.push_back(folder * kFiles + 1);
        expectedTags.push_back(folder * kFiles + 3);
    }
    EXPECT_EQ(tags, expectedTags);
    ASSERT_FALSE(failed.empty());
    EXPECT_EQ(failed[1].source, folder_.path(source(2, 3)));
    EXPECT_EQ(failed[1].destination, folder_.path(copy(2, 3)));
    EXPECT_EQ(folder_.read(copy(2, 4)), text(2, 4));
    EXPECT_TRUE(queue_.finish().empty());  // they are handed out once
}

TEST_F(CopyQueueTest, ALaterCopyToTheSamePlaceIsTheOneThatStays) {
    for (int folder = 0; folder < kFolders; ++folder) {
        queue_.add(folder_.path(target(folder)),
                   {{folder_.path(source(folder, 0)), folder_.path(target(folder) + "/A")}});
        queue_.add(folder_.path(target(folder)),
                   {{folder_.path(source(folder, 1)), folder_.path(target(folder) + "/a")}});
    }
    EXPECT_TRUE(queue_.finish().empty());
    for (int folder = 0; folder < kFolders; ++folder) {
        EXPECT_EQ(folder_.read(target(folder) + "/A"), text(folder, 1));
        EXPECT_EQ(folder_.exists(target(folder) + "/a"), tests::kOnWindows);
    }
}

TEST_F(CopyQueueTest, APlaceThatHasBeenAwaitedGetsNoMoreCopies) {
    for (int folder = 0; folder < kFolders; ++folder) {
        addFolder(folder);
        const std::string place = copy(folder, kFiles - 1);
        queue_.await(folder_.path(target(folder)), folder_.path(place));
        EXPECT_EQ(folder_.read(place), text(folder, kFiles - 1));
        folder_.write(place, "the owner's");
    }
    EXPECT_TRUE(queue_.finish().empty());
    for (int folder = 0; folder < kFolders; ++folder) {
        EXPECT_EQ(folder_.read(copy(folder, kFiles - 1)), "the owner's");
    }
}

TEST_F(CopyQueueTest, WhatIsDiscardedIsNotCopied) {
    addFolder(0);
    queue_.discard();
    EXPECT_TRUE(queue_.finish().empty());
    EXPECT_FALSE(folder_.exists(copy(0, 0)));
}

TEST_F(CopyQueueTest, AQueueThatEndsUnfinishedCopiesNothingMore) {
    {
        CopyQueue unfinished;
        unfinished.add(folder_.path(target(0)), {{folder_.path(source(0, 0)), folder_.path(copy(0, 0))}});
    }
    EXPECT_FALSE(folder_.exists(copy(0, 0)));
}

#ifdef __linux__
TEST_F(CopyQueueTest, NoThreadIsLeftBehind) {
    ASSERT_EQ(threadsOfThisProcess(), 1U);
    for (int folder = 0; folder < kFolders; ++folder) addFolder(folder);
    queue_.finish();
    EXPECT_EQ(threadsOfThisProcess(), 1U);
    for (int folder = 0; folder < kFolders; ++folder) addFolder(folder);
    queue_.discard();
    EXPECT_EQ(threadsOfThisProcess(), 1U);
}
#endif

}  // namespace
