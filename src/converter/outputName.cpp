#include "converter/outputName.h"

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

std::string newOutputName(const std::string& profile, const std::string& extension) {
    return profile + "." + newOutputExtension(extension);
}

}  // namespace tvxconv
