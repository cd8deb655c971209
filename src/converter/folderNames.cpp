#include "converter/folderNames.h"

#include <memory>

#include "fsutil/files.h"

namespace tvxconv {

int forEachName(const std::string& folder, const std::function<bool(const std::string& name)>& visit) {
    fsutil::DirectoryListing* listing = nullptr;
    if (fsutil::openDirectory(folder, listing) != 0) return 1;
    const std::unique_ptr<fsutil::DirectoryListing, int (*)(fsutil::DirectoryListing*)> closing(
        listing, fsutil::closeDirectory);
    std::string name;
    while (fsutil::readDirectory(listing, name) == 0 && visit(name)) {
    }
    return 0;
}

}  // namespace tvxconv
