#include "engine/clips/QMXTXClip.h"

#include "engine/model/ClipFactory.h"
#include "engine/platform/SampleBuffer.h"
#include "tests/decoders/NullReference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace
{
constexpr std::uint32_t kWidth = 16;
constexpr std::uint32_t kHeight = 9;
constexpr std::uint32_t kFirstPicturePixel =
    4; // of the probe's output: even, so the from picture's; the next is the to's

/// A clip whose picture at time t has the colour base + t, and that writes down what is asked of it.
class CPictureClip : public CQMXBaseClip
{
public:
    CPictureClip(std::uint32_t base, std::uint64_t start, std::uint64_t duration, int* pDeleted = nullptr)
        : CQMXBaseClip(QMXClipType_Base), m_base(base), m_pDeleted(pDeleted)
    {
        SetStartTime(start);
        SetDuration(duration);
    }
    ~CPictureClip() override
    {
        if (m_pDeleted != nullptr)
            ++*m_pDeleted;
    }
    bool Open(const tagRenderProp& request) override
    {
        m_requests.push_back(request);
        return m_opens;
    }
    bool Close() override
    {
        ++m_closed;
        return true;
    }
    void SetAttachment(int index, IQMXBaseClip* clip) override { m_detached = index == 0 && clip == nullptr; }
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override
    {
        m_times.push_back(time);
        if (!m_hasPictures)
            return false;
        auto frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, m_width, m_height, 0));
        std::uint8_t* pixels = nullptr;
        frame->GetBuffer(&pixels, nullptr);
        const std::uint32_t color = m_base + static_cast<std::uint32_t>(time);
        for (std::uint32_t i = 0; i < m_width * m_height; ++i)
            std::memcpy(pixels + std::size_t{i} * 4, &color, 4);
        out->frame = frame.Detach();
        out->flag = m_flag;
        return true;
    }

    std::uint32_t m_width = kWidth;
    std::uint32_t m_height = kHeight;
    bool m_opens = true;
    bool m_hasPictures = true;
    bool m_flag = false;
    bool m_detached = false;
    int m_closed = 0;
    std::vector<tagRenderProp> m_requests;
    std::vector<std::uint64_t> m_times;

private:
    std::uint32_t m_base;
    int* m_pDeleted;
};

std::uint64_t LiveFrames()
{
    tagSampleBufferPoolInfo info;
    GetSampleBufferPoolInfo(&info);
    return info.nLive;
}

constexpr std::uint32_t kFromBase = 0x0A000000;
constexpr std::uint32_t kToBase = 0x0B000000;

