/// @file PictureFile.h
/// Bytes as a file on disk.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

/// A file that goes away with the object.
class PictureFile
{
public:
    PictureFile(const std::vector<std::uint8_t>& bytes, const std::string& extension)
    {
        static int count = 0;
        m_path = std::filesystem::temp_directory_path() /
                 ("qmx-picture-" + std::to_string(getpid()) + "-" + std::to_string(++count) + "." + extension);
        std::ofstream(m_path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~PictureFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    PictureFile(const PictureFile&) = delete;
    PictureFile& operator=(const PictureFile&) = delete;

    std::wstring Path() const { return m_path.wstring(); }

private:
    std::filesystem::path m_path;
};
