// The last step: the design, its backup and the project file are copied to the destination, and the entries
// of the new project file get the new paths of their files. Only the project-file library reads and writes
// the project file.

#include <functional>

#include "converter/fileSteps.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "errors/errors.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "tvx_wobj/tvx_wobj.h"

namespace tvxconv {

using namespace draftel;

namespace {

using fsutil::equalIgnoringCase;
using tvx_wobj::Strings;

constexpr const char* kOutputFileItem = "TEVRIX_Output_File";

bool endsWith(const std::string& path, const char* end) {
    return fsutil::endsWithIgnoringCase(path, end);
}

// The entries of one folder of the project file, in parallel lists.
struct Entries {
    Strings names;
    Strings paths;
    Strings types;
};

// One update of a project file that has been copied to its new path.
class ProjectUpdate {
public:
    ProjectUpdate(DraftelProjectConverter& converter, const std::string& sourceProject,
                  const std::string& newProject)
        : converter_(converter),
          project_(newProject),
          oldFolder_(fsutil::folderOf(sourceProject)),
          newFolder_(fsutil::folderOf(newProject)) {
        int mode = 0;
        converter.getRequestedMode(mode);
        leavesOldFolder_ = mode == DraftelProjectConverter::kIntoDestination;
    }

    int run() {
        for (const auto step :
             {&ProjectUpdate::updateDesigns, &ProjectUpdate::updateLibraries, &ProjectUpdate::updateProfiles,
              &ProjectUpdate::updateOutputs, &ProjectUpdate::clearOutputFileItem,
              &ProjectUpdate::updateOtherFolders, &ProjectUpdate::updateOtherSubFolders}) {
            if (const int status = (this->*step)(); status != 0) return status;
        }
        return 0;
    }

private:
    int updateDesigns() {
        Entries entries;
        if (const int status = read(kDesignFolder, entries); status != 0) return status;
        for (const std::string& path : entries.paths) {
            if (!endsWith(path, kDesignEntries.pathEnd)) continue;
            if (const int status = updateEntry(kDesignFolder, kDesignType, path); status != 0) return status;
        }
        return 0;
    }

    int updateLibraries() {
        for (const FileEntries& list : kLibraryEntries) {
            const bool isOfDesign = equalIgnoringCase(list.folder, kDesignFolder);
            // One call lists the simulator's files, another returns their types.
            Strings names;
            Strings paths;
            if (!isOfDesign &&
                tvx_wobj::readProjectFiles(project_, list.folder, list.subFolder, names, paths, true) != 0) {
                return reportError(ERR_READ_FILE, project_);
            }
            Entries entries;
            if (const int status = read(list.folder, list.subFolder, entries); status != 0) return status;
            if (!isOfDesign) entries.paths = paths;
            Strings files = pathsOfType(entries, list.type);
            for (std::string& path : files) {
                if (!endsWith(path, list.pathEnd)) continue;
                if (const int status = relocate(path); status != 0) return status;
            }
            if (const int status = write(list.folder, list.subFolder, list.type, files, !isOfDesign);
                status != 0) {
                return status;
            }
        }
        return 0;
    }

    // Only profiles that are in the project's folder and have moved are registered in the new project.
    int updateProfiles() {
        Strings registered;
        Strings names;
        std::string active;
        if (tvx_wobj::readSimProfiles(project_, registered, names, active, true) != 0) {
            return reportError(ERR_READ_FILE, project_);
        }
        const std::string activeName = fsutil::fileNameOf(active);
        Strings newPaths;
        Strings newNames;
        Strings newSchematics;
        for (const std::string& entry : registered) {
            const fsutil::Reference path(entry);
            if (!path.isRelative() || path.goesUp()) continue;
            const std::string fileName = path.fileName();
            std::string newPath;
            std::string base;
            if (converter_.findRelocation("./" + fileName, newPath) != 0) continue;
            if (fsutil::baseNameOf(fileName, base) != 0) continue;
            std::string profile;
            std::string schematic;
            std::string registeredPath;
            if (converter_.findProfileRecord(base, profile, schematic, registeredPath) != 0) continue;
            newPath = fsutil::toBackslashes(newPath);
            newPaths.push_back(newPath);
            newNames.push_back(profile);
            newSchematics.push_back(schematic);
            if (equalIgnoringCase(fileName, activeName)) active = newPath;
        }
        active = fsutil::toBackslashes(active);
        return written(tvx_wobj::writeSimProfiles(project_, newPaths, newNames, newSchematics, active, true));
    }

