#include "companions/swfrenderer/VideoPool.h"

#include "companions/swfrenderer/VideoEntries.h"

#include <algorithm>
#include <iterator>

namespace swf
{
namespace
{
// What things cost of Budget::videoWork, in pixels decoded.
constexpr std::uint64_t kCostOfStart = std::uint64_t{1} << 18; ///< of a decoder
constexpr std::uint64_t kCostOfShowing = 4;                    ///< of a pixel, to turn it into a colour
constexpr std::uint64_t kCostOfPacket = 8'192, kCostOfByte = 16;

std::uint64_t CostOf(const VideoStream& stream, std::uint32_t frame)
{
    const std::size_t cb = stream.frames[frame].size();
    return cb == 0 ? 1 : kCostOfPacket + cb * kCostOfByte + stream.MostPixels();
}
} // namespace

void CVideoPool::BeginFrame(std::uint64_t work)
{
    m_workLeft = work;
    for (Video& video : m_videos)
    {
        video.isUsed = false;
        video.first = video.end = 0;
    }
}

/// @return false when the frame of the movie has had its share: nothing comes behind what was left out.
bool CVideoPool::Spend(std::uint64_t work)
{
    const bool fits = work <= m_workLeft;
    m_workLeft = fits ? m_workLeft - work : 0;
    return fits;
}

CVideoPool::Video* CVideoPool::Find(std::uint16_t id, const VideoStream& stream)
{
    auto found =
        std::find_if(m_videos.begin(), m_videos.end(), [id](const Video& v) { return v.pDecoder && v.id == id; });
    if (found == m_videos.end())
    {
        if (m_videos.size() < kMaxVideosAtOnce)
            found = m_videos.emplace(m_videos.end());
        else
            found = std::find_if(m_videos.begin(), m_videos.end(), [](const Video& v) { return !v.isUsed; });
        if (found == m_videos.end())
            return nullptr;
        found->pDecoder.reset(); // before the next one takes memory
        found->entries = EntriesOf(stream);
        found->pDecoder = std::make_unique<CVideoDecoder>(stream);
        found->id = id;
        found->first = found->end = 0;
    }
    found->isUsed = true;
    return &*found;
}

const Bitmap* CVideoPool::PictureAt(std::uint16_t id, const VideoStream& stream, std::uint32_t number)
{
    Video* const pVideo = Find(id, stream);
    if (!pVideo)
        return nullptr;
    const auto end = static_cast<std::uint32_t>(std::min<std::size_t>(std::size_t{number} + 1, stream.frames.size()));
    const std::uint32_t first = *std::prev(std::lower_bound(pVideo->entries.begin() + 1, pVideo->entries.end(), end));
    const bool goesOn = pVideo->end > 0 && pVideo->first == first && pVideo->end <= end;
    if ((!goesOn || pVideo->end < end) &&
        Spend(stream.MostPixels() * kCostOfShowing + (goesOn ? 0 : kCostOfStart + stream.MostPixelsOnce())))
    {
        if (!goesOn)
            pVideo->first = pVideo->end = first;
        while (pVideo->end < end && Spend(CostOf(stream, pVideo->end)))
            ++pVideo->end;
    }
    return pVideo->pDecoder->PictureAfter(pVideo->first, pVideo->end);
}
} // namespace swf
