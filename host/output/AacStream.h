/// @file AacStream.h
/// AAC sound inside a file that is being written.
#pragma once

#include "host/output/OutputFile.h"

#include <cstddef>
#include <memory>

struct AVFormatContext;

namespace qmx::host
{
/// Encodes 48 kHz stereo as AAC with 192 kbit/s and hands the packets to the file's muxer.
/// Threads : used by one at a time, the one that writes the file.
class AacStream
{
public:
    /// Adds a stream to @p format, whose header must not have been written. @param output  for messages
    /// @throw HostError  ExitCode::Output; ExitCode::Failed when there is no such encoder
    AacStream(AVFormatContext& format, const OutputFile& output);
    ~AacStream();
    AacStream(const AacStream&) = delete;
    AacStream& operator=(const AacStream&) = delete;

    /// Takes the next @p count samples, left and right of each, between -1 and 1. @throw HostError
    void Write(const float* pSamples, std::size_t count);
    /// Writes what is still under way. @throw HostError
    void Finish();

private:
    struct State;
    std::unique_ptr<State> m_pState;
};
} // namespace qmx::host
