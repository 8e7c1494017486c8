/// The writer of PNG files: made for speed, where libpng makes small files. Much the same picture takes a few
/// milliseconds instead of tens or hundreds; the file is up to twice as large where much of it repeats, and a
/// sixth larger where little does.

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

#include "pictures/Png.h"

namespace virtualboard::imaging {
namespace {

using Bytes = std::span<const std::uint8_t>;

std::array<std::uint8_t, 4> bigEndian(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
            static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

void append(std::vector<char>& file, Bytes bytes) {
    const auto end = file.size();
    file.resize(end + bytes.size());
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(end));
}

/// Length, type, data, and a check over the last two.
void appendChunk(std::vector<char>& file, const char* type, Bytes data) {
    append(file, bigEndian(static_cast<std::uint32_t>(data.size())));
    const auto start = file.size();
    append(file, {reinterpret_cast<const std::uint8_t*>(type), 4});
    append(file, data);
    const auto* checked = reinterpret_cast<const unsigned char*>(file.data() + start);
    append(file, bigEndian(crc32_gzip_refl(0, checked, file.size() - start)));
}

/// Compresses what it is given piece by piece into chunks of picture data.
class PictureData {
 public:
    explicit PictureData(std::vector<char>& file) : file_(file) {
        isal_deflate_init(stream_.get());
        stream_->level = 2;
        stream_->level_buf = levelBuffer_.data();
        stream_->level_buf_size = static_cast<std::uint32_t>(levelBuffer_.size());
        stream_->gzip_flag = IGZIP_ZLIB;
        startChunk();
    }

    void put(Bytes bytes, bool last) {
        stream_->next_in = const_cast<std::uint8_t*>(bytes.data());  // which it only reads
        stream_->avail_in = static_cast<std::uint32_t>(bytes.size());
        stream_->end_of_stream = last ? 1 : 0;
        do {
            if (stream_->avail_out == 0) endChunk();
            if (isal_deflate(stream_.get()) != COMP_OK)
                throw std::runtime_error("the picture's data cannot be compressed");
        } while (stream_->avail_in != 0 || stream_->avail_out == 0 ||
                 (last && stream_->internal_state.state != ZSTATE_END));
        if (last) endChunk();
    }

 private:
    void startChunk() {
        stream_->next_out = chunk_.data();
        stream_->avail_out = static_cast<std::uint32_t>(chunk_.size());
    }
    void endChunk() {
        appendChunk(file_, "IDAT", Bytes(chunk_).first(chunk_.size() - stream_->avail_out));
        startChunk();
    }

    std::vector<char>& file_;
    std::unique_ptr<isal_zstream> stream_ = std::make_unique<isal_zstream>();
    std::vector<std::uint8_t> levelBuffer_ = std::vector<std::uint8_t>(ISAL_DEF_LVL2_DEFAULT);
    std::vector<std::uint8_t> chunk_ = std::vector<std::uint8_t>(1 << 16);
};

/// Turns blue, green, red into red, green, blue. `to` has room for one byte more, which is overwritten.
void swapColours(Bytes from, std::uint8_t* to) {
    const std::size_t last = from.size() - kBytesPerPixel;
    for (std::size_t i = 0; i < last; i += kBytesPerPixel) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, &from[i], sizeof pixel);  // with a byte of the next one
        pixel = __builtin_bswap32(pixel) >> 8;
        std::memcpy(to + i, &pixel, sizeof pixel);
    }
    std::reverse_copy(from.begin() + static_cast<std::ptrdiff_t>(last), from.end(), to + last);
}

/// The rows in the form in which a PNG file compresses them: each byte less the one above it. A line camera's
/// rows are alike, and the difference costs the least of all such forms.
class Rows {
 public:
    explicit Rows(std::size_t rowBytes) : row_(rowBytes + 1), above_(rowBytes + 1) {}

    /// Appends a row of the picture.
    void add(Bytes row, std::vector<std::uint8_t>& filtered) {
        constexpr std::uint8_t lessTheByteAbove = 2;
        swapColours(row, row_.data());
        const std::size_t start = filtered.size();
        filtered.resize(start + 1 + row.size());
        std::uint8_t* const place = filtered.data() + start;
        place[0] = lessTheByteAbove;
        for (std::size_t i = 0; i < row.size(); ++i)
            place[1 + i] = static_cast<std::uint8_t>(row_[i] - above_[i]);
        row_.swap(above_);
    }

 private:
    std::vector<std::uint8_t> row_;
    std::vector<std::uint8_t> above_;
};

}  // namespace

std::vector<char> encodePng(const ImageView& picture) {
    if (picture.width == 0 || picture.height == 0) throw std::runtime_error("the picture is empty");
    if (!fitsPng(picture.width, picture.height))
        throw std::runtime_error("no PNG file holds a picture of this size");
    std::vector<char> file;
    append(file, std::array<std::uint8_t, 8>{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'});
    const auto width = bigEndian(picture.width);
    const auto height = bigEndian(picture.height);
    appendChunk(file, "IHDR",
                std::array<std::uint8_t, 13>{width[0], width[1], width[2], width[3], height[0], height[1],
                                             height[2], height[3], 8, 2, 0, 0, 0});  // 8-bit RGB
    appendChunk(file, "sRGB", std::array<std::uint8_t, 1>{0});

    const std::size_t rowBytes = picture.width * kBytesPerPixel;
    constexpr std::size_t pieceBytes = 1 << 16;  // stays in the second-level cache
    PictureData data(file);
    Rows rows(rowBytes);
    std::vector<std::uint8_t> piece;
    piece.reserve(pieceBytes + rowBytes);
    for (std::size_t y = 0; y < picture.height; ++y) {
        const bool last = y + 1 == picture.height;
        rows.add(picture.bytes.subspan(y * rowBytes, rowBytes), piece);
        if (piece.size() < pieceBytes && !last) continue;
        data.put(piece, last);
        piece.clear();
    }
    appendChunk(file, "IEND", {});
    return file;
}

}  // namespace virtualboard::imaging
