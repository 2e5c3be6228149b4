#include "fuzz/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

MemoryFile::MemoryFile(const std::uint8_t* pData, std::size_t cb, const std::string& extension)
    : m_handle(memfd_create("fuzz", MFD_CLOEXEC))
{
    while (m_handle >= 0 && cb > 0)
    {
        const ssize_t written = write(m_handle, pData, cb);
        if (written <= 0)
            return;
        pData += written;
        cb -= static_cast<std::size_t>(written);
    }
    if (m_handle < 0)
        return;
    const std::string memory = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(m_handle);
    if (extension.empty())
    {
        m_path = memory;
        return;
    }
    // Only a link can give it a name of its own.
    const char* const folder = std::getenv("TMPDIR");
    const std::string link = std::string(folder ? folder : "/tmp") + "/qmx-fuzz-" + std::to_string(getpid()) + "-" +
                             std::to_string(m_handle) + "." + extension;
    unlink(link.c_str());
    if (symlink(memory.c_str(), link.c_str()) == 0)
    {
        m_isLink = true;
        m_path = link;
    }
}

MemoryFile::~MemoryFile()
{
    if (m_isLink)
        unlink(m_path.c_str());
    if (m_handle >= 0)
        close(m_handle);
}
