/// @file FrameExactnessTest.cpp
/// Whatever order pictures are asked for in, the engine shows the one that shows at that time. The films' pictures
/// carry numbers; what must show comes from a straight decoding loop and from how the films were made.
#include "tests/media/FilmTable.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <sstream>

using namespace test_support;

namespace
{
/// Collects what went wrong in many requests, and tells the first of it.
class Mismatches
{
public:
    void Check(std::uint64_t slot, std::uint64_t time, const SlotExpectation& expected, const ClipFrame& frame)
    {
        const std::optional<std::uint32_t> seen = ReadFrameStrip(frame.picture);
        ++m_requests;
        if (seen && expected.Holds(*seen))
            return;
        if (++m_count > 8)
            return;
        m_text << "\n  slot " << slot << ", time " << time << ": expected picture " << expected.number << ", got ";
        if (frame.picture.IsEmpty())
            m_text << "none";
        else if (seen)
            m_text << *seen;
        else
            m_text << "one without a readable number";
        m_text << (frame.endOfStream ? " (end of stream)" : "");
    }
    testing::AssertionResult Verdict() const
    {
        if (m_count == 0)
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << m_count << " of " << m_requests << " requests wrong:" << m_text.str();
    }

private:
    std::uint64_t m_requests = 0, m_count = 0;
    std::ostringstream m_text;
};

class NumberedFilmTest : public testing::TestWithParam<NumberedFilmFacts>
{
protected:
    /// Opens the film and works out what shows when. Leaves m_slots empty when the test cannot go on.
    void Prepare()
    {
        QMX_REQUIRE_MEDIA(path, GetParam().name);
        m_path = path;
        m_film = ReadNumberedFilm(path);
        ASSERT_EQ(m_film.fault, "");
        const std::optional<tagVideoInfo> info = VideoInfoOf(path);
        ASSERT_TRUE(info) << "the engine refuses the film";
        m_info = *info;
        ASSERT_GT(m_info.nFrameRateNum, 0U);
        ASSERT_GT(m_info.nFrameRateDen, 0U);
        m_slots = ExpectedSlots(GetParam(), m_film, m_info.nFrameRateNum, m_info.nFrameRateDen);
    }
    std::uint64_t TimeOf(std::uint64_t slot) const
    {
        return GridTime(slot, m_info.nFrameRateNum, m_info.nFrameRateDen);
    }

    MediaServices m_services;
    std::filesystem::path m_path;
    NumberedFilm m_film;
    tagVideoInfo m_info;
    std::vector<SlotExpectation> m_slots;
};

#define PREPARE_OR_RETURN()                                                                                            \
    ASSERT_NO_FATAL_FAILURE(Prepare());                                                                                \
    if (m_slots.empty())                                                                                               \
    return
} // namespace

/// The films themselves: a mistake in making them must not pass for one of the engine.
TEST_P(NumberedFilmTest, IsMadeAsItsFactsSay)
{
    PREPARE_OR_RETURN();
    const NumberedFilmFacts& facts = GetParam();
    ASSERT_EQ(m_film.pictures.size(), facts.count);
    for (std::size_t i = 0; i < m_film.pictures.size(); ++i)
    {
        const NumberedPicture& picture = m_film.pictures[i];
        const double rate = facts.IsVariable() ? facts.clock : static_cast<double>(facts.num) / facts.den;
        // Stamps are rounded to the container's unit, and so is the start that they count from.
        const double time = facts.start + (picture.number - facts.first) / rate;
        ASSERT_NEAR(picture.time, time, 1.01 * m_film.timeUnit + 1e-5) << "picture " << i;
        if (!facts.IsVariable())
        {
            ASSERT_EQ(picture.number, facts.first + i);
        }
    }
}

TEST_P(NumberedFilmTest, ReportsItsRate)
{
    PREPARE_OR_RETURN();
    const NumberedFilmFacts& facts = GetParam();
    const double rate = static_cast<double>(m_info.nFrameRateNum) / m_info.nFrameRateDen;
    EXPECT_DOUBLE_EQ(m_info.dFrameRate, rate);
    if (!facts.IsVariable())
    {
        const double expected = static_cast<double>(facts.num) / facts.den;
        EXPECT_NEAR(rate, expected, 1e-5 * expected) << m_info.nFrameRateNum << " / " << m_info.nFrameRateDen;
    }
}

