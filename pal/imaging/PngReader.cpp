#include "pal/imaging/PngReader.h"

#include "pal/imaging/ImageLimits.h"

#include <csetjmp>
#include <cstring>

namespace pal
{
PngReader::PngReader(const ImageBytes& bytes)
    : m_bytes(bytes), m_pPng(png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)),
      m_pInfo(m_pPng ? png_create_info_struct(m_pPng) : nullptr)
{
}

PngReader::~PngReader()
{
    png_destroy_read_struct(&m_pPng, &m_pInfo, nullptr);
}

void PngReader::OnError(png_structp pPng, png_const_charp)
{
    png_longjmp(pPng, 1);
}

void PngReader::OnRead(png_structp pPng, png_bytep pTarget, std::size_t cb)
{
    auto& self = *static_cast<PngReader*>(png_get_io_ptr(pPng));
    if (!self.m_bytes.Has(self.m_at, cb))
        png_error(pPng, "the file ends");
    std::memcpy(pTarget, self.m_bytes.Data() + self.m_at, cb);
    self.m_at += cb;
}

bool PngReader::ReadHeader(ImageSize& size)
{
    if (!m_pInfo || setjmp(png_jmpbuf(m_pPng)) != 0)
        return false;
    png_set_read_fn(m_pPng, this, OnRead);
    png_set_user_limits(m_pPng, kMaxImageSide, kMaxImageSide);
    // Everything but size, palette, transparency and pixels is skipped, compressed texts and profiles among it.
    png_set_keep_unknown_chunks(m_pPng, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_read_info(m_pPng, m_pInfo);
    m_size = {png_get_image_width(m_pPng, m_pInfo), png_get_image_height(m_pPng, m_pInfo)};
    size = m_size;
    return true;
}

void PngReader::AskForBgra()
{
    png_set_expand(m_pPng);
    png_set_scale_16(m_pPng);
    png_set_gray_to_rgb(m_pPng);
    png_set_bgr(m_pPng);
    png_set_add_alpha(m_pPng, 0xFF, PNG_FILLER_AFTER);
    m_passes = png_set_interlace_handling(m_pPng);
    png_read_update_info(m_pPng, m_pInfo);
}

bool PngReader::ReadRows(BYTE* pTarget, std::size_t stride)
{
    const std::size_t cbRow = std::size_t{m_size.width} * 4;
    if (setjmp(png_jmpbuf(m_pPng)) == 0)
    {
        AskForBgra();
        if (png_get_rowbytes(m_pPng, m_pInfo) != cbRow)
            return false;
        // A pass of an interlaced picture writes some pixels of its rows; the others must not stay as they are.
        for (UINT y = 0; m_passes > 1 && y < m_size.height; ++y)
            std::memset(pTarget + y * stride, 0, cbRow);
        for (m_pass = 0; m_pass < m_passes; ++m_pass)
            for (m_row = 0; m_row < m_size.height; ++m_row)
                png_read_row(m_pPng, pTarget + m_row * stride, nullptr);
        return true;
    }
    if (m_pass == 0 && m_row == 0)
        return false;
    for (; m_passes == 1 && m_row < m_size.height; ++m_row)
        std::memset(pTarget + m_row * stride, 0, cbRow);
    return true;
}
} // namespace pal
