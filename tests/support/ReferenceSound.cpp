#include "tests/support/ReferenceSound.h"

#include "engine/decoders/media/AudioDecoder.h"
#include "tests/support/ClipFixture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace test_support
{
namespace
{
std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}
} // namespace

Sound DecodeByProgram(const std::filesystem::path& path, const std::string& filter)
{
    const std::string command = "ffmpeg -v quiet -nostdin -i " + Quoted("file:" + path.string()) + " -map 0:a:0 " +
                                (filter.empty() ? "" : "-af " + Quoted(filter)) +
                                " -ar 48000 -ac 2 -f s16le -c:a pcm_s16le - 2>/dev/null";
    Sound sound;
    std::FILE* const pPipe = popen(command.c_str(), "r");
    if (pPipe == nullptr)
        return sound;
    std::vector<std::int16_t> part(1 << 16);
    while (const std::size_t count = std::fread(part.data(), 2, part.size(), pPipe))
        sound.values.insert(sound.values.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(count));
    if (pclose(pPipe) != 0)
        sound.values.clear();
    return sound;
}

void WriteWave(const std::filesystem::path& path, const Sound& sound, std::uint32_t rate)
{
    std::ofstream file(path, std::ios::binary);
    const auto number = [&](std::uint32_t value, std::streamsize bytes)
    { file.write(reinterpret_cast<const char*>(&value), bytes); };
    const auto cbData = static_cast<std::uint32_t>(sound.values.size() * 2);
    file << "RIFF";
    number(cbData + 36, 4);
    file << "WAVEfmt ";
    number(16, 4);
    number(1, 2);
    number(2, 2);
    number(rate, 4);
    number(rate * 4, 4);
    number(4, 2);
    number(16, 2);
    file << "data";
    number(cbData, 4);
    file.write(reinterpret_cast<const char*>(sound.values.data()), cbData);
}

Sound Tone(std::size_t samples, double hertz, double amplitude)
{
    Sound sound;
    for (std::size_t i = 0; i < samples; ++i)
    {
        const double angle = 2 * 3.14159265358979 * hertz * static_cast<double>(i) / 48'000;
        for (const int harmonic : {1, 3})
            sound.values.push_back(
                static_cast<std::int16_t>(std::lround(32'767 * amplitude * std::sin(harmonic * angle))));
    }
    return sound;
}

Sound DecodeByEngine(const std::filesystem::path& path, std::uint64_t time, std::size_t mostSamples)
{
    constexpr std::size_t kLongestBlock = 192'000; // bytes
    Sound sound;
    void* hSound = nullptr;
    if (FAILED(QMXGetClipAudioBegin(&hSound, EnginePath(path), time)))
        return sound;
    std::vector<std::int16_t> block(kLongestBlock / 2);
    while (sound.Samples() < mostSamples)
    {
        const unsigned int cb = QMXGetClipAudio(hSound, reinterpret_cast<unsigned char*>(block.data()));
        if (cb == 0)
            break;
        if (cb > kLongestBlock)
            std::abort(); // a block that is too long has been written over the end
        sound.values.insert(sound.values.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(cb / 2));
    }
    QMXGetClipAudioEnd(hSound);
    return sound;
}

int LargestDifference(const Sound& a, std::size_t fromA, const Sound& b, std::size_t fromB, std::size_t count)
{
    if (fromA + count > a.Samples() || fromB + count > b.Samples())
        return 65'536;
    int largest = 0;
    for (std::size_t i = 0; i < count * 2; ++i)
        largest = std::max(largest, std::abs(a.values[fromA * 2 + i] - b.values[fromB * 2 + i]));
    return largest;
}

double DifferenceInDb(const Sound& a, std::size_t fromA, const Sound& b, std::size_t fromB, std::size_t count)
{
    if (fromA + count > a.Samples() || fromB + count > b.Samples())
        return 0;
    double sum = 0;
    for (std::size_t i = 0; i < count * 2; ++i)
    {
        const double difference = (a.values[fromA * 2 + i] - b.values[fromB * 2 + i]) / 32'768.0;
        sum += difference * difference;
    }
    return sum > 0 ? 10 * std::log10(sum / static_cast<double>(count * 2)) : -200;
}
} // namespace test_support
