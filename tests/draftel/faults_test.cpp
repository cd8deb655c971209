// faults_test.cpp
//
// Conversions of a Draftel project on a disk that fails at each of its uses in turn. What the project-file
// library and the design reader do is not among these.

#include <gtest/gtest.h>

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
            // A file whose status cannot be had counts as missing, and so does an analysis profile that
            // cannot be opened.
            const bool maySeemMissing = call == DiskCall::status || call == DiskCall::open;
            if (status == 0 && lastError() == LastError() && !maySeemMissing) {
                EXPECT_EQ(below(project.tree(), "new/"), whole) << call << " " << number;
            }
            if (!failed) {
                EXPECT_EQ(status, 0) << call << " " << number;
                break;
            }
        }
    }
}

}  // namespace
