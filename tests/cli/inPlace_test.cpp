// Conversions in place. The old files are the user's only ones, so whatever goes wrong, each of them is
// afterwards where it was, or its new form is where it belongs.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "support/cliProject.h"
#include "support/foldersInMemory.h"
#include "support/systemCalls.h"

namespace {

using namespace clitest;
using tests::canInject;
using tests::runInjected;
namespace fs = std::filesystem;

const std::string kRoot = "amp-TevrixFiles";

// The project in the folder "amp".
class InPlace : public testing::Test {
protected:
    void SetUp() override {
        tests::writeTree(folder_.path("amp"), smallProject());
        folder_.write("beside.txt", "no file of the project\n");
    }

    std::string project() const { return folder_.path("amp/amp.opj"); }
    std::map<std::string, std::string> picture() const { return pictureOf(folder_.path()); }

    void edit(const std::string& name, const std::string& from, const std::string& to) const {
        const std::string old = folder_.read(name);
        ASSERT_NE(old.find(from), std::string::npos) << from;
        folder_.write(name, tests::replaced(old, from, to));
    }

    std::vector<std::string> arguments() const { return {"draftel", project(), "--in-place"}; }
    std::vector<std::string> command() const { return {kProgram, "draftel", project(), "--in-place"}; }
    ProgramResult convert() const { return runTvxconv(arguments()); }

    // All as in `before`, but for what the conversion has begun to write.
    void expectOldFiles(const std::map<std::string, std::string>& before, const std::string& what) const {
        EXPECT_EQ(difference(without(before, "amp/" + kRoot), without(picture(), "amp/" + kRoot)), "")
            << what;
    }

    // Old files as they were, or the conversion complete, and nothing left over.
    void expectOldOrNew(const std::map<std::string, std::string>& before, int status,
                        const std::string& what) const {
        if (status == 0) {
            EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "") << what;
        } else {
            expectOldFiles(before, what);
        }
    }

    void startAnew() const {
        fs::remove_all(folder_.path("amp"));
        tests::writeTree(folder_.path("amp"), smallProject());
    }

    TestFolder folder_;
};

// --- what becomes of the project ---

TEST_F(InPlace, MovesTheFilesAndLeavesEverythingElse) {
    const auto before = picture();
    const ProgramResult result = convert();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, asLines(convertedListing(folder_.path("amp"))));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "");
    EXPECT_EQ(difference(without(before, "amp/"), without(picture(), "amp/")), "");
}

TEST_F(InPlace, TheProjectIsFoundFromTheCurrentFolder) {
    const ProgramResult result = runTvxconv(
        {"draftel", "--in-place", "amp.opj", "--json", "--report", "structure.txt"}, folder_.path("amp"));
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto object = nlohmann::json::parse(result.output);
    EXPECT_EQ(object["newProjectPath"], project());
    EXPECT_EQ(object["structure"], nlohmann::json(convertedListing(folder_.path("amp"))));
    Tree expected = convertedInPlace();
    expected["structure.txt"] =
        "The conversion of the project was successful.\n\nThe new directory structure is as follows:\n\n" +
        asLines(convertedListing(folder_.path("amp")));
    EXPECT_EQ(difference(expected, tests::treeOf(folder_.path("amp"))), "");
}

TEST_F(InPlace, AProjectFileThatIsALinkStaysOneAndWhatItLeadsToIsUpdated) {
    const std::string real = folder_.write("elsewhere/real.opj", smallProject().at("amp.opj"));
    fs::remove(project());
    tests::makeLink("../elsewhere/real.opj", project());
    const ProgramResult result = convert();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(fs::is_symlink(project()));
    EXPECT_EQ(tests::readFile(real), newProjectText());
    EXPECT_EQ(tests::treeOf(folder_.path("elsewhere")), (Tree{{"real.opj", newProjectText()}}));
    fs::remove(project());
    Tree rest = convertedInPlace();
    rest.erase("amp.opj");
    EXPECT_EQ(difference(rest, tests::treeOf(folder_.path("amp"))), "");
}

