// The Tarnet command as its user meets it: what it takes, what it prints where, what it says of each cell,
// and with which status it ends.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/TarnetLibrary.h"
#include "support/cliProject.h"
#include "support/systemCalls.h"

namespace {

using namespace clitest;
using tests::TarnetLibrary;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

std::string summary(int found, int converted, int skipped, int failed) {
    return "tvxconv: cells found: " + std::to_string(found) + ", converted: " + std::to_string(converted) +
           ", skipped as converted already: " + std::to_string(skipped) +
           ", failed: " + std::to_string(failed) + "\n";
}

std::map<std::string, fs::file_time_type> timesIn(const std::string& folder) {
    std::map<std::string, fs::file_time_type> times;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        times[entry.path().string()] = entry.last_write_time();
    }
    return times;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// The cells "amp" and "beta" to convert, "done", which is, and a few other things.
class TarnetCommand : public testing::Test {
protected:
    void SetUp() override {
        library_.writeOld("a.lib", "models");
        library_.writeOld("b.lib", "models");
        library_.writeOld("tran.sim.cir", ".LIB \"a.lib\"\n");
        library_.addCell("beta");
        library_.addCell("done");
        library_.write("done/tvx_sim_1/master.tag", "done.net");
        library_.addCell("a.dotted");
        library_.write("bare/notes.txt", "mine");
    }

    ProgramResult run(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments = {"tarnet", library_.dir};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runTvxconv(arguments);
    }

    std::vector<std::string> listing() const {
        return {"",
                library_.cfg,
                "    master.tag",
                library_.view,
                "    a.lib",
                "    b.lib",
                "    master.tag",
                library_.profiles,
                library_.profiles + "/tran",
                "    tran.cir",
                "",
                library_.path("beta/cfg_analog"),
                "    master.tag",
                library_.path("beta/tvx_sim_1"),
                "    master.tag",
                "",
                library_.path("done/cfg_analog"),
                "    master.tag",
                library_.path("done/tvx_sim_1"),
                "    master.tag"};
    }

    Tree converted(Tree tree) const {
        for (const char* name : {"amp/tvx_sim_1/", "amp/tvx_sim_1/profiles/", "amp/tvx_sim_1/profiles/tran/",
                                 "beta/tvx_sim_1/"}) {
            tree[name] = "";
        }
        tree["amp/tvx_sim_1/a.lib"] = tree["amp/tvx_sim_1/b.lib"] = "models";
        tree["amp/tvx_sim_1/master.tag"] = "amp.net";
        tree["amp/tvx_sim_1/profiles/tran/tran.cir"] = ".LIB \"../../a.lib\"\n";
        tree["beta/tvx_sim_1/master.tag"] = "beta.net";
        return tree;
    }

    const TarnetLibrary library_;
};

// --- the command line ---

TEST_F(TarnetCommand, HelpTellsOfItsOptions) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"tarnet", "--help"}, {"tarnet", library_.dir, "-h"}}) {
        const ProgramResult result = runTvxconv(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        for (const char* text : {"tarnet", "LIBRARY_DIR", "--report", "--json", "Usage"}) {
            EXPECT_TRUE(contains(result.output, text)) << text << " in\n" << result.output;
        }
        EXPECT_FALSE(contains(result.output, "--in-place")) << result.output;
    }
    EXPECT_TRUE(contains(runTvxconv({"--help"}).output, "tarnet"));
}

TEST_F(TarnetCommand, EveryWrongCommandLineEndsWithStatus2AndAMessageAndDoesNothing) {
    const Tree before = library_.tree();
    const std::vector<std::string> wrong[] = {
        {"tarnet"},
        {"tarnet", ""},
        {"tarnet", "--json"},
        {"tarnet", "--report", "r.txt"},
        {"tarnet", library_.dir, library_.dir},
        {"tarnet", library_.dir, "--report"},
        {"tarnet", library_.dir, "--report", "a", "--report", "b"},
        {"tarnet", library_.dir, "--to", library_.folder.path("new")},
        {"tarnet", library_.dir, "--in-place"},
        {"tarnet", library_.dir, "--bogus"},
        {"TARNET", library_.dir},
        {"tarnet", library_.dir, "draftel", "x.opj", "--in-place"},
        {"draftel", library_.dir, "tarnet"},
        {"--json", "tarnet", library_.dir},
        {library_.dir},
    };
    for (const std::vector<std::string>& arguments : wrong) {
        const ProgramResult result = runTvxconv(arguments);
        const std::string shown = testing::PrintToString(arguments);
        EXPECT_EQ(result.status, 2) << shown;
        EXPECT_EQ(result.output, "") << shown;
        EXPECT_NE(result.errors, "") << shown;
    }
    EXPECT_EQ(library_.tree(), before);
}

