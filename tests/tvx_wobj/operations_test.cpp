// operations_test.cpp
//
// The project-file library: what its functions read and how they change a project.

#include <filesystem>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "support/TestFolder.h"
#include "support/wobjProject.h"
#include "tvx_wobj/tvx_wobj.h"

namespace {

using tvx_wobj::Strings;
using wobjtest::LoneFile;
using wobjtest::pretty;

const Strings kRubbish = {"left", "over"};

// The entries of a folder or sub-folder, as "name|path|type".
Strings entriesOf(const std::string& project, const std::string& folder, const std::string& subFolder = "") {
    Strings names = kRubbish;
    Strings paths = kRubbish;
    Strings types = kRubbish;
    const int status =
        subFolder.empty()
            ? tvx_wobj::readProjectFileDirectly(project, folder, names, paths, types)
            : tvx_wobj::readProjectFileDirectly(project, folder, subFolder, names, paths, types);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(names.size(), paths.size());
    EXPECT_EQ(names.size(), types.size());
    Strings entries;
    for (std::size_t i = 0; i < names.size(); ++i) {
        entries.push_back(names[i] + "|" + paths.at(i) + "|" + types.at(i));
    }
    return entries;
}

const std::string kAmplifier = R"({
  "folders": [
    { "name": "Design Resources",
      "items": { "TEVRIX_Output_File": "amp.out" },
      "files": [ { "name": "amp.dsn", "path": ".\\amp.dsn", "type": "Schematic Design" },
                 { "name": "Backup", "path": ".\\amp.dbk", "type": "Schematic Backup" } ],
      "folders": [ { "name": "Library",
                     "files": [ { "name": "parts.olb", "path": ".\\parts.olb", "type": "Schematic Library" },
                                { "name": "readme", "path": "lib/readme.txt", "type": "Text" } ] } ] },
    { "name": "Outputs", "files": [] }
  ],
  "simulationProfiles": {
    "active": ".\\amp-SCHEMATIC1-tran1.sim",
    "profiles": [ { "path": ".\\amp-SCHEMATIC1-tran1.sim", "name": "tran1", "schematic": "SCHEMATIC1" },
                  { "path": ".\\amp-OUTPUT-ac.sim", "name": "ac", "schematic": "OUTPUT" } ] } })";

// A project with one folder "F" that holds these entries.
std::string projectWith(const std::string& entries) {
    return R"({ "folders": [ { "name": "F", "files": [)" + entries + "] } ] }";
}

// --- reading ---

TEST(ReadProjectFiles, FillsPathsThenNamesOfAFolder) {
    const LoneFile project(kAmplifier);
    Strings paths = kRubbish;
    Strings names = kRubbish;
    EXPECT_EQ(tvx_wobj::readProjectFiles(project.path(), "Design Resources", paths, names, true), 0);
    EXPECT_EQ(paths, (Strings{".\\amp.dsn", ".\\amp.dbk"}));
    EXPECT_EQ(names, (Strings{"amp.dsn", "Backup"}));
}

TEST(ReadProjectFiles, FillsNamesThenPathsOfASubFolder) {
    const LoneFile project(kAmplifier);
    Strings names = kRubbish;
    Strings paths = kRubbish;
    EXPECT_EQ(tvx_wobj::readProjectFiles(project.path(), "Design Resources", "Library", names, paths, true),
              0);
    EXPECT_EQ(names, (Strings{"parts.olb", "readme"}));
    EXPECT_EQ(paths, (Strings{".\\parts.olb", "lib/readme.txt"}));
}

TEST(ReadProjectFiles, NullForAFolderNameFails) {
    const LoneFile project(kAmplifier);
    Strings names = kRubbish;
    Strings paths = kRubbish;
    EXPECT_NE(tvx_wobj::readProjectFiles(project.path(), nullptr, paths, names, true), 0);
    EXPECT_EQ(paths, Strings{});
    EXPECT_EQ(names, Strings{});
    const char* const pairs[][2] = {{nullptr, "Library"}, {"Design Resources", nullptr}, {nullptr, nullptr}};
    for (const auto& pair : pairs) {
        names = kRubbish;
        paths = kRubbish;
        EXPECT_NE(tvx_wobj::readProjectFiles(project.path(), pair[0], pair[1], names, paths, true), 0);
        EXPECT_EQ(names, Strings{});
        EXPECT_EQ(paths, Strings{});
    }
}

