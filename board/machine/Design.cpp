#include "board/machine/Design.h"

#include <utility>

#include "board/design/DescriptionParser.h"

namespace virtualboard {

namespace {

DesignData withoutHidden(DesignData data, const Names& hidden) {
    std::erase_if(data.events, [&](const EventData& event) { return hidden.contains(event.name); });
    std::erase_if(data.registers,
                  [&](const RegisterData& description) { return hidden.contains(description.name); });
    return data;
}

}  // namespace

Design::Design(std::string_view description, Names hidden)
    : description_(description),
      hidden_(std::move(hidden)),
      data_(withoutHidden(parseDescription(description_, "description"), hidden_)),
      tree_(data_, [this](const ParameterData& parameter) { return !isHidden(parameter); }) {
    for (std::size_t i = 0; i < data_.parameters.size(); ++i) {
        const ParameterData& parameter = data_.parameters[i];
        if (!isHidden(parameter)) byName_.emplace(parameter.name, i);
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
    if (isHidden(data_.parameters[index])) return std::nullopt;
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
