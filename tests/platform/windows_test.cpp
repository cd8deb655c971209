// windows_test.cpp
//
// What only Windows has: text mode, drives, the code page, the limit of paths, read-only files, files that
// somebody holds open, modules found beside the program. Only built for Windows.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "attrlist/AttributeFile.h"
#include "draftel/DraftelProjectConverter.h"
#include "errors/errors.h"
#include "fsutil/files.h"
#include "fsutil/lines.h"
#include "platform/platform.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"
#include "support/builtFiles.h"
#include "tvx_wobj/tvx_wobj.h"

namespace {

namespace platform = tvxconv::platform;
namespace fsutil = tvxconv::fsutil;
using platform::FileKind;
using platform::FileMode;
using platform::FileStatus;
using std::string;
using tests::TestFolder;

using Names = std::vector<string>;

Names linesOf(const string& path) {
    fsutil::LineReader reader;
    EXPECT_EQ(reader.open(path), 0) << path;
    Names lines;
    for (std::string_view line; reader.next(line);) lines.emplace_back(line);
    return lines;
}

bool isReadOnly(const string& path) {
    return (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
}

void makeReadOnly(const string& path) {
    ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY)) << path;
}

// Wine takes the rights of the user who runs it for those of Windows, and root's are boundless.
bool canWriteToReadOnlyFiles() {
    const TestFolder folder;
    const string file = folder.write("file", "x");
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY);
    const HANDLE handle = CreateFileA(file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL);
    return handle != INVALID_HANDLE_VALUE;
}

// A file that somebody has open and shares with nobody, as long as the object lives.
class HeldFile {
public:
    explicit HeldFile(const string& path)
        : handle_(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << path;
    }
    ~HeldFile() { CloseHandle(handle_); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

private:
    HANDLE handle_;
};

class WindowsPlatform : public testing::Test {
protected:
    string path(const string& name) const { return folder_.path(name); }

