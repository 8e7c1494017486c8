/// Draws the applet's icon, a line-scan camera over a belt: draw_icon PICTURE.png
///
/// The picture is drawn from shapes at eight by eight samples per pixel. Its file has a fixed size; a comment
/// fills what the compressed picture leaves.

#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "entry/DesignImage.h"

namespace {

constexpr int kSize = 32;
constexpr int kSamples = 8;
constexpr std::size_t kRowBytes = 128;  // four bytes per pixel

/// Straight colour, each part from 0 to 1.
struct Colour {
    double red = 0, green = 0, blue = 0, alpha = 0;
};

constexpr Colour rgb(unsigned hex, double alpha = 1.0) {
    return {((hex >> 16U) & 255U) / 255.0, ((hex >> 8U) & 255U) / 255.0, (hex & 255U) / 255.0, alpha};
}

Colour mix(const Colour& a, const Colour& b, double t) {
    t = std::clamp(t, 0.0, 1.0);
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t,
            a.alpha + (b.alpha - a.alpha) * t};
}

/// `top` laid over `below`.
Colour over(const Colour& below, const Colour& top) {
    const double alpha = top.alpha + below.alpha * (1 - top.alpha);
    if (alpha <= 0) return {};
    const auto part = [&](double b, double t) {
        return (t * top.alpha + b * below.alpha * (1 - top.alpha)) / alpha;
    };
    return {part(below.red, top.red), part(below.green, top.green), part(below.blue, top.blue), alpha};
}

/// Distance from a rounded rectangle's edge, negative inside.
double roundedBox(double x, double y, double left, double top, double right, double bottom, double radius) {
    const double dx = std::abs(x - (left + right) / 2) - (right - left) / 2 + radius;
    const double dy = std::abs(y - (top + bottom) / 2) - (bottom - top) / 2 + radius;
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - radius;
}

double circle(double x, double y, double centreX, double centreY, double radius) {
    return std::hypot(x - centreX, y - centreY) - radius;
}

Colour drawBelt(Colour c, double x, double y) {
    if (roundedBox(x, y, 1, 23, 31, 29, 3) < 0) {
        c = over(c, mix(rgb(0x74808C), rgb(0x2A3038), (y - 23) / 4));
        if (roundedBox(x, y, 2, 24, 30, 28, 2) < 0) c = over(c, rgb(0x12161B));
        for (const double roller : {5.0, 12.33, 19.67, 27.0}) {
            const double d = circle(x, y, roller, 26, 1.6);
            if (d < 0) c = over(c, mix(rgb(0xF2F5F7), rgb(0x7D8995), (y - 24.4) / 3.2));
            if (d < -1.1) c = over(c, rgb(0x3A424B));
        }
    }
    // The parts that travel on the belt; the middle one is under the camera.
    struct Part {
        double left, top, right;
        unsigned light, dark;
    };
    for (const Part& part : {Part{3, 20, 8, 0x4FC3F7, 0x0277BD}, Part{12, 18, 20, 0xFFD54F, 0xF57C00},
                             Part{24, 20, 29, 0xA5D6A7, 0x2E7D32}}) {
        if (roundedBox(x, y, part.left, part.top, part.right, 23, 0.7) < 0) {
            c = over(c, mix(rgb(part.light), rgb(part.dark), (y - part.top) / (23 - part.top)));
        }
    }
    return c;
}

Colour drawCamera(Colour c, double x, double y) {
    // The fan of light opens from the lens to the line that the camera sees.
    const double depth = (y - 12) / 5;
    const double halfWidth = 2.5 + 3.5 * depth;
    const double aside = std::abs(x - 16);
    if (depth > 0 && depth < 1 && aside < halfWidth) c = over(c, rgb(0x9BF6FF, 0.85 - 0.55 * depth));
    if (y > 17 && y < 18 && aside < 7) c = over(c, mix(rgb(0xFFFFFF), rgb(0xFF1744), aside / 5));
    if (roundedBox(x, y, 12, 8, 20, 12, 0.8) < 0) {
        c = over(c, mix(rgb(0xB0BEC5), rgb(0x1F2A30), std::abs(x - 14.5) / 5.5));
        if (y > 9.0 && y < 10.0) c = over(c, rgb(0x0E1418));
        if (y > 11.0) c = over(c, mix(rgb(0xE0FBFF), rgb(0x00ACC1), aside / 4));
    }
    const double body = roundedBox(x, y, 8, 2, 24, 9, 1.6);
    if (body < 0) {
        c = over(c, mix(rgb(0xFFFFFF), rgb(0xAAB8C3), (y - 2) / 7));
        if (body > -0.5) c = over(c, rgb(0x4C5A65));
        if (roundedBox(x, y, 10, 4, 18, 5, 0) < 0) c = over(c, rgb(0xD81B60));
        if (roundedBox(x, y, 10, 6, 16, 7, 0) < 0) c = over(c, rgb(0x90A4AE));
        if (circle(x, y, 21, 5, 1.1) < 0) c = over(c, rgb(0x00E676));
    }
    return c;
}

