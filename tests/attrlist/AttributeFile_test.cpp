// attributeFile_test.cpp
//
// Attribute-list files as documents: the statuses, the types, what is written to the byte, and that what was
// read and written reads back the same.

#include "attrlist/AttributeFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <new>
#include <random>
#include <string>
#include <vector>

#include "attrlist/CellPool.h"
#include "attrlist/writer.h"
#include "support/TestFolder.h"
#include "support/attributeTrees.h"
#include "support/fileLimit.h"
#include "support/wobjAllocations.h"

namespace {

using namespace tvxconv::attrlist;
using std::string;
using tests::TestFolder;
using tests::treeText;

// Status and type after reading a file with this text, and its tree.
struct FileReading {
    int status = 0;
    int type = 0;
    string tree;

    bool operator==(const FileReading&) const = default;
};

std::ostream& operator<<(std::ostream& out, const FileReading& reading) {
    return out << reading.status << ", type " << reading.type << ", " << reading.tree;
}

FileReading readFile(const string& path) {
    AttributeFile file(3);
    EXPECT_EQ(file.open(path.c_str()), 1003) << path;
    FileReading reading;
    reading.status = file.read();
    reading.type = file.type();
    reading.tree = treeText(file);
    return reading;
}

// What is printed for the tree.
string printed(const AttributeNode& tree, const char* typeName) {
    string text;
    printTree(tree, typeName, [&](std::string_view piece) { text += piece; });
    return text;
}

constexpr const char* kTypeNames[] = {"Advanced Analysis Profile", "UI Settings File",     "PMAP File",
                                      "Model Property File",       "Device Property File", "Derate File"};

class AttributeFiles : public testing::Test {
protected:
    FileReading readText(const string& text) const { return readFile(folder_.write("read.aap", text)); }
    string writtenBy(AttributeFile& file) const {
        EXPECT_EQ(file.write(folder_.path("written.aap").c_str()), 1007);
        return folder_.read("written.aap");
    }

    TestFolder folder_;
};

TEST_F(AttributeFiles, BeginEmpty) {
    AttributeFile file(5);
    EXPECT_STREQ(file.name(), "FILE_TYPE");
    EXPECT_EQ(file.parent(), nullptr);
    EXPECT_EQ(treeText(file), "FILE_TYPE{}");
    EXPECT_EQ(file.type(), 5);
    EXPECT_EQ(file.path(), "");
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.modificationTime(), 0x7FFFFFFF);
    EXPECT_EQ(file.typeKeyFor("Profile"), "unknown");
    EXPECT_EQ(file.factoryFor("FILE_TYPE.unknown"), nullptr);
}

TEST_F(AttributeFiles, KnowTheirTypes) {
    const struct {
        const char* name;
        int index;
    } cases[] = {
        {"Advanced Analysis Profile", 0},
        {"UI Settings File", 1},
        {"PMAP File", 2},
        {"Model Property File", 3},
        {"Device Property File", 4},
        {"Derate File", 5},
        {"ADVANCED ANALYSIS PROFILE", 0},
        {"ui settings file", 1},
        {"pMAP fILE", 2},
        {"Unknown", 7},
        {"", 7},
        {"PMAP", 7},
        {"PMAP File ", 7},
        {" PMAP File", 7},
        {nullptr, 7},
    };
    for (const auto& [name, index] : cases) {
        EXPECT_EQ(AttributeFile::typeIndexOf(name), index) << (name != nullptr ? name : "null");
    }
}

