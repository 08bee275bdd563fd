#include "text/text_lines.h"

#include <gtest/gtest.h>

using zentol::text::TextLines;

TEST(TextLines, LineEndsOfEveryEngineReadAlike) {
    std::vector<std::string> want{"  ORCA", "", "  END"};
    EXPECT_EQ(TextLines::from_bytes("  ORCA\n\n  END\n").strings(), want);
    EXPECT_EQ(TextLines::from_bytes("  ORCA\r\n\r\n  END\r\n").strings(), want);
    EXPECT_EQ(TextLines::from_bytes("  ORCA\r\r\n\r\r\n  END").strings(), want);   // CR CR LF, no final end
    EXPECT_TRUE(TextLines::from_bytes("").empty());
}

TEST(TextLines, ByteOrderMarksAreDecoded) {
    EXPECT_EQ(TextLines::from_bytes("\xEF\xBB\xBF" "A 1\nB").strings(), (std::vector<std::string>{"A 1", "B"}));
    // "H2\r\n" and an a-umlaut in UTF-16 LE and BE.
    std::string le("\xFF\xFE" "H\0" "2\0" "\r\0" "\n\0" "\xE4\0", 12);
    std::string be("\xFE\xFF" "\0H" "\0" "2" "\0\r" "\0\n" "\0\xE4", 12);
    std::vector<std::string> want{"H2", "\xC3\xA4"};
    EXPECT_EQ(TextLines::from_bytes(le).strings(), want);
    EXPECT_EQ(TextLines::from_bytes(be).strings(), want);
    // A surrogate pair, then a lone low surrogate and an odd last byte.
    std::string pair("\xFF\xFE" "\x3D\xD8\x00\xDE" "\x00\xDC" "x", 9);
    EXPECT_EQ(TextLines::from_bytes(pair)[0], "\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

TEST(TextLines, CopiesAndMovesKeepTheirLines) {
    TextLines a = TextLines::from_lines({"ab", "c"});   // short enough for a string's own storage
    TextLines b = a;
    TextLines c = std::move(a);
    EXPECT_EQ(b[0], "ab");
    EXPECT_EQ(c[1], "c");
    EXPECT_EQ(c.text(), "ab\nc\n");
}
