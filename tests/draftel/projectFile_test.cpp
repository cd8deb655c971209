// projectFile_test.cpp
//
// The last step of a Draftel conversion: design, backup and project file in their new places, and the entries
// of the new project file pointed at where the files have gone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"

namespace {

using namespace tests;
using testing::IsEmpty;
namespace fs = std::filesystem;

// Just some folders, before and after; the output-file item is emptied on the way.
ProjectJson withFolders(const std::string& item, const Json& folders) {
    ProjectJson project;
    project.item = item;
    project.folders = folders;
    return project;
}

// A project whose files "moved.*" have been moved by the steps before, into which folder the name tells.
class UpdatedProject : public DraftelProject {
public:
    UpdatedProject() {
        prepareSteps();
        converter.setRequestedMode(2);
        for (const char* extension : {"lib", "olb", "stl", "inc", "prp", "net", "ind", "txt"}) {
            const std::string name = std::string("moved.") + extension;
            converter.addRelocation("./" + name, "./amp-TevrixFiles/" + name);
        }
        converter.addRelocation(dir + "/amp.dsn", "./amp.dsn");
    }

    int update(const std::string& text) {
        write("amp.opj", text);
        return converter.updateProjectFile(path("amp.opj"), newPath("amp.opj"));
    }
};

void expectUpdate(UpdatedProject& project, const ProjectJson& before, const ProjectJson& after) {
    const std::string text = before.text();
    EXPECT_EQ(project.update(text), 0);
    EXPECT_EQ(project.readNew("amp.opj"), after.text());
    EXPECT_EQ(project.read("amp.opj"), text);
    EXPECT_EQ(lastError(), LastError());
}

void expectFolders(UpdatedProject& project, const Json& before, const Json& after) {
    expectUpdate(project, withFolders("old.out", before), withFolders("", after));
}

// --- the three files ---

TEST(DraftelProjectFile, DesignBackupAndProjectGoIntoTheDestination) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp.dbk", "backup");
    const Tree before = treeOf(project.dir);
    EXPECT_EQ(project.converter.updateProjectFiles(), 0);
    Tree expected = {{"amp-TevrixFiles/", ""},
                     {"amp-TevrixFiles/S1/", ""},
                     {"amp-TevrixFiles/S1/tran/", ""},
                     {"amp.dbk", "backup"},
                     {"amp.dsn", designText({"S1"})},
                     // The profile has not been moved here, and so it is not registered.
                     {"amp.opj", projectText(R"({
                         "folders": [ { "name": "Design Resources",
                             "files": [ { "name": "amp.dsn", "path": ".\\amp.dsn", "type": "Schematic Design" } ],
                             "items": { "TEVRIX_Output_File": "" } } ],
                         "simulationProfiles": { "active": ".\\amp-S1-tran.sim", "profiles": [] } })")}};
    EXPECT_EQ(treeOf(project.destination), expected);
    EXPECT_EQ(treeOf(project.dir), before);
    EXPECT_EQ(movesOf(project.converter), (Moves{{lowerCase(project.path("amp.dsn")), "./amp.dsn"},
                                                 {lowerCase(project.path("amp.dbk")), "./amp.dbk"},
                                                 {"./amp.opj", "./amp.opj"}}));
    std::string newProject = "left over";
    EXPECT_EQ(project.converter.getNewProjectPath(newProject), 0);
    EXPECT_EQ(newProject, project.newPath("amp.opj"));
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelProjectFile, ABackupMayBeMissing) {
    DraftelProject project;
    project.prepareSteps();
    EXPECT_EQ(project.converter.updateProjectFiles(), 0);
    EXPECT_FALSE(project.existsNew("amp.dbk"));
    EXPECT_EQ(movesOf(project.converter).count(lowerCase(project.path("amp.dbk"))), 0U);
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelProjectFile, TheDesignIsNamedAfterItselfAndTheProjectAfterTheDesignName) {
    DraftelProject project;
    project.prepareSteps();
    project.folder.write("Boards/Main.dsn", "design");
    project.folder.write("Boards/Main.dbk", "backup");
    project.converter.setDesignDir(project.folder.path("Boards"));
    project.converter.setDesignFileBaseName("Main");
    project.converter.setDesignName("Other");
    EXPECT_EQ(project.converter.updateProjectFiles(), 0);
    EXPECT_EQ(project.readNew("Main.dsn"), "design");
    EXPECT_EQ(project.readNew("Main.dbk"), "backup");
    EXPECT_TRUE(project.existsNew("Other.opj"));
    EXPECT_EQ(movesOf(project.converter),
              (Moves{{lowerCase(project.folder.path("Boards/Main.dsn")), "./main.dsn"},
                     {lowerCase(project.folder.path("Boards/Main.dbk")), "./main.dbk"},
                     {"./amp.opj", "./other.opj"}}));
    std::string newProject = "left over";
    EXPECT_EQ(project.converter.getNewProjectPath(newProject), 0);
    EXPECT_EQ(newProject, project.newPath("Other.opj"));
}

TEST(DraftelProjectFile, FilesInTheirPlaceAreNotCopiedButRecorded) {
    for (const bool inOtherCase : {false, true}) {
        DraftelProject project;
        project.prepareSteps();
        project.write("amp.dbk", "backup");
        project.converter.setDestinationDir(inOtherCase ? project.folder.path("PROJECT") : project.dir);
        EXPECT_EQ(project.converter.updateProjectFiles(), 0) << inOtherCase;
        EXPECT_EQ(project.folder.exists("PROJECT"), kOnWindows) << inOtherCase;  // where that is another name
        EXPECT_EQ(project.read("amp.dsn"), designText({"S1"})) << inOtherCase;
        EXPECT_EQ(project.read("amp.dbk"), "backup") << inOtherCase;
        EXPECT_EQ(movesOf(project.converter), (Moves{{lowerCase(project.path("amp.dsn")), "./amp.dsn"},
                                                     {lowerCase(project.path("amp.dbk")), "./amp.dbk"},
                                                     {"./amp.opj", "./amp.opj"}}))
            << inOtherCase;
    }
}

TEST(DraftelProjectFile, AMissingDesignIsNamed) {
    for (const bool isFolder : {false, true}) {
        DraftelProject project;
        project.prepareSteps();
        project.write("amp.dbk", "backup");
        project.remove("amp.dsn");
        if (isFolder) project.folder.makeFolder("project/amp.dsn");
        const Tree before = project.tree();
        EXPECT_EQ(project.converter.updateProjectFiles(), 10104) << isFolder;
        EXPECT_EQ(lastError(), fileNotFoundError(project.path("amp.dsn"))) << isFolder;
        EXPECT_EQ(project.tree(), before) << isFolder;
        EXPECT_THAT(movesOf(project.converter), IsEmpty()) << isFolder;
        std::string newProject = "left over";
        EXPECT_EQ(project.converter.getNewProjectPath(newProject), 1) << isFolder;
    }
}

TEST(DraftelProjectFile, AMissingProjectIsNamed) {
    DraftelProject project;
    project.prepareSteps();
    project.remove("amp.opj");
    EXPECT_EQ(project.converter.updateProjectFiles(), 10104);
    EXPECT_EQ(lastError(), fileNotFoundError(project.path("amp.opj")));
    EXPECT_EQ(project.readNew("amp.dsn"), designText({"S1"}));
    EXPECT_FALSE(project.existsNew("amp.opj"));
    EXPECT_EQ(movesOf(project.converter), (Moves{{lowerCase(project.path("amp.dsn")), "./amp.dsn"}}));
    std::string newProject = "left over";
    EXPECT_EQ(project.converter.getNewProjectPath(newProject), 1);
}

TEST(DraftelProjectFile, AFileThatCannotBeCopiedEndsTheStep) {
    for (const char* name : {"amp.dsn", "amp.dbk", "amp.opj"}) {
        DraftelProject project;
        project.prepareSteps();
        project.write("amp.dbk", "backup");
        project.folder.makeFolder(std::string("new/") + name);
        EXPECT_EQ(project.converter.updateProjectFiles(), 10108) << name;
        EXPECT_EQ(lastError(), copyFileError(project.path(name), project.newPath(name))) << name;
        const bool isDesign = name == std::string("amp.dsn");
        const bool isProject = name == std::string("amp.opj");
        EXPECT_EQ(movesOf(project.converter).size(), isDesign ? 0U : isProject ? 2U : 1U) << name;
        EXPECT_EQ(fs::is_regular_file(project.newPath("amp.dbk")), isProject) << name;
        EXPECT_FALSE(fs::is_regular_file(project.newPath("amp.opj"))) << name;
        std::string newProject = "left over";
        EXPECT_EQ(project.converter.getNewProjectPath(newProject), 1) << name;
    }
}

TEST(DraftelProjectFile, AProjectThatCannotBeReadIsNamedByItsNewPath) {
    for (const char* text : {"", "project", R"({ "folders": {} })"}) {
        DraftelProject project;
        project.prepareSteps();
        project.write("amp.opj", text);
        EXPECT_EQ(project.converter.updateProjectFiles(), 10109) << text;
        EXPECT_EQ(lastError(), readFileError(project.newPath("amp.opj"))) << text;
        EXPECT_EQ(project.readNew("amp.opj"), text);
        std::string newProject = "left over";
        EXPECT_EQ(project.converter.getNewProjectPath(newProject), 1) << text;
        EXPECT_EQ(movesOf(project.converter), (Moves{{lowerCase(project.path("amp.dsn")), "./amp.dsn"}}))
            << text;
    }
}

TEST(DraftelProjectFile, ACopyThatIsTheFileItselfLeavesTheOldFilesAsTheyAre) {
    for (const bool isHardLink : {true, false}) {
        DraftelProject project;
        project.prepareSteps();
        const Tree before = treeOf(project.dir);
        for (const char* name : {"amp.dsn", "amp.opj"}) {
            isHardLink ? fs::create_hard_link(project.path(name), project.newPath(name))
                       : tests::makeLink(project.path(name), project.newPath(name));
        }
        EXPECT_EQ(project.converter.updateProjectFiles(), 0) << isHardLink;
        EXPECT_EQ(treeOf(project.dir), before) << isHardLink;
    }
}

TEST(DraftelProjectFile, ANameAsLongAsItCanBeIsUpdated) {
    if (tests::kOnWindows) GTEST_SKIP() << "a whole path is not much longer there";
    for (const std::size_t length : {250U, 255U}) {
        UpdatedProject project;
        const std::string name = std::string(length - 4, 'n') + ".opj";
        project.write(name, smallProjectText());
        EXPECT_EQ(project.converter.updateProjectFile(project.path(name), project.newPath(name)), 0)
            << length;
        EXPECT_EQ(lastError(), LastError()) << length;
        EXPECT_TRUE(project.existsNew(name)) << length;
    }
}

TEST(DraftelProjectFile, AnEarlierProjectInTheDestinationIsReplaced) {
    UpdatedProject project;
    project.folder.write("new/amp.opj", std::string(100000, 'x'));
    expectFolders(project, Json::array(), Json::array());
}

TEST(DraftelProjectFile, WhatTheUpdateDoesNotKnowIsKept) {
    UpdatedProject project;
    EXPECT_EQ(project.update(R"({ "title": "T", "folders": [ { "name": "Referenced Projects", "more": 17.20,
                                  "files": [ { "path": "./moved.lib", "type": "X" } ] },
                                { "name": "Design Resources", "items": { "other": "item" } } ], "last": null })"),
              0);
    // The library keeps the spelling of numbers, which JSON packages do not.
    EXPECT_EQ(replaced(project.readNew("amp.opj"), "17.20", "17.25"),
              projectText(R"({ "title": "T", "folders": [ { "name": "Referenced Projects", "more": 17.25,
                                  "files": [ { "path": "./moved.lib", "type": "X" } ] },
                                { "name": "Design Resources",
                                  "items": { "other": "item", "TEVRIX_Output_File": "" } } ], "last": null })"));
}

