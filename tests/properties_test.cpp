#include <gtest/gtest.h>

#include <string>

#include "base/PropertiesFile.h"
#include "base/TrueWord.h"

namespace {

using tavr::templates::platform::PropertiesFile;
using Names = std::set<std::string>;

TEST(PropertiesFile, KeepsOnlyKeysWithSectionAndName) {
    const struct {
        const char* key;
        bool kept;
    } rows[] = {{"none::Width", true}, {"a::b::c", true}, {"Width", false}, {"::Width", false},
                {"none::", false},     {"a::b::", false}, {"", false}};
    PropertiesFile withSections;
    PropertiesFile withoutSections;
    withoutSections.setSections(false);
    for (const auto& row : rows) {
        withSections.setProperty(row.key, "On");
        withoutSections.setProperty(row.key, "On");
        EXPECT_EQ(withSections.getProperty(row.key), row.kept ? "On" : "") << row.key;
        EXPECT_EQ(withoutSections.getProperty(row.key), "On") << row.key;
    }
    EXPECT_EQ(withoutSections.getSectionPropertyNames("none"), Names{});
}

TEST(PropertiesFile, ListsTheNamesOfOneSection) {
    PropertiesFile properties;
    properties.setCaseSensitive(true);
    for (const char* name : {"Width", "Height", "width"}) {
        properties.setProperty(PropertiesFile::key("none", name), "On");
    }
    properties.setProperty("nonesuch::Gain", "On");
    properties.setProperty("None::Gain", "On");
    EXPECT_EQ(properties.getSectionPropertyNames("none"), (Names{"Height", "Width", "width"}));
    EXPECT_EQ(properties.getSectionPropertyNames("no"), Names{});

    PropertiesFile upper;
    upper.setProperty("none::Width", "first");
    upper.setProperty("NONE::width", "Second");
    EXPECT_EQ(upper.getProperty("None::WIDTH"), "Second");
    EXPECT_EQ(upper.getSectionPropertyNames("none"), Names{"WIDTH"});
}

TEST(TrueWord, SwitchesOnInAnyCase) {
    for (const char* word : {"yes", "TRUE", "On", "1"}) {
        EXPECT_TRUE(marovine::isTrueWord(word)) << word;
    }
    for (const char* word : {"", "2", "no", "off", "truee", " true", "y", "11"}) {
        EXPECT_FALSE(marovine::isTrueWord(word)) << word;
    }
    EXPECT_FALSE(marovine::isSwitchedOnByEnvironment("MAROVINE_TEST_UNSET"));
    setenv("MAROVINE_TEST_SET", "Yes", 1);
    EXPECT_TRUE(marovine::isSwitchedOnByEnvironment("MAROVINE_TEST_SET"));
}

}  // namespace