// "-TevrixFiles" and all, the name of the root is as long as a name can be.
TEST_F(InPlace, AProjectMayHaveALongName) {
    if (tests::kOnWindows) GTEST_SKIP() << "a whole path is not much longer there";
    const std::string name(255 - std::string("-TevrixFiles").size(), 'n');
    fs::rename(project(), folder_.path("amp/" + name + ".opj"));
    const ProgramResult result = runTvxconv({"draftel", folder_.path("amp/" + name + ".opj"), "--in-place"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(folder_.read("amp/" + name + "-TevrixFiles/SCHEMATIC1/tran1.sim"), kNewProfile);
    EXPECT_NE(folder_.read("amp/" + name + ".opj").find("schematic1\\\\tran1.sim"), std::string::npos);
}

TEST_F(InPlace, ASecondRunChangesNothingAndShowsTheSame) {
    const ProgramResult first = convert();
    const auto once = picture();
    for (int run = 0; run < 2; ++run) {
        const ProgramResult again = convert();
        EXPECT_EQ(again.status, 0);
        EXPECT_EQ(again.output, first.output);
        EXPECT_EQ(difference(once, picture()), "");
    }
}

TEST_F(InPlace, ASecondRunChangesNothingInAProjectWithoutProfiles) {
    edit("amp/amp.opj", R"(      {
        "path": ".\\amp-SCHEMATIC1-tran1.sim",
        "name": "tran1",
        "schematic": "SCHEMATIC1"
      }
)",
         "");
    edit("amp/amp.opj", ".\\\\amp-SCHEMATIC1-tran1.sim", "");
    const ProgramResult first = convert();
    EXPECT_EQ(first.status, 0) << first.errors;
    const auto once = picture();
    const ProgramResult second = convert();
    EXPECT_EQ(second.status, 0) << second.errors;
    EXPECT_EQ(second.output, first.output);
    EXPECT_EQ(difference(once, picture()), "");
}

TEST_F(InPlace, ADesignInAnotherFolderIsCopiedAndItsFilesMoved) {
    for (const char* name : {"amp.dsn", "amp-SCHEMATIC1.net", "amp-SCHEMATIC1.opt", "amp-SCHEMATIC1.aap"}) {
        folder_.makeFolder("designs");
        fs::rename(folder_.path("amp/") + name, folder_.path("designs/") + name);
    }
    folder_.write("designs/amp-other.txt", "not the project's\n");
    edit("amp/amp.opj", ".\\\\amp.dsn", "..\\\\designs\\\\amp.dsn");
    edit("amp/amp.opj", ".\\\\amp-SCHEMATIC1.net", "..\\\\designs\\\\amp-SCHEMATIC1.net");
    const ProgramResult first = convert();
    EXPECT_EQ(first.status, 0) << first.errors;
    EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "");
    EXPECT_EQ(difference({{"amp.dsn", kDesign}, {"amp-other.txt", "not the project's\n"}},
                         tests::treeOf(folder_.path("designs"))),
              "");
    const auto once = picture();
    const ProgramResult second = convert();
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output, first.output);
    EXPECT_EQ(difference(once, picture()), "");
}

// The design's copy would take the place of a file that is not the design.
TEST_F(InPlace, AnotherDesignInTheProjectsFolderIsNotOverwritten) {
    folder_.makeFolder("designs");
    fs::rename(folder_.path("amp/amp.dsn"), folder_.path("designs/amp.dsn"));
    edit("amp/amp.opj", ".\\\\amp.dsn", "..\\\\designs\\\\amp.dsn");
    folder_.write("designs/amp.dbk", "backup\n");
    for (const char* name : {"amp.dsn", "amp.dbk"}) {
        folder_.write(std::string("amp/") + name, "an older one of the user's own\n");
        const auto before = picture();
        const ProgramResult result = convert();
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_NE(result.errors.find(folder_.path("amp/") + name), std::string::npos) << result.errors;
        EXPECT_EQ(difference(before, picture()), "") << name;
        fs::remove(folder_.path("amp/") + name);
    }
    // A copy of the design is what the conversion would write.
    folder_.write("amp/amp.dsn", kDesign);
    EXPECT_EQ(convert().status, 0);
}

TEST_F(InPlace, AnotherProjectFileIsNotOverwritten) {
    fs::rename(project(), folder_.path("amp/amp.v2.opj"));
    folder_.write("amp/amp.opj", "{}\n");
    const auto before = picture();
    const ProgramResult result = runTvxconv({"draftel", folder_.path("amp/amp.v2.opj"), "--in-place"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(project()), std::string::npos) << result.errors;
    EXPECT_EQ(difference(before, picture()), "");

    fs::remove(project());
    EXPECT_EQ(runTvxconv({"draftel", folder_.path("amp/amp.v2.opj"), "--in-place"}).status, 0);
    EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "");
}

TEST_F(InPlace, AProjectOfWhichOnlyAPartHasMovedIsRefused) {
    ASSERT_EQ(convert().status, 0);
    edit("amp/amp.opj", "    \"profiles\": [",
         "    \"profiles\": [ { \"path\": \".\\\\late.sim\", \"name\": \"late\", \"schematic\": "
         "\"SCHEMATIC1\" },");
    folder_.write("amp/late.sim", "ProfileName= \"late\"\nRootSchematics= \"SCHEMATIC1\"\n");
    const auto before = picture();
    const ProgramResult result = convert();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("late.sim"), std::string::npos) << result.errors;
    EXPECT_EQ(difference(before, picture()), "");
}

