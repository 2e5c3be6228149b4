// Everything that crosses the exported interface, for the compiler to lay out. Nothing of it runs: a record is laid out
// where its size is asked for, a table of virtual operations where one of them is called.
#include "engine/platform/SampleInfo.h"
#include "engine/qmx.h"

constexpr unsigned long long kSizes[] = {sizeof(tagSampleInfo), sizeof(tagTransparentColorInfo),
                                         sizeof(tagVideoInfo),  sizeof(tagPIPPOSITION),
                                         sizeof(tagRenderProp), sizeof(tagTxEffectParam)};

void CallOneOfEach(IQMXDocument& document, IQMXTrack& track, IQMXCleaner& cleaner, IQMXBaseClip& clip,
                   CQMXVideoClip& videoClip, CQMXColorClip& colorClip, CQMXTXClip& transitionClip,
                   CQMXImageClip& imageClip, IDecoder& decoder, CVideoDecoder& videoDecoder,
                   CImageDecoder& imageDecoder, CGifDecoder& gifDecoder, ISampleBuffer& buffer)
{
    document.GetTrackCount();
    track.GetClipCount();
    cleaner.AddGarbage(nullptr);
    clip.GetDuration();
    videoClip.GetRotation();
    colorClip.IsVideoOpened();
    transitionClip.GetFromClip();
    decoder.AddRef();
    videoDecoder.GetLastFrame();
    imageClip.GetRotation();
    imageDecoder.GetLastFrame();
    bool flag = false;
    gifDecoder.GetClipVideoFrame(0, flag);
    buffer.AddRef();
}
