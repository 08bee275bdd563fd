// PNG coding with zlib: the spectrum pictures and hard copies are written
// as PNG with no display and no image library.
#include <zlib.h>

#include <cstring>

#include "display/image.h"

namespace zentol {

namespace {

void put_u32(std::string& out, std::uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(v >> shift & 0xFF);
}

std::uint32_t get_u32(const std::string& in, std::size_t at) {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = v << 8 | static_cast<unsigned char>(in[at + i]);
    return v;
}

void put_chunk(std::string& out, const char* type, const std::string& data) {
    put_u32(out, static_cast<std::uint32_t>(data.size()));
    std::string body = std::string(type, 4) + data;
    out += body;
    put_u32(out, static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()), body.size())));
}

int paeth(int a, int b, int c) {
    int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    return (pa <= pb && pa <= pc) ? a : (pb <= pc ? b : c);
}

// Undoes one row's filter in place; `prior` is the row above (zeros for the first).
bool unfilter(int type, std::uint8_t* row, const std::uint8_t* prior, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        int a = i >= 3 ? row[i - 3] : 0, b = prior[i], c = i >= 3 ? prior[i - 3] : 0;
        switch (type) {
            case 0: break;
            case 1: row[i] = static_cast<std::uint8_t>(row[i] + a); break;
            case 2: row[i] = static_cast<std::uint8_t>(row[i] + b); break;
            case 3: row[i] = static_cast<std::uint8_t>(row[i] + (a + b) / 2); break;
            case 4: row[i] = static_cast<std::uint8_t>(row[i] + paeth(a, b, c)); break;
            default: return false;
        }
    }
    return true;
}

}  // namespace

std::string encode_png(const Image& image) {
    std::size_t row = static_cast<std::size_t>(image.width) * 3;
    std::string raw;
    raw.reserve((row + 1) * image.height);
    for (int y = 0; y < image.height; ++y) {
        raw += '\0';   // no filter
        raw.append(reinterpret_cast<const char*>(image.rgb.data() + y * row), row);
    }
    uLongf packed_size = compressBound(raw.size());
    std::string packed(packed_size, '\0');
    compress2(reinterpret_cast<Bytef*>(packed.data()), &packed_size, reinterpret_cast<const Bytef*>(raw.data()),
              raw.size(), 6);
    packed.resize(packed_size);

    std::string out("\x89PNG\r\n\x1a\n", 8);
    std::string header;
    put_u32(header, static_cast<std::uint32_t>(image.width));
    put_u32(header, static_cast<std::uint32_t>(image.height));
    header += std::string("\x08\x02\x00\x00\x00", 5);   // 8 bits, RGB, deflate, adaptive filters, no interlace
    put_chunk(out, "IHDR", header);
    put_chunk(out, "IDAT", packed);
    put_chunk(out, "IEND", "");
    return out;
}

std::optional<Image> decode_png(const std::string& bytes) {
    if (bytes.size() < 33 || bytes.compare(0, 8, std::string("\x89PNG\r\n\x1a\n", 8)) != 0) return std::nullopt;
    Image image;
    std::string packed;
    for (std::size_t at = 8; at + 12 <= bytes.size();) {
        std::uint32_t length = get_u32(bytes, at);
        if (length > bytes.size() - at - 12) return std::nullopt;
        std::string type = bytes.substr(at + 4, 4);
        if (type == "IHDR") {
            image.width = static_cast<int>(get_u32(bytes, at + 8));
            image.height = static_cast<int>(get_u32(bytes, at + 12));
            if (bytes[at + 16] != 8 || bytes[at + 17] != 2 || bytes[at + 20] != 0) return std::nullopt;
        } else if (type == "IDAT") {
            packed += bytes.substr(at + 8, length);
        }
        at += 12 + length;
    }
    if (image.width <= 0 || image.height <= 0 || image.width > 20000 || image.height > 20000) return std::nullopt;
    std::size_t row = static_cast<std::size_t>(image.width) * 3;
    std::string raw((row + 1) * image.height, '\0');
    uLongf raw_size = raw.size();
    if (uncompress(reinterpret_cast<Bytef*>(raw.data()), &raw_size, reinterpret_cast<const Bytef*>(packed.data()),
                   packed.size()) != Z_OK || raw_size != raw.size())
        return std::nullopt;
    image.rgb.assign(row * image.height, 0);
    std::vector<std::uint8_t> zero(row, 0);
    for (int y = 0; y < image.height; ++y) {
        std::uint8_t* dst = image.rgb.data() + y * row;
        std::memcpy(dst, raw.data() + y * (row + 1) + 1, row);
        const std::uint8_t* prior = y ? dst - row : zero.data();
        if (!unfilter(raw[y * (row + 1)], dst, prior, row)) return std::nullopt;
    }
    return image;
}

std::array<std::uint8_t, 3> pixel(const Image& image, int x, int y) {
    if (x < 0 || y < 0 || x >= image.width || y >= image.height) return {0, 0, 0};
    const auto* p = &image.rgb[(static_cast<std::size_t>(y) * image.width + x) * 3];
    return {p[0], p[1], p[2]};
}

}  // namespace zentol
