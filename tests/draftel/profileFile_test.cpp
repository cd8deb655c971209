// profileFile_test.cpp
//
// The rewriting of a simulation profile file: its keys, its numbered entries with the files that they name,
// and the references to its data and output files.

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
using tvxconv::DraftelProjectConverter;
namespace fs = std::filesystem;

int rewrite(DraftelProject& project) {
    return project.converter.rewriteSimProfile("amp-S1-tran", "tran", project.destination,
                                               project.schematicFolder, "S1");
}

// The profile file as it is written for `text` as the old one.
std::string rewritten(DraftelProject& project, const std::string& text) {
    project.write("amp-S1-tran.sim", text);
    EXPECT_EQ(rewrite(project), 0) << text;
    EXPECT_EQ(project.read("amp-S1-tran.sim"), text);
    return project.readNew("amp-TevrixFiles/S1/tran.sim");
}

// @DIR@ stands for the project folder, written with backslashes.
void expectTexts(const std::vector<LineCase>& cases) {
    DraftelProject project;
    project.prepareSteps();
    tests::expectLines(cases, {{"@DIR@", withBackslashes(project.dir)}},
                       [&](const std::string& text) { return rewritten(project, text); });
}

// --- the keys ---

TEST(DraftelProfileFile, ReferencesToTheDesignBecomeOneToTheNetlist) {
    expectTexts({
        {"DesignFile= \"amp.dsn\" ", "Connectivity= \"S1.net\" "},
        {"ProjectFile= \"amp.opj\" ", "Connectivity= \"S1.net\" "},
        {"RootSchematics= \"S1\" ", "Connectivity= \"S1.net\" "},
        {"designfile=\"x\"", "Connectivity= \"S1.net\" "},
        {"PROJECTFILE= \"x\"", "Connectivity= \"S1.net\" "},
        {"rOOTsCHEMATICS", "Connectivity= \"S1.net\" "},
        {"DesignFile= \"\" ", "Connectivity= \"S1.net\" "},
        {"DesignFiles= \"x\" ", "Connectivity= \"S1.net\" "},
        {"RootSchematicsOf", "Connectivity= \"S1.net\" "},
    });
}

TEST(DraftelProfileFile, OnlyTheFirstReferenceToTheDesignLeavesALine) {
    DraftelProject project;
    project.prepareSteps();
    EXPECT_EQ(rewritten(project,
                        "ProfileName= \"tran\" \n"
                        "RootSchematics= \"S1\" \n"
                        "AnalysisType= \"Transient\" \n"
                        "DesignFile= \"amp.dsn\" \n"
                        "ProjectFile= \"amp.opj\" \n"
                        "designfile= \"again.dsn\" \n"
                        "RunToTime= \"2m\" \n"),
              "ProfileName= \"tran\" \n"
              "Connectivity= \"S1.net\" \n"
              "AnalysisType= \"Transient\" \n"
              "RunToTime= \"2m\" \n");
}

TEST(DraftelProfileFile, EachFileHasItsOwnConnectivity) {
    DraftelProject project;
    project.prepareSteps();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(rewritten(project, "DesignFile= \"amp.dsn\" \n"), "Connectivity= \"S1.net\" \n");
    }
}

TEST(DraftelProfileFile, TheProfileFileIsNamedAfterTheProfile) {
    expectTexts({
        {"ProfileFile= \"amp-S1-tran.sim\" ", "ProfileFile= \"tran.sim\" "},
        {"profilefile= \"x.sim\" ", "ProfileFile= \"tran.sim\" "},
        {"PROFILEFILE=\"C:\\x\\y.sim\"and more", "ProfileFile= \"tran.sim\" "},
        {"ProfileFiles= \"x.sim\"", "ProfileFile= \"tran.sim\" "},
        {"ProfileFile= \"x.simulation\" ", "ProfileFile= \"tran.sim\" "},
        {"ProfileFile\".sim\"", "ProfileFile= \"tran.sim\" "},
        {"ProfileFile= \"x.SIM\" ", kDropped},
        {"ProfileFile= \"x.Sim\" ", kDropped},
        {"ProfileFile= \"sim\" ", kDropped},
        {"ProfileFile= \"x\" \"y.sim\" ", kDropped},
        {"ProfileFile= \"\"", "ProfileFile= \"\" "},
        {"profileFILE=\"\"x.sim\"", "ProfileFile= \"\" "},
        {"ProfileFile= x.sim ", kDropped},
        {"ProfileFile", kDropped},
        {"ProfileFil= \"x.sim\" ", "ProfileFil= \"x.sim\" "},
    });
}

