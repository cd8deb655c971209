// deck_test.cpp
//
// The rewriting of the deck of a Draftel profile, and the references to include, library and stimulus files
// in it.

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

// @UP@ stands for the folder that the project folder is in.
template <class Rewritten>
void expectDecks(const DraftelProject& project, const std::vector<LineCase>& cases, Rewritten rewritten) {
    tests::expectLines(cases, {{"@UP@", project.folder.path()}}, rewritten);
}

// --- the deck of a profile ---

int rewriteDeck(DraftelProject& project) {
    std::string newPath = "left over";
    const int status =
        project.converter.rewriteSimulationNetlist(newPath, project.path("amp-S1-tran.sim.cir"), project.dir,
                                                   "S1", "tran", project.profileFolder, "cir");
    EXPECT_EQ(newPath, project.profileFolder + "/tran.cir");
    return status;
}

std::string deckFor(DraftelProject& project, const std::string& text) {
    project.write("amp-S1-tran.sim.cir", text);
    EXPECT_EQ(rewriteDeck(project), 0) << text;
    EXPECT_EQ(project.read("amp-S1-tran.sim.cir"), text);
    return project.readNew("amp-TevrixFiles/S1/tran/tran.cir");
}

// A project with files that a deck can name, some of them recorded as moved.
void prepareDeck(DraftelProject& project) {
    project.prepareSteps();
    for (const char* name :
         {"stay.lib", "stay.inc", "stay.stl", "sub/stay.lib", "ab/stay.lib", "STAY.LIB.old"}) {
        project.write(name, "");
    }
    project.folder.write("models/shared.lib", "");
    project.folder.write("models/shared.inc", "");
    project.folder.makeFolder("project/folder.lib");
    project.converter.addRelocation("./amp.lib", "./amp-TevrixFiles/amp.lib");
    project.converter.addRelocation("./amp.inc", "./amp-TevrixFiles/amp.inc");
    project.converter.addRelocation("./amp.stl", "./amp-TevrixFiles/amp.stl");
    project.converter.addRelocation("./amp-s1-ac.inc", "./amp-TevrixFiles/S1/ac/ac.inc");
    project.converter.addRelocation("./Outside.lib", "./Lib/Outside.lib");
}

TEST(DraftelDeck, ADeckIncludesItsSchematicOneLevelUp) {
    DraftelProject project;
    prepareDeck(project);
    expectDecks(project,
                {
                    {".INC \"amp-S1.net\"", ".INC \"../S1.net\""},
                    {".inc \"C:\\any\\other.NET\" tail", ".INC \"../S1.net\""},
                    {".INCLUDE\".net\"", ".INC \"../S1.net\""},
                    {".INC \"absent.net.inc\"", ".INC \"../S1.net\""},
                    {".INC \"amp-S1.Net\"", kDropped},
                },
                [&](const std::string& text) { return deckFor(project, text); });
}

TEST(DraftelDeck, ADecksIncludesAreRelocated) {
    DraftelProject project;
    prepareDeck(project);
    expectDecks(project,
                {
                    {".INC \"amp.inc\"", ".INC \"../../amp.inc\""},
                    {".inc \".\\AMP.INC\" tail", ".INC \"../../amp.inc\""},
                    {".Include \"amp-S1-ac.inc\"", ".INC \"../../s1/ac/ac.inc\""},
                    {".INC \"stay.inc\"", ".INC \"@UP@/project/stay.inc\""},
                    {".INC \"../models/shared.inc\"", ".INC \"@UP@/models/shared.inc\""},
                    {".inc \"@UP@/models/shared.inc\"", ".INC \"@UP@/models/shared.inc\""},
                    {".inc  \"absent.inc\" tail", ".inc  \"absent.inc\" tail"},
                    {".INC \"C:/x/absent.inc\"", ".INC \"C:/x/absent.inc\""},
                    {".INC \"amp.Inc\"", kDropped},
                    {".INC \"amp.lib\"", kDropped},
                    {".INC \"amp.par\"", kDropped},
                    {".INC \"\"", kDropped},
                    {".INC", kDropped},
                    {".INC amp.inc", kDropped},
                    {".inc 'amp.inc'", kDropped},
                },
                [&](const std::string& text) { return deckFor(project, text); });
}

