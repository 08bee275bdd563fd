#include "engines/queue_file.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

using namespace zentol;
using namespace zentol::testing;

TEST(QueueFile, FolderBesideScratchAndOneRecordAJob) {
    EXPECT_EQ(queue_directory("/home/ann/zentol/scratch", "orca"), "/home/ann/zentol/orca");
    EXPECT_EQ(queue_directory("/home/ann/zentol/scratch/", "firefly"), "/home/ann/zentol/firefly");

    TempDir dir;
    std::string queue = dir / "orca/qorca.txt";
    EXPECT_EQ(add_to_queue(queue, "/Jobs/water.ino"), 1);
    EXPECT_EQ(add_to_queue(queue, "/JOBS/WATER.INO"), 0);    // the same job in other capitals
    EXPECT_EQ(add_to_queue(queue, "/Jobs/water.inx"), 0);    // the last character is not compared
    EXPECT_EQ(add_to_queue(queue, "/Jobs/water2.ino"), 1);
    EXPECT_EQ(read_file(queue), "/Jobs/water.ino\n/Jobs/water2.ino\n");
}