TEST(DraftelProfileFile, TheNetlistFileIsTheDeckOfTheProfile) {
    expectTexts({
        {"NetlistFile= \"amp-S1-tran.sim.cir\" ", "NetlistFile= \"tran.cir\" "},
        {"netlistfile= \".\\sub\\x.sim.cir\" ", "NetlistFile= \"tran.cir\" "},
        {"NETLISTFILEX\"x.sim.cir.old\"", "NetlistFile= \"tran.cir\" "},
        {"NetlistFile= \"x.cir\" ", kDropped},
        {"NetlistFile= \"x.sim\" ", kDropped},
        {"NetlistFile= \"x.SIM.CIR\" ", kDropped},
        {"NetlistFile= \"x.sim.CIR\" ", kDropped},
        {"NetlistFile= \"\"", "NetlistFile= \"\" "},
        {"NetlistFile= x.sim.cir ", kDropped},
        {"NetlistFile", kDropped},
    });
}

TEST(DraftelProfileFile, TheDataFileIsRelocated) {
    expectTexts({
        {"DataFile= \"amp-S1-tran.dat\" ", "DataFile= \"tran.dat\" "},
        {"DataFile= \"amp-S1-tran.csd\" ", "DataFile= \"tran.csd\" "},
        {"datafile= \"AMP-s1-TRAN.mc.dat\" ", "DataFile= \"tran.mc.dat\" "},
        {"DATAFILES\"x.dat.csd\"tail", "DataFile= \"@DIR@\\x.dat.csd\" "},
        {"DataFile= \"other.csd\" ", "DataFile= \"@DIR@\\other.csd\" "},
        {"DataFile= \"C:/old/amp-S1-tran.dat\" ", "DataFile= \"C:\\old\\amp-S1-tran.dat\" "},
        {"DataFile= \"x.DAT\" ", kDropped},
        {"DataFile= \"x.CSD\" ", kDropped},
        {"DataFile= \"x.out\" ", kDropped},
        {"DataFile= \"dat\" ", kDropped},
        {"DataFile= \"\"", "DataFile= \"\" "},
        {"DataFile= amp-S1-tran.dat ", kDropped},
        {"DataFile", kDropped},
    });
}

TEST(DraftelProfileFile, TheOutputFileIsRelocated) {
    expectTexts({
        {"OutFile= \"amp-S1-tran.out\" ", "OutFile= \"tran.out\" "},
        {"outfile= \"amp-S1-TRAN.out.1\" ", "OutFile= \"tran.out.1\" "},
        {"OUTFILE\"results.out\"", "OutFile= \"@DIR@\\results.out\" "},
        {"OutFile= \"sub/results.out\" ", "OutFile= \"@DIR@\\sub\\results.out\" "},
        {"OutFile= \"C:/old/amp-S1-tran.out\" ", "OutFile= \"C:\\old\\amp-S1-tran.out\" "},
        {"OutFile= \"C:\\old/amp-S1-tran.out\" ", "OutFile= \"C:\\old\\amp-S1-tran.out\" "},
        // Where there are drives, only they begin an absolute path.
        {"OutFile= \"/old/amp.out\" ",
         kOnWindows ? "OutFile= \"@DIR@\\\\old\\amp.out\" " : "OutFile= \"\\old\\amp.out\" "},
        {"OutFile= \"x.OUT\" ", kDropped},
        {"OutFile= \"x.dat\" ", kDropped},
        {"OutFile= \"\"", "OutFile= \"\" "},
        {"OutFile= amp-S1-tran.out ", kDropped},
        {"OutFile", kDropped},
    });
}

TEST(DraftelProfileFile, OtherLinesAreCopied) {
    expectTexts({
        {"AnalysisType= \"amp-S1-tran.sim\" ", "AnalysisType= \"amp-S1-tran.sim\" "},
        {"ProfileName= \"tran\" ", "ProfileName= \"tran\" "},
        {" DesignFile= \"amp.dsn\" ", " DesignFile= \"amp.dsn\" "},
        {"\tOutFile= \"amp-S1-tran.out\"", "\tOutFile= \"amp-S1-tran.out\""},
        {"Connectivity= \"old.net\" ", "Connectivity= \"old.net\" "},
        {"OutFil", "OutFil"},
        {"DesignFil= \"x\"", "DesignFil= \"x\""},
        {"* \"\" \\ / % %s %d", "* \"\" \\ / % %s %d"},
        {"\xE4\xF6\xFC \x01\x7F", "\xE4\xF6\xFC \x01\x7F"},
        {"\r", "\r"},
    });
}

TEST(DraftelProfileFile, EmptyFilesAndEmptyLinesStayEmpty) {
    DraftelProject project;
    project.prepareSteps();
    for (const std::string text : {"", "\n", "\r\n", "\n\n\r\n\n", "\r\r\n"}) {
        EXPECT_EQ(rewritten(project, text), text);
    }
}

