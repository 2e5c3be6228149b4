#include "engine/clips/QMXSoundClip.h"

#include "engine/decoders/media/AudioDecoder.h"
#include "engine/platform/NullReference.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace
{
constexpr std::uint64_t kSamplesPerSecond = 48'000;
}

CQMXSoundClip::CQMXSoundClip(const QMXClipType& type) : CQMXBaseClip(type) {}

CQMXSoundClip::~CQMXSoundClip()
{
    delete m_pAudioSource;
    FreeAudioBlock();
}

void CQMXSoundClip::FreeAudioBlock()
{
    std::free(std::exchange(m_pAudioBuffer, nullptr));
    m_cbAudioCapacity = 0;
    m_cbAudioHeld = 0;
    m_nAudioReadPosition = 0;
}

void CQMXSoundClip::SeekAudio(std::uint64_t time)
{
    m_pAudioSource->Seek(GetInPoint() + (time - GetStartTime()));
}

bool CQMXSoundClip::OpenAudio(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    ResetAudio();
    m_renderCopy.audioParams = request.audioParams;
    m_bSilent = true;
    m_pAudioSource = new (std::nothrow) CAudioDecoder;
    if (m_pAudioSource == nullptr)
        return true;
    try
    {
        m_bSilent = FAILED(m_pAudioSource->Initialize(GetFilePath()));
    }
    catch (const std::bad_alloc&)
    {
        m_bSilent = true;
    }
    if (!m_bSilent)
        SeekAudio(m_renderCopy.audioParams.startTime);
    return true;
}

std::uint32_t CQMXSoundClip::GetAudioAtTime(std::uint64_t time, std::uint8_t** buffer, std::uint32_t* size)
{
    FreeAudioBlock();
    if (m_pAudioSource != nullptr)
        SeekAudio(time);
    return ReadAudio(buffer, size);
}

/// @return false when the file has no more.
bool CQMXSoundClip::RefillAudioBlock()
{
    m_nAudioReadPosition = 0;
    DWORD capacity = m_cbAudioCapacity; // a type of its own on Windows
    m_cbAudioHeld = m_pAudioSource->GetSample(&m_pAudioBuffer, capacity);
    m_cbAudioCapacity = capacity;
    return m_cbAudioHeld != 0;
}

std::uint32_t CQMXSoundClip::ReadAudio(std::uint8_t** buffer, std::uint32_t* size)
{
    if (buffer == nullptr || size == nullptr)
        return 0;
    if (m_bSilent || m_pAudioSource == nullptr)
        return CQMXBaseClip::ReadAudio(buffer, size);
    if (*buffer == nullptr)
    {
        DWORD cb = 0;
        const std::uint32_t held = m_pAudioSource->GetSample(buffer, cb);
        *size = cb;
        return held;
    }
    std::uint32_t written = 0;
    while (written < *size)
    {
        const bool isUsedUp = m_pAudioBuffer == nullptr || m_nAudioReadPosition >= m_cbAudioHeld;
        if (isUsedUp && !RefillAudioBlock())
            break;
        const auto position = static_cast<std::uint32_t>(m_nAudioReadPosition);
        const std::uint32_t cb = std::min(*size - written, m_cbAudioHeld - position);
        std::memcpy(*buffer + written, m_pAudioBuffer + position, cb);
        written += cb;
        m_nAudioReadPosition += cb;
    }
    // Past the end there is silence of the length that was asked for.
    return written != 0 ? written : CQMXBaseClip::ReadAudio(buffer, size);
}

bool CQMXSoundClip::ResetAudio()
{
    delete std::exchange(m_pAudioSource, nullptr);
    FreeAudioBlock();
    return true;
}

bool CQMXSoundClip::IsAudioOpened()
{
    return m_pAudioSource != nullptr;
}

std::uint32_t CQMXSoundClip::GetAudioData(std::uint8_t** buffer, std::uint32_t* size, std::uint64_t time)
{
    if (!IsAudioOpened())
    {
        tagRenderProp request;
        request.flags = kRequestUseCache;
        request.audioParams = {kSamplesPerSecond, time};
        request.factorX = 0;
        request.factorY = 0;
        OpenAudio(request);
    }
    return ReadAudio(buffer, size);
}
