// errors_test.cpp
//
// The published codes and messages, and the store of the last error.

#include "errors/errors.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace tvxconv;
using std::string;

// Read before any test (or anything else in this program) can have failed.
struct Store {
    int codeStatus = 99;
    int code = 99;
    int messageStatus = 99;
    string message = "rubbish";

    Store() {
        codeStatus = getLastErrorCode(code);
        messageStatus = getLastErrorMessage(message);
    }
};
const Store storeAtStart;

TEST(LastError, IsEmptyBeforeTheFirstFailure) {
    EXPECT_EQ(storeAtStart.codeStatus, 0);
    EXPECT_EQ(storeAtStart.code, 0);
    EXPECT_EQ(storeAtStart.messageStatus, 0);
    EXPECT_EQ(storeAtStart.message, "");
}

struct Message {
    int code;
    int namedCode;
    const char* text;
};

const Message kMessages[] = {
    {10101, ERR_INVALID_ERROR_CODE, "Invalid error code."},
    {10102, ERR_CREATE_DIRECTORY,
     "Failed to create directory \"%s\". Check write permissions on the parent directory."},
    {10103, ERR_OPEN_DIRECTORY, "Failed to open directory \"%s\". Check its existence on the disk."},
    {10104, ERR_FILE_NOT_FOUND, "File \"%s\" does not exist."},
    {10105, ERR_OPEN_FOR_READING,
     "Failed to open file \"%s\" for reading. Check its access permissions and existence on the disk."},
    {10106, ERR_OPEN_FOR_WRITING,
     "Failed to open file \"%s\" for writing. Check disk space and write permissions on the parent "
     "directory."},
    {10107, ERR_DELETE_FILE, "Failed to delete file \"%s\"."},
    {10108, ERR_COPY_FILE,
     "Failed to copy file \"%s\" to file \"%s\". Check disk space and access permissions."},
    {10109, ERR_READ_FILE, "Failed to read file \"%s\". Check the file syntax."},
    {10110, ERR_WRITE_FILE,
     "Failed to write to file \"%s\". Check disk space and write permissions on the file."},
    {10111, ERR_READ_DESIGN_FILE, "Failed to read the design file \"%s\"."},
    {10112, ERR_DESTINATION_EXISTS, "Destination project file \"%s\" already exists."},
};

const int kCodesWithoutMessage[] = {-2147483647 - 1, -10101, -5,    0,     1,     101,   10000, 10099,
                                    10100,           10113,  10150, 10199, 10200, 10201, 20101, 2147483647};

TEST(ErrorMessage, OfEachCodeIsThePublishedText) {
    for (const Message& m : kMessages) {
        EXPECT_EQ(m.namedCode, m.code);
        string text = "rubbish";
        int group = -7;
        EXPECT_EQ(getErrorMessage(text, group, m.code), 0) << m.code;
        EXPECT_EQ(text, m.text) << m.code;
        EXPECT_EQ(group, 1) << m.code;
    }
}

TEST(ErrorMessage, OfAnyOtherCodeIsEmpty) {
    for (const int code : kCodesWithoutMessage) {
        string text = "rubbish";
        int group = -7;
        EXPECT_EQ(getErrorMessage(text, group, code), 1) << code;
        EXPECT_EQ(text, "") << code;
    }
}

TEST(ErrorMessage, IsFoundInOneTableByTheCodesIndex) {
    const char* const* firstTable = nullptr;
    for (const Message& m : kMessages) {
        const char* const* table = nullptr;
        int group = -7;
        int index = -7;
        EXPECT_EQ(lookupErrorMessage(table, group, index, m.code), 0) << m.code;
        EXPECT_EQ(group, 1) << m.code;
        ASSERT_EQ(index, m.code - 10101) << m.code;
        ASSERT_NE(table, nullptr) << m.code;
        EXPECT_STREQ(table[index], m.text) << m.code;
        if (firstTable == nullptr) firstTable = table;
        EXPECT_EQ(table, firstTable) << m.code;
    }
}

TEST(ErrorMessage, LookUpOfAnyOtherCodeGivesTheFirstEntryAndSaysSo) {
    for (const int code : kCodesWithoutMessage) {
        const char* const* table = nullptr;
        int group = -7;
        int index = -7;
        EXPECT_EQ(lookupErrorMessage(table, group, index, code), 1) << code;
        EXPECT_EQ(group, 1) << code;
        EXPECT_EQ(index, 0) << code;
        ASSERT_NE(table, nullptr) << code;
        EXPECT_STREQ(table[0], "Invalid error code.") << code;
    }
}

void expectStored(int code, const string& message) {
    int storedCode = -7;
    string storedMessage = "rubbish";
    EXPECT_EQ(getLastErrorCode(storedCode), 0);
    EXPECT_EQ(getLastErrorMessage(storedMessage), 0);
    EXPECT_EQ(storedCode, code);
    EXPECT_EQ(storedMessage, message);
}

