// optimizerFile_test.cpp
//
// The rewriting of a schematic's optimizer file: the lines that name profile files and those that name design
// profiles, and the design profiles that come along.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"
#include "support/lineCases.h"

namespace {

using namespace tests;
using namespace std::string_literals;
using testing::IsEmpty;
namespace fs = std::filesystem;

// A project with an optimizer file for S1, records of profiles, and design profiles.
class OptimizerFile : public testing::Test {
protected:
    OptimizerFile() {
        project_.prepareSteps();
        project_.converter.addProfileRecord("amp-S1-tran", "tran", "S1", ".\\amp-S1-tran.sim");
        project_.converter.addProfileRecord("bench", "AC sweep", "S2", ".\\bench.sim");
    }

    int rewrite() {
        std::string newPath = "left over";
        const int status = project_.converter.rewriteOptimizerFile(newPath, project_.path("amp-S1.opt"), "S1",
                                                                   project_.schematicFolder, "opt");
        EXPECT_EQ(newPath, project_.schematicFolder + "/S1.opt");
        return status;
    }

    // What becomes of `text`, which stays as it is in the project's folder.
    std::string rewritten(const std::string& text) {
        project_.write("amp-S1.opt", text);
        EXPECT_EQ(rewrite(), 0) << text;
        EXPECT_EQ(project_.read("amp-S1.opt"), text);
        return project_.readNew("amp-TevrixFiles/S1/S1.opt");
    }

    // @UP@ stands for the folder that the project's folder is in.
    void expectLines(const std::vector<LineCase>& cases) {
        tests::expectLines(
            cases, {{"@UP@", project_.folder.path()}},
            [&](const std::string& text) { return rewritten(text); }, LastLine::staysWithoutEnd);
    }

    // All but the optimizer file, old and new.
    Tree treeWithoutOptimizer() const {
        Tree tree = project_.tree();
        tree.erase("project/amp-S1.opt");
        tree.erase("new/amp-TevrixFiles/S1/S1.opt");
        return tree;
    }

    Moves moves() { return movesOf(project_.converter); }

