// Windows has no decoders for the videos of movies: they are not shown.
#include "companions/swfrenderer/VideoDecoder.h"

namespace swf
{
struct CVideoDecoder::Codec
{
};

CVideoDecoder::CVideoDecoder(const VideoStream& stream) : m_stream(stream) {}
CVideoDecoder::~CVideoDecoder() = default;

const Bitmap* CVideoDecoder::PictureAfter(std::uint32_t, std::uint32_t)
{
    return nullptr;
}
} // namespace swf
