// analysisProfile_test.cpp
//
// The rewriting of a schematic's advanced-analysis profile: which names of profiles in it become new ones,
// what stays, and what happens when it cannot be read or written.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"

namespace {

using namespace tests;
using namespace std::string_literals;
namespace fs = std::filesystem;

// A project with records of the profiles "tran" of S1 and "AC sweep" of S2.
class AnalysisProfile : public testing::Test {
protected:
    AnalysisProfile() {
        project_.prepareSteps();
        project_.converter.addProfileRecord("amp-S1-tran", "tran", "S1", ".\\amp-S1-tran.sim");
        project_.converter.addProfileRecord("bench", "AC sweep", "S2", ".\\bench.sim");
        newFile_ = project_.schematicFolder + "/S1.aap";
    }

    int relocate() {
        std::string newPath = "left over";
        const int status = project_.converter.relocateAnalysisProfile(newPath, project_.path("amp-S1.aap"),
                                                                      "S1", project_.schematicFolder, "aap");
        EXPECT_EQ(newPath, newFile_);
        return status;
    }

    // The new file that `text` becomes.
    std::string relocatedFile(const std::string& text) {
        project_.write("amp-S1.aap", text);
        EXPECT_EQ(relocate(), 0) << text;
        EXPECT_EQ(lastError(), LastError()) << text;
        EXPECT_EQ(project_.read("amp-S1.aap"), text);
        return project_.readNew("amp-TevrixFiles/S1/S1.aap");
    }

    // The same, without what every such file begins and ends with.
    std::string relocated(const std::string& body) {
        const std::string text = relocatedFile("(FILE_TYPE \"Advanced Analysis Profile\" " + body + ")");
        const std::string begin = "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n";
        const std::string end = ")\n";
        EXPECT_TRUE(text.starts_with(begin) && text.ends_with(end)) << text;
        return text.substr(begin.size(), text.size() - begin.size() - end.size());
    }