    DraftelProject project_;
};

// --- lines that name profile files ---

TEST_F(OptimizerFile, TheNewNameOfAProfileFileIsMadeFromNothing) {
    struct Case {
        const char* oldName;
        int status;
        const char* newName;
    };
    for (const Case& entry : {Case{"bench.sim", 0, "AC sweep.sim"}, Case{"BENCH", 0, "AC sweep.sim"},
                              Case{"bench.sim.cir", 0, "AC sweep.sim"}, Case{"nobody.sim", 1, ""},
                              Case{".\\bench.sim", 1, ""}, Case{"", 1, ""}}) {
        std::string newName = "left over";
        EXPECT_EQ(project_.converter.newProfileFileName(newName, entry.oldName), entry.status)
            << entry.oldName;
        EXPECT_EQ(newName, entry.newName) << entry.oldName;
    }
}

TEST_F(OptimizerFile, NamesProfilesAsTheyAreCalledNow) {
    expectLines({
        {"sim \"amp-S1-tran.sim\"", "sim \"tran.sim\""},
        {"sim \"amp-S1-tran.sim\" enabled \"1\" %s %d", "sim \"tran.sim\" enabled \"1\" %s %d"},
        {"SIM \t=\"AMP-s1-TRAN.sim\"tail ", "sim \"tran.sim\"tail "},
        {"Simulation of \"bench.sim\"  ", "sim \"AC sweep.sim\"  "},
        // All that counts is what stands before the first "." of the name, and that ".sim" is in it.
        {"sim \"bench.sim.cir\"", "sim \"AC sweep.sim\""},
        {"sim \"bench.old.simulation\" x", "sim \"AC sweep.sim\" x"},
        {"sim \"bench.sim", "sim \"AC sweep.sim\""},
        // The name is the first quoted text, also where the same text stands before it.
        {"sim bench.sim \"bench.sim\" rest", "sim \"AC sweep.sim\" rest"},
        {"simbench.sim\"bench.sim\"bench.sim\"", "sim \"AC sweep.sim\"bench.sim\""},
    });
    EXPECT_THAT(moves(), IsEmpty());
}

TEST_F(OptimizerFile, KeepsALineWhoseProfileIsUnknown) {
    expectLines({
        {"sim \"amp-S1-dc.sim\" enabled", "sim \"amp-S1-dc.sim\" enabled"},
        {"Sim   \"tran.sim\"", "Sim   \"tran.sim\""},
        // A folder is no part of the name of a profile file.
        {"sim \".\\amp-S1-tran.sim\"", "sim \".\\amp-S1-tran.sim\""},
        {"sim \"sub/amp-S1-tran.sim\"", "sim \"sub/amp-S1-tran.sim\""},
        {"sim \"@UP@/project/amp-S1-tran.sim\"", "sim \"@UP@/project/amp-S1-tran.sim\""},
        {"sim \".sim\"", "sim \".sim\""},
        {"sim \"amp-S1-tran .sim", "sim \"amp-S1-tran .sim"},
    });
}

TEST_F(OptimizerFile, KeepsALineWithAnEmptyName) {
    for (const char* line : {"sim \"\"", "SIM \"\" \"amp-S1-tran.sim\"", "ext \"\"", "Ext= \"\" \"x.mdp\""}) {
        expectLines({{line, line}});
    }
}

TEST_F(OptimizerFile, DropsALineThatNamesAnotherKindOfFileOrNone) {
    project_.write("x.MDP", "of a spelling that does not count");
    const Tree before = treeWithoutOptimizer();
    expectLines({
        {"sim \"amp-S1-tran.cir\"", kDropped},
        {"sim \"amp-S1-tran.SIM\"", kDropped},
        {"sim \"amp-S1-tran\"", kDropped},
        {"sim \"amp-S1-tran.mdp\"", kDropped},
        {"sim \"a\" \"amp-S1-tran.sim\"", kDropped},
        {"sim", kDropped},
        {"sim amp-S1-tran.sim", kDropped},
        {"SIMPLE words", kDropped},
        {"ext \"x.MDP\"", kDropped},
        {"ext \"x.Mdp\"", kDropped},
        {"ext \"x.sim\"", kDropped},
        {"ext \"mdp\"", kDropped},
        {"ext \"x\" \"y.mdp\"", kDropped},
        {"ext", kDropped},
        {"ext x.mdp", kDropped},
        {"extern void", kDropped},
    });
    EXPECT_EQ(treeWithoutOptimizer(), before);
}

TEST_F(OptimizerFile, KeepsEveryOtherLine) {
    for (const char* line :
         {"", " ", "*", "param \"rc1\" 4.7k", "si \"amp-S1-tran.sim\"", "ex \"x.mdp\"",
          " sim \"amp-S1-tran.sim\"", "\text \"x.mdp\"", "\"sim\" \"amp-S1-tran.sim\"",
          "goal \"amp-S1-tran.sim\" \"x.mdp\"", "*sim \"amp-S1-tran.sim\"", "%s%n\\", "\xE4\x01\x7F\r"}) {
        expectLines({{line, line}});
    }
}

TEST_F(OptimizerFile, ANameWithoutAClosingQuoteRunsToTheEndOfTheLine) {
    struct Case {
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"sim \"bench.sim tail\nnext\n", "sim \"AC sweep.sim\"\nnext\n"},
        {"sim \"bench.sim\r\nnext\r\n", "sim \"AC sweep.sim\"\r\nnext\r\n"},
        {"sim \"nobody.sim\r\nnext\r\n", "sim \"nobody.sim\r\nnext\r\n"},
        {"sim \"bench\r\nnext\r\n", "next\r\n"},
        // The line end alone is a name, and nothing at all is none: both are dropped.
        {"sim \"\nnext\n", "next\n"},
        {"sim \"", ""},
        {"ext \"", ""},
        {"ext \"x\nnext\n", "next\n"},
        {"ext \"x.mdp\r\nnext\r\n", "ext \"x.mdp\r\n\"\r\nnext\r\n"},
        {"ext \"C:\\x.mdp\nnext\n", "ext \"C:/x.mdp\n\"\nnext\n"},
        {"ext \"x.mdp", "ext \"x.mdp\""},
        {"sim \"bench.sim", "sim \"AC sweep.sim\""},
    };
    project_.write("x.mdp", "X");
    for (const Case& entry : cases) EXPECT_EQ(rewritten(entry.text), entry.written) << entry.text;
}

