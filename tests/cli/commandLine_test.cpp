// The program as its user meets it: what it takes, what it prints where, and with which status it ends.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "support/cliProject.h"

namespace {

using namespace clitest;
using Json = nlohmann::ordered_json;

// The small project in "old/amp"; "desk" is a folder to stand in.
class CommandLine : public testing::Test {
protected:
    void SetUp() override {
        tests::writeTree(folder_.path("old/amp"), smallProject());
        folder_.makeFolder("desk");
        before_ = pictureOf(folder_.path("old"));
    }

    void TearDown() override {
        EXPECT_EQ(difference(before_, pictureOf(folder_.path("old"))), "") << "the old files";
    }

    std::string project() const { return folder_.path("old/amp/amp.opj"); }

    TestFolder folder_;
    std::map<std::string, std::string> before_;
};

TEST_F(CommandLine, HelpAndVersionGoToStandardOutputAndAreASuccess) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"-h"},
                                                      {"draftel", "--help"},
                                                      {"draftel", project(), "--help"}}) {
        const ProgramResult result = runTvxconv(arguments);
        EXPECT_EQ(result.status, 0) << arguments.back();
        EXPECT_EQ(result.errors, "");
        for (const char* text : {"draftel", "--to", "--in-place", "--report", "Usage"}) {
            EXPECT_NE(result.output.find(text), std::string::npos) << text << " in\n" << result.output;
        }
    }
    const ProgramResult version = runTvxconv({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "tvxconv " TVXCONV_VERSION "\n");
    EXPECT_EQ(version.errors, "");
}

TEST_F(CommandLine, EveryWrongOneEndsWithStatus2AndAMessageAndDoesNothing) {
    const std::string to = folder_.path("new");
    const std::vector<std::string> wrong[] = {
        {},
        {"--json"},
        {"frobnicate"},
        {"DRAFTEL", project(), "--to", to},
        {project(), "--to", to},
        {"draftel"},
        {"draftel", project()},
        {"draftel", project(), "--json"},
        {"draftel", project(), "--report", "r.txt"},
        {"draftel", "--to", to},
        {"draftel", "--in-place"},
        {"draftel", project(), "--to"},
        {"draftel", project(), "--to", ""},
        {"draftel", project(), "--to="},
        {"draftel", "", "--to", to},
        {"draftel", "", "--in-place"},
        {"draftel", project(), "--to", to, "--in-place"},
        {"draftel", project(), "--in-place", "--to", to},
        {"draftel", project(), "--to", to, "--to", to},
        {"draftel", project(), "--to", to, "--report"},
        {"draftel", project(), "--to", to, "--report", "a", "--report", "b"},
        {"draftel", project(), project(), "--to", to},
        {"draftel", project(), "--to", to, "--bogus"},
        {"draftel", project(), "--to", to, "-x"},
        {"draftel", project(), "--TO", to},
        {"draftel", project(), "-to", to},
        {"draftel", project(), "--in-place=maybe"},
        {"draftel", project(), "--in-place=false"},
        {"draftel", project(), "draftel", "--to", to},
        {"--to", to, "draftel", project()},
    };
    for (const std::vector<std::string>& arguments : wrong) {
        const ProgramResult result = runTvxconv(arguments, folder_.path("desk"));
        const std::string shown = testing::PrintToString(arguments);
        EXPECT_EQ(result.status, 2) << shown;
        EXPECT_EQ(result.output, "") << shown;
        EXPECT_NE(result.errors, "") << shown;
        EXPECT_FALSE(folder_.exists("new")) << shown;
    }
    EXPECT_EQ(pictureOf(folder_.path("desk")).size(), 0U);
}

TEST_F(CommandLine, ToWritesTheWholeNewStructureAndListsIt) {
    const ProgramResult result = runTvxconv({"draftel", project(), "--to", folder_.path("new")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, asLines(convertedListing(folder_.path("new"))));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "");
}

TEST_F(CommandLine, ASecondConversionIntoTheSameFolderChangesNothing) {
    const ProgramResult first = runTvxconv({"draftel", project(), "--to", folder_.path("new")});
    const auto once = pictureOf(folder_.path("new"));
    const ProgramResult second = runTvxconv({"draftel", project(), "--to", folder_.path("new")});
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output, first.output);
    EXPECT_EQ(second.errors, "");
    EXPECT_EQ(pictureOf(folder_.path("new")), once);
}

