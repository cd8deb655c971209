// lines_test.cpp
//
// Text files line by line: pieces and line numbers of what is read, what a scan for a quoted value
// yields, and what a writer leaves behind. The C library's fgets and sscanf are the measure where they
// can be asked.

#include "fsutil/lines.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/TestFolder.h"
#include "support/fileLimit.h"

namespace {

using namespace tvxconv;
using fsutil::LineReader;
using fsutil::LineWriter;
using std::string;
using std::string_view;
using tests::TestFolder;

using Lines = std::vector<string>;

// All that is left to read.
Lines linesOf(LineReader& reader) {
    Lines lines;
    string_view line = "rubbish";
    while (reader.next(line)) lines.emplace_back(line);
    EXPECT_EQ(line, "");
    EXPECT_FALSE(reader.failed());
    EXPECT_FALSE(reader.next(line)) << "once more";
    return lines;
}

Lines linesOfFile(const string& path) {
    LineReader reader;
    EXPECT_EQ(reader.open(path), 0) << path;
    return linesOf(reader);
}

Lines linesOfMemory(const string& text) {
    LineReader reader;
    reader.openMemory(text);
    return linesOf(reader);
}

// What a 1024-byte line buffer makes of the file; the text must not hold a NUL.
Lines linesOfLibrary(const string& path) {
    Lines lines;
    std::FILE* file = std::fopen(path.c_str(), "rt");
    if (file == nullptr) return {"cannot be opened"};
    char buffer[1024];
    while (std::fgets(buffer, sizeof buffer, file) != nullptr) lines.emplace_back(buffer);
    std::fclose(file);
    return lines;
}

string x(std::size_t count) {
    return string(count, 'x');
}

TEST(LineReader, DeliversLinesWithTheirEndsInPiecesOfAtMost1023Bytes) {
    if (tests::kOnWindows) GTEST_SKIP() << "lines are read without their CR there";
    const struct {
        string text;
        Lines lines;
    } cases[] = {
        {"", {}},
        {"a", {"a"}},
        {"\n", {"\n"}},
        {"a\nb\n", {"a\n", "b\n"}},
        {"a\nb", {"a\n", "b"}},
        {"\n\n a\n", {"\n", "\n", " a\n"}},
        {"a\r\nb\r\n", {"a\r\n", "b\r\n"}},
        {"a\r\nb\r", {"a\r\n", "b\r"}},
        {"a\rb\rc\n", {"a\rb\rc\n"}},
        {"\r\r\n", {"\r\r\n"}},
        {string("a\0b\n\0\nc\0", 8), {string("a\0b\n", 4), string("\0\n", 2), string("c\0", 2)}},
        {x(1021) + "\n", {x(1021) + "\n"}},
        {x(1022) + "\n", {x(1022) + "\n"}},
        {x(1023) + "\n", {x(1023), "\n"}},
        {x(1024) + "\n", {x(1023), "x\n"}},
        {x(1025) + "\n", {x(1023), "xx\n"}},
        {x(2045) + "\n", {x(1023), x(1022) + "\n"}},
        {x(2046) + "\n", {x(1023), x(1023), "\n"}},
        {x(2047) + "\n", {x(1023), x(1023), "x\n"}},
        {x(1022), {x(1022)}},
        {x(1023), {x(1023)}},
        {x(1024), {x(1023), "x"}},
        {x(2046), {x(1023), x(1023)}},
        {x(1023) + "\na\n", {x(1023), "\n", "a\n"}},
        {x(1023) + "\n\n", {x(1023), "\n", "\n"}},
        {"a\n" + x(1023) + "\nb", {"a\n", x(1023), "\n", "b"}},
        {x(1021) + "\r\n", {x(1021) + "\r\n"}},
        {x(1022) + "\r\n", {x(1022) + "\r", "\n"}},
        {x(1023) + "\r\n", {x(1023), "\r\n"}},
        {string(1023, '\0') + "\n", {string(1023, '\0'), "\n"}},
    };
    const TestFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.size());
        EXPECT_EQ(linesOfMemory(c.text), c.lines);
        EXPECT_EQ(linesOfFile(folder.write("text", c.text)), c.lines);
    }
}

