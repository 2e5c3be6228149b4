#include "host/compose/TrackPlayer.h"

#include "host/HostError.h"
#include "host/project/CameraFiles.h"
#include "host/project/Decimal.h"
#include "host/system/Platform.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

namespace qmx::host
{
namespace
{
ClipPlayer::Source SourceOf(const tagVideoInfo& info, const ProjectClip& clip)
{
    ClipPlayer::Source source;
    if (clip.frameRate)
        source.frameRate = clip.frameRate->PerSecond();
    else if (info.nFrameRateNum != 0 && info.nFrameRateDen != 0)
        source.frameRate = static_cast<double>(info.nFrameRateNum) / info.nFrameRateDen;
    // A duration that is no number, or beyond all reason, is as good as none.
    if (info.dDuration > 0 && info.dDuration < 1e9)
        source.duration = static_cast<std::uint64_t>(std::llround(info.dDuration * 1e7));
    return source;
}

QMXClipType TypeOf(ClipKind kind)
{
    switch (kind)
    {
    case ClipKind::Video:
        return QMXClipType_Video;
    case ClipKind::Image:
        return QMXClipType_Image;
    case ClipKind::Audio:
        return QMXClipType_Audio;
    case ClipKind::Title:
        return QMXClipType_Title;
    case ClipKind::Keystroke:
        return QMXClipType_Keystroke;
    case ClipKind::Camera:
        return QMXClipType_Camera;
    case ClipKind::Color:
        break;
    }
    return QMXClipType_Color;
}

Layer LayerOf(ISampleBuffer& picture, const PixelBox& box)
{
    std::uint8_t* pPixels = nullptr;
    std::uint32_t length = 0;
    const std::uint32_t stride = picture.GetStride();
    Layer layer;
    if (!picture.GetBuffer(&pPixels, &length) || picture.GetFormat() != kSampleFormatBgra ||
        std::uint64_t{stride} * picture.GetHeight() > length)
        return layer;
    layer.pPixels = pPixels;
    layer.stride = stride;
    layer.place = Centred(box, picture.GetWidth(), picture.GetHeight());
    if (picture.GetAlphaFlag())
        layer.alpha = picture.GetFlag() == 1 ? AlphaMode::Premultiplied : AlphaMode::Straight;
    return layer;
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
    m_clips.reserve(track.clips.size());
    for (const ProjectClip& clip : track.clips)
    {
        switch (clip.kind)
        {
        case ClipKind::Video:
            AddVideo(probe, clip);
            break;
        case ClipKind::Camera:
            AddCamera(probe, clip);
            break;
        case ClipKind::Audio:
            AddAudio(probe, clip);
            break;
        case ClipKind::Image:
            AddImage(probe, clip);
            break;
        case ClipKind::Color:
        case ClipKind::Title:
        case ClipKind::Keystroke:
            AddGenerated(clip);
            break;
        }
    }
    std::set<std::filesystem::path> later;
    m_lastOfFile.resize(track.clips.size());
    for (std::size_t i = track.clips.size(); i-- > 0;)
        m_lastOfFile[i] = later.insert(track.clips[i].path).second;
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
        m_clips[m_firstOpen].Close(m_lastOfFile[m_firstOpen]);
}

IQMXBaseClip& TrackPlayer::AddClip(const ProjectClip& clip)
{
    std::unique_ptr<IQMXBaseClip> pClip(CreateClipByClipType(TypeOf(clip.kind)));
    if (!pClip)
        throw std::bad_alloc();
    pClip->SetStartTime(clip.start);
    pClip->SetDuration(clip.duration);
    pClip->SetInPoint(clip.inPoint);
    pClip->SetFilePath(clip.kind == ClipKind::Camera ? CameraEnginePath(clip.path) : EnginePath(clip.path));
    pClip->SetTrackID(m_description.id); // adding it to a track stamps only the document's ID
    if (!m_pTrack->AddClip(pClip.get()))
        throw std::bad_alloc();
    return *pClip.release();
}

void TrackPlayer::AddVideo(MediaProbe& probe, const ProjectClip& clip)
{
    const tagVideoInfo& info =
        probe.Video(clip.path, m_project.file.string(), clip.place + ".path: " + clip.path.string() + ": ");
    AddSource(clip, {info.nWidth, info.nHeight, info.nPixelAspectX, info.nPixelAspectY}, SourceOf(info, clip));
}

void TrackPlayer::AddCamera(MediaProbe& probe, const ProjectClip& clip)
{
    const CameraFacts& facts =
        probe.Camera(clip.path, m_project.file.string(), clip.place + ".path: " + clip.path.string() + ": ");
    ClipPlayer::Source source;
    source.frameRate = clip.frameRate ? clip.frameRate->PerSecond() : facts.frameRate;
    source.frames = facts.frames;
    source.askTwice = IsMotionJpegName(clip.path);
    AddSource(clip, {facts.width, facts.height, 1, 1, false}, source);
}

void TrackPlayer::AddSource(const ProjectClip& clip, const VideoShape& shape, const ClipPlayer::Source& source)
{
    const std::string subject = m_project.file.string();
    const std::optional<PictureSize> size = FitVideo(shape, clip.rotation, static_cast<std::uint32_t>(m_box.Width()),
                                                     static_cast<std::uint32_t>(m_box.Height()));
    if (!size)
        throw HostError(ExitCode::Project, subject,
                        clip.place + ": a picture of " + std::to_string(shape.width) + " x " +
                            std::to_string(shape.height) + " cannot be fitted into the track's position");
    IQMXBaseClip& added = AddClip(clip);
    auto* const pVideo = dynamic_cast<CQMXVideoClip*>(&added); // camera clips are video clips too
    if (!pVideo)
        throw HostError(ExitCode::Failed, subject, clip.place + ": the engine made no video clip");
    pVideo->SetRotation(clip.rotation);
    pVideo->SetFrameRate(source.frameRate);
    m_clips.emplace_back(*m_pTrack, static_cast<int>(m_clips.size()), size->width, size->height, source);
}

/// A clip that is heard only; the sound mixer plays it.
void TrackPlayer::AddAudio(MediaProbe& probe, const ProjectClip& clip)
{
    const std::string prefix = clip.place + ".path: " + clip.path.string() + ": ";
    probe.NeedSound(clip.path, m_project.file.string(), prefix);
    AddClip(clip);
    m_clips.emplace_back(*m_pTrack, static_cast<int>(m_clips.size()), 0, 0);
}

void TrackPlayer::AddImage(MediaProbe& probe, const ProjectClip& clip)
{
    const std::string subject = m_project.file.string();
    const PictureFacts& facts = probe.Picture(clip.path, subject, clip.place + ".path: " + clip.path.string() + ": ");
    const std::uint32_t mask = facts.format == "GIF" ? ~0U : ~1U; // stills lose an odd column or row
    const std::optional<std::uint32_t> side =
        FitImage(facts.width & mask, facts.height & mask, clip.rotation, static_cast<std::uint32_t>(m_box.Width()),
                 static_cast<std::uint32_t>(m_box.Height()));
    if (!side)
        throw HostError(ExitCode::Project, subject,
                        clip.place + ": a picture of " + std::to_string(facts.width) + " x " +
                            std::to_string(facts.height) + " cannot be fitted into the track's position");
    auto* const pImage = dynamic_cast<CQMXImageClip*>(&AddClip(clip));
    if (!pImage)
        throw HostError(ExitCode::Failed, subject, clip.place + ": the engine made no image clip");
    pImage->SetRotation(clip.rotation);
    m_clips.emplace_back(*m_pTrack, static_cast<int>(m_clips.size()), *side, *side);
}

/// A clip whose pictures fill the track's box: they are made, not read.
void TrackPlayer::AddGenerated(const ProjectClip& clip)
{
    IQMXBaseClip& added = AddClip(clip);
    if (auto* const pTitle = dynamic_cast<CQMXTitleClip*>(&added))
    {
        for (const tagQMXTitleTextInfo& text : clip.texts)
            pTitle->AddTitleText(std::make_unique<tagQMXTitleTextInfo>(text).release());
    }
    if (auto* const pKeystrokes = dynamic_cast<CQMXKeystrokeClip*>(&added))
    {
        pKeystrokes->SetLeftAndTopAndWidth(clip.strip.left, clip.strip.top, clip.strip.width);
        for (const tagQMXKeystrokeInfo& keystroke : clip.keystrokes)
            pKeystrokes->AddKeystroke(std::make_unique<tagQMXKeystrokeInfo>(keystroke).release());
    }
    m_clips.emplace_back(*m_pTrack, static_cast<int>(m_clips.size()), static_cast<std::uint32_t>(m_box.Width()),
                         static_cast<std::uint32_t>(m_box.Height()));
}
} // namespace qmx::host
