// netlist_test.cpp
//
// The rewriting of the netlist of a Draftel schematic.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"
#include "support/lineCases.h"

namespace {

using namespace tests;
using namespace std::string_literals;
using testing::IsEmpty;
namespace fs = std::filesystem;

int relocateNetlist(DraftelProject& project) {
    return project.converter.relocateSchematicNetlist("amp", "S1", project.destination,
                                                      project.schematicFolder);
}

std::string netlistFor(DraftelProject& project, const std::string& text) {
    project.write("amp-S1.net", text);
    EXPECT_EQ(relocateNetlist(project), 0) << text;
    EXPECT_EQ(project.read("amp-S1.net"), text);
    return project.readNew("amp-TevrixFiles/S1/S1.net");
}

TEST(DraftelNetlist, OfASchematicsIncludesOnlyTheParameterFileStays) {
    DraftelProject project;
    project.prepareSteps();
    expectLines(
        {
            {".INC \"amp-S1.par\"", ".INC \"../S1.par\""},
            {".inc \"amp.PAR\"", ".INC \"../S1.par\""},
            {".Inc\"x.par.old\"tail", ".INC \"../S1.par\""},
            {".INCLUDE \"C:\\x\\y.par\" ", ".INC \"../S1.par\""},
            {".INC \"amp.Par\"", kDropped},
            {".INC \"par\"", kDropped},
            {".INC \"other.lib\"", kDropped},
            {".inc \"amp.inc\"", kDropped},
            {".INC \"amp-S1.net\"", kDropped},
            {".INC \"a\" \"b.par\"", kDropped},
            {".INC", ".INC"},
            {".INC amp.par", ".INC amp.par"},
            {".inc \"\"", ".inc \"\""},
            {".INC \"\"amp.par\"", ".INC \"\"amp.par\""},
            {".IN \"amp.par\"", ".IN \"amp.par\""},
            {" .INC \"amp.par\"", " .INC \"amp.par\""},
            {"* .INC \"amp.par\"", "* .INC \"amp.par\""},
            {".LIB \"amp.lib\"", ".LIB \"amp.lib\""},
            {".STMLIB \"amp.stl\"", ".STMLIB \"amp.stl\""},
            {".lib", ".lib"},
            {"V1 1 0 \"5\" %s %d \\", "V1 1 0 \"5\" %s %d \\"},
            {"\xE4\x01\x7F", "\xE4\x01\x7F"},
        },
        {}, [&](const std::string& text) { return netlistFor(project, text); });
}

TEST(DraftelNetlist, ANetlistKeepsEverythingElse) {
    DraftelProject project;
    project.prepareSteps();
    const std::string filling(1023, 'x');
    struct Case {
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"", ""},
        {"\n\r\n\n", "\n\r\n\n"},
        {"R1 1 0 1k", "R1 1 0 1k"},
        {"a\0b\n\0\0\n.INC \"\0.par\"\n\0"s, "a\0b\n\0\0\n.INC \"../S1.par\"\n\0"s},
        {".INC \"a.par\r\n", ".INC \"../S1.par\"\r\n"},
        {".INC \"a.par", ".INC \"../S1.par\"\n"},
        {".INC \"a\n", ""},
        {".INC \"\n", ""},       // the line end is the value
        {".INC \"", ".INC \""},  // there is no value
        {filling + filling + "x\r\n", filling + filling + "x\r\n"},
        {filling + ".INC \"a.par\"\n", filling + ".INC \"../S1.par\"\n"},
        {filling + ".INC \"a.lib\"\n", filling},
        {filling + "x.INC \"a.par\"\n", filling + "x.INC \"a.par\"\n"},
        {".INC \"a.par\"" + std::string(1011, ' ') + "rest\r\n", ".INC \"../S1.par\"\nrest\r\n"},
    };
    for (const Case& entry : cases) EXPECT_EQ(netlistFor(project, entry.text), entry.written) << entry.text;
}

TEST(DraftelNetlist, ALargeNetlistIsWhole) {
    DraftelProject project;
    project.prepareSteps();
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "R" + std::to_string(i) + " 1 0 1k\r\n";
    EXPECT_TRUE(netlistFor(project, text + ".INC \"a.par\"\r\n") ==
                tests::asRead(text + ".INC \"../S1.par\"\r\n"));
}

