// A picture in memory, rows from the top, three bytes a pixel.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zentol {

struct Image {
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgb;   // width * height * 3
};

// A PCX file (version 5, 8 bits a plane, three planes, run-length coded).
std::string encode_pcx(const Image& image);

// A 24-bit BMP file (rows from the bottom, padded to four bytes).
std::string encode_bmp(const Image& image);

// A PNG file: 8-bit RGB, not interlaced, zlib-compressed rows.
std::string encode_png(const Image& image);

// The pixel at (x, y), rows from the top; {0, 0, 0} outside the picture.
std::array<std::uint8_t, 3> pixel(const Image& image, int x, int y);

// Reads a PNG that encode_png wrote (8-bit RGB, any row filter); nullopt for
// anything else. Tests read the pictures back through it.
std::optional<Image> decode_png(const std::string& bytes);

}  // namespace zentol