TEST(ReadProjectFileDirectly, FillsNamesPathsAndTypes) {
    const LoneFile project(kAmplifier);
    EXPECT_EQ(entriesOf(project.path(), "Design Resources"),
              (Strings{"amp.dsn|.\\amp.dsn|Schematic Design", "Backup|.\\amp.dbk|Schematic Backup"}));
    EXPECT_EQ(entriesOf(project.path(), "Design Resources", "Library"),
              (Strings{"parts.olb|.\\parts.olb|Schematic Library", "readme|lib/readme.txt|Text"}));
}

TEST(ReadProjectFileDirectly, FolderNamesIgnoreCase) {
    const LoneFile project(kAmplifier);
    for (const char* folder : {"design resources", "DESIGN RESOURCES", "dESIGN rESOURCES"}) {
        EXPECT_EQ(entriesOf(project.path(), folder).size(), 2u) << folder;
        EXPECT_EQ(entriesOf(project.path(), folder, "LIBRARY").size(), 2u) << folder;
    }
}

TEST(ReadProjectFileDirectly, AFolderThatIsNotThereIsEmpty) {
    const LoneFile project(kAmplifier);
    for (const char* folder : {"Translator", "Library", "", "Design Resource", "Design Resources "}) {
        EXPECT_EQ(entriesOf(project.path(), folder), Strings{}) << folder;
        EXPECT_EQ(entriesOf(project.path(), folder, "Library"), Strings{}) << folder;
    }
    EXPECT_EQ(entriesOf(project.path(), "Design Resources", "Models"), Strings{});
    EXPECT_EQ(entriesOf(project.path(), "Outputs", "Library"), Strings{});
}

TEST(ReadProjectFileDirectly, TheFirstOfSeveralFoldersWithOneNameCounts) {
    const LoneFile project(R"({ "folders": [
        { "name": "Outputs", "files": [ { "name": "a", "path": "a", "type": "t" } ] },
        { "name": "outputs", "files": [ { "name": "b", "path": "b", "type": "t" } ] } ] })");
    EXPECT_EQ(entriesOf(project.path(), "outputs"), (Strings{"a|a|t"}));
}

TEST(ReadProjectFileDirectly, MissingKeysReadAsNothing) {
    const struct {
        const char* json;
        Strings entries;
    } cases[] = {
        {"{}", {}},
        {R"({ "folders": [] })", {}},
        {R"({ "folders": [ {} ] })", {}},
        {R"({ "folders": [ { "name": "F" } ] })", {}},
        {R"({ "folders": [ { "name": "F", "files": [ {}, { "path": "p" }, { "name": "n" }, { "type": "t" } ] } ] })",
         {"||", "|p|", "n||", "||t"}},
    };
    for (const auto& c : cases) {
        const LoneFile project(c.json);
        EXPECT_EQ(entriesOf(project.path(), "F"), c.entries) << c.json;
    }
}

TEST(ReadProjectFileDirectly, EscapedAndWideCharactersComeOutAsUtf8) {
    if (tests::kOnWindows) GTEST_SKIP() << "texts are in the code page of the system there";
    const LoneFile project(
        projectWith(R"({ "name": "\u00e4\"\/\n", "path": "µ\u0001\ud83d\ude00", "type": "\\" })"));
    EXPECT_EQ(entriesOf(project.path(), "F"), (Strings{"\xC3\xA4\"/\n|\xC2\xB5\x01\xF0\x9F\x98\x80|\\"}));
}

TEST(ReadProjectFileDirectly, AByteOrderMarkIsPassedOver) {
    const LoneFile project("\xEF\xBB\xBF" + kAmplifier);
    EXPECT_EQ(entriesOf(project.path(), "Design Resources").size(), 2u);
}

TEST(ReadProjectFileDirectly, TheFileIsFoundInAnotherCase) {
    const LoneFile project(kAmplifier, "Amp.OPJ");
    EXPECT_EQ(entriesOf(project.folder() + "/amp.opj", "Design Resources").size(), 2u);
}

TEST(ReadSimProfiles, FillsPathsNamesAndActive) {
    const LoneFile project(kAmplifier);
    Strings paths = kRubbish;
    Strings names = kRubbish;
    std::string active = "left over";
    EXPECT_EQ(tvx_wobj::readSimProfiles(project.path(), paths, names, active, true), 0);
    EXPECT_EQ(paths, (Strings{".\\amp-SCHEMATIC1-tran1.sim", ".\\amp-OUTPUT-ac.sim"}));
    EXPECT_EQ(names, (Strings{"tran1", "ac"}));
    EXPECT_EQ(active, ".\\amp-SCHEMATIC1-tran1.sim");
}