TEST_F(InPlace, ALinkedOutputIsCarriedAndWhatItLinksToStays) {
    fs::remove(folder_.path("amp/amp-SCHEMATIC1-tran1.out"));
    folder_.write("amp/local/results", kOutput);
    tests::makeLink("local/results", folder_.path("amp/amp-SCHEMATIC1-tran1.out"));
    const auto before = picture();
    const ProgramResult result = convert();
    EXPECT_EQ(result.status, 0) << result.errors;
    Tree expected = convertedInPlace();
    expected["local/results"] = kOutput;
    EXPECT_EQ(difference(expected, tests::treeOf(folder_.path("amp"))), "");

    startAnew();
    fs::remove(folder_.path("amp/amp-SCHEMATIC1-tran1.out"));
    folder_.write("amp/local/results", kOutput);
    tests::makeLink("local/results", folder_.path("amp/amp-SCHEMATIC1-tran1.out"));
    folder_.makeFolder("amp/" + kRoot + "/SCHEMATIC1/tran1.sim");
    EXPECT_EQ(convert().status, 1);
    expectOldFiles(before, "after a failure");
}

// --- conversions that fail ---

// The new path then leads to the old file, and deleting the old one would leave nothing.
TEST_F(InPlace, ANewPlaceThatIsALinkToTheOldFileDoesNotLoseIt) {
    for (const bool isWholeFolder : {false, true}) {
        startAnew();
        const std::string bytes = tests::readFile(folder_.path("amp/amp.lib"));
        if (isWholeFolder) {
            tests::makeLink(".", folder_.path("amp/" + kRoot));
        } else {
            folder_.makeFolder("amp/" + kRoot);
            tests::makeLink("../amp.lib", folder_.path("amp/" + kRoot + "/amp.lib"));
        }
        const ProgramResult result = convert();
        EXPECT_EQ(result.status, 1) << isWholeFolder;
        EXPECT_NE(result.errors.find("amp.lib\" was not carried over and has been put back"),
                  std::string::npos)
            << result.errors;
        EXPECT_EQ(folder_.read("amp/amp.lib"), bytes) << isWholeFolder;
    }
}

TEST_F(InPlace, AFolderOfOldFilesFromAnEarlierRunIsRefused) {
    const std::string left = std::string("amp/") + kKeptFolder;
    folder_.write(left + "/1-amp.opj", "an old file\n");
    const auto before = picture();
    ProgramResult result = convert();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors.find(folder_.path(left)), std::string::npos) << result.errors;
    EXPECT_EQ(difference(before, picture()), "");

    fs::remove_all(folder_.path(left));
    folder_.write(left, "a file of that name\n");
    result = convert();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(folder_.path(left)), std::string::npos) << result.errors;
    EXPECT_EQ(folder_.read(left), "a file of that name\n");
    EXPECT_TRUE(folder_.exists("amp/amp-SCHEMATIC1-tran1.sim"));
}

TEST_F(InPlace, AFailureAtAnyStepLeavesTheOldFilesAsTheyWere) {
    const struct {
        const char* what;
        const char* folderInTheWay;
        const char* fileInTheWay;
    } cases[] = {
        {"the simulation root", nullptr, "amp-TevrixFiles"},
        {"a file of the design", "amp-TevrixFiles/amp.lib", nullptr},
        {"the schematic's netlist", "amp-TevrixFiles/SCHEMATIC1/SCHEMATIC1.net", nullptr},
        {"the schematic's folder", nullptr, "amp-TevrixFiles/SCHEMATIC1"},
        {"the profile file", "amp-TevrixFiles/SCHEMATIC1/tran1.sim", nullptr},
        // A twin in another case: which of the two is to be deleted cannot be told.
        {"an old file", nullptr, "AMP.lib"},
        {"an old file that goes last", nullptr, "AMP-schematic1.NET"},
    };
    for (const auto& one : cases) {
        // Two names that differ in case alone cannot be side by side there.
        if (tests::kOnWindows && std::strncmp(one.what, "an old file", 11) == 0) continue;
        startAnew();
        if (one.folderInTheWay != nullptr) folder_.makeFolder(std::string("amp/") + one.folderInTheWay);
        if (one.fileInTheWay != nullptr) {
            folder_.write(std::string("amp/") + one.fileInTheWay, "in the way\n");
        }
        const auto before = picture();
        const ProgramResult result = convert();
        EXPECT_EQ(result.status, 1) << one.what;
        EXPECT_EQ(result.output, "") << one.what;
        EXPECT_NE(result.errors.find("Failed to "), std::string::npos) << one.what << result.errors;
        expectOldFiles(before, one.what);
        // With the cause mended, the conversion can be done.
        if (one.folderInTheWay != nullptr) fs::remove(folder_.path(std::string("amp/") + one.folderInTheWay));
        if (one.fileInTheWay != nullptr) fs::remove(folder_.path(std::string("amp/") + one.fileInTheWay));
        EXPECT_EQ(convert().status, 0) << one.what;
        EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "") << one.what;
    }
}

