#include "board/design/ImageReader.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "board/design/ImageFormat.h"

namespace virtualboard {

namespace {

/// Takes values off the front of a byte range; throws when it ends too early.
class ByteReader {
 public:
    explicit ByteReader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <typename T>
    T number() {
        T value{};
        std::memcpy(&value, take(sizeof(T)).data(), sizeof(T));
        return value;
    }

    std::string text() {
        const std::span<const std::byte> bytes = take(number<std::uint16_t>());
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

    std::vector<std::uint32_t> numbers(std::size_t count) {
        if (count > bytes_.size() / sizeof(std::uint32_t)) endsTooEarly();
        std::vector<std::uint32_t> values(count);
        for (std::uint32_t& value : values) value = number<std::uint32_t>();
        return values;
    }

    bool empty() const { return bytes_.empty(); }

 private:
    [[noreturn]] static void endsTooEarly() {
        throw std::invalid_argument("the image's content ends too early");
    }

    std::span<const std::byte> take(std::size_t count) {
        if (count > bytes_.size()) endsTooEarly();
        const std::span<const std::byte> front = bytes_.first(count);
        bytes_ = bytes_.subspan(count);
        return front;
    }

    std::span<const std::byte> bytes_;
};

ParameterData readParameter(ByteReader& reader) {
    ParameterData parameter;
    parameter.kind = static_cast<ParameterKind>(reader.number<std::uint8_t>());
    parameter.readOnly = reader.number<std::uint8_t>() != 0;
    parameter.group = reader.number<std::int32_t>();
    parameter.id = reader.number<std::int32_t>();
    parameter.leaf = reader.text();
    parameter.unit = reader.text();
    parameter.minimum = reader.number<Number>();
    parameter.maximum = reader.number<Number>();
    parameter.increment = reader.number<Number>();
    parameter.start = reader.number<Number>();
    parameter.elements = reader.number<std::uint32_t>();
    if (parameter.kind == ParameterKind::Text) parameter.startText = reader.text();
    if (parameter.kind == ParameterKind::UInt32Field)
        parameter.startField = reader.numbers(parameter.elements);
    return parameter;
}

template <typename Read>
void readList(ByteReader& reader, Read read) {
    const auto count = reader.number<std::uint32_t>();
    for (std::uint32_t i = 0; i < count; ++i) read();  // ends by exception at the end of the content
}

/// Checks the header and returns the content.
std::span<const std::byte> contentOf(std::span<const std::byte> image) {
    if (image.size() < kImageHeaderSize) throw std::invalid_argument("the image is shorter than its header");
    ByteReader header(image.first(kImageHeaderSize));
    if (header.number<std::array<char, 8>>() != kImageMagic)
        throw std::invalid_argument("not a design image");
    if (header.number<std::uint32_t>() != kImageVersion) {
        throw std::invalid_argument("the image is of another version of the format");
    }
    header.number<std::uint32_t>();  // the type, read by readImage
    if (header.number<std::uint64_t>() != image.size())
        throw std::invalid_argument("the image is truncated or padded");
    const auto contentSize = header.number<std::uint64_t>();
    if (header.number<std::uint64_t>() != imageChecksum(image)) {
        throw std::invalid_argument("the image is damaged: its checksum does not match");
    }
    if (contentSize > image.size() - kImageHeaderSize) {
        throw std::invalid_argument("the image's content is larger than the image");
    }
    return image.subspan(kImageHeaderSize, static_cast<std::size_t>(contentSize));
}

}  // namespace

DesignData readImage(std::span<const std::byte> image) {
    ByteReader reader(contentOf(image));
    std::uint32_t type = 0;
    std::memcpy(&type, image.data() + 12, sizeof(type));

    DesignBuilder builder;
    builder.setIdentity(reader.text(), type);
    readList(reader, [&] {
        const auto parent = reader.number<std::int32_t>();
        builder.addGroup(parent, reader.text());
    });
    readList(reader, [&] { builder.addParameter(readParameter(reader)); });
    readList(reader, [&] {
        EventData event;
        event.group = reader.number<std::int32_t>();
        event.kind = reader.number<std::int32_t>();
        event.leaf = reader.text();
        builder.addEvent(std::move(event));
    });
    readList(reader, [&] {
        RegisterData data;
        data.bits = reader.number<std::uint32_t>();
        data.writable = reader.number<std::uint8_t>() != 0;
        data.start = reader.number<std::uint64_t>();
        data.name = reader.text();
        builder.addRegister(std::move(data));
    });
    if (!reader.empty()) throw std::invalid_argument("the image's content goes on after its last record");
    DesignData data = builder.take();
    std::memcpy(&data.checksum, image.data() + kImageChecksumOffset, sizeof(data.checksum));
    return data;
}

}  // namespace virtualboard
