// conversion_test.cpp
//
// The driver of a Tarnet conversion: what it takes from the library's path, which cells it converts, where it
// stops, and what it leaves in its fields.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "interface/ITarnetProjectConverter.h"
#include "support/TarnetLibrary.h"
#include "support/cliProject.h"
#include "support/fileLimit.h"

namespace {

using namespace tests;
using testing::IsEmpty;
using testing::SizeIs;
using tvxconv::TarnetProjectConverter;
namespace fs = std::filesystem;

int convert(TarnetProjectConverter& converter) {
    return converter.convert(0, std::string());
}

// The tree with the new view of a cell that has only its marker.
Tree withView(Tree tree, const std::string& cell) {
    tree[cell + "/tvx_sim_1/"] = "";
    tree[cell + "/tvx_sim_1/master.tag"] = cell + ".net";
    return tree;
}

// --- the library's path ---

TEST(TarnetDriver, APathWithoutAFolderAboveTheLibraryStopsWithoutAnError) {
    for (const char* path : {static_cast<const char*>(nullptr), "", "lib", "site/lib", "/lib", "C:/lib",
                             "C:\\lib", "/", "lib/"}) {
        forgetLastError();
        TarnetProjectConverter converter(path);
        const std::string what = path != nullptr ? path : "null";
        EXPECT_EQ(convert(converter), 1) << what;
        EXPECT_EQ(lastError(), LastError()) << what;
        std::string text = "left over";
        EXPECT_EQ(converter.getLibraryDirectory(text), 1) << what;
        EXPECT_EQ(converter.getLibraryParentName(text), 1) << what;
        EXPECT_EQ(text, "") << what;
        EXPECT_THAT(converter.copyExtensions(), IsEmpty()) << what;
        int mode = -99;
        EXPECT_EQ(converter.getMode(mode), 0) << what;
        EXPECT_EQ(mode, 1) << what;
    }
}

TEST(TarnetDriver, ALibraryThatCannotBeOpenedIsNamed) {
    const TestFolder folder;
    folder.write("site/file", "a file");
    for (const char* name : {"site/absent", "site/file", "no/such/folder", "site/file/lib"}) {
        forgetLastError();
        TarnetProjectConverter converter(withBackslashes(folder.path(name)).c_str());
        EXPECT_EQ(convert(converter), 10103) << name;
        EXPECT_EQ(lastError(), openDirectoryError(folder.path(name))) << name;
        std::string text = "left over";
        EXPECT_EQ(converter.getLibraryDirectory(text), 0) << name;
        EXPECT_EQ(text, folder.path(name));
        EXPECT_THAT(converter.copyExtensions(), SizeIs(16)) << name;
    }
    EXPECT_EQ(treeOf(folder.path()), (Tree{{"site/", ""}, {"site/file", "a file"}}));
}

TEST(TarnetDriver, ALibraryThatMayNotBeListedIsNamed) {
    TarnetLibrary library;
    openToAll(library.folder.path());
    ASSERT_EQ(chmod(library.dir.c_str(), 0333), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(convert(library.converter), 10103);
        EXPECT_EQ(lastError(), openDirectoryError(library.dir));
        return true;
    }));
    EXPECT_FALSE(library.exists("amp/tvx_sim_1"));
}

TEST(TarnetDriver, TheParentsNameIsTheLastComponentBeforeTheLibrary) {
    const TestFolder folder;
    folder.makeFolder("my site/lib");
    const struct {
        std::string path;
        std::string parentName;
    } cases[] = {
        {folder.path("my site/lib"), "my site"},
        {withBackslashes(folder.path("my site/lib")), "my site"},
        // A separator at the end makes the library its own parent.
        {folder.path("my site/lib/"), "lib"},
        {folder.path("my site/lib//"), ""},
        {folder.path("my site/lib///"), ""},
    };
    for (const auto& c : cases) {
        TarnetProjectConverter converter(c.path.c_str());
        EXPECT_EQ(convert(converter), 0) << c.path;
        std::string text = "left over";
        EXPECT_EQ(converter.getLibraryParentName(text), c.parentName.empty() ? 1 : 0) << c.path;
        EXPECT_EQ(text, c.parentName) << c.path;
    }
    EXPECT_EQ(treeOf(folder.path()), (Tree{{"my site/", ""}, {"my site/lib/", ""}}));
}

