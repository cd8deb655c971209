#include "attrlist/AttributeFile.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "attrlist/CellPool.h"
#include "attrlist/reader.h"
#include "attrlist/writer.h"
#include "fsutil/TextFile.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"

namespace tvxconv::attrlist {
namespace {

constexpr const char* kTypeNames[] = {"Advanced Analysis Profile", "UI Settings File",     "PMAP File",
                                      "Model Property File",       "Device Property File", "Derate File"};

const char* nameOfType(int type) {
    constexpr int kCount = static_cast<int>(std::size(kTypeNames));
    return type >= 0 && type < kCount ? kTypeNames[type] : "";
}

// Makes pools throw when there is no memory: the library must not end the host's program.
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

}  // namespace

// The open file, and the text read from it but not used yet.
struct AttributeFile::Input {
    static constexpr std::size_t kBlockSize = 64 * 1024;

    fsutil::TextFile file;
    std::unique_ptr<char[]> block = std::make_unique_for_overwrite<char[]>(kBlockSize);
    ReaderState state{[this] { return std::string_view(block.get(), file.read(block.get(), kBlockSize)); }};
};

AttributeFile::AttributeFile(int type) : AttributeNode("FILE_TYPE", nullptr), type_(type) {}

AttributeFile::~AttributeFile() = default;

int AttributeFile::open(const char* path) {
    if (path == nullptr) return kNoPath;
    path_ = path;
    if (input_ != nullptr) return kCannotOpen;
    auto input = std::make_unique<Input>();
    if (input->file.open(path_) != 0) return kCannotOpen;
    using Limits = std::numeric_limits<std::int32_t>;
    modificationTime_ = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(input->file.modificationTime(), Limits::min(), Limits::max()));
    input_ = std::move(input);
    return kOpened;
}

int AttributeFile::read() {
    if (input_ == nullptr) return kNotOpen;
    const ThrowWithoutMemory guard;
    CellPool pool;
    const char* error = nullptr;
    const ListCell* const top = readExpression(input_->state, error, pool);
    if (error != nullptr) return kSyntaxError;
    const ListCell* const second = rest(top);
    const bool hasHead = isAtom(first(top)) && isAtom(first(second));
    type_ = hasHead ? typeIndexOf(atomText(first(second))) : kUnknownType;
    buildTree(rest(second), this, nullptr);
    return type_ == kUnknownType ? kReadUnknownType : kRead;
}

void AttributeFile::close() {
    input_.reset();
}

int AttributeFile::write(const char* path) {
    isWrittenWhole_ = false;
    const bool isOtherFile = path != nullptr && !fsutil::equalIgnoringCase(path, path_);
    if (!isOtherFile && isOpen()) {
        close();
        return kWritten;
    }
    fsutil::LineWriter output;
    if (output.open(isOtherFile ? path : path_) != 0) return kCannotOpen;
    printTree(*this, nameOfType(type_), [&](std::string_view text) { output.write(text); });
    isWrittenWhole_ = output.close() == 0;
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
