// designInformation_test.cpp
//
// What a Draftel conversion learns before it moves anything: the design file, its root schematics, the
// simulation profiles; and the records that it keeps of the profiles.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"
#include "support/builtFiles.h"

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using tvxconv::DraftelProjectConverter;
using Strings = std::vector<std::string>;

// A project file with these paths in "Design Resources", and these registered profiles.
std::string projectWith(const Strings& designResources, const Strings& profiles = {}) {
    nlohmann::ordered_json files = nlohmann::ordered_json::array();
    for (const std::string& path : designResources) files.push_back({{"path", path}, {"type", "any"}});
    nlohmann::ordered_json registered = nlohmann::ordered_json::array();
    for (const std::string& path : profiles) registered.push_back({{"path", path}});
    const nlohmann::ordered_json root = {{"folders", {{{"name", "Design Resources"}, {"files", files}}}},
                                         {"simulationProfiles", {{"profiles", registered}}}};
    return root.dump();
}

struct Design {
    std::string path = "left over";
    std::string folder = "left over";
    std::string base = "left over";

    friend bool operator==(const Design&, const Design&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Design& design) {
        return out << design.path << " | " << design.folder << " | " << design.base;
    }
};

Design designOf(const DraftelProjectConverter& converter) {
    Design design;
    converter.getDesignFilePath(design.path);
    converter.getDesignDir(design.folder);
    converter.getDesignFileBaseName(design.base);
    return design;
}

const Design kNoDesign = {"", "", ""};

// --- the design's paths ---

TEST(DraftelDesign, UnsetValuesAre1AndEmpty) {
    const DraftelProjectConverter converter("/p/amp.opj");
    std::string text = "left over";
    EXPECT_EQ(converter.getDesignFilePath(text), 1);
    EXPECT_EQ(text, "");
    text = "left over";
    EXPECT_EQ(converter.getDesignDir(text), 1);
    EXPECT_EQ(text, "");
    text = "left over";
    EXPECT_EQ(converter.getDesignFileBaseName(text), 1);
    EXPECT_EQ(text, "");
}

TEST(DraftelDesign, PathsAreKeptWithForwardSlashes) {
    DraftelProjectConverter converter(nullptr);
    EXPECT_EQ(converter.setDesignFilePath("C:\\p\\Amp.dsn"), 0);
    EXPECT_EQ(converter.setDesignDir("C:\\p/q\\"), 0);
    EXPECT_EQ(converter.setDesignFileBaseName("Amp"), 0);
    EXPECT_EQ(designOf(converter), (Design{"C:/p/Amp.dsn", "C:/p/q/", "Amp"}));
}

// --- the design file ---

// In the paths, @DIR@ stands for the project folder, @UP@ for the folder that it is in.
std::string filledIn(const DraftelProject& project, const std::string& text) {
    return replaced(replaced(text, "@DIR@", project.dir), "@UP@", project.folder.path());
}

