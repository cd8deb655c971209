// folderIndex_test.cpp
//
// Files and folders that are asked for in another letter case than they have, on a file system that
// tells the two apart: what is found, what is made, what is deleted, which changes by another program
// are noticed, and what it costs. "Others" are the standard library's functions, of which the library
// knows nothing.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "fsutil/files.h"
#include "fsutil/lines.h"
#include "platform/platform.h"
#include "support/TestFolder.h"
#include "support/foldersRead.h"

namespace fs = std::filesystem;

namespace {

using namespace tvxconv;
using std::string;
using tests::foldersReadDuring;
using tests::TestFolder;
using tests::Tree;

// Whether this file system tells letter case apart; where it does not, there is nothing to test.
bool hasLetterCase() {
    const TestFolder folder;
    folder.write("a", "");
    return !folder.exists("A");
}

class LetterCase : public testing::Test {
protected:
    void SetUp() override {
        if (!hasLetterCase()) GTEST_SKIP() << "a file system that ignores letter case";
    }

    bool isFile(const string& name) const {
        bool flag = false;
        EXPECT_EQ(fsutil::isRegularFile(folder.path(name), flag), 0);
        return flag;
    }

    bool isFolder(const string& name) const {
        bool flag = false;
        EXPECT_EQ(fsutil::isDirectory(folder.path(name), flag), 0);
        return flag;
    }

    // The bytes of the file as the library finds it.
    string textOf(const string& name) const {
        fsutil::LineReader reader;
        if (reader.open(folder.path(name)) != 0) return "(not found)";
        string text;
        std::string_view line;
        while (reader.next(line)) text += line;
        return text;
    }

    // The status of making or overwriting the file.
    int writeText(const string& name, const string& text) const {
        fsutil::LineWriter writer;
        if (writer.open(folder.path(name)) != 0) return 1;
        writer.write(text);
        return writer.close();
    }

    std::vector<string> namesIn(const string& name) const {
        std::vector<string> names;
        fsutil::DirectoryListing* listing = nullptr;
        if (fsutil::openDirectory(folder.path(name), listing) != 0) return {"(not found)"};
        string entry;
        while (fsutil::readDirectory(listing, entry) == 0) names.push_back(entry);
        fsutil::closeDirectory(listing);
        return names;
    }

    int copy(const string& from, const string& to) const {
        return fsutil::copyFile(folder.path(from), folder.path(to));
    }

    int remove(const string& name) const { return fsutil::deleteFile(folder.path(name)); }

    Tree tree() const { return tests::treeOf(folder.path()); }