TEST(DraftelDeck, ADecksStimulusLibrariesAreRelocated) {
    DraftelProject project;
    prepareDeck(project);
    expectDecks(project,
                {
                    {".STMLIB \"amp.stl\"", ".STMLIB \"../../amp.stl\""},
                    {".stmlib \"AMP.STL\"tail", ".STMLIB \"../../amp.stl\""},
                    {".StmLibrary \"stay.stl\"", ".STMLIB \"@UP@/project/stay.stl\""},
                    {".stmlib \"absent.stl\"", ".stmlib \"absent.stl\""},
                    {".STMLIB \"amp.Stl\"", kDropped},
                    {".STMLIB \"amp.lib\"", kDropped},
                    {".STMLIB \"\"", kDropped},
                    {".STMLIB", kDropped},
                    {".STMLIB amp.stl", kDropped},
                    {".STMLI \"amp.stl\"", ".STMLI \"amp.stl\""},
                },
                [&](const std::string& text) { return deckFor(project, text); });
}

TEST(DraftelDeck, ADecksLibrariesAreRelocated) {
    DraftelProject project;
    prepareDeck(project);
    project.write("ABC.LIB", "");
    expectDecks(project,
                {
                    {".LIB \"amp.lib\"", ".LIB \"../../amp.lib\""},
                    {".lib \"./amp.lib\" tail", ".LIB \"../../amp.lib\""},
                    {".Library \"stay.lib\"", ".LIB \"@UP@/project/stay.lib\""},
                    {".LIB \"ABC.LIB\"", ".LIB \"@UP@/project/ABC.LIB\""},
                    {".LIB \"Outside.lib\"", ".LIB \"../../../lib/outside.lib\""},
                    {".LIB \"sub\\stay.lib\"", ".LIB \"@UP@/project/sub/stay.lib\""},
                    // Moved files are known by their names alone, whatever their folder.
                    {".LIB \"sub/amp.lib\"", ".LIB \"../../amp.lib\""},
                    {".LIB \"..\\models\\shared.lib\"", ".LIB \"@UP@/models/shared.lib\""},
                    {".LIB \"../project/amp.lib\"", ".LIB \"../project/amp.lib\""},
                    {".lib \"absent.lib\"", ".lib \"absent.lib\""},
                    {".lib \"folder.lib\"", ".lib \"folder.lib\""},
                    {".LIB \"ab/stay.lib\"", ".LIB \"ab/stay.lib\""},  // absolute by its third byte
                    {".LIB \"/absent/x.lib\"", ".LIB \"/absent/x.lib\""},
                    {".LIB \"Abc.Lib\"", kDropped},
                    {".LIB \"amp.inc\"", kDropped},
                    {".LIB \"\"", kDropped},
                    {".LIB", kDropped},
                    {".LIB amp.lib", kDropped},
                    {".LIBS\"\"", kDropped},
                    {".LI \"amp.lib\"", ".LI \"amp.lib\""},
                },
                [&](const std::string& text) { return deckFor(project, text); });
}

TEST(DraftelDeck, OtherLinesOfADeckAreCopied) {
    DraftelProject project;
    prepareDeck(project);
    expectDecks(project,
                {
                    {" .LIB \"amp.lib\"", " .LIB \"amp.lib\""},
                    {"* .INC \"amp.inc\"", "* .INC \"amp.inc\""},
                    {"alias .stmlib set stimuli =", "alias .stmlib set stimuli ="},
                    {".TRAN 20u 2m", ".TRAN 20u 2m"},
                    {".END", ".END"},
                    {"V1 1 0 \"5\" %s %d \\ /", "V1 1 0 \"5\" %s %d \\ /"},
                    {"\xE4\x01\x7F", "\xE4\x01\x7F"},
                },
                [&](const std::string& text) { return deckFor(project, text); });
}

