/// @file Random.h
/// Random numbers whose seed a failing test tells.
#pragma once

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string_view>

namespace test_support
{
/// Prints its seed as the test's property and, when the test has failed, on standard output. QMX_TEST_SEED in the
/// environment brings a run back.
class Random
{
public:
    Random() : m_seed(ChooseSeed()), m_engine(m_seed) { testing::Test::RecordProperty("seed", std::to_string(m_seed)); }
    ~Random()
    {
        if (testing::Test::HasFailure())
            GTEST_LOG_(INFO) << "this run again: QMX_TEST_SEED=" << m_seed;
    }
    Random(const Random&) = delete;
    Random& operator=(const Random&) = delete;

    std::uint64_t Seed() const { return m_seed; }
    /// Evenly spread over 0 .. @p bound - 1; @p bound > 0.
    std::uint64_t Below(std::uint64_t bound)
    {
        return std::uniform_int_distribution<std::uint64_t>(0, bound - 1)(m_engine);
    }

private:
    static std::uint64_t ChooseSeed()
    {
        std::uint64_t seed = 0;
        const char* const text = std::getenv("QMX_TEST_SEED");
        const std::string_view given = text ? text : "";
        if (!given.empty() && std::from_chars(given.data(), given.data() + given.size(), seed).ec == std::errc())
            return seed;
        return std::random_device{}();
    }

    std::uint64_t m_seed;
    std::mt19937_64 m_engine;
};
} // namespace test_support
