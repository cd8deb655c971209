// ProjectConverter.h
//
// What every conversion needs: its mode, the project and its folders, the destination, and the table of
// moves, which says where each file went. The two converters derive from this class; the exported
// interfaces pass their calls to its virtual operations.
//
// Paths are kept with "/" whichever slash they were given with. An object serves one conversion: nothing is
// reset between calls.

#pragma once

#include <functional>
#include <map>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

namespace tvxconv {

class ProjectConverter {
public:
    // `projectPath` may be null: the path is then unset.
    explicit ProjectConverter(const char* projectPath);
    virtual ~ProjectConverter() = default;
    ProjectConverter(const ProjectConverter&) = delete;
    ProjectConverter& operator=(const ProjectConverter&) = delete;

    // The operations of a converter, overridden by each kind; here they do nothing and return 0.
    virtual int convert(int mode, const std::string& path);
    virtual int getNewStructure(std::vector<std::string>& lines);
    virtual int writeReport(const std::vector<std::string>& lines, const std::string& reportPath);
    virtual int getLastErrorCode(int& code);
    virtual int getLastErrorMessage(std::string& message);

    // Setters return 0. Getters return 0, or 1 while the value is unset (then a text becomes empty and a
    // mode stays unchanged). A mode of 0 and an empty destination or source folder are ignored.
    int setMode(int mode);
    int getMode(int& mode) const;
    int setDesignName(const std::string& name);
    int getDesignName(std::string& name) const;
    int setProjectPath(const std::string& path);
    int getProjectPath(std::string& path) const;
    int setProjectDir(const std::string& path);
    int getProjectDir(std::string& path) const;
    int setNewProjectPath(const std::string& path);
    int getNewProjectPath(std::string& path) const;
    int setDestinationDir(const std::string& path);
    int getDestinationDir(std::string& path) const;
    int setSourceDir(const std::string& path);

    // The same by value or reference: empty (0 for the mode) while unset.
    int mode() const { return mode_; }
    const std::string& designName() const { return designName_; }
    const std::string& projectPath() const { return projectPath_; }
    const std::string& projectDir() const { return projectDir_; }
    const std::string& destinationDir() const { return destinationDir_; }

    // The table of moves, from a file's old path to its new one. Paths are returned in lower case, with the
    // separators they were entered with; look-ups ignore letter case. The first entry for an old path
    // stays; a later one is ignored.
    int addRelocation(const std::string& oldPath, const std::string& newPath);
    // Returns 0, or 1 with `newPath` empty if no move is recorded.
    int findRelocation(const std::string& oldPath, std::string& newPath) const;
    // The form in which the old path of a move is entered and looked up: relative to the project folder if
    // it is below it, else unchanged.
    static std::string relocationKey(const std::string& oldPath, const std::string& projectDir);
    // Walks the table in the byte order of the old paths. Return 0, or 1 with the outputs unchanged at the
    // end and for an empty table.
    int firstRelocation(std::string& oldPath, std::string& newPath);
    int nextRelocation(std::string& oldPath, std::string& newPath);
    // addRelocation for a file by the path that it was found under, which is kept for forEachOldFile. The
    // old path is entered in the form of relocationKey.
    int addMove(const std::string& oldFile, const std::string& newPath);
    // Visits the old files in the same order: those of addMove by the path given there, others by their old
    // paths, relative ones taken from the project folder. Stops at the first status of `visit` other than 0
    // and returns it.
    int forEachOldFile(const std::function<int(const std::string& file, bool isOfProject)>& visit) const;

protected:
    // Copies a text out as the getters do: 0, or 1 and an empty output if it is empty.
    static int readField(const std::string& field, std::string& out);

private:
    struct InLowerCase {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const;
    };
    // There may be hundreds of thousands of moves, and none is ever removed, so they share large blocks of
    // memory. Keys as spelled, values in lower case.
    using Relocations = std::pmr::map<std::string_view, std::string_view, InLowerCase>;

    bool insertRelocation(const std::string& oldPath, const std::string& newPath);
    std::string_view kept(const std::string& text);
    int handOut(Relocations::const_iterator move, std::string& oldPath, std::string& newPath) const;

    int mode_ = 0;
    std::string designName_;
    std::string projectPath_;
    std::string projectDir_;
    std::string newProjectPath_;
    std::string destinationDir_;
    std::string sourceDir_;
    std::pmr::monotonic_buffer_resource relocationMemory_;
    Relocations relocations_{&relocationMemory_};
    Relocations::const_iterator cursor_ = relocations_.end();
    // Files of addMove that are not where their keys lead: their folder differs from the project's only in
    // case.
    std::map<std::string, std::string, InLowerCase> otherFiles_;
};

}  // namespace tvxconv
