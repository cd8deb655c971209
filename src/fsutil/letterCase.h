// letterCase.h
//
// Comparing names and keys without regard to the case of ASCII letters. Every other byte, also above 127,
// equals only itself, whatever locale the host has set.

#pragma once

#include <algorithm>
#include <string_view>

namespace tvxconv::fsutil {

constexpr char lowerCase(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

constexpr bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

constexpr bool beginsWithIgnoringCase(std::string_view text, std::string_view begin) {
    return text.size() >= begin.size() && equalIgnoringCase(text.substr(0, begin.size()), begin);
}

constexpr bool endsWithIgnoringCase(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && equalIgnoringCase(text.substr(text.size() - end.size()), end);
}

}  // namespace tvxconv::fsutil