TEST(DraftelDesign, TheDesignIsFoundWhereTheProjectSays) {
    struct Case {
        Strings entries;
        std::string file;  // the design that is there
        Design found;
    };
    const std::vector<Case> cases = {
        {{".\\board.dsn"}, "@DIR@/board.dsn", {"@DIR@/board.dsn", "@DIR@", "board"}},
        {{"./board.dsn"}, "@DIR@/board.dsn", {"@DIR@/board.dsn", "@DIR@", "board"}},
        {{"board.dsn"}, "@DIR@/board.dsn", {"@DIR@/board.dsn", "@DIR@", "board"}},
        {{"b.dsn"}, "@DIR@/b.dsn", {"@DIR@/b.dsn", "@DIR@", "b"}},
        {{"sub\\board.dsn"}, "@DIR@/sub/board.dsn", {"@DIR@/sub/board.dsn", "@DIR@/sub", "board"}},
        {{".\\sub/deep\\board.dsn"},
         "@DIR@/sub/deep/board.dsn",
         {"@DIR@/sub/deep/board.dsn", "@DIR@/sub/deep", "board"}},
        {{"..\\other\\board.dsn"}, "@UP@/other/board.dsn", {"@UP@/other/board.dsn", "@UP@/other", "board"}},
        {{"../board.dsn"}, "@UP@/board.dsn", {"@UP@/board.dsn", "@UP@", "board"}},
        {{"@UP@/other/board.dsn"}, "@UP@/other/board.dsn", {"@UP@/other/board.dsn", "@UP@/other", "board"}},
        {{"@UP@\\other\\board.dsn"}, "@UP@/other/board.dsn", {"@UP@/other/board.dsn", "@UP@/other", "board"}},
        // Absolute by its second byte, but without any folder.
        {{"C:board.dsn"}, "@DIR@/C:board.dsn", {"@DIR@/C:board.dsn", "@DIR@", "C:board"}},
        {{"board.rev2.dsn"}, "@DIR@/board.rev2.dsn", {"@DIR@/board.rev2.dsn", "@DIR@", "board"}},
        // The spelling of the entry is kept, also where the file is spelled otherwise.
        {{".\\Board.DSN"}, "@DIR@/Board.DSN", {"@DIR@/Board.DSN", "@DIR@", "Board"}},
        {{".\\Board.DSN"}, "@DIR@/board.dsn", {"@DIR@/Board.DSN", "@DIR@", "Board"}},
        {{"amp.dbk", "amp.olb", "Amp2.DSN"}, "@DIR@/Amp2.DSN", {"@DIR@/Amp2.DSN", "@DIR@", "Amp2"}},
        {{"x.dsn.bak", "dsn", "adsn", "", "board.dsn"},
         "@DIR@/board.dsn",
         {"@DIR@/board.dsn", "@DIR@", "board"}},
        // The first design counts, whatever else there is.
        {{"board.dsn", "amp.dsn"}, "@DIR@/board.dsn", {"@DIR@/board.dsn", "@DIR@", "board"}},
    };
    for (const Case& entry : cases) {
        if (kOnWindows && entry.file.find(':') != std::string::npos) continue;  // no name of a file there
        DraftelProject project;
        Strings entries;
        for (const std::string& path : entry.entries) entries.push_back(filledIn(project, path));
        project.write("amp.opj", projectWith(entries));
        writeFile(filledIn(project, entry.file), "design");
        project.converter.setProjectDir(project.dir);
        EXPECT_EQ(project.converter.readDesignInformation(), 0) << entry.entries.back();
        const Design expected = {filledIn(project, entry.found.path), filledIn(project, entry.found.folder),
                                 entry.found.base};
        EXPECT_EQ(designOf(project.converter), expected) << entry.entries.back();
        EXPECT_EQ(lastError(), LastError()) << entry.entries.back();
    }
}

TEST(DraftelDesign, AProjectWithoutAReadableDesignIsNamed) {
    struct Case {
        const char* what;
        std::string text;
    };
    const std::vector<Case> cases = {
        {"no JSON", "[ project ]"},
        {"an empty file", ""},
        {"a wrong type", R"({ "folders": [ { "name": "Design Resources", "files": 1 } ] })"},
        {"no folders", "{}"},
        {"no such folder", R"({ "folders": [ { "name": "Outputs", "files": [ { "path": "amp.dsn" } ] } ] })"},
        {"no files", projectWith({})},
        {"no design", projectWith({"amp.opj", "dsn", "amp.dsn.txt"})},
        {"a design that is not there", projectWith({".\\other.dsn"})},
        {"a first design that is not there", projectWith({".\\other.dsn", ".\\amp.dsn"})},
        {"an absolute one that is not there", projectWith({"/no/such/amp.dsn"})},
        {"a folder", projectWith({"folder.dsn"})},
        // A third byte that is a slash makes the path absolute, here: below the current folder.
        {"a slash in third place", projectWith({"ab/amp.dsn"})},
    };
    for (const Case& entry : cases) {
        DraftelProject project;
        project.write("amp.opj", entry.text);
        project.write("ab/amp.dsn", "design");
        project.folder.makeFolder("project/folder.dsn");
        project.converter.setProjectDir(project.dir);
        EXPECT_EQ(project.converter.readDesignInformation(), 10109) << entry.what;
        EXPECT_EQ(lastError(), readFileError(project.path("amp.opj"))) << entry.what;
        EXPECT_EQ(designOf(project.converter), kNoDesign) << entry.what;
    }
}

