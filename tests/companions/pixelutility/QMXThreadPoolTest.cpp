#include "engine/platform/PixelUtility.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

namespace
{
/// Counts how often each band runs.
struct Counter
{
    explicit Counter(std::uint32_t count) : calls(count) {}

    static void Band(void* pContext, std::uint32_t index)
    {
        static_cast<Counter*>(pContext)->calls.at(index).fetch_add(1);
    }
    bool EachOnce() const
    {
        for (const std::atomic<int>& n : calls)
            if (n != 1)
                return false;
        return true;
    }

    std::vector<std::atomic<int>> calls;
};

TEST(CQMXThreadPool, RunsEveryBandOnce)
{
    for (const std::uint32_t threads : {0U, 1U, 3U, 8U})
    {
        CQMXThreadPool pool(threads);
        for (const std::uint32_t count : {0U, 1U, 2U, 7U, 100U})
        {
            Counter counter(count);
            pool.Run(&Counter::Band, &counter, count);
            EXPECT_TRUE(counter.EachOnce()) << threads << " threads, " << count << " bands";
        }
    }
}

TEST(CQMXThreadPool, CountsTheCallingThread)
{
    EXPECT_EQ(CQMXThreadPool(3).GetConcurrency(), 4U);
    EXPECT_EQ(CQMXThreadPool(0).GetConcurrency(), std::max(std::thread::hardware_concurrency(), 1U));
}

TEST(CQMXThreadPool, WorksAtTheSameTime)
{
    // Every band waits for all the others: this ends only when four threads are at work.
    struct Meeting
    {
        std::mutex lock;
        std::condition_variable arrival;
        int arrived = 0;
    } meeting;
    CQMXThreadPool pool(3);
    pool.Run(
        [](void* pContext, std::uint32_t)
        {
            Meeting& m = *static_cast<Meeting*>(pContext);
            std::unique_lock held(m.lock);
            ++m.arrived;
            m.arrival.notify_all();
            m.arrival.wait(held, [&m] { return m.arrived == 4; });
        },
        &meeting, 4);
    EXPECT_EQ(meeting.arrived, 4);
}

TEST(CQMXThreadPool, MakesWhatTheBandsWroteVisible)
{
    CQMXThreadPool pool(3);
    std::vector<std::uint64_t> values(1'000);
    for (std::uint64_t round = 1; round <= 50; ++round)
    {
        struct Context
        {
            std::vector<std::uint64_t>& values;
            std::uint64_t round;
        } context{values, round};
        pool.Run(
            [](void* pContext, std::uint32_t index)
            {
                const Context& c = *static_cast<const Context*>(pContext);
                c.values[index] = c.round * index;
            },
            &context, 1'000);
        ASSERT_EQ(std::accumulate(values.begin(), values.end(), std::uint64_t{0}), round * 999 * 500);
    }
}

TEST(CQMXThreadPool, ServesSeveralCallersAndBandsThatCallItAgain)
{
    CQMXThreadPool pool(2);
    struct Nested
    {
        CQMXThreadPool& pool;
        std::atomic<int> inner = 0;
    };
    std::vector<std::thread> callers;
    std::atomic<int> errors = 0;
    for (int i = 0; i < 4; ++i)
    {
        callers.emplace_back(
            [&]
            {
                for (int round = 0; round < 50; ++round)
                {
                    Nested nested{pool};
                    pool.Run(
                        [](void* pContext, std::uint32_t)
                        {
                            Nested& n = *static_cast<Nested*>(pContext);
                            n.pool.Run([](void* pInner, std::uint32_t)
                                       { static_cast<Nested*>(pInner)->inner.fetch_add(1); },
                                       &n, 3);
                        },
                        &nested, 5);
                    errors += nested.inner != 15;
                }
            });
    }
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(errors, 0);
}

TEST(CQMXThreadPool, EndsWithoutHavingWorked)
{
    for (int i = 0; i < 20; ++i)
        const CQMXThreadPool pool(4);
}
} // namespace
