// Everything that crosses the exported interface, for the compiler to lay out. Nothing of it runs: a record is laid out
// where its size is asked for, a table of virtual operations where one of them is called.
#include "engine/platform/SampleInfo.h"
#include "engine/platform/SwfRenderer.h"
#include "engine/qmx.h"

constexpr unsigned long long kSizes[] = {sizeof(tagSampleInfo), sizeof(tagTransparentColorInfo),
                                         sizeof(tagVideoInfo),  sizeof(tagPIPPOSITION),
                                         sizeof(tagRenderProp), sizeof(tagSWFMovieInfo)};

void CallOneOfEach(IQMXDocument& document, IQMXTrack& track, IQMXCleaner& cleaner, IQMXBaseClip& clip,
                   CQMXVideoClip& videoClip, CQMXColorClip& colorClip, IDecoder& decoder, CVideoDecoder& videoDecoder,
                   ISampleBuffer& buffer, ISWFRenderObj& movie)
{
    document.GetTrackCount();
    track.GetClipCount();
    cleaner.AddGarbage(nullptr);
    clip.GetDuration();
    videoClip.GetRotation();
    colorClip.IsVideoOpened();
    decoder.AddRef();
    videoDecoder.GetLastFrame();
    buffer.AddRef();
    movie.AddRef();
}
