// draftel_test.cpp
//
// Whole conversions of Draftel projects, compared file by file with trees that were written by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"

namespace {

using namespace tests;
using tvxconv::DraftelProjectConverter;
namespace fs = std::filesystem;

// Trees are compared name by name first, so that a failure says where it is.
void expectTree(const Tree& actual, const Tree& expected) {
    std::vector<std::string> names;
    std::vector<std::string> expectedNames;
    for (const auto& [name, text] : actual) names.push_back(name);
    for (const auto& [name, text] : expected) expectedNames.push_back(name);
    EXPECT_EQ(names, expectedNames);
    for (const auto& [name, text] : expected) {
        const auto found = actual.find(name);
        if (found == actual.end()) continue;
        EXPECT_EQ(found->second, text) << name;
    }
}

Tree together(Tree tree, const Tree& more) {
    tree.insert(more.begin(), more.end());
    return tree;
}

Tree subTree(const Tree& tree, const std::string& prefix) {
    Tree part;
    for (const auto& [name, text] : tree) {
        if (name.starts_with(prefix) && name != prefix) part[name.substr(prefix.size())] = text;
    }
    return part;
}

// --- the sample project ---

// A copy of the sample project and of the models beside it.
class Sample {
public:
    Sample() : dir(folder.path("amp")), destination(folder.path("new")) {
        for (const char* name : {"amp", "models"}) {
            fs::copy(std::string(TVXCONV_SOURCE_DIR "/examples/") + name, folder.path(name),
                     fs::copy_options::recursive);
        }
        forgetLastError();
    }

    std::string projectPath() const { return dir + "/amp.opj"; }

    // What a conversion makes of it; `change` is applied to the text of profiles, decks and netlists.
    Tree expected(std::string (*change)(const std::string& text) = nullptr) const {
        Tree tree = treeOf(TVXCONV_SOURCE_DIR "/tests/data/amp-expected");
        for (auto& [name, text] : tree) {
            text = replaced(text, "@PROJECT_PARENT@", folder.path());
            text = replaced(text, "@PROJECT_BACKSLASHED@", withBackslashes(dir));
            text = replaced(text, "@PROJECT@", dir);
            if (change != nullptr && isRewritten(name)) text = change(text);
        }
        return tree;
    }

    // Changes the text of the old profiles, decks and netlists.
    void changeFiles(std::string (*change)(const std::string& text)) const {
        for (const auto& [name, text] : treeOf(dir)) {
            if (isRewritten(name)) folder.write("amp/" + name, change(text));
        }
    }

