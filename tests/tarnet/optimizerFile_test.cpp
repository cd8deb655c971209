// optimizerFile_test.cpp
//
// The rewriting of the optimizer file of a cell, and the design profiles that it takes along.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/TarnetLibrary.h"
#include "support/fileLimit.h"

namespace {

using namespace tests;

int rewrite(TarnetLibrary& library) {
    return library.converter.rewriteOptimizerFile(library.cfg + "/old.opt", library.view + "/new.opt",
                                                  library.view);
}

std::string rewritten(TarnetLibrary& library, const std::string& text) {
    library.writeOld("old.opt", text);
    EXPECT_EQ(rewrite(library), 0) << text;
    EXPECT_EQ(library.read("amp/cfg_analog/old.opt"), text);
    return library.readNew("new.opt");
}

void addProfiles(const TarnetLibrary& library) {
    library.writeOld("corners.mdp", "corners");
    library.writeOld("sub/deep.mdp", "deep");
    library.makeFolder("amp/cfg_analog/folder.mdp");
}

TEST(TarnetOptimizerFile, NamesDesignProfilesWhereTheyAreToBeFound) {
    TarnetLibrary library;
    library.prepareCell();
    addProfiles(library);
    expectLines(
        {
            {"EXT \"corners.mdp\"", "ext \"corners.mdp\""},
            {"extern=\"CORNERS.mdp\" 1 \"x\" ", "ext \"CORNERS.mdp\" 1 \"x\" "},
            {"ext \"sub\\deep.mdp\" tail", "ext \"@CFG@/sub/deep.mdp\" tail"},
            {"ext \"./corners.mdp\"", "ext \"@CFG@/corners.mdp\""},
            {"ext \"../absent.mdp\"", "ext \"@CELL@/absent.mdp\""},
            {"ext \"../../absent.mdp\"", "ext \"@CELL@/../absent.mdp\""},
            {"Ext \"C:\\x\\y.mdp\"", "ext \"C:/x/y.mdp\""},
            {"Ext \"/x/y.mdp.old\";", "ext \"/x/y.mdp.old\";"},
            {"Ext \"ab/c.mdp\"", "ext \"ab/c.mdp\""},
        },
        library.places(), [&](const std::string& text) { return rewritten(library, text); },
        LastLine::staysWithoutEnd);
    EXPECT_EQ(library.readNew("corners.mdp"), "corners");
    EXPECT_FALSE(library.existsNew("deep.mdp"));
}

TEST(TarnetOptimizerFile, KeepsADesignProfileThatIsNotThere) {
    TarnetLibrary library;
    library.prepareCell();
    addProfiles(library);
    expectLines(
        {
            {"EXT  \"absent.mdp\" tail", "EXT  \"absent.mdp\" tail"},
            {"ext \"folder.mdp\"", "ext \"folder.mdp\""},
            {"ext \"C:corners.mdp\"", "ext \"C:corners.mdp\""},
        },
        library.places(), [&](const std::string& text) { return rewritten(library, text); },
        LastLine::staysWithoutEnd);
}

TEST(TarnetOptimizerFile, LeavesOutWhatNamesNoDesignProfile) {
    TarnetLibrary library;
    library.prepareCell();
    expectLines(
        {
            {"ext \"a.txt\"", kDropped},
            {"ext \"corners.MDP\"", kDropped},
            {"ext", kDropped},
            {"ext corners.mdp", kDropped},
            {"extra", kDropped},
            {"ext \"\"", "ext \"\""},
            {"EXT \"\" \"corners.mdp\"", "EXT \"\" \"corners.mdp\""},
        },
        library.places(), [&](const std::string& text) { return rewritten(library, text); },
        LastLine::staysWithoutEnd);
}

TEST(TarnetOptimizerFile, KeepsEverythingElse) {
    TarnetLibrary library;
    library.prepareCell();
    addProfiles(library);
    expectLines(
        {
            {"sim \"tran.sim\"", "sim \"tran.sim\""},
            {" ext \"corners.mdp\"", " ext \"corners.mdp\""},
            {"ex \"corners.mdp\"", "ex \"corners.mdp\""},
            {"goal 1 %s", "goal 1 %s"},
        },
        library.places(), [&](const std::string& text) { return rewritten(library, text); },
        LastLine::staysWithoutEnd);
    const std::string filling(1023, 'x');
    EXPECT_EQ(rewritten(library, filling + "ext \"a.txt\"\n"), filling);
    EXPECT_EQ(rewritten(library, filling + "xext \"a.txt\"\n"), filling + "xext \"a.txt\"\n");
    EXPECT_EQ(rewritten(library, ""), "");
    // Without a closing quote the line end belongs to the value.
    EXPECT_EQ(rewritten(library, "ext \"corners.mdp\nnext\n"), "ext \"corners.mdp\nnext\n");
    EXPECT_EQ(rewritten(library, "ext \"corners.mdp"), "ext \"corners.mdp\"");
    // A long line comes in pieces, and stays one line.
    EXPECT_EQ(rewritten(library, "EXT \"corners.mdp\"" + std::string(2000, ' ') + "\r\nnext"),
              "ext \"corners.mdp\"" + std::string(2000, ' ') + "\r\nnext");
}

TEST(TarnetOptimizerFile, ADesignProfileThatCannotBeCopiedIsReportedAndItsLineStays) {
    TarnetLibrary library;
    library.prepareCell();
    addProfiles(library);
    library.makeFolder("amp/tvx_sim_1/corners.mdp");
    EXPECT_EQ(rewritten(library, "EXT \"corners.mdp\" 1\next \"sub/deep.mdp\"\n"),
              "EXT \"corners.mdp\" 1\next \"" + library.cfg + "/sub/deep.mdp\"\n");
    EXPECT_EQ(lastError(), copyFileError(library.cfg + "/corners.mdp", library.view + "/corners.mdp"));
}

TEST(TarnetOptimizerFile, ADesignProfileThatMayNotBeReadCountsAsAbsent) {
    TarnetLibrary library;
    library.prepareCell();
    addProfiles(library);
    library.writeOld("old.opt", "EXT \"corners.mdp\"\n");
    openToAll(library.folder.path());
    ASSERT_EQ(chmod((library.cfg + "/corners.mdp").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(rewrite(library), 0);
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
    EXPECT_EQ(library.readNew("new.opt"), "EXT \"corners.mdp\"\n");
}

TEST(TarnetOptimizerFile, GoesIntoTheFolderThatIsGiven) {
    TarnetLibrary library;
    library.prepareCell();
    addProfiles(library);
    const std::string other = library.makeFolder("other");
    library.writeOld("old.opt", "EXT \"corners.mdp\"\n");
    EXPECT_EQ(library.converter.rewriteOptimizerFile(library.cfg + "/old.opt", other + "/x.opt", other), 0);
    EXPECT_EQ(library.read("other/x.opt"), "ext \"corners.mdp\"\n");
    EXPECT_EQ(library.read("other/corners.mdp"), "corners");
}

TEST(TarnetOptimizerFile, OneThatCannotBeOpenedOrWrittenIsNamed) {
    TarnetLibrary library;
    library.prepareCell();
    EXPECT_EQ(rewrite(library), 10105);
    EXPECT_EQ(lastError(), openForReadingError(library.cfg + "/old.opt"));
    library.writeOld("old.opt", std::string(100, 'x'));
    EXPECT_TRUE(succeedsWithFileLimit(99, [&] {
        EXPECT_EQ(rewrite(library), 10106);
        EXPECT_EQ(lastError(), openForWritingError(library.view + "/new.opt"));
        return true;
    }));
    EXPECT_FALSE(library.existsNew("new.opt"));
    library.makeFolder("amp/tvx_sim_1/new.opt");
    EXPECT_EQ(rewrite(library), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.view + "/new.opt"));
}

}  // namespace
