/// Description text, packed image and icon.

#include <gmock/gmock.h>
#include <png.h>

#include <cstdio>
#include <cstring>
#include <fstream>

#include "board/design/DescriptionParser.h"
#include "board/design/DesignImage.h"
#include "entry/DesignImage.h"
#include "tests/BoardFixture.h"

namespace {

using testing::HasSubstr;
using virtualboard::DesignData;
using virtualboard::packDesign;
using virtualboard::parseDescription;
using virtualboard::unpackDesign;

const std::string kSmall = R"(design "Small"
type 30017
group Device1 {
    u32 Width 8..64 = 16 step 8 unit "µs"   # a comment
    i32 Shift -4..4 = -1
    f64 Gain 0..1.5 = 0.25 step 0.25
    u64 Serial 0..0xFFFFFFFFFFFFFFFF = 0x10 readonly
    field Table 4 of 0..3 = ramp
    text Name max 8 = "a # b"
    event Done kind 1
}
register 40 Counter = 7 readonly
runtime 600 u32 FG_TIMEOUT 2..100 = 10
)";

TEST(Description, ComesBackFromTheImageAsItWasWritten) {
    const DesignData data = parseDescription(unpackDesign(packDesign(kSmall, 4096)), "small.design");
    ASSERT_EQ(7u, data.parameters.size());
    EXPECT_EQ("Device1_Width", data.parameters[0].name);
    EXPECT_EQ(virtualboard::kFirstParameterId, data.parameters[0].id);
    EXPECT_EQ("\xB5s", data.parameters[0].unit) << "ISO-8859-1";
    EXPECT_EQ(-1, static_cast<std::int64_t>(data.parameters[1].start));
    EXPECT_EQ(0.25, virtualboard::toDouble(data.parameters[2].start));
    EXPECT_TRUE(data.parameters[3].readOnly);
    EXPECT_EQ((std::vector<std::uint32_t>{0, 1, 2, 3}), data.parameters[4].startField);
    EXPECT_EQ("a # b", data.parameters[5].startText);
    EXPECT_EQ(600, data.parameters[6].id);
    EXPECT_EQ("FG_TIMEOUT", data.parameters[6].name);
    EXPECT_EQ("Device1_Done", data.events.at(0).name);
    EXPECT_EQ(40u, data.registers.at(0).bits);
    EXPECT_FALSE(data.registers.at(0).writable);
}

TEST(Description, IsRefusedWithTheLineThatIsWrong) {
    struct Case {
        const char* line;
        const char* message;
    };
    for (const Case& c : {
             Case{"u32 A 1..2 = 3", "start value of 'A' lies outside"},
             Case{"u32 A 3..2 = 3", "range of 'A' is empty"},
             Case{"u32 A 0..4294967296 = 0", "'4294967296' is not a number that fits"},
             Case{"f64 A 0..nan = 0", "range of 'A' is empty"},
             Case{"u32 A 0-2 = 0", "'0-2' is not a range"},
             Case{"u32 A 0..2", "line ends where '=' should stand"},
             Case{"u32 A 0..2 = 0 readwrite", "'readwrite' is not understood"},
             Case{"u32 A-B 0..2 = 0", "is not a name"},
             Case{"u32 B 0..2 = 0", "'G_B' is there twice"},
             Case{"field A 70000 of 0..1 = 0", "at most 65536 elements"},
             Case{"field A 3 of 0..1 = ramp", "outside its range"},
             Case{"text A max 2 = \"abc\"", "longer than its maximum"},
             Case{"text A max 2 = \"ab", "lacks its closing quote"},
             Case{"u16 A 0..2 = 0", "'u16' is not a keyword"},
             Case{"}\n}", "closes a group that was not opened"},
             Case{"register 65 A = 0", "must be 1 to 64 bits wide"},
             Case{"register 4 A = 16", "wider than the register"},
             Case{"runtime 600 u32 A 0..1 = 0\nruntime 600 u32 C 0..1 = 0", "id 600 of 'C' is taken"},
         }) {
        const std::string text =
            std::string("design \"D\"\ntype 1\ngroup G {\nu32 B 0..2 = 0\n") + c.line + "\n}\n";
        try {
            parseDescription(text, "d.design");
            ADD_FAILURE() << c.line << " was taken";
        } catch (const std::invalid_argument& error) {
            EXPECT_THAT(error.what(), testing::MatchesRegex("d\\.design:[56]: .*")) << c.line;
            EXPECT_THAT(error.what(), HasSubstr(c.message)) << c.line;
        }
    }
    EXPECT_THROW(parseDescription("type 1\n", "d.design"), std::invalid_argument) << "no name";
    EXPECT_THROW(parseDescription("design \"D\"\ntype 1\ngroup G {\n", "d.design"), std::invalid_argument);
    std::string many = "design \"D\"\ntype 1\ngroup G {\n";
    for (const char* name : {"A", "B"}) many += std::string("field ") + name + " 40000 of 0..1 = 0\n";
    EXPECT_THROW(parseDescription(many + "}\n", "d.design"), std::invalid_argument)
        << "much memory from few lines";
}

