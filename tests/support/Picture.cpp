#include "tests/support/Picture.h"

#include "engine/platform/SampleBuffer.h"

#include <png.h>

#include <cstring>

namespace test_support
{
Picture PictureOf(ISampleBuffer* pBuffer)
{
    Picture picture;
    std::uint8_t* pPixels = nullptr;
    if (!pBuffer || !pBuffer->GetBuffer(&pPixels, nullptr) || !pPixels)
        return picture;
    picture.width = pBuffer->GetWidth();
    picture.height = pBuffer->GetHeight();
    picture.bgra.assign(pPixels, pPixels + static_cast<std::size_t>(picture.width) * picture.height * 4);
    return picture;
}

MeanColour MeanOf(const Picture& picture)
{
    std::uint64_t sums[4] = {};
    for (std::size_t i = 0; i < picture.bgra.size(); ++i)
        sums[i % 4] += picture.bgra[i];
    const double count = picture.IsEmpty() ? 1 : static_cast<double>(picture.bgra.size() / 4);
    return {static_cast<double>(sums[2]) / count, static_cast<double>(sums[1]) / count,
            static_cast<double>(sums[0]) / count};
}

bool WritePng(const std::filesystem::path& path, const Picture& picture)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_BGRA;
    return !picture.IsEmpty() &&
           png_image_write_to_file(&image, path.string().c_str(), 0, picture.bgra.data(), 0, nullptr) != 0;
}

std::optional<Picture> ReadPng(const std::filesystem::path& path)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.string().c_str()) == 0)
        return std::nullopt;
    image.format = PNG_FORMAT_BGRA;
    Picture picture{image.width, image.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
    if (png_image_finish_read(&image, nullptr, picture.bgra.data(), 0, nullptr) == 0)
        return std::nullopt;
    return picture;
}
} // namespace test_support
