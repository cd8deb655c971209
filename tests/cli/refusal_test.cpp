// The program and what it must not touch: destinations it refuses, projects it cannot read, names and
// entries that would lead out of the destination, and files that are none.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/cliProject.h"
#include "support/coverage.h"

namespace {

using namespace clitest;
namespace fs = std::filesystem;

class Refusal : public testing::Test {
protected:
    void SetUp() override { tests::writeTree(folder_.path("amp"), smallProject()); }

    std::string project() const { return folder_.path("amp/amp.opj"); }

    // Changes the text of one old file.
    void edit(const std::string& name, const std::string& from, const std::string& to) const {
        const std::string old = folder_.read("amp/" + name);
        ASSERT_NE(old.find(from), std::string::npos) << from;
        folder_.write("amp/" + name, tests::replaced(old, from, to));
    }

    ProgramResult convertTo(const std::string& destination) const {
        return runTvxconvWithLimit({"draftel", project(), "--to", destination});
    }

    // Both kinds of conversion end with `status` and a message that holds `message`, and change nothing.
    void expectBothRefused(int status, const std::string& message, const std::string& what) const {
        const auto before = pictureOf(folder_.path());
        for (const bool inPlace : {false, true}) {
            const ProgramResult result =
                inPlace ? runTvxconvWithLimit({"draftel", project(), "--in-place"})
                        : runTvxconvWithLimit({"draftel", project(), "--to", folder_.path("new")});
            EXPECT_EQ(result.status, status) << what << (inPlace ? " in place" : "");
            EXPECT_EQ(result.output, "") << what;
            EXPECT_NE(result.errors.find(message), std::string::npos)
                << what << ": " << result.errors << "\nlacks " << message;
            EXPECT_EQ(difference(before, pictureOf(folder_.path())), "")
                << what << (inPlace ? " in place" : "");
        }
    }

    TestFolder folder_;
};

// --- the limit of the process on sizes of files ---

TEST_F(Refusal, AFileThatReachesTheLimitOnSizesIsAFailedWriteAndDoesNotEndTheProgram) {
    if (tests::kOnWindows) GTEST_SKIP() << "there is no such limit there";
    // In units of 512 bytes: 16 KiB.
    const auto runWithLimit = [&](const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {"sh", "-c", "ulimit -f 32; exec \"$0\" \"$@\"", kProgram};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return tests::runProgram(command, "", tests::kWithoutCoverage);
    };
    folder_.write("amp/amp.lib", std::string(20000, 'x'));
    const auto before = pictureOf(folder_.path("amp"));
    const ProgramResult result = runWithLimit({"draftel", project(), "--to", folder_.path("new")});
    EXPECT_EQ(result.status, 1) << result.errors;
    EXPECT_NE(result.errors.find("(error 10108)"), std::string::npos) << result.errors;
    EXPECT_FALSE(folder_.exists("new/amp-TevrixFiles/amp.lib"));
    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "");
}

// --- destinations ---

TEST_F(Refusal, TheProjectsOwnFolderIsNoDestinationHoweverItIsSpelled) {
    tests::makeLink(folder_.path("amp"), folder_.path("link"));
    const auto before = pictureOf(folder_.path());
    for (const char* destination : {"amp", "amp/", "AMP", "./amp/.", "amp/local/..", "link", "amp\\"}) {
        const ProgramResult result =
            runTvxconv({"draftel", "amp/amp.opj", "--to", destination}, folder_.path());
        EXPECT_EQ(result.status, 2) << destination;
        EXPECT_EQ(result.output, "") << destination;
        EXPECT_NE(result.errors.find("--in-place"), std::string::npos) << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "") << destination;
    }
    EXPECT_EQ(runTvxconv({"draftel", "amp.opj", "--to", "."}, folder_.path("amp")).status, 2);
    EXPECT_EQ(runTvxconv({"draftel", "../link/amp.opj", "--to", ""}, folder_.path("amp")).status, 2);
    EXPECT_EQ(difference(before, pictureOf(folder_.path())), "");
}

TEST_F(Refusal, AFolderInsideTheProjectsFolderIsADestinationLikeAnyOther) {
    const auto before = pictureOf(folder_.path("amp"));
    for (const char* destination : {"new", "local/new", "amp-TevrixFiles"}) {
        const ProgramResult result = convertTo(folder_.path("amp/") + destination);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("amp/") + destination)), "");
        EXPECT_EQ(difference(before, without(pictureOf(folder_.path("amp")), destination)), "")
            << destination;
        fs::remove_all(folder_.path("amp/") + destination);
    }
}

