/// @file CorpusMoviesTest.cpp
/// Movies as they are found in the world, beside the pictures that were made of them elsewhere.
#include "tests/companions/swfrenderer/CorpusMovies.h"

#include "engine/platform/RefPtr.h"
#include "engine/platform/SwfRenderer.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/PictureCompare.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

using namespace test_support;

namespace
{
Picture Render(const std::filesystem::path& path, std::uint32_t index, bool smooth)
{
    const auto pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
    Picture picture;
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    pMovie->SetSmoothEdges(smooth);
    if (FAILED(pMovie->OpenMovie(path.wstring().c_str())) || FAILED(pMovie->RenderFrame(index, &pInfo, &pPixels)))
        return picture;
    picture.width = pInfo->nWidth;
    picture.height = pInfo->nHeight;
    picture.bgra.assign(pPixels, pPixels + std::size_t{pInfo->nStride} * pInfo->nHeight);
    return picture;
}

/// Where a pixel of the expected picture differs from one beside it: another renderer's edge may take or leave it.
bool IsAtEdge(const Picture& picture, std::size_t pixel)
{
    const auto width = static_cast<int>(picture.width), height = static_cast<int>(picture.height);
    const int x = static_cast<int>(pixel) % width, y = static_cast<int>(pixel) / width;
    constexpr int kContrast = 16;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
        {
            const int atX = std::clamp(x + dx, 0, width - 1), atY = std::clamp(y + dy, 0, height - 1);
            const std::uint8_t* const p = picture.At(static_cast<std::uint32_t>(atX), static_cast<std::uint32_t>(atY));
            for (std::size_t c = 0; c < 4; ++c)
                if (std::abs(int{p[c]} - int{picture.bgra[pixel * 4 + c]}) > kContrast)
                    return true;
        }
    return false;
}

struct Verdict
{
    bool strict = true;  ///< within the stated limits
    bool lenient = true; ///< within them but for edges, which are 2 % of the channels at most
    std::string message;
};

Verdict Judge(const Picture& actual, const Picture& expected, const std::vector<ChannelLimit>& limits)
{
    Verdict verdict;
    if (actual.width != expected.width || actual.height != expected.height)
        return {false, false, "size " + std::to_string(actual.width) + " x " + std::to_string(actual.height)};
    for (const ChannelLimit& limit : limits)
    {
        std::size_t outliers = 0, inside = 0;
        int most = 0;
        for (std::size_t i = 0; i < actual.bgra.size(); ++i)
        {
            const int difference = std::abs(int{actual.bgra[i]} - int{expected.bgra[i]});
            most = std::max(most, difference);
            if (static_cast<std::uint32_t>(difference) <= limit.level)
                continue;
            ++outliers;
            inside += IsAtEdge(expected, i / 4) ? 0 : 1;
        }
        verdict.strict = verdict.strict && outliers <= limit.outliers;
        verdict.lenient = verdict.lenient && (outliers <= limit.outliers ||
                                              (inside <= limit.outliers && outliers <= actual.bgra.size() / 50));
        if (outliers > limit.outliers)
            verdict.message += std::to_string(outliers) + " channels above " + std::to_string(limit.level) + " (" +
                               std::to_string(inside) + " of them not at edges), " + std::to_string(limit.outliers) +
                               " allowed, " + std::to_string(most) + " at most; ";
    }
    return verdict;
}
} // namespace

TEST(CorpusMovies, ShowTheSamePictureWhateverWasAskedBefore)
{
    QMX_REQUIRE_CORPUS(folder, "swf");
    const std::uint32_t order[] = {7, 0, 3, 40, 2, 7};
    for (const CorpusMovie& movie : CorpusMovies())
    {
        const std::filesystem::path path = folder / (std::string(movie.name) + ".swf");
        const auto pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
        ASSERT_TRUE(SUCCEEDED(pMovie->OpenMovie(path.wstring().c_str())));
        for (const std::uint32_t index : order)
        {
            const tagSWFFrameInfo* pInfo = nullptr;
            const std::uint8_t* pPixels = nullptr;
            pMovie->SetRenderSize(160, 120);
            ASSERT_TRUE(SUCCEEDED(pMovie->RenderFrame(index, &pInfo, &pPixels)));
            const auto pFresh = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
            const tagSWFFrameInfo* pFreshInfo = nullptr;
            const std::uint8_t* pFreshPixels = nullptr;
            pFresh->SetRenderSize(160, 120);
            ASSERT_TRUE(SUCCEEDED(pFresh->OpenMovie(path.wstring().c_str())));
            ASSERT_TRUE(SUCCEEDED(pFresh->RenderFrame(index, &pFreshInfo, &pFreshPixels)));
            EXPECT_TRUE(std::equal(pPixels, pPixels + std::size_t{160} * 120 * 4, pFreshPixels))
                << movie.name << " at " << index;
        }
    }
}

TEST(CorpusMovies, ShowThePicturesThatWereMadeOfThem)
{
    QMX_REQUIRE_CORPUS(folder, "swf");
    std::size_t passed = 0, butEdges = 0;
    for (const CorpusMovie& movie : CorpusMovies())
    {
        const std::string picture = std::string(movie.expected) + ".expected.png";
        const auto expected = ReadPng(folder / picture);
        ASSERT_TRUE(expected) << picture;
        const Picture actual = Render(folder / (std::string(movie.name) + ".swf"), movie.tick - 1, movie.smooth);
        const Verdict verdict = Judge(actual, *expected, movie.limits);
        if (std::getenv("QMX_TEST_SHEET"))
        {
            WritePng(ComparisonFolder() / (std::string(movie.expected) + "-actual.png"), actual);
            WritePng(ComparisonFolder() / (std::string(movie.expected) + "-expected.png"), *expected);
        }
        passed += verdict.strict ? 1 : 0;
        butEdges += verdict.lenient ? 1 : 0;
        if (!verdict.strict)
            std::cout << movie.expected << ": " << verdict.message << (movie.apart ? movie.apart : "edges") << "\n";
        EXPECT_EQ(verdict.lenient, movie.apart == nullptr) << movie.expected << ": " << verdict.message;
        if (!verdict.lenient && !movie.apart)
            (void)PicturesMatch(actual, *expected, {}, movie.expected); // leaves the pictures behind
    }
    std::cout << passed << " of " << CorpusMovies().size() << " pictures within their limits, " << butEdges
              << " when pixels at edges are left out\n";
    EXPECT_GE(passed, 17U);
}
