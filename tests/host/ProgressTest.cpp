#include "host/output/Progress.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
TEST(Progress, TheTerminalLineTellsSpeedAndTimeLeft)
{
    EXPECT_EQ(Progress::Line(ProgressMode::Terminal, 90, 360, 1.0), "90 of 360 frames, 25 %, 90.0 frames/s, 3 s left");
    EXPECT_EQ(Progress::Line(ProgressMode::Terminal, 10, 2000, 1.0),
              "10 of 2000 frames, 0 %, 10.0 frames/s, 3:19 left");
    EXPECT_EQ(Progress::Line(ProgressMode::Terminal, 1, 4001, 1.0),
              "1 of 4001 frames, 0 %, 1.0 frames/s, 1:06:40 left");
    EXPECT_EQ(Progress::Line(ProgressMode::Terminal, 360, 360, 4.0),
              "360 of 360 frames, 100 %, 90.0 frames/s, 0 s left");
}

TEST(Progress, TheJsonLineIsAnObjectOfNumbers)
{
    EXPECT_EQ(Progress::Line(ProgressMode::Json, 12, 360, 0.5),
              R"({"frame":12,"frames":360,"fps":24.0,"secondsLeft":14.5})");
}

TEST(Progress, WithoutTimeOrFramesThereIsNoDivisionByZero)
{
    EXPECT_EQ(Progress::Line(ProgressMode::Json, 0, 360, 0.0),
              R"({"frame":0,"frames":360,"fps":0.0,"secondsLeft":0.0})");
    EXPECT_EQ(Progress::Line(ProgressMode::Terminal, 0, 0, 0.0), "0 of 0 frames, 100 %, 0.0 frames/s, 0 s left");
}
} // namespace
} // namespace qmx::host