TEST_F(Refusal, ADestinationThatCannotBeAFolderIsToldAndNothingIsMade) {
    folder_.write("file", "of the user's own\n");
    folder_.makeFolder("full/amp-TevrixFiles.d");
    tests::makeLink("nowhere", folder_.path("dangling"));
    tests::makeLink("circle", folder_.path("circle"));
    ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0644), 0);
    const auto before = pictureOf(folder_.path());
    for (const char* destination : {"file", "file/below", "missing/below", "dangling", "circle", "pipe"}) {
        const ProgramResult result = convertTo(folder_.path(destination));
        EXPECT_EQ(result.status, 1) << destination;
        EXPECT_EQ(result.output, "") << destination;
        EXPECT_NE(result.errors.find("Failed to create directory \"" + folder_.path(destination)),
                  std::string::npos)
            << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "") << destination;
    }
}

TEST_F(Refusal, ASimulationRootThatIsNoFolderIsToldAndLeft) {
    folder_.makeFolder("new");
    const std::string root = folder_.path("new/amp-TevrixFiles");
    const std::string message = "Failed to create directory \"" + root;
    const auto before = pictureOf(folder_.path("amp"));
    folder_.write("new/amp-TevrixFiles", "a file\n");
    ProgramResult result = convertTo(folder_.path("new"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(folder_.read("new/amp-TevrixFiles"), "a file\n");
    fs::remove(root);
    tests::makeLink("amp-TevrixFiles", root);
    result = convertTo(folder_.path("new"));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(message), std::string::npos) << result.errors;
    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "");
}

// --- projects that cannot be read ---

TEST_F(Refusal, AProjectFileThatCannotBeReadStopsBeforeAnythingIsMade) {
    struct {
        const char* what;
        std::string text;
    } const broken[] = {
        {"empty", ""},
        {"blank", " \n"},
        {"not JSON", "not JSON\n"},
        {"cut off", oldProjectText().substr(0, oldProjectText().size() / 2)},
        {"a list", "[]"},
        {"a folder that is a number", R"({"folders": [1]})"},
        {"profiles that are a text",
         tests::replaced(oldProjectText(), "\"profiles\": [", "\"profiles\": 1, \"x\": [")},
        {"no design", R"({"folders": []})"},
        {"a design that is not there", tests::replaced(oldProjectText(), ".\\\\amp.dsn", ".\\\\other.dsn")},
        {"noise", std::string("\0\xFF\xFE{\x80", 5)},
        {"bytes that are no UTF-8", tests::replaced(oldProjectText(), "bench.txt", "b\xFFnch.txt")},
    };
    for (const auto& one : broken) {
        folder_.write("amp/amp.opj", one.text);
        expectBothRefused(1, "Failed to read file \"" + project() + "\"", one.what);
    }
}

TEST_F(Refusal, AProjectFileThatIsNoFileStopsBeforeAnythingIsMade) {
    const std::string message = "Failed to read file \"" + project() + "\"";
    fs::remove(project());
    expectBothRefused(1, message, "missing");
    fs::create_directory(project());
    expectBothRefused(1, message, "a folder");
    fs::remove(project());
    ASSERT_EQ(mkfifo(project().c_str(), 0644), 0);
    expectBothRefused(1, message, "a pipe");
    fs::remove(project());
    tests::makeLink("amp.opj", project());
    expectBothRefused(1, message, "a link to itself");
    fs::remove(project());
    tests::makeLink("/dev/zero", project());
    expectBothRefused(1, message, "a device without an end");
}

TEST_F(Refusal, AProjectInAFolderThatIsNotThereIsToldByName) {
    for (const char* project : {"nowhere/amp.opj", "amp/amp.opj/amp.opj"}) {
        const auto before = pictureOf(folder_.path());
        const ProgramResult result =
            runTvxconv({"draftel", folder_.path(project), "--to", folder_.path("new")});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.errors.find(folder_.path(project)), std::string::npos) << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "");
    }
}

TEST_F(Refusal, AProjectFileWithoutAnExtensionIsNone) {
    fs::rename(project(), folder_.path("amp/amp"));
    const auto before = pictureOf(folder_.path());
    for (const bool inPlace : {false, true}) {
        std::vector<std::string> arguments = {"draftel", folder_.path("amp/amp")};
        if (inPlace) arguments.push_back("--in-place");
        if (!inPlace) arguments.insert(arguments.end(), {"--to", folder_.path("new")});
        const ProgramResult result = runTvxconv(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.errors.find("amp/amp"), std::string::npos) << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "");
    }
}

