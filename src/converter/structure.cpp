#include "converter/structure.h"

#include "converter/folderNames.h"
#include "errors/errors.h"
#include "fsutil/lines.h"
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

int writeReportFile(const std::string& path, const std::vector<std::string>& lines) {
    fsutil::LineWriter writer;
    if (writer.openReplacement(path) != 0) return reportError(ERR_OPEN_FOR_WRITING, path);
    writer.write("The conversion of the project was successful.\n\n");
    writer.write("The new directory structure is as follows:\n\n");
    for (const std::string& line : lines) {
        writer.write(line);
        writer.write("\n");
    }
    writer.close();
    return 0;
}

}  // namespace tvxconv
