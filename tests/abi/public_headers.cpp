// Everything that crosses the exported interface, for the compiler to lay out. Nothing of it runs: a record is laid out
// where its size is asked for, a table of virtual operations where one of them is called.
#include "engine/platform/SampleInfo.h"
#include "engine/qmx.h"

constexpr unsigned long long kSizes[] = {sizeof(tagSampleInfo), sizeof(tagTransparentColorInfo),
                                         sizeof(tagVideoInfo),  sizeof(tagPIPPOSITION),
                                         sizeof(tagRenderProp), sizeof(tagTxEffectParam)};

void CallOneOfEach(IQMXDocument& document, IQMXTrack& track, IQMXCleaner& cleaner, IQMXBaseClip& clip,
                   CQMXVideoClip& videoClip, CQMXColorClip& colorClip, CQMXTXClip& transitionClip, IDecoder& decoder,
                   CVideoDecoder& videoDecoder, ISampleBuffer& buffer)
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
    buffer.AddRef();
}
