#include "tarnetCommand.h"

#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <system_error>

#include "LibraryInspection.h"
#include "ProgressLine.h"
#include "errors/errors.h"
#include "fsutil/paths.h"
#include "interface/ITarnetProjectConverter.h"
#include "interruption.h"
#include "platform/platform.h"
#include "report.h"
#include "tarnet/layout.h"

namespace fsutil = tvxconv::fsutil;
namespace platform = tvxconv::platform;

namespace {

// The result for the cells that a run was to convert.
struct Outcome {
    struct Failure {
        std::string cell;
        bool isMarked = false;
        std::string reason;
    };
    std::size_t converted = 0;
    std::size_t notReached = 0;
    std::vector<Failure> failures;
};

int endWith(const LibraryResult& result, const TarnetOptions& options, int exitStatus) {
    return printResult(result, options.json) ? exitStatus : kNotConverted;
}

int refuse(const std::string& reason, const TarnetOptions& options, int exitStatus) {
    tell(reason + ". Nothing has been changed.");
    LibraryResult result;
    result.status = 1;
    result.errorMessage = reason;
    return endWith(result, options, exitStatus);
}

void readLastError(ITarnetProjectConverter& converter, LibraryResult& result) {
    converter.getLastErrorCode(result.errorCode);
    converter.getLastErrorMessage(result.errorMessage);
}

std::string folderOfCell(const TarnetOptions& options, const std::string& cell) {
    return options.library + "/" + cell;
}

// "Converting LIBRARY: 3 of 12 cells, 70 files". Cells are converted one after the other and marked at
// their end, so the disk shows the progress. Read it through the standard library, as this runs in another
// thread than the conversion.
class CellCount {
public:
    CellCount(const TarnetOptions& options, const LibraryInspection& inspection)
        : options_(options), inspection_(inspection) {}

