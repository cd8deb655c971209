// relocation_test.cpp
//
// The move of a Draftel project's simulation files into the new layout: the files of the design as a whole,
// the folders of the schematics and profiles, and the outputs of each profile.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"

namespace {

using namespace tests;
using namespace std::string_literals;
using testing::IsEmpty;
namespace fs = std::filesystem;

// --- the files of the design as a whole ---

TEST(DraftelRelocation, FilesOfTheDesignGoIntoTheSimulationRoot) {
    DraftelProject project;
    project.prepareSteps();
    Tree expected = treeOf(project.destination);
    Moves moves;
    for (const char* extension : {"lib", "prp", "olb", "err", "ind", "stl", "inc", "obk"}) {
        const std::string name = std::string("amp.") + extension;
        project.write(name, std::string("bytes of ") + extension + "\r\n\0"s + "more");
        expected["amp-TevrixFiles/" + name] = project.read(name);
        moves["./" + name] = "./amp-tevrixfiles/" + name;
    }
    for (const char* name : {"amp.txt", "amp", "other.lib", "amp.lib.bak", "amp-S1.lib", "amp.out"}) {
        project.write(name, "not of the design");
    }
    const Tree before = treeOf(project.dir);
    EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0);
    EXPECT_EQ(treeOf(project.destination), expected);
    EXPECT_EQ(treeOf(project.dir), before);
    EXPECT_EQ(movesOf(project.converter), moves);
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelRelocation, WithoutExtensionsNothingIsCopied) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp.lib", "L");
    project.converter.designLevelExtensions().clear();
    const Tree before = project.tree();
    EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0);
    EXPECT_EQ(project.tree(), before);
    EXPECT_THAT(movesOf(project.converter), IsEmpty());
}

TEST(DraftelRelocation, FilesAreNamedAfterTheDesignAndTheRootAfterTheProject) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.setDesignFileBaseName("board");
    project.write("amp.lib", "of another design");
    project.write("board.lib", "L");
    EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/board.lib"), "L");
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/amp.lib"));
    EXPECT_EQ(movesOf(project.converter), (Moves{{"./board.lib", "./amp-tevrixfiles/board.lib"}}));
}

TEST(DraftelRelocation, FilesThatAreThereAreOverwritten) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp.lib", "new");
    project.folder.write("new/amp-TevrixFiles/amp.lib", "an earlier and longer one");
    EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/amp.lib"), "new");
}

TEST(DraftelRelocation, AFileOfTheDesignIsFoundInAnyLetterCase) {
    DraftelProject project;
    project.prepareSteps();
    project.write("AMP.Lib", "L");
    EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/amp.lib"), "L");
    EXPECT_EQ(movesOf(project.converter), (Moves{{"./amp.lib", "./amp-tevrixfiles/amp.lib"}}));
}

TEST(DraftelRelocation, ACopyOfAReadOnlyFileCanBeWritten) {
    DraftelProject project;
    project.prepareSteps();
    ASSERT_EQ(chmod(project.write("amp.lib", "L").c_str(), 0444), 0);
    EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0);
    struct stat status {};
    ASSERT_EQ(stat((project.root + "/amp.lib").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(0644U));
    ASSERT_EQ(stat(project.path("amp.lib").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(0444U));
}

TEST(DraftelRelocation, AFileThatCannotBeCopiedDoesNotEndTheWalk) {
    DraftelProject project;
    project.prepareSteps();
    for (const char* name : {"amp.lib", "amp.olb", "amp.ind", "amp.obk"}) project.write(name, name);
    project.folder.makeFolder("new/amp-TevrixFiles/amp.olb");
    project.folder.makeFolder("new/amp-TevrixFiles/amp.ind");
    EXPECT_EQ(project.converter.copyDesignLevelFiles(), 10108);
    EXPECT_EQ(lastError(), copyFileError(project.path("amp.ind"), project.root + "/amp.ind"));
    EXPECT_EQ(project.readNew("amp-TevrixFiles/amp.lib"), "amp.lib");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/amp.obk"), "amp.obk");
    EXPECT_EQ(movesOf(project.converter), (Moves{{"./amp.lib", "./amp-tevrixfiles/amp.lib"},
                                                 {"./amp.obk", "./amp-tevrixfiles/amp.obk"}}));
}

TEST(DraftelRelocation, AFolderOrAFileThatMayNotBeReadIsNoFileOfTheDesign) {
    DraftelProject project;
    project.prepareSteps();
    project.folder.makeFolder("project/amp.lib");
    project.write("amp.inc", "closed");
    project.write("amp.stl", "open");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp.inc").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0);
        EXPECT_EQ(lastError(), LastError());
        EXPECT_EQ(movesOf(project.converter), (Moves{{"./amp.stl", "./amp-tevrixfiles/amp.stl"}}));
        return true;
    }));
    EXPECT_TRUE(project.existsNew("amp-TevrixFiles/amp.stl"));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/amp.inc"));
}