// --- designs ---

TEST(DraftelProjectFile, ADesignThatIsAtItsNewPlaceKeepsItsSpelling) {
    for (const char* path : {".\\amp.dsn", "./amp.dsn", "amp.dsn", ".\\AMP.DSN", "Amp.Dsn"}) {
        UpdatedProject project;
        ProjectJson before;
        before.designResources = {{path, "Schematic Design"}};
        expectUpdate(project, before, before);
    }
}

TEST(DraftelProjectFile, ADesignElsewhereIsPointedAtItsNewPlace) {
    for (const std::string path :
         {"..\\boards\\amp.dsn", "../BOARDS/Amp.DSN", "@UP@/boards/amp.dsn", "@UP@\\boards\\amp.dsn"}) {
        UpdatedProject project;
        project.converter.addRelocation(project.folder.path("boards/amp.dsn"), "./amp.dsn");
        ProjectJson before;
        before.designResources = {{".\\notes.txt", "Text"},
                                  {replaced(path, "@UP@", project.folder.path()), "Schematic Design"}};
        ProjectJson after = before;
        after.designResources[1].path = ".\\amp.dsn";
        // An entry that only differs in letter case from its new name keeps its name.
        const std::string text = before.text();
        EXPECT_EQ(project.update(text), 0) << path;
        EXPECT_EQ(lowerCase(project.readNew("amp.opj")), lowerCase(after.text())) << path;
    }
}

