// attributeReader_test.cpp
//
// Reading attribute-list text: tokens, errors and where they are found, the limits of lengths, where the
// stream stands afterwards, deep nesting, and the tree that is built of the cells. Every text is read from
// streams of several kinds and from blocks of several sizes, with the same result. Texts made up at random
// are compared with a plain reader.

#include "attrlist/reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "attrlist/CellPool.h"
#include "support/TestFolder.h"
#include "support/attributeTrees.h"

namespace {

using namespace tvxconv::attrlist;
using std::string;
using tests::cellText;
using tests::kStreamKinds;
using tests::Stream;
using tests::StreamKind;
using tests::streamOf;
using tests::treeText;

// What one call tells, and what the stream holds after it.
struct Reading {
    string cells;
    string error;  // "" where it is null
    int line = -1;
    int column = -1;
    string rest;

    bool operator==(const Reading&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Reading& reading) {
    return out << reading.cells.substr(0, 300) << ", error \"" << reading.error << "\", line " << reading.line
               << ", column " << reading.column << ", then \"" << reading.rest.substr(0, 100) << '"';
}

Reading readFrom(std::FILE* stream) {
    CellPool pool;
    Reading reading;
    const char* error = "rubbish";
    reading.cells = cellText(readExpression(stream, reading.line, reading.column, error, pool));
    if (error != nullptr) reading.error = error;
    reading.rest = tests::restOf(stream);
    return reading;
}

Reading read(const string& text, StreamKind kind = StreamKind::file) {
    return readFrom(streamOf(text, kind).get());
}

string x(std::size_t count, char c = 'x') {
    return string(count, c);
}

constexpr const char* kNoClosing = "Need closing )";
constexpr const char* kIllegal = "Illegal character to start symbol name.";

TEST(AttributeReader, ReadsOneExpression) {
    const struct {
        string text;
        string cells;
        string rest;
    } cases[] = {
        // nothing
        {"", "nil", ""},
        {" \t\n\r\v\f", "nil", ""},
        {")", "nil", ")"},
        {"  )a", "nil", ")a"},
        // symbols
        {"a", "S:a", ""},
        {"a b", "S:a", " b"},
        {"\n\n  Z9\n", "S:Z9", "\n"},
        {"_a-1_ b", "S:_a-1_", " b"},
        {"a.b", "S:a", ".b"},
        {"a(b)", "S:a", "(b)"},
        {"a\"b\"", "S:a", "\"b\""},
        {"a)b", "S:a", ")b"},
        // lists
        {"()", "(nil)", ""},
        {"( \n )x", "(nil)", "x"},
        {"(a)", "(S:a)", ""},
        {"( a )", "(S:a)", ""},
        {"(a b)c", "(S:a S:b)", "c"},
        {"(a)(b)", "(S:a)", "(b)"},
        {"(())", "((nil))", ""},
        {"(()())", "((nil) (nil))", ""},
        {"(() a)", "((nil) S:a)", ""},
        {"(a ())", "(S:a (nil))", ""},
        {"(((a)))", "(((S:a)))", ""},
        {"((((a) b) c) d)", "((((S:a) S:b) S:c) S:d)", ""},
        {"(a (b (c (d))))", "(S:a (S:b (S:c (S:d))))", ""},
        {"(a(b)c)", "(S:a (S:b) S:c)", ""},
        {"(a\"b\"c)", "(S:a Q:b S:c)", ""},
        {"(1\"b\"2(3)4)", "(N:1 Q:b N:2 (N:3) N:4)", ""},
        {"((a b)(c d))", "((S:a S:b) (S:c S:d))", ""},
        // numbers
        {"0", "N:0", ""},
        {"-7 ", "N:-7", " "},
        {"-2.50", "N:-2.5", ""},
        {"5.", "N:5", ""},
        {"-.5", "N:-0.5", ""},
        {"-", "N:0", ""},
        {"(- a)", "(N:0 S:a)", ""},
        {"1e3", "N:1000", ""},
        {"1E+3", "N:1000", ""},
        {"25e-1", "N:2.5", ""},
        {"1.5e2)", "N:150", ")"},
        {"1e", "N:1", ""},
        {"1.5.2 ", "N:1.5", " "},
        {"1-2", "N:1", ""},
        {"12%;/", "N:12", ""},
        // a letter that is no exponent begins a symbol
        {"12ab", "N:12", "ab"},
        {"(1x)", "(N:1 S:x)", ""},
        {"(1end)", "(N:1)", ""},
        {"(2exp 1)", "(N:2 N:1)", ""},
        {"(1E_x)", "(N:1)", ""},
        {"(1e+x 2)", "(N:1 N:2)", ""},
        {"(1e-2x)", "(N:0.01 S:x)", ""},
        {"(1_x)", "(N:1 S:_x)", ""},
        {"1e3e4", "N:1000", "e4"},
        {"0x10", "N:0", "x10"},
        {"-e5", "N:0", "e5"},
        {"-inf", "N:0", "inf"},
        {"1.5.2e3", "N:1.5", "e3"},
        // strings
        {"\"\"", "Q:", ""},
        {"\"a b\"c", "Q:a b", "c"},
        {"\"a\\\"b\"", "Q:a\"b", ""},
        {"\"a\\\\b\"", "Q:a\\b", ""},
        {"\"\\n\\t\\(\"", "Q:nt(", ""},
        {"\"\\\\\"a", "Q:\\", "a"},
        {"\"(a.b)\n;/\"", "Q:(a.b)\n;/", ""},
        {"\"a\\\nb\"", "Q:a\nb", ""},
        {"\"\x80\xff\"", "Q:\x80\xff", ""},
        {"\"a", "Q:a", ""},
        {"\"a\\", "Q:a", ""},
        {"\"", "Q:", ""},
        {"\"a\"\"b\"", "Q:a", "\"b\""},
        // A NUL ends the text of a string, not the string.
        {string("\"a\0b\"c", 6), "Q:a", "c"},
        {string("\"\0\"c", 4), "Q:", "c"},
    };
    for (const auto& [text, cells, rest] : cases) {
        for (const StreamKind kind : kStreamKinds) {
            const Reading reading = read(text, kind);
            EXPECT_EQ(reading.cells, cells) << text << " kind " << static_cast<int>(kind);
            EXPECT_EQ(reading.error, "") << text << " kind " << static_cast<int>(kind);
            EXPECT_EQ(reading.rest, rest) << text << " kind " << static_cast<int>(kind);
        }
    }
}

TEST(AttributeReader, StopsAtTheFirstErrorAndTellsThePlace) {
    const struct {
        string text;
        const char* error;
        int line, column;
        string rest;
    } cases[] = {
        {"(", kNoClosing, 1, 1, ""},
        {"(a (b c)", kNoClosing, 1, 8, ""},
        {"(a\n(b", kNoClosing, 2, 2, ""},
        {"(a\n", kNoClosing, 2, 0, ""},
        {"((a)\n\n ", kNoClosing, 3, 1, ""},
        {"(\"a)", kNoClosing, 1, 4, ""},
        {"(\"a\\", kNoClosing, 1, 4, ""},
        {"(12", kNoClosing, 1, 3, ""},
        {"(()", kNoClosing, 1, 3, ""},
        {"(a .b)", kIllegal, 1, 4, "b)"},
        {"(a.b)", kIllegal, 1, 3, "b)"},
        {".", kIllegal, 1, 1, ""},
        {"+1", kIllegal, 1, 1, "1"},
        {"(a\n\n  /)", kIllegal, 3, 3, ")"},
        {"(a \\b)", kIllegal, 1, 4, "b)"},
        {"(a 'b')", kIllegal, 1, 4, "b')"},
        {"(a ; b)", kIllegal, 1, 4, " b)"},
        {"((((a)) .", kIllegal, 1, 9, ""},
        {"(\x80)", kIllegal, 1, 2, ")"},
        {"(a \xff)", kIllegal, 1, 4, ")"},
        {string("(a \0)", 5), kIllegal, 1, 4, ")"},
        {string("(a\0)", 4), kIllegal, 1, 3, ")"},
        {string("\0", 1), kIllegal, 1, 1, ""},
    };
    for (const auto& [text, error, line, column, rest] : cases) {
        for (const StreamKind kind : kStreamKinds) {
            EXPECT_EQ(read(text, kind), (Reading{"nil", error, line, column, rest})) << text;
        }
    }
}

TEST(AttributeReader, CountsLinesAndColumns) {
    const struct {
        string text;
        int line, column;
    } cases[] = {
        {"", 1, 0},
        {"   ", 1, 3},
        {"\n", 2, 0},
        {"\n\n  ", 3, 2},
        {"  )", 1, 2},
        {"(a)", 1, 3},
        {"(a)\n", 1, 3},
        {"(a\n b)\n", 2, 3},
        {"\"a\nb\"\n", 2, 2},
        {"\n\"\\\n\\\"\"", 3, 3},
        {"a", 1, 1},
        {"a b", 1, 1},
        {"  ab)", 1, 4},
        {"a\r\n", 1, 1},
        // The length of the line is not known any more when its end is put back.
        {"a\n", 1, 80},
        {"12\nb", 1, 80},
        {"\n\n abc\n\n", 3, 80},
        {"(a\n)", 2, 1},
        {"(a\n", 2, 0},
    };
    for (const auto& [text, line, column] : cases) {
        for (const StreamKind kind : kStreamKinds) {
            const Reading reading = read(text, kind);
            EXPECT_EQ(reading.line, line) << text << " kind " << static_cast<int>(kind);
            EXPECT_EQ(reading.column, column) << text << " kind " << static_cast<int>(kind);
        }
    }
}

TEST(AttributeReader, PutsBackOneCharacter) {
    for (const StreamKind kind : kStreamKinds) {
        const Stream stream = streamOf("a\nbc", kind);
        ReaderState state(stream.get());
        const auto expectPlace = [&](int line, int column, std::uint64_t count) {
            EXPECT_EQ(state.line(), line);
            EXPECT_EQ(state.column(), column);
            EXPECT_EQ(state.count(), count);
        };
        expectPlace(1, 0, 0);
        EXPECT_EQ(state.get(), 'a');
        expectPlace(1, 1, 1);
        EXPECT_EQ(state.get(), '\n');
        expectPlace(2, 0, 2);
        state.putBack();
        expectPlace(1, 80, 1);
        EXPECT_EQ(state.get(), '\n');
        expectPlace(2, 0, 2);
        EXPECT_EQ(state.get(), 'b');
        state.putBack();
        expectPlace(2, 0, 2);
        EXPECT_EQ(state.get(), 'b');
        EXPECT_EQ(state.get(), 'c');
        expectPlace(2, 2, 4);
        EXPECT_EQ(state.get(), EOF);
        EXPECT_EQ(state.get(), EOF);
        expectPlace(2, 2, 4);
    }
}

TEST(AttributeReader, CutsSymbolsAndNumbersAt1000Characters) {
    const struct {
        string text, cells, rest;
    } cases[] = {
        {x(1000), "S:" + x(1000), ""},
        {x(1000) + " y", "S:" + x(1000), " y"},
        {x(1001), "S:" + x(1000), "x"},
        {"(" + x(2500) + ")", "(S:" + x(1000) + " S:" + x(1000) + " S:" + x(500) + ")", ""},
        {"(" + x(1000) + "-5)", "(S:" + x(1000) + " N:-5)", ""},
        {x(999, '0') + "7", "N:7", ""},
        {"(" + x(1000, '0') + "7)", "(N:0 N:7)", ""},
        {"(" + x(999, '0') + "1e2)", "(N:1 S:e2)", ""},
        {"(-" + x(1500, '0') + "8.5)", "(N:0 N:8.5)", ""},
    };
    for (const auto& [text, cells, rest] : cases) {
        for (const StreamKind kind : kStreamKinds) {
            const Reading reading = read(text, kind);
            EXPECT_EQ(reading.cells, cells) << text.size();
            EXPECT_EQ(reading.error, "") << text.size();
            EXPECT_EQ(reading.rest, rest) << text.size();
        }
    }
    // The character that goes beyond is put back, so a line end there counts like any other.
    EXPECT_EQ(read(x(1000) + "\n").column, 80);
    EXPECT_EQ(read(x(1000) + "x").column, 1000);
}

TEST(AttributeReader, CutsStringsAt299997Characters) {
    constexpr std::size_t kMost = 299997;
    for (const std::size_t size :
         {std::size_t{996}, std::size_t{997}, std::size_t{998}, std::size_t{999}, std::size_t{1000},
          std::size_t{1001}, std::size_t{100000}, kMost - 1, kMost}) {
        for (const StreamKind kind : kStreamKinds) {
            EXPECT_EQ(read('"' + x(size) + "\"y", kind),
                      (Reading{"Q:" + x(size), "", 1, static_cast<int>(size) + 2, "y"}))
                << size;
            EXPECT_EQ(read('"' + x(size), kind),
                      (Reading{"Q:" + x(size), "", 1, static_cast<int>(size) + 1, ""}))
                << size << " without an end";
        }
    }
    // What an escape stands for counts once.
    string escaped = "\"";
    for (std::size_t i = 0; i < kMost; ++i) escaped += "\\\\";
    EXPECT_EQ(read(escaped + "\"y").cells, "Q:" + x(kMost, '\\'));
    EXPECT_EQ(read(escaped + "\"y").rest, "y");
    EXPECT_EQ(read(escaped + "z\"y").rest, "z\"y");

    for (const StreamKind kind : kStreamKinds) {
        // The rest are symbols of 1000, and the quote that was to be the end begins another string.
        const Reading reading = read("(" + ('"' + x(400000)) + "\" a)", kind);
        EXPECT_EQ(reading.error, kNoClosing);
        string cells = "(Q:" + x(kMost);
        for (int i = 0; i < 100; ++i) cells += " S:" + x(1000);
        EXPECT_EQ(read("(" + ('"' + x(400000)) + ")", kind).cells, cells + " S:xxx)");
        EXPECT_EQ(read("(" + ('"' + x(400000)) + "\"y\")", kind).cells, cells + " S:xxx Q:y)");
        // An escape beyond the limit is none.
        const Reading escape = read("(" + ('"' + x(kMost)) + "\\\"\")", kind);
        EXPECT_EQ(escape, (Reading{"nil", kIllegal, 1, 300000, "\"\")"}));
    }
}

TEST(AttributeReader, ReadsTokensOfAMegabyte) {
    const string million = x(1 << 20);
    EXPECT_EQ(read(million).rest.size(), million.size() - 1000);
    EXPECT_EQ(read(x(1 << 20, '1')).rest.size(), million.size() - 1000);
    EXPECT_EQ(read(x(1 << 20, '-')).rest.size(), million.size() - 1000);
    EXPECT_EQ(read('"' + million).rest.size(), million.size() - 299997);
    EXPECT_EQ(read(x(1 << 20, ' ') + "a").cells, "S:a");
    EXPECT_EQ(read(x(1 << 20, '\n') + "a").line, (1 << 20) + 1);
    EXPECT_EQ(read(x(1 << 20, '.')).rest.size(), million.size() - 1);
}

TEST(AttributeReader, DoesNotCareWhereABlockEnds) {
    const string text =
        "(abc \"d\\\"e\nf\" -12.5e1 (g ()) \"" + x(1100, 'h') + "\")\nsym\n(" + x(70) + " \"i\\\\\") 5 (k";
    const string first = "(S:abc Q:d\"e\nf N:-125 (S:g (nil)) Q:" + x(1100, 'h') + ")";
    for (std::size_t size = 1; size <= text.size() + 1; ++size) {
        ReaderState state(tests::inBlocks(text, size));
        CellPool pool;
        const char* error = "rubbish";
        const auto expectNext = [&](const string& cells, int line, int column) {
            EXPECT_EQ(cellText(readExpression(state, error, pool)), cells) << size;
            EXPECT_EQ(error, nullptr) << size;
            EXPECT_EQ(state.line(), line) << size;
            EXPECT_EQ(state.column(), column) << size;
        };
        expectNext(first, 2, 1121);
        expectNext("S:sym", 3, 80);
        expectNext("(S:" + x(70) + " Q:i\\)", 4, 78);
        expectNext("N:5", 4, 80);
        EXPECT_EQ(state.count(), text.size() - 3);
        EXPECT_EQ(readExpression(state, error, pool), nullptr);
        EXPECT_STREQ(error, kNoClosing);
        EXPECT_EQ(state.get(), EOF);
        EXPECT_EQ(state.count(), text.size());
    }
}

TEST(AttributeReader, PutsBackOneCharacterOfABlock) {
    const string text = "a\n\xff";
    for (std::size_t size = 1; size <= text.size(); ++size) {
        ReaderState state(tests::inBlocks(text, size));
        EXPECT_EQ(state.get(), 'a');
        EXPECT_EQ(state.get(), '\n');
        state.putBack();
        EXPECT_EQ(state.line(), 1);
        EXPECT_EQ(state.column(), 80);
        EXPECT_EQ(state.count(), 1u);
        EXPECT_EQ(state.get(), '\n');
        EXPECT_EQ(state.get(), 0xff);
        EXPECT_EQ(state.line(), 2);
        EXPECT_EQ(state.column(), 1);
        EXPECT_EQ(state.get(), EOF);
        EXPECT_EQ(state.count(), 3u);
    }
}

TEST(AttributeReader, ReadsOneExpressionAfterTheOtherFromEveryStream) {
    for (const string end : {"\n", "\r\n"}) {
        const string text =
            "(a 1" + end + ")" + end + "sym" + end + "\"s" + end + "t\"12" + end + "(b)" + end;
        const string cells[] = {"(S:a N:1)", "S:sym", "Q:s" + end + "t", "N:12", "(S:b)", "nil", "nil"};
        for (const StreamKind kind : kStreamKinds) {
            const Stream stream = streamOf(text, kind);
            for (const string& expected : cells) {
                CellPool pool;
                int line = -1;
                int column = -1;
                const char* error = "rubbish";
                EXPECT_EQ(cellText(readExpression(stream.get(), line, column, error, pool)), expected)
                    << static_cast<int>(kind);
                EXPECT_EQ(error, nullptr);
            }
        }
    }
}

TEST(AttributeReader, LeavesTheStreamRightAfterAPutBackCharacter) {
    for (const StreamKind kind : kStreamKinds) {
        const Stream stream = streamOf("ab", kind);
        ReaderState state(stream.get());
        EXPECT_EQ(state.get(), 'a');
        state.putBack();
        EXPECT_EQ(std::fgetc(stream.get()), 'a');
        EXPECT_EQ(state.get(), 'b');
    }
}

TEST(AttributeReader, LeavesTheStreamBehindTheExpression) {
    const string text = "(a b)  12ab\n\"s\"\n(c\n)d";
    const struct {
        const char* cells;
        long offset;
    } expressions[] = {{"(S:a S:b)", 5}, {"N:12", 9}, {"S:ab", 11}, {"Q:s", 15}, {"(S:c)", 20}, {"S:d", 21}};
    for (const StreamKind kind : kStreamKinds) {
        const Stream stream = streamOf(text, kind);
        for (const auto& [cells, offset] : expressions) {
            CellPool pool;
            int line = -1;
            int column = -1;
            const char* error = "rubbish";
            EXPECT_EQ(cellText(readExpression(stream.get(), line, column, error, pool)), cells);
            EXPECT_EQ(error, nullptr);
            if (kind == StreamKind::forward || kind == StreamKind::misplaced) continue;
            EXPECT_EQ(std::ftell(stream.get()), offset) << cells;
        }
        EXPECT_EQ(std::fgetc(stream.get()), EOF);
        EXPECT_EQ(readFrom(stream.get()), (Reading{"nil", "", 1, 0, ""}));
    }
}

TEST(AttributeReader, TellsTheStreamsEndOnlyWhenItWasReached) {
    const struct {
        const char* text;
        bool reachesEnd;
    } cases[] = {{"(a)", false}, {"\"a\"", false}, {"a ", false}, {"a", true},  {"12", true}, {"\"a", true},
                 {"(a", true},   {"", true},       {" ", true},   {".", false}, {")", false}};
    for (const auto& [text, reachesEnd] : cases) {
        for (const StreamKind kind : kStreamKinds) {
            const Stream stream = streamOf(text, kind);
            CellPool pool;
            int line = -1;
            int column = -1;
            const char* error = "rubbish";
            readExpression(stream.get(), line, column, error, pool);
            EXPECT_EQ(std::feof(stream.get()) != 0, reachesEnd) << text << " kind " << static_cast<int>(kind);
        }
    }
}

TEST(AttributeReader, TakesWhatWasPutBackIntoTheStream) {
    for (const StreamKind kind : kStreamKinds) {
        const Stream stream = streamOf("xa b) c", kind);
        EXPECT_EQ(std::fgetc(stream.get()), 'x');
        EXPECT_EQ(std::ungetc('(', stream.get()), '(');
        EXPECT_EQ(readFrom(stream.get()), (Reading{"(S:a S:b)", "", 1, 5, " c"}));
    }
}

TEST(AttributeReader, TakesNoMoreThanItsExpressionFromAPipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const Stream stream(fdopen(ends[0], "r"));
    const string text = "  (a \"b\\\"\" -1)b";
    ASSERT_EQ(::write(ends[1], text.data(), static_cast<unsigned>(text.size())),
              static_cast<ssize_t>(text.size()));
    // The pipe stays open: a reader that wants more than there is would wait for ever.
    CellPool pool;
    int line = -1;
    int column = -1;
    const char* error = "rubbish";
    EXPECT_EQ(cellText(readExpression(stream.get(), line, column, error, pool)), "(S:a Q:b\" N:-1)");
    EXPECT_EQ(column, static_cast<int>(text.size()) - 1);
    EXPECT_EQ(std::fgetc(stream.get()), 'b');
    close(ends[1]);
    EXPECT_EQ(readFrom(stream.get()), (Reading{"nil", "", 1, 0, ""}));
}

TEST(AttributeReader, TakesAFailingStreamForOneAtItsEnd) {
    if (tests::kOnWindows) GTEST_SKIP() << "a folder cannot be opened as a file there";
    const int folder = open("/", O_RDONLY | O_DIRECTORY);
    ASSERT_NE(folder, -1);
    const Stream stream(fdopen(folder, "r"));
    EXPECT_EQ(readFrom(stream.get()), (Reading{"nil", "", 1, 0, ""}));
}

// --- against a reader that does it character by character ---

// Reads as ReaderState tells, with the runtime's fgetc and ungetc, and yields the text of cells.
class PlainReader {
public:
    explicit PlainReader(std::FILE* stream) : stream_(stream) {}

