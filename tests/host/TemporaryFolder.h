/// @file TemporaryFolder.h
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace qmx::host
{
/// An empty folder that goes away with everything in it.
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
} // namespace qmx::host