TEST_F(AttributeFiles, ReadWhatTheyHold) {
    const struct {
        const char* text;
        FileReading reading;
    } cases[] = {
        {"(FILE_TYPE \"Advanced Analysis Profile\" (a 1) (G (x y)))", {1009, 0, "FILE_TYPE{a=1 G{x=y}}"}},
        {"(FILE_TYPE \"ui settings file\")", {1009, 1, "FILE_TYPE{}"}},
        {"  \r\n(FILE_TYPE\r\n \"Derate File\"\r\n (a 1)\r\n)\r\n", {1009, 5, "FILE_TYPE{a=1}"}},
        {"(\"FILE_TYPE\"\t\"PMAP File\" (a 3.0) (b -0.50))", {1009, 2, "FILE_TYPE{a=3 b=-0.5}"}},
        // the key is not looked at
        {"(whatever \"PMAP File\" (a 1))", {1009, 2, "FILE_TYPE{a=1}"}},
        {"(1 \"PMAP File\" (a 1))", {1009, 2, "FILE_TYPE{a=1}"}},
        // Of the file only the first expression counts.
        {"(FILE_TYPE \"PMAP File\") (b 1", {1009, 2, "FILE_TYPE{}"}},
        // no known type
        {"(FILE_TYPE Unknown (a 1))", {1011, 7, "FILE_TYPE{a=1}"}},
        {"(FILE_TYPE 5 (a 1))", {1011, 7, "FILE_TYPE{a=1}"}},
        {"(FILE_TYPE (a 1) (b 2))", {1011, 7, "FILE_TYPE{b=2}"}},
        {"((a 1) \"PMAP File\" (b 2))", {1011, 7, "FILE_TYPE{b=2}"}},
        {"(() \"PMAP File\" (b 2))", {1011, 7, "FILE_TYPE{b=2}"}},
        {"(FILE_TYPE)", {1011, 7, "FILE_TYPE{}"}},
        {"()", {1011, 7, "FILE_TYPE{}"}},
        {"", {1011, 7, "FILE_TYPE{}"}},
        {" \n\t", {1011, 7, "FILE_TYPE{}"}},
        {"atom", {1011, 7, "FILE_TYPE{}"}},
        {"\"PMAP File\"", {1011, 7, "FILE_TYPE{}"}},
        {"42", {1011, 7, "FILE_TYPE{}"}},
        {")", {1011, 7, "FILE_TYPE{}"}},
        // errors
        {"(FILE_TYPE \"PMAP File\" (a 1)", {1008, 3, "FILE_TYPE{}"}},
        {"(FILE_TYPE \"PMAP File\" (a b.c))", {1008, 3, "FILE_TYPE{}"}},
        {"(", {1008, 3, "FILE_TYPE{}"}},
        {".", {1008, 3, "FILE_TYPE{}"}},
    };
    for (const auto& [text, reading] : cases) EXPECT_EQ(readText(text), reading) << text;
}

TEST_F(AttributeFiles, TellStatusesInTheOrderOfUse) {
    const string path = folder_.write("profile.aap", "(FILE_TYPE \"PMAP File\" (a 1))");
    AttributeFile file(0);
    EXPECT_EQ(file.read(), 1010);
    EXPECT_EQ(file.open(path.c_str()), 1003);
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(file.path(), path);
    EXPECT_EQ(file.read(), 1009);
    EXPECT_TRUE(file.isOpen()) << "a file stays open until it is closed";
    file.close();
    EXPECT_FALSE(file.isOpen());
    file.close();
    EXPECT_EQ(file.read(), 1010);
    EXPECT_EQ(file.write(folder_.path("new.aap").c_str()), 1007);
    EXPECT_EQ(file.path(), path) << "the remembered path is that of opening";
    EXPECT_EQ(folder_.read("new.aap"), "(\"FILE_TYPE\"\t\"PMAP File\"\n    (\"a\"\t\"1\")\n)\n");
    EXPECT_EQ(file.open(path.c_str()), 1003) << "once more";
}

TEST_F(AttributeFiles, OpenOneFileAtATime) {
    const string path = folder_.write("a.aap", "(FILE_TYPE \"PMAP File\" (a 1))");
    const string other = folder_.write("b.aap", "(FILE_TYPE \"PMAP File\" (b 1))");
    AttributeFile file(0);
    EXPECT_EQ(file.open(nullptr), 1001);
    EXPECT_EQ(file.path(), "");
    EXPECT_EQ(file.open(path.c_str()), 1003);
    EXPECT_EQ(file.open(nullptr), 1001);
    EXPECT_EQ(file.path(), path);
    EXPECT_EQ(file.open(other.c_str()), 1002);
    EXPECT_EQ(file.path(), other) << "remembered all the same";
    EXPECT_EQ(file.read(), 1009);
    EXPECT_EQ(treeText(file), "FILE_TYPE{a=1}") << "the first file stays open";
}

