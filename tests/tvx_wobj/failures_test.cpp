// failures_test.cpp
//
// The project-file library where something is wrong: with the file, with an argument, with the user's
// rights, with the disk, or with the process in the middle of a call.

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/platform.h"
#include "support/TestFolder.h"
#include "support/wobjProject.h"
#include "tvx_wobj/tvx_wobj.h"

namespace {

using tvx_wobj::Strings;
using wobjtest::giveUpRoot;
using wobjtest::inChild;
using wobjtest::LoneFile;
using wobjtest::pretty;

const std::string kGood = R"({ "folders": [
    { "name": "F", "items": { "I": "v" }, "files": [ { "name": "a", "path": "a", "type": "T" } ],
      "folders": [ { "name": "S", "files": [ { "name": "b", "path": "b", "type": "T" } ] } ] } ],
  "simulationProfiles": { "active": "p", "profiles": [ { "path": "p", "name": "n", "schematic": "s" } ] },
  "more": [1, -2.5, "\u00e4", true, null] })";

struct Outcome {
    const char* function;
    int status;
    bool isEmpty;  // all outputs
};

// Calls each function once, with arguments that read or change something in kGood.
std::vector<Outcome> callEverything(const std::string& project) {
    std::vector<Outcome> outcomes;
    Strings a;
    Strings b;
    Strings c;
    std::string text;
    const auto rubbish = [&] {
        a = b = c = {"left", "over"};
        text = "left over";
    };
    rubbish();
    int status = tvx_wobj::readProjectFiles(project, "F", a, b, true);
    outcomes.push_back({"readProjectFiles", status, a.empty() && b.empty()});
    rubbish();
    status = tvx_wobj::readProjectFiles(project, "F", "S", a, b, true);
    outcomes.push_back({"readProjectFiles, sub-folder", status, a.empty() && b.empty()});
    rubbish();
    status = tvx_wobj::readProjectFileDirectly(project, "F", a, b, c);
    outcomes.push_back({"readProjectFileDirectly", status, a.empty() && b.empty() && c.empty()});
    rubbish();
    status = tvx_wobj::readProjectFileDirectly(project, "F", "S", a, b, c);
    outcomes.push_back({"readProjectFileDirectly, sub-folder", status, a.empty() && b.empty() && c.empty()});
    rubbish();
    status = tvx_wobj::readSimProfiles(project, a, b, text, true);
    outcomes.push_back({"readSimProfiles", status, a.empty() && b.empty() && text.empty()});
    status = tvx_wobj::updateInProjectFile(project, "F", "T", "a", "a2");
    outcomes.push_back({"updateInProjectFile", status, true});
    status = tvx_wobj::writeProjectFiles(project, "F", "T", {"a3"}, true, true, true);
    outcomes.push_back({"writeProjectFiles", status, true});
    status = tvx_wobj::writeProjectFiles(project, "F", "S", "T", {"b2"}, true, true, true, true);
    outcomes.push_back({"writeProjectFiles, sub-folder", status, true});
    status = tvx_wobj::writeItemToProject(project, "F", "I", "w", true);
    outcomes.push_back({"writeItemToProject", status, true});
    status = tvx_wobj::writeSimProfiles(project, {"p2"}, {"n"}, {"s"}, "p2", true);
    outcomes.push_back({"writeSimProfiles", status, true});
    return outcomes;
}

