#include "attrlist/reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "attrlist/AttributeBlocks.h"
#include "attrlist/CellPool.h"

namespace tvxconv::attrlist {

// What a cell is, is told by its first byte; what it holds follows without gaps, so numbers and pointers lie
// as they come:
//   'S', 'Q'  the text with its NUL
//   'N'       the value
//   'L'       the next link or null, and then the element, a cell itself; a kind of 0 where it is null
// An element that is a list is its first link. So a link has the beginning of all that is nested in it
// inside: one piece of memory for what is read between two blanks.
struct ListCell {
    char kind;
};

namespace {

constexpr std::size_t kContentAt = sizeof(ListCell);
constexpr std::size_t kElementAt = kContentAt + sizeof(ListCell*);  // in a link

template <class Value>
Value contentOf(const ListCell* cell) {
    Value value;
    std::memcpy(&value, cell + kContentAt, sizeof(Value));
    return value;
}

template <class Value>
void setContent(ListCell* cell, Value value) {
    std::memcpy(static_cast<void*>(cell + kContentAt), &value, sizeof(Value));
}

ListCell* nextOf(const ListCell* link) {
    return contentOf<ListCell*>(link);
}

const char* textOf(const ListCell* cell) {
    return &cell[kContentAt].kind;
}

constexpr std::size_t kMostOfSymbol = 1000;
constexpr std::size_t kMostOfNumber = 1000;
constexpr std::size_t kMostOfShortString = 997;
constexpr std::size_t kMostOfString = 299997;

constexpr const char* kNoClosing = "Need closing )";
constexpr const char* kIllegalCharacter = "Illegal character to start symbol name.";

// --- classes of characters ---

constexpr unsigned char kSpace = 1;
constexpr unsigned char kDigit = 2;
constexpr unsigned char kLetter = 4;    // or "_": begins a symbol
constexpr unsigned char kInSymbol = 8;  // goes on with it
constexpr unsigned char kEndsNumber = 16;
constexpr unsigned char kEndsPlainText = 32;  // in a string: what cannot be taken as it is

constexpr std::array<unsigned char, 256> makeClasses() {
    std::array<unsigned char, 256> classes{};
    const auto add = [&](std::string_view characters, int which) {
        for (const char c : characters) {
            unsigned char& entry = classes[static_cast<unsigned char>(c)];
            entry = static_cast<unsigned char>(entry | which);
        }
    };
    add(" \t\n\r\v\f", kSpace | kEndsNumber);
    add("0123456789", kDigit | kInSymbol);
    add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", kLetter | kInSymbol);
    add("-", kInSymbol);
    add("()\"", kEndsNumber);
    add("\"\\", kEndsPlainText);
    add(std::string_view("\0", 1), kEndsPlainText);
    return classes;
}

constexpr std::array<unsigned char, 256> kClasses = makeClasses();

// Of a character, or of EOF, which is of no class.
bool isOf(unsigned char which, int c) {
    return c != EOF && (kClasses[static_cast<unsigned char>(c)] & which) != 0;
}

// --- numbers ---

// Whether the text is a number that an exponent can follow: digits, and at most one full stop.
bool canTakeExponent(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    const std::size_t stop = std::min(text.find('.'), text.size());
    const std::size_t digits = text.size() - (stop < text.size() ? 1 : 0);
    return digits > 0 && text.find_first_not_of("0123456789") >= stop &&
           text.find_first_not_of("0123456789", stop + 1) == std::string_view::npos;
}

// Infinity or zero, for a number that is beyond what a double can hold: whether its first digit other than 0
// stands before or behind the full stop when the exponent has moved that.
double beyondRange(std::string_view number) {
    const bool isNegative = number.starts_with('-');
    if (isNegative) number.remove_prefix(1);
    const std::size_t mantissaSize = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, mantissaSize);
    const std::size_t stop = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t digit = std::min(mantissa.find_first_of("123456789"), mantissa.size());
    long power = static_cast<long>(stop) - static_cast<long>(digit);
    if (mantissaSize < number.size()) {
        std::string_view exponent = number.substr(mantissaSize + 1);
        if (exponent.starts_with('+')) exponent.remove_prefix(1);
        int value = 0;
        const auto read = std::from_chars(exponent.data(), exponent.data() + exponent.size(), value);
        if (read.ec == std::errc::result_out_of_range) value = exponent.starts_with('-') ? -100000 : 100000;
        power += value;
    }
    const double value = power > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return isNegative ? -value : value;
}

// What the runtime's atof makes of the text in the "C" locale; the host may have set another.
double numberFrom(std::string_view text) {
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec == std::errc::result_out_of_range) {
        return beyondRange(text.substr(0, static_cast<std::size_t>(read.ptr - text.data())));
    }
    return value;
}

