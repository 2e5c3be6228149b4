/// @file MediaInfoTest.cpp
/// The information queries on real files, whose dates are written into their bytes here.
#include "engine/decoders/media/MediaInfo.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/TinyMatroska.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>

using namespace test_support;

namespace
{
constexpr std::int64_t k1904 = 9'561'628'800;     ///< seconds from 1601 to 1904
constexpr std::int64_t k1970 = 11'644'473'600;    ///< seconds from 1601 to 1970
constexpr std::int64_t kWritten = 979'562'096;    ///< 15 January 2001, 12:34:56 UTC, from 1970
constexpr std::int64_t kAhead = 19'800;           ///< the tests' time zone, seconds before UTC
constexpr std::int64_t kRecorded = 3'414'719'345; ///< 16 March 2012, 7:42:25 UTC, from 1904

std::uint64_t Ticks(const FILETIME& time)
{
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

std::string Contents(const std::filesystem::path& path)
{
    std::ifstream input(path, std::ios::binary);
    std::ostringstream content;
    content << input.rdbuf();
    return content.str();
}

/// Files in a time zone that is half past five ahead of UTC all year.
class MediaInfo : public testing::Test
{
protected:
    MediaInfo()
    {
        if (const char* const pOld = std::getenv("TZ"))
            m_oldZone = pOld;
        setenv("TZ", "XYZ-5:30", 1);
    }
    ~MediaInfo() override { m_oldZone.empty() ? unsetenv("TZ") : setenv("TZ", m_oldZone.c_str(), 1); }

    /// @param name  decides how the file is read
    void Write(const std::string& name, const std::string& bytes)
    {
        m_path = ScratchFolder() / name;
        std::ofstream(m_path, std::ios::binary | std::ios::trunc) << bytes;
        const std::chrono::sys_seconds moment{std::chrono::seconds(kWritten)};
        std::filesystem::last_write_time(m_path, std::chrono::file_clock::from_sys(moment));
    }
    tagMediaInfo Info(std::uint32_t expectedFlags) const { return Info(m_path, expectedFlags); }
    static tagMediaInfo Info(const std::filesystem::path& path, std::uint32_t expectedFlags)
    {
        tagMediaInfo info;
        EXPECT_EQ(QMXGetMediaInfo(EnginePath(path), &info), expectedFlags != 0);
        EXPECT_EQ(info.dwFlags, expectedFlags);
        return info;
    }
    /// Seconds from 1601.
    std::int64_t Date(std::uint32_t expectedFlags) const
    {
        const std::uint64_t ticks = Ticks(Info(expectedFlags).audio.ftDate);
        EXPECT_EQ(ticks % 10'000'000, 0U);
        return static_cast<std::int64_t>(ticks / 10'000'000);
    }

    std::filesystem::path m_path; ///< of what Write() wrote

private:
    MediaServices m_services;
    std::string m_oldZone;
};

/// Writes the creation time into the movie header of an MP4 file. @param seconds  from 1904; 0: the file does not say
std::string Dated(std::string bytes, std::uint32_t seconds)
{
    const std::size_t header = bytes.find("mvhd");
    if (header == std::string::npos || bytes.size() < header + 12 || bytes[header + 4] != 0)
    {
        ADD_FAILURE() << "no movie header of version 0";
        return bytes;
    }
    for (std::size_t i = 0; i < 4; ++i)
        bytes[header + 8 + i] = static_cast<char>(seconds >> (24 - 8 * i));
    return bytes;
}
} // namespace

TEST_F(MediaInfo, RecordingDateOfAFilmIsUtcAndWithoutOneTheFilesIsLocal)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    const std::string bytes = Contents(film);
    Write("dated.mp4", Dated(bytes, kRecorded));
    EXPECT_EQ(Date(kMediaHasVideo | kMediaHasAudio), k1904 + kRecorded);
    Write("dated.mp4", Dated(bytes, 0));
    EXPECT_EQ(Date(kMediaHasVideo | kMediaHasAudio), k1970 + kWritten + kAhead);
}

TEST_F(MediaInfo, SilentRecordingIsPicturesAlone)
{
    QMX_REQUIRE_MEDIA(film, "vfr-bursts.mp4");
    const tagMediaInfo info = Info(film, kMediaHasVideo);
    EXPECT_GT(info.video.nWidth, 0U);
    EXPECT_EQ(info.audio.nSamplesPerSec, 0U);
    EXPECT_EQ(info.audio.dDuration, info.video.dDuration); // known before the sound turns out to be missing
}

TEST_F(MediaInfo, SoundFileIsSoundAlone)
{
    QMX_REQUIRE_MEDIA(sound, "sound-vbr.mp3");
    const tagMediaInfo info = Info(sound, kMediaHasAudio);
    EXPECT_EQ(info.audio.nSamplesPerSec, 44'100U);
    EXPECT_EQ(info.audio.nChannels, 2U);
    EXPECT_EQ(info.audio.nBitsPerSample, 0U); // compressed
    EXPECT_EQ(info.video.nWidth, 0U);
}

TEST_F(MediaInfo, MatroskasDateCountsFrom2001)
{
    constexpr std::int64_t k2001 = 12'622'780'800; // seconds from 1601
    Write("dated.mkv", TinyMatroska(352'703'167LL * 1'000'000'000));
    EXPECT_EQ(Date(kMediaHasAudio), k2001 + 352'703'167);
    Write("dated.mkv", TinyMatroska({}));
    EXPECT_EQ(Date(kMediaHasAudio), k1970 + kWritten + kAhead);
}

TEST_F(MediaInfo, FileThatIsNoMediaIsNothingButHasADate)
{
    Write("words.mp4", "Some words, and a line.\n");
    const tagMediaInfo info = Info(0);
    EXPECT_EQ(Ticks(info.audio.ftDate), 0U);
    FILETIME date = {};
    EXPECT_TRUE(QMXGetImageInfo(EnginePath(m_path), &date));
    EXPECT_EQ(Ticks(date), static_cast<std::uint64_t>(k1970 + kWritten + kAhead) * 10'000'000);
    std::filesystem::remove(m_path);
    Info(0);
    EXPECT_FALSE(QMXGetImageInfo(EnginePath(m_path), &date));
}

TEST_F(MediaInfo, FlashMoviesNeedNoMediaServices)
{
    QMX_REQUIRE_CORPUS(movie, "swf/acid_acid-large.swf");
    const tagMediaInfo info = Info(movie, kMediaHasVideo);
    EXPECT_EQ(info.video.nWidth, 550U);
    EXPECT_EQ(info.video.nHeight, 400U);
    EXPECT_EQ(info.video.dFrameRate, 60);
    EXPECT_DOUBLE_EQ(info.video.dDuration, 587 / 60.0);
    EXPECT_EQ(info.video.nFrameRateNum, 0U); // not among what a movie tells
}