TEST_F(Refusal, ADesignThatCannotBeReadStopsBeforeAnythingIsMade) {
    const std::string design = folder_.path("amp/amp.dsn");
    for (const char* text : {"", "noise", "{}", "[]", R"({"rootSchematics": "S"})",
                             R"({"rootSchematics": [1]})", "{ \"rootSchematics\": [\"\xFF\"] }"}) {
        folder_.write("amp/amp.dsn", text);
        expectBothRefused(1, "Failed to read the design file \"" + design + "\"", text);
    }
    fs::remove(design);
    ASSERT_EQ(mkfifo(design.c_str(), 0644), 0);
    expectBothRefused(1, "Failed to read file \"" + project() + "\"", "a pipe");
    fs::remove(design);
    tests::makeLink("amp.dsn", design);
    expectBothRefused(1, "Failed to read file \"" + project() + "\"", "a link to itself");
}

// --- names that would leave the destination ---

TEST_F(Refusal, RootSchematicsThatCannotNameAFolderAreRefusedWithFileAndLine) {
    for (const char* name : {"", ".", "..", "a/b", "/abs", "../up", "a/", "a\\\\b", "\\\\\\\\srv\\\\x",
                             "C:", "C:x", "a\\u0001b", "a\\nb", "a\\tb", "\\u0000", "\\u007f", "a\\u0000b"}) {
        folder_.write("amp/amp.dsn",
                      std::string("{\n  \"note\": \"fine\",\n  \"rootSchematics\": [\n    \"OTHER\",\n"
                                  "    \"") +
                          name + "\"\n  ]\n}\n");
        expectBothRefused(1, folder_.path("amp/amp.dsn") + ":5: ", name);
    }
}

TEST_F(Refusal, ProfilesThatCannotNameAFolderAreRefusedWithFileAndLine) {
    using namespace std::string_literals;
    for (const std::string& name : {"."s, ".."s, "a/b"s, "/abs"s, "../../../up"s, "a/"s, "a\\b"s, "..\\x"s,
                                    "C:"s, "C:x"s, "a\x01"s, "\tb"s, "a\0b"s, "\x7F"s}) {
        folder_.write("amp/amp-SCHEMATIC1-tran1.sim",
                      "* one\n* two\nRootSchematics= \"SCHEMATIC1\" \nProfileName= \"" + name + "\" \n");
        expectBothRefused(1, folder_.path("amp/amp-SCHEMATIC1-tran1.sim") + ":4: ", name);
    }
}

// The project file, which is UTF-8, could not name the new files.
TEST_F(Refusal, NamesThatAreNotUtf8AreRefusedWithFileAndLine) {
    if (tests::kOnWindows) GTEST_SKIP() << "names have the code page of the system there";
    folder_.write("amp/amp-SCHEMATIC1-tran1.sim",
                  "RootSchematics= \"SCHEMATIC1\" \nProfileName= \"tr\xE4ger\" \n");
    expectBothRefused(1, folder_.path("amp/amp-SCHEMATIC1-tran1.sim") + ":2: ", "a profile");
    folder_.write("amp/amp-SCHEMATIC1-tran1.sim", kOldProfile);
    const std::string renamed = folder_.path("amp/tr\xE4ger.opj");
    fs::rename(project(), renamed);
    const auto before = pictureOf(folder_.path());
    for (const bool inPlace : {false, true}) {
        std::vector<std::string> arguments = {"draftel", renamed, "--to", folder_.path("new")};
        if (inPlace) arguments = {"draftel", renamed, "--in-place"};
        const ProgramResult result = runTvxconvWithLimit(arguments);
        EXPECT_EQ(result.status, 1) << inPlace;
        EXPECT_NE(result.errors.find(renamed + ": "), std::string::npos) << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "") << inPlace;
    }
}

TEST_F(Refusal, AProfileOfASchematicWithoutANameOfItsOwnIsRefused) {
    folder_.write("amp/amp-SCHEMATIC1-tran1.sim", "RootSchematics= \"SCHEMATIC1\" \n");
    expectBothRefused(1, folder_.path("amp/amp-SCHEMATIC1-tran1.sim") + ": ", "no ProfileName line");
}

// The last line of a kind is the one that counts.
TEST_F(Refusal, TheLineThatIsToldIsTheOneThatCounts) {
    folder_.write("amp/amp-SCHEMATIC1-tran1.sim",
                  "ProfileName= \"fine\"\nRootSchematics= \"SCHEMATIC1\"\n\n\nProfileName= \"a/b\"\n");
    expectBothRefused(1, folder_.path("amp/amp-SCHEMATIC1-tran1.sim") + ":5: ", "a second line");
}

