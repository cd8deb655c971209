// tarnet_many_cells_test.cpp
//
// Libraries of many cells, which several threads convert: what comes of it is what one thread would do, also
// where cells fail.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "converter/errors.h"
#include "support/SmallDisk.h"
#include "support/TarnetLibrary.h"
#include "support/cliProject.h"
#include "support/fileLimit.h"
#include "support/foldersInMemory.h"

namespace {

using namespace tests;
using tvxconv::TarnetProjectConverter;
namespace fs = std::filesystem;

constexpr int kCells = 24;
// Files and folders of a new view, itself among them.
constexpr int kEntriesOfAView = 8;

std::string cellName(int number) {
    return number < 10 ? "cell0" + std::to_string(number) : "cell" + std::to_string(number);
}

// A library of cells with a few files each, in the place of "amp".
class ManyCells : private FoldersInMemory, public TarnetLibrary {
public:
    explicit ManyCells(const std::string& place = "/dev/shm") : FoldersInMemory(place) {
        fs::remove_all(cell);
        for (int number = 0; number < kCells; ++number) {
            addCell(cellName(number));
            writeOldOf(number, "a.lib", "models of " + cellName(number));
            writeOldOf(number, "b.net", ".INC \"x.par\"\nR1 1 0 1k\n");
            writeOldOf(number, "tran.dat", "data");
            writeOldOf(number, "tran.sim.cir", ".LIB \"a.lib\"\n");
        }
    }

    void writeOldOf(int number, const std::string& name, const std::string& text) const {
        write(cellName(number) + "/cfg_analog/" + name, text);
    }

    int convert() {
        forgetLastError();
        return converter.convert(0, std::string());
    }

    // The tree with the new views of the cells before `end`.
    static Tree convertedUpTo(Tree tree, int end) {
        for (int number = 0; number < end; ++number) {
            const std::string name = cellName(number);
            const std::string viewOf = name + "/tvx_sim_1/";
            for (const char* below : {"", "profiles/", "profiles/tran/"}) tree[viewOf + below] = "";
            tree[viewOf + "a.lib"] = "models of " + name;
            tree[viewOf + name + ".net"] = ".INC \"../" + name + ".par\"\nR1 1 0 1k\n";
            tree[viewOf + "master.tag"] = name + ".net";
            tree[viewOf + "profiles/tran/tran.dat"] = "data";
            tree[viewOf + "profiles/tran/tran.cir"] = ".LIB \"../../a.lib\"\n";
        }
        return tree;
    }

    std::string viewOf(int number) const { return path(cellName(number)) + "/tvx_sim_1"; }
};

std::string difference(const Tree& before, const Tree& after) {
    return clitest::difference(before, after);
}

TEST(TarnetManyCells, AreAllConverted) {
    ManyCells library;
    const Tree before = library.tree();
    EXPECT_EQ(library.convert(), 0);
    EXPECT_EQ(lastError(), LastError());
    EXPECT_EQ(difference(ManyCells::convertedUpTo(before, kCells), library.tree()), "");
}

TEST(TarnetManyCells, TheFieldsTellOfTheLastOne) {
    for (const int cells : {kCells, kCells - 1}) {
        ManyCells library;
        for (int number = cells; number < kCells; ++number) fs::remove_all(library.path(cellName(number)));
        EXPECT_EQ(library.convert(), 0);
        std::string text = "left over";
        EXPECT_EQ(library.converter.getCellName(text), 0);
        EXPECT_EQ(text, cellName(cells - 1));
        EXPECT_EQ(library.converter.getNewProjectPath(text), 0);
        EXPECT_EQ(text, library.viewOf(cells - 1) + "/" + cellName(cells - 1) + ".opj");
    }
}

TEST(TarnetManyCells, ACellWithoutItsNewViewEndsTheRunAndLaterOnesAreAsTheyWere) {
    for (int failing = 0; failing < kCells; ++failing) {
        ManyCells library;
        library.write(cellName(failing) + "/tvx_sim_1", "a file");
        const Tree before = library.tree();
        EXPECT_EQ(library.convert(), 10106) << failing;
        EXPECT_EQ(lastError(), openForWritingError(library.viewOf(failing) + "/master.tag")) << failing;
        EXPECT_EQ(difference(ManyCells::convertedUpTo(before, failing), library.tree()), "") << failing;
        std::string text = "left over";
        EXPECT_EQ(library.converter.getCellName(text), 0);
        EXPECT_EQ(text, cellName(failing));
    }
}

TEST(TarnetManyCells, ACellThatMayNotBeWrittenToEndsTheRunAndLaterOnesAreAsTheyWere) {
    for (int failing = 4; failing < 8; ++failing) {
        ManyCells library;
        openToAll(library.folder.path());
        ASSERT_EQ(chmod(library.path(cellName(failing)).c_str(), 0555), 0);
        const Tree before = library.tree();
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(library.convert(), 10102) << failing;
            EXPECT_EQ(lastError(), createDirectoryError(library.viewOf(failing))) << failing;
            return true;
        }));
        EXPECT_EQ(difference(ManyCells::convertedUpTo(before, failing), library.tree()), "") << failing;
    }
}

