#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::runner::bus {

/// The text of Names.txt, which the build puts into the program.
extern const std::string_view sharedNames;

/// What a program does with a name: it sends something to whoever has it, or wants it for itself.
enum class NameUse { call, own };

/// Whether what keeps the user's passwords is there for an instance.
enum class Secrets { shared, hidden };

/// A name that is shared with the user, or a family of them.
struct NameRule {
    enum class Kind { call, own, secrets };

    Kind kind;
    std::string name; ///< exact, or with ".*" or "-*" at its end
    std::string reason;

    /// From a line "KIND NAME  reason". Absent where it is none.
    static std::optional<NameRule> parse(std::string_view line);
    /// Whether it is about the name `asked`, which may be any text. A family is not about what
    /// stands before its "*" alone.
    bool covers(std::string_view asked) const;
    bool operator==(const NameRule&) const = default;
};

/// Which names an instance shares with the user, for calling and for owning apart: a file manager
/// in an instance calls the user's desktop, and must not become the user's file manager.
class NamePolicy {
public:
    /// With the names that the program knows of.
    explicit NamePolicy(Secrets secrets);

    /// Shares another name, as a profile may want it.
    void add(NameRule rule) { rules_.push_back(std::move(rule)); }

    /// Whether the name is the same on the bus. All that are owned so are called so.
    bool isShared(std::string_view name, NameUse use) const;
    /// Whether nothing is ever started to have that name.
    bool isHidden(std::string_view name) const;

    const std::vector<NameRule>& rules() const { return rules_; }

private:
    std::vector<NameRule> rules_;
    Secrets secrets_;
};

/// The rules in a text of lines; empty ones and those with a "#" in front are left out, and so are
/// lines that are none.
std::vector<NameRule> nameRules(std::string_view text);

} // namespace korvane::runner::bus
