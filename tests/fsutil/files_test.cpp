// files_test.cpp
//
// Files and folders, both layers. Paths are spelled here as they are on disk; other spellings are the
// subject of platform/folderIndex_test.cpp.

#include "fsutil/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "errors/errors.h"
#include "support/TestFolder.h"
#include "support/fileLimit.h"

namespace {

using namespace tvxconv;
using fsutil::kExists;
using fsutil::kFolderMask;
using fsutil::kReadable;
using fsutil::kRegularFileMask;
using fsutil::kWritable;
using std::string;
using tests::TestFolder;

unsigned permissionsOf(const string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0xFFFFFFFFU;
}

void setPermissions(const string& path, unsigned permissions) {
    ASSERT_EQ(chmod(path.c_str(), permissions), 0) << path;
}

// Bytes without a pattern that a block of 8192 would hide.
string bytesOf(std::size_t size) {
    string bytes(size, '\0');
    std::uint32_t state = 12345;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

// A file mode mask of this process for as long as the object lives.
class FileModeMask {
public:
    explicit FileModeMask(mode_t mask) : before_(static_cast<mode_t>(umask(mask))) {}
    ~FileModeMask() { umask(before_); }
    FileModeMask(const FileModeMask&) = delete;
    FileModeMask& operator=(const FileModeMask&) = delete;

private:
    mode_t before_;
};

class Files : public testing::Test {
protected:
    TestFolder folder;
};

// --- checkPath ---

using CheckPath = Files;

TEST_F(CheckPath, AsksForTypeAndExistence) {
    const string file = folder.write("amp.sim", "x");
    const string sub = folder.makeFolder("sub");
    tests::makeLink(file, folder.path("toFile"));
    tests::makeLink(sub, folder.path("toFolder"));
    tests::makeLink(folder.path("nowhere"), folder.path("toNothing"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
    const struct {
        const char* name;
        int any;
        int asFolder;
        int asFile;
    } cases[] = {
        {"amp.sim", 0, -1, 0},  {"sub", 0, 0, -1},         {"sub/", 0, 0, -1},           {"toFile", 0, -1, 0},
        {"toFolder", 0, 0, -1}, {"toNothing", -1, -1, -1}, {"pipe", 0, -1, -1},          {"none", -1, -1, -1},
        {"none/x", -1, -1, -1}, {"amp.sim/x", -1, -1, -1}, {"sub/../amp.sim", 0, -1, 0},
    };
    for (const auto& c : cases) {
        const string path = folder.path(c.name);
        EXPECT_EQ(fsutil::checkPath(path.c_str(), 0, kExists), c.any) << c.name;
        EXPECT_EQ(fsutil::checkPath(path.c_str(), kFolderMask, kExists), c.asFolder) << c.name;
        EXPECT_EQ(fsutil::checkPath(path.c_str(), kRegularFileMask, kExists), c.asFile) << c.name;
        EXPECT_EQ(fsutil::checkPath(path.c_str(), kFolderMask, kReadable), c.asFolder) << c.name;
        EXPECT_EQ(fsutil::checkPath(path.c_str(), kRegularFileMask, kReadable), c.asFile) << c.name;
    }
    EXPECT_EQ(fsutil::checkPath("", 0, kExists), -1);
    EXPECT_EQ(fsutil::checkPath("/", kFolderMask, kReadable), 0);
    EXPECT_EQ(fsutil::checkPath(string(5000, 'x').c_str(), 0, kExists), -1);
}

TEST_F(CheckPath, AsksForAccess) {
    const struct {
        const char* name;
        unsigned permissions;
        int write;
        int read;
    } cases[] = {{"both", 0666, 0, 0}, {"read", 0444, -1, 0}, {"write", 0222, 0, -1}, {"none", 0, -1, -1}};
    for (const auto& c : cases) setPermissions(folder.write(c.name, "x"), c.permissions);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        for (const auto& c : cases) {
            const string path = folder.path(c.name);
            EXPECT_EQ(fsutil::checkPath(path.c_str(), 0, kExists), 0) << c.name;
            EXPECT_EQ(fsutil::checkPath(path.c_str(), kRegularFileMask, kExists), 0) << c.name;
            EXPECT_EQ(fsutil::checkPath(path.c_str(), 0, kWritable), c.write) << c.name;
            EXPECT_EQ(fsutil::checkPath(path.c_str(), kRegularFileMask, kReadable), c.read) << c.name;
            const bool both = c.write == 0 && c.read == 0;
            EXPECT_EQ(fsutil::checkPath(path.c_str(), 0, kReadable | kWritable), both ? 0 : -1) << c.name;
        }
        return true;
    }));
}

TEST_F(CheckPath, FailsBehindAFolderThatMayNotBeEntered) {
    folder.write("closed/amp.sim", "x");
    setPermissions(folder.path("closed"), 0);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(fsutil::checkPath(folder.path("closed").c_str(), kFolderMask, kExists), 0);
        EXPECT_EQ(fsutil::checkPath(folder.path("closed/amp.sim").c_str(), 0, kExists), -1);
        EXPECT_EQ(fsutil::checkPath(folder.path("closed/amp.sim").c_str(), kRegularFileMask, 0), -1);
        return true;
    }));
    setPermissions(folder.path("closed"), 0755);
}

// --- makeDirectory ---

using MakeDirectory = Files;

TEST_F(MakeDirectory, PassesOverSeparatorsAtTheEnd) {
    for (const char* end : {"", "/", "//", "\\", "/\\/", "\\\\/"}) {
        EXPECT_EQ(fsutil::makeDirectory((folder.path("sub") + end).c_str(), 0777), 0) << end;
        EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"sub/", ""}})) << end;
        std::filesystem::remove(folder.path("sub"));
    }
}

TEST_F(MakeDirectory, RefusesAPathOfNothingButSeparators) {
    for (const char* path : {"", "/", "\\", "//", "\\\\", "/\\/"}) {
        EXPECT_EQ(fsutil::makeDirectory(path, 0777), -1) << path;
    }
}