    TestFolder folder;
};

// --- finding ---

TEST_F(LetterCase, OfAFileIsIgnoredInEveryComponentOfItsPath) {
    folder.write("Proj/Sub/Amp-S1.SIM", "text");
    for (const char* name :
         {"Proj/Sub/Amp-S1.SIM", "Proj/Sub/amp-s1.sim", "Proj/SUB/Amp-S1.SIM", "proj/sub/amp-s1.sim",
          "PROJ/SUB/AMP-S1.SIM", "pROJ/Sub/amp-S1.Sim", "proj//sub/amp-s1.sim",
          "proj/./SUB/../sub/AMP-S1.SIM", "PROJ/../proj/sub/amp-s1.sim"}) {
        EXPECT_TRUE(isFile(name)) << name;
        EXPECT_FALSE(isFolder(name)) << name;
        EXPECT_EQ(fsutil::checkPath(folder.path(name).c_str(), 0, fsutil::kExists), 0) << name;
        EXPECT_EQ(fsutil::checkPath(folder.path(name).c_str(), fsutil::kRegularFileMask, fsutil::kReadable),
                  0)
            << name;
        EXPECT_EQ(textOf(name), "text") << name;
        EXPECT_EQ(copy(name, "copy"), 0) << name;
        EXPECT_EQ(folder.read("copy"), "text") << name;
        fs::remove(folder.path("copy"));
    }
    EXPECT_EQ(tree(), (Tree{{"Proj/", ""}, {"Proj/Sub/", ""}, {"Proj/Sub/Amp-S1.SIM", "text"}}));
}

TEST_F(LetterCase, OfAFolderIsIgnored) {
    folder.write("Proj/Sub/a", "");
    const std::vector<string> names = {".", "..", "a"};
    for (const char* name : {"Proj/Sub", "proj/sub", "PROJ/SUB", "proj/sub/", "Proj/SUB/", "pROJ/sUB/."}) {
        EXPECT_TRUE(isFolder(name)) << name;
        EXPECT_FALSE(isFile(name)) << name;
        EXPECT_EQ(namesIn(name), names) << name;
        EXPECT_EQ(fsutil::ensureDirectory(folder.path(name)), 0) << name;
    }
    EXPECT_EQ(tree(), (Tree{{"Proj/", ""}, {"Proj/Sub/", ""}, {"Proj/Sub/a", ""}}));
}

TEST_F(LetterCase, IsThatOfAsciiLettersOnly) {
    for (const char* name : {"\xC4.sim", "a[.sim", "a@.sim", "a_1.sim"}) folder.write(name, "");
    for (const char* name : {"\xE4.sim", "\xE4.SIM", "a{.sim", "a`.sim", "a\x7F_1.sim", "a-1.sim"}) {
        EXPECT_FALSE(isFile(name)) << name;
    }
    for (const char* name : {"\xC4.SIM", "A[.sim", "A@.SIM", "A_1.SIM"}) EXPECT_TRUE(isFile(name)) << name;
}

TEST_F(LetterCase, DoesNotMakeOtherNamesEqual) {
    folder.write("Proj/amp.sim", "");
    for (const char* name : {"Proj/AMP.SI", "Proj/AMP.SIMX", "Pro/amp.sim", "Projx/amp.sim", "Proj/AMP.SIM/",
                             "AMP.SIM", "PROJ/AMP.SIM/x", "PROJ/none/amp.sim", "PROJ/AMP.SIM/../amp.sim"}) {
        EXPECT_FALSE(isFile(name)) << name;
        EXPECT_FALSE(isFolder(name)) << name;
        EXPECT_EQ(textOf(name), "(not found)") << name;
    }
}

TEST_F(LetterCase, DecidesWhereBothExist) {
    folder.write("a.sim", "small");
    folder.write("A.SIM", "capital");
    folder.write("sub/x", "small");
    folder.write("SUB/x", "capital");
    EXPECT_EQ(textOf("a.sim"), "small");
    EXPECT_EQ(textOf("A.SIM"), "capital");
    EXPECT_EQ(textOf("sub/x"), "small");
    EXPECT_EQ(textOf("SUB/X"), "capital");
    EXPECT_EQ(textOf("sub/X"), "small");
    EXPECT_EQ(writeText("A.SIM", "new"), 0);
    EXPECT_EQ(copy("sub/x", "SUB/X"), 0);  // equal texts: nothing to do
    EXPECT_EQ(tree(), (Tree{{"a.sim", "small"},
                            {"A.SIM", "new"},
                            {"sub/", ""},
                            {"sub/x", "small"},
                            {"SUB/", ""},
                            {"SUB/x", "capital"}}));
}

TEST_F(LetterCase, OfSeveralEntriesNoneOfThemAsSpelledFindsNothing) {
    folder.write("amp.SIM", "1");
    folder.write("AMP.sim", "2");
    folder.write("Sub/x", "3");
    folder.write("SUB/x", "4");
    const Tree before = tree();
    for (const char* name : {"amp.sim", "AMP.SIM", "Amp.Sim", "sub/x", "sUB/x", "sub/X"}) {
        EXPECT_FALSE(isFile(name)) << name;
        EXPECT_EQ(textOf(name), "(not found)") << name;
        EXPECT_EQ(copy(name, "copy"), 1) << name;
        EXPECT_EQ(remove(name), 1) << name;
    }
    EXPECT_FALSE(isFolder("sub"));
    EXPECT_EQ(namesIn("sub"), std::vector<string>{"(not found)"});
    EXPECT_EQ(tree(), before);
}

TEST_F(LetterCase, OfALinkIsIgnoredToo) {
    folder.write("Real/Amp.sim", "text");
    tests::makeLink("Real", folder.path("Link"));
    tests::makeLink("real/amp.SIM", folder.path("Loose"));  // the link itself leads nowhere
    EXPECT_EQ(textOf("LINK/AMP.SIM"), "text");
    EXPECT_FALSE(isFile("LOOSE"));
}

TEST_F(LetterCase, IsIgnoredBelowTheCurrentFolder) {
    folder.write("one/Sub/Amp.sim", "one");
    folder.write("two/Sub/AMP.SIM", "two");
    const fs::path before = fs::current_path();
    for (int round = 0; round < 3; ++round) {
        for (const char* current : {"one", "two"}) {
            fs::current_path(folder.path(current));
            for (const char* name : {"sub/amp.sim", "SUB/aMP.SIM", "./sub/amp.sim"}) {
                fsutil::LineReader reader;
                ASSERT_EQ(reader.open(name), 0) << current << " " << name;
                std::string_view line;
                ASSERT_TRUE(reader.next(line));
                EXPECT_EQ(line, current) << name;
            }
            EXPECT_EQ(fsutil::checkPath("SUB", fsutil::kFolderMask, fsutil::kReadable), 0);
            EXPECT_EQ(fsutil::checkPath("none", 0, fsutil::kExists), -1);
        }
    }
    fs::current_path(before);
}

TEST_F(LetterCase, OfVeryLongNamesAndPathsIsNoTrouble) {
    folder.write(string(255, 'n'), "text");
    EXPECT_EQ(textOf(string(255, 'N')), "text");
    EXPECT_FALSE(isFile(string(256, 'N')));
    string path;
    for (int i = 0; i < 12; ++i) path += string(200, 'd') + "/";
    folder.write(path + "end", "deep");
    string other;
    for (int i = 0; i < 12; ++i) other += string(200, 'D') + "/";
    EXPECT_EQ(textOf(other + "END"), "deep");
    string dots;
    for (int i = 0; i < 1000; ++i) dots += "./";
    EXPECT_EQ(textOf(dots + string(255, 'N')), "text");
    EXPECT_FALSE(isFile(string(100000, '/') + "X"));
    string parents;
    for (int i = 0; i < 50000; ++i) parents += "X/";
    EXPECT_FALSE(isFile(parents));
}

TEST_F(LetterCase, IsIgnoredInManyFoldersInTurns) {
    for (int i = 0; i < 100; ++i) folder.write("Folder" + std::to_string(i) + "/Amp.SIM", std::to_string(i));
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 100; ++i) {
            const string number = std::to_string(round == 1 ? 99 - i : i);
            EXPECT_EQ(textOf("FOLDER" + number + "/amp.sim"), number);
            EXPECT_FALSE(isFile("Folder" + number + "/none.sim"));
        }
    }
}

