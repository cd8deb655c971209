#include "tvx_wobj/JsonTree.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

namespace tvxconv::wobj {
namespace {

using Parser = nlohmann::ordered_json;

// Builds a tree from the pieces that the parser finds. Returning false ends the parsing.
class TreeBuilder : public nlohmann::json_sax<Parser> {
public:
    explicit TreeBuilder(JsonValue& root) : root_(root) {}

    bool null() override { return addScalar("null"); }
    bool boolean(bool value) override { return addScalar(value ? "true" : "false"); }
    bool number_integer(std::int64_t value) override { return addScalar(std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) override { return addScalar(std::to_string(value)); }

    bool number_float(double, const std::string& spelling) override {
        std::string number = spelling;
        // The parser uses the decimal point of the host's locale.
        for (char& c : number) {
            const bool isPlain = (c >= '0' && c <= '9') || c == '+' || c == '-' || c == 'e' || c == 'E';
            if (!isPlain) c = '.';
        }
        return addScalar(std::move(number));
    }

    bool string(std::string& characters) override {
        place(JsonValue::ofText(std::move(characters)));
        return true;
    }

    bool binary(binary_t&) override { return false; }  // not in JSON text

    bool start_object(std::size_t) override { return open(JsonValue::emptyObject()); }
    bool start_array(std::size_t) override { return open(JsonValue::emptyArray()); }

    bool key(std::string& characters) override {
        open_.back()->keys.push_back(std::move(characters));
        return true;
    }

    bool end_object() override {
        const bool unique = hasUniqueKeys(*open_.back());
        open_.pop_back();
        return unique;
    }

    bool end_array() override {
        open_.pop_back();
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

private:
    bool addScalar(std::string spelling) {
        place(JsonValue{JsonValue::Kind::scalar, std::move(spelling), {}, {}});
        return true;
    }

    JsonValue* place(JsonValue value) {
        if (open_.empty()) {
            root_ = std::move(value);
            return &root_;
        }
        return &open_.back()->elements.emplace_back(std::move(value));
    }

    bool open(JsonValue container) {
        if (open_.size() == kJsonDepthLimit) return false;
        open_.push_back(place(std::move(container)));
        return true;
    }

    static bool hasUniqueKeys(const JsonValue& object) {
        std::vector<std::string_view> sorted(object.keys.begin(), object.keys.end());
        std::sort(sorted.begin(), sorted.end());
        return std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end();
    }

    JsonValue& root_;
    // The values still open, outermost first. A list grows only while its last element is closed, so these
    // pointers stay valid.
    std::vector<JsonValue*> open_;
};

void appendText(const std::string& characters, std::string& out) {
    constexpr char hex[] = "0123456789abcdef";
    out += '"';
    for (const char c : characters) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (byte >= 0x20) {
                    out += c;
                } else {
                    out += "\\u00";
                    out += hex[byte >> 4U];
                    out += hex[byte & 0xFU];
                }
        }
    }
    out += '"';
}

void appendValue(const JsonValue& value, std::size_t depth, std::string& out) {
    if (value.kind == JsonValue::Kind::scalar) {
        out += value.text;
        return;
    }
    if (value.kind == JsonValue::Kind::text) {
        appendText(value.text, out);
        return;
    }
    const bool isObject = value.kind == JsonValue::Kind::object;
    out += isObject ? '{' : '[';
    for (std::size_t i = 0; i < value.elements.size(); ++i) {
        out += i == 0 ? "\n" : ",\n";
        out.append(2 * (depth + 1), ' ');
        if (isObject) {
            appendText(value.keys[i], out);
            out += ": ";
        }
        appendValue(value.elements[i], depth + 1, out);
    }
    if (!value.elements.empty()) {
        out += '\n';
        out.append(2 * depth, ' ');
    }
    out += isObject ? '}' : ']';
}

// Reads to the end of an open file. `size` is its size when it was opened.
int readAll(int descriptor, std::size_t size, std::string& bytes) {
    bytes.reserve(size + 1);
    char piece[65536];
    std::int64_t count = 0;
    while ((count = platform::readSome(descriptor, piece, sizeof piece)) > 0) {
        bytes.append(piece, static_cast<std::size_t>(count));
    }
    return count == 0 ? 0 : -1;
}

// Closes the descriptor, however the scope is left.
class OpenFile {
public:
    explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
    ~OpenFile() { platform::closeFile(descriptor_); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

private:
    int descriptor_;
};

}  // namespace

JsonValue JsonValue::ofText(std::string characters) {
    return {Kind::text, std::move(characters), {}, {}};
}
JsonValue JsonValue::emptyArray() {
    return {Kind::array, {}, {}, {}};
}
JsonValue JsonValue::emptyObject() {
    return {Kind::object, {}, {}, {}};
}

JsonValue* JsonValue::find(std::string_view key) {
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found == keys.end() ? nullptr : &elements[static_cast<std::size_t>(found - keys.begin())];
}

const JsonValue* JsonValue::find(std::string_view key) const {
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found == keys.end() ? nullptr : &elements[static_cast<std::size_t>(found - keys.begin())];
}

JsonValue& JsonValue::add(std::string key, JsonValue value) {
    keys.push_back(std::move(key));
    return elements.emplace_back(std::move(value));
}

bool JsonValue::operator==(const JsonValue& other) const {
    return kind == other.kind && text == other.text && keys == other.keys && elements == other.elements;
}

bool parseJson(std::string_view json, JsonValue& value) {
    // The parser takes a zero byte for the end of the text and would drop the rest.
    if (json.find('\0') != std::string_view::npos) return false;
    TreeBuilder builder(value);
    return Parser::sax_parse(json.begin(), json.end(), &builder);
}

int readBytes(const std::string& path, std::string& bytes, platform::FileStatus& status) {
    bytes.clear();
    if (path.find('\0') != std::string::npos) return -1;
    int descriptor = -1;
    const int error = platform::openForReading(path.c_str(), platform::FileMode::binary, descriptor, &status);
    if (error != 0) return error;
    const OpenFile file(descriptor);
    return readAll(descriptor, static_cast<std::size_t>(status.size), bytes);
}

int readJsonFile(const std::string& path, JsonValue& value, platform::FileStatus& status) {
    std::string bytes;
    const int error = readBytes(path, bytes, status);
    if (error != 0) return error;
    return parseJson(bytes, value) ? 0 : -1;
}

std::string writeJson(const JsonValue& value) {
    std::string out;
    appendValue(value, 0, out);
    out += '\n';
    return out;
}

bool toJsonText(const std::string& from, std::string& to) {
    if (!platform::toUtf8(from, to)) return false;
    try {
        static_cast<void>(Parser(to).dump());  // throws if it is not UTF-8
        return true;
    } catch (const Parser::type_error&) {
        return false;
    }
}

bool fromJsonText(const std::string& from, std::string& to) {
    return platform::fromUtf8(from, to);
}

}  // namespace tvxconv::wobj
