#include "tests/media/frame-source/PlanarPictures.h"

#include "tests/support/FrameStripCode.h"
#include "tests/support/TestPattern.h"

#include <algorithm>
#include <cmath>

namespace
{
std::uint32_t Hash(std::uint32_t value)
{
    value ^= value >> 16;
    value *= 0x7FEB352DU;
    value ^= value >> 15;
    value *= 0x846CA68BU;
    return value ^ value >> 16;
}

std::size_t Area(int width, int height)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

void PutSample(PlanarPicture& picture, std::uint32_t value, std::uint32_t bits)
{
    picture.push_back(static_cast<std::uint8_t>(value & 255));
    if (bits > 8)
        picture.push_back(static_cast<std::uint8_t>(value >> 8));
}

/// Smooth noise: random values on a lattice of @p cell pixels, wrapping at the field's edges, joined by cosine ramps.
void AddNoise(std::vector<double>& field, int width, int height, int cell, double amplitude, std::uint32_t seed)
{
    const int columns = width / cell, rows = height / cell;
    const auto lattice = [=](int x, int y)
    {
        const auto index = static_cast<std::uint32_t>(y % rows * columns + x % columns);
        return Hash(index * 2'654'435'761U + seed) / 4294967295.0 - 0.5;
    };
    const auto ramp = [cell](int i) { return 0.5 - 0.5 * std::cos(3.14159265358979 * i / cell); };
    for (int y = 0; y < height; ++y)
    {
        const double fy = ramp(y % cell);
        for (int x = 0; x < width; ++x)
        {
            const int cx = x / cell, cy = y / cell;
            const double fx = ramp(x % cell);
            const double top = lattice(cx, cy) * (1 - fx) + lattice(cx + 1, cy) * fx;
            const double bottom = lattice(cx, cy + 1) * (1 - fx) + lattice(cx + 1, cy + 1) * fx;
            field[Area(width, y) + static_cast<std::size_t>(x)] += amplitude * (top * (1 - fy) + bottom * fy);
        }
    }
}
} // namespace

void DrawNumbered(PlanarPicture& picture, int width, int height, std::uint32_t number)
{
    const int chromaWidth = (width + 1) / 2, chromaHeight = (height + 1) / 2;
    picture.resize(Area(width, height) + 2 * Area(chromaWidth, chromaHeight));
    std::uint8_t* const pLuma = picture.data();
    const int shift = static_cast<int>(number) * 3;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const int ramp = (x + y + shift) & 127;
            const bool bar = ((x - 2 * shift) & 255) < 24;
            pLuma[Area(width, y) + static_cast<std::size_t>(x)] =
                static_cast<std::uint8_t>(bar ? 200 : 60 + (ramp < 64 ? ramp : 127 - ramp));
        }
    // The strip lies on top: block edges are rounded so that a picture of any width holds 16 columns.
    const auto edge = [width](std::uint32_t column) { return static_cast<int>(column) * width / 16; };
    for (std::uint32_t row = 0; row < kStripRows; ++row)
        for (std::uint32_t column = 0; column < kStripColumns; ++column)
            for (int y = edge(row); y < std::min(edge(row + 1), height); ++y)
                std::fill_n(pLuma + Area(width, y) + edge(column), edge(column + 1) - edge(column),
                            static_cast<std::uint8_t>(
                                FrameStripBit(static_cast<std::uint16_t>(number), column, row) ? 235 : 16));
    std::uint8_t* pChroma = pLuma + Area(width, height);
    for (int plane = 0; plane < 2; ++plane)
        for (int y = 0; y < chromaHeight; ++y)
            for (int x = 0; x < chromaWidth; ++x)
            {
                const bool strip = 2 * y < edge(kStripRows) + 2;
                const int wave = (plane == 0 ? x - y + shift : x + 2 * y - shift) & 63;
                *pChroma++ = static_cast<std::uint8_t>(strip ? 128 : 112 + (wave < 32 ? wave : 63 - wave));
            }
}

void DrawGrid(PlanarPicture& picture, int chroma, std::uint32_t bits, int block)
{
    const int side = static_cast<int>(kGridSide) * block;
    const int stepX = chroma == 444 ? 1 : 2, stepY = chroma == 420 ? 2 : 1;
    picture.clear();
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < side; y += plane == 0 ? 1 : stepY)
            for (int x = 0; x < side; x += plane == 0 ? 1 : stepX)
            {
                const tagGridColour colour =
                    GridColour(static_cast<std::uint32_t>(x / block), static_cast<std::uint32_t>(y / block), bits);
                PutSample(picture, plane == 0 ? colour.y : plane == 1 ? colour.u : colour.v, bits);
            }
}

TextureScene::TextureScene(int width, int height)
    : m_width(width), m_height(height), m_fieldWidth((width + 1023) / 1024 * 1024),
      m_fieldHeight((height + 1023) / 1024 * 1024), m_field(Area(m_fieldWidth, m_fieldHeight)), m_grain(1 << 20)
{
    std::vector<double> field(m_field.size(), 110.0);
    AddNoise(field, m_fieldWidth, m_fieldHeight, 256, 150, 1);
    AddNoise(field, m_fieldWidth, m_fieldHeight, 64, 70, 2);
    AddNoise(field, m_fieldWidth, m_fieldHeight, 16, 36, 3);
    AddNoise(field, m_fieldWidth, m_fieldHeight, 4, 18, 4);
    std::transform(field.begin(), field.end(), m_field.begin(),
                   [](double value) { return static_cast<std::uint8_t>(std::clamp(value, 20.0, 230.0)); });
    for (std::size_t i = 0; i < m_grain.size(); ++i)
        m_grain[i] = static_cast<std::int8_t>(static_cast<int>(Hash(static_cast<std::uint32_t>(i)) % 7) - 3);
}

void TextureScene::Draw(PlanarPicture& picture, std::uint32_t number) const
{
    picture.resize(Area(m_width, m_height) * 3 / 2);
    std::uint8_t* p = picture.data();
    const int n = static_cast<int>(number), bands = 4;
    for (int y = 0; y < m_height; ++y)
    {
        // Bands pan at speeds of their own, as near and far things do.
        const int band = y * bands / m_height, pan = n * (1 + 2 * band);
        const std::uint8_t* const pField = m_field.data() + Area(m_fieldWidth, (y + n) % m_fieldHeight);
        const std::int8_t* const pGrain =
            m_grain.data() + Hash(number * 8192 + static_cast<std::uint32_t>(y)) % (m_grain.size() - 8192);
        for (int x = 0; x < m_width; ++x)
            *p++ = static_cast<std::uint8_t>(pField[(x + pan) % m_fieldWidth] + pGrain[x]);
    }
    for (int plane = 0; plane < 2; ++plane)
        for (int y = 0; y < m_height / 2; ++y)
        {
            const std::uint8_t* const pField =
                m_field.data() + Area(m_fieldWidth, (y / 2 + 300 * (plane + 1) + n / 2) % m_fieldHeight);
            for (int x = 0; x < m_width / 2; ++x)
                *p++ = static_cast<std::uint8_t>(96 + pField[(x / 2 + n) % m_fieldWidth] / 4);
        }
}
