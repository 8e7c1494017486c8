#include "board/machine/Board.h"

#include <cmath>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace virtualboard {

namespace {

/// Whether a slot can hold a value: texts, fields of the right length, doubles and integers are sorts of
/// their own, but an integer may stand for a double.
bool isOfSort(const Slot& slot, const Value& value) {
    const bool isText = std::holds_alternative<std::string>(value);
    const auto* field = std::get_if<std::vector<std::uint32_t>>(&value);
    switch (slot.kind) {
        case ParameterKind::Text:
            return isText;
        case ParameterKind::UInt32Field:
            return field != nullptr && field->size() == slot.limit;
        case ParameterKind::Double:
            return !isText && field == nullptr;
        default:
            return !isText && field == nullptr && !std::holds_alternative<double>(value);
    }
}

/// A number as a slot of this kind keeps it; integers that are too wide lose their upper bits.
Number numberFor(ParameterKind kind, const Value& value) {
    return std::visit(
        [kind](const auto& given) -> Number {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(given)>>) {
                if (kind == ParameterKind::Double) return fromDouble(static_cast<double>(given));
                if (kind == ParameterKind::UInt32) return static_cast<std::uint32_t>(given);
                return static_cast<Number>(given);  // signed values widen with their sign
            } else {
                return 0;
            }
        },
        value);
}

}  // namespace

std::shared_ptr<const Design> Board::configure(std::shared_ptr<const Design> design, bool keepValues) {
    Lock lock(mutex_);
    const auto same = [&] { return design_ != nullptr && design_->isLike(*design); };
    if (same() && keepValues) return design_;
    acquisition_.end(lock, nullptr);
    if (!same()) design_ = std::move(design);
    reset();
    return design_;
}

/// Puts every value, register and read-out to its start value. Faults and watchers stay.
void Board::reset() {
    const DesignData& data = design_->data();
    slots_.clear();
    texts_.clear();
    fields_.clear();
    registers_.clear();
    designSlots_ = 0;
    slots_.reserve(data.parameters.size());
    for (const ParameterData& parameter : data.parameters) {
        Slot& slot = slots_.emplace_back();
        slot.value = parameter.start;
        slot.minimum = parameter.minimum;
        slot.maximum = parameter.maximum;
        slot.kind = parameter.kind;
        slot.readOnly = parameter.readOnly;
        slot.hidden = !design_->indexOf(parameter.id).has_value();
        slot.limit = parameter.elements;
        if (parameter.kind == ParameterKind::Text) {
            slot.store = static_cast<std::uint32_t>(texts_.size());
            texts_.push_back(parameter.startText);
        } else if (parameter.kind == ParameterKind::UInt32Field) {
            slot.store = static_cast<std::uint32_t>(fields_.size());
            fields_.push_back(parameter.startField);
        }
        if (parameter.id >= kFirstParameterId) ++designSlots_;
    }
    applyNamedFaults();
    for (const RegisterData& description : data.registers) registers_.push_back(description.start);
    const auto find = [this](std::string_view name) -> Slot* {
        const auto index = design_->indexOf(name);
        return index.has_value() ? &slots_[*index] : nullptr;
    };
    events_.attach([this](std::string_view name) { return findEvent(name); });
    signals_.attach(find);
    attachAcquisition(find);
}

Slot* Board::find(int id) {
    const auto position = static_cast<std::uint32_t>(id) - static_cast<std::uint32_t>(kFirstParameterId);
    if (position < designSlots_) {
        Slot& slot = slots_[position];
        return slot.hidden ? nullptr : &slot;
    }
    if (design_ == nullptr) return nullptr;
    const auto index = design_->indexOf(id);
    return index.has_value() ? &slots_[*index] : nullptr;
}

Slot& Board::named(std::string_view name) {
    if (design_ == nullptr) {
        throw std::out_of_range("the board carries no design, so it has no parameter '" + std::string(name) +
                                "'");
    }
    const auto index = design_->indexOf(name);
    if (!index.has_value())
        throw std::out_of_range("the design has no parameter '" + std::string(name) + "'");
    return slots_[*index];
}

int Board::readRegister(int number, std::uint64_t& value) {
    const Lock lock(mutex_);
    if (number < 1 || static_cast<std::size_t>(number) > registers_.size()) return kUnknownRegister;
    value = registers_[static_cast<std::size_t>(number) - 1];
    return kOk;
}