// The library passes over it without an error. A file at its new place is then from another time.
TEST_F(CommandLine, AnAnalysisProfileThatCannotBeReadIsTold) {
    const std::string oldPath = folder_.write("old/amp/amp-SCHEMATIC1.aap", "(not closed");
    before_ = pictureOf(folder_.path("old"));
    const std::string newPath = newPlaces().at("amp-SCHEMATIC1.aap");
    for (const bool isThereBefore : {false, true}) {
        Tree expected = convertedDestination();
        expected.erase(newPath);
        if (isThereBefore) {
            folder_.write("new/" + newPath, "of another time");
            expected[newPath] = "of another time";
        }
        const ProgramResult result = runTvxconv({"draftel", project(), "--to", folder_.path("new")});
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.errors.find("\"" + oldPath + "\""), std::string::npos) << result.errors;
        EXPECT_EQ(difference(expected, tests::treeOf(folder_.path("new"))), "");
    }
}

TEST_F(CommandLine, OptionsStandInAnyOrderAndWithAnEqualsSign) {
    const std::string expected = asLines(convertedListing(folder_.path("new")));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"draftel", "--to", folder_.path("new"), project()},
          {"draftel", "--to=" + folder_.path("new"), project()},
          {"draftel", "--to", folder_.path("new"), "--", project()}}) {
        const ProgramResult result = runTvxconv(arguments);
        EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments) << result.errors;
        EXPECT_EQ(result.output, expected);
        std::filesystem::remove_all(folder_.path("new"));
    }
}