TEST_F(MakeDirectory, MakesOneLevelThatIsNotThereYet) {
    folder.write("file", "x");
    folder.makeFolder("sub");
    for (const char* name : {"none/sub", "sub", "sub/", "file", "file/sub", "sub/.", "sub/.."}) {
        EXPECT_EQ(fsutil::makeDirectory(folder.path(name).c_str(), 0777), -1) << name;
    }
    EXPECT_EQ(fsutil::makeDirectory(folder.path(string(300, 'x')).c_str(), 0777), -1);
    EXPECT_EQ(fsutil::makeDirectory(string(5000, '/').append("x").c_str(), 0777), -1);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"file", "x"}, {"sub/", ""}}));
}

TEST_F(MakeDirectory, DoesNotUseTheMode) {
    const FileModeMask mask(022);
    EXPECT_EQ(fsutil::makeDirectory(folder.path("a").c_str(), 0), 0);
    EXPECT_EQ(fsutil::makeDirectory(folder.path("b").c_str(), 0777), 0);
    EXPECT_EQ(permissionsOf(folder.path("a")) & 0755U, 0755U);
    EXPECT_EQ(permissionsOf(folder.path("b")), permissionsOf(folder.path("a")));
}

TEST_F(MakeDirectory, FailsInAFolderThatMayNotBeWritten) {
    setPermissions(folder.makeFolder("closed"), 0555);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(fsutil::makeDirectory(folder.path("closed/sub").c_str(), 0777), -1);
        EXPECT_EQ(fsutil::ensureDirectory(folder.path("closed/sub")), 1);
        return true;
    }));
    EXPECT_FALSE(folder.exists("closed/sub"));
}

// --- copyStream ---

class CopyStream : public Files {
protected:
    // Copies behind what `flags` leave in the file "out", which holds "begin" before.
    int copyTo(const char* source, int flags) {
        const string out = folder.write("out", "begin");
        const int descriptor = open(out.c_str(), flags);
        EXPECT_GE(descriptor, 0);
        const int result = fsutil::copyStream(folder.path(source).c_str(), descriptor);
        EXPECT_EQ(close(descriptor), 0) << "the descriptor belongs to the caller";
        return result;
    }
};

constexpr std::size_t kSizes[] = {0, 1, 8191, 8192, 8193, 16384, 100000, 3 * 1024 * 1024 + 7};

TEST_F(CopyStream, WritesTheWholeFileFromTheDescriptorsPosition) {
    for (const std::size_t size : kSizes) {
        const string bytes = bytesOf(size);
        folder.write("in", bytes);
        EXPECT_EQ(copyTo("in", O_WRONLY | O_TRUNC), 0) << size;
        EXPECT_TRUE(tests::readBytes(folder.path("out")) == bytes) << size;
    }
}

TEST_F(CopyStream, AddsToAFileThatIsOpenForAppending) {
    const string bytes = bytesOf(20000);
    folder.write("in", bytes);
    EXPECT_EQ(copyTo("in", O_WRONLY | O_APPEND), 0);
    EXPECT_TRUE(tests::readBytes(folder.path("out")) == "begin" + bytes);
}

TEST_F(CopyStream, WritesToAPipe) {
    const string bytes = bytesOf(30000);
    folder.write("in", bytes);
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(fsutil::copyStream(folder.path("in").c_str(), ends[1]), 0);
    close(ends[1]);
    string got(40000, '\0');
    std::size_t length = 0;
    for (ssize_t more = 1; more > 0; length += static_cast<std::size_t>(more)) {
        more = read(ends[0], got.data() + length, static_cast<unsigned>(got.size() - length));
        ASSERT_GE(more, 0);
    }
    close(ends[0]);
    got.resize(length);
    EXPECT_TRUE(got == bytes);
}

TEST_F(CopyStream, FailsWithoutASourceOrAPlaceToWriteTo) {
    folder.makeFolder("sub");
    EXPECT_EQ(copyTo("none", O_WRONLY), -1);
    EXPECT_EQ(copyTo("sub", O_WRONLY), -1);
    EXPECT_EQ(folder.read("out"), "begin");
    folder.write("in", "bytes");
    EXPECT_EQ(copyTo("in", O_RDONLY), -1);
    EXPECT_EQ(folder.read("out"), "begin");
    EXPECT_EQ(fsutil::copyStream(folder.path("in").c_str(), -1), -1);
}

TEST_F(CopyStream, FailsWhenTheDiskIsFull) {
    folder.write("in", bytesOf(100000));
    EXPECT_TRUE(tests::succeedsWithFileLimit(8192, [&] { return copyTo("in", O_WRONLY | O_TRUNC) == -1; }));
    EXPECT_TRUE(tests::readBytes(folder.path("out")) == bytesOf(100000).substr(0, 8192));
}

// --- copyFileContents ---

using CopyFileContents = Files;

TEST_F(CopyFileContents, CopiesFilesOfAnySize) {
    for (const std::size_t size : kSizes) {
        const string bytes = bytesOf(size);
        const string source = folder.write("in", bytes);
        EXPECT_EQ(fsutil::copyFileContents(source.c_str(), folder.path("out").c_str()), 0) << size;
        EXPECT_TRUE(tests::readBytes(folder.path("out")) == bytes) << size;
        EXPECT_TRUE(tests::readBytes(folder.path("in")) == bytes) << size;
        std::filesystem::remove(folder.path("out"));
    }
}

TEST_F(CopyFileContents, ReplacesALongerFile) {
    const string source = folder.write("in", "short");
    const string destination = folder.write("out", bytesOf(50000));
    EXPECT_EQ(fsutil::copyFileContents(source.c_str(), destination.c_str()), 0);
    EXPECT_EQ(folder.read("out"), "short");
}

TEST_F(CopyFileContents, GivesANewFileThePermissionsOfTheSource) {
    const FileModeMask mask(0);
    for (const unsigned permissions : {0777U, 0644U, 0600U, 0444U, 0400U, 0751U}) {
        const string source = folder.write("in", "x");
        setPermissions(source, permissions);
        EXPECT_EQ(fsutil::copyFileContents(source.c_str(), folder.path("out").c_str()), 0);
        EXPECT_EQ(permissionsOf(folder.path("out")), tests::keptPermissions(permissions));
        setPermissions(folder.path("out"), 0666);  // Windows does not remove what is read-only
        setPermissions(source, 0666);
        std::filesystem::remove(folder.path("out"));
        std::filesystem::remove(source);
    }
}

