#pragma once

#include "Ambrel/Base/Path.h"

namespace ambrel {

/// The two questions that the search for the runner asks; an interface so that tests can count
/// and answer them.
class FileManager {
public:
    virtual ~FileManager() = default;
    virtual bool isExecutableFile(const Path& path) const = 0;
    virtual Path currentDirectory() const = 0;
};

/// The machine's own answers.
class SystemFileManager final : public FileManager {
public:
    bool isExecutableFile(const Path& path) const override;
    Path currentDirectory() const override;
};

} // namespace ambrel