TEST_F(CommandLine, JsonIsOneObjectWithItsKeysInOrder) {
    const ProgramResult result = runTvxconv({"draftel", project(), "--to", folder_.path("new"), "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    std::string structure;
    for (const std::string& line : convertedListing(folder_.path("new"))) {
        structure += (structure.empty() ? "\"" : ",\"") + line + "\"";
    }
    EXPECT_EQ(result.output, "{\"status\":0,\"errorCode\":0,\"errorMessage\":\"\",\"newProjectPath\":\"" +
                                 folder_.path("new/amp.opj") + "\",\"structure\":[" + structure + "]}\n");
}

TEST_F(CommandLine, JsonTellsAFailureToo) {
    const std::string destination = folder_.path("no/such/parent");
    const ProgramResult result = runTvxconv({"draftel", project(), "--to", destination, "--json"});
    EXPECT_EQ(result.status, 1);
    const std::string message = "Failed to create directory \"" + destination +
                                "\". Check write permissions on the parent directory.";
    EXPECT_EQ(
        Json::parse(result.output),
        Json::parse(R"({"status":10102,"errorCode":10102,"errorMessage":")" +
                    tests::replaced(message, "\"", "\\\"") + R"(","newProjectPath":"","structure":[]})"));
    EXPECT_NE(result.errors.find(message), std::string::npos) << result.errors;
    EXPECT_FALSE(folder_.exists("no"));
}

TEST_F(CommandLine, JsonKeepsItsKeysWhereTheCommandIsRefused) {
    const ProgramResult result =
        runTvxconv({"draftel", project(), "--to", folder_.path("old/amp"), "--json"});
    EXPECT_EQ(result.status, 2);
    std::vector<std::string> keys;
    const Json object = Json::parse(result.output);
    for (const auto& [key, value] : object.items()) keys.push_back(key);
    EXPECT_EQ(keys, (std::vector<std::string>{"status", "errorCode", "errorMessage", "newProjectPath",
                                              "structure"}));
    EXPECT_NE(object["status"], 0);
    EXPECT_EQ(object["errorCode"], 0);
    EXPECT_NE(object["errorMessage"], "");
    EXPECT_EQ(object["newProjectPath"], "");
    EXPECT_EQ(object["structure"], Json::array());
}

// A folder where a converted output has to go: that one file is not written, the conversion goes on.
TEST_F(CommandLine, AnErrorAlongTheWayIsToldThoughTheConversionGoesOn) {
    folder_.makeFolder("new/amp-TevrixFiles/SCHEMATIC1/tran1/tran1.out");
    const std::string message = "Failed to copy file \"" + folder_.path("old/amp/amp-SCHEMATIC1-tran1.out") +
                                "\" to file \"" +
                                folder_.path("new/amp-TevrixFiles/SCHEMATIC1/tran1/tran1.out") +
                                "\". Check disk space and access permissions.";
    const ProgramResult result = runTvxconv({"draftel", project(), "--to", folder_.path("new"), "--json"});
    EXPECT_EQ(result.status, 0);
    const Json object = Json::parse(result.output);
    EXPECT_EQ(object["status"], 0);
    EXPECT_EQ(object["errorCode"], 10108);
    EXPECT_EQ(object["errorMessage"], message);
    EXPECT_EQ(object["newProjectPath"], folder_.path("new/amp.opj"));
    EXPECT_NE(result.errors.find(message), std::string::npos) << result.errors;

    Tree expected = convertedDestination();
    expected.erase("amp-TevrixFiles/SCHEMATIC1/tran1/tran1.out");
    expected["amp-TevrixFiles/SCHEMATIC1/tran1/tran1.out/"] = "";
    EXPECT_EQ(tests::treeOf(folder_.path("new")), expected);
}

TEST_F(CommandLine, ReportHoldsTheListingBehindTwoSentences) {
    const ProgramResult result =
        runTvxconv({"draftel", project(), "--to", folder_.path("new"), "--report", "structure.txt"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, asLines(convertedListing(folder_.path("new"))));
    Tree expected = convertedDestination();
    expected["structure.txt"] =
        "The conversion of the project was successful.\n\nThe new directory structure is as follows:\n\n" +
        result.output;
    EXPECT_EQ(tests::treeOf(folder_.path("new")), expected);
}

TEST_F(CommandLine, ReportThatCannotBeOpenedIsAFailureAfterTheConversion) {
    const ProgramResult result = runTvxconv(
        {"draftel", project(), "--to", folder_.path("new"), "--report", "no-folder/structure.txt", "--json"});
    EXPECT_EQ(result.status, 1);
    const Json object = Json::parse(result.output);
    EXPECT_EQ(object["status"], 10106);
    EXPECT_EQ(object["errorCode"], 10106);
    EXPECT_EQ(object["newProjectPath"], folder_.path("new/amp.opj"));
    EXPECT_NE(result.errors.find("no-folder/structure.txt"), std::string::npos) << result.errors;
    EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "");
}

TEST_F(CommandLine, RelativeArgumentsAreTakenFromTheCurrentFolder) {
    struct {
        const char* current;
        const char* project;
        const char* destination;
        const char* becomes;
    } const cases[] = {
        {"old/amp", "amp.opj", "../../new", "new"},
        {"old/amp", "./amp.opj", "../../new/", "new"},
        {"old", "amp/amp.opj", "../desk/new", "desk/new"},
        {"desk", "../old/amp/amp.opj", "new", "desk/new"},
        {"desk", "../old/amp/amp.opj", "./new", "desk/new"},
        {"desk", "../old/amp/amp.opj", ".", "desk"},
        {"desk", "../old/../old/amp/amp.opj", "../desk/./new", "desk/new"},
        {"old/amp/local", "../amp.opj", "../../../new", "new"},
    };
    for (const auto& one : cases) {
        const ProgramResult result =
            runTvxconv({"draftel", one.project, "--to", one.destination}, folder_.path(one.current));
        EXPECT_EQ(result.status, 0) << one.project << " --to " << one.destination << ": " << result.errors;
        EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path(one.becomes))), "")
            << one.destination;
        EXPECT_EQ(result.output, asLines(convertedListing(folder_.path(one.becomes)))) << one.destination;
        std::filesystem::remove_all(folder_.path("new"));
        std::filesystem::remove_all(folder_.path("desk"));
        folder_.makeFolder("desk");
    }
}

TEST_F(CommandLine, AReportIsNotWrittenOverTheProjectOrItsDesign) {
    const auto before = pictureOf(folder_.path());
    for (const char* name : {"amp.opj", "AMP.dsn", "./amp.dbk", "../old/amp/amp.opj"}) {
        const ProgramResult result =
            runTvxconv({"draftel", project(), "--to", folder_.path("new"), "--report", name});
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_NE(result.errors.find("would be written over the project or its design"), std::string::npos)
            << result.errors;
        EXPECT_EQ(difference(before, pictureOf(folder_.path())), "") << name;
    }
}

