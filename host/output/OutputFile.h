/// @file OutputFile.h
/// A file that appears under its name only when it is complete.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qmx::host
{
struct Project;

/// An empty file beside the wanted one, to be filled by whoever knows the format. Commit() gives it its name, replacing
/// what was there; otherwise it is removed.
class OutputFile
{
public:
    /// @param target  a symbolic link is followed
    /// @throw HostError  ExitCode::Output: no such folder, no right to write there, the target is no regular file
    explicit OutputFile(const std::filesystem::path& target);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write.
    const std::filesystem::path& Path() const { return m_temporary; }
    /// @throw HostError  ExitCode::Output; the target is then as it was
    void Commit();
    /// A HostError about the target. @param reason  as it stands in the message
    [[noreturn]] void Fail(const std::string& reason) const;
    /// Like Fail() with the system's words for @p error, an errno value.
    [[noreturn]] void FailWith(int error) const;

private:
    std::filesystem::path m_name;   ///< as the user gave it
    std::filesystem::path m_target; ///< links resolved
    std::filesystem::path m_temporary;
    bool m_committed = false;
};

/// @param extension  in small letters, ".png"; capital ones in the name do as well
/// @throw HostError  ExitCode::CommandLine when the name of @p target ends in something else
void CheckExtension(const std::filesystem::path& target, std::string_view extension);

/// @throw HostError  ExitCode::Output when @p target is the project's file or one of its media, which would be lost
void CheckNotASource(const std::filesystem::path& target, const Project& project);
} // namespace qmx::host
