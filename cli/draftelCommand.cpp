#include "draftelCommand.h"

#include <filesystem>
#include <memory>
#include <new>
#include <set>

#include "KeptFiles.h"
#include "ProgressLine.h"
#include "ProjectInspection.h"
#include "draftel/DraftelProjectConverter.h"
#include "errors/errors.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "inPlaceGuard.h"
#include "interface/IDraftelProjectConverter.h"
#include "interruption.h"
#include "report.h"

namespace fsutil = tvxconv::fsutil;

namespace {

constexpr int kInPlace = 1;
constexpr int kIntoDestination = 2;

ConversionResult lastErrorAs(int status) {
    ConversionResult result;
    result.status = status;
    tvxconv::getLastErrorCode(result.errorCode);
    tvxconv::getLastErrorMessage(result.errorMessage);
    return result;
}

int endWith(const ConversionResult& result, const DraftelOptions& options, int exitStatus) {
    return printResult(result, options.json) ? exitStatus : kNotConverted;
}

int refuse(const std::string& reason, const DraftelOptions& options, int exitStatus) {
    tell(reason + ". Nothing has been changed.");
    ConversionResult result;
    result.status = 1;
    result.errorMessage = reason;
    return endWith(result, options, exitStatus);
}

void readLastError(IDraftelProjectConverter& converter, ConversionResult& result) {
    CString text;
    converter.getLastErrorCode(result.errorCode);
    converter.getLastErrorMessage(text);
    result.errorMessage = text.GetString();
}

std::unique_ptr<IDraftelProjectConverter> makeConverter(const DraftelOptions& options) {
    const CString projectPath(options.project.c_str());
    std::unique_ptr<IDraftelProjectConverter> converter(createDraftelProjectConverter(&projectPath));
    if (converter == nullptr) throw std::bad_alloc();
    return converter;
}

// Runs the conversion. False when it failed or was interrupted; the user has been told.
bool convert(const DraftelOptions& options, IDraftelProjectConverter& converter, ConversionResult& result) {
    {
        const ProgressLine progress("Converting " + options.project);
        const Interruptible interruptible;
        result.status = options.inPlace ? converter.convert(kInPlace, CString())
                                        : converter.convert(kIntoDestination, options.destination.c_str());
    }
    readLastError(converter, result);
    if (result.status == 0 && !wasInterrupted()) return true;
    tellError(result);
    if (wasInterrupted()) tell("interrupted");
    if (result.status == 0) result.status = 1;
    return false;
}

// The last steps after a successful conversion: tells the user what is worth knowing and prints the new
// structure.
int conclude(const DraftelOptions& options, const ProjectInspection& inspection,
             tvxconv::DraftelProjectConverter& converter, ConversionResult& result, int exitStatus) {
    tellError(result);
    IDraftelProjectConverter& driven = converter;
    CString newProject;
    if (driven.getNewProjectPath(newProject) == 0) result.newProjectPath = newProject.GetString();
    for (const std::string& profile : profilesLeftOut(inspection, converter)) {
        tell("the profile " + inQuotes(profile) +
             " is not in the new project: its file does not lie beside the old one, or names no schematic "
             "that is a root of the design");
    }
    driven.getNewStructure(result.structure);
    if (!options.report.empty()) {
        if (const int status = driven.writeReport(result.structure, options.report.c_str()); status != 0) {
            result.status = status;
            readLastError(driven, result);
            tellError(result);
            exitStatus = kNotConverted;
        }
    }
    return endWith(result, options, exitStatus);
}

// Whether the report would overwrite the project or its design, old or new.
bool reportIsInTheWay(const DraftelOptions& options, const ProjectInspection& inspection) {
    if (options.report.empty()) return false;
    const std::string folder = options.inPlace ? inspection.projectDir : options.destination;
    const auto plain = [](const std::string& path) {
        return std::filesystem::path(path).lexically_normal().generic_string();
    };
    const std::string report = folder + "/" + options.report;
    const std::string designPath = inspection.designDir + "/" + inspection.designBase;
    for (const std::string& path :
         {options.project, designPath + ".dsn", designPath + ".dbk",
          folder + "/" + inspection.designName + ".opj", folder + "/" + inspection.designBase + ".dsn",
          folder + "/" + inspection.designBase + ".dbk"}) {
        if (fsutil::equalIgnoringCase(plain(report), plain(path)) || fsutil::isSameFile(report, path))
            return true;
    }
    return false;
}

// Shows a project that is in the new layout already and leaves it unchanged.
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
    if (!options.report.empty())
        result.status = converter.writeReport(result.structure, options.report.c_str());
    if (result.status != 0) {
        readLastError(converter, result);
        tellError(result);
    }
    return endWith(result, options, result.status == 0 ? kConverted : kNotConverted);
}

