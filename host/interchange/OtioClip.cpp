#include "host/interchange/OtioClip.h"

#include "host/project/Decimal.h"
#include "host/project/JsonText.h"
#include "host/project/Project.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qmx::host
{
namespace
{
constexpr std::array kPictureExtensions{".jpg", ".jpeg", ".png", ".bmp", ".ico", ".tif", ".tiff", ".webp", ".gif"};
constexpr std::array kSoundExtensions{".wav", ".mp3",  ".m4a", ".aac", ".flac",
                                      ".ogg", ".opus", ".wma", ".aif", ".aiff"};
/// Kinds of clips, and whether they have a path and an in point.
struct KindFields
{
    const char* pType;
    bool hasPath;
    bool hasInPoint;
};
constexpr std::array<KindFields, 7> kKinds{{{"video", true, true},
                                            {"camera", true, true},
                                            {"image", true, true},
                                            {"audio", true, true},
                                            {"keystroke", false, true},
                                            {"title", false, false},
                                            {"color", false, false}}};
/// Fields that follow from where the clip stands in the timeline and what it refers to.
constexpr std::array kPlaceFields{"type", "start", "duration", "path", "inPoint", "side"};

template <std::size_t N> bool Contains(const std::array<const char*, N>& list, std::string_view text)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

const KindFields* FindKind(std::string_view type)
{
    const auto it = std::find_if(kKinds.begin(), kKinds.end(), [&](const KindFields& k) { return k.pType == type; });
    return it == kKinds.end() ? nullptr : &*it;
}

std::string ExtensionOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return extension;
}

/// The file name of the first picture of a sequence: its number with as many zeros as it takes.
std::string FirstPictureUrl(const OtioObject& sequence)
{
    const auto number = static_cast<long long>(std::clamp(sequence.Number("start_frame").value_or(1), -1e9, 1e9));
    const auto padding =
        static_cast<std::size_t>(std::clamp(sequence.Number("frame_zero_padding").value_or(0), 0.0, 32.0));
    std::string digits = std::to_string(std::abs(number));
    digits.insert(0, digits.size() < padding ? padding - digits.size() : 0, '0');
    std::string base = sequence.Text("target_url_base");
    if (!base.empty() && base.back() != '/')
        base += '/';
    return base + sequence.Text("name_prefix") + (number < 0 ? "-" : "") + digits + sequence.Text("name_suffix");
}

/// Drafts one clip: what it refers to, and what this program once wrote about it.
class Drafter
{
public:
    Drafter(const OtioObject& clip, bool isAudio, ImportContext& context)
        : m_clip(clip), m_context(context), m_reference(ActiveReference(clip)), m_isAudio(isAudio)
    {
        const JsonValue* const pOwn = clip.OwnMetadata();
        const JsonValue* const pType = pOwn ? FindMember(*pOwn, "type") : nullptr;
        m_pOwnKind = pType ? FindKind(pType->text) : nullptr;
        m_pOwn = m_pOwnKind ? pOwn : nullptr;
    }

    std::optional<ClipDraft> Make()
    {
        if (!Identify())
            return std::nullopt;
        const KindFields* const pKind = FindKind(m_draft.type);
        const std::string extension = ExtensionOf(m_draft.path);
        m_draft.takesInPoint = pKind->hasInPoint && (m_pOwn || m_draft.type != "image" || extension == ".gif");
        if (m_draft.takesInPoint)
            SetInPoint();
        if (m_pOwn)
            TakeOwnSettings();
        else
            MakeSettings();
        return std::move(m_draft);
    }

private:
    void Report(const std::string& what, const std::string& why)
    {
        m_context.report.Add(m_clip.Place(), m_clip.Name(), what, why);
    }

    /// Finds kind and path. @return false when the clip is left out
    bool Identify()
    {
        if (m_pOwnKind && !m_pOwnKind->hasPath)
        {
            m_draft.type = m_pOwnKind->pType;
            return true;
        }
        const std::string schema = m_reference ? m_reference->Schema() : "";
        if (schema == "ExternalReference")
            return TakeUrl(m_reference->Text("target_url"));
        if (schema == "ImageSequenceReference" && !m_isAudio)
        {
            Report("image sequence", "only its first picture is shown");
            return TakeUrl(FirstPictureUrl(*m_reference));
        }
        if (schema == "GeneratorReference")
            return TakeGenerator();
        if (schema.empty() || schema == "MissingReference")
            return Replace("missing media", "");
        return Replace("media reference of the kind " + schema, "");
    }

    bool TakeUrl(const std::string& url)
    {
        std::string reason;
        const std::optional<MediaLocation> location = LocationOfUrl(url, NativePathStyle(), reason);
        if (!location)
            return Replace("media \"" + url + "\"", reason + ", ");
        if (!location->remark.empty())
            Report("media \"" + url + "\"", location->remark + ", it stays as it is");
        m_draft.path = RebasedPath(location->path, m_context.timelineFolder, m_context.projectFolder);
        if (!IsPlainUtf8(m_draft.path))
            return Replace("media \"" + url + "\"", "lies in a folder whose name is no UTF-8 text, ");
        const std::string extension = ExtensionOf(m_draft.path);
        if (m_pOwnKind)
            m_draft.type = m_pOwnKind->pType;
        else if (m_isAudio || Contains(kSoundExtensions, extension))
            m_draft.type = "audio";
        else
            m_draft.type = Contains(kPictureExtensions, extension) ? "image" : "video";
        if (m_draft.type == "camera") // projects name a recording, timelines its media
            m_draft.path.replace(m_draft.path.size() - extension.size(), extension.size(),
                                 extension == ".mov" ? ".mjpg" : ".h264");
        return true;
    }

    bool TakeGenerator()
    {
        const std::string kind = m_reference->Text("generator_kind");
        const std::optional<OtioObject> parameters = m_reference->Child("parameters");
        const JsonValue* const pColor = parameters ? parameters->Find("color") : nullptr;
        const bool isBlack = !pColor ? kind == "black" || kind == "Black"
                                     : pColor->kind == JsonValue::Kind::Text && pColor->text == "#000000";
        if (isBlack && !m_isAudio)
        {
            m_draft.type = "color";
            return true;
        }
        return Replace("generator \"" + kind + '"', "");
    }

    /// A clip without usable media holds its place in black; among sounds it is silence.
    bool Replace(const std::string& what, const std::string& reason)
    {
        Report(what, reason + (m_isAudio ? "left out" : "black takes its place"));
        m_draft = ClipDraft();
        m_draft.type = "color";
        m_pOwn = nullptr;
        m_pOwnKind = nullptr;
        return !m_isAudio;
    }

    void SetInPoint()
    {
        const std::optional<OtioRange> range = RangeOfClip(m_clip);
        const std::optional<OtioRange> available = m_reference ? m_reference->Range("available_range") : std::nullopt;
        if (!range)
            return;
        const TimelineTime start = range->start - (available ? available->start : TimelineTime());
        m_draft.inPoint = start.NearestUnits();
        if (m_draft.inPoint < 0)
            Report("start before the media's", "its first picture is shown instead");
    }

    void TakeOwnSettings()
    {
        for (const JsonMember& member : m_pOwn->members)
        {
            if (!Contains(kPlaceFields, member.name))
                m_draft.settings.push_back(member);
        }
        RebaseBackground(m_draft.settings, m_context.timelineFolder, m_context.projectFolder);
        const JsonValue* const pSide = FindMember(*m_pOwn, "side");
        if (!pSide)
            return;
        const auto units = [&](std::string_view name) -> std::optional<std::int64_t>
        {
            const JsonValue* const pTime = FindMember(*pSide, name);
            const std::optional<Decimal> decimal = pTime ? Decimal::Parse(pTime->text) : std::nullopt;
            const std::optional<std::uint64_t> size = decimal ? decimal->Scaled(7) : std::nullopt;
            if (!size || *size > kMaxTime)
                return std::nullopt;
            return decimal->IsNegative() ? -static_cast<std::int64_t>(*size) : static_cast<std::int64_t>(*size);
        };
        m_draft.sideStart = units("start");
        if (const std::optional<std::int64_t> duration = units("duration"); duration && *duration > 0)
            m_draft.sideDuration = static_cast<std::uint64_t>(*duration);
    }

    void MakeSettings()
    {
        const bool isHeard = m_draft.type == "video" || m_draft.type == "audio";
        if (const double gain = GainOf(m_clip, m_context); isHeard && gain != 1)
            m_draft.settings.push_back({"volume", JsonNumber(NumberText(gain))});
        if (m_draft.type == "video" && m_context.muteFilms)
            m_draft.settings.push_back({"mute", JsonFlag(true)});
    }

    const OtioObject& m_clip;
    ImportContext& m_context;
    std::optional<OtioObject> m_reference;
    bool m_isAudio;
    const JsonValue* m_pOwn = nullptr; // settings that this program wrote
    const KindFields* m_pOwnKind = nullptr;
    ClipDraft m_draft;
};
} // namespace

