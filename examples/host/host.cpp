// host.cpp
//
// The smallest host: loads the library at run time, finds the factory by its plain name, converts a
// project and asks all that the interface can tell.
//
//   tvxconv_host LIBRARY PROJECT.opj DESTINATION REPORT
//
// LIBRARY is the path of the library (libtvxconv.so; tvxconv.dll on Windows). Each
// operation prints one line "name: status value"; the listing follows its line. The exit status is 0
// when the conversion succeeded.

#include <cstdio>
#include <memory>

#include "interface/IDraftelProjectConverter.h"
#include "modules.h"

namespace {

using Factory = decltype(&createDraftelProjectConverter);

int drive(IDraftelProjectConverter& converter, const char* destination, const char* report) {
    const int status = converter.convert(2, destination);
    std::printf("convert: %d\n", status);

    CString newProject("unset");
    const int pathStatus = converter.getNewProjectPath(newProject);
    std::printf("getNewProjectPath: %d %s\n", pathStatus, newProject.GetString());

    CStringArray lines;
    const int listingStatus = converter.getNewStructure(lines);
    std::printf("getNewStructure: %d %d lines\n", listingStatus, lines.GetSize());
    for (int i = 0; i < lines.GetSize(); ++i) std::printf("%s\n", lines[i].GetString());

    const int reportStatus = status == 0 ? converter.writeReport(lines, report) : 1;
    std::printf("writeReport: %d\n", reportStatus);

    int code = 0;
    const int codeStatus = converter.getLastErrorCode(code);
    std::printf("getLastErrorCode: %d %d\n", codeStatus, code);
    CString message;
    const int messageStatus = converter.getLastErrorMessage(message);
    std::printf("getLastErrorMessage: %d %s\n", messageStatus, message.GetString());
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: tvxconv_host LIBRARY PROJECT.opj DESTINATION REPORT\n");
        return 2;
    }
    void* library = loadLibrary(argv[1]);
    if (library == nullptr) {
        std::fprintf(stderr, "tvxconv_host: cannot load %s\n", argv[1]);
        return 2;
    }
    const auto create = reinterpret_cast<Factory>(findFunction(library, "createDraftelProjectConverter"));
    if (create == nullptr) {
        std::fprintf(stderr, "tvxconv_host: %s has no createDraftelProjectConverter\n", argv[1]);
        return 2;
    }
    const CString project(argv[2]);
    const std::unique_ptr<IDraftelProjectConverter> converter(create(&project));
    if (converter == nullptr) {
        std::fprintf(stderr, "tvxconv_host: no memory for a converter\n");
        return 2;
    }
    return drive(*converter, argv[3], argv[4]) == 0 ? 0 : 1;
}