// References that begin with "../" have to mean the folder above the project's, and above the destination,
// however those are called.
TEST_F(CommandLine, DotsInTheArgumentsDoNotChangeWhatTheProjectNames) {
    Tree old = smallProject();
    old["amp.opj"] = tests::replaced(old["amp.opj"], ".\\\\amp.dsn", "..\\\\lib\\\\amp.dsn");
    old["amp.opj"] = tests::replaced(old["amp.opj"], ".\\\\local\\\\bench.txt", "..\\\\lib\\\\bench.txt");
    old.erase("amp.dsn");
    tests::writeTree(folder_.path("deep/old/amp"), old);
    const Tree parts = {{"amp.dsn", kDesign}, {"bench.txt", kBench}};
    tests::writeTree(folder_.path("deep/old/lib"), parts);

    Tree expected = convertedDestination();
    expected["amp.opj"] =
        tests::replaced(newProjectText(), ".\\\\local\\\\bench.txt", "..\\\\lib\\\\bench.txt");
    expected.erase("local/");
    expected.erase("local/bench.txt");
    // The files of a schematic lie beside the design, where there are none.
    for (const char* name :
         {"amp-SCHEMATIC1.net", "amp-SCHEMATIC1.opt", "amp-SCHEMATIC1.aap", "corners.mdp"}) {
        expected.erase(newPlaces().at(name));
    }
    expected["amp.opj"] =
        tests::replaced(expected["amp.opj"], ".\\\\amp-tevrixfiles\\\\schematic1\\\\schematic1.net",
                        ".\\\\amp-SCHEMATIC1.net");
    expected["amp.opj"] =
        tests::replaced(expected["amp.opj"], "\"schematic1.net\"", "\"amp-SCHEMATIC1.net\"");
    expected["amp-SCHEMATIC1.net"] = kOldNetlist;

    struct {
        const char* current;
        const char* project;
        const char* destination;
    } const cases[] = {
        {"deep/old/amp/local", "../amp.opj", "../../new"},
        {"deep/old/amp", "local/../amp.opj", "../new/."},
        {"deep/old/new/below", "../../amp/amp.opj", ".."},
        {"deep/old/new/below", "../../amp/amp.opj", "../."},
        {"deep/old/new", "../amp/./amp.opj", "below/.."},
        {"deep/old/new", "/../../../%/deep/./old/amp/amp.opj", "/..//%/deep/old/new"},
    };
    for (const auto& one : cases) {
        if (tests::kOnWindows && one.project[0] == '/') continue;  // a drive comes first there
        folder_.makeFolder("deep/old/new/below");
        const ProgramResult result =
            runTvxconv({"draftel", tests::replaced(one.project, "%", folder_.path()), "--to",
                        tests::replaced(one.destination, "%", folder_.path())},
                       folder_.path(one.current));
        EXPECT_EQ(result.status, 0) << one.current << ": " << result.errors;
        EXPECT_EQ(without(tests::treeOf(folder_.path("deep/old/new")), "below/"), expected) << one.current;
        EXPECT_EQ(tests::treeOf(folder_.path("deep/old/lib")), parts) << one.current;
        EXPECT_EQ(tests::treeOf(folder_.path("deep/old/amp")), old) << one.current;
        std::filesystem::remove_all(folder_.path("deep/old/new"));
    }
}

TEST_F(CommandLine, AProjectReachedThroughALinkIsReadWhereTheLinkIs) {
    tests::makeLink(folder_.path("old/amp"), folder_.path("desk/link"));
    const ProgramResult result =
        runTvxconv({"draftel", "link/amp.opj", "--to", folder_.path("new")}, folder_.path("desk"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "");
}

TEST_F(CommandLine, BackslashesAndLetterCaseInTheArgumentsAreThoseOfTheProjectsHome) {
    const ProgramResult result =
        runTvxconv({"draftel", "..\\OLD\\Amp\\AMP.opj", "--to", "..\\new"}, folder_.path("desk"));
    EXPECT_EQ(result.status, 0) << result.errors;
    // The design is called as the project file's name was spelled.
    Tree expected;
    for (const auto& [name, text] : convertedDestination()) {
        std::string spelled = name;
        if (name == "amp.opj") spelled = "AMP.opj";
        if (name.starts_with("amp-TevrixFiles")) spelled.replace(0, 3, "AMP");
        expected[spelled] = text;
    }
    EXPECT_EQ(tests::treeOf(folder_.path("new")), expected);
}

// --- standard output ---

ProgramResult runInto(const std::string& outputFile, const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"sh", "-c",       "out=$1; shift; exec \"$@\" >\"$out\"",
                                        "sh", outputFile, kProgram};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return tests::runProgram(command);
}

TEST_F(CommandLine, AResultThatCannotBePrintedIsAFailureThatIsTold) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"draftel", project(), "--to", folder_.path("new")},
          {"draftel", project(), "--to", folder_.path("new"), "--json"},
          {"--help"},
          {"draftel", "--help"},
          {"--version"}}) {
        const ProgramResult result = runInto("/dev/full", arguments);
        EXPECT_EQ(result.status, 1) << testing::PrintToString(arguments);
        EXPECT_NE(result.errors, "") << testing::PrintToString(arguments);
    }
    EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "");
}

