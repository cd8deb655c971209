// dsnreader_test.cpp
//
// The design reader, loaded as the library loads it: from the folder of the program, by its name.

#include <dlfcn.h>

#include <string>
#include <vector>

#include "support/TestFolder.h"
#include "support/builtFiles.h"
#include "support/wobjProject.h"

namespace {

using Strings = std::vector<std::string>;
using wobjtest::giveUpRoot;
using wobjtest::inChild;
using wobjtest::LoneFile;

using GetDsnInfo = int(const std::string&, const std::string&, Strings&);

class DesignReader : public testing::Test {
protected:
    void SetUp() override {
        void* module = dlopen(tests::kReaderFile, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << dlerror();
        getDsnInfo = reinterpret_cast<GetDsnInfo*>(dlsym(module, "getDsnInfo"));
        ASSERT_NE(getDsnInfo, nullptr) << dlerror();
    }

    void expectRefusal(const std::string& bytes) const {
        const LoneFile design(bytes, "amp.dsn");
        Strings schematics = {"left", "over"};
        EXPECT_NE(getDsnInfo(design.path(), "", schematics), 0) << bytes.substr(0, 100);
        EXPECT_EQ(schematics, Strings{}) << bytes.substr(0, 100);
        EXPECT_TRUE(design.bytes() == bytes);
    }

    GetDsnInfo* getDsnInfo = nullptr;
};

TEST_F(DesignReader, FillsTheRootSchematicsInFileOrder) {
    const struct {
        const char* json;
        Strings schematics;
    } cases[] = {
        {R"({ "rootSchematics": ["SCHEMATIC1", "OUTPUT"] })", {"SCHEMATIC1", "OUTPUT"}},
        {R"({ "rootSchematics": ["b", "a", "b", ""] })", {"b", "a", "b", ""}},
        {R"({"rootSchematics":[]})", {}},
        {R"({ "rev": 1.0, "x": { "rootSchematics": 1 }, "rootSchematics": ["\u00e4"], "y": [null] })",
         {"\xC3\xA4"}},
        {"\xEF\xBB\xBF{\r\n\t\"rootSchematics\" : [ \"S\" ]\r\n}\r\n", {"S"}},
    };
    for (const auto& c : cases) {
        // The code page of the system decides about it there; see the tests of the platform.
        if (tests::kOnWindows && c.schematics == Strings{"\xC3\xA4"}) continue;
        const LoneFile design(c.json, "amp.dsn");
        Strings schematics = {"left", "over", "from", "before"};
        EXPECT_EQ(getDsnInfo(design.path(), "", schematics), 0) << c.json;
        EXPECT_EQ(schematics, c.schematics) << c.json;
    }
}

TEST_F(DesignReader, TakesNoNoticeOfTheSecondArgument) {
    const LoneFile design(R"({ "rootSchematics": ["S"] })", "amp.dsn");
    for (const std::string second : {"", "anything", "/no/such/file"}) {
        Strings schematics = {"left over"};
        EXPECT_EQ(getDsnInfo(design.path(), second, schematics), 0) << second;
        EXPECT_EQ(schematics, Strings{"S"}) << second;
    }
}

TEST_F(DesignReader, RefusesAMalformedDesign) {
    const std::string cases[] = {
        "",
        " \n",
        "[]",
        "null",
        "\"rootSchematics\"",
        "{}",
        R"({"RootSchematics": ["S"]})",
        R"({"x": {"rootSchematics": ["S"]}})",
        R"({"rootSchematics": null})",
        R"({"rootSchematics": "S"})",
        R"({"rootSchematics": {}})",
        R"({"rootSchematics": {"0": "S"}})",
        R"({"rootSchematics": 1})",
        R"({"rootSchematics": [1]})",
        R"({"rootSchematics": ["S", null]})",
        R"({"rootSchematics": ["S", ["T"]]})",
        R"({"rootSchematics": ["S", {}]})",
        R"({"rootSchematics": ["S"],})",
        R"({"rootSchematics": ["S"]} x)",
        R"({"rootSchematics": ["S"], "rootSchematics": ["T"]})",
        R"({"rootSchematics": ["S"], "x": "\ud800"})",
        "{\"rootSchematics\": [\"\xE4\"]}",
        "{\"rootSchematics\": [\"S\"], \"x\": \"\xE4\"}",
        std::string(R"({"rootSchematics": ["S"]})") + '\0',
        std::string(R"({"rootSchematics": ["S)") + '\0' + R"("]})",
    };
    for (const std::string& bytes : cases) expectRefusal(bytes);
}

TEST_F(DesignReader, RefusesADesignThatIsCutOff) {
    const std::string good = R"({ "rev": [1, {"a": "b"}], "rootSchematics": ["SCHEMATIC1", "\u00e4"] })";
    for (std::size_t length = 0; length < good.size(); ++length) expectRefusal(good.substr(0, length));
}

TEST_F(DesignReader, RefusesDeepNestingWithoutFallingOver) {
    constexpr std::size_t million = 1000000;
    const std::string open(million, '[');
    const std::string close(million, ']');
    expectRefusal(open);
    expectRefusal(open + close);
    expectRefusal(R"({"rootSchematics": ["S"], "x": )" + open + close + "}");
    expectRefusal(R"({"rootSchematics": )" + open + close + "}");
}

TEST_F(DesignReader, RefusesWhatIsNoFile) {
    const LoneFile design(R"({ "rootSchematics": ["S"] })", "amp.dsn");
    const std::string cases[] = {"", design.folder(), design.folder() + "/missing.dsn", design.path() + "/",
                                 design.path() + std::string("\0x", 2)};
    for (const std::string& path : cases) {
        Strings schematics = {"left over"};
        EXPECT_NE(getDsnInfo(path, "", schematics), 0) << path;
        EXPECT_EQ(schematics, Strings{}) << path;
    }
}

TEST_F(DesignReader, FailsWhereTheUserMayNotRead) {
    const LoneFile design(R"({ "rootSchematics": ["S"] })", "amp.dsn");
    std::filesystem::permissions(design.folder(), std::filesystem::perms::all);
    std::filesystem::permissions(design.path(), std::filesystem::perms::none);
    EXPECT_EQ(inChild([&] {
                  Strings schematics = {"left over"};
                  if (!giveUpRoot()) return 100;
                  return getDsnInfo(design.path(), "", schematics) != 0 && schematics.empty() ? 0 : 1;
              }),
              0);
}

TEST_F(DesignReader, HoldsAHundredThousandSchematics) {
    Strings names;
    std::string json = "{\"rootSchematics\":[";
    for (int i = 0; i < 100000; ++i) {
        names.push_back("SCHEMATIC" + std::to_string(i));
        json += (i == 0 ? "\"" : ",\"") + names.back() + "\"";
    }
    const LoneFile design(json + "]}", "amp.dsn");
    Strings schematics = {"left over"};
    EXPECT_EQ(getDsnInfo(design.path(), "", schematics), 0);
    EXPECT_TRUE(schematics == names);
}

}  // namespace