TEST(DraftelProjectFile, ADesignThatIsListedTwiceIsChangedTwice) {
    UpdatedProject project;
    project.converter.addRelocation(project.folder.path("boards/amp.dsn"), "./amp.dsn");
    ProjectJson before;
    before.designResources = {{"..\\boards\\amp.dsn", "Schematic Design"},
                              {"..\\boards\\amp.dsn", "Schematic Design"}};
    ProjectJson after;
    after.designResources = {{".\\amp.dsn", "Schematic Design"}, {".\\amp.dsn", "Schematic Design"}};
    expectUpdate(project, before, after);
}

TEST(DraftelProjectFile, OtherEntriesOfTheDesignResourcesAreLeftAlone) {
    UpdatedProject project;
    project.write("stay.txt", "not copied");
    ProjectJson before;
    before.designResources = {{"./moved.lib", "Schematic Design"},
                              {"moved.olb", "Schematic Library"},
                              {"./stay.txt", "Text"},
                              {"amp.dsn.txt", "Schematic Design"}};
    expectUpdate(project, before, before);
    EXPECT_FALSE(project.existsNew("stay.txt"));
}

TEST(DraftelProjectFile, AnotherDesignIsCopiedToTheSamePlace) {
    UpdatedProject project;
    project.write("sub/second.dsn", "second");
    ProjectJson before;
    before.designResources = {{".\\amp.dsn", "Schematic Design"}, {"sub/second.dsn", "Schematic Design"}};
    expectUpdate(project, before, before);
    EXPECT_EQ(project.readNew("sub/second.dsn"), "second");
}

// The update is asked for by type, and a design of another type is not found.
TEST(DraftelProjectFile, AMovedDesignOfAnotherTypeIsAFailure) {
    UpdatedProject project;
    project.converter.addRelocation(project.folder.path("boards/amp.dsn"), "./amp.dsn");
    ProjectJson before;
    before.designResources = {{"..\\boards\\amp.dsn", "Design"}};
    EXPECT_EQ(project.update(before.text()), 10110);
    EXPECT_EQ(lastError(), writeFileError(project.newPath("amp.opj")));
    EXPECT_EQ(project.readNew("amp.opj"), before.text());
}

// --- libraries ---

