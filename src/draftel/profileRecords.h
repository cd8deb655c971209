// profileRecords.h
//
// The simulation profiles of a project: the file that describes each, its name and its root schematic.

#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace tvxconv {

// The names in a profile file, and the numbers (from 1; 0 for none) of their lines.
struct ProfileNames {
    std::string schematic;
    std::string profile;
    std::size_t schematicLine = 0;
    std::size_t profileLine = 0;
};

struct ProfileRecord {
    std::string fileBase;        // the profile file's name before its first "."
    std::string profile;         // its name
    std::string schematic;       // the root schematic
    std::string registeredPath;  // its path in the project file
};

// The records in the order of adding. Look-ups ignore letter case.
class ProfileRecords {
public:
    // The first record with a file base stays; a later one is ignored.
    void add(ProfileRecord record);

    // Null if there is none.
    const ProfileRecord* find(const std::string& fileBase) const;

    const std::vector<ProfileRecord>& all() const { return records_; }

private:
    std::vector<ProfileRecord> records_;
    std::unordered_map<std::string, std::size_t> byFileBase_;  // keys in lower case
};

}  // namespace tvxconv
