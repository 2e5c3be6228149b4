#include "tests/support/MediaFolder.h"

#include <cstdlib>
#include <random>

namespace test_support
{
namespace
{
std::filesystem::path FromEnvironment(const char* name, const char* configured)
{
    const char* const value = std::getenv(name);
    return value && *value ? value : configured;
}

struct Scratch
{
    Scratch()
    {
        std::random_device random;
        do
            folder = std::filesystem::temp_directory_path() / ("qmx-tests-" + std::to_string(random()));
        while (!std::filesystem::create_directory(folder));
    }
    ~Scratch()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::filesystem::path folder;
};
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
    static const Scratch scratch;
    return scratch.folder;
}
} // namespace test_support