// --- a conversion ---

TEST_F(TarnetCommand, ConvertsTheCellsListsThemAndSumsUp) {
    const Tree before = library_.tree();
    const ProgramResult result = run();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, asLines(listing()));
    EXPECT_EQ(result.errors, summary(3, 2, 1, 0));
    EXPECT_EQ(difference(converted(before), library_.tree()), "");
}

TEST_F(TarnetCommand, ASecondRunChangesNothing) {
    const ProgramResult first = run();
    const Tree before = library_.tree();
    const auto times = timesIn(library_.folder.path());
    const ProgramResult second = run();
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output, first.output);
    EXPECT_EQ(second.errors, summary(3, 0, 3, 0));
    EXPECT_EQ(library_.tree(), before);
    EXPECT_EQ(timesIn(library_.folder.path()), times);
}

TEST_F(TarnetCommand, JsonIsOneObjectWithItsKeysInOrder) {
    const ProgramResult result = run({"--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, summary(3, 2, 1, 0));
    std::string structure;
    for (const std::string& line : listing()) structure += (structure.empty() ? "\"" : ",\"") + line + "\"";
    EXPECT_EQ(result.output,
              "{\"status\":0,\"errorCode\":0,\"errorMessage\":\"\",\"newProjectPath\":\"\",\"structure\":[" +
                  structure + "],\"libraryParentName\":\"site\"}\n");
}

TEST_F(TarnetCommand, AnEmptyLibraryIsASuccess) {
    const std::string empty = library_.folder.makeFolder("site/empty");
    const ProgramResult result = runTvxconv({"tarnet", empty, "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, summary(0, 0, 0, 0));
    EXPECT_EQ(result.output,
              "{\"status\":0,\"errorCode\":0,\"errorMessage\":\"\",\"newProjectPath\":\"\",\"structure\":[],"
              "\"libraryParentName\":\"site\"}\n");
}

TEST_F(TarnetCommand, TheLibraryIsFoundHoweverItIsWritten) {
    const std::string expected = asLines(listing());
    const struct {
        std::string argument;
        std::string folder;
    } cases[] = {
        {library_.dir + "/", ""},
        {library_.dir + "///", ""},
        {library_.folder.path("site//lib"), ""},
        {library_.folder.path("/site///lib//"), ""},
        {"lib", library_.folder.path("site")},
        {"./lib/", library_.folder.path("site")},
        {".", library_.dir},
        {"..", library_.cell},
        {"../lib/.", library_.dir},
        {library_.dir + "/amp/..", ""},
    };
    for (const auto& c : cases) {
        const ProgramResult result = runTvxconv({"tarnet", c.argument}, c.folder);
        EXPECT_EQ(result.status, 0) << c.argument << result.errors;
        EXPECT_EQ(result.output, expected) << c.argument;
        fs::remove_all(library_.view);
        fs::remove_all(library_.path("beta/tvx_sim_1"));
    }
}

TEST_F(TarnetCommand, NamesOfAnyBytesAreConvertedAndShown) {
    const std::string name = "gr\xF6\xDF \xE4";
    library_.addCell(name);
    const ProgramResult result = run();
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.output, "\n" + library_.path(name) + "/tvx_sim_1\n")) << result.output;
    EXPECT_EQ(library_.read(name + "/tvx_sim_1/master.tag"), name + ".net");
    // What is no UTF-8 cannot stand in JSON.
    const Json object = Json::parse(run({"--json"}).output);
    EXPECT_TRUE(contains(object["structure"].dump(), "gr\xEF\xBF\xBD")) << object;
}

TEST_F(TarnetCommand, AListingThatCannotBeWrittenIsTold) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "there is no full device";
    const ProgramResult result =
        tests::runProgram({"sh", "-c", std::string(kProgram) + " tarnet \"$0\" >/dev/full", library_.dir});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.errors, "cannot write the result to standard output")) << result.errors;
    EXPECT_TRUE(library_.existsNew("master.tag"));
}

