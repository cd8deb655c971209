// attributeLists.cpp
//
// What measure.py runs to compare the attribute-list files with a JSON library on the same tree, each step in
// a process of its own:
//
//   make MIB LIST JSON     writes a profile of that size as an attribute list, and its tree as JSON
//   read-list LIST         reads the file into its tree
//   read-json JSON
//   write-list LIST NEW    writes the tree of the file to a new one
//   write-json JSON NEW
//
// Each but the first prints the seconds of that step, without those of starting, of what has to be read
// before it is written, and of giving the memory back.

#include <rapidjson/document.h>
#include <rapidjson/filewritestream.h>
#include <rapidjson/writer.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "attrlist/AttributeFile.h"
#include "attrlist/writer.h"

namespace {

using tvxconv::attrlist::AttributeFile;
using tvxconv::attrlist::AttributeNode;

constexpr std::size_t kBufferSize = 64 * 1024;

void check(bool isRight, const char* what) {
    if (!isRight) throw std::runtime_error(what);
}

void printSeconds(const std::function<void()>& step) {
    const auto started = std::chrono::steady_clock::now();
    step();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - started;
    std::printf("%.6f\n", seconds.count());
}

// --- the tree ---

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) text += part;
    return text;
}

void addMeasurement(AttributeNode& measurements, int number) {
    const std::string index = std::to_string(number);
    const std::string profile = joined({"amp-SCHEMATIC1-tran", std::to_string(number % 500)});
    AttributeNode& measurement = *measurements.addChild(joined({"Measurement", index}).c_str());
    const std::pair<const char*, std::string> attributes[] = {
        {"Profile", joined({profile, ".sim"})},
        {"Name", joined({"Max(V(OUT", index, "))"})},
        {"Expression", joined({"Max(DB(V(OUT", index, "))) - Min(V(load))"})},
        {"Enabled", number % 3 == 0 ? "0" : "1"},
        {"Minimum", joined({"-", std::to_string(number % 97), ".5"})},
        {"Maximum", joined({std::to_string(number % 89), ".25"})},
        {"Weight", "1"},
        {"LastValue", joined({"1.2345679e-0", std::to_string(number % 9 + 1)})},
        {"LogFile", joined({"C:\\designs\\amp\\", profile, ".log"})},
    };
    for (const auto& [key, value] : attributes) measurement.addAttribute(key, value.c_str());
    AttributeNode& limits = *measurement.addChild("Limits");
    limits.addAttribute("Lower", "0.7");
    limits.addAttribute("Upper", "8.5e-1");
}

void fill(AttributeNode& document, int measurements) {
    document.addAttribute("Title", "Two-stage amplifier");
    document.addAttribute("RandomSeed", "17");
    AttributeNode& profiles = *document.addChild("Profiles");
    for (int i = 0; i < measurements / 10; ++i) {
        const std::string profile = joined({"amp-SCHEMATIC1-tran", std::to_string(i)});
        profiles.addAttribute(profile.c_str(), i % 2 == 0 ? "0" : "1");
    }
    for (const char* name : {"Optimizer", "Sensitivity", "MonteCarlo"}) {
        AttributeNode& section = *document.addChild(name);
        section.addAttribute("Engine", "Least Squares");
        section.addAttribute("MaxIterations", "50");
        AttributeNode& list = *section.addChild("MEASUREMENTS");
        for (int i = 0; i < measurements / 3; ++i) addMeasurement(list, i);
    }
}

// {"name": ..., "attributes": {...}, "children": [...]}
template <class Writer>
void writeJson(const AttributeNode& node, Writer& writer) {
    writer.StartObject();
    writer.Key("name");
    writer.String(node.name());
    writer.Key("attributes");
    writer.StartObject();
    for (std::size_t i = 0; i < node.attributeCount(); ++i) {
        writer.Key(node.attributeAt(i)->key());
        writer.String(node.attributeAt(i)->value());
    }
    writer.EndObject();
    writer.Key("children");
    writer.StartArray();
    for (std::size_t i = 0; i < node.childCount(); ++i) writeJson(*node.childAt(i), writer);
    writer.EndArray();
    writer.EndObject();
}

// Has `write` write JSON to the file through a buffer.
template <class Write>
void writeJsonFile(const char* path, Write write) {
    std::FILE* const file = std::fopen(path, "wb");
    check(file != nullptr, path);
    std::vector<char> buffer(kBufferSize);
    rapidjson::FileWriteStream stream(file, buffer.data(), buffer.size());
    rapidjson::Writer<rapidjson::FileWriteStream> writer(stream);
    write(writer);
    stream.Flush();
    check(std::fclose(file) == 0, path);
}

void make(std::size_t bytes, const char* list, const char* json) {
    constexpr int kSample = 3000;
    AttributeFile sample(AttributeFile::kAnalysisProfile);
    fill(sample, kSample);
    std::size_t sampleBytes = 0;
    tvxconv::attrlist::printTree(sample, "", [&](std::string_view text) { sampleBytes += text.size(); });

    AttributeFile document(AttributeFile::kAnalysisProfile);
    fill(document, static_cast<int>(kSample * bytes / sampleBytes));
    check(document.write(list) == tvxconv::attrlist::kWritten, list);
    writeJsonFile(json, [&](auto& writer) { writeJson(document, writer); });
}

// --- the steps ---

void readList(const char* path, AttributeFile& document) {
    check(document.open(path) == tvxconv::attrlist::kOpened, path);
    check(document.read() == tvxconv::attrlist::kRead, path);
    document.close();
}

void readJson(const char* path, rapidjson::Document& document) {
    std::FILE* const file = std::fopen(path, "rb");
    check(file != nullptr, path);
    std::fseek(file, 0, SEEK_END);
    std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    check(std::fread(text.data(), 1, text.size(), file) == text.size(), path);
    std::fclose(file);
    document.Parse(text.data(), text.size());
    check(!document.HasParseError(), path);
}

int run(const std::vector<const char*>& arguments) {
    const std::string_view command = arguments.empty() ? "" : arguments[0];
    const std::size_t count = arguments.size();
    if (command == "make" && count == 4) {
        make(static_cast<std::size_t>(std::atoi(arguments[1])) << 20U, arguments[2], arguments[3]);
        return 0;
    }
    AttributeFile list(AttributeFile::kAnalysisProfile);
    rapidjson::Document json;
    if (command == "read-list" && count == 2) {
        printSeconds([&] { readList(arguments[1], list); });
    } else if (command == "read-json" && count == 2) {
        printSeconds([&] { readJson(arguments[1], json); });
    } else if (command == "write-list" && count == 3) {
        readList(arguments[1], list);
        printSeconds([&] { check(list.write(arguments[2]) == tvxconv::attrlist::kWritten, arguments[2]); });
    } else if (command == "write-json" && count == 3) {
        readJson(arguments[1], json);
        printSeconds([&] { writeJsonFile(arguments[2], [&](auto& writer) { json.Accept(writer); }); });
    } else {
        std::fputs("attributeLists: unknown command\n", stderr);
        return 2;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "attributeLists: %s\n", failure.what());
        return 1;
    }
}
