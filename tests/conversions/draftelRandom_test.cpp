// What holds for every conversion, tried on projects made up at random: each reference that named a file
// before the move names the same file after it, no file is lost or touched that should not be, and line
// ends are kept. A failure tells the seed, which makes the same project again.
//
// References that are not held to that, because the conversion gives them up on purpose or cannot know:
// - All: a relative path whose third character is a slash ("ab/x.lib") counts as absolute.
// - Decks: a directive that does not name a file by the ending that belongs to it, in lower or upper case
//   throughout, is left out, and so is one without a quoted name. An include of any netlist becomes one of
//   the schematic's own. A path into a folder of the project is looked up by its file name alone, so it
//   may come to name the design's own file of that name: still a file, but another.
// - Netlists: an include gets the fixed name of the parameter file or is left out.
// - Profile files: the design, project and root schematics give way to the netlist; values without the
//   ending that belongs to the key are left out. A data or output file that has moved is named without a
//   folder, which is right only for the profile's own files; and one named after the profile file is taken
//   for one of them, which is right only where that is named after design, schematic and profile. "+" lines
//   above 7 are no files.
// - Optimizer files and analysis profiles: lines that name another kind of file than belongs to the word they
//   begin with are left out. A profile is named without a folder, which is right only for those of the same
//   schematic; one that has no profile file has no name either. A design profile named without a folder goes
//   with the schematic that names it first.
// - In place: an absolute path, or one by way of "..", is kept where it is no entry of the project file,
//   also where it names a file that moves. The same goes for a data or output file named without a folder.
// - Project file: entries outside of the folders and types that a conversion is about stay as they are,
//   and profiles are carried only when they are registered by a path that begins in the project's folder,
//   have a profile file there and belong to a root schematic.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <random>
#include <set>

#include "draftel/DraftelProjectConverter.h"
#include "errors/errors.h"
#include "fsutil/letterCase.h"
#include "support/RandomProject.h"
#include "support/TestFolder.h"
#include "support/foldersInMemory.h"

namespace {

namespace fs = std::filesystem;
using namespace randomproject;
using Json = nlohmann::ordered_json;
using tests::TestFolder;
using tests::Tree;

// Each takes its time on Windows.
constexpr int kProjects = tests::kOnWindows ? 100 : 300;

// --- texts ---

// Taken for absolute for its third character.
bool looksAbsolute(const std::string& reference) {
    const std::string path = slashed(reference);
    return path.size() > 2 && path[2] == '/' && !path.starts_with("./") && !path.starts_with("../") &&
           !path.starts_with("/");
}

bool hasFolder(const std::string& reference) {
    const std::string path = slashed(reference);
    return contains(path.starts_with("./") ? path.substr(2) : path, "/");
}

bool goesUpOrFromRoot(const std::string& reference) {
    const std::string path = slashed(reference);
    return path.starts_with("/") || path.starts_with("../");
}

// The text between the first two quotes; false when there are not two.
bool quoted(const std::string& line, std::string& value) {
    const std::size_t open = line.find('"');
    const std::size_t close = open == std::string::npos ? open : line.find('"', open + 1);
    if (close == std::string::npos) return false;
    value = line.substr(open + 1, close - open - 1);
    return true;
}

// --- files ---

// The file that `reference` names, seen from `folder`, letter case ignored; empty when there is none.
std::string findFile(const std::string& folder, const std::string& reference) {
    const std::string path = slashed(reference);
    const fs::path whole = fs::path(path).is_absolute() ? path : folder + "/" + path;
    fs::path found = whole.root_path();
    for (const fs::path& part : whole.relative_path()) {
        const std::string name = part.string();
        if (name.empty() || name == "." || name == "/") continue;
        if (name == "..") {
            found = found.parent_path();
            continue;
        }
        if (!fs::exists(found / name)) {
            if (!fs::is_directory(found)) return {};
            std::vector<fs::path> alike;
            for (const auto& entry : fs::directory_iterator(found)) {
                if (lowerCased(entry.path().filename().string()) == lowerCased(name))
                    alike.push_back(entry.path());
            }
            if (alike.size() != 1) return {};
            found = alike.front();
        } else {
            found /= name;
        }
    }
    return fs::is_regular_file(found) ? found.generic_string() : std::string();
}

std::string markAt(const std::string& folder, const std::string& reference) {
    const std::string file = findFile(folder, reference);
    return file.empty() ? std::string() : markOf(tests::readFile(file));
}

// --- a conversion and what must hold after it ---

class Trial {
public:
    Trial(const RandomProject& project, bool inPlace) : project_(project), inPlace_(inPlace) {
        for (const auto& [path, text] : project.files) folder_.write(path, here(text));
        projectDir_ = folder_.path(project.projectFolder);
        destination_ = inPlace ? projectDir_ : folder_.path("home/new place");
        root_ = destination_ + "/" + project.projectName + "-TevrixFiles";
        before_ = tests::treeOf(folder_.path());
        noteTargets();
    }

