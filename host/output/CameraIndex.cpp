#include "host/output/CameraIndex.h"

#include <array>

namespace qmx::host
{
CameraIndexFile::CameraIndexFile(const std::filesystem::path& target)
    : m_output(target), m_file(m_output.Path(), std::ios::binary | std::ios::trunc)
{
}

void CameraIndexFile::Write(const CameraRecord& record)
{
    std::array<char, CameraRecord::kBytes> bytes{};
    std::size_t at = 0;
    for (const std::uint64_t field : {record.time, record.offset, record.length})
    {
        for (int shift = 0; shift < 64; shift += 8)
            bytes[at++] = static_cast<char>(field >> shift & 255);
    }
    m_file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void CameraIndexFile::Close()
{
    m_file.close();
    if (!m_file)
        m_output.Fail("cannot be written");
}
} // namespace qmx::host
