// The facts of files that are made here: kinds, dates, what is left out, and files that cannot be read.
#include "tests/decoders/still/TinyGif.h"
#include "tests/host/Program.h"
#include "tests/host/SchemaCheck.h"
#include "tests/support/CameraRecording.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TinyMatroska.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::int64_t kDate = 352'703'167'890'000'000; // ns from 2001: 2012-03-06T05:06:07.89Z

/// Runs in a time zone that is half past five ahead of UTC all year.
class Info : public testing::Test
{
protected:
    Info()
    {
        if (const char* const pOld = std::getenv("TZ"))
            m_oldZone = pOld;
        setenv("TZ", "XYZ-5:30", 1);
    }
    ~Info() override { m_oldZone.empty() ? unsetenv("TZ") : setenv("TZ", m_oldZone.c_str(), 1); }

    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    /// A file written on 15 January 2001, 12:34:56 UTC.
    void Write(const std::string& file, const std::string& bytes) const
    {
        std::ofstream(Name(file), std::ios::binary) << bytes;
        SetDate(file);
    }
    void SetDate(const std::string& file) const
    {
        const std::chrono::sys_seconds moment{std::chrono::seconds(979'562'096)};
        fs::last_write_time(Name(file), std::chrono::file_clock::from_sys(moment));
    }
    void Write(const std::string& file, const TinyGif& gif) const
    {
        Write(file, std::string(gif.bytes.begin(), gif.bytes.end()));
    }
    /// A Flash movie of 64 by 48 pixels and two empty frames. @param rate  in 1/256 frame a second
    void WriteMovie(const std::string& file, std::uint16_t rate) const
    {
        std::string movie(
            "\x46\x57\x53\x0A\x19\x00\x00\x00\x60\x00\x28\x00\x00\x1E\x00__\x02\x00\x40\x00\x40\x00\x00\x00", 25);
        movie[15] = static_cast<char>(rate & 0xFF);
        movie[16] = static_cast<char>(rate >> 8);
        Write(file, movie);
    }
    /// The facts that the program prints for programs; they keep the schema.
    static json Facts(const std::vector<std::string>& files, int exitCode = 0)
    {
        std::vector<std::string> arguments{"info", "--json"};
        arguments.insert(arguments.end(), files.begin(), files.end());
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), exitCode) << run.Errors();
        const json list = json::parse(run.Output(), nullptr, false);
        std::ifstream schema(QMX_INFO_SCHEMA);
        EXPECT_EQ(SchemaError(json::parse(schema), list), "");
        return list;
    }
    static std::string Table(const std::string& file)
    {
        const QmxRun run({"info", file});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return run.Output();
    }

    test_support::TemporaryFolder m_folder;

private:
    std::string m_oldZone;
};
} // namespace

TEST_F(Info, RecordingDateIsUtcAndFileDateIsLocal)
{
    Write("dated.mka", test_support::TinyMatroska(kDate));
    Write("undated.mka", test_support::TinyMatroska({}));
    const json list = Facts({Name("dated.mka"), Name("undated.mka")});
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0]["recorded"], "2012-03-06T05:06:07.89Z");
    EXPECT_EQ(list[0]["modified"], "2001-01-15T18:04:56");
    EXPECT_FALSE(list[1].contains("recorded"));
    EXPECT_EQ(list[1]["modified"], "2001-01-15T18:04:56");
    setenv("TZ", "ABC8", 1);
    const json west = Facts({Name("dated.mka")});
    EXPECT_EQ(west[0]["recorded"], "2012-03-06T05:06:07.89Z");
    EXPECT_EQ(west[0]["modified"], "2001-01-15T04:34:56");
}