TEST_F(LetterCase, CountsWhereAFolderMayNotBeListed) {
    folder.write("Closed/Amp.sim", "text");
    chmod(folder.path("Closed").c_str(), 0333);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(textOf("Closed/Amp.sim"), "text");
        EXPECT_EQ(textOf("CLOSED/Amp.sim"), "text");
        EXPECT_FALSE(isFile("Closed/amp.sim"));
        EXPECT_EQ(writeText("CLOSED/New.sim", "new"), 0);
        EXPECT_EQ(textOf("Closed/New.sim"), "new");
        EXPECT_EQ(fsutil::makeDirectory(folder.path("closed/sub").c_str(), 0777), 0);
        return true;
    }));
    chmod(folder.path("Closed").c_str(), 0755);
    EXPECT_EQ(
        tree(),
        (Tree{{"Closed/", ""}, {"Closed/Amp.sim", "text"}, {"Closed/New.sim", "new"}, {"Closed/sub/", ""}}));
}

// --- making ---

TEST_F(LetterCase, OfANewNameIsAsSpelled) {
    folder.write("in", "text");
    folder.makeFolder("Sub");
    EXPECT_EQ(copy("in", "sub/Amp-S1.Net"), 0);
    EXPECT_EQ(writeText("SUB/Text.INC", "lines"), 0);
    EXPECT_EQ(fsutil::makeDirectory(folder.path("sUB/Inner").c_str(), 0777), 0);
    EXPECT_EQ(fsutil::ensureDirectory(folder.path("sub/INNER2")), 0);
    EXPECT_EQ(fsutil::createDirectories(folder.path("SUB/inner/Deep/Deeper")), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "text"},
                            {"Sub/", ""},
                            {"Sub/Amp-S1.Net", "text"},
                            {"Sub/Text.INC", "lines"},
                            {"Sub/Inner/", ""},
                            {"Sub/INNER2/", ""},
                            {"Sub/Inner/Deep/", ""},
                            {"Sub/Inner/Deep/Deeper/", ""}}));
}

