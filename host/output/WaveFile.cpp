#include "host/output/WaveFile.h"

#include "host/sound/SoundTime.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <string_view>

namespace qmx::host
{
namespace
{
constexpr std::uint32_t kHeaderBytes = 44;
constexpr std::uint32_t kBlockBytes = 2 * kSoundChannels;

void Append(std::vector<char>& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}
void Append(std::vector<char>& bytes, std::string_view text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
}
} // namespace

WaveFile::WaveFile(const std::filesystem::path& target, std::uint64_t samples)
    : m_output(target), m_stream(m_output.Path(), std::ios::binary | std::ios::trunc)
{
    if (samples > (UINT32_MAX - kHeaderBytes) / kBlockBytes)
        m_output.Fail("cannot be written: a WAV file holds six hours at most");
    WriteHeader(samples);
}

/// RIFF, a format chunk and the head of the data chunk (Multimedia Programming Interface 1.0, 1991).
void WaveFile::WriteHeader(std::uint64_t samples)
{
    const auto cbData = static_cast<std::uint32_t>(samples * kBlockBytes);
    Append(m_bytes, "RIFF");
    Append(m_bytes, cbData + kHeaderBytes - 8, 4);
    Append(m_bytes, "WAVEfmt ");
    Append(m_bytes, 16, 4);
    Append(m_bytes, 1, 2); // PCM
    Append(m_bytes, kSoundChannels, 2);
    Append(m_bytes, kSoundRate, 4);
    Append(m_bytes, kSoundRate * kBlockBytes, 4);
    Append(m_bytes, kBlockBytes, 2);
    Append(m_bytes, 16, 2);
    Append(m_bytes, "data");
    Append(m_bytes, cbData, 4);
    WriteBytes();
}

/// Writes what has been gathered.
void WaveFile::WriteBytes()
{
    errno = 0;
    m_stream.write(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
    m_bytes.clear();
    if (!m_stream)
        m_output.FailWith(errno != 0 ? errno : EIO);
}

void WaveFile::Write(const float* pSamples, std::size_t count)
{
    m_bytes.reserve(count * kBlockBytes);
    for (std::size_t i = 0; i < count * kSoundChannels; ++i)
    {
        const long level = std::clamp(std::lrint(pSamples[i] * 32'768.0F), -32'768L, 32'767L);
        Append(m_bytes, static_cast<std::uint32_t>(level), 2);
    }
    WriteBytes();
}

void WaveFile::Finish()
{
    errno = 0;
    m_stream.close();
    if (!m_stream)
        m_output.FailWith(errno != 0 ? errno : EIO);
    m_output.Commit();
}
} // namespace qmx::host