TEST(DraftelProfileFile, AValueWithoutAClosingQuoteRunsToTheEndOfTheLine) {
    DraftelProject project;
    project.prepareSteps();
    const std::string dir = withBackslashes(project.dir);
    struct Case {
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"ProfileFile= \"x.sim\n", "ProfileFile= \"tran.sim\" \n"},
        {"ProfileFile= \"x.sim\r\n", "ProfileFile= \"tran.sim\" \r\n"},
        {"ProfileFile= \"x.sim", "ProfileFile= \"tran.sim\" \n"},
        {"ProfileFile= \"x\n", ""},
        // The line end alone is a value, and nothing at all is none: both are dropped.
        {"ProfileFile= \"\n", ""},
        {"ProfileFile= \"", ""},
        {"NetlistFile= \"x.sim.cir\n", "NetlistFile= \"tran.cir\" \n"},
        {"NetlistFile= \"", ""},
        {"DataFile= \"amp-S1-tran.dat", "DataFile= \"tran.dat\" \n"},
        {"DataFile= \"amp-S1-tran.dat\n", "DataFile= \"tran.dat\n\" \n"},
        {"DataFile= \"", ""},
        {"OutFile= \"x.out\r\n", "OutFile= \"" + dir + "\\x.out\r\n\" \r\n"},
        {"OutFile= \"", ""},
        {"DesignFile= \"amp.dsn", "Connectivity= \"S1.net\" \n"},
        {"+1 \"x.lib\n", "+1 \"x.lib\n"},
        {"+1 \"", "+1 \""},
    };
    for (const Case& entry : cases) EXPECT_EQ(rewritten(project, entry.text), entry.written) << entry.text;
}

TEST(DraftelProfileFile, LineEndsMayDifferFromLineToLine) {
    DraftelProject project;
    project.prepareSteps();
    EXPECT_EQ(rewritten(project,
                        "DesignFile= \"amp.dsn\" \r\n"
                        "A= \"1\" \n"
                        "ProfileFile= \"a.sim\" \n"
                        "B= \"2\" \r\n"
                        "NetlistFile= \"a.sim.cir\" \r\n"
                        "OutFile= \"\""),
              tests::asRead("Connectivity= \"S1.net\" \r\n"
                            "A= \"1\" \n"
                            "ProfileFile= \"tran.sim\" \n"
                            "B= \"2\" \r\n"
                            "NetlistFile= \"tran.cir\" \r\n"
                            "OutFile= \"\" \n"));
}

TEST(DraftelProfileFile, ANulIsAByteLikeAnyOther) {
    DraftelProject project;
    project.prepareSteps();
    EXPECT_EQ(rewritten(project, "a\0b\n\0\0\nProfileFile= \"x\0.sim\"\0\nOther\0"s),
              "a\0b\n\0\0\nProfileFile= \"tran.sim\" \nOther\0"s);
    EXPECT_EQ(rewritten(project, "Profile\0File= \"x.sim\"\n"s), "Profile\0File= \"x.sim\"\n"s);
    EXPECT_EQ(rewritten(project, "OutFile= \"amp-S1-tran.o\0.out\"\n"s), "OutFile= \"tran.o\0.out\" \n"s);
    EXPECT_EQ(rewritten(project, "+1 \"a\0.lib\"\n"s), "+1 \"a\0.lib\"\n"s);
    EXPECT_EQ(rewritten(project, "ProfileFile\0= \"x.sim\"\n"s), "ProfileFile= \"tran.sim\" \n"s);
}

// A line comes in pieces of at most 1023 bytes, and each piece is handled like a line.
TEST(DraftelProfileFile, LongLinesComeInPieces) {
    if (tests::kOnWindows) GTEST_SKIP() << "a line is cut after its CR has gone there";
    DraftelProject project;
    project.prepareSteps();
    const std::string filling(1023, 'x');
    const std::string key = "ProfileFile= \"a.sim\"";  // 20 bytes
    struct Case {
        const char* what;
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"without keys", filling + filling + "xx\n" + filling + "\r\n",
         filling + filling + "xx\n" + filling + "\r\n"},
        {"a long last line", filling + filling, filling + filling},
        {"just one piece with its end", key + std::string(1002, 'y') + "\nafter\n",
         "ProfileFile= \"tran.sim\" \nafter\n"},
        {"a piece whose end is the next piece", key + std::string(1003, 'y') + "\nafter\n",
         "ProfileFile= \"tran.sim\" \n\nafter\n"},
        {"a piece that ends between CR and LF", key + std::string(1002, 'y') + "\r\nafter\n",
         "ProfileFile= \"tran.sim\" \n\nafter\n"},
        {"the rest of a rewritten line", key + std::string(1003, 'y') + "rest\r\n",
         "ProfileFile= \"tran.sim\" \nrest\r\n"},
        {"the rest of a dropped line", "OutFile= \"" + std::string(1013, 'y') + "rest.out\"\n",
         "rest.out\"\n"},
        {"a key at the beginning of a piece", filling + "OutFile= \"\"\n", filling + "OutFile= \"\" \n"},
        {"a key elsewhere in a piece", filling + "xOutFile= \"\"\n", filling + "xOutFile= \"\"\n"},
        {"an entry at the beginning of a piece", filling + "+9 \"a.lib\"\n", filling + "+9 \"a.lib\"\n"},
        {"a quote that closes in the next piece",
         "ProfileFile= \"a.sim" + std::string(1023 - 19, 'y') + "\"\n", "ProfileFile= \"tran.sim\" \n\"\n"},
    };
    for (const Case& entry : cases) {
        EXPECT_EQ(rewritten(project, entry.text), entry.written) << entry.what;
    }
}

