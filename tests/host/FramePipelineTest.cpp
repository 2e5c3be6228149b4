#include "host/output/FramePipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace qmx::host
{
namespace
{
void Mark(Canvas& canvas, std::uint64_t index)
{
    std::memcpy(canvas.Row(0), &index, sizeof index);
}

std::uint64_t MarkOf(const Canvas& canvas)
{
    std::uint64_t index = 0;
    std::memcpy(&index, canvas.Row(0), sizeof index);
    return index;
}

TEST(FramePipeline, EveryFrameArrivesOnceAndInOrder)
{
    for (const std::size_t depth : {1U, 2U, 3U})
    {
        std::vector<std::uint64_t> used;
        FramePipeline(2, 1, depth)
            .Run(
                100, 600, [](std::uint64_t index, Canvas& canvas) { Mark(canvas, index); },
                [&](std::uint64_t index, Canvas& canvas)
                {
                    EXPECT_EQ(MarkOf(canvas), index);
                    used.push_back(index);
                });
        ASSERT_EQ(used.size(), 500U);
        EXPECT_EQ(used.front(), 100U);
        EXPECT_TRUE(std::is_sorted(used.begin(), used.end()));
    }
}

TEST(FramePipeline, NothingToDoEndsAtOnce)
{
    const auto never = [](std::uint64_t, Canvas&) { FAIL(); };
    FramePipeline(2, 1, 3).Run(7, 7, never, never);
}

TEST(FramePipeline, TheMakerWorksWhileTheUserDoes)
{
    std::mutex lock;
    std::condition_variable changed;
    std::uint64_t made = 0;
    // The user of frame 0 returns only when frame 1 has been made meanwhile.
    FramePipeline(2, 1, 2).Run(
        0, 4,
        [&](std::uint64_t index, Canvas&)
        {
            const std::lock_guard guard(lock);
            made = index + 1;
            changed.notify_all();
        },
        [&](std::uint64_t index, Canvas&)
        {
            std::unique_lock guard(lock);
            changed.wait(guard, [&] { return made >= std::min<std::uint64_t>(4, index + 2); });
        });
    EXPECT_EQ(made, 4U);
}

TEST(FramePipeline, TheMakerStaysNoFurtherAheadThanThereAreCanvases)
{
    std::atomic<std::uint64_t> used = 0;
    std::uint64_t furthest = 0;
    FramePipeline(2, 1, 3).Run(
        0, 200, [&](std::uint64_t index, Canvas&) { furthest = std::max(furthest, index - used.load()); },
        [&](std::uint64_t index, Canvas&) { used = index; });
    EXPECT_LE(furthest, 3U); // the counter lags by the one frame that is in use
}

TEST(FramePipeline, AFailureOfTheMakerEndsTheUserAndComesOut)
{
    std::uint64_t used = 0;
    const auto run = [&]
    {
        FramePipeline(2, 1, 3).Run(
            0, 100,
            [](std::uint64_t index, Canvas&)
            {
                if (index == 5)
                    throw std::runtime_error("maker");
            },
            [&](std::uint64_t, Canvas&) { ++used; });
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_LE(used, 5U);
}

TEST(FramePipeline, AFailureOfTheUserEndsTheMakerAndComesOut)
{
    std::uint64_t made = 0;
    const auto run = [&]
    {
        FramePipeline(2, 1, 3).Run(
            0, 1'000'000, [&](std::uint64_t, Canvas&) { ++made; },
            [](std::uint64_t index, Canvas&)
            {
                if (index == 5)
                    throw std::runtime_error("user");
            });
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_LE(made, 9U);
}

TEST(FramePipeline, CanRunAgainAfterAFailure)
{
    FramePipeline pipeline(2, 1, 2);
    const auto fail = [](std::uint64_t, Canvas&) { throw std::runtime_error("x"); };
    EXPECT_THROW(pipeline.Run(0, 3, fail, fail), std::runtime_error);
    std::uint64_t used = 0;
    pipeline.Run(
        3, 9, [](std::uint64_t, Canvas&) {}, [&](std::uint64_t, Canvas&) { ++used; });
    EXPECT_EQ(used, 6U);
}
} // namespace
} // namespace qmx::host
