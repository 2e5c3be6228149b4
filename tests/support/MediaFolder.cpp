#include "tests/support/MediaFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>

namespace test_support
{
namespace
{
std::filesystem::path FromEnvironment(const char* name, const char* configured)
{
    const char* const value = std::getenv(name);
    return value && *value ? value : configured;
}
} // namespace

std::filesystem::path MediaFolder()
{
    return FromEnvironment("QMX_MEDIA_DIR", QMX_MEDIA_DIR);
}

std::filesystem::path CorpusFolder()
{
    return FromEnvironment("QMX_CORPUS_DIR", QMX_CORPUS_DIR);
}

std::filesystem::path ScratchFolder()
{
    static const TemporaryFolder scratch;
    return scratch.Path();
}
} // namespace test_support
