// TarnetLibrary.h
//
// For the tests of the Tarnet conversion: a small library in a folder of its own with a converter for it, and
// what all rewriters of text files have to do with lines.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/DraftelProject.h"  // the last error, children that lack something
#include "support/TestFolder.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tests {

// What is recorded for a folder that cannot be opened.
LastError openDirectoryError(const std::string& path);

// The library "lib" in the folder "site" of a folder of its own. It has one cell "amp" with the old view,
// which holds nothing but its marker.
class TarnetLibrary {
public:
    TarnetLibrary();

    // Sets the converter to what it knows when it converts the cell "amp", and makes the folders of the new
    // view, with one for the profile "tran".
    void prepareCell();

    // Files and folders by their names in the library.
    std::string path(const std::string& name) const { return dir + "/" + name; }
    std::string write(const std::string& name, const std::string& text) const;
    std::string makeFolder(const std::string& name) const;
    std::string read(const std::string& name) const;
    bool exists(const std::string& name) const;

    // A cell with the old view.
    void addCell(const std::string& name) const;

    // Files of the two views of "amp".
    std::string writeOld(const std::string& name, const std::string& text) const;
    std::string readNew(const std::string& name) const;
    bool existsNew(const std::string& name) const;

    Tree tree() const { return treeOf(dir); }
    Tree newView() const { return treeOf(view); }

    const TestFolder folder;
    const std::string dir;       // the library
    const std::string cell;      // of "amp"
    const std::string cfg;       // its old view
    const std::string view;      // its new one
    const std::string profiles;  // in that
    tvxconv::TarnetProjectConverter converter;
};

// One line, without its end, and what is written in its place; null for nothing. @LIB@, @CELL@ and @CFG@
// stand for the folders of the library, of "amp" and of its old view.
struct TarnetLine {
    const char* line;
    const char* written;
};
constexpr const char* kNoLine = nullptr;

// What every rewriting does with lines: LF, CRLF, and a last line without an end. What is copied keeps having
// none, what is new gets one. `rewritten` makes the new text of an old one.
template <class Rewritten>
void expectTarnetLines(const TarnetLibrary& library, const std::vector<TarnetLine>& cases,
                       Rewritten rewritten) {
    const auto here = [&](const char* text) {
        std::string result = replaced(text, "@CFG@", library.cfg);
        result = replaced(result, "@CELL@", library.cell);
        return replaced(result, "@LIB@", library.dir);
    };
    for (const TarnetLine& entry : cases) {
        const std::string line = here(entry.line);
        const bool isDropped = entry.written == kNoLine;
        const std::string written = isDropped ? "" : here(entry.written);
        for (const std::string end : {"\n", "\r\n"}) {
            EXPECT_EQ(rewritten("* before" + end + line + end + "after 1 0 1k" + end),
                      "* before" + end + (isDropped ? "" : written + end) + "after 1 0 1k" + end)
                << line;
        }
        const std::string last = isDropped ? "" : written == line ? line : written + "\n";
        EXPECT_EQ(rewritten("* before\n" + line), "* before\n" + last) << line;
    }
    EXPECT_EQ(lastError(), LastError());
}

}  // namespace tests