TEST(DraftelDesign, AMissingProjectFileIsNamed) {
    DraftelProject project;
    project.remove("amp.opj");
    project.converter.setProjectDir(project.dir);
    EXPECT_EQ(project.converter.readDesignInformation(), 10109);
    EXPECT_EQ(lastError(), readFileError(project.path("amp.opj")));
}

TEST(DraftelDesign, ADesignThatCannotBeReadCountsAsMissing) {
    DraftelProject project;
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp.dsn").c_str(), 0), 0);
    project.converter.setProjectDir(project.dir);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(project.converter.readDesignInformation(), 10109);
        EXPECT_EQ(lastError(), readFileError(project.path("amp.opj")));
        return true;
    }));
}

TEST(DraftelDesign, APathThatCannotBeResolvedIsNoDesign) {
    DraftelProject project;
    project.converter.setProjectDir("project");  // without a slash nothing can be joined to it
    EXPECT_EQ(project.converter.readDesignInformation(), 10109);
    EXPECT_EQ(lastError(), readFileError(project.path("amp.opj")));
}

TEST(DraftelDesign, AConversionStopsAtAMissingDesignAndNamesTheProject) {
    DraftelProject project;
    project.remove("amp.dsn");
    EXPECT_EQ(project.converter.convert(2, project.destination), 10109);
    EXPECT_EQ(lastError(), readFileError(project.path("amp.opj")));
}

// --- the root schematics ---

TEST(DraftelDesign, TheRootSchematicsComeInTheOrderOfTheDesign) {
    DraftelProject project;
    project.write("amp.dsn", designText({"TOP", "a", "Bottom", "a"}));
    project.converter.setDesignFilePath(project.path("amp.dsn"));
    project.converter.rootSchematics() = {"left over"};
    EXPECT_EQ(project.converter.readRootSchematics(), 0);
    EXPECT_THAT(project.converter.rootSchematics(), ElementsAre("TOP", "a", "Bottom", "a"));
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelDesign, ADesignMayHaveNoRootSchematics) {
    DraftelProject project;
    project.write("amp.dsn", designText({}));
    project.converter.setDesignFilePath(project.path("amp.dsn"));
    project.converter.rootSchematics() = {"left over"};
    EXPECT_EQ(project.converter.readRootSchematics(), 0);
    EXPECT_THAT(project.converter.rootSchematics(), IsEmpty());
}

TEST(DraftelDesign, ADesignThatTheReaderRefusesIsNamed) {
    for (const char* text : {"", "design", "{}", "[]", R"({ "rootSchematics": "S1" })",
                             R"({ "rootSchematics": [ "S1", 2 ] })"}) {
        DraftelProject project;
        project.write("amp.dsn", text);
        project.converter.setDesignFilePath(project.path("amp.dsn"));
        project.converter.rootSchematics() = {"left over"};
        EXPECT_EQ(project.converter.readRootSchematics(), 10111) << text;
        EXPECT_EQ(lastError(), readDesignFileError(project.path("amp.dsn"))) << text;
        EXPECT_THAT(project.converter.rootSchematics(), IsEmpty()) << text;
    }
}

TEST(DraftelDesign, WithoutADesignTheMessageHasNoName) {
    forgetLastError();
    DraftelProjectConverter converter(nullptr);
    converter.rootSchematics() = {"left over"};
    EXPECT_EQ(converter.readRootSchematics(), 10111);
    EXPECT_EQ(lastError(), readDesignFileError(""));
    EXPECT_THAT(converter.rootSchematics(), IsEmpty());
}

