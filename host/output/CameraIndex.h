/// @file CameraIndex.h
/// Writing the index of a camera recording.
#pragma once

#include "host/output/OutputFile.h"
#include "host/project/CameraFiles.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace qmx::host
{
/// Writes an index, which appears when Commit() is done.
class CameraIndexFile
{
public:
    /// @throw HostError  ExitCode::Output
    explicit CameraIndexFile(const std::filesystem::path& target);
    void Write(const CameraRecord& record);
    /// @throw HostError  ExitCode::Output when the records cannot all be written
    void Close();
    void Commit() { m_output.Commit(); }

private:
    OutputFile m_output;
    std::ofstream m_file;
};
} // namespace qmx::host
