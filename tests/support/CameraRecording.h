/// @file CameraRecording.h
/// Motion-JPEG recordings, written by a test.
#pragma once

#include "tests/companions/jpegframes/TestJpeg.h"
#include "tests/support/FrameStripCode.h"
#include "tests/support/MetaFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace test_support
{
/// A grey picture that carries the number @p n in its strip.
inline std::vector<std::uint8_t> NumberedJpeg(std::uint32_t width, std::uint32_t height, std::uint16_t n)
{
    const auto paint = [width, n](std::uint32_t x, std::uint32_t y)
    {
        const std::uint32_t column = x * kStripColumns / width;
        const std::uint32_t row = y * kStripColumns / width;
        if (row >= kStripRows)
            return 0x606060U;
        return FrameStripBit(n, column, row) ? 0xFFFFFFU : 0U;
    };
    return MakeJpeg(width, height, paint, TJSAMP_444);
}

/// Media file and index of a recording. The files are written anew by every Write().
class CameraRecording
{
public:
    CameraRecording(const std::filesystem::path& folder, const std::string& name)
        : m_stem((std::filesystem::absolute(folder) / name).make_preferred().string())
    {
    }

    void Add(const std::vector<std::uint8_t>& jpeg)
    {
        records.push_back({records.size() * 333'333, media.size(), jpeg.size()});
        media.insert(media.end(), jpeg.begin(), jpeg.end());
    }
    void AddNumbered(std::uint32_t width, std::uint32_t height, std::uint16_t count)
    {
        for (std::uint16_t n = 0; n < count; ++n)
            Add(NumberedJpeg(width, height, n));
    }
    void Write(std::size_t cbExtra = 0) const
    {
        std::ofstream file(Media(), std::ios::binary);
        file.write(reinterpret_cast<const char*>(media.data()), static_cast<std::streamsize>(media.size()));
        WriteMeta(Meta(), records, cbExtra);
    }
    std::filesystem::path Media() const { return m_stem + ".mov"; }
    std::filesystem::path Meta() const { return m_stem + ".meta"; }
    /// The name under which a decoder knows it.
    std::wstring Name() const { return std::filesystem::path(m_stem + ".mjpg").wstring(); }

    std::vector<MetaRecord> records;
    std::vector<std::uint8_t> media;

private:
    std::string m_stem;
};
} // namespace test_support
