#include "engine/decoders/still/TitleDecoder.h"

#include "engine/platform/NullReference.h"

#include <algorithm>
#include <new>
#include <string_view>

CTitleDecoder::~CTitleDecoder() = default;

bool CTitleDecoder::Initialize(const tagDecProp& prop)
{
    if (!IsNullReference(&prop))
        m_vecTextInfos.clear();
    return CTextDecoder::Initialize(prop);
}

void CTitleDecoder::SetDecoderProperty(const tagDecProp& prop)
{
    CTextDecoder::SetDecoderProperty(prop);
}

bool CTitleDecoder::InitializeTitleText(const std::vector<tagQMXTitleTextInfo*>& items, std::uint64_t startTime)
try
{
    if (!IsNullReference(&items))
        m_vecTextInfos = items;
    m_nStartTime = startTime;
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool CTitleDecoder::IsShowing(const std::vector<tagQMXTitleTextInfo*>& items) const
{
    return m_vecTextInfos == items;
}

ISampleBuffer* CTitleDecoder::GetClipVideoFrame(std::uint64_t time, bool& /*flag*/)
try
{
    m_canvas.BeginFrame();
    for (tagQMXTitleTextInfo* const info : m_vecTextInfos)
    {
        if (info != nullptr)
            _DrawItem(info, time);
    }
    return m_canvas.EndFrame();
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

void CTitleDecoder::_DrawItem(tagQMXTitleTextInfo* info, std::uint64_t time)
{
    const std::size_t length = std::min<std::size_t>(info->textLength, info->text.size());
    if (length == 0)
        return;
    TextFace face;
    face.size = static_cast<float>(m_nHeight) * info->fontSize / kTextReferenceHeight;
    face.weight = info->fontWeight;
    face.italic = info->italic;
    face.underline = info->underline;
    face.alignment = info->alignment;
    face.maxWidth = static_cast<float>(2 * m_nWidth); // a line wraps only at twice the frame's width
    face.maxHeight = static_cast<float>(m_nHeight);
    const SetText text = m_canvas.LayOut(std::wstring_view(info->text).substr(0, length), info->fontName, face);
    float left = 0;
    float top = 0;
    _CalculateLeftAndTop(left, top, time, info, text.left);
    m_canvas.AddText(text, left, top, info->color, 1, info->opacity);
}

void CTitleDecoder::_CalculateLeftAndTop(float& left, float& top, std::uint64_t time, tagQMXTitleTextInfo* info,
                                         float layoutLeft)
{
    // Signed from here on: speeds above 7 run backward. The seconds are odd, so never 0.
    const auto seconds = static_cast<std::int32_t>(15U - 2U * info->speed);
    const double period = static_cast<double>(seconds) * static_cast<double>(kTimePerSecond);
    const auto passed = static_cast<float>(static_cast<double>(time) / period);
    // -1 at the start of a pass, 0 in its middle, 1 at its end; the text moves on after that.
    const auto k = static_cast<float>(2.0 * (static_cast<double>(passed) - 0.5));
    const auto width = static_cast<float>(m_nWidth);
    const auto height = static_cast<float>(m_nHeight);
    left = static_cast<float>(info->x) * width;
    top = static_cast<float>(info->y) * height;
    switch (info->animation)
    {
    case QMXTitleAnimation_LeftToRight:
        left += width * k;
        break;
    case QMXTitleAnimation_TopToBottom:
        top += height * k;
        break;
    case QMXTitleAnimation_RightToLeft:
        left -= width * k;
        break;
    case QMXTitleAnimation_BottomToTop:
        top -= height * k;
        break;
    default:
        break;
    }
    left -= layoutLeft;
}
