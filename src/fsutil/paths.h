// paths.h
//
// Taking path text apart and putting it together. Nothing here looks at the disk, so the paths of a Windows
// project are handled, and tested, alike on every system; only normaliseReference asks whether this system
// has drive letters.
//
// A path is bytes in the code page of the host; lengths and positions count bytes. Inputs may have either
// slash; "/" is used inside. Outputs are cleared first and may be the same string as an input. A 1 is an
// answer, not a fault: it is never reported from here, because only the caller knows whether it matters.

#pragma once

#include <cstdint>
#include <string>

namespace tvxconv::fsutil {

// `out` is `path` with every "\" turned into "/". Returns 0.
std::uint32_t toForwardSlashes(const std::string& path, std::string& out);

// `out` is `text` with its ASCII letters in lower case. Returns 0.
std::uint32_t toLowerCase(const std::string& text, std::string& out);

// Tells whether `path` is relative, and if so gives it the form "./x" or "../x" with forward slashes.
// Absolute are "C:..." (a ":" in second place), "//..." and every text of three bytes or more with a slash
// in third place; they stay unchanged, backslashes included. Returns 0.
//
//   "sub\x.sim" becomes "./sub/x.sim", relative       "C:\x" stays, absolute
//   "../a" stays, relative                            "ab/c" stays, absolute (slash in third place)
//   "" becomes "./", ".." becomes "./.."              "/x" becomes ".//x", relative
std::uint32_t makeExplicitRelative(std::string& path, bool& isRelative);

// The same for a reference found in a project or given by a host: on systems without drive letters one that
// begins with a single "/" is absolute too and stays unchanged. Returns 0.
std::uint32_t normaliseReference(std::string& path, bool& isRelative);

// Writes `path` relative to `folder`, so that the reference survives a move of the whole project.
//
//   path    absolute, somewhere below `folder`; letter case is ignored in the comparison
//   folder  absolute, without a slash at its end
//   out     "./" and the rest of `path`, in forward slashes and its own case
//
// Returns 0, or 1 with `out` empty if `path` does not contain `folder` or is no longer than it. The text of
// `folder` may be found anywhere in `path`, but the bytes removed, one more than it has, are always the
// first: ask isBelowFolder before if `path` may be elsewhere.
//
//   relativeToFolder("D:\\Amp\\Decks\\rails.inc", "d:/amp", out)  gives 0, "./Decks/rails.inc"
std::uint32_t relativeToFolder(const std::string& path, const std::string& folder, std::string& out);

// Whether `path` begins with `folder` and a slash, ignoring letter case and the kind of slash.
bool isBelowFolder(const std::string& path, const std::string& folder);

// Joins a relative path to `base`, a folder with at least one slash in it. The first "./" or "../" is
// resolved; what follows is appended unchanged. Returns 0, or 1 with `out` empty if `rel` is absolute by
// makeExplicitRelative or `base` has no slash (no parent, for "../").
//
//   resolveRelative("../a.txt", "C:/p/q", out)  gives 0, "C:/p/a.txt"
std::uint32_t resolveRelative(const std::string& rel, const std::string& base, std::string& out);

// The text after the last separator. Returns 0, or 1 with the whole path if there is none.
std::uint32_t fileNameOf(const std::string& path, std::string& out);

// The text before the last separator. Returns 0, or 1 with `out` empty if there is none.
std::uint32_t folderOf(const std::string& path, std::string& out);

// The text after the first "." of a file name: "amp.sim.cir" gives "sim.cir". A default marker file
// ("s1-tran-default.mrk") gives "default.mrk", in its own spelling. Returns 0 (with `out` empty for "." and
// ".."), or 1 with `out` empty if the name has no ".".
std::uint32_t extensionOf(const std::string& name, std::string& out);

// The text before the first "." of a file name; of a default marker file, the text before its last "-".
// Returns 0, or 1 with the whole name if it has no ".".
std::uint32_t baseNameOf(const std::string& name, std::string& out);

// --- the same as return values, for callers that do not need the status ---

std::string toForwardSlashes(std::string path);
// Turns every "/" into "\", as project and profile files write paths.
std::string toBackslashes(std::string path);
std::string toLowerCase(std::string text);
std::string fileNameOf(const std::string& path);
std::string folderOf(const std::string& path);
std::string extensionOf(const std::string& name);
std::string baseNameOf(const std::string& name);

// A reference to a file in a project, in one form: forward slashes, and "./" or "../" before a relative
// one. normaliseReference says what counts as relative and what stays unchanged.
class Reference {
public:
    // `written` may have slashes of either kind.
    explicit Reference(const std::string& written);

    const std::string& path() const { return path_; }
    bool isRelative() const { return isRelative_; }
    bool isBare() const { return isBare_; }  // written without a folder
    bool goesUp() const { return isRelative_ && path_.starts_with("../"); }
    std::string fileName() const { return fileNameOf(path_); }

    // The path of the file, seen from `folder`: see resolveRelative. An absolute path is returned
    // unchanged. False, with `file` empty, if it cannot be resolved.
    bool resolve(const std::string& folder, std::string& file) const;

private:
    std::string path_;
    bool isRelative_ = false;
    bool isBare_ = false;
};

}  // namespace tvxconv::fsutil