TEST_F(AttributeFiles, OpenPlainFilesAlone) {
    folder_.makeFolder("folder");
    const string pipe = folder_.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const string paths[] = {
        folder_.path("missing.aap"), folder_.path("folder"), folder_.path(), pipe, "", "/"};
    for (const string& path : paths) {
        AttributeFile file(0);
        EXPECT_EQ(file.open(path.c_str()), 1002) << path;
        EXPECT_EQ(file.path(), path);
        EXPECT_EQ(file.read(), 1010) << path;
    }
}

TEST_F(AttributeFiles, AreFoundIgnoringCase) {
    folder_.write("Folder/Profile.AAP", "(FILE_TYPE \"PMAP File\" (a 1))");
    AttributeFile file(0);
    EXPECT_EQ(file.open(folder_.path("folder/PROFILE.aap").c_str()), 1003);
    EXPECT_EQ(file.read(), 1009);
}

TEST_F(AttributeFiles, RememberWhenTheyWereChanged) {
    const struct {
        std::int64_t time;
        std::int32_t remembered;
    } cases[] = {{1000000000, 1000000000}, {0, 0}, {0x7FFFFFFF, 0x7FFFFFFF}, {0x80000000, 0x7FFFFFFF}};
    const string path = folder_.write("a.aap", "");
    for (const auto& [time, remembered] : cases) {
        utimbuf times{time, time};
        ASSERT_EQ(utime(path.c_str(), &times), 0);
        AttributeFile file(0);
        EXPECT_EQ(file.open(path.c_str()), 1003);
        EXPECT_EQ(file.modificationTime(), remembered) << time;
    }
}

TEST_F(AttributeFiles, ReadOneExpressionAfterTheOther) {
    const string path = folder_.write("a.aap", "(FILE_TYPE \"PMAP File\" (a 1)) (x \"Derate File\" (b 2)) (");
    AttributeFile file(0);
    EXPECT_EQ(file.open(path.c_str()), 1003);
    EXPECT_EQ(file.read(), 1009);
    EXPECT_EQ(file.read(), 1009);
    EXPECT_EQ(file.type(), 5);
    EXPECT_EQ(treeText(file), "FILE_TYPE{a=1 b=2}");
    EXPECT_EQ(file.read(), 1008);
    EXPECT_EQ(file.type(), 5);
    EXPECT_EQ(file.read(), 1011) << "at the end there is nothing";
    EXPECT_EQ(treeText(file), "FILE_TYPE{a=1 b=2}");
}

TEST_F(AttributeFiles, AreWrittenToTheByte) {
    AttributeFile file(0);
    file.addAttribute("RandomSeed", "0");
    AttributeNode* const profile = file.addChild("Profile");
    profile->addAttribute("Name", "sim");
    EXPECT_EQ(writtenBy(file),
              "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n"
              "    (\"RandomSeed\"\t\"0\")\n"
              "    (\"Profile\"\n"
              "        (\"Name\"\t\"sim\")\n"
              "    )\n"
              ")\n");
    // Attributes come before children, whatever came first.
    profile->addChild("Empty");
    profile->addChild("")->addChild("Deep")->addAttribute("", "");
    file.addAttribute("Last", "1.5");
    EXPECT_EQ(writtenBy(file),
              "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n"
              "    (\"RandomSeed\"\t\"0\")\n"
              "    (\"Last\"\t\"1.5\")\n"
              "    (\"Profile\"\n"
              "        (\"Name\"\t\"sim\")\n"
              "        (\"Empty\"\n"
              "        )\n"
              "        (\"\"\n"
              "            (\"Deep\"\n"
              "                (\"\"\t\"\")\n"
              "            )\n"
              "        )\n"
              "    )\n"
              ")\n");
}

TEST_F(AttributeFiles, AreWrittenWithTheNameOfTheirType) {
    int type = 0;
    for (const char* name : kTypeNames) {
        AttributeFile file(type++);
        EXPECT_EQ(writtenBy(file), string("(\"FILE_TYPE\"\t\"") + name + "\"\n)\n");
    }
    for (const int unknown : {6, 7, 8, -1}) {
        AttributeFile file(unknown);
        EXPECT_EQ(writtenBy(file), "(\"FILE_TYPE\"\t\"\"\n)\n") << unknown;
    }
}