std::optional<OtioObject> ActiveReference(const OtioObject& clip)
{
    const std::optional<OtioObject> references = clip.Child("media_references");
    if (!references)
        return clip.Child("media_reference");
    std::string key = clip.Text("active_media_reference_key");
    if (key.empty())
        key = "DEFAULT_MEDIA";
    return references->Child(key);
}

std::optional<OtioRange> RangeOfClip(const OtioObject& clip)
{
    if (std::optional<OtioRange> range = clip.Range("source_range"))
        return range;
    const std::optional<OtioObject> reference = ActiveReference(clip);
    return reference ? reference->Range("available_range") : std::nullopt;
}

std::optional<ClipDraft> DraftClip(const OtioObject& clip, bool isAudio, ImportContext& context)
{
    return Drafter(clip, isAudio, context).Make();
}

double GainOf(const OtioObject& object, ImportContext& context)
{
    double gain = 1;
    for (const OtioObject& effect : object.Children("effects"))
    {
        if (effect.Is("AudioVolume") && effect.Flag("enabled", true))
            gain *= effect.Number("gain").value_or(1);
    }
    if (gain >= 0 && gain <= kMaxVolume)
        return gain;
    context.report.Add(object.Place(), object.Name(), "volume " + NumberText(gain),
                       "it is held between 0 and " + NumberText(kMaxVolume));
    return gain > 0 ? kMaxVolume : 0;
}
} // namespace qmx::host
