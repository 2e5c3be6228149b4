#include "engine/clips/QMXBaseClip.h"

#include "engine/platform/NullReference.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace
{
constexpr std::uint32_t kSilenceBytes = 5'760; // 30 ms of 48,000 Hz, 2 channels, 16 bits
}

CQMXBaseClip::CQMXBaseClip(const QMXClipType& type) : m_clipType(type) {}

CQMXBaseClip::~CQMXBaseClip()
{
    std::free(m_pAudioBuffer);
}

QMXClipType CQMXBaseClip::GetClipType()
{
    return m_clipType;
}

std::wstring CQMXBaseClip::GetFilePath()
{
    try
    {
        return m_strFilePath;
    }
    catch (const std::bad_alloc&)
    {
        return {};
    }
}

int CQMXBaseClip::SetFilePath(std::wstring path)
{
    m_strFilePath = std::move(path);
    return 0;
}

std::uint64_t CQMXBaseClip::GetInPoint()
{
    return m_nInPoint;
}

std::uint64_t CQMXBaseClip::GetOutPoint()
{
    return GetDuration() + GetInPoint();
}

void CQMXBaseClip::SetInPoint(std::uint64_t time)
{
    m_nInPoint = time;
}

std::uint64_t CQMXBaseClip::GetStartTime()
{
    return m_nStartTime;
}

void CQMXBaseClip::SetStartTime(std::uint64_t time)
{
    m_nStartTime = time;
}

std::uint64_t CQMXBaseClip::GetEndTime()
{
    return GetDuration() + GetStartTime();
}

std::uint64_t CQMXBaseClip::GetDuration()
{
    return m_nDuration;
}

void CQMXBaseClip::SetDuration(std::uint64_t duration)
{
    m_nDuration = duration;
}

std::uint64_t CQMXBaseClip::GetTrackID()
{
    return m_nTrackID;
}

void CQMXBaseClip::SetTrackID(std::uint64_t id)
{
    m_nTrackID = id;
}

void CQMXBaseClip::SetDocumentID(std::uint64_t id)
{
    m_nDocumentID = id;
}

std::uint64_t CQMXBaseClip::GetDocumentID()
{
    return m_nDocumentID;
}

void CQMXBaseClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr)
        return;
    m_clipType = source->GetClipType();
    m_strFilePath = source->GetFilePath();
    m_nStartTime = source->GetStartTime();
    m_nInPoint = source->GetInPoint();
    m_nDuration = source->GetDuration();
}

void CQMXBaseClip::KeepRequest(const tagRenderProp& request)
{
    const tagAudioParams audioParams = m_renderCopy.audioParams;
    m_renderCopy = request;
    m_renderCopy.audioParams = audioParams;
}

bool CQMXBaseClip::Open(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    KeepRequest(request);
    return true;
}

bool CQMXBaseClip::GetVideoFrame(std::uint64_t /*time*/, FrameResult* /*out*/)
{
    return false;
}

bool CQMXBaseClip::Close()
{
    return true;
}

bool CQMXBaseClip::OpenAudio(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    m_renderCopy.audioParams = request.audioParams;
    return true;
}

std::uint32_t CQMXBaseClip::GetAudioAtTime(std::uint64_t /*time*/, std::uint8_t** buffer, std::uint32_t* size)
{
    return ReadAudio(buffer, size);
}

std::uint32_t CQMXBaseClip::ReadAudio(std::uint8_t** buffer, std::uint32_t* size)
{
    if (buffer == nullptr || size == nullptr)
        return 0;
    if (*buffer == nullptr)
    {
        *buffer = static_cast<std::uint8_t*>(std::malloc(kSilenceBytes));
        *size = *buffer != nullptr ? kSilenceBytes : 0;
    }
    if (*size != 0)
        std::memset(*buffer, 0, *size);
    return *size;
}

bool CQMXBaseClip::ResetAudio()
{
    return true;
}

bool CQMXBaseClip::IsAudioOpened()
{
    return m_pAudioSource != nullptr || m_bSilent;
}

bool CQMXBaseClip::IsVideoOpened()
{
    return m_pVideoDecoder != nullptr;
}

ISampleBuffer* CQMXBaseClip::GetLastFrame()
{
    return nullptr;
}

void CQMXBaseClip::SetAttachment(int /*index*/, IQMXBaseClip* /*clip*/) {}

std::uint32_t CQMXBaseClip::GetAudioData(std::uint8_t** /*buffer*/, std::uint32_t* /*size*/, std::uint64_t /*time*/)
{
    return 0;
}

ISampleBuffer* CQMXBaseClip::GetFrame(tagRenderProp& request, std::uint64_t time, bool* flag)
{
    if (IsNullReference(&request))
        return nullptr;
    request.time = time;
    if (!IsVideoOpened())
        Open(request); // a clip that cannot be opened shows in its giving no frame
    if ((request.flags & kRequestOpenOnly) != 0)
        return nullptr;

    FrameResult result;
    GetVideoFrame(time, &result);
    if (result.frame == nullptr)
        Close(); // the decoder goes back, and the next request opens the clip anew
    if (flag != nullptr)
        *flag = result.flag;
    return result.frame;
}

std::wstring CQMXBaseClip::GetDecoderKey()
{
    try
    {
        std::wstring key = GetFilePath();
        key += L"_Document_";
        key += std::to_wstring(GetDocumentID());
        key += L"_Track_";
        key += std::to_wstring(GetTrackID());
        return key;
    }
    catch (const std::bad_alloc&)
    {
        return {};
    }
}