// --- the report ---

TEST_F(TarnetCommand, TheReportGoesIntoTheLibrary) {
    for (const char* name : {"structure.txt", "bare/../structure2.txt"}) {
        const ProgramResult result = run({"--report", name});
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(library_.read(name),
                  "The conversion of the project was successful.\n\nThe new directory structure is as "
                  "follows:\n\n" +
                      asLines(listing()));
    }
}

TEST_F(TarnetCommand, AReportIsNotWrittenIntoAView) {
    const Tree before = library_.tree();
    for (const char* name :
         {"amp/cfg_analog/a.lib", "amp/tvx_sim_1/report.txt", "amp/../amp/cfg_analog/a.lib",
          "done/TVX_SIM_1/master.tag", "../lib/done/tvx_sim_1/master.tag"}) {
        const ProgramResult result = run({"--report", name, "--json"});
        EXPECT_EQ(result.status, 2) << name;
        const Json object = Json::parse(result.output);
        EXPECT_EQ(object["status"], 1) << name;
        EXPECT_EQ(object["errorCode"], 0) << name;
        EXPECT_NE(object["errorMessage"], "") << name;
        EXPECT_EQ(object["structure"], Json::array()) << name;
        EXPECT_EQ(object["libraryParentName"], "") << name;
        EXPECT_TRUE(contains(result.errors, "Nothing has been changed")) << result.errors;
    }
    EXPECT_EQ(library_.tree(), before);
}

TEST_F(TarnetCommand, AReportThatCannotBeOpenedIsTold) {
    const ProgramResult result = run({"--report", "no/such/report.txt", "--json"});
    EXPECT_EQ(result.status, 1);
    const tests::LastError error = tests::openForWritingError(library_.path("no/such/report.txt"));
    const Json object = Json::parse(result.output);
    EXPECT_EQ(object["status"], 10106);
    EXPECT_EQ(object["errorCode"], 10106);
    EXPECT_EQ(object["errorMessage"], error.message);
    EXPECT_EQ(object["structure"].size(), listing().size());
    EXPECT_TRUE(contains(result.errors, error.message + " (error 10106)")) << result.errors;
    EXPECT_TRUE(library_.existsNew("master.tag"));
}

// --- a library that cannot be converted ---

TEST_F(TarnetCommand, ALibraryThatIsNoFolderIsTold) {
    library_.write("file", "mine");
    const Tree before = library_.tree();
    const struct {
        std::string path;
        const char* hint;
    } cases[] = {
        {library_.path("absent"), "There is no folder of this name"},
        {library_.path("no/such/library"), "There is no folder of this name"},
        {library_.path("file"), "This is not a folder"},
        {library_.cfg + "/a.lib", "This is not a folder"},
    };
    for (const auto& c : cases) {
        const ProgramResult result = runTvxconv({"tarnet", c.path, "--json", "--report", "r.txt"});
        EXPECT_EQ(result.status, 1) << c.path;
        const std::string message = tests::openDirectoryError(c.path).message;
        const Json object = Json::parse(result.output);
        EXPECT_EQ(object["status"], 10103) << c.path;
        EXPECT_EQ(object["errorCode"], 10103) << c.path;
        EXPECT_EQ(object["errorMessage"], message) << c.path;
        EXPECT_EQ(object["structure"], Json::array()) << c.path;
        EXPECT_EQ(object["libraryParentName"], fs::path(c.path).parent_path().filename().string()) << c.path;
        EXPECT_TRUE(contains(result.errors, message + " (error 10103)")) << result.errors;
        EXPECT_TRUE(contains(result.errors, c.hint)) << result.errors;
    }
    EXPECT_EQ(library_.tree(), before);
}

TEST_F(TarnetCommand, ALibraryWithoutAFolderAboveItIsTold) {
    for (const char* path : {"/", "/bin", "/no-such-library"}) {
        const ProgramResult result = runTvxconv({"tarnet", path, "--json"});
        EXPECT_EQ(result.status, 1) << path;
        const Json object = Json::parse(result.output);
        EXPECT_EQ(object["status"], 1) << path;
        EXPECT_EQ(object["errorCode"], 0) << path;
        EXPECT_TRUE(contains(object["errorMessage"], "directly below the root")) << path;
        EXPECT_TRUE(contains(result.errors, "directly below the root")) << path;
    }
}

