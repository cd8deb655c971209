// rewriteProfile.h
//
// The frame of rewriting a simulation profile file: lines of a key and a quoted value, which name the design,
// the deck, the data and output files, and numbered "+" lines that name further files. Which keys are looked
// at, and where the named files have gone, is for each kind of project to say.

#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "fsutil/lines.h"

namespace tvxconv {

// A key whose value names a file of the profile. The value is recognised by one of two texts in it, which
// unlike the key are looked for in just this letter case.
enum class ProfileValue { profileFile, deck, output };
struct ProfileKey {
    const char* key;
    const char* mark;
    const char* otherMark;
    ProfileValue value;
};

// A "+" line whose file is there and may follow its profile.
struct ListEntry {
    int number = 0;
    std::string file;  // absolute
    std::string name;  // without its folder
};

// The line that names the file of an entry beside the profile's outputs.
std::string listEntryLine(const ListEntry& entry);

struct ProfileRules {
    // What relative "+" lines are seen from.
    std::string folder;
    // Named in the place of the design, the project and its schematics.
    std::string netlist;
    // In the order of the tests.
    std::span<const ProfileKey> keys;
    // What a recognised value becomes.
    std::function<std::string(ProfileValue kind, const std::string& oldValue)> newValue;
    // Brings an entry's file along and writes what becomes of its line.
    std::function<void(const ListEntry& entry, std::string_view line, fsutil::LineWriter& writer)> moveEntry;
};

// Writes the profile file at `oldPath` as `newPath`. Statuses as with rewriteLinesIfPresent.
int rewriteProfileIfPresent(const std::string& oldPath, const std::string& newPath, const ProfileRules& rules,
                            bool& isPresent);

}  // namespace tvxconv
