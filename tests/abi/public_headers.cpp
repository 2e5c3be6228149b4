// Everything that crosses the exported interface, for the compiler to lay out. Nothing of it runs: a record is laid out
// where its size is asked for, a table of virtual operations where one of them is called.
#include "engine/platform/SampleInfo.h"
#include "engine/platform/SwfRenderer.h"
#include "engine/qmx.h"

constexpr unsigned long long kSizes[] = {
    sizeof(tagSampleInfo),       sizeof(tagTransparentColorInfo), sizeof(tagVideoInfo),   sizeof(tagPIPPOSITION),
    sizeof(tagRenderProp),       sizeof(tagTxEffectParam),        sizeof(tagAudioInfo),   sizeof(tagMediaInfo),
    sizeof(tagQMXTitleTextInfo), sizeof(tagQMXKeystrokeInfo),     sizeof(tagSWFMovieInfo)};

void CallOneOfEach(IQMXDocument& document, IQMXTrack& track, IQMXCleaner& cleaner, IQMXBaseClip& clip,
                   CQMXVideoClip& videoClip, CQMXCameraClip& cameraClip, CQMXColorClip& colorClip,
                   CQMXTXClip& transitionClip, CQMXImageClip& imageClip, CQMXTitleClip& titleClip,
                   CQMXKeystrokeClip& keystrokeClip, IDecoder& decoder, CVideoDecoder& videoDecoder,
                   CCameraClipDecoder& cameraDecoder, CImageDecoder& imageDecoder, CGifDecoder& gifDecoder,
                   CTitleDecoder& titleDecoder, CKeystrokeDecoder& keystrokeDecoder, ISampleBuffer& buffer,
                   ISWFRenderObj& movie)
{
    bool flag = false;
    document.GetTrackCount();
    track.GetClipCount();
    cleaner.AddGarbage(nullptr);
    clip.GetDuration();
    videoClip.GetRotation();
    cameraClip.CopyFrom(nullptr);
    colorClip.IsVideoOpened();
    transitionClip.GetFromClip();
    decoder.AddRef();
    videoDecoder.GetLastFrame();
    imageClip.GetRotation();
    imageDecoder.GetLastFrame();
    gifDecoder.GetClipVideoFrame(0, flag);
    titleDecoder.GetClipVideoFrame(0, flag);
    keystrokeDecoder.GetClipVideoFrame(0, flag);
    titleClip.AddTitleText(nullptr);
    keystrokeClip.GetKeystrokeTop();
    cameraDecoder.GetLastFrame();
    buffer.AddRef();
    movie.AddRef();
}
