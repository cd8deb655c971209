// Every system call of a conversion is made to fail, one after the other. Whatever happens, the program
// ends in order, says what is wrong, touches no old file of a conversion into another folder, and loses
// none of a conversion in place.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>

#include "support/cliProject.h"
#include "support/foldersInMemory.h"
#include "support/systemCalls.h"

// A sanitizer makes calls of its own, and gives up without a word when they fail.
#if defined(__SANITIZE_ADDRESS__)
#define BUILT_WITH_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BUILT_WITH_SANITIZER 1
#endif
#endif
#ifndef BUILT_WITH_SANITIZER
#define BUILT_WITH_SANITIZER 0
#endif

namespace {

using namespace clitest;
namespace fs = std::filesystem;

// One system call and the error it ends with; "when=N" is added.
struct Fault {
    const char* call;
    const char* error;
    // Without this call a file is taken for missing, and a missing file is left out without a word.
    bool hidesFiles = false;
};

constexpr Fault kFaults[] = {
    {"openat", "EACCES"},
    {"newfstatat", "EACCES", true},
    {"access", "EACCES", true},
    {"read", "EIO"},
    {"write", "ENOSPC"},
    {"close", "EIO"},
    {"getdents64", "EIO"},
    {"copy_file_range", "EIO"},
    {"copy_file_range", "ENOSPC"},
    {"mkdir", "ENOSPC"},
    {"rename", "EACCES"},
    {"unlink", "EACCES"},
    {"rmdir", "EACCES"},
    {"link", "EMLINK"},
    {"chmod", "EPERM"},
    {"fsync", "EIO"},
    {"ftruncate", "EIO"},
    {"fstatfs", "EIO"},
    {"getresuid", "EFAULT"},
    {"readlink", "EACCES"},
    {"mmap", "ENOMEM"},
};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        lines.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return lines;
}

// Each line is one of the old or one of the new deck: a reference to a file that has not moved stays.
bool isDeck(const std::string& text) {
    const std::vector<std::string> lines = linesOf(text);
    const std::vector<std::string> oldLines = linesOf(kOldDeck);
    const std::vector<std::string> newLines = linesOf(kNewDeck);
    if (lines.size() != newLines.size()) return false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i] != oldLines[i] && lines[i] != newLines[i]) return false;
    }
    return true;
}

std::string lowerCased(std::string text) {
    for (char& byte : text) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    }
    return text;
}

// Every path of a whole project file names a file of the folder.
bool isProjectOf(const Tree& folder, const std::string& text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object() || json.size() != 2 || json["folders"].size() != 3) return false;
    std::set<std::string> files;
    for (const auto& [name, content] : folder) files.insert(lowerCased(name));
    bool right = true;
    std::function<void(const nlohmann::json&)> visit = [&](const nlohmann::json& value) {
        if (value.is_object() && value.contains("path")) {
            const std::string path = tests::replaced(value["path"], "\\", "/");
            right = right && path.starts_with("./") && files.count(lowerCased(path.substr(2))) != 0;
        }
        if (value.is_structured()) {
            for (const auto& element : value) visit(element);
        }
    };
    visit(json);
    return right;
}

// An optimizer file or analysis profile: a profile in it has its new name; or its old one, where the profile
// has not been found; or none, where its file has not.
bool namesProfiles(const std::string& text, const std::string& complete) {
    for (const char* name : {"\"tran1", "\"amp-SCHEMATIC1-tran1", "\""}) {
        if (text == tests::replaced(complete, "\"tran1", name)) return true;
    }
    return false;
}

// All but the analysis profile, which may stay behind without an error.
bool isWithoutAnalysis(const Tree& destination) {
    Tree rest = convertedDestination();
    rest.erase(newPlaces().at("amp-SCHEMATIC1.aap"));
    return destination == rest;
}

bool isAnalysisTold(const std::string& errors) {
    return errors.find("amp-SCHEMATIC1.aap\" is not in") != std::string::npos;
}

class Faults : public testing::Test {
protected:
    static void SetUpTestSuite() { inMemory_ = new tests::FoldersInMemory(); }
    static void TearDownTestSuite() {
        delete inMemory_;
        inMemory_ = nullptr;
    }

