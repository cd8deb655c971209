// posix_test.cpp
//
// What only the systems other than Windows have.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fsutil/files.h"
#include "fsutil/lines.h"
#include "platform/platform.h"
#include "support/TestFolder.h"
#include "support/foldersRead.h"
#include "support/wobjProject.h"
#include "tvx_wobj/tvx_wobj.h"

namespace {

using namespace tvxconv;
using std::string;
using tests::TestFolder;

// A file that was last read before it was last written: the next reading is one to be written down.
string unreadFile(const TestFolder& folder, const string& name) {
    const string path = folder.write(name, "text\n");
    const timespec times[2] = {{1'000'000'000, 0}, {1'100'000'000, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    return path;
}

TEST(PosixPlatform, ReadingLeavesTheTimeOfTheLastReading) {
    const TestFolder folder;
    const string copied = unreadFile(folder, "copied");
    const string read = unreadFile(folder, "read");
    ASSERT_EQ(fsutil::copyFile(copied, folder.path("copy")), 0);
    fsutil::LineReader reader;
    std::string_view line;
    ASSERT_EQ(reader.open(read), 0);
    ASSERT_TRUE(reader.next(line));
    for (const string& path : {copied, read}) {
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_atim.tv_sec, 1'000'000'000) << path;
    }
}

TEST(PosixPlatform, WritingThroughALinkThatLeadsNowhereYetMakesItsTarget) {
    const TestFolder folder;
    const string source = folder.write("source", "text");
    for (const char* link : {"copied", "Written"}) {
        ASSERT_EQ(symlink((string("target of ") + link).c_str(), folder.path(link).c_str()), 0);
    }
    EXPECT_EQ(fsutil::copyFile(source, folder.path("copied")), 0);
    EXPECT_EQ(folder.read("target of copied"), "text");
    fsutil::LineWriter writer;
    EXPECT_EQ(writer.open(folder.path("written")), 0);
    writer.write("line");
    EXPECT_EQ(writer.close(), 0);
    EXPECT_EQ(folder.read("target of Written"), "line");
    EXPECT_FALSE(folder.exists("written"));
}

TEST(PosixPlatform, AFileOfSomebodyElseIsReadAllTheSame) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can make files for another user";
    const TestFolder folder;
    for (const char* name : {"first", "second"}) chmod(unreadFile(folder, name).c_str(), 0644);
    folder.write("out/own", "");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.path("out").c_str(), 0777), 0);
    EXPECT_EQ(wobjtest::inChild([&] {
                  if (!wobjtest::giveUpRoot()) return 2;
                  for (const char* name : {"first", "second"}) {
                      const string copy = folder.path("out/") + name;
                      if (fsutil::copyFile(folder.path(name), copy) != 0) return 1;
                  }
                  return 0;
              }),
              0);
    EXPECT_EQ(folder.read("out/first"), "text\n");
    EXPECT_EQ(folder.read("out/second"), "text\n");
}

TEST(PosixPlatform, AProjectFileIsWrittenWithoutReadingItsFolder) {
    const wobjtest::LoneFile project("{}");
    const string folder = "F";
    EXPECT_EQ(tests::foldersReadDuring([&] {
                  EXPECT_EQ(tvx_wobj::writeItemToProject(project.path(), folder, "I", "v", true), 0);
                  EXPECT_EQ(
                      tvx_wobj::writeProjectFiles(project.path(), folder, "T", {"a", "b"}, true, true, true),
                      0);
                  EXPECT_EQ(tvx_wobj::updateInProjectFile(project.path(), folder, "T", "a", "c"), 0);
                  EXPECT_EQ(tvx_wobj::writeSimProfiles(project.path(), {"p"}, {"n"}, {"s"}, "p", true), 0);
              }),
              0);
    // In another spelling it has to be looked for, so the count counts.
    EXPECT_GT(tests::foldersReadDuring([&] {
                  const string other = project.folder() + "/AMP.OPJ";
                  EXPECT_EQ(tvx_wobj::writeItemToProject(other, folder, "I", "w", true), 0);
              }),
              0);
}

}  // namespace
