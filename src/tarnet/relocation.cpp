// The relocation of one cell: it makes the folders of its new view, moves the files, calling the other
// files of this folder for those that change, and writes the marker that makes the folder a view.

#include <set>

#include "converter/fileSteps.h"
#include "converter/folderNames.h"
#include "errors/errors.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/layout.h"

namespace tvxconv {

using namespace tarnet;

using fsutil::equalIgnoringCase;

// Moves the files of one cell. Each folder of a profile is checked only once.
class CellRelocation {
public:
    explicit CellRelocation(TarnetProjectConverter& converter)
        : converter_(converter), newView_(converter.destinationDir()) {}

    int relocate(const std::string& sourceDirectory, const std::string& fileName) {
        using Road = TarnetProjectConverter::Road;
        const std::string extension = fsutil::extensionOf(fileName);
        switch (converter_.roadOf(fileName, extension)) {
            case Road::unchanged:
                return converter_.copyUnchanged(sourceDirectory, fileName);
            case Road::cell:
                return relocateCellFile(sourceDirectory, fileName, extension);
            case Road::profile:
                return relocateProfileFile(sourceDirectory, fileName, extension);
            case Road::none:
                break;
        }
        return 0;
    }

    int relocateCellFile(const std::string& sourceDirectory, const std::string& fileName,
                         const std::string& extension) {
        const std::string& cell = converter_.cellName();
        if (equalIgnoringCase(extension, kProfile)) {
            const std::string profile = fsutil::baseNameOf(fileName);
            if (const int status = ensureProfileFolder(profile); status != 0) return status;
            return converter_.rewriteSimProfile(sourceDirectory, newView_ + "/" + kProfilesFolder, fileName,
                                                profile, cell);
        }
        const std::string source = sourceDirectory + "/" + fileName;
        const std::string destination = newView_ + "/" + newCellFileName(cell, extension);
        if (equalIgnoringCase(extension, kNetlist))
            return converter_.rewriteNetlist(source, destination, cell);
        if (equalIgnoringCase(extension, kOptimizer)) {
            return converter_.rewriteOptimizerFile(source, destination, newView_);
        }
        return copyFileOrReport(source, destination);
    }

    int relocateProfileFile(const std::string& sourceDirectory, const std::string& fileName,
                            const std::string& extension) {
        const std::string profile = fsutil::baseNameOf(fileName);
        if (const int status = ensureProfileFolder(profile); status != 0) return status;
        const std::string source = sourceDirectory + "/" + fileName;
        const std::string destination =
            newView_ + "/" + kProfilesFolder + "/" + profile + "/" + newOutputName(profile, extension);
        if (equalIgnoringCase(extension, kOldDeckExtension)) {
            return converter_.rewriteCircuitIncludes(sourceDirectory, source, destination);
        }
        return copyFileOrReport(source, destination);
    }

private:
    int ensureProfileFolder(const std::string& profile) {
        const std::string profiles = newView_ + "/" + kProfilesFolder;
        for (const std::string& folder : {profiles, profiles + "/" + profile}) {
            if (ready_.contains(folder)) continue;
            if (const int status = ensureDirectoryOrReport(folder); status != 0) return status;
            ready_.insert(folder);
        }
        return 0;
    }

    TarnetProjectConverter& converter_;
    std::string newView_;
    std::set<std::string> ready_;
};

int TarnetProjectConverter::relocateCellFiles() {
    if (const int status = ensureDirectoryOrReport(destinationDir()); status != 0) return status;
    CellRelocation relocation(*this);
    const int opened = forEachName(projectDir(), [&](const std::string& fileName) {
        return relocation.relocate(projectDir(), fileName) == 0;
    });
    return opened == 0 ? writeViewMasterTag(destinationDir() + "/" + kViewMarker) : 0;
}

int TarnetProjectConverter::copyUnchanged(const std::string& sourceDirectory, const std::string& fileName) {
    return copyFileOrReport(sourceDirectory + "/" + fileName, destinationDir() + "/" + fileName);
}

int TarnetProjectConverter::relocateCellFile(const std::string& sourceDirectory, const std::string& fileName,
                                             const std::string& extension) {
    return CellRelocation(*this).relocateCellFile(sourceDirectory, fileName, extension);
}

int TarnetProjectConverter::relocateProfileFile(const std::string& sourceDirectory,
                                                const std::string& fileName, const std::string& extension) {
    return CellRelocation(*this).relocateProfileFile(sourceDirectory, fileName, extension);
}

int TarnetProjectConverter::writeViewMasterTag(const std::string& path) {
    // Written in one piece: a view with a marker counts as converted.
    fsutil::LineWriter writer;
    if (writer.openReplacement(path) != 0) return reportError(ERR_OPEN_FOR_WRITING, path);
    writer.write(newCellFileName(cellName_, kNetlist));
    return writer.close() == 0 ? 0 : reportError(ERR_OPEN_FOR_WRITING, path);
}

}  // namespace tvxconv
