#include "companions/swfrenderer/MovieReader.h"

#include "companions/swfrenderer/Actions.h"
#include "companions/swfrenderer/DeviceText.h"
#include "companions/swfrenderer/EditTextLayout.h"
#include "companions/swfrenderer/EmbeddedPicture.h"
#include "companions/swfrenderer/FrameScripts.h"
#include "companions/swfrenderer/ShapeReader.h"

#include <set>
#include <utility>

namespace swf
{
namespace
{
enum Tag : std::uint32_t
{
    kEnd = 0,
    kShowFrame = 1,
    kDefineShape = 2,
    kPlaceObject = 4,
    kRemoveObject = 5,
    kDefineBits = 6,
    kDefineButton = 7,
    kJpegTables = 8,
    kSetBackgroundColor = 9,
    kDefineFont = 10,
    kDefineText = 11,
    kDoAction = 12,
    kDefineFontInfo = 13,
    kDefineBitsLossless = 20,
    kDefineBitsJpeg2 = 21,
    kDefineShape2 = 22,
    kPlaceObject2 = 26,
    kRemoveObject2 = 28,
    kDefineShape3 = 32,
    kDefineText2 = 33,
    kDefineButton2 = 34,
    kDefineBitsJpeg3 = 35,
    kDefineBitsLossless2 = 36,
    kDefineEditText = 37,
    kDefineSprite = 39,
    kFrameLabel = 43,
    kDefineMorphShape = 46,
    kDefineFont2 = 48,
    kDefineVideoStream = 60,
    kVideoFrame = 61,
    kDefineFontInfo2 = 62,
    kPlaceObject3 = 70,
    kDefineFont3 = 75,
    kSymbolClass = 76,
    kDefineScalingGrid = 78,
    kDoAbc = 82,
    kDefineShape4 = 83,
    kDefineMorphShape2 = 84,
    kDefineBitsJpeg4 = 90,
    kDefineFont4 = 91,
    kPlaceObject4 = 94
};

BlendMode BlendOf(std::uint8_t v)
{
    return v >= 2 && v <= 14 ? static_cast<BlendMode>(v) : BlendMode::Normal;
}

constexpr std::size_t kCharacterBytes = sizeof(Character) + 64; ///< with its place in the map
constexpr std::size_t kLabelBytes = 96;
constexpr std::size_t kVideoPixelBytes = 20; ///< of a video: the picture, and those that its decoder keeps

std::size_t BytesBeside(const Placement& place)
{
    std::size_t cb = place.name ? place.name->size() : 0;
    if (place.filters)
        for (const Filter& filter : *place.filters)
            cb += sizeof(Filter) + filter.kernel.size() * sizeof(float) + filter.stops.size() * sizeof(GradientStop);
    if (place.pExtras)
        cb += sizeof(PlacementExtras) + place.pExtras->className.size();
    return cb;
}
} // namespace

CMovieReader::CMovieReader(Movie& movie, const Budget& budget) : m_movie(movie)
{
    const std::size_t cbBody = movie.file.body.size();
    m_budget.bytes = budget.bytes - std::min(budget.bytes, cbBody);
    m_budget.steps = budget.readSteps;
}

/// @param cbBeside  what the step holds beside itself
bool CMovieReader::AddStep(Timeline& timeline, FrameStep&& step, std::size_t cbBeside)
{
    if (!m_budget.Take(sizeof(FrameStep) + cbBeside))
        return false;
    timeline.steps.push_back(std::move(step));
    return true;
}

template <class T> T* CMovieReader::FindForChange(std::uint16_t id)
{
    const auto found = m_movie.characters.find(id);
    return found != m_movie.characters.end() ? std::get_if<T>(&found->second) : nullptr;
}

bool CMovieReader::Keep(std::uint16_t id, Character&& character)
{
    // The first one keeps its number.
    return m_budget.Take(kCharacterBytes) && m_movie.characters.try_emplace(id, std::move(character)).second;
}

bool CMovieReader::Read()
{
    const std::span<const std::uint8_t> body(m_movie.file.body);
    ReadTags(body.subspan(m_movie.file.tagsAt), m_movie.root, true);
    AddScripts();
    AddDeviceGlyphs(m_movie, m_budget);
    return m_movie.root.FrameCount() > 0;
}

void CMovieReader::ReadTags(std::span<const std::uint8_t> bytes, Timeline& timeline, bool isRoot)
{
    CByteReader reader(bytes);
    while (!reader.AtEnd() && m_tagsLeft > 0)
    {
        --m_tagsLeft;
        const std::uint32_t head = reader.U16();
        std::size_t length = head & 63;
        if (length == 63)
            length = reader.U32();
        const std::uint32_t code = head >> 6;
        if (reader.Failed() || code == kEnd)
            break;
        CByteReader tag(reader.Take(std::min(length, reader.Left())));
        if (code == kShowFrame)
            timeline.frameEnds.push_back(static_cast<std::uint32_t>(timeline.steps.size()));
        else if (code == kDefineSprite && !isRoot)
            continue; // sprites are defined by the root alone
        else
            ReadControlTag(code, tag, timeline);
    }
    // Steps behind the last frame never come.
    timeline.steps.resize(timeline.frameEnds.empty() ? 0 : timeline.frameEnds.back());
}

void CMovieReader::ReadControlTag(std::uint32_t code, CByteReader& tag, Timeline& timeline)
{
    switch (code)
    {
    case kPlaceObject:
    case kPlaceObject2:
    case kPlaceObject3:
    case kPlaceObject4:
        return ReadPlacement(code, tag, timeline);
    case kRemoveObject:
        (void)tag.U16(); // the character
        (void)AddStep(timeline, Removal{tag.U16()}, 0);
        return;
    case kRemoveObject2:
        (void)AddStep(timeline, Removal{tag.U16()}, 0);
        return;
    case kSetBackgroundColor:
        (void)AddStep(timeline, BackgroundChange{tag.Rgb()}, 0);
        return;
    case kFrameLabel:
    {
        std::string label = tag.String();
        if (m_budget.Take(kLabelBytes + label.size()))
            timeline.labels.emplace(std::move(label), timeline.FrameCount());
        return;
    }
    case kDoAction:
        for (TimelineAction& action : ReadActions(tag.Rest(), m_budget))
            timeline.steps.emplace_back(std::move(action));
        return;
    case kDoAbc:
        (void)tag.U32();    // when it runs
        (void)tag.String(); // name
        if (!tag.Failed() && m_budget.Take(sizeof(m_scripts[0]) * 2))
            m_scripts.push_back(tag.Rest());
        return;
    case kSymbolClass:
        return ReadClasses(tag);
    case kJpegTables:
        if (m_jpegTables.empty())
            m_jpegTables = tag.Rest();
        return;
    default:
        ReadDefinition(code, tag);
    }
}

void CMovieReader::ReadPlacement(std::uint32_t code, CByteReader& tag, Timeline& timeline)
{
    Placement place;
    if (code == kPlaceObject)
    {
        place.character = tag.U16();
        place.depth = tag.U16();
        place.matrix = tag.ReadMatrix();
        if (!tag.AtEnd())
            place.colours = tag.ReadColourTransform(false);
    }
    else
    {
        const std::uint8_t flags = tag.U8();
        const std::uint8_t more = code == kPlaceObject2 ? std::uint8_t{0} : tag.U8();
        place.depth = tag.U16();
        place.isMove = (flags & 1) != 0;
        std::string className;
        if ((more & 8) != 0 || ((more & 16) != 0 && (flags & 2) != 0))
            className = tag.String();
        if ((flags & 2) != 0)
            place.character = tag.U16();
        if ((flags & 4) != 0)
            place.matrix = tag.ReadMatrix();
        if ((flags & 8) != 0)
            place.colours = tag.ReadColourTransform(true);
        if ((flags & 16) != 0)
            place.ratio = tag.U16();
        if ((flags & 32) != 0)
            place.name = tag.String();
        if ((flags & 64) != 0)
            place.clipDepth = tag.U16();
        if ((more & 1) != 0)
            place.filters = ReadFilters(tag);
        if ((more & 2) != 0)
            place.blend = BlendOf(tag.U8());
        if ((more & 4) != 0)
            (void)tag.U8(); // cached as bitmap: a matter of speed
        if ((more & 32) != 0)
            place.visible = tag.AtEnd() || tag.U8() != 0;
        if ((more & 64) != 0)
            (void)tag.RgbaColour(); // behind what is cached as bitmap
        const bool hasActions = (flags & 128) != 0 && !tag.Failed();
        if (hasActions || (!place.character && !className.empty()))
            place.pExtras = std::make_unique<PlacementExtras>();
        if (place.pExtras)
            place.pExtras->className = std::move(className);
        if (hasActions)
        {
            CByteReader actions(tag.Rest()); // when they break off, the rest still counts
            ReadClipActions(actions, *place.pExtras);
        }
    }
    if (!tag.Failed())
    {
        const std::size_t cb = BytesBeside(place);
        (void)AddStep(timeline, std::move(place), cb);
    }
}

void CMovieReader::AddActions(std::span<const std::uint8_t> bytes, std::vector<TimelineAction>& out)
{
    for (TimelineAction& action : ReadActions(bytes, m_budget))
    {
        if (!m_budget.Take(sizeof(TimelineAction) + action.label.size() + action.target.size()))
            break;
        out.push_back(std::move(action));
    }
}

/// Events with their actions, of which those that come by themselves count.
void CMovieReader::ReadClipActions(CByteReader& tag, PlacementExtras& extras)
{
    constexpr std::uint32_t kLoad = 1, kEnterFrame = 2, kInitialize = 0x200, kKeyPress = 0x2'0000,
                            kConstruct = 0x4'0000;
    const bool isWide = m_movie.file.version >= 6;
    const auto readEvents = [&] { return isWide ? tag.U32() : tag.U16(); };
    (void)tag.U16();
    (void)readEvents(); // all events together
    while (const std::uint32_t events = readEvents())
    {
        const std::size_t cb = tag.U32();
        CByteReader body(tag.Take(std::min(cb, tag.Left())));
        if ((events & kKeyPress) != 0)
            (void)body.U8();
        const auto actions = body.Rest();
        if ((events & (kLoad | kInitialize | kConstruct)) != 0)
            AddActions(actions, extras.onLoad);
        if ((events & kEnterFrame) != 0)
            AddActions(actions, extras.onFrame);
        if (tag.Failed() || !m_budget.Take(0))
            break;
    }
}

void CMovieReader::ReadClasses(CByteReader& tag)
{
    for (std::uint32_t n = tag.U16(); n > 0 && !tag.Failed(); --n)
    {
        const std::uint16_t id = tag.U16();
        std::string name = tag.String();
        if (!tag.Failed() && m_budget.Take(kLabelBytes + name.size()))
            m_movie.classes.emplace(std::move(name), id);
    }
}

/// Classes belong to sprites, and to the root as number 0. Each timeline has its actions from one class.
void CMovieReader::AddScripts()
{
    std::set<std::uint16_t> scripted;
    for (const auto bytes : m_scripts)
        for (auto& [name, actions] : ReadClassActions(bytes, m_budget))
        {
            const auto found = m_movie.classes.find(name);
            if (found == m_movie.classes.end() || !scripted.insert(found->second).second)
                continue;
            Timeline* const pTimeline = found->second == 0 ? &m_movie.root : FindForChange<Timeline>(found->second);
            if (pTimeline)
                AddClassActions(*pTimeline, std::move(actions));
        }
}

void CMovieReader::ReadDefinition(std::uint32_t code, CByteReader& tag)
{
    const auto id = tag.U16();
    if (tag.Failed())
        return;
    switch (code)
    {
    case kDefineShape:
    case kDefineShape2:
    case kDefineShape3:
    case kDefineShape4:
    {
        const int version = code == kDefineShape ? 1 : code == kDefineShape2 ? 2 : code == kDefineShape3 ? 3 : 4;
        Shape shape;
        if (ReadShape(tag, version, m_budget, shape))
            Keep(id, std::move(shape));
        return;
    }
    case kDefineMorphShape:
    case kDefineMorphShape2:
    {
        MorphShape morph;
        if (ReadMorphShape(tag, code == kDefineMorphShape ? 1 : 2, m_budget, morph))
            Keep(id, std::move(morph));
        return;
    }
    case kDefineFont:
    case kDefineFont2:
    case kDefineFont3:
    {
        Font font;
        if (ReadFont(tag, code == kDefineFont ? 1 : code == kDefineFont2 ? 2 : 3, m_budget, font))
            Keep(id, std::move(font));
        return;
    }
    case kDefineFont4:
    {
        Font font;
        if (ReadFontFile(tag, font) && m_budget.Take(font.name.size()))
            Keep(id, std::move(font));
        return;
    }
    case kDefineFontInfo:
    case kDefineFontInfo2:
        if (Font* const pFont = FindForChange<Font>(id))
            ReadFontInfo(tag, code == kDefineFontInfo ? 1 : 2, m_budget, *pFont);
        return;
    case kDefineText:
    case kDefineText2:
    {
        Text text;
        if (ReadText(tag, code == kDefineText ? 1 : 2, m_budget, text))
            Keep(id, std::move(text));
        return;
    }
    case kDefineEditText:
        return ReadEditText(id, tag);
    case kDefineBits:
    case kDefineBitsJpeg2:
    case kDefineBitsJpeg3:
    case kDefineBitsJpeg4:
    case kDefineBitsLossless:
    case kDefineBitsLossless2:
        return ReadBitmap(code, id, tag);
    case kDefineSprite:
        return ReadSprite(id, tag);
    case kDefineButton:
    case kDefineButton2:
        return ReadButton(code, id, tag);
    case kDefineVideoStream:
    case kVideoFrame:
        return ReadVideo(code, id, tag);
    case kDefineScalingGrid:
        m_movie.scaleGrids.emplace(id, tag.ReadRect());
        return;
    default:
        return;
    }
}

void CMovieReader::ReadBitmap(std::uint32_t code, std::uint16_t id, CByteReader& tag)
{
    PackedBitmap packed;
    bool known = false;
    if (code == kDefineBitsLossless || code == kDefineBitsLossless2)
        known = DescribeLossless(tag.Rest(), code == kDefineBitsLossless2, packed);
    else
    {
        if (code == kDefineBits)
            packed.tables = m_jpegTables;
        std::size_t cb = tag.Left();
        if (code == kDefineBitsJpeg3 || code == kDefineBitsJpeg4)
            cb = tag.U32();
        if (code == kDefineBitsJpeg4)
            (void)tag.U16(); // deblocking
        packed.data = tag.Take(std::min(cb, tag.Left()));
        packed.alpha = tag.Rest();
        known = DescribePng(packed) || DescribeGif(packed) || DescribeJpeg(packed);
    }
    if (known && m_budget.Take(std::size_t{packed.width} * packed.height * sizeof(std::uint32_t)))
        (void)Keep(id, packed);
}

void CMovieReader::ReadSprite(std::uint16_t id, CByteReader& tag)
{
    (void)tag.U16(); // frames as claimed
    Timeline timeline;
    ReadTags(tag.Rest(), timeline, false);
    if (timeline.frameEnds.empty())
        timeline.frameEnds.push_back(0);
    Keep(id, std::move(timeline));
}

/// Only what a button shows when nobody is near: a timeline of one frame.
void CMovieReader::ReadButton(std::uint32_t code, std::uint16_t id, CByteReader& tag)
{
    const bool second = code == kDefineButton2;
    if (second)
    {
        (void)tag.U8();
        (void)tag.U16();
    }
    Timeline timeline;
    while (!tag.Failed())
    {
        const std::uint8_t flags = tag.U8();
        if (flags == 0)
            break;
        Placement place;
        place.character = tag.U16();
        place.depth = tag.U16();
        place.matrix = tag.ReadMatrix();
        if (second)
            place.colours = tag.ReadColourTransform(true);
        if (second && (flags & 0x10) != 0)
            place.filters = ReadFilters(tag);
        if (second && (flags & 0x20) != 0)
            place.blend = BlendOf(tag.U8());
        if ((flags & 1) == 0 || tag.Failed())
            continue;
        const std::size_t cb = BytesBeside(place);
        if (!AddStep(timeline, std::move(place), cb))
            break;
    }
    timeline.frameEnds.push_back(static_cast<std::uint32_t>(timeline.steps.size()));
    Keep(id, std::move(timeline));
}

void CMovieReader::ReadEditText(std::uint16_t id, CByteReader& tag)
{
    EditText edit;
    edit.bounds = tag.ReadRect();
    const std::uint32_t flags = std::uint32_t{tag.U8()} << 8 | tag.U8();
    edit.wordWrap = (flags & 0x4000) != 0;
    edit.multiline = (flags & 0x2000) != 0;
    edit.password = (flags & 0x1000) != 0;
    edit.autoSize = (flags & 0x0040) != 0;
    edit.border = (flags & 0x0008) != 0;
    edit.isHtml = (flags & 0x0002) != 0;
    if ((flags & 0x0100) != 0)
        edit.font = tag.U16();
    if ((flags & 0x0080) != 0)
        (void)tag.String(); // class of the font
    if ((flags & 0x0180) != 0)
        edit.height = tag.U16();
    if ((flags & 0x0400) != 0)
        edit.colour = tag.RgbaColour();
    if ((flags & 0x0200) != 0)
        (void)tag.U16(); // most characters
    if ((flags & 0x0020) != 0)
    {
        edit.align = tag.U8();
        edit.leftMargin = tag.U16();
        edit.rightMargin = tag.U16();
        edit.indent = tag.U16();
        edit.leading = tag.S16();
    }
    (void)tag.String(); // variable
    if ((flags & 0x8000) != 0)
        edit.text = tag.String();
    if (edit.bounds.Width() >= 0 && edit.bounds.Height() >= 0 && m_budget.Take(LayoutBytes(edit)))
        Keep(id, std::move(edit));
}

void CMovieReader::ReadVideo(std::uint32_t code, std::uint16_t id, CByteReader& tag)
{
    if (code == kDefineVideoStream)
    {
        VideoStream stream;
        (void)tag.U16(); // frames as claimed
        stream.width = tag.U16();
        stream.height = tag.U16();
        stream.smooth = (tag.U8() & 1) != 0;
        stream.codec = tag.U8();
        const std::size_t pixels = std::size_t{stream.width} * stream.height;
        if (tag.Failed() || pixels == 0 || stream.width > kMaxBitmapSide || stream.height > kMaxBitmapSide ||
            pixels > kMaxBitmapPixels || !m_budget.Take(stream.MostPixels() * kVideoPixelBytes))
            return;
        Keep(id, std::move(stream));
        return;
    }
    VideoStream* const pStream = FindForChange<VideoStream>(id);
    const std::size_t number = tag.U16();
    const auto packet = tag.Rest();
    if (!pStream || tag.Failed() || number >= kMaxVideoFrames || packet.size() > kMaxVideoPacketBytes)
        return;
    if (pStream->frames.size() <= number)
    {
        if (!m_budget.Take((number + 1 - pStream->frames.size()) * sizeof(pStream->frames[0])))
            return;
        pStream->frames.resize(number + 1);
    }
    pStream->frames[number] = packet;
}
} // namespace swf
