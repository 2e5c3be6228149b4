#include "pal/media/DateText.h"

#include <gtest/gtest.h>

#include <ctime>

using pal::ParseDate;

namespace
{
constexpr std::uint64_t kSecond = 10'000'000;
constexpr std::uint64_t kDay = 86'400 * kSecond;
constexpr std::uint64_t k1970 = 134'774 * kDay; // days from 1601 to 1970: 369 years with 89 leap days
} // namespace

TEST(ParseDate, CountsFrom1601)
{
    EXPECT_EQ(ParseDate("1601-01-01T00:00:00.0000001Z"), 1U);
    EXPECT_EQ(ParseDate("1601-01-02T00:00:00Z"), kDay);
    EXPECT_EQ(ParseDate("1970-01-01T00:00:00Z"), k1970);
    EXPECT_EQ(ParseDate("9999-12-31T23:59:59.9999999Z"), 2'650'467'743'999'999'999U);
}

TEST(ParseDate, AgreesWithTheCalendarOfTheSystem)
{
    for (std::time_t moment = 43'200; moment < 4'200'000'000; moment += 86'400 * 29)
    {
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&moment));
        ASSERT_EQ(ParseDate(text), k1970 + static_cast<std::uint64_t>(moment) * kSecond) << text;
    }
}

TEST(ParseDate, KnowsLeapYears)
{
    EXPECT_EQ(*ParseDate("2000-03-01T00:00:00Z") - *ParseDate("2000-02-28T00:00:00Z"), 2 * kDay);
    EXPECT_EQ(*ParseDate("1900-03-01T00:00:00Z") - *ParseDate("1900-02-28T00:00:00Z"), kDay);
    EXPECT_EQ(*ParseDate("2012-12-31T00:00:00Z") - *ParseDate("2012-01-01T00:00:00Z"), 365 * kDay);
    EXPECT_TRUE(ParseDate("2012-02-29T00:00:00Z"));
    EXPECT_FALSE(ParseDate("2100-02-29T00:00:00Z"));
    EXPECT_FALSE(ParseDate("2011-02-29T00:00:00Z"));
}

TEST(ParseDate, DropsWhatIsBelowItsUnit)
{
    const std::uint64_t whole = *ParseDate("2012-03-04T05:06:07Z");
    EXPECT_EQ(ParseDate("2012-03-04T05:06:07.89Z"), whole + 8'900'000);
    EXPECT_EQ(ParseDate("2012-03-04T05:06:07.890000Z"), whole + 8'900'000);
    EXPECT_EQ(ParseDate("2012-03-04T05:06:07.123456789999999999999999999999Z"), whole + 1'234'567);
}

TEST(ParseDate, TakesTheZoneOff)
{
    const std::uint64_t utc = *ParseDate("2012-03-04T05:06:07Z");
    for (const char* const pText :
         {"2012-03-04T05:06:07", "2012-03-04 05:06:07", "2012-03-04T10:36:07+05:30", "2012-03-04T10:36:07+0530",
          "2012-03-03T21:06:07-08:00", "2012-03-04T05:06:07+00:00"})
        EXPECT_EQ(ParseDate(pText), utc) << pText;
}

TEST(ParseDate, RefusesEverythingElse)
{
    for (const char* const pText : {"",
                                    "now",
                                    "2014",
                                    "2012-03-04",
                                    "2012-03-04T05:06",
                                    "2012-03-04T05:06:07Zx",
                                    "2012-03-04T05:06:07.Z",
                                    "2012-13-04T05:06:07Z",
                                    "2012-00-04T05:06:07Z",
                                    "2012-04-31T05:06:07Z",
                                    "2012-03-00T05:06:07Z",
                                    "2012-03-04T24:06:07Z",
                                    "2012-03-04T05:60:07Z",
                                    "2012-03-04T05:06:61Z",
                                    "2012-03-04T05:06:07+1",
                                    "2012-03-04T05:06:07+24:00",
                                    "2012-03-04T05:06:07+05:60",
                                    "2012-03-04T05:06:07-",
                                    "1600-12-31T23:59:59Z",
                                    "1601-01-01T00:00:00Z",
                                    "1601-01-01T00:00:00+01:00",
                                    "12012-03-04T05:06:07Z",
                                    " 2012-03-04T05:06:07Z",
                                    "-012-03-04T05:06:07Z",
                                    "2012-03-04X05:06:07Z",
                                    "2012-03-04  05:06:07Z",
                                    "12975642367890000"})
        EXPECT_FALSE(ParseDate(pText)) << pText;
    EXPECT_FALSE(ParseDate(std::string_view("2012-03-04T05:06:07\0Z", 21)));
}