TEST(TarnetDriver, SeparatorsAtTheEndDoNotKeepTheCellsFromBeingConverted) {
    for (const char* end : {"", "/", "//", "\\", "/\\/"}) {
        const TarnetLibrary library;
        const Tree before = library.tree();
        TarnetProjectConverter converter((library.dir + end).c_str());
        EXPECT_EQ(convert(converter), 0) << end;
        EXPECT_EQ(library.tree(), withView(before, "amp")) << end;
    }
}

// --- the cells ---

TEST(TarnetDriver, AnEmptyLibraryIsConvertedAsItIs) {
    TarnetLibrary library;
    fs::remove_all(library.cell);
    EXPECT_EQ(convert(library.converter), 0);
    EXPECT_EQ(library.tree(), Tree());
    EXPECT_EQ(lastError(), LastError());
}

TEST(TarnetDriver, ArgumentsAreIgnored) {
    for (const int mode : {0, 1, 2, 3, -1}) {
        TarnetLibrary library;
        const Tree before = library.tree();
        EXPECT_EQ(library.converter.convert(mode, library.folder.path("elsewhere")), 0) << mode;
        EXPECT_EQ(library.tree(), withView(before, "amp")) << mode;
        EXPECT_FALSE(library.folder.exists("elsewhere")) << mode;
        int set = -99;
        EXPECT_EQ(library.converter.getMode(set), 0) << mode;
        EXPECT_EQ(set, 1) << mode;
    }
}

TEST(TarnetDriver, OnlyACellWithTheOldViewAndWithoutTheNewOneIsConverted) {
    struct Case {
        const char* what;
        void (*change)(const TarnetLibrary& library);
        bool isConverted;
    };
    const std::vector<Case> cases = {
        {"nothing", [](const TarnetLibrary&) {}, true},
        {"the new view, marked", [](const TarnetLibrary& l) { l.write("amp/tvx_sim_1/master.tag", ""); },
         false},
        {"the new view, without a marker", [](const TarnetLibrary& l) { l.makeFolder("amp/tvx_sim_1"); },
         true},
        {"the new view, with a marker of another name",
         [](const TarnetLibrary& l) { l.write("amp/tvx_sim_1/master", ""); }, true},
        {"no old view", [](const TarnetLibrary& l) { fs::remove_all(l.cfg); }, false},
        {"no marker in the old view", [](const TarnetLibrary& l) { fs::remove(l.cfg + "/master.tag"); },
         false},
        {"a folder as the marker of the old view",
         [](const TarnetLibrary& l) {
             fs::remove(l.cfg + "/master.tag");
             l.makeFolder("amp/cfg_analog/master.tag");
         },
         false},
        {"a link to nothing as the marker of the old view",
         [](const TarnetLibrary& l) {
             fs::remove(l.cfg + "/master.tag");
             tests::makeLink("nothing", l.cfg + "/master.tag");
         },
         false},
        {"a link to a file as the marker of the old view",
         [](const TarnetLibrary& l) {
             fs::rename(l.cfg + "/master.tag", l.cfg + "/real");
             tests::makeLink("real", l.cfg + "/master.tag");
         },
         true},
        {"a file in the place of the cell",
         [](const TarnetLibrary& l) {
             fs::remove_all(l.cell);
             l.write("amp", "a file");
         },
         false},
        {"other letter case",
         [](const TarnetLibrary& l) {
             fs::rename(l.cfg, l.cell + "/CFG_Analog");
             fs::rename(l.cell + "/CFG_Analog/master.tag", l.cell + "/CFG_Analog/Master.TAG");
         },
         true},
        {"other letter case of the new view",
         [](const TarnetLibrary& l) { l.write("amp/Tvx_Sim_1/MASTER.tag", ""); }, false},
    };
    for (const Case& c : cases) {
        TarnetLibrary library;
        c.change(library);
        const Tree before = library.tree();
        EXPECT_EQ(convert(library.converter), 0) << c.what;
        Tree expected = before;
        if (c.isConverted) expected = withView(before, "amp");
        EXPECT_EQ(library.tree(), expected) << c.what;
        EXPECT_EQ(lastError(), LastError()) << c.what;
    }
}

