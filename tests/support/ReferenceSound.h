/// @file ReferenceSound.h
/// Sound as the ffmpeg program decodes it: an opinion that shares no code with the engine but the libraries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace test_support
{
/// 48 kHz stereo, 16 bits: left, right, left, ...
struct Sound
{
    std::vector<std::int16_t> values;

    std::size_t Samples() const { return values.size() / 2; }
    std::int16_t At(std::size_t sample, std::size_t channel) const { return values[sample * 2 + channel]; }
};

/// The whole sound of a file, decoded, resampled and mixed to 48 kHz stereo by ffmpeg; empty when that fails.
/// @param filter  ffmpeg's filters, which come first; may be empty
Sound DecodeByProgram(const std::filesystem::path& path, const std::string& filter = "");

/// Writes a WAV file of 16-bit stereo. @param rate  samples per second
void WriteWave(const std::filesystem::path& path, const Sound& sound, std::uint32_t rate = 48'000);
/// A tone on the left, one three times as high on the right. @param hertz  at 48 kHz
Sound Tone(std::size_t samples, double hertz, double amplitude = 0.5);

/// The whole sound of a file, decoded by the engine: QMXGetClipAudioBegin() at @p time and QMXGetClipAudio() to the
/// end.
/// @param mostSamples  where to stop, give or take a block
Sound DecodeByEngine(const std::filesystem::path& path, std::uint64_t time = 0, std::size_t mostSamples = SIZE_MAX);

/// Largest difference between @p count samples of @p a from @p fromA on and those of @p b from @p fromB on; 65536 when
/// one of them is too short.
int LargestDifference(const Sound& a, std::size_t fromA, const Sound& b, std::size_t fromB, std::size_t count);
/// The same as the root of the mean square, in dB of full scale; -200 for equal samples.
double DifferenceInDb(const Sound& a, std::size_t fromA, const Sound& b, std::size_t fromB, std::size_t count);
} // namespace test_support