// The same with a design in another folder, of which a copy goes to the project's folder.
TEST_F(InPlace, AFailureLeavesADesignInAnotherFolderAsItWas) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    folder_.makeFolder("designs");
    for (const char* name : {"amp.dsn", "amp-SCHEMATIC1.net"}) {
        fs::rename(folder_.path("amp/") + name, folder_.path("designs/") + name);
    }
    edit("amp/amp.opj", ".\\\\amp.dsn", "..\\\\designs\\\\amp.dsn");
    folder_.write("designs/AMP-schematic1.NET", "a twin\n");
    const auto before = picture();
    const ProgramResult result = convert();
    EXPECT_EQ(result.status, 1);
    // The copy of the design is new, like the simulation root.
    auto after = picture();
    after.erase("amp/amp.dsn");
    EXPECT_EQ(difference(before, without(after, "amp/" + kRoot)), "");
}

TEST_F(InPlace, AFullDiskLeavesTheOldFilesAsTheyWereOrTheConversionComplete) {
    // The limit is one of each file's size. It goes through the sizes of all files.
    std::vector<std::string> files = {"amp.lib",
                                      "amp-SCHEMATIC1.net",
                                      "amp-SCHEMATIC1-tran1.sim",
                                      "amp.dsn",
                                      "amp-SCHEMATIC1.opt",
                                      "corners.mdp",
                                      "amp-SCHEMATIC1-tran1.sim.cir",
                                      "amp-SCHEMATIC1-tran1.out"};
    std::string note = " ";
    int failures = 0;
    for (std::size_t limit = 2500; limit < 40000; limit += 2500) {
        startAnew();
        std::size_t size = 3000;
        for (const std::string& name : files) {
            const std::string path = folder_.path("amp/" + name);
            std::string text = tests::readFile(path);
            while (text.size() < size)
                text += name.ends_with(".dsn") ? "          \n" : "* a line of a file\n";
            tests::writeFile(path, text);
            size += 4500;
        }
        const auto before = picture();
        std::vector<std::string> limited = {"sh", "-c",
                                            "trap '' XFSZ; n=$1; shift; exec prlimit --fsize=$n \"$@\"", "sh",
                                            std::to_string(limit)};
        for (const std::string& word : command()) limited.push_back(word);
        const ProgramResult result = tests::runProgram(limited, "", tests::kWithoutCoverage);
        if (result.status == 0) {
            // All files moved, with all their lines.
            EXPECT_GE(limit, size - 4500);
            EXPECT_EQ(result.errors, "");
            EXPECT_FALSE(folder_.exists("amp/amp.lib"));
            EXPECT_EQ("420 file " + folder_.read("amp/" + kRoot + "/SCHEMATIC1/tran1/tran1.out"),
                      before.at("amp/amp-SCHEMATIC1-tran1.out"));
            continue;
        }
        ++failures;
        EXPECT_EQ(result.status, 1) << limit;
        EXPECT_NE(result.errors, "") << limit;
        if (result.errors.find("has been put back") == std::string::npos) {
            expectOldFiles(before, std::to_string(limit));
            continue;
        }
        // Only outputs and files of a schematic may be missing from the new structure; they are back in their
        // old places.
        for (const char* name :
             {"amp-SCHEMATIC1.opt", "amp-SCHEMATIC1-tran1.sim.cir", "amp-SCHEMATIC1-tran1.out"}) {
            const std::string path = folder_.path(std::string("amp/") + name);
            const bool isTold = result.errors.find("\"" + path + "\" was not") != std::string::npos;
            EXPECT_EQ(fs::exists(path), isTold) << limit << name << result.errors;
            if (fs::exists(path)) {
                EXPECT_EQ("420 file " + tests::readFile(path), before.at(std::string("amp/") + name))
                    << limit;
            }
        }
        EXPECT_FALSE(folder_.exists(std::string("amp/") + kKeptFolder)) << limit;
    }
    EXPECT_GE(failures, 8);
}

// --- one file that does not arrive ---

