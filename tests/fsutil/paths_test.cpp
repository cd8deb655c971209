// paths_test.cpp
//
// Path text, taken apart and put together. Every output holds rubbish before the call.

#include "fsutil/paths.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/TestFolder.h"

namespace {

using namespace tvxconv;
using std::string;

constexpr const char* kRubbish = "C:\\left\\over.mrk";

TEST(ToForwardSlashes, TurnsEveryBackslashAndNothingElse) {
    const struct {
        string path;
        string slashed;
    } cases[] = {
        {"", ""},
        {"\\", "/"},
        {"/", "/"},
        {"a", "a"},
        {"C:\\work\\amp.opj", "C:/work/amp.opj"},
        {"C:/work\\sub/amp.opj", "C:/work/sub/amp.opj"},
        {"\\\\srv\\share\\", "//srv/share/"},
        {"..\\.\\a b.INC", ".././a b.INC"},
        {"\xE4\\\xFF", "\xE4/\xFF"},
        {string("a\\\0\\b", 5), string("a/\0/b", 5)},
    };
    for (const auto& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::toForwardSlashes(c.path, out), 0U) << c.path;
        EXPECT_EQ(out, c.slashed) << c.path;
    }
}

TEST(ToLowerCase, FoldsAsciiLettersAndLeavesEveryOtherByte) {
    for (int byte = 0; byte < 256; ++byte) {
        const string text(1, static_cast<char>(byte));
        const bool isCapital = byte >= 'A' && byte <= 'Z';
        string out = kRubbish;
        EXPECT_EQ(fsutil::toLowerCase(text, out), 0U) << byte;
        EXPECT_EQ(out, isCapital ? string(1, static_cast<char>(byte - 'A' + 'a')) : text) << byte;
    }
}

TEST(ToLowerCase, FoldsWholeTextsAndKeepsTheirSeparators) {
    const struct {
        string text;
        string lower;
    } cases[] = {
        {"", ""},
        {"A/X.SIM", "a/x.sim"},
        {"C:\\Amp\\SCHEMATIC1-Tran_1.DAT", "c:\\amp\\schematic1-tran_1.dat"},
        {string("A\0B", 3), string("a\0b", 3)},
    };
    for (const auto& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::toLowerCase(c.text, out), 0U) << c.text;
        EXPECT_EQ(out, c.lower) << c.text;
    }
}

struct ExplicitCase {
    string path;
    string result;
    bool isRelative;
};

const ExplicitCase kExplicitCases[] = {
    // none or one byte
    {"", "./", true},
    {"a", "./a", true},
    {".", "./.", true},
    {":", "./:", true},
    {"\\", ".//", true},
    // two bytes: only a bare drive is absolute, and the explicit beginnings are too short to be seen
    {"C:", "C:", false},
    {"1:", "1:", false},
    {"::", "::", false},
    {":a", "./:a", true},
    {"ab", "./ab", true},
    {"./", "././", true},
    {".\\", "././", true},
    {"..", "./..", true},
    {"a\\", "./a/", true},
    {"\\a", ".//a", true},
    {"\\\\", ".///", true},
    // three bytes and more
    {"//srv/x", "//srv/x", false},
    {"\\\\srv\\x", "\\\\srv\\x", false},
    {"/\\srv", "/\\srv", false},
    {"///", "///", false},
    {"./a", "./a", true},
    {".\\a", ".\\a", true},
    {".//", ".//", true},
    {"./.", "./.", true},
    {"../", "../", true},
    {"../a", "../a", true},
    {"..\\a", "..\\a", true},
    {"..\\..\\a", "..\\..\\a", true},
    {"...", "./...", true},
    {"..x", "./..x", true},
    {".x/y", ".x/y", false},  // a slash in third place once more
    {".xy/z", "./.xy/z", true},
    {"C:\\x", "C:\\x", false},
    {"C:/x", "C:/x", false},
    {"C:x", "C:x", false},
    {"a:b", "a:b", false},
    {"ab:", "./ab:", true},
    {"ab/c", "ab/c", false},
    {"ab\\c", "ab\\c", false},
    {"a//", "a//", false},
    {"a/b", "./a/b", true},
    {"a\\b", "./a/b", true},
    {"abc", "./abc", true},
    {"abc/d", "./abc/d", true},
    {"sub\\x.sim", "./sub/x.sim", true},
    {"sub/deeper\\x.sim", "./sub/deeper/x.sim", true},
    {"\\sub\\x.sim", ".//sub/x.sim", true},
};

