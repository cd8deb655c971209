// structureListing_test.cpp
//
// What a host shows after a Tarnet conversion: the listing of the new structure, and the report file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TarnetLibrary.h"

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;
using tvxconv::TarnetProjectConverter;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

// What stands before the lines of every report.
const std::string kHead =
    "The conversion of the project was successful.\n\nThe new directory structure is as follows:\n\n";

// A library, and a converter as a conversion leaves it; its cell "amp" has no new view yet.
class Converted : public TarnetLibrary {
public:
    Converted() {
        converter.setMode(1);
        converter.setLibraryDirectory(dir);
    }

    Lines list() {
        Lines lines;
        EXPECT_EQ(converter.getNewStructure(lines), 0);
        EXPECT_EQ(lastError(), LastError());
        return lines;
    }
};

// --- the listing ---

TEST(TarnetListing, BeforeAConversionThereIsNone) {
    TarnetLibrary library;
    library.converter.setLibraryDirectory(library.dir);
    library.makeFolder("amp/tvx_sim_1");
    Lines lines = {"left over"};
    EXPECT_EQ(library.converter.getNewStructure(lines), 1);
    EXPECT_THAT(lines, ElementsAre("left over"));
}

TEST(TarnetListing, InAnyOtherModeThereIsNone) {
    for (const int mode : {2, 3, -1}) {
        Converted library;
        library.makeFolder("amp/tvx_sim_1");
        library.converter.setMode(mode);
        Lines lines = {"left over"};
        EXPECT_EQ(library.converter.getNewStructure(lines), 1) << mode;
        EXPECT_THAT(lines, ElementsAre("left over")) << mode;
    }
}

TEST(TarnetListing, LinesAreAppended) {
    Converted library;
    library.makeFolder("amp/tvx_sim_1");
    Lines lines = {"first", ""};
    EXPECT_EQ(library.converter.getNewStructure(lines), 0);
    EXPECT_THAT(lines, ElementsAre("first", "", "", library.cfg, "    master.tag", library.view));
}

TEST(TarnetListing, ALibraryThatCannotBeOpenedHasNoLines) {
    Converted library;
    for (const std::string& path : {library.path("absent"), library.cfg + "/master.tag", std::string()}) {
        library.converter.setLibraryDirectory(path);
        EXPECT_THAT(library.list(), IsEmpty()) << path;
    }
}

