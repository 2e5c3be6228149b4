/// @file FlashSheet.cpp
/// flash-sheet SHEET.png [GENERATED [SEED]]: movies of the collection beside the pictures they should show and the
/// difference, four times as strong; then generated movies beside themselves drawn four times as large and scaled down.
/// Four movies to a row, in the order that is printed.
#include "tests/companions/swfrenderer/CorpusMovies.h"
#include "tests/companions/swfrenderer/GeneratedMovie.h"
#include "tests/companions/swfrenderer/MoviePlayer.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Picture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

using test_support::Picture;

namespace
{
constexpr std::uint32_t kCellWidth = 176, kCellHeight = 132, kGap = 4, kCells = 3, kMoviesInRow = 4;

struct Row
{
    std::string name;
    Picture expected, actual;
};

Picture Render(const Bytes& file, std::uint32_t index, bool smooth, std::uint32_t width, std::uint32_t height)
{
    MoviePlayer player(file);
    player->SetSmoothEdges(smooth);
    player->SetRenderSize(width, height);
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    Picture picture;
    if (!player.IsOpen() || FAILED(player->RenderFrame(index, &pInfo, &pPixels)))
        return picture;
    picture.width = pInfo->nWidth;
    picture.height = pInfo->nHeight;
    picture.bgra.assign(pPixels, pPixels + std::size_t{pInfo->nStride} * pInfo->nHeight);
    return picture;
}

/// The mean of what lies under every pixel; the picture keeps its shape.
Picture ScaleInto(const Picture& from, std::uint32_t width, std::uint32_t height)
{
    Picture out;
    if (from.IsEmpty())
        return out;
    const double scale = std::min(double{1} * width / from.width, double{1} * height / from.height);
    out.width = std::max(1U, static_cast<std::uint32_t>(from.width * scale));
    out.height = std::max(1U, static_cast<std::uint32_t>(from.height * scale));
    out.bgra.resize(std::size_t{out.width} * out.height * 4);
    for (std::uint32_t y = 0; y < out.height; ++y)
        for (std::uint32_t x = 0; x < out.width; ++x)
        {
            const auto begin = [](std::uint32_t i, std::uint32_t all, std::uint32_t n)
            { return static_cast<std::uint32_t>(std::uint64_t{i} * all / n); };
            const std::uint32_t x0 = begin(x, from.width, out.width), y0 = begin(y, from.height, out.height);
            const std::uint32_t x1 = std::max(x0 + 1, begin(x + 1, from.width, out.width));
            const std::uint32_t y1 = std::max(y0 + 1, begin(y + 1, from.height, out.height));
            for (std::uint32_t c = 0; c < 4; ++c)
            {
                std::uint32_t sum = 0;
                for (std::uint32_t v = y0; v < y1; ++v)
                    for (std::uint32_t u = x0; u < x1; ++u)
                        sum += from.At(u, v)[c];
                out.bgra[(std::size_t{y} * out.width + x) * 4 + c] =
                    static_cast<std::uint8_t>(sum / ((x1 - x0) * (y1 - y0)));
            }
        }
    return out;
}

/// Grey where the two are equal.
Picture Difference(const Picture& a, const Picture& b)
{
    Picture out = a;
    for (std::size_t i = 0; i < out.bgra.size(); ++i)
        if (i % 4 != 3)
            out.bgra[i] = i < b.bgra.size()
                              ? static_cast<std::uint8_t>(std::clamp(128 + 4 * (int{a.bgra[i]} - b.bgra[i]), 0, 255))
                              : std::uint8_t{0};
    return out;
}

void Lay(const Picture& picture, std::uint32_t left, std::uint32_t top, Picture& sheet)
{
    const Picture small = ScaleInto(picture, kCellWidth, kCellHeight);
    for (std::uint32_t y = 0; y < small.height; ++y)
        std::copy(small.At(0, y), small.At(0, y) + std::size_t{small.width} * 4,
                  sheet.bgra.begin() + static_cast<std::ptrdiff_t>((std::size_t{top + y} * sheet.width + left) * 4));
}

void AddCollected(std::vector<Row>& rows)
{
    const std::filesystem::path folder = test_support::CorpusFolder() / "swf";
    for (const CorpusMovie& movie : CorpusMovies())
    {
        std::ifstream input(folder / (std::string(movie.name) + ".swf"), std::ios::binary);
        const Bytes file((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
        Row row{movie.expected, {}, Render(file, movie.tick - 1, movie.smooth, 0, 0)};
        if (auto expected = test_support::ReadPng(folder / (std::string(movie.expected) + ".expected.png")))
            row.expected = std::move(*expected);
        if (row.expected.IsEmpty() && row.actual.IsEmpty())
            std::cerr << movie.expected << " is not there\n";
        rows.push_back(std::move(row));
    }
}

void AddGenerated(std::uint64_t seed, int count, std::vector<Row>& rows)
{
    for (int i = 0; i < count; ++i)
    {
        const Bytes file = GeneratedMovie(seed + static_cast<std::uint64_t>(i));
        const auto index = static_cast<std::uint32_t>(i % 12);
        rows.push_back(
            {"generated " + std::to_string(seed + static_cast<std::uint64_t>(i)) + " frame " + std::to_string(index),
             ScaleInto(Render(file, index, true, 1280, 960), 320, 240), Render(file, index, true, 320, 240)});
    }
}
} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::cerr << "flash-sheet SHEET.png [GENERATED [SEED]]\n";
        return 1;
    }
    std::vector<Row> rows;
    AddCollected(rows);
    AddGenerated(argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 1, argc > 2 ? std::atoi(argv[2]) : 12, rows);
    Picture sheet;
    const auto lines = static_cast<std::uint32_t>((rows.size() + kMoviesInRow - 1) / kMoviesInRow);
    sheet.width = kMoviesInRow * (kCells * kCellWidth + kGap);
    sheet.height = lines * (kCellHeight + kGap);
    sheet.bgra.assign(std::size_t{sheet.width} * sheet.height * 4, 255);
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        const auto n = static_cast<std::uint32_t>(i);
        const std::uint32_t left = n % kMoviesInRow * (kCells * kCellWidth + kGap);
        const std::uint32_t top = n / kMoviesInRow * (kCellHeight + kGap);
        Lay(rows[i].expected, left, top, sheet);
        Lay(rows[i].actual, left + kCellWidth, top, sheet);
        Lay(Difference(rows[i].actual, rows[i].expected), left + 2 * kCellWidth, top, sheet);
        std::cout << i + 1 << " (row " << n / kMoviesInRow + 1 << ", " << n % kMoviesInRow + 1 << "): " << rows[i].name
                  << "\n";
    }
    return test_support::WritePng(argv[1], sheet) ? 0 : 1;
}
