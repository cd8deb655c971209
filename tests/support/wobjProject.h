// wobjProject.h
//
// For the tests of the two stand-in libraries: a file in a temporary folder of its own, and code that runs
// in a child process, so that a test can take its rights or its disk away or have it killed.

#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "support/coverage.h"

namespace wobjtest {

// One file with the given bytes, alone in a folder that goes with this object.
class LoneFile {
public:
    explicit LoneFile(const std::string& bytes, const std::string& name = "amp.opj") {
        std::string pattern = (std::filesystem::temp_directory_path() / "tvxconv-wobj-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::filesystem::filesystem_error("mkdtemp", {});
        folder_ = pattern;
        path_ = folder_ + "/" + name;
        put(bytes);
    }
    ~LoneFile() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    LoneFile(const LoneFile&) = delete;
    LoneFile& operator=(const LoneFile&) = delete;

    const std::string& folder() const { return folder_; }
    const std::string& path() const { return path_; }

    void put(const std::string& bytes) const {
        std::ofstream stream(path_, std::ios::binary | std::ios::trunc);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        stream.close();
        EXPECT_TRUE(stream.good()) << path_;
    }

    std::string bytes() const {
        std::ostringstream result;
        result << std::ifstream(path_, std::ios::binary).rdbuf();
        return result.str();
    }

    // The names in the folder, in order.
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            result.push_back(entry.path().filename().string());
        }
        std::sort(result.begin(), result.end());
        return result;
    }

private:
    std::string folder_;
    std::string path_;
};

// The same JSON in the form that the library writes, made by other means.
inline std::string pretty(const std::string& json) {
    return nlohmann::ordered_json::parse(json).dump(2) + "\n";
}

// Runs `action` in a child process. Its result (0 to 127), or minus the signal that ended the child.
template <class Action>
int inChild(Action action) {
    const pid_t child = fork();
    if (child == 0) {
        tests::stopCoverage();
        int result = 127;
        try {
            result = action();
        } catch (...) {
            result = 126;
        }
        _exit(result);
    }
    int status = 0;
    if (child == -1 || waitpid(child, &status, 0) != child) return 125;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// Gives up the rights of root for good; for use in a child. Whether that worked.
inline bool giveUpRoot() {
    return geteuid() != 0 || (setgid(65534) == 0 && setuid(65534) == 0);
}

}  // namespace wobjtest
