#include "pal/kernel/PathText.h"

#include <gtest/gtest.h>

#include <string>

TEST(PathText, CarriesEveryPlaneOfUnicode)
{
    const std::wstring text = L"a\u00E9\u20AC\U0001F3AC";
    EXPECT_EQ(pal::ToPathBytes(text), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC");
    EXPECT_EQ(pal::FromPathBytes("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC"), text);
}

TEST(PathText, KeepsEveryPairOfBytesThroughTheRoundTrip)
{
    for (int a = 1; a < 256; ++a)
        for (int b = 1; b < 256; ++b)
        {
            const std::string bytes = {'x', static_cast<char>(a), static_cast<char>(b), 'y'};
            ASSERT_EQ(pal::ToPathBytes(pal::FromPathBytes(bytes)), bytes) << a << ' ' << b;
        }
}

TEST(PathText, KeepsOverlongSurrogateAndTruncatedSequencesAsBytes)
{
    for (const std::string bytes : {"\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF0\x9F\x8E",
                                    "\xE2\x82", "\xFF\xFE", "\xED\xB2\x80"})
        EXPECT_EQ(pal::ToPathBytes(pal::FromPathBytes(bytes)), bytes);
}

TEST(PathText, OfNothingIsNothing)
{
    EXPECT_EQ(pal::ToPathBytes(L""), "");
    EXPECT_EQ(pal::FromPathBytes(""), L"");
}
