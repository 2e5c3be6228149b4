// What the program tells about real files, against the facts that the collection states for them in its MANIFEST.md.
#include "tests/host/Program.h"
#include "tests/host/SchemaCheck.h"
#include "tests/support/MediaFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>
#include <sstream>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;
using nlohmann::json;

/// A line of a table: a file and what is said of it.
struct Row
{
    std::string name; ///< inside its section's folder
    std::string facts;
};

std::string Trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> Split(const std::string& text, const std::string& separator)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + separator.size())
        parts.push_back(text.substr(begin, end - begin));
    parts.push_back(text.substr(begin));
    return parts;
}

/// The lines of the section whose heading ends in "(FOLDER/)", in their order.
std::vector<Row> RowsOf(const std::string& folder)
{
    std::vector<Row> rows;
    std::ifstream manifest(test_support::CorpusFolder() / "MANIFEST.md");
    bool inside = false;
    for (std::string line; std::getline(manifest, line);)
    {
        if (line.rfind("## ", 0) == 0)
            inside = line.find('(' + folder + "/)") != std::string::npos;
        const std::vector<std::string> cells = Split(line, "|");
        if (inside && cells.size() == 6 && Trimmed(cells[1]) != "file" && cells[1].rfind("---", 0) != 0)
            rows.push_back({Trimmed(cells[1]), Trimmed(cells[4])});
    }
    return rows;
}

/// One run of the program over all files of a section.
class InfoCorpus : public testing::Test
{
protected:
    /// @return whether the collection is there
    bool Run(const std::string& folder)
    {
        const fs::path root = test_support::CorpusFolder() / folder;
        std::vector<std::string> arguments{"info", "--json"};
        for (const Row& row : RowsOf(folder))
        {
            const fs::path path = root / row.name;
            if (!fs::exists(path))
                continue; // collections may be smaller than their list
            m_rows.push_back(row);
            arguments.push_back(path.string());
        }
        if (m_rows.empty())
            return false;
        const QmxRun run(arguments);
        m_exitCode = run.ExitCode();
        m_errors = Split(run.Errors(), "\n");
        m_errors.pop_back(); // behind the last line's end
        const json list = json::parse(run.Output(), nullptr, false);
        std::ifstream file(QMX_INFO_SCHEMA);
        EXPECT_EQ(SchemaError(json::parse(file), list), "");
        for (const json& facts : list)
            m_facts[facts["file"].get<std::string>()] = facts;
        return true;
    }
    /// Null where the program could not read the file.
    json FactsOf(const std::string& folder, const Row& row) const
    {
        const auto it = m_facts.find((test_support::CorpusFolder() / folder / row.name).string());
        return it != m_facts.end() ? it->second : json();
    }

    std::vector<Row> m_rows; ///< of the files that are there
    int m_exitCode = -1;
    std::vector<std::string> m_errors; ///< line by line

private:
    std::map<std::string, json> m_facts;
};

#define QMX_RUN_INFO(folder)                                                                                           \
    if (!Run(folder))                                                                                                  \
    GTEST_SKIP() << "no " << test_support::CorpusFolder() / (folder) << ": set QMX_CORPUS_DIR to the collected media"

int Number(const std::string& text)
{
    return std::stoi(text);
}

/// The groups of the first match; an empty list without one.
std::vector<std::string> Match(const std::string& text, const char* pPattern)
{
    std::smatch match;
    if (!std::regex_search(text, match, std::regex(pPattern)))
        return {};
    return {match.begin(), match.end()};
}

// ---- films and sounds ----------------------------------------------------------------------------------------------

/// The names that the list and the program give to one coding.
const std::map<std::string, std::string> kCodings{
    {"h264", "H264"},     {"hevc", "HEVC"},      {"mpeg4", "MPEG-4"},       {"vp8", "VP8"},   {"vp9", "VP9"},
    {"wmv2", "WMV2"},     {"msmpeg4v3", "MP43"}, {"rawvideo", "I420"},      {"aac", "AAC"},   {"mp3", "MP3"},
    {"opus", "Opus"},     {"vorbis", "Vorbis"},  {"wmav2", "WMA"},          {"flac", "FLAC"}, {"pcm_u8", "PCM"},
    {"pcm_s16le", "PCM"}, {"pcm_s24le", "PCM"},  {"pcm_f32le", "PCM float"}};