TEST(TarnetDriver, LinksToThemselvesAreNeitherCellsNorViews) {
    for (const char* name :
         {"amp", "amp/cfg_analog", "amp/tvx_sim_1/master.tag", "amp/cfg_analog/master.tag"}) {
        TarnetLibrary library;
        fs::remove_all(library.path(name));
        fs::create_directories(fs::path(library.path(name)).parent_path());
        tests::makeLink(fs::path(name).filename(), library.path(name));
        const bool isNewMarker = fs::path(name).parent_path().filename() == "tvx_sim_1";
        const auto before = clitest::pictureOf(library.dir);
        EXPECT_EQ(convert(library.converter), isNewMarker ? 10106 : 0) << name;
        EXPECT_EQ(lastError(), isNewMarker ? openForWritingError(library.path(name)) : LastError()) << name;
        EXPECT_EQ(clitest::pictureOf(library.dir), before) << name;
    }
}

TEST(TarnetDriver, AMarkerThatMayNotBeReadCountsAsAbsent) {
    for (const bool isNewView : {false, true}) {
        TarnetLibrary library;
        if (isNewView) library.write("amp/tvx_sim_1/master.tag", "old");
        openToAll(library.folder.path());
        ASSERT_EQ(
            chmod(((isNewView ? library.view : library.cfg) + "/master.tag").c_str(), isNewView ? 0222 : 0),
            0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(convert(library.converter), 0) << isNewView;
            EXPECT_EQ(lastError(), LastError()) << isNewView;
            return true;
        }));
        EXPECT_EQ(library.existsNew("master.tag"), isNewView);
        if (isNewView) {
            EXPECT_EQ(library.readNew("master.tag"), "amp.net");
        }
    }
}

TEST(TarnetDriver, ANewViewWhoseMarkerIsAFolderEndsTheConversion) {
    TarnetLibrary library;
    library.writeOld("a.lib", "models");
    library.makeFolder("amp/tvx_sim_1/master.tag");
    EXPECT_EQ(convert(library.converter), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.view + "/master.tag"));
    EXPECT_EQ(library.readNew("a.lib"), "models");
}

TEST(TarnetDriver, ANameWithADotIsNoCell) {
    for (const char* name : {"a.b", ".hidden", "ends.", "amp.lib", "a..b"}) {
        if (tests::kOnWindows && std::string(name) == "ends.") continue;  // the dot is dropped there
        TarnetLibrary library;
        library.addCell(name);
        const Tree before = library.tree();
        EXPECT_EQ(convert(library.converter), 0) << name;
        EXPECT_EQ(library.tree(), withView(before, "amp")) << name;
    }
}

TEST(TarnetDriver, AnyOtherNameIsACell) {
    if (tests::kOnWindows) GTEST_SKIP() << "some of these cannot be names of folders there";
    TarnetLibrary library;
    Tree expected = withView(library.tree(), "amp");
    for (const char* name : {"a", "Two words", "\xC4rger", "\xFF\x80", "-x", "%s%n", "a'\"b", "profiles"}) {
        library.addCell(name);
        expected[std::string(name) + "/"] = "";
        expected[std::string(name) + "/cfg_analog/"] = "";
        expected[std::string(name) + "/cfg_analog/master.tag"] = "expand.cfg";
        expected = withView(expected, name);
    }
    EXPECT_EQ(convert(library.converter), 0);
    EXPECT_EQ(library.tree(), expected);
    EXPECT_EQ(lastError(), LastError());
}

TEST(TarnetDriver, ASecondConversionFindsNothingToDo) {
    const TarnetLibrary library;
    library.addCell("beta");
    for (int i = 0; i < 2; ++i) {
        TarnetProjectConverter converter(library.dir.c_str());
        EXPECT_EQ(convert(converter), 0);
        std::string name = "left over";
        EXPECT_EQ(converter.getCellName(name), i == 0 ? 0 : 1);
        EXPECT_EQ(name, i == 0 ? "beta" : "");
    }
}

