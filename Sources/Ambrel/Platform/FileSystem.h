#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/OwnedFd.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// File operations. Those that answer a question never fail; the others throw FileError. A path
/// with a NUL byte in it names nothing and is refused. Descriptors are closed in children.
namespace ambrel::fileSystem {

enum class ItemKind { file, folder, symbolicLink, other };

/// Whether something exists at `path`, following symbolic links (a dangling link is nothing).
bool exists(const Path& path) noexcept;
/// Whether it is certain that nothing exists at `path`, following symbolic links. Where that cannot
/// be told, as in a folder closed to this user, both this and exists() are false.
bool isMissing(const Path& path) noexcept;
/// The kind of the item at `path`, a symbolic link not followed; absent when it cannot be read.
std::optional<ItemKind> kindOf(const Path& path) noexcept;
/// Whether `path` is a folder, following symbolic links.
bool isFolder(const Path& path) noexcept;
/// Whether `path` is a regular file, following links, that this user may execute.
bool isExecutableFile(const Path& path) noexcept;
/// Whether both paths lead to the same item, following symbolic links.
bool isSameItem(const Path& left, const Path& right) noexcept;
/// The same, and also when something is there that cannot be examined: for whoever must not take
/// one item for two.
bool mayBeSameItem(const Path& left, const Path& right) noexcept;
/// The process's working directory. Throws FileError when it is gone or cannot be told.
Path currentDirectory();
/// `path` made absolute against the working directory; "." and ".." are kept. Throws FileError
/// when a relative path has no working directory to lie in.
Path absolute(const Path& path);
/// `path` with every symbolic link resolved; absent when some part does not exist.
std::optional<Path> resolved(const Path& path);

/// The names in the folder, without "." and "..", in the order in which the system gives them.
std::vector<std::string> list(const Path& folder);
/// The file opened for appending, made when absent; never waits for the other side of a pipe that
/// stands there.
OwnedFd openForAppending(const Path& file);
/// The whole file. A folder is refused, and so is what holds more than 256 MB or does not end.
std::string read(const Path& file);
/// Writes over the file in place, making it when absent; after a failure it may be half written.
void write(const Path& file, std::string_view bytes);
/// Makes `file` hold `bytes`, replacing what is there (a link itself, not what it leads to) in one
/// step, with exactly the permission bits `mode` when that is given; after a failure everything is
/// as it was.
void replace(const Path& file, std::string_view bytes, std::optional<unsigned> mode = {});
/// Appends to a file that exists, in one write, so that what others append meanwhile stays whole. A
/// link in its place is refused.
void append(const Path& file, std::string_view bytes);
/// Appends to a file, which is made when absent; a link is followed. Never waits for the other side
/// of a pipe that stands there.
void appendOrMake(const Path& file, std::string_view bytes);
/// Copies the bytes of `source` (a link is followed) to the new file `destination`; fails if
/// something is there, and leaves nothing there when the copy fails.
void copyFile(const Path& source, const Path& destination);
/// Sets the permission bits of an item, following links.
void setPermissions(const Path& path, unsigned mode);
/// Makes the folder and all missing folders above it. A folder that exists is no error.
void createFolders(const Path& folder);
/// Makes one new folder with `mode`, whatever the mask; fails if something is there.
void createFolder(const Path& folder, unsigned mode);
/// Makes `link` a symbolic link holding `target` as its text; fails if something is there.
void createSymbolicLink(const Path& target, const Path& link);

/// Removes one item: an empty folder, or anything else that is no folder. A link is removed, not
/// followed. A folder with entries is never removed.
void removeItem(const Path& path);
/// Removes the item with all it holds, never going through a symbolic link, not even where `path`
/// ends in a slash. Write-protected folders in it are no obstacle to their owner. After a failure a
/// part may remain, with the modes that it had.
void removeTree(const Path& path);

/// Moves `source` to `destination`, where nothing may exist, not even a dangling link. Across file
/// systems a complete copy is made first (modes, times, extended attributes, links as links) under
/// a temporary name, made durable and put in place; only then is the source removed. A failed copy
/// leaves the source whole and no remains. What was added to or changed in the source meanwhile
/// stays there. Write-protected folders are no obstacle to their owner and stay so.
void move(const Path& source, const Path& destination);
/// Exchanges two existing items in one step, so that neither name is ever without one.
void exchange(const Path& left, const Path& right);

} // namespace ambrel::fileSystem
