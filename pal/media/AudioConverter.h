/// @file AudioConverter.h
/// Rate, channels and sample format of sound.
#pragma once

#include "pal/media/AudioType.h"

namespace pal
{
/// Converts a stream of samples. Converted samples stand on a grid that does not depend on where a conversion began:
/// sample n is always that of time n / rate. For that a conversion begins at a source sample that coincides with one
/// of the grid, and what it yields while its filter still sees the edge is not used (see GetLead()).
/// Threads : one at a time.
class AudioConverter
{
public:
    /// Prepares for frames like @p frame. @param request  what it leaves open is taken from the frame
    /// @retval MF_E_INVALIDMEDIATYPE a conversion that the library does not know
    [[nodiscard]] HRESULT Configure(const AVFrame& frame, const AudioRequest& request);
    bool IsConfigured() const { return m_pResampler != nullptr; }
    /// True when frames like @p frame can be converted without another Configure().
    bool Fits(const AVFrame& frame) const;

    /// What is delivered, everything filled in.
    const AudioRequest& GetOutput() const { return m_output; }
    int GetSourceRate() const { return m_sourceRate; }
    AVSampleFormat GetSourceFormat() const { return m_sourceFormat; }
    int GetSourceChannels() const { return m_sourceChannels; }
    std::size_t GetBlockBytes() const;

    /// The last source sample at or before @p source that coincides with a converted one.
    std::int64_t AlignDown(std::int64_t source) const;
    /// Source samples after which the edge at the beginning no longer shows.
    std::int64_t GetLead() const { return m_lead; }
    /// First converted sample at or after source sample @p source.
    std::int64_t GridAt(std::int64_t source) const;
    /// The last source sample at or before converted sample @p index.
    std::int64_t SourceAt(std::int64_t index) const;

    /// Starts anew; the next samples that come are the first of a stream.
    [[nodiscard]] HRESULT Begin();
    /// Samples that Convert() may yield for @p count samples; for 0, Drain().
    int GetBound(int count) const;
    /// Converts @p count samples. @param ppPlanes  one plane, or one for each channel
    /// @return samples of all channels written to @p pTarget, at most @p capacity; below 0 on failure
    int Convert(const std::uint8_t* const* ppPlanes, int count, std::uint8_t* pTarget, int capacity);
    /// The samples that wait for a future that does not come.
    int Drain(std::uint8_t* pTarget, int capacity) { return Convert(nullptr, 0, pTarget, capacity); }

private:
    SwrPtr m_pResampler;
    AudioRequest m_output;
    AVSampleFormat m_sourceFormat = AV_SAMPLE_FMT_NONE;
    int m_sourceRate = 0;
    int m_sourceChannels = 0;
    std::uint64_t m_sourceMask = 0; ///< 0: not known
    std::int64_t m_step = 1;        ///< source samples between coincidences ...
    std::int64_t m_gridStep = 1;    ///< ... and converted ones
    std::int64_t m_lead = 0;
};
} // namespace pal