TEST(LineReader, CountsTheLinesOfTheFileAndNotThePieces) {
    const struct {
        string text;
        std::vector<std::size_t> numbers;
    } cases[] = {
        {"", {}},
        {"a\nb\nc", {1, 2, 3}},
        {"\n\n", {1, 2}},
        {x(1023) + "\nb\n", {1, 1, 2}},
        {x(3000) + "\n" + x(1022) + "\nb", {1, 1, 1, 2, 3}},
        {"a\n" + x(2046), {1, 2, 2}},
        {"a\rb\nc", {1, 2}},
    };
    const TestFolder folder;
    for (const auto& c : cases) {
        const string path = folder.write("text", c.text);
        for (const bool fromFile : {false, true}) {
            LineReader reader;
            EXPECT_EQ(reader.lineNumber(), 0U);
            if (fromFile) {
                ASSERT_EQ(reader.open(path), 0);
            } else {
                reader.openMemory(c.text);
            }
            EXPECT_EQ(reader.lineNumber(), 0U);
            std::vector<std::size_t> numbers;
            string_view line;
            while (reader.next(line)) numbers.push_back(reader.lineNumber());
            EXPECT_EQ(numbers, c.numbers) << c.text.size();
        }
    }
}

// A text of `size` bytes with lines of any length and kind of end.
string randomText(std::mt19937& random, std::size_t size, bool withNuls) {
    string text;
    while (text.size() < size) {
        constexpr std::size_t kLengths[] = {0, 1, 2, 30, 80, 1021, 1022, 1023, 1024, 2045, 2046, 2047, 5000};
        std::size_t length = kLengths[random() % std::size(kLengths)];
        if (random() % 3 == 0) length = random() % 200;
        for (std::size_t i = 0; i < length; ++i) {
            const auto byte = static_cast<char>(random() % 256);
            text += byte == '\n' || (byte == '\0' && !withNuls) ? 'n' : byte;
        }
        text += random() % 4 == 0 ? "\r\n" : "\n";
    }
    text.resize(size);
    return text;
}

TEST(LineReader, DeliversWhatTheLibrarysLineBufferDoes) {
    if (tests::kOnWindows) GTEST_SKIP() << "lines are read without their CR there";
    const TestFolder folder;
    std::mt19937 random(20);
    for (int round = 0; round < 60; ++round) {
        const string text = randomText(random, random() % 200000, false);
        const string path = folder.write("text", text);
        const Lines expected = linesOfLibrary(path);
        EXPECT_TRUE(linesOfFile(path) == expected) << round;
        EXPECT_TRUE(linesOfMemory(text) == expected) << round;
    }
}

TEST(LineReader, DeliversTheSameFromAFileAsFromMemory) {
    if (tests::kOnWindows) GTEST_SKIP() << "lines of files are read without their CR there";
    const TestFolder folder;
    std::mt19937 random(21);
    for (int round = 0; round < 60; ++round) {
        const string text = randomText(random, random() % 200000, true);
        const Lines lines = linesOfFile(folder.write("text", text));
        EXPECT_TRUE(linesOfMemory(text) == lines) << round;
        string whole;
        for (const string& line : lines) {
            EXPECT_LE(line.size(), 1023U);
            EXPECT_EQ(line.find('\n'), line.ends_with('\n') ? line.size() - 1 : string::npos);
            whole += line;
        }
        EXPECT_TRUE(whole == text) << round;
    }
}

TEST(LineReader, KeepsLinesWholeWhereItsOwnBufferEnds) {
    const TestFolder folder;
    constexpr std::size_t kBuffer = 65536;
    for (const std::size_t around : {kBuffer, 3 * kBuffer}) {
        for (std::size_t size = around - 2; size <= around + 2; ++size) {
            for (const std::size_t last : {1U, 2U, 500U, 1022U, 1023U, 1024U, 2046U}) {
                for (const char* end : {"", "\n", "\r\n"}) {
                    // Short lines, and a last one that ends, or stops, around the end of the buffer.
                    string text;
                    while (text.size() + last + 40 < size) text += "a line of some 30 characters\n";
                    text += x(size - last - text.size() - 1) + "\n" + x(last) + end;
                    const string path = folder.write("text", text);
                    EXPECT_TRUE(linesOfFile(path) == linesOfLibrary(path)) << size << " " << last;
                    const string longer = folder.write("longer", text + "next\n");
                    EXPECT_TRUE(linesOfFile(longer) == linesOfLibrary(longer)) << size << " " << last;
                }
            }
        }
    }
    const string oneLine = folder.write("oneLine", x(4 * kBuffer + 5));
    EXPECT_TRUE(linesOfFile(oneLine) == linesOfLibrary(oneLine));
}

