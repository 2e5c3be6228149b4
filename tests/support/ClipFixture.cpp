#include "tests/support/ClipFixture.h"

#include "engine/qmx.h"
#if !defined(_WIN32)
#include "pal/kernel/PathText.h"
#endif

#include <mfapi.h>

#include <cassert>

namespace test_support
{
namespace
{
constexpr std::uint64_t kTrackId = 7;

RefPtr<CVideoDecoder> MakeVideoDecoder()
{
    return RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
}
} // namespace

MediaServices::MediaServices()
{
    (void)MFStartup(MF_VERSION, MFSTARTUP_FULL);
}

MediaServices::~MediaServices()
{
    RemoveAllDecoders();
    (void)MFShutdown();
}

std::wstring EnginePath(const std::filesystem::path& path)
{
#if defined(_WIN32)
    return path.native();
#else
    return pal::FromPathBytes(path.string());
#endif
}

std::optional<tagVideoInfo> VideoInfoOf(const std::filesystem::path& path)
{
    tagVideoInfo info;
    const RefPtr<CVideoDecoder> pDecoder = MakeVideoDecoder();
    if (!pDecoder->GetVideoInfo(EnginePath(path), &info))
        return std::nullopt;
    return info;
}

std::uint64_t GridTime(std::uint64_t n, std::uint64_t num, std::uint64_t den)
{
    return n * kTimePerSecond * den / num;
}

ClipFixture::ClipFixture(const std::filesystem::path& path, const tagVideoInfo& info, std::uint32_t width)
    : m_pDocument(CreateQMXDocument(nullptr)), m_width(width ? width : info.nWidth), m_height(info.nHeight)
{
    m_pTrack.reset(CreateQMXTrack(kTrackId, QMXTrackType{}, m_pDocument->GetDocumentID(), tagPIPPOSITION{}));
    // The factory makes this class for this type, so the settings of its own slots are within reach.
    auto* const pClip = static_cast<CQMXVideoClip*>(CreateClipByClipType(QMXClipType_Video));
    pClip->SetFilePath(EnginePath(path));
    pClip->SetTrackID(kTrackId);
    pClip->SetDuration(kTimeUnlimited);
    pClip->SetFrameRate(static_cast<double>(info.nFrameRateNum) / info.nFrameRateDen);
    m_pTrack->AddClip(pClip);
    m_pDocument->AddTrack(m_pTrack.get());
    m_key = pClip->GetDecoderKey();
}

ClipFixture::~ClipFixture()
{
    // Without a cleaner the document leaves its tracks to their host.
    m_pDocument->RemoveTrack(m_pTrack.get());
    m_pTrack.reset();
    RemoveDecoder(m_key);
}

SampleBufferPtr ClipFixture::BufferAt(std::uint64_t time, bool* pFlag)
{
    tagRenderProp request;
    request.flags = kRequestUseCache;
    request.width = m_width;
    request.height = m_height;
    return SampleBufferPtr::Adopt(m_pTrack->GetFrameAtTime(request, time, pFlag));
}

ClipFrame ClipFixture::FrameAt(std::uint64_t time)
{
    ClipFrame frame;
    frame.picture = PictureOf(BufferAt(time, &frame.endOfStream).Get());
    return frame;
}

DecoderFixture::DecoderFixture(const std::filesystem::path& path, const tagVideoInfo& info, std::uint32_t width)
    : m_pDecoder(RefPtr<IDecoder>::Adopt(MakeVideoDecoder().Detach())),
      m_frameDuration(FrameDurationFromRate(static_cast<double>(info.nFrameRateNum) / info.nFrameRateDen))
{
    tagDecProp prop(EnginePath(path), 0);
    prop.frameRate = static_cast<double>(info.nFrameRateNum) / info.nFrameRateDen;
    prop.frameDuration = m_frameDuration;
    prop.width = width ? width : info.nWidth;
    prop.height = info.nHeight;
    m_open = m_pDecoder->Initialize(prop);
}

ClipFrame DecoderFixture::Frame(std::uint64_t n)
{
    return FrameAt(n * m_frameDuration);
}

ClipFrame DecoderFixture::FrameAt(std::uint64_t time)
{
    ClipFrame frame;
    frame.picture = PictureOf(SampleBufferPtr::Adopt(m_pDecoder->GetClipVideoFrame(time, frame.endOfStream)).Get());
    return frame;
}
} // namespace test_support
