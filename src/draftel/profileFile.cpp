// Rewriting a simulation profile file: lines of a key and a quoted value, which name the design, the
// deck, the data and output files, and numbered "+" lines that name further files. The new file lies
// beside the profile's folder, and names of moved files are written without a folder.

#include <climits>
#include <cstdio>
#include <cstdlib>

#include "converter/rewriting.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"

namespace tvxconv {
namespace {

// References to the design and project give way to one to the schematic's netlist.
constexpr const char* kDesignReferences[] = {"DesignFile", "ProjectFile", "RootSchematics"};

// The keys whose value names a file of the profile. The value is recognised by one of two texts in it,
// which unlike the key are looked for in just this letter case.
enum class NewValue { profileFile, deck, output };
struct FileKey {
    const char* key;
    const char* mark;
    const char* otherMark;
    NewValue newValue;
};
constexpr FileKey kFileKeys[] = {
    {"ProfileFile", ".sim", ".sim", NewValue::profileFile},
    {"NetlistFile", ".sim.cir", ".sim.cir", NewValue::deck},
    {"DataFile", ".dat", ".csd", NewValue::output},
    {"OutFile", ".out", ".out", NewValue::output},
};

// "+" lines up to this number name files that follow the profile.
constexpr int kLastMovedEntry = 7;

bool isDesignReference(std::string_view line) {
    for (const char* key : kDesignReferences) {
        if (fsutil::beginsWithKey(line, key)) return true;
    }
    return false;
}

const FileKey* fileKeyOf(std::string_view line) {
    for (const FileKey& entry : kFileKeys) {
        if (fsutil::beginsWithKey(line, entry.key)) return &entry;
    }
    return nullptr;
}

// The whole number after the "+" of a line, blanks and a sign before it allowed; false without one, or
// with one that no int holds.
bool entryNumber(std::string_view line, int& number) {
    const std::string text(line.substr(1));
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || value > INT_MAX || value < INT_MIN) return false;
    number = static_cast<int>(value);
    return true;
}

}  // namespace

int DraftelProjectConverter::rewriteSimProfile(const std::string& fileBase, const std::string& profile,
                                               const std::string& destination,
                                               const std::string& schematicFolder,
                                               const std::string& schematic) {
    std::string projectDir;
    getProjectDir(projectDir);
    const std::string oldPath = projectDir + "/" + fileBase + ".sim";
    if (!fsutil::isPresentFile(oldPath)) return 0;
    const std::string profileFolder = schematicFolder + "/" + profile;
    const std::string newPath = profileFolder + ".sim";

    const auto keyLine = [](const char* key, const std::string& value) {
        return std::string(key) + "= \"" + value + "\" ";
    };
    const auto relocatedOutput = [&](const std::string& value) {
        std::string reference;
        const bool made = relocateOutputReference(reference, value, projectDir, fileBase, profile) == 0;
        return fsutil::withBackslashes(made ? reference : value);
    };
    // The line's file, copied into the profile's folder, as the line that now names it; empty when the
    // line is to stay.
    const auto movedEntry = [&](std::string_view line) -> std::string {
        int number = 0;
        std::string value;
        if (!entryNumber(line, number) || number > kLastMovedEntry) return {};
        if (fsutil::scanQuotedValue(line, value) != 1) return {};
        fsutil::toForwardSlashes(value, value);
        bool isRelative = false;
        fsutil::normaliseReference(value, isRelative);
        std::string file;
        if (!isRelative || fsutil::resolveRelative(value, projectDir, file) != 0) return {};
        std::string name;
        if (!fsutil::isPresentFile(file)) return {};
        fsutil::fileNameOf(file, name);
        if (name.empty()) return {};
        const std::string place = profileFolder + "/" + name;
        copyQueue_.await(profileFolder, place);
        if (fsutil::copyFile(file, place) != 0) return {};
        return "+" + std::to_string(number) + " \"" + name + "\" ";
    };

    bool isConnected = false;
    const int status = rewriteLines(oldPath, newPath, [&](std::string_view line, fsutil::LineWriter& writer) {
        if (isDesignReference(line)) {
            if (!isConnected) writer.writeInPlaceOf(line, keyLine("Connectivity", schematic + ".net"));
            isConnected = true;
            return;
        }
        if (const FileKey* key = fileKeyOf(line); key != nullptr) {
            std::string value;
            const int scanned = fsutil::scanQuotedValue(line, value);
            if (scanned == EOF) return;
            if (scanned == 1) {
                if (!containsEither(value, key->mark, key->otherMark)) return;
                value = key->newValue == NewValue::profileFile ? profile + ".sim"
                        : key->newValue == NewValue::deck      ? profile + ".cir"
                                                               : relocatedOutput(value);
            }
            writer.writeInPlaceOf(line, keyLine(key->key, value));
            return;
        }
        const std::string moved = line.front() == '+' ? movedEntry(line) : std::string();
        if (moved.empty()) {
            writer.write(line);
        } else {
            writer.writeInPlaceOf(line, moved);
        }
    });
    if (status == 0) recordMove(oldPath, newPath, destination);
    return status;
}

int DraftelProjectConverter::relocateOutputReference(std::string& reference, const std::string& value,
                                                     const std::string& projectDir,
                                                     const std::string& fileBase,
                                                     const std::string& profile) {
    std::string path;
    fsutil::toForwardSlashes(value, path);
    reference.clear();
    std::string folder;
    if (fsutil::folderOf(path, folder) != 0) {
        std::string base;
        fsutil::baseNameOf(path, base);
        if (fsutil::equalIgnoringCase(base, fileBase)) {
            // Named after the profile file, it has come along into the profile's folder.
            const std::size_t dot = path.find('.');
            reference = profile + "." + (dot == std::string::npos ? std::string() : path.substr(dot + 1));
        } else {
            reference = projectDir + "/" + path;
        }
        return 0;
    }
    bool isRelative = false;
    fsutil::normaliseReference(path, isRelative);
    std::string file = path;
    if (isRelative && fsutil::resolveRelative(path, projectDir, file) != 0) return 1;
    std::string newPath;
    if (findRelocation(recordedOldPath(file, projectDir), newPath) == 0) {
        fsutil::fileNameOf(newPath, reference);
    } else {
        reference = file;
    }
    return 0;
}

}  // namespace tvxconv