TEST_F(CopyFileContents, KeepsThePermissionsOfAnExistingDestination) {
    const FileModeMask mask(0);
    for (const unsigned permissions : {0777U, 0644U, 0600U, 0622U}) {
        const string source = folder.write("in", "new");
        setPermissions(source, 0640);
        const string destination = folder.write("out", "old");
        setPermissions(destination, permissions);
        EXPECT_EQ(fsutil::copyFileContents(source.c_str(), destination.c_str()), 0);
        EXPECT_EQ(folder.read("out"), "new");
        EXPECT_EQ(permissionsOf(destination), tests::keptPermissions(permissions));
    }
}

TEST_F(CopyFileContents, NeverCopiesAFileOntoItself) {
    const string file = folder.write("sub/amp.lib", "content");
    std::filesystem::create_hard_link(file, folder.path("hard"));
    tests::makeLink("sub/amp.lib", folder.path("soft"));
    tests::makeLink("sub", folder.path("other"));
    for (const char* name : {"sub/amp.lib", "sub/./amp.lib", "./sub/amp.lib", "sub//amp.lib",
                             "sub/../sub/amp.lib", "hard", "soft", "other/amp.lib"}) {
        EXPECT_EQ(fsutil::copyFileContents(file.c_str(), folder.path(name).c_str()), -1) << name;
        EXPECT_EQ(fsutil::copyFileContents(folder.path(name).c_str(), file.c_str()), -1) << name;
        EXPECT_EQ(folder.read("sub/amp.lib"), "content") << name;
    }
    const string missing = folder.path("missing");
    EXPECT_EQ(fsutil::copyFileContents(missing.c_str(), missing.c_str()), -1);
    EXPECT_FALSE(folder.exists("missing"));
}

TEST_F(CopyFileContents, LeavesTheDestinationAloneWhenTheSourceIsNoFileToRead) {
    folder.makeFolder("sub");
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
    const string old = folder.write("out", "old");
    for (const char* source : {"none", "sub", "sub/", "none/x", "out/x", "pipe"}) {
        EXPECT_EQ(fsutil::copyFileContents(folder.path(source).c_str(), old.c_str()), -1) << source;
        EXPECT_EQ(folder.read("out"), "old") << source;
        EXPECT_EQ(fsutil::copyFileContents(folder.path(source).c_str(), folder.path("new").c_str()), -1)
            << source;
        EXPECT_FALSE(folder.exists("new")) << source;
    }
}

TEST_F(CopyFileContents, FailsForADestinationThatIsNoFile) {
    const string source = folder.write("in", "x");
    folder.makeFolder("sub");
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
    for (const string& name :
         {string("sub"), string("none/out"), string("in/out"), string("pipe"), string(300, 'x')}) {
        EXPECT_EQ(fsutil::copyFileContents(source.c_str(), folder.path(name).c_str()), -1) << name;
    }
    EXPECT_EQ(fsutil::copyFileContents(source.c_str(), ""), -1);
    EXPECT_EQ(folder.read("in"), "x");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("sub")));
}

TEST_F(CopyFileContents, FailsForAFileOrFolderWithoutPermission) {
    const string open = folder.makeFolder("open");
    setPermissions(open, 0777);
    const string secret = folder.write("secret", "s");
    const string readable = folder.write("readable", "r");
    const string fixed = folder.write("fixed", "old");
    folder.makeFolder("closed");
    setPermissions(secret, 0);
    setPermissions(readable, 0444);
    setPermissions(fixed, 0444);
    setPermissions(folder.path("closed"), 0555);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(fsutil::copyFileContents(secret.c_str(), folder.path("open/a").c_str()), -1);
        EXPECT_FALSE(folder.exists("open/a"));
        EXPECT_EQ(fsutil::copyFileContents(readable.c_str(), fixed.c_str()), -1);
        EXPECT_EQ(fsutil::copyFileContents(readable.c_str(), folder.path("closed/a").c_str()), -1);
        EXPECT_FALSE(folder.exists("closed/a"));
        EXPECT_EQ(fsutil::copyFileContents(readable.c_str(), folder.path("open/a").c_str()), 0);
        EXPECT_EQ(folder.read("open/a"), "r");
        return true;
    }));
    EXPECT_EQ(folder.read("fixed"), "old");
}

TEST_F(CopyFileContents, LeavesAPartWhenTheDiskIsFull) {
    const string bytes = bytesOf(100000);
    const string source = folder.write("in", bytes);
    for (const std::size_t limit : {0U, 1U, 8191U, 8192U, 8193U, 99999U}) {
        EXPECT_TRUE(tests::succeedsWithFileLimit(limit, [&] {
            return fsutil::copyFileContents(source.c_str(), folder.path("out").c_str()) == -1;
        })) << limit;
        EXPECT_TRUE(tests::readBytes(folder.path("out")) == bytes.substr(0, limit)) << limit;
        EXPECT_TRUE(tests::succeedsWithFileLimit(limit, [&] {
            return fsutil::copyFile(source, folder.path("copy")) == 1;
        })) << limit;
    }
    EXPECT_TRUE(tests::succeedsWithFileLimit(bytes.size(), [&] {
        return fsutil::copyFileContents(source.c_str(), folder.path("out").c_str()) == 0;
    }));
    EXPECT_TRUE(tests::readBytes(folder.path("out")) == bytes);
}

// --- isDirectory, isRegularFile ---

using TypeOfPath = Files;

