#include "host/output/JpegFile.h"

#include <turbojpeg.h>

#include <new>

namespace qmx::host
{
struct JpegFile::Compressor
{
    ~Compressor()
    {
        tjFree(pJpeg);
        if (handle)
            tjDestroy(handle);
    }

    tjhandle handle = tjInitCompress();
    unsigned char* pJpeg = nullptr; ///< kept from picture to picture; the library makes it larger when it must
    unsigned long cb = 0;
};

JpegFile::JpegFile(const std::filesystem::path& target, int quality)
    : m_output(target), m_file(m_output.Path(), std::ios::binary | std::ios::trunc), m_quality(quality),
      m_pCompressor(std::make_unique<Compressor>())
{
    if (!m_pCompressor->handle)
        throw std::bad_alloc();
}

JpegFile::~JpegFile() = default;

CameraRecord JpegFile::Write(const Canvas& canvas)
{
    constexpr std::uint64_t kMostBytes = INT32_MAX;
    Compressor& compressor = *m_pCompressor;
    if (tjCompress2(compressor.handle, canvas.Row(0), static_cast<int>(canvas.Width()),
                    static_cast<int>(canvas.Stride()), static_cast<int>(canvas.Height()), TJPF_BGRX, &compressor.pJpeg,
                    &compressor.cb, TJSAMP_420, m_quality, 0) != 0)
        m_output.Fail(std::string("cannot be compressed: ") + tjGetErrorStr2(compressor.handle));
    const CameraRecord record{0, m_cbWritten, compressor.cb};
    if (record.offset > kMostBytes - record.length)
        m_output.Fail("would be larger than 2 GiB, which Motion-JPEG recordings cannot be");
    m_file.write(reinterpret_cast<const char*>(compressor.pJpeg), static_cast<std::streamsize>(compressor.cb));
    if (!m_file)
        m_output.Fail("cannot be written");
    m_cbWritten += record.length;
    return record;
}

void JpegFile::Close()
{
    m_file.close();
    if (!m_file)
        m_output.Fail("cannot be written");
}
} // namespace qmx::host