TEST(DraftelProfileFile, ALargeFileIsWhole) {
    DraftelProject project;
    project.prepareSteps();
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "Key" + std::to_string(i) + "= \"some value\" \n";
    EXPECT_TRUE(rewritten(project, "OutFile= \"\" \n" + text + "OutFile= \"\" \n") ==
                "OutFile= \"\" \n" + text + "OutFile= \"\" \n");
}

// --- the numbered entries ---

// Files for entries to name, and a folder.
void writeEntryFiles(const DraftelProject& project) {
    project.write("a.lib", "bytes of a\r\n");
    project.write("lib/b.lib", "bytes of b");
    project.write("ab/c.lib", "bytes of c");
    project.folder.write("models/d.lib", "bytes of d");
    project.folder.makeFolder("project/folder.lib");
}

struct EntryCase {
    std::string line;
    std::string written;
    const char* file;  // that is then in the profile folder, with its bytes; null for none
    const char* bytes;
};

void expectEntries(const std::vector<EntryCase>& cases) {
    for (const EntryCase& entry : cases) {
        for (const char* end : {"\n", "\r\n"}) {
            DraftelProject project;
            project.prepareSteps();
            writeEntryFiles(project);
            const std::string line = replaced(entry.line, "@UP@", project.folder.path());
            const std::string written = replaced(entry.written, "@UP@", project.folder.path());
            EXPECT_EQ(rewritten(project, line + end + "after" + end), written + end + "after" + end) << line;
            Tree files;
            if (entry.file != nullptr) files[entry.file] = entry.bytes;
            EXPECT_EQ(treeOf(project.profileFolder), files) << line;
            EXPECT_EQ(movesOf(project.converter),
                      (Moves{{"./amp-s1-tran.sim", "./amp-tevrixfiles/s1/tran.sim"}}))
                << line;
            EXPECT_EQ(lastError(), LastError()) << line;
        }
    }
}

TEST(DraftelProfileFile, EntriesUpTo7AreCopiedIntoTheProfileFolder) {
    std::vector<EntryCase> cases;
    for (int number = 0; number <= 9; ++number) {
        const std::string plus = "+" + std::to_string(number);
        const bool isMoved = number <= 7;
        cases.push_back({plus + " \"lib/b.lib\" ", plus + (isMoved ? " \"b.lib\" " : " \"lib/b.lib\" "),
                         isMoved ? "b.lib" : nullptr, "bytes of b"});
    }
    expectEntries(cases);
}

TEST(DraftelProfileFile, TheNumberOfAnEntryIsReadAsAWholeNumber) {
    const std::string zeros(100, '0');
    const std::string blanks(100, ' ');
    expectEntries({
        {"+-1 \"a.lib\"", "+-1 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+-2147483648 \"a.lib\"", "+-2147483648 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"++3 \"a.lib\"", "+3 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+ 3 \"a.lib\"", "+3 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+\t-0 \"a.lib\"", "+0 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+007 \"a.lib\"", "+7 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+7\"a.lib\"", "+7 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+3.9 \"a.lib\"", "+3 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+3x \"a.lib\" tail", "+3 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+" + zeros + "3 \"a.lib\"", "+3 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+" + zeros + "8 \"a.lib\"", "+" + zeros + "8 \"a.lib\"", nullptr, ""},
        {"+" + blanks + "3 \"a.lib\"", "+3 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+8 \"a.lib\"", "+8 \"a.lib\"", nullptr, ""},
        {"+80 \"a.lib\"", "+80 \"a.lib\"", nullptr, ""},
        {"+2147483647 \"a.lib\"", "+2147483647 \"a.lib\"", nullptr, ""},
        {"+2147483648 \"a.lib\"", "+2147483648 \"a.lib\"", nullptr, ""},
        {"+4294967297 \"a.lib\"", "+4294967297 \"a.lib\"", nullptr, ""},
        {"+99999999999999999999999999 \"a.lib\"", "+99999999999999999999999999 \"a.lib\"", nullptr, ""},
    });
}

TEST(DraftelProfileFile, AnEntryWithoutANumberIsCopied) {
    std::vector<EntryCase> cases;
    for (const char* line : {"+ \"a.lib\"", "+\"a.lib\"", "+x1 \"a.lib\"", "+- 1 \"a.lib\"", "+-\"a.lib\"",
                             "+.1 \"a.lib\"", "+", "++", "+\"1\"", "+ \"1\" \"a.lib\""}) {
        cases.push_back({line, line, nullptr, ""});
    }
    expectEntries(cases);
}