TEST_F(TypeOfPath, TellsFoldersFromPlainFiles) {
    folder.write("amp.sim", "");
    folder.makeFolder("sub");
    folder.makeFolder("sub.sim");
    tests::makeLink("amp.sim", folder.path("toFile"));
    tests::makeLink("sub", folder.path("toFolder"));
    tests::makeLink("nowhere", folder.path("toNothing"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
    const struct {
        string name;
        bool isFolder;
        bool isFile;
    } cases[] = {
        {"amp.sim", false, true},
        {"sub", true, false},
        {"sub/", true, false},
        {"sub.sim", true, false},
        {"toFile", false, true},
        {"toFolder", true, false},
        {"toNothing", false, false},
        {"pipe", false, false},
        {"none", false, false},
        {"amp.sim/", false, false},
        {"amp.sim/x", false, false},
        {string("amp.sim\0", 8), false, false},
        {string("sub\0x", 5), false, false},
    };
    for (const auto& c : cases) {
        for (const bool before : {false, true}) {
            bool flag = before;
            EXPECT_EQ(fsutil::isDirectory(folder.path(c.name), flag), 0) << c.name;
            EXPECT_EQ(flag, c.isFolder) << c.name;
            flag = before;
            EXPECT_EQ(fsutil::isRegularFile(folder.path(c.name), flag), 0) << c.name;
            EXPECT_EQ(flag, c.isFile) << c.name;
        }
        EXPECT_EQ(fsutil::isPresentFile(folder.path(c.name)), c.isFile) << c.name;
    }
    bool flag = true;
    EXPECT_EQ(fsutil::isDirectory("", flag), 0);
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_EQ(fsutil::isRegularFile("", flag), 0);
    EXPECT_FALSE(flag);
}

TEST_F(TypeOfPath, CountsOnlyWhatMayBeRead) {
    setPermissions(folder.write("secret", "x"), 0222);
    setPermissions(folder.makeFolder("closed"), 0333);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        bool flag = true;
        EXPECT_EQ(fsutil::isRegularFile(folder.path("secret"), flag), 0);
        EXPECT_FALSE(flag);
        flag = true;
        EXPECT_EQ(fsutil::isDirectory(folder.path("closed"), flag), 0);
        EXPECT_FALSE(flag);
        return true;
    }));
    setPermissions(folder.path("closed"), 0755);
}

// --- ensureDirectory ---

using EnsureDirectory = Files;

TEST_F(EnsureDirectory, MakesOneLevelAndAcceptsWhatIsThere) {
    folder.write("file", "x");
    folder.makeFolder("there");
    const struct {
        string name;
        int status;
    } cases[] = {
        {"new", 0},      {"new", 0},      {"new2/", 0},
        {"there", 0},    {"there/", 0},   {"file", 0},  // a writable plain file passes
        {"none/sub", 1}, {"file/sub", 1}, {string("a\0b", 3), 1},
    };
    for (const auto& c : cases) EXPECT_EQ(fsutil::ensureDirectory(folder.path(c.name)), c.status) << c.name;
    EXPECT_EQ(fsutil::ensureDirectory(""), 1);
    EXPECT_EQ(fsutil::ensureDirectory("/"), 0);
    EXPECT_EQ(fsutil::ensureDirectory(folder.path(string(300, 'x'))), 1);
    EXPECT_EQ(tests::treeOf(folder.path()),
              (tests::Tree{{"file", "x"}, {"there/", ""}, {"new/", ""}, {"new2/", ""}}));
}

TEST_F(EnsureDirectory, RefusesWhatMayNotBeWritten) {
    setPermissions(folder.makeFolder("closed"), 0555);
    setPermissions(folder.makeFolder("writable"), 0733);
    setPermissions(folder.write("fixed", "x"), 0444);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(fsutil::ensureDirectory(folder.path("closed")), 1);
        EXPECT_EQ(fsutil::ensureDirectory(folder.path("fixed")), 1);
        EXPECT_EQ(fsutil::ensureDirectory(folder.path("writable")), 0);  // reading is not asked for
        return true;
    }));
}

// --- createDirectories ---

class CreateDirectories : public Files {
protected:
    void SetUp() override {
        setLastErrorCode(-7);
        setLastErrorMessage("rubbish");
    }

    static void expectError(int code, const string& message) {
        int storedCode = 0;
        string storedMessage;
        getLastErrorCode(storedCode);
        getLastErrorMessage(storedMessage);
        EXPECT_EQ(storedCode, code);
        EXPECT_EQ(storedMessage, message);
    }

    static void expectFailureAt(const string& path) {
        expectError(10102, ("Failed to create directory \"" + path +
                            "\". Check write permissions on the parent directory.")
                               .substr(0, 1023));
    }
};

TEST_F(CreateDirectories, MakesEveryMissingFolder) {
    const struct {
        const char* path;
        tests::Tree tree;
    } cases[] = {
        {"a", {{"a/", ""}}},
        {"a/b/c", {{"a/", ""}, {"a/b/", ""}, {"a/b/c/", ""}}},
        {"a/b/c/", {{"a/", ""}, {"a/b/", ""}, {"a/b/c/", ""}}},
        {"a//b", {{"a/", ""}, {"a/b/", ""}}},
        {"a\\b\\c", {{"a/", ""}, {"a/b/", ""}, {"a/b/c/", ""}}},
        {"a/../b/c", {{"a/", ""}, {"b/", ""}, {"b/c/", ""}}},
    };
    for (const auto& c : cases) {
        const TestFolder fresh;
        EXPECT_EQ(fsutil::createDirectories(fresh.path(c.path)), 0) << c.path;
        EXPECT_EQ(tests::treeOf(fresh.path()), c.tree) << c.path;
        EXPECT_EQ(fsutil::createDirectories(fresh.path(c.path)), 0) << c.path << ", again";
        EXPECT_EQ(tests::treeOf(fresh.path()), c.tree) << c.path;
    }
    expectError(-7, "rubbish");
}

TEST_F(CreateDirectories, TakesTheFirstComponentForGranted) {
    const auto inFolder = [&](const char* path) {
        const auto before = std::filesystem::current_path();
        std::filesystem::current_path(folder.path());
        const int status = fsutil::createDirectories(path);
        std::filesystem::current_path(before);
        return status;
    };
    EXPECT_EQ(inFolder("a/b"), 10102);
    expectFailureAt("a/b");
    EXPECT_EQ(tests::treeOf(folder.path()), tests::Tree{});
    EXPECT_EQ(inFolder("a/b/c"), 10102);
    expectFailureAt("a/b");
    folder.makeFolder("a");
    EXPECT_EQ(inFolder("a/b/c"), 0);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"a/", ""}, {"a/b/", ""}, {"a/b/c/", ""}}));
}

TEST_F(CreateDirectories, StopsAtTheFirstFolderThatCannotBeMade) {
    folder.write("a/file", "x");
    EXPECT_EQ(fsutil::createDirectories(folder.path("a/b/../file/c/d")), 10102);
    expectFailureAt(folder.path("a/b/../file/c"));
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"a/", ""}, {"a/b/", ""}, {"a/file", "x"}}));
}

