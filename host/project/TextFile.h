/// @file TextFile.h
/// Text files that describe an edit, read and written whole.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace qmx::host
{
/// @param maxSize  bytes, a multiple of a mebibyte
/// @throw HostError  ExitCode::Project: no such file, no right to read it, too large
std::string ReadTextFile(const std::filesystem::path& file, std::size_t maxSize);

/// Writes @p text beside @p target and gives it the name when it is complete.
/// @throw HostError  ExitCode::Output; the target is then as it was
void WriteTextFile(const std::filesystem::path& target, std::string_view text);
} // namespace qmx::host
