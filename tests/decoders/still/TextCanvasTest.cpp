// What titles and keystrokes share: what they ask of the services, and what happens where those are missing.
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "engine/decoders/still/TitleDecoder.h"
#include "tests/decoders/still/FakeTextServices.h"
#include "tests/decoders/still/TextFrames.h"

namespace
{
using text_test::Frame;
using text_test::Record;

class CTextCanvasTest : public text_test::TextTest
{
protected:
    CTextCanvasTest()
    {
        services = {};
        item.text = L"Hill";
        item.textLength = 4;
        item.fontName = text_test::kFamily;
        key.text = L"Hill";
        key.fontName = text_test::kFamily;
    }
    ~CTextCanvasTest() override { services = {}; }
    RefPtr<CTitleDecoder> MakeTitle(std::uint32_t width = 200, std::uint32_t height = 100)
    {
        RefPtr<CTitleDecoder> decoder = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
        EXPECT_TRUE(decoder->Initialize(Record(width, height, kDecoderTitle)));
        EXPECT_TRUE(decoder->InitializeTitleText({&item}, 0));
        return decoder;
    }
    RefPtr<CKeystrokeDecoder> MakeKeystrokes()
    {
        RefPtr<CKeystrokeDecoder> decoder = RefPtr<CKeystrokeDecoder>::Adopt(new CKeystrokeDecoder);
        EXPECT_TRUE(decoder->Initialize(Record(200, 100, kDecoderKeystroke)));
        EXPECT_TRUE(decoder->InitializeKeystrokeText({&key}, 0));
        EXPECT_TRUE(decoder->InitializeLeftAndTopAndWidth(0, 0, 1));
        return decoder;
    }
    template <class T> static Frame FrameOf(const RefPtr<T>& decoder, std::uint64_t time = 0)
    {
        bool flag = false;
        return text_test::Take(decoder->GetClipVideoFrame(time, flag));
    }