// Every function must fail on a file with these bytes, with empty outputs, and leave the file alone.
void expectRefusal(const std::string& bytes, const std::string& what) {
    const LoneFile project(bytes);
    for (const Outcome& outcome : callEverything(project.path())) {
        EXPECT_NE(outcome.status, 0) << outcome.function << ": " << what;
        EXPECT_TRUE(outcome.isEmpty) << outcome.function << ": " << what;
    }
    EXPECT_TRUE(project.bytes() == bytes) << what;
    EXPECT_EQ(project.names(), Strings{"amp.opj"}) << what;
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

// --- the file ---

TEST(WobjEveryFunction, SucceedsOnAGoodFile) {
    const LoneFile project(kGood);
    for (const Outcome& outcome : callEverything(project.path()))
        EXPECT_EQ(outcome.status, 0) << outcome.function;
    EXPECT_EQ(project.bytes(), pretty(R"({ "folders": [
        { "name": "F", "items": { "I": "w" }, "files": [ { "name": "a3", "path": "a3", "type": "T" } ],
          "folders": [ { "name": "S", "files": [ { "name": "b2", "path": "b2", "type": "T" } ] } ] } ],
      "simulationProfiles": { "active": "p2", "profiles": [ { "path": "p2", "name": "n", "schematic": "s" } ] },
      "more": [1, -2.5, "\u00e4", true, null] })"));
    EXPECT_EQ(project.names(), Strings{"amp.opj"});
}

TEST(WobjEveryFunction, RefusesAValueOfAnotherType) {
    const char* const objects[] = {"null", "true", "0", "1.5", "\"\"", "[]"};
    const char* const lists[] = {"null", "false", "7", "\"x\"", "{}"};
    const char* const texts[] = {"null", "true", "3", "[]", "{}", "[\"x\"]"};
    const struct {
        const char* before;
        const char* after;
        std::vector<const char*> values;
    } places[] = {
        {"", "", {std::begin(objects), std::end(objects)}},
        {R"({"folders":)", "}", {std::begin(lists), std::end(lists)}},
        {R"({"folders":[)", "]}", {std::begin(objects), std::end(objects)}},
        {R"({"folders":[{"name":)", "}]}", {std::begin(texts), std::end(texts)}},
        {R"({"folders":[{"items":)", "}]}", {std::begin(objects), std::end(objects)}},
        {R"({"folders":[{"items":{"a":"b","c":)", "}}]}", {std::begin(texts), std::end(texts)}},
        {R"({"folders":[{"files":)", "}]}", {std::begin(lists), std::end(lists)}},
        {R"({"folders":[{"files":[{},)", "]}]}", {std::begin(objects), std::end(objects)}},
        {R"({"folders":[{"files":[{"name":)", "}]}]}", {std::begin(texts), std::end(texts)}},
        {R"({"folders":[{"files":[{"path":)", "}]}]}", {std::begin(texts), std::end(texts)}},
        {R"({"folders":[{"files":[{"type":)", "}]}]}", {std::begin(texts), std::end(texts)}},
        {R"({"folders":[{"folders":)", "}]}", {std::begin(lists), std::end(lists)}},
        {R"({"folders":[{"folders":[)", "]}]}", {std::begin(objects), std::end(objects)}},
        {R"({"folders":[{"folders":[{"folders":[{"files":[{"path":)",
         "}]}]}]}]}",
         {std::begin(texts), std::end(texts)}},
        {R"({"simulationProfiles":)", "}", {std::begin(objects), std::end(objects)}},
        {R"({"simulationProfiles":{"active":)", "}}", {std::begin(texts), std::end(texts)}},
        {R"({"simulationProfiles":{"profiles":)", "}}", {std::begin(lists), std::end(lists)}},
        {R"({"simulationProfiles":{"profiles":[)", "]}}", {std::begin(objects), std::end(objects)}},
        {R"({"simulationProfiles":{"profiles":[{"path":)", "}]}}", {std::begin(texts), std::end(texts)}},
        {R"({"simulationProfiles":{"profiles":[{"name":)", "}]}}", {std::begin(texts), std::end(texts)}},
        {R"({"simulationProfiles":{"profiles":[{"schematic":)", "}]}}", {std::begin(texts), std::end(texts)}},
    };
    for (const auto& place : places) {
        for (const char* value : place.values) {
            const std::string bytes = std::string(place.before) + value + place.after;
            expectRefusal(bytes, bytes);
        }
    }
}

