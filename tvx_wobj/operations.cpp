// operations.cpp
//
// The functions of tvx_wobj.h on the tree of a project file.

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "tvx_wobj/ProjectFile.h"
#include "tvx_wobj/tvx_wobj.h"

namespace tvx_wobj {
namespace {

using tvxconv::wobj::fromJsonText;
using tvxconv::wobj::JsonValue;
using tvxconv::wobj::ProjectFile;
using tvxconv::wobj::toJsonText;

constexpr int kDone = 0;
constexpr int kFailed = 1;

// The last stop for exceptions.
template <class Operation>
int guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (...) {
        return kFailed;
    }
}

bool toJsonTexts(const Strings& from, Strings& to) {
    to.clear();
    to.reserve(from.size());
    return std::all_of(from.begin(), from.end(),
                       [&](const std::string& text) { return toJsonText(text, to.emplace_back()); });
}

// --- comparing texts ---

char foldCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The form of a path for comparisons that ignore case and the kind of separator.
std::string foldPath(std::string_view path) {
    std::string folded(path);
    for (char& c : folded) c = c == '\\' ? '/' : foldCase(c);
    return folded;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return foldCase(x) == foldCase(y); });
}

std::string foldName(std::string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), foldCase);
    return folded;
}

std::string fileNameOf(const std::string& path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

// --- members of an object; they may be missing ---

const std::string& textOf(const JsonValue& object, std::string_view key) {
    static const std::string none;
    const JsonValue* value = object.find(key);
    return value == nullptr ? none : value->text;
}

// Returns whether that changed anything. A missing text reads as the empty one, so an empty one is not added.
bool setText(JsonValue& object, std::string_view key, const std::string& text) {
    if (textOf(object, key) == text) return false;
    JsonValue* value = object.find(key);
    if (value == nullptr) {
        object.add(std::string(key), JsonValue::ofText(text));
    } else {
        value->text = text;
    }
    return true;
}

JsonValue& findOrAdd(JsonValue& object, std::string_view key, JsonValue empty) {
    JsonValue* value = object.find(key);
    return value != nullptr ? *value : object.add(std::string(key), std::move(empty));
}

// --- folders and entries ---

const JsonValue* findFolder(const JsonValue& parent, std::string_view name) {
    const JsonValue* folders = parent.find("folders");
    if (folders == nullptr) return nullptr;
    for (const JsonValue& folder : folders->elements) {
        if (equalIgnoringCase(textOf(folder, "name"), name)) return &folder;
    }
    return nullptr;
}

JsonValue* findFolder(JsonValue& parent, std::string_view name) {
    return const_cast<JsonValue*>(findFolder(std::as_const(parent), name));
}

JsonValue& addFolder(JsonValue& parent, const std::string& name) {
    JsonValue& folders = findOrAdd(parent, "folders", JsonValue::emptyArray());
    JsonValue& folder = folders.elements.emplace_back(JsonValue::emptyObject());
    folder.add("name", JsonValue::ofText(name));
    return folder;
}

JsonValue newEntry(const std::string& itemType, const std::string& path) {
    JsonValue entry = JsonValue::emptyObject();
    entry.add("name", JsonValue::ofText(fileNameOf(path)));
    entry.add("path", JsonValue::ofText(path));
    entry.add("type", JsonValue::ofText(itemType));
    return entry;
}

// Returns whether that changed anything. The display name stays the user's while the file name stays the
// same.
bool setPath(JsonValue& entry, const std::string& path) {
    const std::string oldFileName = fileNameOf(textOf(entry, "path"));
    const std::string fileName = fileNameOf(path);
    bool changed = setText(entry, "path", path);
    if (!equalIgnoringCase(oldFileName, fileName) && setText(entry, "name", fileName)) changed = true;
    return changed;
}

// Returns whether that changed anything, here or below.
bool replaceEntries(std::vector<JsonValue>& entries, const std::string& itemType, const Strings& paths) {
    bool changed = false;
    std::size_t next = 0;
    std::vector<JsonValue> kept;
    kept.reserve(entries.size());
    for (JsonValue& entry : entries) {
        if (equalIgnoringCase(textOf(entry, "type"), itemType)) {
            if (next == paths.size()) {
                changed = true;
                continue;
            }
            if (setPath(entry, paths[next])) changed = true;
            ++next;
        }
        kept.push_back(std::move(entry));
    }
    for (; next < paths.size(); ++next) {
        kept.push_back(newEntry(itemType, paths[next]));
        changed = true;
    }
    entries = std::move(kept);
    return changed;
}

bool addEntries(std::vector<JsonValue>& entries, const std::string& itemType, const Strings& paths) {
    std::unordered_set<std::string> listed;
    for (const JsonValue& entry : entries) {
        if (equalIgnoringCase(textOf(entry, "type"), itemType))
            listed.insert(foldPath(textOf(entry, "path")));
    }
    bool changed = false;
    for (const std::string& path : paths) {
        if (!listed.insert(foldPath(path)).second) continue;
        entries.push_back(newEntry(itemType, path));
        changed = true;
    }
    return changed;
}

// --- shared by the two forms of each function ---

// The path to a folder: its name, and possibly that of a sub-folder.
using FolderPath = Strings;

// The list of a folder's entries; null if the folder or the list does not exist.
const JsonValue* entriesOf(const JsonValue& root, const FolderPath& folderPath) {
    const JsonValue* folder = &root;
    for (const std::string& name : folderPath) {
        folder = findFolder(*folder, name);
        if (folder == nullptr) return nullptr;
    }
    return folder->find("files");
}

int readEntries(const std::string& project, const FolderPath& folderPath, Strings& names, Strings& paths,
                Strings* types) {
    FolderPath folderNames;
    if (!toJsonTexts(folderPath, folderNames)) return kFailed;
    std::shared_ptr<const JsonValue> root;
    if (tvxconv::wobj::viewProject(project, root) != 0) return kFailed;
    const JsonValue* entries = entriesOf(*root, folderNames);
    if (entries == nullptr) return kDone;
    Strings found[3];
    const char* const keys[3] = {"name", "path", "type"};
    for (std::size_t i = 0; i < 3; ++i) {
        found[i].reserve(entries->elements.size());
        for (const JsonValue& entry : entries->elements) {
            if (!fromJsonText(textOf(entry, keys[i]), found[i].emplace_back())) return kFailed;
        }
    }
    // Nothing can fail from here on, so either all outputs are filled or none.
    names.swap(found[0]);
    paths.swap(found[1]);
    if (types != nullptr) types->swap(found[2]);
    return kDone;
}

int writeEntries(const std::string& project, const FolderPath& folderPath, const std::string& typeOfHost,
                 const Strings& pathsOfHost, bool replace, bool createFolder) {
    FolderPath folderNames;
    std::string itemType;
    Strings paths;
    if (!toJsonTexts(folderPath, folderNames) || !toJsonText(typeOfHost, itemType) ||
        !toJsonTexts(pathsOfHost, paths)) {
        return kFailed;
    }
    if (paths.empty()) {
        std::shared_ptr<const JsonValue> root;
        if (tvxconv::wobj::viewProject(project, root) != 0) return kFailed;
        const JsonValue* entries = entriesOf(*root, folderNames);
        const auto isOfType = [&](const JsonValue& entry) {
            return equalIgnoringCase(textOf(entry, "type"), itemType);
        };
        if (entries == nullptr ||
            std::none_of(entries->elements.begin(), entries->elements.end(), isOfType)) {
            return kDone;
        }
    }
    ProjectFile file;
    if (file.read(project) != 0) return kFailed;
    JsonValue* folder = &file.root;
    for (const std::string& name : folderNames) {
        JsonValue* next = findFolder(*folder, name);
        if (next == nullptr) {
            if (!createFolder) return kFailed;
            next = &addFolder(*folder, name);
        }
        folder = next;
    }
    std::vector<JsonValue>& entries = findOrAdd(*folder, "files", JsonValue::emptyArray()).elements;
    const bool changed =
        replace ? replaceEntries(entries, itemType, paths) : addEntries(entries, itemType, paths);
    return !changed || file.write() == 0 ? kDone : kFailed;
}

// --- simulation profiles ---

// The profiles of a project by folded name and schematic; those with the same key in file order.
using ProfileIndex = std::multimap<std::pair<std::string, std::string>, const JsonValue*>;

std::vector<JsonValue> makeProfiles(const std::vector<JsonValue>& oldProfiles, const Strings& paths,
                                    const Strings& names, const Strings& schematics) {
    ProfileIndex known;
    for (const JsonValue& profile : oldProfiles) {
        known.emplace(std::pair(foldName(textOf(profile, "name")), foldName(textOf(profile, "schematic"))),
                      &profile);
    }
    std::vector<JsonValue> profiles;
    profiles.reserve(paths.size());
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const auto old = known.find(std::pair(foldName(names[i]), foldName(schematics[i])));
        JsonValue& profile = profiles.emplace_back(JsonValue::emptyObject());
        if (old != known.end()) {
            profile = *old->second;
            known.erase(old);
            setText(profile, "path", paths[i]);
            setText(profile, "name", names[i]);
            setText(profile, "schematic", schematics[i]);
        } else {
            profile.add("path", JsonValue::ofText(paths[i]));
            profile.add("name", JsonValue::ofText(names[i]));
            profile.add("schematic", JsonValue::ofText(schematics[i]));
        }
    }
    return profiles;
}

}  // namespace

