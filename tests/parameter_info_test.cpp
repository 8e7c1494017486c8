#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "description/Fg_ParameterInfo.h"

namespace {

RegisterInfo* addWidth(Fg_ParameterInfo& registry, RegisterInfo* parent, int id = 100, int process = 0) {
    return registry.addInfoUInt(parent, "Width", "FG_WIDTH", 8, 16384, 8, 3, 2, 1, "pixel", id, process);
}

TEST(ParameterInfo, TopLevelGroupsAreListedNewestFirst) {
    // The default resource is the host's business.
    auto* const hosts = std::pmr::set_default_resource(std::pmr::null_memory_resource());
    Fg_ParameterInfo registry(1);
    std::pmr::set_default_resource(hosts);
    EXPECT_EQ(registry.getRegisterInfo(0), nullptr);
    RegisterInfo* const oldest = registry.addGroupInfo(0, nullptr, "Camera Link");
    RegisterInfo* const middle = registry.addGroupInfo(0, nullptr, "ROI");
    RegisterInfo* const newest = registry.addGroupInfo(0, nullptr, "Legacy Parameter");

    EXPECT_EQ(registry.getRegisterInfo(0), newest);
    EXPECT_EQ(registry.getNextRegisterInfo(nullptr, 0), newest);
    EXPECT_EQ(registry.getNextRegisterInfo(newest, 0), middle);
    EXPECT_EQ(registry.getNextRegisterInfo(middle, 0), oldest);
    EXPECT_EQ(registry.getNextRegisterInfo(oldest, 0), nullptr);
    EXPECT_EQ(newest->previous, nullptr);
    EXPECT_EQ(middle->previous, newest);
    EXPECT_EQ(oldest->previous, middle);
    EXPECT_STREQ(newest->displayName, "Legacy Parameter");
    EXPECT_EQ(newest->name, nullptr);
}

TEST(ParameterInfo, GroupsAndParametersShareTheirParentsNumbering) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const top = registry.addGroupInfo(0, nullptr, "Digital I/O");
    RegisterInfo* const inner = registry.addGroupInfo(0, top, "GPO");
    RegisterInfo* const innermost = registry.addGroupInfo(0, inner, "Front");
    std::vector<RegisterInfo*> children{inner};
    for (int id = 1; id <= 40; ++id) children.push_back(addWidth(registry, top, id));

    EXPECT_EQ(innermost->depth, 2u);
    EXPECT_STREQ(innermost->parentName, "GPO");
    EXPECT_EQ(top->parentName, nullptr);
    EXPECT_EQ(inner->next, nullptr) << "only top-level groups are chained";
    ASSERT_EQ(top->value.group.childCount, 41);
    EXPECT_EQ(top->value.group.nextChildIndex, 41u);
    for (std::uint32_t i = 0; i < children.size(); ++i) {
        EXPECT_EQ(top->value.group.children[i], children[i]);
        EXPECT_EQ(children[i]->index, i);
    }
}

TEST(ParameterInfo, ANodeHasItsOwnTextsAndFlags) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const group = registry.addGroupInfo(0, nullptr, "Any");
    std::string unit = "\xB5s";
    const RegisterInfo* node =
        registry.addInfoUInt(group, "Width", "FG_WIDTH", 8, 4294967295u, 8, 3, 2, 1, unit.c_str(), 100, 0);
    unit = "gone";
    EXPECT_EQ(node->kind, 1u);
    EXPECT_STREQ(node->displayName, "Width");
    EXPECT_STREQ(node->name, "FG_WIDTH");
    EXPECT_STREQ(node->unit, "\xB5s");
    EXPECT_EQ(node->accessFlags * 1000 + node->secondFlags * 100 + node->publish * 10, 3210);
    EXPECT_EQ(node->address, 100);
    EXPECT_EQ(node->value.uint32.maximum, 4294967295u);
}

