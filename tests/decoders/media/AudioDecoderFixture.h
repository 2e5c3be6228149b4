/// @file AudioDecoderFixture.h
/// What the tests of the sound decoder and of clips with sound share.
#pragma once

#include "engine/decoders/media/AudioDecoder.h"
#include "tests/decoders/media/FakeMedia.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

/// Looks into a decoder.
struct AudioDecoderProbe
{
    static bool IsOpen(const CAudioDecoder& d) { return d.m_pReader != nullptr; }
    static std::size_t Pending(const CAudioDecoder& d) { return d.m_vecPending.size(); }
    static std::uint32_t Rate(const CAudioDecoder& d) { return d.m_nSamplesPerSec; }
    static std::uint32_t Channels(const CAudioDecoder& d) { return d.m_nChannels; }
    static std::uint32_t Bits(const CAudioDecoder& d) { return d.m_nBitsPerSample; }
    static std::uint32_t BytesPerSecond(const CAudioDecoder& d) { return d.m_nAvgBytesPerSec; }
};

/// A scripted file, fake.mp3. When a test is over, every object has died and every lock is undone.
class SoundFixture : public testing::Test
{
protected:
    SoundFixture() { CFakeSystem::Install(L"fake.mp3", &media); }
    ~SoundFixture() override
    {
        CFakeSystem::Install(L"fake.mp3", nullptr);
        CFakeSystem::FailingFunctions().clear();
    }
    void TearDown() override
    {
        EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        EXPECT_EQ(CFakeSystem::OpenLocks(), 0);
    }

    /// Bytes @p first, @p first + 1, … of the scripted stream.
    static std::vector<std::uint8_t> Bytes(std::size_t first, std::size_t count)
    {
        std::vector<std::uint8_t> bytes(count);
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] = FakeByte(first + i);
        return bytes;
    }

    FakeMedia media;
};

constexpr std::uint32_t kBlock = 1'920;       // bytes: 10 ms
constexpr std::uint64_t kBlockTime = 100'000; // the same in 100 ns
