/// @file Main.cpp
/// sound-source: writes the raw sound of a clapper film to standard output, for ffmpeg to code.
///
///   sound-source COUNT NUM DEN   mono, 48 kHz, 16 bits: as long as COUNT pictures of NUM / DEN a second, with a click
///                                at the sample nearest to each picture that is the first of its second
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int argc, char** argv)
{
    if (argc != 4)
    {
        std::fputs("sound-source: wrong arguments, see the top of Main.cpp\n", stderr);
        return 1;
    }
    const double samplesPerPicture = 48'000 * std::atof(argv[3]) / std::atof(argv[2]);
    const int count = std::atoi(argv[1]);
    std::vector<std::int16_t> samples(static_cast<std::size_t>(std::llround(count * samplesPerPicture)));
    constexpr int kHalf = 4; // the click is a raised cosine of nine samples
    for (int n = 0, second = -1; n < count; ++n)
    {
        const auto at = std::llround(n * samplesPerPicture);
        const int inSecond = static_cast<int>(n * samplesPerPicture / 48'000);
        if (inSecond == second)
            continue;
        second = inSecond;
        for (int i = -kHalf; i <= kHalf; ++i)
            if (at + i >= 0 && at + i < static_cast<long long>(samples.size()))
                samples[static_cast<std::size_t>(at + i)] =
                    static_cast<std::int16_t>(std::lround(13'000 * (1 + std::cos(3.14159265 * i / (kHalf + 1)))));
    }
    return std::fwrite(samples.data(), 2, samples.size(), stdout) == samples.size() && std::fflush(stdout) == 0 ? 0 : 1;
}