TEST(LineReader, OpensPlainFilesOnly) {
    const TestFolder folder;
    folder.write("file", "text");
    folder.makeFolder("sub");
    tests::makeLink("nowhere", folder.path("link"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
    LineReader reader;
    for (const string& name : {string("none"), string("none/x"), string("sub"), string("sub/"),
                               string("file/"), string("link"), string("pipe"), string("file\0", 5)}) {
        reader.openMemory("left over");
        EXPECT_EQ(reader.open(folder.path(name)), 1) << name;
        string_view line = "rubbish";
        EXPECT_FALSE(reader.next(line)) << name;
        EXPECT_EQ(line, "") << name;
        EXPECT_FALSE(reader.failed()) << name;
        EXPECT_EQ(reader.lineNumber(), 0U) << name;
    }
    EXPECT_EQ(reader.open(""), 1);
}

TEST(LineReader, DoesNotOpenAFileThatMayNotBeRead) {
    const TestFolder folder;
    chmod(folder.write("secret", "text").c_str(), 0);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        LineReader reader;
        return reader.open(folder.path("secret")) == 1;
    }));
}

TEST(LineReader, BeginsAnewWhenItIsOpenedAgain) {
    const TestFolder folder;
    const string one = folder.write("one", "1\n2\n" + x(1023) + "3");
    const string two = folder.write("two", "4\n5\n");
    LineReader reader;
    string_view line;
    ASSERT_EQ(reader.open(one), 0);
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(reader.next(line));
    ASSERT_EQ(reader.open(two), 0);
    EXPECT_EQ(reader.lineNumber(), 0U);
    EXPECT_TRUE(reader.next(line));
    EXPECT_EQ(line, "4\n");
    EXPECT_EQ(reader.lineNumber(), 1U);
    const string text = "6\n7\n";
    reader.openMemory(text);
    EXPECT_EQ(linesOf(reader), (Lines{"6\n", "7\n"}));
    ASSERT_EQ(reader.open(two), 0);
    EXPECT_EQ(linesOf(reader), (Lines{"4\n", "5\n"}));
}

TEST(LineReader, SaysThatReadingFailed) {
    const TestFolder folder;
    const string path = folder.write("text", string(100000, '\n'));
    LineReader reader;
    ASSERT_EQ(reader.open(path), 0);
    string_view line;
    ASSERT_TRUE(reader.next(line));
    platform::stopFiles();
    int delivered = 1;
    while (reader.next(line)) ++delivered;
    platform::resumeFiles();
    EXPECT_LT(delivered, 100000);
    EXPECT_EQ(line, "");
    EXPECT_TRUE(reader.failed());
    EXPECT_FALSE(reader.next(line));
    ASSERT_EQ(reader.open(path), 0);
    EXPECT_FALSE(reader.failed());
    EXPECT_EQ(linesOf(reader).size(), 100000U);
}

// --- what a line holds ---

