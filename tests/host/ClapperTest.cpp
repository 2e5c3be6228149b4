// Pictures and sound in step: films with a flash and a click in the first picture of every second.
#include "tests/host/Program.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/ReferenceSound.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ostream>

namespace qmx::host
{
namespace
{
using test_support::Sound;

/// The mean brightness of each picture, decoded by the ffmpeg program.
std::vector<std::uint8_t> Brightness(const std::string& path)
{
    const std::string command =
        "ffmpeg -v quiet -nostdin -i '" + path + "' -vf scale=1:1 -pix_fmt gray -f rawvideo - 2>/dev/null";
    std::vector<std::uint8_t> values;
    std::FILE* const pPipe = popen(command.c_str(), "r");
    for (int c = 0; pPipe != nullptr && (c = std::fgetc(pPipe)) != EOF;)
        values.push_back(static_cast<std::uint8_t>(c));
    if (pPipe != nullptr)
        pclose(pPipe);
    return values;
}

/// The loudest sample within @p reach of @p sample.
std::int64_t LoudestNear(const Sound& sound, std::int64_t sample, std::int64_t reach)
{
    std::int64_t loudest = -1;
    int most = 4'000; // a click has 26,000, or less by the share of a channel
    for (std::int64_t i = std::max<std::int64_t>(0, sample - reach);
         i < std::min<std::int64_t>(sample + reach, static_cast<std::int64_t>(sound.Samples())); ++i)
    {
        const int level = std::abs(sound.At(static_cast<std::size_t>(i), 0));
        if (level > most)
        {
            most = level;
            loudest = i;
        }
    }
    return loudest;
}

struct Clapper
{
    const char* name;
    int seconds; ///< of the project
    int inPoint; ///< first picture that is shown
    int from;    ///< first frame that is rendered
};
void PrintTo(const Clapper& clapper, std::ostream* pStream)
{
    *pStream << clapper.name << ", " << clapper.seconds << " s";
}

class ClapperTest : public testing::TestWithParam<Clapper>
{
protected:
    test_support::MediaServices m_services;
    test_support::TemporaryFolder m_folder;
};
} // namespace

TEST_P(ClapperTest, FlashAndClickKeepTheirPlaces)
{
    const Clapper& clapper = GetParam();
    QMX_REQUIRE_MEDIA(film, clapper.name);
    const std::string project = (m_folder.Path() / "p.json").string();
    const std::string output = (m_folder.Path() / "a.mp4").string();
    constexpr double kPerSecond = 30'000.0 / 1'001;
    const auto decimals = [](int frames)
    {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.7f", frames / kPerSecond);
        return std::string(text.data());
    };
    std::ofstream(project) << R"({"width": 64, "height": 48, "frameRate": "30000/1001", "tracks": [{"id": 1, "clips":
        [{"type": "video", "start": 0, "path": ")" +
                                  film.string() + "\", \"duration\": " + std::to_string(clapper.seconds) +
                                  ", \"inPoint\": " + decimals(clapper.inPoint) + "}]}]}";
    const QmxRun run(
        {"render", project, "-o", output, "--preset", "ultrafast", "--from", decimals(clapper.from), "--no-progress"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const std::vector<std::uint8_t> pictures = Brightness(output);
    const Sound sound = test_support::DecodeByProgram(output);
    const int frames = static_cast<int>(std::ceil(clapper.seconds * kPerSecond)) - clapper.from;
    ASSERT_EQ(pictures.size(), static_cast<std::size_t>(frames));

    int flashes = 0;
    for (int n = 0; n < frames; ++n)
    {
        const int original = n + clapper.from + clapper.inPoint;
        const bool isFirst =
            original == 0 || static_cast<int>(original / kPerSecond) != static_cast<int>((original - 1) / kPerSecond);
        ASSERT_EQ(pictures[static_cast<std::size_t>(n)] > 128, isFirst) << "picture " << n;
        if (!isFirst || n + 2 > frames)
            continue;
        ++flashes;
        const auto expected = static_cast<std::int64_t>(std::llround(n * 48'000 / kPerSecond));
        ASSERT_NEAR(static_cast<double>(LoudestNear(sound, expected, 5'000)), static_cast<double>(expected), 1)
            << "picture " << n;
    }
    EXPECT_GE(flashes, clapper.seconds - 1 - clapper.from / 30);
}

INSTANTIATE_TEST_SUITE_P(Films, ClapperTest,
                         testing::Values(Clapper{"clapper-long.mp4", 599, 0, 0},
                                         Clapper{"clapper-long.mp4", 30, 15'123, 0},
                                         Clapper{"clapper-long.mp4", 60, 77, 777},
                                         Clapper{"clapper-44100.mp4", 59, 0, 0},
                                         Clapper{"clapper-44100.mp4", 40, 333, 100}, Clapper{"clapper.mkv", 59, 0, 0},
                                         Clapper{"clapper.mkv", 40, 501, 50}));
} // namespace qmx::host
