/// @file ReplayMain.cpp
/// A main for fuzz targets that only plays inputs back: every file named, and every file in the folders named.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb);

namespace
{
bool Replay(const std::filesystem::path& path)
{
    std::ifstream input(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
    if (input.bad() || !input.is_open())
        return false;
    std::printf("%s\n", path.c_str()); // before it runs: the last line names the input that crashed
    std::fflush(stdout);
    (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    int played = 0;
    for (int i = 1; i < argc; ++i)
    {
        if (!std::filesystem::is_directory(argv[i]))
        {
            played += Replay(argv[i]) ? 1 : 0;
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
            if (entry.is_regular_file())
                played += Replay(entry.path()) ? 1 : 0;
    }
    if (played == 0)
        std::fputs("no inputs\n", stderr);
    return played > 0 ? 0 : 1;
}
