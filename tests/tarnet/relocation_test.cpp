// relocation_test.cpp
//
// One cell on its way into its new view: which file goes where, the folders that are made, the marker, and
// what a failure leaves behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/TarnetLibrary.h"
#include "support/fileLimit.h"

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using tvxconv::TarnetProjectConverter;
namespace fs = std::filesystem;

// A converter that knows the cell "amp", whose new view has not been made.
void knowCell(TarnetLibrary& library) {
    library.prepareCell();
    fs::remove_all(library.view);
}

// --- which file goes where ---

TEST(TarnetClassification, TheListsAreFilledInOrder) {
    TarnetProjectConverter converter(nullptr);
    EXPECT_THAT(converter.copyExtensions(), IsEmpty());
    EXPECT_THAT(converter.cellExtensions(), IsEmpty());
    EXPECT_THAT(converter.profileExtensions(), IsEmpty());
    EXPECT_EQ(converter.classifyCellFiles(), 0);
    EXPECT_THAT(converter.copyExtensions(),
                ElementsAre("lib", "prp", "olb", "err", "ind", "stl", "stm", "inc", "obk", "opj", "cmrk",
                            "mkr", "dmap", "map", "bak", "log"));
    EXPECT_THAT(converter.cellExtensions(), ElementsAre("sim", "net", "als", "par", "opt", "aap", "prp",
                                                        "opt.log", "monte.log", "sens.log", "smoke.log"));
    EXPECT_THAT(
        converter.profileExtensions(),
        ElementsAre("csd", "dat", "opt.dat", "mc.dat", "sens.dat", "opt.csd", "mc.csd", "sens.csd", "out",
                    "out.1", "opt.out", "mc.out", "sens.out", "mrk", "prb", "sim.1op", "sim.cir", "sim.mif"));
}

TEST(TarnetClassification, FillingTheListsAppends) {
    TarnetProjectConverter converter(nullptr);
    converter.copyExtensions().push_back("first");
    EXPECT_EQ(converter.classifyCellFiles(), 0);
    EXPECT_EQ(converter.classifyCellFiles(), 0);
    EXPECT_THAT(converter.copyExtensions(), SizeIs(33));
    EXPECT_EQ(converter.copyExtensions()[0], "first");
    EXPECT_EQ(converter.copyExtensions()[17], "lib");
    EXPECT_THAT(converter.cellExtensions(), SizeIs(22));
    EXPECT_THAT(converter.profileExtensions(), SizeIs(36));
}