    FakeTextServices& services = FakeTextServices::Get();
    tagQMXTitleTextInfo item;
    tagQMXKeystrokeInfo key;
};

TEST_F(CTextCanvasTest, TriesHardwareThenSoftware)
{
    MakeTitle();
    ASSERT_EQ(services.devices.size(), 2U);
    EXPECT_EQ(services.devices[0].type, D3D_DRIVER_TYPE_HARDWARE);
    EXPECT_EQ(services.devices[1].type, D3D_DRIVER_TYPE_WARP);
    for (const auto& request : services.devices)
    {
        EXPECT_EQ(request.flags, D3D11_CREATE_DEVICE_BGRA_SUPPORT);
        EXPECT_EQ(request.levels,
                  (std::vector{D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0, D3D_FEATURE_LEVEL_10_1}));
        EXPECT_EQ(request.sdkVersion, 7U);
    }
}

TEST_F(CTextCanvasTest, TriesTheReferenceDeviceLast)
{
    services.noDevice = {D3D_DRIVER_TYPE_HARDWARE, D3D_DRIVER_TYPE_WARP};
    const RefPtr<CTitleDecoder> decoder = MakeTitle();
    ASSERT_EQ(services.devices.size(), 3U);
    EXPECT_EQ(services.devices[2].type, D3D_DRIVER_TYPE_REFERENCE);
    EXPECT_TRUE(FrameOf(decoder).IsTransparent());
}

TEST_F(CTextCanvasTest, MakesTexturesAndTargetAsDescribed)
{
    MakeTitle(201, 99);
    ASSERT_EQ(services.textures.size(), 2U);
    for (const D3D11_TEXTURE2D_DESC& desc : services.textures)
    {
        EXPECT_EQ(desc.Width, 201U);
        EXPECT_EQ(desc.Height, 99U);
        EXPECT_EQ(desc.MipLevels, 1U);
        EXPECT_EQ(desc.ArraySize, 1U);
        EXPECT_EQ(desc.Format, DXGI_FORMAT_B8G8R8A8_UNORM);
        EXPECT_EQ(desc.SampleDesc.Count, 1U);
        EXPECT_EQ(desc.SampleDesc.Quality, 0U);
        EXPECT_EQ(desc.MiscFlags, 0U);
    }
    EXPECT_EQ(services.textures[0].Usage, D3D11_USAGE_DEFAULT);
    EXPECT_EQ(services.textures[0].BindFlags, 0x28U);
    EXPECT_EQ(services.textures[0].CPUAccessFlags, 0U);
    EXPECT_EQ(services.textures[1].Usage, D3D11_USAGE_STAGING);
    EXPECT_EQ(services.textures[1].BindFlags, 0U);
    EXPECT_EQ(services.textures[1].CPUAccessFlags, 0x20000U);
    ASSERT_EQ(services.targets.size(), 1U);
    EXPECT_EQ(services.targets[0].type, D2D1_RENDER_TARGET_TYPE_DEFAULT);
    EXPECT_EQ(services.targets[0].pixelFormat.format, DXGI_FORMAT_B8G8R8A8_UNORM);
    EXPECT_EQ(services.targets[0].pixelFormat.alphaMode, D2D1_ALPHA_MODE_PREMULTIPLIED);
    EXPECT_EQ(services.targets[0].dpiX, 96);
    EXPECT_EQ(services.targets[0].dpiY, 96);
}

TEST_F(CTextCanvasTest, EachServiceThatIsMissingMakesFramesTransparent)
{
    for (const char* const pService :
         {"D3D11CreateDevice", "D2D1CreateFactory", "DWriteCreateFactory", "CreateTexture2D", "CreateStagingTexture",
          "CreateDxgiSurfaceRenderTarget", "GetSystemFontCollection", "CreateTextFormat", "CreateTextLayout",
          "CreateSolidColorBrush", "Map"})
    {
        services = {};
        services.failing = {pService};
        for (int round = 0; round < 2; ++round)
        {
            const Frame title = FrameOf(MakeTitle());
            EXPECT_EQ(title.width, 200U) << pService;
            EXPECT_TRUE(title.IsTransparent()) << pService;
            const Frame keystrokes = FrameOf(MakeKeystrokes());
            EXPECT_EQ(keystrokes.height, 100U) << pService;
            EXPECT_TRUE(keystrokes.IsTransparent()) << pService;
        }
    }
    services = {};
    EXPECT_FALSE(FrameOf(MakeTitle()).IsTransparent());
    EXPECT_FALSE(FrameOf(MakeKeystrokes()).IsTransparent());
}

TEST_F(CTextCanvasTest, AMissingFamilyLeavesOutItsTextOnly)
{
    services.missingFamily = {L"Gone"};
    tagQMXTitleTextInfo gone = item;
    gone.fontName = L"Gone";
    const RefPtr<CTitleDecoder> decoder = MakeTitle();
    const Frame alone = FrameOf(decoder);
    decoder->InitializeTitleText({&gone, &item}, 0);
    EXPECT_EQ(FrameOf(decoder).bgra, alone.bgra);
}

TEST_F(CTextCanvasTest, RowsThatLieFurtherApartLandRight)
{
    const Frame titleExpected = FrameOf(MakeTitle());
    const Frame keysExpected = FrameOf(MakeKeystrokes());
    ASSERT_FALSE(titleExpected.IsTransparent());
    for (const UINT padding : {4U, 56U, 1000U})
    {
        services = {};
        services.rowPadding = padding;
        const RefPtr<CTitleDecoder> decoder = MakeTitle();
        EXPECT_EQ(FrameOf(decoder).bgra, titleExpected.bgra) << padding;
        EXPECT_EQ(FrameOf(decoder).bgra, titleExpected.bgra) << padding;
        EXPECT_EQ(FrameOf(MakeKeystrokes()).bgra, keysExpected.bgra) << padding;
        EXPECT_EQ(services.maps, 3);
        EXPECT_EQ(services.unmaps, 3);
    }
}

TEST_F(CTextCanvasTest, ADeviceThatIsLostIsMadeAnew)
{
    const RefPtr<CTitleDecoder> decoder = MakeTitle();
    const Frame expected = FrameOf(decoder);
    item.x = 0.125;
    const Frame moved = FrameOf(decoder);
    item.x = 0;
    services.endDraw = {D2DERR_RECREATE_TARGET};
    const std::size_t devices = services.devices.size();
    EXPECT_EQ(FrameOf(decoder).bgra, expected.bgra);
    EXPECT_EQ(services.devices.size(), devices + 2);
    item.x = 0.125;
    EXPECT_EQ(FrameOf(decoder).bgra, moved.bgra);
    // It may be gone for good.
    item.x = 0;
    services.endDraw = {D2DERR_RECREATE_TARGET};
    services.failing = {"D3D11CreateDevice"};
    EXPECT_TRUE(FrameOf(decoder).IsTransparent());
    EXPECT_TRUE(FrameOf(decoder).IsTransparent());
}

TEST_F(CTextCanvasTest, ADrawingThatFailsIsTransparentAndTriedAgain)
{
    const RefPtr<CTitleDecoder> decoder = MakeTitle();
    services.endDraw = {E_FAIL};
    EXPECT_TRUE(FrameOf(decoder).IsTransparent());
    EXPECT_FALSE(FrameOf(decoder).IsTransparent());
    EXPECT_EQ(services.draws, 2);
}

// ---- what is asked for ---------------------------------------------------------------------------------------------

TEST_F(CTextCanvasTest, ATextIsSetAsItsRecordSays)
{
    item.text = L"Hillside";
    item.fontSize = 72;
    item.fontWeight = 700;
    item.italic = true;
    FrameOf(MakeTitle(640, 1080));
    ASSERT_EQ(services.formats.size(), 1U);
    EXPECT_EQ(services.formats[0].family, text_test::kFamily);
    EXPECT_EQ(services.formats[0].size, 270);
    EXPECT_EQ(services.formats[0].weight, DWRITE_FONT_WEIGHT_BOLD);
    EXPECT_EQ(services.formats[0].style, DWRITE_FONT_STYLE_ITALIC);
    EXPECT_FALSE(services.formats[0].locale.empty());
    ASSERT_EQ(services.layouts.size(), 1U);
    EXPECT_EQ(services.layouts[0].text, L"Hill"); // the length says four
    EXPECT_EQ(services.layouts[0].maxWidth, 1'280);
    EXPECT_EQ(services.layouts[0].maxHeight, 1'080);
}

TEST_F(CTextCanvasTest, ALabelIsSetUprightAndOfNormalWeight)
{
    key.fontSize = 20;
    const RefPtr<CKeystrokeDecoder> decoder = MakeKeystrokes();
    decoder->SetDecoderProperty(Record(1920, 1080, kDecoderKeystroke));
    decoder->InitializeKeystrokeText({&key}, 0);
    decoder->InitializeLeftAndTopAndWidth(0, 0, 1);
    FrameOf(decoder);
    ASSERT_EQ(services.formats.size(), 1U);
    EXPECT_EQ(services.formats[0].size, 75);
    EXPECT_EQ(services.formats[0].weight, DWRITE_FONT_WEIGHT_NORMAL);
    EXPECT_EQ(services.formats[0].style, DWRITE_FONT_STYLE_NORMAL);
    ASSERT_EQ(services.layouts.size(), 1U);
    EXPECT_EQ(services.layouts[0].maxWidth, 1'920);
    EXPECT_EQ(services.layouts[0].maxHeight, 1'080);
}

TEST_F(CTextCanvasTest, TexturesAreMadeAnewForAnotherSizeOnly)
{
    const RefPtr<CTitleDecoder> title = MakeTitle();
    const RefPtr<CKeystrokeDecoder> keystrokes = MakeKeystrokes();
    tagDecProp prop = Record(200, 100, kDecoderTitle);
    prop.currentTime = 5;
    title->SetDecoderProperty(prop);
    keystrokes->SetDecoderProperty(prop);
    EXPECT_EQ(services.textures.size(), 4U);
    prop.width = 201;
    title->SetDecoderProperty(prop);
    keystrokes->SetDecoderProperty(prop);
    EXPECT_EQ(services.textures.size(), 8U);
}

TEST_F(CTextCanvasTest, AnUnchangedTitleIsNotDrawnAgain)
{
    const RefPtr<CTitleDecoder> decoder = MakeTitle();
    const Frame first = FrameOf(decoder);
    EXPECT_EQ(FrameOf(decoder, kTimePerSecond).bgra, first.bgra);
    EXPECT_EQ(services.draws, 1);
    EXPECT_EQ(services.layouts.size(), 1U);
    tagQMXTitleTextInfo mover = item;
    mover.text = L"Dale";
    mover.animation = QMXTitleAnimation_LeftToRight;
    decoder->InitializeTitleText({&item, &mover}, 0);
    FrameOf(decoder, 2 * kTimePerSecond);
    FrameOf(decoder, 3 * kTimePerSecond);
    EXPECT_EQ(services.draws, 3);
    EXPECT_EQ(services.layouts.size(), 2U) << "layouts are kept";
}

TEST_F(CTextCanvasTest, UnchangedLabelsAreNotDrawnAgainAndOldLayoutsGo)
{
    const RefPtr<CKeystrokeDecoder> decoder = MakeKeystrokes();
    tagQMXKeystrokeInfo second = key;
    second.text = L"B";
    second.startTime = kTimePerSecond;
    tagQMXKeystrokeInfo third = key;
    third.startTime = 9 * kTimePerSecond;
    decoder->InitializeKeystrokeText({&key, &second, &third}, 0);
    const Frame first = FrameOf(decoder, kTimePerSecond);
    EXPECT_EQ(FrameOf(decoder, 2 * kTimePerSecond).bgra, first.bgra);
    EXPECT_EQ(services.draws, 1);
    FrameOf(decoder, 9 * kTimePerSecond);
    EXPECT_EQ(services.draws, 2);
    EXPECT_EQ(services.layouts.size(), 2U) << "the same text is not set again";
    FrameOf(decoder, kTimePerSecond);
    EXPECT_EQ(services.layouts.size(), 3U) << "the other one had gone";
}

TEST_F(CTextCanvasTest, PixelsAreCopiedOnceADrawing)
{
    const RefPtr<CTitleDecoder> decoder = MakeTitle();
    FrameOf(decoder);
    FrameOf(decoder);
    item.y = 0.25;
    FrameOf(decoder);
    EXPECT_EQ(services.draws, 2);
    EXPECT_EQ(services.copies, 2);
    EXPECT_EQ(services.brushes, 2);
}
} // namespace
