#include <gtest/gtest.h>

#include <locale>
#include <random>
#include <string>
#include <vector>

#include "description/DescriptionDocument.h"
#include "description/Fg_ParameterInfo.h"
#include "description/Filters.h"
#include "description/ParameterInfoBuilderXML.h"

namespace {

constexpr int kHidden = 0;
constexpr int kPublished = 1;

std::string documentOf(const Fg_ParameterInfo& registry, int port = 0) {
    return ParameterInfoBuilderXML(registry, "A<B", port).build();
}

/// The document around the features: everything before them and everything after them.
std::string documentWith(const std::string& features, const std::string& categories) {
    return R"(<?xml version="1.0" encoding="utf-8"?>

<RegisterDescription
ModelName="A&lt;B"
VendorName="Tavrion"
StandardNameSpace="None"
SchemaMajorVersion="1"
SchemaMinorVersion="0"
SchemaSubMinorVersion="1"
MajorVersion="1"
MinorVersion="0"
SubMinorVersion="0"
ProductGuid="0"
VersionGuid="0"
xmlns="http://www.genicam.org/GenApi/Version_1_0"
xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
xsi:schemaLocation="http://www.genicam.org/GenApi/Version_1_0 GenApiSchema_Version_1_0.xsd"
>
)" + features +
           categories + R"(<Port Name="DevicePort"></Port>
</RegisterDescription>
)";
}

TEST(XmlFilters, ReplaceReservedCharactersAndCleanNames) {
    EXPECT_EQ(xmlStringFilter("a<b & 'c'"), "a&lt;b &amp; &apos;c&apos;");
    EXPECT_EQ(xmlStringFilter("\"x\" > \xB5\n"), "&quot;x&quot; &gt; \xB5\n");
    EXPECT_EQ(xmlNameFilter("9 Light-Gain_2"), "LightGain_2");
    EXPECT_EQ(xmlNameFilter("_x"), "x");
    EXPECT_EQ(xmlNameFilter("Line Trigger / ExSync"), "LineTriggerExSync");
    EXPECT_EQ(xmlNameFilter("[{@`\xE4"), "");
}

