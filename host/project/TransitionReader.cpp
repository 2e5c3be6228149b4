#include "host/project/TransitionReader.h"

#include "host/project/EffectNames.h"

namespace qmx::host
{
namespace
{
using Kind = JsonValue::Kind;

/// A file name without a folder: a project says what is shown, not what code is run from anywhere.
std::string ReadModule(ObjectReader& reader)
{
    if (!reader.FindAny("module"))
        return kDefaultEffectModule;
    const std::string& name = reader.NeedFileName("module");
    if (name.find_first_of("/\\:") != std::string::npos || name == "." || name == "..")
        reader.Fail("module", "must be the name of a file beside the program, without a folder");
    return name;
}

std::uint32_t ReadEffect(ObjectReader& reader, const std::string& module)
{
    if (module == kDefaultEffectModule)
        return reader.Choice("effect", kEffectNames, kEffectNames[0].value);
    return reader.WholeOr("effect", 0, UINT32_MAX); // names of other modules are not known
}
} // namespace

void ReadTransitionFields(ObjectReader& reader, ProjectClip& clip, const ClipSurroundings& surroundings)
{
    clip.pTransition = std::make_unique<ProjectTransition>();
    ProjectTransition& transition = *clip.pTransition;
    transition.module = ReadModule(reader);
    transition.effect = ReadEffect(reader, transition.module);
    if (reader.FindAny("progress"))
        transition.progress = reader.Float("progress", 0, 0, 1);
    // The cut lies in the middle: there the from clip ends and the to clip begins. With one progress for every picture
    // there is no middle.
    const std::uint64_t middle = clip.duration / 2;
    const bool isCut = !transition.progress && middle > 0;
    const auto read = [&](const char* pName, std::uint64_t start, std::uint64_t end)
    {
        const JsonValue* const pSide = reader.FindAny(pName);
        return pSide
                   ? std::optional(ReadTransitionSide(*pSide, reader.PlaceOf(pName), surroundings, start, end - start))
                   : std::nullopt;
    };
    transition.from = read("from", clip.start, isCut ? clip.start + middle : clip.End());
    transition.to = read("to", isCut ? clip.start + middle : clip.start, clip.End());
    if (!transition.from && !transition.to)
        reader.Fail("from", "is missing, and so is \"to\"; a transition needs one of them at least");
}
} // namespace qmx::host