TEST(TarnetListing, OnlyCellsWithBothFoldersAreListed) {
    struct Case {
        const char* what;
        void (*change)(const TarnetLibrary& library);
        bool isListed;
    };
    const std::vector<Case> cases = {
        {"no new view", [](const TarnetLibrary&) {}, false},
        {"a new view without a marker", [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1"); }, true},
        {"a file as the new view", [](const TarnetLibrary& l) { l.write("amp/tvx_sim_1", ""); }, false},
        {"no old view",
         [](const TarnetLibrary& l) {
             l.makeFolder("amp/tvx_sim_1");
             fs::remove_all(l.cfg);
         },
         false},
        {"a file as the old view",
         [](const TarnetLibrary& l) {
             l.makeFolder("amp/tvx_sim_1");
             fs::remove_all(l.cfg);
             l.write("amp/cfg_analog", "");
         },
         false},
    };
    for (const Case& c : cases) {
        Converted library;
        c.change(library);
        EXPECT_EQ(!library.list().empty(), c.isListed) << c.what;
    }
}

TEST(TarnetListing, ANameWithADotIsNoCell) {
    Converted library;
    for (const char* name : {"a.b", ".hidden", "ends."}) {
        if (tests::kOnWindows && std::string(name) == "ends.") continue;  // the dot is dropped there
        library.addCell(name);
        library.makeFolder(std::string(name) + "/tvx_sim_1");
    }
    EXPECT_THAT(library.list(), IsEmpty());
}

TEST(TarnetListing, OfTheOldViewTheMarkerAndOneOtherFileAreListed) {
    struct Case {
        const char* what;
        void (*change)(const TarnetLibrary& library);
        Lines listed;
    };
    const std::vector<Case> cases = {
        {"a marker", [](const TarnetLibrary&) {}, {"    master.tag"}},
        {"both",
         [](const TarnetLibrary& l) {
             l.writeOld("expand.cfg", "");
             l.writeOld("a.lib", "");
             l.writeOld("amp.net", "");
         },
         {"    master.tag", "    expand.cfg"}},
        {"no marker",
         [](const TarnetLibrary& l) {
             l.writeOld("expand.cfg", "");
             fs::remove(l.cfg + "/master.tag");
         },
         {"    expand.cfg"}},
        {"folders",
         [](const TarnetLibrary& l) {
             fs::remove(l.cfg + "/master.tag");
             l.makeFolder("amp/cfg_analog/master.tag");
             l.makeFolder("amp/cfg_analog/expand.cfg");
         },
         {}},
    };
    for (const Case& c : cases) {
        Converted library;
        library.makeFolder("amp/tvx_sim_1");
        c.change(library);
        Lines expected = {"", library.cfg};
        expected.insert(expected.end(), c.listed.begin(), c.listed.end());
        expected.push_back(library.view);
        EXPECT_EQ(library.list(), expected) << c.what;
    }
}

TEST(TarnetListing, EachFolderIsFollowedByItsFilesAndThenItsFolders) {
    Converted library;
    for (const char* name :
         {"master.tag", "amp.net", "Amp.opj", "a.lib", "profiles/tran.sim", "profiles/AC.sim",
          "profiles/tran/tran.dat", "profiles/tran/tran.cir", "profiles/AC/AC.mc.out", "extra/notes.txt"}) {
        library.write(std::string("amp/tvx_sim_1/") + name, "");
    }
    library.makeFolder("amp/tvx_sim_1/profiles/empty");
    library.addCell("Beta");
    library.makeFolder("Beta/tvx_sim_1");
    library.addCell("zeta");
    const std::string& view = library.view;
    const Lines expected = {
        "",
        library.cfg,
        "    master.tag",
        view,
        "    a.lib",
        "    amp.net",
        "    Amp.opj",
        "    master.tag",
        view + "/extra",
        "    notes.txt",
        view + "/profiles",
        "    AC.sim",
        "    tran.sim",
        view + "/profiles/AC",
        "    AC.mc.out",
        view + "/profiles/empty",
        view + "/profiles/tran",
        "    tran.cir",
        "    tran.dat",
        "",
        library.path("Beta/cfg_analog"),
        "    master.tag",
        library.path("Beta/tvx_sim_1"),
    };
    EXPECT_EQ(library.list(), expected);
}

TEST(TarnetListing, OnlyTheDotInANameTellsAFileFromAFolder) {
    Converted library;
    for (const char* name : {"plain", ".hidden", "ends.", "folder.with.dots/inside.txt", "profiles/plain",
                             "profiles/ends.", "profiles/tran/plain", "profiles/tran/tran.out",
                             "profiles/tran/deeper/inside.txt", "x-default.mrk"}) {
        library.write(std::string("amp/tvx_sim_1/") + name, "");
    }
    const std::string& view = library.view;
    EXPECT_THAT(library.list(), ElementsAre("", library.cfg, "    master.tag", view, "    .hidden",
                                            "    folder.with.dots", "    x-default.mrk", view + "/profiles",
                                            view + "/profiles/tran", "    tran.out"));
}

TEST(TarnetListing, FoldersThatMayNotBeListedAreLeftOut) {
    Converted library;
    library.write("amp/tvx_sim_1/closed/a.dat", "");
    library.write("amp/tvx_sim_1/profiles/shut/b.dat", "");
    library.write("amp/tvx_sim_1/profiles/tran/c.dat", "");
    library.addCell("beta");
    library.makeFolder("beta/tvx_sim_1");
    library.addCell("gamma");
    library.makeFolder("gamma/tvx_sim_1");
    openToAll(library.folder.path());
    for (const char* name :
         {"amp/tvx_sim_1/closed", "amp/tvx_sim_1/profiles/shut", "beta/tvx_sim_1", "gamma/cfg_analog"}) {
        ASSERT_EQ(chmod(library.path(name).c_str(), 0333), 0) << name;
    }
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_THAT(library.list(),
                    ElementsAre("", library.cfg, "    master.tag", library.view, library.view + "/profiles",
                                library.view + "/profiles/tran", "    c.dat"));
        return true;
    }));
}

