/// @file PackCameraCommand.h
/// qmx pack-camera
#pragma once

#include "host/output/Progress.h"

#include <string>

namespace qmx::host
{
struct PackCameraOptions
{
    std::string input;
    std::string output; ///< name of the recording: *.mjpg or *.h264
    int quality = 90;   ///< of JPEG, 1 (worst) to 100
    int crf = 20;       ///< of H.264, 0 (lossless) to 51 (worst)
    ProgressMode progress = ProgressMode::None;
};

/// Makes a camera recording of a video: a media file and the index beside it. @throw HostError
void RunPackCamera(const PackCameraOptions& options);
} // namespace qmx::host
