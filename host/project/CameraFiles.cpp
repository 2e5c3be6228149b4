#include "host/project/CameraFiles.h"

#include "host/system/Platform.h"

namespace qmx::host
{
namespace fs = std::filesystem;

fs::path CameraMediaPath(const fs::path& name)
{
    return fs::path(name).replace_extension(IsMotionJpegName(name) ? ".mov" : ".mp4");
}

fs::path CameraIndexPath(const fs::path& name)
{
    return fs::path(name).replace_extension(".meta");
}

bool IsCameraName(const fs::path& name)
{
    return IsMotionJpegName(name) || name.extension() == ".h264";
}

bool IsMotionJpegName(const fs::path& name)
{
    return name.extension() == ".mjpg";
}

std::wstring CameraEnginePath(const fs::path& name)
{
    return EnginePath(fs::absolute(name).make_preferred());
}
} // namespace qmx::host
