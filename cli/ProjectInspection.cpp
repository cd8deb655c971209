#include "ProjectInspection.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "KeptFiles.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/analysisProfile.h"
#include "draftel/layout.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
#include "report.h"
#include "tvx_wobj/tvx_wobj.h"

namespace platform = tvxconv::platform;
namespace fsutil = tvxconv::fsutil;
namespace layout = tvxconv::draftel;
using tvxconv::DraftelProjectConverter;

namespace {

// Whether a folder of this name would be directly inside its parent folder.
bool canBeFolderName(const std::string& name) {
    if (name.empty() || name == "." || name == "..") return false;
    // Windows drops dots and blanks at the end and reserves the characters of patterns.
    const bool onWindows = platform::hasDriveLetters();
    if (onWindows && (name.back() == '.' || name.back() == ' ')) return false;
    if (onWindows && name.find_first_of("<>\"|?*") != std::string::npos) return false;
    return std::none_of(name.begin(), name.end(), [](char byte) {
        return byte == '/' || byte == '\\' || byte == ':' || (byte >= 0 && byte < ' ') || byte == 0x7F;
    });
}

// Whether the text can stand in a project file.
bool isProjectText(const std::string& text) {
    std::string utf8;
    if (!platform::toUtf8(text, utf8)) return false;
    try {
        static_cast<void>(nlohmann::json(utf8).dump());
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

// "FILE:LINE: ", or "FILE: " for a line of 0.
std::string place(const std::string& file, std::size_t line) {
    std::string text = file;
    if (line != 0) text.append(":").append(std::to_string(line));
    return text.append(": ");
}

// Whether a line of a JSON file contains a text, however its characters are escaped there.
bool holdsText(const std::string& line, const std::string& text) {
    for (std::size_t begin = line.find('"'); begin != std::string::npos; begin = line.find('"', begin)) {
        std::size_t end = begin + 1;
        while (end < line.size() && line[end] != '"') end += line[end] == '\\' ? 2U : 1U;
        if (end >= line.size()) return false;
        const std::string written = line.substr(begin, end + 1 - begin);
        const auto value = nlohmann::json::parse(written, nullptr, false);
        if (value.is_string() && value.get_ref<const std::string&>() == text) return true;
        begin = end + 1;
    }
    return false;
}

// The first line of a JSON file that contains a text; 0 if none does.
std::size_t lineOfText(const std::string& file, const std::string& text) {
    fsutil::LineReader reader;
    if (reader.open(file) != 0) return 0;
    std::string line;
    std::string_view piece;
    while (reader.next(piece)) {
        line += piece;
        if (piece.back() != '\n') continue;
        if (holdsText(line, text)) return reader.lineNumber();
        line.clear();
    }
    return holdsText(line, text) ? reader.lineNumber() : 0;
}

constexpr const char* kNotAFolder =
    " cannot be the name of a folder (it is empty, \".\" or \"..\", or has a separator, a drive or a control "
    "character in it). Rename it in the design application and try again";

constexpr const char* kNoProjectText =
    " is not UTF-8 text, so the project file cannot name the new files. Rename it and try again";

void checkNames(DraftelProjectConverter& converter, const std::string& project,
                ProjectInspection& inspection) {
    if (!isProjectText(inspection.designName)) {
        inspection.refusal =
            place(project, 0) + "the name of the project " + inQuotes(inspection.designName) + kNoProjectText;
        return;
    }
    std::string designFile;
    converter.getDesignFilePath(designFile);
    for (const std::string& schematic : converter.rootSchematics()) {
        if (!canBeFolderName(schematic)) {
            inspection.refusal = place(designFile, lineOfText(designFile, schematic)) +
                                 "the root schematic name " + inQuotes(schematic) + kNotAFolder;
            return;
        }
        std::vector<std::string> fileBases;
        std::vector<std::string> profiles;
        converter.getProfilesOfSchematic(schematic, fileBases, profiles);
        std::set<std::string> seen;
        for (std::size_t i = 0; i < profiles.size(); ++i) {
            tvxconv::ProfileNames names;
            const std::string file = converter.oldProfileFile(fileBases[i]);
            if (!canBeFolderName(profiles[i])) {
                converter.readProfileNames(fileBases[i], names);
                inspection.refusal = place(file, names.profileLine) + "the profile name " +
                                     inQuotes(profiles[i]) + kNotAFolder;
                return;
            }
            if (!isProjectText(profiles[i])) {
                converter.readProfileNames(fileBases[i], names);
                inspection.refusal = place(file, names.profileLine) + "the profile name " +
                                     inQuotes(profiles[i]) + kNoProjectText;
                return;
            }
            if (!seen.insert(lowerCased(profiles[i])).second) {
                converter.readProfileNames(fileBases[i], names);
                inspection.refusal = place(file, names.profileLine) + "the schematic " + inQuotes(schematic) +
                                     " has another profile " + inQuotes(profiles[i]) +
                                     ", and one would overwrite the other. Rename one of them and try again";
                return;
            }
        }
    }
}

// The old paths, in lower case, of the files that move to the simulation root or beside the new project,
// wherever an entry finds them.
std::set<std::string> movedFiles(DraftelProjectConverter& converter, const ProjectInspection& inspection) {
    std::set<std::string> files;
    const auto add = [&](const std::string& folder, const std::string& name) {
        files.insert(lowerCased(folder + "/" + name));
    };
    const std::string& base = inspection.designBase;
    for (const char* extension : {layout::kDesign, layout::kDesignBackup}) {
        add(inspection.designDir, base + "." + extension);
    }
    for (const std::string extension : layout::designLevel()) {
        add(inspection.projectDir, base + "." + extension);
    }
    for (const std::string& schematic : converter.rootSchematics()) {
        for (const std::string extension : layout::schematicLevel()) {
            if (extension == layout::kProfile) continue;
            files.insert(lowerCased(layout::oldSchematicFile(inspection.projectDir, inspection.designDir,
                                                             base, schematic, extension)));
        }
        std::vector<std::string> fileBases;
        std::vector<std::string> profiles;
        converter.getProfilesOfSchematic(schematic, fileBases, profiles);
        for (std::size_t i = 0; i < profiles.size(); ++i) {
            files.insert(lowerCased(converter.oldProfileFile(fileBases[i])));
            for (const std::string extension : layout::profileLevel()) {
                add(inspection.projectDir, layout::oldOutputStem(base, schematic, profiles[i]) + extension);
            }
        }
    }
    return files;
}

// An entry that names a file by way of ".." has it copied to the same place seen from the new project,
// which may be outside the destination. That is refused, unless the file itself, or one with the same
// bytes, is there already.
void checkEntries(DraftelProjectConverter& converter, const std::string& project,
                  const std::string& destination, ProjectInspection& inspection) {
    std::optional<std::set<std::string>> moved;  // made when needed: there are many, and few such entries
    const std::filesystem::path bounds = std::filesystem::path(destination).lexically_normal();
    for (const layout::FileEntries& carried : layout::entriesThatNameFiles()) {
        tvx_wobj::Strings names;
        tvx_wobj::Strings paths;
        tvx_wobj::Strings types;
        const int status =
            *carried.subFolder == '\0'
                ? tvx_wobj::readProjectFileDirectly(project, carried.folder, names, paths, types)
                : tvx_wobj::readProjectFileDirectly(project, carried.folder, carried.subFolder, names, paths,
                                                    types);
        if (status != 0) return;  // the conversion will report it
        for (std::size_t i = 0; i < paths.size(); ++i) {
            const std::string& entry = paths[i];
            if (*carried.type != '\0' && !fsutil::equalIgnoringCase(types[i], carried.type)) continue;
            if (!fsutil::endsWithIgnoringCase(entry, carried.pathEnd)) continue;
            const fsutil::Reference reference(entry);
            if (!reference.isRelative() || reference.path().find("..") == std::string::npos) continue;
            std::string file;
            std::string copy;
            if (!reference.resolve(inspection.projectDir, file) || !reference.resolve(destination, copy)) {
                continue;
            }
            const std::filesystem::path target = std::filesystem::path(copy).lexically_normal();
            const auto [end, rest] =
                std::mismatch(bounds.begin(), bounds.end(), target.begin(), target.end());
            if (end == bounds.end() || !fsutil::isPresentFile(file)) continue;
            if (!moved) moved = movedFiles(converter, inspection);
            if (moved->count(lowerCased(file)) != 0) continue;
            platform::FileStatus from;
            platform::FileStatus to;
            platform::getStatus(file.c_str(), from);
            platform::getStatus(copy.c_str(), to);
            if (platform::isSameFile(from, to) || haveSameBytes(file, copy)) continue;
            inspection.refusal = place(project, lineOfText(project, entry)) + "the entry " + inQuotes(entry) +
                                 " would be copied to " + inQuotes(target.generic_string()) +
                                 ", outside the destination. Choose a destination beside the project's "
                                 "folder, from which the entry names the same file, or convert in place";
            return;
        }
    }
}

void findProfileFiles(const std::string& project, bool inPlace, ProjectInspection& inspection) {
    tvx_wobj::Strings names;
    std::string active;
    if (tvx_wobj::readSimProfiles(project, inspection.registeredProfiles, names, active, true) != 0) return;
    if (!inPlace) return;
    for (const std::string& registered : inspection.registeredProfiles) {
        std::string name;
        fsutil::fileNameOf(registered, name);
        if (fsutil::isPresentFile(inspection.projectDir + "/" + name)) {
            if (inspection.flatProfile.empty()) inspection.flatProfile = name;
            continue;
        }
        std::string file;
        fsutil::Reference(registered).resolve(inspection.projectDir, file);
        if (inspection.otherProfile.empty() && fsutil::isPresentFile(file))
            inspection.otherProfile = registered;
    }
}

}  // namespace

ProjectInspection inspectProject(const std::string& project, const std::string& destination) {
    ProjectInspection inspection;
    DraftelProjectConverter converter(project.c_str());
    std::string fileName;
    if (fsutil::folderOf(project, inspection.projectDir) != 0 || fsutil::fileNameOf(project, fileName) != 0 ||
        fsutil::baseNameOf(fileName, inspection.designName) != 0) {
        inspection.status = 1;
        inspection.refusal = inQuotes(project) + ": the name of a project file has the form NAME.opj";
        return inspection;
    }
    converter.setProjectDir(inspection.projectDir);
    inspection.status = converter.readDesignInformation();
    if (inspection.status == 0) inspection.status = converter.readRootSchematics();
    if (inspection.status != 0) return inspection;
    converter.discoverProfiles();
    converter.getDesignFileBaseName(inspection.designBase);
    converter.getDesignDir(inspection.designDir);

    findProfileFiles(project, destination.empty(), inspection);
    std::string designFile;
    converter.getDesignFilePath(designFile);
    const std::string expected = inspection.designDir + "/" + inspection.designBase + "." + layout::kDesign;
    if (!fsutil::equalIgnoringCase(designFile, expected)) {
        inspection.refusal = inQuotes(designFile) +
                             ": the name of a design has one \".\" in it. Rename the design in the design "
                             "application and try again";
    }
    if (inspection.refusal.empty()) checkNames(converter, project, inspection);
    if (inspection.refusal.empty() && !destination.empty()) {
        checkEntries(converter, project, destination, inspection);
    }
    if (!inspection.refusal.empty()) inspection.status = 1;
    return inspection;
}

std::vector<std::string> profilesLeftOut(const ProjectInspection& inspection,
                                         const DraftelProjectConverter& converter) {
    std::vector<std::string> leftOut;
    for (const std::string& registered : inspection.registeredProfiles) {
        const fsutil::Reference path(registered);
        std::string newPath;
        const bool carried = path.isRelative() && !path.goesUp() &&
                             converter.findRelocation("./" + path.fileName(), newPath) == 0;
        if (!carried) leftOut.push_back(registered);
    }
    return leftOut;
}

std::vector<std::string> analysisProfilesLeftOut(const ProjectInspection& inspection,
                                                 DraftelProjectConverter& converter) {
    std::vector<std::string> leftOut;
    for (const std::string& schematic : converter.rootSchematics()) {
        const std::string oldPath = layout::oldSchematicFile(
            inspection.projectDir, inspection.designDir, inspection.designBase, schematic, layout::kAnalysis);
        std::string place;
        if (converter.findRelocation(converter.relocationKey(oldPath, inspection.projectDir), place) != 0) {
            continue;  // there is none
        }
        const std::string newPath = converter.simulationRoot() + "/" + schematic + "/" +
                                    layout::newSchematicFileName(schematic, layout::kAnalysis);
        // A file at the new path may be from another conversion.
        const bool isCarried = fsutil::isPresentFile(newPath) && tvxconv::canReadAnalysisProfile(oldPath);
        if (fsutil::isPresentFile(oldPath) && !isCarried) leftOut.push_back(oldPath);
    }
    return leftOut;
}