TEST(DraftelProjectFile, OfTheSchematicLibrariesOnlySymbolLibrariesAreFollowed) {
    UpdatedProject project;
    project.write("stay.olb", "symbols");
    project.write("local/own.olb", "own symbols");
    project.write("local/other.lib", "no symbols");
    ProjectJson before;
    before.libraries = {{"./moved.olb", "Schematic Library"},       {"stay.olb", "schematic library"},
                        {"./local/own.olb", "Schematic Library"},   {"./moved.lib", "Schematic Library"},
                        {"./local/other.lib", "Schematic Library"}, {"./moved.olb", "Symbol Library"},
                        {"./absent.olb", "Schematic Library"}};
    ProjectJson after;
    after.libraries = {{".\\amp-tevrixfiles\\moved.olb", "Schematic Library"},
                       {"stay.olb", "schematic library"},
                       {".\\local\\own.olb", "Schematic Library"},
                       {".\\moved.lib", "Schematic Library"},
                       {".\\local\\other.lib", "Schematic Library"},
                       {"./moved.olb", "Symbol Library"},
                       {".\\absent.olb", "Schematic Library"}};
    expectUpdate(project, before, after);
    EXPECT_EQ(project.readNew("stay.olb"), "symbols");
    EXPECT_EQ(project.readNew("local/own.olb"), "own symbols");
    EXPECT_FALSE(project.existsNew("local/other.lib"));
}

TEST(DraftelProjectFile, SimulatorLibrariesAreFollowedInTheirThreeSubFolders) {
    UpdatedProject project;
    project.write("stay.lib", "models");
    const auto folders = [](const std::string& lib, const std::string& stl, const std::string& inc,
                            const std::string& stay) {
        return Json::array(
            {folderOf("Tevrix Resources", {},
                      Json::array({folderOf("Model Libraries", {{lib, "TevrixLibrary"},
                                                                {"./moved.lib", "Other"},
                                                                {stay, "TEVRIXLIBRARY"},
                                                                {lib, "TevrixLibrary"}}),
                                   folderOf("Stimulus Files", {{stl, "TevrixLibrary"}}),
                                   folderOf("Include Files", {{"./moved.lib", ""}, {inc, "TevrixLibrary"}}),
                                   folderOf("Model Files", {{"./moved.lib", "TevrixLibrary"}})}))});
    };
    expectFolders(project, folders("moved.lib", "./moved.stl", ".\\moved.inc", "./stay.lib"),
                  folders(".\\amp-tevrixfiles\\moved.lib", ".\\amp-tevrixfiles\\moved.stl",
                          ".\\amp-tevrixfiles\\moved.inc", ".\\stay.lib"));
    EXPECT_EQ(project.readNew("stay.lib"), "models");
}

TEST(DraftelProjectFile, TheDesignLibraryIsNotTheFolderLibrary) {
    UpdatedProject project;
    const auto folders = [](const std::string& path) {
        return Json::array({folderOf("Library", {{path, "Schematic Library"}, {path, "Symbol Library"}})});
    };
    expectFolders(project, folders("./moved.txt"), folders(".\\amp-tevrixfiles\\moved.txt"));
}

// --- simulation profiles ---

TEST(DraftelProjectFile, OnlyMovedProfilesOfTheProjectFolderAreRegistered) {
    UpdatedProject project;
    for (const char* name : {"amp-S1-tran", "amp-S1-ac", "amp-S1-up", "amp-S1-absolute"}) {
        project.converter.addProfileRecord(name, std::string(name).substr(7), "S1", "any");
        project.converter.addRelocation("./" + std::string(name) + ".sim",
                                        "./amp-TevrixFiles/S1/" + std::string(name).substr(7) + ".sim");
    }
    project.converter.addProfileRecord("amp-S1-stay", "stay", "S1", "any");
    project.converter.addRelocation("./amp-S1-unknown.sim", "./amp-TevrixFiles/S1/unknown.sim");
    project.converter.addRelocation("./amp-S1-nodot", "./amp-TevrixFiles/S1/nodot");
    project.converter.addProfileRecord("amp-S1-nodot", "nodot", "S1", "any");
    ProjectJson before;
    before.item = "amp-S1-tran.out";
    before.active = ".\\amp-S1-ac.sim";
    before.profiles = {{".\\amp-S1-tran.sim", "old name", "old schematic"},
                       {"AMP-S1-AC.sim", "ac", "S1"},
                       {"..\\amp-S1-up.sim", "up", "S1"},
                       {"C:\\amp\\amp-S1-absolute.sim", "absolute", "S1"},
                       {"/amp/amp-S1-absolute.sim", "absolute", "S1"},
                       {".\\amp-S1-stay.sim", "stay", "S1"},
                       {".\\amp-S1-unknown.sim", "unknown", "S1"},
                       {".\\amp-S1-nodot", "nodot", "S1"},
                       {"", "", ""}};
    // Where there are drives, only they begin an absolute path.
    if (kOnWindows)
        std::erase_if(before.profiles, [](const auto& profile) { return profile[0].starts_with("/"); });
    ProjectJson after;
    after.active = ".\\amp-tevrixfiles\\s1\\ac.sim";
    after.profiles = {{".\\amp-tevrixfiles\\s1\\tran.sim", "tran", "S1"},
                      {".\\amp-tevrixfiles\\s1\\ac.sim", "ac", "S1"}};
    expectUpdate(project, before, after);
}

