#include "engine/decoders/still/KeystrokeDecoder.h"

#include "engine/platform/NullReference.h"

#include <new>

namespace
{
constexpr double kGroupGap = 20'000'000; // 100 ns between the starts of two labels that are shown together

// Pixels of a frame of the reference height.
constexpr float kBoxPaddingX = 20; // left and right together
constexpr float kBoxPaddingY = 10; // above and below together
constexpr float kTextInsetX = 10;
constexpr float kTextInsetY = 5;
constexpr std::uint32_t kBoxGap = 20;
constexpr std::uint32_t kStripMargin = 10;

/// @p pixels of the reference height on a frame of @p height rows, rounded down to whole ones.
float WholePixels(std::uint32_t height, std::uint32_t pixels)
{
    const std::int32_t whole = static_cast<std::int32_t>(height * pixels) / 288;
    return static_cast<float>(whole);
}
} // namespace

CKeystrokeDecoder::~CKeystrokeDecoder() = default;

bool CKeystrokeDecoder::Initialize(const tagDecProp& prop)
{
    if (!IsNullReference(&prop))
    {
        m_vecKeyInfos.clear();
        m_fLeft = 0;
        m_fTop = 0;
    }
    return CTextDecoder::Initialize(prop);
}

void CKeystrokeDecoder::SetDecoderProperty(const tagDecProp& prop)
{
    CTextDecoder::SetDecoderProperty(prop);
}

bool CKeystrokeDecoder::InitializeKeystrokeText(const std::vector<tagQMXKeystrokeInfo*>& items, std::uint64_t startTime)
try
{
    if (!IsNullReference(&items))
        m_vecKeyInfos = items;
    m_nStartTime = startTime;
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool CKeystrokeDecoder::IsShowing(const std::vector<tagQMXKeystrokeInfo*>& items) const
{
    return m_vecKeyInfos == items;
}

bool CKeystrokeDecoder::InitializeLeftAndTopAndWidth(float left, float top, float width)
{
    m_fLeft = left;
    m_fTop = top;
    m_fAreaWidth = width;
    return true;
}

ISampleBuffer* CKeystrokeDecoder::GetClipVideoFrame(std::uint64_t time, bool& /*flag*/)
try
{
    m_canvas.BeginFrame();
    _DrawLabels(_FindGroup(time));
    return m_canvas.EndFrame();
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

CKeystrokeDecoder::Group CKeystrokeDecoder::_FindGroup(std::uint64_t time) const
{
    Group group;
    const auto count = static_cast<std::ptrdiff_t>(m_vecKeyInfos.size());
    const auto at = [this](std::ptrdiff_t i) { return m_vecKeyInfos[static_cast<std::size_t>(i)]; };
    for (std::ptrdiff_t i = 0; i < count; ++i)
    {
        if (at(i) == nullptr)
            continue;
        if (at(i)->startTime > time)
            break;
        if (at(i)->endTime == 0 || at(i)->endTime >= time)
            group.last = i;
    }
    // Only the newest label has to be active: those before it are drawn whatever their own ends.
    group.first = group.last;
    for (std::ptrdiff_t i = group.last - 1; i >= 0 && at(i) != nullptr; --i)
    {
        if (static_cast<double>(at(i + 1)->startTime - at(i)->startTime) > kGroupGap)
            break;
        group.first = i;
    }
    return group;
}

void CKeystrokeDecoder::_DrawLabels(const Group& group)
{
    if (group.last < 0)
        return;
    const auto width = static_cast<float>(m_nWidth);
    const auto height = static_cast<float>(m_nHeight);
    const float paddingX = height * kBoxPaddingX / kTextReferenceHeight;
    const float paddingY = height * kBoxPaddingY / kTextReferenceHeight;
    const float stripEnd = (m_fLeft + m_fAreaWidth) * width;
    float x = width * m_fLeft;
    const float y = height * m_fTop;
    for (std::ptrdiff_t i = group.first; i <= group.last; ++i)
    {
        const tagQMXKeystrokeInfo& info = *m_vecKeyInfos[static_cast<std::size_t>(i)];
        TextFace face;
        face.size = height * info.fontSize / kTextReferenceHeight;
        face.maxWidth = width;
        face.maxHeight = height;
        const SetText text = m_canvas.LayOut(info.text, info.fontName, face);
        if (text.pLayout == nullptr)
            continue;
        if (stripEnd < WholePixels(m_nHeight, kStripMargin) + x + text.width)
        {
            m_canvas.ClearFrame();
            x = width * m_fLeft;
        }
        const float boxWidth = paddingX + text.width;
        m_canvas.AddRectangle(x, y, x + boxWidth, y + (paddingY + text.height), info.backColor, info.backAlpha);
        m_canvas.AddText(text, x + height * kTextInsetX / kTextReferenceHeight,
                         y + height * kTextInsetY / kTextReferenceHeight, info.textColor, info.textAlpha, 1);
        x += WholePixels(m_nHeight, kBoxGap) + boxWidth;
    }
}