TEST_F(Refusal, NamesThatOnlyLookDangerousAreFolderNames) {
    for (const char* name :
         {"...", "..a", "a..", ".hidden", " ", "a b", "-x", "a.b.c", "~", "*", "a;b", "$(x)"}) {
        edit("amp.dsn", "SCHEMATIC1", name);
        folder_.write("amp/amp-SCHEMATIC1-tran1.sim",
                      std::string("RootSchematics= \"") + name + "\" \nProfileName= \"" + name + "\" \n");
        const auto before = pictureOf(folder_.path("amp"));
        const ProgramResult result = convertTo(folder_.path("new"));
        const char last = name[std::strlen(name) - 1];
        if (tests::kOnWindows && (last == '.' || last == ' ' || last == '*')) {  // no names of folders there
            EXPECT_EQ(result.status, 1) << name;
            EXPECT_FALSE(folder_.exists("new")) << name;
            EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << name;
            folder_.write("amp/amp.dsn", kDesign);
            continue;
        }
        EXPECT_EQ(result.status, 0) << name << ": " << result.errors;
        const std::string schematic = std::string("new/amp-TevrixFiles/") + name;
        EXPECT_TRUE(fs::is_directory(folder_.path(schematic + "/" + name))) << name;
        EXPECT_EQ(folder_.read(schematic + "/" + name + ".sim"),
                  std::string("Connectivity= \"") + name + ".net\" \nProfileName= \"" + name + "\" \n");
        EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << name;
        fs::remove_all(folder_.path("new"));
        folder_.write("amp/amp.dsn", kDesign);
    }
}

TEST_F(Refusal, TwoProfilesOfOneNameAndSchematicAreRefused) {
    edit("amp.opj", R"(    "profiles": [)",
         R"(    "profiles": [ { "path": ".\\second.sim", "name": "x", "schematic": "SCHEMATIC1" },)");
    for (const char* name : {"tran1", "TRAN1"}) {
        folder_.write("amp/second.sim",
                      std::string("RootSchematics= \"schematic1\"\nProfileName= \"") + name + "\"\n");
        // Whichever of the two is told: each has its file and line.
        expectBothRefused(1, folder_.path("amp/"), name);
        const ProgramResult result = convertTo(folder_.path("new"));
        const bool first = result.errors.find("amp-SCHEMATIC1-tran1.sim:1: ") != std::string::npos;
        const bool second = result.errors.find("second.sim:2: ") != std::string::npos;
        EXPECT_NE(first, second) << result.errors;
    }
    // The same name below another schematic has a folder of its own.
    edit("amp.dsn", "[\"SCHEMATIC1\"]", "[\"SCHEMATIC1\", \"OUTPUT\"]");
    folder_.write("amp/second.sim", "RootSchematics= \"OUTPUT\"\nProfileName= \"tran1\"\n");
    const ProgramResult result = convertTo(folder_.path("new"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(folder_.read("new/amp-TevrixFiles/OUTPUT/tran1.sim"),
              "Connectivity= \"OUTPUT.net\" \nProfileName= \"tran1\"\n");
    EXPECT_EQ(folder_.read("new/amp-TevrixFiles/SCHEMATIC1/tran1.sim"), kNewProfile);
}

// --- entries that would be copied out of the destination ---

class Entries : public Refusal {
protected:
    void SetUp() override {
        Refusal::SetUp();
        tests::writeTree(folder_.path("shared"), {{"board.map", "nets\n"}, {"amplifier.olb", "symbols\n"}});
        folder_.makeFolder("away");
    }

    // Has the project file hold one more folder, or the folder "Design Resources" one more sub-folder.
    void addFolder(const std::string& json) const {
        edit("amp.opj", "\"folders\": [\n    {", "\"folders\": [" + json + ",\n    {");
    }

    static std::string entry(const std::string& path, const std::string& type) {
        return R"({ "name": "x", "path": ")" + path + R"(", "type": ")" + type + "\" }";
    }

    void restore() const { folder_.write("amp/amp.opj", oldProjectText()); }
};

// Each place in the project file whose entries follow the project.
struct CarriedPlace {
    const char* json;  // "%" stands for the entry
    const char* path;
    const char* type;
};
constexpr CarriedPlace kCarried[] = {
    {R"({ "name": "Outputs", "files": [%] })", "..\\\\shared\\\\board.map", "Report"},
    {R"({ "name": "Translator", "files": [%] })", "..\\\\shared\\\\board.map", "Net Map"},
    {R"({ "name": "Translator", "files": [%] })", "../shared/board.map", "Net Map"},
    {R"({ "name": "Translator", "files": [%] })", "local\\\\..\\\\..\\\\shared\\\\board.map", "Net Map"},
    {R"({ "name": "Translator", "files": [%] })", "..\\\\SHARED\\\\Board.map", "Net Map"},
    {R"({ "name": "Library", "files": [%] })", "..\\\\shared\\\\board.map", "Any"},
    {R"({ "name": "Tevrix Resources", "files": [%] })", "..\\\\shared\\\\board.map", "Any"},
    {R"({ "name": "Tevrix Resources", "folders": [ { "name": "Include Files", "files": [%] } ] })",
     "..\\\\shared\\\\board.map", "TevrixLibrary"},
    {R"({ "name": "Tevrix Resources", "folders": [ { "name": "Stimulus Files", "files": [%] } ] })",
     "..\\\\shared\\\\board.map", "tevrixlibrary"},
    {R"({ "name": "Simulation Resources", "folders": [ { "name": "Indesign", "files": [%] } ] })",
     "..\\\\shared\\\\board.map", "Any"},
};

TEST_F(Entries, OneThatWouldBeCopiedOutOfTheDestinationIsRefusedWithFileAndLine) {
    for (const CarriedPlace& place : kCarried) {
        addFolder("\n" + tests::replaced(place.json, "%", entry(place.path, place.type)));
        const auto before = pictureOf(folder_.path());
        const ProgramResult result = convertTo(folder_.path("away/new"));
        EXPECT_EQ(result.status, 1) << place.json;
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.errors.find(project() + ":3: "), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find(place.path), std::string::npos) << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "") << place.json;
        restore();
    }
}

