/// @file ClipFixture.h
/// A film on a track, as a host of the engine sets it up.
#pragma once

#include "engine/decoders/DecoderProp.h"
#include "engine/decoders/IDecoder.h"
#include "engine/decoders/media/VideoInfo.h"
#include "engine/model/IQMXDocument.h"
#include "engine/platform/RefPtr.h"
#include "tests/support/Picture.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace test_support
{
/// Starts the platform's media services for as long as it lives.
class MediaServices
{
public:
    MediaServices();
    ~MediaServices();
    MediaServices(const MediaServices&) = delete;
    MediaServices& operator=(const MediaServices&) = delete;
};

/// A path as the engine takes it.
std::wstring EnginePath(const std::filesystem::path& path);

/// Facts of a video file as the engine reports them; nothing when it refuses the file.
std::optional<tagVideoInfo> VideoInfoOf(const std::filesystem::path& path);

/// Start of slot @p n of a grid of num / den pictures a second, 100 ns, rounded down.
std::uint64_t GridTime(std::uint64_t n, std::uint64_t num, std::uint64_t den);

/// One frame request's answer.
struct ClipFrame
{
    Picture picture;          ///< empty when the engine gave none
    bool endOfStream = false; ///< the flag that came with it
};

/// A document with one track with one video clip that shows a film from its start, at time 0 of the timeline.
/// Every instance has a document of its own, and so decoders of its own.
class ClipFixture
{
public:
    /// @param info   facts of the film: its rate becomes the clip's, its size that of the frames asked for
    /// @param width  pixels of the frames asked for; 0 = the film's own
    ClipFixture(const std::filesystem::path& path, const tagVideoInfo& info, std::uint32_t width = 0);
    ~ClipFixture();
    ClipFixture(const ClipFixture&) = delete;
    ClipFixture& operator=(const ClipFixture&) = delete;

    /// What the track shows at @p time, 100 ns.
    ClipFrame FrameAt(std::uint64_t time);
    /// The same without taking a copy of the pixels. @param pFlag  may be null.
    SampleBufferPtr BufferAt(std::uint64_t time, bool* pFlag);

private:
    std::unique_ptr<IQMXDocument> m_pDocument;
    std::unique_ptr<IQMXTrack> m_pTrack;
    std::wstring m_key; ///< of the clip's decoder in the cache
    std::uint32_t m_width, m_height;
};

/// A video decoder of its own for a film, asked directly.
class DecoderFixture
{
public:
    DecoderFixture(const std::filesystem::path& path, const tagVideoInfo& info, std::uint32_t width = 0);

    bool IsOpen() const { return m_open; }
    /// Frame @p n: asked for at n times the frame duration that the engine computes from the rate.
    ClipFrame Frame(std::uint64_t n);
    /// The picture at @p time, 100 ns.
    ClipFrame FrameAt(std::uint64_t time);

private:
    RefPtr<IDecoder> m_pDecoder;
    std::uint64_t m_frameDuration;
    bool m_open = false;
};
} // namespace test_support