TEST(MakeExplicitRelative, GivesRelativePathsAPrefixAndLeavesAbsoluteOnesAsTheyAre) {
    for (const ExplicitCase& c : kExplicitCases) {
        for (const bool before : {false, true}) {
            string path = c.path;
            bool isRelative = before;
            EXPECT_EQ(fsutil::makeExplicitRelative(path, isRelative), 0U) << c.path;
            EXPECT_EQ(path, c.result) << c.path;
            EXPECT_EQ(isRelative, c.isRelative) << c.path;
        }
    }
}

TEST(MakeExplicitRelative, TakesAPathFromTheRootForARelativeOne) {
    const ExplicitCase cases[] = {
        {"/", ".//", true},
        {"//", ".///", true},
        {"/x", ".//x", true},
        {"/x.sim", ".//x.sim", true},
        {"/home/u/amp.lib", ".//home/u/amp.lib", true},
        {"/a/b", "/a/b", false},  // a slash in third place
    };
    for (const ExplicitCase& c : cases) {
        string path = c.path;
        bool isRelative = !c.isRelative;
        EXPECT_EQ(fsutil::makeExplicitRelative(path, isRelative), 0U) << c.path;
        EXPECT_EQ(path, c.result) << c.path;
        EXPECT_EQ(isRelative, c.isRelative) << c.path;
    }
}

TEST(NormaliseReference, LeavesAPathFromTheRootAloneWhereThereAreNoDrives) {
    if (tests::kOnWindows) GTEST_SKIP() << "there are drives";
    for (const char* text : {"/", "/x", "/x.sim", "/home/u/amp.lib", "/a/b", "/home/u\\amp.lib", "/C:"}) {
        string path = text;
        bool isRelative = true;
        EXPECT_EQ(fsutil::normaliseReference(path, isRelative), 0U) << text;
        EXPECT_EQ(path, text);
        EXPECT_FALSE(isRelative) << text;
    }
}

TEST(NormaliseReference, TreatsEveryOtherPathAsMakeExplicitRelativeDoes) {
    for (const ExplicitCase& c : kExplicitCases) {
        string path = c.path;
        bool isRelative = !c.isRelative;
        EXPECT_EQ(fsutil::normaliseReference(path, isRelative), 0U) << c.path;
        EXPECT_EQ(path, c.result) << c.path;
        EXPECT_EQ(isRelative, c.isRelative) << c.path;
    }
    string path = "//";
    bool isRelative = false;
    EXPECT_EQ(fsutil::normaliseReference(path, isRelative), 0U);
    EXPECT_EQ(path, ".///");
    EXPECT_TRUE(isRelative);
}

TEST(RelativeToFolder, CutsTheFolderOff) {
    const struct {
        string path;
        string folder;
        string relative;
    } cases[] = {
        {"C:\\Proj\\Sim\\a.sim", "c:/proj", "./Sim/a.sim"},
        {"C:/PROJ/a", "c:/proj", "./a"},
        {"c:/proj/a", "C:\\PROJ", "./a"},
        {"D:\\Amp\\Decks\\rails.inc", "d:/amp", "./Decks/rails.inc"},
        {"/home/u/Amp/a.SIM", "/home/u/amp", "./a.SIM"},
        {"//srv/share/a", "\\\\SRV\\share", "./a"},
        {"C:/proj/", "C:/proj", "./"},
        {"\xC4/a", "\xC4", "./a"},
        // a folder with a slash at its end costs the first byte of the name
        {"C:/proj/sub/a", "C:/proj/", "./ub/a"},
        // the text of the folder counts, not its components
        {"C:/project/a", "C:/proj", "./ct/a"},
        // found further on, the cut is still measured from the beginning
        {"X:/C:/proj/a", "C:/proj", "./oj/a"},
        {"C:/a", "", "./:/a"},
    };
    for (const auto& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::relativeToFolder(c.path, c.folder, out), 0U) << c.path << " in " << c.folder;
        EXPECT_EQ(out, c.relative) << c.path << " in " << c.folder;
    }
}

