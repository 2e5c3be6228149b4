#include "companions/decoderinterop/FrameTimes.h"

#include <windows.h>

#include <array>

CFrameTimes::CFrameTimes(const std::wstring& metaPath) : m_pFile(_wfopen(metaPath.c_str(), L"rb"))
{
    if (!m_pFile || std::fseek(m_pFile.get(), 0, SEEK_END) != 0)
        return;
    const long cb = std::ftell(m_pFile.get());
    m_count = cb > 0 && cb <= INT32_MAX ? static_cast<std::uint64_t>(cb) / kRecordBytes : 0;
}

std::optional<std::uint64_t> CFrameTimes::TimeOf(std::uint64_t frame)
{
    std::array<std::uint8_t, 8> bytes{};
    if (frame >= m_count || std::fseek(m_pFile.get(), static_cast<long>(frame * kRecordBytes), SEEK_SET) != 0 ||
        std::fread(bytes.data(), 1, bytes.size(), m_pFile.get()) != bytes.size())
        return std::nullopt;
    std::uint64_t time = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        time = time << 8 | bytes[i];
    return time;
}
