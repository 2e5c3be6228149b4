#include "engine/model/QMXTrack.h"

#include <algorithm>
#include <new>

IQMXTrack* CreateQMXTrack(std::uint64_t trackID, QMXTrackType type, std::uint64_t documentID, tagPIPPOSITION position)
{
    return new (std::nothrow) CQMXTrack(trackID, type, documentID, position);
}

CQMXTrack::CQMXTrack(std::uint64_t trackID, QMXTrackType type, std::uint64_t documentID, const tagPIPPOSITION& position)
    : m_nDocumentID(documentID), m_nTrackID(trackID), m_pipPosition(position), m_trackType(type)
{
}

CQMXTrack::~CQMXTrack()
{
    for (IQMXBaseClip* const clip : m_vecClips)
        delete clip;
}

void CQMXTrack::RemoveAllClips()
{
    for (IQMXBaseClip* const clip : m_vecClips)
        delete clip;
    m_vecClips.clear();
}

void CQMXTrack::SetTrackType(QMXTrackType type)
{
    m_trackType = type;
}

QMXTrackType CQMXTrack::GetTrackType()
{
    return m_trackType;
}

void CQMXTrack::SetPIPPosition(const tagPIPPOSITION& position)
{
    m_pipPosition = position;
}

void CQMXTrack::SetDocumentID(std::uint64_t id)
{
    m_nDocumentID = id;
}

std::uint64_t CQMXTrack::GetDocumentID()
{
    return m_nDocumentID;
}

tagPIPPOSITION CQMXTrack::GetPIPPosition()
{
    return m_pipPosition;
}

void CQMXTrack::SetTrackID(std::uint64_t id)
{
    m_nTrackID = id;
}

const std::uint64_t& CQMXTrack::GetTrackID()
{
    return m_nTrackID;
}

IQMXBaseClip* CQMXTrack::GetClipAtTime(std::uint64_t time, bool inclusiveEnd)
{
    for (IQMXBaseClip* const clip : m_vecClips)
    {
        if (clip->GetStartTime() > time)
            return nullptr; // in start order, no later clip can hold the time
        const std::uint64_t end = clip->GetEndTime();
        if (time < end || (inclusiveEnd && time == end))
            return clip;
    }
    return nullptr;
}

bool CQMXTrack::AddClip(IQMXBaseClip* clip)
{
    if (clip == nullptr)
        return false;
    try
    {
        clip->SetDocumentID(GetDocumentID());
        m_vecClips.push_back(clip);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

void CQMXTrack::RemoveClip(IQMXBaseClip* clip)
{
    const auto found = std::find(m_vecClips.begin(), m_vecClips.end(), clip);
    if (found != m_vecClips.end())
        m_vecClips.erase(found);
}

IQMXBaseClip* CQMXTrack::GetClip(int index)
{
    if (index < 0 || index >= GetClipCount())
        return nullptr;
    return m_vecClips[static_cast<std::size_t>(index)];
}

int CQMXTrack::GetClipCount()
{
    return static_cast<int>(m_vecClips.size());
}

int CQMXTrack::RemoveClipByPath(std::wstring path)
{
    const auto found = std::find_if(m_vecClips.begin(), m_vecClips.end(),
                                    [&path](IQMXBaseClip* clip) { return clip->GetFilePath() == path; });
    if (found != m_vecClips.end())
    {
        IQMXBaseClip* const clip = *found;
        m_vecClips.erase(found);
        delete clip;
    }
    return 0;
}

void CQMXTrack::SetTrackFlags(std::uint32_t flags)
{
    m_nTrackFlags = flags;
}

std::uint32_t CQMXTrack::GetTrackFlags()
{
    return m_nTrackFlags;
}

ISampleBuffer* CQMXTrack::GetFrameAtTime(tagRenderProp& request, std::uint64_t time, bool* flag)
{
    IQMXBaseClip* const clip = GetClipAtTime(time, false);
    return clip != nullptr ? clip->GetFrame(request, time, flag) : nullptr;
}

ISampleBuffer* CQMXTrack::GetFrameByIndex(tagRenderProp& request, int index, std::uint64_t time, bool* flag)
{
    IQMXBaseClip* const clip = GetClip(index);
    return clip != nullptr ? clip->GetFrame(request, time, flag) : nullptr;
}
