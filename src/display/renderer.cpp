#include "display/renderer.h"

#include <algorithm>
#include <cmath>

#include "session/session.h"

namespace zentol {

std::optional<Image> Renderer::render_image(const Session& s, int width, int height) {
    Image image;
    image.width = width;
    image.height = height;
    auto byte = [](float v) { return static_cast<std::uint8_t>(std::lround(std::clamp(v, 0.0f, 1.0f) * 255)); };
    image.rgb.resize(static_cast<std::size_t>(width) * height * 3);
    for (std::size_t p = 0; p < image.rgb.size(); p += 3) {
        image.rgb[p] = byte(s.palette.r[1]);
        image.rgb[p + 1] = byte(s.palette.g[1]);
        image.rgb[p + 2] = byte(s.palette.b[1]);
    }
    return image;
}

}  // namespace zentol
