#include "host/compose/MediaProbe.h"

#include "host/HostError.h"
#include "host/system/Platform.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace qmx::host
{
const tagVideoInfo& MediaProbe::Video(const std::filesystem::path& path, const std::string& subject,
                                      const std::string& prefix)
{
    if (const auto it = m_known.find(path); it != m_known.end())
        return it->second;
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); };
    // The engine reports no reasons, so those that a user can mend are found out first.
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw fail("is a folder");
    errno = 0;
    if (!std::ifstream(path, std::ios::binary))
        throw fail(std::string("cannot be opened: ") + std::strerror(errno));
    const RefPtr<CVideoDecoder> pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    tagVideoInfo info;
    info.nPixelAspectX = info.nPixelAspectY = 1;
    if (!pDecoder->GetVideoInfo(EnginePath(path), &info) || info.nWidth == 0 || info.nHeight == 0)
        throw fail("holds no video that can be read");
    return m_known.emplace(path, info).first->second;
}
} // namespace qmx::host
