#include "board/machine/Design.h"

#include <utility>

namespace virtualboard {

namespace {

DesignData withoutHidden(DesignData data, const Names& hidden) {
    std::erase_if(data.events, [&](const EventData& event) { return hidden.contains(event.name); });
    std::erase_if(data.registers,
                  [&](const RegisterData& description) { return hidden.contains(description.name); });
    return data;
}

}  // namespace

Design::Design(DesignData data, const Names& hidden)
    : data_(withoutHidden(std::move(data), hidden)),
      fingerprint_(data_.checksum),
      tree_(data_, [&](const ParameterData& parameter) { return !hidden.contains(parameter.name); }) {
    for (const std::string& name : hidden) {
        fingerprint_ = (fingerprint_ ^ std::hash<std::string>{}(name)) * 0x100000001B3U;
    }
    hidden_.reserve(data_.parameters.size());
    for (std::size_t i = 0; i < data_.parameters.size(); ++i) {
        const ParameterData& parameter = data_.parameters[i];
        hidden_.push_back(hidden.contains(parameter.name));
        if (!hidden_.back()) byName_.emplace(parameter.name, i);
        if (parameter.id >= kFirstParameterId) {
            ++designParameters_;
        } else {
            runtimeIds_.emplace(parameter.id, i);
        }
    }
    for (const EventData& event : data_.events) {
        events_.push_back({.reserved = 0,
                           .name = event.name.c_str(),
                           .number = static_cast<std::uint32_t>(events_.size()),
                           .kind = event.kind});
    }
}

std::optional<std::size_t> Design::indexOf(int id) const {
    std::size_t index = 0;
    if (id >= kFirstParameterId) {
        index = static_cast<std::size_t>(id - kFirstParameterId);
        if (index >= designParameters_) return std::nullopt;
    } else {
        const auto found = runtimeIds_.find(id);
        if (found == runtimeIds_.end()) return std::nullopt;
        index = found->second;
    }
    if (isHidden(index)) return std::nullopt;
    return index;
}

std::optional<std::size_t> Design::indexOf(std::string_view name) const {
    const auto found = byName_.find(name);
    if (found == byName_.end()) return std::nullopt;
    return found->second;
}

HapEvent* Design::event(int number) const {
    if (number < 0 || static_cast<std::size_t>(number) >= events_.size()) return nullptr;
    return &events_[static_cast<std::size_t>(number)];
}

}  // namespace virtualboard
