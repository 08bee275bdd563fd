#include "text/fixed_format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace zentol::text {

namespace {

std::string stars(int w) { return std::string(static_cast<std::size_t>(std::max(w, 0)), '*'); }

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\0'; }

// Digits of |value| rounded to d decimals: correct rounding of the binary
// value with ties to even, which is what gfortran does ("0.125" in F4.2 is
// "0.12", 2.5 in F3.0 is "2.").
std::string fixed_digits(double magnitude, int d) {
    char buf[400];
    auto r = std::to_chars(buf, buf + sizeof buf, magnitude, std::chars_format::fixed, d);
    if (r.ec != std::errc()) return {};
    return std::string(buf, r.ptr);
}

}  // namespace

std::string format_es(double value, int w, int d) {
    if (w <= 0) return {};
    if (!std::isfinite(value)) return stars(w);
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::scientific, std::clamp(d, 0, 30));
    std::string s(buf, r.ptr);   // [-]d.ddde[+-]XX
    const std::size_t e = s.find('e');
    std::string exponent = s.substr(e + 1);
    const char sign = exponent[0] == '-' ? '-' : '+';
    if (exponent[0] == '-' || exponent[0] == '+') exponent.erase(0, 1);
    if (exponent.size() < 2) exponent.insert(0, 1, '0');
    s = s.substr(0, e) + "E" + sign + exponent;
    if (static_cast<int>(s.size()) > w) return stars(w);
    return std::string(static_cast<std::size_t>(w) - s.size(), ' ') + s;
}

std::string format_f(double value, int w, int d) {
    if (w <= 0) return {};
    if (!std::isfinite(value) || std::fabs(value) >= 1e300) return stars(w);
    d = std::max(d, 0);
    bool negative = std::signbit(value);
    std::string digits = fixed_digits(std::fabs(value), d);
    if (digits.empty()) return stars(w);
    if (d == 0) digits += '.';   // gfortran writes "3." for F3.0
    // The zero before the point is optional when there are decimals to show.
    if (d > 0 && digits[0] == '0' && static_cast<int>(digits.size()) + (negative ? 1 : 0) > w) digits.erase(0, 1);
    if (negative) digits.insert(0, 1, '-');
    if (static_cast<int>(digits.size()) > w) return stars(w);
    return std::string(static_cast<std::size_t>(w) - digits.size(), ' ') + digits;
}

std::string format_i(long long value, int w) {
    if (w <= 0) return {};
    std::string s = std::to_string(value);
    if (static_cast<int>(s.size()) > w) return stars(w);
    return std::string(static_cast<std::size_t>(w) - s.size(), ' ') + s;
}

std::string format_a(std::string_view s, int w) {
    if (w <= 0) return {};
    if (static_cast<int>(s.size()) >= w) return std::string(s.substr(0, static_cast<std::size_t>(w)));
    return std::string(static_cast<std::size_t>(w) - s.size(), ' ') + std::string(s);
}

std::string pad_right(std::string_view s, int w) {
    if (w <= 0) return {};
    std::string out(s.substr(0, std::min(s.size(), static_cast<std::size_t>(w))));
    out.resize(static_cast<std::size_t>(w), ' ');
    return out;
}

std::string blanks(int n) { return std::string(static_cast<std::size_t>(std::max(n, 0)), ' '); }

