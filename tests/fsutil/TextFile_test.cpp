// textFile_test.cpp
//
// A text file read in blocks: what is delivered, what cannot be opened, what is known of the file.

#include "fsutil/TextFile.h"

#include <gtest/gtest.h>
#include <utime.h>

#include <string>

#include "support/TestFolder.h"

namespace {

using std::string;
using tests::TestFolder;
using tvxconv::fsutil::TextFile;

string restOf(TextFile& file, std::size_t blockSize) {
    string text;
    string block(blockSize, 'x');
    for (std::size_t got = file.read(block.data(), blockSize); got > 0;
         got = file.read(block.data(), blockSize)) {
        text.append(block, 0, got);
    }
    return text;
}

TEST(TextFile, DeliversTheFileInBlocks) {
    const TestFolder folder;
    const string path = folder.write("a.txt", "one\ntwo\nthree");
    for (const std::size_t size : {1u, 3u, 13u, 100u}) {
        TextFile file;
        ASSERT_EQ(file.open(path), 0);
        EXPECT_EQ(restOf(file, size), "one\ntwo\nthree") << size;
        EXPECT_EQ(restOf(file, size), "") << size;
    }
}

TEST(TextFile, OpensOneFileAfterTheOther) {
    const TestFolder folder;
    TextFile file;
    ASSERT_EQ(file.open(folder.write("a.txt", "first")), 0);
    ASSERT_EQ(file.open(folder.write("b.txt", "second")), 0);
    EXPECT_EQ(restOf(file, 100), "second");
}

TEST(TextFile, OpensPlainFilesAlone) {
    const TestFolder folder;
    folder.write("a", "text");
    const string paths[] = {folder.path("missing"), folder.path(), "", folder.path("a") + string(1, '\0')};
    for (const string& path : paths) {
        TextFile file;
        EXPECT_EQ(file.open(path), 1) << path;
        EXPECT_EQ(restOf(file, 10), "") << path;
    }
}

TEST(TextFile, KnowsWhenTheFileWasChanged) {
    const TestFolder folder;
    const string path = folder.write("a.txt", "text");
    utimbuf times{1000000000, 1000000000};
    ASSERT_EQ(utime(path.c_str(), &times), 0);
    TextFile file;
    ASSERT_EQ(file.open(path), 0);
    EXPECT_EQ(file.modificationTime(), 1000000000);
}

TEST(TextFile, DeliversNothingOnceItIsClosed) {
    const TestFolder folder;
    TextFile file;
    ASSERT_EQ(file.open(folder.write("a.txt", "text")), 0);
    file.close();
    EXPECT_EQ(restOf(file, 10), "");
    file.close();
}

}  // namespace
