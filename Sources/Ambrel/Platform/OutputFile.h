#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ambrel {

/// A file that a child is to write to, for whoever wants to know afterwards what it wrote.
class OutputFile {
public:
    /// A file without a name, which lasts for as long as somebody has it open. Throws FileError.
    static OutputFile unnamed();
    /// The file at `path`, made when absent, behind what it holds. Throws FileError.
    static OutputFile appendingTo(const Path& path);

    /// For the child's setup.
    const std::shared_ptr<const OwnedFd>& descriptor() const { return writing_; }

    /// What was written since construction, by whomever; where that is more than `most` bytes, the
    /// last of it. Everything that is there where the file has become shorter since, and nothing
    /// where it cannot be read or is no regular file.
    std::string written(std::size_t most) const;

private:
    OutputFile(std::shared_ptr<const OwnedFd> writing, OwnedFd reading);

    std::shared_ptr<const OwnedFd> writing_;
    OwnedFd reading_;
    std::int64_t start_ = 0;
};

} // namespace ambrel