TEST(DraftelProfileFile, AnEntryWithoutAValueIsCopied) {
    std::vector<EntryCase> cases;
    for (const char* line : {"+1", "+1 a.lib", "+1 \"\"", "+1 \"\" \"a.lib\"", "+1 'a.lib'"}) {
        cases.push_back({line, line, nullptr, ""});
    }
    expectEntries(cases);
}

TEST(DraftelProfileFile, OnlyRelativeReferencesToFilesAreFollowed) {
    expectEntries({
        {"+1 \"a.lib\" ", "+1 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+1 \"./a.lib\" ", "+1 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+1 \".\\a.lib\" ", "+1 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        {"+1 \"lib\\b.lib\" ", "+1 \"b.lib\" ", "b.lib", "bytes of b"},
        {"+2 \"../models/d.lib\" ", "+2 \"d.lib\" ", "d.lib", "bytes of d"},
        {"+2 \"..\\models\\d.lib\" ", "+2 \"d.lib\" ", "d.lib", "bytes of d"},
        {"+2 \"lib/../a.lib\" ", "+2 \"a.lib\" ", "a.lib", "bytes of a\r\n"},
        // In another letter case the file is found all the same; the copy has the name that is written.
        {"+1 \"LIB/B.lib\" ", "+1 \"B.lib\" ", "B.lib", "bytes of b"},
        {"+1 \"@UP@/models/d.lib\" ", "+1 \"@UP@/models/d.lib\" ", nullptr, ""},
        {"+1 \"C:/models/d.lib\" ", "+1 \"C:/models/d.lib\" ", nullptr, ""},
        {"+1 \"C:d.lib\" ", "+1 \"C:d.lib\" ", nullptr, ""},
        {"+1 \"\\\\server\\d.lib\" ", "+1 \"\\\\server\\d.lib\" ", nullptr, ""},
        {"+1 \"ab/c.lib\" ", "+1 \"ab/c.lib\" ", nullptr, ""},  // absolute by the slash in third place
        {"+1 \"./ab/c.lib\" ", "+1 \"c.lib\" ", "c.lib", "bytes of c"},
        {"+1 \"absent.lib\" ", "+1 \"absent.lib\" ", nullptr, ""},
        {"+1 \"../absent/d.lib\" ", "+1 \"../absent/d.lib\" ", nullptr, ""},
        {"+1 \"folder.lib\" ", "+1 \"folder.lib\" ", nullptr, ""},
        {"+1 \"lib/\" ", "+1 \"lib/\" ", nullptr, ""},
        {"+1 \".\" ", "+1 \".\" ", nullptr, ""},
        {"+1 \"..\" ", "+1 \"..\" ", nullptr, ""},
        {"+1 \"10MEG\"", "+1 \"10MEG\"", nullptr, ""},
    });
}

TEST(DraftelProfileFile, AnEntryMayHaveNoLineEnd) {
    DraftelProject project;
    project.prepareSteps();
    writeEntryFiles(project);
    EXPECT_EQ(rewritten(project, "+1 \"a.lib\""), "+1 \"a.lib\" \n");
    EXPECT_EQ(rewritten(project, "+8 \"a.lib\""), "+8 \"a.lib\"");
}

TEST(DraftelProfileFile, EntriesCanNameOneFileTwice) {
    DraftelProject project;
    project.prepareSteps();
    writeEntryFiles(project);
    project.folder.write("models/b.lib", "another b");
    EXPECT_EQ(rewritten(project, "+1 \"lib/b.lib\" \n+1 \"lib/b.lib\" \n+2 \"../models/b.lib\" \n"),
              "+1 \"b.lib\" \n+1 \"b.lib\" \n+2 \"b.lib\" \n");
    EXPECT_EQ(readFile(project.profileFolder + "/b.lib"), "another b");
}

TEST(DraftelProfileFile, AFileThatCannotBeCopiedKeepsItsEntry) {
    DraftelProject project;
    project.prepareSteps();
    writeEntryFiles(project);
    fs::create_directory(project.profileFolder + "/a.lib");
    EXPECT_EQ(rewritten(project, "+1 \"a.lib\" \n+2 \"lib/b.lib\" \n"), "+1 \"a.lib\" \n+2 \"b.lib\" \n");
    EXPECT_EQ(readFile(project.profileFolder + "/b.lib"), "bytes of b");
    EXPECT_EQ(lastError(), LastError());
}

TEST(DraftelProfileFile, AFileThatMayNotBeReadKeepsItsEntry) {
    DraftelProject project;
    project.prepareSteps();
    writeEntryFiles(project);
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("a.lib").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(rewritten(project, "+1 \"a.lib\" \n+2 \"lib/b.lib\" \n"), "+1 \"a.lib\" \n+2 \"b.lib\" \n");
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
    EXPECT_FALSE(fs::exists(project.profileFolder + "/a.lib"));
}