/// A transition from 1,000 to 1,100 between a clip that shows 900 to 1,100 and one that shows 1,000 to 1,300.
class CQMXTXClipTest : public testing::Test
{
protected:
    CQMXTXClipTest()
    {
        clip->SetStartTime(1'000);
        clip->SetDuration(100);
        clip->SetEffectModule(QMX_PROBE_EFFECT_NAME);
        clip->SetClips(m_pFrom, m_pTo);
        request.width = kWidth;
        request.height = kHeight;
    }
    void TearDown() override
    {
        clip.reset();
        EXPECT_EQ(LiveFrames(), m_framesBefore);
    }

    /// The words and pixels of the blended picture; empty when there is none.
    std::vector<std::uint32_t> FrameAt(std::uint64_t time) { return FrameOf(*clip, time); }
    std::vector<std::uint32_t> FrameOf(CQMXTXClip& of, std::uint64_t time)
    {
        FrameResult result;
        if (!of.GetVideoFrame(time, &result))
        {
            EXPECT_EQ(result.frame, nullptr);
            return {};
        }
        m_flag = result.flag;
        const auto frame = SampleBufferPtr::Adopt(result.frame);
        m_ratioX = frame->GetRatioX();
        m_ratioY = frame->GetRatioY();
        m_alpha = frame->GetAlphaFlag();
        std::uint8_t* pixels = nullptr;
        std::uint32_t cb = 0;
        EXPECT_TRUE(frame->GetBuffer(&pixels, &cb));
        std::vector<std::uint32_t> words(cb / 4);
        std::memcpy(words.data(), pixels, cb);
        return words;
    }
    static float ProgressOf(const std::vector<std::uint32_t>& words)
    {
        float progress = -1;
        std::memcpy(&progress, &words.at(2), 4);
        return progress;
    }
    /// Colours of the from and the to picture that went into the blend.
    static std::pair<std::uint32_t, std::uint32_t> Blended(const std::vector<std::uint32_t>& words)
    {
        return words.empty() ? std::pair(0U, 0U) : std::pair(words.at(kFirstPicturePixel), words.at(5));
    }

    CPictureClip* m_pFrom = new CPictureClip(kFromBase, 900, 200);
    CPictureClip* m_pTo = new CPictureClip(kToBase, 1'000, 300);
    std::unique_ptr<CQMXTXClip> clip = std::make_unique<CQMXTXClip>();
    tagRenderProp request;
    bool m_flag = false;
    bool m_alpha = false;
    std::uint32_t m_ratioX = 0;
    std::uint32_t m_ratioY = 0;

private:
    const std::uint64_t m_framesBefore = LiveFrames();
};

TEST_F(CQMXTXClipTest, ANewOneIsEmpty)
{
    CQMXTXClip fresh;
    EXPECT_EQ(fresh.GetClipType(), QMXClipType_Transition);
    EXPECT_EQ(fresh.GetFromClip(), nullptr);
    EXPECT_EQ(fresh.GetToClip(), nullptr);
    EXPECT_FALSE(fresh.IsVideoOpened());
    FrameResult result;
    EXPECT_FALSE(fresh.GetVideoFrame(0, &result));
    EXPECT_FALSE(fresh.GetVideoFrame(0, nullptr));
}

TEST_F(CQMXTXClipTest, OpensBothClipsEachWithItsOwnRequest)
{
    request.flags = kRequestUseCache;
    request.time = 1'050;
    EXPECT_TRUE(clip->Open(request));
    EXPECT_TRUE(clip->IsVideoOpened());
    ASSERT_EQ(m_pFrom->m_requests.size(), 1U);
    EXPECT_EQ(m_pFrom->m_requests[0].flags, kRequestUseCache | kRequestSeekBack);
    EXPECT_EQ(m_pFrom->m_requests[0].time, 1'050U);
    ASSERT_EQ(m_pTo->m_requests.size(), 1U);
    EXPECT_EQ(m_pTo->m_requests[0].flags, kRequestUseCache);
    EXPECT_EQ(m_pTo->m_requests[0].time, 1'000U); // the to clip's own start
    EXPECT_TRUE(m_pFrom->m_detached);
    EXPECT_TRUE(m_pTo->m_detached);
}

TEST_F(CQMXTXClipTest, AClipThatCannotBeOpenedIsAFailure)
{
    m_pFrom->m_opens = false;
    EXPECT_FALSE(clip->Open(request));
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_EQ(m_pTo->m_requests.size(), 1U); // asked all the same
    m_pFrom->m_opens = true;
    m_pTo->m_opens = false;
    EXPECT_FALSE(clip->Open(request));
    m_pTo->m_opens = true;
    EXPECT_TRUE(clip->Open(request));
    EXPECT_FALSE(clip->Open(NullReference<const tagRenderProp>()));
}

TEST_F(CQMXTXClipTest, TheModuleGetsTypeProgressAndPictures)
{
    clip->SetEffectType(5);
    ASSERT_TRUE(clip->Open(request));
    const auto words = FrameAt(1'025);
    ASSERT_EQ(words.size(), kWidth * kHeight);
    EXPECT_EQ(words[1], 5U);
    EXPECT_EQ(ProgressOf(words), 0.25F);
    EXPECT_TRUE(m_alpha);
}

TEST_F(CQMXTXClipTest, BeforeTheMiddleTheToClipStandsStillBehindItTheFromClip)
{
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(Blended(FrameAt(1'025)), std::pair(kFromBase + 1'025, kToBase + 1'000));
    EXPECT_EQ(Blended(FrameAt(1'049)), std::pair(kFromBase + 1'049, kToBase + 1'000));
    EXPECT_EQ(Blended(FrameAt(1'051)), std::pair(kFromBase + 1'100, kToBase + 1'051));
    EXPECT_EQ(Blended(FrameAt(1'099)), std::pair(kFromBase + 1'100, kToBase + 1'099));
}

TEST_F(CQMXTXClipTest, InTheMiddleBothStandStill)
{
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(Blended(FrameAt(1'050)), std::pair(kFromBase + 1'100, kToBase + 1'000));
    EXPECT_EQ(m_pFrom->m_times, std::vector<std::uint64_t>{1'100});
    EXPECT_EQ(m_pTo->m_times, std::vector<std::uint64_t>{1'000});
}

TEST_F(CQMXTXClipTest, PicturesThatStandStillAreCapturedOnce)
{
    ASSERT_TRUE(clip->Open(request));
    for (const std::uint64_t time : {1'010U, 1'020U, 1'060U, 1'070U, 1'030U, 1'080U})
        FrameAt(time);
    EXPECT_EQ(m_pFrom->m_times, (std::vector<std::uint64_t>{1'010, 1'020, 1'100, 1'030}));
    EXPECT_EQ(m_pTo->m_times, (std::vector<std::uint64_t>{1'000, 1'060, 1'070, 1'080}));
    ASSERT_TRUE(clip->Open(request)); // captured anew
    FrameAt(1'060);
    EXPECT_EQ(m_pFrom->m_times.back(), 1'100U);
    EXPECT_EQ(m_pFrom->m_times.size(), 5U);
}

TEST_F(CQMXTXClipTest, AFixedProgressCountsWhateverTheTime)
{
    ASSERT_TRUE(clip->Open(request));
    clip->SetProgress(0.3F);
    for (const std::uint64_t time : {1'000U, 1'050U, 1'099U, 0U})
    {
        const auto words = FrameAt(time);
        EXPECT_EQ(ProgressOf(words), 0.3F);
        EXPECT_EQ(Blended(words), std::pair(kFromBase + static_cast<std::uint32_t>(time), kToBase + 1'000));
    }
}

TEST_F(CQMXTXClipTest, ATimeBeforeTheStartLiesFarBehindTheEnd)
{
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(ProgressOf(FrameAt(999)), static_cast<float>(18446744073709551615.0 / 100.0));
}

TEST_F(CQMXTXClipTest, ADurationOfZeroIsNoCrash)
{
    clip->SetDuration(0);
    ASSERT_TRUE(clip->Open(request));
    EXPECT_TRUE(std::isnan(ProgressOf(FrameAt(1'000))));
    EXPECT_TRUE(std::isinf(ProgressOf(FrameAt(1'001))));
}

TEST_F(CQMXTXClipTest, WithoutAToClipTheFromClipBlendsIntoTransparentBlack)
{
    ASSERT_TRUE(clip->SetToClip(nullptr));
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(Blended(FrameAt(1'025)), std::pair(kFromBase + 1'025, 0U));
    EXPECT_EQ(Blended(FrameAt(1'075)), std::pair(kFromBase + 1'100, 0U));
    EXPECT_FALSE(m_flag);
}

TEST_F(CQMXTXClipTest, WithoutAnyClipTheBlendIsOfNothing)
{
    ASSERT_TRUE(clip->SetClips(nullptr, nullptr));
    ASSERT_TRUE(clip->Open(request));
    EXPECT_TRUE(clip->IsVideoOpened());
    EXPECT_EQ(Blended(FrameAt(1'025)), std::pair(0U, 0U));
}

TEST_F(CQMXTXClipTest, TheFlagIsTheToClips)
{
    ASSERT_TRUE(clip->Open(request));
    m_pFrom->m_flag = true;
    FrameAt(1'075);
    EXPECT_FALSE(m_flag);
    m_pTo->m_flag = true;
    FrameAt(1'075);
    EXPECT_TRUE(m_flag);
    FrameAt(1'025); // captures the to clip's first picture
    EXPECT_TRUE(m_flag);
    FrameAt(1'025); // asks the to clip for nothing
    EXPECT_FALSE(m_flag);
}

TEST_F(CQMXTXClipTest, AClipWithoutAPictureIsAFailure)
{
    ASSERT_TRUE(clip->Open(request));
    m_pFrom->m_hasPictures = false;
    EXPECT_TRUE(FrameAt(1'025).empty());
    EXPECT_TRUE(FrameAt(1'075).empty()); // nothing captured
    m_pFrom->m_hasPictures = true;
    m_pTo->m_hasPictures = false;
    EXPECT_TRUE(FrameAt(1'025).empty());
    m_pTo->m_hasPictures = true;
    EXPECT_FALSE(FrameAt(1'025).empty());
}

TEST_F(CQMXTXClipTest, WorkSizeIsTheRequestsTimesTheFactorsCutToWholeNumbers)
{
    request.width = 33;
    request.height = 19;
    request.factorX = 0.5;
    request.factorY = 0.75;
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(FrameAt(1'025).size(), 16U * 14);
    EXPECT_EQ(m_ratioX, 8U);
    EXPECT_EQ(m_ratioY, 7U);
}

TEST_F(CQMXTXClipTest, DisplayAspectIsTheWorkSizeWithoutTheCommonFactor)
{
    request.width = 1920;
    request.height = 1080;
    ASSERT_TRUE(clip->Open(request));
    ASSERT_FALSE(FrameAt(1'025).empty());
    EXPECT_EQ(m_ratioX, 16U);
    EXPECT_EQ(m_ratioY, 9U);
}

TEST_F(CQMXTXClipTest, SizesThatCannotBeGiveNoPicture)
{
    for (const double factor : {0.0, -1.0, 1e12, static_cast<double>(NAN), 3'000.0})
    {
        request.factorX = factor;
        clip->Open(request);
        EXPECT_TRUE(FrameAt(1'025).empty()) << factor;
    }
}

TEST_F(CQMXTXClipTest, PicturesOfAnotherSizeAreLetterBoxed)
{
    m_pFrom->m_width = 8; // 8 x 9 stands in the middle of 16 x 9
    ASSERT_TRUE(clip->Open(request));
    const auto words = FrameAt(1'025);
    ASSERT_EQ(words.size(), kWidth * kHeight);
    EXPECT_EQ(words[kWidth + 3], kToBase + 1'000); // odd: the to picture
    EXPECT_EQ(words[kWidth * 2 + 2], 0U);          // even, left of the from picture
    EXPECT_EQ(words[kWidth * 2 + 4], kFromBase + 1'025);
    EXPECT_EQ(words[kWidth * 2 + 10], kFromBase + 1'025);
    EXPECT_EQ(words[kWidth * 2 + 12], 0U);
}

TEST_F(CQMXTXClipTest, TheBoxOfTheRequestCountsUnlessItUsesTheCache)
{
    request.boxWidth = 8;
    request.boxHeight = 9;
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(FrameAt(1'025).at(kWidth * 4 + 2), 0U); // left of the box
    request.flags = kRequestUseCache;
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(FrameAt(1'025).at(kWidth * 4 + 2), kFromBase + 1'025);
}

TEST_F(CQMXTXClipTest, CloseClosesBothClipsAndUnloadsTheModule)
{
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(FrameAt(1'025).at(0), 1U); // first call
    EXPECT_EQ(FrameAt(1'025).at(0), 2U);
    const int closed = m_pFrom->m_closed;
    EXPECT_TRUE(clip->Close());
    EXPECT_EQ(m_pFrom->m_closed, closed + 1);
    EXPECT_EQ(m_pTo->m_closed, closed + 1);
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_TRUE(FrameAt(1'025).empty());
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(FrameAt(1'025).at(0), 1U); // loaded anew
}

TEST_F(CQMXTXClipTest, AModuleThatIsNotThereOpensTheClipsAndGivesNoPictures)
{
    clip->SetEffectModule(L"no such module");
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(m_pFrom->m_requests.size(), 1U);
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_TRUE(FrameAt(1'025).empty());
    clip->SetEffectModule(L"");
    EXPECT_TRUE(clip->Open(request));
    EXPECT_FALSE(clip->IsVideoOpened());
}

TEST_F(CQMXTXClipTest, AModuleWithoutTheEntryPointGivesNoPictures)
{
    clip->SetEffectModule(QMX_NO_EFFECT_NAME);
    EXPECT_TRUE(clip->Open(request));
    EXPECT_TRUE(FrameAt(1'025).empty());
    EXPECT_EQ(clip->GetFrame(request, 1'025, nullptr), nullptr);
}

TEST_F(CQMXTXClipTest, WorksOnceTheModuleAppears)
{
    const std::filesystem::path folder(QMX_MODULE_FOLDER);
    const std::wstring name = L"qmx_test_late_effect.module";
    std::filesystem::remove(folder / name);
    clip->SetEffectModule(name);
    EXPECT_EQ(clip->GetFrame(request, 1'025, nullptr), nullptr);
    std::filesystem::copy_file(folder / QMX_PROBE_EFFECT_NAME, folder / name);
    const auto frame = SampleBufferPtr::Adopt(clip->GetFrame(request, 1'025, nullptr));
    EXPECT_TRUE(frame);
    clip->Close();
    std::filesystem::remove(folder / name);
}

// ---- ownership ---------------------------------------------------------------------------------------------------

TEST_F(CQMXTXClipTest, OwnsItsClips)
{
    int deleted = 0;
    const auto make = [&] { return new CPictureClip(0, 0, 1, &deleted); };
    {
        CQMXTXClip owner;
        EXPECT_TRUE(owner.SetClips(make(), make()));
        EXPECT_TRUE(owner.SetFromClip(make()));
        EXPECT_EQ(deleted, 1);
        EXPECT_TRUE(owner.SetToClip(make()));
        EXPECT_EQ(deleted, 2);
        EXPECT_TRUE(owner.SetClips(make(), make()));
        EXPECT_EQ(deleted, 4);
    }
    EXPECT_EQ(deleted, 6);
}

TEST_F(CQMXTXClipTest, AClipItOwnsAlreadyStays)
{
    int deleted = 0;
    {
        CQMXTXClip owner;
        auto* const first = new CPictureClip(0, 0, 1, &deleted);
        auto* const second = new CPictureClip(0, 0, 1, &deleted);
        owner.SetClips(first, second);
        EXPECT_TRUE(owner.SetFromClip(first));
        EXPECT_TRUE(owner.SetClips(second, first));
        EXPECT_EQ(owner.GetFromClip(), second);
        EXPECT_EQ(owner.GetToClip(), first);
        EXPECT_EQ(deleted, 0);
        EXPECT_TRUE(owner.SetClips(first, first));
        EXPECT_EQ(deleted, 1);
        EXPECT_FALSE(owner.SetFromClip(&owner)); // would own itself
    }
    EXPECT_EQ(deleted, 2);
}

TEST_F(CQMXTXClipTest, ClipsThatACopySharesAreDeletedOnce)
{
    int deleted = 0;
    auto copy = std::make_unique<CQMXTXClip>();
    {
        CQMXTXClip owner;
        owner.SetStartTime(7);
        owner.SetClips(new CPictureClip(kFromBase, 0, 1, &deleted), new CPictureClip(kToBase, 0, 1, &deleted));
        owner.SetEffectModule(QMX_PROBE_EFFECT_NAME);
        owner.SetEffectType(3);
        copy->CopyFrom(&owner);
        EXPECT_EQ(copy->GetFromClip(), owner.GetFromClip());
    }
    EXPECT_EQ(deleted, 0);
    EXPECT_EQ(copy->GetStartTime(), 7U);
    ASSERT_TRUE(copy->Open(request));
    EXPECT_EQ(FrameOf(*copy, 7).at(1), 3U);
    copy->SetToClip(nullptr);
    EXPECT_EQ(deleted, 1);
    copy.reset();
    EXPECT_EQ(deleted, 2);
}

TEST_F(CQMXTXClipTest, CopyFromAnotherKindChangesNothing)
{
    CQMXBaseClip other(QMXClipType_Base);
    other.SetStartTime(5);
    clip->CopyFrom(&other);
    clip->CopyFrom(nullptr);
    clip->CopyFrom(clip.get());
    EXPECT_EQ(clip->GetStartTime(), 1'000U);
    EXPECT_EQ(clip->GetFromClip(), m_pFrom);
}

TEST_F(CQMXTXClipTest, SetClipsUnloadsTheModule)
{
    ASSERT_TRUE(clip->Open(request));
    clip->SetClips(nullptr, nullptr);
    EXPECT_TRUE(FrameAt(1'025).empty());
}

TEST_F(CQMXTXClipTest, ADuplicateHasClipsOfItsOwnAndTheFactorysEffect)
{
    CQMXTXClip source;
    source.SetDuration(50);
    source.SetEffectType(4);
    source.SetEffectModule(QMX_PROBE_EFFECT_NAME);
    source.SetClips(CreateClipByClipType(QMXClipType_Color), CreateClipByClipType(QMXClipType_Transition));
    source.GetFromClip()->SetDuration(77);
    auto* const inner = dynamic_cast<CQMXTXClip*>(source.GetToClip());
    ASSERT_NE(inner, nullptr);
    inner->SetFromClip(CreateClipByClipType(QMXClipType_Video));

    const std::unique_ptr<IQMXBaseClip> copy(DuplicateClip(&source));
    auto* const transition = dynamic_cast<CQMXTXClip*>(copy.get());
    ASSERT_NE(transition, nullptr);
    EXPECT_EQ(transition->GetDuration(), 50U);
    ASSERT_NE(transition->GetFromClip(), nullptr);
    EXPECT_NE(transition->GetFromClip(), source.GetFromClip());
    EXPECT_EQ(transition->GetFromClip()->GetDuration(), 77U);
    auto* const innerCopy = dynamic_cast<CQMXTXClip*>(transition->GetToClip());
    ASSERT_NE(innerCopy, nullptr);
    ASSERT_NE(innerCopy->GetFromClip(), nullptr);
    EXPECT_EQ(innerCopy->GetFromClip()->GetClipType(), QMXClipType_Video);
    transition->SetClips(nullptr, nullptr);
    EXPECT_TRUE(transition->Open(request));
    EXPECT_FALSE(transition->IsVideoOpened()); // without the module
}

TEST_F(CQMXTXClipTest, IsSilent)
{
    std::uint8_t* pSound = nullptr;
    std::uint32_t cb = 0;
    EXPECT_EQ(clip->ReadAudio(&pSound, &cb), 5'760U);
    std::free(pSound);
}
} // namespace
