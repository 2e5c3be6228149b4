#include "host/output/Progress.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace qmx::host
{
namespace
{
constexpr auto kInterval = std::chrono::milliseconds(100);

std::string OneDecimal(double value)
{
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 1);
    return std::string(text, end.ptr);
}

/// "7 s", "1:05" or "1:02:03".
std::string Span(double seconds)
{
    const auto whole = static_cast<std::uint64_t>(std::ceil(std::clamp(seconds, 0.0, 3.6e6)));
    if (whole < 60)
        return std::to_string(whole) + " s";
    const auto padded = [](std::uint64_t value) { return (value < 10 ? "0" : "") + std::to_string(value); };
    if (whole < 3600)
        return std::to_string(whole / 60) + ':' + padded(whole % 60);
    return std::to_string(whole / 3600) + ':' + padded(whole / 60 % 60) + ':' + padded(whole % 60);
}
} // namespace

Progress::Progress(ProgressMode mode, std::uint64_t frames) : m_mode(mode), m_frames(frames) {}

Progress::~Progress()
{
    if (m_lineLength != 0)
        std::fputc('\n', stderr);
}

void Progress::Report(std::uint64_t done)
{
    const Clock::time_point now = Clock::now();
    if (m_mode == ProgressMode::None || (now < m_next && done < m_frames))
        return;
    m_next = now + kInterval;
    std::string line = Line(m_mode, done, m_frames, std::chrono::duration<double>(now - m_begin).count());
    if (m_mode == ProgressMode::Json)
    {
        std::puts(line.c_str());
        std::fflush(stdout);
        return;
    }
    const std::size_t length = line.size();
    line.append(m_lineLength > length ? m_lineLength - length : 0, ' '); // covers what was longer before
    m_lineLength = length;
    std::fprintf(stderr, "\r%s", line.c_str());
    std::fflush(stderr);
}

std::string Progress::Line(ProgressMode mode, std::uint64_t done, std::uint64_t frames, double elapsedSeconds)
{
    const double fps = elapsedSeconds > 0 ? static_cast<double>(done) / elapsedSeconds : 0;
    const double left = fps > 0 ? static_cast<double>(frames - std::min(done, frames)) / fps : 0;
    const std::string doneText = std::to_string(done);
    const std::string framesText = std::to_string(frames);
    if (mode == ProgressMode::Json)
        return R"({"frame":)" + doneText + R"(,"frames":)" + framesText + R"(,"fps":)" + OneDecimal(fps) +
               R"(,"secondsLeft":)" + OneDecimal(left) + '}';
    const std::uint64_t percent = frames == 0 ? 100 : done * 100 / frames;
    return doneText + " of " + framesText + " frames, " + std::to_string(percent) + " %, " + OneDecimal(fps) +
           " frames/s, " + Span(left) + " left";
}
} // namespace qmx::host
