// layout_test.cpp
//
// The lists of extensions and project folders by which a Draftel conversion tells files apart.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "draftel/DraftelProjectConverter.h"
#include "support/DraftelProject.h"

namespace {

using namespace tests;
using testing::IsEmpty;
using tvxconv::DraftelProjectConverter;
using Strings = std::vector<std::string>;

const Strings kDesignLevel = {"lib", "prp", "olb", "err", "ind", "stl", "inc", "obk"};
const Strings kSchematicLevel = {"sim", "net",     "als",       "par",      "opt",       "aap",
                                 "prp", "opt.log", "monte.log", "sens.log", "smoke.log", "default.mrk"};
const Strings kProfileLevel = {"csd",      "dat",      "opt.dat", "mc.dat",  "sens.dat", "opt.csd",
                               "mc.csd",   "sens.csd", "out",     "out.1",   "opt.out",  "mc.out",
                               "sens.out", "prb",      "mrk",     "sim.1op", "sim.cir",  "sim.mif"};
const Strings kProjectFolders = {"Outputs", "Design Resources", "Tevrix Resources", "Translator", "Library"};
const std::map<std::string, std::string> kFolderMap = {{"Design Resources", "Library"},
                                                       {"Simulation Resources", "Indesign"}};

Strings twice(Strings list) {
    const Strings again = list;
    list.insert(list.end(), again.begin(), again.end());
    return list;
}

void expectLists(DraftelProjectConverter& converter, bool areDouble) {
    const auto expected = [&](const Strings& list) { return areDouble ? twice(list) : list; };
    EXPECT_EQ(converter.designLevelExtensions(), expected(kDesignLevel));
    EXPECT_EQ(converter.schematicLevelExtensions(), expected(kSchematicLevel));
    EXPECT_EQ(converter.profileLevelExtensions(), expected(kProfileLevel));
    EXPECT_EQ(converter.projectFolderNames(), expected(kProjectFolders));
    EXPECT_EQ(converter.folderMap(), kFolderMap);
}

TEST(DraftelClassification, TheListsAreEmptyAtFirst) {
    DraftelProjectConverter converter("/p/amp.opj");
    EXPECT_THAT(converter.designLevelExtensions(), IsEmpty());
    EXPECT_THAT(converter.schematicLevelExtensions(), IsEmpty());
    EXPECT_THAT(converter.profileLevelExtensions(), IsEmpty());
    EXPECT_THAT(converter.projectFolderNames(), IsEmpty());
    EXPECT_THAT(converter.folderMap(), IsEmpty());
}

TEST(DraftelClassification, TheListsAreFilledInTheirOrder) {
    DraftelProjectConverter converter(nullptr);
    EXPECT_EQ(converter.classifySimulationFiles(), 0);
    expectLists(converter, false);
}

TEST(DraftelClassification, FillingAgainAppendsToTheListsAndNotToTheMap) {
    DraftelProjectConverter converter(nullptr);
    EXPECT_EQ(converter.classifySimulationFiles(), 0);
    EXPECT_EQ(converter.classifySimulationFiles(), 0);
    expectLists(converter, true);
}

TEST(DraftelClassification, WhatIsThereStaysInFront) {
    DraftelProjectConverter converter(nullptr);
    converter.designLevelExtensions() = {"lib", "mine"};
    converter.projectFolderNames() = {"Mine"};
    EXPECT_EQ(converter.classifySimulationFiles(), 0);
    Strings extensions = {"lib", "mine"};
    extensions.insert(extensions.end(), kDesignLevel.begin(), kDesignLevel.end());
    EXPECT_EQ(converter.designLevelExtensions(), extensions);
    Strings folders = {"Mine"};
    folders.insert(folders.end(), kProjectFolders.begin(), kProjectFolders.end());
    EXPECT_EQ(converter.projectFolderNames(), folders);
}

TEST(DraftelClassification, APairThatIsThereKeepsItsValue) {
    DraftelProjectConverter converter(nullptr);
    converter.folderMap() = {{"Simulation Resources", "Mine"}, {"Other", "Also mine"}};
    EXPECT_EQ(converter.classifySimulationFiles(), 0);
    const std::map<std::string, std::string> expected = {
        {"Design Resources", "Library"}, {"Other", "Also mine"}, {"Simulation Resources", "Mine"}};
    EXPECT_EQ(converter.folderMap(), expected);
}

TEST(DraftelClassification, AConversionFillsTheListsOnce) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    expectLists(project.converter, false);
}

TEST(DraftelClassification, AConversionInPlaceFillsTheListsOnce) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(1, std::string()), 0);
    expectLists(project.converter, false);
}

TEST(DraftelClassification, ASecondConversionOnOneObjectFillsThemAgain) {
    DraftelProject project;
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    EXPECT_EQ(project.converter.convert(2, project.destination), 0);
    expectLists(project.converter, true);
}

}  // namespace