TEST(ReadSimProfiles, MissingKeysReadAsNothing) {
    const struct {
        const char* json;
        Strings paths;
        Strings names;
        const char* active;
    } cases[] = {
        {"{}", {}, {}, ""},
        {R"({ "simulationProfiles": {} })", {}, {}, ""},
        {R"({ "simulationProfiles": { "active": "a" } })", {}, {}, "a"},
        {R"({ "simulationProfiles": { "profiles": [ {}, { "path": "p" }, { "name": "n" } ] } })",
         {"", "p", ""},
         {"", "", "n"},
         ""},
    };
    for (const auto& c : cases) {
        const LoneFile project(c.json);
        Strings paths = kRubbish;
        Strings names = kRubbish;
        std::string active = "left over";
        EXPECT_EQ(tvx_wobj::readSimProfiles(project.path(), paths, names, active, false), 0) << c.json;
        EXPECT_EQ(paths, c.paths) << c.json;
        EXPECT_EQ(names, c.names) << c.json;
        EXPECT_EQ(active, c.active) << c.json;
    }
}

// --- the form that is written ---

TEST(WriteProjectFiles, WritesEverythingUnknownInItsPlaceAndSpelling) {
    const LoneFile project(
        R"({"schema":17.20,"big":123456789012345678901234567890,"exp":1E+5,"neg":-7,"flags":[true,false,null],)"
        R"("none":{},"nothing":[],"folders":[{"z":"\t\u0007\"\\\/\u00E4","name":"F","files":[)"
        R"({"id":1.50,"path":"a.lib","type":"T","name":"A"}],"a":{"y":1,"x":[[]]}}],"last":""})");
    EXPECT_EQ(tvx_wobj::writeProjectFiles(project.path(), "F", "T", {"b/a.lib"}, true, true, true), 0);
    EXPECT_EQ(project.bytes(),
              "{\n"
              "  \"schema\": 17.20,\n"
              "  \"big\": 123456789012345678901234567890,\n"
              "  \"exp\": 1E+5,\n"
              "  \"neg\": -7,\n"
              "  \"flags\": [\n"
              "    true,\n"
              "    false,\n"
              "    null\n"
              "  ],\n"
              "  \"none\": {},\n"
              "  \"nothing\": [],\n"
              "  \"folders\": [\n"
              "    {\n"
              "      \"z\": \"\\t\\u0007\\\"\\\\/\xC3\xA4\",\n"
              "      \"name\": \"F\",\n"
              "      \"files\": [\n"
              "        {\n"
              "          \"id\": 1.50,\n"
              "          \"path\": \"b/a.lib\",\n"
              "          \"type\": \"T\",\n"
              "          \"name\": \"A\"\n"
              "        }\n"
              "      ],\n"
              "      \"a\": {\n"
              "        \"y\": 1,\n"
              "        \"x\": [\n"
              "          []\n"
              "        ]\n"
              "      }\n"
              "    }\n"
              "  ],\n"
              "  \"last\": \"\"\n"
              "}\n");
}

TEST(WriteProjectFiles, ChangingThereAndBackGivesTheSameBytes) {
    const std::string before = pretty(kAmplifier);
    const LoneFile project(before);
    ASSERT_EQ(tvx_wobj::updateInProjectFile(project.path(), "Design Resources", "Schematic Design",
                                            ".\\amp.dsn", "new\\amp.dsn"),
              0);
    ASSERT_NE(project.bytes(), before);
    ASSERT_EQ(tvx_wobj::updateInProjectFile(project.path(), "Design Resources", "Schematic Design",
                                            "new\\amp.dsn", ".\\amp.dsn"),
              0);
    EXPECT_EQ(project.bytes(), before);
}

TEST(WriteProjectFiles, EveryCharacterComesBackAsItWas) {
    const LoneFile project("{}");
    std::string all;
    for (char c = 1; c < 127; ++c) all += c;
    all += '\x7F';
    all += '\0';
    all += "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    ASSERT_EQ(tvx_wobj::writeProjectFiles(project.path(), "F", "T", {all}, true, true, true), 0);
    Strings names;
    Strings paths;
    Strings types;
    EXPECT_EQ(tvx_wobj::readProjectFileDirectly(project.path(), "F", names, paths, types), 0);
    EXPECT_EQ(paths, Strings{all});
}

// --- entries ---

