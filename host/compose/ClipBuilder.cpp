#include "host/compose/ClipBuilder.h"

#include "host/HostError.h"
#include "host/compose/TransitionSide.h"
#include "host/effects/LoadedEffect.h"
#include "host/project/CameraFiles.h"
#include "host/system/Platform.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace qmx::host
{
namespace
{
ClipPlayer::Source SourceOf(const tagVideoInfo& info, const ProjectClip& description)
{
    ClipPlayer::Source source;
    if (description.frameRate)
        source.frameRate = description.frameRate->PerSecond();
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
    case ClipKind::Transition:
        return QMXClipType_Transition;
    case ClipKind::Color:
        break;
    }
    return QMXClipType_Color;
}

std::string FilePlace(const std::string& place, const std::filesystem::path& path)
{
    return place + ": " + path.string() + ": ";
}

std::uint8_t ByteOf(std::uint32_t color, int shift)
{
    return static_cast<std::uint8_t>(color >> shift);
}
} // namespace

ClipBuilder::ClipBuilder(IQMXTrack& track, MediaProbe& probe, std::string fileName, const PixelBox& box)
    : m_track(track), m_probe(probe), m_fileName(std::move(fileName)), m_box(box)
{
}

ClipBuilder::Clip ClipBuilder::Build(const ProjectClip& description)
{
    switch (description.kind)
    {
    case ClipKind::Video:
        return BuildVideo(description);
    case ClipKind::Camera:
        return BuildCamera(description);
    case ClipKind::Audio:
        return BuildAudio(description);
    case ClipKind::Image:
        return BuildImage(description);
    case ClipKind::Title:
        return BuildTitle(description);
    case ClipKind::Keystroke:
        return BuildKeystroke(description);
    case ClipKind::Transition:
        return BuildTransition(description);
    case ClipKind::Color:
        break;
    }
    return FillBox(MakeClip(description));
}

std::unique_ptr<IQMXBaseClip> ClipBuilder::MakeClip(const ProjectClip& description)
{
    std::unique_ptr<IQMXBaseClip> pClip(CreateClipByClipType(TypeOf(description.kind)));
    if (!pClip)
        throw std::bad_alloc();
    pClip->SetStartTime(description.start);
    pClip->SetDuration(description.duration);
    pClip->SetInPoint(description.inPoint);
    const bool isCamera = description.kind == ClipKind::Camera;
    pClip->SetFilePath(isCamera ? CameraEnginePath(description.path) : EnginePath(description.path));
    pClip->SetTrackID(m_track.GetTrackID());
    pClip->SetDocumentID(m_track.GetDocumentID()); // clips of transitions are on no track, and share its decoders
    return pClip;
}

/// As MakeClip(), for the class that the engine makes of the kind.
template <class T> std::unique_ptr<T> ClipBuilder::Make(const ProjectClip& description)
{
    std::unique_ptr<IQMXBaseClip> pClip = MakeClip(description);
    auto* const pOwn = dynamic_cast<T*>(pClip.get());
    if (!pOwn)
        throw HostError(ExitCode::Failed, m_fileName, description.place + ": the engine made another kind of clip");
    static_cast<void>(pClip.release());
    return std::unique_ptr<T>(pOwn);
}

