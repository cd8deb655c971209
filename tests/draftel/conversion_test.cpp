// conversion_test.cpp
//
// The driver of a Draftel conversion: modes, what it takes from the project's path, the two folders it makes,
// the order of its steps, and the deleting of old files when it converts in place.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "interface/IDraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"
#include "support/fileLimit.h"

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using tvxconv::DraftelProjectConverter;

int requestedModeOf(const DraftelProjectConverter& converter) {
    int mode = -99;
    EXPECT_EQ(converter.getRequestedMode(mode), 0);
    return mode;
}

// What a conversion of the small project into its destination leaves there.
Tree smallProjectConverted() {
    return {{"amp-TevrixFiles/", ""},
            {"amp-TevrixFiles/S1/", ""},
            {"amp-TevrixFiles/S1/tran/", ""},
            {"amp-TevrixFiles/S1/tran.sim", "ProfileName= \"tran\" \nConnectivity= \"S1.net\" \n"},
            {"amp.dsn", designText({"S1"})},
            {"amp.opj", smallProjectTextConverted()}};
}

// --- modes ---

TEST(DraftelDriver, ModesOtherThan1And2DoNothing) {
    for (const int mode : {0, 3, 4, -1, 101, -2147483647}) {
        DraftelProject project;
        const Tree before = project.tree();
        EXPECT_EQ(project.converter.convert(mode, project.destination), 0) << mode;
        EXPECT_EQ(project.tree(), before) << mode;
        EXPECT_EQ(lastError(), LastError()) << mode;
        int set = -99;
        EXPECT_EQ(project.converter.getMode(set), 1) << mode;
        std::string text = "left over";
        EXPECT_EQ(project.converter.getDestinationDir(text), 1) << mode;
        EXPECT_EQ(project.converter.getNewProjectPath(text), 1) << mode;
        EXPECT_THAT(project.converter.designLevelExtensions(), IsEmpty()) << mode;
        EXPECT_EQ(requestedModeOf(project.converter), mode) << mode;
    }
}

TEST(DraftelDriver, TheRequestedModeIs0UntilSetAndThenStays) {
    DraftelProjectConverter converter("/p/amp.opj");
    EXPECT_EQ(requestedModeOf(converter), 0);
    EXPECT_EQ(converter.setRequestedMode(0), 0);
    EXPECT_EQ(requestedModeOf(converter), 0);
    EXPECT_EQ(converter.setRequestedMode(2), 0);
    EXPECT_EQ(requestedModeOf(converter), 2);
    for (const int later : {1, 0, 3}) {
        EXPECT_EQ(converter.setRequestedMode(later), 0) << later;
        EXPECT_EQ(requestedModeOf(converter), 2) << later;
    }
}

TEST(DraftelDriver, TheFirstConvertFixesTheRequestedMode) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(3, project.destination), 0);
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(requestedModeOf(project.converter), 3);
    EXPECT_EQ(treeOf(project.destination), smallProjectConverted());
}

TEST(DraftelDriver, AFailedConvertFixesTheRequestedModeToo) {
    DraftelProjectConverter converter(nullptr);
    EXPECT_EQ(converter.convert(1, std::string()), 1);
    EXPECT_EQ(requestedModeOf(converter), 1);
}

TEST(DraftelDriver, InPlaceIsRequestedMode1ButMode2OfTheBase) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(1, std::string()), 0);
    EXPECT_EQ(requestedModeOf(project.converter), 1);
    int mode = -99;
    EXPECT_EQ(project.converter.getMode(mode), 0);
    EXPECT_EQ(mode, 2);
}

// --- what the project's path gives ---

TEST(DraftelDriver, AConversionLeavesItsFieldsSet) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(2, withBackslashes(project.destination)), 0);
    std::string text = "left over";
    EXPECT_EQ(project.converter.getDestinationDir(text), 0);
    EXPECT_EQ(text, project.destination);
    EXPECT_EQ(project.converter.getProjectDir(text), 0);
    EXPECT_EQ(text, project.dir);
    EXPECT_EQ(project.converter.getProjectPath(text), 0);
    EXPECT_EQ(text, project.path("amp.opj"));
    EXPECT_EQ(project.converter.getDesignName(text), 0);
    EXPECT_EQ(text, "amp");
    EXPECT_EQ(project.converter.getDesignFileBaseName(text), 0);
    EXPECT_EQ(text, "amp");
    EXPECT_EQ(project.converter.getDesignDir(text), 0);
    EXPECT_EQ(text, project.dir);
    EXPECT_EQ(project.converter.getNewProjectPath(text), 0);
    EXPECT_EQ(text, project.newPath("amp.opj"));
    EXPECT_EQ(treeOf(project.destination), smallProjectConverted());
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelDriver, APathWithBackslashesIsTheSameProject) {
    const DraftelProject project;
    DraftelProjectConverter converter(withBackslashes(project.path("amp.opj")).c_str());
    EXPECT_EQ(converter.convert(2, project.destination), 0);
    EXPECT_EQ(treeOf(project.destination), smallProjectConverted());
}

