// profileFile_test.cpp
//
// The rewriting of the profile files of a cell: their keys, their numbered entries with the files that they
// name, and the references to data and output files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TarnetLibrary.h"
#include "support/fileLimit.h"

namespace {

using namespace tests;
using namespace std::string_literals;
using tvxconv::TarnetProjectConverter;
namespace fs = std::filesystem;

int convert(TarnetLibrary& library) {
    return library.converter.rewriteSimProfile(library.cfg, library.profiles, "tran.sim", "tran", "amp");
}

// The profile file as it is written for `text` as the old one.
std::string converted(TarnetLibrary& library, const std::string& text) {
    library.writeOld("tran.sim", text);
    EXPECT_EQ(convert(library), 0) << text;
    EXPECT_EQ(library.read("amp/cfg_analog/tran.sim"), text);
    return library.readNew("profiles/tran.sim");
}

void expectLines(TarnetLibrary& library, const std::vector<LineCase>& cases) {
    expectLines(cases, library.places(), [&](const std::string& text) { return converted(library, text); });
}

void expectLines(const std::vector<LineCase>& cases) {
    TarnetLibrary library;
    library.prepareCell();
    expectLines(library, cases);
}

TEST(TarnetProfileFile, TheDesignGivesWayToTheNetlist) {
    expectLines({
        {"DesignFile= \"amp.dsn\" ", "Connectivity= \"amp.net\" "},
        {"ProjectFile= \"amp.opj\" ", "Connectivity= \"amp.net\" "},
        {"RootSchematics= \"S1\" ", "Connectivity= \"amp.net\" "},
        {"designfile", "Connectivity= \"amp.net\" "},
        {"ROOTSCHEMATICSX=", "Connectivity= \"amp.net\" "},
        {" DesignFile= \"amp.dsn\" ", " DesignFile= \"amp.dsn\" "},
        {"DesignFil= \"amp.dsn\" ", "DesignFil= \"amp.dsn\" "},
    });
}

TEST(TarnetProfileFile, OfSeveralDesignReferencesTheFirstIsReplacedAndTheOthersGo) {
    TarnetLibrary library;
    library.prepareCell();
    EXPECT_EQ(converted(library,
                        "A= \"1\" \n"
                        "ProjectFile= \"amp.opj\" \r\n"
                        "B= \"2\" \n"
                        "RootSchematics= \"S1\" \n"
                        "DesignFile= \"amp.dsn\" \n"
                        "DesignFile= \"amp.dsn\" \n"
                        "C= \"3\" \n"),
              tests::asRead("A= \"1\" \n"
                            "Connectivity= \"amp.net\" \r\n"
                            "B= \"2\" \n"
                            "C= \"3\" \n"));
}

TEST(TarnetProfileFile, TheDeckIsNamedAfterTheProfile) {
    expectLines({
        {"NetlistFile= \"tran.sim.cir\" ", "NetlistFile= \"tran.cir\" "},
        {"netlistfile=\"C:\\x\\other.sim.cir.old\" tail", "NetlistFile= \"tran.cir\" "},
        {"NetlistFileX \"a.sim.cir\"", "NetlistFile= \"tran.cir\" "},
        {"NetlistFile= \"\"", "NetlistFile= \"\" "},
        {"NETLISTFILE \"\"a.sim.cir\"", "NetlistFile= \"\" "},
        {"NetlistFile= \"x.net\" ", kDropped},
        {"NetlistFile= \"tran.SIM.CIR\" ", kDropped},
        {"NetlistFile= \"tran.cir\" ", kDropped},
        {"NetlistFile= tran.sim.cir", kDropped},
        {"NetlistFile", kDropped},
    });
}

TEST(TarnetProfileFile, ADataFileOfTheProfileIsNamedWithoutAFolderAndAnyOtherFromTheRoot) {
    expectLines({
        {"DataFile= \"tran.dat\"", "DataFile= \"tran.dat\" "},
        {"DATAFILE=\"TRAN.csd\"", "DataFile= \"tran.csd\" "},
        {"DataFile= \"Tran.mc.dat\" tail", "DataFile= \"tran.mc.dat\" "},
        {"DataFiles \"tran.dat.old\"", "DataFile= \"tran.dat.old\" "},
        {"DataFile= \"ac.dat\" ", "DataFile= \"@CFG@/ac.dat\" "},
        {"DataFile= \"tran2.csd\" ", "DataFile= \"@CFG@/tran2.csd\" "},
        {"DataFile= \".dat\" ", "DataFile= \"@CFG@/.dat\" "},
        {"DataFile= \"./tran.dat\" ", "DataFile= \"@CFG@/tran.dat\" "},
        {"DataFile= \"sub\\tran.dat\" ", "DataFile= \"@CFG@/sub/tran.dat\" "},
        {"DataFile= \"..\\Data/run.csd\" ", "DataFile= \"@CELL@/Data/run.csd\" "},
        {"DataFile= \"../../run.dat\" ", "DataFile= \"@CELL@/../run.dat\" "},
        {"DataFile= \"C:\\Data\\run.dat\" ", "DataFile= \"C:/Data/run.dat\" "},
        {"DataFile= \"\\\\srv\\run.dat\" ", "DataFile= \"//srv/run.dat\" "},
        // Where there are drives, only they begin an absolute path.
        {"DataFile= \"/far/run.dat\"",
         tests::kOnWindows ? "DataFile= \"@CFG@//far/run.dat\" " : "DataFile= \"/far/run.dat\" "},
        {"DataFile= \"ab/run.dat\"", "DataFile= \"ab/run.dat\" "},
        {"DataFile= \"\"", "DataFile= \"\" "},
        {"DataFile= \"tran.DAT\" ", kDropped},
        {"DataFile= \"tran.CSD\" ", kDropped},
        {"DataFile= \"tran.out\" ", kDropped},
        {"DataFile= tran.dat", kDropped},
    });
}

TEST(TarnetProfileFile, AnOutputFileIsTreatedLikeADataFile) {
    expectLines({
        {"OutFile= \"tran.out\"", "OutFile= \"tran.out\" "},
        {"outfile \"TRAN.out.1\"", "OutFile= \"tran.out.1\" "},
        {"OutFile= \"ac.out\" ", "OutFile= \"@CFG@/ac.out\" "},
        {"OutFile= \"sub/ac.out\" ", "OutFile= \"@CFG@/sub/ac.out\" "},
        {"OutFile= \"\"", "OutFile= \"\" "},
        {"OutFile= \"tran.OUT\" ", kDropped},
        {"OutFile= \"tran.dat\" ", kDropped},
        {"OutFile=", kDropped},
    });
}

TEST(TarnetProfileFile, OtherLinesStay) {
    expectLines({
        {"ProfileName= \"tran\" ", "ProfileName= \"tran\" "},
        {"ProfileFile= \"tran.sim\" ", "ProfileFile= \"tran.sim\" "},
        {"Analysis= \"TRAN\" %s %d", "Analysis= \"TRAN\" %s %d"},
        {"* NetlistFile= \"a.sim.cir\"", "* NetlistFile= \"a.sim.cir\""},
        {"-1 \"a.lib\"", "-1 \"a.lib\""},
        {"\"OutFile\"", "\"OutFile\""},
        {"\xE4\x01\x7F", "\xE4\x01\x7F"},
    });
}

TEST(TarnetProfileFile, ALongLineIsTreatedInPieces) {
    TarnetLibrary library;
    library.prepareCell();
    const std::string filling(1023, 'x');
    struct Case {
        std::string text;
        std::string written;
    };
    const std::vector<Case> cases = {
        {"", ""},
        {"\n\r\n\n", "\n\r\n\n"},
        {"a\0b\n\0"s, "a\0b\n\0"s},
        {filling + filling + "x\r\n", filling + filling + "x\r\n"},
        {filling + "OutFile= \"tran.out\"\r\n", filling + "OutFile= \"tran.out\" \r\n"},
        {filling + "OutFile= \"x.y\"\r\n", filling},
        {filling + "xOutFile= \"tran.out\"\n", filling + "xOutFile= \"tran.out\"\n"},
        {"OutFile= \"tran.out\"" + std::string(1004, ' ') + "rest\r\n", "OutFile= \"tran.out\" \nrest\r\n"},
        {"DesignFile" + std::string(1013, 'x') + "RootSchematics\r\nB\n", "Connectivity= \"amp.net\" \nB\n"},
    };
    for (const Case& entry : cases) EXPECT_EQ(converted(library, entry.text), entry.written) << entry.text;
}

// --- the table of moves, which is empty unless a host's own steps have filled it ---

TEST(TarnetProfileFile, AnOutputInTheTableOfMovesIsNamedAfterItsNewPlace) {
    if (tests::kOnWindows) GTEST_SKIP() << "an absolute path begins with a drive there";
    TarnetLibrary library;
    library.prepareCell();
    library.converter.addRelocation("./sub/old.dat", "./new/Moved.dat");
    library.converter.addRelocation("/far/old.out", "./new/other.out");
    expectLines(library, {
                             {"DataFile= \"sub\\OLD.dat\" ", "DataFile= \"moved.dat\" "},
                             {"DataFile= \"@CFG@/sub/old.dat\" ", "DataFile= \"moved.dat\" "},
                             {"OutFile= \"/far/old.out\" ", "OutFile= \"other.out\" "},
                             {"OutFile= \"/far/old.out.1\"", "OutFile= \"/far/old.out.1\" "},
                         });
}

TEST(TarnetProfileFile, AnOutputThatCannotBeResolvedIsNamedAsBefore) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("tran.sim",
                     "DataFile= \"sub\\a.dat\"\r\nOutFile =\"..\\a.out\" x\nDataFile= \"a.csd\"\n");
    const fs::path before = fs::current_path();
    fs::current_path(library.cell);
    // A folder without a slash in its name has nothing that a relative name could be resolved against.
    EXPECT_EQ(library.converter.rewriteSimProfile("cfg_analog", library.profiles, "tran.sim", "tran", "amp"),
              0);
    fs::current_path(before);
    EXPECT_EQ(library.readNew("profiles/tran.sim"),
              tests::asRead("DataFile= \"sub\\a.dat\" \r\nOutFile= \"..\\a.out\" \n"
                            "DataFile= \"cfg_analog/a.csd\" \n"));
}

