/// @file WaveFile.h
/// Sound in a WAV file.
#pragma once

#include "host/output/OutputFile.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace qmx::host
{
/// Writes 16-bit stereo PCM at 48 kHz. The file appears when Finish() is done.
class WaveFile
{
public:
    /// @param samples  that will be written
    /// @throw HostError  ExitCode::Output when the file cannot be made, or would pass the format's 4 GiB (six hours)
    WaveFile(const std::filesystem::path& target, std::uint64_t samples);

    /// Takes the next @p count samples, left and right of each; full scale is 1, what lies beyond is cut.
    /// @throw HostError  ExitCode::Output
    void Write(const float* pSamples, std::size_t count);
    /// @throw HostError  ExitCode::Output
    void Finish();

private:
    void WriteHeader(std::uint64_t samples);
    void WriteBytes();

    OutputFile m_output;
    std::ofstream m_stream; // closed before the file is removed
    std::vector<char> m_bytes;
};
} // namespace qmx::host
