#include "tests/AppletFixture.h"

#include <array>
#include <charconv>
#include <ostream>

namespace marovine::test {

namespace {

std::string textOf(double value) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr};
}
std::string textOf(const std::string& value) {
    return "'" + value + "'";
}
std::string textOf(std::integral auto value) {
    return std::to_string(value);
}
std::string textOf(const std::vector<std::uint32_t>& values) {
    std::string text;
    for (const auto value : values) text += (text.empty() ? "" : ", ") + std::to_string(value);
    return text;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const DesignWrite& write) {
    return out << write.name << " := " << write.value;
}

Writes inTestForm(const std::vector<virtualboard::Write>& writes) {
    Writes result;
    for (const auto& write : writes) {
        std::string name = write.name;
        for (const std::string_view prefix : {"Device1_Process0_", "Device1_Process1_"})
            if (name.starts_with(prefix)) name.erase(0, prefix.size());
        std::string value = std::visit([](const auto& v) { return textOf(v); }, write.value);
        if (write.type == FG_TYPE_FIELD_ACCESS || write.type == FG_TYPE_FIELD_INT)
            value = "[" + std::to_string(write.firstIndex) + "] " + value;
        result.push_back({std::move(name), std::move(value)});
    }
    return result;
}

OpenApplet::OpenApplet(int flags) : device_(virtualboard::insertBoard()), control_(device_) {
    control_.recordWrites(true);
    open(flags);
}

void OpenApplet::open(int flags) {
    int error = 1;
    record_.instance = Std_entry(device_, &error, flags);
    EXPECT_EQ(0, error);
    EXPECT_NE(nullptr, record_.instance);
}

void OpenApplet::reopen(int flags) {
    EXPECT_EQ(0, Fg_FreeGrabber(&record_));
    open(flags);
}

OpenApplet::~OpenApplet() {
    if (record_.instance != nullptr) Fg_FreeGrabber(&record_);
    virtualboard::removeBoard(device_);
}

int OpenApplet::idOf(std::string_view name) {
    const auto* row = findSdkParameter(name);
    EXPECT_NE(nullptr, row) << name;
    return row != nullptr ? row->id : -1;
}

std::string OpenApplet::getText(std::string_view name) {
    char* text = nullptr;
    EXPECT_EQ(0, Fg_getParameterWithType(&record_, idOf(name), &text, 0, FG_TYPE_TEXT_POINTER))
        << "reading " << name;
    if (text == nullptr) return {};
    std::string copy = text;
    EXPECT_EQ(0, Fg_freeParameterStringWithType(&record_, idOf(name), text, 0, FG_TYPE_TEXT_POINTER));
    return copy;
}

namespace {

const RegisterInfo* findNode(const RegisterInfo* node, int id) {
    for (; node != nullptr; node = node->next) {
        if (node->kind != FG_KIND_GROUP) {
            if (node->address == id) return node;
            continue;
        }
        for (int i = 0; i < node->value.group.childCount; ++i)
            if (const auto* found = findNode(node->value.group.children[i], id)) return found;
    }
    return nullptr;
}

}  // namespace

const RegisterInfo& OpenApplet::node(std::string_view name) {
    static const RegisterInfo none{};
    const auto* found = findNode(Fg_getParameterInfo(&record_, 0), idOf(name));
    EXPECT_NE(nullptr, found) << name;
    return found != nullptr ? *found : none;
}

}  // namespace marovine::test
