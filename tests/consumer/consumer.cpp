// A host that knows the installed headers only: a document with one track and one colour clip, asked for a frame.
#include <qmx/qmx.h>

#include <mfapi.h>

#include <cstdio>
#include <memory>

namespace
{
/// @return null when all is well, else what is wrong.
const char* ShowOneFrame()
{
    const std::unique_ptr<IQMXCleaner> pCleaner(CreateQMXCleaner());
    const std::unique_ptr<IQMXDocument> pDocument(CreateQMXDocument(pCleaner.get()));
    IQMXTrack* const pTrack = CreateQMXTrack(1, QMXTrackType{}, 0, {});
    if (!pDocument || !pDocument->AddTrack(pTrack))
        return "the document does not take the track";
    IQMXBaseClip* const pClip = CreateClipByClipType(QMXClipType_Color);
    if (!pTrack->AddClip(pClip))
        return "the track does not take the clip";
    pClip->SetDuration(kTimePerSecond);

    tagRenderProp request;
    request.width = 64;
    request.height = 36;
    if (pTrack->GetFrameAtTime(request, kTimePerSecond, nullptr) != nullptr)
        return "a picture behind the end of the clip";
    const auto pFrame = SampleBufferPtr::Adopt(pTrack->GetFrameAtTime(request, kTimePerSecond - 1, nullptr));
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cbPixels = 0;
    if (!pFrame || !pFrame->GetBuffer(&pPixels, &cbPixels) || cbPixels != 64 * 36 * 4)
        return "no picture of the size asked for";
    for (std::uint32_t i = 0; i < cbPixels; ++i)
        if (pPixels[i] != (i % 4 == 3 ? 255 : 0))
            return "the picture is not opaque black";
    // Memory of the sample-buffer library, reached through what qmx::engine links.
    const auto pOther = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, 64, 36, 0));
    return pOther && pOther->CopyFrom(pFrame.Get()) ? nullptr : "the picture cannot be copied";
}
} // namespace

int main()
{
    if (FAILED(MFStartup(MF_VERSION, MFSTARTUP_FULL)))
        return 1;
    const char* const pComplaint = ShowOneFrame();
    RemoveAllDecoders();
    MFShutdown();
    std::puts(pComplaint != nullptr ? pComplaint : "64 x 36, opaque black");
    return pComplaint != nullptr ? 1 : 0;
}
