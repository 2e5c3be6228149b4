#include "host/output/WaveFile.h"

#include "host/HostError.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace qmx::host
{
namespace
{
std::string Content(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}
} // namespace

TEST(WaveFile, HoldsAHeaderAndTheSamples)
{
    const test_support::TemporaryFolder folder;
    const std::filesystem::path path = folder.Path() / "a.wav";
    {
        WaveFile file(path, 3);
        const float samples[] = {0, 0.5F, -0.5F, 1, -1, 1.0F / 32'768};
        file.Write(samples, 2);
        EXPECT_FALSE(std::filesystem::exists(path));
        file.Write(samples + 4, 1);
        file.Finish();
    }
    const unsigned char expected[] = {'R',  'I',  'F',  'F',  48,   0,    0,    0,    'W', 'A', 'V',
                                      'E',  'f',  'm',  't',  ' ',  16,   0,    0,    0,   1,   0, // PCM
                                      2,    0,                                                     // channels
                                      0x80, 0xBB, 0,    0,                                         // 48,000 samples …
                                      0x00, 0xEE, 2,    0,                            // … and 192,000 bytes a second
                                      4,    0,    16,   0,                            // block, bits
                                      'd',  'a',  't',  'a',  12,   0,    0,    0,    //
                                      0,    0,    0x00, 0x40, 0x00, 0xC0, 0xFF, 0x7F, // full scale is cut by one level
                                      0x00, 0x80, 0x01, 0x00};
    EXPECT_EQ(Content(path), std::string(reinterpret_cast<const char*>(expected), sizeof expected));
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(WaveFile, WhatLiesBeyondFullScaleIsCut)
{
    const test_support::TemporaryFolder folder;
    const std::filesystem::path path = folder.Path() / "a.wav";
    WaveFile file(path, 1);
    const float samples[] = {7, -7};
    file.Write(samples, 1);
    file.Finish();
    EXPECT_EQ(Content(path).substr(44), std::string("\xFF\x7F\x00\x80", 4));
}

TEST(WaveFile, NothingIsLeftOfAFileThatIsNotFinished)
{
    const test_support::TemporaryFolder folder;
    {
        WaveFile file(folder.Path() / "a.wav", 1);
    }
    EXPECT_EQ(folder.FileCount(), 0U);
}

TEST(WaveFile, RefusesWhatTheFormatCannotHold)
{
    const test_support::TemporaryFolder folder;
    try
    {
        const WaveFile file(folder.Path() / "a.wav", std::uint64_t{48'000} * 3'600 * 7);
        FAIL() << "made";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Output);
    }
    EXPECT_EQ(folder.FileCount(), 0U);
    EXPECT_THROW(WaveFile(folder.Path() / "none" / "a.wav", 1), HostError);
}
} // namespace qmx::host
