#include "converter/outputReference.h"

#include "fsutil/letterCase.h"
#include "fsutil/paths.h"

namespace tvxconv {

int relocateOutputValue(const ProjectConverter& converter, std::string& reference, const std::string& value,
                        const std::string& projectDir, const std::string& fileBase,
                        const std::string& profile) {
    const fsutil::Reference written(value);
    reference.clear();
    if (written.isBare()) {
        const std::string name = fsutil::toForwardSlashes(value);
        if (fsutil::equalIgnoringCase(fsutil::baseNameOf(name), fileBase)) {
            // It is named after the profile file, so it has moved to the profile's folder.
            const std::size_t dot = name.find('.');
            reference = profile + "." + (dot == std::string::npos ? std::string() : name.substr(dot + 1));
        } else {
            reference = projectDir + "/" + name;
        }
        return 0;
    }
    std::string file;
    if (!written.resolve(projectDir, file)) return 1;
    std::string newPath;
    if (converter.findRelocation(ProjectConverter::relocationKey(file, projectDir), newPath) == 0) {
        reference = fsutil::fileNameOf(newPath);
    } else {
        reference = file;
    }
    return 0;
}

}  // namespace tvxconv
