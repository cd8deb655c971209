// tarnetSample_test.cpp
//
// The sample library, converted through the exported interface: the whole tree and the listing are compared
// with what was written by hand, and a second conversion changes nothing.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "interface/ITarnetProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TestFolder.h"

namespace {

using namespace tests;
namespace fs = std::filesystem;

// A copy of the sample library, in a folder "project".
class TarnetSample : public testing::Test {
protected:
    TarnetSample() : library(folder.path("project/library")), before(copiedLibrary()) {
        converter.reset(createTarnetProjectConverter(library.c_str()));
        forgetLastError();
    }

    // The library as it was and the new views.
    Tree expected() const {
        Tree tree = before;
        for (const auto& [name, text] : treeOf(TVXCONV_SOURCE_DIR "/tests/data/tarnet-expected")) {
            tree[name] = replaced(text, "@LIBRARY@", library);
        }
        return tree;
    }

    std::string expectedListing() const {
        return replaced(readFile(TVXCONV_SOURCE_DIR "/tests/data/tarnet-expected-structure.txt"), "@LIBRARY@",
                        library);
    }

    // Names first, so that a failure says where it is.
    void expectTree(const Tree& expectedTree) const {
        const Tree actual = treeOf(library);
        std::vector<std::string> names;
        std::vector<std::string> expectedNames;
        for (const auto& [name, text] : actual) names.push_back(name);
        for (const auto& [name, text] : expectedTree) expectedNames.push_back(name);
        EXPECT_EQ(names, expectedNames);
        for (const auto& [name, text] : expectedTree) {
            const auto found = actual.find(name);
            if (found == actual.end()) continue;
            EXPECT_EQ(found->second, text) << name;
        }
    }

    std::map<std::string, fs::file_time_type> times() const {
        std::map<std::string, fs::file_time_type> all;
        for (const auto& entry : fs::recursive_directory_iterator(library)) {
            all[entry.path().string()] = entry.last_write_time();
        }
        return all;
    }

    const TestFolder folder;
    const std::string library;
    const Tree before;
    std::unique_ptr<ITarnetProjectConverter> converter;

private:
    Tree copiedLibrary() const {
        folder.makeFolder("project");
        fs::copy(TVXCONV_SOURCE_DIR "/examples/tarnet", library, fs::copy_options::recursive);
        return treeOf(library);
    }
};

std::vector<std::string> listingLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST_F(TarnetSample, IsConverted) {
    EXPECT_EQ(converter->convert(0, std::string()), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(expected());
}

TEST_F(TarnetSample, IsListedAndReported) {
    EXPECT_EQ(converter->convert(0, std::string()), 0);
    std::string parent = "left over";
    EXPECT_EQ(converter->getLibraryParentName(parent), 0);
    EXPECT_EQ(parent, "project");
    std::vector<std::string> lines = {"left over"};
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    EXPECT_EQ(lines, listingLines("left over\n" + expectedListing()));
    lines.erase(lines.begin());
    EXPECT_EQ(converter->writeReport(lines, "report.txt"), 0);
    EXPECT_EQ(
        folder.read("project/library/report.txt"),
        "The conversion of the project was successful.\n\nThe new directory structure is as follows:\n\n" +
            expectedListing());
}

TEST_F(TarnetSample, ASecondConversionTouchesNothing) {
    EXPECT_EQ(converter->convert(0, std::string()), 0);
    const auto timesBefore = times();
    // An object converts once.
    const std::unique_ptr<ITarnetProjectConverter> second(createTarnetProjectConverter(library.c_str()));
    EXPECT_EQ(second->convert(0, std::string()), 0);
    EXPECT_EQ(lastError(), LastError());
    expectTree(expected());
    EXPECT_EQ(times(), timesBefore);
    std::vector<std::string> lines;
    EXPECT_EQ(second->getNewStructure(lines), 0);
    EXPECT_EQ(lines, listingLines(expectedListing()));
}

// The path of a library as an application on Windows would write it; the paths in the new files have "/".
TEST_F(TarnetSample, BackslashesInTheLibrarysPathAreTurned) {
    converter.reset(createTarnetProjectConverter(withBackslashes(library).c_str()));
    EXPECT_EQ(converter->convert(0, std::string()), 0);
    expectTree(expected());
    std::vector<std::string> lines;
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    EXPECT_EQ(lines, listingLines(expectedListing()));
}

// Interrupted before the view was marked: what the first attempt left is written over or kept.
TEST_F(TarnetSample, AViewThatIsNotMarkedYetIsMadeAnew) {
    folder.makeFolder("project/library/limiter/tvx_sim_1");
    folder.makeFolder("project/library/filter/tvx_sim_1/profiles/tran");
    folder.write("project/library/filter/tvx_sim_1/filter.net", "half a netl");
    folder.write("project/library/filter/tvx_sim_1/mine.txt", "of the user");
    EXPECT_EQ(converter->convert(0, std::string()), 0);
    EXPECT_EQ(lastError(), LastError());
    Tree tree = expected();
    tree["filter/tvx_sim_1/mine.txt"] = "of the user";
    expectTree(tree);
}

}  // namespace
