/// @file AudioFrames.h
/// The decoded sound of a stream, placed in time.
#pragma once

#include "pal/media/AudioPackets.h"

namespace pal
{
/// Decodes a sound stream block by block. Places count as those of AudioPackets do. Blocks follow each other without a
/// hole as long as the container's times say no more than rounding can explain; a hole (lost packets) and an overlap
/// (an edit) show in the places. What an encoder has put in front or behind is left out.
/// Threads : one at a time.
class AudioFrames
{
public:
    /// @param file, stream  borrowed
    AudioFrames(const MediaFile& file, AVStream& stream);

    /// Opens the decoder and decodes the first block.
    /// @retval MF_E_TOPO_CODEC_NOT_FOUND no decoder, or one that does not take this stream
    [[nodiscard]] HRESULT Open();

    /// Samples per second, by which all places count. A block may have another rate.
    int GetRate() const { return m_packets.GetRate(); }
    /// Where the presentation starts: the container's start beside pictures, else the first sample that is heard.
    std::int64_t GetZero() const { return m_zero; }
    /// Length in samples, counted packet by packet; for streams whose container does not tell (IsBare()).
    std::int64_t CountLength();
    bool IsBare() const { return m_packets.IsBare(); }

    struct Block
    {
        const AVFrame* pFrame = nullptr; ///< kept until the next call; null at the end
        std::int64_t place = 0;          ///< of its first sample
    };
    Block Next();
    /// The next block begins at or before @p place (if the file has anything there), decoded as if everything before
    /// had been decoded too.
    void Seek(std::int64_t place);

private:
    [[nodiscard]] HRESULT OpenDecoder();
    bool Decode();
    bool Accept();
    bool Feed();
    void PlaceFrame();
    bool TrimFrame();
    void Restart();
    std::int64_t LengthOf(std::int64_t samples) const;
    std::int64_t Preroll() const;
    void FindEnd();

    const MediaFile& m_file;
    AVStream& m_stream;
    AudioPackets m_packets;
    const bool m_hasPictures;
    AvCodecPtr m_pCodec;
    AvFramePtr m_pFrame;
    bool m_isHeld = false;    ///< the frame has been decoded and not been handed out
    std::int64_t m_place = 0; ///< of the frame
    std::int64_t m_next;      ///< place of the next frame if there is no hole; AV_NOPTS_VALUE: not known
    std::int64_t m_zero = 0;
    std::int64_t m_longest = INT64_MAX;   ///< place after which a container's time is taken for damage
    std::int64_t m_statedEnd = INT64_MAX; ///< by the container's table of samples
    std::int64_t m_end = INT64_MAX;       ///< end of what is heard
    bool m_isAtStart = true;              ///< nothing has been decoded since the start of the stream
    bool m_isDraining = false;
    bool m_isDrained = false;
};
} // namespace pal