TEST_F(InPlace, AFileThatCannotBeWrittenIsPutBackAndTold) {
    for (const std::string oldName : {"amp-SCHEMATIC1-tran1.out", "amp-SCHEMATIC1-tran1.sim.cir",
                                      "amp-SCHEMATIC1.opt", "amp-SCHEMATIC1.aap"}) {
        startAnew();
        const std::string inTheWay = newPlaces().at(oldName);
        folder_.makeFolder("amp/" + inTheWay);
        const ProgramResult result = runTvxconv({"draftel", project(), "--in-place", "--json"});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.errors.find(folder_.path("amp/" + oldName)), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find("put back"), std::string::npos) << result.errors;
        EXPECT_NE(nlohmann::json::parse(result.output)["errorCode"], 0);
        Tree expected = convertedInPlace();
        expected.erase(inTheWay);
        expected[inTheWay + "/"] = "";
        expected[oldName] = smallProject().at(oldName);
        if (oldName == "amp-SCHEMATIC1.opt") {  // what it names moves with it
            expected.erase(newPlaces().at("corners.mdp"));
            expected["corners.mdp"] = kDesignProfile;
        }
        EXPECT_EQ(difference(expected, tests::treeOf(folder_.path("amp"))), "");
    }
}

// The conversion passes over an analysis profile that it cannot read, without an error. What is at its new
// place is then from another time.
TEST_F(InPlace, AnAnalysisProfileThatCannotBeReadIsPutBackAndTold) {
    const std::string oldPath = folder_.path("amp/amp-SCHEMATIC1.aap");
    for (const bool isThereBefore : {false, true}) {
        for (const std::string text : {"(FILE_TYPE \"Advanced Analysis Profile\" (a 1)", "", "(a b)"}) {
            startAnew();
            tests::writeFile(oldPath, text);
            if (isThereBefore) folder_.write("amp/" + newPlaces().at("amp-SCHEMATIC1.aap"), kNewAnalysis);
            const ProgramResult result = runTvxconv({"draftel", project(), "--in-place", "--json"});
            EXPECT_EQ(result.status, 1) << text;
            EXPECT_NE(result.errors.find("\"" + oldPath + "\" was not"), std::string::npos) << result.errors;
            const auto object = nlohmann::json::parse(result.output);
            EXPECT_EQ(object["status"], 1) << text;
            EXPECT_EQ(object["errorCode"], 0) << text;
            Tree expected = convertedInPlace();
            if (!isThereBefore) expected.erase(newPlaces().at("amp-SCHEMATIC1.aap"));
            expected["amp-SCHEMATIC1.aap"] = text;
            EXPECT_EQ(difference(expected, tests::treeOf(folder_.path("amp"))), "") << text;
        }
    }
}

// An earlier one at its new place is no obstacle for one that can be read.
TEST_F(InPlace, AnAnalysisProfileReplacesAnEarlierOne) {
    folder_.write("amp/" + newPlaces().at("amp-SCHEMATIC1.aap"), "an earlier and much longer one " + kOutput);
    const ProgramResult result = convert();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "");
}

// It is no file of the design by its name, and is deleted before the netlist, which cannot be.
TEST_F(InPlace, AfterAFailureADesignProfileIsPutBackAsItWasSpelled) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    for (const char* named : {"corners.mdp", "CORNERS.mdp", "..mdp", "a.mdp.b"}) {
        startAnew();
        fs::remove_all(folder_.path("designs"));
        folder_.makeFolder("designs");
        for (const char* name :
             {"amp.dsn", "amp-SCHEMATIC1.net", "amp-SCHEMATIC1.opt", "amp-SCHEMATIC1.aap"}) {
            fs::rename(folder_.path("amp/") + name, folder_.path("designs/") + name);
        }
        edit("amp/amp.opj", ".\\\\amp.dsn", "..\\\\designs\\\\amp.dsn");
        edit("designs/amp-SCHEMATIC1.opt", "corners.mdp", named);
        if (!fs::exists(folder_.path("amp/") + named) && named[0] != 'C') {
            fs::rename(folder_.path("amp/corners.mdp"), folder_.path("amp/") + named);
        }
        folder_.write("designs/AMP-schematic1.NET", "a twin\n");
        const auto before = picture();
        EXPECT_EQ(convert().status, 1) << named;
        auto after = picture();
        after.erase("amp/amp.dsn");
        EXPECT_EQ(difference(before, without(after, "amp/" + kRoot)), "") << named;

        fs::remove(folder_.path("designs/AMP-schematic1.NET"));
        EXPECT_EQ(convert().status, 0) << named;
        EXPECT_EQ(folder_.read("amp/" + kRoot + "/SCHEMATIC1/" + named), kDesignProfile) << named;
        const Tree designs = tests::treeOf(folder_.path("designs"));
        EXPECT_EQ(difference({{"amp.dsn", kDesign}}, designs), "") << named;
        for (const auto& [name, text] : tests::treeOf(folder_.path("amp"))) {
            EXPECT_TRUE(name.starts_with(kRoot) || name.find(".mdp") == std::string::npos) << name;
        }
    }
}

class InPlaceWithoutRights : public InPlace {
protected:
    void SetUp() override {
        InPlace::SetUp();
        if (!othersMayRunProgram()) GTEST_SKIP() << "only root can start " << kProgram;
        giveAway();
    }