TEST(DraftelDesign, AReaderThatCannotBeOpenedLeavesNoRootSchematics) {
    DraftelProject project;
    project.converter.setDesignFilePath(project.path("amp.dsn"));
    project.converter.rootSchematics() = {"left over"};
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        EXPECT_EQ(project.converter.readRootSchematics(), 10111);
        EXPECT_EQ(lastError(), readDesignFileError(project.path("amp.dsn")));
        EXPECT_THAT(project.converter.rootSchematics(), IsEmpty());
        return true;
    }));
}

// The design reader is looked for beside the program first, and then where the loader is told to look. So a
// copy of the program in a folder of its own meets the file that lies there under the reader's name.
void expectReaderRefused(const std::string& reader) {
    const DraftelProject project;
    const std::string program = project.folder.write("bin/converter.exe", readBytes(tests::kProgramFile));
    ASSERT_EQ(chmod(program.c_str(), 0755), 0);
    // Beside the program is also where Windows looks for the library that it needs.
    project.folder.write(std::string("bin/") + tests::kProjectLibraryName,
                         readBytes(tests::kProjectLibraryFile));
    project.folder.write(std::string("bin/") + tests::kReaderName, reader);
    const ProgramResult result =
        runProgram({program, "draftel", project.path("amp.opj"), "--to", project.destination, "--json"}, "",
                   {"LD_LIBRARY_PATH=" + project.folder.path("bin") + ":" TVXCONV_BIN_DIR});
    EXPECT_EQ(result.status, 1) << result.errors;
    const nlohmann::json answer = nlohmann::json::parse(result.output, nullptr, false);
    ASSERT_TRUE(answer.is_object()) << result.output;
    const LastError error = readDesignFileError(project.path("amp.dsn"));
    EXPECT_EQ(answer.value("status", -1), 10111);
    EXPECT_EQ(answer.value("errorCode", -1), 10111);
    EXPECT_EQ(answer.value("errorMessage", ""), error.message);
}

TEST(DraftelDesign, AReaderThatCannotBeLoadedStopsTheConversion) {
    expectReaderRefused("no library");
}

TEST(DraftelDesign, AReaderWithoutItsEntryStopsTheConversion) {
    expectReaderRefused(readBytes(tests::kLibraryFile));
}

// --- the profiles ---

struct Profile {
    int status = -1;
    std::string name = "left over";
    std::string schematic = "left over";
    std::string registeredPath = "left over";

    friend bool operator==(const Profile&, const Profile&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Profile& profile) {
        return out << profile.status << " " << profile.name << " | " << profile.schematic << " | "
                   << profile.registeredPath;
    }
};

Profile recordOf(const DraftelProjectConverter& converter, const std::string& fileBase) {
    Profile profile;
    profile.status =
        converter.findProfileRecord(fileBase, profile.name, profile.schematic, profile.registeredPath);
    return profile;
}

const Profile kNoRecord = {1, "", "", ""};

// Discovers the profiles of a project that registers these paths.
int discover(DraftelProject& project, const Strings& profiles) {
    project.write("amp.opj", projectWith({"amp.dsn"}, profiles));
    project.converter.setProjectDir(project.dir);
    project.converter.setDesignFileBaseName("amp");
    return project.converter.discoverProfiles();
}

TEST(DraftelDesign, AProfileIsRecordedWithTheNamesInItsFile) {
    DraftelProject project;
    EXPECT_EQ(discover(project, {".\\amp-S1-tran.sim"}), 0);
    EXPECT_EQ(recordOf(project.converter, "amp-S1-tran"), (Profile{0, "tran", "S1", ".\\amp-S1-tran.sim"}));
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelDesign, TheProfileFileLiesInTheProjectFolderWhateverItsRegisteredFolder) {
    for (const char* registered :
         {"amp-S1-tran.sim", "sub\\amp-S1-tran.sim", "../amp-S1-tran.sim", "C:\\x\\amp-S1-tran.sim",
          "/x/amp-S1-tran.sim", "amp-S1-tran.old.sim", "amp-S1-tran"}) {
        DraftelProject project;
        EXPECT_EQ(discover(project, {registered}), 0) << registered;
        EXPECT_EQ(recordOf(project.converter, "amp-S1-tran"), (Profile{0, "tran", "S1", registered}))
            << registered;
    }
}