TEST(DraftelDriver, AProjectPathThatGivesNoFolderOrNameStopsWithoutAnError) {
    const TestFolder folder;
    const std::string noDot = folder.path("amp");
    const std::string folderOnly = folder.path() + "/";
    for (const int mode : {1, 2}) {
        for (const char* path :
             {static_cast<const char*>(nullptr), "", "amp.opj", "amp", noDot.c_str(), folderOnly.c_str()}) {
            const std::string what = std::to_string(mode) + " " + (path != nullptr ? path : "null");
            forgetLastError();
            DraftelProjectConverter converter(path);
            EXPECT_EQ(converter.convert(mode, folder.path("new")), 1) << what;
            EXPECT_EQ(lastError(), LastError()) << what;
            EXPECT_THAT(treeOf(folder.path()), IsEmpty()) << what;
            EXPECT_THAT(converter.designLevelExtensions(), IsEmpty()) << what;
        }
    }
}

TEST(DraftelDriver, AnErrorOfEarlierStaysWhereNothingIsRecorded) {
    DraftelProject project;
    tvxconv::DraftelProjectConverter other("/nowhere/amp.opj");
    EXPECT_EQ(other.convert(2, std::string("/nowhere/new")), 10102);
    const LastError earlier = createDirectoryError("/nowhere/new");
    EXPECT_EQ(lastError(), earlier);
    DraftelProjectConverter converter("amp.opj");
    EXPECT_EQ(converter.convert(2, project.destination), 1);
    EXPECT_EQ(lastError(), earlier);
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(lastError(), earlier);
}

TEST(DraftelDriver, TheDesignNameIsTheFileNameBeforeItsFirstDot) {
    const DraftelProject project;
    project.write("Board.rev2.opj", smallProjectText());
    DraftelProjectConverter converter(project.path("Board.rev2.opj").c_str());
    EXPECT_EQ(converter.convert(2, project.destination), 0);
    const Tree expected = {
        {"Board-TevrixFiles/", ""},
        {"Board-TevrixFiles/S1/", ""},
        {"Board-TevrixFiles/S1/tran/", ""},
        {"Board-TevrixFiles/S1/tran.sim", "ProfileName= \"tran\" \nConnectivity= \"S1.net\" \n"},
        {"amp.dsn", designText({"S1"})},
        {"Board.opj", replaced(smallProjectTextConverted(), "amp-tevrixfiles", "board-tevrixfiles")}};
    EXPECT_EQ(treeOf(project.destination), expected);
}

TEST(DraftelDriver, ADesignNameThatIsSetIsKept) {
    DraftelProject project;
    project.converter.setDesignName("other");
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    std::string name;
    EXPECT_EQ(project.converter.getDesignName(name), 0);
    EXPECT_EQ(name, "other");
    EXPECT_TRUE(project.existsNew("other-TevrixFiles/S1/tran.sim"));
    EXPECT_TRUE(project.existsNew("other.opj"));
    EXPECT_FALSE(project.existsNew("amp.opj"));
}

TEST(DraftelDriver, WithADesignNameTheProjectFileNeedsNoDot) {
    const DraftelProject project;
    project.write("amp", smallProjectText());
    DraftelProjectConverter converter(project.path("amp").c_str());
    converter.setDesignName("amp");
    EXPECT_EQ(converter.convert(2, project.destination), 0);
    EXPECT_EQ(treeOf(project.destination), smallProjectConverted());
}

TEST(DraftelDriver, ASecondCallKeepsTheDesignNameOfTheFirst) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    project.write("Board.opj", smallProjectText());
    project.converter.setProjectPath(project.path("Board.opj"));
    EXPECT_EQ(project.converter.convert(2, project.folder.path("second")), 0);
    std::string name;
    EXPECT_EQ(project.converter.getDesignName(name), 0);
    EXPECT_EQ(name, "amp");
    EXPECT_EQ(treeOf(project.folder.path("second")), smallProjectConverted());
}