TEST_F(CreateDirectories, NamesTheFailedFolderWithForwardSlashes) {
    folder.write("file", "x");
    EXPECT_EQ(fsutil::createDirectories(folder.path() + "\\file\\sub\\deeper"), 10102);
    expectFailureAt(folder.path("file/sub"));
}

TEST_F(CreateDirectories, AcceptsAWritableFileInPlaceOfTheLastFolder) {
    folder.write("file", "x");
    EXPECT_EQ(fsutil::createDirectories(folder.path("file")), 0);
    expectError(-7, "rubbish");
}

TEST_F(CreateDirectories, FailsWithoutPermission) {
    setPermissions(folder.makeFolder("closed"), 0555);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(fsutil::createDirectories(folder.path("closed/a/b")), 10102);
        expectFailureAt(folder.path("closed/a"));
        EXPECT_EQ(fsutil::createDirectories(folder.path("closed")), 0);  // it is there and may be read
        return true;
    }));
}

TEST_F(CreateDirectories, RefusesAPathBeyondTheSystemsLimit) {
    // Folders of 200 letters each, up to a given length of the whole path.
    const auto pathOf = [&](std::size_t length) {
        string path = folder.path();
        while (path.size() + 201 < length) path += "/" + string(200, 'x');
        return path + "/" + string(length - path.size() - 1, 'y');
    };
    for (const std::size_t length : {std::size_t{PATH_MAX}, std::size_t{PATH_MAX + 1}, std::size_t{100000}}) {
        const string path = folder.path() + "/" + string(length - folder.path().size() - 1, 'z');
        EXPECT_EQ(fsutil::createDirectories(path), 10102) << length;
        expectFailureAt(path);
        EXPECT_EQ(fsutil::createDirectories(pathOf(length)), 10102) << length;
        expectFailureAt(pathOf(length));
        EXPECT_EQ(tests::treeOf(folder.path()), tests::Tree{}) << length;
    }
    setLastErrorCode(-7);
    setLastErrorMessage("rubbish");
    const string longest = pathOf(PATH_MAX - 1);
    EXPECT_EQ(fsutil::createDirectories(longest), 0);
    EXPECT_TRUE(std::filesystem::is_directory(longest));
    expectError(-7, "rubbish");
}

TEST_F(CreateDirectories, FailsForATextThatIsNoPath) {
    EXPECT_EQ(fsutil::createDirectories(""), 10102);
    expectFailureAt("");
    EXPECT_EQ(fsutil::createDirectories(folder.path(string("a\0b", 3))), 10102);
    expectFailureAt(folder.path("a"));
    EXPECT_EQ(tests::treeOf(folder.path()), tests::Tree{});
}

// --- copyFile ---

using CopyFile = Files;

TEST_F(CopyFile, CopiesOverOldAndToNewFiles) {
    const string source = folder.write("in", "new");
    folder.write("old", "something longer");
    for (const char* name : {"old", "fresh"}) {
        EXPECT_EQ(fsutil::copyFile(source, folder.path(name)), 0) << name;
        EXPECT_EQ(folder.read(name), "new") << name;
    }
}

TEST_F(CopyFile, DoesNothingForTwoTextsThatAreEqualIgnoringCase) {
    EXPECT_EQ(fsutil::copyFile("C:/a/x.sim", "c:/A/X.SIM"), 0);
    EXPECT_EQ(fsutil::copyFile("", ""), 0);
    const string file = folder.write("amp.sim", "content");
    EXPECT_EQ(fsutil::copyFile(file, file), 0);
    EXPECT_EQ(fsutil::copyFile(file, folder.path("AMP.SIM")), 0);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"amp.sim", "content"}}));
    setPermissions(file, 0444);
    EXPECT_EQ(fsutil::copyFile(file, file), 0);
    EXPECT_EQ(permissionsOf(file), tests::keptPermissions(0444U));
}

TEST_F(CopyFile, DoesNothingWhereBothTextsNameOneFile) {
    const string file = folder.write("sub/amp.lib", "content");
    setPermissions(file, 0444);
    std::filesystem::create_hard_link(file, folder.path("hard"));
    tests::makeLink("sub/amp.lib", folder.path("soft"));
    for (const char* name : {"sub/./amp.lib", "sub//amp.lib", "hard", "soft"}) {
        EXPECT_EQ(fsutil::copyFile(file, folder.path(name)), 0) << name;
        EXPECT_EQ(fsutil::copyFile(folder.path(name), file), 0) << name;
        EXPECT_EQ(folder.read("sub/amp.lib"), "content") << name;
        EXPECT_EQ(permissionsOf(file), 0444U) << name;
    }
}

TEST_F(CopyFile, AddsTheOwnersRightToWriteAndTakesNothingAway) {
    if (tests::kOnWindows) GTEST_SKIP() << "of all permissions only read-only is kept there";
    const FileModeMask mask(0);
    const struct {
        unsigned source;
        unsigned copy;
    } cases[] = {{0444, 0644}, {0400, 0600}, {0555, 0755}, {0664, 0664}, {0777, 0777}, {0464, 0664}};
    for (const auto& c : cases) {
        const string source = folder.write("in", "x");
        setPermissions(source, c.source);
        EXPECT_EQ(fsutil::copyFile(source, folder.path("out")), 0) << c.source;
        EXPECT_EQ(permissionsOf(folder.path("out")), tests::keptPermissions(c.copy)) << c.source;
        EXPECT_EQ(permissionsOf(source), tests::keptPermissions(c.source));
        std::filesystem::remove(source);
        std::filesystem::remove(folder.path("out"));
    }
}

TEST_F(CopyFile, IsWritableAlsoWhereNewFilesAreNot) {
    if (tests::kOnWindows) GTEST_SKIP() << "of all permissions only read-only is kept there";
    const FileModeMask mask(0222);
    const string source = folder.write("in", "x");
    for (const unsigned permissions : {0444U, 0644U}) {
        setPermissions(source, permissions);
        EXPECT_EQ(fsutil::copyFile(source, folder.path("out")), 0);
        EXPECT_EQ(permissionsOf(folder.path("out")), 0644U) << permissions;
        std::filesystem::remove(folder.path("out"));
    }
}

