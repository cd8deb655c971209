// cliProject.h
//
// For the tests of the program as its user meets it: a small project with one file of each kind that a
// conversion treats in its own way, what has to become of it, a picture of a folder that tells any change,
// and the program itself.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/TestFolder.h"
#include "support/builtFiles.h"

namespace clitest {

using tests::ProgramResult;
using tests::TestFolder;
using tests::Tree;

constexpr const char* kProgram = tests::kProgramFile;
constexpr const char* kKeptFolder = "tvxconv-old-files";

// --- the small project ---

inline const std::string kDesign = "{ \"rootSchematics\": [\"SCHEMATIC1\"] }\n";
inline const std::string kLibrary = "* models\r\n.MODEL QN NPN (BF=200)\r\n";
inline const std::string kBench = "measured on the bench\n";
inline const std::string kOutput = std::string("V(out) = 1.25\n\0\xFF tail", 21);

// The project file, with what a conversion changes in it.
inline std::string projectText(const std::string& outputItem, const std::string& libraryPath,
                               const std::string& netlistName, const std::string& netlistPath,
                               const std::string& profilePath) {
    return R"({
  "folders": [
    {
      "name": "Design Resources",
      "items": {
        "TEVRIX_Output_File": ")" +
           outputItem + R"("
      },
      "files": [
        {
          "name": "amp.dsn",
          "path": ".\\amp.dsn",
          "type": "Schematic Design"
        }
      ]
    },
    {
      "name": "Tevrix Resources",
      "folders": [
        {
          "name": "Model Libraries",
          "files": [
            {
              "name": "amp.lib",
              "path": ")" +
           libraryPath + R"(",
              "type": "TevrixLibrary"
            }
          ]
        }
      ]
    },
    {
      "name": "Outputs",
      "files": [
        {
          "name": ")" +
           netlistName + R"(",
          "path": ")" +
           netlistPath + R"(",
          "type": "Report"
        },
        {
          "name": "bench.txt",
          "path": ".\\local\\bench.txt",
          "type": "Report"
        }
      ]
    }
  ],
  "simulationProfiles": {
    "active": ")" +
           profilePath + R"(",
    "profiles": [
      {
        "path": ")" +
           profilePath + R"(",
        "name": "tran1",
        "schematic": "SCHEMATIC1"
      }
    ]
  }
}
)";
}

inline std::string oldProjectText() {
    return projectText("amp-SCHEMATIC1-tran1.out", ".\\\\amp.lib", "amp-SCHEMATIC1.net",
                       ".\\\\amp-SCHEMATIC1.net", ".\\\\amp-SCHEMATIC1-tran1.sim");
}

inline std::string newProjectText() {
    return projectText("", ".\\\\amp-tevrixfiles\\\\amp.lib", "schematic1.net",
                       ".\\\\amp-tevrixfiles\\\\schematic1\\\\schematic1.net",
                       ".\\\\amp-tevrixfiles\\\\schematic1\\\\tran1.sim");
}

inline const std::string kOldProfile =
    "ProfileName= \"tran1\" \n"
    "RootSchematics= \"SCHEMATIC1\" \n"
    "DesignFile= \"amp.dsn\" \n"
    "ProfileFile= \"amp-SCHEMATIC1-tran1.sim\" \n"
    "NetlistFile= \"amp-SCHEMATIC1-tran1.sim.cir\" \n"
    "OutFile= \"amp-SCHEMATIC1-tran1.out\" \n"
    "+8 \"NOPAGE\" \n";
inline const std::string kNewProfile =
    "ProfileName= \"tran1\" \n"
    "Connectivity= \"SCHEMATIC1.net\" \n"
    "ProfileFile= \"tran1.sim\" \n"
    "NetlistFile= \"tran1.cir\" \n"
    "OutFile= \"tran1.out\" \n"
    "+8 \"NOPAGE\" \n";

