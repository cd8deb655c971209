// faults_test.cpp
//
// Conversions of a Draftel project on a disk that fails at each of its uses in turn. What the project-file
// library and the design reader do is not among these.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "support/DraftelProject.h"
#include "support/FailingDisk.h"

namespace {

using namespace tests;

// A file of each kind that a conversion treats in its own way.
void addFiles(const DraftelProject& project) {
    project.write("amp.lib", "* models\n");
    project.write("amp-S1.net", ".INC \"amp-S1.par\"\n");
    project.write("amp-S1.opt", "sim \"amp-S1-tran.sim\" enabled\n");
    project.write("amp-S1.aap", "(FILE_TYPE \"Advanced Analysis Profile\" (Profiles (\"amp-S1-tran\" 1)))\n");
    project.write("amp-S1-tran.sim.cir", ".LIB \"amp.lib\"\n");
    project.write("amp-S1-tran.dat", "values\n");
}

Tree below(const Tree& tree, const std::string& prefix) {
    Tree result;
    for (const auto& [name, text] : tree) {
        if (name.starts_with(prefix)) result[name] = text;
    }
    return result;
}

// An analysis profile that cannot be read is left out without a word.
Tree withoutAnalysis(Tree tree) {
    tree.erase("new/amp-TevrixFiles/S1/S1.aap");
    return tree;
}

TEST(DraftelOnAFailingDisk, AConversionThatSucceedsIsWholeAndNoOldFileChanges) {
    Tree whole;
    {
        DraftelProject project;
        addFiles(project);
        ASSERT_EQ(project.converter.convert(2, project.destination), 0);
        whole = below(project.tree(), "new/");
    }
    for (const DiskCall call : kDiskCalls) {
        for (int number = 1;; ++number) {
            DraftelProject project;
            addFiles(project);
            const Tree before = below(project.tree(), "project/");
            int status = 0;
            bool failed = false;
            {
                const FailingDisk disk(call, number);
                status = project.converter.convert(2, project.destination);
                failed = disk.hasFailed();
            }
            EXPECT_EQ(below(project.tree(), "project/"), before) << call << " " << number;
            const Tree now = below(project.tree(), "new/");
            const bool isSilent = status == 0 && lastError() == LastError();
            if (isSilent && (call == DiskCall::open || call == DiskCall::read)) {
                EXPECT_TRUE(now == whole || now == withoutAnalysis(whole)) << call << " " << number;
            } else if (isSilent && call != DiskCall::status) {
                EXPECT_EQ(now, whole) << call << " " << number;
            }
            // No part of a file. Those that name others may name what is missing by its old name.
            for (const auto& [name, text] : now) {
                const bool isCopy =
                    name.ends_with(".dat") || name.ends_with(".lib") || name.ends_with(".dsn");
                EXPECT_EQ(whole.count(name), 1U) << name << " after " << call << " " << number;
                EXPECT_TRUE(text == whole[name] || (!isCopy && text != ""))
                    << name << " after " << call << " " << number;
            }
            if (!failed) {
                EXPECT_EQ(status, 0) << call << " " << number;
                break;
            }
        }
    }
}

// The bytes of every old file that a conversion has not rewritten are somewhere; what is rewritten is in its
// old place or its new one.
void expectNothingLost(const Tree& before, const Tree& now, const Tree& whole, const std::string& what) {
    const std::string root = "project/amp-TevrixFiles/";
    const std::map<std::string, std::string> newPlaces = {
        {"project/amp.lib", root + "amp.lib"},
        {"project/amp-S1.net", root + "S1/S1.net"},
        {"project/amp-S1.opt", root + "S1/S1.opt"},
        {"project/amp-S1-tran.sim", root + "S1/tran.sim"},
        {"project/amp-S1-tran.sim.cir", root + "S1/tran/tran.cir"},
        {"project/amp-S1-tran.dat", root + "S1/tran/tran.dat"}};
    for (const auto& [oldPlace, newPlace] : newPlaces) {
        const bool isOld = now.count(oldPlace) != 0 && now.at(oldPlace) == before.at(oldPlace);
        const bool isNew = now.count(newPlace) != 0 && now.at(newPlace) == whole.at(newPlace);
        EXPECT_TRUE(isOld || isNew) << oldPlace << " is lost: " << what;
        EXPECT_TRUE(now.count(newPlace) == 0 || isNew) << "a part of " << newPlace << ": " << what;
    }
    EXPECT_EQ(now.at("project/amp.dsn"), before.at("project/amp.dsn")) << what;
    EXPECT_EQ(now.count("project/amp.opj"), 1U) << what;
}

// A file whose copy fails is deleted all the same where its move is recorded, which is for the caller to look
// after. So the disk fails here where nothing is recorded yet, or where everything is.
TEST(DraftelOnAFailingDisk, AConversionInPlaceThatFailsLosesNothing) {
    Tree whole;
    {
        DraftelProject project;
        addFiles(project);
        ASSERT_EQ(project.converter.convert(1, std::string()), 0);
        whole = project.tree();
    }
    for (const DiskCall call : kDiskCalls) {
        for (int number = 1;; ++number) {
            DraftelProject project;
            addFiles(project);
            const Tree before = project.tree();
            int status = 0;
            bool failed = false;
            {
                const FailingDisk disk(call, number);
                status = project.converter.convert(1, std::string());
                failed = disk.hasFailed();
            }
            const std::string what = testing::PrintToString(number) + " " + testing::PrintToString(call);
            if (status != 0) {
                expectNothingLost(before, project.tree(), whole, what);
            } else if (lastError() == LastError() && call != DiskCall::status && call != DiskCall::open &&
                       call != DiskCall::read) {
                EXPECT_EQ(project.tree(), whole) << what;
            }
            if (!failed) {
                EXPECT_EQ(status, 0) << what;
                break;
            }
        }
    }
}

// From some use on nothing works any more, not even what would put things right.
TEST(DraftelOnAFailingDisk, AConversionThatNeverRecoversHarmsNoOldFile) {
    for (const DiskCall call : kDiskCalls) {
        for (int number = 1;; ++number) {
            DraftelProject project;
            addFiles(project);
            const Tree before = below(project.tree(), "project/");
            bool failed = false;
            {
                const FailingDisk disk(call, number, EROFS, FailingDisk::Failing::forGood);
                project.converter.convert(2, project.destination);
                failed = disk.hasFailed();
            }
            EXPECT_EQ(below(project.tree(), "project/"), before) << call << " " << number;
            if (!failed) break;
        }
    }
}

}  // namespace
