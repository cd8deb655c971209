#include "dsnreader/dsnreader.h"

#include <utility>

#include "platform/platform.h"
#include "tvx_wobj/JsonTree.h"

namespace {

using tvxconv::wobj::JsonValue;

int readRootSchematics(const std::string& design, std::vector<std::string>& rootSchematics) {
    JsonValue root;
    tvxconv::platform::FileStatus status;
    if (tvxconv::wobj::readJsonFile(design, root, status) != 0) return 1;
    JsonValue* list = root.find("rootSchematics");
    if (list == nullptr || list->kind != JsonValue::Kind::array) return 1;
    std::vector<std::string> names;
    for (JsonValue& name : list->elements) {
        if (name.kind != JsonValue::Kind::text) return 1;
        names.push_back(std::move(name.text));
    }
    rootSchematics.swap(names);
    return 0;
}

}  // namespace

extern "C" int getDsnInfo(const std::string& design, const std::string&,
                          std::vector<std::string>& rootSchematics) {
    rootSchematics.clear();
    try {
        return readRootSchematics(design, rootSchematics);
    } catch (...) {
        return 1;
    }
}
