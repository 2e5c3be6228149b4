/// @file QMXBaseClip.h
/// What all clips have in common.
#pragma once

#include "engine/clips/IQMXBaseClip.h"

#include <cstdint>
#include <string>

class CAudioDecoder;
class IDecoder;

/// A clip without media: no pictures, silence. Base of every kind of clip.
class QMX_API CQMXBaseClip : public IQMXBaseClip
{
public:
    explicit CQMXBaseClip(const QMXClipType& type); ///< of the kind @p type; a track ID of all ones, everything else 0
    ~CQMXBaseClip() override; ///< frees the sound buffer; decoders are given back by the derived classes
    CQMXBaseClip(const CQMXBaseClip&) = delete;
    CQMXBaseClip& operator=(const CQMXBaseClip&) = delete;

    QMXClipType GetClipType() override;
    std::wstring GetFilePath() override;
    int SetFilePath(std::wstring path) override;
    std::uint64_t GetInPoint() override;
    std::uint64_t GetOutPoint() override;
    void SetInPoint(std::uint64_t time) override;
    std::uint64_t GetStartTime() override;
    void SetStartTime(std::uint64_t time) override;
    std::uint64_t GetEndTime() override;
    std::uint64_t GetDuration() override;
    void SetDuration(std::uint64_t duration) override;
    std::uint64_t GetTrackID() override;
    void SetTrackID(std::uint64_t id) override;
    void SetDocumentID(std::uint64_t id) override;
    std::uint64_t GetDocumentID() override;
    void CopyFrom(IQMXBaseClip* source) override;
    bool Open(const tagRenderProp& request) override;
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;
    bool Close() override;
    bool OpenAudio(const tagRenderProp& request) override;
    std::uint32_t GetAudioAtTime(std::uint64_t time, std::uint8_t** buffer, std::uint32_t* size) override;
    std::uint32_t ReadAudio(std::uint8_t** buffer, std::uint32_t* size) override;
    bool ResetAudio() override;
    bool IsAudioOpened() override;
    bool IsVideoOpened() override;
    ISampleBuffer* GetLastFrame() override;
    void SetAttachment(int index, IQMXBaseClip* clip) override;
    std::uint32_t GetAudioData(std::uint8_t** buffer, std::uint32_t* size, std::uint64_t time) override;
    ISampleBuffer* GetFrame(tagRenderProp& request, std::uint64_t time, bool* flag) override;
    std::wstring GetDecoderKey() override;

protected:
    /// Copies every field of @p request but audioParams into the render copy.
    void KeepRequest(const tagRenderProp& request);

    QMXClipType m_clipType;              ///< what GetClipType() answers
    std::wstring m_strFilePath;          ///< media file; empty for generated content
    std::uint64_t m_nInPoint = 0;        ///< 100 ns: source time of the first frame
    std::uint64_t m_nStartTime = 0;      ///< 100 ns: timeline time of the first frame
    std::uint64_t m_nDuration = 0;       ///< 100 ns
    IDecoder* m_pVideoDecoder = nullptr; ///< owns one reference while the clip is open; given back by derived classes
    CAudioDecoder* m_pAudioSource = nullptr;   ///< owned by the clips that have sound
    bool m_bSilent = true;                     ///< silence is delivered instead of decoded sound
    std::uint8_t* m_pAudioBuffer = nullptr;    ///< owned, malloc's: the block the audio decoder delivered last
    std::uint32_t m_cbAudioCapacity = 0;       ///< bytes of that block
    std::uint32_t m_cbAudioHeld = 0;           ///< valid bytes in it
    std::uint64_t m_nAudioReadPosition = 0;    ///< bytes of it already handed out
    tagRenderProp m_renderCopy;                ///< the last request given to Open() and OpenAudio()
    std::uint64_t m_nTrackID = kTimeUnlimited; ///< all ones: none yet
    std::uint64_t m_nDocumentID = 0;           ///< stamped by the track
};
