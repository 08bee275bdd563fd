#include "toolkit/plot.h"

#include <algorithm>

namespace zentol {

std::array<std::uint8_t, 3> colour_number(int n) {
    static const std::array<std::array<int, 3>, 16> families = {{
        {128, 128, 128}, {255, 0, 0},   {255, 128, 0}, {255, 255, 0}, {128, 255, 0}, {0, 255, 0},
        {0, 255, 128},   {0, 255, 255}, {0, 128, 255}, {255, 0, 255}, {0, 0, 255},  {128, 0, 255},
        {255, 0, 128},   {0, 0, 0},     {128, 64, 0},  {255, 255, 255}}};
    n = std::clamp(n, 0, 255);
    int family = n / 16, shade = n % 16;
    if (family == 13) {
        auto grey = static_cast<std::uint8_t>(shade * 15);
        return {grey, grey, grey};
    }
    // Shades below 8 darken the family's colour, shades above lighten it.
    std::array<std::uint8_t, 3> out{};
    for (int c = 0; c < 3; ++c) {
        int base = families[family][c];
        int v = shade <= 8 ? base * (shade + 8) / 16 : base + (255 - base) * (shade - 8) / 8;
        out[c] = static_cast<std::uint8_t>(std::clamp(v, 0, 255));
    }
    return out;
}

}  // namespace zentol
