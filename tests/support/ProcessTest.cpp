#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <vector>

using namespace test_support;

namespace
{
constexpr std::uint64_t kMiB = 1024 * 1024;

void HangInAStep()
{
    Watchdog watchdog(std::chrono::seconds(1));
    watchdog.Step("the step that hangs");
    const std::atomic<bool> never{false};
    never.wait(false);
}

void CrashInAStep()
{
    Watchdog watchdog(std::chrono::seconds(60));
    watchdog.Step("the step that crashes");
    std::abort();
}
} // namespace

TEST(ResidentBytes, GrowsWithMemoryThatIsTouched)
{
    const std::uint64_t before = ResidentBytes();
    const std::vector<std::uint8_t> block(64 * kMiB, 1);
    EXPECT_GE(ResidentBytes(), before + 60 * kMiB);
    EXPECT_EQ(block.back(), 1);
}

TEST(PeakResidentBytes, RemembersMemoryThatWasGivenBack)
{
    ResetPeakResidentBytes();
    const std::uint64_t before = PeakResidentBytes();
    {
        const std::vector<std::uint8_t> block(64 * kMiB, 1);
        EXPECT_EQ(block.back(), 1);
    }
    EXPECT_GE(PeakResidentBytes(), before + 50 * kMiB);
}

TEST(WatchdogDeathTest, EndsAProcessThatHangsAndNamesTheStep)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(HangInAStep(), "took longer than its limit");
}

TEST(WatchdogDeathTest, NamesTheStepOfACrash)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(CrashInAStep(), "during the step: the step that crashes");
}
