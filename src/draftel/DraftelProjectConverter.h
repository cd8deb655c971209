// DraftelProjectConverter.h
//
// The conversion of a Draftel project. The old layout is flat: every simulation file is beside the project
// file and named after the design, the schematic and the simulation profile. The new one has a simulation
// root "<design>-TevrixFiles" in the destination folder, in it a folder for each root schematic, and in
// that a folder for each profile.
//
// The steps of a conversion are declared in the order in which they run, one source file each (see the
// comment at each). They share the members of the object: project folder, design, profile records, table of
// moves. All paths are built with "/". A status is 0 or the code of the failure, which has been reported; 1
// means that something was missing, and nothing is reported.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "converter/ProjectConverter.h"
#include "draftel/profileRecords.h"
#include "interface/IDraftelProjectConverter.h"

namespace tvxconv {

class DraftelProjectConverter : public IDraftelProjectConverter, public ProjectConverter {
public:
    // `projectPath` is the absolute path of the project file; null leaves it unset.
    explicit DraftelProjectConverter(const char* projectPath);
    ~DraftelProjectConverter() override = default;

    // --- the exported interface (hostAdapter.cpp) ---

    int convert(int mode, const CString& path) override;
    int getNewStructure(CStringArray& lines) override;
    int writeReport(const CStringArray& lines, const CString& reportPath) override;
    int getNewProjectPath(CString& path) override;
    int getLastErrorCode(int& code) override;
    int getLastErrorMessage(CString& message) override;

    // --- the driver (conversion.cpp) and the listing (structureListing.cpp) ---

    using ProjectConverter::getNewProjectPath;
    int convert(int mode, const std::string& path) override;
    int getNewStructure(std::vector<std::string>& lines) override;
    int writeReport(const std::vector<std::string>& lines, const std::string& reportPath) override;
    int getLastErrorMessage(std::string& message) override;

    // --- what the steps share; getters return 1 and an empty text while a value is unset ---

    // Extensions (without the leading ".") and project folders, in the order in which the steps use them.
    std::vector<std::string>& designLevelExtensions() { return designLevelExtensions_; }
    std::vector<std::string>& schematicLevelExtensions() { return schematicLevelExtensions_; }
    std::vector<std::string>& profileLevelExtensions() { return profileLevelExtensions_; }
    std::vector<std::string>& projectFolderNames() { return projectFolderNames_; }
    std::vector<std::string>& rootSchematics() { return rootSchematics_; }
    std::map<std::string, std::string>& folderMap() { return folderMap_; }

    // The design: its file name before the first ".", its path, and its folder.
    int setDesignFileBaseName(const std::string& name);
    int getDesignFileBaseName(std::string& name) const;
    int setDesignFilePath(const std::string& path);
    int getDesignFilePath(std::string& path) const;
    int setDesignDir(const std::string& path);
    int getDesignDir(std::string& path) const;

    static constexpr int kInPlace = 1;
    static constexpr int kIntoDestination = 2;

    // The mode of the first convert call: the first value other than 0 stays. Both return 0.
    int setRequestedMode(int mode);
    int getRequestedMode(int& mode) const;

    // The profile records, with the fields of ProfileRecord. add returns 0; find returns 1, with empty
    // outputs, if there is none; getProfilesOfSchematic fills two parallel lists, in the order of adding,
    // and returns 0.
    int addProfileRecord(const std::string& fileBase, const std::string& profile,
                         const std::string& schematic, const std::string& registeredPath);
    int findProfileRecord(const std::string& fileBase, std::string& profile, std::string& schematic,
                          std::string& registeredPath) const;
    int getProfilesOfSchematic(const std::string& schematic, std::vector<std::string>& fileBases,
                               std::vector<std::string>& profiles) const;

    // --- layout.cpp ---

    // Fills the five lists and tables above by appending; returns 0.
    int classifySimulationFiles();

    // --- designInformation.cpp ---

    // Finds the design file that the project file names.
    int readDesignInformation();
    // Asks the design reader for the design's root schematics.
    int readRootSchematics();

    // --- profileRecords.cpp ---

    // Makes a record for each simulation profile of the project file. One that cannot be read is left out;
    // one without a profile file has empty names.
    int discoverProfiles();
    // Reads the names in the profile file `fileBase` + ".sim" of the project folder. Returns 0, also
    // without such a file, when the names are empty; 1 for a line without a value.
    int readProfileNames(const std::string& fileBase, ProfileNames& names) const;

    // --- relocation.cpp ---

    // Copies the files of the design level into the simulation root. A copy that fails does not stop the
    // others.
    int copyDesignLevelFiles();
    // Makes the folders of the schematics and profiles and fills them.
    int relocateSchematics();
    // Moves the outputs of one profile into its folder. If a file cannot be written its error is recorded
    // and it still counts as moved; the status is 0.
    int relocateProfileOutputs(const std::string& designBase, const std::string& schematic,
                               const std::string& profile, const std::string& destination,
                               const std::string& profileFolder);

