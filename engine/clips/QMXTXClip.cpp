#include "engine/clips/QMXTXClip.h"

#include "engine/platform/NullReference.h"
#include "engine/platform/PixelUtility.h"
#include "engine/platform/SampleBuffer.h"

#include <cstring>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

namespace
{
constexpr std::int32_t kMaxSide = 32'767;   // of a sample buffer
constexpr std::size_t kNotCaptured = 1;     // size of a freeze cache that holds no picture
constexpr std::uint64_t kSecondRequest = 2; // flag of a request

/// @p size * @p factor without its fraction; what 32 bits cannot hold, and what is no number, is 0.
std::int32_t WorkSide(std::uint32_t size, double factor)
{
    const double side = size * factor;
    const bool fits =
        side > std::numeric_limits<std::int32_t>::min() && side < std::numeric_limits<std::int32_t>::max();
    return fits ? static_cast<std::int32_t>(side) : 0;
}

/// Bytes of a picture of these sides; 0 when there can be none.
std::size_t PictureBytes(std::int32_t width, std::int32_t height)
{
    const bool possible = width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide;
    return possible ? static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4 : 0;
}
} // namespace

/// One of the two clips with what belongs to it.
struct CQMXTXClip::Side
{
    IQMXBaseClip* pClip;         ///< borrowed; null: none
    std::uint64_t freezeTime;    ///< whose picture stands still
    Pixels CQMXTXClip::*pPixels; ///< where a live picture is letter-boxed
    Pixels CQMXTXClip::*pFreeze; ///< the picture that stands still
};

/// What goes into the blend.
struct CQMXTXClip::Picture
{
    const std::uint8_t* pPixels = nullptr; ///< of the work size
    SampleBufferPtr frame;                 ///< keeps the pixels where they are a frame's own
    bool flag = false;                     ///< as the clip reported it
};

CQMXTXClip::CQMXTXClip() : CQMXBaseClip(QMXClipType_Transition) {}

CQMXTXClip::~CQMXTXClip() = default;

// ---- settings ----------------------------------------------------------------------------------------------------

void CQMXTXClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr || source == this || source->GetClipType() != QMXClipType_Transition)
        return;
    const auto* const transition = dynamic_cast<const CQMXTXClip*>(source);
    if (transition == nullptr)
        return;
    CQMXBaseClip::CopyFrom(source);
    m_effectModule.Free();
    m_pFromClip = transition->m_pFromClip;
    m_pToClip = transition->m_pToClip;
    m_strEffectModule = transition->m_strEffectModule;
    m_nEffectType = transition->m_nEffectType;
}

void CQMXTXClip::SetEffectType(std::uint32_t type)
{
    m_nEffectType = type;
}

/// Ownership of @p clip; shared where the clip is one of ours already.
CQMXTXClip::ClipPtr CQMXTXClip::TakeClip(IQMXBaseClip* clip) const
{
    if (clip == m_pFromClip.get())
        return m_pFromClip;
    if (clip == m_pToClip.get())
        return m_pToClip;
    return ClipPtr(clip);
}

bool CQMXTXClip::SetClips(IQMXBaseClip* from, IQMXBaseClip* to)
{
    if (from == this || to == this)
        return false;
    m_effectModule.Free();
    ClipPtr pFrom;
    ClipPtr pTo;
    bool taken = true;
    try
    {
        pFrom = TakeClip(from);
        pTo = to == from ? pFrom : TakeClip(to);
    }
    catch (const std::bad_alloc&)
    {
        taken = false;
    }
    m_pFromClip = std::move(pFrom);
    m_pToClip = std::move(pTo);
    return taken;
}

bool CQMXTXClip::SetFromClip(IQMXBaseClip* from)
{
    if (from == this)
        return false;
    try
    {
        m_pFromClip = TakeClip(from);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        m_pFromClip = nullptr;
        return false;
    }
}