TEST_F(LetterCase, OfANameThatHasATwinIsTheTwins) {
    folder.write("in", "new");
    folder.write("Amp.NET", "an old and longer text");
    folder.write("List.Inc", "an old and longer text");
    chmod(folder.path("Amp.NET").c_str(), 0640);
    folder.makeFolder("Sub");
    EXPECT_EQ(copy("in", "amp.net"), 0);
    EXPECT_EQ(writeText("LIST.INC", "new lines"), 0);
    EXPECT_EQ(fsutil::makeDirectory(folder.path("SUB").c_str(), 0777), -1);
    EXPECT_EQ(fsutil::ensureDirectory(folder.path("sub")), 0);
    EXPECT_EQ(fsutil::createDirectories(folder.path("sub/")), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "new"}, {"Amp.NET", "new"}, {"List.Inc", "new lines"}, {"Sub/", ""}}));
    struct stat status {};
    ASSERT_EQ(stat(folder.path("Amp.NET").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(LetterCase, OfATwinOfAnotherKindIsInTheWay) {
    folder.write("in", "text");
    folder.makeFolder("Sub");
    folder.write("File", "x");
    EXPECT_EQ(copy("in", "SUB"), 1);
    EXPECT_EQ(writeText("sub", "text"), 1);
    EXPECT_EQ(fsutil::makeDirectory(folder.path("FILE").c_str(), 0777), -1);
    EXPECT_EQ(fsutil::ensureDirectory(folder.path("FILE/x")), 1);
    EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Sub/", ""}, {"File", "x"}}));
}

TEST_F(LetterCase, OfSeveralTwinsMakesANewEntryAsSpelled) {
    folder.write("in", "new");
    for (const char* name : {"amp.SIM", "AMP.sim", "Text", "TEXT"}) folder.write(name, "old");
    folder.makeFolder("Sub");
    folder.makeFolder("SUB");
    EXPECT_EQ(copy("in", "amp.sim"), 0);
    EXPECT_EQ(writeText("text", "new"), 0);
    EXPECT_EQ(fsutil::makeDirectory(folder.path("sub").c_str(), 0777), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "new"},
                            {"amp.SIM", "old"},
                            {"AMP.sim", "old"},
                            {"amp.sim", "new"},
                            {"Text", "old"},
                            {"TEXT", "old"},
                            {"text", "new"},
                            {"Sub/", ""},
                            {"SUB/", ""},
                            {"sub/", ""}}));
    EXPECT_EQ(fsutil::ensureDirectory(folder.path("sUB")), 0);
    EXPECT_TRUE(folder.exists("sUB"));
    EXPECT_EQ(writeText("sUb/new", "text"), 1) << "a folder that is none of the four";
}

TEST_F(LetterCase, OfAPathOnDiskIsThatOfTheDisk) {
    folder.write("Some/Where/File.Txt", "");
    struct {
        const char* asked;
        const char* found;
    } const paths[] = {
        {"Some/Where/File.Txt", "Some/Where/File.Txt"},
        {"some/where/file.txt", "Some/Where/File.Txt"},
        {"SOME/Where", "Some/Where"},
        {"some/where/", "Some/Where/"},
        {"some/where/other", "some/where/other"},
        {"some/nowhere/file.txt", "some/nowhere/file.txt"},
    };
    for (const auto& path : paths) {
        EXPECT_EQ(platform::pathOnDisk(folder.path(path.asked)), folder.path(path.found)) << path.asked;
    }
}

TEST_F(LetterCase, DoesNotHideThatTwoTextsNameOneFile) {
    const string file = folder.write("Sub/Amp.lib", "content");
    folder.makeFolder("Other");
    for (const char* name : {"SUB/amp.LIB", "sub/./AMP.LIB", "OTHER/../sub/amp.lib"}) {
        EXPECT_EQ(fsutil::copyFileContents(file.c_str(), folder.path(name).c_str()), -1) << name;
        EXPECT_EQ(fsutil::copyFile(file, folder.path(name)), 0) << name;
        EXPECT_EQ(fsutil::copyFile(folder.path(name), file), 0) << name;
        EXPECT_EQ(folder.read("Sub/Amp.lib"), "content") << name;
    }
    EXPECT_EQ(tree(), (Tree{{"Sub/", ""}, {"Sub/Amp.lib", "content"}, {"Other/", ""}}));
}

