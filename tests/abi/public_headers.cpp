// Everything that crosses the exported interface, for the compiler to lay out. Nothing of it runs: a record is laid out
// where its size is asked for, a table of virtual operations where one of them is called.
#include "engine/platform/SampleInfo.h"
#include "engine/qmx.h"

constexpr unsigned long long kSizes[] = {sizeof(tagSampleInfo), sizeof(tagTransparentColorInfo), sizeof(tagVideoInfo),
                                         sizeof(tagPIPPOSITION), sizeof(tagRenderProp)};

void CallOneOfEach(IQMXDocument& document, IQMXTrack& track, IQMXCleaner& cleaner, IQMXBaseClip& clip,
                   CQMXVideoClip& videoClip, CQMXCameraClip& cameraClip, CQMXColorClip& colorClip, IDecoder& decoder,
                   CVideoDecoder& videoDecoder, CCameraClipDecoder& cameraDecoder, ISampleBuffer& buffer)
{
    document.GetTrackCount();
    track.GetClipCount();
    cleaner.AddGarbage(nullptr);
    clip.GetDuration();
    videoClip.GetRotation();
    cameraClip.CopyFrom(nullptr);
    colorClip.IsVideoOpened();
    decoder.AddRef();
    videoDecoder.GetLastFrame();
    cameraDecoder.GetLastFrame();
    buffer.AddRef();
}
