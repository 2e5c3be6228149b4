/// @file MediaUrl.h
/// Paths of media files as the URLs by which timelines name them.
#pragma once

#include "host/project/JsonTree.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qmx::host
{
enum class PathStyle
{
    Posix,
    Windows ///< drives, shares, and backslashes as separators
};

/// The style of the system that this program was built for.
PathStyle NativePathStyle();

/// What a URL says about a file.
struct MediaLocation
{
    std::string path;   ///< UTF-8, never empty; of Windows style with forward slashes
    std::string remark; ///< what is odd about it, for a report; mostly empty
};

/// Understands file:///path, file://localhost/path, file:/path, file:///C:/path, file://server/share/path, plain paths
/// absolute or relative, with percent-encoding or without. Only a path whose every "%" is followed by two hexadecimal
/// digits counts as encoded.
/// @param reason  [out] why there is no file: another scheme, an empty path, bytes that are no text
/// @return nothing when the URL names no local file
std::optional<MediaLocation> LocationOfUrl(std::string_view url, PathStyle style, std::string& reason);

/// The URL of a path: "file://" and the path when it is absolute in @p style, else a relative reference.
/// @param path  bytes as they are; what is not an unreserved character of URLs is percent-encoded
std::string UrlOfPath(std::string_view path, PathStyle style);

/// A path that counted from folder @p from, as it counts from folder @p to. Absolute ones stay as they are, and so do
/// all when the folders are one. @param path  UTF-8
std::string RebasedPath(const std::string& path, const std::filesystem::path& from, const std::filesystem::path& to);

/// Rebases the picture behind a key, which is named in the settings of a clip as paths are.
void RebaseBackground(std::vector<JsonMember>& settings, const std::filesystem::path& from,
                      const std::filesystem::path& to);

/// Whether @p text is valid UTF-8 without the character NUL.
bool IsPlainUtf8(std::string_view text);
} // namespace qmx::host
