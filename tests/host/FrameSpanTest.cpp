#include "host/commands/FrameSpan.h"

#include "host/HostError.h"

#include <gtest/gtest.h>

#include <functional>

namespace qmx::host
{
namespace
{
/// Two seconds at 10 frames per second.
Project TwoSeconds()
{
    Project project;
    project.frameRate = FrameRate::Parse("10").value();
    project.tracks.resize(1);
    project.tracks[0].clips.resize(1);
    project.tracks[0].clips[0].duration = 20'000'000;
    return project;
}

std::string ErrorOf(const std::function<void()>& call)
{
    try
    {
        call();
        return "";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::CommandLine);
        return error.Subject() + ": " + error.what();
    }
}

TEST(SpanBetween, IsTheWholeProjectUnlessAsked)
{
    const FrameSpan span = SpanBetween(TwoSeconds(), "", "");
    EXPECT_EQ(span.first, 0U);
    EXPECT_EQ(span.end, 20U);
}

TEST(SpanBetween, HoldsTheFramesThatStartInside)
{
    FrameSpan span = SpanBetween(TwoSeconds(), "0.5", "1.5");
    EXPECT_EQ(span.first, 5U);
    EXPECT_EQ(span.end, 15U);
    span = SpanBetween(TwoSeconds(), "0.51", "1.51");
    EXPECT_EQ(span.first, 6U);
    EXPECT_EQ(span.end, 16U);
    EXPECT_EQ(SpanBetween(TwoSeconds(), "", "2").end, 20U);
}

TEST(SpanBetween, RefusesTimesOutsideAndSpansWithoutAFrame)
{
    const Project project = TwoSeconds();
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "2", ""); }),
              "--from: 2 lies at or behind the project's end at 2.0000000 seconds");
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "", "2.1"); }),
              "--to: 2.1 lies behind the project's end at 2.0000000 seconds");
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "-1", ""); }), "--from: -1 lies outside 0 to 1000000 seconds");
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "", "1e99"); }), "--to: 1e99 lies outside 0 to 1000000 seconds");
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "x", ""); }), "--from: \"x\" is no number of seconds");
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "1", "1"); }),
              "--to: no frame starts between 1.0000000 and 1.0000000 seconds");
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "1.5", "0.5"); }),
              "--to: no frame starts between 1.5000000 and 0.5000000 seconds");
    EXPECT_EQ(ErrorOf([&] { SpanBetween(project, "0.11", "0.19"); }),
              "--to: no frame starts between 0.1100000 and 0.1900000 seconds");
}

TEST(FrameAt, IsTheFrameOnScreen)
{
    const Project project = TwoSeconds();
    EXPECT_EQ(FrameAt(project, "0"), 0U);
    EXPECT_EQ(FrameAt(project, "0.09"), 0U);
    EXPECT_EQ(FrameAt(project, "0.1"), 1U);
    EXPECT_EQ(FrameAt(project, "0.0999999"), 1U); // 0.1 in a program that counts in binary
    EXPECT_EQ(FrameAt(project, "1.99"), 19U);
    EXPECT_EQ(ErrorOf([&] { FrameAt(project, "2"); }),
              "--at: 2 lies at or behind the project's end at 2.0000000 seconds");
    EXPECT_EQ(ErrorOf([&] { FrameAt(project, ""); }), "--at: \"\" is no number of seconds");
}
} // namespace
} // namespace qmx::host
