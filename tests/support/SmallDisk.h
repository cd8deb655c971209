// SmallDisk.h
//
// A disk in memory that has room for a number of files and folders.

#pragma once

#include <sys/mount.h>
#include <sys/statvfs.h>

#include <string>

#include "support/TestFolder.h"

namespace tests {

class SmallDisk {
public:
    SmallDisk() : isMounted_(mount("none", folder_.path().c_str(), "tmpfs", 0, "nr_inodes=100000") == 0) {}
    ~SmallDisk() {
        if (isMounted_) umount2(folder_.path().c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    // Who may not mount has no such disk.
    bool isThere() const { return isMounted_; }
    const std::string& path() const { return folder_.path(); }

    // Leaves room for `count` new files and folders. False when the system does not do so.
    bool leaveRoomFor(unsigned long count) const {
        struct statvfs disk {};
        if (statvfs(path().c_str(), &disk) != 0) return false;
        const std::string size = "nr_inodes=" + std::to_string(disk.f_files - disk.f_ffree + count);
        return mount("none", path().c_str(), "tmpfs", MS_REMOUNT, size.c_str()) == 0 &&
               statvfs(path().c_str(), &disk) == 0 && disk.f_ffree == count;
    }

private:
    TestFolder folder_;
    bool isMounted_;
};

}  // namespace tests
