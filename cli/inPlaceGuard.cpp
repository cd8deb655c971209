#include "inPlaceGuard.h"

#include <algorithm>
#include <iterator>

#include "converter/rewriteOptimizerFile.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/analysisProfile.h"
#include "draftel/layout.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
#include "report.h"

namespace platform = tvxconv::platform;
namespace fsutil = tvxconv::fsutil;
namespace layout = tvxconv::draftel;

namespace {

bool hasExtension(const std::string& path, const std::string& extension) {
    return fsutil::endsWithIgnoringCase(path, "." + extension);
}

bool isByteCopy(const std::string& oldPath) {
    return std::none_of(std::begin(layout::kRewritten), std::end(layout::kRewritten),
                        [&](const char* extension) { return hasExtension(oldPath, extension); });
}

// Keeps the files of a folder whose names begin like the design's, or for which `isOther` (given the name
// in lower case) is true. The listing gives their spelling.
template <class IsOther>
bool keepFilesOf(const std::string& folder, const ProjectInspection& inspection, IsOther isOther,
                 bool asCopies, KeptFiles& kept, std::string& failed) {
    fsutil::DirectoryListing* listing = nullptr;
    if (fsutil::openDirectory(folder, listing) != 0) {
        failed = folder;
        return false;
    }
    bool done = true;
    std::string name;
    while (done && fsutil::readDirectory(listing, name) == 0) {
        const std::string path = folder + "/" + name;
        const bool isOfDesign = fsutil::beginsWithIgnoringCase(name, inspection.designBase + ".") ||
                                fsutil::beginsWithIgnoringCase(name, inspection.designBase + "-");
        if (!isOfDesign && !isOther(lowerCased(name))) continue;
        if (!fsutil::isPresentFile(path)) continue;
        done = kept.keep(path, asCopies);
        if (!done) failed = path;
    }
    fsutil::closeDirectory(listing);
    return done;
}

bool isEmpty(const std::string& path) {
    platform::FileStatus status;
    return platform::getStatus(path.c_str(), status) == 0 && status.size == 0;
}

std::string simulationRootOf(const ProjectInspection& inspection) {
    return inspection.projectDir + "/" + layout::simulationRootName(inspection.designName);
}

void addFilesBelow(const std::string& folder, int levels, std::set<std::string>& files) {
    fsutil::DirectoryListing* listing = nullptr;
    if (fsutil::openDirectory(folder, listing) != 0) return;
    std::vector<std::string> paths;
    std::string name;
    while (fsutil::readDirectory(listing, name) == 0) {
        if (name != "." && name != "..") paths.push_back(folder + "/" + name);
    }
    fsutil::closeDirectory(listing);
    for (const std::string& path : paths) {
        if (fsutil::isPresentFile(path)) {
            files.insert(lowerCased(path));
        } else if (levels > 1) {
            addFilesBelow(path, levels - 1, files);
        }
    }
}

// Finds new files by the paths that a conversion records, which are in lower case. Many in a row are in one
// folder, so its spelling is looked up once.
class NewFiles {
public:
    explicit NewFiles(const std::string& destination) : destination_(destination) {}

    std::string pathOf(const std::string& recorded) {
        std::string path;
        fsutil::resolveRelative(recorded, destination_, path);
        const std::size_t slash = path.rfind('/');
        if (slash == std::string::npos) return path;
        if (path.compare(0, slash, folder_) != 0) {
            folder_.assign(path, 0, slash);
            folderOnDisk_ = platform::pathOnDisk(folder_);
        }
        return folderOnDisk_ + path.substr(slash);
    }

private:
    const std::string& destination_;
    std::string folder_;
    std::string folderOnDisk_;
};

// The design's two files.
constexpr const char* kDesignExtensions[] = {layout::kDesign, layout::kDesignBackup};

}  // namespace

std::string fileInTheWay(const std::string& project, const ProjectInspection& inspection) {
    const std::string newProject =
        inspection.projectDir + "/" + inspection.designName + "." + layout::kProject;
    if (fsutil::isPresentFile(newProject) && !fsutil::isSameFile(newProject, project)) return newProject;
    for (const char* extension : kDesignExtensions) {
        const std::string name = "/" + inspection.designBase + "." + extension;
        const std::string copy = inspection.projectDir + name;
        const std::string design = inspection.designDir + name;
        if (fsutil::isPresentFile(copy) && fsutil::isPresentFile(design) &&
            !fsutil::isSameFile(copy, design) && !haveSameBytes(copy, design)) {
            return copy;
        }
    }
    return {};
}

