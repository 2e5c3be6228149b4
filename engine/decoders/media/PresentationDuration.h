/// @file PresentationDuration.h
/// Length of what a source reader reads.
#pragma once

#include <mfidl.h>
#include <mfreadwrite.h>
#include <propvarutil.h>

/// @param seconds  of the whole presentation; keeps its value when the source does not say
inline void ReadDuration(IMFSourceReader& reader, double& seconds)
{
    constexpr double kUnitsPerSecond = 10'000'000;
    PROPVARIANT value;
    PropVariantInit(&value);
    LONGLONG duration = 0;
    if (SUCCEEDED(reader.GetPresentationAttribute(static_cast<DWORD>(MF_SOURCE_READER_MEDIASOURCE), MF_PD_DURATION,
                                                  &value)) &&
        SUCCEEDED(PropVariantToInt64(value, &duration)))
        seconds = static_cast<double>(duration) / kUnitsPerSecond;
    PropVariantClear(&value);
}
