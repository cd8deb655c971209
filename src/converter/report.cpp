#include "converter/report.h"

#include "errors/errors.h"
#include "fsutil/lines.h"

namespace tvxconv {

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
