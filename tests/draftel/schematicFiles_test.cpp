// schematicFiles_test.cpp
//
// The move of the files that belong to a schematic and to none of its profiles: which are moved, where from,
// what they are called then, and what happens when one of them cannot be written.

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
using tvxconv::DraftelProjectConverter;
namespace fs = std::filesystem;

const std::string kEmptyAnalysis = "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n)\n";

class SchematicFiles : public testing::Test {
protected:
    SchematicFiles() { project_.prepareSteps(); }

    int relocate() {
        return project_.converter.relocateSchematicFiles("amp", "S1", project_.destination,
                                                         project_.schematicFolder);
    }
    Moves moves() { return movesOf(project_.converter); }
    std::vector<std::string>& extensions() { return project_.converter.schematicLevelExtensions(); }

    DraftelProject project_;
};

// --- which files, and their names ---

TEST_F(SchematicFiles, TakeTheNameOfTheirSchematic) {
    struct Case {
        const char* old;
        const char* now;
    };
    const std::vector<Case> cases = {
        {"amp-S1.als", "S1.als"},
        {"amp-S1.par", "S1.par"},
        {"amp-S1.opt", "S1.opt"},
        {"amp-S1.aap", "S1.aap"},
        {"amp-S1.prp", "S1_sch.prp"},
        {"amp-S1.opt.log", "S1.opt.log"},
        {"amp-S1.monte.log", "S1.monte.log"},
        {"amp-S1.sens.log", "S1.sens.log"},
        {"amp-S1.smoke.log", "S1.smoke.log"},
        {"amp-S1-default.mrk", "S1-default.mrk"},
    };
    Moves expectedMoves;
    for (const Case& entry : cases) {
        const std::string old = entry.old;
        // The optimizer file and the analysis profile are rewritten, but there is nothing in them to change.
        const std::string text = old.ends_with(".opt")   ? "param \"x\"\r\n"s
                                 : old.ends_with(".aap") ? kEmptyAnalysis
                                                         : "bytes\r\n\0of "s + old;
        project_.write(old, text);
        expectedMoves["./" + lowerCase(old)] = "./amp-tevrixfiles/s1/" + lowerCase(entry.now);
    }
    for (const char* name : {"amp-S1.net", "amp-S1.sim", "amp-S1.txt", "amp-S1", "amp-S1.log",
                             "amp-S1.als.bak", "amp-S2.als", "amp.prp", "S1.par", "amp-S1-default.mrk.old",
                             "amp-S1.mrk", "amp-S1.default.mrk", "amp-S1-prp", "default.mrk"}) {
        project_.write(name, "not to be moved by this step");
    }
    Tree expected = project_.tree();
    for (const Case& entry : cases) {
        expected[std::string("new/amp-TevrixFiles/S1/") + entry.now] = project_.read(entry.old);
    }
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(project_.tree(), expected);
    EXPECT_EQ(moves(), expectedMoves);
    EXPECT_EQ(lastError(), LastError());
}

TEST_F(SchematicFiles, AreNoneInAnEmptyProject) {
    const Tree before = project_.tree();
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(project_.tree(), before);
    EXPECT_THAT(moves(), IsEmpty());
    EXPECT_EQ(lastError(), LastError());
}

TEST_F(SchematicFiles, WithoutExtensionsNoneIsMoved) {
    project_.write("amp-S1.als", "A");
    extensions().clear();
    EXPECT_EQ(relocate(), 0);
    EXPECT_FALSE(project_.existsNew("amp-TevrixFiles/S1/S1.als"));
    EXPECT_THAT(moves(), IsEmpty());
}

TEST_F(SchematicFiles, NamesComeFromTheArguments) {
    fs::create_directories(project_.root + "/Top");
    project_.write("Board-Top level.als", "A");
    project_.write("Board-Top level-default.mrk", "M");
    EXPECT_EQ(project_.converter.relocateSchematicFiles("Board", "Top level", project_.destination,
                                                        project_.root + "/Top"),
              0);
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/Top/Top level.als"), "A");
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/Top/Top level-default.mrk"), "M");
    EXPECT_EQ(moves(),
              (Moves{{"./board-top level.als", "./amp-tevrixfiles/top/top level.als"},
                     {"./board-top level-default.mrk", "./amp-tevrixfiles/top/top level-default.mrk"}}));
}

