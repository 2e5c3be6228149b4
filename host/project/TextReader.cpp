#include "host/project/TextReader.h"

namespace qmx::host
{
namespace
{
using Kind = JsonValue::Kind;

constexpr NamedNumber kAlignments[] = {{"leading", 0}, {"trailing", 1}, {"center", 2}, {"justified", 3}};
constexpr NamedNumber kAnimations[] = {{"none", QMXTitleAnimation_None},
                                       {"leftToRight", QMXTitleAnimation_LeftToRight},
                                       {"topToBottom", QMXTitleAnimation_TopToBottom},
                                       {"rightToLeft", QMXTitleAnimation_RightToLeft},
                                       {"bottomToTop", QMXTitleAnimation_BottomToTop}};
constexpr double kMaxFontSize = 1'000; // pixels on a frame of 288 rows

tagQMXTitleTextInfo ReadText(const JsonValue& value, std::string place)
{
    ObjectReader reader(value, std::move(place));
    tagQMXTitleTextInfo info;
    reader.Need("text", Kind::Text);
    info.text = reader.Characters("text");
    info.textLength = reader.WholeOr("textLength", static_cast<std::uint32_t>(info.text.size()), UINT32_MAX);
    info.fontName = reader.Characters("fontName");
    info.fontSize = reader.Float("fontSize", info.fontSize, 0, kMaxFontSize);
    info.fontWeight = reader.WholeOr("fontWeight", info.fontWeight, 999);
    if (info.fontWeight == 0)
        reader.Fail("fontWeight", "must be greater than 0");
    info.italic = reader.Flag("italic", false);
    info.underline = reader.Flag("underline", false);
    info.color = reader.Color("color", info.color);
    info.opacity = reader.Float("opacity", info.opacity, 0, 1);
    info.x = reader.Fraction("x", 0);
    info.y = reader.Fraction("y", 0);
    info.alignment = reader.Choice("alignment", kAlignments, 0);
    info.animation = reader.Choice("animation", kAnimations, QMXTitleAnimation_None);
    info.speed = reader.WholeOr("speed", 0, 1'000);
    reader.Finish();
    return info;
}

tagQMXKeystrokeInfo ReadKeystroke(const JsonValue& value, std::string place)
{
    ObjectReader reader(value, std::move(place));
    tagQMXKeystrokeInfo info;
    reader.Need("text", Kind::Text);
    info.text = reader.Characters("text");
    info.startTime = reader.NeedTime("startTime");
    info.endTime = reader.Time("endTime", 0);
    if (info.endTime != 0 && info.endTime < info.startTime)
        reader.Fail("endTime", "must not be less than startTime");
    info.fontName = reader.Characters("fontName");
    info.fontSize = reader.Float("fontSize", info.fontSize, 0, kMaxFontSize);
    info.textColor = reader.Color("textColor", info.textColor);
    info.backColor = reader.Color("backColor", info.backColor);
    info.textAlpha = reader.Float("textAlpha", info.textAlpha, 0, 1);
    info.backAlpha = reader.Float("backAlpha", info.backAlpha, 0, 1);
    for (const auto& [pName, pValue] : {std::pair{"hostData1", &info.hostData1}, {"hostData2", &info.hostData2}})
    {
        if (const JsonValue* const pField = reader.Find(pName, Kind::Number))
            *pValue = reader.Whole(pName, *pField, 0, UINT64_MAX);
    }
    reader.Finish();
    return info;
}
} // namespace

void ReadTitleFields(ObjectReader& reader, ProjectClip& clip)
{
    const std::vector<JsonValue>& texts = reader.Need("texts", Kind::Array).items;
    clip.texts.reserve(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        clip.texts.push_back(ReadText(texts[i], reader.PlaceOf("texts[" + std::to_string(i) + ']')));
}

void ReadKeystrokeFields(ObjectReader& reader, ProjectClip& clip)
{
    clip.inPoint = reader.Time("inPoint", 0);
    clip.strip.left = static_cast<float>(reader.Fraction("left", clip.strip.left));
    clip.strip.top = static_cast<float>(reader.Fraction("top", clip.strip.top));
    clip.strip.width = static_cast<float>(reader.Fraction("width", clip.strip.width));
    const std::vector<JsonValue>& keystrokes = reader.Need("keystrokes", Kind::Array).items;
    clip.keystrokes.reserve(keystrokes.size());
    for (std::size_t i = 0; i < keystrokes.size(); ++i)
    {
        const std::string place = reader.PlaceOf("keystrokes[" + std::to_string(i) + ']');
        clip.keystrokes.push_back(ReadKeystroke(keystrokes[i], place));
        if (i > 0 && clip.keystrokes[i].startTime < clip.keystrokes[i - 1].startTime)
            throw JsonError(place + ".startTime", "must not be less than that of the keystroke before");
    }
}
} // namespace qmx::host