TEST(LineEndOf, IsTheEndOfTheLineIfItHasOne) {
    const struct {
        string line;
        string end;
    } cases[] = {
        {"", ""},         {"a", ""},   {"a\n", "\n"},       {"a\r\n", "\r\n"},          {"\n", "\n"},
        {"\r\n", "\r\n"}, {"a\r", ""}, {"a\r\r\n", "\r\n"}, {string("a\0\n", 3), "\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(fsutil::lineEndOf(c.line), c.end) << c.line;
}

TEST(BeginsWithKey, ComparesExactlyTheKeysLengthIgnoringCase) {
    const struct {
        string line;
        string key;
        bool begins;
    } cases[] = {
        {"ProfileName=\"a\"\n", "ProfileName", true},
        {"PROFILENAME", "ProfileName", true},
        {"profilename \"a\"", "ProfileName", true},
        {"ProfileNames=\"a\"", "ProfileName", true},
        {"ProfileNam", "ProfileName", false},
        {"ProfileNam\n", "ProfileName", false},
        {" ProfileName", "ProfileName", false},
        {"", "ProfileName", false},
        {".INC \"x\"", ".inc", true},
        {"anything", "", true},
        {"", "", true},
        {"a[b", "a{b", false},
        {"\xC4", "\xE4", false},
        {string("a\0b", 3), string("A\0B", 3), true},
        {string("a\0b", 3), "a", true},
    };
    for (const auto& c : cases) EXPECT_EQ(fsutil::beginsWithKey(c.line, c.key), c.begins) << c.line;
}

TEST(ScanQuotedValue, YieldsTheTextBetweenTheFirstTwoQuotes) {
    const struct {
        string line;
        int result;
        string value;
    } cases[] = {
        {"ProfileName=\"tran1\"\n", 1, "tran1"},
        {"Name \"a b\" \"c\"\n", 1, "a b"},
        {"Name=\" a\\b.sim \"\r\n", 1, " a\\b.sim "},
        {"x\"v\"", 1, "v"},
        {"\n\"v\"", 1, "v"},
        // no closing quote: all that is left, the line end included
        {"Name=\"open\n", 1, "open\n"},
        {"Name=\"open\r\n", 1, "open\r\n"},
        {"Name=\"open", 1, "open"},
        {"Name=\"\n", 1, "\n"},
        // an empty value, or a quote at the beginning
        {"Name=\"\"\n", 0, ""},
        {"Name=\"\" \"v\"\n", 0, ""},
        {"\"v\"\n", 0, ""},
        {"\"\"", 0, ""},
        {"\"", 0, ""},
        // the end comes first
        {"", EOF, ""},
        {"Name=\n", EOF, ""},
        {"Name=\"", EOF, ""},
        {"\n", EOF, ""},
        // a NUL is a byte like any other
        {string("Na\0me=\"v\"", 9), 1, "v"},
        {string("\0\"v\"", 4), 1, "v"},
        {string("Name=\"a\0b\"", 10), 1, string("a\0b", 3)},
        {string("Name=\"\0\"", 8), 1, string("\0", 1)},
        {string("Name=\"\0", 7), 1, string("\0", 1)},
        {string("Name\0", 5), EOF, ""},
        {string("\0", 1), EOF, ""},
    };
    for (const auto& c : cases) {
        string value = "rubbish";
        EXPECT_EQ(fsutil::scanQuotedValue(c.line, value), c.result) << c.line;
        EXPECT_EQ(value, c.value) << c.line;
    }
}

TEST(ScanQuotedValue, YieldsWhatTheLibrarysScanDoes) {
    std::mt19937 random(22);
    constexpr string_view kBytes = "\"\"\"\"a=\\ \t\r\nZ\xE4%";
    int results[3] = {0, 0, 0};  // EOF, 0, 1
    for (int round = 0; round < 50000; ++round) {
        string line;
        for (std::size_t i = random() % 12; i > 0; --i) line += kBytes[random() % kBytes.size()];
        if (random() % 2 == 0) line += '\n';
        char scanned[64] = "";
        const int expected = std::sscanf(line.c_str(), "%*[^\"]%*c%[^\"]", scanned);
        string value = "rubbish";
        ASSERT_EQ(fsutil::scanQuotedValue(line, value), expected) << line;
        ASSERT_EQ(value, expected == 1 ? scanned : "") << line;
        ++results[expected + 1];
    }
    EXPECT_GT(*std::min_element(std::begin(results), std::end(results)), 1000) << "each result comes up";
}

// --- writing ---

class Writer : public testing::Test {
protected:
    TestFolder folder;
};

TEST_F(Writer, WritesBytesAsTheyAre) {
    const string path = folder.path("out");
    const Lines texts = {"a\n", "", "b\r\n", string("\0\xFF\r", 3), x(5000), "no end"};
    LineWriter writer;
    ASSERT_EQ(writer.open(path), 0);
    for (const string& text : texts) writer.write(text);
    EXPECT_EQ(writer.close(), 0);
    EXPECT_EQ(folder.read("out"), "a\nb\r\n" + string("\0\xFF\r", 3) + x(5000) + "no end");
}

TEST_F(Writer, WritesTextsOfAnySize) {
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 131072U, 1000000U}) {
        std::mt19937 random(23);
        const string text = randomText(random, size, true);
        for (const std::size_t step : {1000U, 65536U, 1000000U}) {
            LineWriter writer;
            ASSERT_EQ(writer.open(folder.path("out")), 0);
            for (std::size_t at = 0; at < size; at += step) writer.write(string_view(text).substr(at, step));
            EXPECT_EQ(writer.close(), 0);
            EXPECT_TRUE(folder.read("out") == text) << size << " by " << step;
        }
    }
}

