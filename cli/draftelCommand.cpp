#include "draftelCommand.h"

#include <atomic>
#include <memory>
#include <optional>
#include <set>

#include "KeptFiles.h"
#include "ProgressLine.h"
#include "ProjectInspection.h"
#include "converter/errors.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"
#include "inPlaceGuard.h"
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

ConversionResult convert(const DraftelOptions& options, IDraftelProjectConverter& converter) {
    const ProgressLine progress("Converting " + options.project);
    converting = true;
    if (interrupted) platform::stopFiles();  // asked to end before there was work to stop
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

// A project in place that is in the new layout already: it is shown, and left as it is.
int showConverted(const ProjectInspection& inspection, const DraftelOptions& options) {
    tell(inQuotes(options.project) + " is in the new layout already. Nothing has been changed.");
    tvxconv::DraftelProjectConverter converter(options.project.c_str());
    converter.setMode(kIntoDestination);
    converter.setDestinationDir(inspection.projectDir);
    converter.setDesignName(inspection.designName);
    converter.setDesignFileBaseName(inspection.designBase);
    ConversionResult result;
    result.newProjectPath = options.project;
    converter.getNewStructure(result.structure);
    return endWith(result, options, kConverted);
}

}  // namespace

int runDraftelCommand(const DraftelOptions& options) {
    std::string projectDir;
    fsutil::folderOf(options.project, projectDir);
    if (!options.inPlace && isSameFile(projectDir, options.destination)) {
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
    std::string reason;
    if (options.inPlace) {
        kept.emplace(inspection.projectDir);
        if (kept->isLeftOver(reason)) return refuse(reason, options, kNotConverted);
    }
    if (options.inPlace && !inspection.otherProfiles.empty()) {
        if (inspection.flatProfiles.empty()) return showConverted(inspection, options);
        return refuse(inQuotes(options.project) + ": the profile " +
                          inQuotes(inspection.otherProfiles.front()) + " has moved already, the profile " +
                          inQuotes(inspection.flatProfiles.front()) +
                          " has not. Converting the second would take the first out of the project",
                      options, kNotConverted);
    }
    if (options.inPlace) {
        if (const std::string other = fileInTheWay(options.project, inspection); !other.empty()) {
            return refuse("the converted project would overwrite " + inQuotes(other) +
                              ", which is another file. Move it away, or convert with --to",
                          options, kNotConverted);
        }
        if (!kept->begin(reason)) return refuse(reason, options, kNotConverted);
        if (!keepOldFiles(options.project, inspection, *kept, reason)) {
            releaseKept(*kept);
            return refuse("cannot keep a copy of " + inQuotes(reason) +
                              " while the project is converted; check disk space and access permissions",
                          options, kNotConverted);
        }
    }

    // With an error on the way, a deck that was there before need not be the one of this conversion.
    std::set<std::string> doubtful;
    if (kept) doubtful = filesInSimulationRoot(inspection);

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
    auto& draftelConverter = dynamic_cast<tvxconv::DraftelProjectConverter&>(*converter);
    if (kept) {
        if (result.errorCode == 0) doubtful.clear();
        const NotCarried notCarried = putBackWhatIsMissing(draftelConverter, *kept, doubtful);
        for (const std::string& path : notCarried.putBack) {
            tell(inQuotes(path) +
                 " was not carried over and has been put back; move it by hand, or mend the "
                 "cause and convert again");
        }
        for (const std::string& path : notCarried.stuck) {
            tell(inQuotes(path) + " was not carried over and could not be put back; it is kept as " +
                 inQuotes(kept->keptPath(path)));
        }
        if (!notCarried.putBack.empty() || !notCarried.stuck.empty()) exitStatus = kNotConverted;
        if (notCarried.stuck.empty()) releaseKept(*kept);
    }
    tellError(result);
    CString newProject;
    if (converter->getNewProjectPath(newProject) == 0) result.newProjectPath = newProject.GetString();
    for (const std::string& profile : profilesLeftOut(inspection, draftelConverter)) {
        tell("the profile " + inQuotes(profile) +
             " is not in the new project: its profile file was not found beside the old one");
    }
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