    // Gives all files to the user who runs the program.
    void giveAway() const {
        if (geteuid() != 0) return;
        constexpr unsigned kNobody = 65534;
        for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
            ASSERT_EQ(lchown(entry.path().string().c_str(), kNobody, kNobody), 0);
        }
        ASSERT_EQ(lchown(folder_.path().c_str(), kNobody, kNobody), 0);
    }

    ProgramResult convertWithoutRoot() const { return runWithoutRoot(arguments()); }
};

TEST_F(InPlaceWithoutRights, ConvertsWhatIsTheUsersOwn) {
    const ProgramResult result = convertWithoutRoot();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "");
}

// The new file of an earlier run is in the way, and is not the deck of this one.
TEST_F(InPlaceWithoutRights, AnOutputInWhosePlaceAnOlderOneCannotBeReplacedIsPutBackAndTold) {
    const struct {
        const char* oldName;
        const char* newName;
        std::string text;
    } outputs[] = {
        {"amp-SCHEMATIC1-tran1.out", "tran1.out", kOutput},
        {"amp-SCHEMATIC1-tran1.sim.cir", "tran1.cir", kOldDeck},
    };
    for (const auto& output : outputs) {
        startAnew();
        const std::string inTheWay = kRoot + "/SCHEMATIC1/tran1/" + output.newName;
        folder_.write("amp/" + inTheWay, "of an earlier run\n");
        giveAway();
        chmod(folder_.path("amp/" + inTheWay).c_str(), 0444);
        const ProgramResult result = convertWithoutRoot();
        EXPECT_EQ(result.status, 1) << output.newName;
        EXPECT_NE(result.errors.find(folder_.path(std::string("amp/") + output.oldName)), std::string::npos)
            << result.errors;
        EXPECT_NE(result.errors.find("put back"), std::string::npos) << result.errors;
        Tree expected = convertedInPlace();
        expected[inTheWay] = "of an earlier run\n";
        expected[output.oldName] = output.text;
        EXPECT_EQ(difference(expected, tests::treeOf(folder_.path("amp"))), "");
    }
}

TEST_F(InPlaceWithoutRights, FoldersAndFilesThatMayNotBeWrittenLeaveTheOldFilesAsTheyWere) {
    const struct {
        const char* what;
        unsigned permissions;
    } cases[] = {
        {"amp", 0555},
        {"amp", 0311},  // its files cannot be listed, so they cannot be kept either
        {"amp/amp-TevrixFiles", 0555},
        {"amp/amp-TevrixFiles/SCHEMATIC1", 0555},
        {"amp/amp-TevrixFiles/SCHEMATIC1/tran1", 0555},
        {"amp/amp.opj", 0444},
    };
    for (const auto& one : cases) {
        startAnew();
        folder_.makeFolder("amp/amp-TevrixFiles/SCHEMATIC1/tran1");
        giveAway();
        chmod(folder_.path(one.what).c_str(), one.permissions);
        const auto before = picture();
        const ProgramResult result = convertWithoutRoot();
        EXPECT_EQ(result.status, 1) << one.what;
        EXPECT_NE(result.errors, "") << one.what;
        expectOldFiles(before, one.what);
        for (const char* name : {"amp", "amp/amp-TevrixFiles", "amp/amp-TevrixFiles/SCHEMATIC1",
                                 "amp/amp-TevrixFiles/SCHEMATIC1/tran1"}) {
            chmod(folder_.path(name).c_str(), 0755);
        }
    }
}

TEST_F(InPlaceWithoutRights, AFolderOfTheDesignThatMayNotBeWrittenLeavesTheOldFilesAsTheyWere) {
    folder_.makeFolder("designs");
    for (const char* name : {"amp.dsn", "amp-SCHEMATIC1.net"}) {
        fs::rename(folder_.path("amp/") + name, folder_.path("designs/") + name);
    }
    edit("amp/amp.opj", ".\\\\amp.dsn", "..\\\\designs\\\\amp.dsn");
    giveAway();
    chmod(folder_.path("designs").c_str(), 0555);
    const auto before = picture();
    const ProgramResult result = convertWithoutRoot();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("Failed to delete file"), std::string::npos) << result.errors;
    auto after = picture();
    after.erase("amp/amp.dsn");
    EXPECT_EQ(difference(before, without(after, "amp/" + kRoot)), "");
    chmod(folder_.path("designs").c_str(), 0755);
}

