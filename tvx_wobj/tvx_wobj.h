// tvx_wobj.h
//
// The project-file library: reads and changes the project file (".opj") of a design. A project is a set of
// named folders with named sub-folders; a folder holds entries (a file path, a display name, a type) and
// named items (a text each). The project also registers its simulation profiles.
//
// This header is the whole contract. A build can use another library with these ten functions, so programs
// include nothing else from this folder.
//
// Strings. All text is in the code page of the host, as paths are, and UTF-8 in the file; if the host's is
// UTF-8 the bytes are the same. Paths are in the project as the user wrote them, mostly relative to the
// project's folder and with backslashes; they are passed in and out unchanged. Comparisons ignore the case
// of ASCII letters: in names of folders, items and types, names and schematics of profiles, and paths that
// are looked for. Of several folders with one name the first counts.
//
// The form of our project files, a JSON object. Every key may be missing: a missing text reads as "", a
// missing list as an empty one. Other keys may occur anywhere; they, their values and the order of all keys
// are kept.
//
//   { "folders": [
//       { "name": "Design Resources",
//         "items": { "TEVRIX_Output_File": "amp.out" },
//         "files": [ { "name": "amp.dsn", "path": ".\\amp.dsn", "type": "Schematic Design" } ],
//         "folders": [ a sub-folder has the form of a folder ] } ],
//     "simulationProfiles": {
//       "active": ".\\amp-SCHEMATIC1-tran1.sim",
//       "profiles": [ { "path": ".\\amp-SCHEMATIC1-tran1.sim", "name": "tran1",
//                       "schematic": "SCHEMATIC1" } ] } }
//
// Status. 0 is success. Anything else: the file cannot be read or written, it is not JSON, a value shown
// above has another type, a key occurs twice in one object, objects and lists are nested more than 512 deep,
// memory ran out, a text passed in or out cannot be converted between code page and UTF-8, or what the
// function says. Then outputs are empty and the file is unchanged. No function throws.
//
// Writing. A call reads the file once and, only if something changes, writes it once: a new file beside it
// is flushed to disk, gets the permission bits of the old one and replaces it. A symbolic link is followed:
// the file that it leads to is replaced. Readers, also after a power failure, find the old or the new file
// complete. A file that the user may not write is left alone and the call fails.
//
// Two processes that change one project at the same time do not notice each other: the later one wins.

#pragma once

#include <string>
#include <vector>

// Only the library's own build marks the functions; programs that call them need no mark.
#if defined(TVX_WOBJ_BUILDING_LIBRARY)
#include "platform/export.h"
#define TVX_WOBJ_API TVXCONV_EXPORT
#else
#define TVX_WOBJ_API
#endif

namespace tvx_wobj {

using Strings = std::vector<std::string>;

// The entries of a folder, without those of its sub-folders.
//
//   project  path of the project file
//   folder   name of the folder; null is a failure
//   paths    cleared; then the path of each entry, in file order
//   names    cleared; then the display names, in the same order
//   flag     not used
//
// A folder that does not exist has no entries: 0 with empty lists.
TVX_WOBJ_API int readProjectFiles(const std::string& project, const char* folder, Strings& paths,
                                  Strings& names, bool flag);

// The entries of a sub-folder of `folder`. The same, except for the order of the outputs: names, then paths.
TVX_WOBJ_API int readProjectFiles(const std::string& project, const char* folder, const char* subFolder,
                                  Strings& names, Strings& paths, bool flag);

// The entries of a folder with their types: three lists, cleared first, of the same length and order. A
// folder that does not exist has no entries: 0 with empty lists.
TVX_WOBJ_API int readProjectFileDirectly(const std::string& project, const std::string& folder,
                                         Strings& names, Strings& paths, Strings& types);

// The same for a sub-folder of `folder`.
TVX_WOBJ_API int readProjectFileDirectly(const std::string& project, const std::string& folder,
                                         const std::string& subFolder, Strings& names, Strings& paths,
                                         Strings& types);

// Writes the entries of one type in a folder.
//
//   itemType      the type; entries of other types stay unchanged and in their places
//   paths         the paths to write
//   replace       true: the list replaces the entries of that type. The i-th path goes to the i-th of them,
//                 which keeps its place, its name (unless the file name changed: then it is named after its
//                 file) and its other members. Entries left over are removed; paths left over become new
//                 entries at the end of the folder, each named after its file.
//                 false: a path that no entry of that type has yet (ignoring case and the kind of separator)
//                 becomes a new entry at the end; no entry is removed or changed.
//   createFolder  whether to make the folder if it is missing; if not, paths for it are a failure
//   the rest      not used
//
// An empty list for a folder that does not exist: 0, and nothing is made.
TVX_WOBJ_API int writeProjectFiles(const std::string& project, const std::string& folder,
                                   const std::string& itemType, const Strings& paths, bool replace,
                                   bool createFolder, bool flag);

// The same for a sub-folder of `folder`; `createFolder` applies to both.
TVX_WOBJ_API int writeProjectFiles(const std::string& project, const std::string& folder,
                                   const std::string& subFolder, const std::string& itemType,
                                   const Strings& paths, bool replace, bool createFolder, bool flag,
                                   bool furtherFlag);

// Gives the named item of a folder this value. Item and folder are made if missing.
//
//   item   name of the item; an existing one keeps its spelling and its place
//   value  its new text; an empty one is stored too
//   flag   not used
TVX_WOBJ_API int writeItemToProject(const std::string& project, const std::string& folder,
                                    const std::string& item, const std::string& value, bool flag);

// Gives a new path to the first entry of a folder (not of its sub-folders) that has this type and this
// path, both compared ignoring case, the path also ignoring the kind of separator. Its name stays unless
// the file name changed: then it is named after its file. If there is no such entry, that is a failure.
TVX_WOBJ_API int updateInProjectFile(const std::string& project, const std::string& folder,
                                     const std::string& itemType, const std::string& oldPath,
                                     const std::string& newPath);

// The simulation profiles that the project registers.
//
//   paths   cleared; then the path of each profile, in file order
//   names   cleared; then the names of the profiles, in the same order
//   active  cleared; then the path of the active profile
//   flag    not used
//
// A project without profiles: 0 with empty outputs.
TVX_WOBJ_API int readSimProfiles(const std::string& project, Strings& paths, Strings& names,
                                 std::string& active, bool flag);

// Replaces the registered simulation profiles. A profile whose name and schematic were registered before
// (ignoring case) keeps its other members. Lists of unequal length are a failure.
//
//   paths       path of each profile, in the order to be registered
//   names       its name
//   schematics  the root schematic that it belongs to
//   active      path of the active profile; may be empty
//   flag        not used
TVX_WOBJ_API int writeSimProfiles(const std::string& project, const Strings& paths, const Strings& names,
                                  const Strings& schematics, const std::string& active, bool flag);

}  // namespace tvx_wobj
