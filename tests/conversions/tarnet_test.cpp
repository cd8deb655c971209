// tarnet_test.cpp
//
// Whole libraries, from end to end: what becomes of every file, that a second run changes nothing, and what a
// fault at each file in turn leaves behind.

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
using tvxconv::TarnetProjectConverter;
namespace fs = std::filesystem;

int convert(const std::string& library) {
    forgetLastError();
    TarnetProjectConverter converter(library.c_str());
    return converter.convert(0, std::string());
}

std::map<std::string, fs::file_time_type> timesIn(const std::string& folder) {
    std::map<std::string, fs::file_time_type> times;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        times[entry.path().string()] = entry.last_write_time();
    }
    return times;
}

// --- a library with a cell of each sort ---

// "Filter" has one of everything, "Osc" two small profiles in other spellings.
Tree oldLibrary() {
    return {
        // with everything that is moved, and some that is not
        {"Filter/cfg_analog/master.tag", "expand.cfg"},
        {"Filter/cfg_analog/expand.cfg", "stop at primitives\n"},
        {"Filter/cfg_analog/Filter.opj", "{}\n"},
        {"Filter/cfg_analog/Filter.net",
         "* filter\r\n.INC \"Filter.par\"\r\n.INC \"opamp.lib\"\r\nR1 in out 1k\r\n"},
        {"Filter/cfg_analog/Filter.par", ".PARAM gain=2\n"},
        {"Filter/cfg_analog/Filter.als", "ALIASES\n"},
        {"Filter/cfg_analog/Filter.opt", "goal 1\next \"corners.mdp\" 7\next \"notes.txt\"\n"},
        {"Filter/cfg_analog/Filter.aap", "(aap)\n"},
        {"Filter/cfg_analog/Filter.opt.log", "log\n"},
        {"Filter/cfg_analog/Filter-Filter.prp", "properties\n"},
        {"Filter/cfg_analog/parts.prp", "other properties\n"},
        {"Filter/cfg_analog/corners.mdp", "corners\n"},
        {"Filter/cfg_analog/opamp.lib", "* models\n"},
        {"Filter/cfg_analog/supply.inc", "V1 vcc 0 5\n"},
        {"Filter/cfg_analog/steps.stl", "* stimuli\n"},
        {"Filter/cfg_analog/sub/local.inc", "* deep\n"},
        {"Filter/cfg_analog/notes.txt", "of the user's own\n"},
        {"Filter/cfg_analog/ac-default.mrk", "default markers\n"},
        {"Filter/cfg_analog/ac.sim",
         "ProfileName= \"ac\" \r\nDesignFile= \"Filter.dsn\" \r\nRootSchematics= \"Filter\" \r\n"
         "NetlistFile= \"ac.sim.cir\" \r\nDataFile= \"ac.dat\" \r\nOutFile= \".\\ac.out\" \r\n"
         "+1 \"opamp.lib\" \r\n+2 \"..\\shared.stl\" \r\n+8 \"opamp.lib\" \r\n"},
        {"Filter/cfg_analog/ac.sim.cir",
         "* ac\r\n.LIB \"opamp.lib\"\r\n.STMLIB \"../shared.stl\"\r\n.INC \"sub/local.inc\"\r\n"
         ".INC \"./sub/supply.inc\"\r\n.INC \"ac.net\"\r\n.LIB \"nowhere.lib\"\r\n.INC "
         "\"notes.txt\"\r\n.END\r\n"},
        {"Filter/cfg_analog/ac.dat", std::string("data\0\r\n", 7)},
        {"Filter/cfg_analog/ac.csd", ""},
        {"Filter/cfg_analog/ac.out", "output\n"},
        {"Filter/cfg_analog/ac.mrk", "markers\n"},
        {"Filter/cfg_analog/ac.sim.1op", "1op\n"},
        {"Filter/cfg_analog/ac.sim.mif", "mif\n"},
        {"Filter/shared.stl", "* of the cell\n"},
        {"Filter/sch_1/master.tag", "sch"},
        // in other letter case
        {"Osc/cfg_analog/master.tag", ""},
        {"Osc/cfg_analog/TRAN.SIM", "PROJECTFILE\nNetlistFile= \"\"\nOutFile= \"DC.out\"\n"},
        {"Osc/cfg_analog/TRAN.SIM.CIR", ".inc \"OSC.NET\""},
        {"Osc/cfg_analog/DC.OUT.1", "more output\n"},
        {"Osc/cfg_analog/TOP.NET", ".inc \"TOP.PAR\""},
        // not to be converted
        {"Done/cfg_analog/master.tag", ""},
        {"Done/cfg_analog/Done.net", "R1\n"},
        {"Done/tvx_sim_1/master.tag", "Done.net"},
        {"Bare/sch_1/master.tag", ""},
        {"Unmarked/cfg_analog/Unmarked.net", "R1\n"},
        {"with.dot/cfg_analog/master.tag", ""},
        {"cds.lib", "DEFINE lib .\n"},
    };
}