TEST(WriteProjectFiles, ReplacesTheEntriesOfItsTypeInPlace) {
    const LoneFile project(projectWith(R"(
        { "name": "First",  "path": "a\\one.lib", "type": "T", "note": 1 },
        { "name": "Other",  "path": "one.lib",    "type": "U" },
        { "name": "Second", "path": "a/two.lib",  "type": "t", "note": 2 },
        { "path": "three.lib", "type": "T" })"));
    EXPECT_EQ(tvx_wobj::writeProjectFiles(project.path(), "f", "T",
                                          {"b/ONE.lib", "a/zwei.lib", "x\\y\\three.lib"}, true, true, true),
              0);
    EXPECT_EQ(project.bytes(), pretty(projectWith(R"(
        { "name": "First",  "path": "b/ONE.lib", "type": "T", "note": 1 },
        { "name": "Other",  "path": "one.lib",    "type": "U" },
        { "name": "zwei.lib", "path": "a/zwei.lib",  "type": "t", "note": 2 },
        { "path": "x\\y\\three.lib", "type": "T" })")));
}

TEST(WriteProjectFiles, EntriesLeftOverGo) {
    const LoneFile project(projectWith(R"(
        { "name": "a", "path": "a", "type": "T" }, { "name": "o", "path": "o", "type": "U" },
        { "name": "b", "path": "b", "type": "T" }, { "name": "c", "path": "c", "type": "T" })"));
    ASSERT_EQ(tvx_wobj::writeProjectFiles(project.path(), "F", "T", {"z/a"}, true, false, false), 0);
    EXPECT_EQ(entriesOf(project.path(), "F"), (Strings{"a|z/a|T", "o|o|U"}));
    ASSERT_EQ(tvx_wobj::writeProjectFiles(project.path(), "F", "T", {}, true, false, false), 0);
    EXPECT_EQ(entriesOf(project.path(), "F"), (Strings{"o|o|U"}));
}

TEST(WriteProjectFiles, PathsLeftOverGoToTheEnd) {
    const LoneFile project(projectWith(R"(
        { "name": "a", "path": "a", "type": "T" }, { "name": "o", "path": "o", "type": "U" })"));
    ASSERT_EQ(tvx_wobj::writeProjectFiles(project.path(), "F", "T", {"a", "d\\b.lib", "d/c.lib", "d/"}, true,
                                          false, false),
              0);
    EXPECT_EQ(entriesOf(project.path(), "F"),
              (Strings{"a|a|T", "o|o|U", "b.lib|d\\b.lib|T", "c.lib|d/c.lib|T", "|d/|T"}));
}

TEST(WriteProjectFiles, AddingPassesOverPathsThatAreListedUnderTheType) {
    const LoneFile project(projectWith(R"(
        { "name": "x", "path": ".\\Lib\\a.lib", "type": "T" }, { "name": "o", "path": "b.lib", "type": "U" })"));
    ASSERT_EQ(
        tvx_wobj::writeProjectFiles(project.path(), "F", "t",
                                    {"./lib/A.LIB", "b.lib", "c.lib", "C.lib", "a.lib"}, false, false, true),
        0);
    EXPECT_EQ(entriesOf(project.path(), "F"),
              (Strings{"x|.\\Lib\\a.lib|T", "o|b.lib|U", "b.lib|b.lib|t", "c.lib|c.lib|t", "a.lib|a.lib|t"}));
}

TEST(WriteProjectFiles, TheFormWithoutSubFolderLeavesSubFoldersAlone) {
    const LoneFile project(kAmplifier);
    ASSERT_EQ(tvx_wobj::writeProjectFiles(project.path(), "Design Resources", "Schematic Library",
                                          {"own.olb"}, true, true, true),
              0);
    EXPECT_EQ(entriesOf(project.path(), "Design Resources"),
              (Strings{"amp.dsn|.\\amp.dsn|Schematic Design", "Backup|.\\amp.dbk|Schematic Backup",
                       "own.olb|own.olb|Schematic Library"}));
    EXPECT_EQ(entriesOf(project.path(), "Design Resources", "Library"),
              (Strings{"parts.olb|.\\parts.olb|Schematic Library", "readme|lib/readme.txt|Text"}));
}

TEST(WriteProjectFiles, TheFormWithSubFolderLeavesItsFolderAlone) {
    const LoneFile project(kAmplifier);
    ASSERT_EQ(tvx_wobj::writeProjectFiles(project.path(), "design resources", "library", "schematic library",
                                          {"new\\parts.olb", "more.olb"}, true, true, true, false),
              0);
    EXPECT_EQ(entriesOf(project.path(), "Design Resources"),
              (Strings{"amp.dsn|.\\amp.dsn|Schematic Design", "Backup|.\\amp.dbk|Schematic Backup"}));
    EXPECT_EQ(entriesOf(project.path(), "Design Resources", "Library"),
              (Strings{"parts.olb|new\\parts.olb|Schematic Library", "readme|lib/readme.txt|Text",
                       "more.olb|more.olb|schematic library"}));
}

TEST(WriteProjectFiles, MakesMissingFoldersWhereItMay) {
    for (const bool replace : {true, false}) {
        const LoneFile project(R"({ "folders": [ { "name": "F" } ] })");
        ASSERT_EQ(tvx_wobj::writeProjectFiles(project.path(), "G", "T", {"a/b"}, replace, true, false), 0);
        ASSERT_EQ(
            tvx_wobj::writeProjectFiles(project.path(), "F", "S", "T", {"c"}, replace, true, false, true), 0);
        ASSERT_EQ(
            tvx_wobj::writeProjectFiles(project.path(), "H", "S", "T", {"d"}, replace, true, true, true), 0);
        EXPECT_EQ(project.bytes(), pretty(R"({ "folders": [
            { "name": "F", "folders": [
                { "name": "S", "files": [ { "name": "c", "path": "c", "type": "T" } ] } ] },
            { "name": "G", "files": [ { "name": "b", "path": "a/b", "type": "T" } ] },
            { "name": "H", "folders": [
                { "name": "S", "files": [ { "name": "d", "path": "d", "type": "T" } ] } ] } ] })"));
    }
}

TEST(WriteProjectFiles, AMissingFolderFailsWhereItMayNotBeMade) {
    for (const bool replace : {true, false}) {
        const LoneFile project(kAmplifier);
        EXPECT_NE(tvx_wobj::writeProjectFiles(project.path(), "G", "T", {"a"}, replace, false, true), 0);
        EXPECT_NE(
            tvx_wobj::writeProjectFiles(project.path(), "G", "S", "T", {"a"}, replace, false, true, true), 0);
        EXPECT_NE(tvx_wobj::writeProjectFiles(project.path(), "Outputs", "S", "T", {"a"}, replace, false,
                                              true, true),
                  0);
        EXPECT_EQ(project.bytes(), kAmplifier);
        EXPECT_EQ(project.names(), Strings{"amp.opj"});
    }
}

TEST(WriteProjectFiles, AFolderWithoutAListOfFilesGetsOne) {
    for (const bool replace : {true, false}) {
        const LoneFile project(R"({ "folders": [ { "name": "F", "x": 1 } ] })");
        EXPECT_EQ(tvx_wobj::writeProjectFiles(project.path(), "F", "T", {"a"}, replace, false, true), 0);
        EXPECT_EQ(project.bytes(), pretty(R"({ "folders": [
            { "name": "F", "x": 1, "files": [ { "name": "a", "path": "a", "type": "T" } ] } ] })"));
    }
}

// --- calls that change nothing ---

// What would tell that the file was written again, though its bytes are the same.
struct Identity {
    explicit Identity(const std::string& path) : changedAt(std::filesystem::last_write_time(path)) {
        EXPECT_EQ(tvxconv::platform::getStatus(path.c_str(), status), 0);
    }
    bool operator==(const Identity& other) const {
        return tvxconv::platform::isSameFile(status, other.status) && changedAt == other.changedAt;
    }
    std::filesystem::file_time_type changedAt;
    tvxconv::platform::FileStatus status;
};

TEST(WobjWritingNothingNew, LeavesTheFileItself) {
    const struct {
        const char* name;
        int (*call)(const std::string& project);
    } cases[] = {
        {"the same list",
         [](const std::string& p) {
             return tvx_wobj::writeProjectFiles(p, "Design Resources", "Schematic Design", {".\\amp.dsn"},
                                                true, true, true);
         }},
        {"the same list of a sub-folder",
         [](const std::string& p) {
             return tvx_wobj::writeProjectFiles(p, "Design Resources", "Library", "Schematic Library",
                                                {".\\parts.olb"}, true, true, true, true);
         }},
        {"a path that is there",
         [](const std::string& p) {
             return tvx_wobj::writeProjectFiles(p, "Design Resources", "Schematic Design", {"./AMP.dsn"},
                                                false, true, true);
         }},
        {"no paths for a type without entries",
         [](const std::string& p) {
             return tvx_wobj::writeProjectFiles(p, "Design Resources", "T", {}, true, true, true);
         }},
        {"no paths for a missing folder",
         [](const std::string& p) { return tvx_wobj::writeProjectFiles(p, "G", "T", {}, true, true, true); }},
        {"no paths for a missing folder that may not be made",
         [](const std::string& p) {
             return tvx_wobj::writeProjectFiles(p, "G", "T", {}, true, false, true);
         }},
        {"no paths for a missing sub-folder",
         [](const std::string& p) {
             return tvx_wobj::writeProjectFiles(p, "Outputs", "S", "T", {}, false, true, true, true);
         }},
        {"no paths for a sub-folder of a missing folder",
         [](const std::string& p) {
             return tvx_wobj::writeProjectFiles(p, "G", "S", "T", {}, true, true, true, true);
         }},
        {"the same item",
         [](const std::string& p) {
             return tvx_wobj::writeItemToProject(p, "Design Resources", "tevrix_output_file", "amp.out",
                                                 true);
         }},
        {"the same path",
         [](const std::string& p) {
             return tvx_wobj::updateInProjectFile(p, "Design Resources", "Schematic Design", ".\\amp.dsn",
                                                  ".\\amp.dsn");
         }},
        {"the same profiles",
         [](const std::string& p) {
             return tvx_wobj::writeSimProfiles(p, {".\\amp-SCHEMATIC1-tran1.sim", ".\\amp-OUTPUT-ac.sim"},
                                               {"tran1", "ac"}, {"SCHEMATIC1", "OUTPUT"},
                                               ".\\amp-SCHEMATIC1-tran1.sim", true);
         }},
    };
    for (const auto& c : cases) {
        const LoneFile project(kAmplifier);
        const Identity before(project.path());
        EXPECT_EQ(c.call(project.path()), 0) << c.name;
        EXPECT_TRUE(Identity(project.path()) == before) << c.name;
        EXPECT_EQ(project.bytes(), kAmplifier) << c.name;
    }
}

TEST(WobjWritingNothingNew, NoProfilesForAProjectWithoutAny) {
    for (const char* json :
         {"{}", R"({ "simulationProfiles": {} })", R"({ "simulationProfiles": { "profiles": [] } })"}) {
        const LoneFile project(json);
        EXPECT_EQ(tvx_wobj::writeSimProfiles(project.path(), {}, {}, {}, "", true), 0) << json;
        EXPECT_EQ(project.bytes(), json);
    }
}

// --- items ---

TEST(WriteItemToProject, SetsAndAddsItemsAndMakesTheFolder) {
    const struct {
        const char* folder;
        const char* item;
        const char* value;
        const char* after;
    } cases[] = {
        {"F", "b", "",
         R"({ "folders": [ { "name": "F", "items": { "A": "1", "B": "", "C": "3" }, "x": 0 } ] })"},
        {"f", "B", "new",
         R"({ "folders": [ { "name": "F", "items": { "A": "1", "B": "new", "C": "3" }, "x": 0 } ] })"},
        {"F", "D", "",
         R"({ "folders": [ { "name": "F", "items": { "A": "1", "B": "2", "C": "3", "D": "" }, "x": 0 } ] })"},
        {"G", "b", "v", R"({ "folders": [ { "name": "F", "items": { "A": "1", "B": "2", "C": "3" }, "x": 0 },
                                          { "name": "G", "items": { "b": "v" } } ] })"},
    };
    for (const auto& c : cases) {
        const LoneFile project(
            R"({ "folders": [ { "name": "F", "items": { "A": "1", "B": "2", "C": "3" }, "x": 0 } ] })");
        EXPECT_EQ(tvx_wobj::writeItemToProject(project.path(), c.folder, c.item, c.value, true), 0)
            << c.after;
        EXPECT_EQ(project.bytes(), pretty(c.after));
    }
}

TEST(WriteItemToProject, MakesItemsInAnEmptyProject) {
    const LoneFile project("{}");
    EXPECT_EQ(tvx_wobj::writeItemToProject(project.path(), "F", "A", "", false), 0);
    EXPECT_EQ(project.bytes(), pretty(R"({ "folders": [ { "name": "F", "items": { "A": "" } } ] })"));
}

// --- one entry ---

TEST(UpdateInProjectFile, ChangesTheFirstEntryThatMatches) {
    const std::string before = projectWith(R"(
        { "name": "n0", "path": "lib\\a.lib", "type": "U" },
        { "name": "n1", "path": "Lib\\a.lib", "type": "T", "x": 1 },
        { "name": "n2", "path": "lib/a.lib", "type": "T" })");
    const struct {
        const char* oldPath;
        const char* newPath;
        const char* changed;
    } cases[] = {
        {"lib\\a.lib", "new\\A.lib", R"({ "name": "n1", "path": "new\\A.lib", "type": "T", "x": 1 })"},
        {"LIB/A.LIB", "new/b.lib", R"({ "name": "b.lib", "path": "new/b.lib", "type": "T", "x": 1 })"},
        {"lib/a.lib", "", R"({ "name": "", "path": "", "type": "T", "x": 1 })"},
    };
    for (const auto& c : cases) {
        const LoneFile project(before);
        EXPECT_EQ(tvx_wobj::updateInProjectFile(project.path(), "f", "t", c.oldPath, c.newPath), 0)
            << c.oldPath;
        EXPECT_EQ(project.bytes(),
                  pretty(projectWith(std::string(R"({ "name": "n0", "path": "lib\\a.lib", "type": "U" },)") +
                                     c.changed + R"(, { "name": "n2", "path": "lib/a.lib", "type": "T" })")));
    }
}

TEST(UpdateInProjectFile, NoMatchFails) {
    const struct {
        const char* folder;
        const char* type;
        const char* path;
    } cases[] = {
        {"Translator", "Schematic Design", ".\\amp.dsn"},
        {"Outputs", "Schematic Design", ".\\amp.dsn"},
        {"Design Resources", "Schematic Library", ".\\amp.dsn"},
        {"Design Resources", "Schematic Design", "amp.dsn"},
        {"Design Resources", "Schematic Design", ""},
        {"Design Resources", "", ".\\amp.dsn"},
        {"Design Resources", "Schematic Library", ".\\parts.olb"},  // in a sub-folder
        {"Library", "Schematic Library", ".\\parts.olb"},
    };
    for (const auto& c : cases) {
        const LoneFile project(kAmplifier);
        EXPECT_NE(tvx_wobj::updateInProjectFile(project.path(), c.folder, c.type, c.path, "new"), 0)
            << c.folder << ", " << c.type << ", " << c.path;
        EXPECT_EQ(project.bytes(), kAmplifier);
    }
}

// --- profiles ---

TEST(WriteSimProfiles, ReplacesTheListAndKeepsWhatElseWasSaid) {
    const LoneFile project(R"({ "simulationProfiles": { "rev": 2, "active": "a.sim", "profiles": [
        { "id": 1, "path": "a.sim", "name": "tran", "schematic": "S1", "x": 1 },
        { "id": 2, "path": "b.sim", "name": "tran", "schematic": "S2" },
        { "id": 3, "path": "c.sim", "name": "gone", "schematic": "S1" },
        { "id": 4, "path": "d.sim", "schematic": "S1" } ], "z": [] } })");
    EXPECT_EQ(tvx_wobj::writeSimProfiles(
                  project.path(), {"n/b.sim", "n/a.sim", "n/c.sim", "n/a2.sim", "n/d.sim"},
                  {"TRAN", "tran", "gone", "tran", ""}, {"s2", "S1", "S2", "S1", "S1"}, "n\\b.sim", true),
              0);
    EXPECT_EQ(project.bytes(),
              pretty(R"({ "simulationProfiles": { "rev": 2, "active": "n\\b.sim", "profiles": [
        { "id": 2, "path": "n/b.sim", "name": "TRAN", "schematic": "s2" },
        { "id": 1, "path": "n/a.sim", "name": "tran", "schematic": "S1", "x": 1 },
        { "path": "n/c.sim", "name": "gone", "schematic": "S2" },
        { "path": "n/a2.sim", "name": "tran", "schematic": "S1" },
        { "id": 4, "path": "n/d.sim", "schematic": "S1" } ], "z": [] } })"));
}

