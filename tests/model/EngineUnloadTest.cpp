// A program that loads the engine at run time: what the cache still holds goes when the library is unloaded.
#include "engine/clips/QMXTitleClip.h"
#include "engine/decoders/IDecoder.h"
#include "engine/platform/SampleBuffer.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace
{
std::uint64_t LiveFrames()
{
    tagSampleBufferPoolInfo info;
    GetSampleBufferPoolInfo(&info);
    return info.nLive;
}

/// Keeps every other library loaded for good: those below the engine give some memory back only when the process ends.
void PinLibrariesBelowTheEngine()
{
    std::vector<std::string> names;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* names)
        {
            if (std::string_view(info->dlpi_name).find("libqmxengine") == std::string_view::npos)
                static_cast<std::vector<std::string>*>(names)->emplace_back(info->dlpi_name);
            return 0;
        },
        &names);
    for (const std::string& name : names)
        dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

/// Loads the engine. What the libraries below it take while they start, and give back only when the process ends, is no
/// leak: those that are unloaded with the engine could not be looked at any more.
void* LoadEngine()
{
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler disabler;
#endif
    return dlopen(QMX_ENGINE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
}

/// Loads the engine, draws a title and unloads it. @return whether something was to be seen on it
/// The classes' type information is in the library, which this program is not linked with.
__attribute__((no_sanitize("vptr"))) bool DrawTitleWithFreshEngine()
{
    void* const library = LoadEngine();
    if (library == nullptr)
        return false;
    using CreateFunction = IQMXBaseClip* (*)(QMXClipType);
    const auto create = reinterpret_cast<CreateFunction>(dlsym(library, "_Z20CreateClipByClipType11QMXClipType"));
    auto* const clip = create != nullptr ? static_cast<CQMXTitleClip*>(create(QMXClipType_Title)) : nullptr;
    bool visible = false;
    if (clip != nullptr)
    {
        auto* const item = new tagQMXTitleTextInfo;
        item->text = L"text";
        item->textLength = 4;
        item->fontName = L"DejaVu Sans";
        clip->AddTitleText(item);
        tagRenderProp request;
        request.width = 320;
        request.height = 288;
        const SampleBufferPtr frame = SampleBufferPtr::Adopt(clip->GetFrame(request, 0, nullptr));
        std::uint8_t* pixels = nullptr;
        std::uint32_t cb = 0;
        if (frame && frame->GetBuffer(&pixels, &cb))
            visible = std::any_of(pixels, pixels + cb, [](std::uint8_t byte) { return byte != 0; });
        delete clip;
    }
    dlclose(library);
    return visible && dlopen(QMX_ENGINE_LIBRARY, RTLD_NOW | RTLD_NOLOAD) == nullptr;
}

TEST(EngineLibrary, DrawsTextAgainWhenItIsLoadedAgain)
{
    for (int round = 0; round < 3; ++round)
        EXPECT_TRUE(DrawTitleWithFreshEngine()) << round;
}

TEST(EngineLibrary, ReleasesTheDecodersOfTheCacheWhenItIsUnloaded)
{
    const std::uint64_t before = LiveFrames();
    void* const library = dlopen(QMX_ENGINE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    PinLibrariesBelowTheEngine();
    using GetDecoderFunction = IDecoder* (*)(std::wstring, const tagDecProp&);
    const auto getDecoder = reinterpret_cast<GetDecoderFunction>(
        dlsym(library, "_Z10GetDecoderNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEERK10tagDecProp"));
    ASSERT_NE(getDecoder, nullptr) << dlerror();

    tagDecProp prop(L"nothing.mp4", 0);
    prop.width = 16;
    prop.height = 16;
    IDecoder* const decoder = getDecoder(L"key", prop);
    ASSERT_NE(decoder, nullptr);
    bool flag = false;
    SampleBufferPtr frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag));
    EXPECT_TRUE(frame);
    frame = {};
    EXPECT_EQ(decoder->Release(), 1U);
    EXPECT_EQ(LiveFrames(), before + 1); // the decoder in the cache keeps its last frame

    EXPECT_EQ(dlclose(library), 0);
    ASSERT_EQ(dlopen(QMX_ENGINE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "the library is still loaded";
    EXPECT_EQ(LiveFrames(), before);
}
} // namespace