TEST(DraftelRelocation, ACopyThatTheDiskHasNoRoomForFails) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp.lib", "L");
    EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
        EXPECT_EQ(project.converter.copyDesignLevelFiles(), 10108);
        EXPECT_EQ(lastError(), copyFileError(project.path("amp.lib"), project.root + "/amp.lib"));
        EXPECT_THAT(movesOf(project.converter), IsEmpty());
        return true;
    }));
    EXPECT_EQ(project.read("amp.lib"), "L");
}

TEST(DraftelRelocation, ACopyThatIsTheFileItselfLeavesItAsItIs) {
    for (const bool isHardLink : {true, false}) {
        DraftelProject project;
        project.prepareSteps();
        project.write("amp.lib", "the only copy");
        if (isHardLink) {
            fs::create_hard_link(project.path("amp.lib"), project.root + "/amp.lib");
        } else {
            tests::makeLink(project.path("amp.lib"), project.root + "/amp.lib");
        }
        EXPECT_EQ(project.converter.copyDesignLevelFiles(), 0) << isHardLink;
        EXPECT_EQ(project.read("amp.lib"), "the only copy") << isHardLink;
        EXPECT_EQ(project.readNew("amp-TevrixFiles/amp.lib"), "the only copy") << isHardLink;
    }
}

// --- schematics and profiles ---

TEST(DraftelRelocation, WithoutRootSchematicsNothingIsMade) {
    DraftelProject project;
    project.prepareSteps();
    const Tree before = project.tree();
    project.converter.addProfileRecord("amp-S1-tran", "tran", "S1", "");
    EXPECT_EQ(project.converter.relocateSchematics(), 0);
    EXPECT_EQ(project.tree(), before);
    EXPECT_THAT(movesOf(project.converter), IsEmpty());
}

TEST(DraftelRelocation, ASchematicWithoutProfilesHasItsFolderAndNetlist) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.rootSchematics() = {"Empty", "Top"};
    project.write("amp-Top.net", "netlist\n");
    Tree expected = treeOf(project.destination);
    expected["amp-TevrixFiles/Empty/"] = "";
    expected["amp-TevrixFiles/Top/"] = "";
    expected["amp-TevrixFiles/Top/Top.net"] = "netlist\n";
    EXPECT_EQ(project.converter.relocateSchematics(), 0);
    EXPECT_EQ(treeOf(project.destination), expected);
    EXPECT_EQ(movesOf(project.converter), (Moves{{"./amp-top.net", "./amp-tevrixfiles/top/top.net"}}));
}