/// "V:h264/Main 640x360 …", "A:aac 44100Hz 2ch …" or "data:…" against a stream's facts.
void ExpectStream(const std::string& text, const json& stream)
{
    const std::vector<std::string> video = Match(text, "^V:([a-z0-9]+)/?.* ([0-9]+)x([0-9]+) ");
    const std::vector<std::string> audio = Match(text, "^A:([a-z0-9_]+) ([0-9]+)Hz ([0-9]+)ch");
    if (!video.empty())
    {
        EXPECT_EQ(stream["kind"], "video");
        EXPECT_EQ(stream["width"], Number(video[2]));
        EXPECT_EQ(stream["height"], Number(video[3]));
    }
    else if (!audio.empty())
    {
        EXPECT_EQ(stream["kind"], "audio");
        EXPECT_EQ(stream["rate"], Number(audio[2]));
        EXPECT_EQ(stream["channels"], Number(audio[3]));
    }
    else
    {
        EXPECT_EQ(stream["kind"], "other");
        return;
    }
    const std::vector<std::string>& named = video.empty() ? audio : video;
    if (named[1] != "pcm_f24le") // a header that decoders read differently
    {
        EXPECT_EQ(stream["coding"], kCodings.at(named[1]));
    }
}

void ExpectVideo(const std::string& text, const json& facts)
{
    const std::vector<std::string> size = Match(text, " ([0-9]+)x([0-9]+) ");
    const std::vector<std::string> rates = Match(text, " avg ([0-9]+)/([0-9]+) r ([0-9]+)/([0-9]+)");
    const std::vector<std::string> turn = Match(text, R"( rot \[(-?[0-9]+)\])");
    const std::vector<std::string> aspect = Match(text, " sar ([0-9]+):([0-9]+)");
    ASSERT_EQ(size.size(), 3U);
    ASSERT_EQ(rates.size(), 5U);
    const int rotation = turn.empty() ? 0 : (360 - Number(turn[1])) % 360; // counter-clockwise there
    const bool lying = rotation % 180 != 0;
    EXPECT_EQ(facts["rotation"], rotation);
    EXPECT_EQ(facts["width"], Number(size[lying ? 2 : 1]));
    EXPECT_EQ(facts["height"], Number(size[lying ? 1 : 2]));
    EXPECT_EQ(facts["pixelAspect"]["x"], aspect.empty() ? 1 : Number(aspect[1]));
    EXPECT_EQ(facts["pixelAspect"]["y"], aspect.empty() ? 1 : Number(aspect[2]));
    const double rate = facts["frameRate"]["num"].get<double>() / facts["frameRate"]["den"].get<double>();
    const bool isConstant = rates[1] == rates[3] && rates[2] == rates[4];
    if (isConstant)
    {
        EXPECT_EQ(facts["frameRate"], (json{{"num", Number(rates[1])}, {"den", Number(rates[2])}}));
    }
    else if (rates[2] != "0")
    {
        EXPECT_GT(rate, Number(rates[1]) / std::stod(rates[2])); // no picture is lost
    }
}

/// Seconds since 1970 that an MP4 or QuickTime file has in its movie header; nothing for other files and for zero.
std::optional<std::time_t> HeaderDate(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    const std::string bytes = content.str();
    const std::size_t header = bytes.find("mvhd");
    if (header == std::string::npos)
        return std::nullopt;
    const int length = bytes.at(header + 4) == 0 ? 4 : 8; // by version
    std::uint64_t seconds = 0;
    for (int i = 0; i < length; ++i)
        seconds = seconds << 8 | static_cast<unsigned char>(bytes.at(header + 8 + static_cast<std::size_t>(i)));
    constexpr std::uint64_t k1904 = 2'082'844'800; // seconds to 1970
    return seconds > k1904 ? std::optional(static_cast<std::time_t>(seconds - k1904)) : std::nullopt;
}

void ExpectDate(const fs::path& path, const json& facts)
{
    const std::optional<std::time_t> date = HeaderDate(path);
    EXPECT_EQ(facts.contains("recorded"), date.has_value());
    if (!date)
        return;
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&*date));
    EXPECT_EQ(facts["recorded"], text);
}
} // namespace