TEST_F(TarnetCommand, ALibraryThatMayNotBeListedIsTold) {
    if (!othersMayRunProgram()) GTEST_SKIP() << "the program lies where others cannot reach it";
    tests::openToAll(library_.folder.path());
    ASSERT_EQ(chmod(library_.dir.c_str(), 0333), 0);
    const ProgramResult result = runWithoutRoot({"tarnet", library_.dir});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(contains(result.errors, tests::openDirectoryError(library_.dir).message)) << result.errors;
}

// --- cells that fail ---

TEST_F(TarnetCommand, AFileThatFailsIsToldWithItsCellAndTheOthersAreConverted) {
    library_.makeFolder("amp/tvx_sim_1/b.lib");
    const ProgramResult result = run({"--json"});
    EXPECT_EQ(result.status, 0);
    const tests::LastError error = tests::copyFileError(library_.cfg + "/b.lib", library_.view + "/b.lib");
    EXPECT_EQ(result.errors, "tvxconv: cell \"amp\": " + error.message +
                                 " (error 10108)\n"
                                 "tvxconv: cell \"amp\" counts as converted all the same; remove \"" +
                                 library_.view + "\" to have it converted anew\n" + summary(3, 1, 1, 1));
    const Json object = Json::parse(result.output);
    EXPECT_EQ(object["status"], 0);
    EXPECT_EQ(object["errorCode"], 10108);
    EXPECT_EQ(object["errorMessage"], error.message);
    EXPECT_EQ(library_.readNew("a.lib"), "models");
    EXPECT_EQ(library_.read("beta/tvx_sim_1/master.tag"), "beta.net");
}

TEST_F(TarnetCommand, OfSeveralCellsThatFailEachIsTold) {
    library_.write("beta/cfg_analog/c.lib", "models");
    library_.addCell("gamma");
    library_.write("gamma/cfg_analog/p.sim", "A\n");
    library_.write("gamma/cfg_analog/p.dat", "data");
    library_.makeFolder("amp/tvx_sim_1/a.lib");
    library_.makeFolder("beta/tvx_sim_1/c.lib");
    library_.addCell("zeta");
    library_.write("zeta/cfg_analog/last.net", "R1\n");
    const ProgramResult result = run();
    EXPECT_EQ(result.status, 0);
    for (const std::string& text :
         {"cell \"amp\": " +
              tests::copyFileError(library_.cfg + "/a.lib", library_.path("amp/tvx_sim_1/a.lib")).message +
              " (error 10108)\n",
          "cell \"beta\": " + tests::copyFileError(library_.path("beta/cfg_analog/c.lib"),
                                                   library_.path("beta/tvx_sim_1/c.lib"))
                                  .message,
          summary(5, 2, 1, 2)}) {
        EXPECT_TRUE(contains(result.errors, text)) << text << " in\n" << result.errors;
    }
    for (const char* name : {"gamma", "zeta", "done"}) {
        EXPECT_FALSE(contains(result.errors, "\"" + std::string(name) + "\"")) << result.errors;
    }
}

TEST_F(TarnetCommand, AFullDiskIsToldForEachCell) {
    library_.writeOld("c.lib", std::string(5000, 'x'));
    library_.write("beta/cfg_analog/c.lib", std::string(6000, 'x'));
    library_.addCell("gamma");
    const ProgramResult result = tests::runProgram(
        {"sh", "-c", "trap '' XFSZ; ulimit -f 8; exec " + std::string(kProgram) + " tarnet \"$0\"",
         library_.dir},
        "", tests::kWithoutCoverage);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.errors, "cell \"amp\": Failed to copy file")) << result.errors;
    EXPECT_TRUE(contains(result.errors, "cell \"beta\": Failed to copy file")) << result.errors;
    EXPECT_TRUE(contains(result.errors, summary(4, 1, 1, 2))) << result.errors;
}