// --- reading ---

class ExpressionReader {
public:
    ExpressionReader(ReaderState& input, CellPool& pool) : input_(input), pool_(pool) {}

    ListCell* read(const char*& error);

private:
    bool isInList() const { return link_ != nullptr || newLists_ > 0; }
    ListCell* addElement(char kind, std::size_t size);
    void addText(char kind, const void* text, std::size_t length);

    int getBehindSpace();
    void readNumber(int begin);
    void readString();
    void readLongString();
    void readSymbol(int begin);

    ReaderState& input_;
    CellPool& pool_;
    ListCell* top_ = nullptr;
    // Lists are not read by a call for each. A list that has been opened has no cell before something in it
    // has; there may be several, each the first element of the one before. The last link that was made
    // belongs to the list around these. As long as a list is open, its last link has, in place of the next,
    // the link whose element the list is.
    std::size_t newLists_ = 0;
    ListCell* link_ = nullptr;
};

// Makes a cell of `size` bytes, of which only the kind is set: in the innermost open list, or outside of all.
ListCell* ExpressionReader::addElement(char kind, std::size_t size) {
    const std::size_t links = newLists_ + (link_ != nullptr ? 1 : 0);
    auto* cell = static_cast<ListCell*>(pool_.allocateUncleared(links * kElementAt + size));
    if (top_ == nullptr) top_ = cell;
    for (std::size_t made = 0; made < links; ++made) {
        cell->kind = 'L';
        if (made == 0 && link_ != nullptr) {  // behind the last one in its list
            setContent(cell, nextOf(link_));
            setContent(link_, cell);
        } else {
            setContent(cell, link_);
        }
        link_ = cell;
        cell += kElementAt;
    }
    newLists_ = 0;
    cell->kind = kind;
    return cell;
}

void ExpressionReader::addText(char kind, const void* text, std::size_t length) {
    ListCell* const place = addElement(kind, kContentAt + length + 1) + kContentAt;
    std::memcpy(place, text, length);
    place[length].kind = '\0';
}

ListCell* ExpressionReader::read(const char*& error) {
    for (;;) {
        const int c = getBehindSpace();
        if (c == '"') {
            readString();
        } else if (c == '(') {
            ++newLists_;
        } else if (c == ')') {
            if (!isInList()) {
                input_.putBack();
                return nullptr;
            }
            if (newLists_ > 0) addElement('\0', kContentAt);
            ListCell* const outer = nextOf(link_);
            setContent<ListCell*>(link_, nullptr);
            link_ = outer;
        } else if (c == '-' || isOf(kDigit, c)) {
            readNumber(c);
        } else if (isOf(kLetter, c)) {
            readSymbol(c);
        } else {
            if (c != EOF) {
                error = kIllegalCharacter;
            } else if (isInList()) {
                error = kNoClosing;
            }
            return nullptr;
        }
        if (!isInList()) return top_;
    }
}

int ExpressionReader::getBehindSpace() {
    for (;;) {
        const unsigned char* at = input_.at();
        while ((kClasses[*at] & kSpace) != 0) ++at;
        input_.advanceTo(at);
        const bool isAtHand = at != input_.end();
        const int c = input_.get();
        if (isAtHand || !isOf(kSpace, c)) return c;
    }
}

