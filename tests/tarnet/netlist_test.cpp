// netlist_test.cpp
//
// The rewriting of the netlist of a Tarnet cell.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TarnetLibrary.h"
#include "support/fileLimit.h"

namespace {

using namespace tests;
using namespace std::string_literals;
namespace fs = std::filesystem;

int rewriteNetlist(TarnetLibrary& library) {
    return library.converter.rewriteNetlist(library.cfg + "/old.net", library.view + "/new.net", "Cell");
}

std::string netlistFor(TarnetLibrary& library, const std::string& text) {
    library.writeOld("old.net", text);
    EXPECT_EQ(rewriteNetlist(library), 0) << text;
    EXPECT_EQ(library.read("amp/cfg_analog/old.net"), text);
    return library.readNew("new.net");
}

TEST(TarnetNetlist, OfANetlistsIncludesOnlyTheParameterFileStays) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("model.lib", "present");
    expectLines(
        {
            {".INC \"x.par\"", ".INC \"../Cell.par\""},
            {".inc \"amp.PAR\"", ".INC \"../Cell.par\""},
            {".Inc\"x.par.old\"tail", ".INC \"../Cell.par\""},
            {".INCLUDE \"C:\\x\\y.par\" ", ".INC \"../Cell.par\""},
            {".INC \"amp.Par\"", kDropped},
            {".INC \"par\"", kDropped},
            {".INC \"model.lib\"", kDropped},
            {".inc \"amp.inc\"", kDropped},
            {".INC \"a\" \"b.par\"", kDropped},
            {".INC", kDropped},
            {".INC amp.par", kDropped},
            {".inc \"\"", kDropped},
            {".INC \"\"amp.par\"", kDropped},
            {".IN \"amp.par\"", ".IN \"amp.par\""},
            {" .INC \"amp.par\"", " .INC \"amp.par\""},
            {"* .INC \"amp.par\"", "* .INC \"amp.par\""},
            {".LIB \"amp.lib\"", ".LIB \"amp.lib\""},
            {".STMLIB \"amp.stl\"", ".STMLIB \"amp.stl\""},
            {"V1 1 0 \"5\" %s %d \\", "V1 1 0 \"5\" %s %d \\"},
            {"\xE4\x01\x7F", "\xE4\x01\x7F"},
        },
        library.places(), [&](const std::string& text) { return netlistFor(library, text); });
}

TEST(TarnetNetlist, ANetlistKeepsEverythingElse) {
    TarnetLibrary library;
    library.prepareCell();
    const std::string filling(1023, 'x');
    struct Case {
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"", ""},
        {"\n\r\n\n", "\n\r\n\n"},
        {"R1 1 0 1k", "R1 1 0 1k"},
        {"a\0b\n\0\0\n.INC \"\0.par\"\n\0"s, "a\0b\n\0\0\n.INC \"../Cell.par\"\n\0"s},
        {".INC \"a.par\r\n", ".INC \"../Cell.par\"\r\n"},
        {".INC \"a.par", ".INC \"../Cell.par\"\n"},
        {".INC \"a\n", ""},
        {".INC \"", ""},
        {filling + filling + "x\r\n", filling + filling + "x\r\n"},
        {filling + ".INC \"a.par\"\n", filling + ".INC \"../Cell.par\"\n"},
        {filling + ".INC \"a.lib\"\n", filling},
        {filling + "x.INC \"a.par\"\n", filling + "x.INC \"a.par\"\n"},
        {".INC \"a.par\"" + std::string(1011, ' ') + "rest\r\n", ".INC \"../Cell.par\"\nrest\r\n"},
    };
    for (const Case& entry : cases) EXPECT_EQ(netlistFor(library, entry.text), entry.written) << entry.text;
}

TEST(TarnetNetlist, ALargeNetlistIsWhole) {
    TarnetLibrary library;
    library.prepareCell();
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "R" + std::to_string(i) + " 1 0 1k\r\n";
    EXPECT_TRUE(netlistFor(library, text + ".INC \"a.par\"\r\n") ==
                tests::asRead(text + ".INC \"../Cell.par\"\r\n"));
}

TEST(TarnetNetlist, ANetlistThatCannotBeOpenedIsNamed) {
    for (const bool isFolder : {false, true}) {
        TarnetLibrary library;
        library.prepareCell();
        if (isFolder) library.makeFolder("amp/cfg_analog/old.net");
        EXPECT_EQ(rewriteNetlist(library), 10105) << isFolder;
        EXPECT_EQ(lastError(), openForReadingError(library.cfg + "/old.net")) << isFolder;
        EXPECT_FALSE(library.existsNew("new.net")) << isFolder;
    }
}

TEST(TarnetNetlist, ANewNetlistThatCannotBeMadeIsNamed) {
    for (const bool isFolder : {false, true}) {
        TarnetLibrary library;
        library.prepareCell();
        library.writeOld("old.net", "R1 1 0 1k\n");
        const std::string newPath = library.view + "/new.net";
        isFolder ? fs::create_directory(newPath) : fs::remove_all(library.view) != 0;
        const Tree before = library.tree();
        EXPECT_EQ(rewriteNetlist(library), 10106) << isFolder;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isFolder;
        EXPECT_EQ(library.tree(), before) << isFolder;
    }
}

TEST(TarnetNetlist, ANewNetlistThatTheDiskHasNoRoomForIsNamedAndRemoved) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("old.net", std::string(100, 'x'));
    EXPECT_TRUE(succeedsWithFileLimit(99, [&] {
        EXPECT_EQ(rewriteNetlist(library), 10106);
        EXPECT_EQ(lastError(), openForWritingError(library.view + "/new.net"));
        return true;
    }));
    EXPECT_FALSE(library.existsNew("new.net"));
}

TEST(TarnetNetlist, ANetlistIsNotWrittenOverItself) {
    for (const bool isHardLink : {true, false}) {
        TarnetLibrary library;
        library.prepareCell();
        const std::string text = ".INC \"a.par\"\nR1 1 0 1k\n";
        const std::string old = library.writeOld("old.net", text);
        const std::string newPath = library.view + "/new.net";
        isHardLink ? fs::create_hard_link(old, newPath) : tests::makeLink(old, newPath);
        EXPECT_EQ(rewriteNetlist(library), 10106) << isHardLink;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isHardLink;
        EXPECT_EQ(readFile(old), text) << isHardLink;
    }
}

}  // namespace
