/// @file SoundOfFilmsTest.cpp
/// The sound beside pictures stands where the container puts it: later, earlier, cut or from an odd time on.
#include "engine/qmx.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/ReferenceSound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

using namespace test_support;

namespace
{
struct SoundOfFilm
{
    const char* name;
    int hole; ///< samples after the first block for which there is nothing; the other program closes such holes up
};
void PrintTo(const SoundOfFilm& film, std::ostream* pStream)
{
    *pStream << film.name;
}

class SoundOfFilmsTest : public testing::TestWithParam<SoundOfFilm>
{
protected:
    MediaServices m_services;
};

std::string NameOf(const testing::TestParamInfo<SoundOfFilm>& info)
{
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}

/// The shift of @p sound against @p reference at which they fit best around sample @p at, among those near @p shift.
int BestShift(const Sound& sound, const Sound& reference, int at, int shift)
{
    int best = -1'000;
    double least = -60;
    for (int tried = shift - 50; tried <= shift + 50; ++tried)
    {
        const double difference =
            DifferenceInDb(sound, static_cast<std::size_t>(at + tried), reference, static_cast<std::size_t>(at), 5'000);
        if (difference < least)
        {
            least = difference;
            best = tried;
        }
    }
    return best;
}
} // namespace

TEST_P(SoundOfFilmsTest, StandsWhereTheContainerPutsIt)
{
    const SoundOfFilm& film = GetParam();
    QMX_REQUIRE_MEDIA(path, film.name);
    // Silence in front for sound that begins late, as here.
    const Sound reference = DecodeByProgram(path, "aresample=48000:first_pts=0");
    const Sound sound = DecodeByEngine(path);
    ASSERT_GT(sound.Samples(), 96'000U);
    EXPECT_EQ(BestShift(sound, reference, 60'000, film.hole), film.hole);
    // The same place when it is sought, two seconds in.
    const Sound sought = DecodeByEngine(path, 20'000'000, 5'000);
    EXPECT_LT(DifferenceInDb(sought, 0, sound, 96'000, 5'000), -80);
}

/// Films in videos, in sound clips and in recordings sound alike.
TEST(SoundOfClips, IsThatOfTheFileWhateverTheKind)
{
    QMX_REQUIRE_MEDIA(path, "h264-bframes-30.mp4");
    const MediaServices services;
    Sound expected = DecodeByEngine(path, 15'000'000, 48'000); // 1 s into the clip, from 0.5 s on
    ASSERT_GE(expected.Samples(), 48'000U);
    expected.values.resize(96'000);
    for (const QMXClipType type : {QMXClipType_Video, QMXClipType_Camera, QMXClipType_Audio})
    {
        const std::unique_ptr<IQMXBaseClip> pClip(CreateClipByClipType(type));
        pClip->SetFilePath(EnginePath(path));
        pClip->SetStartTime(70'000'000);
        pClip->SetInPoint(5'000'000);
        tagRenderProp request;
        request.audioParams = {48'000, 80'000'000};
        ASSERT_TRUE(pClip->OpenAudio(request));
        Sound sound = expected;
        std::fill(sound.values.begin(), sound.values.end(), std::int16_t{0});
        auto* pBytes = reinterpret_cast<std::uint8_t*>(sound.values.data());
        auto cb = static_cast<std::uint32_t>(sound.values.size() * sizeof(std::int16_t));
        EXPECT_EQ(pClip->ReadAudio(&pBytes, &cb), cb);
        EXPECT_EQ(sound.values, expected.values) << "kind " << type;
        EXPECT_NE(std::count(sound.values.begin(), sound.values.end(), 0), static_cast<long>(sound.values.size()));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Films, SoundOfFilmsTest,
    testing::Values(SoundOfFilm{"h264-bframes-30.mp4", 0}, SoundOfFilm{"h264-delayed-video-24.mp4", 0},
                    SoundOfFilm{"h264-delayed-both-30.mp4", 0}, SoundOfFilm{"h264-late-audio-2997.mov", 0},
                    SoundOfFilm{"h264-2997.mkv", 0}, SoundOfFilm{"h264-bframes-30.avi", 0},
                    SoundOfFilm{"h264-30.flv", 0}, SoundOfFilm{"h264-30.ts", 0},
                    SoundOfFilm{"h264-fragmented-30.mp4", 2'176}, SoundOfFilm{"h264-edit-list-30.mp4", 0},
                    SoundOfFilm{"h264-edit-list-off-grid-30.mp4", 0}, SoundOfFilm{"mpeg4-bframes-2997.mp4", 0},
                    SoundOfFilm{"mpeg2-bframes-25.ts", 0}, SoundOfFilm{"mpeg2-bframes-2997.mpg", 0},
                    SoundOfFilm{"vp9-altref-2997.webm", 0}, SoundOfFilm{"wmv2-30.wmv", 0},
                    SoundOfFilm{"vfr-bursts-no-b.mp4", 0}, SoundOfFilm{"phone-rotated.mp4", 0}),
    NameOf);
