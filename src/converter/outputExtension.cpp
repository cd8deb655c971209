#include "converter/outputExtension.h"

#include "fsutil/letterCase.h"

namespace tvxconv {
namespace {

constexpr const char* kRenamedOutputs[][2] = {
    {kOldDeckExtension, "cir"}, {"sim.1op", "1op"}, {"sim.mif", "mif"}};

}  // namespace

std::string newOutputExtension(const std::string& extension) {
    for (const auto& [from, to] : kRenamedOutputs) {
        if (fsutil::equalIgnoringCase(extension, from)) return to;
    }
    return extension;
}

}  // namespace tvxconv