    // How many references of each kind have been followed.
    const std::map<std::string, int>& kept() const { return kept_; }

    void run() {
        convert();
        if (testing::Test::HasFailure()) return;
        for (const Profile& profile : project_.profiles) {
            if (profile.isOrphan || !profile.hasFile) continue;
            checkProfile(profile);
            if (profile.hasDeck) checkDeck(profile);
        }
        for (const Netlist& netlist : project_.netlists) checkNetlist(netlist);
        for (const Optimizer& optimizer : project_.optimizers) checkOptimizer(optimizer);
        for (const Analysis& analysis : project_.analyses) checkAnalysis(analysis);
        checkProjectFile();
        checkFiles();
        if (inPlace_) return;
        const Tree once = tests::treeOf(destination_);
        convert();
        const Tree twice = tests::treeOf(destination_);
        EXPECT_TRUE(once == twice) << "the second conversion into the same folder changes it";
    }

private:
    std::string here(const std::string& text) const { return tests::replaced(text, kHere, folder_.path()); }

    void convert() const {
        tvxconv::setLastErrorCode(0);
        tvxconv::setLastErrorMessage("");
        tvxconv::DraftelProjectConverter converter(folder_.path(project_.projectFile()).c_str());
        int code = 0;
        std::string message;
        const int status =
            inPlace_ ? converter.convert(1, std::string()) : converter.convert(2, destination_);
        converter.getLastErrorCode(code);
        converter.getLastErrorMessage(message);
        EXPECT_EQ(status, 0) << message;
        EXPECT_EQ(code, 0) << message;
    }

    // What each reference names before the conversion.
    struct Target {
        std::string mark;
        bool moves = false;
    };

    void noteTargets() {
        const auto note = [&](const std::string& reference) {
            Target target;
            const std::string file = findFile(projectDir_, reference);
            if (!file.empty()) {
                target.mark = markOf(tests::readFile(file));
                target.moves =
                    project_.moves(fs::path(file).lexically_relative(folder_.path()).generic_string());
            }
            targets_[reference] = target;
        };
        const auto noteAll = [&](const std::vector<Line>& lines) {
            std::string value;
            for (const Line& line : lines) {
                if (quoted(here(line.text), value)) note(value);
            }
        };
        for (const Profile& profile : project_.profiles) {
            noteAll(profile.lines);
            noteAll(profile.deck);
            note(profile.registered);
        }
        for (const Optimizer& optimizer : project_.optimizers) noteAll(optimizer.lines);
        for (const Analysis& analysis : project_.analyses) {
            for (const std::string& name : analysis.measured) note(name);
        }
        for (const Entry& entry : project_.entries) note(here(entry.path));
    }

    Target target(const std::string& reference) const {
        const auto found = targets_.find(reference);
        return found == targets_.end() ? Target() : found->second;
    }

