#pragma once

#include <string>
#include <string_view>

namespace ambrel {

/// A file-system path, or the path of a file URL, as plain text: bytes as the user or the system
/// gave them, never resolved and never percent-encoded. Relative paths stay relative.
using Path = std::string;

/// Text operations on paths. None of them touches the file system, and a trailing slash never
/// counts: shell completion adds one to every folder.
namespace paths {

/// `left` and `right` with exactly one "/" between them. A `right` that begins with "/" does not
/// replace `left`: joining "/out" and "/etc/x.app" gives "/out/etc/x.app". An empty side leaves the
/// other as it is.
Path join(std::string_view left, std::string_view right);

/// `path` without its trailing slashes; a path of slashes only becomes "/".
std::string_view withoutTrailingSlashes(std::string_view path);

/// The last component: "c.app" for "/a/b/c.app/". "/" for the root, empty for an empty path.
std::string_view lastComponent(std::string_view path);

/// The path of the folder that holds `path`: "/a/b" for "/a/b/c.app/", "/" for "/a", and empty
/// for a bare name.
std::string_view deletingLastComponent(std::string_view path);

/// What follows the last dot of the last component, or empty. A name that only begins with a dot
/// (".profile") has no extension.
std::string_view extension(std::string_view path);

/// The last component without its extension and the dot before it: "Foo.bar" for "/a/Foo.bar.app".
std::string_view stem(std::string_view path);

} // namespace paths
} // namespace ambrel