// The reason why the project cannot be converted in place, checked before anything is kept; empty if it can.
std::string refusalInPlace(const DraftelOptions& options, const ProjectInspection& inspection) {
    if (!inspection.otherProfile.empty()) {
        return inQuotes(options.project) + ": the profile " + inQuotes(inspection.otherProfile) +
               " has moved already, the profile " + inQuotes(inspection.flatProfile) +
               " has not. Converting the second would take the first out of the project";
    }
    if (const std::string other = fileInTheWay(options.project, inspection); !other.empty()) {
        return "the converted project would overwrite " + inQuotes(other) +
               ", which is another file. Move it away, or convert with --to";
    }
    return {};
}

int convertIntoDestination(const DraftelOptions& options, const ProjectInspection& inspection) {
    const auto converter = makeConverter(options);
    ConversionResult result;
    if (!convert(options, *converter, result)) {
        tell("The old project has not been changed; what was written so far is in " +
             inQuotes(options.destination) + ".");
        return endWith(result, options, kNotConverted);
    }
    auto& draftelConverter = dynamic_cast<tvxconv::DraftelProjectConverter&>(*converter);
    for (const std::string& path : analysisProfilesLeftOut(inspection, draftelConverter)) {
        tell("the analysis profile " + inQuotes(path) +
             " is not in the new project: it cannot be read, or its new file could not be written");
    }
    return conclude(options, inspection, draftelConverter, result, kConverted);
}

int convertInPlace(const DraftelOptions& options, const ProjectInspection& inspection) {
    KeptFiles kept(inspection.projectDir);
    std::string reason;
    if (kept.isLeftOver(reason)) return refuse(reason, options, kNotConverted);
    if (!inspection.otherProfile.empty() && inspection.flatProfile.empty()) {
        return showConverted(inspection, options);
    }
    if (const std::string refusal = refusalInPlace(options, inspection); !refusal.empty()) {
        return refuse(refusal, options, kNotConverted);
    }
    if (!kept.begin(reason)) return refuse(reason, options, kNotConverted);
    if (!keepOldFiles(options.project, inspection, kept, reason)) {
        releaseKept(kept);
        return refuse("cannot keep a copy of " + inQuotes(reason) +
                          " while the project is converted; check disk space and access permissions",
                      options, kNotConverted);
    }
    // If an error is recorded, a deck that existed before may not be from this conversion.
    std::set<std::string> doubtful = filesInSimulationRoot(inspection);

    const auto converter = makeConverter(options);
    ConversionResult result;
    if (!convert(options, *converter, result)) {
        putBackAll(kept);
        return endWith(result, options, kNotConverted);
    }

    int exitStatus = kConverted;
    auto& draftelConverter = dynamic_cast<tvxconv::DraftelProjectConverter&>(*converter);
    if (result.errorCode == 0) doubtful.clear();
    const NotCarried notCarried = putBackWhatIsMissing(draftelConverter, kept, doubtful);
    for (const std::string& path : notCarried.putBack) {
        tell(inQuotes(path) +
             " was not carried over and has been put back. Mend the cause, and move it to its new place by "
             "hand: the project names it there");
    }
    for (const std::string& path : notCarried.stuck) {
        tell(inQuotes(path) + " was not carried over and could not be put back; it is kept as " +
             inQuotes(kept.keptPath(path)));
    }
    if (!notCarried.putBack.empty() || !notCarried.stuck.empty()) {
        exitStatus = kNotConverted;
        result.status = 1;
    }
    if (notCarried.stuck.empty()) releaseKept(kept);
    return conclude(options, inspection, draftelConverter, result, exitStatus);
}

}  // namespace

int runDraftelCommand(const DraftelOptions& options) {
    std::string projectDir;
    fsutil::folderOf(options.project, projectDir);
    if (!options.inPlace && fsutil::isSameFile(projectDir, options.destination)) {
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
    if (reportIsInTheWay(options, inspection)) {
        return refuse(
            "--report " + inQuotes(options.report) + " would be written over the project or its design",
            options, kWrongCommandLine);
    }
    watchForInterrupts();
    return options.inPlace ? convertInPlace(options, inspection)
                           : convertIntoDestination(options, inspection);
}