    DraftelProject project_;
    std::string newFile_;
};

// --- the section of profiles ---

TEST_F(AnalysisProfile, ProfilesAreNamedAsTheyAreCalledNowAndKeepTheirPlaces) {
    EXPECT_EQ(relocated("(Profiles (\"amp-S1-tran\" 1) (other 2.0) (BENCH \"three\") (\"amp-S1-tran\" 4))"),
              "    (\"Profiles\"\n"
              "        (\"tran\"\t\"1\")\n"
              "        (\"other\"\t\"2\")\n"
              "        (\"AC sweep\"\t\"three\")\n"
              "        (\"tran\"\t\"4\")\n"
              "    )\n");
}

TEST_F(AnalysisProfile, AKeyOfTheProfilesIsTakenAsItIs) {
    // Neither an extension nor a folder belongs to it, and an empty one names no profile.
    project_.converter.addProfileRecord("", "nameless", "S1", "");
    EXPECT_EQ(relocated("(Profiles (\"amp-S1-tran.sim\" 1) (\"./bench\" 2) (\"\" 3) (5 4) (\" bench\" 5))"),
              "    (\"Profiles\"\n"
              "        (\"amp-S1-tran.sim\"\t\"1\")\n"
              "        (\"./bench\"\t\"2\")\n"
              "        (\"\"\t\"3\")\n"
              "        (\"\"\t\"4\")\n"
              "        (\" bench\"\t\"5\")\n"
              "    )\n");
}

TEST_F(AnalysisProfile, OfTwoProfilesSectionsTheFirstCounts) {
    EXPECT_EQ(relocated("(PROFILES (bench 1) (Deep (bench 2))) (Profiles (bench 3))"),
              "    (\"PROFILES\"\n"
              "        (\"AC sweep\"\t\"1\")\n"
              "        (\"Deep\"\n"
              "            (\"bench\"\t\"2\")\n"
              "        )\n"
              "    )\n"
              "    (\"Profiles\"\n"
              "        (\"bench\"\t\"3\")\n"
              "    )\n");
}

TEST_F(AnalysisProfile, ProfilesElsewhereAreNone) {
    // An attribute is no section, and a section below another is not looked for.
    EXPECT_EQ(relocated("(Profiles bench) (Group (Profiles (bench 1))) (bench 2)"),
              "    (\"Profiles\"\t\"bench\")\n"
              "    (\"bench\"\t\"2\")\n"
              "    (\"Group\"\n"
              "        (\"Profiles\"\n"
              "            (\"bench\"\t\"1\")\n"
              "        )\n"
              "    )\n");
    EXPECT_EQ(relocated("(Profiles)"), "    (\"Profiles\"\n    )\n");
}

// --- the profiles of measurements ---

TEST_F(AnalysisProfile, MeasurementsNameTheNewProfileFiles) {
    for (const std::string name : {"Optimizer", "Sensitivity", "MonteCarlo", "OPTIMIZER", "montecarlo"}) {
        EXPECT_EQ(relocated("(" + name +
                            " (Profile \"bench.sim\")"
                            " (Measurements"
                            "  (Gain (Profile \"amp-S1-tran.sim\") (Goal 33.0))"
                            "  (\"Phase\" (Goal 45) (PROFILE \"BENCH.sim.old\")  (Weight 2))"
                            "  (Noise (profile bench))))"),
                  "    (\"" + name +
                      "\"\n"
                      "        (\"Profile\"\t\"bench.sim\")\n"
                      "        (\"Measurements\"\n"
                      "            (\"Gain\"\n"
                      "                (\"Goal\"\t\"33\")\n"
                      "                (\"Profile\"\t\"tran.sim\")\n"
                      "            )\n"
                      "            (\"Phase\"\n"
                      "                (\"Goal\"\t\"45\")\n"
                      "                (\"Weight\"\t\"2\")\n"
                      "                (\"Profile\"\t\"AC sweep.sim\")\n"
                      "            )\n"
                      "            (\"Noise\"\n"
                      "                (\"Profile\"\t\"AC sweep.sim\")\n"
                      "            )\n"
                      "        )\n"
                      "    )\n");
    }
}

TEST_F(AnalysisProfile, MeasurementsOfUnknownProfilesOrNoneStayAsTheyAre) {
    const std::string written =
        "    (\"Optimizer\"\n"
        "        (\"MEASUREMENTS\"\n"
        "            (\"Count\"\t\"3\")\n"
        "            (\"Profile\"\t\"bench.sim\")\n"
        "            (\"a\"\n"
        "                (\"Profile\"\t\"amp-S1-dc.sim\")\n"
        "                (\"Goal\"\t\"1\")\n"
        "            )\n"
        "            (\"b\"\n"
        "                (\"Goal\"\t\"bench.sim\")\n"
        "            )\n"
        "            (\"c\"\n"
        "            )\n"
        "            (\"d\"\n"
        "                (\"Profile\"\t\"./bench.sim\")\n"
        "                (\"Profiles\"\t\"bench.sim\")\n"
        "            )\n"
        "            (\"e\"\n"
        "                (\"Profile\"\t\"\")\n"
        "                (\"Inner\"\n"
        "                    (\"Profile\"\t\"bench.sim\")\n"
        "                )\n"
        "            )\n"
        "        )\n"
        "    )\n";
    EXPECT_EQ(relocated(written), written);
}

TEST_F(AnalysisProfile, SectionsWithoutMeasurementsAndOtherSectionsStayAsTheyAre) {
    const std::string measured =
        "        (\"MEASUREMENTS\"\n"
        "            (\"Gain\"\n"
        "                (\"Profile\"\t\"bench.sim\")\n"
        "                (\"Goal\"\t\"1\")\n"
        "            )\n"
        "        )\n";
    const std::string written =
        "    (\"Optimizer\"\t\"x\")\n"
        "    (\"MonteCarlo\"\n"
        "        (\"Runs\"\t\"100\")\n"
        "        (\"Profile\"\t\"bench.sim\")\n"
        "        (\"Gain\"\n"
        "            (\"Profile\"\t\"bench.sim\")\n"
        "        )\n"
        "    )\n"
        "    (\"Smoke\"\n" +
        measured +
        "    )\n"
        "    (\"Optimizers\"\n" +
        measured +
        "    )\n"
        "    (\"MonteCarlo\"\n" +
        measured +
        "    )\n"
        "    (\"MEASUREMENTS\"\n"
        "        (\"Gain\"\n"
        "            (\"Profile\"\t\"bench.sim\")\n"
        "        )\n"
        "    )\n";
    EXPECT_EQ(relocated(written), written);
}

TEST_F(AnalysisProfile, OfSeveralProfilesOfAMeasurementTheFirstIsRenamed) {
    EXPECT_EQ(relocated("(Sensitivity (MEASUREMENTS (m (Profile bench) (profile \"bench.sim\") (a 1)))"
                        " (MEASUREMENTS (n (Profile bench))))"),
              "    (\"Sensitivity\"\n"
              "        (\"MEASUREMENTS\"\n"
              "            (\"m\"\n"
              "                (\"profile\"\t\"bench.sim\")\n"
              "                (\"a\"\t\"1\")\n"
              "                (\"Profile\"\t\"AC sweep.sim\")\n"
              "            )\n"
              "        )\n"
              "        (\"MEASUREMENTS\"\n"
              "            (\"n\"\n"
              "                (\"Profile\"\t\"bench\")\n"
              "            )\n"
              "        )\n"
              "    )\n");
}

TEST_F(AnalysisProfile, EverySectionIsLookedAt) {
    EXPECT_EQ(relocated("(MonteCarlo (MEASUREMENTS (m (Profile bench)))) (Profiles (bench 1))"
                        " (Optimizer (MEASUREMENTS (m (Profile bench))))"
                        " (Sensitivity (MEASUREMENTS (m (Profile bench))))"),
              "    (\"MonteCarlo\"\n"
              "        (\"MEASUREMENTS\"\n"
              "            (\"m\"\n"
              "                (\"Profile\"\t\"AC sweep.sim\")\n"
              "            )\n"
              "        )\n"
              "    )\n"
              "    (\"Profiles\"\n"
              "        (\"AC sweep\"\t\"1\")\n"
              "    )\n"
              "    (\"Optimizer\"\n"
              "        (\"MEASUREMENTS\"\n"
              "            (\"m\"\n"
              "                (\"Profile\"\t\"AC sweep.sim\")\n"
              "            )\n"
              "        )\n"
              "    )\n"
              "    (\"Sensitivity\"\n"
              "        (\"MEASUREMENTS\"\n"
              "            (\"m\"\n"
              "                (\"Profile\"\t\"AC sweep.sim\")\n"
              "            )\n"
              "        )\n"
              "    )\n");
}

TEST_F(AnalysisProfile, ALargeOneIsWhole) {
    std::string body = "(Profiles";
    std::string written = "    (\"Profiles\"\n";
    std::string measured;
    for (int i = 0; i < 10000; ++i) {
        const std::string number = std::to_string(i);
        project_.converter.addProfileRecord("base" + number, "p" + number, "S1", "");
        body += " (base" + number + " " + number + ")";
        written += "        (\"p" + number + "\"\t\"" + number + "\")\n";
        measured += " (m (Profile \"base" + number + ".sim\"))";
    }
    body += ") (Optimizer (MEASUREMENTS" + measured + "))";
    written += "    )\n    (\"Optimizer\"\n        (\"MEASUREMENTS\"\n";
    for (int i = 0; i < 10000; ++i) {
        written += "            (\"m\"\n                (\"Profile\"\t\"p" + std::to_string(i) +
                   ".sim\")\n            )\n";
    }
    written += "        )\n    )\n";
    EXPECT_TRUE(relocated(body) == written);
}

// --- the file as a whole ---

TEST_F(AnalysisProfile, IsFoundInAnyLetterCaseAndKeepsItsType) {
    project_.write("AMP-s1.AAP", "\r\n( file_type \"derate FILE\"\r\n(a \"x \\\"y\\\\\"))\r\nand more\r\n");
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/S1/S1.aap"),
              "(\"FILE_TYPE\"\t\"Derate File\"\n    (\"a\"\t\"x y\\\\\")\n)\n");
    EXPECT_EQ(lastError(), LastError());
}