TEST(WriteSimProfiles, ProfilesThatShareNameAndSchematicKeepTheirOrder) {
    const LoneFile project(R"({ "simulationProfiles": { "profiles": [
        { "id": 1, "path": "a", "name": "t", "schematic": "S" },
        { "id": 2, "path": "b", "name": "T", "schematic": "s" } ] } })");
    EXPECT_EQ(tvx_wobj::writeSimProfiles(project.path(), {"x", "y"}, {"t", "t"}, {"S", "S"}, "", true), 0);
    EXPECT_EQ(project.bytes(), pretty(R"({ "simulationProfiles": { "profiles": [
        { "id": 1, "path": "x", "name": "t", "schematic": "S" },
        { "id": 2, "path": "y", "name": "t", "schematic": "S" } ] } })"));
}

TEST(WriteSimProfiles, AnEmptyListTakesAllProfilesAway) {
    const LoneFile project(kAmplifier);
    EXPECT_EQ(tvx_wobj::writeSimProfiles(project.path(), {}, {}, {}, "", true), 0);
    Strings paths = kRubbish;
    Strings names = kRubbish;
    std::string active = "left over";
    EXPECT_EQ(tvx_wobj::readSimProfiles(project.path(), paths, names, active, true), 0);
    EXPECT_EQ(paths, Strings{});
    EXPECT_EQ(names, Strings{});
    EXPECT_EQ(active, "");
}

