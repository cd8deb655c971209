#include "dsnreader/dsnreader.h"

#include "platform/platform.h"
#include "tvx_wobj/JsonTree.h"

namespace {

using tvxconv::wobj::JsonValue;

int readRootSchematics(const std::string& design, std::vector<std::string>& rootSchematics) {
    JsonValue root;
    tvxconv::platform::FileStatus status;
    if (tvxconv::wobj::readJsonFile(design, root, status) != 0) return 1;
    const JsonValue* list = root.find("rootSchematics");
    if (list == nullptr || list->kind != JsonValue::Kind::array) return 1;
    std::vector<std::string> names;
    for (const JsonValue& name : list->elements) {
        if (name.kind != JsonValue::Kind::text) return 1;
        if (!tvxconv::wobj::fromJsonText(name.text, names.emplace_back())) return 1;
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