TEST(XmlDocument, DescribesEachKindToTheByte) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const other = registry.addGroupInfo(0, nullptr, "Other");
    registry.addInfoString(other, "Load & Save", "FG_LUT_FILE", "*.lut", 7, 1, kPublished, nullptr, 300, 0);
    registry.addInfoDouble(other, "Gain", "FG_GAIN", 0.0, 3.9990234375, 0.5, 1, 1, kPublished, "x", 301, 0);
    RegisterInfo* const roi = registry.addGroupInfo(0, nullptr, "ROI");
    registry.addInfoUInt(roi, "Width", "FG_WIDTH", 8, 16384, 8, 7, 2, kPublished, "pixel", 100, 0);
    RegisterInfo* const inner = registry.addGroupInfo(0, roi, "Digital I/O 2");
    registry.addInfoInt(inner, "", "FG_OUT", -1, 3, 0, 4, 1, kPublished, nullptr, 0, 0);
    RegisterInfo* const mode =
        registry.addInfoEnum(roi, "Mode", "FG_MODE", 5, 2, 1, kPublished, nullptr, 101, 0);
    registry.addEnumNameValue(mode, 0, "Five", 5, "FIVE");
    registry.addEnumNameValue(mode, 1, "Old", -1, "OLD");
    registry.addEnumNameValue(mode, 2, "A&B", 3, nullptr);
    registry.addEnumNameValue(mode, 4, "New", -1, "NEW");  // entry 3 stays without a name

    const std::string features =
        "<IntReg Name=\"FG_WIDTH_Reg\">\n<Address>100</Address>\n<Length>4</Length>\n"
        "<AccessMode>RW</AccessMode>\n<pPort>DevicePort</pPort>\n<Sign>Signed</Sign>\n"
        "<Endianess>LittleEndian</Endianess>\n</IntReg>\n"
        "<Integer Name='FG_WIDTH'>\n<Description>Width</Description>\n<pValue>FG_WIDTH_Reg</pValue>\n"
        "<Min>8</Min>\n<Max>16384</Max>\n<Inc>8</Inc>\n</Integer>\n\r"

        "<IntReg "
        "Name=\"FG_OUT_Reg\">\n<Length>4</Length>\n<AccessMode></AccessMode>\n<pPort>DevicePort</pPort>\n"
        "<Sign>Signed</Sign>\n<Endianess>LittleEndian</Endianess>\n</IntReg>\n"
        "<Integer Name='FG_OUT'>\n<pValue>FG_OUT_Reg</pValue>\n<Min>-1</Min>\n<Max>3</Max>\n</Integer>\n\r"

        "<Enumeration Name='FG_MODE'>\n<Description>Mode</Description>\n"
        "<EnumEntry Name=\"New\">\n<Value>-1</Value>\n</EnumEntry>\n"
        "<EnumEntry Name=\"A&amp;B\">\n<Value>3</Value>\n</EnumEntry>\n"
        "<EnumEntry Name=\"Five\">\n<Value>5</Value>\n</EnumEntry>\n"
        "<pValue>FG_MODE_Reg</pValue>\n</Enumeration>\n"
        "<IntReg "
        "Name=\"FG_MODE_Reg\">\n<Address>101</Address>\n<Length>4</Length>\n<AccessMode>WO</AccessMode>\n"
        "<pPort>DevicePort</pPort>\n<Sign>Unsigned</Sign>\n<Endianess>LittleEndian</Endianess>\n</IntReg>\n\r"

        "<StringReg Name=\"FG_LUT_FILE\">\n<Description>Load &amp; "
        "Save</Description>\n<Address>300</Address>\n"
        "<Length>4096</Length>\n<AccessMode>RW</AccessMode>\n<pPort>DevicePort</pPort>\n</StringReg>\n\r"

        "<FloatReg "
        "Name=\"FG_GAIN_Reg\">\n<Address>301</Address>\n<Length>8</Length>\n<AccessMode>RO</AccessMode>\n"
        "<pPort>DevicePort</pPort>\n<Endianess>LittleEndian</Endianess>\n</FloatReg>\n"
        "<Float Name=\"FG_GAIN\">\n<Description>Gain</Description>\n<pValue>FG_GAIN_Reg</pValue>\n"
        "<Min>0</Min>\n<Max>3.9990234375</Max>\n</Float>\n\r";
    const std::string categories =
        "<Category Name='Root' NameSpace='Standard' >\n<pFeature>ROI</pFeature>\n"
        "<pFeature>DigitalIO2</pFeature>\n<pFeature>Other</pFeature>\n</Category>\n"
        "<Category Name='ROI'  >\n<pFeature>FG_WIDTH</pFeature>\n<pFeature>FG_MODE</pFeature>\n</Category>\n"
        "<Category Name='DigitalIO2'  >\n<pFeature>FG_OUT</pFeature>\n</Category>\n"
        "<Category Name='Other'  >\n<pFeature>FG_LUT_FILE</pFeature>\n<pFeature>FG_GAIN</pFeature>\n"
        "</Category>\n";
    EXPECT_EQ(documentOf(registry), documentWith(features, categories));

    ParameterInfoBuilderXML builder(registry, "A<B", 0);
    EXPECT_EQ(builder.build(), builder.build());
}

TEST(XmlDocument, GroupsOfOneNameShareACategoryAndNamelessOnesUseTheRoot) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const nameless = registry.addGroupInfo(0, nullptr, "");
    registry.addInfoString(nameless, "C", "FG_C", "", 7, 1, kPublished, nullptr, 3, 0);
    RegisterInfo* const input = registry.addGroupInfo(0, nullptr, "Input");
    RegisterInfo* const innerTrigger = registry.addGroupInfo(0, input, "Trigger");
    registry.addInfoString(innerTrigger, "B", "FG_B", "", 7, 1, kPublished, nullptr, 2, 0);
    RegisterInfo* const trigger = registry.addGroupInfo(0, nullptr, "Trigger");
    registry.addInfoString(trigger, "A", "FG_A", "", 7, 1, kPublished, nullptr, 1, 0);

    const std::string document = documentOf(registry);
    EXPECT_NE(
        document.find("<Category Name='Root' NameSpace='Standard' >\n<pFeature>Trigger</pFeature>\n"
                      "<pFeature>FG_C</pFeature>\n</Category>\n"
                      "<Category Name='Trigger'  >\n<pFeature>FG_A</pFeature>\n<pFeature>FG_B</pFeature>\n"
                      "</Category>\n<Port "),
        std::string::npos)
        << document;
}

