// The screen seam: the logic asks for a picture of the display copy; how it
// is drawn belongs to the renderer.
#pragma once

#include <optional>

#include "display/image.h"

namespace zentol {

struct Session;

class Renderer {
public:
    virtual ~Renderer() = default;
    virtual void init_gl_state() {}
    virtual void draw(const Session& session) = 0;
    // The scene drawn off-screen at this size, for hard copy.
    virtual std::optional<Image> render_image(const Session& session, int width, int height);
};

// Draws nothing; counts the frames asked for (headless sessions and tests).
// Its off-screen pictures are the background colour.
class NullRenderer : public Renderer {
public:
    void draw(const Session&) override { ++frames; }
    int frames = 0;
};

}  // namespace zentol
