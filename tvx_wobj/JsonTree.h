// JsonTree.h
//
// A JSON text as a tree that can be changed and written again without loss: keys keep their order and
// numbers their spelling ("17.20" does not become 17.2), also in the parts that nobody here knows about.
// The package that reads the text checks the grammar and the UTF-8; the tree holds what it found.
//
// Time and memory grow in step with the size of the text, whatever its shape.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace tvxconv::wobj {

// Objects and lists inside one another; deeper texts are refused, so that the tree may be walked by
// recursion.
constexpr std::size_t kJsonDepthLimit = 512;

struct JsonValue {
    enum class Kind { scalar, text, array, object };

    Kind kind = Kind::scalar;
    std::string text;               // text: its characters; scalar: a number, true, false or null as spelled
    std::vector<std::string> keys;  // object: the key of each element, no two alike; else empty
    std::vector<JsonValue> elements;  // array and object, in file order

    static JsonValue ofText(std::string characters);
    static JsonValue emptyArray();
    static JsonValue emptyObject();

    // The value of a key; null where there is none.
    JsonValue* find(std::string_view key);
    const JsonValue* find(std::string_view key) const;

    // Adds a key that is not there yet, behind the others. The result holds until the next one is added.
    JsonValue& add(std::string key, JsonValue value);

    bool operator==(const JsonValue& other) const;
};

// Reads one JSON value from `json`, with nothing but white space around it. False, and `value` undefined,
// for anything else, for text that is not UTF-8, for a key that stands twice in one object and for nesting
// beyond the limit. May throw std::bad_alloc.
bool parseJson(std::string_view json, JsonValue& value);

// Reads a whole file; `status` tells of it. Returns 0, or the error of the system or -1 with `bytes`
// undefined. May throw std::bad_alloc.
int readBytes(const std::string& path, std::string& bytes, platform::FileStatus& status);

// Reads a whole file as one JSON value; `status` tells of the file. Returns 0, or the error of the system
// or -1 (no JSON) with `value` undefined. May throw std::bad_alloc.
int readJsonFile(const std::string& path, JsonValue& value, platform::FileStatus& status);

// The value as text: indented by two blanks, every member and element on a line of its own, "\n" at the
// end. Writing what was read from such a text gives the same bytes.
std::string writeJson(const JsonValue& value);

// A text of the host, in its code page, as it can stand in a JSON text, and the other way. False, with `to`
// undefined, for one that has no form on the other side.
bool toJsonText(const std::string& from, std::string& to);
bool fromJsonText(const std::string& from, std::string& to);

}  // namespace tvxconv::wobj
