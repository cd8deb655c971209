#include "draftelCommand.h"

#include <atomic>
#include <memory>
#include <optional>

#include "KeptFiles.h"
#include "ProgressLine.h"
#include "ProjectInspection.h"
#include "converter/errors.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "interface/IDraftelProjectConverter.h"
#include "platform/platform.h"
#include "report.h"

namespace platform = tvxconv::platform;
namespace fsutil = tvxconv::fsutil;

namespace {

constexpr int kInPlace = 1;
constexpr int kIntoDestination = 2;

// Set by SIGINT and SIGTERM. While the conversion runs they also stop its work on files; afterwards
// the program sees to it that the old files are in order, which must not be cut short.
std::atomic<bool> interrupted{false};
std::atomic<bool> converting{false};

void noteInterrupt() {
    interrupted = true;
    if (converting) platform::stopFiles();
}

// The files whose new form is another text than the old one. All others are byte copies.
constexpr const char* kRewrittenExtensions[] = {"sim", "net", "sim.cir", "opj"};

bool isByteCopy(const std::string& oldPath) {
    std::string name;
    std::string extension;
    fsutil::fileNameOf(oldPath, name);
    fsutil::extensionOf(name, extension);
    for (const char* rewritten : kRewrittenExtensions) {
        if (fsutil::equalIgnoringCase(extension, rewritten)) return false;
    }
    return true;
}

void tellError(const ConversionResult& result) {
    if (result.errorCode != 0)
        tell(result.errorMessage + " (error " + std::to_string(result.errorCode) + ")");
}

ConversionResult lastErrorAs(int status) {
    ConversionResult result;
    result.status = status;
    tvxconv::getLastErrorCode(result.errorCode);
    tvxconv::getLastErrorMessage(result.errorMessage);
    return result;
}

int endWith(const ConversionResult& result, const DraftelOptions& options, int exitStatus) {
    if (printResult(result, options.json)) return exitStatus;
    tell("cannot write the result to standard output");
    return kNotConverted;
}

int refuse(const std::string& reason, const DraftelOptions& options, int exitStatus) {
    tell(reason + ". Nothing has been changed.");
    ConversionResult result;
    result.status = 1;
    result.errorMessage = reason;
    return endWith(result, options, exitStatus);
}

bool isSameFolder(const std::string& a, const std::string& b) {
    platform::FileStatus first;
    platform::FileStatus second;
    platform::getStatus(a.c_str(), first);
    platform::getStatus(b.c_str(), second);
    return platform::isSameFile(first, second);
}

// Keeps every file that a conversion in place may delete or change: those of the folder whose names
// begin like the design's, and the files that the project names. False when one cannot be kept.
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

bool keepOldFiles(const std::string& project, const ProjectInspection& inspection, KeptFiles& kept,
                  std::string& failed) {
    // The project file is written anew; a library of the host's own may do that in place.
    failed = project;
    if (!kept.keep(project, true)) return false;
    if (!keepFilesOf(inspection.projectDir, inspection, false, kept, failed)) return false;
    for (const std::string& name : inspection.profileFiles) {
        failed = inspection.projectDir + "/" + name;
        if (fsutil::isPresentFile(failed) && !kept.keep(failed, false)) return false;
    }
    if (isSameFolder(inspection.projectDir, inspection.designDir)) return true;
    // A design that lies in the simulation root is where new files are written.
    const std::string root = inspection.projectDir + "/" + inspection.designName + "-TevrixFiles";
    const bool inRoot = fsutil::isBelowFolder(inspection.designDir + "/", root);
    return keepFilesOf(inspection.designDir, inspection, inRoot, kept, failed);
}

// Checks each recorded move on disk and puts back what has not arrived. Returns the paths put back.
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
        if (keptFile.empty() || isSameFolder(keptFile, newFile)) continue;
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

// Puts everything back after a failure, and tells.
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

ConversionResult convert(const DraftelOptions& options, IDraftelProjectConverter& converter) {
    const ProgressLine progress("Converting " + options.project);
    converting = true;
    ConversionResult result;
    result.status = options.inPlace ? converter.convert(kInPlace, CString())
                                    : converter.convert(kIntoDestination, options.destination.c_str());
    converting = false;
    platform::resumeFiles();
    converter.getLastErrorCode(result.errorCode);
    CString text;
    converter.getLastErrorMessage(text);
    result.errorMessage = text.GetString();
    return result;
}

}  // namespace

