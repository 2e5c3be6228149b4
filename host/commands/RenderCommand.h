/// @file RenderCommand.h
/// qmx render
#pragma once

#include "host/output/Progress.h"

#include <string>

namespace qmx::host
{
struct RenderOptions
{
    std::string project;
    std::string output;
    std::string from; ///< seconds; empty: from the start
    std::string to;   ///< seconds; empty: to the end
    int crf = 20;
    std::string preset = "veryfast";
    ProgressMode progress = ProgressMode::None;
};

/// Encodes a project as a video file. @throw HostError
void RunRender(const RenderOptions& options);
} // namespace qmx::host
