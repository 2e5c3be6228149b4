#include "host/interchange/TransitionNames.h"

#include "host/project/EffectNames.h"

#include <array>
#include <utility>

namespace qmx::host
{
namespace
{
/// Words of other programs' names, the telling ones first, and what comes nearest to them.
constexpr std::array<std::pair<const char*, const char*>, 17> kWords{{{"black", "fade-black"},
                                                                      {"dip", "fade-black"},
                                                                      {"white", "fade-white"},
                                                                      {"flash", "fade-white"},
                                                                      {"iris", "iris"},
                                                                      {"circle", "iris"},
                                                                      {"clock", "clock"},
                                                                      {"radial", "clock"},
                                                                      {"blind", "blinds"},
                                                                      {"page", "page-turn"},
                                                                      {"peel", "page-turn"},
                                                                      {"zoom", "zoom"},
                                                                      {"slide", "slide-over"},
                                                                      {"push", "push-left"},
                                                                      {"wipe", "wipe-right"},
                                                                      {"dissolve", "dissolve"},
                                                                      {"fade", "dissolve"}}};

std::string Simple(std::string_view text)
{
    std::string simple;
    for (const char c : text)
        simple += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c == '_' || c == ' ' ? '-' : c;
    return simple;
}
} // namespace

EffectMatch MatchEffect(std::string_view type, std::string_view name)
{
    if (type == kDissolveType)
        return {kEffectNames[0].pName, true};
    const std::string simpleName = Simple(name);
    const std::string simpleType = Simple(type);
    for (const NamedNumber& effect : kEffectNames)
    {
        if (simpleName == effect.pName || simpleType == effect.pName)
            return {effect.pName, true};
    }
    for (const std::string& text : {simpleName, simpleType})
    {
        for (const auto& [pWord, pEffect] : kWords)
        {
            if (text.find(pWord) != std::string::npos)
                return {pEffect, false};
        }
    }
    return {kEffectNames[0].pName, false};
}

std::string EffectName(const std::string& effect)
{
    for (const NamedNumber& known : kEffectNames)
    {
        if (effect == std::to_string(known.value))
            return known.pName;
    }
    return effect;
}
} // namespace qmx::host