TEST_F(CommandLine, ClosedStandardStreamsDoNoHarm) {
    for (const char* closed : {">&-", "2>&-", "<&- >&- 2>&-"}) {
        const ProgramResult result =
            tests::runProgram({"sh", "-c", std::string("exec \"$@\" ") + closed, "sh", kProgram, "draftel",
                               project(), "--to", folder_.path("new")});
        EXPECT_EQ(result.status, std::string(closed) == "2>&-" ? 0 : 1) << closed;
        EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "") << closed;
        std::filesystem::remove_all(folder_.path("new"));
    }
}

// --- names ---

TEST_F(CommandLine, ConvertsProjectsWithUnusualNames) {
    const char* names[] = {"two words",
                           "it's",
                           "say \"hi\"",
                           "dots..in..it",
                           "..leading",
                           "percent%sign",
                           "Verst\xC3\xA4rker",
                           "latin1-\xE4\xF6",
                           "-dash",
                           "star*",
                           "$HOME",
                           "%s%n"};
    for (const char* name : names) {
        const std::string old = folder_.path(std::string("desk/") + name);
        const std::string destination = folder_.path(std::string("new ") + name);
        tests::writeTree(old, smallProject());
        const ProgramResult result = runTvxconv({"draftel", old + "/amp.opj", "--to", destination, "--json"});
        EXPECT_EQ(result.status, 0) << name << ": " << result.errors;
        EXPECT_EQ(result.errors, "") << name;
        EXPECT_EQ(difference(convertedDestination(), tests::treeOf(destination)), "") << name;
        EXPECT_EQ(tests::treeOf(old), tests::treeOf(folder_.path("old/amp"))) << name;
        EXPECT_EQ(Json::parse(result.output)["status"], 0) << name;
    }
}

// The same names for the project itself, its schematic and its profile, where they are UTF-8 as the two
// project files demand.
TEST_F(CommandLine, ConvertsDesignsSchematicsAndProfilesWithUnusualNames) {
    for (const std::string name :
         {"two words", "it's", "percent%s", "Verst\xC3\xA4rker", "-dash", "a-b-c", "MiXed"}) {
        // A name has other bytes there than in the project file.
        if (tests::kOnWindows && name == "Verst\xC3\xA4rker") continue;
        Tree old;
        for (const auto& [file, text] : smallProject()) {
            const auto renamed = [&](std::string value) {
                value = tests::replaced(value, "SCHEMATIC1", "\x01");
                value = tests::replaced(value, "tran1", "\x02");
                value = tests::replaced(value, "amp", "\x03");
                value = tests::replaced(value, "\x01", "S " + name);
                value = tests::replaced(value, "\x02", "P " + name);
                return tests::replaced(value, "\x03", name);
            };
            old[renamed(file)] = renamed(text);
        }
        const std::string folder = folder_.path("desk/" + name);
        tests::writeTree(folder, old);
        const auto before = pictureOf(folder);
        const ProgramResult result =
            runTvxconv({"draftel", folder + "/" + name + ".opj", "--to", folder_.path("new"), "--json"});
        EXPECT_EQ(result.status, 0) << name << ": " << result.errors;
        EXPECT_EQ(result.errors, "") << name;
        const std::string root = "new/" + name + "-TevrixFiles/";
        const std::string schematic = root + "S " + name + "/";
        EXPECT_EQ(folder_.read(root + name + ".lib"), old.at(name + ".lib"));
        EXPECT_EQ(folder_.read(schematic + "S " + name + ".net"),
                  "* netlist\n.INC \"../S " + name + ".par\"\nR1 a b 1k\n");
        EXPECT_EQ(folder_.read(schematic + "P " + name + "/P " + name + ".out"), kOutput);
        EXPECT_EQ(folder_.read(schematic + "P " + name + ".sim"),
                  "ProfileName= \"P " + name + "\" \nConnectivity= \"S " + name +
                      ".net\" \nProfileFile= \"P " + name + ".sim\" \nNetlistFile= \"P " + name +
                      ".cir\" \nOutFile= \"P " + name + ".out\" \n+8 \"NOPAGE\" \n");
        EXPECT_EQ(difference(before, pictureOf(folder)), "") << name;
        std::filesystem::remove_all(folder_.path("new"));
    }
}

}  // namespace
