/// @file AudioCommand.h
/// qmx audio
#pragma once

#include <string>

namespace qmx::host
{
struct AudioOptions
{
    std::string project;
    std::string output;
};

/// Writes the sound of a project as a WAV file. @throw HostError
void RunAudio(const AudioOptions& options);
} // namespace qmx::host
