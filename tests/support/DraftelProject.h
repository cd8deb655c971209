// DraftelProject.h
//
// For the tests of the Draftel conversion: a small project in a folder of its own with a converter for it,
// what the last error is and should be, and children that cannot open or write files.

#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/TestFolder.h"

namespace tests {

// The JSON text in the form in which the project-file library writes a project.
std::string projectText(const std::string& json);

// A project file that lists one design and one profile, as small as it can be.
std::string smallProjectText();
// The same after a conversion.
std::string smallProjectTextConverted();

// An entry of a folder of a project file.
struct Entry {
    std::string path;
    std::string type;
};

using Json = nlohmann::ordered_json;

// A folder of a project file. Entries are named after their files, so that a changed path changes the name
// with it.
Json folderOf(const std::string& name, const std::vector<Entry>& entries,
              const Json& subFolders = Json::array());

// A project file with "Design Resources", whose output-file item is `item`, the other folders given, and the
// simulation profiles given as {path, name, schematic}.
struct ProjectJson {
    std::string item;
    std::vector<Entry> designResources;
    std::vector<Entry> libraries;
    Json folders = Json::array();
    std::string active;
    std::vector<std::vector<std::string>> profiles;

    std::string text() const;
};

// The text of a design file.
std::string designText(const std::vector<std::string>& rootSchematics);

// The text of a profile file: the two lines that every profile has.
std::string profileText(const std::string& schematic, const std::string& profile);

// Every line end of `text` as "\r\n", or as "\n".
std::string withCrLf(const std::string& text);
std::string withLf(const std::string& text);

std::string lowerCase(std::string text);
std::string withBackslashes(std::string text);

// --- the last error ---

struct LastError {
    int code = 0;
    std::string message;

    friend bool operator==(const LastError&, const LastError&) = default;
    friend std::ostream& operator<<(std::ostream& out, const LastError& error);
};

LastError lastError();
void forgetLastError();

// What is recorded for a path.
LastError createDirectoryError(const std::string& path);
LastError fileNotFoundError(const std::string& path);
LastError openForReadingError(const std::string& path);
LastError openForWritingError(const std::string& path);
LastError deleteFileError(const std::string& path);
LastError copyFileError(const std::string& source, const std::string& destination);
LastError readFileError(const std::string& path);
LastError writeFileError(const std::string& path);
LastError readDesignFileError(const std::string& path);

// --- a project ---

// The table of moves, whole.
using Moves = std::map<std::string, std::string>;
Moves movesOf(tvxconv::ProjectConverter& converter);

// Project "amp" in the folder "project" of a folder of its own: amp.opj, amp.dsn with the root schematic S1,
// and amp-S1-tran.sim, the profile "tran". It is converted into the folder "new" beside it, not made yet.
class DraftelProject {
public:
    DraftelProject();

    // Sets the converter to what the steps before the relocation find out, and makes the simulation root
    // and, in it, the folders of S1 and tran.
    void prepareSteps();

    // A file of the project folder.
    std::string path(const std::string& name) const { return dir + "/" + name; }
    std::string write(const std::string& name, const std::string& text) const;
    std::string read(const std::string& name) const;
    void remove(const std::string& name) const;

    // A file of the destination.
    std::string newPath(const std::string& name) const { return destination + "/" + name; }
    std::string readNew(const std::string& name) const;
    bool existsNew(const std::string& name) const;

    // Both trees: names begin with "project/" and "new/".
    Tree tree() const { return treeOf(folder.path()); }

    const TestFolder folder;
    const std::string dir;              // the project folder
    const std::string destination;      // where it is converted into
    const std::string root;             // the simulation root
    const std::string schematicFolder;  // of S1
    const std::string profileFolder;    // of tran
    tvxconv::DraftelProjectConverter converter;
};

// --- children ---

enum class Lacks { opening, writing };

// Runs `body` in a child process in which no file can be opened, or no byte be written to one; true when it
// returned true and no expectation failed.
bool succeedsLacking(Lacks what, bool (*body)(void* context), void* context);
template <class Body>
bool succeedsLacking(Lacks what, Body body) {
    return succeedsLacking(
        what, [](void* context) { return (*static_cast<Body*>(context))(); }, &body);
}

// Opens a tree to everybody, so that a child without root can use it.
void openToAll(const std::string& folder);

}  // namespace tests
