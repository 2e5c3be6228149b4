#include "host/interchange/MediaUrl.h"

#include <algorithm>
#include <cstdint>

namespace qmx::host
{
namespace
{
bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// -1 when @p c is no hexadecimal digit.
int HexValue(char c)
{
    if (IsDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// "C:" or "C|" in front, which is no scheme: schemes have two letters at least.
bool HasDrive(std::string_view path)
{
    return path.size() >= 2 && IsLetter(path[0]) && (path[1] == ':' || path[1] == '|') &&
           (path.size() == 2 || path[2] == '/' || path[2] == '\\');
}

std::string_view SchemeOf(std::string_view url)
{
    const std::size_t colon = url.find(':');
    if (colon == std::string_view::npos || colon < 2 || !IsLetter(url[0]))
        return {};
    const auto isPart = [](char c) { return IsLetter(c) || IsDigit(c) || c == '+' || c == '-' || c == '.'; };
    const std::string_view scheme = url.substr(0, colon);
    return std::all_of(scheme.begin(), scheme.end(), isPart) ? scheme : std::string_view{};
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return lower;
}

std::string Decoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '%')
        {
            decoded += text[i];
            continue;
        }
        const int high = i + 1 < text.size() ? HexValue(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0)
            return std::string(text); // never was encoded
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

void TurnBackslashes(std::string& path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
}

/// Parts "//host" off a URL behind its scheme.
std::string_view TakeHost(std::string_view& rest)
{
    if (rest.substr(0, 2) != "//")
        return {};
    rest.remove_prefix(2);
    const std::size_t slash = std::min(rest.find('/'), rest.size());
    const std::string_view host = rest.substr(0, slash);
    if (HasDrive(host)) // file://C:/path, one slash short
        return {};
    rest.remove_prefix(slash);
    return host;
}
} // namespace

PathStyle NativePathStyle()
{
    return std::filesystem::path::preferred_separator == '/' ? PathStyle::Posix : PathStyle::Windows;
}

std::optional<MediaLocation> LocationOfUrl(std::string_view url, PathStyle style, std::string& reason)
{
    const auto refuse = [&](const char* pReason)
    {
        reason = pReason;
        return std::nullopt;
    };
    const std::string_view scheme = SchemeOf(url);
    std::string_view rest = url;
    std::string host;
    if (!scheme.empty())
    {
        if (Lower(scheme) != "file")
            return refuse("is no local file");
        rest.remove_prefix(scheme.size() + 1);
        host = Lower(TakeHost(rest));
        if (host == "localhost")
            host.clear();
    }
    MediaLocation location;
    location.path = Decoded(rest);
    if (!IsPlainUtf8(location.path))
        return refuse("is no UTF-8 text");
    if (location.path.empty() || (location.path == "/" && host.empty()))
        return refuse("names no file");
    if (!scheme.empty() && location.path[0] == '/' && HasDrive(std::string_view(location.path).substr(1)))
        location.path.erase(0, 1);
    // Without a scheme an encoded colon belongs to a name.
    const bool hasDrive = HasDrive(scheme.empty() ? rest : std::string_view(location.path));
    if (hasDrive)
        location.path[1] = ':';
    const bool isShare = !host.empty() || location.path.substr(0, 2) == "\\\\";
    if (hasDrive || isShare || style == PathStyle::Windows)
        TurnBackslashes(location.path);
    if (!host.empty())
        location.path = "//" + host + location.path;
    if (style == PathStyle::Posix && (hasDrive || isShare))
        location.remark = "is a path of Windows";
    return location;
}

std::string UrlOfPath(std::string_view path, PathStyle style)
{
    std::string plain(path);
    if (style == PathStyle::Windows)
        TurnBackslashes(plain);
    const bool hasDrive = style == PathStyle::Windows && HasDrive(plain);
    const bool isShare = style == PathStyle::Windows && plain.substr(0, 2) == "//";
    std::string url;
    if (isShare)
        url = "file:"; // the server's name is the URL's host
    else if (hasDrive)
        url = "file:///";
    else if (plain.substr(0, 1) == "/")
        url = "file://";
    for (std::size_t i = 0; i < plain.size(); ++i)
    {
        const char c = plain[i];
        const bool isPlain = IsLetter(c) || IsDigit(c) || c == '-' || c == '.' || c == '_' || c == '~' || c == '/' ||
                             (hasDrive && i == 1);
        if (isPlain)
        {
            url += c;
            continue;
        }
        url += '%';
        url += "0123456789ABCDEF"[static_cast<unsigned char>(c) >> 4];
        url += "0123456789ABCDEF"[static_cast<unsigned char>(c) & 15];
    }
    return url;
}

std::string RebasedPath(const std::string& path, const std::filesystem::path& from, const std::filesystem::path& to)
{
    namespace fs = std::filesystem;
    if (from == to)
        return path;
    const fs::path here = fs::current_path(); // also for a folder without a name
    const auto folder = [&](const fs::path& name) { return (here / name / "").lexically_normal(); };
    const fs::path oldFolder = folder(from);
    const fs::path newFolder = folder(to);
    const bool isRooted =
        fs::path(path).has_root_directory() || HasDrive(path); // on Windows also "/x", without a drive
    if (isRooted || oldFolder == newFolder)
        return path;
    const fs::path target = (oldFolder / path).lexically_normal();
    const fs::path relative = target.lexically_relative(newFolder);
    return (relative.empty() ? target : relative).generic_string(); // empty: on another drive
}

void RebaseBackground(std::vector<JsonMember>& settings, const std::filesystem::path& from,
                      const std::filesystem::path& to)
{
    for (JsonMember& setting : settings)
    {
        if (setting.name != "key")
            continue;
        for (JsonMember& member : setting.value.members)
        {
            if (member.name == "background" && member.value.kind == JsonValue::Kind::Text)
                member.value.text = RebasedPath(member.value.text, from, to);
        }
    }
}

bool IsPlainUtf8(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();)
    {
        const auto byte = [&](std::size_t at)
        { return at < text.size() ? static_cast<std::uint8_t>(text[at]) : std::uint8_t{0}; };
        const std::uint8_t lead = byte(i);
        const std::size_t more = lead < 0x80   ? 0
                                 : lead < 0xc2 ? 9
                                 : lead < 0xe0 ? 1
                                 : lead < 0xf0 ? 2
                                 : lead < 0xf5 ? 3
                                               : 9;
        if (lead == 0 || more == 9)
            return false;
        for (std::size_t k = 1; k <= more; ++k)
        {
            if ((byte(i + k) & 0xc0) != 0x80)
                return false;
        }
        const std::uint8_t next = byte(i + 1); // overlong forms, surrogates, beyond the last code point
        if ((lead == 0xe0 && next < 0xa0) || (lead == 0xed && next > 0x9f) || (lead == 0xf0 && next < 0x90) ||
            (lead == 0xf4 && next > 0x8f))
            return false;
        i += more + 1;
    }
    return true;
}
} // namespace qmx::host