TEST_F(CopyFile, KeepsThePermissionsOfAnExistingDestinationButForTheRightToWrite) {
    const string source = folder.write("in", "new");
    setPermissions(source, 0400);
    const string destination = folder.write("out", "old");
    for (const unsigned permissions : {0640U, 0777U, 0200U}) {
        setPermissions(destination, permissions);
        EXPECT_EQ(fsutil::copyFile(source, destination), 0);
        EXPECT_EQ(permissionsOf(destination), tests::keptPermissions(permissions));
    }
    if (geteuid() != 0) GTEST_SKIP() << "only root can write a file without the right to write";
    setPermissions(destination, 0444);
    EXPECT_EQ(fsutil::copyFile(source, destination), 0);
    EXPECT_EQ(permissionsOf(destination), tests::keptPermissions(0644U));
}

TEST_F(CopyFile, OfAReadOnlyFileIsWritableForItsOwner) {
    setPermissions(folder.path(), 0777);
    const string source = folder.write("in", "x");
    setPermissions(source, 0444);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(fsutil::copyFile(source, folder.path("out")), 0);
        EXPECT_EQ(access(folder.path("out").c_str(), W_OK), 0);
        EXPECT_EQ(fsutil::copyFile(source, folder.path("out")), 0);
        return true;
    }));
}

TEST_F(CopyFile, FailsWhereTheCopyCannotBeMadeWritable) {
    // Someone else's file that all may write but its owner.
    setPermissions(folder.path(), 0777);
    const string source = folder.write("in", "new");
    const string destination = folder.write("out", "old");
    setPermissions(destination, 0466);
    if (geteuid() != 0) GTEST_SKIP() << "needs a file of another user";
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] { return fsutil::copyFile(source, destination) == 1; }));
}

TEST_F(CopyFile, FailsWithoutSourceOrPlace) {
    const string source = folder.write("in", "x");
    folder.makeFolder("sub");
    const struct {
        string from;
        string to;
    } cases[] = {
        {"none", "out"},
        {"sub", "out"},
        {"in", "sub"},
        {"in", "none/out"},
        {"in", "in/out"},
        {string("in\0x", 4), "out"},
        {"in", string("out\0x", 5)},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fsutil::copyFile(folder.path(c.from), folder.path(c.to)), 1) << c.from << " to " << c.to;
        EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"in", "x"}, {"sub/", ""}}))
            << c.from << " to " << c.to;
    }
    EXPECT_EQ(fsutil::copyFile(source, ""), 1);
    EXPECT_EQ(fsutil::copyFile("", source), 1);
    EXPECT_EQ(folder.read("in"), "x");
}

TEST_F(CopyFile, KeepsTheTimeOfTheSource) {
    namespace fs = std::filesystem;
    const string source = folder.write("in", "new");
    folder.write("old", "old");
    // A time in the past with a part of a second.
    const auto time =
        fs::file_time_type::clock::now() - std::chrono::hours(5000) + std::chrono::milliseconds(7);
    fs::last_write_time(source, time);
    const auto kept = fs::last_write_time(source);
    for (const char* name : {"old", "fresh"}) {
        EXPECT_EQ(fsutil::copyFile(source, folder.path(name)), 0) << name;
        EXPECT_EQ(fs::last_write_time(folder.path(name)), kept) << name;
    }
    EXPECT_EQ(fsutil::copyFileContents(source.c_str(), folder.path("contents").c_str()), 0);
    EXPECT_EQ(fs::last_write_time(folder.path("contents")), kept);
    EXPECT_EQ(fs::last_write_time(source), kept);
}

TEST_F(CopyFile, LeavesTheDestinationAloneWhenTheSourceCannotBeRead) {
    setPermissions(folder.path(), 0777);
    folder.makeFolder("sub");
    setPermissions(folder.write("secret", "x"), 0);
    setPermissions(folder.write("out", "earlier"), 0666);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        for (const char* name : {"none", "sub", "secret"}) {
            EXPECT_EQ(fsutil::copyFile(folder.path(name), folder.path("out")), 1) << name;
            EXPECT_EQ(fsutil::copyWholeFile(folder.path(name), folder.path("out")), 1) << name;
            EXPECT_EQ(tests::readFile(folder.path("out")), "earlier") << name;
        }
        return true;
    }));
}

// --- copyWholeFile, copyWholeFileIfPresent ---

using CopyWholeFile = Files;

TEST_F(CopyWholeFile, LeavesNoPartWhenTheDiskIsFull) {
    const string bytes = bytesOf(100000);
    const string source = folder.write("in", bytes);
    for (const std::size_t limit : {0U, 1U, 8192U, 99999U}) {
        folder.write("earlier", "e");
        EXPECT_TRUE(tests::succeedsWithFileLimit(limit, [&] {
            bool isPresent = false;
            EXPECT_EQ(fsutil::copyWholeFile(source, folder.path("earlier")), 1);
            EXPECT_EQ(fsutil::copyWholeFile(source, folder.path("out")), 1);
            EXPECT_EQ(fsutil::copyWholeFileIfPresent(source, folder.path("out2"), isPresent), 1);
            return isPresent;
        })) << limit;
        EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"in", bytes}})) << limit;
    }
    EXPECT_TRUE(tests::succeedsWithFileLimit(
        bytes.size(), [&] { return fsutil::copyWholeFile(source, folder.path("out")) == 0; }));
    EXPECT_TRUE(tests::readBytes(folder.path("out")) == bytes);
}

// The file is found, and removed, under the spelling that it has.
TEST_F(CopyWholeFile, LeavesNoPartUnderAnotherSpelling) {
    const string source = folder.write("in", "text");
    folder.write("Out", "earlier");
    EXPECT_TRUE(tests::succeedsWithFileLimit(
        2, [&] { return fsutil::copyWholeFile(source, folder.path("OUT")) == 1; }));
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"in", "text"}}));
}

using CopyFileIfPresent = Files;