TEST(DraftelDesign, WhatAProfileFileSaysOfItself) {
    const std::string filling(1023, 'x');
    struct Case {
        const char* what;
        std::string text;
        std::string name;
        std::string schematic;
    };
    const std::vector<Case> cases = {
        {"both", "ProfileName= \"p\" \nRootSchematics= \"S\" \n", "p", "S"},
        {"the other way round", "RootSchematics= \"S\" \nProfileName= \"p\" \n", "p", "S"},
        {"no root schematic", "ProfileName= \"p\" \nOther= \"S\" \n", "p", ""},
        {"no name", "RootSchematics= \"S\" \n", "", "S"},
        {"nothing", "", "", ""},
        {"other lines only", "\n\nDesignFile= \"amp.dsn\" \n+1 \"x\"\n", "", ""},
        {"any letter case of the keys", "profilename= \"p\"\nROOTSCHEMATICS= \"S\"\n", "p", "S"},
        {"longer keys", "ProfileNames= \"p\"\nRootSchematicsAll= \"S\"\n", "p", "S"},
        {"shorter keys", "ProfileNam= \"p\"\nRootSchematic= \"S\"\n", "", ""},
        {"keys behind a blank", " ProfileName= \"p\"\n\tRootSchematics= \"S\"\n", "", ""},
        {"without an equals sign", "ProfileName\"p\"\nRootSchematics\"S\"\n", "p", "S"},
        {"more quotes", "ProfileName= \"p\" \"q\"\nRootSchematics= \"S\"T\"\n", "p", "S"},
        {"later lines replace", "ProfileName= \"a\"\nProfileName= \"p\"\nRootSchematics= \"S\"\n", "p", "S"},
        {"CRLF", "ProfileName= \"p\" \r\nRootSchematics= \"S\" \r\n", "p", "S"},
        {"no last line end", "RootSchematics= \"S\"\nProfileName= \"p\"", "p", "S"},
        {"blanks in the values", "ProfileName= \" p q \"\nRootSchematics= \"S 1\"\n", " p q ", "S 1"},
        {"no closing quote", "RootSchematics= \"S\"\nProfileName= \"p\n", "p\n", "S"},
        {"no closing quote, CRLF", "RootSchematics= \"S\"\nProfileName= \"p\r\n", "p\r\n", "S"},
        {"no closing quote at the end", "RootSchematics= \"S\"\nProfileName= \"p", "p", "S"},
        {"a NUL in a value", std::string("RootSchematics= \"S\"\nProfileName= \"p\0q\"\n", 38),
         std::string("p\0q", 3), "S"},
        {"a NUL in a line before", std::string("x\0y\nProfileName= \"p\"\nRootSchematics= \"S\"\n", 40), "p",
         "S"},
        // A long line comes in pieces of 1023 bytes, each of them a line.
        {"a key at the second piece", filling + "ProfileName= \"p\"\nRootSchematics= \"S\"\n", "p", "S"},
        {"a key after the beginning of the second piece",
         filling + "yProfileName= \"p\"\nRootSchematics= \"S\"\n", "", "S"},
        {"a value over the end of a piece",
         "ProfileName= \"" + std::string(1100, 'p') + "\"\nRootSchematics= \"S\"\n", std::string(1009, 'p'),
         "S"},
    };
    for (const Case& entry : cases) {
        if (tests::kOnWindows && entry.name.ends_with("\r\n")) continue;  // lines are read without it there
        DraftelProject project;
        project.write("amp-S1-tran.sim", entry.text);
        EXPECT_EQ(discover(project, {"amp-S1-tran.sim"}), 0) << entry.what;
        EXPECT_EQ(recordOf(project.converter, "amp-S1-tran"),
                  (Profile{0, entry.name, entry.schematic, "amp-S1-tran.sim"}))
            << entry.what;
    }
}