TEST(Image, IsRefusedWhenItsSizeOrAnyByteThatCountsIsWrong) {
    EXPECT_THROW(packDesign(kSmall, kSmall.size()), std::length_error);
    const std::string image = packDesign(kSmall, 1024);
    ASSERT_EQ(1024u, image.size());
    for (std::size_t i = 0; i < image.size(); ++i) {
        std::string garbled = image;
        garbled[i] = static_cast<char>(garbled[i] ^ 0x10);
        if (image[i] != 0) {
            EXPECT_THROW(unpackDesign(garbled), std::invalid_argument) << "byte " << i;
        }
        EXPECT_THROW(unpackDesign(image.substr(0, i)), std::invalid_argument) << i << " bytes";
    }
    EXPECT_THROW(unpackDesign(image + '\0'), std::invalid_argument);
}

TEST(EmbeddedImage, HasItsSizeAndIsTheFileBesideTheLibrary) {
    EXPECT_EQ(0, rawHapData[rawHapSize]);
    EXPECT_EQ(0, appletIconData[appletIconSize]);
    std::ifstream file(MAROVINE_HAP, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    ASSERT_EQ(4781671u, bytes.size());
    EXPECT_EQ(0, std::memcmp(bytes.data(), rawHapData, rawHapSize));
}

TEST(EmbeddedImage, IsLoadedFromAFileOfItsType) {
    fpga_design* design = HapLoadHapFileWithType(MAROVINE_HAP, 30017, 1);
    EXPECT_NE(nullptr, design);
    HapUnloadHapFile(design);
    EXPECT_EQ(nullptr, HapLoadHapFileWithType(MAROVINE_HAP, 30018, 1)) << "another board's design";
    EXPECT_EQ(nullptr, HapLoadHapFileWithType("nowhere.hap", 30017, 1));
    EXPECT_EQ(nullptr, HapLoadHapFileWithType(testing::TempDir().c_str(), 30017, 1)) << "a folder";
    EXPECT_EQ(nullptr, HapLoadHapFileWithType(nullptr, 30017, 1));
    EXPECT_EQ(nullptr, HapLoadDesignFromBuffer(rawHapData, rawHapSize - 1, 1));
    EXPECT_EQ(nullptr, HapLoadDesignFromBuffer(nullptr, 0, 1));
}

TEST(EmbeddedIcon, IsAPictureOf32By32Pixels) {
    png_image picture{};
    picture.version = PNG_IMAGE_VERSION;
    ASSERT_NE(0, png_image_begin_read_from_memory(&picture, appletIconData, appletIconSize))
        << picture.message;
    EXPECT_EQ(32u, picture.width);
    EXPECT_EQ(32u, picture.height);
    EXPECT_EQ(8, appletIconData[24]) << "bits per part";
    EXPECT_EQ(PNG_COLOR_TYPE_RGB_ALPHA, appletIconData[25]);
    picture.format = PNG_FORMAT_RGBA;
    std::vector<png_byte> pixels(PNG_IMAGE_SIZE(picture));
    ASSERT_NE(0, png_image_finish_read(&picture, nullptr, pixels.data(), 0, nullptr)) << picture.message;
    EXPECT_EQ(0, pixels[3]) << "the corner is transparent";
}

}  // namespace
