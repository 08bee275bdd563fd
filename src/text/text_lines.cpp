#include "text/text_lines.h"

#include <algorithm>
#include <cstdint>

namespace zentol::text {

namespace {

void put_utf8(std::string& out, std::uint32_t c) {
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

}  // namespace

std::string utf16_to_utf8(std::string_view bytes, bool big_endian) {
    std::string out;
    out.reserve(bytes.size() / 2);
    auto unit = [&](std::size_t i) -> std::uint32_t {
        auto b0 = static_cast<unsigned char>(bytes[i]), b1 = static_cast<unsigned char>(bytes[i + 1]);
        return big_endian ? (b0 << 8 | b1) : (b1 << 8 | b0);
    };
    std::size_t n = bytes.size() & ~std::size_t(1);
    for (std::size_t i = 0; i < n; i += 2) {
        std::uint32_t c = unit(i);
        if (c >= 0xD800 && c < 0xDC00 && i + 3 < n) {
            std::uint32_t low = unit(i + 2);
            if (low >= 0xDC00 && low < 0xE000) {
                put_utf8(out, 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00));
                i += 2;
                continue;
            }
        }
        put_utf8(out, (c >= 0xD800 && c < 0xE000) ? 0xFFFD : c);
    }
    return out;
}

TextLines TextLines::from_bytes(std::string bytes) {
    auto starts = [&](std::string_view bom) { return std::string_view(bytes).substr(0, bom.size()) == bom; };
    if (starts("\xFF\xFE")) {
        bytes = utf16_to_utf8(std::string_view(bytes).substr(2), false);
    } else if (starts("\xFE\xFF")) {
        bytes = utf16_to_utf8(std::string_view(bytes).substr(2), true);
    } else if (starts("\xEF\xBB\xBF")) {
        bytes.erase(0, 3);
    }
    std::erase(bytes, '\r');   // in place: no second copy of a big listing
    TextLines t;
    t.buffer_ = std::make_shared<const std::string>(std::move(bytes));
    t.split();
    return t;
}

TextLines TextLines::from_lines(const std::vector<std::string>& lines) {
    std::string all;
    for (const auto& l : lines) all.append(l).push_back('\n');
    return from_bytes(std::move(all));
}

void TextLines::split() {
    lines_.clear();
    const char* p = buffer_->data();
    const char* end = p + buffer_->size();
    lines_.reserve(static_cast<std::size_t>(std::count(p, end, '\n')) + 1);
    while (p < end) {
        const char* nl = std::find(p, end, '\n');
        lines_.emplace_back(p, static_cast<std::size_t>(nl - p));
        p = nl + 1;
    }
}

std::vector<std::string> TextLines::strings() const { return {lines_.begin(), lines_.end()}; }

}  // namespace zentol::text