// What the conversion adds; "@" stands for the library.
Tree newViews() {
    return {
        {"Filter/tvx_sim_1/", ""},
        {"Filter/tvx_sim_1/master.tag", "Filter.net"},
        {"Filter/tvx_sim_1/Filter.opj", "{}\n"},
        {"Filter/tvx_sim_1/Filter.net", "* filter\r\n.INC \"../Filter.par\"\r\nR1 in out 1k\r\n"},
        {"Filter/tvx_sim_1/Filter.par", ".PARAM gain=2\n"},
        {"Filter/tvx_sim_1/Filter.als", "ALIASES\n"},
        {"Filter/tvx_sim_1/Filter.opt", "goal 1\next \"corners.mdp\" 7\n"},
        {"Filter/tvx_sim_1/Filter.aap", "(aap)\n"},
        {"Filter/tvx_sim_1/Filter.opt.log", "log\n"},
        {"Filter/tvx_sim_1/Filter_sch.prp", "properties\n"},
        {"Filter/tvx_sim_1/parts.prp", "other properties\n"},
        {"Filter/tvx_sim_1/corners.mdp", "corners\n"},
        {"Filter/tvx_sim_1/opamp.lib", "* models\n"},
        {"Filter/tvx_sim_1/supply.inc", "V1 vcc 0 5\n"},
        {"Filter/tvx_sim_1/steps.stl", "* stimuli\n"},
        {"Filter/tvx_sim_1/profiles/", ""},
        {"Filter/tvx_sim_1/profiles/ac.sim",
         "ProfileName= \"ac\" \r\nConnectivity= \"Filter.net\" \r\n"
         "NetlistFile= \"ac.cir\" \r\nDataFile= \"ac.dat\" \r\nOutFile= \"@/Filter/cfg_analog/ac.out\" \r\n"
         "+1 \"opamp.lib\" \r\n+2 \"shared.stl\" \r\n+8 \"opamp.lib\" \r\n"},
        {"Filter/tvx_sim_1/profiles/ac/", ""},
        {"Filter/tvx_sim_1/profiles/ac/opamp.lib", "* models\n"},
        {"Filter/tvx_sim_1/profiles/ac/shared.stl", "* of the cell\n"},
        {"Filter/tvx_sim_1/profiles/ac/ac.cir",
         "* ac\r\n.LIB \"../../opamp.lib\"\r\n.STMLIB \"../../../shared.stl\"\r\n"
         ".INC \"@/Filter/cfg_analog/sub/local.inc\"\r\n.INC \"../../supply.inc\"\r\n.INC "
         "\"../../Filter.net\"\r\n"
         ".LIB \"nowhere.lib\"\r\n.END\r\n"},
        {"Filter/tvx_sim_1/profiles/ac/ac.dat", std::string("data\0\r\n", 7)},
        {"Filter/tvx_sim_1/profiles/ac/ac.csd", ""},
        {"Filter/tvx_sim_1/profiles/ac/ac.out", "output\n"},
        {"Filter/tvx_sim_1/profiles/ac/ac.mrk", "markers\n"},
        {"Filter/tvx_sim_1/profiles/ac/ac.1op", "1op\n"},
        {"Filter/tvx_sim_1/profiles/ac/ac.mif", "mif\n"},
        {"Osc/tvx_sim_1/", ""},
        {"Osc/tvx_sim_1/master.tag", "Osc.net"},
        {"Osc/tvx_sim_1/Osc.net", ".INC \"../Osc.par\"\n"},
        {"Osc/tvx_sim_1/profiles/", ""},
        {"Osc/tvx_sim_1/profiles/TRAN.SIM",
         "Connectivity= \"Osc.net\" \nNetlistFile= \"\" \nOutFile= \"@/Osc/cfg_analog/DC.out\" \n"},
        {"Osc/tvx_sim_1/profiles/TRAN/", ""},
        {"Osc/tvx_sim_1/profiles/TRAN/TRAN.cir", ".INC \"../../Osc.net\"\n"},
        {"Osc/tvx_sim_1/profiles/DC/", ""},
        {"Osc/tvx_sim_1/profiles/DC/DC.OUT.1", "more output\n"},
    };
}

class TarnetConversion : public testing::Test {
protected:
    void SetUp() override {
        writeTree(library_, oldLibrary());
        before_ = treeOf(library_);
    }

    Tree expected() const {
        Tree tree = before_;
        for (const auto& [name, text] : newViews()) tree[name] = replaced(text, "@", library_);
        return tree;
    }