// A quote in the first place belongs to no line that is looked at, so each of these has something before it.
TEST_F(OptimizerFile, ANulIsAByteLikeAnyOther) {
    project_.write("x.mdp", "X");
    EXPECT_EQ(rewritten("a\0b\n\0\0\nsim\0\"bench.sim\"\0tail\0\n\0"s),
              "a\0b\n\0\0\nsim \"AC sweep.sim\"\0tail\0\n\0"s);
    EXPECT_EQ(rewritten("si\0m \"bench.sim\"\n"s), "si\0m \"bench.sim\"\n"s);
    EXPECT_EQ(rewritten("sim \"bench\0.sim\"\n"s), "sim \"bench\0.sim\"\n"s);
    EXPECT_EQ(rewritten("sim \"bench.\0.sim\" x\n"s), "sim \"AC sweep.sim\" x\n"s);
    EXPECT_EQ(rewritten("ext \"x.mdp\0\" y\n"s), "ext \"x.mdp\0\" y\n"s);
    EXPECT_EQ(rewritten("ext \"a\\b\0.mdp\"\n"s), "ext \"" + project_.dir + "/a/b\0.mdp\"\n"s);
    EXPECT_FALSE(project_.existsNew("amp-TevrixFiles/S1/x.mdp"));
    EXPECT_THAT(moves(), IsEmpty());
}

// A line comes in pieces of at most 1023 bytes, and each piece is handled like a line.
TEST_F(OptimizerFile, LongLinesComeInPieces) {
    if (tests::kOnWindows) GTEST_SKIP() << "a line is cut after its CR has gone there";
    const std::string filling(1023, 'x');
    const std::string named = "sim \"bench.sim\"";  // 15 bytes
    struct Case {
        const char* what;
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"3000 bytes that are no name", filling + filling + std::string(954, 'y') + "\r\nnext",
         filling + filling + std::string(954, 'y') + "\r\nnext"},
        {"3000 bytes behind a name",
         named + std::string(1008, ' ') + filling + std::string(954, 'y') + "\r\nnext",
         "sim \"AC sweep.sim\"" + std::string(1008, ' ') + filling + std::string(954, 'y') + "\r\nnext"},
        {"a piece with its line end", named + std::string(1007, ' ') + "\n",
         "sim \"AC sweep.sim\"" + std::string(1007, ' ') + "\n"},
        {"a piece that ends between CR and LF", named + std::string(1007, ' ') + "\r\n",
         "sim \"AC sweep.sim\"" + std::string(1007, ' ') + "\r\n"},
        {"a name of 3000 bytes", "sim \"bench.sim" + std::string(2986, 'x') + "\" tail\n",
         "sim \"AC sweep.sim\"" + std::string(1023, 'x') + std::string(954, 'x') + "\" tail\n"},
        {"a long line with CRLF", "Ext \"x.mdp\"" + std::string(2000, ' ') + "\r\nEXT \"x.mdp\"",
         "ext \"x.mdp\"" + std::string(2000, ' ') + "\r\next \"x.mdp\""},
        {"the rest of a line that is dropped", "ext " + std::string(1019, ' ') + "\"x.mdp\"\n",
         "\"x.mdp\"\n"},
        {"a name at the beginning of a piece", filling + "sim \"bench.sim\" x\r\n",
         filling + "sim \"AC sweep.sim\" x\r\n"},
        {"a name elsewhere in a piece", filling + "xsim \"bench.sim\"\n", filling + "xsim \"bench.sim\"\n"},
    };
    for (const Case& entry : cases) EXPECT_EQ(rewritten(entry.text), entry.written) << entry.what;
}

