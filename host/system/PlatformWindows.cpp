#include "host/system/Platform.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <objbase.h>
#include <process.h>
#include <sys/stat.h>

namespace qmx::host
{
void KeepLineEnds()
{
    (void)_setmode(_fileno(stdout), _O_BINARY);
}

void StartComponents()
{
    (void)CoInitializeEx(nullptr, COINIT_MULTITHREADED); // stays until the process ends
}

bool IsErrorOnTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

int CreateNewFile(const std::filesystem::path& path)
{
    const int file = _wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    return file >= 0 && _close(file) == 0 ? 0 : errno;
}

std::string ProcessNumber()
{
    return std::to_string(_getpid());
}

const char* ModuleExtension()
{
    return ".dll";
}

std::wstring EnginePath(const std::filesystem::path& path)
{
    return path.native();
}

std::wstring EngineText(const std::string& text)
{
    return std::filesystem::path(std::u8string(text.begin(), text.end())).native();
}
} // namespace qmx::host
