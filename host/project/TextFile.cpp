#include "host/project/TextFile.h"

#include "host/HostError.h"
#include "host/output/OutputFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace qmx::host
{
std::string ReadTextFile(const std::filesystem::path& file, std::size_t maxSize)
{
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Project, file.string(), reason); };
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        throw fail("is a folder");
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw fail(std::string("cannot be read: ") + std::strerror(errno));
    std::string text;
    std::array<char, 65536> part;
    do
    {
        stream.read(part.data(), static_cast<std::streamsize>(part.size()));
        text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
        if (text.size() > maxSize)
            throw fail("is larger than " + std::to_string(maxSize >> 20) + " MiB");
    } while (stream);
    if (stream.bad())
        throw fail("cannot be read");
    return text;
}

void WriteTextFile(const std::filesystem::path& target, std::string_view text)
{
    OutputFile output(target);
    errno = 0;
    std::ofstream stream(output.Path(), std::ios::binary | std::ios::trunc);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream)
        output.FailWith(errno != 0 ? errno : EIO);
    output.Commit();
}
} // namespace qmx::host