TEST(DraftelDesign, AProfileWithALineWithoutAValueIsSkipped) {
    for (const char* line :
         {"ProfileName= \"\" \n", "ProfileName= tran\n", "ProfileName\n", "ProfileName", "ProfileName= \"",
          "RootSchematics= \"\"\n", "RootSchematics= S1\r\n", "rootschematicsX\n"}) {
        DraftelProject project;
        project.write("amp-S1-bad.sim", profileText("S1", "bad") + line);
        EXPECT_EQ(discover(project, {"amp-S1-bad.sim", "amp-S1-tran.sim"}), 0) << line;
        EXPECT_EQ(recordOf(project.converter, "amp-S1-bad"), kNoRecord) << line;
        EXPECT_EQ(recordOf(project.converter, "amp-S1-tran"), (Profile{0, "tran", "S1", "amp-S1-tran.sim"}))
            << line;
        EXPECT_EQ(lastError(), LastError()) << line;
    }
}

TEST(DraftelDesign, AProfileWithoutAFileIsRecordedWithoutNames) {
    DraftelProject project;
    project.folder.makeFolder("project/amp-S1-folder.sim");
    EXPECT_EQ(discover(project, {".\\amp-S1-gone.sim", ".\\amp-S1-folder.sim"}), 0);
    EXPECT_EQ(recordOf(project.converter, "amp-S1-gone"), (Profile{0, "", "", ".\\amp-S1-gone.sim"}));
    EXPECT_EQ(recordOf(project.converter, "amp-S1-folder"), (Profile{0, "", "", ".\\amp-S1-folder.sim"}));
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelDesign, AProfileFileThatMayNotBeReadCountsAsMissing) {
    DraftelProject project;
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp-S1-tran.sim").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(discover(project, {"amp-S1-tran.sim"}), 0);
        EXPECT_EQ(recordOf(project.converter, "amp-S1-tran"), (Profile{0, "", "", "amp-S1-tran.sim"}));
        return true;
    }));
}

TEST(DraftelDesign, AProfileFileThatCannotBeOpenedIsReported) {
    DraftelProject project;
    project.converter.setProjectDir(project.dir);
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        tvxconv::ProfileNames names;
        names.profile = names.schematic = "left over";
        EXPECT_EQ(project.converter.readProfileNames("amp-S1-tran", names), 10105);
        EXPECT_EQ(names.profile + names.schematic, "");
        EXPECT_EQ(lastError(), openForReadingError(project.path("amp-S1-tran.sim")));
        return true;
    }));
}

TEST(DraftelDesign, OfProfilesWithOneBaseNameTheFirstCounts) {
    DraftelProject project;
    EXPECT_EQ(discover(project, {"a\\amp-S1-tran.sim", "b\\AMP-s1-TRAN.sim", "amp-S1-tran.sim"}), 0);
    EXPECT_EQ(recordOf(project.converter, "amp-s1-tran"), (Profile{0, "tran", "S1", "a\\amp-S1-tran.sim"}));
    Strings fileBases = {"left over"};
    Strings profiles = {"left over"};
    EXPECT_EQ(project.converter.getProfilesOfSchematic("S1", fileBases, profiles), 0);
    EXPECT_THAT(fileBases, ElementsAre("amp-S1-tran"));
    EXPECT_THAT(profiles, ElementsAre("tran"));
}

TEST(DraftelDesign, AnEntryWithoutAFileNameIsSkipped) {
    DraftelProject project;
    project.write(".sim", profileText("S1", "nameless"));
    EXPECT_EQ(discover(project, {"", "sub\\", "sub/", "amp-S1-tran.sim"}), 0);
    EXPECT_EQ(recordOf(project.converter, ""), kNoRecord);
    EXPECT_EQ(recordOf(project.converter, "amp-S1-tran").status, 0);
}

TEST(DraftelDesign, WithoutADesignNothingIsRecorded) {
    DraftelProject project;
    project.converter.setProjectDir(project.dir);
    EXPECT_EQ(project.converter.discoverProfiles(), 0);
    EXPECT_EQ(recordOf(project.converter, "amp-S1-tran"), kNoRecord);
}

