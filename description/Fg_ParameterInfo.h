#pragma once

/// The parameter description tree that the host walks: groups and parameters with names, ranges and flags.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>

#include "marovine/marovine.h"

/// Builds and owns one description tree per process. The host and the setters get raw pointers into it; nodes
/// and texts stay where they are until `destroy`, `init` or the destructor of the registry frees them all
/// together. Texts passed in are copied. A process number outside the registry makes every operation answer
/// null or do nothing. Not synchronised: fill it before the host can see it. From then on only access flags
/// and maxima change, through `storeField`.
class Fg_ParameterInfo {
 public:
    /// Starts `processCount` empty trees; a negative count is taken as 0.
    explicit Fg_ParameterInfo(int processCount);
    Fg_ParameterInfo(const Fg_ParameterInfo&) = delete;
    Fg_ParameterInfo& operator=(const Fg_ParameterInfo&) = delete;

    /// Empties the tree and lets it be filled (again).
    void init(int process);
    /// Closes the tree: no further group or parameter is accepted. Existing nodes may still be changed.
    void finalize(int process);
    /// Frees all nodes with their texts. A finalised process stays finalised.
    void destroy(int process);

    /// The first top-level group, which is the one added last; null when there is none.
    RegisterInfo* getRegisterInfo(int process) const;
    /// The top-level group after `node`; the first one when `node` is null.
    RegisterInfo* getNextRegisterInfo(RegisterInfo* node, int process) const;

    /// Adds a group below `parent`, or before all top-level groups when `parent` is null. Returns null, and
    /// adds nothing, when the process is finalised or `parent` is not a group of this process.
    RegisterInfo* addGroupInfo(int process, RegisterInfo* parent, const char* name);

    // The parameters. Each is appended to the group `parent` and returned; null, and nothing is added, when
    // the process is finalised or `parent` is null or not a group of this process. `access` has bit 0 for
    // readable and bit 1 for writable; `publish` 0 keeps the parameter out of the XML description; `unit` may
    // be null; `id` is the parameter's number.

    RegisterInfo* addInfoInt(RegisterInfo* parent, const char* displayName, const char* name,
                             std::int32_t min, std::int32_t max, std::int32_t inc, int access, int flag2,
                             int publish, const char* unit, int id, int process) {
        return addParameter(FG_KIND_INT32, {.int32 = {min, max, inc}}, parent, displayName, name, access,
                            flag2, publish, unit, id, process);
    }
    RegisterInfo* addInfoUInt(RegisterInfo* parent, const char* displayName, const char* name,
                              std::uint32_t min, std::uint32_t max, std::uint32_t inc, int access, int flag2,
                              int publish, const char* unit, int id, int process) {
        return addParameter(FG_KIND_UINT32, {.uint32 = {min, max, inc}}, parent, displayName, name, access,
                            flag2, publish, unit, id, process);
    }
    RegisterInfo* addInfoInt64(RegisterInfo* parent, const char* displayName, const char* name,
                               std::int64_t min, std::int64_t max, std::int64_t inc, int access, int flag2,
                               int publish, const char* unit, int id, int process) {
        return addParameter(FG_KIND_INT64, {.int64 = {min, max, inc}}, parent, displayName, name, access,
                            flag2, publish, unit, id, process);
    }
    RegisterInfo* addInfoUInt64(RegisterInfo* parent, const char* displayName, const char* name,
                                std::uint64_t min, std::uint64_t max, std::uint64_t inc, int access,
                                int flag2, int publish, const char* unit, int id, int process) {
        return addParameter(FG_KIND_UINT64, {.uint64 = {min, max, inc}}, parent, displayName, name, access,
                            flag2, publish, unit, id, process);
    }
    RegisterInfo* addInfoDouble(RegisterInfo* parent, const char* displayName, const char* name, double min,
                                double max, double inc, int access, int flag2, int publish, const char* unit,
                                int id, int process) {
        return addParameter(FG_KIND_DOUBLE, {.real = {min, max, inc}}, parent, displayName, name, access,
                            flag2, publish, unit, id, process);
    }
    RegisterInfo* addInfoIntField(RegisterInfo* parent, const char* displayName, const char* name,
                                  std::uint32_t elements, std::int32_t min, std::int32_t max,
                                  std::int32_t inc, int access, int flag2, int publish, const char* unit,
                                  int id, int process) {
        return addParameter(FG_KIND_INT32_FIELD, {.int32Field = {elements, min, max, inc}}, parent,
                            displayName, name, access, flag2, publish, unit, id, process);
    }
    RegisterInfo* addInfoUIntField(RegisterInfo* parent, const char* displayName, const char* name,
                                   std::uint32_t elements, std::uint32_t min, std::uint32_t max,
                                   std::uint32_t inc, int access, int flag2, int publish, const char* unit,
                                   int id, int process) {
        return addParameter(FG_KIND_UINT32_FIELD, {.uint32Field = {elements, min, max, inc}}, parent,
                            displayName, name, access, flag2, publish, unit, id, process);
    }
    RegisterInfo* addInfoDoubleField(RegisterInfo* parent, const char* displayName, const char* name,
                                     std::uint32_t elements, double min, double max, double inc, int access,
                                     int flag2, int publish, const char* unit, int id, int process) {
        return addParameter(FG_KIND_DOUBLE_FIELD, {.realField = {elements, min, max, inc}}, parent,
                            displayName, name, access, flag2, publish, unit, id, process);
    }
    /// `text` is a file name pattern such as "*.lut"; null is stored as an empty text.
    RegisterInfo* addInfoString(RegisterInfo* parent, const char* displayName, const char* name,
                                const char* text, int access, int flag2, int publish, const char* unit,
                                int id, int process);
    /// Makes room for `entryCount` entries (a negative count is taken as 0); `addEnumNameValue` fills them.
    RegisterInfo* addInfoEnum(RegisterInfo* parent, const char* displayName, const char* name, int entryCount,
                              int access, int flag2, int publish, const char* unit, int id, int process);

