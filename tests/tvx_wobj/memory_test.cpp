// memory_test.cpp
//
// The two stand-in libraries when memory runs out, at each allocation in turn: a status, no exception, empty
// outputs, the file whole.

#include <dlfcn.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/wobjAllocations.h"
#include "support/wobjProject.h"
#include "tvx_wobj/tvx_wobj.h"

namespace {

using tvx_wobj::Strings;
using wobjtest::Failing;
using wobjtest::LoneFile;

const std::string kProject = R"({ "folders": [
    { "name": "a folder with a long name", "items": { "I": "v" },
      "files": [ { "name": "a", "path": "a", "type": "T", "note": 1.5 } ],
      "folders": [ { "name": "S", "files": [] } ] } ],
  "simulationProfiles": { "active": "p", "profiles": [ { "path": "p", "name": "n", "schematic": "s" } ] } })";

// The library hands out the last project it read while the file has the same bytes; it is to read anew.
void forgetProjects(const std::string& otherProject) {
    Strings paths;
    Strings names;
    std::string active;
    EXPECT_EQ(tvx_wobj::readSimProfiles(otherProject, paths, names, active, true), 0);
}

// Runs `call` again and again, each time with one more allocation that succeeds, until none fails.
// `call` takes a path and returns whether status 0 came; `check` looks at what is left behind.
template <class Call, class Check>
void failEachAllocation(const char* what, const LoneFile& file, Call call, Check check) {
    const std::string bytes = file.bytes();
    const LoneFile other("{}");
    for (const Failing failing : {Failing::once, Failing::forGood}) {
        std::size_t number = 1;
        for (;; ++number) {
            file.put(bytes);
            forgetProjects(other.path());
            wobjtest::failAllocation(number, failing);
            const int status = call(file.path());
            const bool hasFailed = wobjtest::endFailing();
            check(status, failing, std::string(what) + ", allocation " + std::to_string(number));
            if (!hasFailed) {
                EXPECT_EQ(status, 0) << what;
                break;
            }
        }
        EXPECT_GT(number, 5u) << what << ": nothing failed";
    }
    file.put(bytes);
}

TEST(WobjMemory, ReadingWithoutMemoryLeavesEmptyOutputs) {
    const LoneFile project(kProject);
    const std::string folder = "a folder with a long name";
    const std::string subFolder = "S";
    Strings names;
    Strings paths;
    Strings types;
    std::string active;
    const auto spoil = [&] {
        names = paths = types = {"left over"};
        active = "left over";
    };
    const auto check = [&](int status, Failing, const std::string& what) {
        const bool isEmpty = names.empty() && paths.empty() && types.empty() && active.empty();
        EXPECT_TRUE(status == 0 || isEmpty) << what;
        spoil();
        types.clear();
        active.clear();
    };
    spoil();
    failEachAllocation(
        "readProjectFileDirectly", project,
        [&](const std::string& path) {
            active.clear();
            return tvx_wobj::readProjectFileDirectly(path, folder, names, paths, types);
        },
        check);
    failEachAllocation(
        "readProjectFileDirectly, sub-folder", project,
        [&](const std::string& path) {
            return tvx_wobj::readProjectFileDirectly(path, folder, subFolder, names, paths, types);
        },
        check);
    failEachAllocation(
        "readProjectFiles", project,
        [&](const std::string& path) {
            return tvx_wobj::readProjectFiles(path, folder.c_str(), paths, names, true);
        },
        check);
    failEachAllocation(
        "readProjectFiles, sub-folder", project,
        [&](const std::string& path) {
            return tvx_wobj::readProjectFiles(path, folder.c_str(), "S", names, paths, true);
        },
        check);
    failEachAllocation(
        "readSimProfiles", project,
        [&](const std::string& path) { return tvx_wobj::readSimProfiles(path, paths, names, active, true); },
        check);
}

TEST(WobjMemory, WritingWithoutMemoryLeavesAWholeFile) {
    const LoneFile project(kProject);
    const std::string folder = "a folder with a long name";
    const std::string text = "a text that is too long to be kept without memory";
    const std::string type = "T";
    const std::string item = "I";
    const std::string oldPath = "A";
    const std::string newFolder = "G";
    const Strings list = {text, text};
    const auto check = [&](int status, Failing failing, const std::string& what) {
        const std::string bytes = project.bytes();
        EXPECT_EQ(bytes == kProject, status != 0) << what;
        EXPECT_EQ(bytes.find(text) != std::string::npos, status == 0) << what;
        // Without any memory left, the unfinished file cannot be found to be removed.
        if (failing == Failing::once) {
            EXPECT_EQ(project.names(), Strings{"amp.opj"}) << what;
        }
        for (const std::string& name : project.names()) {
            if (name != "amp.opj") std::filesystem::remove(project.folder() + "/" + name);
        }
    };
    failEachAllocation(
        "writeProjectFiles", project,
        [&](const std::string& path) {
            return tvx_wobj::writeProjectFiles(path, folder, type, list, true, true, true);
        },
        check);
    failEachAllocation(
        "writeProjectFiles, added", project,
        [&](const std::string& path) {
            return tvx_wobj::writeProjectFiles(path, folder, newFolder, type, list, false, true, true, true);
        },
        check);
    failEachAllocation(
        "writeItemToProject", project,
        [&](const std::string& path) {
            return tvx_wobj::writeItemToProject(path, newFolder, item, text, true);
        },
        check);
    failEachAllocation(
        "updateInProjectFile", project,
        [&](const std::string& path) {
            return tvx_wobj::updateInProjectFile(path, folder, type, oldPath, text);
        },
        check);
    failEachAllocation(
        "writeSimProfiles", project,
        [&](const std::string& path) {
            return tvx_wobj::writeSimProfiles(path, list, list, list, text, true);
        },
        check);
}

TEST(WobjMemory, ReadingADesignWithoutMemoryLeavesAnEmptyList) {
    const std::string file =
        (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "DraDsnReader.so").string();
    void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    const auto getDsnInfo = reinterpret_cast<int (*)(const std::string&, const std::string&, Strings&)>(
        dlsym(module, "getDsnInfo"));
    ASSERT_NE(getDsnInfo, nullptr);
    const LoneFile design(R"({ "x": [{}], "rootSchematics": ["SCHEMATIC1", "a name that is rather long"] })");
    const std::string unused;
    Strings schematics = {"left over"};
    failEachAllocation(
        "getDsnInfo", design, [&](const std::string& path) { return getDsnInfo(path, unused, schematics); },
        [&](int status, Failing, const std::string& what) {
            EXPECT_EQ(schematics.size(), status == 0 ? 2u : 0u) << what;
            schematics = {"left over"};
        });
}

}  // namespace