TEST(DraftelProfileFile, AnEntryWithoutAProfileFolderIsKept) {
    DraftelProject project;
    project.prepareSteps();
    writeEntryFiles(project);
    fs::remove(project.profileFolder);
    EXPECT_EQ(rewritten(project, "+1 \"lib/b.lib\" \n"), "+1 \"lib/b.lib\" \n");
}

TEST(DraftelProfileFile, AnEntrysFileThatIsItsOwnCopyKeepsItsBytes) {
    for (const bool isHardLink : {true, false}) {
        DraftelProject project;
        project.prepareSteps();
        writeEntryFiles(project);
        const std::string place = project.profileFolder + "/b.lib";
        isHardLink ? fs::create_hard_link(project.path("lib/b.lib"), place)
                   : tests::makeLink(project.path("lib/b.lib"), place);
        EXPECT_EQ(rewritten(project, "+1 \"lib/b.lib\" \n"), "+1 \"b.lib\" \n") << isHardLink;
        EXPECT_EQ(project.read("lib/b.lib"), "bytes of b") << isHardLink;
    }
}

// --- the file as a whole ---

TEST(DraftelProfileFile, AWholeFileIsRewrittenInItsOrder) {
    DraftelProject project;
    project.prepareSteps();
    writeEntryFiles(project);
    EXPECT_EQ(rewritten(project,
                        "ProfileName= \"tran\" \n"
                        "DesignFile= \"amp.dsn\" \n"
                        "RootSchematics= \"S1\" \n"
                        "ProfileFile= \"amp-S1-tran.sim\" \n"
                        "NetlistFile= \"amp-S1-tran.sim.cir\" \n"
                        "DataFile= \"amp-S1-tran.dat\" \n"
                        "OutFile= \"results.out\" \n"
                        "Libraries= \"3\" \n"
                        "+1 \"lib\\b.lib\" \n"
                        "+2 \"absent.lib\" \n"
                        "+8 \"a.lib\" \n"
                        "Temperature= \"35\" \n"),
              "ProfileName= \"tran\" \n"
              "Connectivity= \"S1.net\" \n"
              "ProfileFile= \"tran.sim\" \n"
              "NetlistFile= \"tran.cir\" \n"
              "DataFile= \"tran.dat\" \n"
              "OutFile= \"" +
                  withBackslashes(project.dir) +
                  "\\results.out\" \n"
                  "Libraries= \"3\" \n"
                  "+1 \"b.lib\" \n"
                  "+2 \"absent.lib\" \n"
                  "+8 \"a.lib\" \n"
                  "Temperature= \"35\" \n");
    EXPECT_EQ(movesOf(project.converter), (Moves{{"./amp-s1-tran.sim", "./amp-tevrixfiles/s1/tran.sim"}}));
}

TEST(DraftelProfileFile, NamesComeFromTheArguments) {
    DraftelProject project;
    project.prepareSteps();
    fs::create_directories(project.root + "/Top/P 1");
    project.write("any.sim",
                  "DesignFile\nProfileFile= \".sim\"\nNetlistFile= \".sim.cir\"\nOutFile= \"ANY.out\"\n");
    EXPECT_EQ(project.converter.rewriteSimProfile("any", "P 1", project.destination, project.root + "/Top",
                                                  "Other"),
              0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/Top/P 1.sim"),
              "Connectivity= \"Other.net\" \nProfileFile= \"P 1.sim\" \nNetlistFile= \"P 1.cir\" \n"
              "OutFile= \"P 1.out\" \n");
    EXPECT_EQ(movesOf(project.converter), (Moves{{"./any.sim", "./amp-tevrixfiles/top/p 1.sim"}}));
}

TEST(DraftelProfileFile, AnEarlierFileIsReplaced) {
    DraftelProject project;
    project.prepareSteps();
    project.folder.write("new/amp-TevrixFiles/S1/tran.sim", std::string(10000, 'x'));
    EXPECT_EQ(rewritten(project, "OutFile= \"\"\n"), "OutFile= \"\" \n");
}

TEST(DraftelProfileFile, ReferencesToMovedOutputsAreBareNames) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.addRelocation("./amp-s1-tran.dat", "./amp-TevrixFiles/S1/tran/tran.dat");
    project.converter.addRelocation("./sub/Old.OUT", "./amp-TevrixFiles/S1/tran/New.OUT");
    EXPECT_EQ(rewritten(project,
                        "DataFile= \".\\AMP-S1-TRAN.dat\" \nOutFile= \"" + project.dir + "/sub/old.out\"\n"),
              "DataFile= \"tran.dat\" \nOutFile= \"new.out\" \n");
}