TEST_F(AttributeFiles, DoubleBackslashesAndDropTheQuotesOfValues) {
    const struct {
        const char *key, *value, *line;
    } cases[] = {
        {"k", "a\"b\"", "(\"k\"\t\"ab\")"},
        {"k", "\"\"\"", "(\"k\"\t\"\")"},
        {"k", "C:\\new\\\"x\"", "(\"k\"\t\"C:\\\\new\\\\x\")"},
        {"k", "\\", "(\"k\"\t\"\\\\\")"},
        {"a\\b\"c", "v", "(\"a\\\\b\"c\"\t\"v\")"},
        {"tab\t", "two\nlines\r\n", "(\"tab\t\"\t\"two\nlines\r\n\")"},
        {"\xe4", "(\x80)", "(\"\xe4\"\t\"(\x80)\")"},
    };
    for (const auto& [key, value, line] : cases) {
        AttributeNode node("", nullptr);
        node.addAttribute(key, value);
        EXPECT_EQ(printed(node, "t"), string("(\"\"\t\"t\"\n    ") + line + "\n)\n");
    }
    AttributeNode node("a\\\"b", nullptr);
    node.addChild("c\\\"d");
    EXPECT_EQ(printed(node, "e\\\"f"), "(\"a\\\\\"b\"\t\"e\\\\\"f\"\n    (\"c\\\\\"d\"\n    )\n)\n");
}

TEST_F(AttributeFiles, ReadBackWhatWasWritten) {
    AttributeFile file(0);
    file.addAttribute("path", "C:\\a \"b\"\\");
    EXPECT_EQ(writtenBy(file),
              "(\"FILE_TYPE\"\t\"Advanced Analysis Profile\"\n    (\"path\"\t\"C:\\\\a b\\\\\")\n)\n");
    EXPECT_EQ(readFile(folder_.path("written.aap")), (FileReading{1009, 0, "FILE_TYPE{path=C:\\a b\\}"}));
}

TEST_F(AttributeFiles, WriteNumbersAsTheTextTheyWereTurnedInto) {
    folder_.write("a.aap", "(FILE_TYPE \"PMAP File\" (a 3.0) (b 123456789.5) (c 1e-3) (d sym) (e \"1.50\"))");
    AttributeFile file(0);
    EXPECT_EQ(file.open(folder_.path("a.aap").c_str()), 1003);
    EXPECT_EQ(file.read(), 1009);
    EXPECT_EQ(writtenBy(file),
              "(\"FILE_TYPE\"\t\"PMAP File\"\n"
              "    (\"a\"\t\"3\")\n"
              "    (\"b\"\t\"1.2345679e+08\")\n"
              "    (\"c\"\t\"0.001\")\n"
              "    (\"d\"\t\"sym\")\n"
              "    (\"e\"\t\"1.50\")\n"
              ")\n");
}

TEST_F(AttributeFiles, WriteToTheOpenedPathIgnoringCase) {
    const string path = folder_.write("Profile.aap", "(FILE_TYPE \"PMAP File\" (a 1))");
    const string rewritten = "(\"FILE_TYPE\"\t\"PMAP File\"\n    (\"a\"\t\"1\")\n)\n";
    const string otherCase = folder_.path("PROFILE.AAP");
    for (const char* target : std::vector<const char*>{nullptr, path.c_str(), otherCase.c_str()}) {
        folder_.write("Profile.aap", "(FILE_TYPE \"PMAP File\" (a 1))");
        AttributeFile file(0);
        EXPECT_EQ(file.open(path.c_str()), 1003);
        EXPECT_EQ(file.read(), 1009);
        file.close();
        EXPECT_EQ(file.write(target), 1007);
        EXPECT_EQ(folder_.read("Profile.aap"), rewritten);
        EXPECT_EQ(tests::treeOf(folder_.path()).size(), 1u) << "there is one file";
    }
}

TEST_F(AttributeFiles, WriteToTheOpenedPathWhereItsTwinIsAnotherFile) {
    if (tests::kOnWindows) GTEST_SKIP() << "two names that differ in case alone cannot be side by side there";
    const string path = folder_.write("a.aap", "(FILE_TYPE \"PMAP File\" (a 1))");
    folder_.write("A.AAP", "the twin");
    AttributeFile file(0);
    EXPECT_EQ(file.open(path.c_str()), 1003);
    EXPECT_EQ(file.read(), 1009);
    file.close();
    EXPECT_EQ(file.write(folder_.path("A.AAP").c_str()), 1007);
    EXPECT_EQ(folder_.read("a.aap"), "(\"FILE_TYPE\"\t\"PMAP File\"\n    (\"a\"\t\"1\")\n)\n");
    EXPECT_EQ(folder_.read("A.AAP"), "the twin");
}

