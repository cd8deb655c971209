// structureListing_test.cpp
//
// What a host shows after a Draftel conversion: the listing of the new structure, and the report file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "interface/IDraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::ElementsAreArray;
using tvxconv::DraftelProjectConverter;
using Lines = std::vector<std::string>;

// A destination, and a converter as a conversion leaves it: project "amp", design "board".
class Converted {
public:
    Converted()
        : destination(folder.path("new")), root(destination + "/amp-TevrixFiles"), converter(nullptr) {
        folder.makeFolder("new");
        converter.setMode(2);
        converter.setDestinationDir(destination);
        converter.setDesignName("amp");
        converter.setDesignFileBaseName("board");
        forgetLastError();
    }

    void write(const std::string& name) const { folder.write("new/" + name, ""); }

    Lines list() {
        Lines lines;
        EXPECT_EQ(converter.getNewStructure(lines), 0);
        return lines;
    }

    const TestFolder folder;
    const std::string destination;
    const std::string root;
    DraftelProjectConverter converter;
};

// --- the listing ---

TEST(DraftelListing, BeforeAConversionThereIsNone) {
    DraftelProjectConverter converter("/p/amp.opj");
    Lines lines = {"left over"};
    EXPECT_EQ(converter.getNewStructure(lines), 1);
    EXPECT_THAT(lines, ElementsAre("left over"));
}

TEST(DraftelListing, InAnyOtherModeThereIsNone) {
    for (const int mode : {1, 3, -1}) {
        Converted converted;
        converted.converter.setMode(mode);
        Lines lines = {"left over"};
        EXPECT_EQ(converted.converter.getNewStructure(lines), 1) << mode;
        EXPECT_THAT(lines, ElementsAre("left over")) << mode;
    }
}

TEST(DraftelListing, LinesAreAppended) {
    Converted converted;
    converted.write("amp.opj");
    Lines lines = {"first", "second"};
    EXPECT_EQ(converted.converter.getNewStructure(lines), 0);
    EXPECT_THAT(lines, ElementsAre("first", "second", converted.destination, "    amp.opj"));
}

TEST(DraftelListing, ProjectDesignAndBackupStandFirstAsFarAsTheyAreThere) {
    struct Case {
        Lines files;
        Lines listed;
    };
    const std::vector<Case> cases = {
        {{}, {}},
        {{"amp.opj"}, {"    amp.opj"}},
        {{"board.dsn"}, {"    board.dsn"}},
        {{"board.dbk"}, {"    board.dbk"}},
        {{"board.dbk", "board.dsn", "amp.opj"}, {"    amp.opj", "    board.dsn", "    board.dbk"}},
        {{"amp.dsn", "amp.dbk", "board.opj", "amp.lib"}, {}},
    };
    for (const Case& entry : cases) {
        Converted converted;
        for (const std::string& name : entry.files) converted.write(name);
        Lines expected = {converted.destination};
        expected.insert(expected.end(), entry.listed.begin(), entry.listed.end());
        EXPECT_EQ(converted.list(), expected);
    }
}

TEST(DraftelListing, AFolderIsNoProjectFile) {
    Converted converted;
    converted.folder.makeFolder("new/amp.opj");
    EXPECT_THAT(converted.list(), ElementsAre(converted.destination));
}

TEST(DraftelListing, TheDestinationHasForwardSlashes) {
    Converted converted;
    converted.converter.setDestinationDir(withBackslashes(converted.destination));
    EXPECT_THAT(converted.list(), ElementsAre(converted.destination));
}

TEST(DraftelListing, ARootThatIsNoFolderIsLeftOut) {
    Converted converted;
    converted.write("amp.opj");
    converted.write("amp-TevrixFiles");
    EXPECT_THAT(converted.list(), ElementsAre(converted.destination, "    amp.opj"));
}

TEST(DraftelListing, AnEmptyRootIsALineOfItsOwn) {
    Converted converted;
    converted.folder.makeFolder("new/amp-TevrixFiles");
    EXPECT_THAT(converted.list(), ElementsAre(converted.destination, converted.root));
}

TEST(DraftelListing, EachFolderIsFollowedByItsFilesAndThenItsProfiles) {
    Converted converted;
    for (const char* name :
         {"amp.opj", "board.dsn", "amp-TevrixFiles/board.stl", "amp-TevrixFiles/Board.inc",
          "amp-TevrixFiles/S2/S2.net", "amp-TevrixFiles/S1/tran.sim", "amp-TevrixFiles/S1/ac.sim",
          "amp-TevrixFiles/S1/S1-default.mrk", "amp-TevrixFiles/S1/tran/tran.dat",
          "amp-TevrixFiles/S1/tran/tran.cir", "amp-TevrixFiles/S1/ac/ac.mc.out"}) {
        converted.write(name);
    }
    converted.folder.makeFolder("new/amp-TevrixFiles/S2/empty");
    const std::string& root = converted.root;
    EXPECT_THAT(
        converted.list(),
        ElementsAreArray({converted.destination, std::string("    amp.opj"), std::string("    board.dsn"),
                          root, std::string("    Board.inc"), std::string("    board.stl"), root + "/S1",
                          std::string("    ac.sim"), std::string("    S1-default.mrk"),
                          std::string("    tran.sim"), root + "/S1/ac", std::string("    ac.mc.out"),
                          root + "/S1/tran", std::string("    tran.cir"), std::string("    tran.dat"),
                          root + "/S2", std::string("    S2.net"), root + "/S2/empty"}));
}