// The file in the old view and its place in the new one; empty for none.
const std::vector<std::pair<const char*, const char*>> kPlaces = {
    // kept names
    {"Any name.lib", "Any name.lib"},
    {"x.prp", "x.prp"},
    {"amp.prp", "amp.prp"},
    {"amp-x.prp", "amp-x.prp"},
    {"x.LIB", "x.LIB"},
    {"x.olb", "x.olb"},
    {"x.err", "x.err"},
    {"x.ind", "x.ind"},
    {"x.stl", "x.stl"},
    {"x.stm", "x.stm"},
    {"x.Inc", "x.Inc"},
    {"x.obk", "x.obk"},
    {"amp.opj", "amp.opj"},
    {"other.opj", "other.opj"},
    {"x.cmrk", "x.cmrk"},
    {"x.mkr", "x.mkr"},
    {"x.dmap", "x.dmap"},
    {"x.map", "x.map"},
    {"x.bak", "x.bak"},
    {"x.log", "x.log"},
    {".lib", ".lib"},
    // the cell's name
    {"amp-amp.prp", "amp_sch.prp"},
    {"a.net", "amp.net"},
    {"a.als", "amp.als"},
    {"a.par", "amp.par"},
    {"a.opt", "amp.opt"},
    {"a.aap", "amp.aap"},
    {"a.opt.log", "amp.opt.log"},
    {"a.monte.log", "amp.monte.log"},
    {"a.sens.log", "amp.sens.log"},
    {"a.smoke.log", "amp.smoke.log"},
    {"a.ALS", "amp.ALS"},
    {"a.Opt.Log", "amp.Opt.Log"},
    {"a.NET", "amp.net"},
    {"a.OPT", "amp.opt"},
    // profiles
    {"tran.sim", "profiles/tran.sim"},
    {"Tran.SIM", "profiles/Tran.SIM"},
    {"tran.csd", "profiles/tran/tran.csd"},
    {"tran.dat", "profiles/tran/tran.dat"},
    {"tran.opt.dat", "profiles/tran/tran.opt.dat"},
    {"tran.mc.dat", "profiles/tran/tran.mc.dat"},
    {"tran.sens.dat", "profiles/tran/tran.sens.dat"},
    {"tran.opt.csd", "profiles/tran/tran.opt.csd"},
    {"tran.mc.csd", "profiles/tran/tran.mc.csd"},
    {"tran.sens.csd", "profiles/tran/tran.sens.csd"},
    {"tran.out", "profiles/tran/tran.out"},
    {"tran.out.1", "profiles/tran/tran.out.1"},
    {"ac.opt.out", "profiles/ac/ac.opt.out"},
    {"tran.mc.out", "profiles/tran/tran.mc.out"},
    {"tran.sens.out", "profiles/tran/tran.sens.out"},
    {"tran.mrk", "profiles/tran/tran.mrk"},
    {"a-b.mrk", "profiles/a-b/a-b.mrk"},
    {"tran.prb", "profiles/tran/tran.prb"},
    {"tran.sim.1op", "profiles/tran/tran.1op"},
    {"tran.sim.cir", "profiles/tran/tran.cir"},
    {"tran.sim.mif", "profiles/tran/tran.mif"},
    {"Tran.SIM.Cir", "profiles/Tran/Tran.cir"},
    {"Tran.OUT", "profiles/Tran/Tran.OUT"},
    {"\xE4 \xFF.dat", "profiles/\xE4 \xFF/\xE4 \xFF.dat"},
    // none
    {"master.tag", ""},
    {"expand.cfg", ""},
    {"README", ""},
    {"ends.", ""},
    {".", ""},
    {"..", ""},
    {"a.b.c", ""},
    {"a.b.lib", ""},
    {"tran.cir", ""},
    {"tran.out.2", ""},
    {"x-default.mrk", ""},
    {"tran-DEFAULT.MRK", ""},
    {"lib", ""},
    {"a.", ""},
    {"a.libx", ""},
};

TEST(TarnetRelocation, OnlyTheCellsOwnPropertiesAreCalledAfterIt) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"Top 1-Top 1.prp", "Top 1_sch.prp"},
        {"TOP 1-top 1.prp", "Top 1_sch.prp"},
        {"Top 1.prp", "Top 1.prp"},
        {"amp-amp.prp", "amp-amp.prp"},
        {"xTop 1-Top 1.prp", "xTop 1-Top 1.prp"},
    };
    for (const auto& [name, expected] : cases) {
        TarnetLibrary library;
        knowCell(library);
        library.converter.setCellName("Top 1");
        library.writeOld(name, "properties");
        EXPECT_EQ(library.converter.relocateCellFiles(), 0) << name;
        EXPECT_EQ(library.newView(), (Tree{{expected, "properties"}, {"master.tag", "Top 1.net"}})) << name;
    }
}

// --- a whole cell ---

