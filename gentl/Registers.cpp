#include "gentl/Registers.h"

#include <algorithm>
#include <utility>

#include "gentl/Error.h"
#include "gentl/XmlText.h"

namespace marovine::gentl {

namespace {

constexpr std::uint64_t kAlignment = 16;

}  // namespace

std::uint64_t Registers::add(Register added) {
    const std::uint64_t address = next_;
    next_ += (added.length + kAlignment - 1) / kAlignment * kAlignment;
    places_.push_back({address, std::move(added)});
    return address;
}

const Registers::Place& Registers::at(std::uint64_t address, std::size_t size) const {
    auto place = std::ranges::upper_bound(places_, address, {}, &Place::address);
    if (place == places_.begin() || address - (--place)->address >= place->content.length)
        throw Error(GC_ERR_INVALID_ADDRESS, "no register lies at 0x" + hexadecimal(address));
    const auto& content = place->content;
    const std::uint64_t offset = address - place->address;
    if (size == 0 || size > content.length - offset || (!content.inParts && size != content.length))
        throw Error(GC_ERR_INVALID_PARAMETER, content.name + " at 0x" + hexadecimal(place->address) +
                                                  " has " + std::to_string(content.length) + " bytes, not " +
                                                  std::to_string(size) + " from 0x" + hexadecimal(address));
    return *place;
}

void Registers::read(std::uint64_t address, Bytes out) const {
    const Place& place = at(address, out.size());
    if (!place.content.read) throw Error(GC_ERR_ACCESS_DENIED, place.content.name + " cannot be read");
    place.content.read(address - place.address, out);
}

void Registers::write(std::uint64_t address, ConstBytes data) const {
    const Place& place = at(address, data.size());
    if (!place.content.write) throw Error(GC_ERR_ACCESS_DENIED, place.content.name + " cannot be written");
    place.content.write(address - place.address, data);
}

}  // namespace marovine::gentl