TEST(TarnetDriver, ACellWhoseNewViewFailsEndsTheConversion) {
    TarnetLibrary library;
    for (const char* name : {"beta", "gamma"}) library.addCell(name);
    library.write("beta/tvx_sim_1", "a file");
    const Tree before = library.tree();
    EXPECT_EQ(convert(library.converter), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.path("beta/tvx_sim_1/master.tag")));
    EXPECT_EQ(library.tree(), withView(before, "amp"));
    std::string name = "left over";
    EXPECT_EQ(library.converter.getCellName(name), 0);
    EXPECT_EQ(name, "beta");
}

TEST(TarnetDriver, ACellThatMayNotBeWrittenToEndsTheConversion) {
    TarnetLibrary library;
    for (const char* name : {"beta", "gamma"}) library.addCell(name);
    openToAll(library.folder.path());
    ASSERT_EQ(chmod(library.path("beta").c_str(), 0555), 0);
    const Tree before = library.tree();
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(convert(library.converter), 10102);
        EXPECT_EQ(lastError(), createDirectoryError(library.path("beta/tvx_sim_1")));
        return true;
    }));
    EXPECT_EQ(library.tree(), withView(before, "amp"));
}

TEST(TarnetDriver, AFileThatFailsEndsItsCellAndNotTheConversion) {
    TarnetLibrary library;
    for (const char* name : {"beta", "gamma"}) {
        library.addCell(name);
        library.write(std::string(name) + "/cfg_analog/a.lib", "models");
        library.write(std::string(name) + "/cfg_analog/b.lib", "models");
    }
    library.makeFolder("beta/tvx_sim_1/a.lib");
    Tree expected = library.tree();
    for (const char* name : {"amp", "beta", "gamma"}) expected = withView(expected, name);
    expected["gamma/tvx_sim_1/a.lib"] = "models";
    expected["gamma/tvx_sim_1/b.lib"] = "models";
    EXPECT_EQ(convert(library.converter), 0);
    EXPECT_EQ(lastError(),
              copyFileError(library.path("beta/cfg_analog/a.lib"), library.path("beta/tvx_sim_1/a.lib")));
    EXPECT_EQ(library.tree(), expected);
}

