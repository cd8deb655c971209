#include "inPlaceGuard.h"

#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
#include "report.h"

namespace platform = tvxconv::platform;
namespace fsutil = tvxconv::fsutil;

namespace {

// The files whose new form is another text than the old one. All others are byte copies.
constexpr const char* kRewritten[] = {".sim", ".net", ".sim.cir", ".opj"};

bool isByteCopy(const std::string& oldPath) {
    for (const char* end : kRewritten) {
        if (fsutil::endsWithIgnoringCase(oldPath, end)) return false;
    }
    return true;
}

// Keeps the files of a folder whose names begin like the design's.
bool keepFilesOf(const std::string& folder, const ProjectInspection& inspection, bool asCopies,
                 KeptFiles& kept, std::string& failed) {
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
        if (!isOfDesign || !fsutil::isPresentFile(path)) continue;
        done = kept.keep(path, asCopies);
        if (!done) failed = path;
    }
    fsutil::closeDirectory(listing);
    return done;
}

}  // namespace

bool isSameFile(const std::string& a, const std::string& b) {
    platform::FileStatus first;
    platform::FileStatus second;
    platform::getStatus(a.c_str(), first);
    platform::getStatus(b.c_str(), second);
    return platform::isSameFile(first, second);
}

bool keepOldFiles(const std::string& project, const ProjectInspection& inspection, KeptFiles& kept,
                  std::string& failed) {
    // The project file is written anew; a library of the host's own may do that in place.
    failed = project;
    if (!kept.keep(project, true)) return false;
    if (!keepFilesOf(inspection.projectDir, inspection, false, kept, failed)) return false;
    for (const std::string& name : inspection.flatProfiles) {
        failed = inspection.projectDir + "/" + name;
        if (!kept.keep(failed, false)) return false;
    }
    if (isSameFile(inspection.projectDir, inspection.designDir)) return true;
    // A design that lies in the simulation root is where new files are written.
    const std::string root = inspection.projectDir + "/" + inspection.designName + "-TevrixFiles";
    const bool inRoot = fsutil::isBelowFolder(inspection.designDir + "/", root);
    return keepFilesOf(inspection.designDir, inspection, inRoot, kept, failed);
}

std::vector<std::string> putBackWhatIsMissing(tvxconv::DraftelProjectConverter& converter, KeptFiles& kept) {
    std::string projectDir;
    std::string destination;
    converter.getProjectDir(projectDir);
    converter.getDestinationDir(destination);
    std::vector<std::string> missing;
    std::string oldPath;
    std::string newPath;
    for (int end = converter.firstRelocation(oldPath, newPath); end == 0;
         end = converter.nextRelocation(oldPath, newPath)) {
        std::string oldFile = oldPath;
        bool isRelative = false;
        fsutil::normaliseReference(oldFile, isRelative);
        if (isRelative) fsutil::resolveRelative(oldPath, projectDir, oldFile);
        std::string newFile;
        fsutil::resolveRelative(newPath, destination, newFile);
        const std::string keptFile = kept.keptPath(oldFile);
        if (keptFile.empty() || isSameFile(keptFile, newFile)) continue;
        bool arrived = fsutil::isPresentFile(newFile);
        if (arrived && isByteCopy(oldFile)) arrived = haveSameBytes(keptFile, newFile);
        if (arrived) continue;
        kept.putBack(oldFile);
        // A link to elsewhere can only be compared from its own place.
        if (isByteCopy(oldFile) && haveSameBytes(oldFile, newFile) &&
            platform::removeFile(oldFile.c_str()) == 0) {
            continue;
        }
        missing.push_back(oldFile);
    }
    return missing;
}

void putBackAll(KeptFiles& kept) {
    std::vector<std::string> failed;
    if (kept.putBackAll(failed)) {
        kept.release();
        tell("The project's old files are as they were.");
        return;
    }
    for (const std::string& path : failed) tell(inQuotes(path) + " could not be put back");
    tell("The old files are in the folder " + inQuotes(kept.folder()) +
         " (a number stands before each name).");
}