TEST(WriteSimProfiles, AProjectWithoutProfilesGetsThem) {
    const LoneFile project(R"({ "x": 1 })");
    EXPECT_EQ(tvx_wobj::writeSimProfiles(project.path(), {"p"}, {"n"}, {"s"}, "p", true), 0);
    EXPECT_EQ(project.bytes(), pretty(R"({ "x": 1, "simulationProfiles": { "active": "p", "profiles": [
        { "path": "p", "name": "n", "schematic": "s" } ] } })"));
}

TEST(WriteSimProfiles, ListsOfUnequalLengthFail) {
    const struct {
        Strings paths;
        Strings names;
        Strings schematics;
    } cases[] = {{{"p"}, {}, {}},
                 {{}, {"n"}, {}},
                 {{}, {}, {"s"}},
                 {{"p"}, {"n"}, {"s", "t"}},
                 {{"p"}, {"n", "m"}, {"s"}}};
    for (const auto& c : cases) {
        const LoneFile project(kAmplifier);
        EXPECT_NE(tvx_wobj::writeSimProfiles(project.path(), c.paths, c.names, c.schematics, "p", true), 0);
        EXPECT_EQ(project.bytes(), kAmplifier);
    }
}

// --- size ---

constexpr std::size_t kMany = 100000;

