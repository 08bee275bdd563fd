// The screen seam: the logic asks for a picture of the display copy; how it
// is drawn belongs to the renderer.
#pragma once

namespace zentol {

struct Session;

class Renderer {
public:
    virtual ~Renderer() = default;
    virtual void init_gl_state() {}
    virtual void draw(const Session& session) = 0;
};

// Draws nothing; counts the frames asked for (headless sessions and tests).
class NullRenderer : public Renderer {
public:
    void draw(const Session&) override { ++frames; }
    int frames = 0;
};

}  // namespace zentol