    Reading read() {
        Reading reading;
        reading.cells = expression();
        if (error_ != nullptr) reading = {"nil", error_, 0, 0, ""};
        reading.line = line_;
        reading.column = column_;
        reading.rest = tests::restOf(stream_);
        return reading;
    }

private:
    int get() {
        const int c = std::fgetc(stream_);
        if (c != EOF) ++column_;
        if (c == '\n') {
            column_ = 0;
            ++line_;
        }
        return c;
    }

    void putBack(int c) {
        if (c == EOF) return;
        std::ungetc(c, stream_);
        --column_;
        if (c == '\n') {
            --line_;
            column_ = 80;
        }
    }

    int getBehindSpace() {
        int c = get();
        while (c != EOF && std::isspace(c) != 0) c = get();
        return c;
    }

    string expression() {
        const int c = getBehindSpace();
        if (c == EOF) return "nil";
        if (c == ')') {
            putBack(c);
            return "nil";
        }
        if (c == '(') return list();
        if (std::isdigit(c) != 0 || c == '-') return number(c);
        if (c == '"') return quoted();
        if (std::isalpha(c) != 0 || c == '_') return symbol(c);
        error_ = kIllegal;
        return "";
    }

    string list() {
        string text = "(";
        for (;;) {
            text += expression();
            if (error_ != nullptr) return "";
            const int c = getBehindSpace();
            if (c == ')') return text + ")";
            if (c == EOF) {
                error_ = kNoClosing;
                return "";
            }
            putBack(c);
            text += " ";
        }
    }

