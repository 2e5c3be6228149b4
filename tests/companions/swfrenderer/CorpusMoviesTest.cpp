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

/// @return empty when all limits hold, else what is beyond them.
std::string BeyondLimits(const Picture& actual, const Picture& expected, const std::vector<ChannelLimit>& limits)
{
    if (actual.width != expected.width || actual.height != expected.height)
        return "size " + std::to_string(actual.width) + " x " + std::to_string(actual.height);
    std::string message;
    for (const ChannelLimit& limit : limits)
    {
        std::size_t outliers = 0;
        int most = 0;
        for (std::size_t i = 0; i < actual.bgra.size(); ++i)
        {
            const int difference = std::abs(int{actual.bgra[i]} - int{expected.bgra[i]});
            most = std::max(most, difference);
            outliers += static_cast<std::uint32_t>(difference) > limit.level ? 1 : 0;
        }
        if (outliers > limit.outliers)
            message += std::to_string(outliers) + " channels above " + std::to_string(limit.level) + ", " +
                       std::to_string(limit.outliers) + " allowed, " + std::to_string(most) + " at most; ";
    }
    return message;
}

/// Says so when a movie of the collection is not here.
bool IsMissing(const std::filesystem::path& path)
{
    const bool missing = !std::filesystem::exists(path);
    if (missing)
        std::cout << path.filename().string() << ": not collected here, so it is not looked at\n";
    return missing;
}
} // namespace

TEST(CorpusMovies, ShowTheSamePictureWhateverWasAskedBefore)
{
    QMX_REQUIRE_CORPUS(folder, "swf");
    const std::uint32_t order[] = {7, 0, 3, 40, 2, 7};
    for (const CorpusMovie& movie : CorpusMovies())
    {
        const std::filesystem::path path = folder / (std::string(movie.name) + ".swf");
        if (IsMissing(path))
            continue;
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
    std::size_t passed = 0;
    std::size_t seen = 0;
    for (const CorpusMovie& movie : CorpusMovies())
    {
        const std::filesystem::path path = folder / (std::string(movie.name) + ".swf");
        if (IsMissing(path))
            continue;
        ++seen;
        const std::string picture = std::string(movie.expected) + ".expected.png";
        const auto expected = ReadPng(folder / picture);
        ASSERT_TRUE(expected) << picture;
        const Picture actual = Render(path, movie.tick - 1, movie.smooth);
        const std::string beyond = BeyondLimits(actual, *expected, movie.limits);
        if (std::getenv("QMX_TEST_SHEET"))
        {
            WritePng(ComparisonFolder() / (std::string(movie.expected) + "-actual.png"), actual);
            WritePng(ComparisonFolder() / (std::string(movie.expected) + "-expected.png"), *expected);
        }
        passed += beyond.empty() ? 1 : 0;
        if (!beyond.empty())
            std::cout << movie.expected << ": " << beyond << (movie.apart ? movie.apart : "not known to be") << "\n";
        EXPECT_EQ(beyond.empty(), movie.apart == nullptr) << movie.expected << ": " << beyond;
        if (!beyond.empty() && !movie.apart)
            (void)PicturesMatch(actual, *expected, {}, movie.expected); // leaves the pictures behind
    }
    std::cout << passed << " of " << seen << " pictures within their limits\n";
    EXPECT_GT(seen, 0U);
    EXPECT_GE(passed * 10, seen * 9);
}
