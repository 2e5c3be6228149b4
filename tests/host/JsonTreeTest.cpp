#include "host/project/JsonTree.h"

#include <gtest/gtest.h>

#include <string>

namespace qmx::host
{
namespace
{
/// "PATH: REASON" of the error that @p text gives; "" when it gives none.
std::string ErrorOf(const std::string& text)
{
    try
    {
        ParseJson(text);
        return "";
    }
    catch (const JsonError& error)
    {
        return error.Path() + ": " + error.what();
    }
}

TEST(ParseJson, KeepsNumbersAsTheyAreWrittenAndMembersInTheirOrder)
{
    const JsonValue root = ParseJson(R"({"b": 1.10, "a": [12, -3, 1e2, true, null, "tex\u00e9"]})");
    ASSERT_EQ(root.kind, JsonValue::Kind::Object);
    ASSERT_EQ(root.members.size(), 2U);
    EXPECT_EQ(root.members[0].name, "b");
    EXPECT_EQ(root.members[0].value.text, "1.10");
    const JsonValue& list = root.members[1].value;
    ASSERT_EQ(list.items.size(), 6U);
    EXPECT_EQ(list.items[0].text, "12");
    EXPECT_EQ(list.items[1].text, "-3");
    EXPECT_EQ(list.items[2].text, "1e2");
    EXPECT_EQ(list.items[3].kind, JsonValue::Kind::Boolean);
    EXPECT_TRUE(list.items[3].boolean);
    EXPECT_EQ(list.items[4].kind, JsonValue::Kind::Null);
    EXPECT_EQ(list.items[5].text, "tex\xC3\xA9");
}

TEST(ParseJson, AcceptsAByteOrderMark)
{
    EXPECT_EQ(ParseJson("\xEF\xBB\xBF{}").kind, JsonValue::Kind::Object);
}

TEST(ParseJson, SaysWhereTheTextIsBroken)
{
    EXPECT_EQ(ErrorOf(""), ": the JSON text ends too early (line 1)");
    EXPECT_EQ(ErrorOf("{\n\"a\": [1,\n 2,"), "a[1]: the JSON text ends too early (line 3)");
    EXPECT_EQ(ErrorOf("{\"a\": [1, {\"b\": nope}]}"), "a[1].b: no valid JSON (line 1)");
    EXPECT_EQ(ErrorOf("{\"a\": NaN}"), "a: no valid JSON (line 1)");
    EXPECT_EQ(ErrorOf("{\"a\": 1} x"), ": no valid JSON (line 1)");
    EXPECT_EQ(ErrorOf("{\"a\": 'x'}"), "a: no valid JSON (line 1)");
}

TEST(ParseJson, RefusesTextThatIsNotUtf8)
{
    EXPECT_EQ(ErrorOf("{\"a\":\n\"\xFF\"}"), "a: not UTF-8 (line 2)");
    EXPECT_EQ(ErrorOf("{\"a\": \"\xC3\"}"), "a: not UTF-8 (line 1)");
    EXPECT_EQ(ErrorOf("{\"a\": \"\xED\xA0\x80\"}"), "a: not UTF-8 (line 1)"); // a surrogate
}

TEST(ParseJson, RefusesNumbersThatNoDoubleHolds)
{
    EXPECT_EQ(ErrorOf("{\"a\": {\"b\": 1e999}}"), "a.b: a number out of range (line 1)");
    EXPECT_EQ(ErrorOf("[1, -1e999]"), "[0]: a number out of range (line 1)");
}

TEST(ParseJson, RefusesANameThatStandsTwice)
{
    EXPECT_EQ(ErrorOf(R"({"a": [{"b": 1, "b": 2}]})"), "a[0]: the name \"b\" stands here twice");
}

TEST(ParseJson, LimitsTheDepth)
{
    const std::string fits = std::string(kMaxJsonDepth, '[') + std::string(kMaxJsonDepth, ']');
    EXPECT_EQ(ErrorOf(fits), "");
    EXPECT_EQ(ErrorOf('[' + fits + ']'), ": nested deeper than 32 levels");
    EXPECT_EQ(ErrorOf(std::string(1'000'000, '[')), ": nested deeper than 32 levels");
}

TEST(ParseJson, LimitsTheMembersOfAnObject)
{
    std::string text = "{\"m0\": 0";
    for (std::size_t i = 1; i < kMaxJsonMembers; ++i)
        text += ", \"m" + std::to_string(i) + "\": 0";
    EXPECT_EQ(ErrorOf(text + '}'), "");
    EXPECT_EQ(ErrorOf(text + ", \"more\": 0}"), ": too many members, at most 64");
}

TEST(JsonTree, OwnLimitsHoldInsteadOfTheUsualOnes)
{
    const auto error = [](const std::string& text, const JsonLimits& limits)
    {
        try
        {
            (void)ParseJson(text, limits);
        }
        catch (const JsonError& failure)
        {
            return std::string(failure.what());
        }
        return std::string();
    };
    EXPECT_EQ(error("[[[1]]]", {.depth = 3}), "");
    EXPECT_EQ(error("[[[[1]]]]", {.depth = 3}), "nested deeper than 3 levels");
    EXPECT_EQ(error("[1, [2], 3]", {.values = 5}), "");
    EXPECT_EQ(error("[1, [2], 3, 4]", {.values = 5}), "holds more than 5 values");
    EXPECT_EQ(error(R"({"a": 1, "b": 2})", {.members = 2}), "");
    EXPECT_EQ(error(R"({"a": 1, "b": 2, "c": 3})", {.members = 2}), "too many members, at most 2");
}

TEST(JsonTree, NamesOfLargeObjectsDifferToo)
{
    std::string text = "{";
    for (int i = 0; i < 200; ++i)
        text += "\"m" + std::to_string(i) + "\": {}, ";
    const JsonLimits limits{.members = 1'000};
    EXPECT_EQ(ParseJson(text + R"("m200": 1})", limits).members.size(), 201U);
    for (const char* const pTwice : {"m0", "m63", "m64", "m199"})
        EXPECT_THROW((void)ParseJson(text + '"' + pTwice + R"(": 1})", limits), JsonError) << pTwice;
    EXPECT_EQ(ParseJson("[" + text + R"("x": 1}, {"m0": 1, "x": 2}])", limits).items[1].members.size(), 2U);
}
} // namespace
} // namespace qmx::host