    const TestFolder folder_;
    const std::string library_ = folder_.path("my site/my lib");
    Tree before_;
};

TEST_F(TarnetConversion, GetsTheNewViewsAndKeepsAllElse) {
    EXPECT_EQ(convert(library_), 0);
    EXPECT_EQ(lastError(), LastError());
    EXPECT_EQ(treeOf(library_), expected());
}

TEST_F(TarnetConversion, IsNotChangedByASecondRun) {
    EXPECT_EQ(convert(library_), 0);
    const auto times = timesIn(folder_.path());
    EXPECT_EQ(convert(library_), 0);
    EXPECT_EQ(lastError(), LastError());
    EXPECT_EQ(treeOf(library_), expected());
    EXPECT_EQ(timesIn(folder_.path()), times);
}

TEST_F(TarnetConversion, ConvertsACellThatIsAddedLaterAndLeavesTheOthersAlone) {
    EXPECT_EQ(convert(library_), 0);
    const auto times = timesIn(library_ + "/Filter");
    writeFile(library_ + "/New/cfg_analog/master.tag", "");
    Tree with = expected();
    with["New/"] = with["New/cfg_analog/"] = with["New/cfg_analog/master.tag"] = with["New/tvx_sim_1/"] = "";
    with["New/tvx_sim_1/master.tag"] = "New.net";
    EXPECT_EQ(convert(library_), 0);
    EXPECT_EQ(treeOf(library_), with);
    EXPECT_EQ(timesIn(library_ + "/Filter"), times);
}

TEST_F(TarnetConversion, GivesTheSameBytesWhereverItLies) {
    const std::string other = folder_.path("other site/my lib");
    writeTree(other, oldLibrary());
    EXPECT_EQ(convert(library_), 0);
    EXPECT_EQ(convert(other), 0);
    Tree here = treeOf(library_);
    for (auto& [name, text] : here) text = replaced(text, library_, other);
    EXPECT_EQ(treeOf(other), here);
}

// A run that was cut off leaves a view without a marker; the next one makes it whole.
TEST_F(TarnetConversion, IsMadeWholeAfterARunThatWasCutOff) {
    EXPECT_EQ(convert(library_), 0);
    fs::remove(library_ + "/Filter/tvx_sim_1/master.tag");
    fs::remove(library_ + "/Filter/tvx_sim_1/opamp.lib");
    writeFile(library_ + "/Filter/tvx_sim_1/profiles/ac/ac.cir",
              "* a part of the deck that is longer than the whole" + std::string(1000, 'x'));
    EXPECT_EQ(convert(library_), 0);
    EXPECT_EQ(treeOf(library_), expected());
}

// --- a fault at each file in turn ---

// The files of a cell in their order, each with its place and what is recorded when it cannot be written or
// cannot be read.
enum class Step { copy, rewrite, profile };
struct File {
    const char* name;
    const char* place;
    Step step;
};
constexpr File kFiles[] = {
    {"a.inc", "a.inc", Step::copy},
    {"amp-amp.prp", "amp_sch.prp", Step::copy},
    {"b.als", "amp.als", Step::copy},
    {"c.net", "amp.net", Step::rewrite},
    {"d.opt", "amp.opt", Step::rewrite},
    {"e.smoke.log", "amp.smoke.log", Step::copy},
    {"p.mc.dat", "profiles/p/p.mc.dat", Step::copy},
    {"p.sim", "profiles/p.sim", Step::profile},
    {"p.sim.1op", "profiles/p/p.1op", Step::copy},
    {"p.sim.cir", "profiles/p/p.cir", Step::rewrite},
    {"q.csd", "profiles/q/q.csd", Step::copy},
    {"z.stl", "z.stl", Step::copy},
};

class TarnetFaultAtEachFile : public testing::Test {
protected:
    // Two cells alike, and one of them to be spoilt.
    static void fill(const TarnetLibrary& library) {
        library.addCell("zeta");
        for (const char* cell : {"amp", "zeta"}) {
            for (const File& file : kFiles) {
                library.write(std::string(cell) + "/cfg_analog/" + file.name,
                              std::string("text of ") + file.name + "\n");
            }
        }
    }

    static std::vector<std::string> filesIn(const std::string& view) {
        std::vector<std::string> names;
        for (const auto& [name, text] : treeOf(view)) {
            if (!name.ends_with('/')) names.push_back(name);
        }
        return names;
    }

    // The new view of "amp" when the file at `last` and all behind it have not come.
    static std::vector<std::string> filesBefore(std::size_t last, bool isMarked) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < last; ++i) names.emplace_back(kFiles[i].place);
        if (isMarked) names.emplace_back("master.tag");
        std::sort(names.begin(), names.end());
        return names;
    }

    static void expectOtherCellWhole(const TarnetLibrary& library, const std::string& what) {
        EXPECT_EQ(filesIn(library.path("zeta/tvx_sim_1")).size(), std::size(kFiles) + 1) << what;
        EXPECT_EQ(library.read("zeta/tvx_sim_1/master.tag"), "zeta.net") << what;
    }
};