TEST(ParameterInfo, EveryKindStoresItsOwnLimits) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const group = registry.addGroupInfo(0, nullptr, "Any");
    const auto expect = [](const RegisterInfo* node, std::uint32_t kind, const auto& stored, auto minimum,
                           auto maximum, auto increment) {
        EXPECT_EQ(node->kind, kind);
        EXPECT_EQ(stored.minimum, minimum) << kind;
        EXPECT_EQ(stored.maximum, maximum) << kind;
        EXPECT_EQ(stored.increment, increment) << kind;
        EXPECT_EQ(node->unit, nullptr);
    };
    const auto* node = registry.addInfoInt(group, "I", "I", -1, 3, 2, 7, 1, 1, nullptr, 1, 0);
    expect(node, 11, node->value.int32, -1, 3, 2);
    node = registry.addInfoUInt64(group, "U", "U", 1, ~0ull, 2, 7, 1, 1, nullptr, 2, 0);
    expect(node, 9, node->value.uint64, 1u, ~0ull, 2u);
    node = registry.addInfoInt64(group, "L", "L", -4294967296, 4294967295, 1, 7, 1, 1, nullptr, 3, 0);
    expect(node, 12, node->value.int64, -4294967296, 4294967295, 1);
    node = registry.addInfoDouble(group, "D", "D", 0.008, 30.0, 0.004, 7, 1, 1, nullptr, 4, 0);
    expect(node, 6, node->value.real, 0.008, 30.0, 0.004);
    node = registry.addInfoUIntField(group, "UF", "UF", 256, 1, 255, 2, 7, 1, 1, nullptr, 5, 0);
    expect(node, 7, node->value.uint32Field, 1u, 255u, 2u);
    EXPECT_EQ(node->value.uint32Field.elements, 256u);
    node = registry.addInfoDoubleField(group, "DF", "DF", 16, -1.5, 2.5, 0.5, 7, 1, 1, nullptr, 6, 0);
    expect(node, 8, node->value.realField, -1.5, 2.5, 0.5);
    node = registry.addInfoIntField(group, "IF", "IF", 8, -7, 9, 1, 7, 1, 1, nullptr, 7, 0);
    expect(node, 13, node->value.int32Field, -7, 9, 1);
    for (const char* attribute : {"*.lut", static_cast<const char*>(nullptr)}) {
        node = registry.addInfoString(group, "T", "T", attribute, 7, 1, 1, nullptr, 8, 0);
        EXPECT_EQ(node->kind, 5u);
        EXPECT_STREQ(node->value.text.attribute, attribute != nullptr ? attribute : "");
    }
}

TEST(ParameterInfo, EnumerationEntriesAreFilledOneByOne) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const group = registry.addGroupInfo(0, nullptr, "CC");
    RegisterInfo* const node = registry.addInfoEnum(group, "CC 1", "FG_CC1", 3, 7, 1, 1, nullptr, 200, 0);
    const auto& entries = node->value.enumeration;
    auto namesOf = [&](int index) {
        return std::string(entries.displayNames[index]) + "/" + entries.constantNames[index];
    };
    ASSERT_EQ(entries.count, 3);
    EXPECT_EQ(entries.displayNames[2], nullptr) << "entries start empty";

    EXPECT_EQ(registry.addEnumNameValue(node, 0, "Exsync", 0, "CC_EXSYNC"), 0);
    EXPECT_EQ(registry.addEnumNameValue(node, 1, "Other", -1, "FG_OTHER"), 0);
    EXPECT_EQ(namesOf(1), "Other/FG_OTHER");
    EXPECT_EQ(entries.values[1], -1);

    EXPECT_EQ(registry.addEnumNameValue(node, 1, "Gnd", 4, "CC_GND"), 0) << "filling again replaces";
    EXPECT_EQ(namesOf(1), "Gnd/CC_GND");
    EXPECT_EQ(namesOf(0), "Exsync/CC_EXSYNC");
    EXPECT_EQ(entries.values[1], 4);

    for (const int index : {-1, 3}) EXPECT_EQ(registry.addEnumNameValue(node, index, "X", 1, "X"), -500);
    EXPECT_EQ(registry.addEnumNameValue(node, 1, nullptr, 9, "X"), -500);
    EXPECT_EQ(registry.addEnumNameValue(group, 0, "X", 1, "X"), -500);
    EXPECT_EQ(registry.addEnumNameValue(nullptr, 0, "X", 1, "X"), -500);
    EXPECT_EQ(namesOf(1), "Gnd/CC_GND") << "a refusal changes nothing";

    EXPECT_EQ(registry.addEnumNameValue(node, 2, std::string(300, 'x').c_str(), 7, nullptr), 0);
    EXPECT_EQ(std::string(255, 'x'), entries.displayNames[2]);
    EXPECT_EQ(entries.constantNames[2], nullptr);
}

