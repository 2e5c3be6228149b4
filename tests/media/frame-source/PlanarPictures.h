/// @file PlanarPictures.h
/// Pictures that are made as Y, U and V samples directly: numbered ones, the colour grid, and a detailed texture.
#pragma once

#include <cstdint>
#include <vector>

/// Three planes one after the other, rows without padding; each sample one byte, or two (little endian) above 8 bits.
using PlanarPicture = std::vector<std::uint8_t>;

/// Moving shapes under a strip that holds the frame number. 4:2:0, 8 bits; odd sizes round the chroma planes up.
/// @param number  below 65,536
void DrawNumbered(PlanarPicture& picture, int width, int height, std::uint32_t number);

/// The flat blocks of GridColour().
/// @param chroma  420, 422 or 444
/// @param bits    8 or 10
/// @param block   side of a block in pixels, even
void DrawGrid(PlanarPicture& picture, int chroma, std::uint32_t bits, int block);

/// Fine detail that pans at several speeds under film grain: as hard to code as camera material. 4:2:0, 8 bits, even
/// sizes.
class TextureScene
{
public:
    TextureScene(int width, int height);
    void Draw(PlanarPicture& picture, std::uint32_t number) const;

private:
    int m_width, m_height;
    int m_fieldWidth, m_fieldHeight; ///< the field that the picture pans over
    std::vector<std::uint8_t> m_field;
    std::vector<std::int8_t> m_grain;
};