TEST_F(InfoCorpus, FilmsHaveTheirFacts)
{
    QMX_RUN_INFO("video");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(m_errors, std::vector<std::string>());
    for (const Row& row : m_rows)
    {
        SCOPED_TRACE(row.name);
        const json facts = FactsOf("video", row);
        ASSERT_FALSE(facts.is_null());
        EXPECT_EQ(facts["kind"], "film");
        std::vector<std::string> parts = Split(row.facts, " / ");
        const double duration = std::stod(Match(parts[0], "dur ([0-9.]+)").at(1));
        EXPECT_NEAR(facts["duration"].get<double>(), duration, 1e-3);
        parts.erase(parts.begin());
        parts.pop_back(); // the decoded frames
        ASSERT_EQ(facts["streams"].size(), parts.size());
        bool hasSound = false;
        for (std::size_t i = 0; i < parts.size(); ++i)
        {
            ExpectStream(parts[i], facts["streams"][i]);
            if (parts[i].rfind("V:", 0) == 0)
                ExpectVideo(parts[i], facts);
            else if (parts[i].rfind("A:", 0) == 0 && !std::exchange(hasSound, true))
            {
                EXPECT_EQ(facts["audio"]["rate"], facts["streams"][i]["rate"]);
            }
        }
        EXPECT_EQ(facts.contains("audio"), hasSound);
        ExpectDate(test_support::CorpusFolder() / "video" / row.name, facts);
    }
}

