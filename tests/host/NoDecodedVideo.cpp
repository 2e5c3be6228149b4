// Stands in for DecodedVideo.cpp where there is no FFmpeg: no file can be read back.
#include "tests/host/DecodedVideo.h"

namespace qmx::host
{
DecodedVideo::DecodedVideo(const std::filesystem::path& /*file*/) {}
} // namespace qmx::host
