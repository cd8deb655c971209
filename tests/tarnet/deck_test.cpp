// deck_test.cpp
//
// The rewriting of the decks of a Tarnet cell's profiles, and the references to include, library and stimulus
// files in them.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TarnetLibrary.h"

namespace {

using namespace tests;
using namespace std::string_literals;
namespace fs = std::filesystem;

// --- the deck of a profile ---

int rewriteDeck(TarnetLibrary& library) {
    return library.converter.rewriteCircuitIncludes(library.cfg, library.cfg + "/tran.sim.cir",
                                                    library.profiles + "/tran/tran.cir");
}

std::string deckFor(TarnetLibrary& library, const std::string& text) {
    library.writeOld("tran.sim.cir", text);
    EXPECT_EQ(rewriteDeck(library), 0) << text;
    EXPECT_EQ(library.read("amp/cfg_analog/tran.sim.cir"), text);
    return library.readNew("profiles/tran/tran.cir");
}

// A cell with files that a deck can name.
void prepareDeck(TarnetLibrary& library) {
    library.prepareCell();
    for (const char* extension : {"inc", "lib", "stl"}) {
        const std::string end = std::string(".") + extension;
        library.writeOld("flat" + end, "");
        library.writeOld("sub/flat" + end, "");
        library.writeOld("sub/deep" + end, "");
        library.writeOld("ab/short" + end, "");
        library.write("amp/up" + end, "");
        library.write("amp/other/up" + end, "");
        library.write("amp/other/side" + end, "");
        library.write("shared" + end, "");
        library.makeFolder("amp/cfg_analog/folder" + end);
    }
}

TEST(TarnetDeck, ADeckIncludesTheCellsNetlistTwoLevelsUp) {
    TarnetLibrary library;
    prepareDeck(library);
    expectLines(
        {
            {".INC \"tran.net\"", ".INC \"../../amp.net\""},
            {".inc \"C:\\any\\other.NET\" tail", ".INC \"../../amp.net\""},
            {".INCLUDE\".net\"", ".INC \"../../amp.net\""},
            {".INC \"absent.net.inc\"", ".INC \"../../amp.net\""},
            {".INC \"amp.Net\"", kDropped},
        },
        library.places(), [&](const std::string& text) { return deckFor(library, text); });
}

TEST(TarnetDeck, ADecksIncludesLibrariesAndStimuliAreRelocated) {
    struct Directive {
        const char* name;
        const char* extension;
        const char* upperCase;
    };
    for (const Directive& directive :
         {Directive{".INC", ".inc", ".INC"}, {".LIB", ".lib", ".LIB"}, {".STMLIB", ".stl", ".STL"}}) {
        TarnetLibrary library;
        prepareDeck(library);
        // With the directive and the extensions put in.
        const std::vector<LineCase> patterns = {
            {"@D@ \"flat@x@\" ", "@D@ \"../../flat@x@\""},
            {"@d@\".\\FLAT@X@\" tail", "@D@ \"../../FLAT@X@\""},
            {"@d@X  \"./sub/flat@x@\"", "@D@ \"../../flat@x@\""},
            {"@D@ \"nowhere\\flat@x@\"", "@D@ \"../../flat@x@\""},
            {"@D@ \"./sub/deep@x@\"", "@D@ \"@CFG@/sub/deep@x@\""},
            {"@D@ \"sub/deep@x@\"", "@D@ \"@CFG@/sub/deep@x@\""},
            {"@D@ \"../up@x@\"", "@D@ \"../../../up@x@\""},
            {"@D@ \"..\\other\\up@x@\"", "@D@ \"../../../up@x@\""},
            {"@D@ \"../other/side@x@\"", "@D@ \"@CELL@/other/side@x@\""},
            {"@D@ \"../../shared@x@\"", "@D@ \"@CELL@/../shared@x@\""},
            {"@d@ \"@LIB@/shared@x@\"", "@D@ \"@LIB@/shared@x@\""},
            {"@d@  \"absent@x@\" tail", "@d@  \"absent@x@\" tail"},
            {"@d@ \"../absent@x@\"", "@d@ \"../absent@x@\""},
            {"@d@ \"@LIB@/absent@x@\"", "@d@ \"@LIB@/absent@x@\""},
            {"@D@ \"C:/x/flat@x@\"", "@D@ \"C:/x/flat@x@\""},
            {"@D@ \"ab/short@x@\"", "@D@ \"ab/short@x@\""},
            {"@D@ \"folder@x@\"", "@D@ \"folder@x@\""},
            {"@D@ \"flat.txt\"", kDropped},
            {"@D@ \"flat.par\"", kDropped},
            {"@D@ \"\"", kDropped},
            {"@D@ flat@x@", kDropped},
            {"@d@", kDropped},
        };
        std::string lowerName = lowerCase(directive.name);
        std::vector<std::string> texts;
        texts.reserve(2 * patterns.size());
        std::vector<LineCase> cases;
        const auto filled = [&](const char* pattern) -> const char* {
            if (pattern == kDropped) return kDropped;
            std::string text = replaced(pattern, "@D@", directive.name);
            text = replaced(text, "@d@", lowerName);
            text = replaced(text, "@x@", directive.extension);
            texts.push_back(replaced(text, "@X@", directive.upperCase));
            return texts.back().c_str();
        };
        for (const LineCase& pattern : patterns) {
            const char* line = filled(pattern.line);
            cases.push_back({line, filled(pattern.written)});
        }
        expectLines(cases, library.places(), [&](const std::string& text) { return deckFor(library, text); });
    }
}

TEST(TarnetDeck, ADirectiveThatNamesAFileOfAnotherKindIsLeftOut) {
    TarnetLibrary library;
    prepareDeck(library);
    expectLines(
        {
            {".INC \"flat.lib\"", kDropped},
            {".INC \"flat.stl\"", kDropped},
            {".INC \"flat.Inc\"", kDropped},
            {".LIB \"flat.inc\"", kDropped},
            {".LIB \"amp.net\"", kDropped},
            {".LIB \"flat.Lib\"", kDropped},
            {".STMLIB \"flat.lib\"", kDropped},
            {".STMLIB \"flat.Stl\"", kDropped},
            {".LIBRARY", kDropped},
            {" .LIB \"flat.lib\"", " .LIB \"flat.lib\""},
            {"* .LIB \"flat.lib\"", "* .LIB \"flat.lib\""},
            {".TRAN 1n 1u", ".TRAN 1n 1u"},
            {".STM \"flat.stl\"", ".STM \"flat.stl\""},
            {".END", ".END"},
        },
        library.places(), [&](const std::string& text) { return deckFor(library, text); });
}

TEST(TarnetDeck, ADeckKeepsEverythingElse) {
    TarnetLibrary library;
    prepareDeck(library);
    const std::string filling(1023, 'x');
    struct Case {
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"", ""},
        {"\r\n\n", "\r\n\n"},
        {"a\0b\n.LIB \"flat.lib\"\0\n"s, "a\0b\n.LIB \"../../flat.lib\"\n"s},
        {filling + ".LIB \"flat.lib\"\n", filling + ".LIB \"../../flat.lib\"\n"},
        {filling + "x.LIB \"flat.lib\"\n", filling + "x.LIB \"flat.lib\"\n"},
        {".INC \"a.net", ".INC \"../../amp.net\"\n"},
        {".LIB \"flat.lib\n", ".LIB \"flat.lib\n"},  // with its line end it names no file
    };
    for (const Case& entry : cases) EXPECT_EQ(deckFor(library, entry.text), entry.written) << entry.text;
}

