// host_test.cpp
//
// The small hosts of the examples, one for each interface: they load the library at run time and print all
// that it tells them.

#include <gtest/gtest.h>

#include <string>

#include "support/DraftelProject.h"
#include "support/TarnetLibrary.h"
#include "support/TestFolder.h"
#include "support/builtFiles.h"

namespace {

using std::string;
using tests::DraftelProject;

constexpr const char* kHost = tests::kHostFile;
constexpr const char* kTarnetHost = tests::kTarnetHostFile;
constexpr const char* kLibrary = tests::kLibraryFile;

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
    const string otherLibrary = tests::kReaderFile;
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

TEST(TarnetHost, PrintsWhatTheInterfaceTellsOfAConversion) {
    const tests::TarnetLibrary library;
    library.writeOld("tran.dat", "data");
    library.addCell("beta");
    const tests::ProgramResult result = tests::runProgram({kTarnetHost, kLibrary, library.dir, "report.txt"});
    const string listing = "\n" + library.cfg + "\n    master.tag\n" + library.view + "\n    master.tag\n" +
                           library.profiles + "\n" + library.profiles + "/tran\n    tran.dat\n\n" +
                           library.path("beta/cfg_analog") + "\n    master.tag\n" +
                           library.path("beta/tvx_sim_1") + "\n    master.tag\n";
    EXPECT_EQ(result.output,
              "convert: 0\n"
              "getLibraryParentName: 0 site\n"
              "getNewStructure: 0 13 lines\n" +
                  listing +
                  "writeReport: 0\n"
                  "getLastErrorCode: 0 0\n"
                  "getLastErrorMessage: 0 \n");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(library.read("report.txt"),
              "The conversion of the project was successful.\n\n"
              "The new directory structure is as follows:\n\n" +
                  listing);
    EXPECT_EQ(library.readNew("profiles/tran/tran.dat"), "data");
}

TEST(TarnetHost, PrintsTheErrorOfAConversionThatFails) {
    const tests::TarnetLibrary library;
    const string missing = library.path("none");
    const tests::ProgramResult result = tests::runProgram({kTarnetHost, kLibrary, missing, "report.txt"});
    EXPECT_EQ(result.output,
              "convert: 10103\n"
              "getLibraryParentName: 0 lib\n"
              "getNewStructure: 0 0 lines\n"
              "writeReport: 1\n"
              "getLastErrorCode: 0 10103\n"
              "getLastErrorMessage: 0 " +
                  tests::openDirectoryError(missing).message + "\n");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 1);
}

TEST(TarnetHost, SaysWhatIsWrongWithItsArguments) {
    const tests::TarnetLibrary library;
    const tests::Tree before = library.tree();
    const string usage = "usage: tvxconv_tarnet_host LIBRARY LIBRARY_DIR REPORT\n";
    const string noLibrary = library.folder.path("none.so");
    const string otherLibrary = tests::kReaderFile;
    const struct {
        std::vector<string> command;
        string errors;
    } cases[] = {
        {{kTarnetHost}, usage},
        {{kTarnetHost, kLibrary, library.dir}, usage},
        {{kTarnetHost, noLibrary, library.dir, "report.txt"},
         "tvxconv_tarnet_host: cannot load " + noLibrary + "\n"},
        {{kTarnetHost, otherLibrary, library.dir, "report.txt"},
         "tvxconv_tarnet_host: " + otherLibrary + " has no createTarnetProjectConverter\n"},
    };
    for (const auto& c : cases) {
        const tests::ProgramResult result = tests::runProgram(c.command);
        EXPECT_EQ(result.status, 2) << c.errors;
        EXPECT_EQ(result.output, "") << c.errors;
        EXPECT_EQ(result.errors, c.errors);
    }
    EXPECT_EQ(library.tree(), before);
}

}  // namespace
