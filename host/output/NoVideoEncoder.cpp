// Stands in for VideoEncoder.cpp where there is no FFmpeg to encode with.
#include "host/output/VideoEncoder.h"

#include "host/HostError.h"

namespace qmx::host
{
struct VideoEncoder::State
{
};

VideoEncoder::VideoEncoder(const std::filesystem::path& target, const EncoderSettings& /*settings*/) : m_output(target)
{
    throw HostError(ExitCode::Failed, target.string(), "this build of qmx has no encoder");
}

VideoEncoder::~VideoEncoder() = default;
void VideoEncoder::Write(const Canvas& /*canvas*/) {}
void VideoEncoder::WriteSound(const float* /*pSamples*/, std::size_t /*count*/) {}
void VideoEncoder::Finish() {}
void VideoEncoder::Close() {}
std::vector<EncodedFrame> VideoEncoder::Frames() const
{
    return {};
}
} // namespace qmx::host