    string number(int c) {
        string text;
        bool mayTakeExponent = true;  // digits and one full stop so far
        bool hasDigit = false;
        bool hasStop = false;
        bool needsDigit = false;
        bool lettersEndIt = true;
        for (;;) {
            text += static_cast<char>(c);
            if (std::isdigit(c) != 0) {
                hasDigit = true;
            } else if (c == '.' && !hasStop) {
                hasStop = true;
            } else if (text.size() > 1 || c != '-') {
                mayTakeExponent = false;
            }
            c = get();
            if (c == EOF || std::isspace(c) != 0 || c == '(' || c == ')' || c == '"') break;
            if (text.size() == 1000) break;
            if (needsDigit && std::isdigit(c) == 0) {
                needsDigit = (c == '+' || c == '-') && std::isalpha(text.back()) != 0;
                lettersEndIt = needsDigit;
            } else {
                needsDigit = false;
            }
            if (!lettersEndIt) continue;
            const bool isExponent = (c == 'e' || c == 'E') && hasDigit && mayTakeExponent;
            if (c == '_' || (std::isalpha(c) != 0 && !isExponent)) break;
            needsDigit = needsDigit || isExponent;
        }
        putBack(c);
        const double value = std::atof(text.c_str());
        char printed[64];
        if (value == static_cast<int>(std::max(-2147483648.0, std::min(2147483647.0, value)))) {
            std::snprintf(printed, sizeof printed, "N:%d", static_cast<int>(value));
        } else {
            std::snprintf(printed, sizeof printed, "N:%.8g", value);
        }
        return printed;
    }

