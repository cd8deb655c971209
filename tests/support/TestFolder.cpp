#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "support/coverage.h"

namespace fs = std::filesystem;

namespace tests {

TestFolder::TestFolder() {
    std::string pattern = (fs::temp_directory_path() / "tvxconv-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    chmod(pattern.c_str(), 0755);
    path_ = fs::path(pattern).generic_string();
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TestFolder::write(const std::string& name, const std::string& text) const {
    writeFile(path(name), text);
    return path(name);
}

std::string TestFolder::makeFolder(const std::string& name) const {
    fs::create_directories(path(name));
    return path(name);
}

std::string TestFolder::read(const std::string& name) const {
    if (!fs::is_regular_file(path(name))) {
        ADD_FAILURE() << "there is no file " << name;
        return {};
    }
    return readFile(path(name));
}

bool TestFolder::exists(const std::string& name) const {
    return fs::exists(fs::symlink_status(path(name)));
}

std::string readFile(const std::string& path) {
    return asRead(readBytes(path));
}

std::string asRead(const std::string& text) {
    return kOnWindows ? replaced(text, "\r\n", "\n") : text;
}

std::string readBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
#ifdef _WIN32
    if (path.find_first_of("*?\"<>|") != std::string::npos || path.find(':', 2) != std::string::npos) {
        skipTest("needs a file name that Windows does not take");
    }
#endif
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) ADD_FAILURE() << "cannot write " << path;
}

Tree treeOf(const std::string& folder) {
    Tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = fs::relative(entry.path(), folder).generic_string();
        if (entry.is_directory() && !entry.is_symlink()) {
            tree[name + "/"] = "";
        } else if (entry.is_regular_file()) {
            tree[name] = readFile(entry.path().string());
        } else {
            tree[name] = "(neither file nor folder)";
        }
    }
    return tree;
}

void writeTree(const std::string& folder, const Tree& tree) {
    for (const auto& [name, text] : tree) {
        if (name.ends_with('/')) {
            fs::create_directories(folder + "/" + name);
        } else {
            writeFile(folder + "/" + name, text);
        }
    }
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

void makeLink(const std::filesystem::path& target, const std::filesystem::path& path) {
#ifdef _WIN32
    skipTest(("needs a symbolic link: " + path.generic_string() + " to " + target.generic_string()).c_str());
#else
    fs::create_symlink(target, path);
#endif
}

unsigned keptPermissions(unsigned permissions) {
#ifdef _WIN32
    return (permissions & 0200U) != 0 ? 0666 : 0444;
#else
    return permissions;
#endif
}

bool succeedsWithoutRoot(bool (*body)(void* context), void* context) {
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        constexpr unsigned kNobody = 65534;
        stopCoverage();  // the files may be root's
        bool done = false;
        if (geteuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0)) done = body(context);
        std::cout.flush();
        // Sanitizers need no report of what a forked test leaves behind.
        _exit(done && !testing::Test::HasFailure() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

#ifndef _WIN32  // support/windows has its own
ProgramResult runProgram(const std::vector<std::string>& command, const std::string& folder,
                         const std::vector<std::string>& environment) {
    const TestFolder scratch;
    const std::string output = scratch.path("output");
    const std::string errors = scratch.path("errors");
    std::vector<char*> arguments;
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(126);
        if (std::freopen("/dev/null", "r", stdin) == nullptr) _exit(126);
        if (std::freopen(output.c_str(), "w", stdout) == nullptr) _exit(126);
        if (std::freopen(errors.c_str(), "w", stderr) == nullptr) _exit(126);
        for (const std::string& variable : environment) {
            const std::size_t equals = variable.find('=');
            setenv(variable.substr(0, equals).c_str(), variable.c_str() + equals + 1, 1);
        }
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    ProgramResult result;
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = readFile(output);
    result.errors = withoutCoverageMessages(readFile(errors));
    return result;
}
#endif

}  // namespace tests
