#include "host/output/PngFile.h"

#include "host/output/OutputFile.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <memory>

namespace qmx::host
{
namespace
{
struct FileCloser
{
    void operator()(std::FILE* p) const { std::fclose(p); }
};

void IgnoreWarning(png_structp, png_const_charp) {}

/// Jumps, as libpng wants: exceptions must not cross its frames.
[[noreturn]] void LeaveLibrary(png_structp pPng, png_const_charp)
{
    png_longjmp(pPng, 1);
}

void WriteRows(png_structp pPng, const Canvas& picture)
{
    for (std::uint32_t y = 0; y < picture.Height(); ++y)
        png_write_row(pPng, picture.Row(y));
}

/// Everything between png_create and png_destroy, so that no object with a destructor is jumped over.
/// @return false when the library gave up, mostly because the disk is full
bool WriteFile(std::FILE* pFile, const Canvas& picture)
{
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, LeaveLibrary, IgnoreWarning);
    png_infop pInfo = pPng ? png_create_info_struct(pPng) : nullptr;
    if (!pInfo || setjmp(png_jmpbuf(pPng)))
    {
        png_destroy_write_struct(&pPng, &pInfo);
        return false;
    }
    png_init_io(pPng, pFile);
    png_set_IHDR(pPng, pInfo, picture.Width(), picture.Height(), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(pPng, pInfo, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(pPng, pInfo);
    png_set_bgr(pPng);
    png_set_filler(pPng, 0, PNG_FILLER_AFTER);
    WriteRows(pPng, picture);
    png_write_end(pPng, pInfo);
    png_destroy_write_struct(&pPng, &pInfo);
    return true;
}
} // namespace

void WritePng(const Canvas& picture, const std::filesystem::path& target)
{
    OutputFile output(target);
    errno = 0;
    std::unique_ptr<std::FILE, FileCloser> pFile(std::fopen(output.Path().string().c_str(), "wbe"));
    if (!pFile || !WriteFile(pFile.get(), picture) || std::fflush(pFile.get()) != 0)
        output.FailWith(errno != 0 ? errno : EIO);
    if (std::fclose(pFile.release()) != 0)
        output.FailWith(errno);
    output.Commit();
}
} // namespace qmx::host