TEST(DraftelDeck, ADeckKeepsEverythingElse) {
    DraftelProject project;
    prepareDeck(project);
    const std::string filling(1023, 'x');
    struct Case {
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"", ""},
        {"\n\r\n\n", "\n\r\n\n"},
        {"a\0b\n\0\0\n.LIB\0 \"amp.lib\"\n\0"s, "a\0b\n\0\0\n.LIB \"../../amp.lib\"\n\0"s},
        {".LIB \"amp.lib\0\"\n"s, ".LIB \"amp.lib\0\"\n"s},
        // Without a closing quote the line end is part of the name, and there is no such file.
        {".LIB \"amp.lib\r\n", ".LIB \"amp.lib\r\n"},
        {".LIB \"amp.lib", ".LIB \"../../amp.lib\"\n"},
        {".INC \"amp.net\r\n", ".INC \"../S1.net\"\r\n"},
        {".LIB \"amp\n", ""},
        {".LIB \"\n", ""},
        {".LIB \"", ""},
        {filling + filling + "x\r\n", filling + filling + "x\r\n"},
        {filling + ".LIB \"amp.lib\"\n", filling + ".LIB \"../../amp.lib\"\n"},
        {filling + ".LIB\n", filling},
        {filling + "x.LIB \"amp.lib\"\n", filling + "x.LIB \"amp.lib\"\n"},
        {".LIB \"amp.lib\"" + std::string(1009, ' ') + "rest\r\n", ".LIB \"../../amp.lib\"\nrest\r\n"},
    };
    for (const Case& entry : cases) EXPECT_EQ(deckFor(project, entry.text), entry.written) << entry.text;
}

TEST(DraftelDeck, ADeckIsRewrittenInItsOrder) {
    DraftelProject project;
    prepareDeck(project);
    EXPECT_EQ(deckFor(project,
                      "* Profile \"S1-tran\"\r\n"
                      ".LIB \"amp.lib\"\r\n"
                      ".LIB \"../models/shared.lib\"\n"
                      ".LIB \"Abc.Lib\"\r\n"
                      ".INC \"amp-S1.net\"\r\n"
                      ".INC\r\n"
                      ".STMLIB \"absent.stl\"\n"
                      ".TRAN 20u 2m\r\n"
                      ".END"),
              "* Profile \"S1-tran\"\r\n"
              ".LIB \"../../amp.lib\"\r\n"
              ".LIB \"" +
                  project.folder.path("models/shared.lib") +
                  "\"\n"
                  ".INC \"../S1.net\"\r\n"
                  ".STMLIB \"absent.stl\"\n"
                  ".TRAN 20u 2m\r\n"
                  ".END");
    // The caller records the move.
    EXPECT_EQ(movesOf(project.converter).count("./amp-s1-tran.sim.cir"), 0U);
}

TEST(DraftelDeck, DeckNamesComeFromTheArguments) {
    DraftelProject project;
    prepareDeck(project);
    const std::string old =
        project.folder.write("elsewhere/any.txt", ".INC \"x.net\"\n.LIB \"shared.lib\"\n");
    std::string newPath = "left over";
    EXPECT_EQ(project.converter.rewriteSimulationNetlist(newPath, old, project.folder.path("models"),
                                                         "Top level", "P 1", project.schematicFolder, "Deck"),
              0);
    EXPECT_EQ(newPath, project.schematicFolder + "/P 1.Deck");
    EXPECT_EQ(readFile(newPath),
              ".INC \"../Top level.net\"\n.LIB \"" + project.folder.path("models/shared.lib") + "\"\n");
}

TEST(DraftelDeck, TheNewPathMayBeTheStringThatTheOldOneIsIn) {
    DraftelProject project;
    prepareDeck(project);
    std::string path = project.write("amp-S1-tran.sim.cir", ".END\n");
    EXPECT_EQ(project.converter.rewriteSimulationNetlist(path, std::string(path), project.dir, "S1", "tran",
                                                         project.profileFolder, "cir"),
              0);
    EXPECT_EQ(path, project.profileFolder + "/tran.cir");
    EXPECT_EQ(readFile(path), ".END\n");
}

TEST(DraftelDeck, ADeckThatCannotBeOpenedIsNamed) {
    for (const bool isFolder : {false, true}) {
        DraftelProject project;
        prepareDeck(project);
        if (isFolder) project.folder.makeFolder("project/amp-S1-tran.sim.cir");
        const Tree before = project.tree();
        EXPECT_EQ(rewriteDeck(project), 10105) << isFolder;
        EXPECT_EQ(lastError(), openForReadingError(project.path("amp-S1-tran.sim.cir"))) << isFolder;
        EXPECT_EQ(project.tree(), before) << isFolder;
    }
}

TEST(DraftelDeck, ADeckThatMayNotBeReadLeavesAnEarlierOneAlone) {
    DraftelProject project;
    prepareDeck(project);
    project.write("amp-S1-tran.sim.cir", ".END\n");
    project.folder.write("new/amp-TevrixFiles/S1/tran/tran.cir", "earlier");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp-S1-tran.sim.cir").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(rewriteDeck(project), 10105);
        EXPECT_EQ(lastError(), openForReadingError(project.path("amp-S1-tran.sim.cir")));
        return true;
    }));
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.cir"), "earlier");
}

