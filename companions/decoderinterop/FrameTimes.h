/// @file FrameTimes.h
/// When the frames of a recording are shown.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

/// The index of a recording: 24-byte records (time in 100 ns, data offset, data length; 64 bits little-endian each),
/// read one at a time. What follows the last whole record does not count.
class CFrameTimes
{
public:
    explicit CFrameTimes(const std::wstring& metaPath);

    /// Without records, the stream's rate is all that is known.
    bool HasRecords() const { return m_count != 0; }
    std::uint64_t GetCount() const { return m_count; }
    /// @return nothing behind the last record, or when it cannot be read.
    std::optional<std::uint64_t> TimeOf(std::uint64_t frame);

    static constexpr std::uint64_t kRecordBytes = 24;

private:
    struct FileCloser
    {
        void operator()(std::FILE* pFile) const { std::fclose(pFile); }
    };

    std::unique_ptr<std::FILE, FileCloser> m_pFile;
    std::uint64_t m_count = 0;
};