TEST(LastError, IsWhatWasSetLast) {
    for (const int code : {10104, 0, -5, 2147483647, 10102}) {
        EXPECT_EQ(setLastErrorCode(code), 0);
        int stored = -7;
        EXPECT_EQ(getLastErrorCode(stored), 0) << code;
        EXPECT_EQ(stored, code);
    }
    for (const string& text :
         {string("a message"), string(), string("%s\n"), string("a\0b", 3), string(5000, 'x')}) {
        EXPECT_EQ(setLastErrorMessage(text), 0);
        string stored = "rubbish";
        EXPECT_EQ(getLastErrorMessage(stored), 0) << text;
        EXPECT_EQ(stored, text);
    }
}

TEST(LastError, KeepsCodeAndMessageApart) {
    setLastErrorCode(10103);
    setLastErrorMessage("first");
    setLastErrorCode(10104);
    expectStored(10104, "first");
    setLastErrorMessage("second");
    expectStored(10104, "second");
}

TEST(ReportError, RecordsCodeAndMessageWithThePathAndReturnsTheCode) {
    const string path = "C:/work/amp \"x\".opj";
    for (const Message& m : kMessages) {
        if (m.code == ERR_COPY_FILE) continue;
        string expected = m.text;
        const std::size_t place = expected.find("%s");
        if (place != string::npos) expected.replace(place, 2, path);
        setLastErrorCode(1);
        setLastErrorMessage("rubbish");
        EXPECT_EQ(reportError(m.code, path), m.code);
        expectStored(m.code, expected);
    }
}

TEST(ReportError, PutsThePathInPlaceWithoutQuotesOfItsOwn) {
    EXPECT_EQ(reportError(ERR_OPEN_FOR_WRITING, "D:/out/amp.net"), 10106);
    expectStored(
        10106,
        "Failed to open file \"D:/out/amp.net\" for writing. Check disk space and write permissions on "
        "the parent directory.");
}

TEST(ReportError, NamesSourceThenDestinationOfACopy) {
    EXPECT_EQ(reportError(ERR_COPY_FILE, "C:/a.lib", "D:/b.lib"), 10108);
    expectStored(
        10108,
        "Failed to copy file \"C:/a.lib\" to file \"D:/b.lib\". Check disk space and access permissions.");
}

TEST(ReportError, TakesNoPathTextForAPlaceToFill) {
    const struct {
        string source;
        string destination;
    } cases[] = {
        {"%s", "b"}, {"a", "%s"}, {"%s%s", "%s"}, {"100%", "%d%n%s"}, {"%%", "%5$s"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(reportError(ERR_COPY_FILE, c.source, c.destination), 10108);
        expectStored(10108, "Failed to copy file \"" + c.source + "\" to file \"" + c.destination +
                                "\". Check disk space and access permissions.");
        EXPECT_EQ(reportError(ERR_FILE_NOT_FOUND, c.source), 10104);
        expectStored(10104, "File \"" + c.source + "\" does not exist.");
    }
}

TEST(ReportError, FillsInAnEmptyPath) {
    EXPECT_EQ(reportError(ERR_DELETE_FILE, ""), 10107);
    expectStored(10107, "Failed to delete file \"\".");
    EXPECT_EQ(reportError(ERR_COPY_FILE, "", ""), 10108);
    expectStored(10108, "Failed to copy file \"\" to file \"\". Check disk space and access permissions.");
}

TEST(ReportError, EndsAPathAtItsFirstNul) {
    EXPECT_EQ(reportError(ERR_FILE_NOT_FOUND, string("a\0b", 3)), 10104);
    expectStored(10104, "File \"a\" does not exist.");
}

TEST(ReportError, CutsTheMessageAt1023Bytes) {
    // 6 bytes stand in front of the path and 17 behind it: with a path of 1000 bytes nothing is cut.
    for (const std::size_t length : {999U, 1000U, 1001U, 1002U, 1016U, 1017U, 1018U, 1019U, 4095U, 100000U}) {
        const string path(length, 'p');
        const string whole = "File \"" + path + "\" does not exist.";
        EXPECT_EQ(reportError(ERR_FILE_NOT_FOUND, path), 10104);
        expectStored(10104, whole.substr(0, 1023));
    }
    const string source(600, 's');
    const string destination(600, 'd');
    EXPECT_EQ(reportError(ERR_COPY_FILE, source, destination), 10108);
    expectStored(10108,
                 "Failed to copy file \"" + source + "\" to file \"" + string(1023 - 21 - 600 - 11, 'd'));
}

TEST(ReportError, RecordsAnUnknownCodeWithAnEmptyMessage) {
    for (const int code : kCodesWithoutMessage) {
        setLastErrorMessage("rubbish");
        EXPECT_EQ(reportError(code, "path"), code);
        expectStored(code, "");
    }
}

TEST(ReportError, ReplacesCodeAndMessageOfAnEarlierFailure) {
    reportError(ERR_COPY_FILE, "a", "b");
    reportError(ERR_FILE_NOT_FOUND, "c");
    expectStored(10104, "File \"c\" does not exist.");
}

}  // namespace
