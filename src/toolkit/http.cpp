#include "toolkit/http.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "text/fixed_format.h"

namespace zentol::http {

namespace {

struct Url {
    std::string host, port = "80", path = "/";
};

std::optional<Url> parse_url(const std::string& url) {
    const std::string scheme = "http://";
    if (!text::starts_with_nocase(url, scheme)) return std::nullopt;
    std::string rest = url.substr(scheme.size());
    Url u;
    std::size_t slash = rest.find('/');
    std::string authority = rest.substr(0, slash);
    if (slash != std::string::npos) u.path = rest.substr(slash);
    std::size_t colon = authority.rfind(':');
    u.host = authority.substr(0, colon);
    if (colon != std::string::npos) u.port = authority.substr(colon + 1);
    if (u.host.empty() || u.port.empty()) return std::nullopt;
    return u;
}

class Socket {
public:
    explicit Socket(int fd) : fd_(fd) {}
    ~Socket() { if (fd_ >= 0) ::close(fd_); }
    int fd() const { return fd_; }

private:
    int fd_;
};

using Clock = std::chrono::steady_clock;

int remaining_ms(Clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

bool wait_for(int fd, short events, Clock::time_point deadline) {
    pollfd p{fd, events, 0};
    return ::poll(&p, 1, remaining_ms(deadline)) == 1 && (p.revents & (events | POLLHUP));
}

std::optional<int> connect_to(const Url& u, Clock::time_point deadline) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(u.host.c_str(), u.port.c_str(), &hints, &found) != 0 || !found) return std::nullopt;
    std::optional<int> result;
    for (addrinfo* a = found; a && !result; a = a->ai_next) {
        int fd = ::socket(a->ai_family, a->ai_socktype | SOCK_NONBLOCK, a->ai_protocol);
        if (fd < 0) continue;
        int rc = ::connect(fd, a->ai_addr, a->ai_addrlen);
        int err = 0;
        socklen_t len = sizeof err;
        if (rc == 0 || (errno == EINPROGRESS && wait_for(fd, POLLOUT, deadline) &&
                        getsockopt(fd, SOL_SOCKET, SO_ERROR, &err, &len) == 0 && err == 0))
            result = fd;
        else
            ::close(fd);
    }
    freeaddrinfo(found);
    return result;
}

}  // namespace

std::optional<std::string> get(const std::string& url, int timeout_ms) {
    auto u = parse_url(url);
    if (!u) return std::nullopt;
    auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    auto fd = connect_to(*u, deadline);
    if (!fd) return std::nullopt;
    Socket sock(*fd);
    std::string request = "GET " + u->path + " HTTP/1.0\r\nHost: " + u->host + "\r\nConnection: close\r\n\r\n";
    std::size_t sent = 0;
    while (sent < request.size()) {
        if (!wait_for(sock.fd(), POLLOUT, deadline)) return std::nullopt;
        ssize_t n = ::send(sock.fd(), request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) return std::nullopt;
        sent += static_cast<std::size_t>(n);
    }
    std::string answer;
    char buf[4096];
    while (answer.size() < 65536 + 4096) {
        if (!wait_for(sock.fd(), POLLIN, deadline)) return std::nullopt;
        ssize_t n = ::recv(sock.fd(), buf, sizeof buf, 0);
        if (n < 0) return std::nullopt;
        if (n == 0) break;
        answer.append(buf, static_cast<std::size_t>(n));
    }
    std::size_t head_end = answer.find("\r\n\r\n");
    if (head_end == std::string::npos) return std::nullopt;
    std::string status_line = answer.substr(0, answer.find("\r\n"));
    if (status_line.size() < 12 || status_line.compare(9, 3, "200") != 0) return std::nullopt;
    std::string body = answer.substr(head_end + 4);
    if (body.size() > 65536) return std::nullopt;
    return body;
}

}  // namespace zentol::http
