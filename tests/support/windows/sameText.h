// sameText.h
//
// On Windows text files end their lines with "\r\n", whatever the ends of the lines that were read. So texts,
// and trees of texts, are equal for an EXPECT_EQ when they are but for line ends. Where the bytes themselves
// are the point (platform/windows_test.cpp), a test says EXPECT_TRUE.

#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace tests {

using TextTree = std::map<std::string, std::string>;

inline std::string withPlainLineEnds(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t next = text.find_first_not_of('\r', i);
        const bool isPartOfLineEnd = next != std::string::npos && text[next] == '\n';
        if (text[i] != '\r' || !isPartOfLineEnd) result += text[i];
    }
    return result;
}

inline TextTree withPlainLineEnds(TextTree tree) {
    for (auto& [name, text] : tree) text = withPlainLineEnds(text);
    return tree;
}

}  // namespace tests

namespace testing::internal {

template <>
inline AssertionResult CmpHelperEQ<std::string, std::string>(const char* left, const char* right,
                                                             const std::string& a, const std::string& b) {
    const std::string plainA = tests::withPlainLineEnds(a);
    const std::string plainB = tests::withPlainLineEnds(b);
    return plainA == plainB ? AssertionSuccess() : CmpHelperEQFailure(left, right, plainA, plainB);
}

template <>
inline AssertionResult CmpHelperEQ<tests::TextTree, tests::TextTree>(const char* left, const char* right,
                                                                     const tests::TextTree& a,
                                                                     const tests::TextTree& b) {
    const tests::TextTree plainA = tests::withPlainLineEnds(a);
    const tests::TextTree plainB = tests::withPlainLineEnds(b);
    return plainA == plainB ? AssertionSuccess() : CmpHelperEQFailure(left, right, plainA, plainB);
}

}  // namespace testing::internal