int Board::writeRegister(int number, std::uint64_t value) {
    const Lock lock(mutex_);
    if (number < 1 || static_cast<std::size_t>(number) > registers_.size()) return kUnknownRegister;
    const RegisterData& description = design_->registers()[static_cast<std::size_t>(number) - 1];
    if (!description.writable) return kRegisterReadOnly;
    if (description.bits < 64 && (value >> description.bits) != 0) return kRegisterOutOfRange;
    registers_[static_cast<std::size_t>(number) - 1] = value;
    return kOk;
}

void Board::recordWrites(bool on) {
    const Lock lock(mutex_);
    recording_ = on;
    updateNoticed();
}

std::vector<Write> Board::takeWrites() {
    const Lock lock(mutex_);
    return std::exchange(journal_, {});
}

void Board::watchWrites(std::function<void(const Write&)> watcher) {
    const Lock lock(mutex_);
    watcher_ =
        watcher ? std::make_shared<const std::function<void(const Write&)>>(std::move(watcher)) : nullptr;
    updateNoticed();
}

Value Board::value(std::string_view name) {
    const Lock lock(mutex_);
    Slot& slot = named(name);
    if (slot.live) settle();
    switch (slot.kind) {
        case ParameterKind::UInt32:
            return static_cast<std::uint32_t>(slot.value);
        case ParameterKind::Int32:
            return static_cast<std::int32_t>(slot.value);
        case ParameterKind::UInt64:
            return std::uint64_t{slot.value};
        case ParameterKind::Int64:
            return static_cast<std::int64_t>(slot.value);
        case ParameterKind::Double:
            return toDouble(slot.value);
        case ParameterKind::Text:
            return texts_[slot.store];
        case ParameterKind::UInt32Field:
            return fields_[slot.store];
    }
    return {};
}

void Board::force(std::string_view name, const Value& value) {
    const Lock lock(mutex_);
    Slot& slot = named(name);
    if (!isOfSort(slot, value)) {
        throw std::invalid_argument("a value of this type cannot be forced onto '" + std::string(name) + "'");
    }
    change(slot, [&] {
        if (const auto* text = std::get_if<std::string>(&value)) {
            texts_[slot.store] = *text;
        } else if (const auto* field = std::get_if<std::vector<std::uint32_t>>(&value)) {
            fields_[slot.store] = *field;
        } else {
            slot.value = numberFor(slot.kind, value);
        }
        if (slot.live) slot.pinned = true;
        return int{kOk};
    });
}

std::vector<std::string> Board::parameterNames() {
    const Lock lock(mutex_);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        if (!slots_[i].hidden) names.push_back(design_->data().parameters[i].name);
    }
    return names;
}

void Board::applyNamedFaults() {
    const auto codeOf = [](const auto& faults, const std::string& name) {
        const auto found = faults.find(name);
        return found == faults.end() ? int{kOk} : found->second;
    };
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const std::string& name = design_->data().parameters[i].name;
        slots_[i].writeFault = codeOf(faults_.writes, name);
        slots_[i].readFault = codeOf(faults_.reads, name);
    }
    updateNoticed();
}

/// Before the first design is there, every name is taken in good faith.
void Board::setNamedFault(std::map<std::string, int, std::less<>>& faults, std::string_view name, int code) {
    if (design_ != nullptr) named(name);
    if (code == kOk) {
        faults.erase(std::string(name));
    } else {
        faults.insert_or_assign(std::string(name), code);
    }
    applyNamedFaults();
}

void Board::refuseWrites(std::string_view name, int code) {
    const Lock lock(mutex_);
    setNamedFault(faults_.writes, name, code);
}

void Board::refuseReads(std::string_view name, int code) {
    const Lock lock(mutex_);
    setNamedFault(faults_.reads, name, code);
}

void Board::refuseNthWrite(unsigned n, int code) {
    const Lock lock(mutex_);
    faults_.nthWrite.arm(n, code);
    updateNoticed();
}

void Board::refuseNthRead(unsigned n, int code) {
    const Lock lock(mutex_);
    faults_.nthRead.arm(n, code);
    updateNoticed();
}

void Board::clearFaults() {
    const Lock lock(mutex_);
    faults_ = {};
    applyNamedFaults();
}

void Board::setClockMode(ClockMode mode) {
    const Lock lock(mutex_);
    settle();
    clock_.setMode(mode);
    acquisition_.clockChanged();
    events_.reconsider();
}

void Board::advanceClock(double seconds) {
    const Lock lock(mutex_);
    if (!(seconds >= 0 && seconds <= 1e9))
        throw std::invalid_argument("the clock moves forward only, by at most 1e9 s");
    clock_.advance(std::llround(seconds * 1e9));
    settle();
    acquisition_.clockChanged();
}

}  // namespace virtualboard