TEST_F(Entries, OneThatNamesTheVerySameFileFromTheDestinationIsKept) {
    for (const CarriedPlace& place : kCarried) {
        addFolder("\n" + tests::replaced(place.json, "%", entry(place.path, place.type)));
        // From here "local/.." leads nowhere: no file is there.
        if (std::string(place.path).starts_with("local")) {
            restore();
            continue;
        }
        const auto before = pictureOf(folder_.path());
        const ProgramResult result = convertTo(folder_.path("new"));
        EXPECT_EQ(result.status, 0) << place.json << result.errors;
        EXPECT_EQ(difference(before, without(pictureOf(folder_.path()), "new")), "") << place.json;
        EXPECT_NE(folder_.read("new/amp.opj").find(tests::replaced(place.path, "/", "\\\\")),
                  std::string::npos)
            << folder_.read("new/amp.opj");
        fs::remove_all(folder_.path("new"));
        restore();
    }
}

TEST_F(Entries, OneThatAConversionInPlaceLeavesWhereItIsIsNoReasonToRefuse) {
    addFolder(R"({ "name": "Translator", "files": [)" + entry("..\\\\shared\\\\board.map", "Net Map") +
              "] }");
    const ProgramResult result = runTvxconv({"draftel", project(), "--in-place"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(folder_.read("shared/board.map"), "nets\n");
    EXPECT_NE(folder_.read("amp/amp.opj").find("\"..\\\\shared\\\\board.map\""), std::string::npos);
}

// Neither a file that is not there nor one that is named from the root, nor one of a type that stays, is
// copied anywhere.
TEST_F(Entries, OneThatIsNotCopiedIsNoReasonToRefuse) {
    const std::string absolute = folder_.path("shared/board.map");
    const struct {
        const char* json;
        std::string path;
        const char* type;
    } harmless[] = {
        {R"({ "name": "Translator", "files": [%] })", "..\\\\shared\\\\missing.map", "Net Map"},
        {R"({ "name": "Translator", "files": [%] })", "..\\\\shared", "Net Map"},
        {R"({ "name": "Translator", "files": [%] })", absolute, "Net Map"},
        {R"({ "name": "Folder of the user's own", "files": [%] })", "..\\\\shared\\\\board.map", "Net Map"},
        {R"({ "name": "Tevrix Resources", "folders": [ { "name": "Include Files", "files": [%] } ] })",
         "..\\\\shared\\\\board.map", "Text"},
        {R"({ "name": "Tevrix Resources", "folders": [ { "name": "Others", "files": [%] } ] })",
         "..\\\\shared\\\\board.map", "TevrixLibrary"},
    };
    for (const auto& one : harmless) {
        addFolder("\n" + tests::replaced(one.json, "%", entry(one.path, one.type)));
        const auto before = pictureOf(folder_.path());
        const ProgramResult result = convertTo(folder_.path("away/new"));
        EXPECT_EQ(result.status, 0) << one.json << ": " << result.errors;
        EXPECT_EQ(difference(before, without(pictureOf(folder_.path()), "away/new")), "") << one.json;
        fs::remove_all(folder_.path("away/new"));
        restore();
    }
    // In these two places only designs and symbol libraries are carried along.
    for (const std::string& insertion :
         {R"("files": [)" + entry("..\\\\shared\\\\board.map", "Text") + ",",
          R"("folders": [ { "name": "Library", "files": [)" +
              entry("..\\\\shared\\\\board.map", "Schematic Library") + "," +
              entry("..\\\\shared\\\\amplifier.olb", "Text") + R"(] } ], "files": [)"}) {
        edit("amp.opj", "\"files\": [\n        {\n          \"name\": \"amp.dsn\"",
             insertion + "\n        {\n          \"name\": \"amp.dsn\"");
        const auto before = pictureOf(folder_.path());
        const ProgramResult result = convertTo(folder_.path("away/new"));
        EXPECT_EQ(result.status, 0) << insertion << ": " << result.errors;
        EXPECT_EQ(difference(before, without(pictureOf(folder_.path()), "away/new")), "") << insertion;
        fs::remove_all(folder_.path("away/new"));
        restore();
    }
}

// The design lies in another folder, beside a file whose name only begins like its own.
TEST_F(Entries, AFileBesideTheDesignIsNoFileOfTheDesign) {
    fs::rename(folder_.path("amp/amp.dsn"), folder_.path("shared/amp.dsn"));
    edit("amp.opj", ".\\\\amp.dsn", "..\\\\shared\\\\amp.dsn");
    edit("amp.opj", "\"files\": [\n        {\n          \"name\": \"amp.dsn\"",
         R"("folders": [ { "name": "Library", "files": [)" +
             entry("..\\\\shared\\\\amplifier.olb", "Schematic Library") +
             "] } ], \"files\": [\n        {\n          \"name\": \"amp.dsn\"");
    const auto before = pictureOf(folder_.path());
    const ProgramResult result = convertTo(folder_.path("away/new"));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("amplifier.olb"), std::string::npos) << result.errors;
    EXPECT_EQ(difference(before, pictureOf(folder_.path())), "");
}

TEST_F(Entries, TheDesignInAnotherFolderAndItsFilesGoToTheDestination) {
    for (const char* name : {"amp.dsn", "amp-SCHEMATIC1.net", "amp-SCHEMATIC1.opt", "amp-SCHEMATIC1.aap"}) {
        fs::rename(folder_.path("amp/") + name, folder_.path("shared/") + name);
    }
    edit("amp.opj", ".\\\\amp.dsn", "..\\\\shared\\\\amp.dsn");
    edit("amp.opj", ".\\\\amp-SCHEMATIC1.net", "..\\\\shared\\\\amp-SCHEMATIC1.net");
    const auto before = pictureOf(folder_.path());
    const ProgramResult result = convertTo(folder_.path("away/new"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("away/new"))), "");
    EXPECT_EQ(difference(before, without(pictureOf(folder_.path()), "away/new")), "");
}

TEST_F(Entries, AFileThatIsListedTwiceIsCarriedOnceAndNamedTwice) {
    edit("amp.opj", "        {\n          \"name\": \"bench.txt\"",
         entry(".\\\\local\\\\bench.txt", "Text") + "," + entry(".\\\\LOCAL\\\\BENCH.TXT", "Report") + "," +
             entry("amp.lib", "Report") + "," + entry(".\\\\AMP.LIB", "Report") +
             ",\n        {\n          \"name\": \"bench.txt\"");
    const auto before = pictureOf(folder_.path("amp"));
    const ProgramResult result = convertTo(folder_.path("new"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    Tree tree = tests::treeOf(folder_.path("new"));
    tree["amp.opj"] = newProjectText();
    EXPECT_EQ(tree, convertedDestination());
    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "");
    std::vector<std::string> paths;
    const auto json = nlohmann::json::parse(folder_.read("new/amp.opj"));
    for (const auto& file : json["folders"][2]["files"]) paths.push_back(file["path"]);
    const char* moved = ".\\amp-tevrixfiles\\amp.lib";
    EXPECT_EQ(paths, (std::vector<std::string>{".\\amp-tevrixfiles\\schematic1\\schematic1.net",
                                               ".\\local\\bench.txt", ".\\LOCAL\\BENCH.TXT", moved, moved,
                                               ".\\local\\bench.txt"}));
}

// --- files that are none, and files without sense ---

TEST_F(Refusal, AProfileFileOfNoiseIsLeftOutAndTold) {
    std::string noise;
    for (int i = 0; i < 5000; ++i) noise += static_cast<char>((i * 7919) >> 3);
    noise = tests::replaced(noise, "\"", "x");
    folder_.write("amp/amp-SCHEMATIC1-tran1.sim", noise);
    const auto before = pictureOf(folder_.path("amp"));
    const ProgramResult result = convertTo(folder_.path("new"));
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.errors.find("amp-SCHEMATIC1-tran1.sim"), std::string::npos) << result.errors;
    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "");
    const auto json = nlohmann::json::parse(folder_.read("new/amp.opj"));
    EXPECT_EQ(json["simulationProfiles"]["profiles"], nlohmann::json::array());
    EXPECT_EQ(folder_.read("new/amp-TevrixFiles/SCHEMATIC1/SCHEMATIC1.net"), kNewNetlist);
}