TEST_F(LetterCase, OfATwinIsNoObstacleForMakingItWritable) {
    const string source = folder.write("in", "text");
    chmod(source.c_str(), 0444);
    if (geteuid() == 0) chmod(folder.write("Out", "old").c_str(), 0444);
    EXPECT_EQ(copy("in", "OUT"), 0);
    struct stat status {};
    ASSERT_EQ(stat(folder.path(geteuid() == 0 ? "Out" : "OUT").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

// --- deleting ---

TEST_F(LetterCase, IsIgnoredByADeletionThatHasOneEntryToChooseFrom) {
    for (const char* name : {"amp-s1.net", "AMP-S1.NET", "Amp-S1.Net"}) {
        folder.write("Sub/Amp-S1.Net", "x");
        folder.write("Sub/Amp-S10.Net", "y");
        EXPECT_EQ(remove("SUB/" + string(name)), 0) << name;
        EXPECT_EQ(tree(), (Tree{{"Sub/", ""}, {"Sub/Amp-S10.Net", "y"}})) << name;
        EXPECT_EQ(remove("SUB/" + string(name)), 1) << name;
    }
}

TEST_F(LetterCase, KeepsADeletionFromChoosingBetweenTwoEntries) {
    folder.write("amp.sim", "small");
    folder.write("AMP.SIM", "capital");
    folder.write("sub", "file");
    folder.makeFolder("SUB");
    const Tree before = tree();
    for (const char* name : {"amp.sim", "AMP.SIM", "Amp.sim", "sub", "Sub", "./amp.sim"}) {
        EXPECT_EQ(remove(name), 1) << name;
        EXPECT_EQ(tree(), before) << name;
    }
    // One of them is gone: the other may go.
    fs::remove(folder.path("AMP.SIM"));
    EXPECT_EQ(remove("AMP.SIM"), 0);
    fs::remove(folder.path("SUB"));
    EXPECT_EQ(remove("sub"), 0);
    EXPECT_EQ(tree(), Tree{});
}

TEST_F(LetterCase, OfAFolderOnTheWayDoesNotKeepADeletionBack) {
    folder.write("Sub/x", "1");
    folder.write("SUB/x", "2");
    EXPECT_EQ(remove("sub/x"), 1);
    EXPECT_EQ(remove("SUB/X"), 0);
    EXPECT_EQ(tree(), (Tree{{"Sub/", ""}, {"Sub/x", "1"}, {"SUB/", ""}}));
}

TEST_F(LetterCase, IsIgnoredByADeletionOnlyForFiles) {
    folder.makeFolder("Sub");
    folder.write("File", "x");
    for (const char* name : {"SUB", "sub/", "FILE/", "file/x", "SUB/.."}) EXPECT_EQ(remove(name), 1) << name;
    EXPECT_EQ(tree(), (Tree{{"Sub/", ""}, {"File", "x"}}));
}

// --- changes by others ---

// Where no folders are remembered, every question is answered by the disk, however close in time the change
// is.
class OthersChanges : public LetterCase {
protected:
    void SetUp() override {
        LetterCase::SetUp();
        if (IsSkipped()) return;
        folder.makeFolder("Work");
        for (int i = 0; i < 20; ++i) writeByOther("Name" + std::to_string(i), "");
    }

    void writeByOther(const string& name, const string& text) const {
        std::ofstream(folder.path("Work/" + name)) << text;
    }

    void removeByOther(const string& name) const {
        EXPECT_TRUE(fs::remove(folder.path("Work/" + name))) << name;
    }

    void renameByOther(const string& from, const string& to) const {
        fs::rename(folder.path("Work/" + from), folder.path("Work/" + to));
    }

    bool finds(const string& name) const { return isFile("Work/" + name); }
};

constexpr int kRounds = 200;

TEST_F(OthersChanges, AreNoticedByTheNextLookUp) {
    for (int i = 0; i < kRounds; ++i) {
        SCOPED_TRACE(i);
        const string number = std::to_string(i);
        const string asked = "amp" + number + ".sim";
        ASSERT_FALSE(finds(asked));
        writeByOther("Amp" + number + ".SIM", "x");
        ASSERT_TRUE(finds(asked));
        renameByOther("Amp" + number + ".SIM", "Other" + number);
        ASSERT_FALSE(finds(asked));
        renameByOther("Other" + number, "AMP" + number + ".sim");
        ASSERT_TRUE(finds(asked));
        writeByOther("amp" + number + ".SIM", "y");
        ASSERT_FALSE(finds(asked)) << "two of them, none as spelled";
        removeByOther("AMP" + number + ".sim");
        ASSERT_TRUE(finds(asked));
        removeByOther("amp" + number + ".SIM");
        ASSERT_FALSE(finds(asked));
    }
}

// As a program does that unpacks files.
TEST_F(OthersChanges, AreNoticedWhereTheTimeOfTheFolderIsSetBack) {
    const auto time = fs::last_write_time(folder.path("Work")) - std::chrono::hours(1);
    fs::last_write_time(folder.path("Work"), time);
    for (int i = 0; i < kRounds; ++i) {
        SCOPED_TRACE(i);
        const string number = std::to_string(i);
        ASSERT_FALSE(finds("amp" + number));
        writeByOther("AMP" + number, "x");
        fs::last_write_time(folder.path("Work"), time);
        ASSERT_TRUE(finds("amp" + number));
    }
}

TEST_F(OthersChanges, AreNoticedBetweenChangesOfOurOwn) {
    folder.write("in", "text");
    for (int i = 0; i < kRounds; ++i) {
        SCOPED_TRACE(i);
        const string number = std::to_string(i);
        const string own = "Work/Own" + number;
        const string other = "OTHER" + number;
        ASSERT_EQ(copy("in", own), 0);
        writeByOther(other, "x");
        ASSERT_TRUE(finds("other" + number));
        ASSERT_TRUE(finds("OWN" + number));
        ASSERT_EQ(remove(own), 0);
        removeByOther(other);
        ASSERT_FALSE(finds("other" + number));
        ASSERT_FALSE(finds("OWN" + number));
        ASSERT_EQ(fsutil::makeDirectory(folder.path(own).c_str(), 0777), 0);
        fs::remove(folder.path(own));
        ASSERT_FALSE(isFolder("work/own" + number));
    }
}

TEST_F(OthersChanges, CountWhenANameIsMade) {
    folder.write("in", "text");
    for (int i = 0; i < kRounds; ++i) {
        SCOPED_TRACE(i);
        const string number = std::to_string(i);
        ASSERT_FALSE(finds("new" + number));
        writeByOther("New" + number, "old");
        ASSERT_EQ(copy("in", "Work/NEW" + number), 0);
        ASSERT_FALSE(folder.exists("Work/NEW" + number));
        ASSERT_EQ(folder.read("Work/New" + number), "text");
        removeByOther("New" + number);
        ASSERT_EQ(writeText("Work/NEW" + number, "lines"), 0);
        ASSERT_EQ(folder.read("Work/NEW" + number), "lines");
    }
}

TEST_F(OthersChanges, CountWhenAFileIsDeleted) {
    for (int i = 0; i < kRounds; ++i) {
        SCOPED_TRACE(i);
        const string number = std::to_string(i);
        writeByOther("old" + number, "x");
        ASSERT_TRUE(finds("OLD" + number));
        writeByOther("Old" + number, "y");
        ASSERT_EQ(remove("Work/old" + number), 1);
        ASSERT_EQ(remove("Work/OLD" + number), 1);
        removeByOther("old" + number);
        ASSERT_EQ(remove("Work/OLD" + number), 0);
        ASSERT_EQ(remove("Work/Old" + number), 1);
    }
}

TEST_F(OthersChanges, ToTheFolderItselfAreNoticed) {
    for (int i = 0; i < kRounds / 10; ++i) {
        SCOPED_TRACE(i);
        ASSERT_FALSE(isFile("WORK/amp.sim"));
        fs::rename(folder.path("Work"), folder.path("Aside"));
        ASSERT_FALSE(isFolder("WORK"));
        fs::create_directory(folder.path("Work"));
        std::ofstream(folder.path("Work/Amp.SIM")) << "new";
        ASSERT_EQ(textOf("WORK/amp.sim"), "new");
        fs::remove_all(folder.path("Work"));
        ASSERT_EQ(textOf("WORK/amp.sim"), "(not found)");
        fs::create_directory(folder.path("Work"));
        std::ofstream(folder.path("Work/AMP.sim")) << "newer";
        ASSERT_EQ(textOf("WORK/amp.sim"), "newer");
        ASSERT_EQ(namesIn("WORK"), (std::vector<string>{".", "..", "AMP.sim"}));
        fs::remove_all(folder.path("Work"));
        fs::rename(folder.path("Aside"), folder.path("Work"));
    }
}

TEST_F(OthersChanges, OfOneFolderForAnotherAreNoticed) {
    writeByOther("Amp.SIM", "work");
    folder.write("Other/AMP.SIM", "other");
    for (int i = 0; i < kRounds; ++i) {
        SCOPED_TRACE(i);
        ASSERT_EQ(textOf("Work/amp.sim"), i % 2 == 0 ? "work" : "other");
        ASSERT_FALSE(finds("none"));
        ASSERT_FALSE(finds("None"));
        fs::rename(folder.path("Work"), folder.path("Aside"));
        fs::rename(folder.path("Other"), folder.path("Work"));
        fs::rename(folder.path("Aside"), folder.path("Other"));
        // What is made now belongs to the folder that has the name now.
        ASSERT_EQ(writeText("Work/own", "text"), 0);
        ASSERT_FALSE(folder.exists("Other/own"));
        ASSERT_EQ(remove("Work/OWN"), 0);
        ASSERT_FALSE(folder.exists("Work/own"));
    }
}

TEST_F(OthersChanges, ToALinkAreNoticed) {
    folder.write("Else/Amp.sim", "else");
    writeByOther("AMP.SIM", "work");
    for (int i = 0; i < kRounds / 10; ++i) {
        for (const char* target : {"Work", "Else"}) {
            fs::remove(folder.path("Link"));
            tests::makeLink(target, folder.path("Link"));
            ASSERT_EQ(textOf("LINK/amp.sim"), string(target) == "Work" ? "work" : "else");
        }
    }
}

// --- while folders are remembered ---

// The names of a folder are known from the first miss on; what others do to it afterwards is news.
class RememberedFolder : public LetterCase {
protected:
    void SetUp() override {
        LetterCase::SetUp();
        if (IsSkipped()) return;
        folder.write("in", "text");
        folder.write("Work/Amp.OPJ", "twin");
        EXPECT_EQ(textOf("Work/amp.opj"), "twin");
    }

    // The folder goes, and one of the same name comes, with an entry as it is spelled in the tests.
    void changeByOther(const string& content) const {
        fs::remove_all(folder.path("Work"));
        folder.write("Work/amp.opj", content);
    }

    const platform::RememberedFolders remembered_;
};

TEST_F(RememberedFolder, ChangesOfOurOwnAreKnown) {
    EXPECT_EQ(copy("in", "Work/Copy"), 0);
    EXPECT_EQ(writeText("Work/Lines", "lines"), 0);
    EXPECT_EQ(fsutil::makeDirectory(folder.path("Work/Sub").c_str(), 0777), 0);
    ASSERT_EQ(platform::linkFile(folder.path("in").c_str(), folder.path("Work/Link").c_str()), 0);
    string temporary;
    int descriptor = -1;
    ASSERT_EQ(platform::openTemporaryBeside(folder.path("Work/New").c_str(), platform::FileMode::binary, 0666,
                                            temporary, descriptor),
              0);
    EXPECT_EQ(platform::closeFile(descriptor), 0);
    ASSERT_EQ(platform::replaceFile(temporary.c_str(), folder.path("Work/New").c_str()), 0);
    const int before = tests::foldersRead();
    for (const char* name : {"COPY", "LINES", "LINK", "NEW"})
        EXPECT_TRUE(isFile("Work/" + string(name))) << name;
    EXPECT_TRUE(isFolder("Work/SUB"));
    EXPECT_EQ(tests::foldersRead(), before);
    for (const char* name : {"Copy", "LINES", "link", "NEW", "amp.opj"}) {
        EXPECT_EQ(remove("Work/" + string(name)), 0) << name;
    }
    EXPECT_EQ(platform::removeFolder(folder.path("Work/SUB").c_str()), 0);
    for (const char* name : {"COPY", "LINES", "LINK", "NEW", "amp.opj", "SUB"}) {
        EXPECT_EQ(fsutil::checkPath(folder.path("Work/" + string(name)).c_str(), 0, 0), -1) << name;
    }
    EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}}));
}