inline const std::string kOldDeck = "* tran1\r\n.LIB \"amp.lib\"\r\n.INC \"amp-SCHEMATIC1.net\"\r\n.END\r\n";
inline const std::string kNewDeck =
    "* tran1\r\n.LIB \"../../amp.lib\"\r\n.INC \"../SCHEMATIC1.net\"\r\n.END\r\n";

inline const std::string kOldNetlist = "* netlist\n.INC \"amp-SCHEMATIC1.par\"\nR1 a b 1k\n";
inline const std::string kNewNetlist = "* netlist\n.INC \"../SCHEMATIC1.par\"\nR1 a b 1k\n";

inline const std::string kOldOptimizer =
    "sim \"amp-SCHEMATIC1-tran1.sim\" enabled\r\next \"corners.mdp\" \"worst case\"\r\n";
inline const std::string kNewOptimizer =
    "sim \"tran1.sim\" enabled\r\next \"corners.mdp\" \"worst case\"\r\n";
inline const std::string kDesignProfile = "corners of the models\r\n";

inline const std::string kOldAnalysis =
    "(FILE_TYPE \"Advanced Analysis Profile\"\n (Profiles (\"amp-SCHEMATIC1-tran1\" 1)))\n";
inline const std::string kNewAnalysis =
    "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n    (\"Profiles\"\n        (\"tran1\"\t\"1\")\n    "
    ")\n)\n";

// The folder of the project "amp.opj" before a conversion.
inline Tree smallProject() {
    return {
        {"amp.opj", oldProjectText()},
        {"amp.dsn", kDesign},
        {"amp.lib", kLibrary},
        {"amp-SCHEMATIC1.net", kOldNetlist},
        {"amp-SCHEMATIC1.opt", kOldOptimizer},
        {"amp-SCHEMATIC1.aap", kOldAnalysis},
        {"corners.mdp", kDesignProfile},
        {"amp-SCHEMATIC1-tran1.sim", kOldProfile},
        {"amp-SCHEMATIC1-tran1.sim.cir", kOldDeck},
        {"amp-SCHEMATIC1-tran1.out", kOutput},
        {"local/", ""},
        {"local/bench.txt", kBench},
        {"notes.txt", "of the user's own\n"},
    };
}

// The simulation root, below the folder that has it.
inline Tree convertedRoot() {
    const std::string root = "amp-TevrixFiles/";
    return {
        {root, ""},
        {root + "amp.lib", kLibrary},
        {root + "SCHEMATIC1/", ""},
        {root + "SCHEMATIC1/SCHEMATIC1.net", kNewNetlist},
        {root + "SCHEMATIC1/SCHEMATIC1.opt", kNewOptimizer},
        {root + "SCHEMATIC1/SCHEMATIC1.aap", kNewAnalysis},
        {root + "SCHEMATIC1/corners.mdp", kDesignProfile},
        {root + "SCHEMATIC1/tran1.sim", kNewProfile},
        {root + "SCHEMATIC1/tran1/", ""},
        {root + "SCHEMATIC1/tran1/tran1.cir", kNewDeck},
        {root + "SCHEMATIC1/tran1/tran1.out", kOutput},
    };
}

// The destination folder after a conversion into it.
inline Tree convertedDestination() {
    Tree tree = convertedRoot();
    tree["amp.opj"] = newProjectText();
    tree["amp.dsn"] = kDesign;
    tree["local/"] = "";
    tree["local/bench.txt"] = kBench;
    return tree;
}

// The project's folder after a conversion in place.
inline Tree convertedInPlace() {
    Tree tree = convertedDestination();
    tree["notes.txt"] = smallProject().at("notes.txt");
    return tree;
}

