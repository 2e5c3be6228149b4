#include "pal/kernel/Handle.h"
#include "pal/kernel/PathText.h"

#include <shlwapi.h>
#include <windows.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <memory>
#include <new>

namespace
{
constexpr std::int64_t kFileTimePerSecond = 10'000'000;
/// Seconds from 1 January 1601 to 1 January 1970: 369 years with 89 leap days.
constexpr std::int64_t kEpochDifference = (369LL * 365 + 89) * 86'400;

class File final : public pal::HandleObject
{
public:
    explicit File(int descriptor) : m_descriptor(descriptor) {}
    ~File() override { close(m_descriptor); }
    int GetDescriptor() const { return m_descriptor; }

private:
    const int m_descriptor; // owned
};

FILETIME ToFileTime(std::int64_t ticks)
{
    const auto value = static_cast<std::uint64_t>(ticks);
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

FILETIME ToFileTime(const timespec& time)
{
    return ToFileTime((static_cast<std::int64_t>(time.tv_sec) + kEpochDifference) * kFileTimePerSecond +
                      time.tv_nsec / 100);
}

wchar_t AsciiLower(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}
} // namespace

extern "C" HANDLE CreateFileW(LPCWSTR fileName, DWORD access, DWORD share, SECURITY_ATTRIBUTES*, DWORD disposition,
                              DWORD, HANDLE)
{
    if (fileName == nullptr || access != GENERIC_READ || share != FILE_SHARE_READ || disposition != OPEN_EXISTING)
        return INVALID_HANDLE_VALUE;
    try
    {
        const int descriptor = open(pal::ToPathBytes(fileName).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0)
            return INVALID_HANDLE_VALUE;
        auto pFile = std::make_unique<File>(descriptor);
        struct stat facts = {};
        if (fstat(descriptor, &facts) != 0 || S_ISDIR(facts.st_mode))
            return INVALID_HANDLE_VALUE;
        return pFile.release();
    }
    catch (...)
    {
        return INVALID_HANDLE_VALUE;
    }
}

extern "C" BOOL GetFileTime(HANDLE file, FILETIME* pCreation, FILETIME* pLastAccess, FILETIME* pLastWrite)
{
    const auto* const pFile = dynamic_cast<File*>(pal::FromHandle(file));
    struct stat facts = {};
    if (pFile == nullptr || fstat(pFile->GetDescriptor(), &facts) != 0)
        return FALSE;
    if (pCreation != nullptr)
        *pCreation = ToFileTime(facts.st_ctim); // the nearest thing that every file system keeps
    if (pLastAccess != nullptr)
        *pLastAccess = ToFileTime(facts.st_atim);
    if (pLastWrite != nullptr)
        *pLastWrite = ToFileTime(facts.st_mtim);
    return TRUE;
}

extern "C" BOOL FileTimeToLocalFileTime(const FILETIME* pFileTime, FILETIME* pLocalFileTime)
{
    if (pFileTime == nullptr || pLocalFileTime == nullptr)
        return FALSE;
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    tzset(); // localtime_r() need not look at TZ
    if (localtime_r(&now, &local) == nullptr)
        return FALSE;
    const std::int64_t offset = static_cast<std::int64_t>(local.tm_gmtoff) * kFileTimePerSecond;
    const std::uint64_t ticks = static_cast<std::uint64_t>(pFileTime->dwHighDateTime) << 32 | pFileTime->dwLowDateTime;
    *pLocalFileTime = ToFileTime(static_cast<std::int64_t>(ticks) + offset);
    return TRUE;
}

extern "C" BOOL PathFileExistsW(LPCWSTR path)
{
    try
    {
        return path != nullptr && access(pal::ToPathBytes(path).c_str(), F_OK) == 0 ? TRUE : FALSE;
    }
    catch (...)
    {
        return FALSE;
    }
}

extern "C" std::FILE* _wfopen(const wchar_t* fileName, const wchar_t* mode)
{
    if (fileName == nullptr || mode == nullptr)
        return nullptr;
    char narrow[16] = {};
    for (std::size_t i = 0; mode[i] != L'\0'; ++i)
    {
        if (i + 1 == sizeof(narrow) || mode[i] > 0x7F)
            return nullptr;
        narrow[i] = static_cast<char>(mode[i]);
    }
    try
    {
        return std::fopen(pal::ToPathBytes(fileName).c_str(), narrow);
    }
    catch (...)
    {
        return nullptr;
    }
}

extern "C" int _wcsicmp(const wchar_t* a, const wchar_t* b)
{
    while (*a != L'\0' && AsciiLower(*a) == AsciiLower(*b))
    {
        ++a;
        ++b;
    }
    const wchar_t x = AsciiLower(*a);
    const wchar_t y = AsciiLower(*b);
    return x < y ? -1 : x > y ? 1 : 0;
}
