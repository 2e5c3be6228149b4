#include "tests/media/FilmTable.h"

#include <algorithm>
#include <cmath>
#include <ostream>

using test_support::NumberedFilm;
using test_support::NumberedPicture;

void PrintTo(const NumberedFilmFacts& film, std::ostream* pStream)
{
    *pStream << film.name;
}

const std::vector<NumberedFilmFacts>& NumberedFilms()
{
    // Containers whose sound starts ahead of the pictures by the encoder's delay begin before the first picture.
    static const std::vector<NumberedFilmFacts> films{
        {"h264-bframes-30.mp4", 30, 1, 300, 0, 0, 0},
        {"h264-bframes-23976.mp4", 24000, 1001, 260, 0, 0, 0},
        {"h264-bframes-5994.mp4", 60000, 1001, 400, 0, 0, 0},
        {"h264-open-gop-25.mp4", 25, 1, 260, 0, 0, 0},
        {"h264-intra-refresh-30.mp4", 30, 1, 300, 0, 0, 0},
        {"h264-interlaced-25.mp4", 25, 1, 130, 0, 0, 0},
        {"h264-444-odd-25.mp4", 25, 1, 130, 0, 0, 0},
        {"h264-no-b-30.mp4", 30, 1, 60, 0, 0, 0},
        {"h264-edit-list-30.mp4", 30, 1, 260, 40, 0, 0},
        {"h264-edit-list-off-grid-30.mp4", 30, 1, 229, 71, 0, 0},
        {"h264-delayed-video-24.mp4", 24, 1, 240, 0, 0.5, 0},
        {"h264-delayed-both-30.mp4", 30, 1, 120, 0, 0, 0},
        {"h264-late-audio-2997.mov", 30000, 1001, 150, 0, 0, 0},
        {"h264-2997.mkv", 30000, 1001, 300, 0, 0.021, 0},
        {"h264-23976.mkv", 24000, 1001, 260, 0, 0, 0},
        {"h264-5994.mkv", 60000, 1001, 400, 0, 0, 0},
        {"h264-bframes-30.avi", 30, 1, 300, 0, 0, 0},
        {"h264-25.avi", 25, 1, 260, 0, 0, 0},
        {"h264-30.flv", 30, 1, 150, 0, 0.021, 0},
        {"h264-30.ts", 30, 1, 300, 0, 1024 / 48000.0, 0},
        {"h264-offset-23976.ts", 24000, 1001, 260, 0, 0, 0},
        {"h264-wrap-5994.ts", 60000, 1001, 400, 0, 0, 0},
        {"h264-fragmented-30.mp4", 30, 1, 300, 0, 2 / 30.0, 0},
        {"h264-fragmented-index-2997.mp4", 30000, 1001, 300, 0, 0, 0},
        {"mpeg4-bframes-25.avi", 25, 1, 260, 0, 0, 0},
        {"mpeg4-bframes-2997.mp4", 30000, 1001, 260, 0, 0, 0},
        {"mpeg4-odd-30.mp4", 30, 1, 130, 0, 0, 0},
        {"mpeg2-bframes-25.ts", 25, 1, 150, 0, 481 / 48000.0, 0},
        {"mpeg2-bframes-2997.mpg", 30000, 1001, 150, 0, 481 / 48000.0, 0},
        {"hevc-bframes-50.mkv", 50, 1, 300, 0, 0, 0},
        {"hevc-open-gop-24.mp4", 24, 1, 250, 0, 0, 0},
        {"hevc-60.ts", 60, 1, 200, 0, 0, 0},
        {"vp8-30.webm", 30, 1, 200, 0, 0, 0},
        {"vp9-altref-2997.webm", 30000, 1001, 200, 0, 0.014, 0},
        {"vp9-60.webm", 60, 1, 300, 0, 0, 0},
        {"vp9-odd-25.webm", 25, 1, 120, 0, 0, 0},
        {"av1-30.mp4", 30, 1, 120, 0, 0, 0},
        {"wmv2-30.wmv", 30, 1, 150, 0, 0.043, 0},
        {"prores-24.mov", 24, 1, 60, 0, 0, 0},
        {"mjpeg-30.avi", 30, 1, 90, 0, 0, 0},
        {"ffv1-25.mkv", 25, 1, 75, 0, 0, 0},
        {"qtrle-30.mov", 30, 1, 90, 0, 0, 0},
        {"png-30.mov", 30, 1, 60, 0, 0, 0},
        {"raw-25.avi", 25, 1, 75, 0, 0, 0},
        {"rotated-90-30.mp4", 30, 1, 60, 0, 0, 0},
        {"rotated-180-30.mp4", 30, 1, 60, 0, 0, 0},
        {"rotated-270-30.mp4", 30, 1, 60, 0, 0, 0},
        {"vfr-bursts.mp4", 0, 0, 154, 0, 0, 120},
        {"vfr-bursts-no-b.mp4", 0, 0, 154, 0, 0, 120},
        {"vfr-bursts.mkv", 0, 0, 154, 0, 0, 120},
        {"vfr-bursts.webm", 0, 0, 154, 0, 0, 120},
        {"vfr-120.mp4", 0, 0, 184, 0, 0, 120},
        {"vfr-120.mkv", 0, 0, 184, 0, 0, 120},
        {"vfr-irregular.mp4", 0, 0, 309, 0, 0, 1200},
        {"vfr-irregular.mov", 0, 0, 309, 0, 0, 1200},
        {"vfr-hevc.mkv", 0, 0, 154, 0, 0, 120},
        {"long-last-frame.mp4", 0, 0, 60, 0, 0, 30},
    };
    return films;
}

namespace
{
/// Number of the last picture whose time is at most @p time.
std::uint32_t NumberAt(const NumberedFilm& film, double time)
{
    const auto after = std::upper_bound(film.pictures.begin(), film.pictures.end(), time,
                                        [](double t, const NumberedPicture& picture) { return t < picture.time; });
    return after == film.pictures.begin() ? film.pictures.front().number : (after - 1)->number;
}
} // namespace

std::size_t FirstSlot(double time, double timeUnit, double rate)
{
    constexpr double kTold = 2e-6; // times are told in microseconds
    const double slack = std::min(timeUnit + kTold, 0.25 / rate);
    return static_cast<std::size_t>(std::max(0.0, std::ceil((time - slack) * rate)));
}

std::vector<SlotExpectation> ExpectedSlots(const NumberedFilmFacts& facts, const NumberedFilm& film, std::uint32_t num,
                                           std::uint32_t den)
{
    constexpr double kExact = 2e-6; // a microsecond in which times are told, and what doubles round
    const double rate = static_cast<double>(num) / den;
    std::vector<SlotExpectation> slots;
    if (!facts.IsVariable())
    {
        const std::size_t shift = FirstSlot(film.pictures.front().time, film.timeUnit, rate);
        for (std::size_t n = 0; n < film.pictures.size() + shift; ++n)
        {
            const std::uint32_t number = film.pictures[n < shift ? 0 : n - shift].number;
            slots.push_back({number, number});
        }
        return slots;
    }
    const double end = std::max(film.pictures.back().time + kExact, film.streamLength - kExact);
    for (std::size_t n = 0; static_cast<double>(n) / rate < end || !slots.back().Holds(film.pictures.back().number);
         ++n)
    {
        const double time = static_cast<double>(n) / rate;
        slots.push_back({NumberAt(film, time + kExact), NumberAt(film, time + kExact + film.timeUnit / 2)});
    }
    return slots;
}
