#include "report.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace {

// Paths are bytes; JSON is UTF-8. Bytes that are not UTF-8 become a replacement character.
std::string dump(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

// Standard output, written in large pieces: the listing of a library may have a line for each of very many
// files, and no second copy of it is kept.
class Output {
public:
    void add(std::string_view text) {
        constexpr std::size_t kPiece = 64 * 1024;
        text_.append(text);
        if (text_.size() >= kPiece) write();
    }

    // Writes the rest. Returns whether all was written.
    bool end() {
        write();
        std::cout.flush();
        if (std::cout.good()) return true;
        tell("cannot write the result to standard output");
        return false;
    }

private:
    void write() {
        std::cout.write(text_.data(), static_cast<std::streamsize>(text_.size()));
        text_.clear();
    }

    std::string text_;
};

// Writes a member of the object, after the text `before`.
void addMember(Output& output, const char* before, const char* key, const nlohmann::ordered_json& value) {
    output.add(before);
    output.add(dump(key));
    output.add(":");
    output.add(dump(value));
}

std::size_t sizeOf(const CStringArray& lines) {
    return static_cast<std::size_t>(lines.GetSize());
}
std::size_t sizeOf(const std::vector<std::string>& lines) {
    return lines.size();
}
const char* lineOf(const CStringArray& lines, std::size_t index) {
    return lines[static_cast<int>(index)].GetString();
}
const char* lineOf(const std::vector<std::string>& lines, std::size_t index) {
    return lines[index].c_str();
}

template <class Lines>
void addLines(Output& output, const Lines& lines) {
    for (std::size_t i = 0; i < sizeOf(lines); ++i) {
        output.add(lineOf(lines, i));
        output.add("\n");
    }
}

template <class Lines>
void addJson(Output& output, const RunResult& result, const std::string& newProjectPath, const Lines& lines) {
    addMember(output, "{", "status", result.status);
    addMember(output, ",", "errorCode", result.errorCode);
    addMember(output, ",", "errorMessage", result.errorMessage);
    addMember(output, ",", "newProjectPath", newProjectPath);
    output.add(",\"structure\":[");
    for (std::size_t i = 0; i < sizeOf(lines); ++i) {
        if (i != 0) output.add(",");
        output.add(dump(lineOf(lines, i)));
    }
    output.add("]");
}

}  // namespace

void tell(std::string_view text) {
    std::cerr << "tvxconv: " << text << '\n';
}

std::string inQuotes(const std::string& name) {
    return dump(name);
}

void tellError(const RunResult& result) {
    if (result.errorCode == 0) return;
    tell(result.errorMessage + " (error " + std::to_string(result.errorCode) + ")");
}

bool printResult(const ConversionResult& result, bool json) {
    Output output;
    if (json) {
        addJson(output, result, result.newProjectPath, result.structure);
        output.add("}\n");
    } else {
        addLines(output, result.structure);
    }
    return output.end();
}

bool printResult(const LibraryResult& result, bool json) {
    Output output;
    if (json) {
        addJson(output, result, std::string(), result.structure);
        addMember(output, ",", "libraryParentName", result.libraryParentName);
        output.add("}\n");
    } else {
        addLines(output, result.structure);
    }
    return output.end();
}
