#pragma once

#include "Ambrel/Base/Path.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvane::runner::bus {

/// The names of applications that menus show: of those that have windows.
class ShownApplications {
public:
    /// What a file says; absent where there is none.
    using Reader = std::function<std::optional<std::string>(const ambrel::Path& file)>;

    /// `dataFolders` are those with folders "applications", those first that count more.
    ShownApplications(std::vector<ambrel::Path> dataFolders, Reader reader)
        : dataFolders_(std::move(dataFolders)), reader_(std::move(reader)) {}

    /// Whether `name`, which a program has on the bus, is one. Files are read for a name that was
    /// not asked about lately.
    bool contains(const std::string& name);

    /// So many answers are remembered: a program can ask for any number of names.
    static constexpr std::size_t mostRemembered = 256;

private:
    bool read(const std::string& name) const;

    std::vector<ambrel::Path> dataFolders_;
    Reader reader_;
    std::map<std::string, bool, std::less<>> known_;
};

} // namespace korvane::runner::bus