TEST(DraftelProjectFile, AMovedProfileIsKnownByItsFileNameAlone) {
    UpdatedProject project;
    project.converter.addProfileRecord("amp-S1-tran", "tran", "S1", "any");
    project.converter.addRelocation("./amp-S1-tran.sim", "./amp-TevrixFiles/S1/tran.sim");
    ProjectJson before;
    before.profiles = {{"sub\\deep\\amp-S1-tran.sim", "tran", "S1"}};
    ProjectJson after;
    after.profiles = {{".\\amp-tevrixfiles\\s1\\tran.sim", "tran", "S1"}};
    expectUpdate(project, before, after);
}

TEST(DraftelProjectFile, TheActiveProfileFollows) {
    struct Case {
        const char* active;
        const char* newActive;
    };
    const std::vector<Case> cases = {
        {".\\amp-S1-tran.sim", ".\\amp-tevrixfiles\\s1\\tran.sim"},
        {"AMP-s1-TRAN.SIM", ".\\amp-tevrixfiles\\s1\\tran.sim"},
        {"./amp-S1-ac.sim", ".\\amp-tevrixfiles\\s1\\ac.sim"},
        // One that is not carried over stays, with backslashes.
        {"./sub/amp-S1-gone.sim", ".\\sub\\amp-S1-gone.sim"},
        {"", ""},
    };
    for (const Case& entry : cases) {
        UpdatedProject project;
        ProjectJson before;
        ProjectJson after;
        before.active = entry.active;
        after.active = entry.newActive;
        for (const std::string name : {"tran", "ac"}) {
            project.converter.addProfileRecord("amp-S1-" + name, name, "S1", "any");
            project.converter.addRelocation("./amp-S1-" + name + ".sim",
                                            "./amp-TevrixFiles/S1/" + name + ".sim");
            before.profiles.push_back({".\\amp-S1-" + name + ".sim", name, "S1"});
            after.profiles.push_back({".\\amp-tevrixfiles\\s1\\" + name + ".sim", name, "S1"});
        }
        expectUpdate(project, before, after);
    }
}

TEST(DraftelProjectFile, AProfileThatIsListedTwiceIsRegisteredTwice) {
    UpdatedProject project;
    project.converter.addProfileRecord("amp-S1-tran", "tran", "S1", "any");
    project.converter.addRelocation("./amp-S1-tran.sim", "./amp-TevrixFiles/S1/tran.sim");
    ProjectJson before;
    before.active = "amp-S1-tran.sim";
    before.profiles = {{".\\amp-S1-tran.sim", "tran", "S1"}, {"./amp-s1-tran.sim", "tran", "S1"}};
    ProjectJson after;
    after.active = ".\\amp-tevrixfiles\\s1\\tran.sim";
    after.profiles = {{".\\amp-tevrixfiles\\s1\\tran.sim", "tran", "S1"},
                      {".\\amp-tevrixfiles\\s1\\tran.sim", "tran", "S1"}};
    expectUpdate(project, before, after);
}

// --- outputs and the other folders ---

TEST(DraftelProjectFile, OutputsAreWrittenBackInTheirOrder) {
    UpdatedProject project;
    project.write("stay.bom", "parts");
    const auto folders = [](const std::string& net, const std::string& text, const std::string& bom,
                            const std::string& gone) {
        return Json::array({folderOf("Outputs", {{net, "Report"},
                                                 {text, "Waveform Data"},
                                                 {bom, "Report"},
                                                 {gone, "Marker File"},
                                                 {text, "REPORT"},
                                                 {net, "Waveform Data"},
                                                 {"", "Report"},
                                                 {net, ""}})});
    };
    expectFolders(project, folders("./moved.net", "moved.txt", "./stay.bom", "sub/gone.mrk"),
                  folders(".\\amp-tevrixfiles\\moved.net", ".\\amp-tevrixfiles\\moved.txt", ".\\stay.bom",
                          "sub\\gone.mrk"));
    EXPECT_EQ(project.readNew("stay.bom"), "parts");
}

TEST(DraftelProjectFile, EntriesOfTheOtherFoldersAreFollowed) {
    UpdatedProject project;
    const auto folders = [](const std::string& moved, const std::string& other) {
        return Json::array(
            {folderOf("Translator", {{moved, "Net Map"}, {other, "Net Map"}}),
             folderOf("Library", {{other, "A"}, {moved, "B"}, {moved, "A"}}),
             folderOf("Simulation Resources", {{"./moved.txt", "X"}},
                      Json::array({folderOf("Indesign", {{moved, "Index File"}, {other, "Other"}}),
                                   folderOf("Library", {{"./moved.txt", "X"}})})),
             folderOf("Simulations", {{"./moved.txt", "X"}})});
    };
    expectFolders(project, folders("./moved.txt", "./gone.txt"),
                  folders(".\\amp-tevrixfiles\\moved.txt", ".\\gone.txt"));
}