    // What becomes of one line.
    struct Fate {
        enum { stays, becomes, referenceIn } kind = stays;
        std::string text;  // the new line, or for a reference what stands before and behind its value
        std::string behind;
        std::function<void(const std::string& value)> check;
        std::string endForNone = "\n";  // what a new line ends with in place of one without an end
    };

    // Holds the lines of a new file against what they should be, their ends against those of the old ones.
    void checkLines(const std::string& path, const std::vector<Line>& oldLines,
                    const std::function<bool(const std::string& line, Fate& fate)>& fateOf) const {
        const std::string file = findFile("/", path);
        ASSERT_NE(file, "") << "there is no " << path;
        const std::vector<Line> newLines = linesOf(tests::readFile(file));
        std::size_t at = 0;
        for (const Line& raw : oldLines) {
            const Line old{here(raw.text), raw.end};
            Fate fate;
            if (!fateOf(old.text, fate)) continue;
            if (fate.kind == Fate::stays && old.text.empty() && old.end.empty()) continue;
            ASSERT_LT(at, newLines.size()) << path << " ends before\n" << old.text;
            const Line& line = newLines[at++];
            const bool kept = line.text == old.text && tests::asRead(line.end) == tests::asRead(old.end);
            if (fate.kind == Fate::stays) {
                EXPECT_TRUE(kept) << path << ": " << old.text << "\nbecame " << line.text;
                continue;
            }
            if (fate.kind == Fate::becomes) {
                EXPECT_EQ(line.text, fate.text) << path << ": " << old.text;
            } else {
                std::string value;
                ASSERT_TRUE(quoted(line.text, value)) << path << ": " << line.text;
                if (!kept) {
                    EXPECT_EQ(line.text, fate.text + "\"" + value + "\"" + fate.behind)
                        << path << ": " << old.text;
                }
                fate.check(value);
            }
            if (!kept) {
                EXPECT_EQ(line.end, old.end.empty() ? fate.endForNone : old.end) << path << ": " << old.text;
            }
        }
        EXPECT_EQ(at, newLines.size()) << path;
    }

    std::string schematicFolder(const Profile& profile) const { return root_ + "/" + profile.schematic; }
    std::string profileFolder(const Profile& profile) const {
        return schematicFolder(profile) + "/" + profile.name;
    }

    void expectSame(const std::string& folder, const std::string& old, const std::string& value,
                    const std::string& what) {
        ++kept_[what];
        EXPECT_EQ(markAt(folder, value), target(old).mark)
            << what << ": \"" << old << "\" became \"" << value << "\"";
    }

    // Not a copy of a moved file elsewhere, nor the old file.
    void expectInRoot(const std::string& folder, const std::string& value) const {
        const std::string file = findFile(folder, value);
        EXPECT_TRUE(tvxconv::fsutil::beginsWithIgnoringCase(file, root_ + "/")) << value << " names " << file;
    }

