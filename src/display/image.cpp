#include "display/image.h"

namespace zentol {

namespace {

void put16(std::string& out, std::size_t at, int v) {
    out[at] = static_cast<char>(v & 0xff);
    out[at + 1] = static_cast<char>((v >> 8) & 0xff);
}

// One plane of one row, run-length coded; every scan line is coded on its own.
void encode_plane_row(std::string& out, const std::uint8_t* row, int width, int plane, int bytes_per_line) {
    int x = 0;
    while (x < bytes_per_line) {
        std::uint8_t v = x < width ? row[x * 3 + plane] : 0;
        int run = 1;
        while (x + run < bytes_per_line && run < 63) {
            std::uint8_t next = (x + run) < width ? row[(x + run) * 3 + plane] : 0;
            if (next != v) break;
            ++run;
        }
        if (run > 1 || (v & 0xc0) == 0xc0) out += static_cast<char>(0xc0 | run);
        out += static_cast<char>(v);
        x += run;
    }
}

}  // namespace

std::string encode_pcx(const Image& image) {
    std::string out(128, '\0');
    int bytes_per_line = image.width + (image.width & 1);   // even, as readers expect
    out[0] = 0x0a;   // manufacturer
    out[1] = 5;      // version
    out[2] = 1;      // run-length coding
    out[3] = 8;      // bits per pixel and plane
    put16(out, 4, 0);
    put16(out, 6, 0);
    put16(out, 8, image.width - 1);
    put16(out, 10, image.height - 1);
    put16(out, 12, 72);
    put16(out, 14, 72);
    out[65] = 3;     // planes
    put16(out, 66, bytes_per_line);
    put16(out, 68, 1);   // colour palette
    for (int y = 0; y < image.height; ++y) {
        const std::uint8_t* row = image.rgb.data() + static_cast<std::size_t>(y) * image.width * 3;
        for (int plane = 0; plane < 3; ++plane) encode_plane_row(out, row, image.width, plane, bytes_per_line);
    }
    return out;
}

std::string encode_bmp(const Image& image) {
    int row_bytes = (image.width * 3 + 3) & ~3;
    int data = row_bytes * image.height;
    std::string out(54, '\0');
    auto put32 = [&](std::size_t at, long v) {
        for (int k = 0; k < 4; ++k) out[at + k] = static_cast<char>((v >> (8 * k)) & 0xff);
    };
    out[0] = 'B', out[1] = 'M';
    put32(2, 54L + data);
    put32(10, 54);
    put32(14, 40);
    put32(18, image.width);
    put32(22, image.height);
    put16(out, 26, 1);
    put16(out, 28, 24);
    put32(34, data);
    for (int y = image.height - 1; y >= 0; --y) {
        const std::uint8_t* row = image.rgb.data() + static_cast<std::size_t>(y) * image.width * 3;
        std::string line(static_cast<std::size_t>(row_bytes), '\0');
        for (int x = 0; x < image.width; ++x) {
            line[x * 3] = static_cast<char>(row[x * 3 + 2]);
            line[x * 3 + 1] = static_cast<char>(row[x * 3 + 1]);
            line[x * 3 + 2] = static_cast<char>(row[x * 3]);
        }
        out += line;
    }
    return out;
}

}  // namespace zentol
