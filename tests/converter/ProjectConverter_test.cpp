// ProjectConverter_test.cpp
//
// What both converters share: their fields and the table of moves.

#include "converter/ProjectConverter.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using std::string;
using tvxconv::ProjectConverter;

constexpr const char* kRubbish = "left over";

using Setter = int (ProjectConverter::*)(const string&);
using Getter = int (ProjectConverter::*)(string&) const;

struct Field {
    const char* name;
    Setter set;
    Getter get;
};

const Field kFields[] = {
    {"design name", &ProjectConverter::setDesignName, &ProjectConverter::getDesignName},
    {"project path", &ProjectConverter::setProjectPath, &ProjectConverter::getProjectPath},
    {"project dir", &ProjectConverter::setProjectDir, &ProjectConverter::getProjectDir},
    {"new project path", &ProjectConverter::setNewProjectPath, &ProjectConverter::getNewProjectPath},
    {"destination dir", &ProjectConverter::setDestinationDir, &ProjectConverter::getDestinationDir},
};

void expectField(const ProjectConverter& converter, const Field& field, const string& value) {
    string out = kRubbish;
    EXPECT_EQ((converter.*field.get)(out), value.empty() ? 1 : 0) << field.name;
    EXPECT_EQ(out, value) << field.name;
}

TEST(ProjectConverter, StartsWithEveryFieldUnset) {
    ProjectConverter converter(nullptr);
    for (const Field& field : kFields) expectField(converter, field, "");
    int mode = 77;
    EXPECT_EQ(converter.getMode(mode), 1);
    EXPECT_EQ(mode, 77);
    string oldPath = kRubbish;
    string newPath = kRubbish;
    EXPECT_EQ(converter.firstRelocation(oldPath, newPath), 1);
    EXPECT_EQ(oldPath, kRubbish);
    EXPECT_EQ(newPath, kRubbish);
}

TEST(ProjectConverter, KeepsThePathItWasMadeForWithForwardSlashes) {
    const struct {
        const char* given;
        const char* kept;
    } cases[] = {
        {"C:\\work\\amp.opj", "C:/work/amp.opj"},
        {"C:/Work\\Amp.OPJ", "C:/Work/Amp.OPJ"},
        {"/home/u/amp.opj", "/home/u/amp.opj"},
        {"\\\\srv\\x.opj", "//srv/x.opj"},
        {"amp.opj", "amp.opj"},
        {"", ""},
    };
    for (const auto& c : cases) {
        const ProjectConverter converter(c.given);
        for (const Field& field : kFields) {
            expectField(converter, field, string(field.name) == "project path" ? c.kept : "");
        }
    }
}

TEST(ProjectConverter, ReturnsWhatWasSetInThatFieldAlone) {
    for (const Field& field : kFields) {
        ProjectConverter converter(nullptr);
        EXPECT_EQ((converter.*field.set)("value"), 0) << field.name;
        for (const Field& other : kFields)
            expectField(converter, other, other.name == field.name ? "value" : "");
    }
}

TEST(ProjectConverter, NormalisesPathsButNotTheDesignName) {
    for (const Field& field : kFields) {
        ProjectConverter converter(nullptr);
        EXPECT_EQ((converter.*field.set)("C:\\A\\b/c\\"), 0) << field.name;
        expectField(converter, field, string(field.name) == "design name" ? "C:\\A\\b/c\\" : "C:/A/b/c/");
    }
}

TEST(ProjectConverter, TakesAnEmptyValueEverywhereButForTheDestination) {
    for (const Field& field : kFields) {
        ProjectConverter converter(nullptr);
        EXPECT_EQ((converter.*field.set)("value"), 0) << field.name;
        EXPECT_EQ((converter.*field.set)(""), 0) << field.name;
        expectField(converter, field, string(field.name) == "destination dir" ? "value" : "");
    }
}

TEST(ProjectConverter, SetsTheSourceFolderWithoutTouchingAnotherField) {
    ProjectConverter converter("p");
    EXPECT_EQ(converter.setSourceDir("C:\\work"), 0);
    EXPECT_EQ(converter.setSourceDir(""), 0);
    for (const Field& field : kFields) {
        expectField(converter, field, string(field.name) == "project path" ? "p" : "");
    }
}

TEST(ProjectConverter, IgnoresAModeOfZero) {
    ProjectConverter converter(nullptr);
    int mode = 77;
    EXPECT_EQ(converter.setMode(0), 0);
    EXPECT_EQ(converter.getMode(mode), 1);
    EXPECT_EQ(mode, 77);
    const struct {
        int set;
        int kept;
    } steps[] = {{2, 2}, {0, 2}, {1, 1}, {-3, -3}, {0, -3}};
    for (const auto& step : steps) {
        EXPECT_EQ(converter.setMode(step.set), 0);
        EXPECT_EQ(converter.getMode(mode), 0) << step.set;
        EXPECT_EQ(mode, step.kept) << step.set;
    }
}

TEST(ProjectConverter, DoesNothingByItself) {
    ProjectConverter converter("C:/work/amp.opj");
    EXPECT_EQ(converter.convert(2, "/nowhere/at/all"), 0);
    std::vector<string> lines = {"before"};
    EXPECT_EQ(converter.getNewStructure(lines), 0);
    EXPECT_EQ(lines, std::vector<string>{"before"});
    EXPECT_EQ(converter.writeReport(lines, "/nowhere/at/all"), 0);
    int code = 77;
    EXPECT_EQ(converter.getLastErrorCode(code), 0);
    EXPECT_EQ(code, 77);
    string message = kRubbish;
    EXPECT_EQ(converter.getLastErrorMessage(message), 0);
    EXPECT_EQ(message, kRubbish);
    int mode = 77;
    EXPECT_EQ(converter.getMode(mode), 1);
}