// A mark that cannot be written in a view that the conversion has made itself: the name of the netlist is too
// long for the disk.
TEST(TarnetManyCells, AFullDiskAtAMarkEndsTheRunAndLaterOnesAreAsTheyWere) {
    for (int failing = 4; failing < 8; ++failing) {
        ManyCells library;
        const std::string longName = cellName(failing) + std::string(60, 'x');
        fs::rename(library.path(cellName(failing)), library.path(longName));
        fs::remove_all(library.path(longName) + "/cfg_analog");
        library.addCell(longName);
        const Tree before = library.tree();
        EXPECT_TRUE(succeedsWithFileLimit(60, [&] {
            EXPECT_EQ(library.convert(), 10106) << failing;
            EXPECT_EQ(lastError(), openForWritingError(library.path(longName) + "/tvx_sim_1/master.tag"))
                << failing;
            return true;
        }));
        Tree expected = ManyCells::convertedUpTo(before, failing);
        expected[longName + "/tvx_sim_1/"] = "";
        EXPECT_EQ(difference(expected, library.tree()), "") << failing;
    }
}

// On a disk that becomes full, the cells before the one that has no room are converted, and the others have
// taken none of it.
TEST(TarnetManyCells, AFullDiskMeetsTheCellThatItWouldMeetWithOneThread) {
    for (const int failing : {5, 6, 14}) {
        const std::string name = cellName(failing);
        const Tree converted = ManyCells::convertedUpTo(Tree(), failing + 1);
        // In the order in which they are made.
        const std::string made[kEntriesOfAView] = {"",
                                                   "a.lib",
                                                   name + ".net",
                                                   "profiles/",
                                                   "profiles/tran/",
                                                   "profiles/tran/tran.dat",
                                                   "profiles/tran/tran.cir",
                                                   "master.tag"};
        for (int room = 0; room < kEntriesOfAView; ++room) {
            const SmallDisk disk;
            if (!disk.isThere()) GTEST_SKIP() << "no disk can be mounted here";
            ManyCells library(disk.path());
            Tree expected = ManyCells::convertedUpTo(library.tree(), failing);
            for (int entry = 0; entry < room; ++entry) {
                const std::string path = name + "/tvx_sim_1/" + made[entry];
                expected[path] = converted.at(path);
            }
            if (!disk.leaveRoomFor(static_cast<unsigned long>(kEntriesOfAView * failing + room))) {
                GTEST_SKIP() << "the room of a disk cannot be set here";
            }
            const std::string view = library.viewOf(failing);
            EXPECT_EQ(library.convert(), room == 0 ? 10102 : 10106) << failing << " " << room;
            EXPECT_EQ(lastError(),
                      room == 0 ? createDirectoryError(view) : openForWritingError(view + "/master.tag"))
                << failing << " " << room;
            EXPECT_EQ(difference(expected, library.tree()), "") << failing << " " << room;
        }
    }
}

