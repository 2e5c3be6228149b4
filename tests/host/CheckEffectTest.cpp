// The command that authors of effect modules run, over the modules that are built here.
#include "tests/host/Program.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
TEST(CheckEffect, EveryEffectOfTheModuleKeepsTheRules)
{
    const QmxRun run({"check-effect", QMX_TRANSITIONS, "--effects", "18"});
    EXPECT_EQ(run.ExitCode(), 0) << run.Output();
    EXPECT_EQ(run.Output().rfind("effect 0: keeps the rules\n", 0), 0U);
    EXPECT_NE(run.Output().find("effect 17: keeps the rules\n"), std::string::npos); // unknown: a dissolve
}

TEST(CheckEffect, TheSampleModuleKeepsTheRules)
{
    const QmxRun run({"check-effect", QMX_WIPE_EFFECT});
    EXPECT_EQ(run.ExitCode(), 0) << run.Output();
    EXPECT_EQ(run.Output(), "effect 0: keeps the rules\n");
}

TEST(CheckEffect, WhatIsNoModuleIsFour)
{
    const QmxRun none({"check-effect", "no such file"});
    EXPECT_EQ(none.ExitCode(), 4);
    EXPECT_EQ(none.Errors(), "qmx: no such file: is no library that can be loaded\n");
    const QmxRun program({"check-effect", QMX_PROGRAM});
    EXPECT_EQ(program.ExitCode(), 4);
}

TEST(CheckEffect, ANumberOfEffectsThatCannotBeIsTwo)
{
    EXPECT_EQ(QmxRun({"check-effect", QMX_WIPE_EFFECT, "--effects", "0"}).ExitCode(), 2);
}
} // namespace
} // namespace qmx::host