// --- the destination and the simulation root ---

TEST(DraftelDriver, ADestinationWhoseParentIsMissingIsNamed) {
    DraftelProject project;
    const std::string destination = project.folder.path("no/such/new");
    const Tree before = project.tree();
    EXPECT_EQ(project.converter.convert(2, destination), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(destination));
    EXPECT_EQ(project.tree(), before);
}

TEST(DraftelDriver, AnEmptyPathLeavesAnEarlierDestination) {
    DraftelProject project;
    project.converter.setDestinationDir(project.destination);
    EXPECT_EQ(project.converter.convert(2, std::string()), 0);
    EXPECT_EQ(treeOf(project.destination), smallProjectConverted());
}

TEST(DraftelDriver, WithoutADestinationNothingIsConverted) {
    DraftelProject project;
    const Tree before = project.tree();
    EXPECT_EQ(project.converter.convert(2, std::string()), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(""));
    EXPECT_EQ(project.tree(), before);
}

TEST(DraftelDriver, ADestinationWithASlashAtItsEndIsTheSameFolder) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(2, project.destination + "/"), 0);
    EXPECT_EQ(treeOf(project.destination), smallProjectConverted());
    EXPECT_EQ(movesOf(project.converter)["./amp-s1-tran.sim"], "./amp-tevrixfiles/s1/tran.sim");
}

TEST(DraftelDriver, APlainFileInPlaceOfTheDestinationFailsAtTheRoot) {
    DraftelProject project;
    project.folder.write("new", "a file");
    EXPECT_EQ(project.converter.convert(2, project.destination), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(project.root));
    EXPECT_EQ(project.folder.read("new"), "a file");
}

TEST(DraftelDriver, FoldersThatAreThereAreUsedAndKeepWhatIsInThem) {
    DraftelProject project;
    project.folder.write("new/readme", "mine");
    project.folder.write("new/amp-TevrixFiles/notes.txt", "mine too");
    project.folder.write("new/amp-TevrixFiles/S1/tran.sim",
                         "of an earlier conversion, and longer than the new one");
    Tree expected = smallProjectConverted();
    expected["readme"] = "mine";
    expected["amp-TevrixFiles/notes.txt"] = "mine too";
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(treeOf(project.destination), expected);
}

TEST(DraftelDriver, ADestinationThatCannotBeWrittenToIsNamed) {
    DraftelProject project;
    project.folder.makeFolder("new/amp-TevrixFiles");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.destination.c_str(), 0555), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.convert(2, project.destination), 10102);
        EXPECT_EQ(lastError(), createDirectoryError(project.destination));
        return true;
    }));
}

TEST(DraftelDriver, ARootThatCannotBeWrittenToIsNamed) {
    DraftelProject project;
    project.folder.makeFolder("new/amp-TevrixFiles");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.root.c_str(), 0555), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.convert(2, project.destination), 10102);
        EXPECT_EQ(lastError(), createDirectoryError(project.root));
        return true;
    }));
    EXPECT_THAT(treeOf(project.destination), SizeIs(1));
}

TEST(DraftelDriver, ADestinationThatCannotBeMadeIsNamed) {
    DraftelProject project;
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.folder.path().c_str(), 0555), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.convert(2, project.destination), 10102);
        EXPECT_EQ(lastError(), createDirectoryError(project.destination));
        return true;
    }));
    EXPECT_FALSE(project.folder.exists("new"));
}

TEST(DraftelDriver, TheListsAreFilledBeforeTheFirstStep) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(2, project.folder.path("no/such/new")), 10102);
    EXPECT_THAT(project.converter.designLevelExtensions(), SizeIs(8));
    EXPECT_THAT(project.converter.projectFolderNames(), SizeIs(5));
}

// --- the steps ---

