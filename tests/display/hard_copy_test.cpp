// The hard copy in its formats and sizes.
#include "display/hard_copy.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

namespace {

int le16(const std::string& s, std::size_t at) {
    return static_cast<unsigned char>(s[at]) | (static_cast<unsigned char>(s[at + 1]) << 8);
}

}  // namespace

TEST(HardCopy, WritesThePictureOfTheChosenFormatAndSize) {
    TestSession t;
    t.s.job.name = "pic";
    t.s.palette.r[1] = 1.0f;   // a red background
    t.s.flags.hardcopy_counter = 99;
    t.tk.load_script("dialog 112 ok 1053=1\ndialog 113 ok 1061=1\n"
                     "dialog 112 ok 1021=mine 1051=1\ndialog 113 ok\n");
    hard_copy(t.s);
    std::string pcx = read_file("pic_99.pcx");
    ASSERT_GT(pcx.size(), 128u);
    EXPECT_EQ(pcx[0], 0x0a);
    EXPECT_EQ(le16(pcx, 8) + 1, 640);
    EXPECT_EQ(le16(pcx, 10) + 1, 480);
    EXPECT_EQ(pcx[65], 3);
    EXPECT_EQ(static_cast<unsigned char>(pcx[128]), 0xc0 | 63);   // runs of the red plane
    EXPECT_EQ(static_cast<unsigned char>(pcx[129]), 255);
    EXPECT_EQ(t.s.flags.hardcopy_counter, 99);                     // the 100th keeps 99

    hard_copy(t.s);   // an edited name, BMP, the default 1280 by 960
    std::string bmp = read_file("mine.bmp");
    ASSERT_GT(bmp.size(), 54u);
    EXPECT_EQ(bmp.substr(0, 2), "BM");
    EXPECT_EQ(le16(bmp, 18), 1280);
    EXPECT_EQ(le16(bmp, 22), 960);
    EXPECT_EQ(bmp.size(), 54u + 1280u * 960u * 3u);

    t.tk.load_script("dialog 112 cancel\n");
    hard_copy(t.s);   // cancelled: nothing written, no complaint
    EXPECT_TRUE(t.tk.message_boxes().empty());
    EXPECT_EQ(resolution_factor(4), 6);   // 3840 by 2880, whatever the button says
}