TEST_F(TarnetCommand, ACellWithoutItsNewViewEndsTheRun) {
    library_.addCell("zeta");
    library_.write("beta/tvx_sim_1", "a file");
    const ProgramResult result = run({"--json", "--report", "report.txt"});
    EXPECT_EQ(result.status, 1);
    const tests::LastError error = tests::openForWritingError(library_.path("beta/tvx_sim_1/master.tag"));
    EXPECT_EQ(result.errors,
              "tvxconv: cell \"beta\": " + error.message +
                  " (error 10106)\n"
                  "tvxconv: cells found: 4, converted: 1, skipped as converted already: 1, failed: 1, not "
                  "reached: 1\n");
    EXPECT_EQ(Json::parse(result.output), Json({{"status", 10106},
                                                {"errorCode", 10106},
                                                {"errorMessage", error.message},
                                                {"newProjectPath", ""},
                                                {"structure", Json::array()},
                                                {"libraryParentName", "site"}}));
    EXPECT_TRUE(library_.existsNew("master.tag"));
    EXPECT_FALSE(library_.exists("zeta/tvx_sim_1"));
    EXPECT_FALSE(library_.exists("report.txt"));
}

TEST_F(TarnetCommand, AnOldViewThatMayNotBeListedIsAFailureOfItsCell) {
    if (!othersMayRunProgram()) GTEST_SKIP() << "the program lies where others cannot reach it";
    tests::openToAll(library_.folder.path());
    ASSERT_EQ(chmod(library_.cfg.c_str(), 0333), 0);
    const ProgramResult result = runWithoutRoot({"tarnet", library_.dir});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "tvxconv: cell \"amp\": It could not be converted.\n" + summary(3, 1, 1, 1));
    EXPECT_FALSE(library_.existsNew("master.tag"));
}

// --- faults and interruptions at each call ---

class TarnetFaults : public testing::Test {
protected:
    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__)
        GTEST_SKIP() << "a sanitizer would meet the faults, too";
#endif
        if (!tests::canInject()) GTEST_SKIP() << "strace is missing or may not trace";
        const TarnetLibrary whole;
        fill(whole);
        before_ = whole.tree();
        EXPECT_EQ(runTvxconv({"tarnet", whole.dir}).errors, summary(3, 2, 1, 0));
        complete_ = whole.tree();
    }

    static void fill(const TarnetLibrary& library) {
        library.writeOld("a.lib", "* models\n");
        library.writeOld("amp.net", ".INC \"x.par\"\nR1 1 0 1k\n");
        library.writeOld("amp.opt", "ext \"m.mdp\" 1\n");
        library.writeOld("m.mdp", "corners\n");
        library.writeOld("tran.dat", "data");
        library.writeOld("tran.sim", "DataFile= \"tran.dat\" \n+1 \"a.lib\" \n");
        library.writeOld("tran.sim.cir", ".LIB \"a.lib\"\n.INC \"x.net\"\n");
        library.addCell("beta");
        library.write("beta/cfg_analog/b.lib", "* more models\n");
        library.addCell("done");
        library.write("done/tvx_sim_1/master.tag", "done.net");
    }

    // Nothing outside of the new views has changed.
    void expectOldFilesKept(const Tree& now, const std::string& what) const {
        Tree old = now;
        std::erase_if(old, [](const auto& entry) {
            return entry.first.starts_with("amp/tvx_sim_1/") || entry.first.starts_with("beta/tvx_sim_1/");
        });
        EXPECT_EQ(difference(before_, old), "") << what;
    }

    // A "+" line whose file cannot be copied is left out without a word.
    Tree withEntry(Tree now) const {
        const std::string profile = "amp/tvx_sim_1/profiles/tran.sim";
        const std::string copy = "amp/tvx_sim_1/profiles/tran/a.lib";
        const auto found = now.find(profile);
        if (found == now.end() || found->second != "DataFile= \"tran.dat\" \n") return now;
        for (const std::string& name : {profile, copy}) now[name] = complete_.at(name);
        return now;
    }

    bool isComplete(const Tree& now, const std::string& cell) const {
        Tree wanted = complete_;
        Tree found = now;
        const auto isElsewhere = [&](const auto& entry) { return !entry.first.starts_with(cell + "/"); };
        std::erase_if(wanted, isElsewhere);
        std::erase_if(found, isElsewhere);
        return found == wanted;
    }

    // A run with the n-th of these calls failing, or met by a signal, for each n and each call.
    template <class Check>
    int forEachCall(const std::vector<std::pair<std::string, std::string>>& injections, Check check) {
        std::vector<std::string> calls;
        for (const auto& [call, effect] : injections) calls.push_back(call);
        const TarnetLibrary probe;
        fill(probe);
        const std::vector<int> before = tests::callsBefore(probe.dir, calls, {kProgram, "tarnet", probe.dir});
        int fired = 0;
        for (std::size_t i = 0; i < injections.size(); ++i) {
            const int step = calls[i] == "newfstatat"                      ? 5
                             : calls[i] == "openat" || calls[i] == "close" ? 2
                                                                           : 1;
            for (int when = before[i] + 1;; when += step) {
                const TarnetLibrary library;
                fill(library);
                const std::string injection =
                    calls[i] + ":" + injections[i].second + ":when=" + std::to_string(when);
                const tests::InjectedRun run =
                    tests::runInjected(injection, {kProgram, "tarnet", library.dir});
                if (!run.fired) break;
                ++fired;
                check(library, run.result, injection);
                if (HasFailure()) return fired;
            }
        }
        return fired;
    }

    Tree before_;
    Tree complete_;
};