    /// Fills entry `index` of an enumeration of this registry; a display name is cut after 255 characters.
    /// Filling an entry again replaces it; the replaced texts are freed with the tree. Returns 0, or -500 and
    /// leaves the entry as it was when there is no display name or no such entry.
    int addEnumNameValue(RegisterInfo* node, int index, const char* displayName, std::int32_t value,
                         const char* constantName);

 private:
    // Holds the whole of a usual tree, and is below the size from which malloc maps fresh pages.
    static constexpr std::size_t kFirstBlock = std::size_t{112} * 1024;

    // All memory of a tree comes from one arena, because a tree is filled once at every opening of an
    // instance and freed as a whole. Not from the default resource, which is the host's to change.
    struct Process {
        std::pmr::monotonic_buffer_resource arena{kFirstBlock, std::pmr::new_delete_resource()};
        RegisterInfo* first = nullptr;
        bool finalised = false;

        std::pmr::polymorphic_allocator<> memory() { return &arena; }
    };

    Process* processAt(int process) const;
    RegisterInfo* addParameter(std::uint32_t kind, const RegisterInfoValue& value, RegisterInfo* parent,
                               const char* displayName, const char* name, int access, int flag2, int publish,
                               const char* unit, int id, int process);

    int processCount_;
    std::unique_ptr<Process[]> processes_;
};

namespace marovine {

/// A field of a node that setters change while hosts and the XML description read it without a lock: it is
/// read and written as a whole. Nothing else follows from the order in which several fields change.
template <class T>
T loadField(const T& field) {
    // There is no reference to a constant that is read atomically.
    return std::atomic_ref(const_cast<T&>(field)).load(std::memory_order_relaxed);
}
template <class T>
void storeField(T& field, T value) {
    static_assert(std::atomic_ref<T>::is_always_lock_free && std::atomic_ref<T>::required_alignment <= 8);
    std::atomic_ref(field).store(value, std::memory_order_relaxed);
}

/// The group of the board's own registers, which the XML description leaves out.
inline constexpr const char* kDirectRegisterAccessGroup = "Direct Register Access";

/// Depth-first search from `node` through its children and along the next nodes, in this tree or the
/// runtime's own, for the first parameter with number `id`. Groups never match. Null when there is none.
RegisterInfo* findRegisterInfoByParamId(RegisterInfo* node, int id);

}  // namespace marovine