TEST_F(AttributeFiles, LeaveAFileAloneThatIsStillOpen) {
    const string text = "(FILE_TYPE \"PMAP File\" (a 1))";
    for (const bool named : {false, true}) {
        const string path = folder_.write("a.aap", text);
        AttributeFile file(0);
        EXPECT_EQ(file.open(path.c_str()), 1003);
        EXPECT_EQ(file.read(), 1009);
        EXPECT_EQ(file.write(named ? path.c_str() : nullptr), 1007);
        EXPECT_EQ(folder_.read("a.aap"), text);
        EXPECT_FALSE(file.isOpen());
        // Now that it is closed, it is written.
        EXPECT_EQ(file.write(nullptr), 1007);
        EXPECT_EQ(folder_.read("a.aap"), "(\"FILE_TYPE\"\t\"PMAP File\"\n    (\"a\"\t\"1\")\n)\n");
    }
}

TEST_F(AttributeFiles, StayOpenWhenAnotherFileIsWritten) {
    const string path =
        folder_.write("a.aap", "(FILE_TYPE \"PMAP File\" (a 1)) (FILE_TYPE \"PMAP File\" (b 1))");
    AttributeFile file(0);
    EXPECT_EQ(file.open(path.c_str()), 1003);
    EXPECT_EQ(file.read(), 1009);
    EXPECT_EQ(file.write(folder_.path("b.aap").c_str()), 1007);
    EXPECT_EQ(file.read(), 1009);
    EXPECT_EQ(treeText(file), "FILE_TYPE{a=1 b=1}");
}

TEST_F(AttributeFiles, ReplaceALongerFile) {
    folder_.write("written.aap", string(100000, 'x'));
    AttributeFile file(2);
    EXPECT_EQ(writtenBy(file), "(\"FILE_TYPE\"\t\"PMAP File\"\n)\n");
}

TEST_F(AttributeFiles, TellWhenAFileCannotBeOpenedForWriting) {
    folder_.makeFolder("folder");
    AttributeFile file(0);
    for (const string& path : {folder_.path("folder"), folder_.path("no/such/folder.aap"), string("/")}) {
        EXPECT_EQ(file.write(path.c_str()), 1002) << path;
    }
    EXPECT_EQ(file.write(nullptr), 1002) << "none was ever opened";
    EXPECT_EQ(file.write(""), 1002);
    EXPECT_EQ(file.open(folder_.path("folder").c_str()), 1002);
    EXPECT_EQ(file.write(nullptr), 1002) << "the remembered path is a folder";
}

TEST_F(AttributeFiles, AreRemovedWhereTheDiskIsFull) {
    AttributeFile file(0);
    for (int i = 0; i < 20000; ++i) file.addAttribute("key", "value");
    const string path = folder_.path("written.aap");
    EXPECT_TRUE(tests::succeedsWithFileLimit(
        4096, [&] { return file.write(path.c_str()) == 1007 && !file.isWrittenWhole(); }));
    EXPECT_EQ(tests::treeOf(folder_.path()).size(), 0u) << "a part is not left for the whole";
    EXPECT_EQ(file.write(path.c_str()), 1007);
    EXPECT_TRUE(file.isWrittenWhole());
}

TEST_F(AttributeFiles, TellOfEachWriteWhetherAllWasWritten) {
    const string path = folder_.write("a.aap", "(FILE_TYPE \"PMAP File\" (a 1))");
    AttributeFile file(0);
    EXPECT_FALSE(file.isWrittenWhole());
    EXPECT_EQ(file.open(path.c_str()), 1003);
    EXPECT_EQ(file.read(), 1009);
    EXPECT_EQ(file.write(folder_.path("b.aap").c_str()), 1007);
    EXPECT_TRUE(file.isWrittenWhole());
    EXPECT_EQ(file.write(nullptr), 1007);
    EXPECT_FALSE(file.isWrittenWhole()) << "it was open, and is only closed";
    EXPECT_EQ(file.write(nullptr), 1007);
    EXPECT_TRUE(file.isWrittenWhole());
    EXPECT_EQ(file.write(folder_.path("no/such/folder.aap").c_str()), 1002);
    EXPECT_FALSE(file.isWrittenWhole());
}