TEST_F(TarnetFaults, OneFailedCallIsToldAndHarmsNoOldFile) {
    const std::vector<std::pair<std::string, std::string>> faults = {
        {"openat", "error=EACCES"},          {"read", "error=EIO"},
        {"write", "error=ENOSPC"},           {"close", "error=EIO"},
        {"copy_file_range", "error=ENOSPC"}, {"mkdir", "error=ENOSPC"},
        {"getdents64", "error=EIO"},         {"newfstatat", "error=EACCES"}};
    const int fired = forEachCall(
        faults, [&](const TarnetLibrary& library, const ProgramResult& result, const std::string& what) {
            ASSERT_TRUE(result.status == 0 || result.status == 1) << what << result.errors;
            const Tree now = withEntry(library.tree());
            expectOldFilesKept(now, what);
            // What cannot be asked about is taken for missing, and what is missing is passed over.
            const bool hidesFiles = what.starts_with("newfstatat") || what.starts_with("getdents64");
            if (result.status == 0 && !hidesFiles && contains(result.errors, ", failed: 0\n")) {
                EXPECT_EQ(difference(complete_, now), "") << what << result.errors;
            }
            // A cell that is marked although it is not complete has been told of.
            for (const char* cell : {"amp", "beta"}) {
                const bool isMarked = now.count(std::string(cell) + "/tvx_sim_1/master.tag") != 0;
                if (!isMarked || isComplete(now, cell) || hidesFiles) continue;
                EXPECT_TRUE(contains(result.errors, std::string("cell \"") + cell + "\": "))
                    << what << result.errors;
            }
        });
    EXPECT_GT(fired, 100);
}

TEST_F(TarnetFaults, ASignalEndsTheRunAndTheNextOneMakesItWhole) {
    int interrupted = 0;
    const int fired = forEachCall(
        {{"openat", "signal=SIGINT"}, {"mkdir", "signal=SIGTERM"}, {"copy_file_range", "signal=SIGINT"}},
        [&](const TarnetLibrary& library, const ProgramResult& result, const std::string& what) {
            const Tree now = library.tree();
            expectOldFilesKept(now, what);
            if (result.status == 1) {
                ++interrupted;
                EXPECT_TRUE(contains(result.errors, "interrupted")) << what << result.errors;
            } else if (result.status != 0) {
                // Before there is anything to do in order, the signal ends the program like any other.
                EXPECT_GT(result.status, 128) << what;
                EXPECT_EQ(difference(before_, now), "") << what;
            }
            for (const char* cell : {"amp", "beta"}) {
                const bool isMarked = now.count(std::string(cell) + "/tvx_sim_1/master.tag") != 0;
                EXPECT_TRUE(!isMarked || isComplete(now, cell)) << what;
            }
            EXPECT_EQ(runTvxconv({"tarnet", library.dir}).status, 0) << what;
            EXPECT_TRUE(isComplete(library.tree(), "amp") && isComplete(library.tree(), "beta")) << what;
        });
    EXPECT_GT(fired, 20);
    EXPECT_GT(interrupted, 15);
}

}  // namespace
