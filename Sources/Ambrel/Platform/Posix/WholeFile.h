#pragma once

#include "Ambrel/Base/Path.h"

#include <functional>
#include <optional>
#include <string_view>

namespace ambrel {

/// Where a file is to stand: in the open folder `folder`, at `name`. `path` is for messages.
struct FilePlace {
    int folder;
    std::string name;
    Path path;
};

/// Writes `bytes` to a new file beside `place`, under a name of its own, with exactly `mode`
/// (absent: what the mask leaves of 0666), and hands that name to `put`, which gives it the place's
/// name in one step and returns 0 or the error number. Throws FileError; nothing remains then.
void putWholeFile(const FilePlace& place, std::string_view bytes, std::optional<unsigned> mode,
                  const std::function<int(const char* temporary)>& put);

} // namespace ambrel
