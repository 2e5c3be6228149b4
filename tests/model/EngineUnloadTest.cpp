// A program that loads the engine at run time: what the cache still holds goes when the library is unloaded.
#include "engine/clips/QMXTitleClip.h"
#include "engine/decoders/IDecoder.h"
#include "engine/platform/SampleBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>
#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <link.h>
#endif

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

// As the compilers that build the tests mangle it, on both platforms.
constexpr const char* kGetDecoder = "_Z10GetDecoderNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEERK10tagDecProp";

#if defined(_WIN32)
void* Load()
{
    return LoadLibraryA(QMX_ENGINE_LIBRARY);
}
void* Find(void* library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
bool Unload(void* library)
{
    return FreeLibrary(static_cast<HMODULE>(library)) != 0;
}
bool IsLoaded()
{
    return GetModuleHandleA(QMX_ENGINE_LIBRARY) != nullptr;
}
#else
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

void* Load()
{
    void* const library = dlopen(QMX_ENGINE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    PinLibrariesBelowTheEngine();
    return library;
}
void* Find(void* library, const char* name)
{
    return dlsym(library, name);
}
bool Unload(void* library)
{
    return dlclose(library) == 0;
}
bool IsLoaded()
{
    return dlopen(QMX_ENGINE_LIBRARY, RTLD_NOW | RTLD_NOLOAD) != nullptr;
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
#endif

TEST(EngineLibrary, ReleasesTheDecodersOfTheCacheWhenItIsUnloaded)
{
    const std::uint64_t before = LiveFrames();
    void* const library = Load();
    ASSERT_NE(library, nullptr);
    using GetDecoderFunction = IDecoder* (*)(std::wstring, const tagDecProp&);
    const auto getDecoder = reinterpret_cast<GetDecoderFunction>(Find(library, kGetDecoder));
    ASSERT_NE(getDecoder, nullptr);

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

    EXPECT_TRUE(Unload(library));
    ASSERT_FALSE(IsLoaded());
    EXPECT_EQ(LiveFrames(), before);
}
} // namespace
