/// @file QMXSoundClip.h
/// The sound of clips that have any.
#pragma once

#include "engine/clips/QMXBaseClip.h"

/// A clip that reads its sound from its file: the common base of audio, video and camera clips. A file without sound,
/// or one that cannot be read, plays as silence. What is delivered is always 48,000 Hz, 16 bits, two channels.
class QMX_API CQMXSoundClip : public CQMXBaseClip
{
public:
    explicit CQMXSoundClip(const QMXClipType& type); ///< @copydoc CQMXBaseClip::CQMXBaseClip()
    ~CQMXSoundClip() override;

    /// Opens the file for reading from the timeline time in the request's audioParams on. @return true, whatever the
    /// file is; false for a null request only.
    bool OpenAudio(const tagRenderProp& request) override;
    std::uint32_t GetAudioAtTime(std::uint64_t time, std::uint8_t** buffer, std::uint32_t* size) override;
    /// With a block of the caller's: fills *@p size bytes, fewer only in the read that meets the end; after it,
    /// silence. Without one: a block of the decoder's own size.
    std::uint32_t ReadAudio(std::uint8_t** buffer, std::uint32_t* size) override;
    bool ResetAudio() override;
    /// True from OpenAudio() to ResetAudio(), also for a file that cannot be read.
    bool IsAudioOpened() override;
    std::uint32_t GetAudioData(std::uint8_t** buffer, std::uint32_t* size, std::uint64_t time) override;

private:
    void FreeAudioBlock();
    void SeekAudio(std::uint64_t time);
    bool RefillAudioBlock();
};