// A profile file need not be named after the design. It is found by the name before its first dot.
TEST_F(InPlace, AProfileFileOfAnotherNameIsMovedAndAfterAFailurePutBack) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    for (const char* registered : {".\\\\other.sim", ".\\\\OTHER.Sim", ".\\\\other.v2.sim",
                                   ".\\\\far\\\\other.sim", "other.sim", "..\\\\other.sim", ".\\\\other"}) {
        startAnew();
        fs::remove_all(folder_.path("designs"));
        folder_.makeFolder("designs");
        for (const char* name : {"amp.dsn", "amp-SCHEMATIC1.net"}) {
            fs::rename(folder_.path("amp/") + name, folder_.path("designs/") + name);
        }
        edit("amp/amp.opj", ".\\\\amp.dsn", "..\\\\designs\\\\amp.dsn");
        fs::rename(folder_.path("amp/amp-SCHEMATIC1-tran1.sim"), folder_.path("amp/other.sim"));
        edit("amp/amp.opj", ".\\\\amp-SCHEMATIC1-tran1.sim", registered);
        // The netlist is deleted after all files of the project's folder, and here it cannot be.
        folder_.write("designs/AMP-schematic1.NET", "a twin\n");
        const auto before = picture();
        EXPECT_EQ(convert().status, 1) << registered;
        auto after = picture();
        after.erase("amp/amp.dsn");
        EXPECT_EQ(difference(before, without(after, "amp/" + kRoot)), "") << registered;

        fs::remove(folder_.path("designs/AMP-schematic1.NET"));
        EXPECT_EQ(convert().status, 0) << registered;
        EXPECT_FALSE(folder_.exists("amp/other.sim")) << registered;
        EXPECT_EQ(folder_.read("amp/" + kRoot + "/SCHEMATIC1/tran1.sim"),
                  tests::replaced(
                      kNewProfile, "\"tran1.out\"",
                      "\"" + tests::replaced(folder_.path("amp/amp-SCHEMATIC1-tran1.out"), "/", "\\") + "\""))
            << registered;
    }
}

// --- file systems without second names ---

class InPlaceInjected : public InPlace {
protected:
    static void SetUpTestSuite() { inMemory_ = new tests::FoldersInMemory(); }
    static void TearDownTestSuite() {
        delete inMemory_;
        inMemory_ = nullptr;
    }

    void SetUp() override {
        InPlace::SetUp();
        if (!canInject()) GTEST_SKIP() << "strace is missing or may not trace";
    }

    // Every old file's text is in its old place, is kept, or its new form is in place.
    void expectNothingLost(const std::string& what) const {
        const Tree now = tests::treeOf(folder_.path("amp"));
        const Tree complete = convertedInPlace();
        for (const auto& [oldName, newName] : newPlaces()) {
            const std::string text = smallProject().at(oldName);
            bool found = now.count(oldName) != 0 && now.at(oldName) == text;
            found = found || (now.count(newName) != 0 && now.at(newName) == complete.at(newName));
            for (const auto& [name, kept] : now) {
                found = found || (name.starts_with(std::string(kKeptFolder) + "/") &&
                                  name.ends_with("-" + oldName) && kept == text);
            }
            EXPECT_TRUE(found) << what << ": " << oldName << " is lost";
        }
    }

private:
    static tests::FoldersInMemory* inMemory_;
};

tests::FoldersInMemory* InPlaceInjected::inMemory_ = nullptr;

TEST_F(InPlaceInjected, WithoutHardLinksTheOldFilesAreKeptAsCopies) {
    for (const char* call : {"link", "linkat"}) {
        const std::string injection = std::string(call) + ":error=EPERM";
        startAnew();
        const tests::InjectedRun good = runInjected(injection, command());
        if (!good.fired) continue;  // the program makes the other call
        EXPECT_EQ(good.result.status, 0) << good.result.errors;
        EXPECT_EQ(good.result.errors, "");
        EXPECT_EQ(difference(convertedInPlace(), tests::treeOf(folder_.path("amp"))), "");

        startAnew();
        folder_.write("amp/AMP-schematic1.NET", "a twin\n");
        const auto before = picture();
        const tests::InjectedRun bad = runInjected(injection, command());
        EXPECT_EQ(bad.result.status, 1);
        expectOldFiles(before, "after a failure");
        return;
    }
    FAIL() << "no link was made";
}

// --- signals ---

TEST_F(InPlaceInjected, ASignalAtAnyMomentLeavesTheOldFilesOrTheWholeConversion) {
    int fired = 0;
    for (const char* signal : {"SIGINT", "SIGTERM", "SIGHUP"}) {
        for (const char* call : {"openat", "mkdir", "link", "rename", "unlink", "close", "copy_file_range",
                                 "ftruncate", "write", "rmdir"}) {
            for (int when = 1;;
                 when += std::string(call) == "openat" || std::string(call) == "close" ? 3 : 1) {
                startAnew();
                const auto before = picture();
                const std::string injection =
                    std::string(call) + ":signal=" + signal + ":when=" + std::to_string(when);
                const tests::InjectedRun run = runInjected(injection, command());
                if (!run.fired) break;
                ++fired;
                expectOldOrNew(before, run.result.status,
                               injection + ", status " + std::to_string(run.result.status));
            }
        }
    }
    EXPECT_GE(fired, 90);
}