TEST(TarnetListing, PathsHaveForwardSlashes) {
    Converted library;
    library.makeFolder("amp/tvx_sim_1/profiles");
    library.converter.setLibraryDirectory(withBackslashes(library.dir));
    EXPECT_THAT(library.list(),
                ElementsAre("", library.cfg, "    master.tag", library.view, library.view + "/profiles"));
}

TEST(TarnetListing, AConversionIsListedWithTheCellsThatWereConvertedBefore) {
    TarnetLibrary library;
    library.writeOld("tran.dat", "");
    library.writeOld("amp.opj", "");
    library.addCell("beta");
    library.write("beta/tvx_sim_1/master.tag", "");
    library.addCell("a.dotted");
    library.write("a.dotted/tvx_sim_1/master.tag", "");
    EXPECT_EQ(library.converter.convert(0, std::string()), 0);
    Lines lines;
    EXPECT_EQ(library.converter.getNewStructure(lines), 0);
    EXPECT_THAT(lines, ElementsAre("", library.cfg, "    master.tag", library.view, "    amp.opj",
                                   "    master.tag", library.profiles, library.profiles + "/tran",
                                   "    tran.dat", "", library.path("beta/cfg_analog"), "    master.tag",
                                   library.path("beta/tvx_sim_1"), "    master.tag"));
}

// --- the report ---

TEST(TarnetReport, HoldsTheLinesUnderAHeading) {
    Converted library;
    const struct {
        Lines lines;
        std::string written;
    } cases[] = {
        {{}, ""},
        {{""}, "\n"},
        {{"", "a", "    b", ""}, "\na\n    b\n\n"},
        {{"%s%n", "a\nb"}, "%s%n\na\nb\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(library.converter.writeReport(c.lines, "report.txt"), 0);
        EXPECT_EQ(library.read("report.txt"), kHead + c.written);
    }
}

TEST(TarnetReport, OfAListingBeginsWithAnEmptyLine) {
    TarnetLibrary library;
    EXPECT_EQ(library.converter.convert(0, std::string()), 0);
    Lines lines;
    EXPECT_EQ(library.converter.getNewStructure(lines), 0);
    EXPECT_EQ(library.converter.writeReport(lines, "report.txt"), 0);
    EXPECT_EQ(library.read("report.txt"),
              kHead + "\n" + library.cfg + "\n    master.tag\n" + library.view + "\n    master.tag\n");
}

TEST(TarnetReport, LiesInTheLibrary) {
    Converted library;
    library.makeFolder("reports");
    EXPECT_EQ(library.converter.writeReport({"line"}, "reports/new.txt"), 0);
    EXPECT_EQ(library.read("reports/new.txt"), kHead + "line\n");
    EXPECT_EQ(library.converter.writeReport({"line"}, "../beside.txt"), 0);
    EXPECT_EQ(library.folder.read("site/beside.txt"), kHead + "line\n");
}

TEST(TarnetReport, ThatCannotBeOpenedIsNamed) {
    Converted library;
    for (const char* name : {"amp", "no/report.txt", ""}) {
        forgetLastError();
        EXPECT_EQ(library.converter.writeReport({"line"}, name), 10106) << name;
        EXPECT_EQ(lastError(), openForWritingError(library.dir + "/" + name)) << name;
    }
}

TEST(TarnetReport, OfEarlierStaysWhereTheDiskIsFull) {
    for (const bool isThere : {true, false}) {
        TarnetLibrary library;
        library.prepareCell();
        if (isThere) library.write("report.txt", "of last week\n");
        const Tree before = library.tree();
        EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
            EXPECT_EQ(library.converter.writeReport({"line"}, "report.txt"), 0) << isThere;
            EXPECT_EQ(lastError(), LastError()) << isThere;
            return true;
        }));
        EXPECT_EQ(library.tree(), before) << isThere;
    }
}

TEST(TarnetReport, BeforeAConversionItIsWrittenBelowTheRoot) {
    TarnetProjectConverter converter("/no/such/library");
    forgetLastError();
    EXPECT_EQ(converter.writeReport({"line"}, "no such folder/report.txt"), 10106);
    EXPECT_EQ(lastError(), openForWritingError("/no such folder/report.txt"));
}

}  // namespace