TEST(DraftelRelocation, EachProfileGoesIntoAFolderOfItsSchematic) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.rootSchematics() = {"S1", "S2"};
    project.converter.addProfileRecord("old-b", "b", "s2", "");
    project.converter.addProfileRecord("old-a", "a", "S1", "");
    project.converter.addProfileRecord("old-c", "c", "S3", "");
    project.converter.addProfileRecord("old-d", "d", "S1", "");
    for (const char* name : {"old-a", "old-b", "old-c"}) project.write(std::string(name) + ".sim", name);
    project.write("amp-S1-a.dat", "data of a");
    project.write("amp-S2-b.dat", "data of b");
    project.write("amp-S1-b.dat", "of no profile");
    Tree expected = treeOf(project.destination);
    expected.merge(Tree{{"amp-TevrixFiles/S1/a/", ""},
                        {"amp-TevrixFiles/S1/a/a.dat", "data of a"},
                        {"amp-TevrixFiles/S1/a.sim", "old-a"},
                        {"amp-TevrixFiles/S1/d/", ""},
                        {"amp-TevrixFiles/S2/", ""},
                        {"amp-TevrixFiles/S2/b/", ""},
                        {"amp-TevrixFiles/S2/b/b.dat", "data of b"},
                        {"amp-TevrixFiles/S2/b.sim", "old-b"}});
    EXPECT_EQ(project.converter.relocateSchematics(), 0);
    EXPECT_EQ(treeOf(project.destination), expected);
    EXPECT_EQ(movesOf(project.converter), (Moves{{"./amp-s1-a.dat", "./amp-tevrixfiles/s1/a/a.dat"},
                                                 {"./old-a.sim", "./amp-tevrixfiles/s1/a.sim"},
                                                 {"./amp-s2-b.dat", "./amp-tevrixfiles/s2/b/b.dat"},
                                                 {"./old-b.sim", "./amp-tevrixfiles/s2/b.sim"}}));
}

TEST(DraftelRelocation, ASchematicFolderThatCannotBeMadeEndsTheStep) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.rootSchematics() = {"S1", "no/such", "S3"};
    project.write("amp-S1.net", "netlist\n");
    EXPECT_EQ(project.converter.relocateSchematics(), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(project.root + "/no/such"));
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/S1.net"), "netlist\n");
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S3"));
}

TEST(DraftelRelocation, ASchematicFolderIsNotMadeInARootThatIsGone) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.rootSchematics() = {"S1"};
    fs::remove_all(project.root);
    EXPECT_EQ(project.converter.relocateSchematics(), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(project.schematicFolder));
    EXPECT_FALSE(fs::exists(project.root));
}

TEST(DraftelRelocation, FoldersThatMayNotBeWrittenToAreNamed) {
    struct Case {
        const char* closed;
        const char* named;
    };
    for (const Case& entry : {Case{"S1", "S1"}, Case{"S1/tran", "S1/tran"}}) {
        DraftelProject project;
        project.prepareSteps();
        project.converter.rootSchematics() = {"S1"};
        project.converter.addProfileRecord("amp-S1-tran", "tran", "S1", "");
        openToAll(project.folder.path());
        ASSERT_EQ(chmod((project.root + "/" + entry.closed).c_str(), 0555), 0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(project.converter.relocateSchematics(), 10102);
            EXPECT_EQ(lastError(), createDirectoryError(project.root + "/" + entry.named));
            return true;
        })) << entry.closed;
    }
}

TEST(DraftelRelocation, AProfileFolderThatCannotBeMadeLeavesTheProfileBeforeIt) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.rootSchematics() = {"S1", "S2"};
    project.converter.addProfileRecord("amp-S1-tran", "tran", "S1", "");
    project.converter.addProfileRecord("amp-S1-ac", "a/c", "S1", "");
    project.converter.addProfileRecord("amp-S1-dc", "dc", "S1", "");
    project.write("amp-S1-tran.sim", "profile\n");
    project.write("amp-S1-tran.out", "output");
    project.write("amp-S1-dc.sim", "never reached\n");
    Tree expected = treeOf(project.destination);
    expected["amp-TevrixFiles/S1/tran.sim"] = "profile\n";
    expected["amp-TevrixFiles/S1/tran/tran.out"] = "output";
    EXPECT_EQ(project.converter.relocateSchematics(), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(project.schematicFolder + "/a/c"));
    EXPECT_EQ(treeOf(project.destination), expected);
}