// Where each file of the small project is after a conversion in place, by its old name.
inline std::map<std::string, std::string> newPlaces() {
    const std::string root = "amp-TevrixFiles/";
    return {
        {"amp.opj", "amp.opj"},
        {"amp.dsn", "amp.dsn"},
        {"amp.lib", root + "amp.lib"},
        {"amp-SCHEMATIC1.net", root + "SCHEMATIC1/SCHEMATIC1.net"},
        {"amp-SCHEMATIC1.opt", root + "SCHEMATIC1/SCHEMATIC1.opt"},
        {"amp-SCHEMATIC1.aap", root + "SCHEMATIC1/SCHEMATIC1.aap"},
        {"corners.mdp", root + "SCHEMATIC1/corners.mdp"},
        {"amp-SCHEMATIC1-tran1.sim", root + "SCHEMATIC1/tran1.sim"},
        {"amp-SCHEMATIC1-tran1.sim.cir", root + "SCHEMATIC1/tran1/tran1.cir"},
        {"amp-SCHEMATIC1-tran1.out", root + "SCHEMATIC1/tran1/tran1.out"},
        {"local/bench.txt", "local/bench.txt"},
        {"notes.txt", "notes.txt"},
    };
}

// What the program prints for it.
inline std::vector<std::string> convertedListing(const std::string& destination) {
    const std::string root = destination + "/amp-TevrixFiles";
    return {
        destination,          "    amp.opj",        "    amp.dsn",     root,
        "    amp.lib",        root + "/SCHEMATIC1", "    corners.mdp", "    SCHEMATIC1.aap",
        "    SCHEMATIC1.net", "    SCHEMATIC1.opt", "    tran1.sim",   root + "/SCHEMATIC1/tran1",
        "    tran1.cir",      "    tran1.out",
    };
}

inline std::string asLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

// --- pictures of folders ---

// All below `folder`, links as links, with permission bits. Equal pictures mean that nothing changed.
inline std::map<std::string, std::string> pictureOf(const std::string& folder) {
    namespace fs = std::filesystem;
    std::map<std::string, std::string> picture;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::file_status status = entry.symlink_status();
        std::string& text = picture[fs::path(entry.path()).lexically_relative(folder).generic_string()];
        text = std::to_string(static_cast<unsigned>(status.permissions())) + " ";
        switch (status.type()) {
            case fs::file_type::regular:
                text += "file " + tests::readFile(entry.path().string());
                break;
            case fs::file_type::directory:
                text += "folder";
                break;
            case fs::file_type::symlink:
                text += "link to " + fs::read_symlink(entry.path()).string();
                break;
            default:
                text += "something else";
        }
    }
    return picture;
}

// The names that differ between two pictures or trees, a line each; nothing when they are equal.
inline std::string difference(const std::map<std::string, std::string>& before,
                              const std::map<std::string, std::string>& after) {
    std::string lines;
    for (const auto& [name, text] : before) {
        const auto found = after.find(name);
        if (found == after.end()) {
            lines += "missing: " + name + "\n";
        } else if (tests::asRead(found->second) != tests::asRead(text)) {
            lines += "changed: " + name + "\n  from " + testing::PrintToString(text) + "\n  to   " +
                     testing::PrintToString(found->second) + "\n";
        }
    }
    for (const auto& [name, text] : after) {
        if (before.count(name) == 0) lines += "added: " + name + "\n";
    }
    return lines;
}

template <class Table>
Table without(Table table, const std::string& prefix) {
    std::erase_if(table, [&](const auto& entry) { return entry.first.starts_with(prefix); });
    return table;
}

// --- running it ---

inline ProgramResult runTvxconv(std::vector<std::string> arguments, const std::string& folder = "") {
    arguments.insert(arguments.begin(), kProgram);
    return tests::runProgram(arguments, folder);
}

// As above, for runs that might never end: a run of more than a minute has the status 124.
inline ProgramResult runTvxconvWithLimit(std::vector<std::string> arguments, const std::string& folder = "") {
    arguments.insert(arguments.begin(), {"timeout", "60", kProgram});
    return tests::runProgram(arguments, folder);
}

// The same without root's rights.
inline ProgramResult runWithoutRoot(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {
        "setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "timeout", "60", kProgram};
    if (geteuid() != 0) command.erase(command.begin(), command.begin() + 4);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return tests::runProgram(command);
}

// Whether a user without root's rights can start the program that was built.
inline bool othersMayRunProgram() {
    return tests::succeedsWithoutRoot([] { return access(kProgram, X_OK) == 0; });
}

}  // namespace clitest