TEST(DraftelDriver, TheFirstFailureEndsTheConversion) {
    struct Case {
        const char* what;
        void (*spoil)(const DraftelProject& project);
        LastError (*error)(const DraftelProject& project);
        Tree left;
    };
    const std::vector<Case> cases = {
        {"no design",
         [](const DraftelProject& p) { p.remove("amp.dsn"); },
         [](const DraftelProject& p) { return readFileError(p.path("amp.opj")); },
         {{"amp-TevrixFiles/", ""}}},
        {"a design that cannot be read",
         [](const DraftelProject& p) { p.write("amp.dsn", "no design"); },
         [](const DraftelProject& p) { return readDesignFileError(p.path("amp.dsn")); },
         {{"amp-TevrixFiles/", ""}}},
        {"a design-level file that cannot be copied",
         [](const DraftelProject& p) {
             p.write("amp.lib", "L");
             p.write("amp.stl", "S");
             p.folder.makeFolder("new/amp-TevrixFiles/amp.lib");
         },
         [](const DraftelProject& p) { return copyFileError(p.path("amp.lib"), p.root + "/amp.lib"); },
         {{"amp-TevrixFiles/", ""}, {"amp-TevrixFiles/amp.lib/", ""}, {"amp-TevrixFiles/amp.stl", "S"}}},
        {"a schematic folder that cannot be made",
         [](const DraftelProject& p) {
             p.write("amp.stl", "S");
             p.write("amp.dsn", designText({"no/such"}));
         },
         [](const DraftelProject& p) { return createDirectoryError(p.root + "/no/such"); },
         {{"amp-TevrixFiles/", ""}, {"amp-TevrixFiles/amp.stl", "S"}}},
    };
    for (const Case& step : cases) {
        DraftelProject project;
        step.spoil(project);
        const int status = project.converter.convert(2, project.destination);
        EXPECT_EQ(lastError(), step.error(project)) << step.what;
        EXPECT_EQ(status, lastError().code) << step.what;
        EXPECT_EQ(treeOf(project.destination), step.left) << step.what;
        std::string text = "left over";
        EXPECT_EQ(project.converter.getNewProjectPath(text), 1) << step.what;
    }
}

TEST(DraftelDriver, AFailureOfTheLastStepIsReturned) {
    DraftelProject project;
    project.folder.makeFolder("new/amp.opj");
    EXPECT_EQ(project.converter.convert(2, project.destination), 10108);
    EXPECT_EQ(lastError(), copyFileError(project.path("amp.opj"), project.newPath("amp.opj")));
    Tree expected = smallProjectConverted();
    expected.erase("amp.opj");
    expected["amp.opj/"] = "";
    EXPECT_EQ(treeOf(project.destination), expected);
}

TEST(DraftelDriver, AProfileThatCannotBeReadDoesNotStopTheConversion) {
    DraftelProject project;
    project.write("amp-S1-tran.sim", "ProfileName= \"\" \nRootSchematics= \"S1\" \n");
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/tran"));
    EXPECT_TRUE(project.existsNew("amp-TevrixFiles/S1"));
    EXPECT_TRUE(project.existsNew("amp.opj"));
}

// --- in place ---

TEST(DraftelDriver, InPlaceTheOldCopiesOfMovedFilesAreDeleted) {
    DraftelProject project;
    project.write("amp.dbk", "backup");
    project.write("amp.lib", "library");
    project.write("amp-S1.net", "netlist\n");
    project.write("amp-S1-tran.dat", "data");
    project.write("amp-S1-tran.sim.cir", "deck\n");
    project.write("amp.txt", "not moved");
    project.write("amp-S1-other.dat", "of no profile");
    EXPECT_EQ(project.converter.convert(1, std::string("/no/such/folder")), 0);
    Tree expected = smallProjectConverted();
    expected["amp.dbk"] = "backup";
    expected["amp.txt"] = "not moved";
    expected["amp-S1-other.dat"] = "of no profile";
    expected["amp-TevrixFiles/amp.lib"] = "library";
    expected["amp-TevrixFiles/S1/S1.net"] = "netlist\n";
    expected["amp-TevrixFiles/S1/tran/tran.dat"] = "data";
    expected["amp-TevrixFiles/S1/tran/tran.cir"] = "deck\n";
    EXPECT_EQ(treeOf(project.dir), expected);
    EXPECT_FALSE(project.folder.exists("new"));
    std::string text = "left over";
    EXPECT_EQ(project.converter.getNewProjectPath(text), 0);
    EXPECT_EQ(text, project.path("amp.opj"));
    EXPECT_EQ(project.converter.getDestinationDir(text), 0);
    EXPECT_EQ(text, project.dir);
}

TEST(DraftelDriver, InPlaceNothingIsDeletedWhenTheConversionFails) {
    DraftelProject project;
    project.write("amp.lib", "library");
    project.write("amp.dsn", "no design");
    Tree expected = treeOf(project.dir);
    expected["amp-TevrixFiles/"] = "";
    EXPECT_EQ(project.converter.convert(1, std::string()), 10111);
    EXPECT_EQ(lastError(), readDesignFileError(project.path("amp.dsn")));
    EXPECT_EQ(treeOf(project.dir), expected);
}