TEST(RelativeToFolder, LeavesTheOutputEmptyForAPathThatIsNotBelowTheFolder) {
    const struct {
        string path;
        string folder;
    } cases[] = {
        {"E:/amp/rails.inc", "D:/amp"},
        {"D:/am/rails.inc", "D:/amp"},
        {"rails.inc", "D:/amp"},
        {"", "D:/amp"},
        {"D:/am", "D:/amp"},
        {"\xE4/a", "\xC4"},  // only ASCII letters have two cases
        // the folder itself: the cut would lie behind the end
        {"D:/amp", "D:/amp"},
        {"d:\\AMP", "D:/amp"},
        {"", ""},
    };
    for (const auto& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::relativeToFolder(c.path, c.folder, out), 1U) << c.path << " in " << c.folder;
        EXPECT_EQ(out, "") << c.path << " in " << c.folder;
    }
}

TEST(IsBelowFolder, WantsTheWholeFolderAndASeparatorAtTheBeginning) {
    const struct {
        string path;
        string folder;
        bool isBelow;
    } cases[] = {
        {"C:/Proj/a", "c:\\PROJ", true},
        {"C:\\Proj\\a", "C:/Proj", true},
        {"C:/Proj/", "C:/Proj", true},
        {"C:/Proj", "C:/Proj", false},
        {"C:/Project/a", "C:/Proj", false},
        {"X:/C:/Proj/a", "C:/Proj", false},
        {"C:/Pro", "C:/Proj", false},
        {"", "C:/Proj", false},
        {"/a", "", true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fsutil::isBelowFolder(c.path, c.folder), c.isBelow) << c.path << " in " << c.folder;
    }
}

TEST(ResolveRelative, JoinsAReferenceToItsFolder) {
    const struct {
        string relative;
        string base;
        string joined;
    } cases[] = {
        {"a.txt", "C:/p/q", "C:/p/q/a.txt"},
        {"./a.txt", "C:/p/q", "C:/p/q/a.txt"},
        {".\\a.txt", "C:\\p\\q", "C:/p/q/a.txt"},
        {"a.txt", "C:/p/q/", "C:/p/q/a.txt"},
        {"a.txt", "C:/", "C:/a.txt"},
        {"a.txt", "/", "/a.txt"},
        {"sub\\x.sim", "/home/u", "/home/u/sub/x.sim"},
        {"", "C:/p", "C:/p/"},
        {".", "C:/p", "C:/p/."},
        {"..", "C:/p", "C:/p/.."},
        {"./", "C:/p", "C:/p/./"},
        {"././a", "C:/p", "C:/p/./a"},
        {"./../a", "C:/p", "C:/p/../a"},
        {"/x", "C:/p", "C:/p//x"},
        {"../a.txt", "C:/p/q", "C:/p/a.txt"},
        {"../a.txt", "C:/p/q/", "C:/p/a.txt"},
        {"..\\a.txt", "C:\\p\\q\\", "C:/p/a.txt"},
        {"../../a", "C:/p/q", "C:/p/../a"},
        {"../", "C:/p/q", "C:/p/"},
        {"../a", "C:/p", "C:/a"},
        {"../a", "/p", "/a"},
        {"../a", "/p/", "/a"},
        {"../a", "C:/p//", "C:/p/a"},
        {"x", "p/", "p/x"},
        {"x", "p\\q", "p/q/x"},
    };
    for (const auto& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::resolveRelative(c.relative, c.base, out), 0U) << c.relative << " on " << c.base;
        EXPECT_EQ(out, c.joined) << c.relative << " on " << c.base;
    }
}

