#include "toolkit/qt/message_queue.h"

#include <QEventLoop>

namespace zentol {

bool MessageQueue::pending(MessageType type) const {
    for (const auto& m : queue_)
        if (m.type == type) return true;
    return false;
}

void MessageQueue::post(const Message& m) {
    switch (m.type) {
        case MessageType::None:
            return;
        case MessageType::Expose:
        case MessageType::Resize:
        case MessageType::Close:
            if (pending(m.type)) return;
            break;
        case MessageType::MouseMove:
            if (!moves_enabled_) return;
            if (!queue_.empty() && queue_.back().type == MessageType::MouseMove) {
                queue_.back() = m;
                return;
            }
            break;
        default:
            break;
    }
    queue_.push_back(m);
    wake();
}

void MessageQueue::enable(MessageType type, bool on) {
    if (type != MessageType::MouseMove) return;   // the others are always delivered
    moves_enabled_ = on;
    if (!on) std::erase_if(queue_, [](const Message& m) { return m.type == MessageType::MouseMove; });
}

bool MessageQueue::enabled(MessageType type) const {
    return type != MessageType::MouseMove || moves_enabled_;
}

std::optional<Message> MessageQueue::take() {
    if (queue_.empty()) return std::nullopt;
    Message m = queue_.front();
    queue_.pop_front();
    return m;
}

void MessageQueue::wait() {
    if (!queue_.empty() || loop_) return;
    QEventLoop loop;
    loop_ = &loop;
    loop.exec();
    loop_ = nullptr;
}

void MessageQueue::wake() {
    if (loop_) loop_->quit();
}

}  // namespace zentol