TEST_F(AttributeFiles, GoOnWithTheNextExpressionWhereverTheFirstEnds) {
    for (const string end : {"\n", "\r\n"}) {
        for (std::size_t size = 65536 - 20; size <= 65536 + 4; ++size) {
            string text = "(FILE_TYPE \"PMAP File\"" + end;
            text += string(size - text.size() - 1, ' ') + ")" + end;
            text += "(FILE_TYPE \"Derate File\" (b \"x\\\"y\"))" + end;
            AttributeFile file(0);
            ASSERT_EQ(file.open(folder_.write("a.aap", text).c_str()), 1003);
            EXPECT_EQ(file.read(), 1009) << size;
            EXPECT_EQ(file.type(), 2) << size;
            EXPECT_EQ(file.read(), 1009) << size;
            EXPECT_EQ(file.type(), 5) << size;
            EXPECT_EQ(treeText(file), "FILE_TYPE{b=x\"y}") << size;
            EXPECT_EQ(file.read(), 1011) << size;
        }
    }
}

TEST_F(AttributeFiles, CutOffAnywhereAreMalformedAndTellNothing) {
    const string good = "(FILE_TYPE \"PMAP File\"\r\n\t(a 1.5) (\"G\\\\\" (x \"y z\") () s) (b -2))";
    EXPECT_EQ(readText(good), (FileReading{1009, 2, "FILE_TYPE{a=1.5 b=-2 G\\{x=y z {} {}}}"}));
    EXPECT_EQ(readText(""), (FileReading{1011, 7, "FILE_TYPE{}"}));
    for (std::size_t length = 1; length < good.size(); ++length) {
        EXPECT_EQ(readText(good.substr(0, length)), (FileReading{1008, 3, "FILE_TYPE{}"})) << length;
    }
}

// Adds what the text holds to the document, as AttributeFile does; false where it is malformed.
bool readInto(AttributeNode& document, const string& text) {
    CellPool pool;
    int line = 0;
    int column = 0;
    const char* error = nullptr;
    const tests::Stream stream = tests::streamOf(text);
    const ListCell* const top = readExpression(stream.get(), line, column, error, pool);
    if (error != nullptr) return false;
    buildTree(rest(rest(top)), &document, nullptr);
    return true;
}

bool hasQuoteInNames(const AttributeNode& node) {
    const auto hasQuote = [](const char* text) { return string(text).find('"') != string::npos; };
    for (std::size_t i = 0; i < node.attributeCount(); ++i) {
        if (hasQuote(node.attributeAt(i)->key())) return true;
    }
    for (std::size_t i = 0; i < node.childCount(); ++i) {
        if (hasQuoteInNames(*node.childAt(i))) return true;
    }
    return hasQuote(node.name());
}

TEST_F(AttributeFiles, ComeBackTheSameWithAnyByteInAnyPlace) {
    const string good = "(F \"PMAP File\" (a 1) (\"G\\\\\" (\"x\\t\" \"y\\\"z\") s (-2 ())))";
    int readings = 0;
    for (std::size_t place = 0; place < good.size(); ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            string text = good;
            text[place] = static_cast<char>(byte);
            AttributeNode tree("F", nullptr);
            if (!readInto(tree, text) || hasQuoteInNames(tree)) continue;
            const string written = printed(tree, "t");
            AttributeNode again("F", nullptr);
            ASSERT_TRUE(readInto(again, written)) << text;
            ASSERT_EQ(treeText(again), tests::replaced(treeText(tree), "\"", "")) << text;
            ASSERT_EQ(printed(again, "t"), written) << text;
            ++readings;
        }
    }
    EXPECT_GT(readings, 2000);
}

TEST_F(AttributeFiles, ComeBackTheSameWhateverTheTree) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        AttributeFile file(static_cast<int>(random() % 6));
        tests::fillAtRandom(file, random, 5);
        const string written = writtenBy(file);
        EXPECT_EQ(written, printed(file, kTypeNames[file.type()])) << seed;
        AttributeFile again(7);
        ASSERT_EQ(again.open(folder_.path("written.aap").c_str()), 1003);
        ASSERT_EQ(again.read(), 1009) << seed;
        again.close();
        EXPECT_EQ(again.type(), file.type());
        ASSERT_EQ(treeText(again), treeText(file)) << seed;
        ASSERT_EQ(writtenBy(again), written) << seed;
    }
}