TEST_F(InPlaceInjected, AKilledRunHasLostNothingAndTheNextOneSaysWhereTheFilesAre) {
    int leftOver = 0;
    for (const char* call : {"mkdir", "link", "copy_file_range", "rename", "unlink", "rmdir", "close"}) {
        for (int when = 1;; when += std::string(call) == "close" ? 5 : 1) {
            startAnew();
            const std::string injection = std::string(call) + ":signal=SIGKILL:when=" + std::to_string(when);
            const tests::InjectedRun run = runInjected(injection, command());
            if (run.result.status == 0) break;
            expectNothingLost(injection);
            if (!folder_.exists(std::string("amp/") + kKeptFolder)) continue;
            ++leftOver;
            const auto before = picture();
            const ProgramResult next = convert();
            EXPECT_EQ(next.status, 1) << injection;
            EXPECT_NE(next.errors.find(folder_.path(std::string("amp/") + kKeptFolder)), std::string::npos);
            EXPECT_EQ(difference(before, picture()), "") << injection;
        }
    }
    EXPECT_GE(leftOver, 20);
}

// The same without a tracer: at moments that depend on the machine.
TEST_F(InPlace, ASignalAfterAnyTimeLeavesTheOldFilesOrTheWholeConversion) {
    using namespace std::chrono;
    const auto start = steady_clock::now();
    ASSERT_EQ(convert().status, 0);
    const auto once = duration_cast<microseconds>(steady_clock::now() - start);
    constexpr int kRuns = 40;
    for (int i = 0; i < kRuns; ++i) {
        startAnew();
        const auto before = picture();
        std::vector<std::string> words = command();
        std::vector<char*> raw;
        for (std::string& word : words) raw.push_back(word.data());
        raw.push_back(nullptr);
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            tests::stopCoverage();
            if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(126);
            if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(126);
            execv(kProgram, raw.data());
            _exit(127);
        }
        std::this_thread::sleep_for(once * i / kRuns);
        kill(child, i % 2 == 0 ? SIGINT : SIGTERM);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        // Before it can be in danger, the program is ended by the signal like any other.
        const bool converted = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        expectOldOrNew(before, converted ? 0 : 1, "run " + std::to_string(i));
    }
}

// Nobody reads what the program says, as when both ends of a pipe are interrupted.
TEST_F(InPlace, OldFilesArePutBackThoughNobodyListens) {
    folder_.write("amp/AMP-schematic1.NET", "a twin\n");
    const auto before = picture();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        dup2(ends[1], 1);
        dup2(ends[1], 2);
        close(ends[1]);
        execl(kProgram, kProgram, "draftel", project().c_str(), "--in-place", nullptr);
        _exit(127);
    }
    close(ends[1]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    expectOldFiles(before, "status " + std::to_string(status));
}

// --- faults on the way back ---

// One output does not arrive, and it cannot be put back either: it stays where it is kept, and that is told.
TEST_F(InPlaceInjected, WhatCannotBePutBackIsNotThrownAway) {
    int kept = 0;
    for (int when = 1;; ++when) {
        startAnew();
        folder_.makeFolder("amp/" + kRoot + "/SCHEMATIC1/tran1/tran1.out");
        const tests::InjectedRun run =
            runInjected("rename:error=EIO:when=" + std::to_string(when) + "+", command());
        if (!run.fired) break;
        expectNothingLost(std::to_string(when));
        EXPECT_EQ(run.result.status, 1) << when;
        if (folder_.exists(std::string("amp/") + kKeptFolder)) {
            ++kept;
            EXPECT_NE(run.result.errors.find(folder_.path(std::string("amp/") + kKeptFolder)),
                      std::string::npos)
                << when << run.result.errors;
        }
    }
    EXPECT_GE(kept, 1);
}

// The conversion is done, but the second names of the old files cannot be removed.
TEST_F(InPlaceInjected, AFolderThatStaysBehindIsTold) {
    int stayed = 0;
    for (const char* call : {"unlink", "rmdir"}) {
        for (int when = 1;; ++when) {
            startAnew();
            const auto before = picture();
            const tests::InjectedRun run =
                runInjected(std::string(call) + ":error=EIO:when=" + std::to_string(when), command());
            if (!run.fired) break;
            expectNothingLost(std::to_string(when));
            const std::string folder = std::string("amp/") + kKeptFolder;
            if (!folder_.exists(folder)) {
                expectOldOrNew(before, run.result.status, call + std::to_string(when));
                continue;
            }
            ++stayed;
            EXPECT_NE(run.result.errors.find(folder_.path(folder)), std::string::npos)
                << call << when << run.result.errors;
        }
    }
    EXPECT_GE(stayed, 2);
}

}  // namespace