// The netlist and the profile files have moved by then.
TEST_F(SchematicFiles, NetlistsAndProfileFilesAreLeftToTheirOwnSteps) {
    extensions() = {"net", "NET", "Net", "sim", "SIM", "Sim"};
    for (const std::string& extension : extensions()) project_.write("amp-S1." + extension, extension);
    const Tree before = project_.tree();
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(project_.tree(), before);
    EXPECT_THAT(moves(), IsEmpty());
}

TEST_F(SchematicFiles, ExtensionsAreComparedIgnoringCase) {
    extensions() = {"DEFAULT.MRK", "Prp", "OPT", "Aap", "ALS"};
    project_.write("amp-S1-default.mrk", "M");
    project_.write("amp-S1.prp", "P");
    project_.write("amp-S1.opt", "sim\nstays\n");
    project_.write("amp-S1.aap", "(x \"Advanced Analysis Profile\")");
    project_.write("amp-S1.als", "A");
    Tree expected = project_.tree();
    const std::string folder = "new/amp-TevrixFiles/S1/";
    expected[folder + "S1-default.mrk"] = "M";
    expected[folder + "S1_sch.prp"] = "P";
    expected[folder + "S1.OPT"] = "stays\n";
    expected[folder + "S1.Aap"] = kEmptyAnalysis;
    expected[folder + "S1.ALS"] = "A";
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(project_.tree(), expected);
    EXPECT_EQ(lastError(), LastError());
}

TEST_F(SchematicFiles, AreFoundInAnyLetterCase) {
    project_.write("AMP-s1.ALS", "A");
    project_.write("Amp-S1-Default.MRK", "M");
    project_.write("amp-s1.Opt", "stays\n");
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/S1.als"), "A");
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/S1-default.mrk"), "M");
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/S1.opt"), "stays\n");
    EXPECT_EQ(moves(), (Moves{{"./amp-s1.als", "./amp-tevrixfiles/s1/s1.als"},
                              {"./amp-s1.opt", "./amp-tevrixfiles/s1/s1.opt"},
                              {"./amp-s1-default.mrk", "./amp-tevrixfiles/s1/s1-default.mrk"}}));
}

// Only the default marker lies with the project; what lies with the design is recorded by its whole path
// where that is not below the project.
TEST_F(SchematicFiles, LieWithTheDesignExceptForTheDefaultMarker) {
    struct Case {
        const char* designDir;  // below the folder that the project's folder is in
        const char* recorded;
    };
    for (const Case& entry :
         {Case{"project/pcb", "./pcb"}, Case{"pcb", "@UP@/pcb"}, Case{"project2", "@UP@/project2"}}) {
        DraftelProject project;
        project.prepareSteps();
        const std::string designDir = project.folder.path(entry.designDir);
        project.converter.setDesignDir(designDir);
        for (const std::string& folder : {project.dir, designDir}) {
            fs::create_directories(folder);
            const std::string where = folder == project.dir ? "project" : "design";
            writeFile(folder + "/amp-S1.par", where);
            writeFile(folder + "/amp-S1-default.mrk", where);
            writeFile(folder + "/amp-S1.opt", "ext \"x.mdp\" " + where + "\n");
            writeFile(folder + "/x.mdp", where);
        }
        Tree expected = project.tree();
        expected["new/amp-TevrixFiles/S1/S1.par"] = "design";
        expected["new/amp-TevrixFiles/S1/S1-default.mrk"] = "project";
        expected["new/amp-TevrixFiles/S1/S1.opt"] = "ext \"x.mdp\" design\n";
        expected["new/amp-TevrixFiles/S1/x.mdp"] = "project";
        EXPECT_EQ(project.converter.relocateSchematicFiles("amp", "S1", project.destination,
                                                           project.schematicFolder),
                  0);
        EXPECT_EQ(project.tree(), expected) << entry.designDir;
        const std::string recorded = lowerCase(replaced(entry.recorded, "@UP@", project.folder.path()));
        EXPECT_EQ(movesOf(project.converter),
                  (Moves{{recorded + "/amp-s1.par", "./amp-tevrixfiles/s1/s1.par"},
                         {recorded + "/amp-s1.opt", "./amp-tevrixfiles/s1/s1.opt"},
                         {"./amp-s1-default.mrk", "./amp-tevrixfiles/s1/s1-default.mrk"},
                         {"./x.mdp", "./amp-tevrixfiles/s1/x.mdp"}}))
            << entry.designDir;
    }
}

