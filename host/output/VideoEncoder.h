/// @file VideoEncoder.h
/// H.264, and AAC beside it, in an MP4 file.
#pragma once

#include "host/compose/Canvas.h"
#include "host/output/OutputFile.h"
#include "host/project/FrameRate.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace qmx::host
{
enum class ColourMatrix
{
    Bt709, ///< Rec. ITU-R BT.709
    Bt601  ///< Rec. ITU-R BT.601
};

struct EncoderSettings
{
    std::uint32_t width = 0;         ///< pixels, even
    std::uint32_t height = 0;        ///< pixels, even
    FrameRate frameRate;             ///< also the time base, so that time stamps are exact
    int crf = 20;                    ///< constant quality: 0 lossless … 51 worst
    std::string preset = "veryfast"; ///< of x264
    bool hasSound = false;           ///< a stream of sound beside the pictures
    int keyInterval = 0;             ///< most frames from one key frame to the next; 0: as the encoder likes
    ColourMatrix matrix = ColourMatrix::Bt709;
};

/// Where a frame lies in the finished file.
struct EncodedFrame
{
    std::uint64_t offset = 0;
    std::uint64_t length = 0; ///< bytes
};

/// Encodes canvases, one after the other, as limited-range 4:2:0 and says so in the stream. The index goes to
/// the front of the file, which appears when Finish() is done.
/// Threads : used by one at a time; the library encodes on threads of its own.
class VideoEncoder
{
public:
    /// @throw HostError  ExitCode::Output when the file cannot be made
    VideoEncoder(const std::filesystem::path& target, const EncoderSettings& settings);
    ~VideoEncoder(); ///< without Finish() nothing is left behind
    VideoEncoder(const VideoEncoder&) = delete;
    VideoEncoder& operator=(const VideoEncoder&) = delete;

    /// Takes the next frame. @param canvas  of the stated size; free again when the call returns
    /// @throw HostError  ExitCode::Output
    void Write(const Canvas& canvas);
    /// Takes the next @p count samples of sound, 48 kHz, left and right of each, between -1 and 1. Pictures and sound
    /// come in step: each frame before the sound that is heard while it is shown. Only with EncoderSettings::hasSound.
    /// @throw HostError  ExitCode::Output
    void WriteSound(const float* pSamples, std::size_t count);
    /// Writes what is still under way and gives the file its name: Close(), then Commit().
    /// @throw HostError  ExitCode::Output
    void Finish();
    /// Writes what is still under way. The file is complete, but has no name yet.
    /// @throw HostError  ExitCode::Output
    void Close();
    /// The frames of the closed file in the order of presentation. @throw HostError  ExitCode::Output
    std::vector<EncodedFrame> Frames() const;
    /// @throw HostError  ExitCode::Output
    void Commit() { m_output.Commit(); }

private:
    struct State;

    OutputFile m_output;
    std::unique_ptr<State> m_pState; // closed before the file is removed
};
} // namespace qmx::host
