#include "host/project/JsonText.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
TEST(JsonText, WritesWhatParsesToTheSameTree)
{
    const std::string text = "{\n  \"a\": [\n    1.50,\n    -2e3,\n    18446744073709551615\n  ],\n"
                             "  \"b\": {\n    \"c\": null,\n    \"d\": true,\n    \"e\": false\n  },\n"
                             "  \"f\": [],\n  \"g\": {},\n  \"h\": \"\xc3\xa9 \\\" \\\\ \\n \\u0001 \\u007f /\"\n}\n";
    EXPECT_EQ(JsonText(ParseJson(text), 2), text); // numbers as they were written
}

TEST(JsonText, BuildersMakeTheKindsTheyAreNamedAfter)
{
    const JsonValue value = JsonObject(
        {{"list", JsonList({JsonNull(), JsonFlag(true), JsonNumber("07.5")})}, {"text", JsonString("x\ty")}});
    EXPECT_EQ(JsonText(value, 0), "{\n\"list\": [\nnull,\ntrue,\n07.5\n],\n\"text\": \"x\\u0009y\"\n}\n");
    EXPECT_EQ(FindMember(value, "text")->text, "x\ty");
    EXPECT_EQ(FindMember(value, "other"), nullptr);
    EXPECT_EQ(FindMember(JsonNull(), "text"), nullptr);
}
} // namespace
} // namespace qmx::host