TEST_F(SchematicFiles, FoldersAndFilesThatMayNotBeReadAreLeftAlone) {
    project_.folder.makeFolder("project/amp-S1.opt");
    project_.folder.makeFolder("project/amp-S1.aap");
    project_.folder.makeFolder("project/amp-S1.sens.log");
    project_.folder.makeFolder("project/amp-S1-default.mrk");
    project_.write("amp-S1.par", "closed");
    project_.write("amp-S1.als", "open");
    openToAll(project_.folder.path());
    ASSERT_EQ(chmod(project_.path("amp-S1.par").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(relocate(), 0);
        EXPECT_EQ(lastError(), LastError());
        EXPECT_EQ(moves(), (Moves{{"./amp-s1.als", "./amp-tevrixfiles/s1/s1.als"}}));
        return true;
    }));
    EXPECT_EQ(treeOf(project_.schematicFolder), (Tree{{"S1.als", "open"}, {"tran/", ""}}));
}

TEST_F(SchematicFiles, WhatIsThereIsOverwritten) {
    project_.write("amp-S1.als", "new");
    project_.write("amp-S1.opt", "new\n");
    writeFile(project_.schematicFolder + "/S1.als", "an earlier and longer one");
    writeFile(project_.schematicFolder + "/s1.OPT", "an earlier and longer one\n");
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(treeOf(project_.schematicFolder),
              (Tree{{"S1.als", "new"}, {"s1.OPT", "new\n"}, {"tran/", ""}}));
}

// --- one file that cannot be written ---

TEST_F(SchematicFiles, OneThatCannotBeWrittenIsRecordedAndTheOthersFollow) {
    struct Case {
        const char* old;
        const char* now;
    };
    const std::vector<Case> cases = {{"amp-S1.als", "S1.als"},
                                     {"amp-S1.opt", "S1.opt"},
                                     {"amp-S1.prp", "S1_sch.prp"},
                                     {"amp-S1.opt.log", "S1.opt.log"},
                                     {"amp-S1-default.mrk", "S1-default.mrk"}};
    for (const Case& inTheWay : cases) {
        DraftelProject project;
        project.prepareSteps();
        Moves expectedMoves;
        for (const Case& entry : cases) {
            project.write(entry.old, "a line\n");
            expectedMoves["./"s + lowerCase(entry.old)] = "./amp-tevrixfiles/s1/" + lowerCase(entry.now);
        }
        const std::string newPath = project.schematicFolder + "/" + inTheWay.now;
        fs::create_directory(newPath);
        EXPECT_EQ(project.converter.relocateSchematicFiles("amp", "S1", project.destination,
                                                           project.schematicFolder),
                  0)
            << inTheWay.now;
        EXPECT_EQ(lastError(), inTheWay.old == "amp-S1.opt"s
                                   ? openForWritingError(newPath)
                                   : copyFileError(project.path(inTheWay.old), newPath));
        EXPECT_EQ(movesOf(project.converter), expectedMoves) << inTheWay.now;
        for (const Case& entry : cases) {
            if (entry.now == inTheWay.now) continue;
            EXPECT_EQ(readFile(project.schematicFolder + "/" + entry.now), "a line\n") << inTheWay.now;
        }
    }
}

TEST_F(SchematicFiles, WithoutAFolderToGoToAllAreRecorded) {
    project_.write("amp-S1.als", "A");
    project_.write("amp-S1.opt", "O");
    project_.write("amp-S1.smoke.log", "S");
    fs::remove_all(project_.schematicFolder);
    const Tree before = project_.tree();
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(lastError(),
              copyFileError(project_.path("amp-S1.smoke.log"), project_.schematicFolder + "/S1.smoke.log"));
    EXPECT_EQ(project_.tree(), before);
    EXPECT_EQ(moves(), (Moves{{"./amp-s1.als", "./amp-tevrixfiles/s1/s1.als"},
                              {"./amp-s1.opt", "./amp-tevrixfiles/s1/s1.opt"},
                              {"./amp-s1.smoke.log", "./amp-tevrixfiles/s1/s1.smoke.log"}}));
}

TEST_F(SchematicFiles, WithoutRoomOnTheDiskTheyAreRecorded) {
    project_.write("amp-S1.par", "P");
    EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
        EXPECT_EQ(relocate(), 0);
        EXPECT_EQ(lastError(),
                  copyFileError(project_.path("amp-S1.par"), project_.schematicFolder + "/S1.par"));
        EXPECT_EQ(moves(), (Moves{{"./amp-s1.par", "./amp-tevrixfiles/s1/s1.par"}}));
        return true;
    }));
}