TEST_F(Info, TableHasAnAlignedBlockForEachFile)
{
    Write("a.mka", test_support::TinyMatroska(kDate));
    Write("b.gif", TinyGif(12, 7).Control(5, 1).Solid(0, 0, 12, 7, 0).Control(20, 1).Solid(0, 0, 12, 7, 1).End());
    const QmxRun run({"info", Name("a.mka"), Name("b.gif")});
    EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
    EXPECT_EQ(run.Output(), Name("a.mka") +
                                "\n"
                                "  kind          sound\n"
                                "  length        " +
                                std::to_string(fs::file_size(Name("a.mka"))) +
                                " bytes\n"
                                "  recorded      2012-03-06 05:06:07 UTC\n"
                                "  modified      2001-01-15 18:04:56 local time\n"
                                "  duration      0.013 s\n"
                                "  sound         8000 Hz, 1 channel, 16 bits\n"
                                "  stream 0      audio, PCM, 8000 Hz, 1 channel\n"
                                "\n" +
                                Name("b.gif") +
                                "\n"
                                "  kind          animation, GIF\n"
                                "  length        " +
                                std::to_string(fs::file_size(Name("b.gif"))) +
                                " bytes\n"
                                "  modified      2001-01-15 18:04:56 local time\n"
                                "  size          12 x 7\n"
                                "  duration      0.29 s\n"
                                "  frames        2\n"
                                "  orientation   1\n");
}