TEST(ResolveRelative, LeavesTheOutputEmptyForWhatCannotBeResolved) {
    const struct {
        string relative;
        string base;
    } cases[] = {
        // absolute
        {"C:/x", "C:/p/q"},
        {"C:\\x", "C:/p/q"},
        {"C:", "C:/p/q"},
        {"\\\\srv\\x", "C:/p/q"},
        {"//srv/x", "C:/p/q"},
        {"ab/c", "C:/p/q"},
        {"/a/b", "C:/p/q"},
        // a base without a separator
        {"x", "proj"},
        {"./x", "C:"},
        {"../x", "C:"},
        {"x", ""},
        // a base without a parent
        {"../a", "/"},
        {"../a", "C:/"},
        {"../a", "proj/"},
        {"..\\a", "proj\\"},
    };
    for (const auto& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::resolveRelative(c.relative, c.base, out), 1U) << c.relative << " on " << c.base;
        EXPECT_EQ(out, "") << c.relative << " on " << c.base;
    }
}

struct StatusCase {
    string input;
    string output;
    std::uint32_t status;
};

TEST(FileNameOf, IsTheTextAfterTheLastSeparator) {
    const StatusCase cases[] = {
        {"C:/p/a.txt", "a.txt", 0},
        {"C:\\p\\a.txt", "a.txt", 0},
        {"C:/p\\a.txt", "a.txt", 0},
        {"C:\\p/a.txt", "a.txt", 0},
        {"C:/p/", "", 0},
        {"C:\\p\\", "", 0},
        {"/", "", 0},
        {"/a", "a", 0},
        {"./a", "a", 0},
        {"a.txt", "a.txt", 1},
        {"C:a.txt", "C:a.txt", 1},
        {"", "", 1},
    };
    for (const StatusCase& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::fileNameOf(c.input, out), c.status) << c.input;
        EXPECT_EQ(out, c.output) << c.input;
    }
}

TEST(FolderOf, IsTheTextBeforeTheLastSeparator) {
    const StatusCase cases[] = {
        {"C:\\p\\a.txt", "C:\\p", 0},
        {"C:/p/a.txt", "C:/p", 0},
        {"C:\\p/a.txt", "C:\\p", 0},
        {"C:/p/", "C:/p", 0},
        {"C:/a", "C:", 0},
        {"/a", "", 0},
        {"//", "/", 0},
        {"./a", ".", 0},
        {"a.txt", "", 1},
        {"C:", "", 1},
        {"", "", 1},
    };
    for (const StatusCase& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::folderOf(c.input, out), c.status) << c.input;
        EXPECT_EQ(out, c.output) << c.input;
    }
}

TEST(ExtensionOf, IsTheTextAfterTheFirstDotOrTheTailOfADefaultMarker) {
    const StatusCase cases[] = {
        {"bias.sim", "sim", 0},
        {"amp.sim.cir", "sim.cir", 0},
        {"a.b.c", "b.c", 0},
        {"x.y.mrk", "y.mrk", 0},
        {"amp.", "", 0},
        {".mrk", "mrk", 0},
        {".bashrc", "bashrc", 0},
        {"a..b", ".b", 0},
        {"...", "..", 0},
        {".", "", 0},
        {"..", "", 0},
        {"readme", "", 1},
        {"", "", 1},
        {"no-dot", "", 1},
        // marker files
        {"trans-probe.mrk", "mrk", 0},
        {"s1-tran.MRK", "MRK", 0},
        {"probe.mrk", "mrk", 0},
        {"s1-tran-default.mrk", "default.mrk", 0},
        {"s1-tran-DEFAULT.MRK", "DEFAULT.MRK", 0},
        {"s1-tran-Default.mrk", "Default.mrk", 0},
        {"s1-default.mrk", "default.mrk", 0},
        {"-default.mrk", "default.mrk", 0},
        {"default.mrk", "mrk", 0},
        {"s1-tran-default-.mrk", "mrk", 0},
        {"s1-default-tran.mrk", "mrk", 0},
        {"s1_default.mrk", "mrk", 0},
        {"s1-xdefault.mrk", "mrk", 0},
        // with a dot further in front it is no marker
        {"s1.2-default.mrk", "2-default.mrk", 0},
        {"s1-default.mrk.bak", "mrk.bak", 0},
    };
    for (const StatusCase& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::extensionOf(c.input, out), c.status) << c.input;
        EXPECT_EQ(out, c.output) << c.input;
    }
}