TEST_F(SchematicFiles, ACopyTellsItsNewPathAlsoWhereItFails) {
    struct Case {
        const char* extension;
        const char* name;
    };
    const std::vector<Case> cases = {{"par", "Top.par"},
                                     {"MONTE.log", "Top.MONTE.log"},
                                     {"prp", "Top_sch.prp"},
                                     {"opt.log", "Top.opt.log"},
                                     {"default.mrk", "Top-default.mrk"},
                                     {"mrk", "Top.mrk"},
                                     {"sim", "Top.sim"},
                                     {"", "Top."},
                                     {"x_sch.prp", "Top.x_sch.prp"}};
    const std::string old = project_.write("any file", "bytes");
    for (const Case& entry : cases) {
        const std::string expected = project_.schematicFolder + "/" + entry.name;
        std::string newPath = "left over";
        EXPECT_EQ(project_.converter.copySchematicFile(newPath, old, "Top", project_.schematicFolder,
                                                       entry.extension),
                  0)
            << entry.name;
        EXPECT_EQ(newPath, expected);
        EXPECT_EQ(readFile(expected), "bytes") << entry.name;
        EXPECT_EQ(lastError(), LastError());

        const std::string absent = project_.path("absent");
        newPath = "left over";
        EXPECT_EQ(project_.converter.copySchematicFile(newPath, absent, "Top", project_.schematicFolder,
                                                       entry.extension),
                  10108)
            << entry.name;
        EXPECT_EQ(newPath, expected);
        EXPECT_EQ(lastError(), copyFileError(absent, expected));
        forgetLastError();
    }
    // The path that is read may be the one that is written.
    std::string path = old;
    EXPECT_EQ(project_.converter.copySchematicFile(path, path, "S", project_.schematicFolder, "als"), 0);
    EXPECT_EQ(path, project_.schematicFolder + "/S.als");
    EXPECT_EQ(readFile(path), "bytes");
}

TEST_F(SchematicFiles, OneThatIsItsOwnCopyKeepsItsBytes) {
    for (const char* extension : {"als", "opt"}) {
        for (const bool isHardLink : {true, false}) {
            DraftelProject project;
            project.prepareSteps();
            const std::string old = project.write(std::string("amp-S1.") + extension, "the only copy\n");
            const std::string place = project.schematicFolder + "/S1." + extension;
            isHardLink ? fs::create_hard_link(old, place) : tests::makeLink(old, place);
            EXPECT_EQ(project.converter.relocateSchematicFiles("amp", "S1", project.destination,
                                                               project.schematicFolder),
                      0);
            EXPECT_EQ(lastError(), extension == "opt"s ? openForWritingError(place) : LastError());
            EXPECT_EQ(readFile(old), "the only copy\n") << extension << isHardLink;
            EXPECT_EQ(readFile(place), "the only copy\n") << extension << isHardLink;
        }
    }
}

// --- in a conversion ---

// The project "amp" with two schematics, one of them without profiles, and each kind of file.
class WholeProject {
public:
    WholeProject() : destination(folder.path("new")) {
        for (const auto& [name, text] : before()) folder.write("project/" + name, text);
        folder.write("models/far.mdp", "far");
        forgetLastError();
    }

    std::string projectPath() const { return folder.path("project/amp.opj"); }

    Tree filledIn(Tree tree) const {
        for (auto& [name, text] : tree) text = replaced(text, "@UP@", folder.path());
        return tree;
    }

    static ProjectJson projectBefore() {
        ProjectJson project;
        project.designResources = {{".\\amp.dsn", "Schematic Design"}};
        project.folders = Json::array(
            {folderOf("Outputs",
                      {{".\\amp-S1.opt", "Report"}, {".\\corners.mdp", "Text"}, {"models/near.mdp", "Text"}}),
             folderOf("Tevrix Resources",
                      {{"amp-S2-default.mrk", "Markers"}, {".\\AMP-s1.PRP", "Properties"}})});
        project.active = ".\\amp-S1-tran.sim";
        project.profiles = {{".\\amp-S1-tran.sim", "tran", "S1"}};
        return project;
    }