TEST_F(OptimizerFile, ALargeOneIsWhole) {
    std::string text;
    std::string written;
    for (int i = 0; i < 10000; ++i) {
        const std::string number = std::to_string(i);
        project_.converter.addProfileRecord("base" + number, "p" + number, "S1", "");
        text += "sim \"base" + number + ".sim\" " + number + "\r\n";
        written += "sim \"p" + number + ".sim\" " + number + "\r\n";
    }
    EXPECT_TRUE(rewritten(text) == asRead(written));
}

TEST_F(OptimizerFile, LineEndsMayDifferFromLineToLine) {
    EXPECT_EQ(rewritten("sim \"bench.sim\"\r\nsim \"bench.sim\" 2\na\r\r\nsim \"bench.sim\" 3"),
              asRead("sim \"AC sweep.sim\"\r\nsim \"AC sweep.sim\" 2\na\r\r\nsim \"AC sweep.sim\" 3"));
    EXPECT_EQ(rewritten(""), "");
}

// --- design profiles ---

TEST_F(OptimizerFile, ADesignProfileInTheProjectsFolderComesAlong) {
    project_.write("corners.mdp", "corners\r\n\0of the design"s);
    project_.write("More.mdp", "more");
    Tree expected = treeWithoutOptimizer();
    expected["new/amp-TevrixFiles/S1/corners.mdp"] = "corners\r\n\0of the design"s;
    expected["new/amp-TevrixFiles/S1/more.mdp"] = "more";
    EXPECT_EQ(rewritten("ext \"corners.mdp\" \"worst case\"\r\nEXTERNAL\"more.mdp\"1\nExt =\"corners.mdp\""),
              asRead("ext \"corners.mdp\" \"worst case\"\r\next \"more.mdp\"1\next \"corners.mdp\""));
    EXPECT_EQ(treeWithoutOptimizer(), expected);
    EXPECT_EQ(moves(), (Moves{{"./corners.mdp", "./amp-tevrixfiles/s1/corners.mdp"},
                              {"./more.mdp", "./amp-tevrixfiles/s1/more.mdp"}}));
    EXPECT_EQ(lastError(), LastError());
}

// A name with "." and ".." in it that has no separator, or the colon of a drive, is a name like any other.
TEST_F(OptimizerFile, NothingIsWrittenOutsideTheFolderForANameWithoutAFolder) {
    if (tests::kOnWindows) GTEST_SKIP() << "most of these cannot be names of files there";
    const std::vector<std::string> names = {".mdp",      "..mdp",     "...mdp",  "..mdp..",       "C:.mdp",
                                            "C:x.mdp",   ".mdp:x",    " .mdp ",  "x.mdp.",        "~.mdp",
                                            "$HOME.mdp", "x*.mdp?",   "..:.mdp", "x.mdp.sim.mdp", "-.mdp",
                                            "%s%n.mdp",  "\xE4.mdp\t"};
    Tree expected = treeWithoutOptimizer();
    Moves expectedMoves;
    std::string text;
    for (const std::string& name : names) {
        project_.write(name, "bytes of " + name);
        text += "ext \"" + name + "\"\n";
        expected["project/" + name] = expected["new/amp-TevrixFiles/S1/" + name] = "bytes of " + name;
        expectedMoves["./" + lowerCase(name)] = "./amp-tevrixfiles/s1/" + lowerCase(name);
    }
    EXPECT_EQ(rewritten(text), text);
    EXPECT_EQ(treeWithoutOptimizer(), expected);
    EXPECT_EQ(moves(), expectedMoves);
}