TEST_F(Writer, GivesANewLineTheEndOfTheOldOne) {
    const struct {
        string oldLine;
        string written;
    } cases[] = {
        {"old\n", "new\n"}, {"old\r\n", "new\r\n"}, {"old", "new\n"},   {"", "new\n"},
        {"old\r", "new\n"}, {"\n", "new\n"},        {x(1023), "new\n"}, {x(1022) + "\r", "new\n"},
    };
    for (const auto& c : cases) {
        LineWriter writer;
        ASSERT_EQ(writer.open(folder.path("out")), 0);
        writer.writeInPlaceOf(c.oldLine, "new");
        EXPECT_EQ(writer.close(), 0);
        EXPECT_EQ(folder.read("out"), c.written) << c.oldLine;
    }
}

TEST_F(Writer, ReplacesALongerFileAndKeepsItsPermissions) {
    const auto before = static_cast<mode_t>(umask(022));
    const string path = folder.write("old", x(200000));
    chmod(path.c_str(), 0640);
    for (const char* name : {"old", "new"}) {
        LineWriter writer;
        ASSERT_EQ(writer.open(folder.path(name)), 0);
        writer.write("short\n");
        EXPECT_EQ(writer.close(), 0);
        EXPECT_EQ(folder.read(name), "short\n");
    }
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(0640U));
    ASSERT_EQ(stat(folder.path("new").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(0644U));
}

TEST_F(Writer, MakesAnEmptyFileWhereNothingIsWritten) {
    folder.write("old", "text");
    for (const char* name : {"old", "new"}) {
        LineWriter writer;
        ASSERT_EQ(writer.open(folder.path(name)), 0);
        EXPECT_EQ(writer.close(), 0);
        EXPECT_EQ(folder.read(name), "");
    }
}

TEST_F(Writer, CannotBeOpenedWhereNoFileCanBe) {
    folder.write("file", "text");
    folder.makeFolder("sub");
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0666), 0);
    for (const string& name : {string("none/out"), string("file/out"), string("sub"), string("sub/"),
                               string("pipe"), string("new/"), string("out\0x", 5), string(300, 'x')}) {
        LineWriter writer;
        EXPECT_EQ(writer.open(folder.path(name)), 1) << name;
        writer.write("text");
        EXPECT_EQ(writer.close(), 0) << name;
    }
    LineWriter writer;
    EXPECT_EQ(writer.open(""), 1);
    std::filesystem::remove(folder.path("pipe"));
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"file", "text"}, {"sub/", ""}}));
}

TEST_F(Writer, CannotBeOpenedWithoutPermission) {
    chmod(folder.write("fixed", "text").c_str(), 0444);
    chmod(folder.makeFolder("closed").c_str(), 0555);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        LineWriter writer;
        EXPECT_EQ(writer.open(folder.path("fixed")), 1);
        EXPECT_EQ(writer.open(folder.path("closed/out")), 1);
        return true;
    }));
    EXPECT_EQ(folder.read("fixed"), "text");
}

TEST_F(Writer, RefusesTheFileThatIsBeingRead) {
    const string path = folder.write("sub/text", "a\nb\n");
    std::filesystem::create_hard_link(path, folder.path("hard"));
    tests::makeLink("sub/text", folder.path("soft"));
    for (const char* name : {"sub/text", "sub/./text", "SUB/Text", "hard", "soft"}) {
        LineReader reader;
        ASSERT_EQ(reader.open(path), 0);
        LineWriter writer;
        EXPECT_EQ(writer.open(folder.path(name), &reader), 1) << name;
        EXPECT_EQ(linesOf(reader), (Lines{"a\n", "b\n"})) << name;
    }
    EXPECT_EQ(folder.read("sub/text"), "a\nb\n");
}

