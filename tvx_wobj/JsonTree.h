// JsonTree.h
//
// A JSON text as a tree that can be changed and written again without loss: keys keep their order and
// numbers their spelling ("17.20" does not become 17.2), also in parts that this library does not know. The
// JSON package checks the grammar and the UTF-8 while it reads; the tree holds what it found.
//
// Time and memory are proportional to the size of the text, whatever its content.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace tvxconv::wobj {

// The most objects and lists inside one another; deeper texts are refused, so that the tree may be walked
// by recursion.
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

    // The value of a key; null if there is none.
    JsonValue* find(std::string_view key);
    const JsonValue* find(std::string_view key) const;

    // Adds a key that does not exist yet, at the end. The reference is valid until the next one is added.
    JsonValue& add(std::string key, JsonValue value);

    bool operator==(const JsonValue& other) const;
};

// Reads one JSON value from `json`, with only white space around it. False, with `value` undefined, for
// anything else, text that is not UTF-8, a key twice in one object, and nesting beyond the limit. May throw
// std::bad_alloc.
bool parseJson(std::string_view json, JsonValue& value);

// Reads a whole file; `status` gets its status. Returns 0, or the system's error or -1 with `bytes`
// undefined. May throw std::bad_alloc.
int readBytes(const std::string& path, std::string& bytes, platform::FileStatus& status);

// Reads a whole file as one JSON value; `status` gets its status. Returns 0, or the system's error or -1
// (not JSON) with `value` undefined. May throw std::bad_alloc.
int readJsonFile(const std::string& path, JsonValue& value, platform::FileStatus& status);

// The value as text: indented by two blanks, each member and element on its own line, "\n" at the end. A
// value read from such a text is written as the same bytes.
std::string writeJson(const JsonValue& value);

// Converts a text of the host from its code page to the form in JSON text, and back. False, with `to`
// undefined, if it cannot be converted.
bool toJsonText(const std::string& from, std::string& to);
bool fromJsonText(const std::string& from, std::string& to);

}  // namespace tvxconv::wobj