TEST(BaseNameOf, IsTheTextBeforeTheFirstDotOrTheProfileOfADefaultMarker) {
    const StatusCase cases[] = {
        {"bias.sim", "bias", 0},
        {"amp.sim.cir", "amp", 0},
        {"amp.", "amp", 0},
        {".mrk", "", 0},
        {".", "", 0},
        {"..", "", 0},
        {"readme", "readme", 1},
        {"no-dot", "no-dot", 1},
        {"", "", 1},
        // marker files
        {"trans-probe.mrk", "trans-probe", 0},
        {"SCHEMATIC1-bias-default.mrk", "SCHEMATIC1-bias", 0},
        {"SCHEMATIC1-bias-DEFAULT.Mrk", "SCHEMATIC1-bias", 0},
        {"-default.mrk", "", 0},
        {"default.mrk", "default", 0},
        {"s1-default-tran.mrk", "s1-default-tran", 0},
        {"s1.2-default.mrk", "s1", 0},
        {"s1-default.mrk.bak", "s1-default", 0},
    };
    for (const StatusCase& c : cases) {
        string out = kRubbish;
        EXPECT_EQ(fsutil::baseNameOf(c.input, out), c.status) << c.input;
        EXPECT_EQ(out, c.output) << c.input;
    }
}

TEST(PathOperations, MayWriteOverTheirInput) {
    string text = "C:\\P\\a.b.SIM";
    EXPECT_EQ(fsutil::toForwardSlashes(text, text), 0U);
    EXPECT_EQ(text, "C:/P/a.b.SIM");
    EXPECT_EQ(fsutil::relativeToFolder(text, "c:/p", text), 0U);
    EXPECT_EQ(text, "./a.b.SIM");
    EXPECT_EQ(fsutil::resolveRelative(text, "D:/q", text), 0U);
    EXPECT_EQ(text, "D:/q/a.b.SIM");
    string folder = text;
    EXPECT_EQ(fsutil::folderOf(folder, folder), 0U);
    EXPECT_EQ(folder, "D:/q");
    EXPECT_EQ(fsutil::relativeToFolder("D:/q/x", folder, folder), 0U);
    EXPECT_EQ(folder, "./x");
    EXPECT_EQ(fsutil::fileNameOf(text, text), 0U);
    EXPECT_EQ(text, "a.b.SIM");
    EXPECT_EQ(fsutil::toLowerCase(text, text), 0U);
    EXPECT_EQ(text, "a.b.sim");
    string extension = text;
    EXPECT_EQ(fsutil::extensionOf(extension, extension), 0U);
    EXPECT_EQ(extension, "b.sim");
    EXPECT_EQ(fsutil::baseNameOf(text, text), 0U);
    EXPECT_EQ(text, "a");
}

TEST(ToBackslashes, TurnsEverySlash) {
    const struct {
        string path;
        string result;
    } cases[] = {{"", ""}, {"./a/b.lib", ".\\a\\b.lib"}, {"..\\a/b", "..\\a\\b"}, {"a.lib", "a.lib"}};
    for (const auto& c : cases) EXPECT_EQ(fsutil::toBackslashes(c.path), c.result);
}

}  // namespace
