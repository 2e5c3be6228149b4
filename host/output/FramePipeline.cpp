#include "host/output/FramePipeline.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace qmx::host
{
FramePipeline::FramePipeline(std::uint32_t width, std::uint32_t height, std::size_t depth)
{
    m_canvases.reserve(depth);
    for (std::size_t i = 0; i < std::max<std::size_t>(1, depth); ++i)
        m_canvases.emplace_back(width, height);
}

void FramePipeline::Run(std::uint64_t first, std::uint64_t end, const Step& make, const Step& use)
{
    m_made = m_used = first;
    m_stopped = false;
    m_error = nullptr;
    {
        const std::jthread user([&] { Use(first, end, use); });
        Make(first, end, make);
    }
    if (m_error)
        std::rethrow_exception(std::exchange(m_error, nullptr));
}

void FramePipeline::Make(std::uint64_t first, std::uint64_t end, const Step& make)
{
    try
    {
        for (std::uint64_t index = first; index < end; ++index)
        {
            {
                std::unique_lock lock(m_lock);
                m_changed.wait(lock, [&] { return m_stopped || index - m_used < m_canvases.size(); });
                if (m_stopped)
                    return;
            }
            make(index, CanvasOf(index));
            {
                const std::lock_guard lock(m_lock);
                m_made = index + 1;
            }
            m_changed.notify_one();
        }
    }
    catch (...)
    {
        Stop(std::current_exception());
    }
}

void FramePipeline::Use(std::uint64_t first, std::uint64_t end, const Step& use)
{
    try
    {
        for (std::uint64_t index = first; index < end; ++index)
        {
            {
                std::unique_lock lock(m_lock);
                m_changed.wait(lock, [&] { return m_stopped || index < m_made; });
                if (m_stopped)
                    return;
            }
            use(index, CanvasOf(index));
            {
                const std::lock_guard lock(m_lock);
                m_used = index + 1;
            }
            m_changed.notify_one();
        }
    }
    catch (...)
    {
        Stop(std::current_exception());
    }
}

void FramePipeline::Stop(std::exception_ptr error)
{
    {
        const std::lock_guard lock(m_lock);
        m_stopped = true;
        if (!m_error)
            m_error = std::move(error);
    }
    m_changed.notify_one();
}
} // namespace qmx::host