TEST_F(TarnetFaultAtEachFile, AFolderInItsPlace) {
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        const File& file = kFiles[i];
        const TarnetLibrary library;
        fill(library);
        library.makeFolder(std::string("amp/tvx_sim_1/") + file.place);
        EXPECT_EQ(convert(library.dir), 0) << file.name;
        const std::string source = library.cfg + "/" + file.name;
        const std::string target = library.view + "/" + file.place;
        EXPECT_EQ(lastError(),
                  file.step == Step::copy ? copyFileError(source, target) : openForWritingError(target));
        EXPECT_EQ(filesIn(library.view), filesBefore(i, true)) << file.name;
        EXPECT_EQ(library.readNew("master.tag"), "amp.net") << file.name;
        expectOtherCellWhole(library, file.name);
    }
}

TEST_F(TarnetFaultAtEachFile, ASourceThatMayNotBeRead) {
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        const File& file = kFiles[i];
        const TarnetLibrary library;
        fill(library);
        openToAll(library.folder.path());
        const std::string source = library.cfg + "/" + file.name;
        ASSERT_EQ(chmod(source.c_str(), 0), 0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(convert(library.dir), 0) << file.name;
            EXPECT_EQ(lastError(), file.step == Step::copy
                                       ? copyFileError(source, library.view + "/" + file.place)
                                   : file.step == Step::rewrite ? openForReadingError(source)
                                                                : LastError());
            return true;
        }));
        std::vector<std::string> expected = filesBefore(i, true);
        if (file.step == Step::profile) {  // counts as absent
            expected = filesBefore(std::size(kFiles), true);
            std::erase(expected, file.place);
        }
        EXPECT_EQ(filesIn(library.view), expected) << file.name;
        EXPECT_EQ(library.readNew("master.tag"), "amp.net") << file.name;
        expectOtherCellWhole(library, file.name);
    }
}

TEST_F(TarnetFaultAtEachFile, AFolderCalledLikeIt) {
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        const File& file = kFiles[i];
        const TarnetLibrary library;
        fill(library);
        const std::string source = library.cfg + "/" + file.name;
        fs::remove(source);
        fs::create_directory(source);
        EXPECT_EQ(convert(library.dir), 0) << file.name;
        EXPECT_EQ(lastError(), file.step == Step::copy
                                   ? copyFileError(source, library.view + "/" + file.place)
                               : file.step == Step::rewrite ? openForReadingError(source)
                                                            : LastError());
        std::vector<std::string> expected = filesBefore(i, true);
        if (file.step == Step::profile) {
            expected = filesBefore(std::size(kFiles), true);
            std::erase(expected, file.place);
        }
        EXPECT_EQ(filesIn(library.view), expected) << file.name;
        expectOtherCellWhole(library, file.name);
    }
}

// The disk has room for so many bytes in each file: the first one that needs more ends its cell.
TEST_F(TarnetFaultAtEachFile, AFullDisk) {
    const std::size_t markerSize = std::string("amp.net").size();
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        const File& file = kFiles[i];
        for (const std::size_t room : {std::size_t{40}, markerSize, markerSize - 1}) {
            const std::string what = std::string(file.name) + " " + std::to_string(room);
            const TarnetLibrary library;
            for (const File& other : kFiles) library.writeOld(other.name, "x\n");
            const std::string source = library.writeOld(file.name, std::string(room + 1, 'x'));
            const std::string target = library.view + "/" + file.place;
            const bool isMarked = room >= markerSize;
            EXPECT_TRUE(succeedsWithFileLimit(room, [&] {
                EXPECT_EQ(convert(library.dir), isMarked ? 0 : 10106) << what;
                EXPECT_EQ(lastError(), !isMarked ? openForWritingError(library.view + "/master.tag")
                                       : file.step == Step::copy ? copyFileError(source, target)
                                                                 : openForWritingError(target))
                    << what;
                return true;
            }));
            // No part of a file is left, neither of a copy nor of one that is rewritten.
            EXPECT_EQ(filesIn(library.view), filesBefore(i, isMarked)) << what;
        }
    }
}

TEST_F(TarnetFaultAtEachFile, AFileInThePlaceOfTheNewViewEndsTheConversion) {
    const TarnetLibrary library;
    fill(library);
    library.write("amp/tvx_sim_1", "a file");
    const Tree before = library.tree();
    EXPECT_EQ(convert(library.dir), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.view + "/master.tag"));
    EXPECT_EQ(library.tree(), before);
}

}  // namespace
