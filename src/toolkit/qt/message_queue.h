// The queue of messages the Qt widgets hand to the logic, and the wait for
// the next one. Widgets post from inside Qt's event handlers; the logic pulls
// with take() and, when nothing is queued, waits in a nested event loop.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>

#include "toolkit/toolkit.h"

class QEventLoop;

namespace zentol {

class MessageQueue {
public:
    // Queues a message. Expose, Resize and Close are coalesced (at most one
    // of each is pending); a MouseMove replaces a MouseMove still at the end
    // of the queue, so a slow redraw never lags behind the mouse; MouseMove
    // is dropped altogether while it is not enabled.
    void post(const Message& m);
    void enable(MessageType type, bool on);
    bool enabled(MessageType type) const;

    std::optional<Message> take();
    // Runs a nested event loop until a message is posted or wake() is called.
    // Returns at once when something is already queued.
    void wait();
    void wake();

    std::size_t size() const { return queue_.size(); }
    void clear() { queue_.clear(); }

private:
    bool pending(MessageType type) const;

    std::deque<Message> queue_;
    bool moves_enabled_ = false;
    QEventLoop* loop_ = nullptr;
};

}  // namespace zentol