TEST(DraftelRelocation, ANetlistThatCannotBeWrittenEndsTheStep) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.rootSchematics() = {"S1", "S2"};
    project.converter.addProfileRecord("amp-S1-tran", "tran", "S1", "");
    project.write("amp-S1.net", "netlist\n");
    project.folder.makeFolder("new/amp-TevrixFiles/S1/S1.net");
    EXPECT_EQ(project.converter.relocateSchematics(), 10106);
    EXPECT_EQ(lastError(), openForWritingError(project.schematicFolder + "/S1.net"));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/tran.sim"));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S2"));
    EXPECT_THAT(movesOf(project.converter), IsEmpty());
}

TEST(DraftelRelocation, AProfileFileThatCannotBeWrittenEndsTheStep) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.rootSchematics() = {"S1", "S2"};
    project.converter.addProfileRecord("amp-S1-tran", "tran", "S1", "");
    project.write("amp-S1-tran.dat", "data");
    project.folder.makeFolder("new/amp-TevrixFiles/S1/tran.sim");
    EXPECT_EQ(project.converter.relocateSchematics(), 10106);
    EXPECT_EQ(lastError(), openForWritingError(project.schematicFolder + "/tran.sim"));
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.dat"), "data");
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S2"));
    EXPECT_EQ(movesOf(project.converter),
              (Moves{{"./amp-s1-tran.dat", "./amp-tevrixfiles/s1/tran/tran.dat"}}));
}

// --- the outputs of a profile ---

int relocateOutputs(DraftelProject& project) {
    return project.converter.relocateProfileOutputs("amp", "S1", "tran", project.destination,
                                                    project.profileFolder);
}

TEST(DraftelRelocation, OutputsTakeTheNameOfTheirProfile) {
    struct Case {
        const char* oldExtension;
        const char* newExtension;
    };
    const std::vector<Case> cases = {
        {"csd", "csd"},           {"dat", "dat"},           {"opt.dat", "opt.dat"}, {"mc.dat", "mc.dat"},
        {"mc.csd", "mc.csd"},     {"sens.dat", "sens.dat"}, {"opt.csd", "opt.csd"}, {"sens.csd", "sens.csd"},
        {"out", "out"},           {"out.1", "out.1"},       {"opt.out", "opt.out"}, {"mc.out", "mc.out"},
        {"sens.out", "sens.out"}, {"prb", "prb"},           {"mrk", "mrk"},         {"sim.1op", "1op"},
        {"sim.cir", "cir"},       {"sim.mif", "mif"},
    };
    DraftelProject project;
    project.prepareSteps();
    Tree expected = treeOf(project.destination);
    Moves moves;
    for (const Case& entry : cases) {
        const std::string oldName = std::string("amp-S1-tran.") + entry.oldExtension;
        const std::string newName = std::string("tran.") + entry.newExtension;
        project.write(oldName, std::string("bytes of ") + entry.oldExtension + "\r\n\0\n"s);
        expected["amp-TevrixFiles/S1/tran/" + newName] = project.read(oldName);
        moves["./" + lowerCase(oldName)] = "./amp-tevrixfiles/s1/tran/" + newName;
    }
    for (const char* name : {"amp-S1-tran.txt", "amp-S1-tran2.dat", "amp-S2-tran.dat", "tran.dat",
                             "amp-S1-tran", "amp-S1-tran.sim.dat", "amp-S1-tran-default.mrk"}) {
        project.write(name, "not of the profile");
    }
    const Tree before = treeOf(project.dir);
    EXPECT_EQ(relocateOutputs(project), 0);
    EXPECT_EQ(treeOf(project.destination), expected);
    EXPECT_EQ(treeOf(project.dir), before);
    EXPECT_EQ(movesOf(project.converter), moves);
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelRelocation, ExtensionsAreComparedIgnoringCase) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.profileLevelExtensions() = {"SIM.CIR", "Sim.1Op", "SIM.mif", "DAT"};
    project.write("amp-S1-tran.SIM.CIR", ".INC \"amp-S1.net\"\n");
    project.write("amp-S1-tran.Sim.1Op", "operating point");
    project.write("amp-S1-tran.SIM.mif", "exchange");
    project.write("amp-S1-tran.DAT", "data");
    EXPECT_EQ(relocateOutputs(project), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.cir"), ".INC \"../S1.net\"\n");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.1op"), "operating point");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.mif"), "exchange");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.DAT"), "data");
}

