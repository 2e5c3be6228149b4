/// @file FramePipeline.h
/// Making frames and using them at the same time.
#pragma once

#include "host/compose/Canvas.h"

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <vector>

namespace qmx::host
{
/// Hands frames from a maker, which runs on the calling thread, to a user, which runs on a thread of its own. A fixed
/// number of canvases goes round between them; whoever is ahead waits.
class FramePipeline
{
public:
    using Step = std::function<void(std::uint64_t index, Canvas& canvas)>;

    /// @param depth  canvases that are under way at the same time, at least 1
    FramePipeline(std::uint32_t width, std::uint32_t height, std::size_t depth);

    /// Calls @p make and then @p use once for every index in [first, end), each in ascending order. The first
    /// exception of either ends both and is thrown again here, after the user's thread has ended.
    void Run(std::uint64_t first, std::uint64_t end, const Step& make, const Step& use);

private:
    void Make(std::uint64_t first, std::uint64_t end, const Step& make);
    void Use(std::uint64_t first, std::uint64_t end, const Step& use);
    Canvas& CanvasOf(std::uint64_t index) { return m_canvases[index % m_canvases.size()]; }
    void Stop(std::exception_ptr error);

    std::vector<Canvas> m_canvases; // frame n lives in canvas n % count
    std::mutex m_lock;              // guards what follows
    std::condition_variable m_changed;
    std::uint64_t m_made = 0; ///< frames before it have been made …
    std::uint64_t m_used = 0; ///< … and used
    bool m_stopped = false;
    std::exception_ptr m_error; ///< of whoever failed first
};
} // namespace qmx::host
