#include "converter/rewriteOptimizerFile.h"

#include <algorithm>
#include <cstdio>

#include "converter/rewriteLines.h"

namespace tvxconv {
namespace {

// The text after the closing quote of the line's value, line end included.
std::string_view restOf(std::string_view line) {
    const std::size_t close = line.find('"', line.find('"') + 1);
    return close == std::string_view::npos ? fsutil::lineEndOf(line) : line.substr(close + 1);
}

void rewriteValue(std::string_view line, const OptimizerLine& rule, fsutil::LineWriter& writer) {
    std::string value;
    const int scanned = fsutil::scanQuotedValue(line, value);
    if (scanned == EOF) return;
    if (scanned == 1 && value.find(rule.mark) == std::string::npos) return;
    std::string newValue;
    if (scanned == 0 || rule.newValue(newValue, value) != 0) {
        writer.write(line);
        return;
    }
    writer.write(std::string(rule.word).append(" \"").append(newValue).append("\""));
    writer.write(restOf(line));
}

}  // namespace

int rewriteOptimizerFile(const std::string& oldPath, const std::string& newPath,
                         std::span<const OptimizerLine> lines) {
    return rewriteLines(oldPath, newPath, [&](std::string_view line, fsutil::LineWriter& writer) {
        const auto rule = std::find_if(lines.begin(), lines.end(), [&](const OptimizerLine& entry) {
            return fsutil::beginsWithKey(line, entry.word);
        });
        if (rule == lines.end()) {
            writer.write(line);
        } else {
            rewriteValue(line, *rule, writer);
        }
    });
}

}  // namespace tvxconv