TEST(DraftelRelocation, OutputsAreFoundInAnyLetterCase) {
    DraftelProject project;
    project.prepareSteps();
    project.write("AMP-s1-TRAN.SIM.CIR", ".INC \"amp-S1.net\"\n");
    project.write("amp-s1-tran.Dat", "data");
    EXPECT_EQ(relocateOutputs(project), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.cir"), ".INC \"../S1.net\"\n");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.dat"), "data");
    EXPECT_EQ(movesOf(project.converter),
              (Moves{{"./amp-s1-tran.sim.cir", "./amp-tevrixfiles/s1/tran/tran.cir"},
                     {"./amp-s1-tran.dat", "./amp-tevrixfiles/s1/tran/tran.dat"}}));
}

// An output that cannot be written: its place is taken by a folder.
TEST(DraftelRelocation, AnOutputThatCannotBeWrittenIsRecordedAndTheOthersFollow) {
    struct Case {
        const char* oldName;
        const char* newName;
        bool isRewritten;
    };
    for (const Case& entry :
         {Case{"amp-S1-tran.dat", "tran.dat", false}, Case{"amp-S1-tran.sim.1op", "tran.1op", false},
          Case{"amp-S1-tran.sim.cir", "tran.cir", true}}) {
        DraftelProject project;
        project.prepareSteps();
        project.write("amp-S1-tran.csd", "first");
        project.write(entry.oldName, "in the middle");
        project.write("amp-S1-tran.sim.mif", "last");
        project.folder.makeFolder(std::string("new/amp-TevrixFiles/S1/tran/") + entry.newName);
        EXPECT_EQ(relocateOutputs(project), 0) << entry.oldName;
        const std::string oldPath = project.path(entry.oldName);
        const std::string newPath = project.profileFolder + "/" + entry.newName;
        EXPECT_EQ(lastError(),
                  entry.isRewritten ? openForWritingError(newPath) : copyFileError(oldPath, newPath))
            << entry.oldName;
        EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.csd"), "first") << entry.oldName;
        EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.mif"), "last") << entry.oldName;
        Moves moves = {{"./amp-s1-tran.csd", "./amp-tevrixfiles/s1/tran/tran.csd"},
                       {"./amp-s1-tran.sim.mif", "./amp-tevrixfiles/s1/tran/tran.mif"}};
        moves["./" + lowerCase(entry.oldName)] = std::string("./amp-tevrixfiles/s1/tran/") + entry.newName;
        EXPECT_EQ(movesOf(project.converter), moves) << entry.oldName;
    }
}

TEST(DraftelRelocation, AReadOnlyFileInPlaceOfAnOutputFailsAndIsRecorded) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp-S1-tran.dat", "new");
    project.folder.write("new/amp-TevrixFiles/S1/tran/tran.dat", "earlier");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod((project.profileFolder + "/tran.dat").c_str(), 0444), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(relocateOutputs(project), 0);
        EXPECT_EQ(lastError(),
                  copyFileError(project.path("amp-S1-tran.dat"), project.profileFolder + "/tran.dat"));
        EXPECT_EQ(movesOf(project.converter),
                  (Moves{{"./amp-s1-tran.dat", "./amp-tevrixfiles/s1/tran/tran.dat"}}));
        return true;
    }));
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.dat"), "earlier");
}

TEST(DraftelRelocation, AnOutputThatTheDiskHasNoRoomForIsRecorded) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp-S1-tran.dat", "data");
    EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
        EXPECT_EQ(relocateOutputs(project), 0);
        EXPECT_EQ(lastError(),
                  copyFileError(project.path("amp-S1-tran.dat"), project.profileFolder + "/tran.dat"));
        EXPECT_EQ(movesOf(project.converter),
                  (Moves{{"./amp-s1-tran.dat", "./amp-tevrixfiles/s1/tran/tran.dat"}}));
        return true;
    }));
}

