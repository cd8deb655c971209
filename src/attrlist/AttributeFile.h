// AttributeFile.h
//
// An attribute-list file as a document: the tree of its nodes, the file on disk and its type, which the
// beginning of the file names. Use it in this order: construct, open, read, close, change nodes and
// attributes, write. A path is bytes in the code page of the host. Only plain files can be opened.
//
// Errors are not reported: the functions return one of the statuses below, and the caller knows the
// message. If there is no memory, open, read and write throw std::bad_alloc.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "attrlist/AttributeNode.h"

namespace tvxconv::attrlist {

enum AttributeFileStatus : int {
    kNoPath = 1001,          // open: the path is null
    kCannotOpen = 1002,      // open, write: the file cannot be opened; open: one is open already
    kOpened = 1003,          // open: done
    kWritten = 1007,         // write: done, see isWrittenWhole
    kSyntaxError = 1008,     // read: the text is malformed, nothing was added to the tree
    kRead = 1009,            // read: done
    kNotOpen = 1010,         // read: no file is open
    kReadUnknownType = 1011  // read: done, but the type is unknown
};

class AttributeFile : public AttributeNode {
public:
    // The types that a file can name are 0 to 5; 6 is none.
    static constexpr int kAnalysisProfile = 0;
    static constexpr int kUnknownType = 7;

    // An empty document: a node "FILE_TYPE" without a parent.
    explicit AttributeFile(int type);
    ~AttributeFile() override;  // closes what is open

    // Remembers `path` and opens the file for reading. Returns 1003; 1001 if `path` is null (then the
    // remembered path stays); 1002 if a file is open already (it stays open) or this one cannot be opened.
    int open(const char* path);

    // Reads the next expression of the open file, normally the only one, and adds its content to the tree.
    // Returns 1009, or 1011 if the type is unknown (also at the end of the file); 1010 if no file is open;
    // 1008 on a syntax error, with tree and type unchanged. The file stays open.
    int read();

    // Closes the file, if one is open.
    void close();

    // Writes the document, with all texts as quoted strings: to `path` if that is given and differs from the
    // remembered path (letter case ignored), else to the remembered path. Returns 1007, or 1002 if the file
    // cannot be opened. A write that fails later also returns 1007, and the partial file is removed. If the
    // remembered file would be written but is still open, it is only closed, with 1007. The type must be a
    // known one: of an unknown type the name is written empty.
    int write(const char* path);

    // Whether the last write() wrote the whole document, which its status does not say.
    bool isWrittenWhole() const { return isWrittenWhole_; }

    // The index of a type's name, ignoring letter case; 7 for any other text and for null.
    static int typeIndexOf(const char* name);

    int type() const { return type_; }
    const std::string& path() const { return path_; }
    bool isOpen() const { return input_ != nullptr; }

    // When the file was last changed, as known when it was opened; in seconds since 1970, at most the
    // largest value of 32 bits. 0x7FFFFFFF before a file was opened.
    std::int32_t modificationTime() const { return modificationTime_; }

private:
    struct Input;

    std::string path_;
    std::unique_ptr<Input> input_;  // null while no file is open
    std::int32_t type_;
    std::int32_t modificationTime_ = 0x7FFFFFFF;
    bool isWrittenWhole_ = false;
};

}  // namespace tvxconv::attrlist