bool keepOldFiles(const std::string& project, const ProjectInspection& inspection, KeptFiles& kept,
                  std::string& failed) {
    const fsutil::RememberedFolders folders;
    // The project file is written anew; a host's own library may do that in place.
    failed = project;
    if (!kept.keep(project, true)) return false;
    const bool designIsHere = fsutil::isSameFile(inspection.projectDir, inspection.designDir);
    // A design in another folder is copied here, over one that may exist already.
    for (const char* extension : kDesignExtensions) {
        failed = inspection.projectDir + "/" + inspection.designBase + "." + extension;
        if (!designIsHere && fsutil::isPresentFile(failed) && !kept.keep(failed, true)) return false;
    }
    // A profile file need not be named after the design. It is found by its name before the first ".".
    std::set<std::string> profileFiles;
    for (const std::string& registered : inspection.registeredProfiles) {
        std::string name;
        std::string base;
        fsutil::fileNameOf(registered, name);
        fsutil::baseNameOf(name, base);
        profileFiles.insert(lowerCased(base) + "." + layout::kProfile);
    }
    // Keeping design profiles that no optimizer file names does no harm.
    const auto isOther = [&](const std::string& name) {
        return profileFiles.count(name) != 0 || name.find(tvxconv::kExternalMark) != std::string::npos;
    };
    if (!keepFilesOf(inspection.projectDir, inspection, isOther, false, kept, failed)) return false;
    if (designIsHere) return true;
    // If the design is in the simulation root, new files may be written over its files: keep copies.
    const bool inRoot = fsutil::isBelowFolder(inspection.designDir + "/", simulationRootOf(inspection));
    const auto isNone = [](const std::string&) { return false; };
    return keepFilesOf(inspection.designDir, inspection, isNone, inRoot, kept, failed);
}

std::set<std::string> filesInSimulationRoot(const ProjectInspection& inspection) {
    constexpr int kLevels = 3;  // the root, schematics, profiles
    std::set<std::string> files;
    addFilesBelow(simulationRootOf(inspection), kLevels, files);
    return files;
}

NotCarried putBackWhatIsMissing(tvxconv::DraftelProjectConverter& converter, KeptFiles& kept,
                                const std::set<std::string>& doubtful) {
    const fsutil::RememberedFolders folders;
    std::string projectDir;
    std::string destination;
    converter.getProjectDir(projectDir);
    converter.getDestinationDir(destination);
    NotCarried result;
    NewFiles newFiles(destination);
    std::string oldPath;
    std::string newPath;
    for (int end = converter.firstRelocation(oldPath, newPath); end == 0;
         end = converter.nextRelocation(oldPath, newPath)) {
        std::string oldFile = oldPath;
        bool isRelative = false;
        fsutil::normaliseReference(oldFile, isRelative);
        if (isRelative) fsutil::resolveRelative(oldPath, projectDir, oldFile);
        const std::string newFile = newFiles.pathOf(newPath);
        const std::string keptFile = kept.keptPath(oldFile);
        if (keptFile.empty() || fsutil::isSameFile(keptFile, newFile)) continue;
        bool arrived = fsutil::isPresentFile(newFile);
        if (arrived && isByteCopy(oldFile)) {
            arrived = haveSameBytes(keptFile, newFile);
        } else if (arrived) {
            arrived = doubtful.count(lowerCased(newFile)) == 0 && (!isEmpty(newFile) || isEmpty(keptFile));
            // If the conversion skipped the old file, the one at the new path is another file.
            if (arrived && hasExtension(oldFile, layout::kAnalysis)) {
                arrived = tvxconv::canReadAnalysisProfile(keptFile) || haveSameBytes(keptFile, newFile);
            }
        }
        if (arrived) continue;
        if (!kept.putBack(oldFile)) {
            result.stuck.push_back(kept.oldPath(oldFile));
            continue;
        }
        // A link to another folder can only be compared at its own path. And if the new path is a link, it
        // may lead to the old file itself, which is then the only one.
        if (isByteCopy(oldFile) && !fsutil::isSameFile(oldFile, newFile) && haveSameBytes(oldFile, newFile) &&
            platform::removeFile(oldFile.c_str()) == 0) {
            continue;
        }
        result.putBack.push_back(kept.oldPath(oldFile));
    }
    return result;
}

void putBackAll(KeptFiles& kept) {
    const fsutil::RememberedFolders folders;
    std::vector<std::string> failed;
    if (kept.putBackAll(failed)) {
        releaseKept(kept);
        tell("The project's old files are as they were.");
        return;
    }
    for (const std::string& path : failed) tell(inQuotes(path) + " could not be put back");
    tell("The old files are in the folder " + inQuotes(kept.folder()) +
         " (a number stands before each name).");
}

void releaseKept(KeptFiles& kept) {
    const fsutil::RememberedFolders folders;
    if (kept.release()) return;
    tell("the folder " + inQuotes(kept.folder()) +
         " could not be removed. It holds second names or copies of old files; they are no longer needed");
}