TEST_F(AttributeFiles, ComeBackTheSameWithLongTexts) {
    for (const std::size_t size : {997u, 998u, 32767u, 32768u, 65536u, 131072u, 299997u}) {
        for (const char c : {'x', '\\'}) {
            const string text(size, c);
            AttributeFile file(0);
            file.addAttribute(text.c_str(), text.c_str());
            file.addChild(text.c_str())->addAttribute("a", "1");
            writtenBy(file);
            EXPECT_EQ(readFile(folder_.path("written.aap")), (FileReading{1009, 0, treeText(file)}))
                << size << c;
        }
    }
}

TEST_F(AttributeFiles, AreIndentedAsDeepAsTheyAre) {
    // The blanks of the deepest level alone are more than any buffer holds.
    constexpr std::size_t kDepth = 400;
    AttributeNode root("r", nullptr);
    AttributeNode* node = &root;
    for (std::size_t i = 0; i < kDepth; ++i) node = node->addChild("n");
    string expected = "(\"r\"\t\"t\"\n";
    for (std::size_t i = 1; i <= kDepth; ++i) expected += string(4 * i, ' ') + "(\"n\"\n";
    for (std::size_t i = kDepth; i > 0; --i) expected += string(4 * i, ' ') + ")\n";
    EXPECT_EQ(printed(root, "t"), expected + ")\n");
}

TEST_F(AttributeFiles, BearNestingOfAMillionParentheses) {
    constexpr std::size_t kDepth = 1000000;
    string named;
    for (std::size_t i = 0; i < kDepth; ++i) named += "(n ";
    const string head = "(F \"PMAP File\" ";
    const struct {
        string text;
        int status;
    } cases[] = {
        {string(kDepth, '('), 1008},
        {named, 1008},
        {head + string(kDepth, '('), 1008},
        {string(kDepth, '(') + string(kDepth, ')'), 1011},
        {head + named + string(kDepth + 1, ')'), 1009},
        {string(kDepth, ')'), 1011},
    };
    for (const auto& [text, status] : cases) {
        AttributeFile file(0);
        ASSERT_EQ(file.open(folder_.write("a.aap", text).c_str()), 1003);
        EXPECT_EQ(file.read(), status) << text.substr(0, 20);
    }
}

TEST_F(AttributeFiles, GiveTheScratchMemoryBack) {
    const std::size_t before = CellPool::bytesInUse();
    for (const char* text : {"(F \"PMAP File\" (a 1))", "(F \"PMAP File\" (a 1)", ""}) {
        readText(text);
        EXPECT_EQ(CellPool::bytesInUse(), before) << text;
    }
    EXPECT_GT(CellPool::highWaterMark(), before);
}

TEST_F(AttributeFiles, BearThatMemoryRunsOutAnywhere) {
    string text = "(F \"PMAP File\"";
    for (int i = 0; i < 100; ++i)
        text += " (key" + std::to_string(i) + " \"some value\") (a name of a node (x y))";
    const string path = folder_.write("a.aap", text + ")");
    const FileReading whole = readFile(path);
    const string other = folder_.path("b.aap");
    const std::size_t before = CellPool::bytesInUse();
    int failures = 0;
    for (std::size_t number = 1;; ++number) {
        AttributeFile file(0);
        wobjtest::failAllocation(number, wobjtest::Failing::once);
        int status = 0;
        try {
            file.open(path.c_str());
            file.read();
            file.close();
            status = file.write(other.c_str());
        } catch (const std::bad_alloc&) {
        }
        const bool failed = wobjtest::endFailing();
        EXPECT_EQ(CellPool::bytesInUse(), before);
        // What is remembered of folders can do without memory, so a failure there shows nowhere.
        if (status == 1007) {
            EXPECT_EQ(readFile(other).tree, whole.tree) << number;
        }
        if (!failed) break;
        ++failures;
    }
    EXPECT_GT(failures, 100);
    EXPECT_EQ(readFile(path), whole);
}

}  // namespace