TEST_F(Info, EveryStreamIsTold)
{
    Write("two.mka", test_support::TinyMatroska({}, 2));
    const json facts = Facts({Name("two.mka")})[0];
    const json mono{{"kind", "audio"}, {"coding", "PCM"}, {"rate", 8'000}, {"channels", 1}};
    json stereo = mono;
    stereo["channels"] = 2;
    EXPECT_EQ(facts["streams"], (json{mono, stereo}));
    EXPECT_EQ(facts["audio"], (json{{"rate", 8'000}, {"channels", 1}, {"bits", 16}})); // the first
}

TEST_F(Info, FlashMoviesHaveExactRates)
{
    WriteMovie("a.swf", 0x1980); // 25.5
    const json facts = Facts({Name("a.swf")})[0];
    EXPECT_EQ(facts["kind"], "flash");
    EXPECT_EQ(facts["width"], 64);
    EXPECT_EQ(facts["height"], 48);
    EXPECT_EQ(facts["frameRate"], (json{{"num", 51}, {"den", 2}}));
    EXPECT_EQ(facts["frames"], 2);
    EXPECT_DOUBLE_EQ(facts["duration"].get<double>(), 2 / 25.5);
    WriteMovie("b.swf", 0x1DF8); // 29.96875, the nearest to 30000/1001
    EXPECT_EQ(Facts({Name("b.swf")})[0]["frameRate"], (json{{"num", 959}, {"den", 32}}));
    EXPECT_NE(Table(Name("a.swf")).find("  frame rate    51/2 (25.5) a second\n"), std::string::npos);
}

TEST_F(Info, AnimationsTellDelaysAndRounds)
{
    Write("a.gif", TinyGif(4, 4)
                       .Application("NETSCAPE2.0", {1, 5, 1})
                       .Control(1, 1)
                       .Solid(0, 0, 4, 4, 0)
                       .Solid(0, 0, 4, 4, 1)
                       .Control(20, 1)
                       .Solid(0, 0, 4, 4, 2)
                       .End());
    const json facts = Facts({Name("a.gif")})[0];
    EXPECT_EQ(facts["frames"], 3);
    EXPECT_EQ(facts["delays"], (json{10, 0, 200}));
    EXPECT_EQ(facts["rounds"], 261);                          // 5 + 256 * 1
    EXPECT_NEAR(facts["duration"].get<double>(), 0.38, 1e-9); // as played: 90 ms at least
    EXPECT_NE(Table(Name("a.gif")).find("  repeats       261 times\n"), std::string::npos);
}

TEST_F(Info, CameraRecordingsGoByTheirName)
{
    test_support::CameraRecording recording(m_folder.Path(), "cam");
    recording.AddNumbered(64, 48, 4);
    recording.Write();
    const json facts = Facts({Name("cam.mjpg")})[0];
    EXPECT_EQ(facts["kind"], "camera");
    EXPECT_EQ(facts["width"], 64);
    EXPECT_EQ(facts["height"], 48);
    EXPECT_EQ(facts["frames"], 4);
    EXPECT_EQ(facts["frameRate"], (json{{"num", 30}, {"den", 1}}));
    EXPECT_NEAR(facts["duration"].get<double>(), 4 / 30.0, 1e-6);
    EXPECT_EQ(facts["bytes"], fs::file_size(recording.Media()) + fs::file_size(recording.Meta()));
    fs::remove(recording.Media());
    EXPECT_EQ(Facts({Name("cam.mjpg")}, 4).size(), 0U);
}

TEST_F(Info, FilesThatCannotBeReadAreALineEachAndTheOthersAreTold)
{
    Write("words.mp4", "Some words, and a line.\n");
    Write("empty.png", "");
    Write("words.swf", "words");
    Write("good.mka", test_support::TinyMatroska({}));
    TinyGif gif(4, 4);
    gif.Control(1, 1).Descriptor(0, 0, 4, 4);
    gif.bytes.insert(gif.bytes.end(), {2, 1, 0x07, 0, 0x3B}); // a code that is none
    Write("bad.gif", gif);
    const std::vector<std::string> files{Name("none.mp4"),  Name("words.mp4"), Name("good.mka"), Name("."),
                                         Name("empty.png"), Name("words.swf"), Name("bad.gif")};
    std::vector<std::string> arguments{"info"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    const QmxRun run(arguments);
    EXPECT_EQ(run.ExitCode(), 4);
    EXPECT_EQ(run.Output().rfind(Name("good.mka") + "\n", 0), 0U);
    EXPECT_EQ(run.Errors(), "qmx: " + files[0] + ": cannot be opened: No such file or directory\nqmx: " + files[1] +
                                ": holds no media that can be read\nqmx: " + files[3] + ": is a folder\nqmx: " +
                                files[4] + ": holds no media that can be read\nqmx: " + files[5] +
                                ": holds no Flash movie that can be read\nqmx: " + files[6] +
                                ": is GIF, but holds no picture that can be read\n");
    const json list = Facts(files, 4);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]["file"], Name("good.mka"));
}

TEST_F(Info, NamesThatAreNoUtf8AreReplacedInJsonOnly)
{
    const std::string file = "b\xFFs.mka";
    Write(file, test_support::TinyMatroska({}));
    EXPECT_EQ(Table(Name(file)).rfind(Name(file) + "\n", 0), 0U);
    EXPECT_EQ(Facts({Name(file)})[0]["file"], Name("b\xEF\xBF\xBDs.mka"));
}

TEST(SchemaCheck, FindsWhatASchemaForbids)
{
    const json schema = json::parse(R"({"$defs": {"n": {"type": "integer", "minimum": 1}},
        "type": "array", "items": {"type": "object", "additionalProperties": false, "required": ["a"],
        "properties": {"a": {"$ref": "#/$defs/n"}, "b": {"enum": ["x"]}, "c": {"type": "string", "pattern": "^z+$"},
        "d": {"oneOf": [{"const": 1}, {"type": "number", "exclusiveMinimum": 2}]}}}})");
    for (const char* const pGood : {"[]", R"([{"a": 1, "b": "x", "c": "zz", "d": 2.5}, {"a": 7, "d": 1}])"})
        EXPECT_EQ(SchemaError(schema, json::parse(pGood)), "");
    for (const char* const pBad :
         {"{}", "[1]", "[{}]", R"([{"a": 0}])", R"([{"a": 1.5}])", R"([{"a": "1"}])", R"([{"a": 1, "e": 1}])",
          R"([{"a": 1, "b": "y"}])", R"([{"a": 1, "c": "y"}])", R"([{"a": 1, "d": 2}])"})
        EXPECT_NE(SchemaError(schema, json::parse(pBad)), "") << pBad;
    EXPECT_NE(SchemaError(json{{"maximum", 5}}, json(7)), ""); // unknown keywords are not passed over
}
} // namespace qmx::host
