#include "host/compose/TrackPlayer.h"

#include "host/HostError.h"
#include "host/compose/Layout.h"
#include "host/compose/PictureLayer.h"
#include "host/project/Decimal.h"

#include <algorithm>
#include <memory>
#include <set>

namespace qmx::host
{
namespace
{
/// Keys of the decoders that @p clip shares with others of its track.
std::vector<std::wstring> DecoderKeys(IQMXBaseClip& clip)
{
    auto* const pTransition = dynamic_cast<CQMXTXClip*>(&clip);
    if (!pTransition)
        return {clip.GetDecoderKey()};
    std::vector<std::wstring> keys;
    for (IQMXBaseClip* const pSide : {pTransition->GetFromClip(), pTransition->GetToClip()})
    {
        if (pSide)
            keys.push_back(pSide->GetDecoderKey());
    }
    return keys;
}
} // namespace

TrackPlayer::TrackPlayer(IQMXDocument& document, MediaProbe& probe, const Project& project, const ProjectTrack& track)
    : m_project(project), m_description(track), m_box(BoxOnCanvas(track.box, project.width, project.height))
{
    const auto fits = [](std::int32_t side) { return side >= 2 && side <= static_cast<std::int32_t>(kMaxCanvasSide); };
    if (!fits(m_box.Width()) || !fits(m_box.Height()))
        throw HostError(ExitCode::Project, project.file.string(),
                        track.place + ".position: makes a box of " + std::to_string(m_box.Width()) + " x " +
                            std::to_string(m_box.Height()) + " pixels, each side must have 2 to " +
                            std::to_string(kMaxCanvasSide));
    const tagPIPPOSITION position{track.box.left, track.box.top, track.box.width, track.box.height};
    std::unique_ptr<IQMXTrack> pTrack(CreateQMXTrack(track.id, QMXTrackType{}, document.GetDocumentID(), position));
    if (!pTrack || !document.AddTrack(pTrack.get()))
        throw std::bad_alloc();
    m_pTrack = pTrack.release();
    ClipBuilder builder(*m_pTrack, probe, project.file.string(), m_box);
    m_clips.reserve(track.clips.size());
    for (const ProjectClip& clip : track.clips)
        AddClip(builder.Build(clip));
    std::set<std::wstring> later;
    m_lastUses.resize(track.clips.size());
    for (std::size_t i = track.clips.size(); i-- > 0;)
    {
        for (std::wstring& key : DecoderKeys(*m_pTrack->GetClip(static_cast<int>(i))))
        {
            if (later.insert(key).second)
                m_lastUses[i].push_back(std::move(key));
        }
    }
}

void TrackPlayer::AddClip(ClipBuilder::Clip clip)
{
    if (!m_pTrack->AddClip(clip.pClip.get()))
        throw std::bad_alloc();
    static_cast<void>(clip.pClip.release());
    m_clips.push_back(clip.player);
}

std::optional<PlacedPicture> TrackPlayer::PictureAt(std::uint64_t time)
{
    const auto& clips = m_description.clips;
    const auto after = std::upper_bound(clips.begin(), clips.end(), time,
                                        [](std::uint64_t t, const ProjectClip& clip) { return t < clip.start; });
    if (after == clips.begin() || time >= std::prev(after)->End())
        return std::nullopt;
    const auto index = static_cast<std::size_t>(after - clips.begin()) - 1;
    if (clips[index].kind == ClipKind::Audio)
        return std::nullopt;
    m_firstOpen = std::min(m_firstOpen, index);
    PlacedPicture placed{m_clips[index].PictureAt(time), {}};
    if (placed.pPicture)
        placed.layer = LayerOf(*placed.pPicture.Get(), m_box);
    if (!placed.layer.pPixels)
        throw HostError(ExitCode::Media, m_project.file.string(),
                        clips[index].place + ": no picture can be read at " + SecondsText(time) + " seconds");
    return placed;
}

void TrackPlayer::Advance(std::uint64_t time)
{
    for (; m_firstOpen < m_clips.size() && m_description.clips[m_firstOpen].End() <= time; ++m_firstOpen)
    {
        m_clips[m_firstOpen].Close();
        for (const std::wstring& key : m_lastUses[m_firstOpen])
            RemoveDecoder(key);
    }
}
} // namespace qmx::host
