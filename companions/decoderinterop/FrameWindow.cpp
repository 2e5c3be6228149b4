#include "companions/decoderinterop/FrameWindow.h"

#include <algorithm>

CFrameWindow::CFrameWindow(std::size_t cbFrame) : m_cbFrame(std::max<std::size_t>(cbFrame, 1)) {}

SampleBufferPtr CFrameWindow::Find(std::int64_t time) const
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [time](const Entry& entry) { return entry.before < time && time <= entry.time; });
    return found != m_entries.end() ? found->frame : SampleBufferPtr();
}

void CFrameWindow::Add(const SampleBufferPtr& frame, std::int64_t time, std::int64_t before)
{
    m_entries.push_back({frame, time, before});
    Trim();
}

void CFrameWindow::Keep(bool backward)
{
    m_capacity = backward ? std::clamp(kMaxBytes / m_cbFrame, kForwardFrames, kMaxFrames) : kForwardFrames;
    Trim();
}

void CFrameWindow::Trim()
{
    while (m_entries.size() > m_capacity)
        m_entries.pop_front();
}
