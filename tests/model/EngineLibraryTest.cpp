// The shared library as a host meets it: classes recognised across its border, and its end when it is unloaded.
#include "engine/qmx.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
/// A decoder of the host's own.
class CHostDecoder : public CDecoder
{
};

TEST(EngineLibrary, ClassesAreRecognisedAcrossItsBorder)
{
    const std::unique_ptr<IQMXBaseClip> video(CreateClipByClipType(QMXClipType_Video));
    const std::unique_ptr<IQMXBaseClip> color(CreateClipByClipType(QMXClipType_Color));
    EXPECT_NE(dynamic_cast<CQMXVideoClip*>(video.get()), nullptr);
    EXPECT_EQ(dynamic_cast<CQMXVideoClip*>(color.get()), nullptr);
    EXPECT_NE(dynamic_cast<CQMXColorClip*>(color.get()), nullptr);

    const DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(L"key", tagDecProp(L"nothing.mp4", 0)));
    EXPECT_NE(dynamic_cast<CVideoDecoder*>(decoder.Get()), nullptr);
    RemoveDecoder(L"key");
    const DecoderPtr own = DecoderPtr::Adopt(new CHostDecoder);
    EXPECT_NE(dynamic_cast<CDecoder*>(own.Get()), nullptr);
    EXPECT_EQ(dynamic_cast<CVideoDecoder*>(own.Get()), nullptr);
}

TEST(EngineLibrary, ServesAHostFromTheDocumentToTheFrame)
{
    const std::unique_ptr<IQMXCleaner> cleaner(CreateQMXCleaner());
    const std::unique_ptr<IQMXDocument> document(CreateQMXDocument(cleaner.get()));
    IQMXTrack* const track = CreateQMXTrack(1, QMXTrackType{}, 0, tagPIPPOSITION{});
    ASSERT_TRUE(document->AddTrack(track));
    IQMXBaseClip* const clip = CreateClipByClipType(QMXClipType_Color);
    clip->SetDuration(kTimePerSecond);
    ASSERT_TRUE(track->AddClip(clip));
    tagRenderProp request;
    request.width = 16;
    request.height = 9;
    EXPECT_TRUE(SampleBufferPtr::Adopt(track->GetFrameAtTime(request, 5, nullptr)));
}
} // namespace