// Deleting refuses a name that exists in two spellings, so a twin makes it fail at a chosen file.
TEST(DraftelDriver, AFileThatCannotBeDeletedEndsTheDeleting) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    DraftelProject project;
    for (const char* extension : {"inc", "lib", "olb"})
        project.write(std::string("amp.") + extension, extension);
    project.write("AMP.LIB", "twin");
    EXPECT_EQ(project.converter.convert(1, std::string()), 10107);
    EXPECT_EQ(lastError(), deleteFileError(project.path("amp.lib")));
    // In the order of the keys: "./amp-s1-tran.sim", "./amp.inc", "./amp.lib", and then no more.
    Tree expected = smallProjectConverted();
    for (const char* extension : {"inc", "lib", "olb"}) {
        expected[std::string("amp-TevrixFiles/amp.") + extension] = extension;
    }
    expected["amp.lib"] = "lib";
    expected["AMP.LIB"] = "twin";
    expected["amp.olb"] = "olb";
    EXPECT_EQ(treeOf(project.dir), expected);
}

TEST(DraftelDriver, InPlaceAFileThatIsGoneBeforeItIsDeletedIsAFailure) {
    DraftelProject project;
    project.converter.addRelocation("./gone.dat", "./amp-TevrixFiles/gone.dat");
    EXPECT_EQ(project.converter.convert(1, std::string()), 10107);
    EXPECT_EQ(lastError(), deleteFileError(project.path("gone.dat")));
}

TEST(DraftelDriver, ADesignInAnotherFolderIsKeptAndItsNetlistDeleted) {
    DraftelProject project;
    project.remove("amp.dsn");
    project.folder.write("Board/Amp.dsn", designText({"S1"}));
    project.folder.write("Board/Amp.dbk", "backup");
    project.folder.write("Board/Amp-S1.net", "netlist\n");
    project.folder.write("Board/readme", "mine");
    project.write("amp.opj", replaced(smallProjectText(), ".\\\\amp.dsn", "..\\\\Board\\\\Amp.dsn"));
    EXPECT_EQ(project.converter.convert(1, std::string()), 0);
    const Tree board = {{"Amp.dsn", designText({"S1"})}, {"Amp.dbk", "backup"}, {"readme", "mine"}};
    EXPECT_EQ(treeOf(project.folder.path("Board")), board);
    EXPECT_EQ(project.read("amp-TevrixFiles/S1/S1.net"), "netlist\n");
    EXPECT_EQ(project.read("Amp.dsn"), designText({"S1"}));
    EXPECT_EQ(project.read("Amp.dbk"), "backup");
}

TEST(DraftelDriver, AnAbsolutePathThatCannotBeDeletedIsNamedAsItIsSpelled) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    DraftelProject project;
    project.remove("amp.dsn");
    project.folder.write("Board/amp.dsn", designText({"S1"}));
    project.folder.write("Board/amp-S1.net", "netlist\n");
    project.folder.write("Board/AMP-S1.NET", "twin");
    project.write("amp.opj", replaced(smallProjectText(), ".\\\\amp.dsn", "..\\\\Board\\\\amp.dsn"));
    EXPECT_EQ(project.converter.convert(1, std::string()), 10107);
    EXPECT_EQ(lastError(), deleteFileError(project.folder.path("Board/amp-S1.net")));
    EXPECT_EQ(project.folder.read("Board/amp-S1.net"), "netlist\n");
    EXPECT_EQ(project.folder.read("Board/AMP-S1.NET"), "twin");
}

// Which entries of the table are deleted depends on the form of the old path and on what follows the
// first "." of its name.
TEST(DraftelDriver, DesignsByAbsoluteAndProjectsByRelativePathStay) {
    struct Case {
        const char* name;
        bool isAbsolute;
        bool stays;
    };
    const std::vector<Case> cases = {
        {"other/keep.dsn", true, true},     {"other/KEEP2.DBK", true, true},
        {"other/go.opj", true, false},      {"other/go.rev.dsn", true, false},
        {"other/go", true, false},          {"project/keep.opj", false, true},
        {"project/KEEP3.OPJ", false, true}, {"project/go.dsn", false, false},
        {"project/go.dbk", false, false},   {"project/go.a.opj", false, false},
        {"project/go", false, false},       {"other/keep.opj", false, true},
        {"other/go.lib", false, false},
    };
    for (const Case& entry : cases) {
        DraftelProject project;
        project.folder.write(entry.name, "old");
        const std::string name = entry.name;
        const std::string relative = name.starts_with("project/") ? "./" + name.substr(8) : "../" + name;
        project.converter.addRelocation(entry.isAbsolute ? project.folder.path(name) : relative,
                                        "./amp-TevrixFiles/x");
        EXPECT_EQ(project.converter.convert(1, std::string()), 0) << name << " " << entry.isAbsolute;
        EXPECT_EQ(project.folder.exists(name), entry.stays) << name << " " << entry.isAbsolute;
    }
}

