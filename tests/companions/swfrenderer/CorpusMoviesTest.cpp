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

std::string Verdict(const Picture& actual, const Picture& expected, const std::vector<ChannelLimit>& limits)
{
    if (actual.width != expected.width || actual.height != expected.height)
        return "size " + std::to_string(actual.width) + " x " + std::to_string(actual.height);
    std::string verdict;
    for (const ChannelLimit& limit : limits)
    {
        std::uint32_t outliers = 0;
        int most = 0;
        for (std::size_t i = 0; i < actual.bgra.size(); ++i)
        {
            const int difference = std::abs(int{actual.bgra[i]} - int{expected.bgra[i]});
            most = std::max(most, difference);
            outliers += static_cast<std::uint32_t>(difference) > limit.level ? 1 : 0;
        }
        if (outliers > limit.outliers)
            verdict += std::to_string(outliers) + " channels above " + std::to_string(limit.level) + ", " +
                       std::to_string(limit.outliers) + " allowed, " + std::to_string(most) + " at most; ";
    }
    return verdict;
}
} // namespace

TEST(CorpusMovies, ShowThePicturesThatWereMadeOfThem)
{
    QMX_REQUIRE_CORPUS(folder, "swf");
    std::size_t passed = 0;
    for (const CorpusMovie& movie : CorpusMovies())
    {
        const std::string picture = std::string(movie.expected) + ".expected.png";
        const auto expected = ReadPng(folder / picture);
        ASSERT_TRUE(expected) << picture;
        const Picture actual = Render(folder / (std::string(movie.name) + ".swf"), movie.tick - 1, movie.smooth);
        const std::string verdict = Verdict(actual, *expected, movie.limits);
        if (std::getenv("QMX_TEST_SHEET"))
        {
            WritePng(ComparisonFolder() / (std::string(movie.expected) + "-actual.png"), actual);
            WritePng(ComparisonFolder() / (std::string(movie.expected) + "-expected.png"), *expected);
        }
        passed += verdict.empty() ? 1 : 0;
        if (!verdict.empty())
            std::cout << movie.expected << ": " << verdict << (movie.apart ? movie.apart : "") << "\n";
        EXPECT_EQ(verdict.empty(), movie.apart == nullptr) << movie.expected;
        if (!verdict.empty() && !movie.apart)
            (void)PicturesMatch(actual, *expected, {}, movie.expected);
    }
    std::cout << passed << " of " << CorpusMovies().size() << " pictures within their limits\n";
}
