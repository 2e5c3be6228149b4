/// @file MetaFile.h
/// Indexes of camera recordings, written by a test.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace test_support
{
/// One record as it is stored: three 64-bit numbers, little-endian.
struct MetaRecord
{
    std::uint64_t time = 0;   ///< 100 ns
    std::uint64_t offset = 0; ///< of the frame's data in the media file
    std::uint64_t length = 0; ///< bytes
};

/// @param cbExtra  bytes of one more record that is not whole
inline void WriteMeta(const std::filesystem::path& path, const std::vector<MetaRecord>& records,
                      std::size_t cbExtra = 0)
{
    std::ofstream file(path, std::ios::binary);
    for (const MetaRecord& record : records)
    {
        for (const std::uint64_t field : {record.time, record.offset, record.length})
        {
            for (int shift = 0; shift < 64; shift += 8)
                file.put(static_cast<char>(field >> shift & 255));
        }
    }
    for (std::size_t i = 0; i < cbExtra; ++i)
        file.put('\x01');
}
} // namespace test_support
