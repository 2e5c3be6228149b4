/// @file Main.cpp
/// frame-source: writes the raw pictures of a test film to standard output, for ffmpeg to code.
///
///   frame-source numbered WIDTH HEIGHT COUNT             yuv420p; each picture carries its number, from 0
///   frame-source texture  WIDTH HEIGHT COUNT             yuv420p
///   frame-source screen   WIDTH HEIGHT COUNT RATE        rgb24; RATE is frames per second
///   frame-source pausing  WIDTH HEIGHT COUNT RATE        rgb24; the same desktop, still for seconds at a time
///   frame-source phone    WIDTH HEIGHT COUNT RATE        rgb24
///   frame-source grid     420|422|444 8|10 BLOCK COUNT   yuv of that kind, 21 BLOCK pixels wide and high
///   frame-source pattern  WIDTH HEIGHT COUNT             rgba, straight alpha
#include "tests/media/frame-source/PlanarPictures.h"
#include "tests/media/frame-source/Scenes.h"
#include "tests/support/TestPattern.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace
{
bool Write(const std::vector<std::uint8_t>& bytes)
{
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
}

template <class Scene> bool WriteScene(Scene scene, int count)
{
    for (int n = 0; n < count; ++n)
        if (!Write(scene.Draw(n).Pixels()))
            return false;
    return true;
}

bool WriteNumbered(int width, int height, int count)
{
    PlanarPicture picture;
    for (int n = 0; n < count; ++n)
    {
        DrawNumbered(picture, width, height, static_cast<std::uint32_t>(n));
        if (!Write(picture))
            return false;
    }
    return true;
}

bool WriteTexture(int width, int height, int count)
{
    const TextureScene scene(width, height);
    PlanarPicture picture;
    for (int n = 0; n < count; ++n)
    {
        scene.Draw(picture, static_cast<std::uint32_t>(n));
        if (!Write(picture))
            return false;
    }
    return true;
}

bool WriteGrid(int chroma, int bits, int block, int count)
{
    PlanarPicture picture;
    DrawGrid(picture, chroma, static_cast<std::uint32_t>(bits), block);
    for (int n = 0; n < count; ++n)
        if (!Write(picture))
            return false;
    return true;
}

bool WritePattern(int width, int height, int count)
{
    std::vector<std::uint8_t> picture;
    for (int n = 0; n < count; ++n)
    {
        picture.clear();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
            {
                const tagPatternPixel pixel = PatternPixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                                                           static_cast<std::uint32_t>(n));
                picture.insert(picture.end(), {pixel.r, pixel.g, pixel.b, pixel.a});
            }
        if (!Write(picture))
            return false;
    }
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    const std::string_view kind = argc > 1 ? argv[1] : "";
    const auto number = [&](int i) { return i < argc ? std::atoi(argv[i]) : 0; };
    const auto real = [&](int i) { return i < argc ? std::atof(argv[i]) : 0.0; };
    bool written = false;
    if (argc == 5 && kind == "numbered")
        written = WriteNumbered(number(2), number(3), number(4));
    else if (argc == 5 && kind == "texture")
        written = WriteTexture(number(2), number(3), number(4));
    else if (argc == 6 && (kind == "screen" || kind == "pausing"))
        written = WriteScene(ScreenScene(number(2), number(3), real(5), kind == "pausing"), number(4));
    else if (argc == 6 && kind == "phone")
        written = WriteScene(PhoneScene(number(2), number(3), real(5)), number(4));
    else if (argc == 6 && kind == "grid")
        written = WriteGrid(number(2), number(3), number(4), number(5));
    else if (argc == 5 && kind == "pattern")
        written = WritePattern(number(2), number(3), number(4));
    else
        std::fputs("frame-source: wrong arguments, see the top of Main.cpp\n", stderr);
    return written && std::fflush(stdout) == 0 ? 0 : 1;
}
