/// @file Platform.h
/// The few things that the operating systems do each in a way of their own. PlatformPosix.cpp or PlatformWindows.cpp is
/// compiled.
#pragma once

#include <filesystem>
#include <string>

namespace qmx::host
{
/// Standard output carries bytes: line ends stay as they are written.
void KeepLineEnds();

/// Makes the system's components available to every thread; before the engine is used.
void StartComponents();

/// Whether standard error is shown on a terminal.
bool IsErrorOnTerminal();

/// Makes an empty file that did not exist before, and closes it.
/// @return an errno value: 0 when the file was made, EEXIST when it existed
int CreateNewFile(const std::filesystem::path& path);

/// A number that no other running process has.
std::string ProcessNumber();

/// What names of libraries that are loaded end in: ".so" or ".dll".
const char* ModuleExtension();

/// @p path as the engine takes it. Bytes that are no UTF-8 survive.
std::wstring EnginePath(const std::filesystem::path& path);

/// @p text, which is valid UTF-8, as the engine takes it.
std::wstring EngineText(const std::string& text);
} // namespace qmx::host
