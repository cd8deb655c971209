#include "support/TarnetLibrary.h"

#include <filesystem>

namespace tests {

namespace fs = std::filesystem;

LastError openDirectoryError(const std::string& path) {
    return {10103, "Failed to open directory \"" + path + "\". Check its existence on the disk."};
}

TarnetLibrary::TarnetLibrary()
    : dir(folder.path("site/lib")),
      cell(dir + "/amp"),
      cfg(cell + "/cfg_analog"),
      view(cell + "/tvx_sim_1"),
      profiles(view + "/profiles"),
      converter(dir.c_str()) {
    addCell("amp");
    forgetLastError();
}

void TarnetLibrary::prepareCell() {
    converter.setMode(1);
    converter.setLibraryDirectory(dir);
    converter.setProjectDir(cfg);
    converter.setSourceDir(cfg);
    converter.setDestinationDir(view);
    converter.setCellName("amp");
    converter.classifyCellFiles();
    fs::create_directories(profiles + "/tran");
}

std::string TarnetLibrary::write(const std::string& name, const std::string& text) const {
    return folder.write("site/lib/" + name, text);
}

std::string TarnetLibrary::makeFolder(const std::string& name) const {
    return folder.makeFolder("site/lib/" + name);
}

std::string TarnetLibrary::read(const std::string& name) const {
    return folder.read("site/lib/" + name);
}

bool TarnetLibrary::exists(const std::string& name) const {
    return folder.exists("site/lib/" + name);
}

void TarnetLibrary::addCell(const std::string& name) const {
    write(name + "/cfg_analog/master.tag", "expand.cfg");
}

std::string TarnetLibrary::writeOld(const std::string& name, const std::string& text) const {
    return write("amp/cfg_analog/" + name, text);
}

std::string TarnetLibrary::readNew(const std::string& name) const {
    return read("amp/tvx_sim_1/" + name);
}

bool TarnetLibrary::existsNew(const std::string& name) const {
    return exists("amp/tvx_sim_1/" + name);
}

}  // namespace tests