TEST(WobjEveryFunction, RefusesWhatIsNoJson) {
    const std::string cases[] = {
        "",
        " ",
        "\n\n",
        "{",
        "}",
        "{}}",
        "{}{}",
        "{} x",
        "{} // comment",
        "/* comment */ {}",
        "{'folders': []}",
        "{folders: []}",
        R"({"folders": [],})",
        R"({"folders": [,]})",
        R"({"folders" []})",
        R"({"a": 01})",
        R"({"a": .5})",
        R"({"a": 1e999})",
        R"({"a": NaN})",
        R"({"a": True})",
        R"({"a": "b)",
        R"({"a": "\x"})",
        R"({"a": "\u12"})",
        "{\"a\": \"b\nc\"}",
        std::string("{}\0", 3),
        std::string("{}\0 left behind", 15),
        std::string("{\"a\": \"\0\"}", 10),
        std::string("\0{}", 3),
        std::string("{\0}", 3),
        std::string("\xFF\xFE{\0}\0", 6),
        R"({"folders": [], "folders": []})",
        R"({"x": [{"k": 1, "j": 2, "k": 3}]})",
        R"({"x": {"a": 1, "\u0061": 2}})",
    };
    for (const std::string& bytes : cases) expectRefusal(bytes, bytes);
}

TEST(WobjEveryFunction, RefusesTextThatIsNotUtf8) {
    const std::string texts[] = {
        "\x80",         "\xBF",         "\xC0\x80",         "\xC1\xBF",         "\xC3",
        "\xC3(",        "\xE0\x80\x80", "\xE2\x82",         "\xED\xA0\x80",     "\xED\xBF\xBF",
        "\xF0\x80\x80", "\xF5",         "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
        "\xFE",         "\xFF",         "\\ud800",          "\\udc00",          "\\ud800\\u0041",
    };
    for (const std::string& text : texts) {
        expectRefusal(R"({"folders":[{"name":")" + text + "\"}]}", "value " + text);
        expectRefusal(R"({"unknown":")" + text + "\"}", "unknown value " + text);
        expectRefusal("{\"" + text + "\":1}", "key " + text);
    }
    expectRefusal("{\"folders\":[]} \xC3\xA4", "behind the end");
}

TEST(WobjEveryFunction, RefusesAFileThatIsCutOff) {
    const std::string good = kGood + " \n";
    const std::size_t end = kGood.size();
    const LoneFile project(good);
    for (std::size_t length = 0; length < good.size(); ++length) {
        project.put(good.substr(0, length));
        const bool isWhole = length >= end;
        for (const Outcome& outcome : callEverything(project.path())) {
            EXPECT_EQ(outcome.status == 0, isWhole) << outcome.function << " at " << length;
            EXPECT_TRUE(isWhole || outcome.isEmpty) << outcome.function << " at " << length;
        }
        if (!isWhole) {
            EXPECT_EQ(project.bytes(), good.substr(0, length));
        }
    }
    EXPECT_EQ(project.names(), Strings{"amp.opj"});
}

TEST(WobjEveryFunction, RefusesDeepNestingWithoutFallingOver) {
    constexpr std::size_t million = 1000000;
    expectRefusal(repeated("[", million), "lists");
    expectRefusal(repeated("{\"a\":", million), "objects");
    expectRefusal(repeated("[", million) + repeated("]", million), "closed lists");
    expectRefusal("{\"x\":" + repeated("[", million) + repeated("]", million) + "}",
                  "closed lists in a project");
    expectRefusal(repeated("{\"folders\":[", million), "folders");
    expectRefusal("{\"x\":" + repeated("[", 512) + repeated("]", 512) + "}", "one too many");
}

TEST(WobjEveryFunction, TakesNestingUpToTheLimit) {
    const std::string deep = repeated("[", 511) + repeated("]", 511);
    const LoneFile project("{\"x\":" + deep + "}");
    EXPECT_EQ(tvx_wobj::writeItemToProject(project.path(), "F", "I", "v", true), 0);
    EXPECT_EQ(project.bytes(), pretty("{\"x\":" + deep + R"(,"folders":[{"name":"F","items":{"I":"v"}}]})"));
}