// --- numbered entries ---

// Files that an entry can name.
void addListedFiles(const TarnetLibrary& library) {
    library.writeOld("a.lib", "models");
    library.writeOld("sub/deep.inc", "deep");
    library.writeOld("ab/x.lib", "");
    library.makeFolder("amp/cfg_analog/folder.lib");
    library.write("amp/up.stl", "stimuli");
    library.write("other.lib", "of the library");
}

TEST(TarnetProfileFile, AnEntryUpTo7TakesItsFileAlong) {
    TarnetLibrary library;
    library.prepareCell();
    addListedFiles(library);
    expectLines(library, {
                             {"+0 \"a.lib\"", "+0 \"a.lib\" "},
                             {"+7 \"A.LIB\"", "+7 \"A.LIB\" "},
                             {"+ 3 \".\\a.lib\" tail", "+3 \"a.lib\" "},
                             {"+-2\"./a.lib\"", "+-2 \"a.lib\" "},
                             {"+1x \"sub\\deep.inc\"", "+1 \"deep.inc\" "},
                             {"+2 \"../up.stl\"", "+2 \"up.stl\" "},
                             {"+2 \"../../other.lib\"", "+2 \"other.lib\" "},
                         });
    EXPECT_EQ(library.readNew("profiles/tran/a.lib"), "models");
    EXPECT_EQ(library.readNew("profiles/tran/deep.inc"), "deep");
    EXPECT_EQ(library.readNew("profiles/tran/up.stl"), "stimuli");
    EXPECT_EQ(library.readNew("profiles/tran/other.lib"), "of the library");
}

