// folderNames.h
//
// Walking the names in a folder.

#pragma once

#include <functional>
#include <string>

namespace tvxconv {

// Calls `visit` with each name in the folder, including "." and "..", in the order of a listing, until it
// returns false. The names are read before the first call. Returns 0, or 1 if the folder cannot be opened;
// nothing is reported.
int forEachName(const std::string& folder, const std::function<bool(const std::string& name)>& visit);

}  // namespace tvxconv