TEST(DraftelListing, OnlyTheDotInANameTellsAFileFromAFolder) {
    Converted converted;
    for (const char* name :
         {"amp-TevrixFiles/plain", "amp-TevrixFiles/.hidden", "amp-TevrixFiles/ends.",
          "amp-TevrixFiles/folder.with.dots/inside.txt", "amp-TevrixFiles/S1/plain",
          "amp-TevrixFiles/S1/dotted.folder/inside.txt", "amp-TevrixFiles/S1/tran/plain",
          "amp-TevrixFiles/S1/tran/tran.out", "amp-TevrixFiles/S1/tran/deeper/inside.txt"}) {
        converted.write(name);
    }
    const std::string& root = converted.root;
    EXPECT_THAT(converted.list(),
                ElementsAre(converted.destination, root, "    .hidden", "    folder.with.dots", root + "/S1",
                            "    dotted.folder", root + "/S1/tran", "    tran.out"));
}

TEST(DraftelListing, FoldersThatCannotBeListedAreLeftOut) {
    Converted converted;
    converted.write("amp-TevrixFiles/S1/S1.net");
    converted.write("amp-TevrixFiles/S1/closed/a.dat");
    converted.write("amp-TevrixFiles/S1/open/b.dat");
    converted.write("amp-TevrixFiles/closed/c.net");
    openToAll(converted.folder.path());
    ASSERT_EQ(chmod((converted.root + "/S1/closed").c_str(), 0), 0);
    ASSERT_EQ(chmod((converted.root + "/closed").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_THAT(converted.list(),
                    ElementsAre(converted.destination, converted.root, converted.root + "/S1", "    S1.net",
                                converted.root + "/S1/open", "    b.dat"));
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
}

TEST(DraftelListing, ARootThatCannotBeListedIsLeftOut) {
    Converted converted;
    converted.write("amp-TevrixFiles/amp.lib");
    openToAll(converted.folder.path());
    ASSERT_EQ(chmod(converted.root.c_str(), 0333), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_THAT(converted.list(), ElementsAre(converted.destination));
        return true;
    }));
}

TEST(DraftelListing, ConversionsOfBothModesCanBeListed) {
    for (const int mode : {1, 2}) {
        DraftelProject project;
        EXPECT_EQ(project.converter.convert(mode, project.destination), 0);
        const std::string destination = mode == 1 ? project.dir : project.destination;
        const std::string root = destination + "/amp-TevrixFiles";
        Lines lines;
        EXPECT_EQ(project.converter.getNewStructure(lines), 0);
        EXPECT_THAT(lines, ElementsAre(destination, "    amp.opj", "    amp.dsn", root, root + "/S1",
                                       "    tran.sim", root + "/S1/tran"));
    }
}

TEST(DraftelListing, AConversionThatStoppedIsListedAsFarAsItGot) {
    DraftelProject project;
    project.remove("amp.dsn");
    project.write("amp.lib", "library");
    EXPECT_EQ(project.converter.convert(2, project.destination), 10109);
    Lines lines;
    EXPECT_EQ(project.converter.getNewStructure(lines), 0);
    EXPECT_THAT(lines, ElementsAre(project.destination, project.root));
}

TEST(DraftelListing, AHostGetsTheLinesBehindItsOwn) {
    const DraftelProject project;
    const CString path(project.path("amp.opj").c_str());
    const std::unique_ptr<IDraftelProjectConverter> converter(createDraftelProjectConverter(&path));
    CStringArray lines;
    lines.Add("first");
    EXPECT_EQ(converter->getNewStructure(lines), 1);
    EXPECT_EQ(lines.GetSize(), 1);
    EXPECT_EQ(converter->convert(2, CString(project.destination.c_str())), 0);
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    ASSERT_EQ(lines.GetSize(), 8);
    EXPECT_STREQ(lines[0], "first");
    EXPECT_STREQ(lines[1], project.destination.c_str());
    EXPECT_STREQ(lines[2], "    amp.opj");
    EXPECT_STREQ(lines[7], (project.root + "/S1/tran").c_str());
}

// --- the report ---

constexpr const char* kHeading =
    "The conversion of the project was successful.\n\nThe new directory structure is as follows:\n\n";

