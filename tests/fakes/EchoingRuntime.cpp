/// A host runtime that prints the arguments of each acquisition call and answers with the number in
/// FAKE_RUNTIME_RESULT; its own last error number is -4711. Its parameter tree is full of traps.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "marovine/marovine.h"

namespace {

Fg_Struct innerHandle{};

template <class... Arguments>
int echo(const char* name, const Fg_Struct* handle, Arguments... arguments) {
    std::printf("%s on the %s:", name, handle == &innerHandle ? "inner handle" : "wrong handle");
    (std::printf(" %lld", static_cast<long long>(arguments)), ...);
    std::printf("\n");
    return std::atoi(std::getenv("FAKE_RUNTIME_RESULT"));
}

std::intptr_t number(const void* address) {
    return reinterpret_cast<std::intptr_t>(address);
}

/// Null children, a text that keeps something else where an attribute would stand, a group that only the
/// next pointer of another leads to, and one that leads back to the root.
RegisterInfo* trickyTree() {
    static RegisterInfo root{}, text{}, first{}, second{}, number{};
    static RegisterInfo *ofRoot[] = {nullptr, &text, &first}, *ofSecond[] = {&number, &root};
    const auto group = [](RegisterInfo& node, char* name, auto& children) {
        node.displayName = name;
        node.value.group = {static_cast<std::int32_t>(std::size(children)), children, 0};
    };
    static char names[][6] = {"Root", "Next", "Text", "Count"};
    group(root, names[0], ofRoot);
    group(second, names[1], ofSecond);
    first.value.group.childCount = 1;
    first.next = &second;
    text.kind = FG_KIND_TEXT;
    text.value.text.attribute = reinterpret_cast<char*>(1);
    number.kind = FG_KIND_UINT32;
    text.name = names[2];
    number.name = names[3];
    text.address = 'T';
    number.address = 'C';
    return &root;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {
RegisterInfo* Fg_getParameterInfo(Fg_Struct*, int) {
    return trickyTree();
}
int Fg_getParameterIdByName(Fg_Struct*, const char* name) {
    return *name;
}
Fg_Struct* Fg_InitHandleSlaveAware(const char* design, GXdevice*, fpga_design*, int flags) {
    std::printf("open %s with flags %d\n", design, flags);
    return &innerHandle;
}
int Fg_getLastErrorNumber(Fg_Struct* handle) {
    return handle == &innerHandle ? -4711 : 0;
}
int Fg_getAppletId(Fg_Struct* handle, void* reserved) {
    return echo("id", handle, number(reserved));
}
std::int64_t Fg_getStatusEx(Fg_Struct* handle, int parameter, std::int64_t data, unsigned dma,
                            dma_mem* memory) {
    return echo("status", handle, parameter, data, dma, number(memory));
}
int Fg_AcquireEx(Fg_Struct* handle, unsigned dma, std::int64_t pictures, int flags, dma_mem* memory) {
    return echo("acquire", handle, dma, pictures, flags, number(memory));
}
int Fg_stopAcquireEx(Fg_Struct* handle, unsigned dma, dma_mem* memory, int flags) {
    return echo("stop", handle, dma, number(memory), flags);
}
std::int64_t Fg_getLastPicNumberEx(Fg_Struct* handle, unsigned dma, dma_mem* memory) {
    return echo("last", handle, dma, number(memory));
}
std::int64_t Fg_getLastPicNumberBlockingEx(Fg_Struct* handle, std::int64_t picture, unsigned dma, int timeout,
                                           dma_mem* memory) {
    return echo("wait", handle, picture, dma, timeout, number(memory));
}
int Fg_FreeGrabber(Fg_Struct* handle) {
    return echo("free", handle);
}
}
#pragma GCC visibility pop