TEST(DraftelDeck, ANewDeckThatCannotBeMadeIsNamed) {
    for (const bool isFolder : {false, true}) {
        DraftelProject project;
        prepareDeck(project);
        project.write("amp-S1-tran.sim.cir", ".END\n");
        const std::string newPath = project.profileFolder + "/tran.cir";
        isFolder ? fs::create_directory(newPath) : fs::remove(project.profileFolder);
        const Tree before = project.tree();
        EXPECT_EQ(rewriteDeck(project), 10106) << isFolder;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isFolder;
        EXPECT_EQ(project.tree(), before) << isFolder;
    }
}

TEST(DraftelDeck, ANewDeckThatTheDiskHasNoRoomForIsRemoved) {
    DraftelProject project;
    prepareDeck(project);
    project.write("amp-S1-tran.sim.cir", ".END\n");
    EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
        EXPECT_EQ(rewriteDeck(project), 10106);
        EXPECT_EQ(lastError(), openForWritingError(project.profileFolder + "/tran.cir"));
        return true;
    }));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/tran/tran.cir"));
}

TEST(DraftelDeck, ADeckIsNotWrittenOverItself) {
    for (const bool isHardLink : {true, false}) {
        DraftelProject project;
        prepareDeck(project);
        const std::string old = project.write("amp-S1-tran.sim.cir", ".INC \"amp-S1.net\"\n");
        const std::string newPath = project.profileFolder + "/tran.cir";
        isHardLink ? fs::create_hard_link(old, newPath) : tests::makeLink(old, newPath);
        EXPECT_EQ(rewriteDeck(project), 10106) << isHardLink;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isHardLink;
        EXPECT_EQ(readFile(old), ".INC \"amp-S1.net\"\n") << isHardLink;
    }
}

// --- references in a deck ---

// The reference as the converter makes it, @DIR@ standing for the project folder and @UP@ for the one that it
// is in; empty where there is none.
std::string resolved(DraftelProject& project, const std::string& value, int marker) {
    std::string reference = "left over";
    const std::string filled = replaced(replaced(value, "@DIR@", project.dir), "@UP@", project.folder.path());
    const int status = project.converter.resolveIncludeReference(project.dir, filled, reference, marker);
    EXPECT_TRUE(status == 0 || reference.empty()) << value;
    return replaced(replaced(reference, project.dir, "@DIR@"), project.folder.path(), "@UP@");
}

struct ReferenceCase {
    const char* value;
    const char* seenFromProfile;  // with the marker
    const char* plain;            // without
};

TEST(DraftelDeck, AReferenceToAMovedFileLeadsToItsNewPlace) {
    DraftelProject project;
    prepareDeck(project);
    const std::vector<ReferenceCase> cases = {
        {"amp.lib", "../../amp.lib", "./amp-tevrixfiles/amp.lib"},
        {".\\amp.lib", "../../amp.lib", "./amp-tevrixfiles/amp.lib"},
        {"./AMP.lib", "../../amp.lib", "./amp-tevrixfiles/amp.lib"},
        {"any/folder/amp.lib", "../../amp.lib", "./amp-tevrixfiles/amp.lib"},
        {"amp-S1-ac.inc", "../../s1/ac/ac.inc", "./amp-tevrixfiles/s1/ac/ac.inc"},
        {"outside.lib", "../../../lib/outside.lib", "./lib/outside.lib"},
    };
    for (const ReferenceCase& entry : cases) {
        EXPECT_EQ(resolved(project, entry.value, 1), entry.seenFromProfile) << entry.value;
        EXPECT_EQ(resolved(project, entry.value, 0), entry.plain) << entry.value;
    }
}

