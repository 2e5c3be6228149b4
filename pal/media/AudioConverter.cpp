#include "pal/media/AudioConverter.h"

#include <mferror.h>

extern "C"
{
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace pal
{
namespace
{
constexpr int kTaps = 32;        // of the library's filter when it does not lower the rate
constexpr double kCutoff = 0.97; // likewise, of the lower half rate
constexpr int kMaxNamedChannels = 18;

std::uint64_t MaskOf(const AVChannelLayout& layout)
{
    return layout.order == AV_CHANNEL_ORDER_NATIVE ? layout.u.mask : 0;
}

/// The layout with @p mask, or the usual one for that many channels; when there is none, channels of no meaning.
AVChannelLayout LayoutFor(std::uint64_t mask, int channels)
{
    AVChannelLayout layout = {};
    if (mask != 0)
        av_channel_layout_from_mask(&layout, mask);
    else
        av_channel_layout_default(&layout, channels);
    return layout;
}

/// Loudness of each channel of no meaning in each channel that is delivered: they go round in turn.
std::vector<double> TurnMatrix(int target, int source)
{
    std::vector<double> matrix(static_cast<std::size_t>(target) * static_cast<std::size_t>(source));
    const int mostInOne = (source + target - 1) / target;
    const double part = 1.0 / mostInOne;
    for (int in = 0; in < source; ++in)
        matrix[static_cast<std::size_t>(in % target) * static_cast<std::size_t>(source) +
               static_cast<std::size_t>(in)] = part;
    return matrix;
}
} // namespace

bool AudioConverter::Fits(const AVFrame& frame) const
{
    return m_pResampler && frame.format == m_sourceFormat && frame.sample_rate == m_sourceRate &&
           frame.ch_layout.nb_channels == m_sourceChannels && MaskOf(frame.ch_layout) == m_sourceMask;
}

HRESULT AudioConverter::Configure(const AVFrame& frame, const AudioRequest& request)
{
    m_pResampler.reset();
    m_sourceFormat = static_cast<AVSampleFormat>(frame.format);
    m_sourceRate = frame.sample_rate;
    m_sourceChannels = frame.ch_layout.nb_channels;
    m_sourceMask = MaskOf(frame.ch_layout);
    m_output = request;
    if (m_output.rate == 0)
        m_output.rate = m_sourceRate;
    if (m_output.channels == 0)
    {
        m_output.channels = m_sourceChannels;
        m_output.mask = m_sourceMask;
    }

    AVChannelLayout target = LayoutFor(m_output.mask, m_output.channels);
    AVChannelLayout source = LayoutFor(m_sourceMask, m_sourceChannels);
    const bool isUnnamed = source.order != AV_CHANNEL_ORDER_NATIVE || target.order != AV_CHANNEL_ORDER_NATIVE;
    if (isUnnamed && m_sourceChannels == m_output.channels)
        source = target;
    else if (isUnnamed)
    {
        // The library mixes named channels only; any names do beside a matrix of ours.
        if (m_sourceChannels > kMaxNamedChannels || target.order != AV_CHANNEL_ORDER_NATIVE)
            return MF_E_INVALIDMEDIATYPE;
        source = LayoutFor((std::uint64_t{1} << m_sourceChannels) - 1, m_sourceChannels);
    }
    SwrContext* pContext = nullptr;
    const int made = swr_alloc_set_opts2(&pContext, &target, m_output.format, m_output.rate, &source, m_sourceFormat,
                                         m_sourceRate, 0, nullptr);
    m_pResampler.reset(pContext);
    if (made < 0)
        return E_OUTOFMEMORY;
    // One loudness whatever the sample format: channels that are mixed together never exceed full scale.
    av_opt_set_double(pContext, "rematrix_maxval", 1.0, 0);
    if (isUnnamed && m_sourceChannels != m_output.channels)
        swr_set_matrix(pContext, TurnMatrix(m_output.channels, m_sourceChannels).data(), m_sourceChannels);

    const int common = std::gcd(m_sourceRate, m_output.rate);
    m_step = m_sourceRate / common;
    m_gridStep = m_output.rate / common;
    const double factor = std::min(1.0, m_output.rate * kCutoff / m_sourceRate);
    m_lead = m_step == m_gridStep ? 0 : 2 * std::llround(std::ceil(kTaps / factor)) + 16;
    if (const HRESULT hr = Begin(); FAILED(hr))
    {
        m_pResampler.reset();
        return hr;
    }
    return S_OK;
}

std::size_t AudioConverter::GetBlockBytes() const
{
    return static_cast<std::size_t>(av_get_bytes_per_sample(m_output.format)) *
           static_cast<std::size_t>(m_output.channels);
}

std::int64_t AudioConverter::AlignDown(std::int64_t source) const
{
    std::int64_t steps = source / m_step;
    if (source < 0 && source % m_step != 0)
        --steps;
    return steps * m_step;
}

std::int64_t AudioConverter::GridAt(std::int64_t source) const
{
    return av_rescale_rnd(source, m_gridStep, m_step, AV_ROUND_UP);
}

std::int64_t AudioConverter::SourceAt(std::int64_t index) const
{
    return av_rescale_rnd(index, m_step, m_gridStep, AV_ROUND_DOWN);
}

HRESULT AudioConverter::Begin()
{
    swr_close(m_pResampler.get());
    return swr_init(m_pResampler.get()) >= 0 ? S_OK : MF_E_INVALIDMEDIATYPE;
}

int AudioConverter::GetBound(int count) const
{
    return std::max(0, swr_get_out_samples(m_pResampler.get(), count)) + kTaps;
}

int AudioConverter::Convert(const std::uint8_t* const* ppPlanes, int count, std::uint8_t* pTarget, int capacity)
{
    return swr_convert(m_pResampler.get(), &pTarget, capacity, const_cast<const std::uint8_t**>(ppPlanes), count);
}
} // namespace pal
