/// @file TestSeed.h
/// Random tests print their seed, and take it back through the environment: QMX_TEST_SEED=123.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

/// A generator whose seed stands in the message of every failure within the scope of the object.
class TestRandom
{
public:
    TestRandom()
        : m_seed(Seed()), m_engine(m_seed), m_trace(__FILE__, __LINE__, "QMX_TEST_SEED=" + std::to_string(m_seed))
    {
    }

    /// Evenly distributed over least..most, both included.
    std::uint32_t Between(std::uint32_t least, std::uint32_t most)
    {
        return std::uniform_int_distribution<std::uint32_t>(least, most)(m_engine);
    }
    std::uint8_t Byte() { return static_cast<std::uint8_t>(m_engine()); }

private:
    static std::uint32_t Seed()
    {
        const char* const pText = std::getenv("QMX_TEST_SEED");
        return pText ? static_cast<std::uint32_t>(std::strtoul(pText, nullptr, 10)) : std::random_device()();
    }

    std::uint32_t m_seed;
    std::mt19937 m_engine;
    testing::ScopedTrace m_trace;
};