TEST_F(CopyFileIfPresent, TellsAnAbsentSourceFromAFailedCopy) {
    folder.write("in", "text");
    folder.makeFolder("sub");
    const struct {
        string from;
        string to;
        int status;
        bool isPresent;
        const char* copied;  // the content of "out" afterwards, null for none
    } cases[] = {
        {"in", "out", 0, true, "text"},
        {"in", "in", 0, true, nullptr},
        {"in", "IN", 0, true, nullptr},
        {"in", "./in", 0, true, nullptr},
        {"none", "out", 0, false, nullptr},
        {"none", "none", 0, false, nullptr},
        {"none", "none/out", 0, false, nullptr},
        {"sub", "out", 0, false, nullptr},
        {"sub", "sub", 0, false, nullptr},
        {"in/x", "out", 0, false, nullptr},
        {string("in\0x", 4), "out", 0, false, nullptr},
        {"in", "none/out", 1, true, nullptr},
        {"in", "sub", 1, true, nullptr},
        {"in", string("out\0x", 5), 1, true, nullptr},
    };
    for (const auto& c : cases) {
        for (const bool before : {false, true}) {
            bool isPresent = before;
            EXPECT_EQ(fsutil::copyWholeFileIfPresent(folder.path(c.from), folder.path(c.to), isPresent),
                      c.status)
                << c.from << " to " << c.to;
            EXPECT_EQ(isPresent, c.isPresent) << c.from << " to " << c.to;
            tests::Tree expected = {{"in", "text"}, {"sub/", ""}};
            if (c.copied != nullptr) expected["out"] = c.copied;
            EXPECT_EQ(tests::treeOf(folder.path()), expected) << c.from << " to " << c.to;
            std::filesystem::remove(folder.path("out"));
        }
    }
}

TEST_F(CopyFileIfPresent, MakesTheCopyWritableAndTakesOnlyWhatMayBeRead) {
    setPermissions(folder.path(), 0777);
    setPermissions(folder.write("fixed", "text"), 0444);
    setPermissions(folder.write("secret", "text"), 0);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        bool isPresent = false;
        EXPECT_EQ(fsutil::copyWholeFileIfPresent(folder.path("fixed"), folder.path("out"), isPresent), 0);
        EXPECT_TRUE(isPresent);
        EXPECT_EQ(permissionsOf(folder.path("out")) & 0200U, 0200U);
        EXPECT_EQ(fsutil::copyWholeFileIfPresent(folder.path("secret"), folder.path("out2"), isPresent), 0);
        EXPECT_FALSE(isPresent);
        EXPECT_FALSE(folder.exists("out2"));
        return true;
    }));
}

// --- deleteFile ---

using DeleteFile = Files;

TEST_F(DeleteFile, RemovesOneFile) {
    folder.write("amp.sim", "x");
    folder.write("amp2.sim", "y");
    EXPECT_EQ(fsutil::deleteFile(folder.path("amp.sim")), 0);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"amp2.sim", "y"}}));
    EXPECT_EQ(fsutil::deleteFile(folder.path("amp.sim")), 1);
}

TEST_F(DeleteFile, RemovesAReadOnlyFileAndALinkButNotItsTarget) {
    setPermissions(folder.write("fixed", "x"), 0444);
    folder.write("target", "y");
    tests::makeLink("target", folder.path("link"));
    tests::makeLink("nowhere", folder.path("loose"));
    EXPECT_EQ(fsutil::deleteFile(folder.path("fixed")), 0);
    EXPECT_EQ(fsutil::deleteFile(folder.path("link")), 0);
    EXPECT_EQ(fsutil::deleteFile(folder.path("loose")), 0);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"target", "y"}}));
}

TEST_F(DeleteFile, FailsForWhatIsNoFile) {
    folder.write("sub/file", "x");
    for (const string& name :
         {string("none"), string("none/x"), string("sub"), string("sub/"), string("sub/none"),
          string("sub/file/"), string("sub/file/x"), string("sub/file\0", 9)}) {
        EXPECT_EQ(fsutil::deleteFile(folder.path(name)), 1) << name;
    }
    EXPECT_EQ(fsutil::deleteFile(""), 1);
    EXPECT_EQ(fsutil::deleteFile("/"), 1);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"sub/", ""}, {"sub/file", "x"}}));
}

TEST_F(DeleteFile, FailsInAFolderThatMayNotBeWritten) {
    folder.write("closed/file", "x");
    setPermissions(folder.path("closed"), 0555);
    EXPECT_TRUE(
        tests::succeedsWithoutRoot([&] { return fsutil::deleteFile(folder.path("closed/file")) == 1; }));
    EXPECT_EQ(folder.read("closed/file"), "x");
}

// --- listings ---

using Names = std::vector<string>;

class Listing : public Files {
protected:
    static Names namesIn(const string& path) {
        Names names;
        fsutil::DirectoryListing* handle = nullptr;
        EXPECT_EQ(fsutil::openDirectory(path, handle), 0) << path;
        if (handle == nullptr) return names;
        string name = "rubbish";
        while (fsutil::readDirectory(handle, name) == 0) names.push_back(name);
        EXPECT_EQ(name, "");
        name = "rubbish";
        EXPECT_EQ(fsutil::readDirectory(handle, name), 1) << "once more";
        EXPECT_EQ(name, "");
        EXPECT_EQ(fsutil::closeDirectory(handle), 0);
        return names;
    }
};

TEST_F(Listing, OfAnEmptyFolderHasItselfAndItsParent) {
    EXPECT_EQ(namesIn(folder.path()), (Names{".", ".."}));
}

TEST_F(Listing, IsInAscendingOrderIgnoringCase) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    for (const char* name : {"b.sim", "B10", "a", "C", "AMP.SIM", "amp-S1.net", "b2", "b", ".hidden", "-",
                             "z z", "amp.sim", "Amp.sim", "10", "9", "\xE4", "...", "A"}) {
        folder.write(name, "");
    }
    folder.makeFolder("Sub");
    EXPECT_EQ(namesIn(folder.path()),
              (Names{".",     "..",  "-",          "...",     ".hidden", "10",      "9",
                     "A",     "a",   "amp-S1.net", "AMP.SIM", "Amp.sim", "amp.sim", "b",
                     "b.sim", "B10", "b2",         "C",       "Sub",     "z z",     "\xE4"}));
}