bool CQMXTXClip::SetToClip(IQMXBaseClip* to)
{
    if (to == this)
        return false;
    try
    {
        m_pToClip = TakeClip(to);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        m_pToClip = nullptr;
        return false;
    }
}

IQMXBaseClip* CQMXTXClip::GetFromClip()
{
    return m_pFromClip.get();
}

IQMXBaseClip* CQMXTXClip::GetToClip()
{
    return m_pToClip.get();
}

int CQMXTXClip::SetEffectModule(std::wstring name)
{
    m_strEffectModule = std::move(name);
    return 0;
}

void CQMXTXClip::SetProgress(float progress)
{
    m_fProgress = progress;
    m_bFixedProgress = true;
}

// ---- open and close ----------------------------------------------------------------------------------------------

bool CQMXTXClip::Open(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    KeepRequest(request);
    Close();
    m_nWorkHeight = WorkSide(request.height, request.factorY);
    m_nWorkWidth = WorkSide(request.width, request.factorX);
    const bool clipsOpened = OpenClips(request);
    return PrepareModule(clipsOpened) && clipsOpened;
}

bool CQMXTXClip::OpenClips(const tagRenderProp& request)
{
    bool opened = true;
    if (m_pFromClip)
    {
        tagRenderProp copy = request;
        copy.flags |= kRequestSeekBack; // its last picture may lie at the end of the file
        m_pFromClip->SetAttachment(0, nullptr);
        opened = m_pFromClip->Open(copy);
    }
    if (m_pToClip)
    {
        tagRenderProp copy = request;
        copy.time = m_pToClip->GetStartTime();
        m_pToClip->SetAttachment(0, nullptr);
        opened = m_pToClip->Open(copy) && opened;
    }
    return opened;
}

/// Loads the module and, when it is there, takes the memory of the pictures.
/// @return false when memory is short
bool CQMXTXClip::PrepareModule(bool clipsOpened)
{
    try
    {
        if (!m_effectModule.Load(m_strEffectModule))
            return true;
        const std::size_t cb = PictureBytes(m_nWorkWidth, m_nWorkHeight);
        m_vecOutput.resize(cb);
        m_vecFrom.resize(cb);
        m_vecTo.resize(cb);
        m_vecBlank.assign(cb, 0);
        m_vecFromFreeze.resize(kNotCaptured);
        m_vecToFreeze.resize(kNotCaptured);
        m_bOpened = clipsOpened;
        m_bSecondRequestFlag = (m_renderCopy.flags & kSecondRequest) != 0;
        return true;
    }
    catch (const std::bad_alloc&)
    {
        m_effectModule.Free();
        return false;
    }
}

bool CQMXTXClip::Close()
{
    if (m_pFromClip)
        m_pFromClip->Close();
    if (m_pToClip)
        m_pToClip->Close();
    m_bOpened = false;
    m_effectModule.Free();
    return true;
}

bool CQMXTXClip::IsVideoOpened()
{
    return m_bOpened;
}

// ---- frames ------------------------------------------------------------------------------------------------------

float CQMXTXClip::ProgressAt(std::uint64_t time) const
{
    if (m_bFixedProgress)
        return m_fProgress;
    // Unsigned: a time before the start lies far behind the end.
    return static_cast<float>(static_cast<double>(time - m_nStartTime) / static_cast<double>(m_nDuration));
}

/// The picture of @p clip at @p time in the work size, in @p pixels or where the frame has it.
bool CQMXTXClip::LivePicture(IQMXBaseClip& clip, std::uint64_t time, Pixels& pixels, Picture& picture)
{
    FrameResult result;
    const bool has = clip.GetVideoFrame(time, &result);
    picture.frame = SampleBufferPtr::Adopt(result.frame);
    if (!has || !picture.frame)
        return false;
    picture.flag = result.flag;
    const bool wholeArea = (m_renderCopy.flags & kRequestUseCache) != 0;
    const auto width = static_cast<std::uint32_t>(m_nWorkWidth);
    const auto height = static_cast<std::uint32_t>(m_nWorkHeight);
    picture.pPixels = pixels.data();
    if (DoLetterBoxBGRATranspanrentEx(picture.frame.Get(), pixels.data(), wholeArea ? 0 : m_renderCopy.boxWidth,
                                      wholeArea ? 0 : m_renderCopy.boxHeight, width, height, kScaleArea))
        return true;
    std::uint8_t* pOwn = nullptr;
    std::uint32_t cb = 0;
    const bool fits = picture.frame->GetBuffer(&pOwn, &cb) && cb >= pixels.size();
    picture.pPixels = fits ? pOwn : m_vecBlank.data();
    return true;
}