    void SetUp() override {
        if (BUILT_WITH_SANITIZER != 0) GTEST_SKIP() << "a sanitizer would meet the faults, too";
        if (!tests::canInject()) GTEST_SKIP() << "strace is missing or may not trace";
        startAnew();
    }

    void startAnew() const {
        fs::remove_all(folder_.path("amp"));
        fs::remove_all(folder_.path("new"));
        tests::writeTree(folder_.path("amp"), smallProject());
    }

    std::vector<std::string> intoDestination() const {
        return {kProgram, "draftel", folder_.path("amp/amp.opj"), "--to", folder_.path("new")};
    }
    std::vector<std::string> inPlace() const {
        return {kProgram, "draftel", folder_.path("amp/amp.opj"), "--in-place"};
    }

    // Runs `program` with each fault in turn, on a new start each, until the run makes no more such calls,
    // and has `check` look at what it left. `more` is "" or "+", for that call and all later ones.
    template <class Check>
    void forEachCall(const std::vector<Fault>& faults, const std::vector<std::string>& program,
                     const std::string& more, int leastFired, Check check) {
        std::vector<std::string> calls;
        for (const Fault& fault : faults) calls.emplace_back(fault.call);
        const std::vector<int> before = tests::callsBefore(folder_.path("amp"), calls, program);
        int fired = 0;
        for (std::size_t i = 0; i < faults.size(); ++i) {
            // Files are asked about more often than anything else is done.
            const int step = std::string(faults[i].call) == "newfstatat" ? 2 : 1;
            for (int when = before[i] + 1;; when += step) {
                startAnew();
                const std::string injection = std::string(faults[i].call) + ":error=" + faults[i].error +
                                              ":when=" + std::to_string(when) + more;
                const tests::InjectedRun run = tests::runInjected(injection, program);
                if (!run.fired) break;
                ++fired;
                ASSERT_TRUE(run.result.status == 0 || run.result.status == 1)
                    << injection << " ends with " << run.result.status << run.result.errors;
                check(faults[i], run.result, injection);
                if (HasFailure() && ++failures_ > 20) return;
            }
        }
        EXPECT_GE(fired, leastFired);
    }

    // What is in the destination of a conversion that has met a fault and says that it is done: all, or a
    // part, and an error is told.
    void expectDone(const Fault& fault, const ProgramResult& result, const std::string& what) const {
        const Tree now = tests::treeOf(folder_.path("new"));
        const Tree complete = convertedDestination();
        if (now == complete || result.errors.find("(error 10") != std::string::npos) return;
        if (isWithoutAnalysis(now) && isAnalysisTold(result.errors)) return;
        if (!fault.hidesFiles) {
            ADD_FAILURE() << what << " goes untold:\n" << difference(complete, now);
            return;
        }
        for (const auto& [name, text] : now) {
            if (name == "amp.opj") {
                // The entry of a file that is not carried keeps its path.
                Tree named = now;
                named["local/bench.txt"] = kBench;
                EXPECT_TRUE(isProjectOf(named, text)) << what << ": " << text;
            } else if (name.ends_with(".cir")) {
                EXPECT_TRUE(isDeck(text)) << what << ": " << text;
            } else if (name.ends_with(".opt") || name.ends_with(".aap")) {
                EXPECT_TRUE(namesProfiles(text, complete.at(name))) << what << ": " << text;
            } else if (complete.count(name) != 0) {
                EXPECT_EQ(text, complete.at(name)) << what << ": " << name;
            } else {
                // A file that did not go to the simulation root follows the entry that names it.
                EXPECT_TRUE(smallProject().count(name) != 0 && text == smallProject().at(name))
                    << what << ": " << name;
            }
        }
    }