TEST(XmlDocument, LeavesOutWhatIsNotDescribed) {
    Fg_ParameterInfo registry(1);
    const std::string empty = documentWith("", "<Category Name='Root' NameSpace='Standard' >\n</Category>\n");
    EXPECT_EQ(documentOf(registry), empty);
    EXPECT_EQ(documentOf(registry, 1), empty);
    RegisterInfo* const group = registry.addGroupInfo(0, nullptr, "Group");
    registry.addInfoUInt(group, "H", "FG_H", 0, 1, 1, 7, 1, kHidden, nullptr, 1, 0);
    registry.addInfoUInt64(group, "U64", "FG_U64", 0, 1, 1, 7, 1, kPublished, nullptr, 2, 0);
    registry.addInfoInt64(group, "I64", "FG_I64", 0, 1, 1, 7, 1, kPublished, nullptr, 3, 0);
    registry.addInfoUIntField(group, "F", "FG_F", 4, 0, 1, 1, 7, 1, kPublished, nullptr, 4, 0);
    registry.addInfoIntField(group, "G", "FG_G", 4, 0, 1, 1, 7, 1, kPublished, nullptr, 5, 0);
    registry.addInfoDoubleField(group, "D", "FG_D", 4, 0, 1, 1, 7, 1, kPublished, nullptr, 6, 0);
    RegisterInfo* const direct = registry.addGroupInfo(0, nullptr, "Direct Register Access");
    registry.addInfoUInt(direct, "R (8)", "DRA_R", 0, 255, 1, 7, 1, kPublished, nullptr, 1000001, 0);
    EXPECT_EQ(documentOf(registry), empty);
}

/// A locale that groups digits and has a decimal comma.
struct CommaNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(XmlDocument, NumbersHaveTwelveDigitsAndIgnoreTheLocale) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const group = registry.addGroupInfo(0, nullptr, "Group");
    registry.addInfoDouble(group, "P", "FG_P", 0.008, 34359738.36, 0, 1, 1, kPublished, nullptr, 1, 0);
    registry.addInfoDouble(group, "Q", "FG_Q", -1.0 / 3.0, 123456789012345.0, 0, 1, 1, kPublished, nullptr, 2,
                           0);
    registry.addInfoUInt(group, "U", "FG_U", 0, 4294967295u, 1, 1, 1, kPublished, nullptr, 3, 0);
    registry.addInfoInt(group, "I", "FG_I", -2147483647 - 1, 2147483647, -2, 1, 1, kPublished, nullptr, 4, 0);
    registry.addInfoUInt(group, "L", "FG_TRANSFER_LEN", 0, 1, 1, 1, 1, kPublished, nullptr, 5, 0);

    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    const std::string document = documentOf(registry);
    std::locale::global(before);
    for (const char* const expected : {"<Min>0.008</Min>\n<Max>34359738.36</Max>",
                                       "<Min>-0.333333333333</Min>\n<Max>1.23456789012e+14</Max>",
                                       "<Min>0</Min>\n<Max>4294967295</Max>\n<Inc>1</Inc>",
                                       "<Min>-2147483648</Min>\n<Max>2147483647</Max>\n<Inc>-2</Inc>",
                                       "<Address>5</Address>\n<Length>8</Length>"}) {
        EXPECT_NE(document.find(expected), std::string::npos) << expected << " not in\n" << document;
    }
}

TEST(XmlDocument, KeepsUpWithFlagsAndMaxima) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const group = registry.addGroupInfo(0, nullptr, "Group");
    std::vector<RegisterInfo*> nodes;
    for (int i = 0; i < 8; ++i) {
        const std::string name = "FG_" + std::to_string(i);
        const int publish = i == 3 ? kHidden : kPublished;
        const auto add = [&](auto operation, auto maximum) {
            nodes.push_back(
                (registry.*operation)(group, "P", name.c_str(), 0, maximum, 1, 7, 1, publish, nullptr, i, 0));
        };
        add(&Fg_ParameterInfo::addInfoUInt, 16384u);
        add(&Fg_ParameterInfo::addInfoInt, 10);
        add(&Fg_ParameterInfo::addInfoDouble, 0.5);
        nodes.push_back(registry.addInfoString(group, "P", name.c_str(), "", 7, 1, publish, nullptr, i, 0));
    }
    marovine::DescriptionDocument document;
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        for (unsigned changes = random() % 4; changes > 0; --changes) {
            RegisterInfo& node = *nodes[random() % nodes.size()];
            const std::uint32_t number = static_cast<std::uint32_t>(random()) >> random() % 32;
            marovine::storeField(node.accessFlags, static_cast<std::int32_t>(random() % 8));
            if (node.kind == FG_KIND_UINT32) marovine::storeField(node.value.uint32.maximum, number);
            if (node.kind == FG_KIND_INT32)
                marovine::storeField(node.value.int32.maximum, static_cast<std::int32_t>(number));
            if (node.kind == FG_KIND_DOUBLE) marovine::storeField(node.value.real.maximum, number / 1000.0);
        }
        ASSERT_EQ(documentOf(registry), *document.of(registry, "A<B", 0)) << round;
    }
    const auto earlier = document.of(registry, "A<B", 0);
    const std::string text = *earlier;
    marovine::storeField(nodes[0]->value.uint32.maximum, 5u);
    EXPECT_NE(text, *document.of(registry, "A<B", 0));
    EXPECT_EQ(text, *earlier) << "whoever still reads it";
}

}  // namespace
