/// @file PictureFile.h
/// Bytes as a file on disk.
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// A file that goes away with the object.
class PictureFile
{
public:
    PictureFile(const std::vector<std::uint8_t>& bytes, const std::string& extension)
        : m_path(m_folder.Write("picture." + extension,
                                std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())))
    {
    }

    std::wstring Path() const { return m_path.wstring(); }

private:
    test_support::TemporaryFolder m_folder;
    std::filesystem::path m_path;
};
