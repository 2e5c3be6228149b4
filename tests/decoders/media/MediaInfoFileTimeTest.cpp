/// @file MediaInfoFileTimeTest.cpp
/// Dates in the time zones of the world, and files whose times cannot be read. The zones are written out, so that no
/// table of them is needed.
#include "tests/decoders/media/MediaInfoFixture.h"

#include <cstdlib>

namespace
{
bool g_timesFail = false;
int g_filesOpen = 0;

/// The time zone of the process while it lives.
class Zone
{
public:
    explicit Zone(const char* pRule)
    {
        if (const char* const pOld = std::getenv("TZ"))
            m_old = pOld;
        setenv("TZ", pRule, 1);
        tzset();
    }
    ~Zone()
    {
        m_old ? setenv("TZ", m_old->c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

private:
    std::optional<std::string> m_old;
};

/// Ticks of a moment so many seconds from 1970.
constexpr std::uint64_t TicksAt(std::int64_t seconds)
{
    return static_cast<std::uint64_t>((seconds + 11'644'473'600) * 10'000'000);
}
} // namespace

// The linker lets these stand before the platform's functions (--wrap).
extern "C"
{
    BOOL __real_GetFileTime(HANDLE file, FILETIME* pCreation, FILETIME* pLastAccess, FILETIME* pLastWrite);
    HANDLE __real_CreateFileW(LPCWSTR fileName, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                              DWORD disposition, DWORD attributes, HANDLE templateFile);
    BOOL __real_CloseHandle(HANDLE handle);

    BOOL __wrap_GetFileTime(HANDLE file, FILETIME* pCreation, FILETIME* pLastAccess, FILETIME* pLastWrite)
    {
        return g_timesFail ? FALSE : __real_GetFileTime(file, pCreation, pLastAccess, pLastWrite);
    }
    HANDLE __wrap_CreateFileW(LPCWSTR fileName, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                              DWORD disposition, DWORD attributes, HANDLE templateFile)
    {
        EXPECT_EQ(access, 0x80000000U);
        EXPECT_EQ(share, 1U);
        EXPECT_EQ(security, nullptr);
        EXPECT_EQ(disposition, 3U);
        EXPECT_EQ(attributes, 0x80U);
        EXPECT_EQ(templateFile, nullptr);
        HANDLE const file =
            __real_CreateFileW(fileName, access, share, security, disposition, attributes, templateFile);
        g_filesOpen += file != INVALID_HANDLE_VALUE ? 1 : 0;
        return file;
    }
    BOOL __wrap_CloseHandle(HANDLE handle)
    {
        --g_filesOpen;
        return __real_CloseHandle(handle);
    }
}

class MediaInfoFileTime : public MediaInfoTest
{
protected:
    ~MediaInfoFileTime() override
    {
        g_timesFail = false;
        EXPECT_EQ(g_filesOpen, 0);
    }
};
using MediaInfoTimeZone = MediaInfoFileTime;

TEST_F(MediaInfoTimeZone, FilesDateIsMovedByTheZonesOffset)
{
    for (const auto& [pRule, seconds] : {std::pair{"UTC0", 0},
                                         {"AAA-5:30", 19'800},
                                         {"BBB8", -28'800},
                                         {"CCC-14", 50'400},
                                         {"DDD12", -43'200},
                                         {"EEE3:30", -12'600}})
    {
        SCOPED_TRACE(pRule);
        const Zone zone(pRule);
        FILETIME date = {};
        EXPECT_TRUE(QMXGetImageInfo(Path(), &date));
        EXPECT_EQ(Ticks(date), TicksAt(kWritten + seconds));
        tagAudioInfo info;
        EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
        EXPECT_EQ(Ticks(info.ftDate), Ticks(date));
    }
}

TEST_F(MediaInfoTimeZone, MediasOwnDateStaysInUtc)
{
    media.recorded = kRecorded;
    for (const char* const pRule : {"UTC0", "AAA-5:30", "BBB8", "CCC-14"})
    {
        const Zone zone(pRule);
        tagAudioInfo info;
        EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
        EXPECT_EQ(Ticks(info.ftDate), kRecorded) << pRule;
    }
}

TEST_F(MediaInfoTimeZone, SummerTimeOfTodayCountsForFilesOfEverySeason)
{
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    constexpr std::int64_t kSummer = kWritten + 181 * 86'400; // 15 July 2001
    const auto offsetAt = [](std::time_t moment) { return std::localtime(&moment)->tm_gmtoff; };
    ASSERT_EQ(offsetAt(kWritten), 3'600);
    ASSERT_EQ(offsetAt(kSummer), 7'200);
    const std::int64_t now = offsetAt(std::time(nullptr));
    for (const std::int64_t written : {kWritten, kSummer})
    {
        WriteFile(written);
        FILETIME date = {};
        EXPECT_TRUE(QMXGetImageInfo(Path(), &date));
        EXPECT_EQ(Ticks(date), TicksAt(written + now)); // not that of the day it was written
    }
}

TEST_F(MediaInfoFileTime, FileWhoseTimesCannotBeReadIsStillAFileThatOpens)
{
    g_timesFail = true;
    FILETIME date = {1, 2};
    EXPECT_TRUE(QMXGetImageInfo(Path(), &date));
    EXPECT_EQ(date.dwLowDateTime, 1U);
    EXPECT_EQ(date.dwHighDateTime, 2U);
    tagAudioInfo info;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(Ticks(info.ftDate), 0U);
    EXPECT_EQ(info.nChannels, 2U);
}
