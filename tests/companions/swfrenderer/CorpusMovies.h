/// @file CorpusMovies.h
/// The collected movies with the pictures they should show.
#pragma once

#include <cstdint>
#include <vector>

/// At most this many colour channels may differ by more than the level.
struct ChannelLimit
{
    std::uint32_t outliers;
    std::uint32_t level;
};

struct CorpusMovie
{
    const char* name;                 ///< file without ".swf"
    const char* expected;             ///< picture without ".expected.png"
    std::uint32_t tick;               ///< 1 shows the first frame
    bool smooth;                      ///< edges are smoothed in the picture
    std::vector<ChannelLimit> limits; ///< all of them hold
    const char* apart = nullptr;      ///< why the picture is known to be beyond its limits
};

/// As the collection states them. Where it allows for edges without a number, 2 % of the channels.
const std::vector<CorpusMovie>& CorpusMovies();