    // --- profileFile.cpp ---

    // Writes the profile file `fileBase` + ".sim" as `schematicFolder`/`profile`.sim, its references
    // rewritten. Without such a file nothing is written.
    int rewriteSimProfile(const std::string& fileBase, const std::string& profile,
                          const std::string& destination, const std::string& schematicFolder,
                          const std::string& schematic);
    // Makes the new form of a data or output file that a profile file names. Returns 1, with `reference`
    // empty, if it cannot be resolved.
    int relocateOutputReference(std::string& reference, const std::string& value,
                                const std::string& projectDir, const std::string& fileBase,
                                const std::string& profile);

    // --- deck.cpp, netlist.cpp ---

    // Writes the netlist of a schematic into its folder. If there is none, nothing is written.
    int relocateSchematicNetlist(const std::string& designBase, const std::string& schematic,
                                 const std::string& destination, const std::string& schematicFolder);
    // Writes the deck at `oldPath` as `profileFolder`/`profile`.`extension` and returns that path in
    // `newPath`.
    int rewriteSimulationNetlist(std::string& newPath, const std::string& oldPath,
                                 const std::string& projectDir, const std::string& schematic,
                                 const std::string& profile, const std::string& profileFolder,
                                 const std::string& extension);
    // Makes the new form of a reference in a deck; `reference` is empty if there is none. With a `marker`
    // other than 0 it is relative to a profile folder.
    int resolveIncludeReference(const std::string& baseFolder, const std::string& value,
                                std::string& reference, int marker);

    // --- schematicFiles.cpp ---

    // Moves the files that belong to a schematic and to none of its profiles into its folder. If a file
    // cannot be written its error is recorded and it still counts as moved; the status is 0.
    int relocateSchematicFiles(const std::string& designBase, const std::string& schematic,
                               const std::string& destination, const std::string& schematicFolder);
    // Copies the file at `oldPath` into the folder, named after the schematic alone; the path is returned
    // in `newPath`.
    int copySchematicFile(std::string& newPath, const std::string& oldPath, const std::string& schematic,
                          const std::string& schematicFolder, const std::string& extension);

    // --- optimizerFile.cpp ---

    // Writes the optimizer file at `oldPath` as `schematicFolder`/`schematic`.`extension` and returns that
    // path in `newPath`. Profiles get their new names in it, and design profiles the paths where they are
    // found.
    int rewriteOptimizerFile(std::string& newPath, const std::string& oldPath, const std::string& schematic,
                             const std::string& schematicFolder, const std::string& extension);
    // Makes the new form of a design profile that an optimizer file names. One in the project folder, named
    // without a folder, is copied into the schematic's folder, unless it has moved already. ERR_COPY_FILE
    // if it cannot be copied; 1, with `reference` empty, if it cannot be resolved.
    int relocateDesignProfile(std::string& reference, const std::string& value,
                              const std::string& schematicFolder);

    // --- analysisProfile.cpp ---

    // Writes the advanced-analysis profile at `oldPath` as `schematicFolder`/`schematic`.`extension` and
    // returns that path in `newPath`. Profiles get their new names in it. If the old file cannot be read
    // nothing is written, and the status is still 0.
    int relocateAnalysisProfile(std::string& newPath, const std::string& oldPath,
                                const std::string& schematic, const std::string& schematicFolder,
                                const std::string& extension);

    // --- projectFile.cpp ---

    // Puts the design, its backup and the project file into the destination and updates the paths in the
    // project file.
    int updateProjectFiles();
    // Writes `sourceProject` as `newProject`, with the new path of every moved file.
    int updateProjectFile(const std::string& sourceProject, const std::string& newProject);

    // --- paths and names that several steps build ---

    // The name of a profile file in the new layout, from its profile. `oldName` may have any extension.
    // Returns 1, with `newName` empty, if there is no record of the profile.
    int newProfileFileName(std::string& newName, const std::string& oldName) const;
    // The path of this profile file in the project folder.
    std::string oldProfileFile(const std::string& fileBase) const;
    // The simulation root in the destination folder.
    std::string simulationRoot() const;
    // Records a move: the old path relative to the project folder if it is below it, else unchanged; the
    // new path relative to `destination`.
    void recordMove(const std::string& oldPath, const std::string& newPath, const std::string& destination);

private:
    int convertInPlace();
    int convertIntoDestination(const std::string& path);
    int runConversionSteps();
    int deleteOldFiles();
    int relocateSchematic(const std::string& schematic);

    ProfileRecords profileRecords_;
    std::vector<std::string> rootSchematics_;
    std::vector<std::string> designLevelExtensions_;
    std::vector<std::string> schematicLevelExtensions_;
    std::vector<std::string> profileLevelExtensions_;
    std::string designFileBaseName_;
    std::string designFilePath_;
    std::string designDir_;
    std::vector<std::string> projectFolderNames_;
    std::map<std::string, std::string> folderMap_;
    int requestedMode_ = 0;
};

}  // namespace tvxconv