TEST_F(RememberedFolder, AFileThatOthersHaveMadeAsSpelledIsReplacedAndNoTwinComes) {
    for (const bool isThere : {true, false}) {
        changeByOther("old");
        if (!isThere) fs::remove(folder.path("Work/amp.opj"));
        const string from = folder.write("from", "new");
        EXPECT_EQ(platform::replaceFile(from.c_str(), folder.path("Work/amp.opj").c_str()), 0);
        EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}, {"Work/amp.opj", "new"}})) << isThere;
    }
}

TEST_F(RememberedFolder, AFileThatOthersHaveMadeAsSpelledIsWrittenAndNoTwinComes) {
    for (const bool isThere : {true, false}) {
        changeByOther("old");
        if (!isThere) fs::remove(folder.path("Work/amp.opj"));
        EXPECT_EQ(copy("in", "Work/amp.opj"), 0);
        EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}, {"Work/amp.opj", "text"}})) << isThere;
    }
}

TEST_F(RememberedFolder, AFolderOrASecondNameIsMadeAsSpelledWhereTheTwinIsGone) {
    fs::remove_all(folder.path("Work"));
    folder.makeFolder("Work");
    EXPECT_EQ(fsutil::makeDirectory(folder.path("Work/amp.opj").c_str(), 0777), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}, {"Work/amp.opj/", ""}}));
    fs::remove_all(folder.path("Work"));
    folder.makeFolder("Work");
    EXPECT_EQ(platform::linkFile(folder.path("in").c_str(), folder.path("Work/Amp.opj").c_str()), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}, {"Work/Amp.opj", "text"}}));
}