TEST(DraftelDriver, InPlaceAProjectFileWithTwoDotsGivesWayToTheNewOne) {
    const DraftelProject project;
    project.remove("amp.opj");
    project.write("amp.old.opj", smallProjectText());
    DraftelProjectConverter converter(project.path("amp.old.opj").c_str());
    EXPECT_EQ(converter.convert(1, std::string()), 0);
    EXPECT_EQ(treeOf(project.dir), smallProjectConverted());
}

TEST(DraftelDriver, InPlaceADirectoryThatMayNotBeChangedFailsAtTheRoot) {
    DraftelProject project;
    project.write("amp.lib", "library");
    project.folder.makeFolder("project/amp-TevrixFiles");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.dir.c_str(), 0555), 0);
    const Tree before = project.tree();
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.convert(1, std::string()), 10102);
        EXPECT_EQ(lastError(), createDirectoryError(project.dir));
        return true;
    }));
    EXPECT_EQ(project.tree(), before);
}

// --- through the exported interface ---

TEST(DraftelDriver, AHostConvertsThroughTheInterface) {
    const DraftelProject project;
    const CString path(project.path("amp.opj").c_str());
    const std::unique_ptr<IDraftelProjectConverter> converter(createDraftelProjectConverter(&path));
    EXPECT_EQ(converter->convert(2, CString(project.destination.c_str())), 0);
    EXPECT_EQ(treeOf(project.destination), smallProjectConverted());
    EXPECT_EQ(project.read("amp-S1-tran.sim"), profileText("S1", "tran"));
}

// --- in place, beside folders and files that differ in letter case alone ---

// The design lies in "Designs" beside the project's folder, and the project names it so.
void moveDesign(const DraftelProject& project, const std::string& folder) {
    project.remove("amp.dsn");
    project.folder.write(folder + "/amp.dsn", designText({"S1"}));
    project.folder.write(folder + "/amp-S1.net", "netlist\n");
    project.write("amp.opj", replaced(smallProjectText(), ".\\\\amp.dsn",
                                      "..\\\\" + replaced(folder, "/", "\\\\") + "\\\\amp.dsn"));
}

TEST(DraftelDriver, InPlaceTheFileInATwinOfTheDesignsFolderStays) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    struct Case {
        const char* folder;
        const char* twin;
    };
    for (const Case& entry :
         {Case{"Designs", "designs"}, Case{"designs", "Designs"}, Case{"Boards/Amp", "Boards/amp"},
          Case{"Boards/Amp", "boards/Amp"}, Case{"Boards/Amp", "boards/amp"}}) {
        DraftelProject project;
        moveDesign(project, entry.folder);
        project.folder.write(std::string(entry.twin) + "/amp-S1.net", "of somebody else");
        EXPECT_EQ(project.converter.convert(1, std::string()), 0) << entry.twin;
        EXPECT_EQ(lastError(), LastError()) << entry.twin;
        EXPECT_EQ(treeOf(project.folder.path(entry.folder)), (Tree{{"amp.dsn", designText({"S1"})}}))
            << entry.twin;
        EXPECT_EQ(treeOf(project.folder.path(entry.twin)), (Tree{{"amp-S1.net", "of somebody else"}}))
            << entry.twin;
        EXPECT_EQ(project.read("amp-TevrixFiles/S1/S1.net"), "netlist\n") << entry.twin;
    }
}

TEST(DraftelDriver, InPlaceAnEmptyTwinOfAFolderOnTheWayIsNoObstacle) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    for (const char* twin : {"boards", "BOARDS/Amp", "Boards/amp", "PROJECT"}) {
        DraftelProject project;
        moveDesign(project, "Boards/Amp");
        project.folder.makeFolder(twin);
        EXPECT_EQ(project.converter.convert(1, std::string()), 0) << twin;
        EXPECT_EQ(lastError(), LastError()) << twin;
        EXPECT_FALSE(project.folder.exists("Boards/Amp/amp-S1.net")) << twin;
        EXPECT_TRUE(treeOf(project.folder.path(twin)).empty()) << twin;
    }
}

