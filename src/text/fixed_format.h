// Fortran-style fixed-column output and list-directed input.
// Every line the program writes or parses by columns goes through here, so
// numbers look the same whatever the process locale is.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zentol::text {

// Fw.d as gfortran writes it: right-aligned, rounded to d decimals, the
// leading zero of |v| < 1 dropped when the field is too narrow for it, a
// negative value that rounds to zero keeps its sign, and w asterisks when the
// number does not fit.
std::string format_f(double value, int w, int d);

// ESw.d as gfortran writes it: one digit before the point, d after, an
// upper-case E and a signed exponent of two digits at least
// (" 1.23456E-05" for ES13.5); right-aligned, w asterisks when it does not
// fit or is not a number.
std::string format_es(double value, int w, int d);

// Iw: right-aligned whole number, w asterisks on overflow.
std::string format_i(long long value, int w);

// Aw: a text cut to its first w characters, or right-aligned in w columns
// when shorter (Fortran pads on the left).
std::string format_a(std::string_view s, int w);

// Text left-aligned and padded with blanks to exactly w columns (labels).
std::string pad_right(std::string_view s, int w);

// nX: n blanks.
std::string blanks(int n);

// Fw.d input of one fixed field: blanks are ignored, an all-blank field is
// 0, D exponents are read as E, a field without a decimal point takes d
// implied decimals. Returns nullopt when the field is not a number.
std::optional<double> read_f(std::string_view field, int d = 0);

// Iw input of one fixed field: blanks around the number ignored, an
// all-blank field is 0. Returns nullopt when the field is not a whole number.
std::optional<long long> read_i(std::string_view field);

// List-directed (free-format) reading: values separated by blanks or commas,
// "r*value" repeats, a slash ends the record, D exponents accepted.
// Reads at most max_values values; returns how many were read, or nullopt if
// a value that was needed is not a number.
std::optional<std::vector<double>> read_reals(std::string_view line, int max_values);
std::optional<std::vector<long long>> read_ints(std::string_view line, int max_values);

// One list-directed record as gfortran writes it: a string item first gives
// the record its leading blank, strings follow as they stand, whole numbers
// take 12 columns right-aligned, reals a general form with 8 significant
// digits.
class FreeRecord {
public:
    FreeRecord& operator<<(std::string_view s);
    FreeRecord& operator<<(const char* s) { return *this << std::string_view(s); }
    FreeRecord& operator<<(const std::string& s) { return *this << std::string_view(s); }
    FreeRecord& operator<<(int v) { return integer(v); }
    FreeRecord& operator<<(long long v) { return integer(v); }
    FreeRecord& operator<<(double v);
    FreeRecord& operator<<(float v) { return *this << static_cast<double>(v); }
    const std::string& str() const { return line_; }

private:
    FreeRecord& integer(long long v);
    std::string line_;
    bool started_ = false;
    bool last_numeric_ = false;
};

// Length without trailing blanks, and the trimmed text itself.
std::size_t trimmed_length(std::string_view s);
std::string_view trim_right(std::string_view s);
std::string_view trim(std::string_view s);

// The blank-separated words of a line (blanks and tabs), as views into it.
std::vector<std::string_view> split_words(std::string_view line);

// Words as the general word count sees them: a word starts where a
// character above ',' follows a blank (or the line's start).
int count_words(std::string_view line);

// Every byte below 32 replaced by a blank.
std::string sanitise_text(std::string_view s);

// ASCII letters only.
std::string upper_case(std::string_view s);
std::string lower_case(std::string_view s);
bool starts_with_nocase(std::string_view s, std::string_view prefix);
bool equals_nocase(std::string_view a, std::string_view b);

// A fixed field [first, first+width) of a line, 1-based columns; columns past
// the line's end read as blanks.
std::string column_field(std::string_view line, int first, int width);

}  // namespace zentol::text