TEST(TarnetDeck, ADeckThatCannotBeOpenedOrWrittenIsNamed) {
    TarnetLibrary library;
    library.prepareCell();
    EXPECT_EQ(rewriteDeck(library), 10105);
    EXPECT_EQ(lastError(), openForReadingError(library.cfg + "/tran.sim.cir"));
    library.writeOld("tran.sim.cir", "R1\n");
    library.makeFolder("amp/tvx_sim_1/profiles/tran/tran.cir");
    EXPECT_EQ(rewriteDeck(library), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.profiles + "/tran/tran.cir"));
}

// --- references ---

TEST(TarnetDeck, AReferenceIsMadeForWhatIsThere) {
    TarnetLibrary library;
    prepareDeck(library);
    struct Case {
        const char* name;
        std::string result;
    };
    const std::vector<Case> cases = {
        {"flat.inc", "../../flat.inc"},
        {".\\FLAT.INC", "../../FLAT.INC"},
        {"./sub/flat.inc", "../../flat.inc"},
        {"./x/../flat.inc", "../../flat.inc"},
        {"sub/deep.inc", library.cfg + "/sub/deep.inc"},
        {"../up.inc", "../../../up.inc"},
        {"../other/up.inc", "../../../up.inc"},
        {"../other/side.inc", library.cell + "/other/side.inc"},
        {"../cfg_analog/flat.inc", library.cell + "/cfg_analog/flat.inc"},
        {"../../shared.inc", library.cell + "/../shared.inc"},
        {"../../up.inc", "../../../up.inc"},
        {"up.inc", ""},
        {"../flat.inc", ""},
        {"absent.inc", ""},
        {"folder.inc", ""},
        {"ab/short.inc", ""},
        {"C:/flat.inc", ""},
        {"//flat.inc", ""},
        {"./", ""},
        {"../", ""},
        {"", ""},
    };
    for (const Case& entry : cases) {
        std::string result = "left over";
        EXPECT_EQ(library.converter.relocateReference(library.cfg, entry.name, result), 0) << entry.name;
        EXPECT_EQ(result, entry.result) << entry.name;
    }
    std::string result = "left over";
    const std::string absolute = library.path("shared.lib");
    EXPECT_EQ(library.converter.relocateReference(library.cfg, withBackslashes(absolute), result), 0);
    EXPECT_EQ(result, absolute);
    EXPECT_EQ(library.converter.relocateReference(library.cfg, library.path("absent.lib"), result), 0);
    EXPECT_EQ(result, "");
    EXPECT_EQ(lastError(), LastError());
}

TEST(TarnetDeck, AFileThatMayNotBeReadIsNotThere) {
    TarnetLibrary library;
    prepareDeck(library);
    openToAll(library.folder.path());
    ASSERT_EQ(chmod((library.cfg + "/flat.inc").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        std::string result = "left over";
        EXPECT_EQ(library.converter.relocateReference(library.cfg, "flat.inc", result), 0);
        EXPECT_EQ(result, "");
        EXPECT_EQ(library.converter.relocateReference(library.cfg, "./sub/flat.inc", result), 0);
        EXPECT_EQ(result, library.cfg + "/sub/flat.inc");
        return true;
    }));
}

}  // namespace