    const TestFolder folder;
    const std::string dir;
    const std::string destination;

private:
    static bool isRewritten(const std::string& name) {
        return name.ends_with(".sim") || name.ends_with(".cir") || name.ends_with(".net");
    }
};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> sampleListing(const std::string& destination) {
    return linesOf(replaced(readFile(TVXCONV_SOURCE_DIR "/tests/data/amp-expected-structure.txt"),
                            "@DESTINATION@", destination));
}

TEST(DraftelConversion, TheSampleIsConvertedIntoAFolder) {
    const Sample sample;
    const Tree before = treeOf(sample.dir);
    const Tree models = treeOf(sample.folder.path("models"));
    DraftelProjectConverter converter(sample.projectPath().c_str());
    EXPECT_EQ(converter.convert(2, sample.destination), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(treeOf(sample.destination), sample.expected());
    expectTree(treeOf(sample.dir), before);
    expectTree(treeOf(sample.folder.path("models")), models);
    std::string newProject;
    EXPECT_EQ(converter.getNewProjectPath(newProject), 0);
    EXPECT_EQ(newProject, sample.destination + "/amp.opj");
    std::vector<std::string> lines;
    EXPECT_EQ(converter.getNewStructure(lines), 0);
    EXPECT_EQ(lines, sampleListing(sample.destination));
    EXPECT_EQ(converter.writeReport(lines, "report.txt"), 0);
    EXPECT_EQ(
        sample.folder.read("new/report.txt"),
        "The conversion of the project was successful.\n\nThe new directory structure is as follows:\n\n" +
            replaced(readFile(TVXCONV_SOURCE_DIR "/tests/data/amp-expected-structure.txt"), "@DESTINATION@",
                     sample.destination));
}

TEST(DraftelConversion, TheSampleIsConvertedInPlace) {
    const Sample sample;
    const Tree models = treeOf(sample.folder.path("models"));
    // What moves is gone from its old place; a file that nobody knows stays.
    const Tree expected = together(sample.expected(), {{"README.md", sample.folder.read("amp/README.md")}});
    DraftelProjectConverter converter(sample.projectPath().c_str());
    EXPECT_EQ(converter.convert(1, std::string()), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(treeOf(sample.dir), expected);
    expectTree(treeOf(sample.folder.path("models")), models);
    EXPECT_FALSE(sample.folder.exists("new"));
    std::vector<std::string> lines;
    EXPECT_EQ(converter.getNewStructure(lines), 0);
    EXPECT_EQ(lines, sampleListing(sample.dir));
}

TEST(DraftelConversion, IntoTheProjectsOwnFolderNothingIsDeleted) {
    const Sample sample;
    const Tree before = treeOf(sample.dir);
    DraftelProjectConverter converter(sample.projectPath().c_str());
    EXPECT_EQ(converter.convert(2, sample.dir), 0);
    expectTree(treeOf(sample.dir), together(sample.expected(), before));
}

TEST(DraftelConversion, ADestinationMayLieInTheProjectFolder) {
    const Sample sample;
    const Tree before = treeOf(sample.dir);
    DraftelProjectConverter converter(sample.projectPath().c_str());
    EXPECT_EQ(converter.convert(2, sample.dir + "/converted"), 0);
    expectTree(treeOf(sample.dir + "/converted"), sample.expected());
    Tree after = treeOf(sample.dir);
    std::erase_if(after, [](const auto& entry) { return entry.first.starts_with("converted/"); });
    expectTree(after, before);
}

TEST(DraftelConversion, FilesKeepTheirLineEnds) {
    for (const auto change : {withCrLf, withLf}) {
        for (const int mode : {1, 2}) {
            const Sample sample;
            sample.changeFiles(change);
            const std::string readme = sample.folder.read("amp/README.md");
            DraftelProjectConverter converter(sample.projectPath().c_str());
            EXPECT_EQ(converter.convert(mode, sample.destination), 0);
            if (mode == 2) {
                expectTree(treeOf(sample.destination), sample.expected(change));
            } else {
                expectTree(treeOf(sample.dir), together(sample.expected(change), {{"README.md", readme}}));
            }
        }
    }
}

std::string inUpperCase(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
    return name;
}

std::string inMixedCase(std::string name) {
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto byte = static_cast<unsigned char>(name[i]);
        name[i] = static_cast<char>(i % 2 == 0 ? std::toupper(byte) : std::tolower(byte));
    }
    return name;
}

// Renames everything below the folder.
void renameAll(const fs::path& folder, std::string (*newName)(std::string name)) {
    std::vector<fs::path> entries(fs::directory_iterator(folder), {});
    for (const fs::path& entry : entries) {
        if (fs::is_directory(entry)) renameAll(entry, newName);
        fs::rename(entry, folder / newName(entry.filename().string()));
    }
}

TEST(DraftelConversion, TheLetterCaseOfOldNamesDoesNotMatter) {
    for (const auto newName : {inUpperCase, inMixedCase}) {
        const Sample sample;
        renameAll(sample.folder.path(), newName);
        const Tree before = treeOf(sample.folder.path());
        DraftelProjectConverter converter(sample.projectPath().c_str());
        EXPECT_EQ(converter.convert(2, sample.destination), 0);
        EXPECT_EQ(lastError(), LastError());
        expectTree(treeOf(sample.destination), sample.expected());
        Tree after = treeOf(sample.folder.path());
        std::erase_if(after, [](const auto& entry) { return entry.first.starts_with("new/"); });
        expectTree(after, before);
    }
}

TEST(DraftelConversion, InPlaceWhatStaysKeepsTheSpellingOnDisk) {
    if (tests::kOnWindows) GTEST_SKIP() << "a name cannot be given again in other letters there";
    for (const auto newName : {inUpperCase, inMixedCase}) {
        const Sample sample;
        Tree expected = subTree(sample.expected(), "amp-TevrixFiles/");
        Tree placed = {{"amp-TevrixFiles/", ""}};
        for (const auto& [name, text] : expected) placed["amp-TevrixFiles/" + name] = text;
        const std::string local = newName("local") + "/";
        placed[local] = "";
        for (const char* name : {"board.map", "passives.olb", "speaker.inc"}) {
            placed[local + newName(name)] = sample.folder.read(std::string("amp/local/") + name);
        }
        for (const char* name : {"amp.dsn", "amp.dbk", "amp.bom", "bench.out", "README.md"}) {
            placed[newName(name)] = sample.folder.read(std::string("amp/") + name);
        }
        placed[newName("amp.opj")] = sample.expected()["amp.opj"];
        renameAll(sample.folder.path(), newName);
        DraftelProjectConverter converter(sample.projectPath().c_str());
        EXPECT_EQ(converter.convert(1, std::string()), 0);
        EXPECT_EQ(lastError(), LastError());
        expectTree(treeOf(sample.folder.path(newName("amp"))), placed);
    }
}

TEST(DraftelConversion, OneObjectCanConvertASecondTime) {
    const Sample sample;
    const Tree before = treeOf(sample.dir);
    DraftelProjectConverter converter(sample.projectPath().c_str());
    EXPECT_EQ(converter.convert(2, sample.destination), 0);
    EXPECT_EQ(converter.convert(2, sample.folder.path("second")), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(treeOf(sample.destination), sample.expected());
    // The table of moves is that of both, and a design profile that is in it counts as moved.
    Tree second = sample.expected();
    EXPECT_EQ(second.erase("amp-TevrixFiles/SCHEMATIC1/amp-corners.mdp"), 1U);
    expectTree(treeOf(sample.folder.path("second")), second);
    expectTree(treeOf(sample.dir), before);
    std::string newProject;
    EXPECT_EQ(converter.getNewProjectPath(newProject), 0);
    EXPECT_EQ(newProject, sample.folder.path("second/amp.opj"));
}

TEST(DraftelConversion, ASecondConversionIntoOneFolderGivesTheSame) {
    const Sample sample;
    for (int i = 0; i < 2; ++i) {
        DraftelProjectConverter converter(sample.projectPath().c_str());
        EXPECT_EQ(converter.convert(2, sample.destination), 0);
        expectTree(treeOf(sample.destination), sample.expected());
        EXPECT_EQ(converter.convert(2, sample.destination), 0);
        expectTree(treeOf(sample.destination), sample.expected());
    }
}

TEST(DraftelConversion, OtherModesLeaveTheSampleAlone) {
    const Sample sample;
    const Tree before = treeOf(sample.folder.path());
    DraftelProjectConverter converter(sample.projectPath().c_str());
    EXPECT_EQ(converter.convert(3, sample.destination), 0);
    expectTree(treeOf(sample.folder.path()), before);
}

// The mode of the first call says whether files that stay are copied, and that was neither 1 nor 2.
TEST(DraftelConversion, AfterAnotherModeFilesThatStayAreNotCopied) {
    const Sample sample;
    Tree expected = sample.expected();
    std::erase_if(expected, [](const auto& entry) {
        return entry.first.starts_with("local/") || entry.first == "amp.bom" || entry.first == "bench.out";
    });
    DraftelProjectConverter converter(sample.projectPath().c_str());
    EXPECT_EQ(converter.convert(3, sample.destination), 0);
    EXPECT_EQ(converter.convert(2, sample.destination), 0);
    expectTree(treeOf(sample.destination), expected);
}

// --- a project with its design, its libraries and its models in other folders ---

// Below one folder: "project" with the project "filter", "pcb" with its design "board", "symbols" and
// "models". It is converted into "out/new". @UP@ stands for that one folder.
class Scattered {
public:
    Scattered() : destination(folder.path("out/new")) {
        folder.makeFolder("out");
        writeTree(folder.path(),
                  filledIn({
                      {"pcb/board.dsn", designText({"Top"})},
                      {"pcb/board.dbk", "backup of the design"},
                      {"pcb/board-Top.net",
                       "* Top\r\n.INC \"board-Top.par\"\r\n.INC \"board.inc\"\r\nR1 1 0 1k\r\n"},
                      {"pcb/board.lib", "of no use here"},
                      {"symbols/common.olb", "common symbols"},
                      {"symbols/far.olb", "far symbols"},
                      {"models/shared.lib", "shared models"},
                      {"project/board.lib", "models"},
                      {"project/board.olb", "symbols"},
                      {"project/notes.txt", "notes"},
                      {"project/board-Top-ac.dat", "data"},
                      {"project/board-Top-ac.out", "output"},
                      {"project/board-Top-ac.sim",
                       "ProfileName= \"ac\" \n"
                       "RootSchematics= \"Top\" \n"
                       "DesignFile= \"../pcb/board.dsn\" \n"
                       "NetlistFile= \"@UP@/project/board-Top-ac.sim.cir\" \n"
                       "DataFile= \"@UP@/project/board-Top-ac.dat\" \n"
                       "OutFile= \"..\\project\\board-Top-ac.out\" \n"
                       "+1 \"../models/shared.lib\" \n"
                       "+2 \"@UP@/models/shared.lib\" \n"
                       "+3 \"../models/absent.lib\" \n"
                       "+4 \"board.lib\""},
                      {"project/board-Top-ac.sim.cir",
                       "* deck\n"
                       ".LIB \"board.lib\"\n"
                       ".LIB \"../models/shared.lib\"\n"
                       ".LIB \"@UP@/models/shared.lib\"\n"
                       ".LIB \"../models/absent.lib\"\n"
                       ".INC \"../pcb/board-Top.net\"\n"
                       ".END\n"},
                      {"project/filter.opj", projectBefore()},
                  }));
        forgetLastError();
    }

    Tree filledIn(Tree tree) const {
        for (auto& [name, text] : tree) text = replaced(text, "@UP@", folder.path());
        return tree;
    }

    std::string projectPath() const { return folder.path("project/filter.opj"); }

    static std::string projectBefore() {
        ProjectJson project;
        project.item = "board-Top-ac.out";
        project.designResources = {{"..\\pcb\\board.dsn", "Schematic Design"}, {"..\\notes.txt", "Text"}};
        project.libraries = {{".\\board.olb", "Schematic Library"},
                             {"..\\symbols\\common.olb", "Schematic Library"},
                             {"@UP@/symbols/far.olb", "Schematic Library"}};
        project.folders = Json::array(
            {folderOf(
                 "Tevrix Resources", {},
                 Json::array({folderOf("Model Libraries", {{"@UP@/project/board.lib", "TevrixLibrary"},
                                                           {"../models/shared.lib", "TevrixLibrary"},
                                                           {"@UP@/models/shared.lib", "TevrixLibrary"}})})),
             folderOf("Outputs", {{"..\\pcb\\board-Top.net", "Report"},
                                  {"@UP@/project/board-Top-ac.out", "Report"},
                                  {"..\\project\\board-Top-ac.dat", "Waveform Data"},
                                  {".\\gone.out", "Report"},
                                  {".\\notes.txt", "Report"}})});
        project.active = ".\\board-Top-ac.sim";
        project.profiles = {{".\\board-Top-ac.sim", "ac", "Top"}};
        return project.text();
    }

    std::string projectAfter() const {
        const std::string up = withBackslashes(folder.path());
        ProjectJson project;
        project.designResources = {{".\\board.dsn", "Schematic Design"}, {"..\\notes.txt", "Text"}};
        project.libraries = {{".\\filter-tevrixfiles\\board.olb", "Schematic Library"},
                             {"..\\symbols\\common.olb", "Schematic Library"},
                             {up + "\\symbols\\far.olb", "Schematic Library"}};
        project.folders = Json::array(
            {folderOf("Tevrix Resources", {},
                      Json::array(
                          {folderOf("Model Libraries", {{".\\filter-tevrixfiles\\board.lib", "TevrixLibrary"},
                                                        {"..\\models\\shared.lib", "TevrixLibrary"},
                                                        {up + "\\models\\shared.lib", "TevrixLibrary"}})})),
             folderOf("Outputs", {{".\\filter-tevrixfiles\\top\\top.net", "Report"},
                                  {".\\filter-tevrixfiles\\top\\ac\\ac.out", "Report"},
                                  {".\\filter-tevrixfiles\\top\\ac\\ac.dat", "Waveform Data"},
                                  {".\\gone.out", "Report"},
                                  {".\\notes.txt", "Report"}})});
        project.active = ".\\filter-tevrixfiles\\top\\ac.sim";
        project.profiles = {{".\\filter-tevrixfiles\\top\\ac.sim", "ac", "Top"}};
        return project.text();
    }

    // The new files, by their names below the destination.
    Tree converted() const {
        return filledIn({
            {"filter.opj", projectAfter()},
            {"board.dsn", designText({"Top"})},
            {"board.dbk", "backup of the design"},
            {"filter-TevrixFiles/", ""},
            {"filter-TevrixFiles/board.lib", "models"},
            {"filter-TevrixFiles/board.olb", "symbols"},
            {"filter-TevrixFiles/Top/", ""},
            {"filter-TevrixFiles/Top/Top.net", "* Top\r\n.INC \"../Top.par\"\r\nR1 1 0 1k\r\n"},
            {"filter-TevrixFiles/Top/ac.sim",
             "ProfileName= \"ac\" \n"
             "Connectivity= \"Top.net\" \n"
             "NetlistFile= \"ac.cir\" \n"
             "DataFile= \"ac.dat\" \n"
             "OutFile= \"ac.out\" \n"
             "+1 \"shared.lib\" \n"
             "+2 \"@UP@/models/shared.lib\" \n"
             "+3 \"../models/absent.lib\" \n"
             "+4 \"board.lib\" \n"},
            {"filter-TevrixFiles/Top/ac/", ""},
            {"filter-TevrixFiles/Top/ac/ac.dat", "data"},
            {"filter-TevrixFiles/Top/ac/ac.out", "output"},
            {"filter-TevrixFiles/Top/ac/shared.lib", "shared models"},
            {"filter-TevrixFiles/Top/ac/board.lib", "models"},
            {"filter-TevrixFiles/Top/ac/ac.cir",
             "* deck\n"
             ".LIB \"../../board.lib\"\n"
             ".LIB \"@UP@/models/shared.lib\"\n"
             ".LIB \"@UP@/models/shared.lib\"\n"
             ".LIB \"../models/absent.lib\"\n"
             ".INC \"../Top.net\"\n"
             ".END\n"},
        });
    }

    const TestFolder folder;
    const std::string destination;
};

TEST(DraftelConversion, AScatteredProjectIsGatheredInTheDestination) {
    const Scattered scattered;
    Tree expected = treeOf(scattered.folder.path());
    expected["out/new/"] = "";
    for (const auto& [name, text] : scattered.converted()) expected["out/new/" + name] = text;
    // Files that stay, by a relative path, are copied to the same place as seen from the new project.
    expected["out/new/notes.txt"] = "notes";
    expected["out/symbols/"] = "";
    expected["out/symbols/common.olb"] = "common symbols";
    expected["out/models/"] = "";
    expected["out/models/shared.lib"] = "shared models";
    DraftelProjectConverter converter(scattered.projectPath().c_str());
    EXPECT_EQ(converter.convert(2, scattered.destination), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(treeOf(scattered.folder.path()), expected);
    const Moves moves = {
        {lowerCase(scattered.folder.path("pcb/board.dsn")), "./board.dsn"},
        {lowerCase(scattered.folder.path("pcb/board.dbk")), "./board.dbk"},
        {lowerCase(scattered.folder.path("pcb/board-Top.net")), "./filter-tevrixfiles/top/top.net"},
        {"./filter.opj", "./filter.opj"},
        {"./board.lib", "./filter-tevrixfiles/board.lib"},
        {"./board.olb", "./filter-tevrixfiles/board.olb"},
        {"./board-top-ac.dat", "./filter-tevrixfiles/top/ac/ac.dat"},
        {"./board-top-ac.out", "./filter-tevrixfiles/top/ac/ac.out"},
        {"./board-top-ac.sim.cir", "./filter-tevrixfiles/top/ac/ac.cir"},
        {"./board-top-ac.sim", "./filter-tevrixfiles/top/ac.sim"},
    };
    EXPECT_EQ(movesOf(converter), moves);
}

TEST(DraftelConversion, AScatteredProjectIsGatheredInPlace) {
    const Scattered scattered;
    Tree expected = treeOf(scattered.folder.path());
    for (const char* moved :
         {"pcb/board-Top.net", "project/board.lib", "project/board.olb", "project/board-Top-ac.dat",
          "project/board-Top-ac.out", "project/board-Top-ac.sim", "project/board-Top-ac.sim.cir"}) {
        EXPECT_EQ(expected.erase(moved), 1U) << moved;
    }
    for (const auto& [name, text] : scattered.converted()) expected["project/" + name] = text;
    DraftelProjectConverter converter(scattered.projectPath().c_str());
    EXPECT_EQ(converter.convert(1, std::string()), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(treeOf(scattered.folder.path()), expected);
}

// --- a project file that lists things twice ---

TEST(DraftelConversion, WhatIsListedTwiceIsConvertedTwice) {
    const auto text = [](const std::string& design, const std::string& library, const std::string& deck,
                         const std::string& stays, const std::string& profile) {
        ProjectJson json;
        json.designResources = {{design, "Schematic Design"}, {design, "Schematic Design"}};
        json.libraries = {{library, "Schematic Library"}, {library, "Schematic Library"}};
        json.folders = Json::array(
            {folderOf("Tevrix Resources", {{library, "A"}, {library, "A"}, {library, "B"}},
                      Json::array(
                          {folderOf("Include Files", {{stays, "TevrixLibrary"}, {stays, "TevrixLibrary"}})})),
             folderOf("Outputs",
                      {{deck, "Report"}, {stays, "Report"}, {deck, "Report"}, {stays, "Report"}})});
        json.active = profile;
        json.profiles = {{profile, "tran", "S1"}, {profile, "tran", "S1"}};
        return json.text();
    };
    DraftelProject project;
    project.write("amp.olb", "symbols");
    project.write("stays.inc", "stays");
    project.write("amp-S1-tran.sim.cir", ".INC \"amp-S1.net\"\n");
    project.write("amp.opj", text(".\\amp.dsn", ".\\amp.olb", ".\\amp-S1-tran.sim.cir", ".\\stays.inc",
                                  ".\\amp-S1-tran.sim"));
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(treeOf(project.destination),
               {{"amp.dsn", designText({"S1"})},
                {"amp.opj",
                 text(".\\amp.dsn", ".\\amp-tevrixfiles\\amp.olb", ".\\amp-tevrixfiles\\s1\\tran\\tran.cir",
                      ".\\stays.inc", ".\\amp-tevrixfiles\\s1\\tran.sim")},
                {"stays.inc", "stays"},
                {"amp-TevrixFiles/", ""},
                {"amp-TevrixFiles/amp.olb", "symbols"},
                {"amp-TevrixFiles/S1/", ""},
                {"amp-TevrixFiles/S1/tran.sim", "ProfileName= \"tran\" \nConnectivity= \"S1.net\" \n"},
                {"amp-TevrixFiles/S1/tran/", ""},
                {"amp-TevrixFiles/S1/tran/tran.cir", ".INC \"../S1.net\"\n"}});
}

// Both schematics have a profile of the same name.
TEST(DraftelConversion, SchematicsKeepTheirProfilesApart) {
    DraftelProject project;
    project.write("amp.dsn", designText({"S1", "S2", "S1"}));
    project.write("amp-S2-tran.sim", profileText("S2", "tran"));
    project.write("amp-S1-tran.dat", "of S1");
    project.write("amp-S2-tran.dat", "of S2");
    const auto text = [](const std::string& first, const std::string& second) {
        ProjectJson json;
        json.designResources = {{".\\amp.dsn", "Schematic Design"}};
        json.profiles = {{first, "tran", "S1"}, {second, "tran", "S2"}};
        return json.text();
    };
    project.write("amp.opj", text(".\\amp-S1-tran.sim", ".\\amp-S2-tran.sim"));
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    expectTree(treeOf(project.destination),
               {{"amp.dsn", designText({"S1", "S2", "S1"})},
                {"amp.opj", text(".\\amp-tevrixfiles\\s1\\tran.sim", ".\\amp-tevrixfiles\\s2\\tran.sim")},
                {"amp-TevrixFiles/", ""},
                {"amp-TevrixFiles/S1/", ""},
                {"amp-TevrixFiles/S1/tran.sim", "ProfileName= \"tran\" \nConnectivity= \"S1.net\" \n"},
                {"amp-TevrixFiles/S1/tran/", ""},
                {"amp-TevrixFiles/S1/tran/tran.dat", "of S1"},
                {"amp-TevrixFiles/S2/", ""},
                {"amp-TevrixFiles/S2/tran.sim", "ProfileName= \"tran\" \nConnectivity= \"S2.net\" \n"},
                {"amp-TevrixFiles/S2/tran/", ""},
                {"amp-TevrixFiles/S2/tran/tran.dat", "of S2"}});
}

TEST(DraftelConversion, AProjectMayBeNothingButADesign) {
    for (const int mode : {1, 2}) {
        DraftelProject project;
        project.remove("amp-S1-tran.sim");
        project.write("amp.dsn", designText({}));
        ProjectJson json;
        json.designResources = {{"amp.dsn", "Schematic Design"}};
        project.write("amp.opj", json.text());
        EXPECT_EQ(project.converter.convert(mode, project.destination), 0) << mode;
        expectTree(treeOf(mode == 1 ? project.dir : project.destination),
                   {{"amp.dsn", designText({})}, {"amp.opj", json.text()}, {"amp-TevrixFiles/", ""}});
    }
}

// A profile that no root schematic owns stays where it is and is no longer registered.
TEST(DraftelConversion, AProfileOfNoSchematicStays) {
    DraftelProject project;
    project.write("amp-S9-ac.sim", profileText("S9", "ac"));
    project.write("amp-S9-ac.dat", "data");
    const Tree before = treeOf(project.dir);
    ProjectJson json;
    json.designResources = {{"amp.dsn", "Schematic Design"}};
    json.active = ".\\amp-S9-ac.sim";
    json.profiles = {{".\\amp-S9-ac.sim", "ac", "S9"}};
    project.write("amp.opj", json.text());
    EXPECT_EQ(project.converter.convert(1, std::string()), 0);
    json.profiles.clear();
    Tree expected = before;
    expected["amp.opj"] = json.text();
    expected["amp-TevrixFiles/"] = "";
    expected["amp-TevrixFiles/S1/"] = "";
    expectTree(treeOf(project.dir), expected);
}

// --- conversions that stop in the middle ---

// Three profiles on two schematics, with enough files to see how far a conversion got.
class LongProject : public DraftelProject {
public:
    LongProject() {
        write("amp.dsn", designText({"S1", "S2"}));
        write("amp.lib", "models");
        write("amp-S1.net", "netlist 1\n");
        write("amp-S2.net", "netlist 2\n");
        ProjectJson json;
        json.designResources = {{".\\amp.dsn", "Schematic Design"}};
        for (const std::string profile : {"S1-tran", "S1-ac", "S2-dc"}) {
            write("amp-" + profile + ".sim", profileText(profile.substr(0, 2), profile.substr(3)));
            write("amp-" + profile + ".out", "output of " + profile);
            json.profiles.push_back({"amp-" + profile + ".sim", profile.substr(3), profile.substr(0, 2)});
        }
        write("amp.opj", json.text());
    }

    // All that a conversion makes, in the order in which it is made.
    static std::vector<std::pair<std::string, std::string>> steps() {
        ProjectJson json;
        json.designResources = {{".\\amp.dsn", "Schematic Design"}};
        for (const char* profile : {"s1\\tran", "s1\\ac", "s2\\dc"}) {
            const std::string name = profile;
            json.profiles.push_back({".\\amp-tevrixfiles\\" + name + ".sim", name.substr(3),
                                     name.substr(0, 2) == "s1" ? "S1" : "S2"});
        }
        return {{"amp-TevrixFiles/", ""},
                {"amp-TevrixFiles/amp.lib", "models"},
                {"amp-TevrixFiles/S1/", ""},
                {"amp-TevrixFiles/S1/S1.net", "netlist 1\n"},
                {"amp-TevrixFiles/S1/tran/", ""},
                {"amp-TevrixFiles/S1/tran/tran.out", "output of S1-tran"},
                {"amp-TevrixFiles/S1/tran.sim", "ProfileName= \"tran\" \nConnectivity= \"S1.net\" \n"},
                {"amp-TevrixFiles/S1/ac/", ""},
                {"amp-TevrixFiles/S1/ac/ac.out", "output of S1-ac"},
                {"amp-TevrixFiles/S1/ac.sim", "ProfileName= \"ac\" \nConnectivity= \"S1.net\" \n"},
                {"amp-TevrixFiles/S2/", ""},
                {"amp-TevrixFiles/S2/S2.net", "netlist 2\n"},
                {"amp-TevrixFiles/S2/dc/", ""},
                {"amp-TevrixFiles/S2/dc/dc.out", "output of S2-dc"},
                {"amp-TevrixFiles/S2/dc.sim", "ProfileName= \"dc\" \nConnectivity= \"S2.net\" \n"},
                {"amp.dsn", designText({"S1", "S2"})},
                {"amp.opj", json.text()}};
    }
};

TEST(DraftelConversion, ALongProjectIsConvertedToItsEnd) {
    LongProject project;
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    Tree expected;
    for (const auto& [name, text] : LongProject::steps()) expected[name] = text;
    expectTree(treeOf(project.destination), expected);
}

// A folder in the place of one new file after the other: the conversion stops there, with all that it made
// before left, nothing made after, and the old files as they were. Without the obstacle it then succeeds.
TEST(DraftelConversion, WhatWasMadeBeforeAFailureIsLeft) {
    struct Case {
        const char* blocked;
        int status;
        const char* source;  // that the message of a copy names
    };
    for (const int mode : {1, 2}) {
        for (const Case& entry :
             {Case{"amp-TevrixFiles/amp.lib", 10108, "amp.lib"}, Case{"amp-TevrixFiles/S1/S1.net", 10106, ""},
              Case{"amp-TevrixFiles/S1/tran.sim", 10106, ""}, Case{"amp-TevrixFiles/S1/ac.sim", 10106, ""},
              Case{"amp-TevrixFiles/S2/S2.net", 10106, ""}, Case{"amp-TevrixFiles/S2/dc.sim", 10106, ""},
              Case{"amp.dsn", 10108, "amp.dsn"}, Case{"amp.opj", 10108, "amp.opj"}}) {
            LongProject project;
            const std::string destination = mode == 1 ? project.dir : project.destination;
            const std::string blocked = destination + "/" + entry.blocked;
            if (fs::exists(blocked)) continue;  // in place, these are the old files themselves
            fs::create_directories(blocked);
            Tree expected = mode == 1 ? treeOf(project.dir) : Tree();
            for (const auto& [name, text] : LongProject::steps()) {
                if (name == entry.blocked) break;
                expected[name] = text;
            }
            expected[std::string(entry.blocked) + "/"] = "";
            const Tree before = treeOf(project.dir);
            forgetLastError();
            EXPECT_EQ(project.converter.convert(mode, destination), entry.status) << entry.blocked;
            EXPECT_EQ(lastError(), entry.status == 10108 ? copyFileError(project.path(entry.source), blocked)
                                                         : openForWritingError(blocked));
            expectTree(treeOf(destination), expected);
            if (mode == 2) expectTree(treeOf(project.dir), before);

            fs::remove(blocked);
            DraftelProjectConverter again(project.path("amp.opj").c_str());
            EXPECT_EQ(again.convert(2, destination), 0) << entry.blocked;
            expected.erase(std::string(entry.blocked) + "/");
            for (const auto& [name, text] : LongProject::steps()) expected[name] = text;
            expectTree(treeOf(destination), expected);
        }
    }
}

TEST(DraftelConversion, AFailedConversionCanBeResumedWithTheSameObject) {
    LongProject project;
    project.folder.makeFolder("new/amp-TevrixFiles/S2/dc.sim");
    EXPECT_EQ(project.converter.convert(2, project.destination), 10106);
    fs::remove(project.root + "/S2/dc.sim");
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    Tree expected;
    for (const auto& [name, text] : LongProject::steps()) expected[name] = text;
    expectTree(treeOf(project.destination), expected);
}

TEST(DraftelConversion, OutputsInTheWayAreReportedAndSkipped) {
    LongProject project;
    const std::string blocked = project.root + "/S1/ac/ac.out";
    fs::create_directories(blocked);
    Tree expected;
    for (const auto& [name, text] : LongProject::steps()) expected[name] = text;
    expected.erase("amp-TevrixFiles/S1/ac/ac.out");
    expected["amp-TevrixFiles/S1/ac/ac.out/"] = "";
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(lastError(), copyFileError(project.path("amp-S1-ac.out"), blocked));
    expectTree(treeOf(project.destination), expected);
}

TEST(DraftelConversion, WithoutRoomOnTheDiskTheOldFilesStay) {
    for (const int mode : {1, 2}) {
        LongProject project;
        const Tree before = treeOf(project.dir);
        EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
            EXPECT_EQ(project.converter.convert(mode, project.destination), 10108);
            EXPECT_EQ(lastError().code, 10108);
            return true;
        })) << mode;
        Tree after = treeOf(project.dir);
        std::erase_if(after, [](const auto& entry) { return entry.first.starts_with("amp-TevrixFiles/"); });
        expectTree(after, before);
    }
}

}  // namespace
