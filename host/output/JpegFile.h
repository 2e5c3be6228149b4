/// @file JpegFile.h
/// JPEG pictures back to back in one file.
#pragma once

#include "host/compose/Canvas.h"
#include "host/output/CameraIndex.h"
#include "host/output/OutputFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>

namespace qmx::host
{
/// Compresses canvases, one after the other, 4:2:0. The file appears when Commit() is done.
class JpegFile
{
public:
    /// @param quality  1 (worst) to 100
    /// @throw HostError  ExitCode::Output when the file cannot be made
    JpegFile(const std::filesystem::path& target, int quality);
    ~JpegFile();
    JpegFile(const JpegFile&) = delete;
    JpegFile& operator=(const JpegFile&) = delete;

    /// @return where the picture lies; the time is left to the caller
    /// @throw HostError  ExitCode::Output, also where the picture would lie beyond 2 GiB, where nobody can read it
    CameraRecord Write(const Canvas& canvas);
    /// @throw HostError  ExitCode::Output
    void Close();
    void Commit() { m_output.Commit(); }

private:
    struct Compressor;

    OutputFile m_output;
    std::ofstream m_file;
    int m_quality;
    std::unique_ptr<Compressor> m_pCompressor;
    std::uint64_t m_cbWritten = 0;
};
} // namespace qmx::host
