// host.cpp
//
// What measure.py runs to measure the library alone: a host that loads it at run time and converts, without a
// listing and without a line of output.
//
//   draftel LIBRARY PROJECT.opj DESTINATION [MODE]     MODE as IDraftelProjectConverter takes it, 2 if left
//   out tarnet LIBRARY LIBRARY_DIR
//
// LIBRARY is the path of libtvxconv.so (tvxconv.dll on Windows), LIBRARY_DIR that of the design library. The
// exit status is 0 when the conversion succeeded.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "interface/IDraftelProjectConverter.h"
#include "interface/ITarnetProjectConverter.h"
#include "modules.h"

namespace {

// The factory `name` of the library; `Factory` is its type. Null when it cannot be found.
template <class Factory>
Factory factory(const char* library, const char* name) {
    void* const module = loadLibrary(library);
    return module == nullptr ? nullptr : reinterpret_cast<Factory>(findFunction(module, name));
}

bool convertDraftel(const char* library, const char* project, const char* destination, int mode) {
    const auto create =
        factory<decltype(&createDraftelProjectConverter)>(library, "createDraftelProjectConverter");
    if (create == nullptr) return false;
    const CString path(project);
    const std::unique_ptr<IDraftelProjectConverter> converter(create(&path));
    return converter != nullptr && converter->convert(mode, destination) == 0;
}

// A file that cannot be carried over leaves the status at 0 and is the last error.
bool convertTarnet(const char* library, const char* designLibrary) {
    const auto create =
        factory<decltype(&createTarnetProjectConverter)>(library, "createTarnetProjectConverter");
    if (create == nullptr) return false;
    const std::unique_ptr<ITarnetProjectConverter> converter(create(designLibrary));
    int code = 0;
    return converter != nullptr && converter->convert(1, std::string()) == 0 &&
           converter->getLastErrorCode(code) == 0 && code == 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<const char*> arguments(argv + 1, argv + argc);
    const std::string_view flow = arguments.empty() ? "" : arguments[0];
    const std::size_t count = arguments.size();
    bool converted = false;
    if (flow == "draftel" && (count == 4 || count == 5)) {
        const int mode = count == 5 ? std::atoi(arguments[4]) : 2;
        converted = convertDraftel(arguments[1], arguments[2], arguments[3], mode);
    } else if (flow == "tarnet" && count == 3) {
        converted = convertTarnet(arguments[1], arguments[2]);
    } else {
        std::fputs("usage: draftel LIBRARY PROJECT.opj DESTINATION [MODE] | tarnet LIBRARY LIBRARY_DIR\n",
                   stderr);
        return 2;
    }
    if (!converted) std::fprintf(stderr, "tvxconv_bench_host: %s is not converted\n", arguments[2]);
    return converted ? 0 : 1;
}
