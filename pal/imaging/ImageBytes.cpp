#include "pal/imaging/ImageBytes.h"

#include "pal/imaging/ImageCodec.h"
#include "pal/imaging/ImageLimits.h"
#include "pal/imaging/LargePages.h"
#include "pal/kernel/PathText.h"

#include <wincodec.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace pal
{
namespace
{
struct Descriptor
{
    explicit Descriptor(const std::string& path) : number(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~Descriptor()
    {
        if (number >= 0)
            close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

std::size_t ReadUpTo(int descriptor, BYTE* pTarget, std::size_t cb)
{
    std::size_t done = 0;
    while (done < cb)
    {
        const ssize_t got = read(descriptor, pTarget + done, cb - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

ImageBytes Allocate(std::size_t cb, BYTE*& pWritable)
{
    std::shared_ptr<BYTE[]> pBytes(new BYTE[cb]); // not initialised: the file is read over it
    pWritable = pBytes.get();
    ExpectWholeWrite(pWritable, cb);
    return {std::move(pBytes), cb};
}
} // namespace

HRESULT ImageBytes::ReadFile(const std::wstring& path, ImageBytes& bytes)
{
    const Descriptor file(ToPathBytes(path));
    if (file.number < 0)
        return HRESULT_FROM_WIN32(errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
    struct stat facts = {};
    if (fstat(file.number, &facts) != 0 || !S_ISREG(facts.st_mode))
        return HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);

    BYTE* pHead = nullptr;
    ImageBytes head = Allocate(kImageSignatureBytes, pHead);
    const std::size_t cbHead = ReadUpTo(file.number, pHead, kImageSignatureBytes);
    if (IdentifyImage(head.Part(0, cbHead)) == ImageKind::None)
        return WINCODEC_ERR_COMPONENTNOTFOUND; // before a film is read into memory
    if (static_cast<std::uint64_t>(facts.st_size) > kMaxImageFileBytes)
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    const auto cb = static_cast<std::size_t>(facts.st_size);
    if (cb <= cbHead)
    {
        bytes = head.Part(0, cbHead);
        return S_OK;
    }
    BYTE* pAll = nullptr;
    const ImageBytes all = Allocate(cb, pAll);
    std::memcpy(pAll, pHead, cbHead);
    bytes = all.Part(0, cbHead + ReadUpTo(file.number, pAll + cbHead, cb - cbHead));
    return S_OK;
}
} // namespace pal
