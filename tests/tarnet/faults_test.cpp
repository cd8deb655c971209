// faults_test.cpp
//
// Conversions of a Tarnet library, its marker and its report on a disk that fails at each of its uses in
// turn.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>
#include <vector>

#include "support/FailingDisk.h"
#include "support/TarnetLibrary.h"
#include "support/fileLimit.h"
#include "support/wobjProject.h"

namespace {

using namespace tests;

// A file of each kind that a conversion treats in its own way.
void addFiles(const TarnetLibrary& library) {
    library.writeOld("a.lib", "* models\n");
    library.writeOld("amp.net", ".INC \"x.par\"\nR1 1 0 1k\n");
    library.writeOld("amp.opt", "ext \"m.mdp\" 1\n");
    library.writeOld("m.mdp", "corners\n");
    library.writeOld("tran.dat", "data");
    library.writeOld("tran.sim", "DataFile= \"tran.dat\" \n+1 \"a.lib\" \n");
    library.writeOld("tran.sim.cir", ".LIB \"a.lib\"\n.INC \"x.net\"\n");
}

const std::string kView = "amp/tvx_sim_1/";

Tree newFilesOf(const Tree& tree) {
    Tree result;
    for (const auto& [name, text] : tree) {
        if (name.starts_with(kView)) result[name] = text;
    }
    return result;
}

Tree oldFilesOf(const Tree& tree) {
    Tree result;
    for (const auto& [name, text] : tree) {
        if (!name.starts_with(kView)) result[name] = text;
    }
    return result;
}

// The entry of a list whose file cannot be copied is left out without a word.
Tree withoutEntry(Tree view) {
    view[kView + "profiles/tran.sim"] = "DataFile= \"tran.dat\" \n";
    view.erase(kView + "profiles/tran/a.lib");
    return view;
}

class TarnetOnAFailingDisk : public testing::Test {
protected:
    TarnetOnAFailingDisk() {
        TarnetLibrary library;
        addFiles(library);
        EXPECT_EQ(library.converter.convert(0, std::string()), 0);
        whole_ = newFilesOf(library.tree());
        EXPECT_EQ(whole_.count(kView + "profiles/tran/a.lib"), 1U);
    }

    Tree whole_;
};

TEST_F(TarnetOnAFailingDisk, ACellThatSucceedsIsWholeAndNoOldFileChanges) {
    for (const DiskCall call : kDiskCalls) {
        for (int number = 1;; ++number) {
            TarnetLibrary library;
            addFiles(library);
            const Tree before = oldFilesOf(library.tree());
            int status = 0;
            bool failed = false;
            {
                const FailingDisk disk(call, number);
                status = library.converter.convert(0, std::string());
                failed = disk.hasFailed();
            }
            Tree now = library.tree();
            Tree old = oldFilesOf(now);
            old.erase("amp/tvx_sim_1/");
            EXPECT_EQ(old, before) << call << " " << number;
            now = newFilesOf(now);
            const bool isMarked = now.count(kView + "master.tag") != 0;
            // A folder that cannot be listed, and a marker that cannot be asked about, are passed over.
            const bool isPassedOver = call == DiskCall::list || call == DiskCall::status;
            if (status == 0 && lastError() == LastError() && !isPassedOver) {
                EXPECT_TRUE(now == whole_ || now == withoutEntry(whole_)) << call << " " << number;
            }
            EXPECT_TRUE(status == 0 || !isMarked) << call << " " << number;
            // No part of a file, whatever else is missing. Those that name others may name what is missing as
            // they did before.
            for (const auto& [name, text] : now) {
                const bool isCopy =
                    name.ends_with(".lib") || name.ends_with(".dat") || name.ends_with(".mdp");
                if (call == DiskCall::status && !isCopy) continue;
                EXPECT_EQ(whole_.count(name), 1U) << name << " after " << call << " " << number;
                EXPECT_TRUE(text == whole_[name] || text == withoutEntry(whole_)[name])
                    << name << " after " << call << " " << number;
            }
            if (!failed) {
                EXPECT_EQ(status, 0) << call << " " << number;
                break;
            }
        }
    }
}

TEST_F(TarnetOnAFailingDisk, AViewIsMarkedAsAWholeOrNotAtAll) {
    for (const DiskCall call : kDiskCalls) {
        for (int number = 1;; ++number) {
            TarnetLibrary library;
            library.prepareCell();
            int status = 0;
            bool failed = false;
            {
                const FailingDisk disk(call, number, ENOSPC);
                status = library.converter.writeViewMasterTag(library.view + "/master.tag");
                failed = disk.hasFailed();
            }
            EXPECT_EQ(library.existsNew("master.tag"), status == 0) << call << " " << number;
            if (status == 0) {
                EXPECT_EQ(library.readNew("master.tag"), "amp.net") << call << " " << number;
            } else {
                EXPECT_EQ(lastError(), openForWritingError(library.view + "/master.tag"));
            }
            if (!failed) break;
        }
    }
}

// A process that is ended at the first byte of the marker: no marker, so the cell is converted again.
TEST_F(TarnetOnAFailingDisk, AnEndWhileTheMarkerIsWrittenLeavesNone) {
    TarnetLibrary library;
    library.prepareCell();
    EXPECT_EQ(wobjtest::inChild([&] {
                  const rlimit none = {0, 0};
                  std::signal(SIGXFSZ, SIG_DFL);
                  if (setrlimit(RLIMIT_CORE, &none) != 0 || setrlimit(RLIMIT_FSIZE, &none) != 0) return 2;
                  return library.converter.writeViewMasterTag(library.view + "/master.tag") == 0 ? 0 : 1;
              }),
              -SIGXFSZ);
    EXPECT_FALSE(library.existsNew("master.tag"));
    tvxconv::TarnetProjectConverter again(library.dir.c_str());
    EXPECT_EQ(again.convert(0, std::string()), 0);
    EXPECT_EQ(library.readNew("master.tag"), "amp.net");
}

// The folder has no room for another file, and the file none for more bytes.
TEST_F(TarnetOnAFailingDisk, AReportThatCouldOnlyBeWrittenOverTheOldOneIsNot) {
    TarnetLibrary library;
    library.prepareCell();
    library.write("report.txt", "of last week");
    EXPECT_TRUE(succeedsWithFileLimit(10, [&] {
        const FailingDisk disk(DiskCall::open, 1, ENOSPC);
        library.converter.writeReport({"line"}, "report.txt");
        return disk.hasFailed();
    }));
    EXPECT_EQ(library.read("report.txt"), "of last week");
}

// Whether or not the status tells, last week's report is there as it was, or the new one as a whole.
TEST_F(TarnetOnAFailingDisk, AReportIsTheOldOneOrTheNewOne) {
    const std::string whole =
        "The conversion of the project was successful.\n\nThe new directory structure is as "
        "follows:\n\nline\n";
    for (const auto failing : {FailingDisk::Failing::once, FailingDisk::Failing::forGood}) {
        for (const DiskCall call : kDiskCalls) {
            for (int number = 1;; ++number) {
                TarnetLibrary library;
                library.prepareCell();
                library.write("report.txt", "of last week");
                bool failed = false;
                {
                    const FailingDisk disk(call, number, ENOSPC, failing);
                    library.converter.writeReport({"line"}, "report.txt");
                    failed = disk.hasFailed();
                }
                const std::string report = library.read("report.txt");
                EXPECT_TRUE(report == "of last week" || report == whole)
                    << call << " " << number << ": " << report;
                if (!failed) break;
            }
        }
    }
}

}  // namespace
