#include "host/commands/FrameSpan.h"

#include "host/HostError.h"
#include "host/project/Decimal.h"

namespace qmx::host
{
namespace
{
[[noreturn]] void Refuse(const std::string& option, const std::string& reason)
{
    throw HostError(ExitCode::CommandLine, option, reason);
}

std::string EndText(const Project& project)
{
    return SecondsText(project.Duration()) + " seconds";
}
} // namespace

std::uint64_t ParseSeconds(const std::string& option, const std::string& text)
{
    const std::optional<Decimal> decimal = Decimal::Parse(text);
    if (!decimal)
        Refuse(option, '"' + text + "\" is no number of seconds");
    const std::optional<std::uint64_t> time = decimal->Scaled(7);
    if (decimal->IsNegative() || !time || *time > kMaxTime)
        Refuse(option, text + " lies outside 0 to 1000000 seconds");
    return *time;
}

FrameSpan SpanBetween(const Project& project, const std::string& from, const std::string& to)
{
    const std::uint64_t duration = project.Duration();
    const std::uint64_t begin = from.empty() ? 0 : project.frameRate.Snapped(ParseSeconds("--from", from));
    const std::uint64_t end = to.empty() ? duration : project.frameRate.Snapped(ParseSeconds("--to", to));
    if (begin >= duration)
        Refuse("--from", from + " lies at or behind the project's end at " + EndText(project));
    if (end > duration)
        Refuse("--to", to + " lies behind the project's end at " + EndText(project));
    const FrameSpan span{project.frameRate.FramesBefore(begin), project.frameRate.FramesBefore(end)};
    if (span.first >= span.end)
        Refuse("--to", "no frame starts between " + SecondsText(begin) + " and " + SecondsText(end) + " seconds");
    return span;
}

std::uint64_t FrameAt(const Project& project, const std::string& at)
{
    const std::uint64_t time = project.frameRate.Snapped(ParseSeconds("--at", at));
    if (time >= project.Duration())
        Refuse("--at", at + " lies at or behind the project's end at " + EndText(project));
    return project.frameRate.FramesBefore(time + 1) - 1;
}
} // namespace qmx::host
