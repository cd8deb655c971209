#include "fsutil/paths.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "fsutil/letterCase.h"
#include "platform/platform.h"

namespace tvxconv::fsutil {
namespace {

constexpr const char* kSeparators = "/\\";
constexpr std::string_view kMarkerExtension = "mrk";
constexpr std::string_view kDefaultMarkerTail = "default.mrk";

// Equal ignoring letter case and the kind of slash.
bool isSamePathByte(char a, char b) {
    return a == b || lowerCase(a == '\\' ? '/' : a) == lowerCase(b == '\\' ? '/' : b);
}

// The position of the last "-" of a name if "default.mrk" follows it; else npos.
std::size_t defaultMarkerDash(const std::string& name) {
    const std::size_t dash = name.rfind('-');
    if (dash == std::string::npos) return dash;
    const std::string_view tail = std::string_view(name).substr(dash + 1);
    return equalIgnoringCase(tail, kDefaultMarkerTail) ? dash : std::string::npos;
}

}  // namespace

std::string toForwardSlashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string toBackslashes(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

std::string toLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lowerCase);
    return text;
}

std::uint32_t toForwardSlashes(const std::string& path, std::string& out) {
    out = toForwardSlashes(path);
    return 0;
}

std::uint32_t toLowerCase(const std::string& text, std::string& out) {
    out = toLowerCase(text);
    return 0;
}

std::uint32_t makeExplicitRelative(std::string& path, bool& isRelative) {
    isRelative = false;
    std::string slashed = toForwardSlashes(path);
    if (slashed.size() >= 3) {
        if (slashed.starts_with("//")) return 0;
        if (slashed.starts_with("./") || slashed.starts_with("../")) {
            isRelative = true;
            return 0;
        }
        if (slashed[1] == ':' || slashed[2] == '/') return 0;
    } else if (slashed.size() == 2 && slashed[1] == ':') {
        return 0;
    }
    path = "./" + slashed;
    isRelative = true;
    return 0;
}

std::uint32_t normaliseReference(std::string& path, bool& isRelative) {
    const bool fromRoot = path.starts_with('/') && !path.starts_with("//");
    if (fromRoot && !platform::hasDriveLetters()) {
        isRelative = false;
        return 0;
    }
    return makeExplicitRelative(path, isRelative);
}

std::uint32_t relativeToFolder(const std::string& path, const std::string& folder, std::string& out) {
    const std::size_t cut = folder.size() + 1;
    const bool found =
        std::search(path.begin(), path.end(), folder.begin(), folder.end(), isSamePathByte) != path.end() ||
        folder.empty();
    std::string result;
    const bool isLonger = found && cut <= path.size();
    if (isLonger) result = toForwardSlashes("./" + path.substr(cut));
    out = std::move(result);
    return isLonger ? 0 : 1;
}

bool isBelowFolder(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() &&
           std::equal(folder.begin(), folder.end(), path.begin(), isSamePathByte) &&
           isSamePathByte(path[folder.size()], '/');
}

std::uint32_t resolveRelative(const std::string& rel, const std::string& base, std::string& out) {
    std::string reference = toForwardSlashes(rel);
    std::string folder = toForwardSlashes(base);
    out.clear();
    bool isRelative = false;
    makeExplicitRelative(reference, isRelative);
    if (!isRelative) return 1;
    std::size_t slash = folder.rfind('/');
    if (slash == std::string::npos) return 1;
    const bool slashAtEnd = slash == folder.size() - 1;
    if (reference.starts_with("../")) {
        if (slashAtEnd) {
            folder.pop_back();
            slash = folder.rfind('/');
            if (slash == std::string::npos) return 1;
        }
        out = folder.substr(0, slash) + "/" + reference.substr(3);
    } else {
        out = folder + (slashAtEnd ? "" : "/") + reference.substr(2);
    }
    return 0;
}

std::uint32_t fileNameOf(const std::string& path, std::string& out) {
    const std::size_t separator = path.find_last_of(kSeparators);
    if (separator == std::string::npos) {
        out = path;
        return 1;
    }
    out = path.substr(separator + 1);
    return 0;
}

std::uint32_t folderOf(const std::string& path, std::string& out) {
    const std::size_t separator = path.find_last_of(kSeparators);
    if (separator == std::string::npos) {
        out.clear();
        return 1;
    }
    out = path.substr(0, separator);
    return 0;
}

std::uint32_t extensionOf(const std::string& name, std::string& out) {
    std::string extension;
    std::uint32_t status = 0;
    if (name != "." && name != "..") {
        const std::size_t dot = name.find('.');
        if (dot == std::string::npos) {
            status = 1;
        } else {
            extension = name.substr(dot + 1);
            if (equalIgnoringCase(extension, kMarkerExtension)) {
                const std::size_t dash = defaultMarkerDash(name);
                if (dash != std::string::npos) extension = name.substr(dash + 1);
            }
        }
    }
    out = extension;
    return status;
}

std::uint32_t baseNameOf(const std::string& name, std::string& out) {
    const std::size_t dot = name.find('.');
    if (dot == std::string::npos) {
        out = name;
        return 1;
    }
    std::size_t end = dot;
    if (equalIgnoringCase(std::string_view(name).substr(dot + 1), kMarkerExtension)) {
        const std::size_t dash = defaultMarkerDash(name);
        if (dash != std::string::npos) end = dash;
    }
    out = name.substr(0, end);
    return 0;
}

std::string fileNameOf(const std::string& path) {
    std::string name;
    fileNameOf(path, name);
    return name;
}

std::string folderOf(const std::string& path) {
    std::string folder;
    folderOf(path, folder);
    return folder;
}

std::string extensionOf(const std::string& name) {
    std::string extension;
    extensionOf(name, extension);
    return extension;
}

std::string baseNameOf(const std::string& name) {
    std::string base;
    baseNameOf(name, base);
    return base;
}

Reference::Reference(const std::string& written) : path_(toForwardSlashes(written)) {
    isBare_ = path_.find('/') == std::string::npos;
    normaliseReference(path_, isRelative_);
}

bool Reference::resolve(const std::string& folder, std::string& file) const {
    if (isRelative_) return resolveRelative(path_, folder, file) == 0;
    file = path_;
    return true;
}

}  // namespace tvxconv::fsutil
