/// @file MemoryFile.h
/// Bytes that can be opened as a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A file that lives in memory. The engine opens paths; this one names it while the object lives.
class MemoryFile
{
public:
    /// @param extension  what the path ends in, without the dot: some decoders are chosen by it. Empty for none.
    MemoryFile(const std::uint8_t* pData, std::size_t cb, const std::string& extension);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// As the engine takes it; empty when the file could not be made.
    std::wstring Path() const { return {m_path.begin(), m_path.end()}; }

private:
    int m_handle;
    bool m_isLink = false;
    std::string m_path; // ASCII
};
