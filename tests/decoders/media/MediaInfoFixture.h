/// @file MediaInfoFixture.h
/// What the tests of the media information queries share.
#pragma once

#include "engine/decoders/media/MediaInfo.h"
#include "tests/decoders/media/FakeMedia.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

/// 100 ns since 1601.
inline std::uint64_t Ticks(const FILETIME& time)
{
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

/// Seconds that local time is ahead of UTC now.
inline std::int64_t OffsetNow()
{
    const std::time_t now = std::time(nullptr);
    const auto seconds = [](const std::tm& time)
    {
        std::int64_t days = time.tm_yday;
        for (int year = 70; year < time.tm_year; ++year)
            days += year % 4 == 0 && year != 200 ? 366 : 365;
        return ((days * 24 + time.tm_hour) * 60 + time.tm_min) * 60 + time.tm_sec;
    };
    const std::int64_t local = seconds(*std::localtime(&now));
    return local - seconds(*std::gmtime(&now));
}

/// A scripted media file that lies on the disk as well, as far as its date is concerned. When a test is over, every
/// object has died and the file is closed.
class MediaInfoTest : public testing::Test
{
protected:
    static constexpr std::int64_t kEpoch = 11'644'473'600; ///< seconds from 1601 to 1970
    static constexpr std::int64_t kWritten = 979'562'096;  ///< 15 January 2001, 12:34:56 UTC, seconds from 1970
    static constexpr std::uint64_t kRecorded = 0x1D0123456789ABCULL; ///< in January 2015

    MediaInfoTest() { CFakeSystem::Install(Path(), &media); }
    ~MediaInfoTest() override
    {
        CFakeSystem::Install(Path(), nullptr);
        CFakeSystem::FailingFunctions().clear();
        CFakeSystem::HasDevice() = false;
    }
    void SetUp() override { WriteFile(); }
    void TearDown() override
    {
        ExpectNothingOpen();
        std::error_code error;
        std::filesystem::remove(m_file, error); // an open file cannot be removed on Windows
        EXPECT_FALSE(std::filesystem::exists(m_file));
    }
    static void ExpectNothingOpen()
    {
        EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        EXPECT_EQ(CFakeSystem::LiveSources(), 0);
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        EXPECT_EQ(CFakeSystem::LiveDevices(), 0);
    }

    std::wstring Path() const { return m_file.wstring(); }
    void WriteFile(std::int64_t written = kWritten) const
    {
        std::ofstream(m_file) << "not looked at";
        const std::chrono::sys_seconds moment{std::chrono::seconds(written)};
        std::filesystem::last_write_time(m_file, std::chrono::file_clock::from_sys(moment));
    }
    void RemoveFile() const { std::filesystem::remove(m_file); }
    /// The file's date as the queries tell it.
    static std::uint64_t LocalDate(std::int64_t written = kWritten)
    {
        return static_cast<std::uint64_t>((written + kEpoch + OffsetNow()) * 10'000'000);
    }

    FakeMedia media;

private:
    test_support::TemporaryFolder m_folder;
    const std::filesystem::path m_file = m_folder.Path() / "fake.mp3";
};