namespace {

// A number as Fortran input writes it, blanks already gone: optional sign,
// digits with at most one point, then an exponent "E+05", "D-3", "e5" or
// a bare signed exponent "1.5-3". Without a point the mantissa takes d
// implied decimals.
std::optional<double> parse_real(std::string s, int d) {
    if (s.empty()) return 0.0;
    std::size_t i = 0;
    if (s[i] == '+' || s[i] == '-') ++i;
    std::size_t mant_start = i;
    bool point = false, digit = false;
    for (; i < s.size(); ++i) {
        if (s[i] >= '0' && s[i] <= '9') digit = true;
        else if (s[i] == '.' && !point) point = true;
        else break;
    }
    if (!digit) return std::nullopt;
    std::string mantissa = s.substr(0, i);
    std::string exponent;
    if (i < s.size()) {
        char c = s[i];
        if (c == 'e' || c == 'E' || c == 'd' || c == 'D' || c == 'q' || c == 'Q') ++i;
        else if (c != '+' && c != '-') return std::nullopt;
        exponent = s.substr(i);
        std::size_t k = 0;
        if (k < exponent.size() && (exponent[k] == '+' || exponent[k] == '-')) ++k;
        if (k == exponent.size()) return std::nullopt;
        for (; k < exponent.size(); ++k)
            if (exponent[k] < '0' || exponent[k] > '9') return std::nullopt;
        if (exponent[0] == '+') exponent.erase(0, 1);
    }
    if (mantissa[0] == '+') mantissa.erase(0, 1);
    (void)mant_start;
    std::string text = mantissa + (exponent.empty() ? "" : "e" + exponent);
    double v = 0;
    auto r = std::from_chars(text.data(), text.data() + text.size(), v);
    if (r.ec == std::errc::result_out_of_range) return std::nullopt;
    if (r.ec != std::errc() || r.ptr != text.data() + text.size()) return std::nullopt;
    if (!point && d > 0) v /= std::pow(10.0, d);
    return v;
}

std::optional<long long> parse_int(std::string_view s) {
    if (s.empty()) return 0;
    if (s[0] == '+') s.remove_prefix(1);
    if (s.empty() || s[0] == '+') return std::nullopt;
    long long v = 0;
    auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    if (r.ec != std::errc() || r.ptr != s.data() + s.size()) return std::nullopt;
    return v;
}

std::string without_blanks(std::string_view field) {
    std::string s;
    for (char c : field)
        if (!is_blank(c)) s += c;
    return s;
}

// Items of a list-directed record: values with their repeat counts; empty
// text for a null value. A slash ends the record.
struct Item {
    long long repeat = 1;
    std::string text;
};

std::optional<std::vector<Item>> list_items(std::string_view line, int max_values) {
    std::vector<Item> items;
    long long total = 0;
    std::size_t i = 0;
    bool after_comma = true;   // a comma right at the start is a null value
    while (i < line.size() && total < max_values) {
        char c = line[i];
        if (is_blank(c)) { ++i; continue; }
        if (c == '/') break;
        if (c == ',') {
            if (after_comma) items.push_back({1, ""}), ++total;
            after_comma = true;
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < line.size() && !is_blank(line[end]) && line[end] != ',' && line[end] != '/') ++end;
        std::string token(line.substr(i, end - i));
        Item item;
        std::size_t star = token.find('*');
        if (star != std::string::npos) {
            auto r = parse_int(token.substr(0, star));
            if (!r || *r < 1) return std::nullopt;
            // More repeats than values wanted read as many as are wanted.
            item.repeat = std::min<long long>(*r, max_values);
            item.text = token.substr(star + 1);
        } else {
            item.text = token;
        }
        total += item.repeat;
        items.push_back(item);
        after_comma = false;
        i = end;
        // One comma after a value belongs to it.
        while (i < line.size() && is_blank(line[i])) ++i;
        if (i < line.size() && line[i] == ',') ++i;
    }
    return items;
}

template <typename T, typename Parse>
std::optional<std::vector<T>> read_list(std::string_view line, int max_values, Parse parse) {
    std::vector<T> out;
    if (max_values <= 0) return out;
    auto items = list_items(line, max_values);
    if (!items) return std::nullopt;
    for (const auto& item : *items) {
        for (long long k = 0; k < item.repeat && static_cast<int>(out.size()) < max_values; ++k) {
            if (item.text.empty()) continue;   // a null value leaves nothing
            auto v = parse(item.text);
            if (!v) return std::nullopt;
            out.push_back(*v);
        }
        if (static_cast<int>(out.size()) >= max_values) break;
    }
    return out;
}

}  // namespace