TEST(TarnetProfileFile, AnyOtherEntryStays) {
    TarnetLibrary library;
    library.prepareCell();
    addListedFiles(library);
    const Tree before = library.tree();
    expectLines(library, {
                             {"+8 \"a.lib\"", "+8 \"a.lib\""},
                             {"+99999999999 \"a.lib\"", "+99999999999 \"a.lib\""},
                             {"+ \"a.lib\"", "+ \"a.lib\""},
                             {"+x7 \"a.lib\"", "+x7 \"a.lib\""},
                             {"+7 a.lib", "+7 a.lib"},
                             {"+7 \"\"", "+7 \"\""},
                             {"+", "+"},
                             {"+7 \"absent.lib\"", "+7 \"absent.lib\""},
                             {"+7 \"folder.lib\"", "+7 \"folder.lib\""},
                             {"+7 \"sub/\"", "+7 \"sub/\""},
                             {"+7 \"@CFG@/a.lib\"", "+7 \"@CFG@/a.lib\""},
                             {"+7 \"C:\\a.lib\"", "+7 \"C:\\a.lib\""},
                             {"+7 \"ab/x.lib\"", "+7 \"ab/x.lib\""},
                             {" +7 \"a.lib\"", " +7 \"a.lib\""},
                         });
    Tree expected = before;
    expected["amp/cfg_analog/tran.sim"] = library.read("amp/cfg_analog/tran.sim");
    expected["amp/tvx_sim_1/profiles/tran.sim"] = library.readNew("profiles/tran.sim");
    EXPECT_EQ(library.tree(), expected);
}

