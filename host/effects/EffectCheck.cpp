#include "host/effects/EffectCheck.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

namespace qmx::host
{
namespace
{
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kGuard = 4096; // bytes before and behind every picture that nobody may touch
constexpr std::uint8_t kGuardByte = 0xA5;

struct Size
{
    std::uint32_t width;
    std::uint32_t height;
};
constexpr Size kSizes[] = {{1, 1}, {1, 7}, {7, 1}, {17, 9}, {320, 180}, {641, 359}};
constexpr float kProgresses[] = {0.001F, 0.25F, 0.5F, 0.75F, 0.999F};

/// A picture between guards.
Bytes Guarded(const Size& size, std::uint8_t byte)
{
    const std::size_t cb = std::size_t{size.width} * size.height * 4;
    Bytes bytes(cb + 2 * kGuard, kGuardByte);
    std::fill_n(bytes.begin() + kGuard, cb, byte);
    return bytes;
}

/// Every byte value, and pixels of every transparency.
void FillPicture(Bytes& guarded, std::uint32_t seed)
{
    for (std::size_t i = kGuard; i + kGuard < guarded.size(); ++i)
    {
        seed = seed * 1664525U + 1013904223U; // Numerical Recipes' generator
        const bool isOpaque = i % 4 == 3 && i / 4 % 64 < 32;
        guarded[i] = isOpaque ? 255 : static_cast<std::uint8_t>(seed >> 24);
    }
}

bool GuardsHold(const Bytes& guarded)
{
    const auto isGuard = [](std::uint8_t byte) { return byte == kGuardByte; };
    return std::all_of(guarded.begin(), guarded.begin() + kGuard, isGuard) &&
           std::all_of(guarded.end() - kGuard, guarded.end(), isGuard);
}

/// Adds @p rule once, with where it was broken first.
void AddFault(std::vector<std::string>& faults, const std::string& rule, const Size& size, float progress)
{
    const auto isThis = [&](const std::string& fault) { return fault.rfind(rule, 0) == 0; };
    if (std::any_of(faults.begin(), faults.end(), isThis))
        return;
    char number[32];
    const std::to_chars_result end = std::to_chars(number, number + sizeof number, progress);
    faults.push_back(rule + " (" + std::to_string(size.width) + " x " + std::to_string(size.height) + ", progress " +
                     std::string(number, end.ptr) + ")");
}
} // namespace

struct EffectCheck::Scene
{
    explicit Scene(const Size& s) : size(s), from(Guarded(s, 0)), to(Guarded(s, 0))
    {
        FillPicture(from, 1);
        FillPicture(to, 2);
    }

    Size size;
    Bytes from;
    Bytes to;
};

struct EffectCheck::Result
{
    Bytes output; ///< with its guards
    bool inputsKept = true;
};

EffectCheck::Result EffectCheck::Run(const Scene& scene, std::uint32_t type, float progress, std::uint8_t before) const
{
    Result result{Guarded(scene.size, before), true};
    Bytes from = scene.from;
    Bytes to = scene.to;
    tagTxEffectParam param{};
    param.pOutput = result.output.data() + kGuard;
    param.pFrom = from.data() + kGuard;
    param.pTo = to.data() + kGuard;
    param.nWidth = scene.size.width;
    param.nHeight = scene.size.height;
    param.nEffectType = type;
    param.fProgress = progress;
    m_apply(param);
    result.inputsKept = from == scene.from && to == scene.to;
    return result;
}

void EffectCheck::CheckEnds(const Scene& scene, std::uint32_t type, std::vector<std::string>& faults) const
{
    if (Run(scene, type, 0, 0x11).output != scene.from)
        AddFault(faults, "does not begin with the from picture", scene.size, 0);
    if (Run(scene, type, 1, 0x11).output != scene.to)
        AddFault(faults, "does not end with the to picture", scene.size, 1);
}

void EffectCheck::CheckWriting(const Scene& scene, std::uint32_t type, float progress,
                               std::vector<std::string>& faults) const
{
    const Result result = Run(scene, type, progress, 0x00);
    if (!GuardsHold(result.output))
        AddFault(faults, "writes beside the output", scene.size, progress);
    if (!result.inputsKept)
        AddFault(faults, "writes into a picture that goes in", scene.size, progress);
    const bool isOutside = !(progress >= 0 && progress <= 1);
    if (!isOutside && Run(scene, type, progress, 0xFF).output != result.output)
        AddFault(faults, "leaves pixels unwritten, or gives another picture each time", scene.size, progress);
}

void EffectCheck::CheckThreads(const Scene& scene, std::uint32_t type, std::vector<std::string>& faults) const
{
    constexpr float kProgress = 0.4F;
    const Bytes alone = Run(scene, type, kProgress, 0x22).output;
    Bytes together[4];
    std::vector<std::thread> threads;
    for (Bytes& output : together)
    {
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < 4; ++i)
                    output = Run(scene, type, kProgress, 0x22).output;
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    if (std::any_of(std::begin(together), std::end(together), [&](const Bytes& output) { return output != alone; }))
        AddFault(faults, "gives another picture when several threads call it", scene.size, kProgress);
}

std::vector<std::string> EffectCheck::Faults(std::uint32_t type) const
{
    std::vector<std::string> faults;
    for (const Size& size : kSizes)
    {
        const Scene scene(size);
        CheckEnds(scene, type, faults);
        for (const float progress : kProgresses)
            CheckWriting(scene, type, progress, faults);
        for (const float progress : {-1.0F, 2.0F, std::numeric_limits<float>::infinity(), std::nanf("")})
            CheckWriting(scene, type, progress, faults);
        CheckThreads(scene, type, faults);
    }
    return faults;
}
} // namespace qmx::host
