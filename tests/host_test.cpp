// host_test.cpp
//
// The small host of the examples: it loads the library at run time and prints all that the interface
// tells it.

#include <gtest/gtest.h>

#include <string>

#include "support/DraftelProject.h"
#include "support/TestFolder.h"

namespace {

using std::string;
using tests::DraftelProject;

constexpr const char* kHost = TVXCONV_BIN_DIR "/tvxconv_host";
constexpr const char* kLibrary = TVXCONV_BIN_DIR "/libtvxconv.so";

TEST(Host, PrintsWhatTheInterfaceTellsOfAConversion) {
    const DraftelProject project;
    project.write("amp.lib", "* models\n");
    project.write("amp-S1-tran.dat", "data");
    const tests::ProgramResult result =
        tests::runProgram({kHost, kLibrary, project.path("amp.opj"), project.destination, "report.txt"});
    const string listing = project.destination +
                           "\n"
                           "    amp.opj\n"
                           "    amp.dsn\n" +
                           project.root +
                           "\n"
                           "    amp.lib\n" +
                           project.schematicFolder +
                           "\n"
                           "    tran.sim\n" +
                           project.profileFolder +
                           "\n"
                           "    tran.dat\n";
    EXPECT_EQ(result.output,
              "convert: 0\n"
              "getNewProjectPath: 0 " +
                  project.newPath("amp.opj") +
                  "\n"
                  "getNewStructure: 0 9 lines\n" +
                  listing +
                  "writeReport: 0\n"
                  "getLastErrorCode: 0 0\n"
                  "getLastErrorMessage: 0 \n");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(project.readNew("report.txt"),
              "The conversion of the project was successful.\n\n"
              "The new directory structure is as follows:\n\n" +
                  listing);
    EXPECT_EQ(project.readNew("amp.opj"), tests::smallProjectTextConverted());
    EXPECT_EQ(project.readNew("amp-TevrixFiles/amp.lib"), "* models\n");
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.dat"), "data");
}

TEST(Host, PrintsTheErrorOfAConversionThatFails) {
    const DraftelProject project;
    const tests::ProgramResult result =
        tests::runProgram({kHost, kLibrary, project.path("none.opj"), project.destination, "report.txt"});
    EXPECT_EQ(result.output,
              "convert: 10109\n"
              "getNewProjectPath: 1 unset\n"
              "getNewStructure: 0 2 lines\n" +
                  project.destination + "\n" + project.destination +
                  "/none-TevrixFiles\n"
                  "writeReport: 1\n"
                  "getLastErrorCode: 0 10109\n"
                  "getLastErrorMessage: 0 " +
                  tests::readFileError(project.path("none.opj")).message + "\n");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(tests::treeOf(project.destination), (tests::Tree{{"none-TevrixFiles/", ""}}));
}

TEST(Host, SaysWhatIsWrongWithItsArguments) {
    const DraftelProject project;
    const tests::Tree before = project.tree();
    const string noLibrary = project.folder.path("none.so");
    const string otherLibrary = TVXCONV_BIN_DIR "/DraDsnReader.so";
    const struct {
        std::vector<string> command;
        string errors;
    } cases[] = {
        {{kHost}, "usage: tvxconv_host LIBRARY PROJECT.opj DESTINATION REPORT\n"},
        {{kHost, kLibrary, project.path("amp.opj"), project.destination},
         "usage: tvxconv_host LIBRARY PROJECT.opj DESTINATION REPORT\n"},
        {{kHost, noLibrary, project.path("amp.opj"), project.destination, "report.txt"},
         "tvxconv_host: cannot load " + noLibrary + "\n"},
        {{kHost, otherLibrary, project.path("amp.opj"), project.destination, "report.txt"},
         "tvxconv_host: " + otherLibrary + " has no createDraftelProjectConverter\n"},
    };
    for (const auto& c : cases) {
        const tests::ProgramResult result = tests::runProgram(c.command);
        EXPECT_EQ(result.status, 2) << c.errors;
        EXPECT_EQ(result.output, "") << c.errors;
        EXPECT_EQ(result.errors, c.errors);
    }
    EXPECT_EQ(project.tree(), before);
}

}  // namespace
