#include "companions/jpegframes/JpegFrameDecoder.h"

#include "engine/platform/PixelUtility.h"
#include "engine/platform/SampleBuffer.h"

#include <turbojpeg.h>

#include <span>

namespace
{
constexpr std::uint32_t kMaxSide = 32'767;
/// 8K UHD with a margin. A progressive picture is held as coefficients, three times its pixels, whatever scale it is
/// decoded at, so a few bytes must not claim more.
constexpr std::uint64_t kMaxPixels = 36'000'000;

/// Progressive pictures of very many scans are an attack on time.
constexpr int kFlags = TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS;

tagSampleInfo Describe(std::uint8_t* pPixels, std::uint32_t width, std::uint32_t height)
{
    tagSampleInfo info;
    info.pData = pPixels;
    info.nWidth = width;
    info.nHeight = height;
    info.nStride = width * 4;
    return info;
}

struct PixelCloser
{
    void operator()(std::uint8_t* pPixels) const { FreeSamplePixels(pPixels); }
};
} // namespace

CJpegFrameDecoder::CJpegFrameDecoder(std::uint32_t width, std::uint32_t height)
    : m_wanted(width != 0 && height != 0 ? Size{width, height} : Size{})
{
}

void CJpegFrameDecoder::HandleCloser::operator()(void* pHandle) const
{
    tjDestroy(pHandle);
}

std::uint8_t* CJpegFrameDecoder::Decode(const std::uint8_t* pData, std::size_t cb, tagSampleInfo& info)
{
    Size stored;
    if (!ReadSize(pData, cb, stored))
    {
        m_pHandle.reset(); // TurboJPEG would go on with the picture that it could not read
        return nullptr;
    }
    const Size wanted = m_wanted.width != 0 ? m_wanted : stored;
    std::unique_ptr<std::uint8_t, PixelCloser> pPixels(
        AllocateSamplePixels(std::size_t{wanted.width} * wanted.height * 4));
    if (!pPixels)
        return nullptr;
    info = Describe(pPixels.get(), wanted.width, wanted.height);
    const Size decoded = SizeToDecode(stored, wanted);
    if (decoded == wanted)
    {
        if (!DecodeInto(pData, cb, wanted, pPixels.get()))
            return nullptr;
    }
    else
    {
        const std::size_t cbDecoded = std::size_t{decoded.width} * decoded.height * 4;
        if (m_unscaled.size() < cbDecoded)
            m_unscaled.resize(cbDecoded);
        const tagSampleInfo unscaled = Describe(m_unscaled.data(), decoded.width, decoded.height);
        if (!DecodeInto(pData, cb, decoded, m_unscaled.data()) || !ScaleAndRotateBGRA(&unscaled, &info, 0, kScaleArea))
            return nullptr;
    }
    return pPixels.release();
}

bool CJpegFrameDecoder::ReadSize(const std::uint8_t* pData, std::size_t cb, Size& size)
{
    if (!m_pHandle)
        m_pHandle.reset(tjInitDecompress());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (!m_pHandle || tjDecompressHeader3(m_pHandle.get(), pData, static_cast<unsigned long>(cb), &width, &height,
                                          &subsampling, &colours) != 0)
        return false;
    if (width <= 0 || height <= 0)
        return false;
    size = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    return size.width <= kMaxSide && size.height <= kMaxSide && std::uint64_t{size.width} * size.height <= kMaxPixels;
}

/// The smallest size that the transform offers and that is not below the wanted one; the stored one where there is
/// none.
CJpegFrameDecoder::Size CJpegFrameDecoder::SizeToDecode(const Size& stored, const Size& wanted)
{
    int count = 0;
    const tjscalingfactor* const pFactors = tjGetScalingFactors(&count);
    Size best = stored;
    for (const tjscalingfactor& factor : std::span(pFactors, pFactors ? static_cast<std::size_t>(count) : 0))
    {
        const Size size{static_cast<std::uint32_t>(TJSCALED(static_cast<int>(stored.width), factor)),
                        static_cast<std::uint32_t>(TJSCALED(static_cast<int>(stored.height), factor))};
        if (size.width >= wanted.width && size.height >= wanted.height && size.width < best.width)
            best = size;
    }
    return best;
}

bool CJpegFrameDecoder::DecodeInto(const std::uint8_t* pData, std::size_t cb, const Size& size, std::uint8_t* pPixels)
{
    const int width = static_cast<int>(size.width);
    const bool done = tjDecompress2(m_pHandle.get(), pData, static_cast<unsigned long>(cb), pPixels, width, width * 4,
                                    static_cast<int>(size.height), TJPF_BGRA, kFlags) == 0;
    if (!done)
        m_pHandle.reset();
    return done;
}
