#include "host/interchange/MediaUrl.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
std::string PathOf(const char* pUrl, PathStyle style = PathStyle::Posix)
{
    std::string reason;
    const std::optional<MediaLocation> location = LocationOfUrl(pUrl, style, reason);
    EXPECT_EQ(location.has_value(), reason.empty()) << pUrl;
    return location ? location->path : "refused: " + reason;
}

TEST(MediaUrl, FileUrlsBecomePaths)
{
    EXPECT_EQ(PathOf("file:///films/a.mov"), "/films/a.mov");
    EXPECT_EQ(PathOf("FILE:///films/a.mov"), "/films/a.mov");
    EXPECT_EQ(PathOf("file://localhost/films/a.mov"), "/films/a.mov");
    EXPECT_EQ(PathOf("file:/films/a.mov"), "/films/a.mov");
    EXPECT_EQ(PathOf("file:///films/my%20film%20%C3%A9%23.mov"), "/films/my film \xc3\xa9#.mov");
}

TEST(MediaUrl, PlainPathsAreUnderstoodToo)
{
    EXPECT_EQ(PathOf("/films/my film.mov"), "/films/my film.mov");
    EXPECT_EQ(PathOf("films/a.mov"), "films/a.mov");
    EXPECT_EQ(PathOf("../films/my%20film.mov"), "../films/my film.mov");
    EXPECT_EQ(PathOf("100% wool.mov"), "100% wool.mov"); // never was encoded
    EXPECT_EQ(PathOf("a%2.mov"), "a%2.mov");
    EXPECT_EQ(PathOf("a%"), "a%");
}

TEST(MediaUrl, DrivesAndSharesOfWindows)
{
    for (const char* const pUrl : {"file:///C:/films/a.mov", "file://C:/films/a.mov", "C:/films/a.mov",
                                   "C:\\films\\a.mov", "file:///C%3A/films/a.mov", "file:///C|/films/a.mov"})
        EXPECT_EQ(PathOf(pUrl, PathStyle::Windows), "C:/films/a.mov") << pUrl;
    EXPECT_EQ(PathOf("file://server/share/a.mov", PathStyle::Windows), "//server/share/a.mov");
    EXPECT_EQ(PathOf("\\\\server\\share\\a.mov", PathStyle::Windows), "//server/share/a.mov");
    EXPECT_EQ(PathOf("films\\a.mov", PathStyle::Windows), "films/a.mov");
    EXPECT_EQ(PathOf("films\\a.mov", PathStyle::Posix), "films\\a.mov"); // a name like any other there
}

TEST(MediaUrl, PathsOfAnotherSystemAreRemarkedOn)
{
    std::string reason;
    for (const char* const pUrl : {"file:///C:/a.mov", "C:\\a.mov", "file://server/share/a.mov", "\\\\server\\a.mov"})
    {
        const std::optional<MediaLocation> here = LocationOfUrl(pUrl, PathStyle::Posix, reason);
        ASSERT_TRUE(here) << pUrl;
        EXPECT_FALSE(here->remark.empty()) << pUrl;
        EXPECT_TRUE(LocationOfUrl(pUrl, PathStyle::Windows, reason)->remark.empty()) << pUrl;
    }
    EXPECT_TRUE(LocationOfUrl("file:///a.mov", PathStyle::Posix, reason)->remark.empty());
}

TEST(MediaUrl, WhatIsNoLocalFileIsRefused)
{
    EXPECT_EQ(PathOf("https://example.org/a.mov"), "refused: is no local file");
    EXPECT_EQ(PathOf("S3://bucket/a.mov"), "refused: is no local file");
    EXPECT_EQ(PathOf(""), "refused: names no file");
    EXPECT_EQ(PathOf("file://"), "refused: names no file");
    EXPECT_EQ(PathOf("file:///"), "refused: names no file");
    EXPECT_EQ(PathOf("a%00.mov"), "refused: is no UTF-8 text");
    EXPECT_EQ(PathOf("a%ff.mov"), "refused: is no UTF-8 text");
    EXPECT_EQ(PathOf("a%c0%af.mov"), "refused: is no UTF-8 text");
}

TEST(MediaUrl, PathsBecomeUrls)
{
    EXPECT_EQ(UrlOfPath("/films/my film \xc3\xa9#.mov", PathStyle::Posix), "file:///films/my%20film%20%C3%A9%23.mov");
    EXPECT_EQ(UrlOfPath("films/a.mov", PathStyle::Posix), "films/a.mov");
    EXPECT_EQ(UrlOfPath("100%.mov", PathStyle::Posix), "100%25.mov");
    EXPECT_EQ(UrlOfPath("a:b\\c.mov", PathStyle::Posix), "a%3Ab%5Cc.mov"); // no scheme, no separator
    EXPECT_EQ(UrlOfPath("C:\\my films\\a.mov", PathStyle::Windows), "file:///C:/my%20films/a.mov");
    EXPECT_EQ(UrlOfPath("\\\\server\\share\\a b.mov", PathStyle::Windows), "file://server/share/a%20b.mov");
    EXPECT_EQ(UrlOfPath("films\\a.mov", PathStyle::Windows), "films/a.mov");
}

TEST(MediaUrl, EveryPathComesBackFromItsUrl)
{
    for (const char* const pPath :
         {"/a", "a", "../a b", "./x%20y", "/100%", "a?b#c", "x:y", "http:/a",
          "/\xe6\x97\xa5\xe6\x9c\xac/\xf0\x9f\x8e\xac.mp4", "a\tb\nc", "file:", "~/a", "a+b&c=d", "C:/a"})
        EXPECT_EQ(PathOf(UrlOfPath(pPath, PathStyle::Posix).c_str()), pPath);
    for (const char* const pPath : {"C:/a b/c.mp4", "//server/share/c d.mp4", "a b/c.mp4", "/rooted/a.mp4"})
        EXPECT_EQ(PathOf(UrlOfPath(pPath, PathStyle::Windows).c_str(), PathStyle::Windows), pPath);
}

TEST(RebasedPath, CountsFromTheOtherFolder)
{
    EXPECT_EQ(RebasedPath("a.mp4", "p", "p"), "a.mp4");
    EXPECT_EQ(RebasedPath("./x/../a.mp4", "p", "./p/"), "./x/../a.mp4"); // untouched where nothing changes
    EXPECT_EQ(RebasedPath("a.mp4", "p/q", "p"), "q/a.mp4");
    EXPECT_EQ(RebasedPath("../m/a.mp4", "p", "q/r"), "../../m/a.mp4");
    EXPECT_EQ(RebasedPath("a.mp4", "", "out"), "../a.mp4");
    if (NativePathStyle() == PathStyle::Posix)
    {
        EXPECT_EQ(RebasedPath("/m/a.mp4", "p", "q"), "/m/a.mp4");
    }
    EXPECT_EQ(RebasedPath("C:/m/a.mp4", "p", "q"), "C:/m/a.mp4");
}

TEST(RebaseBackground, MovesThePictureBehindAKey)
{
    std::vector<JsonMember> settings =
        ParseJson(R"({"rotation": 90, "key": {"color": "#00ff00", "background": "b.png"}})").members;
    RebaseBackground(settings, "p/q", "p");
    EXPECT_EQ(FindMember(settings[1].value, "background")->text, "q/b.png");
    EXPECT_EQ(FindMember(settings[1].value, "color")->text, "#00ff00");
}
} // namespace
} // namespace qmx::host