// A list entry whose file cannot be copied is left out and no error told of it: room that later cells have
// taken must not be the reason.
TEST(TarnetManyCells, AFullDiskAtAFileThatAProfileNamesMeetsTheSameCellAsWithOneThread) {
    constexpr int kFailing = 6;
    const SmallDisk disk;
    if (!disk.isThere()) GTEST_SKIP() << "no disk can be mounted here";
    ManyCells library(disk.path());
    Tree expected = ManyCells::convertedUpTo(library.tree(), kFailing);
    // The only files of this cell: there is room for its folders, the profile file and the mark.
    const std::string name = cellName(kFailing);
    for (const char* file : {"a.lib", "b.net", "tran.dat", "tran.sim.cir"}) {
        fs::remove(library.path(name) + "/cfg_analog/" + file);
        expected.erase(name + "/cfg_analog/" + file);
    }
    for (const char* file : {"tran.sim", "m.mod"}) {
        library.writeOldOf(kFailing, file, "+0 \"m.mod\" \nRunToTime= \"1m\" \n");
        expected[name + "/cfg_analog/" + file] = library.read(name + "/cfg_analog/" + file);
    }
    for (const char* folder : {"", "profiles/", "profiles/tran/"})
        expected[name + "/tvx_sim_1/" + folder] = "";
    expected[name + "/tvx_sim_1/profiles/tran.sim"] = "RunToTime= \"1m\" \n";
    if (!disk.leaveRoomFor(kEntriesOfAView * kFailing + 4)) {
        GTEST_SKIP() << "the room of a disk cannot be set here";
    }
    EXPECT_EQ(library.convert(), 10106);
    EXPECT_EQ(lastError(), openForWritingError(library.viewOf(kFailing) + "/master.tag"));
    EXPECT_EQ(difference(expected, library.tree()), "");
}

TEST(TarnetManyCells, WhenAnErrorIsToldNoLaterCellHasANewView) {
    for (int failing = 0; failing < 12; ++failing) {
        ManyCells library;
        fs::remove(library.path(cellName(failing)) + "/cfg_analog/b.net");
        library.makeFolder(cellName(failing) + "/cfg_analog/b.net");
        int told = 0;
        tvxconv::observeErrors([&](int code, const std::string&) {
            ++told;
            EXPECT_EQ(code, 10105) << failing;
            for (int number = 0; number < kCells; ++number) {
                EXPECT_EQ(fs::exists(library.viewOf(number)), number <= failing) << failing << " " << number;
                EXPECT_EQ(fs::exists(library.viewOf(number) + "/master.tag"), number < failing)
                    << failing << " " << number;
            }
        });
        EXPECT_EQ(library.convert(), 0);
        tvxconv::observeErrors(nullptr);
        EXPECT_EQ(told, 1) << failing;
    }
}

TEST(TarnetManyCells, TheLastErrorIsThatOfTheLastCellThatFails) {
    for (int first = 4; first < 8; ++first) {
        for (const int second : {first, first + 1}) {
            ManyCells library;
            const Tree before = library.tree();
            Tree expected = ManyCells::convertedUpTo(before, kCells);
            for (const int failing : {first, second}) {
                // A folder that is called like a file ends the cell at its first file.
                fs::remove(library.path(cellName(failing)) + "/cfg_analog/a.lib");
                library.makeFolder(cellName(failing) + "/cfg_analog/a.lib");
                expected.erase(cellName(failing) + "/cfg_analog/a.lib");
                expected[cellName(failing) + "/cfg_analog/a.lib/"] = "";
                std::erase_if(expected, [&](const auto& entry) {
                    return entry.first.starts_with(cellName(failing) + "/tvx_sim_1/");
                });
                expected[cellName(failing) + "/tvx_sim_1/"] = "";
                expected[cellName(failing) + "/tvx_sim_1/master.tag"] = cellName(failing) + ".net";
            }
            EXPECT_EQ(library.convert(), 0) << first << " " << second;
            EXPECT_EQ(lastError(), copyFileError(library.path(cellName(second)) + "/cfg_analog/a.lib",
                                                 library.viewOf(second) + "/a.lib"))
                << first << " " << second;
            EXPECT_EQ(difference(expected, library.tree()), "") << first << " " << second;
        }
    }
}

TEST(TarnetManyCells, ViewsThatAreThereAndCellsThatAreConvertedAreInNobodysWay) {
    ManyCells library;
    Tree expected = ManyCells::convertedUpTo(library.tree(), kCells);
    for (int number = 2; number < kCells; number += 3) {
        library.write(cellName(number) + "/tvx_sim_1/left.over", "mine");
        expected[cellName(number) + "/tvx_sim_1/left.over"] = "mine";
    }
    for (int number = 3; number < kCells; number += 4) {
        library.write(cellName(number) + "/tvx_sim_1/master.tag", "converted");
        std::erase_if(expected, [&](const auto& entry) {
            return entry.first.starts_with(cellName(number) + "/tvx_sim_1/") &&
                   !entry.first.ends_with(".over");
        });
        expected[cellName(number) + "/tvx_sim_1/"] = "";
        expected[cellName(number) + "/tvx_sim_1/master.tag"] = "converted";
    }
    EXPECT_EQ(library.convert(), 0);
    EXPECT_EQ(difference(expected, library.tree()), "");
}