TEST_F(OptimizerFile, ADesignProfileNamedWithAFolderStaysAndIsNamedFromTheRoot) {
    project_.write("x.mdp", "X");
    project_.write("sub/x.mdp", "in a folder");
    project_.folder.write("x.mdp", "above");
    const Tree before = treeWithoutOptimizer();
    expectLines({
        {"ext \"sub\\x.mdp\" a", "ext \"@UP@/project/sub/x.mdp\" a"},
        {"Extern\"./sub/x.mdp\"", "ext \"@UP@/project/sub/x.mdp\""},
        {"ext \".\\x.mdp\"", "ext \"@UP@/project/x.mdp\""},
        {"ext \"..\\x.mdp\" \"a\\b\"", "ext \"@UP@/x.mdp\" \"a\\b\""},
        {"ext \"../project/sub\\x.mdp\"", "ext \"@UP@/project/sub/x.mdp\""},
        {"ext \"../../absent.mdp\"", "ext \"@UP@/../absent.mdp\""},
        {"ext \"absent/x.mdp\"", "ext \"@UP@/project/absent/x.mdp\""},
        {"ext \"sub\\..\\x.mdp\"", "ext \"@UP@/project/sub/../x.mdp\""},
        {"ext \"sub.mdp/\"", "ext \"@UP@/project/sub.mdp/\""},
        // Absolute ones keep all but the kind of their separators, and so does what has one in third place.
        {"ext \"C:\\models\\x.mdp\"", "ext \"C:/models/x.mdp\""},
        {"Ext \"C:/models/x.mdp\"\t", "ext \"C:/models/x.mdp\"\t"},
        {"ext \"c:..\\x.mdp\"", "ext \"c:../x.mdp\""},
        {"ext \"\\\\server\\x.mdp\"", "ext \"//server/x.mdp\""},
        {"ext=\"@UP@/project/x.mdp\"", "ext \"@UP@/project/x.mdp\""},
        {"ext \"ab\\x.mdp\"", "ext \"ab/x.mdp\""},
    });
    EXPECT_EQ(treeWithoutOptimizer(), before);
    EXPECT_THAT(moves(), IsEmpty());
}

TEST_F(OptimizerFile, ADesignProfileThatIsAbsentOrAFolderKeepsItsName) {
    project_.folder.makeFolder("project/folder.mdp");
    const Tree before = treeWithoutOptimizer();
    expectLines({
        {"Ext \"absent.mdp\" 1", "ext \"absent.mdp\" 1"},
        {"EXT  \"folder.mdp\"", "ext \"folder.mdp\""},
        {"external \"..mdp\"", "ext \"..mdp\""},
    });
    EXPECT_EQ(treeWithoutOptimizer(), before);
    EXPECT_THAT(moves(), IsEmpty());
}

TEST_F(OptimizerFile, ADesignProfileThatMayNotBeReadCountsAsAbsent) {
    ASSERT_EQ(chmod(project_.write("x.mdp", "X").c_str(), 0), 0);
    project_.write("amp-S1.opt", "EXT \"x.mdp\"\n");
    openToAll(project_.folder.path());
    ASSERT_EQ(chmod(project_.path("x.mdp").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(rewrite(), 0);
        EXPECT_EQ(lastError(), LastError());
        EXPECT_THAT(moves(), IsEmpty());
        return true;
    }));
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/S1.opt"), "ext \"x.mdp\"\n");
    EXPECT_FALSE(project_.existsNew("amp-TevrixFiles/S1/x.mdp"));
}

TEST_F(OptimizerFile, ADesignProfileThatHasMovedIsNotMovedAgain) {
    project_.write("x.mdp", "X");
    project_.converter.addRelocation("./X.mdp", "./amp-TevrixFiles/S0/X.mdp");
    EXPECT_EQ(rewritten("ext \"x.mdp\" 1\n"), "ext \"x.mdp\" 1\n");
    EXPECT_FALSE(project_.existsNew("amp-TevrixFiles/S1/x.mdp"));
    EXPECT_EQ(moves(), (Moves{{"./x.mdp", "./amp-tevrixfiles/s0/x.mdp"}}));
}