TEST(DraftelListing, AReportIsTwoSentencesAndTheLines) {
    struct Case {
        Lines lines;
        std::string body;
    };
    const std::vector<Case> cases = {
        {{}, ""},
        {{"one"}, "one\n"},
        {{"/new", "    amp.opj", "/new/amp-TevrixFiles"}, "/new\n    amp.opj\n/new/amp-TevrixFiles\n"},
        {{"", "100%s", "%d\\n"}, "\n100%s\n%d\\n\n"},
    };
    for (const Case& entry : cases) {
        Converted converted;
        EXPECT_EQ(converted.converter.writeReport(entry.lines, "report.txt"), 0);
        EXPECT_EQ(converted.folder.read("new/report.txt"), kHeading + entry.body);
        EXPECT_EQ(lastError(), LastError());
    }
}

TEST(DraftelListing, AReportReplacesAnEarlierOne) {
    Converted converted;
    converted.folder.write("new/report.txt", std::string(5000, 'x'));
    EXPECT_EQ(converted.converter.writeReport({"line"}, "report.txt"), 0);
    EXPECT_EQ(converted.folder.read("new/report.txt"), std::string(kHeading) + "line\n");
}

TEST(DraftelListing, AReportOfManyLinesIsWhole) {
    Converted converted;
    const Lines lines(5000, std::string(200, 'x'));
    std::string expected = kHeading;
    for (const std::string& line : lines) expected += line + "\n";
    EXPECT_EQ(converted.converter.writeReport(lines, "report.txt"), 0);
    EXPECT_TRUE(converted.folder.read("new/report.txt") == expected);
}

TEST(DraftelListing, AReportLandsBelowTheDestinationWhateverItsName) {
    struct Case {
        std::string name;
        std::string place;
    };
    for (const Case& entry : std::vector<Case>{{"deep/er/report.txt", "new/deep/er/report.txt"},
                                               {"/deep/report.txt", "new/deep/report.txt"},
                                               {"../report.txt", "report.txt"},
                                               {"report", "new/report"}}) {
        Converted converted;
        converted.folder.makeFolder("new/deep/er");
        EXPECT_EQ(converted.converter.writeReport(Lines(), entry.name), 0) << entry.name;
        EXPECT_EQ(converted.folder.read(entry.place), kHeading) << entry.name;
    }
}

TEST(DraftelListing, AReportThatCannotBeOpenedIsReported) {
    Converted converted;
    converted.folder.makeFolder("new/folder");
    for (const char* name : {"no/such/report.txt", "folder", ""}) {
        forgetLastError();
        EXPECT_EQ(converted.converter.writeReport({"line"}, name), 10106) << name;
        EXPECT_EQ(lastError(), openForWritingError(converted.destination + "/" + name)) << name;
    }
}

TEST(DraftelListing, AReportThatMayNotBeWrittenIsReported) {
    Converted converted;
    converted.folder.write("new/report.txt", "earlier");
    openToAll(converted.folder.path());
    ASSERT_EQ(chmod(converted.folder.path("new/report.txt").c_str(), 0444), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(converted.converter.writeReport(Lines(), "report.txt"), 10106);
        EXPECT_EQ(lastError(), openForWritingError(converted.folder.path("new/report.txt")));
        return true;
    }));
    EXPECT_EQ(converted.folder.read("new/report.txt"), "earlier");
}

TEST(DraftelListing, AFullDiskLeavesTheEarlierReport) {
    for (const bool isThere : {true, false}) {
        Converted converted;
        if (isThere) converted.folder.write("new/report.txt", "of last week\n");
        const Tree before = treeOf(converted.folder.path("new"));
        EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
            EXPECT_EQ(converted.converter.writeReport({"line"}, "report.txt"), 0) << isThere;
            EXPECT_EQ(lastError(), LastError()) << isThere;
            return true;
        }));
        EXPECT_EQ(treeOf(converted.folder.path("new")), before) << isThere;
    }
}

TEST(DraftelListing, EmptyLinesOfAHostStayOutOfTheReport) {
    const DraftelProject project;
    const CString path(project.path("amp.opj").c_str());
    const std::unique_ptr<IDraftelProjectConverter> converter(createDraftelProjectConverter(&path));
    EXPECT_EQ(converter->convert(2, CString(project.destination.c_str())), 0);
    CStringArray lines;
    for (const char* line : {"", "one", "", "", "two", ""}) lines.Add(line);
    EXPECT_EQ(converter->writeReport(lines, "report.txt"), 0);
    EXPECT_EQ(project.readNew("report.txt"), std::string(kHeading) + "one\ntwo\n");
    lines.RemoveAll();
    EXPECT_EQ(converter->writeReport(lines, "report.txt"), 0);
    EXPECT_EQ(project.readNew("report.txt"), kHeading);
}

}  // namespace
