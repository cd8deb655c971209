#include "fsutil/TextFile.h"

#include <utility>

#include "fsutil/files.h"
#include "platform/platform.h"

namespace tvxconv::fsutil {

TextFile::~TextFile() {
    close();
}

int TextFile::open(const std::string& path) {
    close();
    if (!isPathText(path)) return 1;
    platform::FileStatus status;
    if (platform::openForReading(path.c_str(), platform::FileMode::text, descriptor_, &status) != 0) {
        return 1;
    }
    modificationTime_ = status.changedAt;
    return 0;
}

std::size_t TextFile::read(char* buffer, std::size_t size) {
    if (descriptor_ == -1) return 0;
    const std::int64_t got = platform::readSome(descriptor_, buffer, size);
    return got > 0 ? static_cast<std::size_t>(got) : 0;
}

void TextFile::close() {
    if (descriptor_ != -1) platform::closeFile(std::exchange(descriptor_, -1));
    modificationTime_ = 0;
}

}  // namespace tvxconv::fsutil
