#include "board/design/ImageWriter.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "board/design/ImageFormat.h"

namespace design {

namespace {

using virtualboard::ParameterKind;

class ByteWriter {
 public:
    template <typename T>
    void number(T value) {
        static_assert(std::is_trivially_copyable_v<T>);
        const auto* bytes = reinterpret_cast<const std::byte*>(&value);
        bytes_.insert(bytes_.end(), bytes, bytes + sizeof(value));
    }

    /// The builder bounds every text below 64 KiB.
    void text(const std::string& text) {
        number(static_cast<std::uint16_t>(text.size()));
        for (const char c : text) number(c);
    }

    std::vector<std::byte>& bytes() { return bytes_; }

 private:
    std::vector<std::byte> bytes_;
};

void writeParameter(ByteWriter& writer, const virtualboard::ParameterData& parameter) {
    const bool ownId = parameter.id < virtualboard::kFirstParameterId;
    writer.number(static_cast<std::uint8_t>(parameter.kind));
    writer.number(static_cast<std::uint8_t>(parameter.readOnly));
    writer.number(parameter.group);
    writer.number(ownId ? parameter.id : 0);
    writer.text(parameter.leaf);
    writer.text(parameter.unit);
    writer.number(parameter.minimum);
    writer.number(parameter.maximum);
    writer.number(parameter.increment);
    writer.number(parameter.start);
    writer.number(parameter.elements);
    if (parameter.kind == ParameterKind::Text) writer.text(parameter.startText);
    if (parameter.kind == ParameterKind::UInt32Field) {
        for (const std::uint32_t element : parameter.startField) writer.number(element);
    }
}

template <typename List, typename WriteOne>
void writeList(ByteWriter& writer, const List& list, WriteOne writeOne) {
    writer.number(static_cast<std::uint32_t>(list.size()));
    for (const auto& item : list) writeOne(item);
}

}  // namespace

std::vector<std::byte> writeImage(const virtualboard::DesignData& data, std::size_t size) {
    ByteWriter writer;
    for (const char c : virtualboard::kImageMagic) writer.number(c);
    writer.number(virtualboard::kImageVersion);
    writer.number(data.type);
    writer.number(static_cast<std::uint64_t>(size));
    const std::size_t contentSizeOffset = writer.bytes().size();
    writer.number(std::uint64_t{0});
    writer.number(std::uint64_t{0});

    writer.text(data.name);
    writeList(writer, data.groups, [&](const auto& group) {
        writer.number(group.parent);
        writer.text(group.name);
    });
    writeList(writer, data.parameters, [&](const auto& parameter) { writeParameter(writer, parameter); });
    writeList(writer, data.events, [&](const auto& event) {
        writer.number(event.group);
        writer.number(event.kind);
        writer.text(event.leaf);
    });
    writeList(writer, data.registers, [&](const auto& description) {
        writer.number(description.bits);
        writer.number(static_cast<std::uint8_t>(description.writable));
        writer.number(description.start);
        writer.text(description.name);
    });

    std::vector<std::byte>& image = writer.bytes();
    if (image.size() > size) {
        throw std::length_error("the design takes " + std::to_string(image.size()) +
                                " bytes, but the image has only " + std::to_string(size));
    }
    const std::uint64_t contentSize = image.size() - virtualboard::kImageHeaderSize;
    std::memcpy(image.data() + contentSizeOffset, &contentSize, sizeof(contentSize));
    image.resize(size);
    const std::uint64_t checksum = virtualboard::imageChecksum(image);
    std::memcpy(image.data() + virtualboard::kImageChecksumOffset, &checksum, sizeof(checksum));
    return std::move(image);
}

}  // namespace design