    void checkProfile(const Profile& profile) {
        bool isConnected = false;
        std::map<std::string, int> entryNames;
        std::string value;
        for (const Line& line : profile.lines) {
            if (line.text.starts_with("+") && quoted(line.text, value))
                ++entryNames[lowerCased(nameOf(value))];
        }
        const std::string own = profileFolder(profile);
        const bool isNamedAfterAll =
            lowerCased(profile.fileBase) ==
            lowerCased(project_.designBase + "-" + profile.schematic + "-" + profile.name);
        const auto fateOf = [&](const std::string& line, Fate& fate) {
            for (const char* key : {"DesignFile", "ProjectFile", "RootSchematics"}) {
                if (!beginsWithIgnoringCase(line, key)) continue;
                fate.kind = Fate::becomes;
                fate.text = "Connectivity= \"" + profile.schematic + ".net\" ";
                const bool first = !isConnected;
                isConnected = true;
                return first;
            }
            std::string named;
            const bool isQuoted = quoted(line, named);
            const struct {
                const char* key;
                const char* mark;
                const char* otherMark;
                std::string fixed;
            } keys[] = {{"ProfileFile", ".sim", ".sim", profile.name + ".sim"},
                        {"NetlistFile", ".sim.cir", ".sim.cir", profile.name + ".cir"},
                        {"DataFile", ".dat", ".csd", ""},
                        {"OutFile", ".out", ".out", ""}};
            for (const auto& key : keys) {
                if (!beginsWithIgnoringCase(line, key.key)) continue;
                if (!isQuoted) return false;
                if (!named.empty() && !contains(named, key.mark) && !contains(named, key.otherMark))
                    return false;
                fate.kind = Fate::becomes;
                fate.text = std::string(key.key) + "= \"" + (named.empty() ? "" : key.fixed) + "\" ";
                if (named.empty() || !key.fixed.empty()) return true;
                fate.kind = Fate::referenceIn;
                fate.text = std::string(key.key) + "= ";
                fate.behind = " ";
                fate.check = [&, named](const std::string& now) {
                    checkOutput(profile, isNamedAfterAll, named, now);
                };
                return true;
            }
            if (line.starts_with("+")) {
                const int number = line.size() > 1 ? line[1] - '0' : 0;
                const bool follows = number >= 1 && number <= 7 && !target(named).mark.empty() &&
                                     !slashed(named).starts_with("/") && !looksAbsolute(named);
                if (!follows) return true;
                fate.kind = Fate::becomes;
                fate.text = line.substr(0, 2) + " \"" + nameOf(named) + "\" ";
                if (entryNames[lowerCased(nameOf(named))] == 1) {
                    expectSame(own, named, nameOf(named), "a listed file of a profile");
                } else {
                    EXPECT_NE(markAt(own, nameOf(named)), "") << line;
                }
            }
            return true;
        };
        checkLines(schematicFolder(profile) + "/" + profile.name + ".sim", profile.lines, fateOf);
    }

    void checkOutput(const Profile& profile, bool isNamedAfterAll, const std::string& old,
                     const std::string& now) {
        const Target named = target(old);
        if (named.mark.empty() || looksAbsolute(old)) return;
        const std::string stem =
            lowerCased(project_.designBase + "-" + profile.schematic + "-" + profile.name + ".");
        const bool isOwn = named.moves && lowerCased(nameOf(old)).starts_with(stem);
        const bool isBare = slashed(old) == nameOf(old);
        const bool isNamedAfterProfile =
            lowerCased(nameOf(old)).starts_with(lowerCased(profile.fileBase) + ".");
        if (isBare && isNamedAfterProfile && !isNamedAfterAll) return;
        if (named.moves && !isOwn && (!isBare || inPlace_)) return;
        // A file of the profile under a bare name that the profile file does not have.
        if (named.moves && isBare && !isNamedAfterProfile && inPlace_) return;
        expectSame(profileFolder(profile), old, now, "an output of a profile");
        if (isOwn && (!isBare || isNamedAfterProfile)) expectInRoot(profileFolder(profile), now);
    }

    void checkDeck(const Profile& profile) {
        const bool hasNetlist =
            std::any_of(project_.netlists.begin(), project_.netlists.end(),
                        [&](const Netlist& netlist) { return netlist.schematic == profile.schematic; });
        const std::string own = profileFolder(profile);
        const auto fateOf = [&](const std::string& line, Fate& fate) {
            const struct {
                const char* directive;
                const char* mark;
                const char* otherMark;
            } directives[] = {
                {".INC", ".inc", ".INC"}, {".STMLIB", ".stl", ".STL"}, {".LIB", ".lib", ".LIB"}};
            for (const auto& one : directives) {
                if (!beginsWithIgnoringCase(line, one.directive)) continue;
                std::string named;
                if (!quoted(line, named)) return false;
                if (std::string(one.directive) == ".INC" &&
                    (contains(named, ".net") || contains(named, ".NET"))) {
                    fate.kind = Fate::becomes;
                    fate.text = ".INC \"../" + profile.schematic + ".net\"";
                    if (hasNetlist) {
                        EXPECT_NE(markAt(own, "../" + profile.schematic + ".net"), "");
                    }
                    return true;
                }
                if (!contains(named, one.mark) && !contains(named, one.otherMark)) return false;
                fate.kind = Fate::referenceIn;
                fate.text = std::string(one.directive) + " ";
                fate.check = [&, named](const std::string& now) { checkInclude(profile, named, now); };
                return true;
            }
            return true;
        };
        checkLines(own + "/" + profile.name + ".cir", profile.deck, fateOf);
    }