TEST_F(RememberedFolder, AFolderOrASecondNameThatOthersHaveMadeIsInTheWay) {
    changeByOther("other");
    EXPECT_EQ(fsutil::makeDirectory(folder.path("Work/amp.opj").c_str(), 0777), -1);
    EXPECT_NE(platform::linkFile(folder.path("in").c_str(), folder.path("Work/amp.opj").c_str()), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}, {"Work/amp.opj", "other"}}));
}

TEST_F(RememberedFolder, ATwinThatIsGoneIsNeitherReadNorDeleted) {
    fs::remove(folder.path("Work/Amp.OPJ"));
    EXPECT_EQ(textOf("Work/amp.opj"), "(not found)");
    EXPECT_EQ(remove("Work/amp.opj"), 1);
}

TEST_F(RememberedFolder, ATwinThatHasGotAnotherSpellingIsFoundAgain) {
    fs::rename(folder.path("Work/Amp.OPJ"), folder.path("Work/AMP.opj"));
    EXPECT_EQ(textOf("Work/amp.opj"), "twin");
    fs::rename(folder.path("Work/AMP.opj"), folder.path("Work/Amp.OPJ"));
    EXPECT_EQ(remove("Work/amp.opj"), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}}));
}

TEST_F(RememberedFolder, ADeletionTakesTheOneThatIsSpelledAsAskedIfOthersHaveMadeIt) {
    changeByOther("other");
    EXPECT_EQ(remove("Work/amp.opj"), 0);
    EXPECT_EQ(tree(), (Tree{{"in", "text"}, {"Work/", ""}}));
}

