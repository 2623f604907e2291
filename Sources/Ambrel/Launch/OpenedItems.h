#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ambrel {

/// The first argument of a runner whose others are files and addresses for its program. Without it
/// a runner reads no arguments.
inline constexpr std::string_view openArgument = "--open";

/// The key of an application's Info.plist whose value is the argument that its program wants
/// between its options and what it is to open, as in "telegram-desktop -- ADDRESS".
inline constexpr const char* openMarkKey = "KorvaneOpenMark";

/// What the words are for a program that is to open them: paths, made absolute, and addresses as
/// they stand. An address is what begins with a scheme and is no file that exists; "file:" without
/// a foreign host is the path that it stands for, unless it says more than a path can. Nothing in
/// the result can be taken for an option. Empty words are left out. Throws FileError when a
/// relative path has no working directory to lie in.
std::vector<std::string> openedItems(const std::vector<std::string>& words);

/// The same for the arguments of a runner, as main has them: nothing but behind openArgument.
std::vector<std::string> openedItems(int count, const char* const* arguments);

} // namespace ambrel
