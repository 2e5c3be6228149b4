#include "host/compose/MediaProbe.h"

#include "host/HostError.h"
#include "host/system/Platform.h"

#include "engine/decoders/FileKind.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace qmx::host
{
namespace
{
/// The engine reports no reasons, so those that a user can mend are found out first.
void CheckReadable(const std::filesystem::path& path, const std::string& subject, const std::string& prefix)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw HostError(ExitCode::Media, subject, prefix + "is a folder");
    errno = 0;
    if (!std::ifstream(path, std::ios::binary))
        throw HostError(ExitCode::Media, subject, prefix + "cannot be opened: " + std::strerror(errno));
}
} // namespace

const tagVideoInfo& MediaProbe::Video(const std::filesystem::path& path, const std::string& subject,
                                      const std::string& prefix)
{
    if (const auto it = m_known.find(path); it != m_known.end())
        return it->second;
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); };
    CheckReadable(path, subject, prefix);
    const RefPtr<CVideoDecoder> pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    tagVideoInfo info;
    info.nPixelAspectX = info.nPixelAspectY = 1;
    if (!pDecoder->GetVideoInfo(EnginePath(path), &info) || info.nWidth == 0 || info.nHeight == 0)
        throw fail("holds no video that can be read");
    return m_known.emplace(path, info).first->second;
}

const PictureFacts* MediaProbe::FindPicture(const std::filesystem::path& path, const std::string& subject,
                                            const std::string& prefix)
{
    if (const auto it = m_knownPictures.find(path); it != m_knownPictures.end())
        return &it->second;
    CheckReadable(path, subject, prefix);
    const std::optional<PictureFacts> facts = ReadPictureFacts(EnginePath(path));
    return facts ? &m_knownPictures.emplace(path, *facts).first->second : nullptr;
}

const PictureFacts& MediaProbe::Picture(const std::filesystem::path& path, const std::string& subject,
                                        const std::string& prefix)
{
    const PictureFacts* const pFacts = FindPicture(path, subject, prefix);
    if (!pFacts)
        throw HostError(ExitCode::Media, subject, prefix + "holds no picture that can be read");
    if (HasExtension(EnginePath(path), L"gif") && pFacts->format != "GIF")
        throw HostError(ExitCode::Media, subject, prefix + "is named as a GIF, but is " + pFacts->format);
    return *pFacts;
}
} // namespace qmx::host
