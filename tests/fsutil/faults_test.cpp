// faults_test.cpp
//
// Files and lines on a disk that fails at each of its uses in turn.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "fsutil/files.h"
#include "fsutil/lines.h"
#include "support/FailingDisk.h"
#include "support/TestFolder.h"

namespace {

using namespace tvxconv;
using tests::DiskCall;
using tests::FailingDisk;
using tests::TestFolder;

const std::string kContent = std::string(20000, 'x') + "\r\nlast";

TEST(FilesOnAFailingDisk, ACopyThatSucceedsIsWhole) {
    for (const DiskCall call : tests::kDiskCalls) {
        for (int number = 1;; ++number) {
            const TestFolder folder;
            const std::string source = folder.write("a.dat", kContent);
            int status = 0;
            bool failed = false;
            {
                const FailingDisk disk(call, number);
                status = fsutil::copyFile(source, folder.path("b.dat"));
                failed = disk.hasFailed();
            }
            EXPECT_EQ(folder.read("a.dat"), kContent) << call << " " << number;
            if (status == 0) {
                EXPECT_EQ(folder.read("b.dat"), kContent) << call << " " << number;
            } else {
                EXPECT_EQ(status, 1) << call << " " << number;
            }
            if (!failed) {
                EXPECT_EQ(status, 0) << call << " " << number;
                break;
            }
        }
    }
}

TEST(FilesOnAFailingDisk, ACopyThatCannotBeWrittenFails) {
    const TestFolder folder;
    const std::string source = folder.write("a.dat", kContent);
    for (const DiskCall call : {DiskCall::write, DiskCall::makeFolder, DiskCall::chmod}) {
        const FailingDisk disk(call, 1, ENOSPC, FailingDisk::Failing::forGood);
        const bool isUsed = call == DiskCall::write;
        EXPECT_EQ(fsutil::copyFile(source, folder.path("b.dat")), isUsed ? 1 : 0) << call;
        EXPECT_EQ(disk.hasFailed(), isUsed) << call;
    }
}

TEST(FilesOnAFailingDisk, WhatCannotBeRemovedStays) {
    const TestFolder folder;
    const std::string path = folder.write("a.dat", kContent);
    {
        const FailingDisk disk(DiskCall::remove, 1, EACCES);
        EXPECT_EQ(fsutil::deleteFile(path), 1);
    }
    EXPECT_EQ(folder.read("a.dat"), kContent);
    EXPECT_EQ(fsutil::deleteFile(path), 0);
    EXPECT_FALSE(folder.exists("a.dat"));
}

TEST(FilesOnAFailingDisk, AListingThatCannotBeOpenedHoldsNothing) {
    const TestFolder folder;
    folder.write("a.dat", "");
    const FailingDisk disk(DiskCall::list, 1);
    fsutil::DirectoryListing* listing = nullptr;
    EXPECT_EQ(fsutil::openDirectory(folder.path(), listing), 1);
    EXPECT_EQ(listing, nullptr);
    EXPECT_TRUE(disk.hasFailed());
}

// Text that the writer hands on in several pieces.
int writeLines(const std::string& path) {
    fsutil::LineWriter writer;
    if (writer.open(path) != 0) return 1;
    for (int i = 0; i < 20000; ++i) writer.write("0123456789\n");
    return writer.close();
}

TEST(LinesOnAFailingDisk, APartIsNotLeftForTheWhole) {
    for (const DiskCall call : {DiskCall::open, DiskCall::write, DiskCall::close}) {
        int number = 1;
        for (;; ++number) {
            const TestFolder folder;
            const FailingDisk disk(call, number, ENOSPC);
            const int status = writeLines(folder.path("a.net"));
            EXPECT_EQ(status, disk.hasFailed() ? 1 : 0) << call << " " << number;
            EXPECT_EQ(folder.exists("a.net"), status == 0) << call << " " << number;
            if (!disk.hasFailed()) break;
        }
        EXPECT_GT(number, 1) << call;
    }
}

TEST(LinesOnAFailingDisk, AReadThatFailsIsToldFromTheEnd) {
    const TestFolder folder;
    const std::string path = folder.write("a.net", std::string(200000, '\n'));
    int number = 1;
    for (;; ++number) {
        const FailingDisk disk(DiskCall::read, number);
        fsutil::LineReader reader;
        ASSERT_EQ(reader.open(path), 0);
        std::string_view line;
        int lines = 0;
        while (reader.next(line)) ++lines;
        EXPECT_EQ(reader.failed(), disk.hasFailed()) << number;
        if (!disk.hasFailed()) {
            EXPECT_EQ(lines, 200000);
            break;
        }
    }
    EXPECT_GT(number, 2);
}

}  // namespace