std::optional<double> read_f(std::string_view field, int d) { return parse_real(without_blanks(field), d); }

std::optional<long long> read_i(std::string_view field) { return parse_int(without_blanks(field)); }

std::optional<std::vector<double>> read_reals(std::string_view line, int max_values) {
    return read_list<double>(line, max_values, [](const std::string& t) { return parse_real(t, 0); });
}

std::optional<std::vector<long long>> read_ints(std::string_view line, int max_values) {
    return read_list<long long>(line, max_values, [](const std::string& t) { return parse_int(t); });
}

FreeRecord& FreeRecord::operator<<(std::string_view s) {
    // A text item opens the record with a blank, and follows a number after one.
    if (!started_ || last_numeric_) line_ += ' ';
    line_ += s;
    started_ = true;
    last_numeric_ = false;
    return *this;
}

FreeRecord& FreeRecord::integer(long long v) {
    line_ += format_i(v, 12);
    started_ = true;
    last_numeric_ = true;
    return *this;
}

FreeRecord& FreeRecord::operator<<(double v) {
    // As gfortran writes a default real: nine significant digits, in F form
    // from 0.1 up to 1e9, in E form outside; 17 columns.
    float f = static_cast<float>(v);
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, std::fabs(f), std::chars_format::scientific, 8);
    std::string sci(buf, r.ptr);                       // d.dddddddde+XX
    int exponent = std::atoi(sci.c_str() + sci.find('e') + 1);
    std::string body;
    if (f == 0.0f) {
        body = "0.00000000    ";
    } else if (exponent >= -1 && exponent < 9) {
        body = fixed_digits(std::fabs(static_cast<double>(f)), 8 - exponent) + "    ";
    } else {
        std::string mant = sci.substr(0, sci.find('e'));
        body = mant + "E" + (exponent < 0 ? "-" : "+") + (std::abs(exponent) < 10 ? "0" : "") +
               std::to_string(std::abs(exponent));
    }
    line_ += std::string("  ") + (std::signbit(f) ? "-" : " ") + body;
    started_ = true;
    last_numeric_ = true;
    return *this;
}

std::size_t trimmed_length(std::string_view s) { return trim_right(s).size(); }

std::string_view trim_right(std::string_view s) {
    while (!s.empty() && is_blank(s.back())) s.remove_suffix(1);
    return s;
}

std::string_view trim(std::string_view s) {
    s = trim_right(s);
    while (!s.empty() && is_blank(s.front())) s.remove_prefix(1);
    return s;
}

std::string sanitise_text(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (static_cast<unsigned char>(c) < 32) c = ' ';
    return out;
}

std::string upper_case(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    return out;
}

std::string lower_case(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return out;
}

bool equals_nocase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && lower_case(a) == lower_case(b);
}

bool starts_with_nocase(std::string_view s, std::string_view prefix) {
    return s.size() >= prefix.size() && equals_nocase(s.substr(0, prefix.size()), prefix);
}

std::string column_field(std::string_view line, int first, int width) {
    std::string out(static_cast<std::size_t>(std::max(width, 0)), ' ');
    for (int k = 0; k < width; ++k) {
        std::size_t at = static_cast<std::size_t>(first - 1 + k);
        if (first >= 1 && at < line.size()) out[static_cast<std::size_t>(k)] = line[at];
    }
    return out;
}

std::vector<std::string_view> split_words(std::string_view line) {
    std::vector<std::string_view> out;
    auto blank = [](char c) { return c == ' ' || c == '\t'; };
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && blank(line[i])) ++i;
        const std::size_t start = i;
        while (i < line.size() && !blank(line[i])) ++i;
        if (i > start) out.push_back(line.substr(start, i - start));
    }
    return out;
}

int count_words(std::string_view line) {
    int words = 0;
    char prev = ' ';
    for (char c : line) {
        if (prev == ' ' && static_cast<unsigned char>(c) > ',') ++words;
        prev = c;
    }
    return words;
}

}  // namespace zentol::text
