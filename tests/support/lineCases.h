// lineCases.h
//
// What every rewriting of a text file does with its lines.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/DraftelProject.h"

namespace tests {

// One line, without its end, and what is written in its place; null for nothing.
struct LineCase {
    const char* line;
    const char* written;
};
constexpr const char* kDropped = nullptr;

// Marks in the lines, and the folders that they stand for.
using Places = std::vector<std::pair<std::string, std::string>>;

// What becomes of a new line in place of a last one that has no end.
enum class LastLine { getsAnEnd, staysWithoutEnd };

// Each line between others that stay, with LF and with CRLF, and as a last line without an end: what is
// copied keeps having none. `rewritten` makes the new text of an old one.
template <class Rewritten>
void expectLines(const std::vector<LineCase>& cases, const Places& places, Rewritten rewritten,
                 LastLine lastLine = LastLine::getsAnEnd) {
    const auto here = [&](const char* text) {
        std::string result = text;
        for (const auto& [mark, folder] : places) result = replaced(result, mark, folder);
        return result;
    };
    for (const LineCase& entry : cases) {
        const std::string line = here(entry.line);
        const bool isDropped = entry.written == kDropped;
        const std::string written = isDropped ? "" : here(entry.written);
        for (const std::string end : {"\n", "\r\n"}) {
            EXPECT_EQ(rewritten("* before" + line + end + line + end + "after 1 0 1k" + end),
                      "* before" + line + end + (isDropped ? "" : written + end) + "after 1 0 1k" + end)
                << line;
        }
        const bool getsEnd = lastLine == LastLine::getsAnEnd && !isDropped && written != line;
        const std::string last = getsEnd ? written + "\n" : written;
        EXPECT_EQ(rewritten("* before\n" + line), "* before\n" + last) << line;
    }
    EXPECT_EQ(lastError(), LastError());
}

}  // namespace tests