TEST(DraftelProfileFile, AReferenceThatCannotBeResolvedIsWrittenWithBackslashes) {
    DraftelProject project;
    project.prepareSteps();
    project.converter.setProjectDir("amp");  // nothing can be joined to a folder without a slash
    const fs::path before = fs::current_path();
    project.write("amp/amp-S1-tran.sim",
                  "OutFile= \"sub/x.out\" \nDataFile= \"./y.dat\" \n+1 \"lib/b.lib\" \n");
    fs::current_path(project.dir);
    const int status = rewrite(project);
    fs::current_path(before);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran.sim"),
              "OutFile= \"sub\\x.out\" \nDataFile= \".\\y.dat\" \n+1 \"lib/b.lib\" \n");
}

// --- failures ---

TEST(DraftelProfileFile, WithoutAnOldFileNothingIsWritten) {
    for (const bool isFolder : {false, true}) {
        DraftelProject project;
        project.prepareSteps();
        project.remove("amp-S1-tran.sim");
        if (isFolder) project.folder.makeFolder("project/amp-S1-tran.sim");
        const Tree before = project.tree();
        EXPECT_EQ(rewrite(project), 0) << isFolder;
        EXPECT_EQ(project.tree(), before) << isFolder;
        EXPECT_THAT(movesOf(project.converter), IsEmpty()) << isFolder;
        EXPECT_EQ(lastError(), LastError()) << isFolder;
    }
}

TEST(DraftelProfileFile, AnOldFileThatMayNotBeReadCountsAsAbsent) {
    DraftelProject project;
    project.prepareSteps();
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(project.path("amp-S1-tran.sim").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(rewrite(project), 0);
        EXPECT_THAT(movesOf(project.converter), IsEmpty());
        return true;
    }));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/tran.sim"));
}

TEST(DraftelProfileFile, AnOldFileThatCannotBeOpenedIsNamed) {
    DraftelProject project;
    project.prepareSteps();
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        EXPECT_EQ(rewrite(project), 10105);
        EXPECT_EQ(lastError(), openForReadingError(project.path("amp-S1-tran.sim")));
        EXPECT_THAT(movesOf(project.converter), IsEmpty());
        return true;
    }));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/tran.sim"));
}

TEST(DraftelProfileFile, ANewFileThatCannotBeMadeIsNamed) {
    for (const bool isFolder : {false, true}) {
        DraftelProject project;
        project.prepareSteps();
        const std::string newPath = project.schematicFolder + "/tran.sim";
        if (isFolder) {
            fs::create_directory(newPath);
        } else {
            fs::remove_all(project.schematicFolder);
        }
        const Tree before = project.tree();
        EXPECT_EQ(rewrite(project), 10106) << isFolder;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isFolder;
        EXPECT_EQ(project.tree(), before) << isFolder;
        EXPECT_THAT(movesOf(project.converter), IsEmpty()) << isFolder;
    }
}

TEST(DraftelProfileFile, ANewFileThatMayNotBeWrittenStaysAsItIs) {
    DraftelProject project;
    project.prepareSteps();
    const std::string newPath = project.folder.write("new/amp-TevrixFiles/S1/tran.sim", "earlier");
    openToAll(project.folder.path());
    ASSERT_EQ(chmod(newPath.c_str(), 0444), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(rewrite(project), 10106);
        EXPECT_EQ(lastError(), openForWritingError(newPath));
        return true;
    }));
    EXPECT_EQ(readFile(newPath), "earlier");
}

TEST(DraftelProfileFile, ANewFileThatTheDiskHasNoRoomForIsRemoved) {
    DraftelProject project;
    project.prepareSteps();
    EXPECT_TRUE(succeedsLacking(Lacks::writing, [&] {
        EXPECT_EQ(rewrite(project), 10106);
        EXPECT_EQ(lastError(), openForWritingError(project.schematicFolder + "/tran.sim"));
        EXPECT_THAT(movesOf(project.converter), IsEmpty());
        return true;
    }));
    EXPECT_FALSE(project.existsNew("amp-TevrixFiles/S1/tran.sim"));
    EXPECT_EQ(project.read("amp-S1-tran.sim"), profileText("S1", "tran"));
}

TEST(DraftelProfileFile, AFileIsNotWrittenOverItself) {
    for (const bool isHardLink : {true, false}) {
        DraftelProject project;
        project.prepareSteps();
        const std::string text = "DesignFile= \"amp.dsn\" \nOther= \"1\" \n";
        const std::string old = project.write("amp-S1-tran.sim", text);
        const std::string newPath = project.schematicFolder + "/tran.sim";
        isHardLink ? fs::create_hard_link(old, newPath) : tests::makeLink(old, newPath);
        EXPECT_EQ(rewrite(project), 10106) << isHardLink;
        EXPECT_EQ(lastError(), openForWritingError(newPath)) << isHardLink;
        EXPECT_EQ(readFile(old), text) << isHardLink;
        EXPECT_EQ(readFile(newPath), text) << isHardLink;
        EXPECT_THAT(movesOf(project.converter), IsEmpty()) << isHardLink;
    }
}

// --- references to data and output files ---

struct CaseOfNumber {
    const char* value;
    int status;
    const char* reference;
};

