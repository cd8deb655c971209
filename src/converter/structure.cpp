#include "converter/structure.h"

#include "converter/folderNames.h"
#include "fsutil/paths.h"

namespace tvxconv {

bool listFolder(const std::string& folder, std::vector<std::string>& lines,
                std::vector<std::string>& subFolders) {
    subFolders.clear();
    const std::size_t before = lines.size();
    lines.push_back(folder);
    std::string extension;
    const int status = forEachName(folder, [&](const std::string& name) {
        if (fsutil::extensionOf(name, extension) != 0) {
            subFolders.push_back(name);
        } else if (!extension.empty()) {
            lines.push_back(kIndent + name);
        }
        return true;
    });
    if (status != 0) lines.resize(before);
    return status == 0;
}

}  // namespace tvxconv
