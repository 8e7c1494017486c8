// What shells and manual pages are given from the command line's own texts.

#include "command/Completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "command/ManualPages.h"

namespace marovine::host {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

CommandText program() {
    const OptionText set{.names = {"--set"}, .type = "NAME=VALUE"};
    const OptionText colour{.names = {"--color"}, .type = "WHEN", .choices = {"auto", "never"}};
    const OptionText file{.names = {"FILE.mcf"}, .type = "FILE.mcf", .isArgument = true, .required = true};
    const OptionText output{.names = {"-o", "--output"}, .type = "FILE.png"};
    return {
        .name = "marovine",
        .summary = "Speaks",
        .options = {set, colour},
        .commands = {
            {.name = "load", .summary = "Load", .options = {file}},
            {.name = "grab", .summary = "Take", .footer = ".A point\n-1 is a number", .options = {output}},
            {.name = "lut", .commands = {{.name = "show"}}}}};
}

std::vector<std::string> textsFor(const std::vector<std::string>& words) {
    std::vector<std::string> texts;
    for (const auto& candidate : complete(program(), words).candidates) texts.push_back(candidate.text);
    return texts;
}

TEST(Completion, OffersWhatMayStandAtTheCursor) {
    EXPECT_THAT(textsFor({"l"}), ElementsAre("load", "lut"));
    EXPECT_THAT(textsFor({"lut", ""}), ElementsAre("show"));
    EXPECT_THAT(textsFor({"grab", "-"}), ElementsAre("-o", "--output", "--set", "--color"));
    EXPECT_THAT(textsFor({"--color", ""}), ElementsAre("auto", "never"));
    EXPECT_THAT(textsFor({"--color", "never", "lo"}), ElementsAre("load"));
    EXPECT_EQ(complete(program(), {"load", ""}).files, "*.mcf");
    EXPECT_EQ(complete(program(), {"grab", "-o", ""}).files, "*.png");
    EXPECT_THAT(textsFor({}), IsEmpty());
    EXPECT_THAT(textsFor({"nothing", "--none", ""}), ElementsAre("load", "grab", "lut"));
}

TEST(Completion, KnowsParametersAndTheirEntries) {
    EXPECT_THAT(textsFor({"--set", "fg_wid"}), ElementsAre("FG_WIDTH="));
    EXPECT_THAT(textsFor({"--set", "fg_lut_type=lut_type_c"}), ElementsAre("fg_lut_type=LUT_TYPE_CUSTOM"));
    EXPECT_THAT(textsFor({"--set", "FG_CAMSTATUS"}), IsEmpty()) << "nobody can set a read-out";
    EXPECT_THAT(textsFor({"--set", "FG_WIDTH=1"}), IsEmpty());
    EXPECT_THAT(textsFor({"--set", "FG_NONE="}), IsEmpty());
}

TEST(ManualPages, KeepTextsFromBecomingCommands) {
    const auto pages = manualPages(program(), "1.0");
    EXPECT_THAT(pages, Contains(Field(&ManualPage::file, "marovine-grab.1")));
    for (const auto& page : pages) {
        if (page.file != "marovine-grab.1") continue;
        EXPECT_THAT(page.text, HasSubstr("\n\\&.A point\n\\-1 is a number\n"));
    }
}

}  // namespace
}  // namespace marovine::host