    void checkInclude(const Profile& profile, const std::string& old, const std::string& now) {
        const Target named = target(old);
        if (named.mark.empty() || looksAbsolute(old)) return;
        if (inPlace_ && named.moves && goesUpOrFromRoot(old)) return;
        const std::string name = lowerCased(nameOf(old));
        const bool isNamedLikeADesignFile =
            std::any_of(kDesignLevel.begin(), kDesignLevel.end(), [&](const std::string& extension) {
                return name == lowerCased(project_.designBase + "." + extension);
            });
        if (isNamedLikeADesignFile && hasFolder(old) && !goesUpOrFromRoot(old)) {
            EXPECT_NE(markAt(profileFolder(profile), now), "") << old << " became " << now;
            return;
        }
        expectSame(profileFolder(profile), old, now, "an include of a deck");
        if (named.moves && !goesUpOrFromRoot(old)) expectInRoot(profileFolder(profile), now);
    }

    void checkNetlist(const Netlist& netlist) const {
        const auto fateOf = [&](const std::string& line, Fate& fate) {
            std::string named;
            if (!beginsWithIgnoringCase(line, ".INC") || !quoted(line, named)) return true;
            if (!contains(named, ".par") && !contains(named, ".PAR")) return false;
            fate.kind = Fate::becomes;
            fate.text = ".INC \"../" + netlist.schematic + ".par\"";
            return true;
        };
        checkLines(root_ + "/" + netlist.schematic + "/" + netlist.schematic + ".net", netlist.lines, fateOf);
    }

    // The profile that a profile file's name before its first "." stands for; null when there is none.
    const Profile* profileOf(const std::string& name) const {
        const std::string base = lowerCased(name.substr(0, name.find('.')));
        for (const Profile& profile : project_.profiles) {
            if (lowerCased(profile.fileBase) == base) return &profile;
        }
        return nullptr;
    }

    // What such a profile is called in files of a schematic.
    static std::string newNameOf(const Profile& profile) { return profile.hasFile ? profile.name : ""; }

    void checkProfileName(const std::string& schematic, const std::string& old, const std::string& now,
                          const std::string& what) {
        const Profile* profile = profileOf(old);
        if (profile == nullptr || !profile->hasFile || profile->isOrphan) return;
        if (profile->schematic == schematic) expectSame(root_ + "/" + schematic, old, now, what);
    }

    // What stands behind the second quote of a line.
    static std::string behindValue(const std::string& line) {
        return line.substr(line.find('"', line.find('"') + 1) + 1);
    }

    void checkOptimizer(const Optimizer& optimizer) {
        const auto fateOf = [&](const std::string& line, Fate& fate) {
            const bool isSimulation = beginsWithIgnoringCase(line, "sim");
            if (!isSimulation && !beginsWithIgnoringCase(line, "ext")) return true;
            std::string named;
            if (!quoted(line, named)) return false;
            if (named.empty()) return true;
            if (!contains(named, isSimulation ? ".sim" : ".mdp")) return false;
            if (isSimulation && profileOf(named) == nullptr) return true;
            fate.kind = Fate::referenceIn;
            fate.text = isSimulation ? "sim " : "ext ";
            fate.behind = behindValue(line);
            fate.endForNone = "";
            fate.check = [&, isSimulation, named](const std::string& now) {
                if (!isSimulation) {
                    checkDesignProfile(optimizer.schematic, named, now);
                    return;
                }
                EXPECT_EQ(now, newNameOf(*profileOf(named)) + ".sim") << named;
                checkProfileName(optimizer.schematic, named, now, "a profile of an optimizer file");
            };
            return true;
        };
        const std::string stem = root_ + "/" + optimizer.schematic + "/" + optimizer.schematic;
        checkLines(stem + ".opt", optimizer.lines, fateOf);
    }