// A number goes on to the next blank, parenthesis or quote. A letter ends it, too, unless it is the e of an
// exponent: 12ab is 12 and then ab. All else (1-2, 1.5.2, 1%) is taken along and adds nothing to the value.
// Where an e turns out to have no digits, letters are taken along as well, for the e cannot be put back any
// more: 12end is 12 and nothing else.
void ExpressionReader::readNumber(int begin) {
    char text[kMostOfNumber];
    std::size_t length = 0;
    bool needsDigit = false;  // an exponent has begun
    bool lettersEndIt = true;
    for (int c = begin;;) {
        text[length++] = static_cast<char>(c);
        c = input_.get();
        if (c == EOF) break;
        if (needsDigit && !isOf(kDigit, c)) {
            const bool isSign = (c == '+' || c == '-') && isOf(kLetter, text[length - 1]);
            needsDigit = isSign;
            lettersEndIt = isSign;
        } else {
            needsDigit = false;
        }
        const bool isExponent = lettersEndIt && (c == 'e' || c == 'E') && canTakeExponent({text, length});
        const bool isLetterBehind = lettersEndIt && isOf(kLetter, c) && !isExponent;
        if (isOf(kEndsNumber, c) || length == kMostOfNumber || isLetterBehind) {
            input_.putBack();
            break;
        }
        if (isExponent) needsDigit = true;
    }
    const double value = numberFrom({text, length});
    setContent(addElement('N', kContentAt + sizeof value), value);
}

void ExpressionReader::readString() {
    const unsigned char* const begin = input_.at();
    const unsigned char* at = begin;
    while ((kClasses[*at] & kEndsPlainText) == 0) ++at;
    const auto length = static_cast<std::size_t>(at - begin);
    if (*at != '"' || length > kMostOfString) {
        readLongString();
        return;
    }
    input_.advanceTo(at + 1);
    addText('Q', begin, length);
}

// A string that does not lie in one piece before us. Only a long one needs memory besides its own.
void ExpressionReader::readLongString() {
    char shortText[kMostOfShortString];
    CellPool scratch;
    char* text = shortText;
    std::size_t room = kMostOfShortString;
    std::size_t length = 0;
    for (;;) {
        const unsigned char* const begin = input_.at();
        const std::size_t most = std::min(static_cast<std::size_t>(input_.end() - begin), room - length);
        std::size_t plain = 0;
        while (plain < most && (kClasses[begin[plain]] & kEndsPlainText) == 0) ++plain;
        std::memcpy(text + length, begin, plain);
        length += plain;
        input_.advanceTo(begin + plain);

        int c = input_.get();
        if (c == '"' || c == EOF) break;
        if (length == kMostOfString) {
            input_.putBack();
            break;
        }
        if (length == room) {
            text = static_cast<char*>(scratch.allocateUncleared(kMostOfString));
            room = kMostOfString;
            std::memcpy(text, shortText, length);
        }
        if (c == '\\') c = input_.get();
        if (c == EOF) break;
        text[length++] = static_cast<char>(c);
    }
    addText('Q', text, length);
}

void ExpressionReader::readSymbol(int begin) {
    const unsigned char* const place = input_.at() - 1;
    const unsigned char* at = input_.at();
    while ((kClasses[*at] & kInSymbol) != 0) ++at;
    const auto size = static_cast<std::size_t>(at - place);
    if (at != input_.end() && size <= kMostOfSymbol) {
        input_.advanceTo(at);
        input_.get();
        input_.putBack();
        addText('S', place, size);
        return;
    }
    char text[kMostOfSymbol];
    std::size_t length = 0;
    for (int c = begin;;) {
        text[length++] = static_cast<char>(c);
        c = input_.get();
        if (c == EOF) break;
        if (!isOf(kInSymbol, c) || length == kMostOfSymbol) {
            input_.putBack();
            break;
        }
    }
    addText('S', text, length);
}

}  // namespace

ListCell* readExpression(std::FILE* stream, int& line, int& column, const char*& error, CellPool& pool) {
    error = nullptr;
    ReaderState input(stream);
    ListCell* const result = ExpressionReader(input, pool).read(error);
    line = input.line();
    column = input.column();
    return result;
}

// --- cells ---

char kindOf(const ListCell* cell) {
    return cell != nullptr ? cell->kind : '\0';
}

ListCell* first(const ListCell* cell) {
    if (kindOf(cell) != 'L') return nullptr;
    const ListCell* const element = cell + kElementAt;
    return element->kind != '\0' ? const_cast<ListCell*>(element) : nullptr;
}

ListCell* rest(const ListCell* cell) {
    return kindOf(cell) == 'L' ? nextOf(cell) : nullptr;
}

const char* symbolText(const ListCell* cell) {
    return kindOf(cell) == 'S' ? textOf(cell) : "";
}

const char* stringText(const ListCell* cell) {
    return kindOf(cell) == 'Q' ? textOf(cell) : "";
}