// A cell may name files in the new view of another. Those of an earlier cell are there when its turn comes,
// those of a later one are not.
TEST(TarnetManyCells, NamesOfFilesInNewViewsAreFollowedAsFarAsTheRunHasCome) {
    for (const int first : {1, 4, 5, 12, 21}) {
        for (const int end : {first + 1, kCells - 1}) {
            ManyCells library;
            Tree expected = ManyCells::convertedUpTo(library.tree(), kCells);
            for (int number = first; number < end; ++number) {
                const auto fileOf = [](int cell) { return "../" + cellName(cell) + "/Tvx_Sim_1/a.lib"; };
                const std::string earlier = fileOf(number - 1);
                const std::string later = fileOf(number + 1);
                const std::string folder = library.path(cellName(number));
                const auto add = [&](const std::string& name, const std::string& text) {
                    expected[cellName(number) + "/" + name] = text;
                };
                const std::string deck =
                    ".LIB \"../" + earlier + "\"\n.LIB \"../" + later + "\"\n.LIB \"a.lib\"\n";
                library.writeOldOf(number, "tran.sim.cir", deck);
                add("cfg_analog/tran.sim.cir", deck);
                add("tvx_sim_1/profiles/tran/tran.cir", ".LIB \"" + folder + "/" + earlier +
                                                            "\"\n.LIB \"../" + later +
                                                            "\"\n.LIB \"../../a.lib\"\n");
                const std::string profile = "+0 \"../" + earlier + "\" \n+1 \"../" + later + "\" \n";
                library.writeOldOf(number, "tran.sim", profile);
                add("cfg_analog/tran.sim", profile);
                add("tvx_sim_1/profiles/tran.sim", "+0 \"a.lib\" \n+1 \"../" + later + "\" \n");
                add("tvx_sim_1/profiles/tran/a.lib", "models of " + cellName(number - 1));
            }
            EXPECT_EQ(library.convert(), 0) << first;
            EXPECT_EQ(lastError(), LastError()) << first;
            EXPECT_EQ(difference(expected, library.tree()), "") << first << " to " << end;
        }
    }
}

// An old view may be a link to a new one: its turn comes when that is there, or not at all.
TEST(TarnetManyCells, AnOldViewThatIsANewOneIsConvertedOnlyAfterThat) {
    for (int linking = 4; linking < 9; ++linking) {
        for (const bool isLater : {true, false}) {
            ManyCells library;
            const int linked = isLater ? linking + 1 : linking - 1;
            fs::remove_all(library.path(cellName(linking)) + "/cfg_analog");
            tests::makeLink("../" + cellName(linked) + "/tvx_sim_1",
                            library.path(cellName(linking)) + "/cfg_analog");
            EXPECT_EQ(library.convert(), 0);
            EXPECT_EQ(lastError(), LastError());
            EXPECT_EQ(fs::exists(library.viewOf(linking)), !isLater) << linking;
            if (!isLater) {
                EXPECT_EQ(library.read(cellName(linking) + "/tvx_sim_1/a.lib"),
                          "models of " + cellName(linked));
            }
            for (const int number : {linked, kCells - 1}) {
                EXPECT_EQ(treeOf(library.viewOf(number)).size(), 7U) << number;
            }
        }
    }
}

// A cell that is not converted ahead does not see the new views of later ones either.
TEST(TarnetManyCells, ACellWithANewViewAlreadyDoesNotSeeThoseOfLaterOnes) {
    for (int number = 4; number < 9; ++number) {
        ManyCells library;
        Tree expected = ManyCells::convertedUpTo(library.tree(), kCells);
        fs::create_directory(library.viewOf(number));
        const std::string deck = ".LIB \"../../" + cellName(number + 1) + "/tvx_sim_1/a.lib\"\n";
        library.writeOldOf(number, "tran.sim.cir", deck);
        expected[cellName(number) + "/cfg_analog/tran.sim.cir"] = deck;
        expected[cellName(number) + "/tvx_sim_1/profiles/tran/tran.cir"] = deck;
        EXPECT_EQ(library.convert(), 0);
        EXPECT_EQ(difference(expected, library.tree()), "") << number;
    }
}

