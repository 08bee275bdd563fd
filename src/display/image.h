// A picture in memory, rows from the top, three bytes a pixel.
#pragma once

#include <cstdint>
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

}  // namespace zentol
