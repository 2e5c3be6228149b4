/// @file FrameWindow.h
/// Decoded frames that are kept for steps backward.
#pragma once

#include "engine/platform/SampleBuffer.h"

#include <cstddef>
#include <cstdint>
#include <deque>

/// The latest decoded frames of a recording, by time. Few while it plays forward, so that frames are written into
/// memory that is still in the processor's cache; as many as fit kMaxBytes while it is stepped through backward.
class CFrameWindow
{
public:
    static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;
    static constexpr std::size_t kMaxFrames = 64;
    static constexpr std::size_t kForwardFrames = 4;

    /// @param cbFrame  bytes of one frame, at least 1
    explicit CFrameWindow(std::size_t cbFrame);

    /// The frame that is the first one at or after @p time; null when that is not known here.
    SampleBufferPtr Find(std::int64_t time) const;
    /// @param time    when it is shown, 100 ns
    /// @param before  no frame is shown after this time and before @p time
    void Add(const SampleBufferPtr& frame, std::int64_t time, std::int64_t before);
    void Keep(bool backward);
    /// Frames that are kept at most.
    std::size_t GetCapacity() const { return m_capacity; }

private:
    struct Entry
    {
        SampleBufferPtr frame;
        std::int64_t time = 0;
        std::int64_t before = 0;
    };
    void Trim();

    std::size_t m_cbFrame;
    std::size_t m_capacity = kForwardFrames;
    std::deque<Entry> m_entries; // oldest first
};
