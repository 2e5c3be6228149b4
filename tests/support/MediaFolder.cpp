#include "tests/support/MediaFolder.h"

#include <unistd.h>

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

struct Scratch
{
    Scratch() : folder(std::filesystem::temp_directory_path() / ("qmx-tests-" + std::to_string(getpid())))
    {
        std::filesystem::create_directories(folder);
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
