#include "attrlist/AttributeFile.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "attrlist/CellPool.h"
#include "attrlist/reader.h"
#include "attrlist/writer.h"
#include "fsutil/letterCase.h"
#include "platform/platform.h"

namespace tvxconv::attrlist {
namespace {

constexpr const char* kTypeNames[] = {"Advanced Analysis Profile", "UI Settings File",     "PMAP File",
                                      "Model Property File",       "Device Property File", "Derate File"};

const char* nameOfType(int type) {
    constexpr int kCount = static_cast<int>(std::size(kTypeNames));
    return type >= 0 && type < kCount ? kTypeNames[type] : "";
}

// While it lives, a pool that gets no memory throws: the library must not end the program of its host.
class ThrowWithoutMemory {
public:
    ThrowWithoutMemory()
        : before_(CellPool::setOutOfMemoryHandler([](std::size_t, int) { throw std::bad_alloc(); })) {}
    ~ThrowWithoutMemory() { CellPool::setOutOfMemoryHandler(before_); }
    ThrowWithoutMemory(const ThrowWithoutMemory&) = delete;
    ThrowWithoutMemory& operator=(const ThrowWithoutMemory&) = delete;

private:
    CellPool::OutOfMemoryHandler before_;
};

// Closed in any case.
class OutputFile {
public:
    OutputFile() = default;
    ~OutputFile() { close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    int open(const char* path) {
        constexpr unsigned kPermissions = 0666;
        return platform::openForWriting(path, platform::FileMode::text, kPermissions, nullptr, descriptor_);
    }

    void write(std::string_view text) {
        const std::int64_t written = platform::writeSome(descriptor_, text.data(), text.size());
        if (written != static_cast<std::int64_t>(text.size())) isWhole_ = false;
    }

    // Whether every byte has reached the file.
    bool close() {
        if (descriptor_ != -1 && platform::closeFile(std::exchange(descriptor_, -1)) != 0) isWhole_ = false;
        return isWhole_;
    }

private:
    int descriptor_ = -1;
    bool isWhole_ = true;
};

}  // namespace

AttributeFile::AttributeFile(int type) : AttributeNode("FILE_TYPE", nullptr), type_(type) {}

AttributeFile::~AttributeFile() {
    close();
}

int AttributeFile::open(const char* path) {
    if (path == nullptr) return kNoPath;
    path_ = path;
    if (stream_ != nullptr) return kCannotOpen;
    int descriptor = -1;
    platform::FileStatus status;
    if (platform::openForReading(path, platform::FileMode::text, descriptor, &status) != 0)
        return kCannotOpen;
    stream_ = platform::readingStream(descriptor);
    if (stream_ == nullptr) return kCannotOpen;
    using Limits = std::numeric_limits<std::int32_t>;
    modificationTime_ =
        static_cast<std::int32_t>(std::clamp<std::int64_t>(status.changedAt, Limits::min(), Limits::max()));
    return kOpened;
}

int AttributeFile::read() {
    if (stream_ == nullptr) return kNotOpen;
    const ThrowWithoutMemory guard;
    CellPool pool;
    int line = 0;
    int column = 0;
    const char* error = nullptr;
    const ListCell* const top = readExpression(stream_, line, column, error, pool);
    if (error != nullptr) return kSyntaxError;
    const ListCell* const second = rest(top);
    const bool hasHead = isAtom(first(top)) && isAtom(first(second));
    type_ = hasHead ? typeIndexOf(atomText(first(second))) : kUnknownType;
    buildTree(rest(second), this, nullptr);
    return type_ == kUnknownType ? kReadUnknownType : kRead;
}

void AttributeFile::close() {
    if (stream_ != nullptr) std::fclose(stream_);
    stream_ = nullptr;
}

int AttributeFile::write(const char* path) {
    const bool isOtherFile = path != nullptr && !fsutil::equalIgnoringCase(path, path_);
    if (!isOtherFile && stream_ != nullptr) {
        close();  // nothing can be written into a stream that reads
        return kWritten;
    }
    OutputFile output;
    isWrittenWhole_ = false;
    if (output.open(isOtherFile ? path : path_.c_str()) != 0) return kCannotOpen;
    printTree(*this, nameOfType(type_), [&](std::string_view text) { output.write(text); });
    isWrittenWhole_ = output.close();
    return kWritten;
}

int AttributeFile::typeIndexOf(const char* name) {
    if (name == nullptr) return kUnknownType;
    const auto found = std::find_if(std::begin(kTypeNames), std::end(kTypeNames), [&](const char* known) {
        return fsutil::equalIgnoringCase(known, name);
    });
    return found != std::end(kTypeNames) ? static_cast<int>(found - std::begin(kTypeNames)) : kUnknownType;
}

}  // namespace tvxconv::attrlist