// "<before>0<after>", "<before>1<after>" and so on.
Strings numbered(const std::string& before, const std::string& after) {
    Strings texts;
    for (std::size_t i = 0; i < kMany; ++i) texts.push_back(before + std::to_string(i) + after);
    return texts;
}

TEST(WobjProjectFile, HoldsAHundredThousandEntries) {
    const Strings paths = numbered(".\\lib\\part", ".olb");
    const Strings moved = numbered(".\\new\\part", ".olb");
    const LoneFile project("{}");
    const std::string& path = project.path();
    ASSERT_EQ(tvx_wobj::writeProjectFiles(path, "F", "S", "T", paths, false, true, true, true), 0);
    ASSERT_EQ(tvx_wobj::writeProjectFiles(path, "F", "S", "T", paths, false, true, true, true), 0);
    ASSERT_EQ(tvx_wobj::writeProjectFiles(path, "F", "S", "T", moved, true, true, true, true), 0);
    Strings names = kRubbish;
    Strings readPaths = kRubbish;
    Strings types = kRubbish;
    ASSERT_EQ(tvx_wobj::readProjectFileDirectly(path, "F", "S", names, readPaths, types), 0);
    EXPECT_TRUE(names == numbered("part", ".olb"));
    EXPECT_TRUE(readPaths == moved);
    EXPECT_TRUE(types == Strings(kMany, "T"));
}

