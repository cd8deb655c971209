// What holds for every conversion of a Tarnet library, tried on libraries made up at random: each include,
// library and numbered entry that named a file before names one after it, nothing outside of the new views is
// touched, line ends are kept, and a second run changes nothing. A failure tells the seed, which makes the
// same library again.
//
// References that are not held to that, because the conversion gives them up on purpose or cannot know:
// - All: a relative path whose third character is a slash ("ab/x.lib") counts as absolute.
// - Decks: a directive that does not name a file by the ending that belongs to it, in lower or upper case
//   throughout, is left out. An include of any netlist becomes one of the cell's own. A path is looked up by
//   its file name alone, so it may come to name another file of that name, which is a file all the same.
// - Netlists: an include gets the fixed name of the parameter file or is left out.
// - "+" lines above 7, and those with an absolute path, stay as they are.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/TarnetLibrary.h"
#include "support/foldersInMemory.h"

namespace {

using namespace tests;
namespace fs = std::filesystem;

// Each takes its time on Windows.
constexpr std::uint32_t kLibraries = tests::kOnWindows ? 50 : 150;

// --- a library made up at random ---

struct Line {
    std::string text;
    std::string end;
};

class RandomLibrary {
public:
    explicit RandomLibrary(std::uint32_t seed) : random_(seed) {
        const std::uint32_t count = 1 + below(4);
        for (std::uint32_t i = 0; i < count; ++i) makeCell(newName());
        if (chance(50)) add("shared.lib", "of the library");
        if (chance(50)) add("shared.inc", "of the library");
        if (chance(30)) add("no.cell/cfg_analog/master.tag", "");
        if (chance(30)) add("README", "mine");
        if (chance(30)) add("bare/notes.txt", "mine");
    }

    // By paths in the library. Texts hold "@" where the path of the library goes.
    std::map<std::string, std::string> files;
    // Cells that a conversion has to convert.
    std::vector<std::string> cells;

private:
    std::uint32_t below(std::uint32_t count) { return static_cast<std::uint32_t>(random_() % count); }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    template <class Text>
    std::string oneOf(const std::vector<Text>& list) {
        return list[below(static_cast<std::uint32_t>(list.size()))];
    }

    // Names of three characters at least, so that no path has its third one behind a folder by chance.
    std::string newName() {
        static const std::vector<std::string> kPieces = {"amp",
                                                         "Ctl",
                                                         "P",
                                                         "q1",
                                                         "W-",
                                                         tests::kOnWindows ? "Oil" : "\xC3\x96l",
                                                         " x",
                                                         "7",
                                                         "_",
                                                         "zz",
                                                         tests::kOnWindows ? "ae" : "\xE4"};
        for (;;) {
            std::string name = "n";
            for (std::uint32_t i = 0, count = 2 + below(3); i < count; ++i) name += oneOf(kPieces);
            if (taken_.insert(lowerCase(name)).second) return name;
        }
    }

    std::string recased(std::string text) {
        for (char& byte : text) {
            const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
            if (isLetter && chance(30)) byte = static_cast<char>(byte ^ 0x20);
        }
        return text;
    }

    // Not where a name in another case is.
    void add(const std::string& path, const std::string& text) {
        if (paths_.insert(lowerCase(path)).second) files[path] = text;
    }

    std::string noise() {
        std::string text = "* " + std::to_string(++texts_) + "\n";
        for (std::uint32_t i = 0, count = below(60); i < count; ++i) text += static_cast<char>(below(256));
        return replaced(text, "@", "");
    }

    void makeCell(const std::string& cell) {
        const std::string cfg = cell + "/cfg_analog/";
        add(cfg + "master.tag", "tag");
        if (chance(15)) {
            add(cell + "/tvx_sim_1/master.tag", cell + ".net");
            add(cell + "/tvx_sim_1/" + oneOf(std::vector<std::string>{"a.lib", "profiles/p.sim"}), noise());
        } else {
            cells.push_back(cell);
            if (chance(10)) add(cell + "/tvx_sim_1/left.over", noise());
        }
        bases_ = {"flat", "Models", "deep", "net list"};
        for (const char* extension : {"inc", "lib", "stl"}) {
            for (const std::string& base : bases_) {
                const std::string name = base + "." + extension;
                if (chance(50)) add(cfg + (chance(30) ? recased(name) : name), noise());
                if (chance(30)) add(cfg + "sub dir/" + name, noise());
                if (chance(30)) add(cell + "/" + name, noise());
                if (chance(20)) add(cell + "/other/" + name, noise());
            }
        }
        for (const char* name : {"x.prp", "x.als", "y.ALS", "x.par", "x.opt.log", "x.obk", "x.txt", "a.b.c",
                                 "x-default.mrk", "expand.cfg", "readme", "ends."}) {
            if (chance(30)) add(cfg + name, noise());
        }
        if (chance(50)) add(cfg + cell + "-" + cell + ".prp", noise());
        if (chance(50)) add(cfg + cell + ".opj", noise());
        if (chance(70)) add(cfg + oneOf(std::vector<std::string>{"x.net", "y.Net"}), netlist());
        if (chance(50)) add(cfg + "x.opt", optimizerFile());
        for (const char* base : {"corners", "limits"}) {
            if (chance(40)) add(cfg + base + ".mdp", noise());
        }
        std::set<std::string> names;
        for (std::uint32_t i = 0, count = below(4); i < count; ++i) {
            const std::string profile = newName();
            if (chance(80)) add(cfg + profile + (chance(20) ? ".SIM" : ".sim"), profileFile(profile));
            if (chance(80)) add(cfg + (chance(20) ? recased(profile) : profile) + ".sim.cir", deck());
            for (const char* extension :
                 {"dat", "csd", "out", "mc.out", "sim.1op", "sim.mif", "mrk", "prb"}) {
                if (chance(30)) add(cfg + profile + "." + extension, noise());
            }
        }
    }

