/// @file CheckEffectCommand.h
/// qmx check-effect
#pragma once

#include "host/HostError.h"

#include <cstdint>
#include <string>

namespace qmx::host
{
struct CheckEffectOptions
{
    std::string module;      ///< file of the effect module
    std::uint32_t count = 1; ///< effects to check: types 0 to count - 1
};

/// Prints a line for every effect type. @return ExitCode::Failed when one breaks a rule
/// @throw HostError  ExitCode::Media: no library, or one without the entry point
ExitCode RunCheckEffect(const CheckEffectOptions& options);
} // namespace qmx::host