TEST(TarnetDriver, AnOldViewThatMayNotBeListedIsPassedOver) {
    TarnetLibrary library;
    library.addCell("beta");
    openToAll(library.folder.path());
    ASSERT_EQ(chmod(library.cfg.c_str(), 0333), 0);
    EXPECT_TRUE(succeedsWithoutRoot([&] {
        EXPECT_EQ(convert(library.converter), 0);
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
    EXPECT_TRUE(library.exists("amp/tvx_sim_1"));
    EXPECT_FALSE(library.existsNew("master.tag"));
    EXPECT_EQ(library.read("beta/tvx_sim_1/master.tag"), "beta.net");
}

// --- the fields ---

TEST(TarnetDriver, TheFieldsTellOfTheCellThatWasConvertedLast) {
    TarnetLibrary library;
    library.addCell("Beta");
    library.write("zeta/cfg_analog/other.tag", "");
    EXPECT_EQ(convert(library.converter), 0);
    const std::string cfg = library.path("Beta/cfg_analog");
    const std::string view = library.path("Beta/tvx_sim_1");
    std::string text = "left over";
    EXPECT_EQ(library.converter.getCellName(text), 0);
    EXPECT_EQ(text, "Beta");
    EXPECT_EQ(library.converter.getDesignName(text), 0);
    EXPECT_EQ(text, "Beta");
    EXPECT_EQ(library.converter.getProjectDir(text), 0);
    EXPECT_EQ(text, cfg);
    EXPECT_EQ(library.converter.getDestinationDir(text), 0);
    EXPECT_EQ(text, view);
    EXPECT_EQ(library.converter.getProjectPath(text), 0);
    EXPECT_EQ(text, cfg + "/Beta.opj");
    EXPECT_EQ(library.converter.getNewProjectPath(text), 0);
    EXPECT_EQ(text, view + "/Beta.opj");
    EXPECT_EQ(library.converter.getLibraryDirectory(text), 0);
    EXPECT_EQ(text, library.dir);
    EXPECT_EQ(static_cast<const TarnetProjectConverter&>(library.converter).getLibraryParentName(text), 0);
    EXPECT_EQ(text, "site");
    EXPECT_THAT(movesOf(library.converter), IsEmpty());
}

TEST(TarnetDriver, TheProjectFileIsOneOfTheFilesThatKeepTheirNames) {
    TarnetLibrary library;
    library.writeOld("amp.opj", "{ no project");
    EXPECT_EQ(convert(library.converter), 0);
    EXPECT_EQ(library.readNew("amp.opj"), "{ no project");
}

// The path of the library has given way to that of the last cell's project.
TEST(TarnetDriver, AnObjectServesOneConversion) {
    TarnetLibrary library;
    EXPECT_EQ(convert(library.converter), 0);
    const Tree before = library.tree();
    EXPECT_EQ(convert(library.converter), 10103);
    EXPECT_EQ(lastError(), openDirectoryError(library.cfg + "/amp.opj"));
    EXPECT_EQ(library.tree(), before);
}

TEST(TarnetDriver, SettersAndGettersCopy) {
    TarnetProjectConverter converter(nullptr);
    const TarnetProjectConverter& constant = converter;
    std::string text = "left over";
    EXPECT_EQ(constant.getCellName(text), 1);
    EXPECT_EQ(text, "");
    text = "left over";
    EXPECT_EQ(constant.getLibraryDirectory(text), 1);
    EXPECT_EQ(text, "");
    text = "left over";
    EXPECT_EQ(constant.getLibraryParentName(text), 1);
    EXPECT_EQ(text, "");
    EXPECT_EQ(converter.setCellName("Cell"), 0);
    EXPECT_EQ(converter.setLibraryDirectory("C:\\lib\\"), 0);
    EXPECT_EQ(converter.setLibraryParentName("Parent"), 0);
    EXPECT_EQ(constant.getCellName(text), 0);
    EXPECT_EQ(text, "Cell");
    EXPECT_EQ(constant.getLibraryDirectory(text), 0);
    EXPECT_EQ(text, "C:\\lib\\");
    EXPECT_EQ(constant.getLibraryParentName(text), 0);
    EXPECT_EQ(text, "Parent");
    EXPECT_EQ(converter.setCellName(""), 0);
    EXPECT_EQ(constant.getCellName(text), 1);
    EXPECT_EQ(text, "");
}

// --- one cell ---

TEST(TarnetDriver, OneCellIsConvertedByItsOldView) {
    TarnetLibrary library;
    library.converter.classifyCellFiles();
    library.writeOld("a.als", "aliases");
    library.write("amp/tvx_sim_1/master.tag", "converted already");
    EXPECT_EQ(library.converter.convertCell(withBackslashes(library.cfg)), 0);
    EXPECT_EQ(library.newView(), (Tree{{"amp.als", "aliases"}, {"master.tag", "amp.net"}}));
}

TEST(TarnetDriver, AnOldViewWithoutACellIsRefusedWithoutAnError) {
    for (const char* path : {"", "cfg_analog", "amp/cfg_analog"}) {
        forgetLastError();
        TarnetProjectConverter converter(nullptr);
        EXPECT_EQ(converter.convertCell(path), 1) << path;
        EXPECT_EQ(lastError(), LastError()) << path;
        std::string text = "left over";
        EXPECT_EQ(converter.getCellName(text), 1) << path;
    }
}

// --- through the exported interface ---

TEST(TarnetDriver, AHostConvertsThroughTheInterface) {
    const TarnetLibrary library;
    const Tree before = library.tree();
    const std::unique_ptr<ITarnetProjectConverter> converter(
        createTarnetProjectConverter(library.dir.c_str()));
    EXPECT_EQ(converter->convert(2, "/anything"), 0);
    EXPECT_EQ(library.tree(), withView(before, "amp"));
    std::string name = "left over";
    EXPECT_EQ(converter->getLibraryParentName(name), 0);
    EXPECT_EQ(name, "site");
}

// --- cells that name files of each other ---

TEST(TarnetDriver, ALinkIntoTheNewViewOfAnotherCellIsCopiedAsAWholeOrNotAtAll) {
    const std::string large(std::size_t{3} << 20, 'x');
    for (const bool isConvertedBefore : {true, false}) {
        const std::string target = isConvertedBefore ? "alpha" : "omega";
        TarnetLibrary library;
        library.addCell(target);
        library.write(target + "/cfg_analog/large.lib", large);
        tests::makeLink("../../" + target + "/tvx_sim_1/large.lib", library.cfg + "/linked.lib");
        EXPECT_EQ(library.converter.convert(0, std::string()), 0);
        EXPECT_TRUE(library.read(target + "/tvx_sim_1/large.lib") == large);
        EXPECT_EQ(library.readNew("master.tag"), "amp.net");
        if (isConvertedBefore) {
            EXPECT_TRUE(library.readNew("linked.lib") == large);
            EXPECT_EQ(lastError(), LastError());
        } else {  // where the link leads to nothing yet
            EXPECT_FALSE(library.existsNew("linked.lib"));
            EXPECT_EQ(lastError(), copyFileError(library.cfg + "/linked.lib", library.view + "/linked.lib"));
        }
    }
}

// --- a full disk, times ---

TEST(TarnetDriver, APartOfAListedFileIsNotLeftAndItsLineNeither) {
    TarnetLibrary library;
    library.writeOld("tran.sim", "a line\n+1 \"models/a.txt\"\nanother\n");
    library.writeOld("models/a.txt", std::string(5000, 'x'));
    EXPECT_TRUE(succeedsWithFileLimit(4096, [&] {
        EXPECT_EQ(library.converter.convert(0, std::string()), 0);
        EXPECT_EQ(lastError(), LastError());
        return true;
    }));
    EXPECT_EQ(library.newView(), (Tree{{"master.tag", "amp.net"},
                                       {"profiles/", ""},
                                       {"profiles/tran.sim", "a line\nanother\n"},
                                       {"profiles/tran/", ""}}));
}

TEST(TarnetDriver, APartOfADesignProfileIsNotLeftAndItsLineStays) {
    TarnetLibrary library;
    library.writeOld("a.opt", "EXT \"corners.mdp\" 1\n");
    library.writeOld("corners.mdp", std::string(5000, 'x'));
    EXPECT_TRUE(succeedsWithFileLimit(4096, [&] {
        EXPECT_EQ(library.converter.convert(0, std::string()), 0);
        EXPECT_EQ(lastError(), copyFileError(library.cfg + "/corners.mdp", library.view + "/corners.mdp"));
        return true;
    }));
    EXPECT_EQ(library.newView(), (Tree{{"amp.opt", "EXT \"corners.mdp\" 1\n"}, {"master.tag", "amp.net"}}));
}

TEST(TarnetDriver, CopiesKeepTheirTimesAndWhatIsRewrittenIsNew) {
    namespace fs = std::filesystem;
    TarnetLibrary library;
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(24 * 365);
    for (const char* name : {"a.lib", "b.als", "tran.dat", "tran.sim", "c.net"}) {
        fs::last_write_time(library.writeOld(name, "text\n"), old);
    }
    library.write("amp/tvx_sim_1/a.lib", "an earlier copy");
    const auto before = fs::file_time_type::clock::now() - std::chrono::seconds(2);
    ASSERT_EQ(library.converter.convert(0, std::string()), 0);
    for (const char* name : {"a.lib", "amp.als", "profiles/tran/tran.dat"}) {
        EXPECT_EQ(fs::last_write_time(library.view + "/" + name), fs::last_write_time(library.cfg + "/a.lib"))
            << name;
    }
    for (const char* name : {"amp.net", "profiles/tran.sim", "master.tag"}) {
        EXPECT_GE(fs::last_write_time(library.view + "/" + name), before) << name;
    }
}

}  // namespace