void ClipBuilder::FailToFit(const ProjectClip& description, std::uint32_t width, std::uint32_t height) const
{
    throw HostError(ExitCode::Project, m_fileName,
                    description.place + ": a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                        " cannot be fitted into the track's position");
}

/// A clip whose pictures fill the track's box: they are made, not read.
ClipBuilder::Clip ClipBuilder::FillBox(std::unique_ptr<IQMXBaseClip> pClip)
{
    ClipPlayer player(*pClip, BoxWidth(), BoxHeight());
    return {std::move(pClip), player};
}

// ---- films -------------------------------------------------------------------------------------------------------

ClipBuilder::Clip ClipBuilder::BuildVideo(const ProjectClip& description)
{
    const tagVideoInfo& info =
        m_probe.Video(description.path, m_fileName, FilePlace(description.place + ".path", description.path));
    return BuildFilm(description, {info.nWidth, info.nHeight, info.nPixelAspectX, info.nPixelAspectY},
                     SourceOf(info, description));
}

ClipBuilder::Clip ClipBuilder::BuildCamera(const ProjectClip& description)
{
    const CameraFacts& facts =
        m_probe.Camera(description.path, m_fileName, FilePlace(description.place + ".path", description.path));
    ClipPlayer::Source source;
    source.frameRate = description.frameRate ? description.frameRate->PerSecond() : facts.frameRate;
    source.frames = facts.frames;
    source.askTwice = IsMotionJpegName(description.path);
    return BuildFilm(description, {facts.width, facts.height, 1, 1, false}, source);
}

ClipBuilder::Clip ClipBuilder::BuildFilm(const ProjectClip& description, const VideoShape& shape,
                                         const ClipPlayer::Source& source)
{
    const std::optional<PictureSize> size = FitVideo(shape, description.rotation, BoxWidth(), BoxHeight());
    if (!size)
        FailToFit(description, shape.width, shape.height);
    std::unique_ptr<CQMXVideoClip> pVideo = Make<CQMXVideoClip>(description); // camera clips are video clips too
    pVideo->SetRotation(description.rotation);
    pVideo->SetFrameRate(source.frameRate);
    if (description.key)
        SetKey(*pVideo, *description.key);
    ClipPlayer player(*pVideo, size->width, size->height, source);
    return {std::move(pVideo), player};
}

void ClipBuilder::SetKey(CQMXVideoClip& clip, const ProjectKey& key)
{
    tagTransparentColorInfo info;
    info.dSimilarity = key.similarity;
    info.dSmoothness = key.smoothness;
    info.dSpill = key.spill;
    info.nColor[0] = ByteOf(key.color, 16);
    info.nColor[1] = ByteOf(key.color, 8);
    info.nColor[2] = ByteOf(key.color, 0);
    info.nOption = 1; // a spill of 0 leaves the colours as they are
    info.bKeyOnly = key.background.empty() ? 1 : 0;
    if (!key.background.empty())
        info.pBackground = LoadPicture(key.background, key.place + ".background").Detach();
    clip.SetTransparentColor(true, &info); // takes the background
}

/// The first picture of a file in its own size.
SampleBufferPtr ClipBuilder::LoadPicture(const std::filesystem::path& path, const std::string& place)
{
    const std::string prefix = FilePlace(place, path);
    const PictureFacts& facts = m_probe.Picture(path, m_fileName, prefix);
    const std::unique_ptr<IQMXBaseClip> pImage(CreateClipByClipType(QMXClipType_Image));
    if (!pImage)
        throw std::bad_alloc();
    pImage->SetFilePath(EnginePath(path));
    tagRenderProp request;
    request.flags = kRequestNoTimeTable;
    request.width = request.height = std::max(facts.width, facts.height);
    SampleBufferPtr pPicture = SampleBufferPtr::Adopt(pImage->GetFrame(request, 0, nullptr));
    if (!pPicture)
        throw HostError(ExitCode::Media, m_fileName, prefix + "holds no picture that can be read");
    return pPicture;
}

// ---- other files -------------------------------------------------------------------------------------------------

/// A clip that is heard only; the sound mixer plays it.
ClipBuilder::Clip ClipBuilder::BuildAudio(const ProjectClip& description)
{
    m_probe.NeedSound(description.path, m_fileName, FilePlace(description.place + ".path", description.path));
    std::unique_ptr<IQMXBaseClip> pClip = MakeClip(description);
    ClipPlayer player(*pClip, 0, 0);
    return {std::move(pClip), player};
}

ClipBuilder::Clip ClipBuilder::BuildImage(const ProjectClip& description)
{
    const PictureFacts& facts =
        m_probe.Picture(description.path, m_fileName, FilePlace(description.place + ".path", description.path));
    const std::uint32_t mask = facts.format == "GIF" ? ~0U : ~1U; // stills lose an odd column or row
    const std::optional<std::uint32_t> side =
        FitImage(facts.width & mask, facts.height & mask, description.rotation, BoxWidth(), BoxHeight());
    if (!side)
        FailToFit(description, facts.width, facts.height);
    std::unique_ptr<CQMXImageClip> pImage = Make<CQMXImageClip>(description);
    pImage->SetRotation(description.rotation);
    ClipPlayer player(*pImage, *side, *side);
    return {std::move(pImage), player};
}

// ---- made pictures -----------------------------------------------------------------------------------------------

ClipBuilder::Clip ClipBuilder::BuildTitle(const ProjectClip& description)
{
    std::unique_ptr<CQMXTitleClip> pTitle = Make<CQMXTitleClip>(description);
    for (const tagQMXTitleTextInfo& text : description.texts)
        pTitle->AddTitleText(std::make_unique<tagQMXTitleTextInfo>(text).release());
    return FillBox(std::move(pTitle));
}

ClipBuilder::Clip ClipBuilder::BuildKeystroke(const ProjectClip& description)
{
    std::unique_ptr<CQMXKeystrokeClip> pKeystrokes = Make<CQMXKeystrokeClip>(description);
    const KeystrokeStrip& strip = description.strip;
    pKeystrokes->SetLeftAndTopAndWidth(strip.left, strip.top, strip.width);
    for (const tagQMXKeystrokeInfo& keystroke : description.keystrokes)
        pKeystrokes->AddKeystroke(std::make_unique<tagQMXKeystrokeInfo>(keystroke).release());
    return FillBox(std::move(pKeystrokes));
}

ClipBuilder::Clip ClipBuilder::BuildTransition(const ProjectClip& description)
{
    const ProjectTransition& transition = *description.pTransition;
    const std::string file = transition.module + ModuleExtension();
    const std::wstring name = EngineText(file);
    // The engine tells no more than that there is no picture.
    const LoadedEffect check(ProgramFolder() + name, m_fileName, description.place + ".module: " + file + ": ");

    std::unique_ptr<CQMXTXClip> pTransition = Make<CQMXTXClip>(description);
    pTransition->SetEffectModule(name);
    pTransition->SetEffectType(transition.effect);
    if (transition.progress)
        pTransition->SetProgress(*transition.progress);
    if (!pTransition->SetFromClip(BuildSide(transition.from)) || !pTransition->SetToClip(BuildSide(transition.to)))
        throw std::bad_alloc();
    return FillBox(std::move(pTransition));
}

/// @return a clip for the transition to own; null where there is none
IQMXBaseClip* ClipBuilder::BuildSide(const std::optional<ProjectClip>& description)
{
    if (!description)
        return nullptr;
    Clip clip = Build(*description);
    return std::make_unique<TransitionSide>(std::move(clip.pClip), clip.player, BoxWidth(), BoxHeight()).release();
}
} // namespace qmx::host
