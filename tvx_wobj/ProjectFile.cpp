#include "tvx_wobj/ProjectFile.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace tvxconv::wobj {
namespace {

using Kind = JsonValue::Kind;

// In all checks a member may be missing.
bool holdsTexts(const JsonValue& object, std::initializer_list<std::string_view> keys) {
    return std::all_of(keys.begin(), keys.end(), [&](std::string_view key) {
        const JsonValue* value = object.find(key);
        return value == nullptr || value->kind == Kind::text;
    });
}

bool holdsList(const JsonValue& object, std::string_view key, bool (*isElement)(const JsonValue&)) {
    const JsonValue* list = object.find(key);
    return list == nullptr || (list->kind == Kind::array &&
                               std::all_of(list->elements.begin(), list->elements.end(), isElement));
}

bool isText(const JsonValue& value) {
    return value.kind == Kind::text;
}

bool isEntry(const JsonValue& value) {
    return value.kind == Kind::object && holdsTexts(value, {"name", "path", "type"});
}

bool isFolder(const JsonValue& value) {
    if (value.kind != Kind::object || !holdsTexts(value, {"name"})) return false;
    const JsonValue* items = value.find("items");
    if (items != nullptr && (items->kind != Kind::object ||
                             !std::all_of(items->elements.begin(), items->elements.end(), isText))) {
        return false;
    }
    return holdsList(value, "files", isEntry) && holdsList(value, "folders", isFolder);
}

bool isProfile(const JsonValue& value) {
    return value.kind == Kind::object && holdsTexts(value, {"path", "name", "schematic"});
}

bool isProject(const JsonValue& value) {
    if (value.kind != Kind::object || !holdsList(value, "folders", isFolder)) return false;
    const JsonValue* simulation = value.find("simulationProfiles");
    return simulation == nullptr ||
           (simulation->kind == Kind::object && holdsTexts(*simulation, {"active"}) &&
            holdsList(*simulation, "profiles", isProfile));
}

// A new file beside `path`. It replaces `path`, or is removed with this object.
class Replacement {
public:
    Replacement() = default;
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    ~Replacement() {
        try {
            if (descriptor_ != -1) platform::closeFile(descriptor_);
            if (!name_.empty()) platform::removeOpened(name_.c_str());
        } catch (...) {  // no memory to remove the file: it stays, the failure is reported by the caller
        }
    }

    int fill(const std::string& path, unsigned permissions, const std::string& content) {
        const int error = platform::openTemporaryBeside(path.c_str(), platform::FileMode::binary, permissions,
                                                        name_, descriptor_);
        if (error != 0) return error;
        if (platform::writeSome(descriptor_, content.data(), content.size()) !=
            static_cast<std::int64_t>(content.size())) {
            return -1;
        }
        return platform::flushToDisk(descriptor_);
    }

    int takePlaceOf(const std::string& path, unsigned permissions) {
        int error = platform::closeFile(descriptor_);
        descriptor_ = -1;
        if (error == 0) error = platform::setPermissions(name_.c_str(), permissions);
        if (error == 0) error = platform::replaceFile(name_.c_str(), path.c_str());
        if (error == 0) name_.clear();
        return error;
    }

private:
    std::string name_;
    int descriptor_ = -1;
};

// A project and the bytes that it was read from.
struct Seen {
    std::string bytes;
    JsonValue root;
};

// The last project read: a conversion reads it some 30 times in a row, and parsing a project of 1,000
// profiles each time would take longer than copying its files. The bytes are read and compared each time.
std::shared_ptr<const Seen> last;

// A tree takes about five times the memory of its text; larger ones are not kept between calls.
constexpr std::size_t kMostRemembered = std::size_t{4} * 1024 * 1024;

}  // namespace

int ProjectFile::read(const std::string& path) {
    path_ = path;
    last = nullptr;  // about to be outdated, and one tree in memory is enough
    platform::FileStatus status;
    const int error = readJsonFile(path, root, status);
    if (error != 0) return error;
    permissions_ = status.permissions;
    return isProject(root) ? 0 : -1;
}

int viewProject(const std::string& path, std::shared_ptr<const JsonValue>& root) {
    root = nullptr;
    const auto seen = std::make_shared<Seen>();
    platform::FileStatus status;
    const int error = readBytes(path, seen->bytes, status);
    if (error != 0) return error;
    if (last != nullptr && last->bytes == seen->bytes) {
        root = std::shared_ptr<const JsonValue>(last, &last->root);
        return 0;
    }
    last = nullptr;
    if (!parseJson(seen->bytes, seen->root) || !isProject(seen->root)) return -1;
    if (seen->bytes.size() <= kMostRemembered) last = seen;
    root = std::shared_ptr<const JsonValue>(seen, &seen->root);
    return 0;
}

int ProjectFile::write() const {
    int error = platform::checkAccess(path_.c_str(), 2);
    if (error != 0) return error;
    const std::string content = writeJson(root);
    const std::string place = platform::followLinks(path_);
    Replacement replacement;
    error = replacement.fill(place, permissions_, content);
    return error != 0 ? error : replacement.takePlaceOf(place, permissions_);
}

}  // namespace tvxconv::wobj
