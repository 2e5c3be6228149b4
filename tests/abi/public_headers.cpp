// Everything that crosses the exported interface, for the compiler to lay out. Nothing of it runs: a record is laid out
// where its size is asked for, a table of virtual operations where one of them is called.
#include "engine/platform/SampleInfo.h"
#include "engine/qmx.h"

constexpr unsigned long long kSizes[] = {
    sizeof(tagSampleInfo), sizeof(tagTransparentColorInfo), sizeof(tagVideoInfo),       sizeof(tagPIPPOSITION),
    sizeof(tagRenderProp), sizeof(tagQMXTitleTextInfo),     sizeof(tagQMXKeystrokeInfo)};

void CallOneOfEach(IQMXDocument& document, IQMXTrack& track, IQMXCleaner& cleaner, IQMXBaseClip& clip,
                   CQMXVideoClip& videoClip, CQMXColorClip& colorClip, IDecoder& decoder, CVideoDecoder& videoDecoder,
                   CTitleDecoder& titleDecoder, CKeystrokeDecoder& keystrokeDecoder, CQMXTitleClip& titleClip,
                   CQMXKeystrokeClip& keystrokeClip, ISampleBuffer& buffer)
{
    bool flag = false;
    document.GetTrackCount();
    track.GetClipCount();
    cleaner.AddGarbage(nullptr);
    clip.GetDuration();
    videoClip.GetRotation();
    colorClip.IsVideoOpened();
    decoder.AddRef();
    videoDecoder.GetLastFrame();
    titleDecoder.GetClipVideoFrame(0, flag);
    keystrokeDecoder.GetClipVideoFrame(0, flag);
    titleClip.AddTitleText(nullptr);
    keystrokeClip.GetKeystrokeTop();
    buffer.AddRef();
}
