#include "host/system/Platform.h"

#include "pal/kernel/PathText.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace qmx::host
{
void KeepLineEnds() {}

void StartComponents() {} // the platform layer needs no start

bool IsErrorOnTerminal()
{
    return ::isatty(STDERR_FILENO) != 0;
}

int CreateNewFile(const std::filesystem::path& path)
{
    const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    return file >= 0 && ::close(file) == 0 ? 0 : errno;
}

std::string ProcessNumber()
{
    return std::to_string(::getpid());
}

const char* ModuleExtension()
{
    return ".so";
}

std::wstring EnginePath(const std::filesystem::path& path)
{
    return pal::FromPathBytes(path.native());
}

std::wstring EngineText(const std::string& text)
{
    return pal::FromPathBytes(text);
}
} // namespace qmx::host