// Noise that is found behind the names is carried along as it is.
TEST_F(Refusal, NoiseInAProfileFileIsCopiedByteForByte) {
    if (tests::kOnWindows) GTEST_SKIP() << "text files end at a Ctrl-Z there";
    std::string noise;
    for (int i = 0; i < 70000; ++i) noise += static_cast<char>((i * 7919) >> 5);
    noise = "~" + tests::replaced(noise, "\n", "\n~") + "\n";  // no line is one of a profile's
    folder_.write("amp/amp-SCHEMATIC1-tran1.sim",
                  "ProfileName= \"tran1\"\nRootSchematics= \"SCHEMATIC1\"\n" + noise);
    const ProgramResult result = convertTo(folder_.path("new"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(folder_.read("new/amp-TevrixFiles/SCHEMATIC1/tran1.sim") ==
                "ProfileName= \"tran1\"\nConnectivity= \"SCHEMATIC1.net\" \n" + noise);
}

TEST_F(Refusal, PipesDevicesAndCirclesInPlaceOfFilesAreTakenForMissing) {
    const char* names[] = {"amp.lib",
                           "amp-SCHEMATIC1.net",
                           "amp-SCHEMATIC1-tran1.sim",
                           "amp-SCHEMATIC1-tran1.sim.cir",
                           "amp-SCHEMATIC1-tran1.out",
                           "local/bench.txt"};
    for (const char* name : names) {
        const std::string path = folder_.path(std::string("amp/") + name);
        for (const char* kind : {"pipe", "device", "circle", "dangling", "folder"}) {
            fs::remove(path);
            const std::string one = kind;
            if (one == "pipe") {
                ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
            } else if (one == "folder") {
                fs::create_directory(path);
            } else {
                tests::makeLink(one == "device"   ? fs::path("/dev/zero")
                                : one == "circle" ? fs::path(path).filename()
                                                  : fs::path("nowhere"),
                                path);
            }
            const auto before = pictureOf(folder_.path("amp"));
            const ProgramResult result = convertTo(folder_.path("new"));
            EXPECT_EQ(result.status, 0) << name << " as a " << kind << ": " << result.errors;
            EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << name << " as a " << kind;
            // What does not hang on that file is complete.
            const Tree converted = tests::treeOf(folder_.path("new"));
            EXPECT_EQ(converted.count("amp.dsn"), 1U) << name << " as a " << kind;
            EXPECT_EQ(converted.count("amp-TevrixFiles/amp.lib"), std::string(name) == "amp.lib" ? 0U : 1U)
                << kind;
            EXPECT_EQ(converted.count("local/bench.txt"), std::string(name) == "local/bench.txt" ? 0U : 1U)
                << kind;
            EXPECT_EQ(converted.count("amp-TevrixFiles/SCHEMATIC1/SCHEMATIC1.net"),
                      std::string(name) == "amp-SCHEMATIC1.net" ? 0U : 1U)
                << kind;
            fs::remove_all(folder_.path("new"));
        }
        fs::remove(path);
        tests::writeFile(path, smallProject().at(name));
    }
}

TEST_F(Refusal, PipesInTheDestinationDoNotHoldTheProgramUp) {
    const auto before = pictureOf(folder_.path("amp"));
    for (const char* name :
         {"amp.opj", "amp.dsn", "amp-TevrixFiles/amp.lib", "amp-TevrixFiles/SCHEMATIC1/SCHEMATIC1.net",
          "amp-TevrixFiles/SCHEMATIC1/tran1.sim", "amp-TevrixFiles/SCHEMATIC1/tran1/tran1.cir",
          "local/bench.txt"}) {
        const std::string path = folder_.path(std::string("new/") + name);
        fs::create_directories(fs::path(path).parent_path());
        ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
        const ProgramResult result = convertTo(folder_.path("new"));
        // Only a profile's outputs may be missing from a conversion that has been done.
        EXPECT_EQ(result.status, std::string(name).ends_with(".cir") ? 0 : 1) << name << result.errors;
        EXPECT_NE(result.errors.find(fs::path(name).filename().string()), std::string::npos) << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << name;
        EXPECT_TRUE(fs::is_fifo(path)) << name;
        fs::remove_all(folder_.path("new"));
    }
}

TEST_F(Refusal, FoldersThatLeadInACircleDoNotHoldTheProgramUp) {
    tests::makeLink(".", folder_.path("amp/loop"));
    tests::makeLink("../new", folder_.path("amp/amp-TevrixFiles"));
    const auto before = pictureOf(folder_.path("amp"));
    edit("amp.opj", ".\\\\local\\\\bench.txt", ".\\\\loop\\\\loop\\\\local\\\\bench.txt");
    const ProgramResult result = convertTo(folder_.path("new"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(folder_.read("new/loop/loop/local/bench.txt"), kBench);
    folder_.write("amp/amp.opj", oldProjectText());
    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "");
}

// --- without root's rights ---

class WithoutRights : public Refusal {
protected:
    void SetUp() override {
        Refusal::SetUp();
        if (!othersMayRunProgram()) GTEST_SKIP() << "only root can start " << kProgram;
        chmod(folder_.path().c_str(), 0777);
    }

    ProgramResult convertWithoutRoot(const std::string& destination) const {
        return runWithoutRoot({"draftel", project(), "--to", destination});
    }
};

TEST_F(WithoutRights, FilesThatMayNotBeReadAreLeftOut) {
    for (const char* name :
         {"amp.lib", "amp-SCHEMATIC1.net", "amp-SCHEMATIC1-tran1.out", "local/bench.txt", "notes.txt"}) {
        const std::string path = folder_.path(std::string("amp/") + name);
        chmod(path.c_str(), 0);
        const auto before = pictureOf(folder_.path("amp"));
        const ProgramResult result = convertWithoutRoot(folder_.path("new"));
        EXPECT_EQ(result.status, 0) << name << ": " << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << name;
        EXPECT_TRUE(folder_.exists("new/amp-TevrixFiles/SCHEMATIC1/tran1/tran1.cir")) << name;
        fs::remove_all(folder_.path("new"));
        chmod(path.c_str(), 0644);
    }
    chmod(folder_.path("amp/amp-SCHEMATIC1-tran1.sim").c_str(), 0);
    const ProgramResult result = convertWithoutRoot(folder_.path("new"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.errors.find("amp-SCHEMATIC1-tran1.sim"), std::string::npos) << result.errors;
}

TEST_F(WithoutRights, AProjectOrDesignThatMayNotBeReadStopsBeforeAnythingIsMade) {
    for (const char* name : {"amp.opj", "amp.dsn"}) {
        const std::string path = folder_.path(std::string("amp/") + name);
        chmod(path.c_str(), 0);
        const auto before = pictureOf(folder_.path());
        const ProgramResult result = convertWithoutRoot(folder_.path("new"));
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_NE(result.errors.find("Failed to read file \"" + project()), std::string::npos)
            << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "") << name;
        chmod(path.c_str(), 0644);
    }
    chmod(folder_.path("amp").c_str(), 0);
    const ProgramResult result = convertWithoutRoot(folder_.path("new"));
    EXPECT_EQ(result.status, 1);
    EXPECT_FALSE(folder_.exists("new"));
    chmod(folder_.path("amp").c_str(), 0755);
}

// The names of such a folder cannot be listed, but its files can be opened.
TEST_F(WithoutRights, AProjectFolderThatMayNotBeListedIsConverted) {
    chmod(folder_.path("amp").c_str(), 0711);
    const ProgramResult result = convertWithoutRoot(folder_.path("new"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "");
    chmod(folder_.path("amp").c_str(), 0755);
}

TEST_F(WithoutRights, DestinationsThatMayNotBeWrittenAreToldAndLeft) {
    const auto before = pictureOf(folder_.path("amp"));
    folder_.makeFolder("closed");
    ProgramResult result = convertWithoutRoot(folder_.path("closed"));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("Failed to create directory \"" + folder_.path("closed") + "\""),
              std::string::npos)
        << result.errors;
    result = convertWithoutRoot(folder_.path("closed/new"));
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(fs::is_empty(folder_.path("closed")));

    folder_.makeFolder("open/amp-TevrixFiles/SCHEMATIC1");
    chmod(folder_.path("open").c_str(), 0777);
    chmod(folder_.path("open/amp-TevrixFiles").c_str(), 0777);
    result = convertWithoutRoot(folder_.path("open"));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(folder_.path("open/amp-TevrixFiles/SCHEMATIC1")), std::string::npos)
        << result.errors;
    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "");
}

TEST_F(WithoutRights, ReadOnlyFilesBecomeCopiesThatCanBeWritten) {
    for (const auto& [name, text] : smallProject()) {
        if (!name.ends_with('/')) chmod(folder_.path("amp/" + name).c_str(), 0444);
    }
    const auto before = pictureOf(folder_.path("amp"));
    // Twice: the second run meets the copies of the first.
    for (int run = 0; run < 2; ++run) {
        const ProgramResult result = convertWithoutRoot(folder_.path("new"));
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "");
    }
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path("new"))) {
        EXPECT_NE(entry.status().permissions() & fs::perms::owner_write, fs::perms::none) << entry.path();
    }
    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "");
}

}  // namespace
