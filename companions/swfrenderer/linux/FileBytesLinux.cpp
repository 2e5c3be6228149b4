#include "companions/swfrenderer/FileBytes.h"
#include "companions/swfrenderer/Limits.h"
#include "pal/kernel/PathText.h"

#include <cstdio>
#include <memory>

namespace swf
{
std::vector<std::uint8_t> ReadFileBytes(const wchar_t* path)
{
    struct Close
    {
        void operator()(std::FILE* p) const { std::fclose(p); }
    };
    const std::unique_ptr<std::FILE, Close> file(std::fopen(pal::ToPathBytes(path).c_str(), "rbe"));
    std::vector<std::uint8_t> bytes;
    if (!file || std::fseek(file.get(), 0, SEEK_END) != 0)
        return bytes;
    const long size = std::ftell(file.get());
    if (size <= 0 || static_cast<std::size_t>(size) > kMaxFileBytes || std::fseek(file.get(), 0, SEEK_SET) != 0)
        return bytes;
    bytes.resize(static_cast<std::size_t>(size));
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    return bytes;
}
} // namespace swf