    static ProjectJson projectAfter() {
        ProjectJson project = projectBefore();
        project.folders = Json::array(
            {folderOf("Outputs", {{".\\amp-tevrixfiles\\s1\\s1.opt", "Report"},
                                  {".\\amp-tevrixfiles\\s1\\corners.mdp", "Text"},
                                  {"models\\near.mdp", "Text"}}),
             folderOf("Tevrix Resources", {{".\\amp-tevrixfiles\\s2\\s2-default.mrk", "Markers"},
                                           {".\\amp-tevrixfiles\\s1\\s1_sch.prp", "Properties"}})});
        project.active = ".\\amp-tevrixfiles\\s1\\tran.sim";
        project.profiles = {{".\\amp-tevrixfiles\\s1\\tran.sim", "tran", "S1"}};
        return project;
    }

    // The files that stay where they are.
    static Tree staying() {
        return {{"amp.dsn", designText({"S1", "S2"})},
                {"models/", ""},
                {"models/near.mdp", "near"},
                {"other.mdp", "of nobody"},
                {"amp-S3.opt", "of no schematic"}};
    }

    static Tree before() {
        Tree tree = staying();
        tree.erase("models/");
        tree.insert({
            {"amp.opj", projectBefore().text()},
            {"amp-S1-tran.sim", profileText("S1", "tran")},
            {"amp-S1.net", "* S1\n.INC \"amp-S1.par\"\n"},
            {"amp-S1.par", ".PARAM x=1\n"},
            {"amp-S1.als", "aliases"},
            {"amp-S1.prp", "properties of S1"},
            {"amp.prp", "properties of the design"},
            {"amp-S1-default.mrk", "markers of S1"},
            {"amp-S2-default.mrk", "markers of S2"},
            {"amp-S1.opt.log", "log"},
            {"corners.mdp", "corners"},
            {"amp-S1.opt",
             "sim \"amp-S1-tran.sim\" 1\r\n"
             "sim \"amp-S1-dc.sim\" 2\r\n"
             "sim \"amp-S1-tran.sim.cir\" 3\r\n"
             "sim \"amp-S1-tran.cir\" 4\r\n"
             "ext \"corners.mdp\" 5\r\n"
             "ext \"models\\near.mdp\" 6\r\n"
             "ext \"..\\models\\far.mdp\" 7\r\n"
             "ext \"gone.mdp\" 8\r\n"
             "9"},
            {"amp-S2.opt", "ext \"corners.mdp\"\nsim \"amp-S1-tran.sim\""},
            {"amp-S1.aap",
             "(FILE_TYPE \"Advanced Analysis Profile\"\n"
             " (Profiles (\"amp-S1-tran\" 1) (\"amp-S1-dc\" 0))\n"
             " (Optimizer (MEASUREMENTS (Gain (Profile \"amp-S1-tran.sim\") (Goal 2.50)))))\n"},
        });
        return tree;
    }

    // What a conversion writes, below the destination.
    Tree converted() const {
        const std::string s1 = "amp-TevrixFiles/S1/";
        return filledIn({
            {"amp.opj", projectAfter().text()},
            {"amp.dsn", designText({"S1", "S2"})},
            {"amp-TevrixFiles/", ""},
            {"amp-TevrixFiles/amp.prp", "properties of the design"},
            {s1, ""},
            {s1 + "tran/", ""},
            {s1 + "tran.sim", "ProfileName= \"tran\" \nConnectivity= \"S1.net\" \n"},
            {s1 + "S1.net", "* S1\n.INC \"../S1.par\"\n"},
            {s1 + "S1.par", ".PARAM x=1\n"},
            {s1 + "S1.als", "aliases"},
            {s1 + "S1_sch.prp", "properties of S1"},
            {s1 + "S1-default.mrk", "markers of S1"},
            {s1 + "S1.opt.log", "log"},
            {s1 + "corners.mdp", "corners"},
            {s1 + "S1.opt",
             "sim \"tran.sim\" 1\r\n"
             "sim \"amp-S1-dc.sim\" 2\r\n"
             "sim \"tran.sim\" 3\r\n"
             "ext \"corners.mdp\" 5\r\n"
             "ext \"@UP@/project/models/near.mdp\" 6\r\n"
             "ext \"@UP@/models/far.mdp\" 7\r\n"
             "ext \"gone.mdp\" 8\r\n"
             "9"},
            {s1 + "S1.aap",
             "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n"
             "    (\"Profiles\"\n"
             "        (\"tran\"\t\"1\")\n"
             "        (\"amp-S1-dc\"\t\"0\")\n"
             "    )\n"
             "    (\"Optimizer\"\n"
             "        (\"MEASUREMENTS\"\n"
             "            (\"Gain\"\n"
             "                (\"Goal\"\t\"2.5\")\n"
             "                (\"Profile\"\t\"tran.sim\")\n"
             "            )\n"
             "        )\n"
             "    )\n"
             ")\n"},
            {"amp-TevrixFiles/S2/", ""},
            {"amp-TevrixFiles/S2/S2-default.mrk", "markers of S2"},
            // The design profile has gone with the schematic that named it first.
            {"amp-TevrixFiles/S2/S2.opt", "ext \"corners.mdp\"\nsim \"tran.sim\""},
        });
    }