/// The picture that stands still: captured once.
bool CQMXTXClip::FrozenPicture(IQMXBaseClip& clip, std::uint64_t time, Pixels& pixels, Pixels& frozen, Picture& picture)
{
    if (frozen.size() != pixels.size())
    {
        if (!LivePicture(clip, time, pixels, picture))
            return false;
        frozen.assign(picture.pPixels, picture.pPixels + pixels.size());
    }
    picture.pPixels = frozen.data();
    return true;
}

bool CQMXTXClip::SidePicture(const Side& side, bool isFrozen, std::uint64_t time, Picture& picture)
{
    Pixels& pixels = this->*side.pPixels;
    if (side.pClip == nullptr)
    {
        picture.pPixels = m_vecBlank.data();
        return true;
    }
    return isFrozen ? FrozenPicture(*side.pClip, side.freezeTime, pixels, this->*side.pFreeze, picture)
                    : LivePicture(*side.pClip, time, pixels, picture);
}

bool CQMXTXClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr)
        return false;
    out->frame = nullptr;
    const std::size_t cb = PictureBytes(m_nWorkWidth, m_nWorkHeight);
    if (!m_effectModule.CanApply() || cb == 0 || m_vecOutput.size() != cb)
        return false;
    const float progress = ProgressAt(time);
    const Side fromSide{m_pFromClip.get(), m_pFromClip ? m_pFromClip->GetEndTime() : 0, &CQMXTXClip::m_vecFrom,
                        &CQMXTXClip::m_vecFromFreeze};
    const Side toSide{m_pToClip.get(), m_pToClip ? m_pToClip->GetStartTime() : 0, &CQMXTXClip::m_vecTo,
                      &CQMXTXClip::m_vecToFreeze};
    try
    {
        // Exactly in the middle both stand still.
        Picture from;
        Picture to;
        return SidePicture(fromSide, progress >= 0.5F, time, from) &&
               SidePicture(toSide, !(progress > 0.5F), time, to) && Blend(from, to, progress, *out);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

bool CQMXTXClip::Blend(const Picture& from, const Picture& to, float progress, FrameResult& out)
{
    tagTxEffectParam param{};
    param.pOutput = m_vecOutput.data();
    param.pFrom = from.pPixels;
    param.pTo = to.pPixels;
    param.nWidth = static_cast<std::uint32_t>(m_nWorkWidth);
    param.nHeight = static_cast<std::uint32_t>(m_nWorkHeight);
    param.nEffectType = m_nEffectType;
    param.fProgress = progress;
    m_effectModule.Apply(param);

    SampleBufferPtr frame =
        SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, param.nWidth, param.nHeight, 0));
    std::uint8_t* pixels = nullptr;
    std::uint32_t cb = 0;
    if (!frame || !frame->GetBuffer(&pixels, &cb) || cb > m_vecOutput.size())
        return false;
    std::memcpy(pixels, m_vecOutput.data(), cb);
    frame->SetAlphaFlag(true);
    const std::int32_t divisor = std::gcd(m_nWorkWidth, m_nWorkHeight);
    frame->SetRatioX(static_cast<std::uint32_t>(m_nWorkWidth / divisor));
    frame->SetRatioY(static_cast<std::uint32_t>(m_nWorkHeight / divisor));
    out.flag = to.flag;
    out.frame = frame.Detach();
    return true;
}