TEST(Relocations, AreFoundWithoutRegardToLetterCase) {
    ProjectConverter converter(nullptr);
    EXPECT_EQ(converter.addRelocation("./Amp-S1.NET", "./Amp-TevrixFiles/S1/S1.NET"), 0);
    for (const char* key : {"./Amp-S1.NET", "./amp-s1.net", "./AMP-S1.NET"}) {
        string out = kRubbish;
        EXPECT_EQ(converter.findRelocation(key, out), 0) << key;
        EXPECT_EQ(out, "./amp-tevrixfiles/s1/s1.net") << key;
    }
}

TEST(Relocations, ThatWereNotAddedAreNotFound) {
    ProjectConverter converter(nullptr);
    converter.addRelocation("./a/x.sim", "./b");
    for (const char* key : {"", "./a", "./a/x.sim ", ".\\a\\x.sim", "a/x.sim", "./a//x.sim", "\xE4"}) {
        string out = kRubbish;
        EXPECT_EQ(converter.findRelocation(key, out), 1) << key;
        EXPECT_EQ(out, "") << key;
    }
}

TEST(Relocations, KeepTheSeparatorsTheyWereGiven) {
    ProjectConverter converter(nullptr);
    EXPECT_EQ(converter.addRelocation(".\\A\\x", ".\\B\\x"), 0);
    string out = kRubbish;
    EXPECT_EQ(converter.findRelocation("./a/x", out), 1);
    EXPECT_EQ(out, "");
    out = kRubbish;
    EXPECT_EQ(converter.findRelocation(".\\a\\X", out), 0);
    EXPECT_EQ(out, ".\\b\\x");
}

TEST(Relocations, OfOneOldPathKeepTheFirst) {
    ProjectConverter converter(nullptr);
    EXPECT_EQ(converter.addRelocation("A/X.SIM", "first"), 0);
    EXPECT_EQ(converter.addRelocation("a/x.sim", "second"), 0);
    EXPECT_EQ(converter.addRelocation("", ""), 0);
    EXPECT_EQ(converter.addRelocation("", "later"), 0);
    string out = kRubbish;
    EXPECT_EQ(converter.findRelocation("A/x.Sim", out), 0);
    EXPECT_EQ(out, "first");
    out = kRubbish;
    EXPECT_EQ(converter.findRelocation("", out), 0);
    EXPECT_EQ(out, "");
}

TEST(Relocations, MayBeLookedUpIntoTheStringThatHoldsTheKey) {
    ProjectConverter converter(nullptr);
    converter.addRelocation("A", "B");
    string text = "a";
    EXPECT_EQ(converter.findRelocation(text, text), 0);
    EXPECT_EQ(text, "b");
}

using Pairs = std::vector<std::pair<string, string>>;

Pairs walk(ProjectConverter& converter) {
    Pairs pairs;
    string oldPath;
    string newPath;
    for (int end = converter.firstRelocation(oldPath, newPath); end == 0;
         end = converter.nextRelocation(oldPath, newPath)) {
        pairs.emplace_back(oldPath, newPath);
    }
    return pairs;
}

TEST(Relocations, AreWalkedInTheByteOrderOfTheOldPaths) {
    ProjectConverter converter(nullptr);
    converter.addRelocation("b", "3");
    converter.addRelocation("\xE4", "5");
    converter.addRelocation("A/Z", "2");
    converter.addRelocation("C:/x", "4");
    converter.addRelocation("a.x", "1");
    const Pairs expected = {{"a.x", "1"}, {"a/z", "2"}, {"b", "3"}, {"c:/x", "4"}, {"\xE4", "5"}};
    EXPECT_EQ(walk(converter), expected);
    EXPECT_EQ(walk(converter), expected);
}

TEST(Relocations, LeaveTheOutputsAloneBehindTheLastOne) {
    ProjectConverter converter(nullptr);
    converter.addRelocation("a", "1");
    string oldPath = kRubbish;
    string newPath = kRubbish;
    EXPECT_EQ(converter.firstRelocation(oldPath, newPath), 0);
    EXPECT_EQ(oldPath, "a");
    EXPECT_EQ(newPath, "1");
    for (int call = 0; call < 3; ++call) {
        EXPECT_EQ(converter.nextRelocation(oldPath, newPath), 1);
        EXPECT_EQ(oldPath, "a");
        EXPECT_EQ(newPath, "1");
    }
    EXPECT_EQ(converter.firstRelocation(oldPath, newPath), 0);
}

TEST(Relocations, HaveNoNextWithoutAFirst) {
    ProjectConverter converter(nullptr);
    string oldPath = kRubbish;
    string newPath = kRubbish;
    EXPECT_EQ(converter.nextRelocation(oldPath, newPath), 1);
    converter.addRelocation("a", "1");
    EXPECT_EQ(converter.nextRelocation(oldPath, newPath), 1);
    EXPECT_EQ(oldPath, kRubbish);
    EXPECT_EQ(newPath, kRubbish);
}

TEST(Relocations, AddedDuringAWalkAreMetWhenTheyLieAhead) {
    ProjectConverter converter(nullptr);
    converter.addRelocation("b", "2");
    string oldPath;
    string newPath;
    EXPECT_EQ(converter.firstRelocation(oldPath, newPath), 0);
    converter.addRelocation("a", "1");
    converter.addRelocation("c", "3");
    EXPECT_EQ(converter.nextRelocation(oldPath, newPath), 0);
    EXPECT_EQ(oldPath, "c");
    EXPECT_EQ(newPath, "3");
    EXPECT_EQ(converter.nextRelocation(oldPath, newPath), 1);
}

}  // namespace
