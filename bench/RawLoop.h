/// @file RawLoop.h
/// What a careful program does with the libraries alone: decode, convert, scale; every buffer is kept.
#pragma once

#include "pal/media/AvPointers.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qmx::bench
{
class RawLoop
{
public:
    /// Decodes with as many threads as there are processors. @return false when the film cannot be read
    bool Open(const std::string& path);
    /// Next picture in display order. @return false at the end
    bool Decode();
    /// Makes the next picture the one of time @p pts: seeks to the key picture before and decodes everything up to it.
    bool SeekAndDecode(std::int64_t pts);
    /// Converts the picture to BGRA and scales it, both by libyuv. @return pixels, kept until the next call
    const std::uint8_t* ConvertAndScale(int width, int height);

    const AVFrame& GetFrame() const { return *m_pFrame; }
    const AVStream& GetStream() const { return *m_pStream; }
    std::uint64_t GetDecoded() const { return m_decoded; }

private:
    pal::AvFormatPtr m_pFormat;
    pal::AvCodecPtr m_pCodec;
    AVStream* m_pStream = nullptr;
    pal::AvFramePtr m_pFrame;
    pal::AvPacketPtr m_pPacket;
    std::vector<std::uint8_t> m_full;
    std::vector<std::uint8_t> m_scaled;
    std::uint64_t m_decoded = 0;
};
} // namespace qmx::bench
