#include "companions/swfrenderer/FileBytes.h"
#include "companions/swfrenderer/Limits.h"

#include <windows.h>

namespace swf
{
std::vector<std::uint8_t> ReadFileBytes(const wchar_t* path)
{
    std::vector<std::uint8_t> bytes;
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return bytes;
    LARGE_INTEGER size{};
    if (GetFileSizeEx(file, &size) && size.QuadPart > 0 && static_cast<std::uint64_t>(size.QuadPart) <= kMaxFileBytes)
    {
        bytes.resize(static_cast<std::size_t>(size.QuadPart));
        DWORD cbRead = 0;
        if (!ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &cbRead, nullptr))
            cbRead = 0;
        bytes.resize(cbRead);
    }
    CloseHandle(file);
    return bytes;
}
} // namespace swf