TEST_F(Writer, TakesAnyOtherFile) {
    const string path = folder.write("text", "a\nb\n");
    folder.write("other", "a\nb\n");
    LineReader reader;
    ASSERT_EQ(reader.open(path), 0);
    LineReader memory;
    memory.openMemory("c\n");
    const struct {
        const char* name;
        const LineReader* source;
    } cases[] = {{"other", &reader}, {"new", &reader}, {"other", &memory}, {"other", nullptr}};
    for (const auto& c : cases) {
        LineWriter writer;
        EXPECT_EQ(writer.open(folder.path(c.name), c.source), 0) << c.name;
        writer.write("new\n");
        EXPECT_EQ(writer.close(), 0) << c.name;
        EXPECT_EQ(folder.read(c.name), "new\n");
    }
    EXPECT_EQ(linesOf(reader), (Lines{"a\n", "b\n"}));
    // A file that is no longer being read may be written.
    reader.close();
    LineWriter writer;
    EXPECT_EQ(writer.open(path, &reader), 0);
    EXPECT_EQ(writer.close(), 0);
}

TEST_F(Writer, LeavesNoFileWhenTheDiskIsFull) {
    for (const std::size_t size : {100U, 65536U, 65537U, 300000U}) {
        for (const std::size_t limit : {std::size_t{0}, std::size_t{50}, size - 1}) {
            for (const bool isThere : {false, true}) {
                if (isThere) folder.write("out", "old");
                EXPECT_TRUE(tests::succeedsWithFileLimit(
                    limit,
                    [&] {
                        LineWriter writer;
                        EXPECT_EQ(writer.open(folder.path("out")), 0);
                        for (std::size_t at = 0; at < size; at += 50)
                            writer.write(x(std::min<std::size_t>(50, size - at)));
                        EXPECT_EQ(writer.close(), 1);
                        EXPECT_EQ(writer.close(), 0) << "there is nothing left to close";
                        return true;
                    }))
                    << size << " bytes on a disk of " << limit;
                EXPECT_FALSE(folder.exists("out"));
            }
        }
        EXPECT_TRUE(tests::succeedsWithFileLimit(size, [&] {
            LineWriter writer;
            EXPECT_EQ(writer.open(folder.path("out")), 0);
            writer.write(x(size));
            return writer.close() == 0;
        })) << size;
        EXPECT_EQ(folder.read("out").size(), size);
        std::filesystem::remove(folder.path("out"));
    }
}

TEST_F(Writer, RemovesWhatWasAbandoned) {
    for (const std::size_t size : {0U, 10U, 200000U}) {
        LineWriter writer;
        ASSERT_EQ(writer.open(folder.path("out")), 0);
        writer.write(x(size));
        writer.abandon();
        EXPECT_FALSE(folder.exists("out")) << size;
        EXPECT_EQ(writer.close(), 0);
    }
    LineWriter writer;
    writer.abandon();
    EXPECT_EQ(tests::treeOf(folder.path()), tests::Tree{});
}

TEST_F(Writer, ServesSeveralFilesOneAfterTheOther) {
    LineWriter writer;
    ASSERT_EQ(writer.open(folder.path("one")), 0);
    writer.write("1");
    ASSERT_EQ(writer.open(folder.path("two")), 0);
    writer.write("2");
    EXPECT_EQ(writer.close(), 0);
    EXPECT_EQ(writer.open(folder.path("none/out")), 1);
    writer.write("lost");
    ASSERT_EQ(writer.open(folder.path("three")), 0);
    writer.write("3");
    EXPECT_EQ(writer.close(), 0);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"one", "1"}, {"two", "2"}, {"three", "3"}}));
}

// --- writing a file that takes the place of another one ---

class Replacement : public Writer {
protected:
    // The status of opening, writing and closing.
    int replace(const string& name, const string& text) const {
        LineWriter writer;
        if (writer.openReplacement(folder.path(name)) != 0) return 1;
        writer.write(text);
        return writer.close();
    }
};

