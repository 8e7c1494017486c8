/// Typed access: how values travel between a caller's pointer and the board's slots.

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <utility>

#include "board/machine/Board.h"
#include "marovine/BoardCodes.h"

namespace virtualboard {

namespace {

template <typename T>
T readAs(const void* value) {
    T copy;
    std::memcpy(&copy, value, sizeof(copy));
    return copy;
}

template <typename T>
void writeAs(void* value, T number) {
    std::memcpy(value, &number, sizeof(number));
}

template <typename T, typename Given>
int storeInteger(Slot& slot, Given given) {
    if (!std::in_range<T>(given)) return kOutOfRange;
    const auto value = static_cast<T>(given);
    using Wide = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
    if (std::cmp_less(value, static_cast<Wide>(slot.minimum)) ||
        std::cmp_greater(value, static_cast<Wide>(slot.maximum))) {
        return kOutOfRange;
    }
    slot.value = static_cast<Number>(static_cast<Wide>(value));
    return kOk;
}

template <typename T>
int storeIntegerAs(Slot& slot, const void* value, FgParamTypes type) {
    switch (type) {
        case FG_TYPE_INT32:
            return storeInteger<T>(slot, readAs<std::int32_t>(value));
        case FG_TYPE_UINT32:
            return storeInteger<T>(slot, readAs<std::uint32_t>(value));
        case FG_TYPE_INT64:
            return storeInteger<T>(slot, readAs<std::int64_t>(value));
        case FG_TYPE_UINT64:
            return storeInteger<T>(slot, readAs<std::uint64_t>(value));
        default:
            return kTypeMismatch;
    }
}

bool isWide(FgParamTypes type) {
    return type == FG_TYPE_INT64 || type == FG_TYPE_UINT64;
}
bool isNarrow(FgParamTypes type) {
    return type == FG_TYPE_INT32 || type == FG_TYPE_UINT32;
}

/// The elements that a record names, when they lie inside a field of `limit` elements.
int checkBlock(const FieldParameterAccess& block, std::uint32_t limit) {
    if (!isNarrow(static_cast<FgParamTypes>(block.type))) return kTypeMismatch;
    if (block.start >= limit || block.count > limit - block.start) return kIndexOutOfRange;
    if (block.values == nullptr && block.count != 0) return kNullPointer;
    return kOk;
}

}  // namespace

int Board::store(Slot& slot, const void* value, FgParamTypes type) {
    switch (slot.kind) {
        case ParameterKind::UInt32:
            return storeIntegerAs<std::uint32_t>(slot, value, type);
        case ParameterKind::Int32:
            return storeIntegerAs<std::int32_t>(slot, value, type);
        case ParameterKind::UInt64:
            return storeIntegerAs<std::uint64_t>(slot, value, type);
        case ParameterKind::Int64:
            return storeIntegerAs<std::int64_t>(slot, value, type);
        case ParameterKind::Double: {
            if (type != FG_TYPE_DOUBLE) return kTypeMismatch;
            const auto number = readAs<double>(value);
            // "Inside the range" is the rule, so that a value that is not a number is refused as well.
            if (!(number >= toDouble(slot.minimum) && number <= toDouble(slot.maximum))) return kOutOfRange;
            slot.value = fromDouble(number);
            return kOk;
        }
        case ParameterKind::Text:
            return type == FG_TYPE_TEXT ? storeText(slot, static_cast<const char*>(value)) : kTypeMismatch;
        case ParameterKind::UInt32Field:
            return storeField(slot, value, type);
    }
    return kTypeMismatch;
}

int Board::storeText(Slot& slot, const char* text) {
    const std::size_t length = strnlen(text, std::size_t{slot.limit} + 1);
    if (length > slot.limit) return kTextTooLong;
    texts_[slot.store].assign(text, length);
    return kOk;
}

int Board::storeField(Slot& slot, const void* value, FgParamTypes type) {
    std::vector<std::uint32_t>& field = fields_[slot.store];
    if (type == FG_TYPE_FIELD_INT) {
        const auto element = readAs<FieldParameterInt>(value);
        if (element.index >= slot.limit) return kIndexOutOfRange;
        if (element.value < slot.minimum || element.value > slot.maximum) return kOutOfRange;
        field[element.index] = element.value;
        return kOk;
    }
    if (type != FG_TYPE_FIELD_ACCESS) return kTypeMismatch;
    const auto block = readAs<FieldParameterAccess>(value);
    if (const int code = checkBlock(block, slot.limit); code != kOk) return code;
    const auto* values = static_cast<const std::uint32_t*>(block.values);
    for (std::uint32_t i = 0; i < block.count; ++i) {  // all of it or nothing
        if (values[i] < slot.minimum || values[i] > slot.maximum) return kOutOfRange;
    }
    std::copy(values, values + block.count, field.begin() + block.start);
    return kOk;
}

int Board::load(const Slot& slot, void* value, FgParamTypes type) const {
    switch (slot.kind) {
        case ParameterKind::UInt32:
        case ParameterKind::Int32:
            if (isWide(type)) {
                writeAs(value, slot.value);
            } else if (isNarrow(type)) {
                writeAs(value, static_cast<std::uint32_t>(slot.value));
            } else {
                return kTypeMismatch;
            }
            return kOk;
        case ParameterKind::UInt64:
        case ParameterKind::Int64:
        case ParameterKind::Double:
            if (slot.kind == ParameterKind::Double ? type != FG_TYPE_DOUBLE : !isWide(type))
                return kTypeMismatch;
            writeAs(value, slot.value);
            return kOk;
        case ParameterKind::Text: {
            if (type != FG_TYPE_TEXT) return kTypeMismatch;
            const std::string& text = texts_[slot.store];
            std::memcpy(value, text.c_str(), text.size() + 1);
            return kOk;
        }
        case ParameterKind::UInt32Field:
            return loadField(slot, value, type);
    }
    return kTypeMismatch;
}

int Board::loadField(const Slot& slot, void* value, FgParamTypes type) const {
    const std::vector<std::uint32_t>& field = fields_[slot.store];
    if (type == FG_TYPE_FIELD_INT) {
        auto element = readAs<FieldParameterInt>(value);
        if (element.index >= slot.limit) return kIndexOutOfRange;
        element.value = field[element.index];
        writeAs(value, element);
        return kOk;
    }
    if (type != FG_TYPE_FIELD_ACCESS) return kTypeMismatch;
    const auto block = readAs<FieldParameterAccess>(value);
    if (const int code = checkBlock(block, slot.limit); code != kOk) return code;
    std::copy_n(field.begin() + block.start, block.count, static_cast<std::uint32_t*>(block.values));
    return kOk;
}

int Board::write(Slot* slot, const void* value, FgParamTypes type) {
    if (slot == nullptr) return kUnknownParameter;
    if (value == nullptr) return kNullPointer;
    if (slot->readOnly) return kReadOnly;
    if (!slot->acts && !slot->drivesPictures) return store(*slot, value, type);
    return change(*slot, [&] { return store(*slot, value, type); });
}

int Board::set(const Design* design, int id, const void* value, FgParamTypes type) {
    Lock lock(mutex_);
    if (design != design_.get()) return kReconfigured;
    Slot* slot = find(id);
    if (noticed_) return setNoticed(lock, id, slot, value, type);
    return write(slot, value, type);
}

int Board::setNoticed(Lock& lock, int id, Slot* slot, const void* value, FgParamTypes type) {
    const int counted = faults_.nthWrite.count();
    int code = slot != nullptr ? slot->writeFault : kOk;
    if (counted != kOk) code = counted;
    if (code == kOk) code = write(slot, value, type);
    updateNoticed();  // a counted fault ends when it has struck
    if (!recording_ && watcher_ == nullptr) return code;
    Write noted = describe(id, slot, value, type);
    noted.result = code;
    if (recording_) journal_.push_back(noted);
    const auto watcher = watcher_;
    lock.unlock();  // a watcher may use the control interface
    try {
        if (watcher != nullptr) (*watcher)(noted);
    } catch (...) {  // a number that foreign code throws would pass for a result
        return kInternalFailure;
    }
    return code;
}

Write Board::describe(int id, const Slot* slot, const void* value, FgParamTypes type) const {
    Write write{.name = {}, .id = id, .type = type, .value = {}, .firstIndex = 0, .result = kOk};
    if (slot != nullptr) write.name = design_->data().parameters[indexOf(*slot)].name;
    if (value == nullptr) return write;
    switch (type) {
        case FG_TYPE_INT32:
            write.value = readAs<std::int32_t>(value);
            break;
        case FG_TYPE_UINT32:
            write.value = readAs<std::uint32_t>(value);
            break;
        case FG_TYPE_INT64:
            write.value = readAs<std::int64_t>(value);
            break;
        case FG_TYPE_UINT64:
            write.value = readAs<std::uint64_t>(value);
            break;
        case FG_TYPE_DOUBLE:
            write.value = readAs<double>(value);
            break;
        case FG_TYPE_TEXT:
            write.value = std::string();
            if (slot != nullptr && slot->kind == ParameterKind::Text)
                write.value = std::string(static_cast<const char*>(value));
            break;
        case FG_TYPE_TEXT_POINTER:
            break;
        case FG_TYPE_FIELD_INT: {
            const auto element = readAs<FieldParameterInt>(value);
            write.value = std::vector<std::uint32_t>{element.value};
            write.firstIndex = element.index;
            break;
        }
        case FG_TYPE_FIELD_ACCESS: {
            const auto block = readAs<FieldParameterAccess>(value);
            std::vector<std::uint32_t> elements;
            // A block that does not fit its field may name memory that is not there.
            if (slot != nullptr && slot->kind == ParameterKind::UInt32Field &&
                checkBlock(block, slot->limit) == kOk) {
                const auto* values = static_cast<const std::uint32_t*>(block.values);
                elements.assign(values, values + block.count);
            }
            write.value = std::move(elements);
            write.firstIndex = block.start;
            break;
        }
    }
    return write;
}

int Board::prepareRead(const Design* design, Slot* slot) {
    if (design != design_.get()) return kReconfigured;
    if (noticed_) {
        const int counted = faults_.nthRead.count();
        updateNoticed();
        if (counted != kOk) return counted;
        if (slot != nullptr && slot->readFault != kOk) return slot->readFault;
    }
    if (slot == nullptr) return kUnknownParameter;
    if (slot->live) settle();
    return kOk;
}

int Board::get(const Design* design, int id, void* value, FgParamTypes type) {
    if (value == nullptr) return kNullPointer;
    const Lock lock(mutex_);
    Slot* slot = find(id);
    if (const int code = prepareRead(design, slot); code != kOk) return code;
    return load(*slot, value, type);
}

int Board::getText(const Design* design, int id, std::string& text) {
    const Lock lock(mutex_);
    Slot* slot = find(id);
    if (const int code = prepareRead(design, slot); code != kOk) return code;
    if (slot->kind != ParameterKind::Text) return kTypeMismatch;
    text = texts_[slot->store];
    return kOk;
}

FgParamTypes Board::nativeType(const Design* design, int id) {
    const Lock lock(mutex_);
    const Slot* slot = design == design_.get() ? find(id) : nullptr;
    if (slot == nullptr) return FgParamTypes{};
    switch (slot->kind) {
        case ParameterKind::UInt32:
            return FG_TYPE_UINT32;
        case ParameterKind::Int32:
            return FG_TYPE_INT32;
        case ParameterKind::UInt64:
            return FG_TYPE_UINT64;
        case ParameterKind::Int64:
            return FG_TYPE_INT64;
        case ParameterKind::Double:
            return FG_TYPE_DOUBLE;
        case ParameterKind::Text:
            return FG_TYPE_TEXT;
        case ParameterKind::UInt32Field:
            return FG_TYPE_FIELD_ACCESS;
    }
    return FgParamTypes{};
}

}  // namespace virtualboard
