/// The writer of PNG files: made for speed, where libpng makes small files. A picture takes a few
/// milliseconds instead of tens or hundreds; the file is up to twice as large where much of it repeats, and
/// an eighth larger where little does.

#include <immintrin.h>
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

/// ISA-L leaves the upper halves of the vector registers in use; until they are given back, instructions that
/// know only the lower ones take twice as long on some processors.
[[gnu::target("avx")]] void releaseUpperHalves() {
    _mm256_zeroupper();
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
        if (__builtin_cpu_supports("avx")) releaseUpperHalves();
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

__m128i load(const std::uint8_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

__m128i difference(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
}

__m128i choose(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}

__m128i atMost(__m128i a, __m128i b) {
    return _mm_cmpeq_epi8(_mm_min_epu8(a, b), a);
}

/// The PNG format's Paeth predictor: of the byte to the left, the one above and the one above that to the
/// left, the one next to left + above - corner.
__m128i predicted(__m128i left, __m128i above, __m128i corner) {
    const __m128i toLeft = difference(above, corner), toAbove = difference(left, corner);
    // From the corner both ways add up in one direction and make up for each other in different ones.
    const __m128i sameWay = _mm_cmpeq_epi8(atMost(above, corner), atMost(left, corner));
    const __m128i toCorner = choose(sameWay, _mm_adds_epu8(toLeft, toAbove), difference(toLeft, toAbove));
    const __m128i other = choose(atMost(toAbove, toCorner), above, corner);
    return choose(atMost(toLeft, _mm_min_epu8(toAbove, toCorner)), left, other);
}

/// The rows in the form in which a PNG file compresses them: each byte less its prediction from those around
/// it. One predictor for all rows: to look for the best of each takes longer than the compression.
class Rows {
 public:
    explicit Rows(std::size_t rowBytes)
        : row_(kBytesPerPixel + rowBytes + kLanes), above_(kBytesPerPixel + rowBytes + kLanes) {}

    /// Appends a row of the picture.
    void add(Bytes row, std::vector<std::uint8_t>& filtered) {
        constexpr std::uint8_t byPaeth = 4;
        swapColours(row, row_.data() + kBytesPerPixel);
        const std::size_t start = filtered.size();
        filtered.resize(start + 1 + row.size() + kLanes);
        filtered[start] = byPaeth;
        filter(row.size(), filtered.data() + start + 1);
        filtered.resize(start + 1 + row.size());
        row_.swap(above_);
    }

    /// Room that `add` needs behind a row, for the rest of its last vector.
    static constexpr std::size_t kLanes = 16;

 private:
    void filter(std::size_t count, std::uint8_t* out) const {
        for (std::size_t i = 0; i < count; i += kLanes) {
            const __m128i left = load(&row_[i]), corner = load(&above_[i]);
            const __m128i pixels = load(&row_[i + kBytesPerPixel]), above = load(&above_[i + kBytesPerPixel]);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                             _mm_sub_epi8(pixels, predicted(left, above, corner)));
        }
    }

    // With a black pixel before the row.
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
    piece.reserve(pieceBytes + rowBytes + Rows::kLanes);
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