TEST(DraftelDriver, InPlaceTheFilesInATwinOfTheProjectsFolderStay) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    DraftelProject project;
    const Tree foreign = {{"amp-S1-tran.sim", "profile"}, {"amp.lib", "models"}};
    writeTree(project.folder.path("Project"), foreign);
    writeTree(project.folder.path("PROJECT"), foreign);
    project.write("amp.lib", "lib");
    EXPECT_EQ(project.converter.convert(1, std::string()), 0);
    EXPECT_FALSE(project.folder.exists("project/amp.lib"));
    EXPECT_FALSE(project.folder.exists("project/amp-S1-tran.sim"));
    EXPECT_EQ(treeOf(project.folder.path("Project")), foreign);
    EXPECT_EQ(treeOf(project.folder.path("PROJECT")), foreign);
}

// --- one step after the other ---

// The profiles p0, p1 and so on of S1, each with an output; the file of each names, on a line of its list,
// the new place of the output of the profile before it, or after it.
void chainProfiles(const DraftelProject& project, int count, int step) {
    ProjectJson json;
    json.designResources = {{".\\amp.dsn", "Schematic Design"}};
    for (int i = 0; i < count; ++i) {
        const std::string name = "p" + std::to_string(i);
        const std::string other = "p" + std::to_string(i + step);
        const std::string file = "amp-S1-" + name + ".sim";
        json.profiles.push_back({".\\" + file, name, "S1"});
        project.write("amp-S1-" + name + ".dat", "output of " + name);
        project.write(
            file, profileText("S1", name) + "+1 \"amp-TevrixFiles/S1/" + other + "/" + other + ".dat\"\n");
    }
    project.remove("amp-S1-tran.sim");
    project.write("amp.opj", json.text());
}

TEST(DraftelDriver, InPlaceTheOutputsOfAProfileAreThereBeforeTheNextProfilesFileIsLookedAt) {
    constexpr int kProfiles = 40;
    Tree first;
    for (int run = 0; run < 5; ++run) {
        DraftelProject project;
        chainProfiles(project, kProfiles, -1);
        ASSERT_EQ(project.converter.convert(1, std::string()), 0);
        for (int i = 1; i < kProfiles; ++i) {
            const std::string name = "p" + std::to_string(i);
            const std::string before = "p" + std::to_string(i - 1);
            const std::string s1 = "amp-TevrixFiles/S1/";
            EXPECT_EQ(
                project.read(s1 + name + ".sim"),
                "ProfileName= \"" + name + "\" \nConnectivity= \"S1.net\" \n+1 \"" + before + ".dat\" \n");
            EXPECT_EQ(project.read(s1 + name + "/" + before + ".dat"), "output of " + before);
        }
        if (run == 0) first = treeOf(project.dir);
        EXPECT_EQ(treeOf(project.dir), first) << run;
    }
}

TEST(DraftelDriver, InPlaceTheOutputsOfALaterProfileAreNotThereYet) {
    for (int run = 0; run < 3; ++run) {
        DraftelProject project;
        chainProfiles(project, 10, 1);
        ASSERT_EQ(project.converter.convert(1, std::string()), 0);
        for (int i = 0; i < 10; ++i) {
            const std::string name = "p" + std::to_string(i);
            const std::string after = "p" + std::to_string(i + 1);
            EXPECT_EQ(project.read("amp-TevrixFiles/S1/" + name + ".sim"),
                      "ProfileName= \"" + name + "\" \nConnectivity= \"S1.net\" \n+1 \"amp-TevrixFiles/S1/" +
                          after + "/" + after + ".dat\"\n");
        }
    }
}

