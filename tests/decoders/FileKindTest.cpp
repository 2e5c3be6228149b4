#include "engine/decoders/FileKind.h"

#include <gtest/gtest.h>

namespace
{
TEST(FileExtension, IsTheTextAfterTheLastDot)
{
    EXPECT_STREQ(FileExtension(L"a.b.mp4"), L"mp4");
    EXPECT_STREQ(FileExtension(L"dir.gif/file"), L"gif/file");
    EXPECT_STREQ(FileExtension(L"file."), L"");
    EXPECT_STREQ(FileExtension(L".gif"), L"gif");
}

TEST(FileExtension, IsTheWholePathWithoutADot)
{
    EXPECT_STREQ(FileExtension(L"gif"), L"gif");
    EXPECT_STREQ(FileExtension(L"dir/gif"), L"dir/gif");
    EXPECT_STREQ(FileExtension(L""), L"");
}

TEST(FileExtension, IsComparedInAnyLetterCase)
{
    EXPECT_TRUE(HasExtension(L"Movie.SWF", L"swf"));
    EXPECT_TRUE(HasExtension(L"swf", L"swf"));
    EXPECT_FALSE(HasExtension(L"swf.mp4", L"swf"));
    EXPECT_FALSE(HasExtension(L"movie.swfx", L"swf"));
    EXPECT_FALSE(HasExtension(L"movie.sw", L"swf"));
    EXPECT_FALSE(HasExtension(L"", L"swf"));
}
} // namespace
