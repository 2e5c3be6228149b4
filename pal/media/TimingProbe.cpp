#include "pal/media/TimingProbe.h"
#include "pal/media/MediaLimits.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace pal
{
namespace
{
Rate ToRate(AVRational value)
{
    return {value.num, value.den};
}

/// AVI knows no presentation times. The demuxing library makes up for it where pictures are delayed by one at most
/// (MPEG-4), but not for codecs that reorder freely.
bool HasDecodeTimesOnly(const AVFormatContext& format)
{
    return std::strcmp(format.iformat->name, "avi") == 0;
}

/// Decode times of all samples, where the container's table holds them all.
std::vector<std::int64_t> TimesFromTable(AVStream& stream)
{
    std::vector<std::int64_t> times;
    const int count = avformat_index_get_entries_count(&stream);
    if (stream.nb_frames <= 0 || count < stream.nb_frames)
        return times; // an index of key frames only, or of the first fragments
    times.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
    {
        const AVIndexEntry* const pEntry = avformat_index_get_entry(&stream, i);
        if (pEntry != nullptr && (pEntry->flags & AVINDEX_DISCARD_FRAME) == 0)
            times.push_back(pEntry->timestamp);
    }
    return times;
}

/// Presentation times of the packets at the front of the file.
std::vector<std::int64_t> TimesFromPackets(AVFormatContext& format, const AVStream& stream, StreamTiming& timing)
{
    std::vector<std::int64_t> times;
    const AvPacketPtr pPacket(av_packet_alloc());
    if (!pPacket)
        return times;
    bool first = true;
    std::int64_t cbRead = 0;
    while (times.size() < kMaxProbePackets && cbRead < kMaxProbeBytes && av_read_frame(&format, pPacket.get()) >= 0)
    {
        cbRead += pPacket->size;
        if (pPacket->stream_index == stream.index)
        {
            const std::int64_t time = pPacket->pts != AV_NOPTS_VALUE ? pPacket->pts : pPacket->dts;
            if (std::exchange(first, false))
                timing.firstDts = pPacket->dts != AV_NOPTS_VALUE ? pPacket->dts : time;
            if (time != AV_NOPTS_VALUE)
                times.push_back(time);
        }
        av_packet_unref(pPacket.get());
    }
    return times;
}
} // namespace

StreamTiming ProbeTiming(const MediaFile& file, AVStream& stream, bool* pMoved)
{
    StreamTiming timing;
    FrameGrid& grid = timing.grid;
    grid.tickNum = stream.time_base.num;
    grid.tickDen = stream.time_base.den;
    grid.origin = file.GetStart(stream.time_base);

    std::vector<std::int64_t> times = TimesFromTable(stream);
    *pMoved = times.empty();
    if (*pMoved)
        times = TimesFromPackets(*file.GetFormat(), stream, timing);
    else
        timing.firstDts = times.front();
    std::sort(times.begin(), times.end());

    const NominalRate nominal =
        ChooseRate(times, grid.tickNum, grid.tickDen, {ToRate(stream.r_frame_rate), ToRate(stream.avg_frame_rate)});
    grid.rate = nominal.rate;
    grid.aligned = nominal.aligned;
    // The table holds decode times; only the stream knows when its first picture shows.
    grid.firstPts = grid.origin;
    if (stream.start_time != AV_NOPTS_VALUE)
        grid.firstPts = stream.start_time;
    else if (*pMoved && !times.empty())
        grid.firstPts = times.front();

    if (HasDecodeTimesOnly(*file.GetFormat()))
    {
        const AVCodecID codec = stream.codecpar->codec_id;
        timing.timesFromOrder = codec == AV_CODEC_ID_H264 || codec == AV_CODEC_ID_HEVC;
        // Made-up presentation times begin one picture late.
        if (!timing.timesFromOrder)
            grid.origin = grid.firstPts = timing.firstDts + stream.codecpar->video_delay;
    }

    if (times.size() > 1)
        timing.averageDuration = (times.back() - times.front()) / static_cast<std::int64_t>(times.size() - 1);
    else
        timing.averageDuration = grid.PtsOf(1) - grid.PtsOf(0);
    timing.averageDuration = std::max<std::int64_t>(1, timing.averageDuration);
    if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0)
        timing.end = grid.firstPts + stream.duration;
    else if (const std::uint64_t duration = file.GetDuration(); duration != 0)
        timing.end = grid.origin + av_rescale_q(static_cast<std::int64_t>(duration), {1, 10'000'000}, stream.time_base);
    return timing;
}
} // namespace pal
