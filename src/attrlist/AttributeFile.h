// AttributeFile.h
//
// An attribute-list file as a document: the tree of its nodes, bound to one file on disk, with a type that
// the head of the file names. The order of use: make it, open, read, close, change nodes and attributes,
// write. A path is bytes in the code page of the host; the file is found as platform/platform.h finds files,
// a folder never is one.
//
// Nothing is reported: the operations return one of the statuses below, the caller knows the message. Where
// memory runs out, read and write throw std::bad_alloc.

#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "attrlist/AttributeNode.h"

namespace tvxconv::attrlist {

enum AttributeFileStatus : int {
    kNoPath = 1001,          // open: the path is null
    kCannotOpen = 1002,      // open, write: the file cannot be opened; open: one is open already
    kOpened = 1003,          // open: done
    kWritten = 1007,         // write: done
    kSyntaxError = 1008,     // read: the text is malformed, nothing was added to the tree
    kRead = 1009,            // read: done
    kNotOpen = 1010,         // read: no file is open
    kReadUnknownType = 1011  // read: done, but the type is not one of the known
};

class AttributeFile : public AttributeNode {
public:
    // The types that the head of a file can name; 6 is never one.
    static constexpr int kAnalysisProfile = 0;
    static constexpr int kUnknownType = 7;

    // An empty document: a node "FILE_TYPE" without a parent.
    explicit AttributeFile(int type);
    ~AttributeFile() override;  // closes what is open

    // Remembers `path` and opens the file for reading. Returns 1003; 1001 when `path` is null; 1002 when a
    // file is open already (it stays open) or this one cannot be opened. The path is remembered in any case
    // but the first.
    int open(const char* path);

    // Reads the open file and adds what it holds to the tree. Returns 1009, or 1011 where the type is not
    // known (an empty file, too); 1010 when no file is open; 1008 on a syntax error, with tree and type as
    // they were. The file stays open.
    int read();

    // Closes the file, if one is open.
    void close();

    // Writes the document, all in quoted strings. To another file, when `path` is given and differs from the
    // remembered path by more than letter case; else to the remembered one. Returns 1007, also where not all
    // could be written; 1002 when the file cannot be opened. A file that is still open for reading is not
    // written over: it is closed and left as it is, with 1007. The type must be a known one, or what is
    // written names none.
    int write(const char* path);

    // Whether the last write has written all: its status does not tell.
    bool isWrittenWhole() const { return isWrittenWhole_; }

    // The index of a type's name, ignoring letter case; 7 where it is none or null.
    static int typeIndexOf(const char* name);

    int type() const { return type_; }
    const std::string& path() const { return path_; }
    bool isOpen() const { return stream_ != nullptr; }

    // When the open file was last changed, in seconds since 1970, as far as 32 bits go; 0x7FFFFFFF where that
    // is not known.
    std::int32_t modificationTime() const { return modificationTime_; }

private:
    std::string path_;
    std::FILE* stream_ = nullptr;
    std::int32_t type_;
    std::int32_t modificationTime_ = 0x7FFFFFFF;
    bool isWrittenWhole_ = false;
};

}  // namespace tvxconv::attrlist