// Any name with ".mdp" in it will do, that of the optimizer file too.
TEST_F(OptimizerFile, OneThatNamesItselfComesAlongAsADesignProfileToo) {
    const std::string text = "ext \"amp-v.mdp.opt\"\nsim \"bench.sim\"\n";
    project_.write("amp-v.mdp.opt", text);
    std::string newPath = "left over";
    EXPECT_EQ(project_.converter.rewriteOptimizerFile(newPath, project_.path("amp-v.mdp.opt"), "v.mdp",
                                                      project_.schematicFolder, "opt"),
              0);
    EXPECT_EQ(newPath, project_.schematicFolder + "/v.mdp.opt");
    EXPECT_EQ(project_.read("amp-v.mdp.opt"), text);
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/amp-v.mdp.opt"), text);
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/v.mdp.opt"),
              "ext \"amp-v.mdp.opt\"\nsim \"AC sweep.sim\"\n");
    EXPECT_EQ(moves(), (Moves{{"./amp-v.mdp.opt", "./amp-tevrixfiles/s1/amp-v.mdp.opt"}}));
}

TEST_F(OptimizerFile, ADesignProfileThatCannotBeCopiedLeavesTheLineAndTheOthersFollow) {
    for (const char* name : {"a.mdp", "x.mdp", "z.mdp"}) project_.write(name, name);
    project_.folder.makeFolder("new/amp-TevrixFiles/S1/x.mdp");
    EXPECT_EQ(rewritten("Ext \"a.mdp\"\nEXT  \"x.mdp\" 1\r\nExt \"z.mdp\"\n"),
              asRead("ext \"a.mdp\"\nEXT  \"x.mdp\" 1\r\next \"z.mdp\"\n"));
    EXPECT_EQ(lastError(), copyFileError(project_.path("x.mdp"), project_.schematicFolder + "/x.mdp"));
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/a.mdp"), "a.mdp");
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/z.mdp"), "z.mdp");
    EXPECT_EQ(moves(),
              (Moves{{"./a.mdp", "./amp-tevrixfiles/s1/a.mdp"}, {"./z.mdp", "./amp-tevrixfiles/s1/z.mdp"}}));
}

TEST_F(OptimizerFile, TheReferenceIsMadeFromNothing) {
    project_.write("x.mdp", "X");
    project_.folder.makeFolder("new/amp-TevrixFiles/S1/locked.mdp");
    project_.write("locked.mdp", "L");
    struct Case {
        const char* value;
        int status;
        std::string reference;
    };
    const std::vector<Case> cases = {
        {"x.mdp", 0, "x.mdp"},
        {"", 0, ""},
        {"..", 0, ".."},
        {"anything", 0, "anything"},
        {"sub\\x", 0, project_.dir + "/sub/x"},
        {"/x", 0, kOnWindows ? project_.dir + "//x" : "/x"},
        {"locked.mdp", 10108, "locked.mdp"},
    };
    for (const Case& entry : cases) {
        std::string reference = "left over";
        EXPECT_EQ(project_.converter.relocateDesignProfile(reference, entry.value, project_.schematicFolder),
                  entry.status)
            << entry.value;
        EXPECT_EQ(reference, entry.reference) << entry.value;
    }
    // The text that is read may be the one that is written.
    std::string value = "sub\\x.mdp";
    EXPECT_EQ(project_.converter.relocateDesignProfile(value, value, project_.schematicFolder), 0);
    EXPECT_EQ(value, project_.dir + "/sub/x.mdp");
}

TEST_F(OptimizerFile, WhatCannotBeResolvedStays) {
    project_.converter.setProjectDir("C:");
    std::string reference = "left over";
    EXPECT_EQ(project_.converter.relocateDesignProfile(reference, "sub/x.mdp", project_.schematicFolder), 1);
    EXPECT_EQ(reference, "");
    EXPECT_EQ(rewritten("EXT \"sub/x.mdp\"\n"), "EXT \"sub/x.mdp\"\n");
    EXPECT_EQ(lastError(), LastError());
}

