// Golden strings below were printed by gfortran on this machine.
#include "text/fixed_format.h"

#include <gtest/gtest.h>

using namespace zentol::text;

TEST(FixedFormat, RealFieldsAsGfortranWritesThem) {
    EXPECT_EQ(format_f(-0.123, 5, 3), "-.123");     // no room for the leading zero
    EXPECT_EQ(format_f(-0.0001, 6, 3), "-0.000");   // a negative value keeps its sign
    EXPECT_EQ(format_f(99.96, 4, 1), "****");       // rounding makes it too wide
    EXPECT_EQ(format_f(1.0 / 0.0, 4, 1), "****");
    // Ties go to even on the binary value, as gfortran rounds.
    EXPECT_EQ(format_f(0.125, 4, 2), "0.12");
    EXPECT_EQ(format_f(2.5, 3, 0), " 2.");
    EXPECT_EQ(format_f(-0.05f, 5, 1), " -0.1");
    // ES, as Gaussian cube files carry their values.
    EXPECT_EQ(format_es(1.23456e-5, 13, 5), "  1.23456E-05");
    EXPECT_EQ(format_es(0.0, 13, 5), "  0.00000E+00");
    EXPECT_EQ(format_es(2.5e123, 13, 5), " 2.50000E+123");
    EXPECT_EQ(format_es(-2.5e-123, 12, 5), "************");
}

TEST(FixedFormat, WholeNumbersAndTextFields) {
    EXPECT_EQ(format_i(-10, 3), "-10");
    EXPECT_EQ(format_i(-10, 2), "**");
    EXPECT_EQ(format_a("ab", 4), "  ab");           // Fortran pads text on the left
    EXPECT_EQ(format_a("abcdef", 4), "abcd");
    EXPECT_EQ(column_field("abc", 2, 4), "bc  ");
    EXPECT_EQ(column_field("abc", 9, 2), "  ");
}

TEST(FixedFormat, FixedFieldInput) {
    EXPECT_DOUBLE_EQ(*read_f("      "), 0.0);
    EXPECT_DOUBLE_EQ(*read_f(" 1.5D-3"), 1.5e-3);
    EXPECT_DOUBLE_EQ(*read_f("1.5-3"), 1.5e-3);
    EXPECT_DOUBLE_EQ(*read_f("12345", 3), 12.345);  // implied decimals without a point
    EXPECT_DOUBLE_EQ(*read_f(" 1 2. 5"), 12.5);     // blanks count for nothing
    EXPECT_FALSE(read_f("1.5e"));
    EXPECT_FALSE(read_f("--1"));
    EXPECT_FALSE(read_f("1e999"));
    EXPECT_EQ(*read_i("  -7 "), -7);
    EXPECT_FALSE(read_i("1.5"));
    EXPECT_FALSE(read_i("99999999999999999999"));
}

TEST(FixedFormat, ListDirectedInput) {
    EXPECT_EQ(*read_ints("6,2 , 3", 9), (std::vector<long long>{6, 2, 3}));
    EXPECT_EQ(*read_ints("3*7 1", 9), (std::vector<long long>{7, 7, 7, 1}));
    EXPECT_EQ(*read_ints("1 2 / 3", 9), (std::vector<long long>{1, 2}));
    EXPECT_EQ(*read_ints("1 2 junk", 2), (std::vector<long long>{1, 2}));   // not needed, not read
    EXPECT_FALSE(read_ints("1 2.5", 2));
    EXPECT_EQ(*read_ints("1,,3", 3), (std::vector<long long>{1, 3}));       // a null value
    EXPECT_EQ(*read_reals(" -0.125D0\t2.5E-1", 5), (std::vector<double>{-0.125, 0.25}));
}

// Repeat counts in damaged files: a count far beyond the values wanted is
// read as the values wanted, at once (a null value repeated 2e17 times
// hung the reader), and counts never add up past the largest number.
TEST(FixedFormat, HugeRepeatCountsOfDamagedLinesReadAtOnce) {
    EXPECT_TRUE(read_ints("\r\r\r\r\r222222222222222222*", 1)->empty());
    EXPECT_EQ(*read_ints("1 9223372036854775807*5", 3), (std::vector<long long>{1, 5, 5}));
    EXPECT_EQ(*read_reals("99999999999*0.5, 2*", 4), (std::vector<double>{0.5, 0.5, 0.5, 0.5}));
}

TEST(FixedFormat, FreeRecordsAsGfortranListsThem) {
    EXPECT_EQ((FreeRecord() << "E=" << 1.5 << "x" << 3).str(), " E=   1.50000000     x           3");
    EXPECT_EQ((FreeRecord() << 123456.7).str(), "   123456.703    ");
    EXPECT_EQ((FreeRecord() << 1.0e9).str(), "   1.00000000E+09");
}

// Titles go into fixed columns: tabs and control bytes go, UTF-8 stays.
TEST(FixedFormat, SanitisedText) {
    EXPECT_EQ(sanitise_text(std::string("a\tb\x01\xc3\xa9")), std::string("a b \xc3\xa9"));
}