TEST(TarnetRelocation, EachFileGoesToItsPlace) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    TarnetLibrary library;
    knowCell(library);
    std::map<std::string, std::string> texts;
    Tree expected;
    for (const auto& [name, place] : kPlaces) {
        const std::string fileName = name;
        if (fileName == "." || fileName == "..") continue;
        library.writeOld(fileName, fileName);
        if (*place != '\0') expected[place] = fileName;
    }
    // Of two spellings the one that comes last in the folder's order is there, under the first one's name.
    const Tree before = library.tree();
    EXPECT_EQ(library.converter.relocateCellFiles(), 0);
    EXPECT_EQ(lastError(), LastError());
    Tree newView = library.newView();
    std::erase_if(newView, [](const auto& entry) { return entry.first.ends_with('/'); });
    std::vector<std::string> names;
    std::vector<std::string> expectedNames = {"master.tag"};
    for (const auto& [name, text] : newView) names.push_back(lowerCase(name));
    for (const auto& [name, text] : expected) expectedNames.push_back(lowerCase(name));
    std::sort(names.begin(), names.end());
    std::sort(expectedNames.begin(), expectedNames.end());
    expectedNames.erase(std::unique(expectedNames.begin(), expectedNames.end()), expectedNames.end());
    EXPECT_EQ(names, expectedNames);
    for (const char* name :
         {"Any name.lib", "x.prp", "amp-x.prp", "amp_sch.prp", "amp.par", "profiles/ac/ac.opt.out",
          "profiles/tran/tran.1op", "profiles/tran/tran.mc.dat", "profiles/a-b/a-b.mrk"}) {
        EXPECT_EQ(newView[name], expected[name]) << name;
    }
    Tree after = library.tree();
    std::erase_if(after, [](const auto& entry) { return entry.first.starts_with("amp/tvx_sim_1/"); });
    EXPECT_EQ(after, before);
}

TEST(TarnetRelocation, ACellThatHasOnlyAMarkerGetsAViewThatHasOnlyOne) {
    TarnetLibrary library;
    knowCell(library);
    EXPECT_EQ(library.converter.relocateCellFiles(), 0);
    EXPECT_EQ(library.newView(), (Tree{{"master.tag", "amp.net"}}));
}

TEST(TarnetRelocation, TheRewrittenFilesAreRewritten) {
    TarnetLibrary library;
    knowCell(library);
    library.writeOld("old.net", ".INC \"old.par\"\n.INC \"old.lib\"\nR1 1 0 1k\n");
    library.writeOld("old.opt", "ext \"old.mdp\"\next \"a.txt\"\n");
    library.writeOld("old.mdp", "corners");
    library.writeOld("old.lib", "models");
    library.writeOld("tran.sim", "DesignFile= \"old.dsn\" \nNetlistFile= \"tran.sim.cir\"\n+1 \"old.lib\"\n");
    library.writeOld("tran.sim.cir", ".INC \"old.net\"\n.LIB \"old.lib\"\n.INC \"old.txt\"\n");
    EXPECT_EQ(library.converter.relocateCellFiles(), 0);
    const Tree expected = {
        {"amp.net", ".INC \"../amp.par\"\nR1 1 0 1k\n"},
        {"amp.opt", "ext \"old.mdp\"\n"},
        {"master.tag", "amp.net"},
        {"old.lib", "models"},
        {"old.mdp", "corners"},
        {"profiles/", ""},
        {"profiles/tran.sim", "Connectivity= \"amp.net\" \nNetlistFile= \"tran.cir\" \n+1 \"old.lib\" \n"},
        {"profiles/tran/", ""},
        {"profiles/tran/old.lib", "models"},
        {"profiles/tran/tran.cir", ".INC \"../../amp.net\"\n.LIB \"../../old.lib\"\n"},
    };
    EXPECT_EQ(library.newView(), expected);
}

TEST(TarnetRelocation, OfSeveralFilesForOnePlaceTheLastOneIsThere) {
    TarnetLibrary library;
    knowCell(library);
    library.writeOld("a.als", "first, and longer");
    library.writeOld("b.als", "second");
    library.writeOld("c.net", "R1 first and longer\n");
    library.writeOld("D.net", "R2\n");
    EXPECT_EQ(library.converter.relocateCellFiles(), 0);
    EXPECT_EQ(library.newView(),
              (Tree{{"amp.als", "second"}, {"amp.net", "R2\n"}, {"master.tag", "amp.net"}}));
}