    std::string operator()() {
        const std::vector<std::string>& cells = inspection_.toConvert;
        std::error_code ignored;
        while (done_ < cells.size() &&
               std::filesystem::exists(tvxconv::tarnet::newViewOf(folderOfCell(options_, cells[done_])) +
                                           "/" + tvxconv::tarnet::kViewMarker,
                                       ignored)) {
            ++done_;
        }
        return "Converting " + options_.library + ": " + std::to_string(done_) + " of " +
               std::to_string(cells.size()) + " cells, " + std::to_string(platform::filesWritten()) +
               " files";
    }

private:
    const TarnetOptions& options_;
    const LibraryInspection& inspection_;
    std::size_t done_ = 0;
};

std::string withCode(const std::string& message, int code) {
    return message + " (error " + std::to_string(code) + ")";
}

// The first error of each cell, by the cell's name. An error belongs to the cell of the file that its
// message names first.
using ErrorsOfCells = std::map<std::string, std::string>;

void convert(const TarnetOptions& options, const LibraryInspection& inspection,
             ITarnetProjectConverter& converter, LibraryResult& result, ErrorsOfCells& errors) {
    {
        const std::string begin = "\"" + options.library + "/";
        tvxconv::observeErrors([&](int code, const std::string& message) {
            const std::size_t at = message.find(begin);
            if (at == std::string::npos) return;
            const std::size_t name = at + begin.size();
            errors.emplace(message.substr(name, message.find('/', name) - name), withCode(message, code));
        });
        const ProgressLine progress(CellCount(options, inspection));
        const Interruptible interruptible;
        result.status = converter.convert(0, std::string());
        tvxconv::observeErrors(nullptr);
    }
    readLastError(converter, result);
    if (!wasInterrupted()) return;
    if (result.status == 0) result.status = 1;
    for (const std::string& cell : inspection.toConvert) removeUnfinishedMark(options.library, cell);
}

// Whether the last error is about a file of the cell: its message names that file first.
bool isNamedIn(const LibraryResult& result, const std::string& cellFolder) {
    return result.errorCode != 0 && result.errorMessage.find("\"" + cellFolder + "/") != std::string::npos;
}

// The cell that ended the run: among the cells without a mark the one that the last error names, else the
// first.
std::string lastCell(const TarnetOptions& options, const LibraryInspection& inspection,
                     const LibraryResult& result) {
    std::string first;
    if (result.status == 0) return first;
    for (const std::string& cell : inspection.toConvert) {
        if (isConverted(options.library, cell)) continue;
        if (isNamedIn(result, folderOfCell(options, cell))) return cell;
        if (first.empty()) first = cell;
    }
    return first;
}

// The reason why the cell is not complete; empty if it is.
std::string failureOf(const std::string& cell, bool isMarked, const ErrorsOfCells& errors) {
    const auto error = errors.find(cell);
    if (error != errors.end()) return error->second;
    return isMarked ? std::string() : "It could not be converted.";
}

Outcome outcomeOf(const TarnetOptions& options, const LibraryInspection& inspection,
                  const LibraryResult& result, const ErrorsOfCells& errors) {
    Outcome outcome;
    const std::string last = lastCell(options, inspection, result);
    bool hasEnded = false;
    for (const std::string& cell : inspection.toConvert) {
        if (hasEnded) {
            ++outcome.notReached;
            continue;
        }
        hasEnded = cell == last;
        const bool isMarked = isConverted(options.library, cell);
        const std::string reason = failureOf(cell, isMarked, errors);
        if (reason.empty()) {
            ++outcome.converted;
        } else {
            outcome.failures.push_back({cell, isMarked, reason});
        }
    }
    return outcome;
}

void tellOutcome(const TarnetOptions& options, const LibraryInspection& inspection,
                 const LibraryResult& result, const ErrorsOfCells& errors) {
    const Outcome outcome = outcomeOf(options, inspection, result, errors);
    bool isErrorTold = false;
    for (const Outcome::Failure& failure : outcome.failures) {
        isErrorTold = isErrorTold || failure.reason.starts_with(result.errorMessage);
        tell("cell " + inQuotes(failure.cell) + ": " + failure.reason);
        if (!failure.isMarked) continue;
        tell("cell " + inQuotes(failure.cell) + " counts as converted all the same; remove " +
             inQuotes(tvxconv::tarnet::newViewOf(folderOfCell(options, failure.cell))) +
             " to have it converted anew");
    }
    if (!isErrorTold) tellError(result);
    if (wasInterrupted()) tell("interrupted");
    std::string summary =
        "cells found: " + std::to_string(inspection.convertedBefore + inspection.toConvert.size()) +
        ", converted: " + std::to_string(outcome.converted) +
        ", skipped as converted already: " + std::to_string(inspection.convertedBefore) +
        ", failed: " + std::to_string(outcome.failures.size());
    if (outcome.notReached != 0) summary += ", not reached: " + std::to_string(outcome.notReached);
    tell(summary);
}

// Prints the new structure, and writes the report if requested.
int conclude(const TarnetOptions& options, ITarnetProjectConverter& converter, LibraryResult& result) {
    converter.getNewStructure(result.structure);
    if (options.report.empty()) return endWith(result, options, kConverted);
    result.status = converter.writeReport(result.structure, options.report);
    if (result.status == 0) return endWith(result, options, kConverted);
    readLastError(converter, result);
    tellError(result);
    return endWith(result, options, kNotConverted);
}

// What is missing in the library; empty if nothing is.
std::string refusal(const TarnetOptions& options) {
    std::string parent;
    std::string parentName;
    if (fsutil::folderOf(options.library, parent) != 0 || fsutil::fileNameOf(parent, parentName) != 0) {
        return inQuotes(options.library) +
               " lies directly below the root of the file system. A library has to lie in a folder with a "
               "name";
    }
    return {};
}

void tellWhyNotOpened(const TarnetOptions& options) {
    platform::FileStatus status;
    if (wasInterrupted()) {
        tell("interrupted");
    } else if (platform::getStatus(options.library.c_str(), status) != 0) {
        tell("There is no folder of this name. Check the name of the library.");
    } else if (status.kind != platform::FileKind::folder) {
        tell("This is not a folder. A library is the folder that has the cells.");
    }
    tell("Nothing has been changed.");
}

}  // namespace

int runTarnetCommand(const TarnetOptions& options) {
    if (const std::string reason = refusal(options); !reason.empty()) {
        return refuse(reason, options, kNotConverted);
    }
    if (!options.report.empty() && isInView(options.library, options.library + "/" + options.report)) {
        return refuse("--report " + inQuotes(options.report) + " would be written into a view of a cell",
                      options, kWrongCommandLine);
    }
    const std::unique_ptr<ITarnetProjectConverter> converter(
        createTarnetProjectConverter(options.library.c_str()));
    if (converter == nullptr) throw std::bad_alloc();
    watchForInterrupts();
    const LibraryInspection inspection = inspectLibrary(options.library);
    LibraryResult result;
    ErrorsOfCells errors;
    convert(options, inspection, *converter, result, errors);
    converter->getLibraryParentName(result.libraryParentName);
    if (result.status == tvxconv::ERR_OPEN_DIRECTORY) {
        tellError(result);
        tellWhyNotOpened(options);
        return endWith(result, options, kNotConverted);
    }
    tellOutcome(options, inspection, result, errors);
    if (result.status != 0) return endWith(result, options, kNotConverted);
    return conclude(options, *converter, result);
}
