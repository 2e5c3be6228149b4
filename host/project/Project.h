/// @file Project.h
/// A project as its file describes it: plain records, checked by ProjectReader.
#pragma once

#include "engine/decoders/still/KeystrokeInfo.h"
#include "engine/decoders/still/TitleTextInfo.h"
#include "host/project/FrameRate.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qmx::host
{
inline constexpr std::uint32_t kMaxCanvasSide = 16'384; ///< pixels, each way
inline constexpr double kMaxVolume = 16;

enum class ClipKind
{
    Video,
    Camera,
    Image,
    Color,
    Audio,
    Title,
    Keystroke,
    Transition
};

/// Corner and length of the strip of keystroke labels, in fractions of the track's box.
struct KeystrokeStrip
{
    float left = 0;
    float top = 0;
    float width = 1;
};

/// A colour that is taken out of a clip's pictures.
struct ProjectKey
{
    std::string place;                ///< "tracks[1].clips[0].key"
    std::uint32_t color = 0;          ///< 0x00RRGGBB
    double similarity = 0.06;         ///< chroma distance that is keyed fully, 0 to 1
    double smoothness = 0.22;         ///< width of the ramp from keyed to kept, 0 to 1
    double spill = 1;                 ///< strength of the spill suppression, 0 to 1
    std::filesystem::path background; ///< picture that shows through; empty: what lies beneath the clip
};

struct ProjectTransition;

struct ProjectClip
{
    std::string place; ///< where it stands in the file, "tracks[1].clips[0]", for messages
    ClipKind kind = ClipKind::Color;
    std::uint64_t start = 0;            ///< time on the project's time line, 100 ns
    std::uint64_t duration = 0;         ///< 100 ns, never 0
    std::uint64_t inPoint = 0;          ///< time in the source that is shown at the start, 100 ns
    std::filesystem::path path;         ///< of the media, already joined to the project file's folder; of a camera
                                        ///< recording its name, which no file need have
    std::uint32_t rotation = 0;         ///< degrees clockwise: 0, 90, 180 or 270
    std::optional<FrameRate> frameRate; ///< when absent, that of the media
    double volume = 1;                  ///< factor of the clip's sound, 0 to kMaxVolume
    bool mute = false;
    std::vector<tagQMXTitleTextInfo> texts;
    std::vector<tagQMXKeystrokeInfo> keystrokes; ///< by start time
    KeystrokeStrip strip;
    std::optional<ProjectKey> key;
    std::unique_ptr<ProjectTransition> pTransition; ///< of a transition, and never null there

    std::uint64_t End() const { return start + duration; }
};

/// What a transition has beyond other clips.
struct ProjectTransition
{
    std::string module;              ///< name of a file beside the program, with or without the system's extension
    std::uint32_t effect = 0;        ///< number of the module's effect
    std::optional<float> progress;   ///< the same for every picture, 0 to 1; otherwise it runs from 0 to 1
    std::optional<ProjectClip> from; ///< one of the two may be missing; neither is a transition, and both can be seen
    std::optional<ProjectClip> to;
};

/// Where on the canvas a track is shown, in fractions of the canvas's width and height.
struct BoxFractions
{
    double left = 0;
    double top = 0;
    double width = 1;
    double height = 1;
};

struct ProjectTrack
{
    std::string place; ///< "tracks[1]"
    std::uint64_t id = 0;
    BoxFractions box;
    double volume = 1; ///< factor of the sound of all its clips, 0 to kMaxVolume
    bool mute = false;
    std::vector<ProjectClip> clips; ///< by start time, without overlaps
};

struct Project
{
    std::filesystem::path file;
    std::uint32_t width = 0;  ///< pixels
    std::uint32_t height = 0; ///< pixels
    FrameRate frameRate;
    std::vector<ProjectTrack> tracks; ///< bottom first

    /// End of the last clip, 100 ns.
    std::uint64_t Duration() const;
    /// Frames that start before the end.
    std::uint64_t FrameCount() const { return frameRate.FramesBefore(Duration()); }
    /// Every file that the project is made of, its own first. Some may not exist.
    std::vector<std::filesystem::path> Files() const;
};
} // namespace qmx::host
