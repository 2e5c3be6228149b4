#include "host/output/CameraIndex.h"

#include <array>

namespace qmx::host
{
namespace fs = std::filesystem;

fs::path CameraMediaPath(const fs::path& name)
{
    return fs::path(name).replace_extension(IsMotionJpegName(name) ? ".mov" : ".mp4");
}

fs::path CameraIndexPath(const fs::path& name)
{
    return fs::path(name).replace_extension(".meta");
}

bool IsCameraName(const fs::path& name)
{
    return IsMotionJpegName(name) || name.extension() == ".h264";
}

bool IsMotionJpegName(const fs::path& name)
{
    return name.extension() == ".mjpg";
}

CameraIndexFile::CameraIndexFile(const fs::path& target)
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