    const TestFolder folder_;
};

// --- text mode ---

TEST_F(WindowsPlatform, ReadsTextWithoutCarriageReturnsAndToTheEndMark) {
    const struct {
        string bytes;
        Names lines;
    } cases[] = {
        {"a\r\nb\r\n", {"a\n", "b\n"}},
        {"a\nb\n", {"a\n", "b\n"}},
        {"a\r\nb", {"a\n", "b"}},
        {"a\rb\r\n", {"a\rb\n"}},
        {"a\r\n\x1A"
         "b\r\n",
         {"a\n"}},
        {string("a\0b\r\n", 5), {string("a\0b\n", 4)}},
        {"", {}},
    };
    for (const auto& c : cases) {
        folder_.write("text", c.bytes);
        EXPECT_EQ(linesOf(path("text")), c.lines) << testing::PrintToString(c.bytes);
    }
}

TEST_F(WindowsPlatform, ReadsLongTextWhereverItsLineEndsFall) {
    // One more byte in front each time, so that the end of a line falls on every place of a buffer.
    string text;
    Names lines;
    for (int i = 0; i < 20000; ++i) {
        text += "line " + std::to_string(i) + "\r\n";
        lines.push_back("line " + std::to_string(i) + "\n");
    }
    for (const string before : {"", "x", "xx", "xxx"}) {
        folder_.write("text", before + text);
        lines[0] = before + "line 0\n";
        EXPECT_TRUE(linesOf(path("text")) == lines) << before;
    }
}

TEST_F(WindowsPlatform, WritesTextWithCarriageReturns) {
    fsutil::LineWriter writer;
    ASSERT_EQ(writer.open(path("out")), 0);
    writer.write("a\n");
    writer.writeInPlaceOf("old\n", "b");
    writer.writeInPlaceOf("old", "c");
    writer.write("d");
    EXPECT_EQ(writer.close(), 0);
    EXPECT_TRUE(tests::readBytes(path("out")) == "a\r\nb\r\nc\r\nd");
}

TEST_F(WindowsPlatform, CopiesBytesAsTheyAre) {
    string bytes = string(
                       "a\nb\r\nc\r\x1A"
                       "d\0",
                       10) +
                   "\n";
    for (int i = 0; i < 100000; ++i) bytes += static_cast<char>(i % 251);
    const string source = folder_.write("in.dat", bytes);
    EXPECT_EQ(fsutil::copyFile(source, path("out.dat")), 0);
    EXPECT_TRUE(tests::readBytes(path("out.dat")) == bytes);
}

TEST_F(WindowsPlatform, RewritesAttributeListsWithCarriageReturns) {
    const string source = folder_.write("a.aap", "(FILE_TYPE \"PROFILE\"\r\n (\"name\" \"v\"))\r\n");
    tvxconv::attrlist::AttributeFile file(0);
    ASSERT_EQ(file.open(source.c_str()), 1003);
    file.read();
    file.close();
    file.write(path("b.aap").c_str());
    const string bytes = tests::readBytes(path("b.aap"));
    ASSERT_NE(bytes.find('\n'), string::npos);
    for (std::size_t at = bytes.find('\n'); at != string::npos; at = bytes.find('\n', at + 1)) {
        ASSERT_GT(at, 0U);
        EXPECT_EQ(bytes[at - 1], '\r') << at;
    }
    EXPECT_EQ(bytes.find("\r\r"), string::npos);
}

TEST_F(WindowsPlatform, ReadsLongAttributeListsWhateverTheirLineEnds) {
    constexpr std::size_t kCount = 20000;
    for (const string end : {"\n", "\r\n"}) {
        string text = "(FILE_TYPE \"PROFILE\"" + end;
        for (std::size_t i = 0; i < kCount; ++i) {
            text += "(\"key" + std::to_string(i) + "\" \"value" + std::to_string(i) + "\")" + end;
        }
        const string source = folder_.write("a.aap", text + ")" + end);
        tvxconv::attrlist::AttributeFile file(0);
        ASSERT_EQ(file.open(source.c_str()), 1003);
        file.read();
        ASSERT_EQ(file.attributeCount(), kCount);
        for (const std::size_t i : {std::size_t{0}, kCount / 2, kCount - 1}) {
            EXPECT_EQ(string(file.attributeAt(i)->key()), "key" + std::to_string(i));
            EXPECT_EQ(string(file.attributeAt(i)->value()), "value" + std::to_string(i));
        }
    }
}

// --- paths ---

TEST_F(WindowsPlatform, TakesBothSeparatorsAndAnyCase) {
    const string file = folder_.write("Sub/Amp.Sim", "text");
    string backslashes = file;
    std::replace(backslashes.begin(), backslashes.end(), '/', '\\');
    for (const string& spelled : {file, backslashes, path("SUB/aMP.sIM"), path("sub\\amp.sim")}) {
        FileStatus status;
        EXPECT_EQ(platform::getStatus(spelled.c_str(), status), 0) << spelled;
        EXPECT_EQ(status.kind, FileKind::regular) << spelled;
        EXPECT_EQ(status.size, 4U) << spelled;
        EXPECT_EQ(linesOf(spelled), Names{"text"});
    }
    EXPECT_EQ(fsutil::copyFile(path("sub/amp.sim"), path("SUB/new.sim")), 0);
    EXPECT_EQ(tests::readBytes(path("Sub/new.sim")), "text");
    Names names;
    EXPECT_EQ(platform::listFolder(path("sub").c_str(), names), 0);
    EXPECT_EQ(names, (Names{".", "..", "Amp.Sim", "new.sim"}));
}

TEST_F(WindowsPlatform, KnowsDrives) {
    EXPECT_TRUE(platform::hasDriveLetters());
    ASSERT_EQ(folder_.path().substr(1, 2), ":/") << folder_.path();
    EXPECT_EQ(platform::absolutePath("C:\\a\\..\\b"), "C:/b");
    EXPECT_EQ(platform::absolutePath("C:/a/./b"), "C:/a/b");
    EXPECT_EQ(platform::absolutePath("//server/share/a\\b"), "//server/share/a/b");
    for (const char* name : {"C:", "C:/", "C:\\", "c:/."}) {
        fsutil::DirectoryListing* listing = nullptr;
        ASSERT_EQ(fsutil::openDirectory(name, listing), 0) << name;
        Names names;
        for (string entry; fsutil::readDirectory(listing, entry) == 0;) names.push_back(entry);
        fsutil::closeDirectory(listing);
        ASSERT_GE(names.size(), 2U) << name;
        EXPECT_EQ(names[0], ".") << name;
        EXPECT_EQ(names[1], "..") << name;
        if (string(name).size() > 2) {
            EXPECT_THAT(names, testing::Contains(testing::StrCaseEq("windows"))) << name;
        }
    }
}

TEST_F(WindowsPlatform, RelativePathsAreTakenFromTheCurrentFolder) {
    folder_.write("sub/file", "x");
    char before[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryA(sizeof before, before), 0U);
    ASSERT_TRUE(SetCurrentDirectoryA(path("sub").c_str()));
    const string absolute = platform::absolutePath("file");
    const string here = platform::absolutePath("");
    const string drive = platform::absolutePath(folder_.path().substr(0, 2) + "file");
    SetCurrentDirectoryA(before);
    EXPECT_EQ(absolute, path("sub/file"));
    EXPECT_EQ(here, path("sub"));
    EXPECT_EQ(drive, path("sub/file"));
}

TEST_F(WindowsPlatform, WhatIsNotThereIsNotFound) {
    folder_.write("file", "x");
    for (const string& name :
         {path("none"), path("none/x"), path("fil*"), path("fil?"), path("a|b"), string(""),
          string("//no-such-server/share/x"), string("Q:/x"), string("Q:")}) {
        FileStatus status;
        status.kind = FileKind::regular;
        EXPECT_NE(platform::getStatus(name.c_str(), status), 0) << name;
        EXPECT_EQ(status.kind, FileKind::none) << name;
        Names names = {"left over"};
        EXPECT_NE(platform::listFolder(name.c_str(), names), 0) << name;
        EXPECT_EQ(names, Names{}) << name;
        EXPECT_EQ(fsutil::copyFile(name, path("copy")), 1) << name;
        EXPECT_EQ(fsutil::deleteFile(name), 1) << name;
    }
    Names names = {"left over"};
    EXPECT_NE(platform::listFolder(path("file").c_str(), names), 0);
    EXPECT_EQ(names, Names{});
    EXPECT_EQ(tests::treeOf(folder_.path()), (tests::Tree{{"file", "x"}}));
}

TEST_F(WindowsPlatform, DevicesAreNoFiles) {
    for (const char* name : {"NUL", "nul", "CON"}) {
        int descriptor = 77;
        EXPECT_NE(platform::openForReading(name, FileMode::binary, descriptor), 0) << name;
        EXPECT_EQ(descriptor, -1) << name;
        EXPECT_NE(platform::openForWriting(name, FileMode::binary, 0666, nullptr, descriptor), 0) << name;
        EXPECT_EQ(descriptor, -1) << name;
    }
}

TEST_F(WindowsPlatform, PathsBeyondTheLimitFailWithTheStatusOfTheOperation) {
    EXPECT_EQ(platform::pathLimit(), 260U);
    tests::forgetLastError();
    const string longest = folder_.path() + string(300, '/').replace(1, 299, string(299, 'x'));
    EXPECT_EQ(fsutil::createDirectories(longest), 10102);
    EXPECT_EQ(tests::lastError().code, 10102);
    EXPECT_EQ(fsutil::ensureDirectory(longest), 1);
    EXPECT_EQ(fsutil::copyFile(folder_.write("in", "x"), longest), 1);
    fsutil::LineWriter writer;
    EXPECT_EQ(writer.open(longest), 1);
    fsutil::DirectoryListing* listing = nullptr;
    EXPECT_EQ(fsutil::openDirectory(longest, listing), 1);
    // Many short names, together as long as the limit: no folder is made on the way.
    string deep = folder_.path();
    while (deep.size() < 260) deep += "/deep";
    EXPECT_EQ(fsutil::createDirectories(deep), 10102);
    EXPECT_EQ(tests::treeOf(folder_.path()), (tests::Tree{{"in", "x"}}));
}

TEST_F(WindowsPlatform, NamesAreInTheCodePageOfTheSystem) {
    if (GetACP() != 1252) GTEST_SKIP() << "the code page is " << GetACP();
    const string name = "verst\xE4rker \x80";
    ASSERT_EQ(platform::makeFolder(path(name).c_str()), 0);
    const string source = path(name + "/" + name + ".dat");
    fsutil::LineWriter writer;
    ASSERT_EQ(writer.open(source), 0);
    writer.write("data");
    ASSERT_EQ(writer.close(), 0);
    Names names;
    EXPECT_EQ(platform::listFolder(folder_.path().c_str(), names), 0);
    EXPECT_THAT(names, testing::Contains(name));
    EXPECT_EQ(fsutil::copyFile(source, path(name + "/copy \xD6.dat")), 0);
    names.clear();
    EXPECT_EQ(platform::listFolder(path(name).c_str(), names), 0);
    EXPECT_EQ(names, (Names{".", "..", "copy \xD6.dat", name + ".dat"}));
    EXPECT_EQ(platform::absolutePath(path(name)), path(name));
    EXPECT_EQ(fsutil::deleteFile(path(name + "/copy \xD6.dat")), 0);
    EXPECT_EQ(fsutil::deleteFile(source), 0);
    EXPECT_EQ(platform::removeFolder(path(name).c_str()), 0);
}

void writeInCodePage(const string& path, const string& text) {
    fsutil::LineWriter writer;
    ASSERT_EQ(writer.open(path), 0) << path;
    writer.write(text);
    ASSERT_EQ(writer.close(), 0) << path;
}

// "\xC3\xA4" in the file is "\xE4" in the code page.
const char* const kProjectWithUmlaut =
    "{ \"folders\": [ { \"name\": \"Library\", \"files\": [ { \"name\": \"tr\xC3\xA4ger.lib\", "
    "\"path\": \".\\\\tr\xC3\xA4ger.lib\", \"type\": \"Text\" } ] } ] }";

TEST_F(WindowsPlatform, AProjectFileIsUtf8AndNamesOfItsFilesAreInTheCodePageOfTheSystem) {
    if (GetACP() != 1252) GTEST_SKIP() << "the code page is " << GetACP();
    const string project = folder_.write("amp.opj", kProjectWithUmlaut);
    const string folder = "Library";
    Names names;
    Names paths;
    Names types;
    EXPECT_EQ(tvx_wobj::readProjectFileDirectly(project, folder, names, paths, types), 0);
    EXPECT_EQ(names, Names{"tr\xE4ger.lib"});
    EXPECT_EQ(paths, Names{".\\tr\xE4ger.lib"});
    EXPECT_EQ(
        tvx_wobj::updateInProjectFile(project, folder, "Text", "./TR\xE4GER.lib", ".\\new\\tr\xE4ger.lib"),
        0);
    EXPECT_NE(tests::readBytes(project).find(".\\\\new\\\\tr\xC3\xA4ger.lib"), string::npos);
    EXPECT_EQ(tvx_wobj::writeProjectFiles(project, folder, "Text", {".\\\x80.lib"}, true, true, true), 0);
    EXPECT_NE(tests::readBytes(project).find(".\\\\\xE2\x82\xAC.lib"), string::npos) << "the euro sign";
    EXPECT_EQ(tvx_wobj::readProjectFileDirectly(project, folder, names, paths, types), 0);
    EXPECT_EQ(paths, Names{".\\\x80.lib"});
}

TEST_F(WindowsPlatform, ANameOfAProjectFileThatTheCodePageDoesNotHaveIsAFailure) {
    if (GetACP() != 1252) GTEST_SKIP() << "the code page is " << GetACP();
    const string text = tests::replaced(kProjectWithUmlaut, "\xC3\xA4", "\xCE\xB1");  // an alpha
    const string project = folder_.write("amp.opj", text);
    Names names = {"left over"};
    Names paths = names;
    Names types = names;
    EXPECT_NE(tvx_wobj::readProjectFileDirectly(project, "Library", names, paths, types), 0);
    EXPECT_TRUE(names.empty() && paths.empty() && types.empty());
    EXPECT_EQ(tests::readBytes(project), text);
}

TEST(WindowsConversion, CarriesFilesWithNamesInTheCodePageOfTheSystem) {
    if (GetACP() != 1252) GTEST_SKIP() << "the code page is " << GetACP();
    tests::DraftelProject project;
    tests::ProjectJson json;
    json.designResources = {{".\\amp.dsn", "Schematic Design"}};
    json.folders.push_back(tests::folderOf("Outputs", {{".\\tr\xC3\xA4ger.txt", "Text"}}));
    json.profiles = {{".\\amp-S1-tr\xC3\xA4ger.sim", "tr\xC3\xA4ger", "S1"}};
    project.write("amp.opj", json.text());
    writeInCodePage(project.path("tr\xE4ger.txt"), "text\n");
    writeInCodePage(project.path("amp-S1-tr\xE4ger.sim"), tests::profileText("S1", "tr\xE4ger"));
    writeInCodePage(project.path("amp-S1-tr\xE4ger.dat"), "data\n");
    ASSERT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(tests::lastError(), tests::LastError());
    EXPECT_TRUE(fsutil::isPresentFile(project.newPath("tr\xE4ger.txt")));
    EXPECT_TRUE(fsutil::isPresentFile(project.root + "/S1/tr\xE4ger/tr\xE4ger.dat"));
    EXPECT_NE(project.readNew("amp.opj").find("amp-tevrixfiles\\\\s1\\\\tr\xC3\xA4ger.sim"), string::npos);
}

// --- read-only files ---

TEST_F(WindowsPlatform, ACopyOfAReadOnlyFileIsWritable) {
    const string source = folder_.write("in.lib", "text");
    makeReadOnly(source);
    EXPECT_EQ(fsutil::copyFile(source, path("out.lib")), 0);
    EXPECT_EQ(tests::readBytes(path("out.lib")), "text");
    EXPECT_FALSE(isReadOnly(path("out.lib")));
    EXPECT_TRUE(isReadOnly(source));
    EXPECT_EQ(fsutil::copyFileContents(source.c_str(), path("contents.lib").c_str()), 0);
    EXPECT_TRUE(isReadOnly(path("contents.lib"))) << "the attribute is copied, and then cleared";
    for (const char* name : {"in.lib", "contents.lib"}) platform::makeWritable(path(name).c_str());
}

TEST_F(WindowsPlatform, AReadOnlyFileIsNeitherReplacedNorDeletedUntilItIsMadeWritable) {
    const string source = folder_.write("in.lib", "new");
    const string target = folder_.write("out.lib", "old");
    makeReadOnly(target);
    EXPECT_EQ(platform::checkAccess(target.c_str(), 4), 0);
    EXPECT_EQ(platform::checkAccess(target.c_str(), 2), EACCES);
    EXPECT_EQ(fsutil::ensureDirectory(target), 1);
    if (!canWriteToReadOnlyFiles()) {
        EXPECT_EQ(fsutil::copyFile(source, target), 1);
        EXPECT_EQ(fsutil::deleteFile(target), 1);
        fsutil::LineWriter writer;
        EXPECT_EQ(writer.open(target), 1);
        EXPECT_EQ(tests::readBytes(target), "old");
    }
    FileStatus status;
    EXPECT_EQ(platform::getStatus(target.c_str(), status), 0);
    EXPECT_EQ(status.permissions, 0444U);

    EXPECT_EQ(platform::makeWritable(target.c_str()), 0);
    EXPECT_EQ(platform::getStatus(target.c_str(), status), 0);
    EXPECT_EQ(status.permissions, 0666U);
    EXPECT_EQ(fsutil::copyFile(source, target), 0);
    EXPECT_EQ(tests::readBytes(target), "new");
    EXPECT_EQ(platform::setPermissions(target.c_str(), 0444), 0);
    EXPECT_TRUE(isReadOnly(target));
    EXPECT_EQ(platform::setPermissions(target.c_str(), 0644), 0);
    EXPECT_FALSE(isReadOnly(target));
    EXPECT_EQ(fsutil::deleteFile(target), 0);
    EXPECT_FALSE(folder_.exists("out.lib"));
}

// --- files that somebody holds open ---

TEST_F(WindowsPlatform, AFileHeldByAnotherCannotBeReadWrittenOrDeleted) {
    const string held = folder_.write("held", "bytes");
    const string other = folder_.write("other", "new");
    {
        const HeldFile holder(held);
        FileStatus status;
        EXPECT_EQ(platform::getStatus(held.c_str(), status), 0) << "it is there all the same";
        EXPECT_EQ(status.size, 5U);
        int descriptor = 77;
        EXPECT_EQ(platform::openForReading(held.c_str(), FileMode::binary, descriptor), EACCES);
        EXPECT_EQ(platform::openForWriting(held.c_str(), FileMode::binary, 0666, nullptr, descriptor),
                  EACCES);
        EXPECT_EQ(fsutil::copyFile(held, path("copy")), 1);
        EXPECT_EQ(fsutil::copyFile(other, held), 1);
        EXPECT_EQ(fsutil::deleteFile(held), 1);
        EXPECT_NE(platform::replaceFile(other.c_str(), held.c_str()), 0);
        EXPECT_NE(platform::replaceFile(held.c_str(), path("new").c_str()), 0);
    }
    EXPECT_EQ(tests::treeOf(folder_.path()), (tests::Tree{{"held", "bytes"}, {"other", "new"}}));
    EXPECT_EQ(platform::replaceFile(other.c_str(), held.c_str()), 0);
    EXPECT_EQ(tests::treeOf(folder_.path()), (tests::Tree{{"held", "new"}}));
}

TEST(WindowsConversion, AnOutputHeldByAnotherIsRecordedAndTheConversionGoesOn) {
    tests::DraftelProject project;
    project.write("amp-S1-tran.dat", "data");
    project.write("amp-S1-tran.out", "out");
    {
        const HeldFile holder(project.path("amp-S1-tran.dat"));
        EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    }
    EXPECT_EQ(tests::lastError(),
              tests::copyFileError(project.path("amp-S1-tran.dat"), project.profileFolder + "/tran.dat"));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/tran/tran.dat"));
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.out"), "out");
}

TEST(WindowsConversion, AProjectFileHeldByAnotherEndsIt) {
    tests::DraftelProject project;
    const HeldFile holder(project.path("amp.opj"));
    EXPECT_EQ(project.converter.convert(2, project.destination), 10109);
    EXPECT_EQ(tests::lastError(), tests::readFileError(project.path("amp.opj")));
}

TEST(WindowsConversion, ReadOnlyFilesOfTheProjectBecomeWritableCopies) {
    tests::DraftelProject project;
    for (const char* name : {"amp.lib", "amp-S1-tran.dat"}) project.write(name, "text");
    const char* const names[] = {"amp.opj", "amp.dsn", "amp.lib", "amp-S1-tran.sim", "amp-S1-tran.dat"};
    for (const char* name : names) makeReadOnly(project.path(name));
    EXPECT_EQ(project.converter.convert(2, project.destination), 0) << tests::lastError();
    for (const char* name : {"amp.opj", "amp.dsn", "amp-TevrixFiles/amp.lib", "amp-TevrixFiles/S1/tran.sim",
                             "amp-TevrixFiles/S1/tran/tran.dat"}) {
        EXPECT_TRUE(project.existsNew(name)) << name;
        EXPECT_FALSE(isReadOnly(project.newPath(name))) << name;
    }
    for (const char* name : names) {
        EXPECT_TRUE(isReadOnly(project.path(name))) << name;
        platform::makeWritable(project.path(name).c_str());
    }
}

TEST(WindowsConversion, TakesPathsWithBackslashes) {
    const tests::DraftelProject project;
    project.write("amp.lib", "* models\n");
    tvxconv::DraftelProjectConverter converter(tests::withBackslashes(project.path("amp.opj")).c_str());
    EXPECT_EQ(converter.convert(2, tests::withBackslashes(project.destination)), 0) << tests::lastError();
    EXPECT_EQ(project.readNew("amp-TevrixFiles/amp.lib"), "* models\n");
    EXPECT_EQ(project.readNew("amp.opj"), tests::smallProjectTextConverted());
}

// --- modules, terminal ---

TEST(WindowsModules, AreFoundBesideTheProgramWhateverTheCurrentFolder) {
    char before[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryA(sizeof before, before), 0U);
    ASSERT_TRUE(SetCurrentDirectoryA("C:\\"));
    void* const module = platform::loadModule("DraDsnReader");
    void* const missing = platform::loadModule("no-such-module");
    SetCurrentDirectoryA(before);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(platform::findSymbol(module, "getDsnInfo"), nullptr);
    EXPECT_EQ(platform::findSymbol(module, "noSuchFunction"), nullptr);
    EXPECT_EQ(missing, nullptr);
    char loaded[MAX_PATH];
    ASSERT_NE(GetModuleFileNameA(static_cast<HMODULE>(module), loaded, MAX_PATH), 0U);
    EXPECT_THAT(platform::absolutePath(loaded),
                testing::StrCaseEq(platform::absolutePath(tests::kReaderFile)));
}

TEST(WindowsModules, TheLibraryLoadsTheReaderFromItsOwnFolder) {
    const tests::DraftelProject project;
    // The host lies elsewhere, so what is beside it does not help.
    const string host = project.folder.write("elsewhere/host.exe", tests::readBytes(tests::kHostFile));
    const tests::ProgramResult result = tests::runProgram(
        {host, tests::kLibraryFile, project.path("amp.opj"), project.destination, "report.txt"}, "",
        {"PATH=" TVXCONV_BIN_DIR ";C:\\windows\\system32"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_EQ(project.readNew("amp.opj"), tests::smallProjectTextConverted());
}

TEST(WindowsTerminal, TheNullDeviceIsNone) {
    const int descriptor = _open("NUL", _O_WRONLY);
    ASSERT_NE(descriptor, -1);
    EXPECT_FALSE(platform::isTerminal(descriptor));
    _close(descriptor);
    EXPECT_FALSE(platform::isTerminal(-1));
}

TEST_F(WindowsPlatform, TemporaryFilesHaveNamesOfTheirOwn) {
    const string target = folder_.write("amp.opj", "old");
    string names[2];
    int descriptors[2] = {-1, -1};
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(platform::openTemporaryBeside(target.c_str(), platform::FileMode::binary, 0666, names[i],
                                                descriptors[i]),
                  0);
        EXPECT_EQ(platform::writeSome(descriptors[i], "new\n", 4), 4);
        EXPECT_EQ(platform::flushToDisk(descriptors[i]), 0);
        EXPECT_EQ(platform::closeFile(descriptors[i]), 0);
    }
    EXPECT_NE(names[0], names[1]);
    EXPECT_EQ(tests::readBytes(names[0]), "new\n") << "binary";
    EXPECT_EQ(platform::replaceFile(names[0].c_str(), target.c_str()), 0);
    EXPECT_EQ(platform::linkFile(names[1].c_str(), path("link").c_str()), 0);
    EXPECT_EQ(fsutil::deleteFile(names[1]), 0);
    EXPECT_EQ(tests::treeOf(folder_.path()), (tests::Tree{{"amp.opj", "new\n"}, {"link", "new\n"}}));
}

TEST_F(WindowsPlatform, ClosedDescriptorsFailInsteadOfEndingTheProgram) {
    FileStatus status;
    char byte = 'x';
    EXPECT_NE(platform::getStatus(-1, status), 0);
    EXPECT_EQ(platform::readSome(-1, &byte, 1), -1);
    EXPECT_EQ(platform::writeSome(-1, &byte, 1), -1);
    EXPECT_NE(platform::closeFile(-1), 0);
    EXPECT_NE(platform::flushToDisk(-1), 0);
}

}  // namespace