    int updateOutputs() { return updateFolder(kOutputFolder); }

    // The simulator's output file has changed; the application finds the new one when this is empty.
    int clearOutputFileItem() {
        return written(tvx_wobj::writeItemToProject(project_, kDesignFolder, kOutputFileItem, "", true));
    }

    int updateOtherFolders() {
        for (const std::string& folder : converter_.projectFolderNames()) {
            if (equalIgnoringCase(folder, kOutputFolder) || !isUpdatedAsAWhole(folder)) continue;
            if (!equalIgnoringCase(folder, kSimulatorFolder)) {
                if (const int status = updateFolder(folder); status != 0) return status;
                continue;
            }
            Entries entries;
            if (const int status = read(folder, entries); status != 0) return status;
            for (std::size_t i = 0; i < entries.paths.size(); ++i) {
                if (const int status = updateEntry(folder, entries.types[i], entries.paths[i]); status != 0) {
                    return status;
                }
            }
        }
        return 0;
    }

    int updateOtherSubFolders() {
        for (const auto& [folder, subFolder] : converter_.folderMap()) {
            if (!isUpdatedAsAWhole(folder, subFolder)) continue;
            Entries entries;
            if (const int status = read(folder, subFolder, entries); status != 0) return status;
            const auto writeType = [&, &folderName = folder, &subFolderName = subFolder](
                                       const std::string& type, const Strings& paths) {
                return write(folderName, subFolderName, type, paths, false);
            };
            if (const int status = relocateByType(entries, writeType); status != 0) return status;
        }
        return 0;
    }

    // --- one folder, one entry ---

    int updateFolder(const std::string& folder) {
        Entries entries;
        if (const int status = read(folder, entries); status != 0) return status;
        return relocateByType(entries, [&](const std::string& type, const Strings& paths) {
            return written(
                tvx_wobj::writeProjectFiles(project_, folder, type, inProjectForm(paths), true, true, true));
        });
    }

    int updateEntry(const std::string& folder, const std::string& type, const std::string& path) {
        std::string newPath = path;
        if (const int status = relocate(newPath); status != 0) return status;
        if (newPath == path) return 0;
        return written(
            tvx_wobj::updateInProjectFile(project_, folder, type, path, fsutil::toBackslashes(newPath)));
    }

    // Relocates all entries and writes them type by type, in the order in which the types first appear.
    int relocateByType(Entries& entries,
                       const std::function<int(const std::string& type, const Strings& paths)>& writeType) {
        if (const int status = relocateAll(entries.paths); status != 0) return status;
        Strings done;
        for (const std::string& type : entries.types) {
            bool isDone = false;
            for (const std::string& earlier : done) isDone = isDone || equalIgnoringCase(earlier, type);
            if (isDone) continue;
            done.push_back(type);
            if (const int status = writeType(type, pathsOfType(entries, type)); status != 0) return status;
        }
        return 0;
    }

    int relocateAll(Strings& paths) {
        for (std::string& path : paths) {
            if (const int status = relocate(path); status != 0) return status;
        }
        return 0;
    }

    // Changes the path of an entry into the new path of its file. It keeps its spelling if the file has not
    // moved, or if it already names the new path. A file that has not moved, but that the new project would
    // look for in another folder than the old one did, is copied there.
    int relocate(std::string& entry) {
        const fsutil::Reference path(entry);
        std::string file;
        if (!path.resolve(oldFolder_, file)) return 0;
        std::string named;  // the path that the entry names, seen from the new project
        path.resolve(newFolder_, named);
        std::string newPath;
        if (findMove(file, newPath)) {
            std::string newPlace;
            fsutil::resolveRelative(newPath, newFolder_, newPlace);
            if (!equalIgnoringCase(named, newPlace)) entry = newPath;
            return 0;
        }
        if (!path.isRelative() || !leavesOldFolder_ || named.empty() || !fsutil::isPresentFile(file))
            return 0;
        if (const int status = fsutil::createDirectories(fsutil::folderOf(named)); status != 0) return status;
        return copyFileOrReport(file, named);
    }