    // Every old file is in its old place or kept, or its new form is in place.
    void expectNothingLost(const std::string& what) const {
        const Tree now = tests::treeOf(folder_.path("amp"));
        const Tree old = smallProject();
        const Tree complete = convertedInPlace();
        for (const auto& [oldName, newName] : newPlaces()) {
            bool found = now.count(oldName) != 0 && now.at(oldName) == old.at(oldName);
            if (!found && now.count(newName) != 0) {
                const std::string& text = now.at(newName);
                found = text == complete.at(newName) || (oldName == "amp.opj" && isProjectOf(now, text)) ||
                        (newName.ends_with(".cir") && isDeck(text)) ||
                        namesProfiles(text, complete.at(newName));
            }
            for (const auto& [name, text] : now) {
                found = found || (name.starts_with(std::string(kKeptFolder) + "/") &&
                                  name.ends_with("-" + oldName) && text == old.at(oldName));
            }
            EXPECT_TRUE(found) << what << ": " << oldName << " is lost";
        }
    }

    // `mayBeSilent`: what the program says may have met the fault itself.
    void checkInPlace(const std::map<std::string, std::string>& before, const Fault& fault,
                      const ProgramResult& result, const std::string& what, bool mayBeSilent = false) const {
        const std::string root = "amp-TevrixFiles";
        const auto now = pictureOf(folder_.path("amp"));
        const bool isKept = folder_.exists(std::string("amp/") + kKeptFolder);
        expectNothingLost(what);
        if (isKept && !mayBeSilent) {
            EXPECT_NE(result.errors.find(kKeptFolder), std::string::npos) << what << result.errors;
        }
        if (result.status == 1) {
            EXPECT_TRUE(mayBeSilent || result.errors != "") << what;
            // Unless it is said that something could not be put back, all is as it was.
            if (isKept || result.errors.find("put back") != std::string::npos || mayBeSilent) return;
            if (tests::treeOf(folder_.path("amp")) == convertedInPlace()) return;  // told too late
            EXPECT_EQ(difference(before, without(now, root)), "") << what << result.errors;
            return;
        }
        if (isKept || tests::treeOf(folder_.path("amp")) == convertedInPlace() || fault.hidesFiles) return;
        EXPECT_NE(result.errors.find("(error 10"), std::string::npos)
            << what << " goes untold:\n"
            << difference(convertedInPlace(), tests::treeOf(folder_.path("amp")));
    }

    TestFolder folder_;

private:
    static tests::FoldersInMemory* inMemory_;
    int failures_ = 0;
};

tests::FoldersInMemory* Faults::inMemory_ = nullptr;

const std::vector<Fault> kAllFaults(std::begin(kFaults), std::end(kFaults));

TEST_F(Faults, OneFailedCallOfAConversionIntoAnotherFolderIsToldAndHarmsNoOldFile) {
    const auto before = pictureOf(folder_.path("amp"));
    forEachCall(kAllFaults, intoDestination(), "", 300,
                [&](const Fault& fault, const ProgramResult& result, const std::string& what) {
                    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << what;
                    if (result.status == 0) {
                        expectDone(fault, result, what);
                    } else {
                        EXPECT_NE(result.errors, "") << what;
                    }
                });
}

TEST_F(Faults, OneFailedCallOfAConversionInPlaceLosesNothing) {
    const auto before = pictureOf(folder_.path("amp"));
    forEachCall(kAllFaults, inPlace(), "", 300,
                [&](const Fault& fault, const ProgramResult& result, const std::string& what) {
                    checkInPlace(before, fault, result, what);
                });
}

// From one call on all fail, also those that would put things right.
TEST_F(Faults, AConversionInPlaceThatMeetsALastingFaultLosesNothing) {
    const std::vector<Fault> lasting = {{"write", "ENOSPC"},  {"copy_file_range", "ENOSPC"},
                                        {"mkdir", "EROFS"},   {"rename", "EROFS"},
                                        {"unlink", "EROFS"},  {"link", "EROFS"},
                                        {"openat", "EMFILE"}, {"fsync", "EIO"},
                                        {"close", "EIO"},     {"read", "EIO"}};
    const auto before = pictureOf(folder_.path("amp"));
    forEachCall(lasting, inPlace(), "+", 150,
                [&](const Fault& fault, const ProgramResult& result, const std::string& what) {
                    checkInPlace(before, fault, result, what, std::string(fault.call) == "write");
                });
}