TEST_F(Replacement, IsNotSeenBeforeItIsWhole) {
    folder.write("old", "old");
    for (const char* name : {"old", "new"}) {
        LineWriter writer;
        ASSERT_EQ(writer.openReplacement(folder.path(name)), 0);
        writer.write(x(200000));
        if (name == string("old")) {
            EXPECT_EQ(folder.read(name), "old");
        } else {
            EXPECT_FALSE(folder.exists(name));
        }
        EXPECT_EQ(writer.close(), 0);
    }
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"old", x(200000)}, {"new", x(200000)}}));
}

TEST_F(Replacement, HasThePermissionsOfTheOldFile) {
    const auto before = static_cast<mode_t>(umask(077));
    for (const unsigned permissions : {0600U, 0644U, 0666U, 0755U}) {
        ASSERT_EQ(chmod(folder.write("file", "old").c_str(), permissions), 0);
        EXPECT_EQ(replace("file", "new"), 0);
        struct stat status {};
        ASSERT_EQ(stat(folder.path("file").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, tests::keptPermissions(permissions));
    }
    umask(before);
}

TEST_F(Replacement, FollowsALinkAndFindsAnotherSpelling) {
    folder.write("sub/Real", "old");
    tests::makeLink("sub/Real", folder.path("link"));
    for (const char* name : {"link", "LINK", "sub/REAL", "SUB/real"}) {
        EXPECT_EQ(replace(name, name), 0) << name;
        EXPECT_EQ(folder.read("sub/Real"), name);
        EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link"))) << name;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path("sub")), {}), 1);
}

TEST_F(Replacement, ThatFailsOrIsLeftLeavesTheOldFileAndNothingElse) {
    for (const bool isThere : {true, false}) {
        if (isThere) folder.write("file", "old");
        const tests::Tree before = tests::treeOf(folder.path());
        EXPECT_TRUE(tests::succeedsWithFileLimit(10, [&] { return replace("file", x(11)) == 1; }));
        EXPECT_EQ(tests::treeOf(folder.path()), before) << "a full disk";
        {
            LineWriter writer;
            ASSERT_EQ(writer.openReplacement(folder.path("file")), 0);
            writer.write(x(200000));
        }
        EXPECT_EQ(tests::treeOf(folder.path()), before) << "not closed";
        LineWriter writer;
        ASSERT_EQ(writer.openReplacement(folder.path("file")), 0);
        writer.write(x(200000));
        platform::stopFiles();
        EXPECT_EQ(writer.close(), 1);
        platform::resumeFiles();
        EXPECT_EQ(tests::treeOf(folder.path()), before) << "stopped";
        std::filesystem::remove(folder.path("file"));
    }
}

TEST_F(Replacement, IsRefusedForWhatIsNoFileOrMayNotBeWritten) {
    folder.makeFolder("folder");
    chmod(folder.path().c_str(), 0777);
    chmod(folder.write("fixed", "old").c_str(), 0444);
    const tests::Tree before = tests::treeOf(folder.path());
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        for (const string& name : {string("folder"), string("fixed"), string("none/file"),
                                   string("fixed/file"), string("nul\0", 4)}) {
            EXPECT_EQ(replace(name, "new"), 1) << name;
        }
        return true;
    }));
    EXPECT_EQ(tests::treeOf(folder.path()), before);
}

TEST_F(Replacement, InAFolderThatTakesNoNewNamesIsWrittenOverTheOldFile) {
    chmod(folder.write("closed/file", "a longer old text").c_str(), 0666);
    chmod(folder.path().c_str(), 0755);
    chmod(folder.path("closed").c_str(), 0555);
    EXPECT_TRUE(tests::succeedsWithoutRoot([&] {
        EXPECT_EQ(replace("closed/file", "new"), 0);
        EXPECT_EQ(replace("closed/other", "new"), 1);
        return true;
    }));
    chmod(folder.path("closed").c_str(), 0755);
    EXPECT_EQ(tests::treeOf(folder.path()), (tests::Tree{{"closed/", ""}, {"closed/file", "new"}}));
}

}  // namespace