TEST(TarnetProfileFile, AnEntryWhoseFileCannotBeCopiedIsLeftOutWithoutAnError) {
    TarnetLibrary library;
    library.prepareCell();
    addListedFiles(library);
    library.makeFolder("amp/tvx_sim_1/profiles/tran/a.lib");
    EXPECT_EQ(converted(library, "+1 \"a.lib\"\n+2 \"sub/deep.inc\"\n+8 \"a.lib\"\n"),
              "+2 \"deep.inc\" \n+8 \"a.lib\"\n");
    EXPECT_EQ(lastError(), LastError());
}

TEST(TarnetProfileFile, OfTwoEntriesForOneNameTheLaterFileIsThere) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("a.lib", "first");
    library.writeOld("sub/a.lib", "second");
    EXPECT_EQ(converted(library, "+1 \"a.lib\"\n+2 \"sub/a.lib\"\n"), "+1 \"a.lib\" \n+2 \"a.lib\" \n");
    EXPECT_EQ(library.readNew("profiles/tran/a.lib"), "second");
}

// --- where it is written, and what can fail ---

TEST(TarnetProfileFile, NamesComeFromTheArguments) {
    TarnetLibrary library;
    library.prepareCell();
    fs::create_directories(library.profiles + "/Tran");
    library.writeOld("a.lib", "models");
    library.writeOld("Tran.SIM",
                     "DesignFile\nNetlistFile= \"x.sim.cir\"\nOutFile= \"tran.out\"\n+1 \"a.lib\"\n");
    EXPECT_EQ(library.converter.rewriteSimProfile(library.cfg, library.profiles, "Tran.SIM", "Tran", "Cell"),
              0);
    EXPECT_EQ(
        library.readNew("profiles/Tran.SIM"),
        "Connectivity= \"Cell.net\" \nNetlistFile= \"Tran.cir\" \nOutFile= \"Tran.out\" \n+1 \"a.lib\" \n");
    EXPECT_EQ(library.readNew("profiles/Tran/a.lib"), "models");
}

TEST(TarnetProfileFile, WithoutAFileNothingIsWritten) {
    for (const bool isFolder : {false, true}) {
        TarnetLibrary library;
        library.prepareCell();
        if (isFolder) library.makeFolder("amp/cfg_analog/tran.sim");
        const Tree before = library.tree();
        EXPECT_EQ(convert(library), 0) << isFolder;
        EXPECT_EQ(library.tree(), before) << isFolder;
        EXPECT_EQ(lastError(), LastError()) << isFolder;
    }
}

TEST(TarnetProfileFile, AFileThatMayNotBeReadCountsAsAbsent) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("tran.sim", "A\n");
    openToAll(library.folder.path());
    ASSERT_EQ(chmod((library.cfg + "/tran.sim").c_str(), 0), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(convert(library), 0);
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
    EXPECT_FALSE(library.existsNew("profiles/tran.sim"));
}

TEST(TarnetProfileFile, AFileThatCannotBeOpenedIsNamed) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("tran.sim", "A\n");
    EXPECT_TRUE(succeedsLacking(Lacks::opening, [&] {
        EXPECT_EQ(convert(library), 10105);
        EXPECT_EQ(lastError(), openForReadingError(library.cfg + "/tran.sim"));
        return true;
    }));
    EXPECT_FALSE(library.existsNew("profiles/tran.sim"));
}

TEST(TarnetProfileFile, ANewFileThatCannotBeMadeIsNamed) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("tran.sim", "A\n");
    library.makeFolder("amp/tvx_sim_1/profiles/tran.sim");
    EXPECT_EQ(convert(library), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.profiles + "/tran.sim"));
}

TEST(TarnetProfileFile, ANewFileThatTheDiskHasNoRoomForIsNamedAndRemoved) {
    TarnetLibrary library;
    library.prepareCell();
    library.writeOld("tran.sim", std::string(100, 'x'));
    EXPECT_TRUE(succeedsWithFileLimit(99, [&] {
        EXPECT_EQ(convert(library), 10106);
        EXPECT_EQ(lastError(), openForWritingError(library.profiles + "/tran.sim"));
        return true;
    }));
    EXPECT_FALSE(library.existsNew("profiles/tran.sim"));
}

}  // namespace