TEST_F(Faults, AConversionThatMeetsALastingFaultHarmsNoOldFile) {
    const std::vector<Fault> lasting = {{"write", "ENOSPC"},  {"copy_file_range", "ENOSPC"},
                                        {"mkdir", "EROFS"},   {"rename", "EROFS"},
                                        {"openat", "EMFILE"}, {"read", "EIO"}};
    const auto before = pictureOf(folder_.path("amp"));
    forEachCall(lasting, intoDestination(), "+", 60,
                [&](const Fault& fault, const ProgramResult& result, const std::string& what) {
                    EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << what;
                    if (result.status == 0) expectDone(fault, result, what);
                });
}

// The kernel may be unable to copy for the program, and a signal may cut a call short: neither is a fault.
TEST_F(Faults, WhatIsNoFaultIsDoneInAnotherWay) {
    std::vector<Fault> harmless;
    for (const char* error : {"EXDEV", "EINVAL", "ENOSYS", "EOPNOTSUPP", "EPERM", "EINTR"}) {
        harmless.push_back({"copy_file_range", error});
    }
    const auto before = pictureOf(folder_.path("amp"));
    const auto check = [&](const Fault&, const ProgramResult& result, const std::string& what) {
        EXPECT_EQ(result.status, 0) << what << result.errors;
        EXPECT_EQ(result.errors, "") << what;
        EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "") << what;
        EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << what;
    };
    forEachCall(harmless, intoDestination(), "", 20, check);
    harmless.pop_back();  // for ever interrupted is a fault
    forEachCall(harmless, intoDestination(), "+", 20, check);
    forEachCall({{"write", "EINTR"}}, intoDestination(), "", 5,
                [&](const Fault& fault, const ProgramResult& result, const std::string& what) {
                    // The last one prints the listing, and the streams of the language do not try again.
                    if (result.errors.find("standard output") == std::string::npos)
                        check(fault, result, what);
                });
}

TEST_F(Faults, AnInterruptedReadIsReadAgain) {
    forEachCall(
        {{"read", "EINTR"}}, intoDestination(), "", 30,
        [&](const Fault&, const ProgramResult& result, const std::string& what) {
            if (result.status == 1) {
                // Only the loader, which brings in the design reader, gives up then.
                EXPECT_NE(result.errors.find("(error 10111)"), std::string::npos) << what << result.errors;
                return;
            }
            const Tree now = tests::treeOf(folder_.path("new"));
            // The analysis profile is read by the streams of the language, which do not try again.
            if (isAnalysisTold(result.errors) && isWithoutAnalysis(now)) return;
            EXPECT_TRUE(result.errors.empty() || isAnalysisTold(result.errors)) << what << result.errors;
            EXPECT_EQ(difference(convertedDestination(), now), "") << what;
        });
}

TEST_F(Faults, ASignalEndsAConversionIntoAnotherFolderAndHarmsNoOldFile) {
    const auto before = pictureOf(folder_.path("amp"));
    int interrupted = 0;
    for (const char* call : {"openat", "mkdir", "copy_file_range", "write", "rename", "newfstatat"}) {
        const bool isFrequent = std::string(call) == "openat" || std::string(call) == "newfstatat";
        for (int when = 1;; when += isFrequent ? 7 : 1) {
            startAnew();
            const std::string injection = std::string(call) + ":signal=SIGINT:when=" + std::to_string(when);
            const tests::InjectedRun run = tests::runInjected(injection, intoDestination());
            if (!run.fired) break;
            EXPECT_EQ(difference(before, pictureOf(folder_.path("amp"))), "") << injection;
            if (run.result.status == 0) {
                EXPECT_EQ(difference(convertedDestination(), tests::treeOf(folder_.path("new"))), "")
                    << injection;
            } else if (run.result.status == 1) {
                ++interrupted;
                EXPECT_NE(run.result.errors.find("interrupted"), std::string::npos)
                    << injection << run.result.errors;
            } else {
                // Before there is anything to do in order, the signal ends the program like any other.
                EXPECT_EQ(run.result.status, 128 + SIGINT) << injection;
                EXPECT_FALSE(folder_.exists("new")) << injection;
            }
        }
    }
    EXPECT_GE(interrupted, 15);
}

}  // namespace