// What may not be read counts as absent, so there is nothing to move.
TEST(DraftelRelocation, AnOutputThatMayNotBeReadIsSkipped) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp-S1-tran.dat", "closed");
    project.write("amp-S1-tran.out", "open");
    project.folder.makeFolder("project/amp-S1-tran.csd");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp-S1-tran.dat").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(relocateOutputs(project), 0);
        EXPECT_EQ(lastError(), LastError());
        EXPECT_EQ(movesOf(project.converter),
                  (Moves{{"./amp-s1-tran.out", "./amp-tevrixfiles/s1/tran/tran.out"}}));
        return true;
    }));
}

TEST(DraftelRelocation, AnOutputThatIsItsOwnCopyKeepsItsBytes) {
    for (const char* extension : {"dat", "sim.cir"}) {
        for (const bool isHardLink : {true, false}) {
            DraftelProject project;
            project.prepareSteps();
            const std::string old = project.write(std::string("amp-S1-tran.") + extension, "the only copy\n");
            const bool isDeck = extension == std::string("sim.cir");
            const std::string place = project.profileFolder + (isDeck ? "/tran.cir" : "/tran.dat");
            isHardLink ? fs::create_hard_link(old, place) : tests::makeLink(old, place);
            EXPECT_EQ(relocateOutputs(project), 0) << extension << isHardLink;
            EXPECT_EQ(lastError(), isDeck ? openForWritingError(place) : LastError())
                << extension << isHardLink;
            EXPECT_EQ(readFile(old), "the only copy\n") << extension << isHardLink;
            EXPECT_EQ(readFile(place), "the only copy\n") << extension << isHardLink;
        }
    }
}

TEST(DraftelRelocation, AConversionGoesOnAfterAnOutputThatCannotBeWritten) {
    DraftelProject project;
    project.write("amp-S1-tran.dat", "data");
    project.write("amp-S1-tran.out", "output");
    project.folder.makeFolder("new/amp-TevrixFiles/S1/tran/tran.dat");
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(lastError(),
              copyFileError(project.path("amp-S1-tran.dat"), project.profileFolder + "/tran.dat"));
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.out"), "output");
    EXPECT_EQ(project.readNew("amp.opj"), smallProjectTextConverted());
}

// --- many profiles ---

// A project whose schematic S1 has the profiles "p0", "p1" and so on, each with a profile file, a deck and
// two outputs: enough of them that outputs are copied while later profiles are under way.
class ManyProfiles {
public:
    static constexpr int kCount = 60;

    ManyProfiles() {
        project.prepareSteps();
        project.converter.rootSchematics() = {"S1"};
        for (int i = 0; i < kCount; ++i) {
            const std::string name = profile(i);
            project.write("amp-S1-" + name + ".sim", profileText("S1", name));
            for (const char* extension : {"dat", "sim.cir", "sim.mif"}) {
                project.write("amp-S1-" + name + "." + extension, name + " " + extension + "\n");
            }
            project.converter.addProfileRecord("amp-S1-" + name, name, "S1", "./amp-S1-" + name + ".sim");
        }
    }

    static std::string profile(int number) { return "p" + std::to_string(number); }
    std::string old(int number, const std::string& extension) const {
        return project.path("amp-S1-" + profile(number) + "." + extension);
    }
    // In the destination.
    static std::string place(int number, const std::string& extension) {
        return "amp-TevrixFiles/S1/" + profile(number) + "/" + profile(number) + "." + extension;
    }
    void block(int number, const std::string& extension) const {
        project.folder.makeFolder("new/" + place(number, extension));
    }

    DraftelProject project;
};

TEST(DraftelRelocation, TheOutputsOfManyProfilesAllArrive) {
    ManyProfiles many;
    EXPECT_EQ(many.project.converter.relocateSchematics(), 0);
    EXPECT_EQ(lastError(), LastError());
    for (int i = 0; i < ManyProfiles::kCount; ++i) {
        const std::string name = ManyProfiles::profile(i);
        EXPECT_EQ(many.project.readNew(ManyProfiles::place(i, "dat")), name + " dat\n");
        EXPECT_EQ(many.project.readNew(ManyProfiles::place(i, "cir")), name + " sim.cir\n");
        EXPECT_EQ(many.project.readNew(ManyProfiles::place(i, "mif")), name + " sim.mif\n");
        EXPECT_TRUE(many.project.existsNew("amp-TevrixFiles/S1/" + name + ".sim"));
    }
}