    void checkDesignProfile(const std::string& schematic, const std::string& old, const std::string& now) {
        const Target named = target(old);
        if (named.mark.empty() || looksAbsolute(old)) return;
        const bool isBare = old == nameOf(old);
        if (isBare) {
            EXPECT_EQ(now, old);
            const auto [taker, isFirst] = takenBy_.try_emplace(lowerCased(old), schematic);
            if (taker->second != schematic) return;
        } else if (inPlace_ && named.moves) {
            return;
        }
        expectSame(root_ + "/" + schematic, old, now, "a design profile of an optimizer file");
        if (isBare) expectInRoot(root_ + "/" + schematic, now);
    }

    void checkAnalysis(const Analysis& analysis) {
        const std::string folder = root_ + "/" + analysis.schematic;
        std::string expected = "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n    (\"Note\"\t\"" +
                               analysis.mark + "\")\n    (\"Profiles\"\n";
        for (std::size_t i = 0; i < analysis.keys.size(); ++i) {
            const Profile* profile = profileOf(analysis.keys[i]);
            expected += "        (\"" + (profile != nullptr ? newNameOf(*profile) : analysis.keys[i]) +
                        "\"\t\"" + std::to_string(i) + "\")\n";
        }
        expected += "    )\n    (\"" + analysis.section + "\"\n        (\"MEASUREMENTS\"\n";
        for (const std::string& old : analysis.measured) {
            const Profile* profile = profileOf(old);
            const std::string now = profile != nullptr ? newNameOf(*profile) + ".sim" : old;
            const std::string named = "                (\"Profile\"\t\"" + now + "\")\n";
            const std::string goal = "                (\"Goal\"\t\"1\")\n";
            expected += "            (\"m\"\n" + (profile != nullptr ? goal + named : named + goal) +
                        "            )\n";
            checkProfileName(analysis.schematic, old, now, "a profile of an analysis profile");
        }
        expected += "        )\n    )\n)\n";
        EXPECT_EQ(tests::readFile(folder + "/" + analysis.schematic + ".aap"), expected);
    }

    void checkProjectFile() {
        const std::string text = tests::readFile(findFile(destination_, project_.projectName + ".opj"));
        const Json project = Json::parse(text, nullptr, false);
        ASSERT_TRUE(project.is_object()) << text;
        const auto folderOf = [](const Json& place, const std::string& name) {
            for (const Json& folder : place["folders"]) {
                if (folder["name"] == name) return folder;
            }
            return Json();
        };
        for (const Entry& entry : project_.entries) {
            Json folder = folderOf(project, entry.folder.front());
            if (entry.folder.size() > 1) folder = folderOf(folder, entry.folder.back());
            const std::string now = folder["files"].at(entry.index)["path"];
            const std::string old = here(entry.path);
            if (target(old).mark.empty() || looksAbsolute(old)) continue;
            if (entry.folder.back() == "Library" && entry.folder.size() > 1 &&
                !lowerCased(old).ends_with(".olb"))
                continue;
            expectSame(destination_, old, now, "an entry of the project");
            if (target(old).moves) expectInRoot(destination_, now);
            if (lowerCased(old).ends_with(".dsn")) {
                const std::string design = findFile(destination_, project_.designBase + ".dsn");
                EXPECT_TRUE(fs::equivalent(findFile(destination_, now), design)) << now;
            }
        }
        const Json& simulation = project["simulationProfiles"];
        std::set<std::string> carried;
        for (const Json& profile : simulation["profiles"]) {
            const std::string path = profile["path"];
            EXPECT_NE(markAt(destination_, path), "") << path;
            carried.insert(markAt(destination_, path));
        }
        for (const Profile& profile : project_.profiles) {
            if (profile.isOrphan || !profile.hasFile) continue;
            EXPECT_EQ(carried.count(target(profile.registered).mark), 1U)
                << profile.registered << " is not carried";
            if (profile.registered == project_.active) {
                expectSame(destination_, profile.registered, simulation["active"], "the active profile");
            }
        }
    }