int readProjectFiles(const std::string& project, const char* folder, Strings& paths, Strings& names, bool) {
    paths.clear();
    names.clear();
    return guarded([&] {
        if (folder == nullptr) return kFailed;
        return readEntries(project, {folder}, names, paths, nullptr);
    });
}

int readProjectFiles(const std::string& project, const char* folder, const char* subFolder, Strings& names,
                     Strings& paths, bool) {
    names.clear();
    paths.clear();
    return guarded([&] {
        if (folder == nullptr || subFolder == nullptr) return kFailed;
        return readEntries(project, {folder, subFolder}, names, paths, nullptr);
    });
}

int readProjectFileDirectly(const std::string& project, const std::string& folder, Strings& names,
                            Strings& paths, Strings& types) {
    names.clear();
    paths.clear();
    types.clear();
    return guarded([&] { return readEntries(project, {folder}, names, paths, &types); });
}

int readProjectFileDirectly(const std::string& project, const std::string& folder,
                            const std::string& subFolder, Strings& names, Strings& paths, Strings& types) {
    names.clear();
    paths.clear();
    types.clear();
    return guarded([&] { return readEntries(project, {folder, subFolder}, names, paths, &types); });
}

int writeProjectFiles(const std::string& project, const std::string& folder, const std::string& itemType,
                      const Strings& paths, bool replace, bool createFolder, bool) {
    return guarded([&] { return writeEntries(project, {folder}, itemType, paths, replace, createFolder); });
}