TEST(DraftelRelocation, AnOutputThatCannotBeWrittenIsTheLastErrorWhereNoneFollowed) {
    for (const int number : {0, 30, ManyProfiles::kCount - 1}) {
        ManyProfiles many;
        many.block(number, "dat");
        EXPECT_EQ(many.project.converter.relocateSchematics(), 0);
        EXPECT_EQ(lastError(), copyFileError(many.old(number, "dat"),
                                             many.project.newPath(ManyProfiles::place(number, "dat"))));
        EXPECT_EQ(many.project.readNew(ManyProfiles::place(number, "mif")),
                  ManyProfiles::profile(number) + " sim.mif\n");
        forgetLastError();
    }
}

TEST(DraftelRelocation, OfSeveralFilesThatCannotBeWrittenTheLastIsTheLastError) {
    struct Case {
        int outputOf;
        const char* output;
        int deckOf;
        bool deckIsLast;
    };
    // Within a profile the order is that of the extensions: dat, sim.cir, sim.mif.
    for (const Case& one : {Case{4, "dat", 40, true}, Case{40, "dat", 4, false}, Case{7, "dat", 7, true},
                            Case{7, "mif", 7, false}, Case{59, "dat", 0, false}, Case{0, "mif", 59, true}}) {
        ManyProfiles many;
        many.block(one.outputOf, one.output);
        many.block(one.deckOf, "cir");
        EXPECT_EQ(many.project.converter.relocateSchematics(), 0);
        const std::string extension = one.output == "mif"s ? "sim.mif" : one.output;
        EXPECT_EQ(lastError(),
                  one.deckIsLast
                      ? openForWritingError(many.project.newPath(ManyProfiles::place(one.deckOf, "cir")))
                      : copyFileError(many.old(one.outputOf, extension),
                                      many.project.newPath(ManyProfiles::place(one.outputOf, one.output))))
            << one.outputOf << " " << one.output << " " << one.deckOf;
        forgetLastError();
    }
}

TEST(DraftelRelocation, NothingOfTheProfilesBehindAFailureIsMade) {
    ManyProfiles many;
    many.block(10, "dat");
    many.project.folder.write("new/amp-TevrixFiles/S1/p45.sim/in the way", "");
    EXPECT_EQ(many.project.converter.relocateSchematics(), 10106);
    EXPECT_EQ(lastError(), openForWritingError(many.project.newPath("amp-TevrixFiles/S1/p45.sim")));
    for (int i = 0; i < ManyProfiles::kCount; ++i) {
        EXPECT_EQ(many.project.existsNew(ManyProfiles::place(i, "mif")), i <= 45) << i;
        EXPECT_EQ(many.project.existsNew("amp-TevrixFiles/S1/" + ManyProfiles::profile(i)), i <= 45) << i;
    }
}

TEST(DraftelRelocation, AFileOfAProfileListTakesThePlaceOfAnOutputOfItsName) {
    ManyProfiles many;
    for (int i = 0; i < ManyProfiles::kCount; ++i) {
        const std::string name = ManyProfiles::profile(i);
        many.project.write("lists/" + name + ".dat", "listed " + name);
        many.project.write("amp-S1-" + name + ".sim",
                           profileText("S1", name) + "+0 \"lists\\" + name + ".dat\" \n");
    }
    EXPECT_EQ(many.project.converter.relocateSchematics(), 0);
    EXPECT_EQ(lastError(), LastError());
    for (int i = 0; i < ManyProfiles::kCount; ++i) {
        EXPECT_EQ(many.project.readNew(ManyProfiles::place(i, "dat")), "listed " + ManyProfiles::profile(i));
    }
}

}  // namespace