TEST(ParameterInfo, RefusesWhatItCannotHold) {
    Fg_ParameterInfo registry(2);
    RegisterInfo* const group = registry.addGroupInfo(0, nullptr, "Group");
    RegisterInfo* const width = addWidth(registry, group);

    for (const int process : {-1, 2}) {
        EXPECT_EQ(registry.addGroupInfo(process, nullptr, "G"), nullptr);
        EXPECT_EQ(addWidth(registry, group, 100, process), nullptr);
        EXPECT_EQ(registry.getRegisterInfo(process), nullptr);
        EXPECT_EQ(registry.getNextRegisterInfo(group, process), nullptr);
        registry.init(process);
        registry.finalize(process);
        registry.destroy(process);
    }
    EXPECT_EQ(addWidth(registry, nullptr), nullptr);
    EXPECT_EQ(addWidth(registry, width), nullptr) << "a parameter holds no parameters";
    EXPECT_EQ(registry.addGroupInfo(0, width, "G"), nullptr);
    EXPECT_EQ(addWidth(registry, group, 100, 1), nullptr) << "the other tree may be freed before this one";
    EXPECT_EQ(width->value.uint32.maximum, 16384u);
    EXPECT_EQ(group->value.group.childCount, 1);
    EXPECT_EQ(Fg_ParameterInfo(-3).getRegisterInfo(0), nullptr);
}

TEST(ParameterInfo, FinalizeClosesATreeUntilInit) {
    Fg_ParameterInfo registry(2);
    RegisterInfo* group = registry.addGroupInfo(0, nullptr, "Group");
    RegisterInfo* const other = registry.addGroupInfo(1, nullptr, "Other");
    registry.finalize(0);
    EXPECT_EQ(registry.addGroupInfo(0, nullptr, "G"), nullptr);
    EXPECT_EQ(addWidth(registry, group), nullptr);
    EXPECT_EQ(registry.getRegisterInfo(0), group) << "the tree itself stays";
    EXPECT_NE(addWidth(registry, other, 100, 1), nullptr);

    registry.destroy(0);
    EXPECT_EQ(registry.getRegisterInfo(0), nullptr);
    EXPECT_EQ(registry.addGroupInfo(0, nullptr, "G"), nullptr);
    registry.init(0);
    group = registry.addGroupInfo(0, nullptr, "G");
    EXPECT_EQ(registry.getRegisterInfo(0), group);
    EXPECT_EQ(group->next, nullptr);
    EXPECT_EQ(registry.getRegisterInfo(1), other);
}

TEST(ParameterInfo, SearchGoesDownBeforeItGoesOn) {
    Fg_ParameterInfo registry(1);
    RegisterInfo* const last = registry.addGroupInfo(0, nullptr, "Last");
    RegisterInfo* const first = registry.addGroupInfo(0, nullptr, "First");
    RegisterInfo* const inner = registry.addGroupInfo(0, first, "Inner");
    RegisterInfo* const deep = addWidth(registry, inner, 7);
    addWidth(registry, first, 7);
    RegisterInfo* const late = addWidth(registry, last, 8);
    inner->address = 8;

    EXPECT_EQ(marovine::findRegisterInfoByParamId(registry.getRegisterInfo(0), 7), deep);
    EXPECT_EQ(marovine::findRegisterInfoByParamId(registry.getRegisterInfo(0), 8), late)
        << "groups never match";
    EXPECT_EQ(marovine::findRegisterInfoByParamId(registry.getRegisterInfo(0), 9), nullptr);
    EXPECT_EQ(marovine::findRegisterInfoByParamId(nullptr, 7), nullptr);
}

}  // namespace