/// A variable film's grid is fine enough for every picture that shows for a sixtieth of a second.
TEST_P(NumberedFilmTest, HasASlotForEveryPictureThatCanBeSeen)
{
    PREPARE_OR_RETURN();
    for (std::size_t i = 0; i + 1 < m_film.pictures.size(); ++i)
        if (m_film.pictures[i + 1].time - m_film.pictures[i].time >= 1 / 60.0 - m_film.timeUnit)
        {
            const std::uint32_t number = m_film.pictures[i].number;
            EXPECT_TRUE(std::any_of(m_slots.begin(), m_slots.end(),
                                    [number](const SlotExpectation& slot) { return slot.Holds(number); }))
                << "picture " << number << " has no slot at " << m_info.dFrameRate << " pictures a second";
        }
}

TEST_P(NumberedFilmTest, ShowsEveryPictureInOrder)
{
    PREPARE_OR_RETURN();
    ClipFixture clip(m_path, m_info);
    Mismatches mismatches;
    for (std::size_t n = 0; n < m_slots.size(); ++n)
        mismatches.Check(n, TimeOf(n), m_slots[n], clip.FrameAt(TimeOf(n)));
    EXPECT_TRUE(mismatches.Verdict());
}

TEST_P(NumberedFilmTest, ShowsTheRightPictureInRandomOrder)
{
    PREPARE_OR_RETURN();
    Random random;
    ClipFixture clip(m_path, m_info);
    Mismatches mismatches;
    for (int request = 0; request < 200; ++request)
    {
        // The ends are where it goes wrong first.
        const std::size_t n = request == 50 ? m_slots.size() - 1 : request == 100 ? 0 : random.Below(m_slots.size());
        mismatches.Check(n, TimeOf(n), m_slots[n], clip.FrameAt(TimeOf(n)));
    }
    EXPECT_TRUE(mismatches.Verdict());
}

TEST_P(NumberedFilmTest, ShowsEveryPictureBackwards)
{
    PREPARE_OR_RETURN();
    ClipFixture clip(m_path, m_info);
    Mismatches mismatches;
    for (std::size_t n = m_slots.size(); n-- > 0;)
        mismatches.Check(n, TimeOf(n), m_slots[n], clip.FrameAt(TimeOf(n)));
    EXPECT_TRUE(mismatches.Verdict());
}

/// The decoder alone, asked for frame n as n times its frame duration, forward in jumps around its decision to seek.
TEST_P(NumberedFilmTest, DecoderGivesFrameNAtNFrameDurations)
{
    PREPARE_OR_RETURN();
    Mismatches mismatches;
    const std::uint64_t frameDuration =
        static_cast<std::uint64_t>(1e7 / (static_cast<double>(m_info.nFrameRateNum) / m_info.nFrameRateDen));
    for (const std::size_t step : {1, 2, 3, 4, 7})
    {
        DecoderFixture decoder(m_path, m_info);
        ASSERT_TRUE(decoder.IsOpen());
        for (std::size_t n = 0; n < m_slots.size(); n += step)
            mismatches.Check(n, n * frameDuration, m_slots[n], decoder.Frame(n));
    }
    EXPECT_TRUE(mismatches.Verdict());
}

/// The film is over right after its last picture: the picture stays and the flag says so.
TEST_P(NumberedFilmTest, EndsAfterItsLastPicture)
{
    PREPARE_OR_RETURN();
    DecoderFixture decoder(m_path, m_info);
    ASSERT_TRUE(decoder.IsOpen());
    const std::size_t last = m_slots.size() - 1;
    Mismatches mismatches;
    for (std::size_t n = last - std::min<std::size_t>(last, 3); n <= last; ++n)
    {
        const ClipFrame frame = decoder.Frame(n);
        mismatches.Check(n, TimeOf(n), m_slots[n], frame);
        EXPECT_FALSE(frame.endOfStream) << "slot " << n << " of " << m_slots.size();
    }
    // Where the container does not say how long the last picture of a variable film shows, it may be a few slots.
    const std::size_t patience = GetParam().IsVariable() ? 3 : 1;
    ClipFrame frame;
    for (std::size_t n = last + 1; n <= last + patience && !frame.endOfStream; ++n)
    {
        frame = decoder.Frame(n);
        mismatches.Check(n, TimeOf(n), m_slots[last], frame);
    }
    EXPECT_TRUE(frame.endOfStream);
    EXPECT_TRUE(mismatches.Verdict());
}

INSTANTIATE_TEST_SUITE_P(Films, NumberedFilmTest, testing::ValuesIn(NumberedFilms()),
                         [](const auto& info)
                         {
                             std::string name = info.param.name;
                             std::replace_if(
                                 name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
                             return name;
                         });