TEST(WobjEveryFunction, RefusesWhatIsNoFile) {
    const LoneFile project(kGood);
    const std::string pipe = project.folder() + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string cases[] = {
        "",
        project.folder() + "/missing.opj",
        project.folder() + "/missing/amp.opj",
        project.path() + "/amp.opj",
        project.folder(),
        pipe,
        project.path() + std::string("\0", 1),
        project.folder() + "/" + repeated("x", 5000),
    };
    for (const std::string& path : cases) {
        for (const Outcome& outcome : callEverything(path)) {
            EXPECT_NE(outcome.status, 0) << outcome.function << ": " << path;
            EXPECT_TRUE(outcome.isEmpty) << outcome.function << ": " << path;
        }
    }
    EXPECT_EQ(project.bytes(), kGood);
    EXPECT_EQ(project.names(), (Strings{"amp.opj", "pipe"}));
}

// --- the arguments ---

TEST(WobjEveryFunction, WritesNoTextThatIsNotUtf8) {
    if (tests::kOnWindows) GTEST_SKIP() << "texts have the code page of the system there";
    const std::string bad = "x\xE4y";
    const LoneFile project(kGood);
    const std::string& p = project.path();
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, "F", "T", {"a", bad}, true, true, true), 0);
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, "F", "T", {"a", bad}, false, true, true), 0);
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, "F", bad, {"a"}, true, true, true), 0);
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, bad, "T", {"a"}, true, true, true), 0);
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, "F", "S", "T", {bad}, true, true, true, true), 0);
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, "F", "S", bad, {"a"}, true, true, true, true), 0);
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, "F", bad, "T", {"a"}, true, true, true, true), 0);
    EXPECT_NE(tvx_wobj::writeProjectFiles(p, bad, "S", "T", {"a"}, true, true, true, true), 0);
    EXPECT_NE(tvx_wobj::writeItemToProject(p, "F", "I", bad, true), 0);
    EXPECT_NE(tvx_wobj::writeItemToProject(p, "F", bad, "v", true), 0);
    EXPECT_NE(tvx_wobj::writeItemToProject(p, bad, "I", "v", true), 0);
    EXPECT_NE(tvx_wobj::updateInProjectFile(p, "F", "T", "a", bad), 0);
    EXPECT_NE(tvx_wobj::writeSimProfiles(p, {bad}, {"n"}, {"s"}, "p", true), 0);
    EXPECT_NE(tvx_wobj::writeSimProfiles(p, {"p"}, {bad}, {"s"}, "p", true), 0);
    EXPECT_NE(tvx_wobj::writeSimProfiles(p, {"p"}, {"n"}, {bad}, "p", true), 0);
    EXPECT_NE(tvx_wobj::writeSimProfiles(p, {"p"}, {"n"}, {"s"}, bad, true), 0);
    EXPECT_EQ(project.bytes(), kGood);
    EXPECT_EQ(project.names(), Strings{"amp.opj"});
}

// --- the user's rights ---

int changeItem(const std::string& project) {
    return tvx_wobj::writeItemToProject(project, "F", "I", "changed", true);
}

