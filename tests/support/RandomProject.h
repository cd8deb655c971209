// RandomProject.h
//
// Draftel projects made up at random, for what must hold whatever a project looks like: names in any
// letters, files that are there or not, references to them in every spelling, both kinds of line ends. Each
// file has a mark of its own in a part that no conversion changes, so that it is known again.

#pragma once

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/TestFolder.h"

namespace randomproject {

// Stands in texts for the folder that all files of a project are in.
inline const std::string kHere = "@HERE@";

// --- texts ---

std::string lowerCased(std::string text);
// With "/" for each "\".
std::string slashed(std::string text);
bool beginsWithIgnoringCase(const std::string& text, const std::string& key);
bool contains(const std::string& text, const std::string& part);
// What stands behind the last separator.
std::string nameOf(const std::string& path);
// The mark in the text of a file; empty when there is none.
std::string markOf(const std::string& text);

struct Line {
    std::string text;
    std::string end;  // "\n", "\r\n", or nothing on a last line
};
std::vector<Line> linesOf(const std::string& text);

// --- a project ---

struct Profile {
    std::string schematic;
    std::string name;
    std::string fileBase;
    std::string registered;
    bool hasFile = false;
    bool isOrphan = false;  // of a schematic that the design does not have
    bool hasDeck = false;
    std::vector<Line> lines;
    std::vector<Line> deck;
};

struct Netlist {
    std::string schematic;
    std::vector<Line> lines;
};

struct Optimizer {
    std::string schematic;
    std::vector<Line> lines;
};

// An analysis profile: the profiles that it names in its section of profiles, and in its measurements.
struct Analysis {
    std::string schematic;
    std::string mark;
    std::string section;  // that has the measurements
    std::vector<std::string> keys;
    std::vector<std::string> measured;
};

// An entry of the project file that a conversion is about.
struct Entry {
    std::vector<std::string> folder;  // its name, then perhaps that of the sub-folder
    std::size_t index = 0;
    std::string path;
};

// Without the leading ".".
extern const std::vector<std::string> kDesignLevel;
extern const std::vector<std::string> kProfileLevel;
// Of the files of a schematic those that are copied as they are, but for the default marker.
extern const std::vector<std::string> kSchematicLevel;

class RandomProject {
public:
    // The same seed makes the same project.
    explicit RandomProject(std::uint32_t seed);

    std::string projectName;
    std::string designBase;
    std::string projectFolder;  // below the folder of all
    std::string designFolder;
    std::vector<std::string> schematics;
    std::vector<Profile> profiles;
    std::vector<Netlist> netlists;
    std::vector<Optimizer> optimizers;
    std::vector<Analysis> analyses;
    std::vector<Entry> entries;
    std::string active;
    tests::Tree files;  // below the folder of all, kHere standing for that in the texts

    std::string projectFile() const { return projectFolder + "/" + projectName + ".opj"; }

    // Whether a file of this path, below the folder of all, goes to the simulation root.
    bool moves(const std::string& path) const { return moved_.count(lowerCased(path)) != 0; }

private:
    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    template <class List>
    const auto& oneOf(const List& list) {
        return list[below(static_cast<std::uint32_t>(std::size(list)))];
    }

    std::string name();
    std::string newName(std::set<std::string>& taken);
    std::string recased(std::string text);
    std::string mark();
    std::string noise();

    bool add(const std::string& path, const std::string& text);
    bool addNoise(const std::string& path);
    void addOther(const std::string& path);
    std::string outputPath(const Profile& profile, const std::string& extension) const;
    std::string schematicPath(const std::string& schematic, const std::string& extension) const;
    bool addOfSchematic(const std::string& schematic, const std::string& extension, const std::string& text);

    std::string reference(const std::string& extension, bool inJson = false);
    std::string spelled(const std::string& target);
    std::string spelledDesign();
    std::string profileFile();

    std::vector<Line> dressed(const std::vector<std::string>& lines);
    std::string comment();

    void makeNames();
    void makeFiles();
    void makeProfile(Profile& profile);
    void makeDeck(Profile& profile);
    void makeNetlist(const std::string& schematic);
    void makeOptimizer(const std::string& schematic);
    void makeAnalysis(const std::string& schematic);
    void makeProjectFile();

    std::mt19937 random_;
    int marks_ = 0;
    std::set<std::string> paths_;      // of all files, in lower case
    std::set<std::string> moved_;      // of those that go to the simulation root, in lower case
    std::vector<std::string> others_;  // of those that references name, besides the design's own
};

}  // namespace randomproject
