#pragma once

#include "Ambrel/Base/Path.h"

#include <cstdint>
#include <string>

namespace korvane::registration {

/// Where everything of one entry lies. Forming a path touches no file.
struct Places {
    std::string id;
    ambrel::Path data; ///< user.data; empty where there is none

    ambrel::Path entry() const { return below("applications", fileName()); }
    /// The script that opens the instance, without white space in what we add to the path.
    ambrel::Path script() const { return below("korvane/open", id); }
    ambrel::Path theme() const { return ambrel::paths::join(data, "icons/hicolor"); }
    ambrel::Path icon(std::uint32_t side) const {
        const auto pixels = std::to_string(side);
        return ambrel::paths::join(theme(), pixels + "x" + pixels + "/apps/" + id + ".png");
    }
    std::string fileName() const { return id + ".desktop"; }

private:
    ambrel::Path below(const std::string& folder, const std::string& name) const {
        return ambrel::paths::join(ambrel::paths::join(data, folder), name);
    }
};

} // namespace korvane::registration
