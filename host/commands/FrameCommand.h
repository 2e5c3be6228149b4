/// @file FrameCommand.h
/// qmx frame
#pragma once

#include <string>

namespace qmx::host
{
struct FrameOptions
{
    std::string project;
    std::string output;
    std::string at;    ///< seconds
    std::string track; ///< ID of the only track to show; empty: all
};

/// Writes one frame of a project as a PNG file. @throw HostError
void RunFrame(const FrameOptions& options);
} // namespace qmx::host
