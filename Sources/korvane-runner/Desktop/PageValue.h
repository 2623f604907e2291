#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace korvane::runner {

/// A value that a page has sent: a copy of the page's own, so that reading it runs nothing of the
/// page's. It may be of any shape and size, cyclic or nested without end; so only what is asked for
/// by name is looked at. For use during the call that hands it over.
class PageValue {
public:
    virtual ~PageValue() = default;

    /// Whether it has fields: an object that is neither a list nor a function.
    virtual bool isDictionary() const = 0;

    /// The field of that name, a value that is nothing at all where there is none.
    virtual std::unique_ptr<PageValue> field(const char* name) const = 0;

    /// The number that it is, NaN and the infinities among them; absent for everything else.
    virtual std::optional<double> number() const = 0;

    /// The text that it is, in valid UTF-8 with U+FFFD for what has no such form, cut behind at
    /// most `most` UTF-16 units and never inside a character; absent for everything else. It may
    /// hold control characters, NUL among them.
    virtual std::optional<std::string> text(std::size_t most) const = 0;
};

} // namespace korvane::runner