TEST(DraftelDesign, AProjectMayRegisterNoProfiles) {
    DraftelProject project;
    EXPECT_EQ(discover(project, {}), 0);
    EXPECT_EQ(recordOf(project.converter, "amp-S1-tran"), kNoRecord);
}

TEST(DraftelDesign, AProjectWhoseProfilesCannotBeListedIsNamed) {
    for (const char* text :
         {"", "{", R"({ "simulationProfiles": [] })", R"({ "simulationProfiles": { "active": 1 } })"}) {
        DraftelProject project;
        project.write("amp.opj", text);
        project.converter.setProjectDir(project.dir);
        project.converter.setDesignFileBaseName("amp");
        EXPECT_EQ(project.converter.discoverProfiles(), 10109) << text;
        EXPECT_EQ(lastError(), readFileError(project.path("amp.opj"))) << text;
    }
}

// --- the records ---

TEST(DraftelDesign, ARecordIsFoundByItsFileBaseIgnoringCase) {
    DraftelProjectConverter converter(nullptr);
    EXPECT_EQ(recordOf(converter, "amp-S1-tran"), kNoRecord);
    EXPECT_EQ(converter.addProfileRecord("Amp-S1-Tran", "Tran", "S1", "r1"), 0);
    EXPECT_EQ(converter.addProfileRecord("amp-S1-ac", "ac", "S1", "r2"), 0);
    for (const char* key : {"Amp-S1-Tran", "amp-s1-tran", "AMP-S1-TRAN"}) {
        EXPECT_EQ(recordOf(converter, key), (Profile{0, "Tran", "S1", "r1"})) << key;
    }
    EXPECT_EQ(recordOf(converter, "AMP-S1-AC"), (Profile{0, "ac", "S1", "r2"}));
    for (const char* key : {"", "Amp-S1-Tran.sim", "Amp-S1-Tra", "Tran", "S1"}) {
        EXPECT_EQ(recordOf(converter, key), kNoRecord) << key;
    }
}

TEST(DraftelDesign, TheFirstRecordOfAFileBaseStays) {
    DraftelProjectConverter converter(nullptr);
    EXPECT_EQ(converter.addProfileRecord("base", "p1", "S1", "r1"), 0);
    EXPECT_EQ(converter.addProfileRecord("BASE", "p2", "S2", "r2"), 0);
    EXPECT_EQ(recordOf(converter, "base"), (Profile{0, "p1", "S1", "r1"}));
    Strings fileBases = {"left over"};
    Strings profiles = {"left over"};
    EXPECT_EQ(converter.getProfilesOfSchematic("S2", fileBases, profiles), 0);
    EXPECT_THAT(fileBases, IsEmpty());
    EXPECT_THAT(profiles, IsEmpty());
}

TEST(DraftelDesign, TheProfilesOfASchematicComeInTheOrderOfAdding) {
    DraftelProjectConverter converter(nullptr);
    converter.addProfileRecord("z", "pz", "S1", "");
    converter.addProfileRecord("y", "py", "S2", "");
    converter.addProfileRecord("a", "pa", "s1", "");
    converter.addProfileRecord("b", "pz", "S1", "");
    converter.addProfileRecord("n", "pn", "", "");
    struct Case {
        const char* schematic;
        Strings fileBases;
        Strings profiles;
    };
    const std::vector<Case> cases = {{"S1", {"z", "a", "b"}, {"pz", "pa", "pz"}},
                                     {"s1", {"z", "a", "b"}, {"pz", "pa", "pz"}},
                                     {"S2", {"y"}, {"py"}},
                                     {"", {"n"}, {"pn"}},
                                     {"S", {}, {}}};
    for (const Case& entry : cases) {
        Strings fileBases = {"left over"};
        Strings profiles = {"left", "over"};
        EXPECT_EQ(converter.getProfilesOfSchematic(entry.schematic, fileBases, profiles), 0)
            << entry.schematic;
        EXPECT_EQ(fileBases, entry.fileBases) << entry.schematic;
        EXPECT_EQ(profiles, entry.profiles) << entry.schematic;
    }
}

}  // namespace