    string quoted() {
        string text;
        for (;;) {
            int c = get();
            if (c == '"' || c == EOF) break;
            if (c == '\\') c = get();
            if (c == EOF) break;
            text += static_cast<char>(c);
        }
        return string("Q:") + text.c_str();
    }

    string symbol(int c) {
        string text;
        while (text.size() < 1000 && c != EOF && (std::isalnum(c) != 0 || c == '_' || c == '-')) {
            text += static_cast<char>(c);
            c = get();
        }
        putBack(c);
        return "S:" + text;
    }

    std::FILE* stream_;
    const char* error_ = nullptr;
    int line_ = 1;
    int column_ = 0;
};

void expectTheSameFromAll(const string& text) {
    const Reading expected = PlainReader(streamOf(text).get()).read();
    for (const StreamKind kind : kStreamKinds) {
        ASSERT_EQ(read(text, kind), expected) << text << "\nkind " << static_cast<int>(kind);
    }
    for (const std::size_t size : {1u, 3u, 1000u}) {
        ReaderState state(tests::inBlocks(text, size));
        CellPool pool;
        const char* error = "rubbish";
        Reading reading;
        reading.cells = cellText(readExpression(state, error, pool));
        reading.error = error != nullptr ? error : "";
        reading.line = state.line();
        reading.column = state.column();
        for (int c = state.get(); c != EOF; c = state.get()) reading.rest += static_cast<char>(c);
        ASSERT_EQ(reading, expected) << text << "\nblocks of " << size;
    }
}

TEST(AttributeReader, AgreesWithAPlainReaderOnRandomTexts) {
    const std::vector<string> pieces = {"(",
                                        ")",
                                        "(",
                                        ")",
                                        "(",
                                        ")",
                                        " ",
                                        "\n",
                                        "\t",
                                        "\r\n",
                                        "\"",
                                        "\\",
                                        "a",
                                        "B",
                                        "_",
                                        "-",
                                        "0",
                                        "7",
                                        "e",
                                        "E",
                                        ".",
                                        "+",
                                        "x1",
                                        "12",
                                        "1e3",
                                        "-2.5",
                                        "/",
                                        "\x80",
                                        "\xff",
                                        "\"a b\"",
                                        "\"\"",
                                        "(a 1)",
                                        "sym-1",
                                        "1e-400",
                                        "1e400",
                                        "123456789.5",
                                        "\v",
                                        string("\0", 1),
                                        "\"(\\\"\\\\\"",
                                        "2147483648",
                                        "-2147483649"};
    for (unsigned seed = 1; seed <= 3000; ++seed) {
        std::mt19937 random(seed);
        string text;
        for (std::size_t left = random() % 40; left > 0; --left) text += pieces[random() % pieces.size()];
        SCOPED_TRACE(seed);
        expectTheSameFromAll(text);
        if (HasFatalFailure()) return;
    }
}

TEST(AttributeReader, BearsEveryByteInEveryPlace) {
    if (tests::kOnWindows) GTEST_SKIP() << "40,000 streams, each a file there, take minutes";
    const string good = " (a \"b\\\\\" -1.5e2 (c) ())z";
    for (std::size_t place = 0; place <= good.size(); ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            const string inserted = string(good).insert(place, 1, static_cast<char>(byte));
            expectTheSameFromAll(inserted);
            if (place < good.size()) {
                string replaced = good;
                replaced[place] = static_cast<char>(byte);
                expectTheSameFromAll(replaced);
            }
            if (HasFatalFailure()) return;
        }
    }
}

// --- depth ---

TEST(AttributeReader, BearsAMillionOpenParentheses) {
    constexpr int kDepth = 1000000;
    EXPECT_EQ(read(x(kDepth, '(')), (Reading{"nil", kNoClosing, 1, kDepth, ""}));
    string text;
    for (int i = 0; i < kDepth; ++i) text += "(a ";
    EXPECT_EQ(read(text), (Reading{"nil", kNoClosing, 1, 3 * kDepth, ""}));
    EXPECT_EQ(read(x(kDepth, '(') + "."), (Reading{"nil", kIllegal, 1, kDepth + 1, ""}));
}

TEST(AttributeReader, ReadsListsAMillionDeep) {
    constexpr std::size_t kDepth = 1000000;
    const struct {
        const char *open, *inside, *close, *atom;
    } cases[] = {
        {"(", "", ")", "nil"}, {"(", "x", ")", "S:x"}, {"(()", "x", ")", "S:x"}, {"(a", " x", " b)", "S:x"}};
    for (const auto& [open, inside, close, atom] : cases) {
        string text;
        for (std::size_t i = 0; i < kDepth; ++i) text += open;
        text += inside;
        for (std::size_t i = 0; i < kDepth; ++i) text += close;
        const Stream stream = streamOf(text);
        const std::size_t before = CellPool::bytesInUse();
        CellPool pool;
        int line = -1;
        int column = -1;
        const char* error = "rubbish";
        const ListCell* cell = readExpression(stream.get(), line, column, error, pool);
        EXPECT_EQ(error, nullptr);
        EXPECT_EQ(column, static_cast<int>(text.size()));
        EXPECT_LE(CellPool::bytesInUse() - before, 80 * kDepth) << open;
        const bool isFirst = string(open) == "(";
        std::size_t depth = 0;
        while (kindOf(cell) == 'L' && depth < kDepth) {
            cell = isFirst ? first(cell) : depth + 1 < kDepth ? first(rest(cell)) : cell;
            ++depth;
        }
        EXPECT_EQ(depth, kDepth) << open;
        EXPECT_EQ(cellText(isFirst ? cell : first(rest(cell))), atom) << open;
    }
}

TEST(AttributeReader, ReadsListsAMillionLong) {
    constexpr std::size_t kLength = 1000000;
    string text = "(";
    for (std::size_t i = 0; i < kLength; ++i) text += "(a 1)\n";
    const Stream stream = streamOf(text + ")");
    CellPool pool;
    int line = -1;
    int column = -1;
    const char* error = "rubbish";
    std::size_t length = 0;
    for (const ListCell* link = readExpression(stream.get(), line, column, error, pool); link != nullptr;
         link = rest(link)) {
        ++length;
    }
    EXPECT_EQ(length, kLength);
    EXPECT_EQ(line, static_cast<int>(kLength) + 1);
}

// --- cells ---

TEST(AttributeCells, AnswerForNullAndForWhatTheyAreNot) {
    const Stream stream = streamOf("(sym \"str\" 1.5)");
    CellPool pool;
    int line = -1;
    int column = -1;
    const char* error = "rubbish";
    const ListCell* const list = readExpression(stream.get(), line, column, error, pool);
    const ListCell* const symbol = first(list);
    const ListCell* const quoted = first(rest(list));
    const ListCell* const number = first(rest(rest(list)));
    EXPECT_EQ(rest(rest(rest(list))), nullptr);

    EXPECT_EQ(kindOf(list), 'L');
    EXPECT_EQ(kindOf(symbol), 'S');
    EXPECT_EQ(kindOf(quoted), 'Q');
    EXPECT_EQ(kindOf(number), 'N');
    EXPECT_EQ(kindOf(nullptr), 0);
    const ListCell* const none = nullptr;
    for (const ListCell* cell : {symbol, quoted, number, none}) {
        EXPECT_EQ(first(cell), nullptr);
        EXPECT_EQ(rest(cell), nullptr);
    }
    EXPECT_STREQ(symbolText(symbol), "sym");
    EXPECT_STREQ(stringText(quoted), "str");
    for (const ListCell* cell : {list, quoted, number, none}) EXPECT_STREQ(symbolText(cell), "");
    for (const ListCell* cell : {list, symbol, number, none}) EXPECT_STREQ(stringText(cell), "");
    EXPECT_STREQ(atomText(symbol), "sym");
    EXPECT_STREQ(atomText(quoted), "str");
    for (const ListCell* cell : {list, number, none}) EXPECT_EQ(atomText(cell), nullptr);
    char buffer[32] = "rubbish";
    EXPECT_STREQ(numberText(symbol, buffer), "sym");
    EXPECT_STREQ(numberText(quoted, buffer), "str");
    EXPECT_STREQ(numberText(list, buffer), "");
    EXPECT_STREQ(numberText(none, buffer), "");
    EXPECT_STREQ(buffer, "rubbish");
    EXPECT_EQ(numberText(number, buffer), buffer);
    EXPECT_STREQ(buffer, "1.5");
}

TEST(AttributeCells, PrintNumbersAsWholeOnesOrWithEightDigits) {
    const struct {
        string text;
        const char* printed;
    } cases[] = {
        {"2.0", "2"},
        {"3.0", "3"},
        {"-7", "-7"},
        {"0", "0"},
        {"-0", "0"},
        {"-0.0", "0"},
        {"0.5", "0.5"},
        {"-2.50", "-2.5"},
        {"0.1", "0.1"},
        {"1e3", "1000"},
        {"1e-5", "1e-05"},
        {"0.0001", "0.0001"},
        {"123456.789", "123456.79"},
        {"123456789.5", "1.2345679e+08"},
        {"99999999.5", "1e+08"},
        {"123456789", "123456789"},
        {"2147483647", "2147483647"},
        {"2147483648", "2.1474836e+09"},
        {"-2147483648", "-2147483648"},
        {"-2147483649", "-2.1474836e+09"},
        {"1e100", "1e+100"},
        {"1.7976931348623157e308", "1.7976931e+308"},
        {"-1.2345678e-300", "-1.2345678e-300"},
        {"4.9e-324", "4.9406565e-324"},
        // beyond what a double holds
        {"1e999", "inf"},
        {"-1e999", "-inf"},
        {"1e99999999999", "inf"},
        {"1e-999", "0"},
        {"-1e-99999999999", "0"},
        {"1" + x(400, '0'), "inf"},
        {"1" + x(400, '0') + "e-400", "1"},
        {"-0." + x(400, '0') + "1", "0"},
        {"0." + x(400, '0') + "1e401", "1"},
        {"0" + x(400, '0') + "e400", "0"},
        {"0e99999999999", "0"},
    };
    for (const auto& [text, printed] : cases) {
        const Stream stream = streamOf(text);
        CellPool pool;
        int line = -1;
        int column = -1;
        const char* error = "rubbish";
        char buffer[32];
        EXPECT_STREQ(numberText(readExpression(stream.get(), line, column, error, pool), buffer), printed)
            << text;
    }
}

// --- trees ---

// The cells of a text, as long as the object lives.
class Cells {
public:
    explicit Cells(const string& text) {
        int line = -1;
        int column = -1;
        const char* error = "rubbish";
        top = readExpression(streamOf(text).get(), line, column, error, pool_);
    }
    const ListCell* top = nullptr;

private:
    CellPool pool_;
};

TEST(AttributeTree, IsBuiltOfPairsAndOtherElements) {
    const struct {
        const char *list, *tree;
    } cases[] = {
        {"((a 1))", "{a=1}"},
        {"((a b))", "{a=b}"},
        {"((\"a b\" \"c\\\"d\"))", "{a b=c\"d}"},
        {"((a 2.50) (b 3.0) (c -))", "{a=2.5 b=3 c=0}"},
        {"((a \"\"))", "{a=}"},
        {"((k 1) (k 2))", "{k=1 k=2}"},
        {"((1 a))", "{=a}"},
        {"((1 2))", "{=2}"},
        {"((Group (x y)))", "{Group{x=y}}"},
        {"((Group))", "{Group{}}"},
        {"((\"Two words\" (x y) (z 1)))", "{Two words{x=y z=1}}"},
        {"((Group a b))", "{Group{{} {}}}"},
        {"(a)", "{{}}"},
        {"(a \"b\" 1)", "{{} {} {}}"},
        {"(() ())", "{{} {}}"},
        {"((1))", "{{}}"},
        {"((1 (x y)))", "{{x=y}}"},
        {"((a (b c)))", "{a{b=c}}"},
        {"((a ()))", "{a{{}}}"},
        {"((a b ()))", "{a{{} {}}}"},
        {"((() a))", "{{{}}}"},
        {"(((a b) (c d)))", "{{c=d}}"},
        {"((a 1) (B (c 2) (D (e 3)) (f 4)) (g 5) (H))", "{a=1 g=5 B{c=2 f=4 D{e=3}} H{}}"},
        {"()", "{{}}"},  // one element, which is null
        {"atom", "{}"},
        {"1", "{}"},
        {"", "{}"},
    };
    for (const auto& [list, tree] : cases) {
        AttributeNode node("", nullptr);
        buildTree(Cells(list).top, &node, nullptr);
        EXPECT_EQ(treeText(node), tree) << list;
    }
}

TEST(AttributeTree, IsAddedToWhatTheNodeHas) {
    AttributeNode node("Root", nullptr);
    node.addAttribute("old", "1");
    node.addChild("Old");
    for (int i = 0; i < 2; ++i) buildTree(Cells("((new 2) (New (x y)))").top, &node, nullptr);
    EXPECT_EQ(treeText(node), "Root{old=1 new=2 new=2 Old{} New{x=y} New{x=y}}");
}

TEST(AttributeTree, KeepsItsTextsWhenThePoolIsGone) {
    AttributeNode node("Root", nullptr);
    const string longText = x(50000, 'v');
    {
        const Cells cells("((key \"" + longText + "\") (other value))");
        buildTree(cells.top, &node, nullptr);
    }
    EXPECT_EQ(node.attributeValue("key"), longText);
    EXPECT_STREQ(node.attributeValue("other"), "value");
}

TEST(AttributeTree, GivesAttributesThatCanBeRemovedInAnyOrder) {
    string list = "(";
    for (int i = 0; i < 2000; ++i)
        list += "(k" + std::to_string(i) + " \"" + x(static_cast<std::size_t>(i % 90)) + "\")";
    list += "(G (a b)))";
    std::mt19937 random(1);
    AttributeNode node("Root", nullptr);
    buildTree(Cells(list).top, &node, nullptr);
    std::vector<string> keys;
    for (std::size_t i = 0; i < node.attributeCount(); ++i) keys.emplace_back(node.attributeAt(i)->key());
    std::shuffle(keys.begin(), keys.end(), random);
    for (const string& key : keys) {
        node.removeAttribute(key.c_str());
        node.addAttribute("new", "value");
        node.removeAttribute("new");
    }
    EXPECT_EQ(treeText(node), "Root{G{a=b}}");
}

class MadeNode : public AttributeNode {
public:
    using AttributeNode::AttributeNode;
};

TEST(AttributeTree, TakesItsNodesFromTheFactory) {
    static std::vector<string> asked;
    asked.clear();
    AttributeNode node("Root", nullptr);
    buildTree(Cells("((a 1) (G (x y) (H)) b)").top, &node,
              [](const char* name, AttributeNode* parent) -> AttributeNode* {
                  asked.push_back(string(parent->name()) + "/" + name);
                  return new MadeNode(name, nullptr);
              });
    EXPECT_EQ(asked, (std::vector<string>{"Root/G", "G/H", "Root/"}));
    EXPECT_EQ(treeText(node), "Root{a=1 G{x=y H{}} {}}");
    const AttributeNode& made = *node.findChild("G")->findChild("H");
    EXPECT_EQ(typeid(made), typeid(MadeNode));
}

TEST(AttributeTree, LeavesOutWhatTheFactoryDoesNotMake) {
    AttributeNode node("Root", nullptr);
    buildTree(Cells("((a 1) (G (x y)) (H))").top, &node,
              [](const char* name, AttributeNode* parent) -> AttributeNode* {
                  return string(name) == "G" ? nullptr : new MadeNode(name, parent);
              });
    EXPECT_EQ(treeText(node), "Root{a=1 H{}}");
}

class ListRoot : public AttributeNode {
public:
    using AttributeNode::AttributeNode;
    string typeKeyFor(const char* name) override { return string("kind of ") + name; }
    NodeFactory factoryFor(const char* qualifiedKey) override {
        asked.emplace_back(qualifiedKey);
        if (!asked.back().ends_with("G")) return nullptr;
        return [](const char*, AttributeNode*) -> AttributeNode* { return new MadeNode("made", nullptr); };
    }
    std::vector<string> asked;
};

TEST(AttributeTree, TakesItsNodesFromTheRoot) {
    ListRoot root("Root", nullptr);
    AttributeNode* const node = root.adoptChild(new AttributeNode("Node", &root));
    buildTree(Cells("((G (H (I)) (x y)) (J) k)").top, node, nullptr);
    EXPECT_EQ(root.asked, (std::vector<string>{"Root.Node.kind of G", "Root.Node.made.kind of H",
                                               "Root.Node.made.H.kind of I", "Root.Node.kind of J",
                                               "Root.Node.kind of "}));
    EXPECT_EQ(treeText(root), "Root{Node{made{x=y H{I{}}} J{} {}}}");
}

TEST(AttributeTree, IsBuiltAMillionDeep) {
    constexpr std::size_t kDepth = 1000000;
    string list = "(";
    for (std::size_t i = 0; i < kDepth; ++i) list += "(n ";
    list += "(a 1)" + x(kDepth + 1, ')');
    const Cells cells(list);
    AttributeNode root("root", nullptr);
    buildTree(cells.top, &root, nullptr);
    AttributeNode* node = &root;
    std::size_t depth = 0;
    for (AttributeNode* child = node->firstChild(); child != nullptr; child = node->firstChild()) {
        node = child;
        ++depth;
    }
    EXPECT_EQ(depth, kDepth);
    EXPECT_EQ(treeText(*node), "n{a=1}");
    EXPECT_EQ(node->root(), &root);
    string name = "rubbish";
    node->qualifiedName(name);
    EXPECT_EQ(name.size(), 4 + 2 * kDepth);
}

TEST(AttributeTree, IsBuiltOfAnythingThatReads) {
    // Lists in the place of names have no place in a tree: only what is behind them counts.
    for (const std::size_t depth : {1u, 2u, 1000000u}) {
        AttributeNode root("root", nullptr);
        buildTree(Cells(x(depth, '(') + x(depth, ')')).top, &root, nullptr);
        EXPECT_EQ(treeText(root), "root{{}}") << depth;
    }
}

}  // namespace
