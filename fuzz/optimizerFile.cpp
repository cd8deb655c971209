// optimizerFile.cpp
//
// Any bytes as the optimizer file of a schematic, in a small project in memory. What is written is held
// against the rules, worked out here in another way: each line that is left out is one that they leave out,
// and of the files in the project's folder only those follow that they make follow.

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "draftel/DraftelProjectConverter.h"
#include "errors/errors.h"
#include "fsutil/files.h"

namespace {

namespace fs = std::filesystem;

// Profile files by their names before the first ".", in lower case, and what their profiles are called.
const std::map<std::string, std::string> kProfiles = {
    {"amp-s1-tran", "tran"}, {"b", "AC sweep"}, {"", "nameless"}, {"lost", ""}};

// Files in the project's folder that an optimizer file can name, as they are spelled, and others that it
// cannot.
const std::set<std::string> kDesignProfiles = {"x.mdp", "Corners.MDP", "..mdp", "a.mdp.b", "c:.mdp", " .mdp"};
const std::set<std::string> kOthers = {"x", "mdp", "amp-S1.opt"};

std::string lowerCased(std::string text) {
    for (char& byte : text) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    }
    return text;
}

std::string readFile(const std::string& path) {
    std::string text;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return "there is no " + path;
    char block[4096];
    for (std::size_t got = 0; (got = std::fread(block, 1, sizeof block, file)) != 0;) text.append(block, got);
    std::fclose(file);
    return text;
}

void writeFile(const std::string& path, const std::string& text) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr || std::fwrite(text.data(), 1, text.size(), file) != text.size()) std::abort();
    std::fclose(file);
}

std::set<std::string> namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

void check(bool isTrue, const char* what) {
    if (isTrue) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

// The folder of the project, and that of the schematic below the destination.
struct Folders {
    Folders() {
        std::string pattern =
            (access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path().string()) +
            "/tvxconv-fuzz-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        all = pattern;
        project = all + "/project";
        destination = all + "/new";
        schematic = destination + "/amp-TevrixFiles/S1";
        fs::create_directories(project);
        fs::create_directories(schematic);
        for (const std::set<std::string>& names : {kDesignProfiles, kOthers}) {
            for (const std::string& name : names) writeFile(project + "/" + name, "bytes of " + name);
        }
    }
    ~Folders() {
        std::error_code ignored;
        fs::remove_all(all, ignored);
    }
    Folders(const Folders&) = delete;
    Folders& operator=(const Folders&) = delete;

    std::string all;
    std::string project;
    std::string destination;
    std::string schematic;
};

// What should come of a text: the new one, and the design profiles that follow, each by its name in the
// project's folder and the one it has then.
struct Expected {
    std::string text;
    std::map<std::string, std::string> followers;
};

class Rules {
public:
    explicit Rules(std::string projectDir) : projectDir_(std::move(projectDir)) {}

    Expected apply(const std::string& text) {
        for (std::size_t at = 0; at < text.size();) {
            constexpr std::size_t kPiece = 1023;
            const std::size_t newline = text.find('\n', at);
            const std::size_t end = std::min(
                {newline == std::string::npos ? text.size() : newline + 1, text.size(), at + kPiece});
            applyTo(text.substr(at, end - at));
            at = end;
        }
        return expected_;
    }

private:
    void applyTo(const std::string& line) {
        const std::string word = lowerCased(line.substr(0, 3));
        if (word != "sim" && word != "ext") {
            expected_.text += line;
            return;
        }
        const std::size_t open = line.find('"');
        if (open == std::string::npos || open + 1 == line.size()) return;
        const std::size_t close = line.find('"', open + 1);
        const std::string value = line.substr(open + 1, close - open - 1);
        if (!value.empty() && value.find(word == "sim" ? ".sim" : ".mdp") == std::string::npos) return;
        std::string newValue;
        if (value.empty() || !(word == "sim" ? renameProfile(value, newValue) : follow(value, newValue))) {
            expected_.text += line;
            return;
        }
        std::string rest;
        if (close != std::string::npos) {
            rest = line.substr(close + 1);
        } else if (line.ends_with("\n")) {
            rest = line.ends_with("\r\n") ? "\r\n" : "\n";
        }
        expected_.text += word + " \"" + newValue + "\"" + rest;
    }

    static bool renameProfile(const std::string& value, std::string& newValue) {
        const auto found = kProfiles.find(lowerCased(value.substr(0, value.find('.'))));
        if (found == kProfiles.end()) return false;
        newValue = found->second + ".sim";
        return true;
    }

    bool follow(std::string value, std::string& newValue) {
        std::replace(value.begin(), value.end(), '\\', '/');
        newValue = value;
        if (value.find('/') == std::string::npos) {
            for (const std::string& name : kDesignProfiles) {
                if (lowerCased(name) == lowerCased(value)) expected_.followers.try_emplace(name, value);
            }
            return true;
        }
        if (value.starts_with("../")) {
            newValue = projectDir_.substr(0, projectDir_.rfind('/')) + value.substr(2);
        } else if (value.starts_with("./")) {
            newValue = projectDir_ + value.substr(1);
        } else if (value[0] != '/' && value[1] != ':' && value[2] != '/') {
            newValue = projectDir_ + "/" + value;
        }
        return true;
    }

    std::string projectDir_;
    Expected expected_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folders folders;
    static const std::set<std::string> filesOfProject = namesIn(folders.project);
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string oldPath = folders.project + "/amp-S1.opt";
    writeFile(oldPath, text);

    tvxconv::DraftelProjectConverter converter((folders.project + "/amp.opj").c_str());
    converter.setProjectDir(folders.project);
    converter.setDestinationDir(folders.destination);
    for (const auto& [fileBase, profile] : kProfiles) {
        converter.addProfileRecord(fileBase, profile, "S1", ".\\" + fileBase + ".sim");
    }
    std::string newPath;
    check(converter.rewriteOptimizerFile(newPath, oldPath, "S1", folders.schematic, "opt") == 0,
          "the status");
    check(newPath == folders.schematic + "/S1.opt", "the new path");
    int error = 0;
    tvxconv::getLastErrorCode(error);
    check(error == 0, "an error");

    const Expected expected = Rules(folders.project).apply(text);
    check(readFile(newPath) == expected.text, "the new text");
    check(readFile(oldPath) == text, "the old text");
    std::set<std::string> followers = {"S1.opt"};
    for (const auto& [name, newName] : expected.followers) {
        const std::string copy = folders.schematic + "/" + newName;
        check(readFile(copy) == "bytes of " + name, "a design profile");
        std::string recorded;
        check(converter.findRelocation("./" + newName, recorded) == 0 &&
                  recorded == "./amp-tevrixfiles/s1/" + lowerCased(newName),
              "the move of a design profile");
        followers.insert(newName);
    }
    check(namesIn(folders.schematic) == followers, "the files in the folder of the schematic");
    // What is elsewhere stays there, so in a long run a look now and then will do.
    static unsigned runs = 0;
    if (++runs < 100 || runs % 64 == 0) {
        check(namesIn(folders.project) == filesOfProject, "the files in the folder of the project");
        check(namesIn(folders.all) == std::set<std::string>{"new", "project"}, "the files beside them");
        check(namesIn(folders.destination) == std::set<std::string>{"amp-TevrixFiles"}, "the destination");
        check(namesIn(folders.destination + "/amp-TevrixFiles") == std::set<std::string>{"S1"}, "the root");
    }

    for (const auto& [name, newName] : expected.followers) {
        std::remove((folders.schematic + "/" + newName).c_str());
    }
    return 0;
}
