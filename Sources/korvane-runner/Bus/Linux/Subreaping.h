#pragma once

namespace korvane::runner::bus {

/// Makes this process the parent of whatever its descendants leave behind. At its end that is as it
/// was before.
class Subreaping {
public:
    Subreaping() noexcept;
    Subreaping(Subreaping&& other) noexcept;
    Subreaping(const Subreaping&) = delete;
    Subreaping& operator=(const Subreaping&) = delete;
    Subreaping& operator=(Subreaping&&) = delete;
    ~Subreaping();

private:
    bool isToEnd_;
};

} // namespace korvane::runner::bus