TEST(TarnetRelocation, AViewThatIsThereKeepsWhatElseIsInIt) {
    TarnetLibrary library;
    knowCell(library);
    library.write("amp/tvx_sim_1/notes.txt", "mine");
    library.write("amp/tvx_sim_1/a.lib", "of an earlier conversion, and longer");
    library.write("amp/tvx_sim_1/profiles/ac/ac.dat", "mine too");
    library.write("amp/tvx_sim_1/master.tag", "old marker that is longer");
    library.writeOld("a.lib", "models");
    EXPECT_EQ(library.converter.relocateCellFiles(), 0);
    EXPECT_EQ(library.newView(), (Tree{{"a.lib", "models"},
                                       {"master.tag", "amp.net"},
                                       {"notes.txt", "mine"},
                                       {"profiles/", ""},
                                       {"profiles/ac/", ""},
                                       {"profiles/ac/ac.dat", "mine too"}}));
}

TEST(TarnetRelocation, TheListsSayWhatIsMoved) {
    TarnetLibrary library;
    knowCell(library);
    library.converter.copyExtensions() = {"X"};
    library.converter.cellExtensions() = {"y.z"};
    library.converter.profileExtensions() = {"lib"};
    for (const char* name : {"a.x", "b.Y.z", "c.lib", "d.net"}) library.writeOld(name, name);
    EXPECT_EQ(library.converter.relocateCellFiles(), 0);
    EXPECT_EQ(library.newView(), (Tree{{"a.x", "a.x"},
                                       {"amp.Y.z", "b.Y.z"},
                                       {"master.tag", "amp.net"},
                                       {"profiles/", ""},
                                       {"profiles/c/", ""},
                                       {"profiles/c/c.lib", "c.lib"}}));
}

TEST(TarnetRelocation, CopiesAreWritable) {
    TarnetLibrary library;
    knowCell(library);
    for (const char* name : {"a.lib", "a.als", "tran.dat", "a.net"}) {
        ASSERT_EQ(chmod(library.writeOld(name, "x").c_str(), 0444), 0);
    }
    EXPECT_EQ(library.converter.relocateCellFiles(), 0);
    for (const char* name : {"a.lib", "amp.als", "profiles/tran/tran.dat", "amp.net"}) {
        EXPECT_NE(fs::status(library.view + "/" + name).permissions() & fs::perms::owner_write,
                  fs::perms::none)
            << name;
    }
}

// --- the steps by themselves ---

TEST(TarnetRelocation, AnUnchangedCopyKeepsItsName) {
    TarnetLibrary library;
    library.prepareCell();
    const std::string other = library.makeFolder("other");
    library.write("other/x.y", "text");
    EXPECT_EQ(library.converter.copyUnchanged(other, "x.y"), 0);
    EXPECT_EQ(library.readNew("x.y"), "text");
    EXPECT_EQ(library.converter.copyUnchanged(other, "absent.y"), 10108);
    EXPECT_EQ(lastError(), copyFileError(other + "/absent.y", library.view + "/absent.y"));
}

TEST(TarnetRelocation, TheExtensionThatIsGivenDecidesOnAFileOfTheCell) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("x.y", "NetlistFile\nR1\n");
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"net", "amp.net"},
        {"OPT", "amp.opt"},
        {"prp", "amp_sch.prp"},
        {"als", "amp.als"},
        {"smoke.log", "amp.smoke.log"},
        {"anything", "amp.anything"},
    };
    for (const auto& [extension, newName] : cases) {
        EXPECT_EQ(library.converter.relocateCellFile(library.cfg, "x.y", extension), 0) << extension;
        EXPECT_EQ(library.readNew(newName), "NetlistFile\nR1\n") << extension;
    }
    EXPECT_EQ(library.converter.relocateCellFile(library.cfg, "x.y", "Sim"), 0);
    EXPECT_EQ(library.readNew("profiles/x.y"), "R1\n");
    EXPECT_TRUE(fs::is_directory(library.profiles + "/x"));
    EXPECT_EQ(library.converter.relocateCellFile(library.cfg, "absent", "als"), 10108);
    EXPECT_EQ(lastError(), copyFileError(library.cfg + "/absent", library.view + "/amp.als"));
    EXPECT_EQ(library.converter.relocateCellFile(library.cfg, "absent", "net"), 10105);
    EXPECT_EQ(lastError(), openForReadingError(library.cfg + "/absent"));
}

