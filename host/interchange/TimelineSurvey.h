/// @file TimelineSurvey.h
/// A first look at a timeline: what an import has to know before it begins, and what it will not need.
#pragma once

#include "host/interchange/OtioObject.h"
#include "host/interchange/TransferReport.h"
#include "host/project/FrameRate.h"

#include <optional>
#include <string>

namespace qmx::host
{
struct TimelineFacts
{
    bool hasSoundTrack = false;     ///< with a clip on it
    std::optional<FrameRate> rate;  ///< in which the first clip that is seen is counted
    std::optional<std::string> url; ///< of the first media that are seen
};

/// Looks at everything that is enabled beneath @p root. Reports what no project has: names, markers, effects, and the
/// metadata of other programs.
/// @throw JsonError
TimelineFacts SurveyTimeline(const OtioObject& root, TransferReport& report);
} // namespace qmx::host
