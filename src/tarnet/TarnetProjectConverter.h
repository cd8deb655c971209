// TarnetProjectConverter.h
//
// The conversion of a Tarnet design library: a folder whose sub-folders are cells. A cell keeps its views
// in sub-folders; a file "master.tag" marks a folder as a view. The old view "cfg_analog" has all
// simulation files of the cell in one flat folder. A conversion makes the new view "tvx_sim_1" beside it,
// for each cell that has the old view and not yet the new one: some files keep their names, some take the
// name of the cell, and those of a simulation profile go to the profile's own folder below "profiles". The
// old view is never changed.
//
// The operations are declared in the order in which a conversion calls them, one source file each (see the
// comment at each). Most work on one cell: convertCell stores its folders and name in the object for them.
// All paths are built with "/". A status is 0 or the code of the failure, which has been reported; 1 means
// that something was missing, and nothing is reported.

#pragma once

#include <string>
#include <vector>

#include "converter/ProjectConverter.h"
#include "interface/ITarnetProjectConverter.h"

namespace tvxconv {

class TarnetProjectConverter : public ITarnetProjectConverter, public ProjectConverter {
public:
    // `libraryPath` is the absolute path of the design library's folder; null leaves it unset.
    explicit TarnetProjectConverter(const char* libraryPath);
    ~TarnetProjectConverter() override = default;

    // --- the exported interface, which also overrides the operations of every converter ---

    int convert(int mode, const std::string& path) override;
    int getLibraryParentName(std::string& name) override;
    int getNewStructure(std::vector<std::string>& lines) override;
    int writeReport(const std::vector<std::string>& lines, const std::string& reportName) override;
    int getLastErrorCode(int& code) override;
    int getLastErrorMessage(std::string& message) override;

    // --- what the steps share; getters return 1 and an empty text while a value is unset ---

    // Extensions (without the leading ".") of files that keep their names, that take the name of the cell,
    // and that go to the folder of a profile.
    std::vector<std::string>& copyExtensions() { return copyExtensions_; }
    std::vector<std::string>& cellExtensions() { return cellExtensions_; }
    std::vector<std::string>& profileExtensions() { return profileExtensions_; }

    // The cell being converted, or the last one that was.
    int setCellName(const std::string& name);
    int getCellName(std::string& name) const;
    // The library's folder, and the last component of its parent folder.
    int setLibraryDirectory(const std::string& path);
    int getLibraryDirectory(std::string& path) const;
    int setLibraryParentName(const std::string& name);
    int getLibraryParentName(std::string& name) const;

    // --- conversion.cpp ---

    // Makes the new view of the cell whose old view is the folder `cfgAnalogDirectory`. Returns 1 if the
    // path contains no cell, else the status of relocateCellFiles.
    int convertCell(const std::string& cfgAnalogDirectory);

    // --- layout.cpp ---

    // Appends the entries of the three lists above; returns 0.
    int classifyCellFiles();

    // --- relocation.cpp ---

    // Fills the new view from the old one and marks it. The first file that fails ends the loop over the
    // files; its error stays recorded, and the view is still marked. The status is that of making the new
    // view's folder or its marker. If the old view cannot be listed it is 0, and no marker is written.
    int relocateCellFiles();
    // Copies a file of `sourceDirectory` into the new view under its own name.
    int copyUnchanged(const std::string& sourceDirectory, const std::string& fileName);
    // The same under the cell's name; netlist and optimizer file are rewritten. A profile file ("sim") goes
    // below "profiles" under its own name, with a folder for its outputs.
    int relocateCellFile(const std::string& sourceDirectory, const std::string& fileName,
                         const std::string& extension);
    // Moves an output into the folder of its profile, which is made if missing.
    int relocateProfileFile(const std::string& sourceDirectory, const std::string& fileName,
                            const std::string& extension);
    // Writes the file that marks the new view. It names the cell's netlist.
    int writeViewMasterTag(const std::string& path);

    // --- profileFile.cpp, netlist.cpp, deck.cpp, optimizerFile.cpp ---
    // Each writes a new file from an old one, with its references rewritten. Statuses as with rewriteLines.

    // Writes `sourceDirectory`/`fileName` as `profilesDirectory`/`fileName`. The files named in its "+"
    // lines are copied into the profile's folder. If the file does not exist or may not be read, the status
    // is 0 and nothing is written.
    int rewriteSimProfile(const std::string& sourceDirectory, const std::string& profilesDirectory,
                          const std::string& fileName, const std::string& profileName,
                          const std::string& cellName);
    int rewriteNetlist(const std::string& sourcePath, const std::string& destinationPath,
                       const std::string& cellName);
    int rewriteCircuitIncludes(const std::string& sourceDirectory, const std::string& sourcePath,
                               const std::string& destinationPath);
    // Makes the new form of a reference in a deck; `result` is empty if it is to stay unchanged. Returns 0.
    int relocateReference(const std::string& sourceDirectory, const std::string& name, std::string& result);
    // The design profiles that it names without a folder are copied into `destinationDirectory`.
    int rewriteOptimizerFile(const std::string& sourcePath, const std::string& destinationPath,
                             const std::string& destinationDirectory);

    const std::string& cellName() const { return cellName_; }

private:
    friend class CellRelocation;

    // The mode of every Tarnet conversion, used for the listing.
    static constexpr int kLibraryMode = 1;

    // How a file gets from the old view into the new one.
    enum class Road { none, unchanged, cell, profile };

    int convertLibrary();
    Road roadOf(const std::string& fileName, const std::string& extension) const;
    void listCell(const std::string& cellFolder, std::vector<std::string>& lines) const;
    int relocateDesignProfile(const std::string& value, const std::string& destinationDirectory,
                              std::string& reference) const;

    std::vector<std::string> copyExtensions_;
    std::vector<std::string> cellExtensions_;
    std::vector<std::string> profileExtensions_;
    std::string cellName_;
    std::string libraryDirectory_;
    std::string libraryParentName_;
};

}  // namespace tvxconv
