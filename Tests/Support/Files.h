#pragma once

#include "Ambrel/Base/Path.h"

#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

/// Files for tests, without the code under test. Every function throws when it fails.
namespace korvane::test {

using ambrel::Path;

std::string readFile(const Path& file);
/// Makes the folders above it too; returns the path.
Path writeFile(const Path& file, std::string_view bytes = {});
/// A file with mode 0755.
Path writeScript(const Path& file, std::string_view body);
Path makeFolder(const Path& folder);
void makeLink(const Path& link, const Path& target);
void setMode(const Path& path, mode_t mode);
void copyProgram(const Path& from, const Path& to);

/// Whether anything stands there, a dangling link included.
bool isThere(const Path& path);
bool isLink(const Path& path);
bool isRealFolder(const Path& path);
/// The text of a symbolic link.
std::string linkText(const Path& link);
struct stat statusOf(const Path& path);
mode_t modeOf(const Path& path);

/// Names in a folder, sorted.
std::vector<std::string> namesIn(const Path& folder);

/// What all files below the folders hold, whatever they are called: a file's content, a symbolic
/// link's text. No link is followed. Two equal multisets: nothing was lost.
std::multiset<std::string> contentsBelow(const std::vector<Path>& folders);

/// Every item below the folder with kind, mode, content: for "nothing changed at all".
std::multiset<std::string> snapshot(const Path& folder);

} // namespace korvane::test
