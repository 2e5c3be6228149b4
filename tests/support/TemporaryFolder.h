/// @file TemporaryFolder.h
#pragma once

#include <filesystem>
#include <fstream>
#include <ios>
#include <random>
#include <string>
#include <string_view>

namespace test_support
{
/// An empty folder that goes away with everything in it. No other test has the same one, nor does any that runs in
/// another process at the same time.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::random_device random;
        do
            m_path = std::filesystem::temp_directory_path() / ("qmx-test-" + std::to_string(random()));
        while (!std::filesystem::create_directory(m_path));
    }
    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    /// Makes the file @p name of @p bytes, or fills it anew, and gives its path.
    std::filesystem::path Write(const std::string& name, std::string_view bytes) const
    {
        std::filesystem::path path = m_path / name;
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path;
    }
    /// Names in the folder, hidden ones included.
    std::size_t FileCount() const
    {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_path))
            ++count;
        return count;
    }

private:
    std::filesystem::path m_path;
};
} // namespace test_support