int writeProjectFiles(const std::string& project, const std::string& folder, const std::string& subFolder,
                      const std::string& itemType, const Strings& paths, bool replace, bool createFolder,
                      bool, bool) {
    return guarded([&] {
        return writeEntries(project, {folder, subFolder}, itemType, paths, replace, createFolder);
    });
}

int writeItemToProject(const std::string& project, const std::string& folderOfHost,
                       const std::string& itemOfHost, const std::string& valueOfHost, bool) {
    return guarded([&] {
        std::string folder;
        std::string item;
        std::string value;
        if (!toJsonText(folderOfHost, folder) || !toJsonText(itemOfHost, item) ||
            !toJsonText(valueOfHost, value)) {
            return kFailed;
        }
        ProjectFile file;
        if (file.read(project) != 0) return kFailed;
        JsonValue* holder = findFolder(file.root, folder);
        if (holder == nullptr) holder = &addFolder(file.root, folder);
        JsonValue& items = findOrAdd(*holder, "items", JsonValue::emptyObject());
        const auto found = std::find_if(items.keys.begin(), items.keys.end(),
                                        [&](const std::string& key) { return equalIgnoringCase(key, item); });
        if (found == items.keys.end()) {
            items.add(item, JsonValue::ofText(value));
        } else {
            std::string& text = items.elements[static_cast<std::size_t>(found - items.keys.begin())].text;
            if (text == value) return kDone;
            text = value;
        }
        return file.write() == 0 ? kDone : kFailed;
    });
}

