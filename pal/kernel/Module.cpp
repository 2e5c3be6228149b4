#include "pal/kernel/PathText.h"

#include <windows.h>

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <string>

namespace
{
/// Bytes of the running executable's path; empty on failure.
std::string ExecutablePath()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length > 0 && length < PATH_MAX ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}
} // namespace

extern "C" HMODULE LoadLibraryW(LPCWSTR fileName)
{
    if (fileName == nullptr || *fileName == L'\0')
        return nullptr;
    try
    {
        std::string path = pal::ToPathBytes(fileName);
        if (path.find('/') == std::string::npos)
        {
            const std::string executable = ExecutablePath();
            path = executable.substr(0, executable.rfind('/') + 1) + path;
        }
        return static_cast<HMODULE>(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    }
    catch (...)
    {
        return nullptr;
    }
}

extern "C" FARPROC GetProcAddress(HMODULE module, const char* name)
{
    if (module == nullptr || name == nullptr)
        return nullptr;
    return reinterpret_cast<FARPROC>(dlsym(module, name));
}

extern "C" BOOL FreeLibrary(HMODULE module)
{
    return module != nullptr && dlclose(module) == 0 ? TRUE : FALSE;
}

extern "C" DWORD GetModuleFileNameW(HMODULE module, LPWSTR fileName, DWORD size)
{
    if (module != nullptr || fileName == nullptr || size == 0)
        return 0;
    try
    {
        const std::wstring path = pal::FromPathBytes(ExecutablePath());
        if (path.empty())
            return 0;
        const std::size_t count = std::min<std::size_t>(path.size(), size - 1);
        std::copy_n(path.begin(), count, fileName);
        fileName[count] = L'\0';
        return count == path.size() ? static_cast<DWORD>(count) : size;
    }
    catch (...)
    {
        return 0;
    }
}