    // A path as a user would write it in the old view, whether something is there or not.
    std::string reference(const std::string& extension) {
        static const std::vector<std::string> kFolders = {
            "",    "",          "./",     "sub dir/",    "./sub dir/", "nowhere/",
            "../", "../other/", "../../", "../nowhere/", "@/",         "ab/"};
        const std::string folder = oneOf(kFolders);
        std::string path = folder + oneOf(bases_) + "." + extension;
        if (folder == "../../" || folder == "@/") path = folder + "shared." + extension;
        if (chance(25)) {
            const std::size_t dot = path.rfind('.');
            const std::size_t name = folder == "@/" ? 2 : 0;
            path = path.substr(0, name) + recased(path.substr(name, dot - name)) + path.substr(dot);
        }
        if (chance(10)) {
            const std::size_t dot = path.rfind('.');
            for (std::size_t i = dot; i < path.size(); ++i)
                path[i] = static_cast<char>(std::toupper(path[i]));
        }
        if (folder != "@/" && chance(40)) std::replace(path.begin(), path.end(), '/', '\\');
        return path;
    }

    // Lines with comments between them and ends to all of them.
    std::string dressed(const std::vector<std::string>& lines) {
        const std::uint32_t style = below(3);
        std::string text;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const bool isLast = i + 1 == lines.size();
            text += lines[i];
            if (!isLast || chance(75)) text += style == 1 || (style == 2 && chance(50)) ? "\r\n" : "\n";
            if (!isLast && chance(20)) text += "* " + std::string(below(1500), 'x') + "\n";
        }
        return text;
    }

    std::string deck() {
        std::vector<std::string> lines = {"* deck"};
        for (std::uint32_t i = 0, count = below(9); i < count; ++i) {
            const std::string directive =
                oneOf(std::vector<std::string>{".INC", ".LIB", ".STMLIB", ".inc", ".Lib"});
            const std::string lower = lowerCase(directive);
            std::string value = reference(lower == ".inc" ? "inc" : lower == ".lib" ? "lib" : "stl");
            if (lower == ".inc" && chance(30)) value = chance(70) ? "x.net" : "..\\any.NET";
            if (chance(5)) value = reference("txt");
            lines.push_back(directive + " \"" + value + "\"" + (chance(20) ? " ; \"x\"" : ""));
        }
        lines.emplace_back(".END");
        return dressed(lines);
    }

    std::string netlist() {
        std::vector<std::string> lines = {"* netlist"};
        for (std::uint32_t i = 0, count = below(5); i < count; ++i) {
            lines.push_back(".INC \"" + reference(oneOf(std::vector<std::string>{"par", "lib", "inc"})) +
                            "\"");
            if (chance(30)) lines.push_back(".LIB \"" + reference("lib") + "\"");
        }
        return dressed(lines);
    }

    std::string optimizerFile() {
        std::vector<std::string> lines = {"goal 1"};
        for (std::uint32_t i = 0, count = below(4); i < count; ++i) {
            lines.push_back("ext \"" +
                            oneOf(std::vector<std::string>{"corners.mdp", "limits.mdp", "absent.mdp"}) +
                            "\" 1");
        }
        return dressed(lines);
    }