int updateInProjectFile(const std::string& project, const std::string& folderOfHost,
                        const std::string& typeOfHost, const std::string& oldPathOfHost,
                        const std::string& newPathOfHost) {
    return guarded([&] {
        std::string folder;
        std::string itemType;
        std::string oldPath;
        std::string newPath;
        if (!toJsonText(folderOfHost, folder) || !toJsonText(typeOfHost, itemType) ||
            !toJsonText(oldPathOfHost, oldPath) || !toJsonText(newPathOfHost, newPath)) {
            return kFailed;
        }
        ProjectFile file;
        if (file.read(project) != 0) return kFailed;
        JsonValue* holder = findFolder(file.root, folder);
        JsonValue* entries = holder == nullptr ? nullptr : holder->find("files");
        if (entries == nullptr) return kFailed;
        const std::string wanted = foldPath(oldPath);
        for (JsonValue& entry : entries->elements) {
            if (!equalIgnoringCase(textOf(entry, "type"), itemType)) continue;
            if (foldPath(textOf(entry, "path")) != wanted) continue;
            return !setPath(entry, newPath) || file.write() == 0 ? kDone : kFailed;
        }
        return kFailed;
    });
}

int readSimProfiles(const std::string& project, Strings& paths, Strings& names, std::string& active, bool) {
    paths.clear();
    names.clear();
    active.clear();
    return guarded([&] {
        std::shared_ptr<const JsonValue> root;
        if (tvxconv::wobj::viewProject(project, root) != 0) return kFailed;
        const JsonValue* simulation = root->find("simulationProfiles");
        if (simulation == nullptr) return kDone;
        Strings foundPaths;
        Strings foundNames;
        std::string foundActive;
        if (!fromJsonText(textOf(*simulation, "active"), foundActive)) return kFailed;
        if (const JsonValue* profiles = simulation->find("profiles")) {
            for (const JsonValue& profile : profiles->elements) {
                if (!fromJsonText(textOf(profile, "path"), foundPaths.emplace_back()) ||
                    !fromJsonText(textOf(profile, "name"), foundNames.emplace_back())) {
                    return kFailed;
                }
            }
        }
        paths.swap(foundPaths);
        names.swap(foundNames);
        active.swap(foundActive);
        return kDone;
    });
}

int writeSimProfiles(const std::string& project, const Strings& pathsOfHost, const Strings& namesOfHost,
                     const Strings& schematicsOfHost, const std::string& activeOfHost, bool) {
    return guarded([&] {
        Strings paths;
        Strings names;
        Strings schematics;
        std::string active;
        if (!toJsonTexts(pathsOfHost, paths) || !toJsonTexts(namesOfHost, names) ||
            !toJsonTexts(schematicsOfHost, schematics) || !toJsonText(activeOfHost, active)) {
            return kFailed;
        }
        if (names.size() != paths.size() || schematics.size() != paths.size()) return kFailed;
        ProjectFile file;
        if (file.read(project) != 0) return kFailed;
        if (file.root.find("simulationProfiles") == nullptr && paths.empty() && active.empty()) return kDone;
        JsonValue& simulation = findOrAdd(file.root, "simulationProfiles", JsonValue::emptyObject());
        bool changed = setText(simulation, "active", active);
        if (simulation.find("profiles") != nullptr || !paths.empty()) {
            std::vector<JsonValue>& profiles =
                findOrAdd(simulation, "profiles", JsonValue::emptyArray()).elements;
            std::vector<JsonValue> newProfiles = makeProfiles(profiles, paths, names, schematics);
            if (newProfiles != profiles) {
                profiles = std::move(newProfiles);
                changed = true;
            }
        }
        return !changed || file.write() == 0 ? kDone : kFailed;
    });
}

}  // namespace tvx_wobj