TEST(WobjProjectFile, HoldsAHundredThousandProfiles) {
    const Strings paths = numbered("p", ".sim");
    const Strings moved = numbered("q", ".sim");
    const Strings names = numbered("n", "");
    const Strings schematics(kMany, "S");
    const LoneFile project("{}");
    ASSERT_EQ(tvx_wobj::writeSimProfiles(project.path(), paths, names, schematics, "p0.sim", true), 0);
    ASSERT_EQ(tvx_wobj::writeSimProfiles(project.path(), moved, names, schematics, "q0.sim", true), 0);
    Strings readPaths = kRubbish;
    Strings readNames = kRubbish;
    std::string active = "left over";
    ASSERT_EQ(tvx_wobj::readSimProfiles(project.path(), readPaths, readNames, active, true), 0);
    EXPECT_TRUE(readPaths == moved);
    EXPECT_TRUE(readNames == names);
    EXPECT_EQ(active, "q0.sim");
}

TEST(WobjProjectFile, HoldsAHundredThousandItems) {
    std::string before = "{\n  \"folders\": [\n    {\n      \"name\": \"F\",\n      \"items\": {";
    for (const std::string& item : numbered("k", "")) {
        before += (item == "k0" ? "\n        \"" : ",\n        \"") + item + "\": \"v\"";
    }
    const LoneFile project(before + "\n      }\n    }\n  ]\n}\n");
    ASSERT_EQ(tvx_wobj::writeItemToProject(project.path(), "F", "K99999", "last", true), 0);
    const std::string after = before.substr(0, before.size() - 2) + "last\"\n      }\n    }\n  ]\n}\n";
    EXPECT_TRUE(project.bytes() == after);
}

}  // namespace
