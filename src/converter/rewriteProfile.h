// rewriteProfile.h
//
// The frame of rewriting a simulation profile file: lines of a key and a quoted value, which name the
// design, the deck, the data and output files, and numbered "+" lines that name other files. Each kind of
// project decides which keys count and what becomes of the named files.

#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "fsutil/lines.h"

namespace tvxconv {

// A key whose value names a file of the profile. The value is recognised by one of two texts in it; unlike
// the key, they must match in exactly this letter case.
enum class ProfileValue { profileFile, deck, output };
struct ProfileKey {
    const char* key;
    const char* mark;
    const char* otherMark;
    ProfileValue value;
};

// A "+" line whose file exists and may move with its profile.
struct ListEntry {
    int number = 0;
    std::string file;  // absolute
    std::string name;  // without its folder
};

// The line for an entry whose file is beside the profile's outputs.
std::string listEntryLine(const ListEntry& entry);

struct ProfileRules {
    // The folder that relative "+" lines start from.
    std::string folder;
    // Named instead of the design, the project and its schematics.
    std::string netlist;
    // In the order in which they are tested.
    std::span<const ProfileKey> keys;
    // Makes the new value from one that was recognised.
    std::function<std::string(ProfileValue kind, const std::string& oldValue)> newValue;
    // Copies an entry's file and writes the line that replaces the old one.
    std::function<void(const ListEntry& entry, std::string_view line, fsutil::LineWriter& writer)> moveEntry;
};

// Writes the profile file at `oldPath` as `newPath`. Statuses as with rewriteLinesIfPresent.
int rewriteProfileIfPresent(const std::string& oldPath, const std::string& newPath, const ProfileRules& rules,
                            bool& isPresent);

}  // namespace tvxconv
