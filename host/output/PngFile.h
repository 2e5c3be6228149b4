/// @file PngFile.h
/// Pictures as PNG files.
#pragma once

#include "host/compose/Canvas.h"

#include <filesystem>

namespace qmx::host
{
/// Writes @p picture as an 8-bit RGB file; its alpha, opaque everywhere, is left out. The file appears when it is
/// complete.
/// @throw HostError  ExitCode::Output
void WritePng(const Canvas& picture, const std::filesystem::path& target);
} // namespace qmx::host
