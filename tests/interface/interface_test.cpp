// interface_test.cpp
//
// What a host sees: its string types, the two factories, the order of the virtual functions, what each
// operation hands on, what the shared library exports, and what becomes of a conversion without memory.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "errors/errors.h"
#include "interface/IDraftelProjectConverter.h"
#include "interface/ITarnetProjectConverter.h"
#include "support/DraftelProject.h"
#include "support/TarnetLibrary.h"
#include "support/TestFolder.h"
#include "support/builtFiles.h"
#include "support/wobjAllocations.h"

namespace {

using std::string;
using tests::DraftelProject;

using Lines = std::vector<string>;
using DraftelPointer = std::unique_ptr<IDraftelProjectConverter>;
using TarnetPointer = std::unique_ptr<ITarnetProjectConverter>;

CString hostString(const string& text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

string textOf(const CString& text) {
    return string(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

Lines linesOf(const CStringArray& array) {
    Lines lines;
    for (int i = 0; i < array.GetSize(); ++i) lines.push_back(textOf(array.GetAt(i)));
    return lines;
}

CStringArray arrayOf(const Lines& lines) {
    CStringArray array;
    for (const string& line : lines) array.Add(hostString(line));
    return array;
}

DraftelPointer converterFor(const string& projectPath) {
    const CString path = hostString(projectPath);
    return DraftelPointer(createDraftelProjectConverter(&path));
}

// --- the host's strings ---

TEST(HostString, HoldsCountedCharacters) {
    const struct {
        CString text;
        string characters;
    } cases[] = {
        {CString(), ""},
        {CString(""), ""},
        {CString(nullptr), ""},
        {CString("amp"), "amp"},
        {CString("amp.opj", 3), "amp"},
        {CString("amp", 0), ""},
        {CString("a\0b", 3), string("a\0b", 3)},
        {CString("\xE4\xFF"), "\xE4\xFF"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.text.GetLength(), static_cast<int>(c.characters.size())) << c.characters;
        EXPECT_EQ(c.text.IsEmpty(), c.characters.empty()) << c.characters;
        EXPECT_EQ(textOf(c.text), c.characters);
        EXPECT_EQ(c.text.GetString()[c.text.GetLength()], '\0') << c.characters;
        const char* converted = c.text;
        EXPECT_EQ(converted, c.text.GetString()) << c.characters;
    }
}

TEST(HostString, IsCopiedAssignedAndCompared) {
    CString first("one");
    const CString copy(first);
    first = "two";
    EXPECT_EQ(textOf(copy), "one");
    EXPECT_EQ(textOf(first), "two");
    first = copy;
    EXPECT_TRUE(first == copy);
    EXPECT_TRUE(first == "one");
    EXPECT_TRUE("one" == first);
    EXPECT_TRUE(first != "One");
    EXPECT_FALSE(first == CString("on"));
    EXPECT_FALSE(CString("a\0b", 3) == CString("a\0c", 3));
    EXPECT_FALSE(CString("a\0b", 3) == CString("a"));
    const CString& same = first;
    first = same;
    EXPECT_EQ(textOf(first), "one");
}

TEST(HostStringArray, GrowsAsItIsFilled) {
    CStringArray array;
    EXPECT_EQ(array.GetSize(), 0);
    EXPECT_EQ(array.Add("a"), 0);
    EXPECT_EQ(array.Add("b"), 1);
    array.SetAtGrow(array.GetSize(), "c");
    EXPECT_EQ(linesOf(array), (Lines{"a", "b", "c"}));
    array.SetAtGrow(1, "B");
    array.SetAtGrow(5, "f");
    EXPECT_EQ(linesOf(array), (Lines{"a", "B", "c", "", "", "f"}));
    array[3] = "d";
    const CStringArray& constant = array;
    EXPECT_EQ(textOf(constant[3]), "d");
    EXPECT_EQ(textOf(array.GetAt(5)), "f");
    array.RemoveAll();
    EXPECT_EQ(array.GetSize(), 0);
    array.SetAtGrow(0, "again");
    EXPECT_EQ(linesOf(array), Lines{"again"});
}

TEST(HostStringArray, TakesOneOfItsOwnElements) {
    CStringArray array;
    array.Add(hostString(string(100, 'x')));
    Lines expected = {string(100, 'x')};
    for (int i = 0; i < 40; ++i) {
        array.SetAtGrow(array.GetSize(), array[0]);
        array.Add(array[0]);
        array.SetAtGrow(0, array[0]);
        expected.insert(expected.end(), 2, string(100, 'x'));
    }
    EXPECT_EQ(linesOf(array), expected);
}

// --- classes and slots ---

static_assert(std::is_abstract_v<IDraftelProjectConverter> && std::is_abstract_v<ITarnetProjectConverter>);
static_assert(std::has_virtual_destructor_v<IDraftelProjectConverter>);
static_assert(std::has_virtual_destructor_v<ITarnetProjectConverter>);
static_assert(sizeof(IDraftelProjectConverter) == sizeof(void*), "no data members");
static_assert(sizeof(ITarnetProjectConverter) == sizeof(void*), "no data members");

// Tells which of its operations was called last and hands its arguments out.
struct DraftelRecorder : IDraftelProjectConverter {
    int convert(int mode, const CString& path) override {
        called = "convert " + std::to_string(mode) + " " + textOf(path);
        return 101;
    }
    int getNewStructure(CStringArray& lines) override {
        called = "getNewStructure";
        lines.Add("line");
        return 102;
    }
    int writeReport(const CStringArray& lines, const CString& path) override {
        called = "writeReport " + std::to_string(lines.GetSize()) + " " + textOf(path);
        return 103;
    }
    int getNewProjectPath(CString& path) override {
        called = "getNewProjectPath";
        path = "new path";
        return 104;
    }
    int getLastErrorCode(int& code) override {
        called = "getLastErrorCode";
        code = 77;
        return 105;
    }
    int getLastErrorMessage(CString& message) override {
        called = "getLastErrorMessage";
        message = "a message";
        return 106;
    }

    string called;
};

struct TarnetRecorder : ITarnetProjectConverter {
    int convert(int mode, const string& path) override {
        called = "convert " + std::to_string(mode) + " " + path;
        return 101;
    }
    int getLibraryParentName(string& name) override {
        called = "getLibraryParentName";
        name = "parent";
        return 102;
    }
    int getNewStructure(Lines& lines) override {
        called = "getNewStructure";
        lines.emplace_back("line");
        return 103;
    }
    int writeReport(const Lines& lines, const string& name) override {
        called = "writeReport " + std::to_string(lines.size()) + " " + name;
        return 104;
    }
    int getLastErrorCode(int& code) override {
        called = "getLastErrorCode";
        code = 77;
        return 105;
    }
    int getLastErrorMessage(string& message) override {
        called = "getLastErrorMessage";
        message = "a message";
        return 106;
    }

    string called;
};

#if defined(__x86_64__) && defined(__linux__)

// Calls the function in a slot as a host does that knows nothing but the order. The destructor, slot 0,
// has two entries in the table, one that destroys and one that deletes as well.
template <class... Arguments>
int callSlot(void* object, std::size_t slot, Arguments... arguments) {
    void** const table = *static_cast<void***>(object);
    const auto function = reinterpret_cast<int (*)(void*, Arguments...)>(table[slot + 1]);
    return function(object, arguments...);
}

void deleteBySlot(void* object) {
    void** const table = *static_cast<void***>(object);
    reinterpret_cast<void (*)(void*)>(table[1])(object);
}

TEST(Slots, OfTheDraftelInterfaceHaveTheOrderThatHostsCall) {
    DraftelRecorder recorder;
    IDraftelProjectConverter* object = &recorder;
    const CString path("a path");
    const CStringArray lines = arrayOf({"1", "2"});
    CStringArray listing;
    CString text;
    int code = 0;
    EXPECT_EQ((callSlot<int, const CString&>(object, 1, 2, path)), 101);
    EXPECT_EQ(recorder.called, "convert 2 a path");
    EXPECT_EQ((callSlot<CStringArray&>(object, 2, listing)), 102);
    EXPECT_EQ(recorder.called, "getNewStructure");
    EXPECT_EQ(listing.GetSize(), 1);
    EXPECT_EQ((callSlot<const CStringArray&, const CString&>(object, 3, lines, path)), 103);
    EXPECT_EQ(recorder.called, "writeReport 2 a path");
    EXPECT_EQ((callSlot<CString&>(object, 4, text)), 104);
    EXPECT_EQ(recorder.called, "getNewProjectPath");
    EXPECT_TRUE(text == "new path");
    EXPECT_EQ((callSlot<int&>(object, 5, code)), 105);
    EXPECT_EQ(recorder.called, "getLastErrorCode");
    EXPECT_EQ(code, 77);
    EXPECT_EQ((callSlot<CString&>(object, 6, text)), 106);
    EXPECT_EQ(recorder.called, "getLastErrorMessage");
    EXPECT_TRUE(text == "a message");
}

TEST(Slots, OfTheTarnetInterfaceHaveTheirOwnOrder) {
    TarnetRecorder recorder;
    ITarnetProjectConverter* object = &recorder;
    const string path = "a path";
    const Lines lines = {"1", "2"};
    Lines listing;
    string text;
    int code = 0;
    EXPECT_EQ((callSlot<int, const string&>(object, 1, 1, path)), 101);
    EXPECT_EQ(recorder.called, "convert 1 a path");
    EXPECT_EQ((callSlot<string&>(object, 2, text)), 102);
    EXPECT_EQ(recorder.called, "getLibraryParentName");
    EXPECT_EQ(text, "parent");
    EXPECT_EQ((callSlot<Lines&>(object, 3, listing)), 103);
    EXPECT_EQ(recorder.called, "getNewStructure");
    EXPECT_EQ(listing.size(), 1U);
    EXPECT_EQ((callSlot<const Lines&, const string&>(object, 4, lines, path)), 104);
    EXPECT_EQ(recorder.called, "writeReport 2 a path");
    EXPECT_EQ((callSlot<int&>(object, 5, code)), 105);
    EXPECT_EQ(recorder.called, "getLastErrorCode");
    EXPECT_EQ(code, 77);
    EXPECT_EQ((callSlot<string&>(object, 6, text)), 106);
    EXPECT_EQ(recorder.called, "getLastErrorMessage");
    EXPECT_EQ(text, "a message");
}

// The whole of a conversion through the table of an object that a factory has made.
TEST(Slots, OfAConverterServeAHostThatKnowsNothingElse) {
    const DraftelProject project;
    const CString path = hostString(project.path("amp.opj"));
    void* object = createDraftelProjectConverter(&path);
    ASSERT_NE(object, nullptr);
    const CString destination = hostString(project.destination);
    CString newPath;
    CStringArray listing;
    EXPECT_EQ((callSlot<int, const CString&>(object, 1, 2, destination)), 0);
    EXPECT_EQ((callSlot<CStringArray&>(object, 2, listing)), 0);
    EXPECT_EQ(linesOf(listing), (Lines{project.destination, "    amp.opj", "    amp.dsn", project.root,
                                       project.schematicFolder, "    tran.sim", project.profileFolder}));
    EXPECT_EQ((callSlot<const CStringArray&, const CString&>(object, 3, listing, CString("report.txt"))), 0);
    EXPECT_TRUE(project.existsNew("report.txt"));
    EXPECT_EQ((callSlot<CString&>(object, 4, newPath)), 0);
    EXPECT_EQ(textOf(newPath), project.newPath("amp.opj"));
    int code = 77;
    EXPECT_EQ((callSlot<int&>(object, 5, code)), 0);
    EXPECT_EQ(code, 0);
    CString message("unset");
    EXPECT_EQ((callSlot<CString&>(object, 6, message)), 0);
    EXPECT_TRUE(message == "unset");
    deleteBySlot(object);
}

TEST(Slots, OfATarnetConverterServeAHostThatKnowsNothingElse) {
    const tests::TarnetLibrary library;
    void* object = createTarnetProjectConverter(library.dir.c_str());
    ASSERT_NE(object, nullptr);
    string text = "left over";
    Lines listing = {"before"};
    EXPECT_EQ((callSlot<int, const string&>(object, 1, 0, string())), 0);
    EXPECT_EQ((callSlot<string&>(object, 2, text)), 0);
    EXPECT_EQ(text, "site");
    EXPECT_EQ((callSlot<Lines&>(object, 3, listing)), 0);
    EXPECT_EQ(listing, (Lines{"before", "", library.cfg, "    master.tag", library.view, "    master.tag"}));
    EXPECT_EQ((callSlot<const Lines&, const string&>(object, 4, Lines{"line"}, "report.txt")), 0);
    EXPECT_EQ(library.read("report.txt"),
              "The conversion of the project was successful.\n\n"
              "The new directory structure is as follows:\n\nline\n");
    int code = 77;
    EXPECT_EQ((callSlot<int&>(object, 5, code)), 0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ((callSlot<string&>(object, 6, text)), 0);
    EXPECT_EQ(text, "");
    deleteBySlot(object);
}

TEST(Slots, OfTheLoadedLibraryAreTheSame) {
    void* library = dlopen(tests::kLibraryFile, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto makeDraftel = reinterpret_cast<decltype(&createDraftelProjectConverter)>(
        dlsym(library, "createDraftelProjectConverter"));
    const auto makeTarnet = reinterpret_cast<decltype(&createTarnetProjectConverter)>(
        dlsym(library, "createTarnetProjectConverter"));
    ASSERT_NE(makeDraftel, nullptr);
    ASSERT_NE(makeTarnet, nullptr);

    const tests::TestFolder folder;
    const CString project = hostString(folder.path("amp.opj"));
    void* draftel = makeDraftel(&project);
    ASSERT_NE(draftel, nullptr);
    CString text("unset");
    CStringArray listing;
    EXPECT_EQ((callSlot<int, const CString&>(draftel, 1, 3, project)), 0) << "a mode that does nothing";
    EXPECT_EQ((callSlot<CStringArray&>(draftel, 2, listing)), 1);
    EXPECT_EQ(listing.GetSize(), 0);
    EXPECT_EQ((callSlot<CString&>(draftel, 4, text)), 1);
    EXPECT_TRUE(text == "unset");
    int code = 77;
    EXPECT_EQ((callSlot<int&>(draftel, 5, code)), 0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ((callSlot<int, const CString&>(draftel, 1, 2, hostString(folder.path("none/new")))), 10102);
    EXPECT_EQ((callSlot<int&>(draftel, 5, code)), 0);
    EXPECT_EQ(code, 10102);
    EXPECT_EQ((callSlot<CString&>(draftel, 6, text)), 0);
    EXPECT_EQ(textOf(text), tests::createDirectoryError(folder.path("none/new")).message);
    deleteBySlot(draftel);

    void* tarnet = makeTarnet(folder.path("library").c_str());
    ASSERT_NE(tarnet, nullptr);
    string name = "left over";
    Lines lines = {"before"};
    EXPECT_EQ((callSlot<string&>(tarnet, 2, name)), 1);
    EXPECT_EQ(name, "");
    EXPECT_EQ((callSlot<Lines&>(tarnet, 3, lines)), 1);
    EXPECT_EQ(lines, Lines{"before"});
    EXPECT_EQ((callSlot<int&>(tarnet, 5, code)), 0);
    EXPECT_EQ(code, 10102) << "one store for both kinds";
    EXPECT_EQ((callSlot<string&>(tarnet, 6, name)), 0);
    EXPECT_EQ(name, tests::createDirectoryError(folder.path("none/new")).message);
    EXPECT_EQ((callSlot<int, const string&>(tarnet, 1, 0, string())), 10103);
    EXPECT_EQ((callSlot<string&>(tarnet, 6, name)), 0);
    EXPECT_EQ(name, tests::openDirectoryError(folder.path("library")).message);
    EXPECT_EQ((callSlot<string&>(tarnet, 2, name)), 0);
    EXPECT_EQ(name, folder.path().substr(folder.path().rfind('/') + 1));
    EXPECT_EQ((callSlot<Lines&>(tarnet, 3, lines)), 0);
    EXPECT_EQ(lines, Lines{"before"}) << "a library that cannot be opened has no lines";
    const Lines report = {"line"};
    EXPECT_EQ((callSlot<const Lines&, const string&>(tarnet, 4, report, "report.txt")), 10106);
    EXPECT_EQ((callSlot<int&>(tarnet, 5, code)), 0);
    EXPECT_EQ(code, 10106);
    deleteBySlot(tarnet);
}

#endif

// --- the shared library ---

TEST(SharedLibrary, ExportsTheFactoriesAndTheInterfaceClassesAndNothingElse) {
    const tests::ProgramResult nm =
        tests::runProgram({"nm", "-D", "--defined-only", "--format=posix", tests::kLibraryFile});
    if (nm.status == 127) GTEST_SKIP() << "there is no nm here";
    ASSERT_EQ(nm.status, 0) << nm.errors;
    Lines names;
    std::istringstream output(nm.output);
    for (string line; std::getline(output, line);) {
        // No object is ever just an interface, so some compilers leave its own kind of constructor out.
        if (line.find("ConverterC1E") == string::npos) names.push_back(line.substr(0, line.find(' ')));
    }
    std::sort(names.begin(), names.end());
    Lines expected = {"createDraftelProjectConverter", "createTarnetProjectConverter"};
    for (const string& type : {string("24IDraftelProjectConverter"), string("23ITarnetProjectConverter")}) {
        // Construction, copying, assignment, the three forms of the destructor; the class for the compiler.
        for (const char* member : {"C2Ev", "C2ERKS_", "aSERKS_", "D0Ev", "D1Ev", "D2Ev"}) {
            expected.push_back("_ZN" + type + member);
        }
        for (const char* kind : {"_ZTV", "_ZTI", "_ZTS"}) expected.push_back(kind + type);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(names, expected);
}

// --- the Draftel interface ---

class DraftelInterface : public testing::Test {
protected:
    // The converter of the project, converted.
    DraftelPointer converted() const {
        DraftelPointer converter = converterFor(project.path("amp.opj"));
        EXPECT_EQ(converter->convert(2, hostString(project.destination)), 0);
        return converter;
    }

    Lines listing() const {
        return {project.destination,     "    amp.opj",  "    amp.dsn",        project.root,
                project.schematicFolder, "    tran.sim", project.profileFolder};
    }

    const DraftelProject project;
};

constexpr const char* kReportHead =
    "The conversion of the project was successful.\n\nThe new directory structure is as follows:\n\n";

TEST_F(DraftelInterface, HasNothingToReturnBeforeAConversion) {
    const DraftelPointer converter = converterFor(project.path("amp.opj"));
    CStringArray lines = arrayOf({"before"});
    EXPECT_EQ(converter->getNewStructure(lines), 1);
    EXPECT_EQ(linesOf(lines), Lines{"before"});
    CString path("before");
    EXPECT_EQ(converter->getNewProjectPath(path), 1);
    EXPECT_TRUE(path == "before");
    EXPECT_EQ(tests::lastError(), tests::LastError());
}

TEST_F(DraftelInterface, HandsModeAndPathOn) {
    const tests::Tree before = project.tree();
    for (const int mode : {0, 3, -1, 2147483647}) {
        const DraftelPointer converter = converterFor(project.path("amp.opj"));
        EXPECT_EQ(converter->convert(mode, hostString(project.destination)), 0) << mode;
        EXPECT_EQ(project.tree(), before) << mode;
        CString path("before");
        EXPECT_EQ(converter->getNewProjectPath(path), 1) << mode;
    }
    const DraftelPointer converter = converted();
    CString path("before");
    EXPECT_EQ(converter->getNewProjectPath(path), 0);
    EXPECT_EQ(textOf(path), project.newPath("amp.opj"));
}

TEST_F(DraftelInterface, ConvertsInPlaceWithoutAPath) {
    const DraftelPointer converter = converterFor(project.path("amp.opj"));
    EXPECT_EQ(converter->convert(1, CString()), 0);
    CString path;
    EXPECT_EQ(converter->getNewProjectPath(path), 0);
    EXPECT_EQ(textOf(path), project.path("amp.opj"));
    CStringArray lines;
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    EXPECT_EQ(linesOf(lines), (Lines{project.dir, "    amp.opj", "    amp.dsn",
                                     project.path("amp-TevrixFiles"), project.path("amp-TevrixFiles/S1"),
                                     "    tran.sim", project.path("amp-TevrixFiles/S1/tran")}));
}

TEST_F(DraftelInterface, TakesPathsWithBackslashes) {
    const DraftelPointer converter = converterFor(tests::withBackslashes(project.path("amp.opj")));
    EXPECT_EQ(converter->convert(2, hostString(tests::withBackslashes(project.destination))), 0);
    CStringArray lines;
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    EXPECT_EQ(linesOf(lines), listing());
}

TEST_F(DraftelInterface, AppendsTheListingBehindTheLinesThatAreThere) {
    const DraftelPointer converter = converted();
    CStringArray lines = arrayOf({"first", ""});
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    Lines expected = listing();
    expected.insert(expected.begin(), {"first", ""});
    EXPECT_EQ(linesOf(lines), expected);
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    const Lines again = listing();
    expected.insert(expected.end(), again.begin(), again.end());
    EXPECT_EQ(linesOf(lines), expected);
}

TEST_F(DraftelInterface, LeavesEmptyLinesOutOfTheReport) {
    const DraftelPointer converter = converted();
    const struct {
        Lines lines;
        string written;
    } cases[] = {
        {{}, ""},
        {{"", ""}, ""},
        {{"", "a", "", "    b", ""}, "a\n    b\n"},
        {{"%s", "a\nb", " "}, "%s\na\nb\n \n"},
        {{string("a\0b", 3)}, string("a\0b\n", 4)},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(converter->writeReport(arrayOf(c.lines), "report.txt"), 0);
        EXPECT_EQ(project.readNew("report.txt"), kReportHead + c.written);
    }
}

TEST_F(DraftelInterface, PutsTheReportIntoTheDestination) {
    const DraftelPointer converter = converted();
    EXPECT_EQ(converter->writeReport(arrayOf({"line"}), "amp-TevrixFiles/report.txt"), 0);
    EXPECT_EQ(project.readNew("amp-TevrixFiles/report.txt"), string(kReportHead) + "line\n");
    EXPECT_EQ(converter->writeReport(arrayOf({"line"}), "none/report.txt"), 10106);
    EXPECT_EQ(tests::lastError(), tests::openForWritingError(project.newPath("none/report.txt")));
}

TEST_F(DraftelInterface, HandsOutCodeAndMessageOfAFailure) {
    const string missing = project.path("none.opj");
    const DraftelPointer converter = converterFor(missing);
    EXPECT_EQ(converter->convert(2, hostString(project.destination)), 10109);
    int code = 77;
    EXPECT_EQ(converter->getLastErrorCode(code), 0);
    EXPECT_EQ(code, 10109);
    CString message("before");
    EXPECT_EQ(converter->getLastErrorMessage(message), 0);
    EXPECT_EQ(textOf(message), tests::readFileError(missing).message);
    CString path("before");
    EXPECT_EQ(converter->getNewProjectPath(path), 1);
    EXPECT_TRUE(path == "before");
}

TEST_F(DraftelInterface, ReturnsZeroForTheLastErrorWhateverItIs) {
    const DraftelPointer converter = converterFor(project.path("amp.opj"));
    for (const int stored : {0, 1, -1, 10101, 10112, 2147483647}) {
        tvxconv::setLastErrorCode(stored);
        int code = 77;
        EXPECT_EQ(converter->getLastErrorCode(code), 0) << stored;
        EXPECT_EQ(code, stored);
    }
}

TEST_F(DraftelInterface, LeavesTheMessageAloneWhereThereIsNone) {
    const DraftelPointer converter = converterFor(project.path("amp.opj"));
    CString message("before");
    EXPECT_EQ(converter->getLastErrorMessage(message), 0);
    EXPECT_TRUE(message == "before");
    tvxconv::setLastErrorMessage("a message");
    EXPECT_EQ(converter->getLastErrorMessage(message), 0);
    EXPECT_TRUE(message == "a message");
    tvxconv::setLastErrorMessage("");
    EXPECT_EQ(converter->getLastErrorMessage(message), 0);
    EXPECT_TRUE(message == "a message");
}

TEST_F(DraftelInterface, ServesObjectsWithoutAProjectPath) {
    const CString empty;
    for (const CString* path : {static_cast<const CString*>(nullptr), &empty}) {
        const DraftelPointer converter(createDraftelProjectConverter(path));
        ASSERT_NE(converter, nullptr);
        EXPECT_EQ(converter->convert(2, hostString(project.destination)), 1);
        EXPECT_EQ(converter->convert(1, CString()), 1);
        CString newPath("before");
        EXPECT_EQ(converter->getNewProjectPath(newPath), 1);
        EXPECT_EQ(tests::lastError(), tests::LastError());
        EXPECT_FALSE(project.folder.exists("new"));
    }
}

TEST_F(DraftelInterface, RefusesADestinationThatIsNoPath) {
    const DraftelPointer converter = converterFor(project.path("amp.opj"));
    EXPECT_EQ(converter->convert(2, hostString(project.destination + string("\0x", 2))), 10102);
    EXPECT_EQ(tests::lastError(), tests::createDirectoryError(project.destination));
    EXPECT_FALSE(project.folder.exists("new"));
}

// --- the Tarnet interface ---

TEST(TarnetInterface, HasNothingToReturnBeforeAConversion) {
    const tests::TestFolder folder;
    tests::forgetLastError();
    for (const string& path : {folder.path("library"), string()}) {
        const TarnetPointer converter(createTarnetProjectConverter(path.empty() ? nullptr : path.c_str()));
        ASSERT_NE(converter, nullptr);
        string name = "left over";
        EXPECT_EQ(converter->getLibraryParentName(name), 1);
        EXPECT_EQ(name, "");
        Lines lines = {"before"};
        EXPECT_EQ(converter->getNewStructure(lines), 1);
        EXPECT_EQ(lines, Lines{"before"});
        EXPECT_EQ(tests::lastError(), tests::LastError());
    }
    EXPECT_EQ(tests::treeOf(folder.path()), tests::Tree{});
}

TEST(TarnetInterface, HandsOutTheLastErrorAsItIs) {
    const TarnetPointer converter(createTarnetProjectConverter("/library"));
    for (const int stored : {0, 10103, -1}) {
        tvxconv::setLastErrorCode(stored);
        int code = 77;
        EXPECT_EQ(converter->getLastErrorCode(code), 0);
        EXPECT_EQ(code, stored);
    }
    for (const char* stored : {"a message", ""}) {
        tvxconv::setLastErrorMessage(stored);
        string message = "left over";
        EXPECT_EQ(converter->getLastErrorMessage(message), 0);
        EXPECT_EQ(message, stored);
    }
}

TEST(TarnetInterface, HandsOutWhatAConversionHasMade) {
    const tests::TarnetLibrary library;
    const TarnetPointer converter(createTarnetProjectConverter(library.dir.c_str()));
    EXPECT_EQ(converter->convert(2, "/elsewhere"), 0);
    string name = "left over";
    EXPECT_EQ(converter->getLibraryParentName(name), 0);
    EXPECT_EQ(name, "site");
    Lines lines = {"before"};
    EXPECT_EQ(converter->getNewStructure(lines), 0);
    EXPECT_EQ(lines, (Lines{"before", "", library.cfg, "    master.tag", library.view, "    master.tag"}));
    // Lines are handed on as they are, empty ones too.
    EXPECT_EQ(converter->writeReport({"", "a", ""}, "report.txt"), 0);
    EXPECT_EQ(library.read("report.txt"), string(kReportHead) + "\na\n\n");
    EXPECT_EQ(tests::lastError(), tests::LastError());
}

TEST(TarnetInterface, HandsOutCodeAndMessageOfAFailure) {
    const tests::TarnetLibrary library;
    const string missing = library.path("none");
    const TarnetPointer converter(createTarnetProjectConverter(missing.c_str()));
    EXPECT_EQ(converter->convert(0, ""), 10103);
    int code = 77;
    EXPECT_EQ(converter->getLastErrorCode(code), 0);
    EXPECT_EQ(code, 10103);
    string message = "left over";
    EXPECT_EQ(converter->getLastErrorMessage(message), 0);
    EXPECT_EQ(message, tests::openDirectoryError(missing).message);
}

// --- without memory ---

std::size_t openDescriptors() {
    if (tests::kOnWindows) return 0;  // which has no list of them
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// Runs `operation` with its n-th allocation and all later ones failing. Whether one failed.
template <class Operation>
bool meetsLackOfMemory(std::size_t n, int& status, Operation operation) {
    wobjtest::failAllocation(n, wobjtest::Failing::forGood);
    try {
        status = operation();
    } catch (...) {
        status = -2;  // an exception has left the library
    }
    return wobjtest::endFailing();
}

// The same; the status of an operation that meets it has to be 1.
template <class Operation>
bool failsWithoutMemory(std::size_t n, Operation operation) {
    int status = -1;
    const bool failed = meetsLackOfMemory(n, status, operation);
    EXPECT_EQ(status, failed ? 1 : 0) << "at allocation " << n;
    return failed;
}

TEST(WithoutMemory, FactoriesReturnNull) {
    const CString path("/a/path/that/is/too/long/to/be/kept/in/place/amp.opj");
    for (std::size_t n = 1; n <= 2; ++n) {
        wobjtest::failAllocation(n, wobjtest::Failing::forGood);
        IDraftelProjectConverter* draftel = createDraftelProjectConverter(&path);
        EXPECT_TRUE(wobjtest::endFailing());
        EXPECT_EQ(draftel, nullptr);
        wobjtest::failAllocation(n, wobjtest::Failing::forGood);
        ITarnetProjectConverter* tarnet = createTarnetProjectConverter(path.GetString());
        EXPECT_TRUE(wobjtest::endFailing());
        EXPECT_EQ(tarnet, nullptr);
    }
}

// Calls `round` with the number of the first allocation to fail, as long as it returns true: the early
// ones one by one, the later ones in small steps; in larger ones where each round takes its time.
template <class Round>
void forEachAllocation(Round round) {
    constexpr std::size_t kParts = tests::kOnWindows ? 20 : 100;
    std::size_t n = 1;
    while (round(n) && !testing::Test::HasFailure()) n += n < 3 * kParts ? 1 : n / kParts;
}

void fillProject(const DraftelProject& project) {
    project.write("amp.lib", "* models\n");
    project.write("amp-S1-tran.dat", "data");
    project.write("amp-S1-tran.sim.cir", ".INC \"amp.lib\"\n");
    project.write("amp-S1.net", "* netlist\n");
}

TEST(WithoutMemory, AConversionReturnsOneAndClosesItsFiles) {
    const std::size_t before = openDescriptors();
    forEachAllocation([&](std::size_t n) {
        const DraftelProject project;
        fillProject(project);
        const DraftelPointer converter = converterFor(project.path("amp.opj"));
        const CString destination = hostString(project.destination);
        const bool failed = failsWithoutMemory(n, [&] { return converter->convert(2, destination); });
        EXPECT_EQ(openDescriptors(), before) << "at allocation " << n;
        return failed;
    });
}

TEST(WithoutMemory, AConversionInPlaceReturnsOneAndLosesNothing) {
    forEachAllocation([&](std::size_t n) {
        const DraftelProject project;
        fillProject(project);
        const DraftelPointer converter = converterFor(project.path("amp.opj"));
        const tests::Tree before = project.tree();
        const bool failed = failsWithoutMemory(n, [&] { return converter->convert(1, CString()); });
        // Deleting comes last, when every copy is there.
        if (failed && project.folder.exists("project/amp-S1.net") &&
            project.folder.exists("project/amp.lib")) {
            EXPECT_EQ(project.read("amp-S1.net"), before.at("project/amp-S1.net")) << "at allocation " << n;
            EXPECT_EQ(project.read("amp.lib"), before.at("project/amp.lib")) << "at allocation " << n;
        } else {
            EXPECT_EQ(project.read("amp-TevrixFiles/S1/S1.net"), "* netlist\n") << "at allocation " << n;
            EXPECT_EQ(project.read("amp-TevrixFiles/amp.lib"), "* models\n") << "at allocation " << n;
        }
        return failed;
    });
}

TEST(WithoutMemory, AConverterServesAgainWhenThereIsMemory) {
    forEachAllocation([&](std::size_t n) {
        const DraftelProject project;
        fillProject(project);
        const DraftelPointer converter = converterFor(project.path("amp.opj"));
        const CString destination = hostString(project.destination);
        const bool failed = failsWithoutMemory(n, [&] { return converter->convert(2, destination); });
        EXPECT_EQ(converter->convert(2, destination), 0) << "after allocation " << n;
        EXPECT_EQ(project.readNew("amp-TevrixFiles/S1/tran/tran.dat"), "data") << "after allocation " << n;
        return failed;
    });
}

TEST(WithoutMemory, OtherOperationsReturnOne) {
    const DraftelProject project;
    const DraftelPointer converter = converterFor(project.path("amp.opj"));
    ASSERT_EQ(converter->convert(2, hostString(project.destination)), 0);
    const CString reportName("a report with a name that is too long to be kept in place.txt");
    const CStringArray report = arrayOf({"line", "a line that is too long to be kept in place"});
    tvxconv::setLastErrorMessage("a message that is too long to be kept in place");
    const std::size_t before = openDescriptors();
    for (std::size_t n = 1; failsWithoutMemory(n,
                                               [&] {
                                                   CStringArray lines;
                                                   return converter->getNewStructure(lines);
                                               });
         ++n) {
        ASSERT_LT(n, 10000U);
    }
    for (std::size_t n = 1; failsWithoutMemory(n, [&] { return converter->writeReport(report, reportName); });
         ++n) {
        ASSERT_LT(n, 10000U);
    }
    for (std::size_t n = 1; failsWithoutMemory(n,
                                               [&] {
                                                   CString path;
                                                   return converter->getNewProjectPath(path);
                                               });
         ++n) {
        ASSERT_LT(n, 100U);
    }
    for (std::size_t n = 1; failsWithoutMemory(n,
                                               [&] {
                                                   CString message;
                                                   return converter->getLastErrorMessage(message);
                                               });
         ++n) {
        ASSERT_LT(n, 100U);
    }
    EXPECT_EQ(openDescriptors(), before);
}

void fillLibrary(const tests::TarnetLibrary& library) {
    library.writeOld("a cell's models with a long name.lib", "* models\n");
    library.writeOld("amp.net", ".INC \"a parameter file with a long name.par\"\n");
    library.writeOld("amp.opt", "ext \"a design profile with a long name.mdp\"\n");
    library.writeOld("tran.sim", "DataFile= \"C:\\a folder\\with a data file.dat\"\n+1 \"tran.dat\"\n");
    library.writeOld("tran.sim.cir", ".LIB \"a cell's models with a long name.lib\"\n");
    library.writeOld("tran.dat", "data");
}

TEST(WithoutMemory, ATarnetConversionReturnsOneAndClosesItsFiles) {
    const std::size_t before = openDescriptors();
    tests::Tree complete;
    std::vector<tests::Tree> views;  // of the runs that ended well
    forEachAllocation([&](std::size_t n) {
        const tests::TarnetLibrary library;
        fillLibrary(library);
        const TarnetPointer converter(createTarnetProjectConverter(library.dir.c_str()));
        int status = -1;
        const bool failed = meetsLackOfMemory(n, status, [&] { return converter->convert(0, string()); });
        EXPECT_EQ(openDescriptors(), before) << "at allocation " << n;
        if (!failed) {
            EXPECT_EQ(status, 0);
            complete = library.newView();
            views.push_back(complete);
        } else if (status == 0) {
            // An old view that cannot be listed is passed over, whatever the reason; what is remembered of
            // folders may be forgotten. The marker comes last.
            views.push_back(library.existsNew("master.tag") ? library.newView() : tests::Tree());
        } else {
            EXPECT_EQ(status, 1) << "at allocation " << n;
        }
        return failed;
    });
    EXPECT_EQ(complete.count("master.tag"), 1U);
    for (const tests::Tree& view : views) EXPECT_TRUE(view.empty() || view == complete);
}

TEST(WithoutMemory, TheTarnetInterfaceReturnsOneToo) {
    const tests::TarnetLibrary library;
    fillLibrary(library);
    const TarnetPointer converter(createTarnetProjectConverter(library.dir.c_str()));
    ASSERT_EQ(converter->convert(0, string()), 0);
    tvxconv::setLastErrorMessage("a message that is too long to be kept in place");
    const Lines report = {"line", "a line that is too long to be kept in place"};
    const string reportName = "a report with a name that is too long to be kept in place.txt";
    const std::size_t before = openDescriptors();
    std::size_t n = 1;
    while (failsWithoutMemory(n, [&] {
        string message;
        return converter->getLastErrorMessage(message);
    })) {
        ASSERT_LT(++n, 100U);
    }
    // A folder that cannot be listed is left out, whatever the reason.
    n = 1;
    int status = -1;
    while (meetsLackOfMemory(n, status, [&] {
        Lines lines;
        return converter->getNewStructure(lines);
    })) {
        EXPECT_TRUE(status == 0 || status == 1) << status << " at allocation " << n;
        ASSERT_LT(++n, 10000U);
    }
    n = 1;
    while (failsWithoutMemory(n, [&] { return converter->writeReport(report, reportName); })) {
        ASSERT_LT(++n, 10000U);
    }
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
