#include "description/Fg_ParameterInfo.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/ErrorCodes.h"

namespace {

using Memory = std::pmr::polymorphic_allocator<>;

constexpr std::size_t kLongestEntryName = 255;

char* copyText(Memory memory, std::string_view text) {
    char* const copy = memory.allocate_object<char>(text.size() + 1);
    *std::ranges::copy(text, copy).out = '\0';
    return copy;
}

char* copyText(Memory memory, const char* text) {
    return text == nullptr ? nullptr : copyText(memory, std::string_view(text));
}

/// The array of children has room for the next power of two, at least `kFewChildren`, so that the count alone
/// tells when it is full.
void appendChild(Memory memory, RegisterInfo* parent, RegisterInfo* child) {
    constexpr unsigned kFewChildren = 4;
    auto& group = parent->value.group;
    const auto count = static_cast<unsigned>(group.childCount);
    if (count == 0 || (count >= kFewChildren && std::has_single_bit(count))) {
        RegisterInfo** const grown = memory.allocate_object<RegisterInfo*>(std::max(kFewChildren, 2 * count));
        std::copy_n(group.children, count, grown);
        group.children = grown;
    }
    group.children[count] = child;
    ++group.childCount;
    child->index = group.nextChildIndex++;
}

bool isGroupOf(int process, const RegisterInfo* node) {
    return node != nullptr && node->kind == FG_KIND_GROUP && node->process == process;
}

}  // namespace

Fg_ParameterInfo::Fg_ParameterInfo(int processCount)
    : processCount_(std::max(processCount, 0)),
      processes_(std::make_unique<Process[]>(static_cast<std::size_t>(processCount_))) {}

Fg_ParameterInfo::Process* Fg_ParameterInfo::processAt(int process) const {
    return process >= 0 && process < processCount_ ? &processes_[static_cast<std::size_t>(process)] : nullptr;
}

void Fg_ParameterInfo::init(int process) {
    destroy(process);
    if (Process* const tree = processAt(process)) tree->finalised = false;
}

void Fg_ParameterInfo::finalize(int process) {
    if (Process* const tree = processAt(process)) tree->finalised = true;
}

void Fg_ParameterInfo::destroy(int process) {
    if (Process* const tree = processAt(process)) {
        tree->first = nullptr;
        tree->arena.release();
    }
}

RegisterInfo* Fg_ParameterInfo::getRegisterInfo(int process) const {
    const Process* const tree = processAt(process);
    return tree == nullptr ? nullptr : tree->first;
}

RegisterInfo* Fg_ParameterInfo::getNextRegisterInfo(RegisterInfo* node, int process) const {
    if (processAt(process) == nullptr) return nullptr;
    return node == nullptr ? getRegisterInfo(process) : node->next;
}

RegisterInfo* Fg_ParameterInfo::addGroupInfo(int process, RegisterInfo* parent, const char* name) {
    Process* const tree = processAt(process);
    if (tree == nullptr || tree->finalised) return nullptr;
    if (parent != nullptr && !isGroupOf(process, parent)) return nullptr;

    Memory memory = tree->memory();
    auto* const group = memory.new_object<RegisterInfo>();
    group->kind = FG_KIND_GROUP;
    group->displayName = copyText(memory, name);
    group->process = process;
    if (parent == nullptr) {
        group->next = tree->first;
        if (tree->first != nullptr) tree->first->previous = group;
        tree->first = group;
    } else {
        group->depth = parent->depth + 1;
        group->parentName = copyText(memory, parent->displayName);
        appendChild(memory, parent, group);
    }
    return group;
}

RegisterInfo* Fg_ParameterInfo::addParameter(std::uint32_t kind, const RegisterInfoValue& value,
                                             RegisterInfo* parent, const char* displayName, const char* name,
                                             int access, int flag2, int publish, const char* unit, int id,
                                             int process) {
    Process* const tree = processAt(process);
    if (tree == nullptr || tree->finalised || !isGroupOf(process, parent)) return nullptr;

    Memory memory = tree->memory();
    auto* const node = memory.new_object<RegisterInfo>();
    node->kind = kind;
    node->displayName = copyText(tree->memory(), displayName);
    node->name = copyText(tree->memory(), name);
    node->accessFlags = access;
    node->secondFlags = flag2;
    node->publish = publish;
    node->address = id;
    node->value = value;
    node->unit = copyText(tree->memory(), unit);
    node->process = process;
    appendChild(memory, parent, node);
    return node;
}

RegisterInfo* Fg_ParameterInfo::addInfoString(RegisterInfo* parent, const char* displayName, const char* name,
                                              const char* text, int access, int flag2, int publish,
                                              const char* unit, int id, int process) {
    RegisterInfo* const node = addParameter(FG_KIND_TEXT, {.text = {nullptr}}, parent, displayName, name,
                                            access, flag2, publish, unit, id, process);
    if (node != nullptr) {
        node->value.text.attribute = copyText(processAt(process)->memory(), text == nullptr ? "" : text);
    }
    return node;
}

RegisterInfo* Fg_ParameterInfo::addInfoEnum(RegisterInfo* parent, const char* displayName, const char* name,
                                            int entryCount, int access, int flag2, int publish,
                                            const char* unit, int id, int process) {
    RegisterInfo* const node = addParameter(FG_KIND_ENUMERATION, {.enumeration = {}}, parent, displayName,
                                            name, access, flag2, publish, unit, id, process);
    if (node != nullptr && entryCount > 0) {
        Memory memory = processAt(process)->memory();
        const auto count = static_cast<std::size_t>(entryCount);
        auto& entries = node->value.enumeration;
        entries.displayNames = memory.allocate_object<char*>(count);
        entries.constantNames = memory.allocate_object<char*>(count);
        entries.values = memory.allocate_object<std::int32_t>(count);
        std::fill_n(entries.displayNames, count, nullptr);
        std::fill_n(entries.constantNames, count, nullptr);
        std::fill_n(entries.values, count, 0);
        entries.count = entryCount;
    }
    return node;
}

int Fg_ParameterInfo::addEnumNameValue(RegisterInfo* node, int index, const char* displayName,
                                       std::int32_t value, const char* constantName) {
    if (node == nullptr || node->kind != FG_KIND_ENUMERATION || displayName == nullptr)
        return marovine::error::bufferTooSmall;
    Process* const tree = processAt(node->process);
    auto& entries = node->value.enumeration;
    if (tree == nullptr || index < 0 || index >= entries.count) return marovine::error::bufferTooSmall;

    const std::string_view name(displayName, strnlen(displayName, kLongestEntryName));
    const bool whole = displayName[name.size()] == '\0';
    entries.displayNames[index] =
        whole ? copyText(tree->memory(), displayName) : copyText(tree->memory(), name);
    entries.constantNames[index] = copyText(tree->memory(), constantName);
    entries.values[index] = value;
    return 0;
}

namespace marovine {

RegisterInfo* findRegisterInfoByParamId(RegisterInfo* node, int id) {
    std::vector<RegisterInfo*> pending{node};
    while (!pending.empty()) {
        RegisterInfo* const current = pending.back();
        pending.pop_back();
        if (current == nullptr) continue;
        pending.push_back(current->next);
        if (current->kind != FG_KIND_GROUP) {
            if (current->address == id) return current;
            continue;
        }
        for (std::int32_t child = current->value.group.childCount; child-- > 0;) {
            pending.push_back(current->value.group.children[child]);
        }
    }
    return nullptr;
}

}  // namespace marovine