const char* atomText(const ListCell* cell) {
    return kindOf(cell) == 'S' || kindOf(cell) == 'Q' ? textOf(cell) : nullptr;
}

namespace {

constexpr std::ptrdiff_t kNumberText = 31;  // and a NUL

// As "%.8g" in the "C" locale.
char* printFraction(double value, char* buffer) {
    // Most numbers are a few digits with a full stop among them: a whole number, divided by a power of ten.
    // Where just this one comes of the division, these are its digits. What the library does for all numbers
    // takes long.
    const double size = value < 0 ? -value : value;
    double scale = 10;
    for (int decimals = 1; size >= 1e-4 && size * scale < 1e8; ++decimals, scale *= 10) {
        const auto digits = static_cast<std::int32_t>(size * scale + 0.5);
        if (digits / scale != size) continue;
        char* at = buffer;
        if (value < 0) *at++ = '-';
        const auto divisor = static_cast<std::int64_t>(scale);
        at = std::to_chars(at, buffer + kNumberText, digits / divisor).ptr;
        *at++ = '.';
        auto fraction = static_cast<std::int32_t>(digits % divisor);
        for (char* place = at + decimals; place != at; fraction /= 10)
            *--place = static_cast<char>('0' + fraction % 10);
        return at + decimals;
    }
    return std::to_chars(buffer, buffer + kNumberText, value, std::chars_format::general, 8).ptr;
}

}  // namespace

const char* numberText(const ListCell* cell, char* buffer) {
    if (kindOf(cell) != 'N') {
        const char* const text = atomText(cell);
        return text != nullptr ? text : "";
    }
    const double value = contentOf<double>(cell);
    const bool isInRange = value >= std::numeric_limits<std::int32_t>::min() &&
                           value <= std::numeric_limits<std::int32_t>::max();
    const bool isWhole = isInRange && value == static_cast<std::int32_t>(value);
    *(isWhole ? std::to_chars(buffer, buffer + kNumberText, static_cast<std::int32_t>(value)).ptr
              : printFraction(value, buffer)) = '\0';
    return buffer;
}

// --- the tree ---

bool isAtom(const ListCell* cell) {
    return cell != nullptr && cell->kind != 'L';
}

namespace {

bool isPair(const ListCell* element) {
    const ListCell* const second = rest(element);
    return isAtom(first(element)) && isAtom(first(second)) && rest(second) == nullptr;
}

// A list that is being gone through, and the node that it fills.
struct Level {
    const ListCell* next;
    AttributeNode* node;
    std::size_t nameSize;  // of the node's qualified name
};

}  // namespace

void buildTree(const ListCell* list, AttributeNode* node, NodeFactory factory) {
    AttributeNode* const root = node->root();
    // The qualified name of the node at hand: asked for once, as it takes longer the deeper a node lies.
    std::string name;
    if (factory == nullptr) node->qualifiedName(name);
    AttributeBlocks blocks;
    std::vector<Level> levels;
    const auto enter = [&](const ListCell* content, AttributeNode* filled) {
        std::size_t pairs = 0;
        std::size_t others = 0;
        for (const ListCell* link = content; link != nullptr; link = rest(link)) {
            ++(isPair(first(link)) ? pairs : others);
        }
        filled->reserve(pairs, others);
        levels.push_back({content, filled, name.size()});
    };
    if (kindOf(list) == 'L') enter(list, node);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == nullptr) {
            levels.pop_back();
            if (!levels.empty()) name.resize(levels.back().nameSize);
            continue;
        }
        const ListCell* const element = first(level.next);
        level.next = rest(level.next);
        AttributeNode* const parent = level.node;
        if (isPair(element)) {
            char number[32];
            const ListCell* const value = first(rest(element));
            parent->addAttribute(atomText(first(element)), numberText(value, number), blocks);
            continue;
        }
        const char* childName = atomText(first(element));
        if (childName == nullptr) childName = "";
        std::unique_ptr<AttributeNode> made(factory != nullptr
                                                ? factory(childName, parent)
                                                : AttributeNode::createNode(childName, parent, root, name));
        AttributeNode* const child = made.get();
        parent->adoptChild(child);
        static_cast<void>(made.release());
        const ListCell* const content = rest(element);
        if (child == nullptr || content == nullptr) continue;
        if (factory == nullptr) name.append(1, '.').append(child->name());
        enter(content, child);
    }
}

}  // namespace tvxconv::attrlist