// As on a disk that keeps whole seconds: the folder has the time that it had.
TEST(DraftelDriver, AFileThatAnotherProgramMakesWithinTheSameSecondIsFoundByTheNextConversion) {
    if (tests::kOnWindows) GTEST_SKIP() << "letter case is ignored by the system there";
    DraftelProject project;
    ASSERT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/S1.net"));
    const auto time = std::filesystem::last_write_time(project.dir);
    project.write("AMP-S1.NET", "netlist\n");
    std::filesystem::last_write_time(project.dir, time);
    DraftelProjectConverter again(project.path("amp.opj").c_str());
    ASSERT_EQ(again.convert(2, project.destination), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/S1.net"), "netlist\n");
}

// --- a full disk ---

TEST(DraftelDriver, NoPartOfACopyIsLeftWhereTheDiskIsFull) {
    constexpr std::size_t kRoom = 8192;
    const std::string large(kRoom + 1, 'x');
    struct Case {
        const char* name;   // of the file that is too large, in the project's folder
        const char* place;  // in the destination
        int status;
    };
    for (const Case& entry :
         {Case{"amp.lib", "amp-TevrixFiles/amp.lib", 10108}, Case{"amp.dbk", "amp.dbk", 10108},
          Case{"local/notes.txt", "local/notes.txt", 10108},
          Case{"amp-S1-tran.dat", "amp-TevrixFiles/S1/tran/tran.dat", 0},
          Case{"amp-S1.als", "amp-TevrixFiles/S1/S1.als", 0},
          Case{"corners.mdp", "amp-TevrixFiles/S1/corners.mdp", 0},
          Case{"models/a.lib", "amp-TevrixFiles/S1/tran/a.lib", 0}}) {
        DraftelProject project;
        ProjectJson json;
        json.designResources = {{".\\amp.dsn", "Schematic Design"}};
        json.folders.push_back(folderOf("Outputs", {{".\\local\\notes.txt", "Text"}}));
        json.profiles = {{".\\amp-S1-tran.sim", "tran", "S1"}};
        project.write("amp.opj", json.text());
        project.write("amp-S1-tran.sim", profileText("S1", "tran") + "+1 \"models/a.lib\"\n");
        project.write("amp-S1.opt", "Ext \"corners.mdp\" 1\n");
        for (const char* name : {"amp.lib", "amp.dbk", "local/notes.txt", "amp-S1-tran.dat", "amp-S1.als",
                                 "corners.mdp", "models/a.lib"}) {
            project.write(name, "small");
        }
        project.write(entry.name, large);
        forgetLastError();
        EXPECT_TRUE(succeedsWithFileLimit(kRoom, [&] {
            EXPECT_EQ(project.converter.convert(2, project.destination), entry.status) << entry.name;
            const bool isListed = std::string(entry.name) == "models/a.lib";
            EXPECT_EQ(lastError(),
                      isListed ? LastError()
                               : copyFileError(project.path(entry.name), project.newPath(entry.place)))
                << entry.name;
            return true;
        }));
        EXPECT_FALSE(project.existsNew(entry.place)) << entry.name;
        EXPECT_EQ(project.read(entry.name), large);
        // A line whose file has not come along is as it was.
        if (std::string(entry.name) == "models/a.lib") {
            EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran.sim"),
                      "ProfileName= \"tran\" \nConnectivity= \"S1.net\" \n+1 \"models/a.lib\"\n");
        }
        if (std::string(entry.name) == "corners.mdp") {
            EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/S1.opt"), "Ext \"corners.mdp\" 1\n");
        }
    }
}

// --- times ---

TEST(DraftelDriver, CopiesKeepTheirTimesAndWhatIsRewrittenIsNew) {
    DraftelProject project;
    namespace fs = std::filesystem;
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(24 * 365);
    for (const char* name : {"amp.lib", "amp-S1-tran.dat", "amp-S1.als", "amp.dbk", "amp-S1.net"}) {
        fs::last_write_time(project.write(name, "text\n"), old);
    }
    for (const char* name : {"amp.dsn", "amp.opj", "amp-S1-tran.sim"}) {
        fs::last_write_time(project.path(name), old);
    }
    project.folder.write("new/amp-TevrixFiles/amp.lib", "an earlier copy");
    const auto before = fs::file_time_type::clock::now() - std::chrono::seconds(2);
    ASSERT_EQ(project.converter.convert(2, project.destination), 0);
    for (const char* name : {"amp-TevrixFiles/amp.lib", "amp-TevrixFiles/S1/tran/tran.dat",
                             "amp-TevrixFiles/S1/S1.als", "amp.dbk", "amp.dsn"}) {
        EXPECT_EQ(fs::last_write_time(project.newPath(name)), fs::last_write_time(project.path("amp.dbk")))
            << name;
    }
    for (const char* name : {"amp.opj", "amp-TevrixFiles/S1/S1.net", "amp-TevrixFiles/S1/tran.sim"}) {
        EXPECT_GE(fs::last_write_time(project.newPath(name)), before) << name;
    }
}

}  // namespace
