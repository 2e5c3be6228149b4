/// @file StandardError.h
/// Talk on standard error.
#pragma once

#include "host/HostError.h"

namespace qmx::host
{
/// "qmx: SUBJECT: REASON", or "qmx: REASON" without a subject.
void PrintError(const HostError& error);
} // namespace qmx::host
