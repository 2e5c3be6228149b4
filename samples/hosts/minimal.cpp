// The smallest host: one clip on one track, and its picture at one second.
#include "engine/qmx.h"

#include <mfapi.h>

#include <cstdio>
#include <filesystem>
#include <memory>

int main(int argc, char** argv)
{
    MFStartup(MF_VERSION, MFSTARTUP_FULL);
    {
        const std::unique_ptr<IQMXTrack> pTrack(CreateQMXTrack(1, QMXTrackType{}, 0, {}));
        IQMXBaseClip* const pClip = CreateClipByClipType(argc > 1 ? QMXClipType_Video : QMXClipType_Color);
        pClip->SetFilePath(std::filesystem::path(argc > 1 ? argv[1] : "").wstring());
        pClip->SetDuration(10 * kTimePerSecond);
        pTrack->AddClip(pClip); // the track owns the clip now
        tagRenderProp request;
        request.flags = kRequestUseCache;
        request.width = 640;
        request.height = 360;
        const auto pFrame = SampleBufferPtr::Adopt(pTrack->GetFrameAtTime(request, kTimePerSecond, nullptr));
        std::uint8_t* pPixels = nullptr; // B, G, R, A
        if (!pFrame || !pFrame->GetBuffer(&pPixels, nullptr))
            return 1;
        std::printf("%u x %u, first pixel #%02x%02x%02x\n", pFrame->GetWidth(), pFrame->GetHeight(), pPixels[2],
                    pPixels[1], pPixels[0]);
    }
    RemoveAllDecoders();
    return MFShutdown();
}
