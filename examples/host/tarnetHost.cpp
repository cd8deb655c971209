// tarnetHost.cpp
//
// The smallest host of the second interface: loads the library at run time, finds the factory by its plain
// name, converts the cells of a design library and asks all that the interface can tell.
//
//   tvxconv_tarnet_host LIBRARY LIBRARY_DIR REPORT
//
// LIBRARY is the path of libtvxconv.so (tvxconv.dll on Windows), LIBRARY_DIR that of the design library. Each
// operation prints one line "name: status value"; the listing follows its line. The exit status is 0
// when the conversion succeeded.

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "interface/ITarnetProjectConverter.h"
#include "modules.h"

namespace {

using Factory = decltype(&createTarnetProjectConverter);

int drive(ITarnetProjectConverter& converter, const char* report) {
    const int status = converter.convert(1, std::string());
    std::printf("convert: %d\n", status);

    std::string parentName;
    const int parentStatus = converter.getLibraryParentName(parentName);
    std::printf("getLibraryParentName: %d %s\n", parentStatus, parentName.c_str());

    std::vector<std::string> lines;
    const int listingStatus = converter.getNewStructure(lines);
    std::printf("getNewStructure: %d %zu lines\n", listingStatus, lines.size());
    for (const std::string& line : lines) std::printf("%s\n", line.c_str());

    const int reportStatus = status == 0 ? converter.writeReport(lines, report) : 1;
    std::printf("writeReport: %d\n", reportStatus);

    int code = 0;
    const int codeStatus = converter.getLastErrorCode(code);
    std::printf("getLastErrorCode: %d %d\n", codeStatus, code);
    std::string message;
    const int messageStatus = converter.getLastErrorMessage(message);
    std::printf("getLastErrorMessage: %d %s\n", messageStatus, message.c_str());
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: tvxconv_tarnet_host LIBRARY LIBRARY_DIR REPORT\n");
        return 2;
    }
    void* library = loadLibrary(argv[1]);
    if (library == nullptr) {
        std::fprintf(stderr, "tvxconv_tarnet_host: cannot load %s\n", argv[1]);
        return 2;
    }
    const auto create = reinterpret_cast<Factory>(findFunction(library, "createTarnetProjectConverter"));
    if (create == nullptr) {
        std::fprintf(stderr, "tvxconv_tarnet_host: %s has no createTarnetProjectConverter\n", argv[1]);
        return 2;
    }
    const std::unique_ptr<ITarnetProjectConverter> converter(create(argv[2]));
    if (converter == nullptr) {
        std::fprintf(stderr, "tvxconv_tarnet_host: no memory for a converter\n");
        return 2;
    }
    return drive(*converter, argv[3]) == 0 ? 0 : 1;
}