    std::string profileFile(const std::string& profile) {
        std::vector<std::string> lines = {"ProfileName= \"" + profile + "\" "};
        if (chance(70)) lines.push_back("DesignFile= \"x.dsn\" ");
        if (chance(70)) lines.push_back("RootSchematics= \"x\" ");
        if (chance(70)) lines.push_back("NetlistFile= \"" + profile + ".sim.cir\" ");
        if (chance(70)) lines.push_back("DataFile= \"" + profile + ".dat\" ");
        for (std::uint32_t i = 0, count = below(6); i < count; ++i) {
            const std::string value = reference(oneOf(std::vector<std::string>{"lib", "inc", "stl"}));
            lines.push_back("+" + std::to_string(1 + below(9)) + " \"" + value + "\" ");
        }
        return dressed(lines);
    }

    std::mt19937 random_;
    std::set<std::string> taken_;
    std::set<std::string> paths_;
    std::vector<std::string> bases_;
    int texts_ = 0;
};

// --- looking at it ---

std::string slashed(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

std::vector<Line> linesOf(const std::string& text) {
    std::vector<Line> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t newline = text.find('\n', begin);
        const std::size_t stop = newline == std::string::npos ? text.size() : newline + 1;
        std::string line = text.substr(begin, stop - begin);
        const std::string end = line.ends_with("\r\n") ? "\r\n" : line.ends_with("\n") ? "\n" : "";
        lines.push_back({line.substr(0, line.size() - end.size()), end});
        begin = stop;
    }
    return lines;
}

std::string quotedValue(const std::string& line) {
    const std::size_t open = line.find('"');
    const std::size_t close = open == std::string::npos ? open : line.find('"', open + 1);
    return close == std::string::npos ? std::string() : line.substr(open + 1, close - open - 1);
}

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
        } else if (fs::exists(found / name)) {
            found /= name;
        } else {
            if (!fs::is_directory(found)) return {};
            std::vector<fs::path> alike;
            for (const auto& entry : fs::directory_iterator(found)) {
                if (lowerCase(entry.path().filename().generic_string()) == lowerCase(name))
                    alike.push_back(entry.path());
            }
            if (alike.size() != 1) return {};
            found = alike.front();
        }
    }
    return fs::is_regular_file(found) ? found.generic_string() : std::string();
}

bool looksAbsolute(const std::string& reference) {
    const std::string path = slashed(reference);
    return path.size() > 2 && path[2] == '/' && !path.starts_with("./") && !path.starts_with("../");
}

bool endsAs(const std::string& reference, const std::string& extension) {
    std::string upper = extension;
    for (char& byte : upper) byte = static_cast<char>(std::toupper(byte));
    return reference.ends_with(extension) || reference.ends_with(upper);
}

class Trial {
public:
    explicit Trial(const RandomLibrary& made) : made_(made), dir_(folder_.path("site/lib")) {
        for (const auto& [path, text] : made.files) {
            folder_.write("site/lib/" + path, replaced(text, "@", dir_));
        }
    }

    void run() {
        const Tree before = treeOf(folder_.path());
        ASSERT_EQ(convert(), 0);
        ASSERT_EQ(lastError(), LastError());
        checkOutside(before);
        for (const std::string& cell : made_.cells) checkCell(cell);
        checkSecondRun();
    }

    // How many references of each kind have been followed.
    std::map<std::string, int> kept;

private:
    int convert() const {
        forgetLastError();
        tvxconv::TarnetProjectConverter converter(dir_.c_str());
        return converter.convert(0, std::string());
    }

    void checkOutside(const Tree& before) const {
        Tree after = treeOf(folder_.path());
        for (const auto& [name, text] : before) {
            ASSERT_EQ(after.count(name), 1U) << name;
            EXPECT_EQ(after[name], text) << name;
            after.erase(name);
        }
        for (const auto& [name, text] : after) {
            bool isNew = false;
            for (const std::string& cell : made_.cells) {
                isNew = isNew || name.starts_with("site/lib/" + cell + "/tvx_sim_1/");
            }
            EXPECT_TRUE(isNew) << name;
        }
    }

    void checkCell(const std::string& cell) {
        const std::string cfg = dir_ + "/" + cell + "/cfg_analog";
        const std::string view = dir_ + "/" + cell + "/tvx_sim_1";
        EXPECT_EQ(readFile(view + "/master.tag"), cell + ".net");
        for (const auto& entry : fs::directory_iterator(cfg)) {
            const std::string name = entry.path().filename().generic_string();
            const std::string lower = lowerCase(name);
            const std::string profile = name.substr(0, name.find('.'));
            if (lower.ends_with(".sim.cir")) checkDeck(cfg, view, profile, entry.path().generic_string());
            if (lower.ends_with(".sim"))
                checkProfile(cfg, view, name, profile, entry.path().generic_string());
        }
    }

