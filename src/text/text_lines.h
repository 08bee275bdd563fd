// A text file held as one buffer and split into line views: how every
// engine's output is read. The bytes are decoded first, so the parsers see
// the same lines whatever the engine wrote:
//   - a UTF-16 file (little- or big-endian, with its byte-order mark) becomes
//     UTF-8;
//   - a UTF-8 byte-order mark is dropped;
//   - every carriage return is dropped, so CRLF and the CR CR LF of some
//     listings end lines as LF does.
// A last line without its line end is a line; an empty file has no lines.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zentol::text {

class TextLines {
public:
    TextLines() = default;
    // Decodes and splits the raw bytes of a file.
    static TextLines from_bytes(std::string bytes);
    // The same for lines given one by one (tests, and texts built in memory).
    static TextLines from_lines(const std::vector<std::string>& lines);

    std::size_t size() const { return lines_.size(); }
    bool empty() const { return lines_.empty(); }
    std::string_view operator[](std::size_t i) const { return lines_[i]; }
    auto begin() const { return lines_.begin(); }
    auto end() const { return lines_.end(); }
    const std::vector<std::string_view>& views() const { return lines_; }
    // Copies, for the readers that still keep lines of their own.
    std::vector<std::string> strings() const;
    // The decoded text, lines joined by LF.
    std::string_view text() const { return buffer_ ? std::string_view(*buffer_) : std::string_view(); }

private:
    void split();
    // Shared and never changed once split, so copies and moves keep the
    // views valid.
    std::shared_ptr<const std::string> buffer_;
    std::vector<std::string_view> lines_;
};

// UTF-16 to UTF-8; unpaired surrogates become U+FFFD.
std::string utf16_to_utf8(std::string_view bytes, bool big_endian);

}  // namespace zentol::text