// Where a backslash can be in a name, it separates all the same.
TEST(TarnetManyCells, ACellWithABackslashInItsNameEndsTheRun) {
    ManyCells library;
    library.addCell("cell05\\x");
    if (library.exists("cell05/x")) GTEST_SKIP() << "a backslash is in no name here";
    const Tree before = library.tree();
    EXPECT_EQ(library.convert(), 10102);
    EXPECT_EQ(lastError(), createDirectoryError(library.path("cell05/x/tvx_sim_1")));
    EXPECT_EQ(difference(ManyCells::convertedUpTo(before, 6), library.tree()), "");
}

TEST(TarnetManyCells, ACellWithABackslashInItsNameMeansTheFolderBelow) {
    ManyCells library;
    library.addCell("cell05\\x");
    if (library.exists("cell05/x")) GTEST_SKIP() << "a backslash is in no name here";
    library.write("cell05\\x/cfg_analog/a.lib", "models");
    library.makeFolder("cell05/x");
    Tree expected = ManyCells::convertedUpTo(library.tree(), kCells);
    // There is no old view there that could be listed.
    expected["cell05/x/tvx_sim_1/"] = "";
    EXPECT_EQ(library.convert(), 0);
    EXPECT_EQ(lastError(), LastError());
    EXPECT_EQ(difference(expected, library.tree()), "");
}

// It leads nowhere when the turn of its cell comes, whatever later cells have got already.
TEST(TarnetManyCells, ANewViewThatIsALinkToALaterOneCannotBeMade) {
    for (int linking = 0; linking < 9; ++linking) {
        ManyCells library;
        tests::makeLink("../" + cellName(linking + 1) + "/tvx_sim_1", library.viewOf(linking));
        EXPECT_EQ(library.convert(), 10102) << linking;
        EXPECT_EQ(lastError(), createDirectoryError(library.viewOf(linking))) << linking;
        for (int number = 0; number < kCells; ++number) {
            EXPECT_EQ(fs::exists(library.viewOf(number)), number < linking) << linking << " " << number;
        }
    }
}

// Two names of one folder: the first converts it, and the second finds it converted.
TEST(TarnetManyCells, AFolderUnderTwoNamesIsConvertedOnce) {
    for (int number = 4; number < 8; ++number) {
        for (const bool linkIsFirst : {true, false}) {
            ManyCells library;
            const std::string link = cellName(linkIsFirst ? number : number + 1);
            const std::string folder = cellName(linkIsFirst ? number + 1 : number);
            fs::remove_all(library.path(link));
            tests::makeLink(folder, library.path(link));
            EXPECT_EQ(library.convert(), 0);
            EXPECT_EQ(lastError(), LastError());
            EXPECT_EQ(library.read(folder + "/tvx_sim_1/master.tag"), cellName(number) + ".net");
            EXPECT_EQ(treeOf(library.path(folder) + "/tvx_sim_1").size(), 7U) << number;
        }
    }
}

TEST(TarnetManyCells, AFolderUnderTwoNamesTakesTheFirstAlsoAfterACellThatIsConvertedInItsTurn) {
    for (int number = 4; number < 9; ++number) {
        ManyCells library;
        fs::create_directory(library.viewOf(number));
        for (int later = number + 2; later < kCells; ++later) {
            fs::remove_all(library.path(cellName(later)));
            tests::makeLink(cellName(number + 1), library.path(cellName(later)));
        }
        EXPECT_EQ(library.convert(), 0);
        EXPECT_EQ(lastError(), LastError());
        EXPECT_EQ(library.read(cellName(number + 1) + "/tvx_sim_1/master.tag"),
                  cellName(number + 1) + ".net");
        EXPECT_EQ(treeOf(library.viewOf(number + 1)).size(), 7U) << number;
    }
}

TEST(TarnetManyCells, AnOldViewThatMayNotBeListedIsPassedOver) {
    for (int number = 4; number < 8; ++number) {
        ManyCells library;
        openToAll(library.folder.path());
        Tree expected = ManyCells::convertedUpTo(library.tree(), kCells);
        std::erase_if(expected, [&](const auto& entry) {
            return entry.first.starts_with(cellName(number) + "/tvx_sim_1/");
        });
        expected[cellName(number) + "/tvx_sim_1/"] = "";
        ASSERT_EQ(chmod((library.path(cellName(number)) + "/cfg_analog").c_str(), 0333), 0);
        EXPECT_TRUE(succeedsWithoutRoot([&] {
            EXPECT_EQ(library.convert(), 0) << number;
            EXPECT_EQ(lastError(), LastError()) << number;
            return true;
        }));
        EXPECT_EQ(difference(expected, library.tree()), "") << number;
    }
}

}  // namespace
