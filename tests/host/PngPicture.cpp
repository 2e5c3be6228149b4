#include "tests/host/PngPicture.h"

#include <png.h>

namespace qmx::host
{
PngPicture::PngPicture(const std::filesystem::path& file)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, file.c_str()))
        return;
    hasAlpha = (image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    image.format = PNG_FORMAT_BGRA;
    pixels.resize(std::size_t{image.width} * image.height);
    if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr))
        return;
    width = image.width;
    height = image.height;
}
} // namespace qmx::host