// The simulator's own entries are changed one by one, so one that stays keeps its spelling.
TEST(DraftelProjectFile, SimulatorEntriesThatStayAreNotTouched) {
    UpdatedProject project;
    project.write("stay.txt", "text");
    const auto folders = [](const std::string& moved) {
        return Json::array({folderOf(
            "Tevrix Resources",
            {{moved, "Property File"}, {"./stay.txt", "Text"}, {moved, "Other"}, {moved, "Property File"}})});
    };
    expectFolders(project, folders("./moved.prp"), folders(".\\amp-tevrixfiles\\moved.prp"));
    EXPECT_EQ(project.readNew("stay.txt"), "text");
}

TEST(DraftelProjectFile, FolderNamesAreThoseOfTheConverter) {
    UpdatedProject project;
    project.converter.projectFolderNames().push_back("Mine");
    project.converter.folderMap()["Other Resources"] = "Sub";
    project.converter.folderMap()["More Resources"] = "Library";
    const auto folders = [](const std::string& moved) {
        return Json::array(
            {folderOf("Mine", {{moved, "X"}}),
             folderOf("Other Resources", {}, Json::array({folderOf("Sub", {{moved, "X"}})})),
             folderOf("More Resources", {}, Json::array({folderOf("Library", {{"./moved.txt", "X"}})}))});
    };
    expectFolders(project, folders("./moved.txt"), folders(".\\amp-tevrixfiles\\moved.txt"));
}

TEST(DraftelProjectFile, TheOutputFileItemIsEmptied) {
    for (const char* before :
         {R"({ "folders": [ { "name": "Design Resources", "items": { "TEVRIX_Output_File": "x.out" } } ] })",
          R"({ "folders": [ { "name": "Design Resources", "items": { "tevrix_output_file": "x.out" } } ] })",
          R"({ "folders": [ { "name": "Design Resources" } ] })", R"({ "folders": [] })", "{}"}) {
        UpdatedProject project;
        EXPECT_EQ(project.update(before), 0) << before;
        EXPECT_EQ(lowerCase(project.readNew("amp.opj")),
                  lowerCase(projectText(R"({ "folders": [ { "name": "Design Resources",
                                              "items": { "TEVRIX_Output_File": "" } } ] })")))
            << before;
    }
}

// --- where an entry leads ---

// Every kind of entry is relocated alike; these go through the outputs.
struct PathCase {
    const char* path;
    const char* newPath;
};

void expectPaths(UpdatedProject& project, const std::vector<PathCase>& cases) {
    for (const PathCase& entry : cases) {
        const auto folders = [&](const std::string& path) {
            const std::string filled =
                replaced(replaced(path, "@DIR@", project.dir), "@UP@", project.folder.path());
            return Json::array({folderOf("Outputs", {{filled, "X"}})});
        };
        SCOPED_TRACE(entry.path);
        const Json after = Json::array(
            {folderOf("Outputs", {{withBackslashes(replaced(replaced(entry.newPath, "@DIR@", project.dir),
                                                            "@UP@", project.folder.path())),
                                   "X"}})});
        expectFolders(project, folders(entry.path), after);
    }
}

TEST(DraftelProjectFile, MovedFilesAreFoundWhateverWayTheyAreSpelled) {
    UpdatedProject project;
    project.converter.addRelocation("./sub/deep.txt", "./amp-TevrixFiles/deep.txt");
    project.converter.addRelocation(project.folder.path("boards/net.txt"), "./amp-TevrixFiles/net.txt");
    project.converter.addRelocation(project.path("whole.txt"), "./amp-TevrixFiles/whole.txt");
    expectPaths(project, {
                             {"moved.txt", ".\\amp-tevrixfiles\\moved.txt"},
                             {".\\moved.txt", ".\\amp-tevrixfiles\\moved.txt"},
                             {"sub\\deep.txt", ".\\amp-tevrixfiles\\deep.txt"},
                             {"./sub/deep.txt", ".\\amp-tevrixfiles\\deep.txt"},
                             {"..\\project\\moved.txt", ".\\amp-tevrixfiles\\moved.txt"},
                             {"@DIR@/moved.txt", ".\\amp-tevrixfiles\\moved.txt"},
                             {"..\\boards\\net.txt", ".\\amp-tevrixfiles\\net.txt"},
                             {"@UP@/boards/net.txt", ".\\amp-tevrixfiles\\net.txt"},
                             {"whole.txt", ".\\amp-tevrixfiles\\whole.txt"},
                             {"@DIR@/whole.txt", ".\\amp-tevrixfiles\\whole.txt"},
                             // Not the same files.
                             {"other\\moved.txt", "other\\moved.txt"},
                             {"..\\moved.txt", "..\\moved.txt"},
                             {"C:\\moved.txt", "C:\\moved.txt"},
                             {"ab/moved.txt", "ab\\moved.txt"},
                         });
}

TEST(DraftelProjectFile, AMovedFileIsFoundInAnyLetterCase) {
    UpdatedProject project;
    const ProjectJson before = withFolders("x", Json::array({folderOf("Outputs", {{"MOVED.Txt", "X"}})}));
    EXPECT_EQ(project.update(before.text()), 0);
    const ProjectJson after =
        withFolders("", Json::array({folderOf("Outputs", {{".\\amp-tevrixfiles\\moved.txt", "X"}})}));
    EXPECT_EQ(lowerCase(project.readNew("amp.opj")), lowerCase(after.text()));
}

