/// @file ProjectReader.h
/// From a project file to checked records.
#pragma once

#include "host/project/Project.h"

#include <filesystem>
#include <string_view>

namespace qmx::host
{
/// Reads project files. Everything that can be checked without opening media is checked here, so that what follows
/// may rely on the limits that Project states.
class ProjectReader
{
public:
    /// @throw HostError  ExitCode::Project, the project file as subject and a reason that begins with the place in
    ///                   the JSON text: "tracks[0].clips[2].duration: must be greater than 0"
    static Project ReadFile(const std::filesystem::path& file);

    /// The same for a text in memory. @param file  names the project in messages; its folder is where media paths start
    static Project Parse(std::string_view text, const std::filesystem::path& file);

    static constexpr std::size_t kMaxFileSize = std::size_t{16} << 20; ///< bytes
};
} // namespace qmx::host