void expectReferences(const std::string& projectDir, const std::vector<CaseOfNumber>& cases) {
    DraftelProjectConverter converter(nullptr);
    converter.addRelocation("./amp-s1-tran.dat", "./amp-TevrixFiles/S1/tran/tran.dat");
    converter.addRelocation("./amp-s1-ac.csd", "./amp-TevrixFiles/S1/ac/ac.csd");
    converter.addRelocation("./deep/x.out", "./amp-TevrixFiles/S1/tran/moved.out");
    for (const CaseOfNumber& entry : cases) {
        std::string reference = "left over";
        EXPECT_EQ(
            converter.relocateOutputReference(reference, entry.value, projectDir, "Amp-S1-Tran", "tran"),
            entry.status)
            << entry.value;
        EXPECT_EQ(reference, entry.reference) << entry.value;
    }
}

TEST(DraftelProfileFile, ABareNameIsThatOfTheProfileOrOfAFileLeftBehind) {
    expectReferences("C:/p/amp", {
                                     {"amp-S1-tran.out", 0, "tran.out"},
                                     {"AMP-S1-TRAN.OUT", 0, "tran.OUT"},
                                     {"Amp-S1-Tran.mc.dat", 0, "tran.mc.dat"},
                                     {"amp-S1-tran.", 0, "tran."},
                                     {"amp-S1-tran.dat", 0, "tran.dat"},
                                     {"results.out", 0, "C:/p/amp/results.out"},
                                     {"amp-S1-tran2.out", 0, "C:/p/amp/amp-S1-tran2.out"},
                                     {"amp-S1.out", 0, "C:/p/amp/amp-S1.out"},
                                     {"x", 0, "C:/p/amp/x"},
                                     {"C:results.out", 0, "C:/p/amp/C:results.out"},
                                     // A moved file of another profile is not looked up by its bare name.
                                     {"amp-S1-ac.csd", 0, "C:/p/amp/amp-S1-ac.csd"},
                                 });
}

TEST(DraftelProfileFile, APathIsLookedUpAmongTheMovedFiles) {
    expectReferences("C:/p/amp", {
                                     {".\\amp-S1-tran.dat", 0, "tran.dat"},
                                     {"./AMP-s1-tran.DAT", 0, "tran.dat"},
                                     {"./amp-S1-ac.csd", 0, "ac.csd"},
                                     {"C:\\p\\amp\\amp-S1-tran.dat", 0, "tran.dat"},
                                     {"c:/P/AMP/amp-S1-tran.dat", 0, "tran.dat"},
                                     {"..\\amp\\amp-S1-tran.dat", 0, "tran.dat"},
                                     {"deep\\x.out", 0, "moved.out"},
                                     {"./deep/x.out", 0, "moved.out"},
                                     {"x/amp-S1-tran.dat", 0, "C:/p/amp/x/amp-S1-tran.dat"},
                                     {"./amp-S1-tran.out", 0, "C:/p/amp/amp-S1-tran.out"},
                                     {"..\\other\\x.dat", 0, "C:/p/other/x.dat"},
                                     {"../../x.dat", 0, "C:/p/../x.dat"},
                                     {"C:\\old\\amp-S1-tran.dat", 0, "C:/old/amp-S1-tran.dat"},
                                     {"D:/p/amp/amp-S1-tran.dat", 0, "D:/p/amp/amp-S1-tran.dat"},
                                     {"\\\\server\\share\\x.dat", 0, "//server/share/x.dat"},
                                     {"ab/amp-S1-tran.dat", 0, "ab/amp-S1-tran.dat"},
                                     // The project folder's name further inside is not the project folder.
                                     {"E:/c:/p/amp/amp-S1-tran.dat", 0, "E:/c:/p/amp/amp-S1-tran.dat"},
                                     {"C:/p/amplifier/amp-S1-tran.dat", 0, "C:/p/amplifier/amp-S1-tran.dat"},
                                 });
}

TEST(DraftelProfileFile, WhereThereAreNoDrivesASingleSlashIsAbsolute) {
    if (tests::kOnWindows) GTEST_SKIP() << "an absolute path begins with a drive there";
    expectReferences("/p/amp", {
                                   {"/p/amp/amp-S1-tran.dat", 0, "tran.dat"},
                                   {"\\p\\amp\\amp-S1-tran.dat", 0, "tran.dat"},
                                   {"/old/amp-S1-tran.dat", 0, "/old/amp-S1-tran.dat"},
                                   {"/x.dat", 0, "/x.dat"},
                               });
}

TEST(DraftelProfileFile, AFolderWithoutASlashResolvesNothing) {
    expectReferences("amp", {
                                {"./x.out", 1, ""},
                                {"../x.out", 1, ""},
                                {"sub\\x.out", 1, ""},
                                {"x.out", 0, "amp/x.out"},
                                {"C:/old/x.out", 0, "C:/old/x.out"},
                            });
    expectReferences("/amp", {{"../x.out", 0, "/x.out"}});
}

}  // namespace
