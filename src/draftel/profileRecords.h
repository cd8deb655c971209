// profileRecords.h
//
// The simulation profiles of a project: which file each is described in, what it is called and which root
// schematic it belongs to.

#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace tvxconv {

// What a profile file says of itself, and the lines (from 1; 0 for none) that say it.
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
    std::string registeredPath;  // the path under which the project file registers it
};

// The records in the order of adding. Letter case does not count when one is looked up.
class ProfileRecords {
public:
    // The first record of a file base stays; a later one is ignored.
    void add(ProfileRecord record);

    // Null when there is none.
    const ProfileRecord* find(const std::string& fileBase) const;

    const std::vector<ProfileRecord>& all() const { return records_; }

private:
    std::vector<ProfileRecord> records_;
    std::unordered_map<std::string, std::size_t> byFileBase_;  // keys in lower case
};

}  // namespace tvxconv