// A quote in a key is written as it is, whatever a reader makes of that.
TEST_F(AnalysisProfile, AKeyMayHoldAQuote) {
    EXPECT_EQ(relocated("(\"a\\\"b\" 1)"), "    (\"a\"b\"\t\"1\")\n");
}

TEST_F(AnalysisProfile, NamesComeFromTheArguments) {
    fs::create_directories(project_.root + "/Top");
    std::string path = project_.write("any.txt", "(x \"UI Settings File\")");
    EXPECT_EQ(
        project_.converter.relocateAnalysisProfile(path, path, "Top level", project_.root + "/Top", "AAP"),
        0);
    EXPECT_EQ(path, project_.root + "/Top/Top level.AAP");
    EXPECT_EQ(project_.readNew("amp-TevrixFiles/Top/Top level.AAP"),
              "(\"FILE_TYPE\"\t\"UI Settings File\"\n)\n");
}

TEST_F(AnalysisProfile, OneThatCannotBeReadIsPassedOverAndTellsItsNewPath) {
    struct Case {
        const char* what;
        const char* text;
    };
    const std::vector<Case> cases = {
        {"empty", ""},
        {"white space", " \r\n\t"},
        {"not closed", "(FILE_TYPE \"Advanced Analysis Profile\" (a 1)"},
        {"an illegal character", "(FILE_TYPE \"Advanced Analysis Profile\" (a .1))"},
        {"an unknown type", "(FILE_TYPE \"Profile\" (a 1))"},
        {"no type", "((a 1) (b 2))"},
        {"no list", "\"Advanced Analysis Profile\""},
        {"another list before it", "() (FILE_TYPE \"Advanced Analysis Profile\")"},
    };
    for (const Case& entry : cases) {
        project_.write("amp-S1.aap", entry.text);
        const Tree before = project_.tree();
        EXPECT_EQ(relocate(), 0) << entry.what;
        EXPECT_EQ(project_.tree(), before) << entry.what;
        EXPECT_EQ(lastError(), LastError()) << entry.what;
    }
    // What may lie at its new place from another time stays.
    writeFile(newFile_, "an earlier one");
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(readFile(newFile_), "an earlier one");
    fs::remove(project_.path("amp-S1.aap"));
    fs::create_directory(project_.path("amp-S1.aap"));
    EXPECT_EQ(relocate(), 0);
    EXPECT_EQ(readFile(newFile_), "an earlier one");
    EXPECT_EQ(lastError(), LastError());
}