    // No file is lost, and none is touched that should not be.
    void checkFiles() const {
        const Tree after = tests::treeOf(folder_.path());
        std::set<std::string> newMarks;
        const std::string rootName =
            fs::path(root_).lexically_relative(folder_.path()).generic_string() + "/";
        for (const auto& [path, text] : after) {
            if (path.starts_with(rootName)) newMarks.insert(markOf(text));
        }
        for (const auto& [path, text] : before_) {
            if (project_.moves(path)) {
                EXPECT_EQ(newMarks.count(markOf(text)), 1U) << path << " has not been carried";
            }
            const auto now = after.find(path);
            if (now != after.end() && now->second == text) continue;
            const bool isProject = path == project_.projectFile();
            EXPECT_TRUE(inPlace_) << path << " has been touched";
            if (isProject) {
                EXPECT_TRUE(now != after.end() && markOf(now->second) == markOf(text))
                    << "the project file is lost";
                continue;
            }
            EXPECT_EQ(now, after.end()) << path << " has been changed";
            EXPECT_EQ(newMarks.count(markOf(text)), 1U) << path << " is lost";
        }
        // New files are below the destination, in place even below the simulation root or beside the project.
        const std::string design = project_.projectFolder + "/" + project_.designBase;
        const std::string destination =
            fs::path(destination_).lexically_relative(folder_.path()).generic_string() + "/";
        for (const auto& [path, text] : after) {
            if (before_.count(path) != 0) continue;
            const bool isDesign = lowerCased(path) == lowerCased(design + ".dsn") ||
                                  lowerCased(path) == lowerCased(design + ".dbk");
            EXPECT_TRUE(inPlace_ ? path.starts_with(rootName) || isDesign : path.starts_with(destination))
                << path << " is new";
        }
    }

    const RandomProject& project_;
    bool inPlace_ = false;
    TestFolder folder_;
    std::string projectDir_;
    std::string destination_;
    std::string root_;
    Tree before_;
    std::map<std::string, Target> targets_;
    std::map<std::string, std::string> takenBy_;  // the schematic that a design profile went with
    std::map<std::string, int> kept_;
};

void tryProjects(bool inPlace) {
    const tests::FoldersInMemory inMemory;
    std::map<std::string, int> kept;
    for (std::uint32_t seed = 1; seed <= kProjects; ++seed) {
        const RandomProject project(seed);
        Trial trial(project, inPlace);
        trial.run();
        if (testing::Test::HasFailure()) {
            FAIL() << "with the seed " << seed;
        }
        for (const auto& [what, count] : trial.kept()) kept[what] += count;
    }
    // The projects do have what is to be kept.
    for (const char* what :
         {"a listed file of a profile", "an output of a profile", "an include of a deck",
          "an entry of the project", "the active profile", "a profile of an optimizer file",
          "a design profile of an optimizer file", "a profile of an analysis profile"}) {
        EXPECT_GE(kept[what], kProjects / 3) << what;
    }
}

TEST(AnyProject, KeepsItsReferencesInAnotherFolder) {
    tryProjects(false);
}

TEST(AnyProject, KeepsItsReferencesInPlace) {
    tryProjects(true);
}

}  // namespace