TEST(DraftelProjectFile, AnEntryThatNamesTheNewPlaceAlreadyKeepsItsSpelling) {
    UpdatedProject project;
    project.converter.addRelocation("./Kept.txt", "./Kept.txt");
    project.converter.addRelocation(project.newPath("Inside.txt"), "./Inside.txt");
    expectPaths(project, {
                             {"Kept.TXT", "Kept.TXT"},
                             {"./KEPT.txt", ".\\KEPT.txt"},
                             {"@UP@/new/Inside.txt", "@UP@/new/Inside.txt"},
                             // The same name, but in the old folder.
                             {"@DIR@/kept.txt", ".\\kept.txt"},
                         });
}

TEST(DraftelProjectFile, FilesThatStayAreCopiedToTheSameRelativePlace) {
    struct Case {
        const char* path;
        const char* old;     // below the common folder
        const char* copied;  // likewise; null when it is not copied
    };
    const std::vector<Case> cases = {
        {"stay.txt", "project/stay.txt", "new/stay.txt"},
        {".\\sub\\deep\\stay.txt", "project/sub/deep/stay.txt", "new/sub/deep/stay.txt"},
        {"..\\models\\stay.txt", "models/stay.txt", "models/stay.txt"},
        {"STAY.txt", "project/stay.TXT", "new/STAY.txt"},
        {"@UP@/models/stay.txt", "models/stay.txt", nullptr},
        {"ab/stay.txt", "project/ab/stay.txt", nullptr},
        {"absent.txt", "project/stay.txt", nullptr},
        {"sub", "project/sub/stay.txt", nullptr},
    };
    for (const Case& entry : cases) {
        UpdatedProject project;
        project.folder.write(entry.old, "bytes");
        Tree expected = project.tree();
        const std::string path = replaced(entry.path, "@UP@", project.folder.path());
        const ProjectJson before = withFolders("", Json::array({folderOf("Outputs", {{path, "X"}})}));
        const ProjectJson after =
            withFolders("", Json::array({folderOf("Outputs", {{withBackslashes(path), "X"}})}));
        SCOPED_TRACE(entry.path);
        const Moves moves = movesOf(project.converter);
        expectUpdate(project, before, after);
        expected["project/amp.opj"] = before.text();
        expected["new/amp.opj"] = after.text();
        if (entry.copied != nullptr) {
            for (std::size_t slash = 0;
                 (slash = std::string(entry.copied).find('/', slash)) != std::string::npos; ++slash) {
                expected[std::string(entry.copied).substr(0, slash + 1)] = "";
            }
            expected[entry.copied] = "bytes";
        }
        EXPECT_EQ(project.tree(), expected);
        EXPECT_EQ(movesOf(project.converter), moves);
    }
}

TEST(DraftelProjectFile, ADestinationInAnotherPlaceGetsItsOwnNeighbours) {
    UpdatedProject project;
    project.folder.write("models/stay.txt", "bytes");
    project.folder.makeFolder("far/away/new");
    project.write(
        "amp.opj",
        withFolders("", Json::array({folderOf("Outputs", {{"..\\models\\stay.txt", "X"}})})).text());
    EXPECT_EQ(project.converter.updateProjectFile(project.path("amp.opj"),
                                                  project.folder.path("far/away/new/amp.opj")),
              0);
    EXPECT_EQ(project.folder.read("far/away/models/stay.txt"), "bytes");
}

TEST(DraftelProjectFile, OnlyAConversionIntoADestinationCopiesFilesThatStay) {
    for (const int mode : {0, 1, 3}) {
        DraftelProject project;
        project.prepareSteps();
        project.converter.setRequestedMode(mode);
        project.write("stay.txt", "bytes");
        project.write("amp.opj",
                      withFolders("", Json::array({folderOf("Outputs", {{".\\stay.txt", "X"}})})).text());
        EXPECT_EQ(project.converter.updateProjectFile(project.path("amp.opj"), project.newPath("amp.opj")), 0)
            << mode;
        EXPECT_EQ(project.readNew("amp.opj"), project.read("amp.opj")) << mode;
        EXPECT_FALSE(project.existsNew("stay.txt")) << mode;
    }
}

TEST(DraftelProjectFile, AFileThatStaysAndCannotBeCopiedEndsTheUpdate) {
    UpdatedProject project;
    project.write("stay.txt", "bytes");
    project.folder.makeFolder("new/stay.txt");
    const ProjectJson before = withFolders(
        "old.out", Json::array({folderOf("Outputs", {{"./moved.net", "Report"}, {"stay.txt", "X"}})}));
    EXPECT_EQ(project.update(before.text()), 10108);
    EXPECT_EQ(lastError(), copyFileError(project.path("stay.txt"), project.newPath("stay.txt")));
    EXPECT_EQ(project.readNew("amp.opj"), before.text());
}

TEST(DraftelProjectFile, AFolderThatCannotBeMadeForAFileThatStaysIsNamed) {
    UpdatedProject project;
    project.write("sub/deep/stay.txt", "bytes");
    project.folder.write("new/sub", "a file");
    const ProjectJson before =
        withFolders("", Json::array({folderOf("Outputs", {{"sub\\deep\\stay.txt", "X"}})}));
    EXPECT_EQ(project.update(before.text()), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(project.newPath("sub/deep")));
}

