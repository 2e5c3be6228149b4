/// @file AudioSource.h
/// The sound of a file, as the source reader delivers it.
#pragma once

#include "pal/media/AudioConverter.h"
#include "pal/media/AudioFrames.h"

#include <mfreadwrite.h>

#include <vector>

namespace pal
{
/// Decodes and converts one sound stream.
///
/// What is delivered is one unbroken stream of samples from the start of the presentation: where the file has none
/// (sound that begins late, lost packets) there is silence. Sample n is that of time n / rate, whether it is come to
/// by reading or by a seek, and after a seek it is the first one of the next chunk.
///
///     decoded   | preroll | b0 | b1 | b2 ...
///     converted           |lead|n ...         n: the sample that was sought
///
/// A chunk is what the decoder gives at a time, never more than a second.
/// Threads : one at a time.
class AudioSource
{
public:
    /// @param file, stream  borrowed
    AudioSource(const MediaFile& file, AVStream& stream);

    /// Delivers as @p request says from now on; opens the decoder.
    [[nodiscard]] HRESULT SetRequest(const AudioRequest& request);
    bool IsReady() const { return m_isReady; }
    /// What is delivered, with everything filled in. Only when IsReady().
    const AudioRequest& GetOutput() const { return m_converter.GetOutput(); }
    /// Length in 100 ns, counted packet by packet; 0 for a file whose container knows it better.
    std::uint64_t CountDuration();

    /// The next Read() delivers from the sample that is nearest to @p time (100 ns) on.
    void Seek(std::int64_t time);
    /// The next Read() delivers nothing: the position lies outside the presentation.
    void SeekToEnd();

    /// The next chunk.
    /// @param[out] pFlags     MF_SOURCE_READERF_… : end of the stream (there is no sample then), changes of type
    /// @param[out] pTime      of its first sample, 100 ns
    /// @param[out] ppSample   one reference
    [[nodiscard]] HRESULT Read(DWORD* pFlags, LONGLONG* pTime, IMFSample** ppSample);

private:
    /// Samples to be converted next; count 0: no more, or of another format.
    struct Piece
    {
        const std::uint8_t* const* ppPlanes = nullptr;
        int count = 0;
    };

    [[nodiscard]] HRESULT CarryOutSeek();
    [[nodiscard]] HRESULT ChangeSource(DWORD* pFlags);
    [[nodiscard]] HRESULT Deliver(const Piece& piece, LONGLONG* pTime, IMFSample** ppSample);
    [[nodiscard]] HRESULT Wrap(IMFMediaBuffer* pBuffer, int count, LONGLONG* pTime, IMFSample** ppSample) const;
    bool HaveBlock();
    Piece NextPiece();
    Piece SilentPiece(std::int64_t count);
    std::int64_t ToSource(std::int64_t place) const;
    LONGLONG TimeOf(std::int64_t index) const;

    AudioFrames m_frames;
    AudioConverter m_converter;
    AudioRequest m_request;
    bool m_isReady = false;

    AudioFrames::Block m_block;   ///< decoded, not yet converted to its end
    int m_blockDone = 0;          ///< samples of it that are behind us
    std::int64_t m_source = 0;    ///< source sample that is converted next, by the converter's source rate
    std::int64_t m_converted = 0; ///< sample that the converter yields next
    std::int64_t m_next = 0;      ///< sample to be delivered next; earlier ones are dropped
    bool m_isPlaced = true;       ///< decoder and converter stand where the counts above say
    bool m_isSeekPending = false;
    bool m_isDrained = false; ///< the converter has given its last sample
    bool m_isAtEnd = false;
    std::vector<const std::uint8_t*> m_planes;
    std::vector<std::uint8_t> m_silence;
};
} // namespace pal
