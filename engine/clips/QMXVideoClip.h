/// @file QMXVideoClip.h
/// A clip that shows a video file.
#pragma once

#include "engine/clips/Attachment.h"
#include "engine/clips/QMXSoundClip.h"
#include "engine/clips/TransparentColorInfo.h"
#include "engine/decoders/DecoderProp.h"

#include <cstdint>

/// Shows a video file through a decoder of its own or one shared through the cache, or, while a clip is attached that
/// has pictures, that clip's last frame. Its sound is the file's.
class QMX_API CQMXVideoClip : public CQMXSoundClip
{
public:
    CQMXVideoClip();
    ~CQMXVideoClip() override;

    /// Takes settings, rotation and frame rate of another video clip; every other kind changes nothing.
    void CopyFrom(IQMXBaseClip* source) override;
    bool Open(const tagRenderProp& request) override;
    /// @return true also when the decoder has no picture (the result then holds null); false for a null @p out or
    ///         when an attached clip has no picture.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;
    bool Close() override;
    bool IsVideoOpened() override;
    ISampleBuffer* GetLastFrame() override;
    void SetAttachment(int index, IQMXBaseClip* clip) override;

    virtual std::uint32_t GetRotation();               ///< slot 31: degrees clockwise
    virtual void SetRotation(std::uint32_t degrees);   ///< slot 32: counts from the next Open()
    virtual double GetFrameRate();                     ///< slot 33: frames per second
    virtual void SetFrameRate(double framesPerSecond); ///< slot 34: counts from the next Open()
    /// Slot 35: picture at timeline time 0, 640 pixels wide; the clip is closed then.
    /// @param aspect  height / width of the clip's box.  @return one reference, or null.
    virtual ISampleBuffer* GetThumbnail(double aspect);
    /// Slot 36: turns the colour key on or off. @param info  copied; its background's reference passes to the clip;
    /// null keeps the settings there are.
    virtual void SetTransparentColor(bool on, const tagTransparentColorInfo* info);
    /// Slot 37: scales the settings' background to frames of @p width x @p height.
    /// @return the prepared background (borrowed), null when there is none.
    virtual ISampleBuffer* PrepareBackground(std::uint32_t width, std::uint32_t height);
    /// Slot 38: keys a picture in place. @param pixels  BGRA rows of width * 4 bytes.
    virtual void ApplyTransparentColor(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height);
    virtual void ClearTransparentColor();                   ///< slot 39: drops the settings and their background
    virtual tagTransparentColorInfo* GetTransparentColor(); ///< slot 40: the clip's settings; may be null
    virtual bool IsTransparentColorOn();                    ///< slot 41

protected:
    /// For the kinds of clips that are video clips but for their decoder.
    explicit CQMXVideoClip(QMXClipType type);

    /// The record that this clip asks a decoder with. Throws std::bad_alloc.
    tagDecProp MakeDecoderProp(const tagRenderProp& request, std::uint32_t decoderType);
    bool OpenSharedDecoder();                               ///< through the cache. @return false when there is none
    void ReleaseDecoder();                                  ///< gives the reference back
    std::uint64_t AttachDecoderProp();                      ///< makes the decoder show this clip; see m_decoderProp
    SampleBufferPtr KeyFrame(const SampleBufferPtr& frame); ///< @p frame with the key colour replaced
    SampleBufferPtr GetAttachedFrame();                     ///< the attached clip's picture, or null
    static SampleBufferPtr RotateFrame(ISampleBuffer& source,
                                       std::uint32_t rotation); ///< @p source turned clockwise; null: none

    std::uint32_t m_nRotation = 0;                          ///< degrees clockwise
    double m_dFrameRate = 30.0;                             ///< frames per second
    CAttachment m_attachment;                               ///< whose pictures are shown where there are any
    SampleBufferPtr m_pPreparedBackground;                  ///< the settings' background at the size of the frames
    bool m_bTransparentColor = false;                       ///< the key colour counts
    tagTransparentColorInfo* m_pTransparentColor = nullptr; ///< owned; its background's reference too
    tagDecProp m_decoderProp; ///< what this clip asks of its decoder; another clip's may stand in a shared one

private:
    void DropTransparentColor();

    SampleBufferPtr m_pKeySource;        ///< the decoder's frame of which m_pKeyedFrame was made
    SampleBufferPtr m_pKeyedFrame;       ///< the colour-keyed copy handed out last
    tagTransparentColorInfo m_keyedWith; ///< the settings it was made with
};