    void checkDeck(const std::string& cfg, const std::string& view, const std::string& profile,
                   const std::string& oldPath) {
        const std::string folder = findFolder(view + "/profiles", profile);
        const std::vector<Line> oldLines = linesOf(readFile(oldPath));
        const std::vector<Line> newLines = linesOf(readFile(findFile(folder, profile + ".cir")));
        std::size_t at = 0;
        for (const Line& old : oldLines) {
            const std::string key = lowerCase(old.text.substr(0, old.text.find(' ')));
            const std::string value = quotedValue(old.text);
            const std::string extension = key == ".inc" ? ".inc" : key == ".lib" ? ".lib" : ".stl";
            const bool isDirective = key == ".inc" || key == ".lib" || key == ".stmlib";
            const bool isNetlist = key == ".inc" && endsAs(value, ".net");
            if (isDirective && !isNetlist && !endsAs(value, extension)) continue;  // left out
            ASSERT_LT(at, newLines.size()) << oldPath;
            const Line& line = newLines[at++];
            if (line.text == old.text) {
                EXPECT_EQ(line.end, old.end) << old.text;
            } else {
                EXPECT_EQ(line.end, old.end.empty() ? "\n" : old.end) << old.text;
            }
            if (!isDirective) {
                EXPECT_EQ(line.text, old.text);
            } else if (isNetlist) {
                EXPECT_EQ(quotedValue(line.text),
                          "../../" + fs::path(cfg).parent_path().filename().string() + ".net");
                ++kept["netlists"];
            } else if (!looksAbsolute(value) && !findFile(cfg, value).empty()) {
                EXPECT_NE(findFile(folder, quotedValue(line.text)), "")
                    << old.text << " becomes " << line.text;
                ++kept["references"];
            }
        }
        EXPECT_EQ(at, newLines.size()) << oldPath;
    }

    void checkProfile(const std::string& cfg, const std::string& view, const std::string& name,
                      const std::string& profile, const std::string& oldPath) {
        const std::vector<Line> oldLines = linesOf(readFile(oldPath));
        const std::vector<Line> newLines = linesOf(readFile(findFile(view + "/profiles", name)));
        const std::string folder = findFolder(view + "/profiles", profile);
        std::vector<std::string> newEntries;
        for (const Line& line : newLines) {
            if (line.text.starts_with("+")) newEntries.push_back(line.text);
        }
        std::size_t at = 0;
        for (const Line& old : oldLines) {
            if (!old.text.starts_with("+")) continue;
            ASSERT_LT(at, newEntries.size()) << oldPath;
            const std::string value = quotedValue(old.text);
            const std::string newValue = quotedValue(newEntries[at++]);
            const std::string file = findFile(cfg, value);
            const bool isMoved =
                old.text[1] < '8' && !file.empty() && !looksAbsolute(value) && !value.starts_with("/");
            if (isMoved) {
                EXPECT_EQ(newValue.find_first_of("/\\"), std::string::npos) << old.text;
                EXPECT_NE(findFile(folder, newValue), "") << old.text;
                ++kept["entries"];
            } else {
                EXPECT_EQ(newValue, value);
            }
        }
        EXPECT_EQ(at, newEntries.size()) << oldPath;
    }

    static std::string findFolder(const std::string& parent, const std::string& name) {
        for (const auto& entry : fs::directory_iterator(parent)) {
            if (lowerCase(entry.path().filename().generic_string()) == lowerCase(name))
                return entry.path().generic_string();
        }
        ADD_FAILURE() << "no folder " << name << " in " << parent;
        return parent;
    }

    std::map<std::string, fs::file_time_type> times() const {
        std::map<std::string, fs::file_time_type> result;
        for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
            result[entry.path().generic_string()] = entry.last_write_time();
        }
        return result;
    }

    void checkSecondRun() const {
        const Tree before = treeOf(folder_.path());
        const auto timesBefore = times();
        EXPECT_EQ(convert(), 0);
        EXPECT_TRUE(treeOf(folder_.path()) == before) << "the second run changes a file";
        EXPECT_TRUE(times() == timesBefore) << "the second run touches a file";
    }

    const RandomLibrary& made_;
    const TestFolder folder_;
    const std::string dir_;
};

TEST(TarnetProperty, EveryConversionKeepsReferencesAndOldFiles) {
    const FoldersInMemory inMemory;
    std::map<std::string, int> kept;
    for (std::uint32_t seed = 0; seed < kLibraries && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const RandomLibrary library(seed);
        Trial trial(library);
        trial.run();
        for (const auto& [kind, count] : trial.kept) kept[kind] += count;
    }
    if (HasFailure()) return;
    // The libraries have something to hold the conversion to.
    EXPECT_GT(kept["references"], tests::kOnWindows ? 60 : 200);
    EXPECT_GT(kept["netlists"], tests::kOnWindows ? 25 : 80);
    EXPECT_GT(kept["entries"], tests::kOnWindows ? 30 : 100);
}

}  // namespace
