// hostStrings.h
//
// The host framework's string and string array, as far as the Draftel interface uses them, for hosts
// without that framework: a counted byte string and a growable array of such strings. Everything is inline,
// so the library exports none of it.

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// A counted byte string; its characters are followed by a NUL.
class CString {
public:
    CString() = default;
    CString(const char* text) : text_(text != nullptr ? text : "") {}  // NOLINT: the host converts freely
    CString(const char* characters, int length)
        : text_(characters, static_cast<std::size_t>(length > 0 ? length : 0)) {}

    // In characters, without the closing NUL.
    int GetLength() const { return static_cast<int>(text_.size()); }
    bool IsEmpty() const { return text_.empty(); }

    // Valid until the string changes.
    const char* GetString() const { return text_.c_str(); }
    operator const char*() const { return text_.c_str(); }  // NOLINT: the host converts freely

    friend bool operator==(const CString& a, const CString& b) { return a.text_ == b.text_; }
    friend bool operator==(const CString& a, const char* b) { return a.text_ == b; }

private:
    std::string text_;
};

// A growable array of strings; indexes run from 0 to GetSize() - 1.
class CStringArray {
public:
    int GetSize() const { return static_cast<int>(strings_.size()); }

    const CString& GetAt(int index) const { return strings_[static_cast<std::size_t>(index)]; }
    const CString& operator[](int index) const { return strings_[static_cast<std::size_t>(index)]; }
    CString& operator[](int index) { return strings_[static_cast<std::size_t>(index)]; }

    // Sets an element; an index past the end makes the array long enough, with empty strings between.
    void SetAtGrow(int index, const CString& text) {
        const auto position = static_cast<std::size_t>(index);
        CString added = text;  // growing moves the elements, and the text may be one of them
        if (position >= strings_.size()) strings_.resize(position + 1);
        strings_[position] = std::move(added);
    }

    // Adds an element at the end and returns its index.
    int Add(const CString& text) {
        strings_.push_back(text);
        return GetSize() - 1;
    }

    void RemoveAll() { strings_.clear(); }

private:
    std::vector<CString> strings_;
};