TEST(TarnetRelocation, AnOutputMakesTheFoldersThatItNeedsEachTime) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("ac.dat", "data");
    for (int i = 0; i < 2; ++i) {
        fs::remove_all(library.profiles);
        EXPECT_EQ(library.converter.relocateProfileFile(library.cfg, "ac.dat", "dat"), 0);
        EXPECT_EQ(library.newView(),
                  (Tree{{"profiles/", ""}, {"profiles/ac/", ""}, {"profiles/ac/ac.dat", "data"}}));
    }
    EXPECT_EQ(library.converter.relocateProfileFile(library.cfg, "ac.out", "out"), 10108);
    EXPECT_EQ(lastError(), copyFileError(library.cfg + "/ac.out", library.profiles + "/ac/ac.out"));
    EXPECT_EQ(library.converter.relocateProfileFile(library.cfg, "ac.sim.cir", "sim.cir"), 10105);
    EXPECT_EQ(lastError(), openForReadingError(library.cfg + "/ac.sim.cir"));
}

std::vector<std::string> filesOf(const Tree& tree) {
    std::vector<std::string> names;
    for (const auto& [name, text] : tree) {
        if (!name.ends_with('/')) names.push_back(name);
    }
    return names;
}

TEST(TarnetRelocation, TheMarkerNamesTheNetlist) {
    TarnetLibrary library;
    library.prepareCell();
    library.converter.setCellName("Any cell");
    library.write("marker", "a longer text that was there");
    EXPECT_EQ(library.converter.writeViewMasterTag(library.path("marker")), 0);
    EXPECT_EQ(library.read("marker"), "Any cell.net");
    EXPECT_EQ(library.converter.writeViewMasterTag(library.cfg), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.cfg));
    EXPECT_EQ(library.converter.writeViewMasterTag(library.path("no/marker")), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.path("no/marker")));
    EXPECT_TRUE(succeedsWithFileLimit(11, [&] {
        EXPECT_EQ(library.converter.writeViewMasterTag(library.path("marker")), 10106);
        EXPECT_EQ(lastError(), openForWritingError(library.path("marker")));
        return true;
    }));
    EXPECT_EQ(library.read("marker"), "Any cell.net") << "what was there stays";
    EXPECT_TRUE(succeedsWithFileLimit(11, [&] {
        EXPECT_EQ(library.converter.writeViewMasterTag(library.path("another")), 10106);
        EXPECT_EQ(lastError(), openForWritingError(library.path("another")));
        return true;
    }));
    EXPECT_EQ(filesOf(library.tree()), (std::vector<std::string>{"amp/cfg_analog/master.tag", "marker"}))
        << "nothing unfinished";
}

// --- failures: what ends the cell, what is returned, and whether the view is marked ---

struct Failure {
    const char* what;
    // Changes the cell, which has "a.lib", "b.net", "c.als", "tran.dat", "tran.sim", "tran.sim.cir" and
    // "z.lib".
    void (*spoil)(const TarnetLibrary& library);
    int status;
    LastError (*error)(const TarnetLibrary& library);
    // What is in the new view, but for what was put there to be in the way.
    std::vector<std::string> files;
};

