/// @file MediaProbe.h
/// Facts of media files, asked of the engine.
#pragma once

#include "engine/qmx.h"

#include <filesystem>
#include <map>
#include <string>

namespace qmx::host
{
/// Finds out about each file once. Needs running media services (EngineSession).
class MediaProbe
{
public:
    /// @param subject  what a HostError names as its file
    /// @param prefix   begins the reason of a HostError, ": " included; may be empty
    /// @return facts that stay in place as long as the probe does
    /// @throw HostError  ExitCode::Media: no such file, no right to read it, no video in it that can be read
    const tagVideoInfo& Video(const std::filesystem::path& path, const std::string& subject, const std::string& prefix);

private:
    std::map<std::filesystem::path, tagVideoInfo> m_known;
};
} // namespace qmx::host
