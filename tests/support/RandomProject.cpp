#include "support/RandomProject.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace randomproject {
namespace {

using Json = nlohmann::ordered_json;

// No UTF-8, so nothing for the project file.
const std::string kLatin = tests::kOnWindows ? "Groesse"
                                             : "Gr\xF6\xDF"
                                               "e";

std::string joined(const std::vector<Line>& lines) {
    std::string text;
    for (const Line& line : lines) text += line.text + line.end;
    return text;
}

}  // namespace

const std::vector<std::string> kDesignLevel = {"lib", "prp", "olb", "err", "ind", "stl", "inc", "obk"};
const std::vector<std::string> kProfileLevel = {
    "csd",   "dat",     "opt.dat", "mc.dat",   "sens.dat", "opt.csd", "mc.csd",  "sens.csd", "out",
    "out.1", "opt.out", "mc.out",  "sens.out", "prb",      "mrk",     "sim.1op", "sim.cir",  "sim.mif"};
const std::vector<std::string> kSchematicLevel = {"als",       "par",      "prp",      "opt.log",
                                                  "monte.log", "sens.log", "smoke.log"};

std::string lowerCased(std::string text) {
    for (char& byte : text) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    }
    return text;
}

std::string slashed(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

bool beginsWithIgnoringCase(const std::string& text, const std::string& key) {
    return lowerCased(text.substr(0, key.size())) == lowerCased(key);
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::string nameOf(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

std::string markOf(const std::string& text) {
    const std::size_t begin = text.find("mark#");
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find('#', begin + 5) + 1 - begin);
}

std::vector<Line> linesOf(const std::string& text) {
    std::vector<Line> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t newline = text.find('\n', begin);
        const std::size_t stop = newline == std::string::npos ? text.size() : newline + 1;
        std::string line = text.substr(begin, stop - begin);
        std::string end;
        if (line.ends_with("\r\n")) {
            end = "\r\n";
        } else if (line.ends_with("\n")) {
            end = "\n";
        }
        lines.push_back({line.substr(0, line.size() - end.size()), end});
        begin = stop;
    }
    return lines;
}

RandomProject::RandomProject(std::uint32_t seed) : random_(seed) {
    makeNames();
    makeFiles();
    for (Profile& profile : profiles) makeProfile(profile);
    for (const std::string& schematic : schematics) {
        makeNetlist(schematic);
        makeOptimizer(schematic);
        makeAnalysis(schematic);
    }
    makeProjectFile();
}

// Three characters at least, so that no path has its third one behind a folder by chance.
std::string RandomProject::name() {
    static const std::string pieces[] = {"a",
                                         "B",
                                         "c",
                                         "X",
                                         "y",
                                         "7",
                                         "0",
                                         "-",
                                         "_",
                                         " ",
                                         tests::kOnWindows ? "ae" : "\xC3\xA4",
                                         tests::kOnWindows ? "ss" : "\xC3\x9F",
                                         "Q"};
    std::string text = oneOf(
        std::vector<std::string>{"amp", "Ctl", "P", "q1", "W-", tests::kOnWindows ? "Oil" : "\xC3\x96l"});
    const std::uint32_t length = 2 + below(6);
    for (std::uint32_t i = 0; i < length; ++i) text += oneOf(pieces);
    return text + oneOf(std::vector<std::string>{"1", "z", "K"});
}

std::string RandomProject::newName(std::set<std::string>& taken) {
    for (;;) {
        const std::string text = name();
        if (taken.insert(lowerCased(text)).second) return text;
    }
}

std::string RandomProject::recased(std::string text) {
    for (char& byte : text) {
        const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
        if (isLetter && chance(30)) byte = static_cast<char>(byte ^ 0x20);
    }
    return text;
}

std::string RandomProject::mark() {
    return "mark#" + std::to_string(++marks_) + "#";
}

// False when there is a file of that name, in whatever case.
bool RandomProject::add(const std::string& path, const std::string& text) {
    if (!paths_.insert(lowerCased(path)).second) return false;
    files[path] = text;
    return true;
}

std::string RandomProject::noise() {
    std::string text = "* " + mark() + "\n";
    const std::uint32_t length = below(60);
    for (std::uint32_t i = 0; i < length; ++i) text += static_cast<char>(below(256));
    return text;
}

bool RandomProject::addNoise(const std::string& path) {
    return add(path, noise());
}

void RandomProject::makeNames() {
    std::set<std::string> taken;
    projectFolder = "home/" + newName(taken);
    designBase = name();
    projectName = chance(70) ? designBase : name();
    designFolder = projectFolder;
    if (chance(15)) designFolder = "home/" + newName(taken);
    if (chance(10)) designFolder = projectFolder + "/" + newName(taken);
    std::set<std::string> schematicNames;
    for (std::uint32_t i = 0, count = 1 + below(3); i < count; ++i)
        schematics.push_back(newName(schematicNames));
    std::set<std::string> bases;
    for (std::uint32_t i = 0, count = below(5); i < count; ++i) {
        Profile profile;
        profile.isOrphan = chance(8);
        profile.schematic = profile.isOrphan ? newName(schematicNames) : oneOf(schematics);
        profile.name = name();
        profile.fileBase = chance(80) ? designBase + "-" + profile.schematic + "-" + profile.name : name();
        profile.hasFile = chance(92);
        profile.hasDeck = chance(80);
        const std::string key = lowerCased(profile.schematic) + "\n" + lowerCased(profile.name);
        if (!bases.insert(lowerCased(profile.fileBase)).second || !bases.insert(key).second) continue;
        profiles.push_back(profile);
    }
}

void RandomProject::makeFiles() {
    for (const std::string& extension : kDesignLevel) {
        const std::string path = projectFolder + "/" + designBase + "." + extension;
        if (!chance(60) || !addNoise(chance(30) ? projectFolder + "/" + recased(nameOf(path)) : path))
            continue;
        moved_.insert(lowerCased(path));
    }
    for (const char* extension : {"lib", "inc", "stl", "olb", "out", "dat", "csd", "txt", "par", "mdp"}) {
        const std::string end = std::string(".") + extension;
        if (chance(50)) addOther(projectFolder + "/Extra" + end);
        if (chance(30)) addOther(projectFolder + "/" + kLatin + end);
        if (chance(50)) addOther(projectFolder + "/Sub dir/deep" + end);
        if (chance(30)) addOther(projectFolder + "/Sub dir/" + designBase + end);
        if (chance(50)) addOther(projectFolder + "/ab/two" + end);
        if (chance(50)) addOther("home/shared parts/Common" + end);
        if (chance(30)) addOther("far/away" + end);
    }
    for (const Profile& profile : profiles) {
        for (const std::string& extension : kProfileLevel) {
            if (extension == "sim.cir" || !chance(35)) continue;
            const std::string path = outputPath(profile, extension);
            if (!addNoise(chance(20) ? projectFolder + "/" + recased(nameOf(path)) : path)) continue;
            if (extension == "out" || extension == "dat" || extension == "csd") others_.push_back(path);
        }
    }
    // A file of one profile may be called as one of another profile would be, too.
    for (const Profile& profile : profiles) {
        if (profile.isOrphan || !profile.hasFile) continue;
        for (const std::string& extension : kProfileLevel)
            moved_.insert(lowerCased(outputPath(profile, extension)));
        moved_.insert(lowerCased(projectFolder + "/" + profile.fileBase + ".sim"));
    }
    for (const std::string& schematic : schematics) {
        for (const std::string& extension : kSchematicLevel) {
            if (chance(40)) addOfSchematic(schematic, extension, noise());
        }
        if (chance(40)) addOfSchematic(schematic, "default.mrk", noise());
        moved_.insert(lowerCased(designFolder + "/" + designBase + "-" + schematic + ".net"));
    }
    addNoise(projectFolder + "/notes.txt");
    addNoise(projectFolder + "/" + designBase + "-of-nobody.out");
    Json design = {{"note", mark()}, {"rootSchematics", schematics}};
    add(designFolder + "/" + designBase + ".dsn", design.dump());
    if (chance(50)) addNoise(designFolder + "/" + designBase + ".dbk");
}

void RandomProject::addOther(const std::string& path) {
    if (addNoise(path)) others_.push_back(path);
}

std::string RandomProject::outputPath(const Profile& profile, const std::string& extension) const {
    return projectFolder + "/" + designBase + "-" + profile.schematic + "-" + profile.name + "." + extension;
}

std::string RandomProject::schematicPath(const std::string& schematic, const std::string& extension) const {
    const std::string stem = "/" + designBase + "-" + schematic;
    return extension == "default.mrk" ? projectFolder + stem + "-" + extension
                                      : designFolder + stem + "." + extension;
}

bool RandomProject::addOfSchematic(const std::string& schematic, const std::string& extension,
                                   const std::string& text) {
    const std::string path = schematicPath(schematic, extension);
    const std::string name = nameOf(path);
    const std::string folder = path.substr(0, path.size() - name.size());
    moved_.insert(lowerCased(path));
    return add(folder + (chance(20) ? recased(name) : name), text);
}

// The name of a profile file, mostly one of the project's.
std::string RandomProject::profileFile() {
    if (profiles.empty() || chance(15)) return "nobody.sim";
    const std::string name = oneOf(profiles).fileBase + ".sim";
    return chance(20) ? recased(name.substr(0, name.size() - 4)) + ".sim" : name;
}

// A path to a file of the ending, or to none, as a user would write it in the project's folder.
std::string RandomProject::reference(const std::string& extension, bool inJson) {
    std::vector<std::string> targets;
    for (const std::string& path : others_) {
        const bool isText = !contains(path, kLatin);
        if (path.ends_with("." + extension) && (isText || !inJson)) targets.push_back(path);
    }
    const std::string own = projectFolder + "/" + designBase + "." + extension;
    for (int i = 0; i < 3; ++i) targets.push_back(own);
    targets.push_back(projectFolder + "/nowhere." + extension);
    return spelled(oneOf(targets));
}

std::string RandomProject::spelled(const std::string& target) {
    std::string path;
    bool fromRoot = chance(15);
    if (target.starts_with(projectFolder + "/")) {
        path = target.substr(projectFolder.size() + 1);
        if (chance(40)) path = "./" + path;
    } else if (target.starts_with("home/")) {
        path = "../" + target.substr(5);
    } else {
        fromRoot = true;
    }
    if (fromRoot) path = "/" + target;
    if (chance(30)) {
        const std::size_t dot = path.rfind('.');
        path = recased(path.substr(0, dot)) + path.substr(dot);
    }
    if (chance(10)) path = recased(path);
    if (chance(10)) {
        const std::size_t dot = path.rfind('.');
        for (std::size_t i = dot; i < path.size(); ++i) {
            if (path[i] >= 'a' && path[i] <= 'z') path[i] = static_cast<char>(path[i] ^ 0x20);
        }
    }
    if (!fromRoot && chance(40)) std::replace(path.begin(), path.end(), '/', '\\');
    return fromRoot ? kHere + path : path;
}

// Comments between the lines, ends for all of them.
std::vector<Line> RandomProject::dressed(const std::vector<std::string>& lines) {
    std::vector<std::string> texts = {"* " + mark()};
    for (const std::string& line : lines) {
        texts.push_back(line);
        if (chance(30)) texts.push_back(comment());
    }
    const std::uint32_t style = below(3);
    std::vector<Line> result;
    for (const std::string& text : texts) {
        const bool windows = style == 1 || (style == 2 && chance(50));
        result.push_back({text, windows ? "\r\n" : "\n"});
    }
    if (chance(25)) result.back().end.clear();
    return result;
}

std::string RandomProject::comment() {
    if (chance(10)) return "* " + std::string(900 + below(1500), 'x');
    if (chance(10)) return std::string("* a\0b \xFF", 7);
    if (chance(10)) return "";
    return "* x" + std::string(below(80), ' ');
}

void RandomProject::makeProfile(Profile& profile) {
    std::vector<std::string> lines;
    const auto line = [&](const std::string& key, const std::string& value) {
        lines.push_back((chance(15) ? recased(key) : key) + (chance(80) ? "= " : " =") + "\"" + value +
                        "\" " + (chance(10) ? "\"x\"" : ""));
    };
    line("ProfileName", profile.name);
    line("RootSchematics", chance(20) ? recased(profile.schematic) : profile.schematic);
    if (chance(70)) line("DesignFile", designBase + ".dsn");
    if (chance(50)) line("ProjectFile", projectName + ".opj");
    if (chance(80)) line("ProfileFile", profile.fileBase + (chance(85) ? ".sim" : ".SIM"));
    if (chance(80)) line("NetlistFile", profile.fileBase + (chance(85) ? ".sim.cir" : ".cir"));
    for (const char* extension : {"dat", "csd", "out"}) {
        if (!chance(60)) continue;
        const std::string key = std::string(extension) == "out" ? "OutFile" : "DataFile";
        if (chance(10)) {
            lines.push_back(key + "=");
        } else if (chance(10)) {
            line(key, "");
        } else if (chance(50)) {
            const std::string file = profile.fileBase + "." + extension;
            line(key, chance(50) ? file : spelled(projectFolder + "/" + file));
        } else {
            line(key, reference(extension));
        }
    }
    std::shuffle(lines.begin(), lines.end(), random_);
    for (std::uint32_t i = 0, count = below(5); i < count; ++i) {
        const std::string value = reference(oneOf(std::vector<std::string>{"lib", "inc", "stl"}));
        lines.push_back("+" + std::to_string(1 + below(9)) + " \"" + value + "\" ");
    }
    if (chance(10)) lines.push_back("+ \"no number\"");
    if (profile.hasFile) {
        profile.lines = dressed(lines);
        const std::string file = profile.fileBase + ".sim";
        if (!add(projectFolder + "/" + (chance(20) ? recased(file) : file), joined(profile.lines))) {
            profile.hasFile = false;  // another profile's output has that name
        }
    }
    profile.registered = oneOf(std::vector<std::string>{".\\", "./", ""}) + profile.fileBase + ".sim";
    if (chance(20)) profile.registered = recased(profile.registered);
    if (profile.hasDeck) makeDeck(profile);
}

void RandomProject::makeDeck(Profile& profile) {
    std::vector<std::string> lines;
    for (std::uint32_t i = 0, count = below(8); i < count; ++i) {
        const std::string directive =
            oneOf(std::vector<std::string>{".INC", ".LIB", ".STMLIB", ".inc", ".Lib", ".stmlib", ".INCLUDE"});
        const std::string extension = beginsWithIgnoringCase(directive, ".inc")   ? "inc"
                                      : beginsWithIgnoringCase(directive, ".lib") ? "lib"
                                                                                  : "stl";
        std::string value = "\"" + reference(extension) + "\"";
        if (beginsWithIgnoringCase(directive, ".inc") && chance(25)) {
            value = "\"" + designBase + "-" + oneOf(schematics) + (chance(70) ? ".net" : ".NET") + "\"";
        }
        if (chance(5)) value = "without quotes";
        if (chance(5)) value = "\"" + reference("txt") + "\"";
        lines.push_back(directive + " " + value + (chance(20) ? " ; \"x\"" : ""));
    }
    lines.push_back(".END");
    profile.deck = dressed(lines);
    const std::string path = outputPath(profile, "sim.cir");
    profile.hasDeck =
        add(chance(20) ? projectFolder + "/" + recased(nameOf(path)) : path, joined(profile.deck));
}

void RandomProject::makeNetlist(const std::string& schematic) {
    if (!chance(75)) return;
    std::vector<std::string> lines;
    for (std::uint32_t i = 0, count = below(5); i < count; ++i) {
        const std::string value = reference(oneOf(std::vector<std::string>{"par", "lib", "inc"}));
        lines.push_back((chance(70) ? ".INC \"" : ".include \"") + value + "\"");
        if (chance(20)) lines.push_back(".INC without quotes");
        if (chance(30)) lines.push_back(".LIB \"" + reference("lib") + "\"");
    }
    Netlist netlist{schematic, dressed(lines)};
    const std::string name = designBase + "-" + schematic + ".net";
    if (add(designFolder + "/" + (chance(20) ? recased(name) : name), joined(netlist.lines))) {
        netlists.push_back(netlist);
    }
}

void RandomProject::makeOptimizer(const std::string& schematic) {
    if (!chance(60)) return;
    std::vector<std::string> lines;
    std::vector<std::string> followers;
    const auto line = [&](const std::string& key, const std::string& value) {
        const std::string word = chance(15) ? recased(key) + "x" : key;
        lines.push_back(word + (chance(80) ? " " : "") + "\"" + value + "\"" +
                        (chance(40) ? " \"x\" 1 " : ""));
    };
    for (std::uint32_t i = 0, count = below(6); i < count; ++i) {
        line("sim", chance(80) ? profileFile() : chance(50) ? "./" + profileFile() : "other.cir");
    }
    for (std::uint32_t i = 0, count = below(6); i < count; ++i) {
        std::string value = reference(chance(90) ? "mdp" : "txt");
        if (chance(40)) value = nameOf(value);
        if (value == nameOf(value) && contains(value, ".mdp")) followers.push_back(value);
        line("ext", value);
    }
    if (chance(20)) lines.push_back("sim \"\" 1");
    if (chance(20)) lines.push_back("ext \"\"");
    if (chance(20)) lines.push_back("SIMULATE all");
    if (chance(20)) lines.push_back("external");
    std::shuffle(lines.begin(), lines.end(), random_);
    const Optimizer optimizer{schematic, dressed(lines)};
    if (!addOfSchematic(schematic, "opt", joined(optimizer.lines))) return;
    optimizers.push_back(optimizer);
    for (const std::string& name : followers) moved_.insert(lowerCased(projectFolder + "/" + name));
}

void RandomProject::makeAnalysis(const std::string& schematic) {
    if (!chance(60)) return;
    Analysis analysis;
    analysis.schematic = schematic;
    analysis.mark = mark();
    analysis.section = oneOf(std::vector<std::string>{"Optimizer", "Sensitivity", "MonteCarlo"});
    const auto gap = [&] { return oneOf(std::vector<std::string>{" ", "\n  ", "\r\n\t"}); };
    std::string text = "(FILE_TYPE \"Advanced Analysis Profile\"" + gap() + "(Note \"" + analysis.mark +
                       "\")" + gap() + "(Profiles";
    for (std::uint32_t i = 0, count = below(5); i < count; ++i) {
        const std::string file = profileFile();
        analysis.keys.push_back(file.substr(0, file.size() - 4));
        text += gap() + "(\"" + analysis.keys.back() + "\" " + std::to_string(i) + ")";
    }
    text += ")" + gap() + "(" + analysis.section + " (MEASUREMENTS";
    for (std::uint32_t i = 0, count = below(5); i < count; ++i) {
        analysis.measured.push_back(profileFile());
        text += gap() + "(m" + gap() + "(Profile \"" + analysis.measured.back() + "\") (Goal 1))";
    }
    if (addOfSchematic(schematic, "aap", text + ")))" + (chance(70) ? "\n" : ""))) {
        analyses.push_back(analysis);
    }
}

void RandomProject::makeProjectFile() {
    Json project = {{"note", mark()}, {"folders", Json::array()}};
    const auto folder = [](const std::string& name) {
        return Json{{"name", name}, {"files", Json::array()}};
    };
    const auto put = [&](Json& place, const std::vector<std::string>& names, const std::string& path,
                         const std::string& type, bool isCarried) {
        if (isCarried) entries.push_back({names, place["files"].size(), path});
        place["files"].push_back({{"name", nameOf(path)}, {"path", path}, {"type", type}});
    };
    const auto anything = [&] {
        static const std::string extensions[] = {"lib", "inc", "stl", "olb", "txt", "out", "mdp"};
        static const std::string schematicLevel[] = {"opt", "aap", "prp", "par", "default.mrk", "als"};
        if (chance(30) && !profiles.empty()) {
            return spelled(outputPath(oneOf(profiles), oneOf(kProfileLevel)));
        }
        if (chance(30)) return spelled(schematicPath(oneOf(schematics), oneOf(schematicLevel)));
        return reference(oneOf(extensions), true);
    };

    Json design = folder("Design Resources");
    put(design, {"Design Resources"}, spelledDesign(), "Schematic Design", true);
    if (chance(40)) put(design, {"Design Resources"}, reference("txt", true), "Document", false);
    design["folders"] = Json::array({folder("Library")});
    for (std::uint32_t i = 0, count = below(3); i < count; ++i) {
        const std::string path = reference("olb", true);
        const bool isLibrary = chance(80);
        put(design["folders"][0], {"Design Resources", "Library"}, path,
            isLibrary ? "Schematic Library" : "Other", isLibrary);
    }
    project["folders"].push_back(design);

    Json simulator = folder("Tevrix Resources");
    for (std::uint32_t i = 0, count = below(3); i < count; ++i) {
        put(simulator, {"Tevrix Resources"}, anything(), oneOf(std::vector<std::string>{"Any", "Other"}),
            true);
    }
    simulator["folders"] = Json::array();
    const char* const subFolders[][2] = {
        {"Model Libraries", "lib"}, {"Stimulus Files", "stl"}, {"Include Files", "inc"}};
    for (const auto& [subFolder, extension] : subFolders) {
        Json place = folder(subFolder);
        for (std::uint32_t i = 0, count = below(4); i < count; ++i) {
            const bool isLibrary = chance(80);
            put(place, {"Tevrix Resources", subFolder}, reference(extension, true),
                isLibrary ? "TevrixLibrary" : "Other", isLibrary);
        }
        simulator["folders"].push_back(place);
    }
    project["folders"].push_back(simulator);

    Json simulation = folder("Simulation Resources");
    simulation["folders"] = Json::array({folder("Indesign")});
    for (std::uint32_t i = 0, count = below(3); i < count; ++i) {
        put(simulation["folders"][0], {"Simulation Resources", "Indesign"}, anything(), "Index", true);
    }
    project["folders"].push_back(simulation);

    for (const char* name : {"Outputs", "Translator", "Library", "Of the user's own"}) {
        if (!chance(70)) continue;
        Json place = folder(name);
        for (std::uint32_t i = 0, count = below(5); i < count; ++i) {
            put(place, {name}, anything(), oneOf(std::vector<std::string>{"Report", "Data", "REPORT"}),
                std::string(name) != "Of the user's own");
        }
        if (std::string(name) == "Outputs") {
            for (const Netlist& netlist : netlists) {
                put(place, {name},
                    spelled(designFolder + "/" + designBase + "-" + netlist.schematic + ".net"), "Report",
                    true);
            }
        }
        project["folders"].push_back(place);
    }
    std::shuffle(project["folders"].begin(), project["folders"].end(), random_);

    Json registered = Json::array();
    for (const Profile& profile : profiles) {
        registered.push_back(
            {{"path", profile.registered}, {"name", profile.name}, {"schematic", profile.schematic}});
    }
    if (!profiles.empty()) active = oneOf(profiles).registered;
    project["simulationProfiles"] = {{"active", active}, {"profiles", registered}};
    add(projectFile(), project.dump(2));
}

std::string RandomProject::spelledDesign() {
    std::string path;
    do {
        path = spelled(designFolder + "/" + designBase + ".dsn");
    } while (lowerCased(path) != path && path.ends_with(".DSN"));
    return path;
}

}  // namespace randomproject