TEST_F(AnalysisProfile, OneThatIsAbsentOrCannotBeOpenedIsPassedOver) {
    EXPECT_EQ(relocate(), 0);
    project_.write("amp-S1.aap", "(x \"Advanced Analysis Profile\")");
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        EXPECT_EQ(relocate(), 0);
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
    EXPECT_FALSE(fs::exists(newFile_));
}

TEST_F(AnalysisProfile, TheMoveOfOneThatCannotBeReadIsRecorded) {
    project_.write("amp-S1.aap", "(FILE_TYPE");
    project_.write("amp-S1.opt.log", "of the next extension");
    EXPECT_EQ(project_.converter.relocateSchematicFiles("amp", "S1", project_.destination,
                                                        project_.schematicFolder),
              0);
    EXPECT_EQ(movesOf(project_.converter), (Moves{{"./amp-s1.aap", "./amp-tevrixfiles/s1/s1.aap"},
                                                  {"./amp-s1.opt.log", "./amp-tevrixfiles/s1/s1.opt.log"}}));
    EXPECT_EQ(treeOf(project_.schematicFolder),
              (Tree{{"S1.opt.log", "of the next extension"}, {"tran/", ""}}));
    EXPECT_EQ(lastError(), LastError());
}

TEST_F(AnalysisProfile, ANewOneThatCannotBeMadeIsNamed) {
    for (const bool isFolder : {false, true}) {
        project_.write("amp-S1.aap", "(x \"Advanced Analysis Profile\")");
        fs::remove_all(project_.schematicFolder);
        if (isFolder) fs::create_directories(newFile_);
        const Tree before = project_.tree();
        EXPECT_EQ(relocate(), 10110) << isFolder;
        EXPECT_EQ(lastError(), writeFileError(newFile_)) << isFolder;
        EXPECT_EQ(project_.tree(), before) << isFolder;
        forgetLastError();
    }
}

// The disk may be full from the first byte or from a later one.
TEST_F(AnalysisProfile, ANewOneThatTheDiskHasNoRoomForIsRemoved) {
    std::string body;
    for (int i = 0; i < 300; ++i) body += " (Group (a " + std::to_string(i) + ") (Inner (b 2)))";
    project_.write("amp-S1.aap", "(x \"Advanced Analysis Profile\"" + body + ")");
    EXPECT_EQ(relocate(), 0);
    const auto size = fs::file_size(newFile_);
    fs::remove(newFile_);
    for (const auto room : {std::uintmax_t{0}, std::uintmax_t{40}, size / 2, size - 2, size - 1}) {
        EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
            rlimit limit{};
            getrlimit(RLIMIT_FSIZE, &limit);
            limit.rlim_cur = room;
            setrlimit(RLIMIT_FSIZE, &limit);
            EXPECT_EQ(relocate(), 10110) << room;
            EXPECT_EQ(lastError(), writeFileError(newFile_)) << room;
            return true;
        })) << room;
        EXPECT_FALSE(fs::exists(newFile_)) << room;
    }
}

TEST_F(AnalysisProfile, IsNotWrittenOverItself) {
    for (const bool isHardLink : {true, false}) {
        const std::string text = "(x \"Advanced Analysis Profile\" (a 1))";
        const std::string old = project_.write("amp-S1.aap", text);
        isHardLink ? fs::create_hard_link(old, newFile_) : tests::makeLink(old, newFile_);
        EXPECT_EQ(relocate(), 10110) << isHardLink;
        EXPECT_EQ(lastError(), writeFileError(newFile_)) << isHardLink;
        EXPECT_EQ(readFile(old), text) << isHardLink;
        EXPECT_EQ(readFile(newFile_), text) << isHardLink;
        fs::remove(newFile_);
    }
}

}  // namespace