TEST(DraftelProjectFile, AFileThatMayNotBeReadIsNotCopied) {
    UpdatedProject project;
    project.write("stay.txt", "bytes");
    const ProjectJson before = withFolders("", Json::array({folderOf("Outputs", {{"stay.txt", "X"}})}));
    project.write("amp.opj", before.text());
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("stay.txt").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.updateProjectFile(project.path("amp.opj"), project.newPath("amp.opj")),
                  0);
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
    EXPECT_FALSE(project.existsNew("stay.txt"));
    EXPECT_EQ(project.readNew("amp.opj"), before.text());
}

// --- failures ---

TEST(DraftelProjectFile, AProjectThatCannotBeCopiedIsNamedWithItsCopy) {
    UpdatedProject project;
    const std::string away = project.folder.path("no/such/amp.opj");
    EXPECT_EQ(project.converter.updateProjectFile(project.path("amp.opj"), away), 10108);
    EXPECT_EQ(lastError(), copyFileError(project.path("amp.opj"), away));
    EXPECT_EQ(project.converter.updateProjectFile(project.path("absent.opj"), project.newPath("amp.opj")),
              10108);
    EXPECT_EQ(lastError(), copyFileError(project.path("absent.opj"), project.newPath("amp.opj")));
    EXPECT_FALSE(project.existsNew("amp.opj"));
}

// The library writes a new file beside the old one. Where the folder is closed to that, reading still
// succeeds, and the first step that has something to change fails.
TEST(DraftelProjectFile, WhateverCannotBeWrittenIsReportedForTheNewProject) {
    const auto outputs = [](const std::string& name) {
        return withFolders("", Json::array({folderOf(name, {{"./moved.txt", "X"}})}));
    };
    ProjectJson design;
    design.designResources = {{"..\\boards\\amp.dsn", "Schematic Design"}};
    ProjectJson library;
    library.libraries = {{"./moved.olb", "Schematic Library"}};
    ProjectJson profiles;
    profiles.active = "./x.sim";
    const std::vector<std::pair<const char*, ProjectJson>> cases = {
        {"design", design},
        {"library", library},
        {"simulator library",
         withFolders("",
                     Json::array({folderOf(
                         "Tevrix Resources", {},
                         Json::array({folderOf("Include Files", {{"./moved.inc", "TevrixLibrary"}})}))}))},
        {"profiles", profiles},
        {"outputs", outputs("Outputs")},
        {"item", withFolders("old.out", Json::array())},
        {"simulator entry", outputs("Tevrix Resources")},
        {"other folder", outputs("Translator")},
        {"other sub-folder",
         withFolders("",
                     Json::array({folderOf("Simulation Resources", {},
                                           Json::array({folderOf("Indesign", {{"./moved.ind", "X"}})}))}))},
    };
    for (const auto& [what, before] : cases) {
        UpdatedProject project;
        project.converter.addRelocation(project.folder.path("boards/amp.dsn"), "./amp.dsn");
        project.write("amp.opj", before.text());
        project.folder.write("new/amp.opj", "");
        openToAll(project.folder.path());
        ASSERT_EQ(chmod(project.destination.c_str(), 0555), 0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(
                project.converter.updateProjectFile(project.path("amp.opj"), project.newPath("amp.opj")),
                10110);
            EXPECT_EQ(lastError(), writeFileError(project.newPath("amp.opj")));
            return true;
        })) << what;
        EXPECT_EQ(project.readNew("amp.opj"), before.text()) << what;
    }
}

TEST(DraftelProjectFile, WithNothingToChangeNothingIsWritten) {
    UpdatedProject project;
    const ProjectJson before = withFolders("", Json::array({folderOf("Outputs", {{".\\gone.txt", "X"}})}));
    project.write("amp.opj", before.text());
    project.folder.write("new/amp.opj", "");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.destination.c_str(), 0555), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.updateProjectFile(project.path("amp.opj"), project.newPath("amp.opj")),
                  0);
        return true;
    }));
    EXPECT_EQ(project.readNew("amp.opj"), before.text());
}

TEST(DraftelProjectFile, AStepThatFailsLeavesWhatTheStepsBeforeItWrote) {
    UpdatedProject project;
    project.write("stay.txt", "bytes");
    project.folder.makeFolder("new/stay.txt");
    const auto text = [](const std::string& library) {
        ProjectJson json;
        json.item = "old.out";
        json.libraries = {{library, "Schematic Library"}};
        json.folders = Json::array({folderOf("Outputs", {{"stay.txt", "X"}})});
        return json.text();
    };
    EXPECT_EQ(project.update(text("./moved.olb")), 10108);
    EXPECT_EQ(project.readNew("amp.opj"), text(".\\amp-tevrixfiles\\moved.olb"));
}

TEST(DraftelProjectFile, AReadOnlyProjectIsConvertedAndStaysReadOnly) {
    UpdatedProject project;
    project.write("amp.opj", withFolders("old.out", Json::array()).text());
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp.opj").c_str(), 0444), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.updateProjectFile(project.path("amp.opj"), project.newPath("amp.opj")),
                  0);
        return true;
    }));
    EXPECT_EQ(project.readNew("amp.opj"), withFolders("", Json::array()).text());
    struct stat status {};
    ASSERT_EQ(stat(project.path("amp.opj").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(0444U));
}

}  // namespace
