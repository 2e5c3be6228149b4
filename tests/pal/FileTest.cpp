#include "pal/kernel/PathText.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <shlwapi.h>
#include <windows.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

namespace
{
HANDLE OpenForReading(const std::string& path)
{
    return CreateFileW(pal::FromPathBytes(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::uint64_t Ticks(const FILETIME& time)
{
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

/// A file that is gone with the test.
class TemporaryFile
{
public:
    const std::string& GetPath() const { return m_path; }

private:
    test_support::TemporaryFolder m_folder;
    std::string m_path = m_folder.Write("file", "").string();
};
} // namespace

TEST(GetFileTime, CountsFrom1601InHundredsOfNanoseconds)
{
    const TemporaryFile file;
    // 1 January 2000, 0:00 UTC is 12,591,158,400 s after 1 January 1601.
    const timespec times[2] = {{946'684'800, 700}, {946'684'800, 700}};
    ASSERT_EQ(utimensat(AT_FDCWD, file.GetPath().c_str(), times, 0), 0);
    HANDLE const handle = OpenForReading(file.GetPath());
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    FILETIME written = {};
    ASSERT_EQ(GetFileTime(handle, nullptr, nullptr, &written), TRUE);
    EXPECT_EQ(Ticks(written), 125'911'584'000'000'007ULL);
    EXPECT_EQ(CloseHandle(handle), TRUE);
}

TEST(CreateFileW, RefusesFoldersMissingFilesAndWriting)
{
    EXPECT_EQ(OpenForReading(testing::TempDir()), INVALID_HANDLE_VALUE);
    EXPECT_EQ(OpenForReading(testing::TempDir() + "qmx_no_such_file"), INVALID_HANDLE_VALUE);
    const TemporaryFile file;
    EXPECT_EQ(CreateFileW(pal::FromPathBytes(file.GetPath()).c_str(), 0x40000000U, FILE_SHARE_READ, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr),
              INVALID_HANDLE_VALUE);
}

TEST(PathFileExistsW, FindsFilesAndFolders)
{
    const TemporaryFile file;
    EXPECT_EQ(PathFileExistsW(pal::FromPathBytes(file.GetPath()).c_str()), TRUE);
    EXPECT_EQ(PathFileExistsW(pal::FromPathBytes(testing::TempDir()).c_str()), TRUE);
    EXPECT_EQ(PathFileExistsW(pal::FromPathBytes(file.GetPath() + "x").c_str()), FALSE);
    EXPECT_EQ(PathFileExistsW(L""), FALSE);
    EXPECT_EQ(PathFileExistsW(nullptr), FALSE);
}

TEST(Wfopen, OpensAPathOfAnyBytes)
{
    const test_support::TemporaryFolder folder;
    const std::string path = folder.Path().string() + "/\xC3\xA9_\xFF";
    const std::wstring wide = pal::FromPathBytes(path);
    std::FILE* pFile = _wfopen(wide.c_str(), L"wb");
    ASSERT_NE(pFile, nullptr);
    EXPECT_EQ(std::fwrite("abc", 1, 3, pFile), 3U);
    std::fclose(pFile);
    pFile = _wfopen(wide.c_str(), L"rb");
    ASSERT_NE(pFile, nullptr);
    char text[4] = {};
    EXPECT_EQ(std::fread(text, 1, 4, pFile), 3U);
    EXPECT_STREQ(text, "abc");
    std::fclose(pFile);
    std::remove(path.c_str());
    EXPECT_EQ(_wfopen(wide.c_str(), L"rb"), nullptr);
    EXPECT_EQ(_wfopen(nullptr, L"rb"), nullptr);
    EXPECT_EQ(_wfopen(wide.c_str(), nullptr), nullptr);
    EXPECT_EQ(_wfopen(wide.c_str(), L"rb\u0100"), nullptr);
    EXPECT_EQ(_wfopen(wide.c_str(), L"rbbbbbbbbbbbbbbbbbbb"), nullptr);
}

TEST(FileTimeToLocalFileTime, AddsTheOffsetThatHoldsNow)
{
    const char* const pOld = std::getenv("TZ");
    const std::string old = pOld != nullptr ? pOld : "";
    setenv("TZ", "XYZ-5:30", 1); // east of Greenwich, no daylight saving
    const FILETIME utc = {0x10, 0x01000000};
    FILETIME local = {};
    EXPECT_EQ(FileTimeToLocalFileTime(&utc, &local), TRUE);
    EXPECT_EQ(Ticks(local) - Ticks(utc), 19'800ULL * 10'000'000);
    EXPECT_EQ(FileTimeToLocalFileTime(nullptr, &local), FALSE);
    pOld != nullptr ? setenv("TZ", old.c_str(), 1) : unsetenv("TZ");
    tzset();
}

TEST(Wcsicmp, IgnoresTheCaseOfLatinLettersOnly)
{
    EXPECT_EQ(_wcsicmp(L"SwF", L"sWf"), 0);
    EXPECT_LT(_wcsicmp(L"gif", L"swf"), 0);
    EXPECT_GT(_wcsicmp(L"gifs", L"gif"), 0);
    EXPECT_NE(_wcsicmp(L"\u00C9", L"\u00E9"), 0);
    EXPECT_EQ(_wcsicmp(L"", L""), 0);
}