// --- the file as a whole ---

TEST_F(OptimizerFile, NamesComeFromTheArguments) {
    fs::create_directories(project_.root + "/Top");
    project_.folder.write("elsewhere/any.txt", "sim \"bench.sim\"\n");
    std::string path = project_.folder.path("elsewhere/any.txt");
    EXPECT_EQ(project_.converter.rewriteOptimizerFile(path, path, "Top level", project_.root + "/Top", "OPT"),
              0);
    EXPECT_EQ(path, project_.root + "/Top/Top level.OPT");
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/Top/Top level.OPT"), "sim \"AC sweep.sim\"\n");
}

TEST_F(OptimizerFile, OneThatIsAbsentIsNamed) {
    const Tree before = project_.tree();
    EXPECT_EQ(rewrite(), 10105);
    EXPECT_EQ(lastError(), openForReadingError(project_.path("amp-S1.opt")));
    EXPECT_EQ(project_.tree(), before);
}

TEST_F(OptimizerFile, OneThatCannotBeOpenedIsNamed) {
    project_.write("amp-S1.opt", "sim \"bench.sim\"\n");
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        EXPECT_EQ(rewrite(), 10105);
        EXPECT_EQ(lastError(), openForReadingError(project_.path("amp-S1.opt")));
        return true;
    }));
    EXPECT_FALSE(project_.existsNew("amp-TevrixFiles/S1/S1.opt"));
}

TEST_F(OptimizerFile, OneThatCannotBeOpenedLeavesWhatIsInTheNewPlace) {
    project_.write("amp-S1.opt", "sim \"bench.sim\"\n");
    project_.folder.write("new/amp-TevrixFiles/S1/S1.opt", "of an earlier conversion\n");
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        EXPECT_EQ(rewrite(), 10105);
        return true;
    }));
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/S1.opt"), "of an earlier conversion\n");
    project_.remove("amp-S1.opt");
    EXPECT_EQ(rewrite(), 10105);
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/S1.opt"), "of an earlier conversion\n");
}

TEST_F(OptimizerFile, ANewOneThatCannotBeMadeIsNamed) {
    for (const bool isFolder : {false, true}) {
        project_.write("amp-S1.opt", "ext \"x.mdp\"\n");
        project_.write("x.mdp", "X");
        const std::string newPath = project_.schematicFolder + "/S1.opt";
        fs::remove_all(project_.schematicFolder);
        if (isFolder) fs::create_directories(newPath);
        const Tree before = project_.tree();
        EXPECT_EQ(rewrite(), 10106) << isFolder;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isFolder;
        EXPECT_EQ(project_.tree(), before) << isFolder;
        EXPECT_THAT(moves(), IsEmpty()) << isFolder;
    }
}

TEST_F(OptimizerFile, ANewOneThatTheDiskHasNoRoomForIsRemoved) {
    project_.write("amp-S1.opt", "sim \"bench.sim\"\n");
    EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
        EXPECT_EQ(rewrite(), 10106);
        EXPECT_EQ(lastError(), openForWritingError(project_.schematicFolder + "/S1.opt"));
        return true;
    }));
    EXPECT_FALSE(project_.existsNew("amp-TevrixFiles/S1/S1.opt"));
}

TEST_F(OptimizerFile, IsNotWrittenOverItself) {
    for (const bool isHardLink : {true, false}) {
        const std::string text = "sim \"bench.sim\"\n";
        const std::string old = project_.write("amp-S1.opt", text);
        const std::string newPath = project_.schematicFolder + "/S1.opt";
        isHardLink ? fs::create_hard_link(old, newPath) : tests::makeLink(old, newPath);
        EXPECT_EQ(rewrite(), 10106) << isHardLink;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isHardLink;
        EXPECT_EQ(readFile(old), text) << isHardLink;
        EXPECT_EQ(readFile(newPath), text) << isHardLink;
        fs::remove(newPath);
    }
}

}  // namespace
