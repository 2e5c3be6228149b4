#include "host/compose/MediaProbe.h"

#include "engine/decoders/FileKind.h"
#include "engine/platform/SwfRenderer.h"
#include "host/HostError.h"
#include "host/system/Platform.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <numeric>

namespace qmx::host
{
namespace
{
/// A Flash movie's size, rate and length; rates of the format are counts of 1/256 frame a second.
bool FlashInfo(const std::wstring& path, tagVideoInfo& info)
{
    const RefPtr<ISWFRenderObj> pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
    tagSWFMovieInfo movie;
    if (!pMovie || FAILED(pMovie->OpenMovie(path.c_str())) || FAILED(pMovie->GetMovieInfo(&movie)))
        return false;
    constexpr std::uint32_t kUnits = 256;
    const auto rate = static_cast<std::uint32_t>(std::lround(movie.dFrameRate * kUnits));
    const std::uint32_t divisor = std::gcd(rate, kUnits);
    info.nWidth = static_cast<std::uint32_t>(movie.dWidth);
    info.nHeight = static_cast<std::uint32_t>(movie.dHeight);
    info.nFrameRateNum = rate / divisor;
    info.nFrameRateDen = kUnits / divisor;
    info.dFrameRate = movie.dFrameRate;
    info.dDuration = movie.nFrameCount / movie.dFrameRate;
    return true;
}

bool ReadInfo(const std::wstring& path, tagVideoInfo& info)
{
    if (HasExtension(path, L"swf"))
        return FlashInfo(path, info);
    const RefPtr<CVideoDecoder> pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    return pDecoder->GetVideoInfo(path, &info);
}
} // namespace

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
    tagVideoInfo info;
    info.nPixelAspectX = info.nPixelAspectY = 1;
    if (!ReadInfo(EnginePath(path), info) || info.nWidth == 0 || info.nHeight == 0)
        throw fail("holds no video that can be read");
    return m_known.emplace(path, info).first->second;
}
} // namespace qmx::host