TEST(DraftelNetlist, ANetlistBelowTheProjectIsRecordedRelativeToIt) {
    DraftelProject project;
    project.prepareSteps();
    project.write("Boards/Top/amp-S1.net", "R1 1 0 1k\n");
    project.converter.setDesignDir(project.path("Boards/Top"));
    EXPECT_EQ(relocateNetlist(project), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/S1.net"), "R1 1 0 1k\n");
    EXPECT_EQ(movesOf(project.converter),
              (Moves{{"./boards/top/amp-s1.net", "./amp-tevrixfiles/s1/s1.net"}}));
}

TEST(DraftelNetlist, ANetlistElsewhereIsRecordedByItsWholePath) {
    // A name that merely begins like that of the project folder is elsewhere as well.
    for (const char* name : {"Boards", "project2"}) {
        DraftelProject project;
        project.prepareSteps();
        const std::string old = project.folder.write(std::string(name) + "/amp-S1.net", "R1 1 0 1k\n");
        project.converter.setDesignDir(project.folder.path(name));
        EXPECT_EQ(relocateNetlist(project), 0) << name;
        EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/S1.net"), "R1 1 0 1k\n") << name;
        EXPECT_EQ(movesOf(project.converter), (Moves{{lowerCase(old), "./amp-tevrixfiles/s1/s1.net"}}))
            << name;
    }
}

TEST(DraftelNetlist, NetlistNamesComeFromTheArguments) {
    DraftelProject project;
    project.prepareSteps();
    fs::create_directories(project.root + "/Top");
    project.write("Board-Top level.net", ".INC \"x.par\"\n");
    EXPECT_EQ(project.converter.relocateSchematicNetlist("Board", "Top level", project.destination,
                                                         project.root + "/Top"),
              0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/Top/Top level.net"), ".INC \"../Top level.par\"\n");
    EXPECT_EQ(movesOf(project.converter),
              (Moves{{"./board-top level.net", "./amp-tevrixfiles/top/top level.net"}}));
}

TEST(DraftelNetlist, WithoutANetlistNothingIsDone) {
    for (const bool isFolder : {false, true}) {
        DraftelProject project;
        project.prepareSteps();
        if (isFolder) project.folder.makeFolder("project/amp-S1.net");
        const Tree before = project.tree();
        EXPECT_EQ(relocateNetlist(project), 0) << isFolder;
        EXPECT_EQ(project.tree(), before) << isFolder;
        EXPECT_THAT(movesOf(project.converter), IsEmpty()) << isFolder;
        EXPECT_EQ(lastError(), LastError()) << isFolder;
    }
}

TEST(DraftelNetlist, ANetlistThatMayNotBeReadCountsAsAbsent) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp-S1.net", "R1 1 0 1k\n");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp-S1.net").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(relocateNetlist(project), 0);
        EXPECT_EQ(lastError(), LastError());
        EXPECT_THAT(movesOf(project.converter), IsEmpty());
        return true;
    }));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/S1.net"));
}

TEST(DraftelNetlist, ANetlistThatCannotBeOpenedIsNamed) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp-S1.net", "R1 1 0 1k\n");
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        EXPECT_EQ(relocateNetlist(project), 10105);
        EXPECT_EQ(lastError(), openForReadingError(project.path("amp-S1.net")));
        EXPECT_THAT(movesOf(project.converter), IsEmpty());
        return true;
    }));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/S1.net"));
}

TEST(DraftelNetlist, ANewNetlistThatCannotBeMadeIsNamed) {
    for (const bool isFolder : {false, true}) {
        DraftelProject project;
        project.prepareSteps();
        project.write("amp-S1.net", "R1 1 0 1k\n");
        const std::string newPath = project.schematicFolder + "/S1.net";
        isFolder ? fs::create_directory(newPath) : fs::remove_all(project.schematicFolder) != 0;
        const Tree before = project.tree();
        EXPECT_EQ(relocateNetlist(project), 10106) << isFolder;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isFolder;
        EXPECT_EQ(project.tree(), before) << isFolder;
        EXPECT_THAT(movesOf(project.converter), IsEmpty()) << isFolder;
    }
}

TEST(DraftelNetlist, ANewNetlistThatTheDiskHasNoRoomForIsRemoved) {
    DraftelProject project;
    project.prepareSteps();
    project.write("amp-S1.net", "R1 1 0 1k\n");
    EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
        EXPECT_EQ(relocateNetlist(project), 10106);
        EXPECT_EQ(lastError(), openForWritingError(project.schematicFolder + "/S1.net"));
        EXPECT_THAT(movesOf(project.converter), IsEmpty());
        return true;
    }));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/S1.net"));
}

TEST(DraftelNetlist, ANetlistIsNotWrittenOverItself) {
    for (const bool isHardLink : {true, false}) {
        DraftelProject project;
        project.prepareSteps();
        const std::string text = ".INC \"a.par\"\nR1 1 0 1k\n";
        const std::string old = project.write("amp-S1.net", text);
        const std::string newPath = project.schematicFolder + "/S1.net";
        isHardLink ? fs::create_hard_link(old, newPath) : tests::makeLink(old, newPath);
        EXPECT_EQ(relocateNetlist(project), 10106) << isHardLink;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isHardLink;
        EXPECT_EQ(readFile(old), text) << isHardLink;
        EXPECT_EQ(readFile(newPath), text) << isHardLink;
    }
}

}  // namespace
