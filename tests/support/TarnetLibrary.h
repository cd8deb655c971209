// TarnetLibrary.h
//
// For the tests of the Tarnet conversion: a small library in a folder of its own with a converter for it.

#pragma once

#include <string>

#include "support/DraftelProject.h"  // the last error, children that lack something
#include "support/TestFolder.h"
#include "support/lineCases.h"
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
    // @LIB@, @CELL@ and @CFG@ stand for the folders of the library, of "amp" and of its old view.
    Places places() const { return {{"@CFG@", cfg}, {"@CELL@", cell}, {"@LIB@", dir}}; }
    Tree newView() const { return treeOf(view); }

    const TestFolder folder;
    const std::string dir;       // the library
    const std::string cell;      // of "amp"
    const std::string cfg;       // its old view
    const std::string view;      // its new one
    const std::string profiles;  // in that
    tvxconv::TarnetProjectConverter converter;
};

}  // namespace tests