// --- what it costs ---

using LetterCaseCost = LetterCase;

TEST_F(LetterCaseCost, OfANameThatIsSpelledRightIsNoReadingOfAFolder) {
    folder.write("Sub/Amp.sim", "text");
    folder.write("Sub/Out.sim", "text");
    EXPECT_EQ(foldersReadDuring([&] {
                  EXPECT_TRUE(isFile("Sub/Amp.sim"));
                  EXPECT_TRUE(isFolder("Sub"));
                  EXPECT_EQ(fsutil::ensureDirectory(folder.path("Sub")), 0);
                  EXPECT_EQ(textOf("Sub/Amp.sim"), "text");
                  EXPECT_EQ(copy("Sub/Amp.sim", "Sub/Out.sim"), 0);
                  EXPECT_EQ(writeText("Sub/Out.sim", "new"), 0);
                  const string moved = folder.path("Sub/Amp.sim");
                  EXPECT_EQ(platform::replaceFile(moved.c_str(), folder.path("Sub/Out.sim").c_str()), 0);
              }),
              0);
}

TEST_F(LetterCaseCost, OfManyMissesIsOneReadingWhereFoldersAreRemembered) {
    for (const int names : {0, 10, 1000}) {
        for (int i = 0; i < names; ++i) folder.write("Name" + std::to_string(i), "");
        const auto miss = [&](int i) { EXPECT_FALSE(isFile("missing" + std::to_string(i) + ".sim")); };
        const platform::RememberedFolders remembered;
        EXPECT_EQ(foldersReadDuring([&] { miss(0); }), 1) << names;
        EXPECT_EQ(foldersReadDuring([&] {
                      for (int i = 1; i <= 1000; ++i) miss(i);
                  }),
                  0)
            << names;
    }
}

TEST_F(LetterCaseCost, OfManyNamesInAnotherCaseIsOneReadingWhereFoldersAreRemembered) {
    for (int i = 0; i < 1000; ++i) folder.write("Name" + std::to_string(i), std::to_string(i));
    const platform::RememberedFolders remembered;
    EXPECT_EQ(foldersReadDuring([&] {
                  for (int i = 0; i < 1000; ++i) {
                      EXPECT_EQ(textOf("NAME" + std::to_string(i)), std::to_string(i));
                  }
              }),
              1);
}

TEST_F(LetterCaseCost, OfManyNewNamesIsOneReadingWhereFoldersAreRemembered) {
    folder.write("in", "text");
    folder.makeFolder("New");
    const platform::RememberedFolders remembered;
    EXPECT_EQ(foldersReadDuring([&] {
                  for (int i = 0; i < 100; ++i) EXPECT_EQ(copy("in", "New/Name" + std::to_string(i)), 0);
              }),
              1);
}

TEST_F(LetterCaseCost, OfAMissIsOneReadingWhereNothingIsRemembered) {
    const auto miss = [&] { EXPECT_FALSE(isFile("missing")); };
    { const platform::RememberedFolders remembered; }
    for (int i = 0; i < 3; ++i) EXPECT_EQ(foldersReadDuring(miss), 1);
}

TEST_F(LetterCaseCost, OfTwoThatRememberIsThatOfTheOuterOne) {
    const auto miss = [&] { EXPECT_FALSE(isFile("missing")); };
    const platform::RememberedFolders outer;
    miss();
    {
        const platform::RememberedFolders inner;
        EXPECT_EQ(foldersReadDuring(miss), 0);
    }
    EXPECT_EQ(foldersReadDuring(miss), 0);
}

}  // namespace