Colour sample(double x, double y) {
    Colour c;
    const double plate = roundedBox(x, y, 0.2, 0.2, 31.8, 31.8, 6);
    if (plate >= 0) return c;
    c = mix(rgb(0x2F5D8A), rgb(0x0E1F36), y / 32);
    c = over(c, rgb(0xFFFFFF, 0.16 * std::max(0.0, 1 - std::hypot(x - 16, y - 8) / 15)));
    if (plate > -0.8) c = over(c, rgb(0xBFD9F2, 0.45));
    return drawCamera(drawBelt(c, x, y), x, y);
}

using Picture = std::array<std::array<png_byte, kRowBytes>, kSize>;

Picture drawPicture() {
    Picture picture{};
    for (int row = 0; row < kSize; ++row) {
        for (int column = 0; column < kSize; ++column) {
            Colour sum;  // weighted by alpha, so that transparent samples lend no colour
            for (int i = 0; i < kSamples * kSamples; ++i) {
                const int across = i % kSamples;
                const int down = i / kSamples;
                const Colour c = sample(column + (across + 0.5) / kSamples, row + (down + 0.5) / kSamples);
                sum = {sum.red + c.red * c.alpha, sum.green + c.green * c.alpha, sum.blue + c.blue * c.alpha,
                       sum.alpha + c.alpha};
            }
            const double weight = std::max(sum.alpha, 1e-9);
            const std::array<double, 4> parts{sum.red / weight, sum.green / weight, sum.blue / weight,
                                              sum.alpha / (kSamples * kSamples)};
            for (std::size_t k = 0; k < 4; ++k) {
                picture[static_cast<std::size_t>(row)][static_cast<std::size_t>(column) * 4 + k] =
                    static_cast<png_byte>(std::lround(std::clamp(parts[k], 0.0, 1.0) * 255));
            }
        }
    }
    return picture;
}

/// The picture as a PNG file with a comment; empty when libpng refuses.
std::vector<unsigned char> encode(const Picture& picture, std::string comment) {
    std::vector<unsigned char> bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_write_struct(&png, &info);
        return {};
    }
    const auto append = [](png_structp target, png_bytep data, png_size_t size) {
        auto* all = static_cast<std::vector<unsigned char>*>(png_get_io_ptr(target));
        all->insert(all->end(), data, data + size);
    };
    png_set_write_fn(png, &bytes, append, [](png_structp) {});
    png_set_IHDR(png, info, kSize, kSize, 8, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 9);
    std::string keyword = "Comment";
    png_text text{};
    text.compression = PNG_TEXT_COMPRESSION_NONE;
    text.key = keyword.data();
    text.text = comment.data();
    text.text_length = comment.size();
    png_set_text(png, info, &text, 1);
    png_write_info(png, info);
    for (const auto& row : picture) png_write_row(png, row.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: draw_icon PICTURE.png\n", stderr);
        return 2;
    }
    const Picture picture = drawPicture();
    std::string comment = "A line-scan camera over a belt. ";
    const std::size_t drawn = encode(picture, comment).size();
    if (drawn == 0 || drawn > appletIconSize) {
        std::fprintf(stderr, "draw_icon: the picture takes %zu bytes, but may take only %zu\n", drawn,
                     appletIconSize);
        return 1;
    }
    comment.append(appletIconSize - drawn, '.');
    const std::vector<unsigned char> bytes = encode(picture, comment);
    std::ofstream file(argv[1], std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file || bytes.size() != appletIconSize) {
        std::fprintf(stderr, "draw_icon: %s cannot be written\n", argv[1]);
        return 1;
    }
    return 0;
}