TEST(WobjWriting, KeepsThePermissionsOfTheFile) {
    const auto oldMask = static_cast<mode_t>(umask(077));
    for (const unsigned mode : {0600U, 0640U, 0604U, 0664U, 0755U, 0777U, 0200U | 0400U}) {
        const LoneFile project(kGood);
        ASSERT_EQ(chmod(project.path().c_str(), mode), 0);
        EXPECT_EQ(changeItem(project.path()), 0);
        struct stat status {};
        ASSERT_EQ(stat(project.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(mode));
        EXPECT_NE(project.bytes(), kGood);
    }
    umask(oldMask);
}

TEST(WobjWriting, UsesTheFileThatIsThereInAnotherCase) {
    const LoneFile project(kGood, "Amp.OPJ");
    EXPECT_EQ(changeItem(project.folder() + "/amp.opj"), 0);
    EXPECT_EQ(project.names(), Strings{"Amp.OPJ"});
    EXPECT_NE(project.bytes().find("\"changed\""), std::string::npos);
}

TEST(WobjWriting, FollowsALinkThatStaysALink) {
    for (const bool isBesideTheFile : {true, false}) {
        const LoneFile project(kGood);
        const LoneFile other("{}", "other.opj");
        const std::string folder = isBesideTheFile ? project.folder() : other.folder();
        const std::string link = folder + "/link.opj";
        tests::makeLink(isBesideTheFile ? "amp.opj" : project.path(), link);
        tests::makeLink("link.opj", folder + "/second.opj");
        ASSERT_EQ(chmod(project.path().c_str(), 0640), 0);
        for (const char* name : {"/link.opj", "/second.opj", "/SECOND.OPJ"}) {
            project.put(kGood);
            EXPECT_EQ(changeItem(folder + name), 0) << name;
            EXPECT_TRUE(std::filesystem::is_symlink(link)) << name;
            EXPECT_FALSE(std::filesystem::is_symlink(project.path())) << name;
            EXPECT_NE(project.bytes().find("\"changed\""), std::string::npos) << name;
        }
        struct stat status {};
        ASSERT_EQ(stat(project.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(0640));
        EXPECT_EQ(other.bytes(), "{}");
        EXPECT_EQ(project.names(),
                  isBesideTheFile ? (Strings{"amp.opj", "link.opj", "second.opj"}) : Strings{"amp.opj"});
    }
}

TEST(WobjWriting, ALinkThatLeadsNowhereIsNoProject) {
    const LoneFile project(kGood);
    const std::string link = project.folder() + "/link.opj";
    tests::makeLink("missing.opj", link);
    EXPECT_NE(changeItem(link), 0);
    EXPECT_EQ(project.names(), (Strings{"amp.opj", "link.opj"}));
}

TEST(WobjWriting, TakesNamesAsLongAsTheyCanBe) {
    if (tests::kOnWindows) GTEST_SKIP() << "a whole path is not much longer there";
    for (const std::size_t length : {249U, 250U, 255U}) {
        const LoneFile project(kGood, std::string(length - 4, 'n') + ".opj");
        EXPECT_EQ(changeItem(project.path()), 0) << length;
        EXPECT_NE(project.bytes().find("\"changed\""), std::string::npos) << length;
        EXPECT_EQ(project.names().size(), 1U) << length;
    }
}

TEST(WobjWriting, GoesToTheNameAsSpelledThoughATwinWasThereBefore) {
    const LoneFile project(kGood, "Amp.OPJ");
    const std::string path = project.folder() + "/amp.opj";
    const tvxconv::platform::RememberedFolders remembered;
    Strings names;
    Strings paths;
    Strings types;
    EXPECT_EQ(tvx_wobj::readProjectFileDirectly(path, "F", names, paths, types), 0);
    std::filesystem::remove_all(project.folder());
    std::filesystem::create_directory(project.folder());
    tests::writeFile(path, kGood);
    EXPECT_EQ(changeItem(path), 0);
    EXPECT_EQ(project.names(), Strings{"amp.opj"});
    EXPECT_NE(tests::readFile(path).find("\"changed\""), std::string::npos);
}

TEST(WobjWriting, LeavesAReadOnlyFileAlone) {
    const LoneFile project(kGood);
    ASSERT_EQ(chmod(project.folder().c_str(), 0777), 0);
    ASSERT_EQ(chmod(project.path().c_str(), 0444), 0);
    const int result = inChild([&] {
        if (!giveUpRoot()) return 100;
        if (tvx_wobj::writeItemToProject(project.path(), "F", "I", "v", true) != 0) return 1;  // nothing new
        for (const Outcome& outcome : callEverything(project.path())) {
            const bool isReading = std::string(outcome.function).starts_with("read");
            if ((outcome.status == 0) != isReading) return 2;
        }
        return 0;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(project.bytes(), kGood);
    EXPECT_EQ(project.names(), Strings{"amp.opj"});
}

TEST(WobjWriting, FailsInAFolderThatTakesNoNewFile) {
    const LoneFile project(kGood);
    ASSERT_EQ(chmod(project.folder().c_str(), 0555), 0);
    ASSERT_EQ(chmod(project.path().c_str(), 0666), 0);
    EXPECT_EQ(inChild([&] {
                  if (!giveUpRoot()) return 100;
                  return changeItem(project.path()) == 0 ? 1 : 0;
              }),
              0);
    EXPECT_EQ(project.bytes(), kGood);
    EXPECT_EQ(project.names(), Strings{"amp.opj"});
}

TEST(WobjReading, FailsWhereTheUserMayNotRead) {
    const LoneFile project(kGood);
    ASSERT_EQ(chmod(project.folder().c_str(), 0777), 0);
    ASSERT_EQ(chmod(project.path().c_str(), 0200), 0);
    EXPECT_EQ(inChild([&] {
                  if (!giveUpRoot()) return 100;
                  for (const Outcome& outcome : callEverything(project.path())) {
                      if (outcome.status == 0 || !outcome.isEmpty) return 1;
                  }
                  return 0;
              }),
              0);
    EXPECT_EQ(project.bytes(), kGood);
}

// --- the disk, and the end of the process ---

void limitFileSize(std::size_t bytes) {
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

TEST(WobjWriting, LeavesTheOldFileWhenTheDiskIsFull) {
    const std::string after = pretty(kGood);
    const LoneFile project(kGood);
    for (std::size_t room = 0; room < after.size(); room += 16) {
        const int result = inChild([&] {
            signal(SIGXFSZ, SIG_IGN);
            limitFileSize(room);
            for (const Outcome& outcome : callEverything(project.path())) {
                const bool isReading = std::string(outcome.function).starts_with("read");
                if ((outcome.status == 0) != isReading) return 1;
            }
            return 0;
        });
        EXPECT_EQ(result, 0) << room;
        EXPECT_EQ(project.bytes(), kGood) << room;
        EXPECT_EQ(project.names(), Strings{"amp.opj"}) << room;
    }
}

TEST(WobjWriting, LeavesTheOldFileWhenTheProcessDiesBetweenTwoBytes) {
    const std::string after = pretty(kGood);
    for (std::size_t room = 0; room < after.size(); room += 16) {
        const LoneFile project(kGood);
        const int result = inChild([&] {
            signal(SIGXFSZ, SIG_DFL);
            limitFileSize(room);
            changeItem(project.path());
            return 0;
        });
        EXPECT_EQ(result, -SIGXFSZ) << room;
        EXPECT_EQ(project.bytes(), kGood) << room;
    }
}

TEST(WobjWriting, LeavesOneWholeFileWhenTheProcessIsKilledAtAnyMoment) {
    Strings oldPaths;
    Strings newPaths;
    for (int i = 0; i < 1000; ++i) {
        oldPaths.push_back(".\\lib\\part" + std::to_string(i) + ".olb");
        newPaths.push_back(".\\moved\\further\\away\\part" + std::to_string(i) + ".olb");
    }
    const auto write = [](const std::string& project, const Strings& paths) {
        return tvx_wobj::writeProjectFiles(project, "F", "T", paths, true, true, true);
    };
    const LoneFile project("{}");
    ASSERT_EQ(write(project.path(), oldPaths), 0);
    const std::string oldBytes = project.bytes();
    ASSERT_EQ(write(project.path(), newPaths), 0);
    const std::string newBytes = project.bytes();
    ASSERT_NE(oldBytes, newBytes);

    int killedWhileWriting = 0;
    for (int round = 0; round < 60; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            tests::stopCoverage();
            while (write(project.path(), oldPaths) == 0 && write(project.path(), newPaths) == 0) continue;
            _exit(1);
        }
        ASSERT_NE(child, -1);
        // The child has begun to write when there is a second file; from then on, every round waits longer.
        for (int i = 0; project.names().size() == 1 && i < 100000; ++i) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::microseconds(100 * round));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string bytes = project.bytes();
        ASSERT_TRUE(bytes == oldBytes || bytes == newBytes) << "round " << round;
        for (const std::string& name : project.names()) {  // the unfinished file, which nobody reads
            if (name == "amp.opj") continue;
            ++killedWhileWriting;
            std::filesystem::remove(project.folder() + "/" + name);
        }
    }
    EXPECT_GT(killedWhileWriting, 0);
}

}  // namespace