TEST_F(Listing, HoldsNamesOfEveryKindOfEntry) {
    folder.write("file", "");
    folder.makeFolder("folder");
    tests::makeLink("nowhere", folder.path("link"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
    EXPECT_EQ(namesIn(folder.path()), (Names{".", "..", "file", "folder", "link", "pipe"}));
}

TEST_F(Listing, PassesOverOneSeparatorAtTheEnd) {
    folder.write("sub/a", "");
    for (const char* end : {"", "/", "\\"}) {
        EXPECT_EQ(namesIn(folder.path("sub") + end), (Names{".", "..", "a"})) << end;
    }
    tests::makeLink("sub", folder.path("link"));
    EXPECT_EQ(namesIn(folder.path("link/")), (Names{".", "..", "a"}));
}

TEST_F(Listing, OfTheRootAndTheCurrentFolderWorks) {
    Names names = namesIn("/");
    ASSERT_GT(names.size(), 3U);
    EXPECT_EQ(names[0], ".");
    EXPECT_EQ(names[1], "..");
    EXPECT_NE(std::find(names.begin(), names.end(), "usr"), names.end());
    folder.write("a", "");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(namesIn("."), (Names{".", "..", "a"}));
    EXPECT_EQ(namesIn("./"), (Names{".", "..", "a"}));
    std::filesystem::current_path(before);
}

TEST_F(Listing, FailsForWhatIsNoFolder) {
    folder.write("file", "x");
    folder.makeFolder("sub");
    tests::makeLink("nowhere", folder.path("link"));
    fsutil::DirectoryListing* some = fsutil::openDirectoryListing(folder.path().c_str());
    for (const string& name : {string("file"), string("file/"), string("none"), string("none/"),
                               string("link"), string("sub\0", 4)}) {
        fsutil::DirectoryListing* handle = some;
        EXPECT_EQ(fsutil::openDirectory(folder.path(name), handle), 1) << name;
        EXPECT_EQ(handle, nullptr) << name;
    }
    fsutil::DirectoryListing* handle = some;
    EXPECT_EQ(fsutil::openDirectory("", handle), 1);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(fsutil::openDirectoryListing(folder.path("file").c_str()), nullptr);
    fsutil::closeDirectoryListing(some);
}

TEST_F(Listing, OfAFolderThatMayNotBeListedFailsThoughItsFilesMayBeRead) {
    folder.write("closed/file", "x");
    setPermissions(folder.path(), 0755);
    setPermissions(folder.path("closed"), 0311);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        fsutil::DirectoryListing* handle = nullptr;
        EXPECT_EQ(fsutil::openDirectory(folder.path("closed"), handle), 1);
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(tests::readFile(folder.path("closed/file")), "x");
        return true;
    }));
    setPermissions(folder.path("closed"), 0755);
}

TEST_F(Listing, EntriesCarryNumberAndLengths) {
    folder.write("a", "");
    folder.write(string(255, 'n'), "");
    fsutil::DirectoryListing* listing = fsutil::openDirectoryListing(folder.path().c_str());
    ASSERT_NE(listing, nullptr);
    const Names expected = {".", "..", "a", string(255, 'n')};
    const fsutil::DirectoryEntry* record = nullptr;
    std::uint16_t number = 0;
    for (const string& name : expected) {
        const fsutil::DirectoryEntry* entry = fsutil::nextDirectoryEntry(listing);
        ASSERT_NE(entry, nullptr) << name;
        EXPECT_EQ(entry->number, ++number) << name;
        EXPECT_EQ(entry->recordLength, name.size());
        EXPECT_EQ(entry->nameLength, name.size());
        EXPECT_EQ(string(entry->name), name);
        if (record == nullptr) record = entry;
        EXPECT_EQ(entry, record) << "one record for the whole process";
    }
    EXPECT_EQ(fsutil::nextDirectoryEntry(listing), nullptr);
    EXPECT_EQ(fsutil::nextDirectoryEntry(listing), nullptr);
    EXPECT_EQ(fsutil::closeDirectoryListing(listing), 0);
}

TEST_F(Listing, OfTwoFoldersMayBeReadInTurns) {
    folder.write("one/a", "");
    folder.write("two/b", "");
    fsutil::DirectoryListing* one = nullptr;
    fsutil::DirectoryListing* two = nullptr;
    ASSERT_EQ(fsutil::openDirectory(folder.path("one"), one), 0);
    ASSERT_EQ(fsutil::openDirectory(folder.path("two"), two), 0);
    Names names;
    string name;
    while (fsutil::readDirectory(one, name) == 0) {
        names.push_back(name);
        EXPECT_EQ(fsutil::readDirectory(two, name), 0);
        names.push_back(name);
    }
    EXPECT_EQ(names, (Names{".", ".", "..", "..", "a", "b"}));
    fsutil::closeDirectory(one);
    fsutil::closeDirectory(two);
}

TEST_F(Listing, IsThatOfTheMomentOfOpening) {
    folder.write("a", "");
    fsutil::DirectoryListing* handle = nullptr;
    ASSERT_EQ(fsutil::openDirectory(folder.path(), handle), 0);
    std::filesystem::remove(folder.path("a"));
    folder.write("b", "");
    Names names;
    string name;
    while (fsutil::readDirectory(handle, name) == 0) names.push_back(name);
    EXPECT_EQ(names, (Names{".", "..", "a"}));
    fsutil::closeDirectory(handle);
}

TEST_F(Listing, ClosesAndReleasesPartlyReadAndAbsentOnes) {
    folder.write("a", "");
    fsutil::DirectoryListing* listing = fsutil::openDirectoryListing(folder.path().c_str());
    ASSERT_NE(fsutil::nextDirectoryEntry(listing), nullptr);
    EXPECT_EQ(fsutil::closeDirectoryListing(listing), 0);
    EXPECT_EQ(fsutil::closeDirectoryListing(nullptr), 0);
    EXPECT_EQ(fsutil::closeDirectory(nullptr), 0);
}

TEST_F(Listing, HoldsManyNames) {
    for (int i = 0; i < 3000; ++i) folder.write("f" + std::to_string(10000 + i), "");
    const Names names = namesIn(folder.path());
    ASSERT_EQ(names.size(), 3002U);
    EXPECT_EQ(names[2], "f10000");
    EXPECT_EQ(names[3001], "f12999");
}

TEST(IsPathText, IsAnyTextWithoutANul) {
    EXPECT_TRUE(fsutil::isPathText(""));
    EXPECT_TRUE(fsutil::isPathText("C:\\a\xFF b"));
    EXPECT_FALSE(fsutil::isPathText(string("\0", 1)));
    EXPECT_FALSE(fsutil::isPathText(string("a\0", 2)));
    EXPECT_FALSE(fsutil::isPathText(string("a\0b", 3)));
}

}  // namespace