void fillCell(const TarnetLibrary& library) {
    library.writeOld("a.lib", "models of 12");
    library.writeOld("b.net", "R1 1 0 1k ..\n");
    library.writeOld("c.als", "aliases");
    library.writeOld("tran.dat", "data");
    library.writeOld("tran.sim", "OutFile= \"tran.out\"\n");
    library.writeOld("tran.sim.cir", ".END\n");
    library.writeOld("z.lib", "last");
}

LastError noError(const TarnetLibrary&) {
    return {};
}

TEST(TarnetRelocation, AFileThatFailsEndsTheCellAndTheViewIsMarkedAllTheSame) {
    const std::vector<Failure> cases = {
        {"nothing",
         [](const TarnetLibrary&) {},
         0,
         noError,
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles/tran.sim", "profiles/tran/tran.cir",
          "profiles/tran/tran.dat", "z.lib"}},
        {"a folder in the place of an unchanged copy",
         [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1/a.lib"); },
         0,
         [](const TarnetLibrary& l) { return copyFileError(l.cfg + "/a.lib", l.view + "/a.lib"); },
         {"master.tag"}},
        {"a folder in the place of the netlist",
         [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1/amp.net"); },
         0,
         [](const TarnetLibrary& l) { return openForWritingError(l.view + "/amp.net"); },
         {"a.lib", "master.tag"}},
        {"a folder in the place of a file of the cell",
         [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1/amp.als"); },
         0,
         [](const TarnetLibrary& l) { return copyFileError(l.cfg + "/c.als", l.view + "/amp.als"); },
         {"a.lib", "amp.net", "master.tag"}},
        {"a file in the place of the folder of profiles",
         [](const TarnetLibrary& l) { l.write("amp/tvx_sim_1/profiles", ""); },
         0,
         [](const TarnetLibrary& l) { return createDirectoryError(l.profiles + "/tran"); },
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles"}},
        {"a file in the place of a profile's folder",
         [](const TarnetLibrary& l) { l.write("amp/tvx_sim_1/profiles/tran", ""); },
         0,
         [](const TarnetLibrary& l) {
             return copyFileError(l.cfg + "/tran.dat", l.profiles + "/tran/tran.dat");
         },
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles/tran"}},
        {"a folder in the place of an output",
         [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1/profiles/tran/tran.dat"); },
         0,
         [](const TarnetLibrary& l) {
             return copyFileError(l.cfg + "/tran.dat", l.profiles + "/tran/tran.dat");
         },
         {"a.lib", "amp.als", "amp.net", "master.tag"}},
        {"a folder in the place of a profile file",
         [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1/profiles/tran.sim"); },
         0,
         [](const TarnetLibrary& l) { return openForWritingError(l.profiles + "/tran.sim"); },
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles/tran/tran.dat"}},
        {"a folder in the place of a deck",
         [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1/profiles/tran/tran.cir"); },
         0,
         [](const TarnetLibrary& l) { return openForWritingError(l.profiles + "/tran/tran.cir"); },
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles/tran.sim", "profiles/tran/tran.dat"}},
        {"a folder called like an unchanged copy",
         [](const TarnetLibrary& l) { l.makeFolder("amp/cfg_analog/b.inc"); },
         0,
         [](const TarnetLibrary& l) { return copyFileError(l.cfg + "/b.inc", l.view + "/b.inc"); },
         {"a.lib", "master.tag"}},
        {"a folder called like a netlist",
         [](const TarnetLibrary& l) { l.makeFolder("amp/cfg_analog/c.net"); },
         0,
         [](const TarnetLibrary& l) { return openForReadingError(l.cfg + "/c.net"); },
         {"a.lib", "amp.als", "amp.net", "master.tag"}},
        {"a folder called like a profile file",
         [](const TarnetLibrary& l) { l.makeFolder("amp/cfg_analog/ac.sim"); },
         0,
         noError,
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles/tran.sim", "profiles/tran/tran.cir",
          "profiles/tran/tran.dat", "z.lib"}},
        {"a link to itself",
         [](const TarnetLibrary& l) { tests::makeLink("b.lib", l.cfg + "/b.lib"); },
         0,
         [](const TarnetLibrary& l) { return copyFileError(l.cfg + "/b.lib", l.view + "/b.lib"); },
         {"a.lib", "master.tag"}},
        {"a folder in the place of the marker",
         [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1/master.tag"); },
         10106,
         [](const TarnetLibrary& l) { return openForWritingError(l.view + "/master.tag"); },
         {"a.lib", "amp.als", "amp.net", "profiles/tran.sim", "profiles/tran/tran.cir",
          "profiles/tran/tran.dat", "z.lib"}},
        {"folders in the places of a file and of the marker",
         [](const TarnetLibrary& l) {
             l.makeFolder("amp/tvx_sim_1/master.tag");
             l.makeFolder("amp/tvx_sim_1/amp.net");
         },
         10106,
         [](const TarnetLibrary& l) { return openForWritingError(l.view + "/master.tag"); },
         {"a.lib"}},
    };
    for (const Failure& failure : cases) {
        TarnetLibrary library;
        knowCell(library);
        fillCell(library);
        failure.spoil(library);
        EXPECT_EQ(library.converter.relocateCellFiles(), failure.status) << failure.what;
        EXPECT_EQ(lastError(), failure.error(library)) << failure.what;
        EXPECT_EQ(filesOf(library.newView()), failure.files) << failure.what;
        const bool isMarked = failure.status == 0;
        EXPECT_EQ(library.existsNew("master.tag") && readFile(library.view + "/master.tag") == "amp.net",
                  isMarked)
            << failure.what;
    }
}

TEST(TarnetRelocation, ASourceThatMayNotBeReadEndsTheCell) {
    const std::vector<Failure> cases = {
        {"a.lib",
         nullptr,
         0,
         [](const TarnetLibrary& l) { return copyFileError(l.cfg + "/a.lib", l.view + "/a.lib"); },
         {"master.tag"}},
        {"b.net",
         nullptr,
         0,
         [](const TarnetLibrary& l) { return openForReadingError(l.cfg + "/b.net"); },
         {"a.lib", "master.tag"}},
        {"c.als",
         nullptr,
         0,
         [](const TarnetLibrary& l) { return copyFileError(l.cfg + "/c.als", l.view + "/amp.als"); },
         {"a.lib", "amp.net", "master.tag"}},
        {"tran.dat",
         nullptr,
         0,
         [](const TarnetLibrary& l) {
             return copyFileError(l.cfg + "/tran.dat", l.profiles + "/tran/tran.dat");
         },
         {"a.lib", "amp.als", "amp.net", "master.tag"}},
        // One that may not be read counts as absent, and the others come along.
        {"tran.sim",
         nullptr,
         0,
         noError,
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles/tran/tran.cir", "profiles/tran/tran.dat",
          "z.lib"}},
        {"tran.sim.cir",
         nullptr,
         0,
         [](const TarnetLibrary& l) { return openForReadingError(l.cfg + "/tran.sim.cir"); },
         {"a.lib", "amp.als", "amp.net", "master.tag", "profiles/tran.sim", "profiles/tran/tran.dat"}},
    };
    for (const Failure& failure : cases) {
        TarnetLibrary library;
        knowCell(library);
        fillCell(library);
        openToAll(library.folder.path());
        ASSERT_EQ(chmod((library.cfg + "/" + failure.what).c_str(), 0), 0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(library.converter.relocateCellFiles(), failure.status) << failure.what;
            EXPECT_EQ(lastError(), failure.error(library)) << failure.what;
            return true;
        }));
        EXPECT_EQ(filesOf(library.newView()), failure.files) << failure.what;
        EXPECT_EQ(library.readNew("master.tag"), "amp.net") << failure.what;
    }
}

TEST(TarnetRelocation, AFullDiskEndsTheCellAndMayLeaveRoomForTheMarker) {
    const struct {
        rlim_t room;
        int status;
        LastError (*error)(const TarnetLibrary& library);
        std::vector<std::string> files;
    } cases[] = {
        // A copy of 12 bytes is cut, and the part is removed.
        {11,
         0,
         [](const TarnetLibrary& l) { return copyFileError(l.cfg + "/a.lib", l.view + "/a.lib"); },
         {"master.tag"}},
        // The netlist, of 13 bytes, is removed when it cannot be written to its end.
        {12,
         0,
         [](const TarnetLibrary& l) { return openForWritingError(l.view + "/amp.net"); },
         {"a.lib", "master.tag"}},
        // Not even the 7 bytes of the marker.
        {6, 10106, [](const TarnetLibrary& l) { return openForWritingError(l.view + "/master.tag"); }, {}},
    };
    for (const auto& c : cases) {
        TarnetLibrary library;
        knowCell(library);
        fillCell(library);
        EXPECT_TRUE(succeedsWithFileLimit(c.room, [&] {
            EXPECT_EQ(library.converter.relocateCellFiles(), c.status) << c.room;
            EXPECT_EQ(lastError(), c.error(library)) << c.room;
            return true;
        }));
        EXPECT_EQ(filesOf(library.newView()), c.files) << c.room;
    }
}

TEST(TarnetRelocation, AViewThatCannotBeMadeOrWrittenToIsNamed) {
    for (const bool isThere : {false, true}) {
        TarnetLibrary library;
        knowCell(library);
        fillCell(library);
        if (isThere) library.makeFolder("amp/tvx_sim_1");
        openToAll(library.folder.path());
        ASSERT_EQ(chmod((isThere ? library.view : library.cell).c_str(), 0555), 0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(library.converter.relocateCellFiles(), 10102) << isThere;
            EXPECT_EQ(lastError(), createDirectoryError(library.view)) << isThere;
            return true;
        }));
        EXPECT_FALSE(library.existsNew("master.tag")) << isThere;
    }
}

TEST(TarnetRelocation, AFileInThePlaceOfTheViewFailsAtTheMarker) {
    TarnetLibrary library;
    knowCell(library);
    fillCell(library);
    library.write("amp/tvx_sim_1", "a file");
    const Tree before = library.tree();
    EXPECT_EQ(library.converter.relocateCellFiles(), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.view + "/master.tag"));
    EXPECT_EQ(library.tree(), before);
}

TEST(TarnetRelocation, AFolderOfProfilesThatMayNotBeWrittenToIsNamed) {
    for (const bool isProfile : {false, true}) {
        TarnetLibrary library;
        knowCell(library);
        fillCell(library);
        library.makeFolder("amp/tvx_sim_1/profiles/tran");
        const std::string spoilt = library.profiles + (isProfile ? "/tran" : "");
        openToAll(library.folder.path());
        ASSERT_EQ(chmod(spoilt.c_str(), 0555), 0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(library.converter.relocateCellFiles(), 0) << isProfile;
            EXPECT_EQ(lastError(), createDirectoryError(spoilt)) << isProfile;
            return true;
        }));
        EXPECT_THAT(filesOf(library.newView()), ElementsAre("a.lib", "amp.als", "amp.net", "master.tag"));
    }
}

TEST(TarnetRelocation, AnOldViewThatCannotBeListedIsPassedOverInSilence) {
    for (const bool isMissing : {false, true}) {
        TarnetLibrary library;
        knowCell(library);
        fillCell(library);
        openToAll(library.folder.path());
        if (isMissing) {
            library.converter.setProjectDir(library.path("nowhere"));
        } else {
            ASSERT_EQ(chmod(library.cfg.c_str(), 0333), 0);
        }
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(library.converter.relocateCellFiles(), 0) << isMissing;
            EXPECT_EQ(lastError(), LastError()) << isMissing;
            return true;
        }));
        EXPECT_THAT(library.newView(), IsEmpty()) << isMissing;
    }
}

}  // namespace
