/// @file QMXTrack.h
#pragma once

#include "engine/model/IQMXTrack.h"

#include <vector>

/// The only implementation of IQMXTrack.
class QMX_API CQMXTrack : public IQMXTrack
{
public:
    CQMXTrack(std::uint64_t trackID, QMXTrackType type, std::uint64_t documentID, const tagPIPPOSITION& position);
    ~CQMXTrack() override;
    CQMXTrack(const CQMXTrack&) = delete;
    CQMXTrack& operator=(const CQMXTrack&) = delete;

    void RemoveAllClips() override;
    void SetTrackType(QMXTrackType type) override;
    QMXTrackType GetTrackType() override;
    void SetPIPPosition(const tagPIPPOSITION& position) override;
    void SetDocumentID(std::uint64_t id) override;
    std::uint64_t GetDocumentID() override;
    tagPIPPOSITION GetPIPPosition() override;
    void SetTrackID(std::uint64_t id) override;
    const std::uint64_t& GetTrackID() override;
    IQMXBaseClip* GetClipAtTime(std::uint64_t time, bool inclusiveEnd) override;
    bool AddClip(IQMXBaseClip* clip) override;
    void RemoveClip(IQMXBaseClip* clip) override;
    IQMXBaseClip* GetClip(int index) override;
    int GetClipCount() override;
    int RemoveClipByPath(std::wstring path) override;
    void SetTrackFlags(std::uint32_t flags) override;
    std::uint32_t GetTrackFlags() override;
    ISampleBuffer* GetFrameAtTime(tagRenderProp& request, std::uint64_t time, bool* flag) override;
    ISampleBuffer* GetFrameByIndex(tagRenderProp& request, int index, std::uint64_t time, bool* flag) override;

private:
    std::uint32_t m_nTrackFlags = 0;
    std::uint64_t m_nDocumentID;
    std::uint64_t m_nTrackID;
    tagPIPPOSITION m_pipPosition;
    QMXTrackType m_trackType;
    std::vector<IQMXBaseClip*> m_vecClips; // owned
};