TEST_F(InfoCorpus, SoundsHaveTheirFacts)
{
    QMX_RUN_INFO("audio");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(m_errors, std::vector<std::string>());
    for (const Row& row : m_rows)
    {
        SCOPED_TRACE(row.name);
        const json facts = FactsOf("audio", row);
        ASSERT_FALSE(facts.is_null());
        EXPECT_EQ(facts["kind"], "sound");
        const std::vector<std::string> parts = Split(row.facts, " / ");
        ASSERT_EQ(facts["streams"].size(), 1U);
        ExpectStream(parts[1], facts["streams"][0]);
        EXPECT_EQ(facts["audio"]["rate"], facts["streams"][0]["rate"]);
        EXPECT_EQ(facts["audio"]["channels"], facts["streams"][0]["channels"]);
        // What the container says, or what there is of it once the encoder's padding is gone.
        const double stated = std::stod(Match(parts[0], "dur ([0-9.]+)").at(1));
        const double rate = facts["audio"]["rate"].get<double>();
        const double decoded = std::stod(Match(row.facts, "samples per channel ([0-9]+)").at(1)) / rate;
        const double duration = facts["duration"].get<double>();
        EXPECT_LE(std::min(std::abs(duration - stated), std::abs(duration - decoded)), 1'152 / rate)
            << duration << " for " << stated << " or " << decoded;
        ExpectDate(test_support::CorpusFolder() / "audio" / row.name, facts);
    }
}

// ---- pictures ------------------------------------------------------------------------------------------------------

TEST_F(InfoCorpus, PicturesHaveTheirFacts)
{
    QMX_RUN_INFO("images");
    for (const Row& row : m_rows)
    {
        SCOPED_TRACE(row.name);
        const json facts = FactsOf("images", row);
        if (row.name == "jpeg/testimgari.jpg" && facts.is_null())
            continue; // arithmetic coding may be refused
        ASSERT_FALSE(facts.is_null());
        EXPECT_EQ(facts["kind"], "picture");
        const std::vector<std::string> stored = Match(row.facts, "^([0-9]+)x([0-9]+)");
        const std::vector<std::string> upright = Match(row.facts, "orientation ([0-9]) -> upright ([0-9]+)x([0-9]+)");
        EXPECT_EQ(facts["orientation"], upright.empty() ? 1 : Number(upright[1]));
        // The list was made with a decoder that turns this one by itself: what it calls stored is upright.
        const bool isTurnedThere = row.name == "exif/g4_orientation_6.tif";
        const std::size_t first = upright.empty() || isTurnedThere ? 1 : 2;
        const std::vector<std::string>& size = first == 1 ? stored : upright;
        EXPECT_EQ(facts["width"], Number(size[first]));
        EXPECT_EQ(facts["height"], Number(size[first + 1]));
        if (row.name == "tiff/multipage.tiff")
        {
            EXPECT_EQ(facts["frames"], 3);
        }
        const std::map<std::string, std::string> formats{{".jpg", "JPEG"}, {".png", "PNG"},  {".bmp", "BMP"},
                                                         {".ico", "ICO"},  {".tif", "TIFF"}, {".tiff", "TIFF"},
                                                         {".webp", "WebP"}};
        EXPECT_EQ(facts["format"], formats.at(fs::path(row.name).extension().string()));
    }
}

TEST_F(InfoCorpus, AnimationsHaveTheirFacts)
{
    QMX_RUN_INFO("gif");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(m_errors, std::vector<std::string>());
    for (const Row& row : m_rows)
    {
        SCOPED_TRACE(row.name);
        const json facts = FactsOf("gif", row);
        ASSERT_FALSE(facts.is_null());
        const std::size_t mark = row.facts.find("file: ");
        const std::string text = mark == std::string::npos ? row.facts : row.facts.substr(mark + 6);
        const std::vector<std::string> basics = Match(text, "^([0-9]+)x([0-9]+) 8[79]a frames=([0-9]+)");
        ASSERT_EQ(basics.size(), 4U);
        EXPECT_EQ(facts["format"], "GIF");
        EXPECT_EQ(facts["width"], Number(basics[1]));
        EXPECT_EQ(facts["height"], Number(basics[2]));
        EXPECT_EQ(facts["frames"], Number(basics[3]));
        EXPECT_EQ(facts["kind"], Number(basics[3]) > 1 ? "animation" : "picture");
        if (Number(basics[3]) == 1)
            continue;
        const std::string loop = Match(text, "loop=([0-9]+|None)").at(1);
        EXPECT_EQ(facts.contains("rounds"), loop != "None");
        if (loop != "None")
        {
            EXPECT_EQ(facts["rounds"], Number(loop));
        }
        // One delay for all frames, or the first ones of a list; hundredths of a second.
        const std::string delays = Match(text, R"(delay_cs=(\[[^\]]*\]|[0-9]+|None))").at(1);
        const bool isList = delays[0] == '[';
        const std::vector<std::string> values = Split(isList ? delays.substr(1, delays.size() - 2) : delays, ", ");
        ASSERT_EQ(facts["delays"].size(), facts["frames"]);
        for (std::size_t i = 0; i < (isList ? values.size() : facts["delays"].size()); ++i)
        {
            const std::string& value = values[isList ? i : 0];
            EXPECT_EQ(facts["delays"][i], value == "None" ? 0 : 10 * Number(value)) << i;
        }
    }
}

TEST_F(InfoCorpus, FlashMoviesHaveTheirFacts)
{
    QMX_RUN_INFO("swf");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(m_errors, std::vector<std::string>());
    for (const Row& row : m_rows)
    {
        SCOPED_TRACE(row.name);
        const json facts = FactsOf("swf", row);
        ASSERT_FALSE(facts.is_null());
        const std::vector<std::string> basics =
            Match(row.facts, " v[0-9]+ ([0-9]+)x([0-9]+) px, ([0-9.]+) fps, ([0-9]+) frames");
        ASSERT_EQ(basics.size(), 5U);
        EXPECT_EQ(facts["kind"], "flash");
        EXPECT_EQ(facts["width"], Number(basics[1]));
        EXPECT_EQ(facts["height"], Number(basics[2]));
        // One movie's header promises 27 frames; there is one.
        const int frames = row.name == "sd_definebits-palette-7.swf" ? 1 : Number(basics[4]);
        EXPECT_EQ(facts["frames"], frames);
        const double rate = facts["frameRate"]["num"].get<double>() / facts["frameRate"]["den"].get<double>();
        EXPECT_DOUBLE_EQ(rate, std::stod(basics[3]));
        EXPECT_DOUBLE_EQ(facts["duration"].get<double>(), frames / rate);
    }
}

// ---- damage --------------------------------------------------------------------------------------------------------

TEST_F(InfoCorpus, DamagedFilesAreToldAboutOrReported)
{
    const auto begin = std::chrono::steady_clock::now();
    QMX_RUN_INFO("damaged");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_EQ(m_exitCode, 4);
    std::size_t nRead = 0;
    std::size_t line = 0;
    for (const Row& row : m_rows)
    {
        SCOPED_TRACE(row.name);
        const json facts = FactsOf("damaged", row);
        if (facts.is_null())
        {
            // One line each, in the files' order.
            ASSERT_LT(line, m_errors.size());
            const std::string path = (test_support::CorpusFolder() / "damaged" / row.name).string();
            EXPECT_EQ(m_errors[line++].rfind("qmx: " + path + ": ", 0), 0U);
            continue;
        }
        ++nRead;
        const std::vector<std::string> size = Match(row.facts, "decoder opens it as ([0-9]+)x([0-9]+)");
        if (!size.empty())
        {
            EXPECT_EQ(facts["width"], Number(size[1]));
            EXPECT_EQ(facts["height"], Number(size[2]));
        }
    }
    EXPECT_EQ(line, m_errors.size());
    EXPECT_GT(nRead, 0U);
    EXPECT_GT(line, 0U);
}
} // namespace qmx::host
