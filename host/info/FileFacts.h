/// @file FileFacts.h
/// Everything that is known of a file.
#pragma once

#include "host/compose/MediaProbe.h"
#include "host/info/StreamList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qmx::host
{
/// What a file is to a project.
enum class FileKind
{
    Film,
    Sound,
    Picture,
    Animation, ///< a GIF of several frames
    Flash,
    Camera ///< a recording: media file and index
};

/// What a kind is called.
struct KindNames
{
    const char* pField; ///< by programs
    const char* pText;  ///< by people
};
KindNames NamesOf(FileKind kind);

/// A frame rate in lowest terms.
struct RateFraction
{
    std::uint64_t num = 0;
    std::uint64_t den = 1;
};

struct FileFacts
{
    std::string file; ///< as the user named it
    FileKind kind = FileKind::Film;
    std::uint64_t bytes = 0;               ///< of the file; of a recording: of both its files
    std::optional<std::uint64_t> recorded; ///< 100 ns since 1601 UTC, where the media say so
    std::optional<std::uint64_t> modified; ///< last write, 100 ns since 1601 local time
    std::uint32_t width = 0;               ///< pixels, upright; 0 for sound
    std::uint32_t height = 0;
    std::optional<double> duration;        ///< seconds
    std::optional<RateFraction> frameRate; ///< pictures a second
    std::optional<std::uint64_t> frames;
    std::optional<tagVideoInfo> video;   ///< films
    std::optional<tagAudioInfo> sound;   ///< films and sounds
    std::optional<PictureFacts> picture; ///< pictures and animations
    std::vector<StreamFacts> streams;    ///< films and sounds
};

/// @param file  a path, or the name of a camera recording
/// @throw HostError  ExitCode::Media with the reason: it cannot be opened, or nothing in it can be read
FileFacts ReadFileFacts(MediaProbe& probe, const std::string& file);

/// The fraction that @p rate (frames per second) most likely is: a whole number, n * 1000/1001, else in millionths.
RateFraction LikelyFraction(double rate);
} // namespace qmx::host
