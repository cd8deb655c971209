// The relocation of one cell: the folders of its new view, the files that move without a change or with one
// that another file of this folder makes, and the marker that makes the folder a view.

#include "converter/errors.h"
#include "converter/fileSteps.h"
#include "converter/folderNames.h"
#include "converter/outputNames.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/views.h"

namespace tvxconv {

int TarnetProjectConverter::relocateCellFiles() {
    std::string newView;
    std::string oldView;
    getDestinationDir(newView);
    if (const int status = ensureDirectoryOrReport(newView); status != 0) return status;
    getProjectDir(oldView);
    std::vector<std::string> names;
    if (namesIn(oldView, names) != 0) return 0;
    fillNewView(names);
    return markNewView();
}

void TarnetProjectConverter::fillNewView(const std::vector<std::string>& fileNames) {
    std::string oldView;
    getProjectDir(oldView);
    ReadyFolders ready;
    for (const std::string& fileName : fileNames) {
        if (relocate(oldView, fileName, ready) != 0) break;
    }
}

int TarnetProjectConverter::markNewView() {
    std::string newView;
    getDestinationDir(newView);
    return writeViewMasterTag(newView + "/" + kViewMarker);
}

int TarnetProjectConverter::relocate(const std::string& sourceDirectory, const std::string& fileName,
                                     ReadyFolders& ready) {
    std::string extension;
    fsutil::extensionOf(fileName, extension);
    switch (roadOf(fileName, extension)) {
        case Road::unchanged:
            return copyUnchanged(sourceDirectory, fileName);
        case Road::cell:
            return relocateCellFile(sourceDirectory, fileName, extension, ready);
        case Road::profile:
            return relocateProfileFile(sourceDirectory, fileName, extension, ready);
        case Road::none:
            break;
    }
    return 0;
}

int TarnetProjectConverter::copyUnchanged(const std::string& sourceDirectory, const std::string& fileName) {
    std::string newView;
    getDestinationDir(newView);
    return copyFileOrReport(sourceDirectory + "/" + fileName, newView + "/" + fileName);
}

int TarnetProjectConverter::relocateCellFile(const std::string& sourceDirectory, const std::string& fileName,
                                             const std::string& extension) {
    ReadyFolders ready;
    return relocateCellFile(sourceDirectory, fileName, extension, ready);
}

int TarnetProjectConverter::relocateCellFile(const std::string& sourceDirectory, const std::string& fileName,
                                             const std::string& extension, ReadyFolders& ready) {
    using fsutil::equalIgnoringCase;
    std::string newView;
    getDestinationDir(newView);
    if (equalIgnoringCase(extension, kProfileFile)) {
        std::string profile;
        fsutil::baseNameOf(fileName, profile);
        if (const int status = ensureProfileFolder(profile, ready); status != 0) return status;
        return rewriteSimProfile(sourceDirectory, newView + "/" + kProfilesFolder, fileName, profile,
                                 cellName_);
    }
    const std::string source = sourceDirectory + "/" + fileName;
    const std::string destination = newView + "/" + newCellFileName(cellName_, extension);
    if (equalIgnoringCase(extension, kNetlist)) return rewriteNetlist(source, destination, cellName_);
    if (equalIgnoringCase(extension, kOptimizerFile))
        return rewriteOptimizerFile(source, destination, newView);
    return copyFileOrReport(source, destination);
}

int TarnetProjectConverter::relocateProfileFile(const std::string& sourceDirectory,
                                                const std::string& fileName, const std::string& extension) {
    ReadyFolders ready;
    return relocateProfileFile(sourceDirectory, fileName, extension, ready);
}

int TarnetProjectConverter::relocateProfileFile(const std::string& sourceDirectory,
                                                const std::string& fileName, const std::string& extension,
                                                ReadyFolders& ready) {
    std::string profile;
    fsutil::baseNameOf(fileName, profile);
    if (const int status = ensureProfileFolder(profile, ready); status != 0) return status;
    std::string newView;
    getDestinationDir(newView);
    const std::string source = sourceDirectory + "/" + fileName;
    const std::string destination =
        newView + "/" + kProfilesFolder + "/" + profile + "/" + newProfileFileName(profile, extension);
    if (fsutil::equalIgnoringCase(extension, kOldDeckExtension)) {
        return rewriteCircuitIncludes(sourceDirectory, source, destination);
    }
    return copyFileOrReport(source, destination);
}

int TarnetProjectConverter::ensureProfileFolder(const std::string& profile, ReadyFolders& ready) const {
    std::string profiles;
    getDestinationDir(profiles);
    profiles.append("/").append(kProfilesFolder);
    for (const std::string& folder : {profiles, profiles + "/" + profile}) {
        if (ready.contains(folder)) continue;
        if (const int status = ensureDirectoryOrReport(folder); status != 0) return status;
        ready.insert(folder);
    }
    return 0;
}

bool TarnetProjectConverter::isPresentReference(const std::string& file) const {
    if (liesInNewView(file)) awaitTurn();
    return fsutil::isPresentFile(file);
}

int TarnetProjectConverter::writeViewMasterTag(const std::string& path) {
    fsutil::LineWriter writer;
    if (writer.open(path) != 0) return reportError(ERR_OPEN_FOR_WRITING, path);
    writer.write(cellName_ + ".net");
    return writer.close() == 0 ? 0 : reportError(ERR_OPEN_FOR_WRITING, path);
}

}  // namespace tvxconv
