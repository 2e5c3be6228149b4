/// @file FilmReader.h
/// All pictures of a video file, in order.
#pragma once

#include "engine/platform/RefPtr.h"
#include "host/compose/Canvas.h"
#include "host/project/FrameRate.h"

#include <mfidl.h>
#include <mfreadwrite.h>

#include <cstdint>
#include <filesystem>

namespace qmx::host
{
/// Reads a video from its first picture to its last, upright, with square pixels as they are stored. A video of
/// variable rate comes at the constant rate that loses none of its pictures. Needs running media services
/// (EngineSession).
class FilmReader
{
public:
    /// @throw HostError  ExitCode::Media
    explicit FilmReader(const std::filesystem::path& path);

    std::uint32_t Width() const { return m_width; } ///< pixels
    std::uint32_t Height() const { return m_height; }
    FrameRate Rate() const { return m_rate; }
    /// Frames as the container states them; 0 when it does not.
    std::uint64_t StatedFrames() const { return m_statedFrames; }

    /// Copies the next picture into the upper left corner of @p canvas, which is at least as large as it.
    /// @return false at the end  @throw HostError  ExitCode::Media
    bool Read(Canvas& canvas);

private:
    void Open();
    void ChooseRate(IMFMediaType& native);
    void CopyPixels(IMFSample& sample, Canvas& canvas) const;
    [[noreturn]] void Fail(const char* pReason) const;
    void Check(HRESULT hr) const;

    std::filesystem::path m_path;
    RefPtr<IMFSourceReader> m_pReader;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    FrameRate m_rate;
    std::uint64_t m_statedFrames = 0;
};
} // namespace qmx::host