int runDraftelCommand(const DraftelOptions& options) {
    std::string projectDir;
    fsutil::folderOf(options.project, projectDir);
    if (!options.inPlace && isSameFolder(projectDir, options.destination)) {
        return refuse("--to " + inQuotes(options.destination) +
                          " is the folder of the project itself. Use --in-place, or name another folder",
                      options, kWrongCommandLine);
    }
    const ProjectInspection inspection = inspectProject(options.project, options.destination);
    if (!inspection.refusal.empty()) return refuse(inspection.refusal, options, kNotConverted);
    if (inspection.status != 0) {
        const ConversionResult result = lastErrorAs(inspection.status);
        tellError(result);
        if (!fsutil::isPresentFile(options.project)) {
            tell("There is no such file that can be read. Check the name of the project file.");
        }
        tell("Nothing has been changed.");
        return endWith(result, options, kNotConverted);
    }

    platform::onInterrupt(noteInterrupt);
    std::optional<KeptFiles> kept;
    if (options.inPlace) {
        const std::string newProject = inspection.projectDir + "/" + inspection.designName + ".opj";
        if (fsutil::isPresentFile(newProject) && !isSameFolder(newProject, options.project)) {
            return refuse("the converted project would overwrite " + inQuotes(newProject) +
                              ", which is another file. Move it away, or convert with --to",
                          options, kNotConverted);
        }
        kept.emplace(inspection.projectDir);
        std::string reason;
        if (!kept->begin(reason)) return refuse(reason, options, kNotConverted);
        if (!keepOldFiles(options.project, inspection, *kept, reason)) {
            kept->release();
            return refuse("cannot keep a copy of " + inQuotes(reason) +
                              " while the project is converted; check disk space and access permissions",
                          options, kNotConverted);
        }
    }

    const CString projectPath(options.project.c_str());
    const std::unique_ptr<IDraftelProjectConverter> converter(createDraftelProjectConverter(&projectPath));
    if (converter == nullptr) throw std::bad_alloc();
    ConversionResult result = convert(options, *converter);
    if (result.status != 0 || interrupted) {
        tellError(result);
        if (interrupted) tell("interrupted");
        if (result.status == 0) result.status = 1;
        if (kept) {
            putBackAll(*kept);
        } else {
            tell("The old project has not been changed; what was written so far is in " +
                 inQuotes(options.destination) + ".");
        }
        return endWith(result, options, kNotConverted);
    }

    int exitStatus = kConverted;
    if (kept) {
        const auto missing =
            putBackWhatIsMissing(dynamic_cast<tvxconv::DraftelProjectConverter&>(*converter), *kept);
        for (const std::string& path : missing) {
            tell(inQuotes(path) +
                 " was not carried over and has been put back; move it by hand, or mend the "
                 "cause and convert again");
        }
        if (!missing.empty()) exitStatus = kNotConverted;
    }
    tellError(result);
    CString newProject;
    if (converter->getNewProjectPath(newProject) == 0) result.newProjectPath = newProject.GetString();
    const std::string oldProject = kept ? kept->keptPath(options.project) : options.project;
    for (const std::string& profile : profilesLeftOut(oldProject, result.newProjectPath)) {
        tell("the profile " + inQuotes(profile) +
             " is not in the new project: its profile file was not found beside the old one");
    }
    if (kept) kept->release();

    CStringArray structure;
    converter->getNewStructure(structure);
    for (int i = 0; i < structure.GetSize(); ++i) result.structure.emplace_back(structure[i].GetString());
    if (!options.report.empty()) {
        if (const int status = converter->writeReport(structure, options.report.c_str()); status != 0) {
            result.status = status;
            converter->getLastErrorCode(result.errorCode);
            CString text;
            converter->getLastErrorMessage(text);
            result.errorMessage = text.GetString();
            tellError(result);
            exitStatus = kNotConverted;
        }
    }
    return endWith(result, options, exitStatus);
}