    const TestFolder folder;
    const std::string destination;
};

TEST(SchematicFilesOfAProject, AreConvertedIntoAFolder) {
    const WholeProject project;
    Tree expected = treeOf(project.folder.path());
    expected["new/"] = "";
    for (const auto& [name, text] : project.converted()) expected["new/" + name] = text;
    // A file that stays is copied where an entry of the project names it by a relative path.
    expected["new/models/"] = "";
    expected["new/models/near.mdp"] = "near";
    DraftelProjectConverter converter(project.projectPath().c_str());
    EXPECT_EQ(converter.convert(2, project.destination), 0);
    EXPECT_EQ(lastError(), LastError());
    EXPECT_EQ(treeOf(project.folder.path()), expected);
}

TEST(SchematicFilesOfAProject, AreConvertedInPlace) {
    const WholeProject project;
    Tree expected = WholeProject::staying();
    for (const auto& [name, text] : project.converted()) expected[name] = text;
    DraftelProjectConverter converter(project.projectPath().c_str());
    EXPECT_EQ(converter.convert(1, std::string()), 0);
    EXPECT_EQ(lastError(), LastError());
    EXPECT_EQ(treeOf(project.folder.path("project")), expected);
    EXPECT_EQ(project.folder.read("models/far.mdp"), "far");
}

TEST(SchematicFilesOfAProject, OneThatCannotBeWrittenDoesNotEndTheConversion) {
    const WholeProject project;
    const std::string newPath = project.destination + "/amp-TevrixFiles/S1/S1_sch.prp";
    fs::create_directories(newPath);
    DraftelProjectConverter converter(project.projectPath().c_str());
    EXPECT_EQ(converter.convert(2, project.destination), 0);
    EXPECT_EQ(lastError(), copyFileError(project.folder.path("project/amp-S1.prp"), newPath));
    Tree expected = project.converted();
    expected.erase("amp-TevrixFiles/S1/S1_sch.prp");
    expected["amp-TevrixFiles/S1/S1_sch.prp/"] = "";
    expected["models/"] = "";
    expected["models/near.mdp"] = "near";
    EXPECT_EQ(treeOf(project.destination), expected);
}

// A schematic's files move after its profiles, so only the decks of the schematics behind it can name them at
// their new places.
TEST(SchematicFilesOfAProject, AreFoundAtTheirNewPlacesByTheDecksOfLaterSchematics) {
    DraftelProject project;
    project.write("amp.dsn", designText({"a.inc", "b"}));
    ProjectJson json;
    json.designResources = {{".\\amp.dsn", "Schematic Design"}};
    json.profiles = {{".\\first.sim", "p", "a.inc"}, {".\\second.sim", "q", "b"}};
    project.write("amp.opj", json.text());
    project.write("first.sim", profileText("a.inc", "p"));
    project.write("second.sim", profileText("b", "q"));
    project.write("amp-a.par", "no file of this project");
    const std::string deck = ".INC \"amp-a.inc.par\"\n.INC \"amp-b.inc.par\"\n";
    project.write("amp-a.inc-p.sim.cir", deck);
    project.write("amp-b-q.sim.cir", deck);
    project.write("amp-a.inc.par", ".PARAM a=1\n");
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/a.inc/a.inc.par"), ".PARAM a=1\n");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/a.inc/p/p.cir"),
              ".INC \"" + project.path("amp-a.inc.par") + "\"\n.INC \"amp-b.inc.par\"\n");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/b/q/q.cir"),
              ".INC \"../../a.inc/a.inc.par\"\n.INC \"amp-b.inc.par\"\n");
}

}  // namespace