TEST(DraftelDeck, PlacesOutsideTheSimulationRootAreSeenFromTheDestination) {
    DraftelProject project;
    prepareDeck(project);
    struct Case {
        const char* newPath;
        const char* reference;
    };
    const std::vector<Case> cases = {
        {"./x.lib", "../../../x.lib"},
        {"./other-TevrixFiles/x.lib", "../../../other-tevrixfiles/x.lib"},
        {"./amp-TevrixFilesToo/x.lib", "../../../amp-tevrixfilestoo/x.lib"},
        {"./deep/amp-TevrixFiles/x.lib", "../../../deep/amp-tevrixfiles/x.lib"},
        {"./AMP-TEVRIXFILES/deep/er/X.lib", "../../deep/er/x.lib"},
        {"./amp-TevrixFiles", "../../../amp-tevrixfiles"},
        {"D:/elsewhere/x.lib", "d:/elsewhere/x.lib"},
    };
    int number = 0;
    for (const Case& entry : cases) {
        const std::string name = "./file" + std::to_string(++number) + ".lib";
        project.converter.addRelocation(name, entry.newPath);
        EXPECT_EQ(resolved(project, name, 1), entry.reference) << entry.newPath;
    }
}

TEST(DraftelDeck, AReferenceToAFileThatStaysBecomesAbsolute) {
    DraftelProject project;
    prepareDeck(project);
    const std::vector<ReferenceCase> cases = {
        {"stay.lib", "@DIR@/stay.lib", "@DIR@/stay.lib"},
        {"STAY.LIB", "@DIR@/STAY.LIB", "@DIR@/STAY.LIB"},
        {".\\sub\\stay.lib", "@DIR@/sub/stay.lib", "@DIR@/sub/stay.lib"},
        {"./ab/stay.lib", "@DIR@/ab/stay.lib", "@DIR@/ab/stay.lib"},
        {"..\\models\\shared.lib", "@UP@/models/shared.lib", "@UP@/models/shared.lib"},
        {"../project/stay.lib", "@DIR@/stay.lib", "@DIR@/stay.lib"},
        {"@UP@/models/shared.lib", "@UP@/models/shared.lib", "@UP@/models/shared.lib"},
        {"@UP@\\models\\shared.lib", "@UP@/models/shared.lib", "@UP@/models/shared.lib"},
    };
    for (const ReferenceCase& entry : cases) {
        EXPECT_EQ(resolved(project, entry.value, 1), entry.seenFromProfile) << entry.value;
        EXPECT_EQ(resolved(project, entry.value, 0), entry.plain) << entry.value;
    }
}

TEST(DraftelDeck, AReferenceToNoFileIsEmpty) {
    DraftelProject project;
    prepareDeck(project);
    for (const char* value :
         {"absent.lib", "sub/absent.lib", "../absent/shared.lib", "../../project/stay.lib", "/absent/x.lib",
          "C:/x.lib", "//server/x.lib", "folder.lib", "@UP@/models", "ab/stay.lib", "", ".", "..",
          // Not looked up among the moved files, and the file is not there.
          "../amp.lib", "@DIR@/amp.lib"}) {
        EXPECT_EQ(resolved(project, value, 1), "") << value;
        EXPECT_EQ(resolved(project, value, 0), "") << value;
    }
}

TEST(DraftelDeck, ABaseFolderWithoutASlashResolvesNothing) {
    DraftelProject project;
    prepareDeck(project);
    for (const char* value : {"stay.lib", "../models/shared.lib", "./stay.lib"}) {
        std::string reference = "left over";
        project.converter.resolveIncludeReference("project", value, reference, 1);
        EXPECT_EQ(reference, "") << value;
    }
    // Moved files need no base folder.
    std::string reference = "left over";
    EXPECT_EQ(project.converter.resolveIncludeReference("project", "amp.lib", reference, 1), 0);
    EXPECT_EQ(reference, "../../amp.lib");
}

TEST(DraftelDeck, ARelativeFileIsSeenFromTheProfileFolder) {
    DraftelProject project;
    prepareDeck(project);
    const fs::path before = fs::current_path();
    fs::current_path(project.folder.path());
    std::string marked = "left over";
    std::string plain = "left over";
    EXPECT_EQ(project.converter.resolveIncludeReference("./project", "stay.lib", marked, 1), 0);
    EXPECT_EQ(project.converter.resolveIncludeReference("./project", "stay.lib", plain, 0), 0);
    fs::current_path(before);
    EXPECT_EQ(marked, "../../project/stay.lib");
    EXPECT_EQ(plain, "./project/stay.lib");
}

TEST(DraftelDeck, AFileThatMayNotBeReadIsNotReferredTo) {
    DraftelProject project;
    prepareDeck(project);
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("stay.lib").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(resolved(project, "stay.lib", 1), "");
        EXPECT_EQ(deckFor(project, ".lib \"stay.lib\"\n"), ".lib \"stay.lib\"\n");
        return true;
    }));
}

}  // namespace
