/// @file KernelTargets.h
/// Runs a test once for every instruction set that the kernels are compiled for and this processor has.
#pragma once

#include <hwy/targets.h>

#include <gtest/gtest.h>

#include <cstdint>

/// Calls @p function with each instruction set in turn chosen, then leaves the choice to the library again.
template <class Function> void ForEveryKernelTarget(Function function)
{
    // Every target below this line is compiled into the kernels; the scalar one stands for "none of the others".
    for (std::int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1)
    {
        const std::int64_t target = rest & -rest;
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        function();
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}