    // A moved file is recorded relative to the project's folder, or by its absolute path.
    bool findMove(const std::string& file, std::string& newPath) const {
        const std::string recorded = ProjectConverter::relocationKey(file, oldFolder_);
        return converter_.findRelocation(recorded, newPath) == 0 ||
               converter_.findRelocation(file, newPath) == 0;
    }

    // --- calls of the project-file library that report failures ---

    int read(const std::string& folder, Entries& entries) const {
        if (tvx_wobj::readProjectFileDirectly(project_, folder, entries.names, entries.paths,
                                              entries.types) != 0) {
            return reportError(ERR_READ_FILE, project_);
        }
        return 0;
    }

    int read(const std::string& folder, const std::string& subFolder, Entries& entries) const {
        if (tvx_wobj::readProjectFileDirectly(project_, folder, subFolder, entries.names, entries.paths,
                                              entries.types) != 0) {
            return reportError(ERR_READ_FILE, project_);
        }
        return 0;
    }

    int write(const std::string& folder, const std::string& subFolder, const std::string& type,
              const Strings& paths, bool lastFlag) const {
        return written(tvx_wobj::writeProjectFiles(project_, folder, subFolder, type, inProjectForm(paths),
                                                   true, true, true, lastFlag));
    }

    int written(int status) const { return status == 0 ? 0 : reportError(ERR_WRITE_FILE, project_); }

    static Strings inProjectForm(Strings paths) {
        for (std::string& path : paths) path = fsutil::toBackslashes(path);
        return paths;
    }

    static Strings pathsOfType(const Entries& entries, const std::string& type) {
        Strings paths;
        for (std::size_t i = 0; i < entries.paths.size() && i < entries.types.size(); ++i) {
            if (equalIgnoringCase(entries.types[i], type)) paths.push_back(entries.paths[i]);
        }
        return paths;
    }

    DraftelProjectConverter& converter_;
    std::string project_;
    std::string oldFolder_;
    std::string newFolder_;
    bool leavesOldFolder_ = false;
};

}  // namespace

int DraftelProjectConverter::updateProjectFiles() {
    const std::string& destination = destinationDir();
    for (const char* extension : {kDesign, kDesignBackup}) {
        const std::string name = designFileBaseName_ + "." + extension;
        const std::string oldPath = designDir_ + "/" + name;
        if (!fsutil::isPresentFile(oldPath)) {
            if (equalIgnoringCase(extension, kDesignBackup)) continue;  // not every design has a backup
            return reportError(ERR_FILE_NOT_FOUND, oldPath);
        }
        if (const int status = copyFileOrReport(oldPath, destination + "/" + name); status != 0)
            return status;
        addRelocation(oldPath, "./" + name);
    }
    if (!fsutil::isPresentFile(projectPath())) return reportError(ERR_FILE_NOT_FOUND, projectPath());
    const std::string newName = designName() + "." + kProject;
    const std::string newProject = destination + "/" + newName;
    if (const int status = updateProjectFile(projectPath(), newProject); status != 0) return status;
    addRelocation("./" + fsutil::fileNameOf(projectPath()), "./" + newName);
    setNewProjectPath(newProject);
    return 0;
}

int DraftelProjectConverter::updateProjectFile(const std::string& sourceProject,
                                               const std::string& newProject) {
    // The update follows links. A link in another folder to the old project is replaced by a copy.
    const bool isSameFolder =
        fsutil::isSameFile(fsutil::folderOf(sourceProject), fsutil::folderOf(newProject));
    if (!isSameFolder && fsutil::isSameFile(sourceProject, newProject) && fsutil::isLink(newProject) &&
        fsutil::deleteFile(newProject) != 0) {
        return reportError(ERR_COPY_FILE, sourceProject, newProject);
    }
    if (const int status = copyFileOrReport(sourceProject, newProject); status != 0) return status;
    return ProjectUpdate(*this, sourceProject, newProject).run();
}

}  // namespace tvxconv
