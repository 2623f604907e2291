#include "Ambrel/Platform/Linux/PropertyListScreen.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace ambrel {

namespace {

constexpr std::size_t npos = std::string_view::npos;

bool isQuoteBalanced(std::string_view text) {
    const bool singles = std::ranges::count(text, '\'') % 2 == 0;
    return singles && std::ranges::count(text, '"') % 2 == 0;
}

/// Goes over the markup of an XML text. What two readers could take for different things (a ">" or
/// "<" inside quotes, an attribute where property lists have none, an internal document type) is
/// refused, so that the nesting counted here is the one that the parser meets.
class XmlNesting {
public:
    explicit XmlNesting(std::string_view text) : rest_(text) {}

    bool isShallow() {
        while (skipToMarkup()) {
            if (!takeMarkup() || depth_ > deepestPropertyList) return false;
        }
        return true;
    }

private:
    bool skipToMarkup() {
        const auto start = rest_.find('<');
        rest_.remove_prefix(start == npos ? rest_.size() : start);
        return !rest_.empty();
    }

    /// Takes one piece of markup; false when it is refused.
    bool takeMarkup() {
        if (rest_.starts_with("<!--")) return takeComment();
        if (rest_.starts_with("<![CDATA[")) return take("<![CDATA[", "]]>").has_value();
        if (rest_.starts_with("<?")) return isPlain(take("<?", "?>"));
        if (rest_.starts_with("<!")) return isPlain(take("<!", ">"));
        return takeTag(take("<", ">"));
    }

    /// What stands between `start`, which is next, and the first `end`; absent without an end.
    std::optional<std::string_view> take(std::string_view start, std::string_view end) {
        const auto found = rest_.find(end, start.size());
        if (found == npos) return std::nullopt;
        const auto inside = rest_.substr(start.size(), found - start.size());
        rest_.remove_prefix(found + end.size());
        return inside;
    }

    bool takeComment() {
        const auto inside = take("<!--", "-->");
        return inside && !inside->starts_with('>') && !inside->starts_with("->");
    }

    static bool isPlain(std::optional<std::string_view> inside) {
        return inside && inside->find_first_of("<>[") == npos && isQuoteBalanced(*inside);
    }

    bool takeTag(std::optional<std::string_view> inside) {
        if (!inside || inside->find('<') != npos) return false;
        const bool hasQuotes = inside->find_first_of("\"'") != npos;
        const bool isRoot = inside->starts_with("plist");
        if (hasQuotes && (!isRoot || !isQuoteBalanced(*inside))) return false;
        if (inside->starts_with('/')) {
            depth_ -= std::min<std::size_t>(depth_, 1);
        } else if (!inside->ends_with('/')) {
            ++depth_;
        }
        return true;
    }

    std::string_view rest_;
    std::size_t depth_ = 0;
};

/// The graph of containers in a binary property list: 8 bytes "bplist00", objects, a table of
/// their offsets, and a trailer of 32 bytes.
class BinaryNesting {
public:
    explicit BinaryNesting(std::string_view bytes) : bytes_(bytes) {}

    bool isHarmless() {
        if (bytes_.size() > largestBinary || !readTrailer()) return false;
        nodes_.resize(objectCount_);
        return measure(top_);
    }

private:
    enum class State : std::uint8_t { unseen, open, done };
    struct Node {
        State state = State::unseen;
        std::size_t depth = 0;  ///< containers from here down
        std::uint64_t size = 0; ///< values and bytes from here down, shared ones counted each time
    };
    struct Visit {
        std::uint64_t object;
        std::vector<std::uint64_t> children;
        std::size_t next = 0;
    };

    static constexpr std::size_t trailerSize = 32;
    static constexpr std::size_t largestBinary = 16 * 1024 * 1024;
    static constexpr std::uint64_t mostBytes = 64 * 1024 * 1024;
    static constexpr std::uint64_t mostReferences = 2'000'000;
    static constexpr std::uint64_t bytesOfValue = 64; ///< about what one costs in memory

    std::optional<std::uint64_t> number(std::uint64_t at, std::size_t size) const {
        if (size == 0 || size > 8 || at > bytes_.size() || bytes_.size() - at < size) return {};
        std::uint64_t value = 0;
        for (const char byte : bytes_.substr(at, size)) {
            value = (value << 8) | static_cast<unsigned char>(byte);
        }
        return value;
    }

    bool readTrailer() {
        if (bytes_.size() < 8 + trailerSize) return false;
        const auto trailer = bytes_.size() - trailerSize;
        offsetSize_ = *number(trailer + 6, 1);
        referenceSize_ = *number(trailer + 7, 1);
        objectCount_ = *number(trailer + 8, 8);
        top_ = *number(trailer + 16, 8);
        table_ = *number(trailer + 24, 8);
        const bool sizes =
            offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8;
        return sizes && table_ <= trailer && objectCount_ <= (trailer - table_) / offsetSize_ &&
               top_ < objectCount_;
    }

    /// What an object holds: other objects, or so many bytes. Absent for a broken one.
    struct Contents {
        std::vector<std::uint64_t> children;
        std::uint64_t bytes = 0;
    };

    std::optional<Contents> contentsOf(std::uint64_t object) const {
        const auto at = number(table_ + object * offsetSize_, offsetSize_);
        const auto marker = at ? number(*at, 1) : std::nullopt;
        if (!marker) return std::nullopt;
        const auto type = *marker >> 4;
        const bool isContainer = type == 0xA || type == 0xC || type == 0xD;
        const bool isText = type == 0x5 || type == 0x6 || type == 0x7;
        const bool isData = type == 0x4;
        if (!isContainer && !isText && !isData) return Contents();
        auto count = *marker & 0xF;
        auto first = *at + 1;
        if (count == 0xF && !readLongCount(first, count)) return std::nullopt;
        if (count > bytes_.size()) return std::nullopt;
        if (isContainer) return containing(references(first, type == 0xD ? 2 * count : count));
        const std::size_t unitSize = type == 0x6 ? 2 : 1;
        if (isText && !isWithoutNul(first, count, unitSize)) return std::nullopt;
        return Contents{{}, count * unitSize};
    }

    static std::optional<Contents> containing(std::optional<std::vector<std::uint64_t>> objects) {
        if (!objects) return std::nullopt;
        return Contents{std::move(*objects), 0};
    }

    /// The parser ends the program over a text with a NUL character in it.
    bool isWithoutNul(std::uint64_t first, std::uint64_t count, std::size_t unitSize) const {
        for (std::uint64_t i = 0; i < count; ++i) {
            if (number(first + i * unitSize, unitSize).value_or(0) == 0) return false;
        }
        return true;
    }

    /// A count of 15 and more follows as an integer object of its own.
    bool readLongCount(std::uint64_t& first, std::uint64_t& count) const {
        const auto marker = number(first, 1);
        if (!marker || (*marker >> 4) != 1) return false;
        const auto size = std::size_t{1} << (*marker & 0xF);
        const auto value = number(first + 1, size);
        if (!value) return false;
        count = *value;
        first += 1 + size;
        return true;
    }

    std::optional<std::vector<std::uint64_t>> references(std::uint64_t first,
                                                         std::uint64_t count) const {
        std::vector<std::uint64_t> result;
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto object = number(first + i * referenceSize_, referenceSize_);
            if (!object || *object >= objectCount_) return std::nullopt;
            result.push_back(*object);
        }
        return result;
    }

    bool enter(std::uint64_t object) {
        auto& node = nodes_[object];
        if (node.state == State::done) return true;
        if (node.state == State::open) return false; // a cycle
        auto contents = contentsOf(object);
        if (!contents || path_.size() > deepestPropertyList) return false;
        const std::size_t depth = contents->children.empty() ? 0 : 1;
        node = {State::open, depth, bytesOfValue + contents->bytes};
        // Lists of references may overlap in the file: what they hold together is limited as well.
        references_ += contents->children.size();
        if (references_ > mostReferences) return false;
        path_.push_back({object, std::move(contents->children)});
        return true;
    }

    bool addToParent(const Node& child) {
        if (path_.empty()) return true;
        auto& parent = nodes_[path_.back().object];
        parent.depth = std::max(parent.depth, child.depth + 1);
        parent.size += child.size;
        return parent.depth <= deepestPropertyList && parent.size <= mostBytes;
    }

    /// Depth first, without recursing itself; each object is measured once.
    bool measure(std::uint64_t top) {
        if (!enter(top)) return false;
        while (!path_.empty()) {
            auto& visit = path_.back();
            if (visit.next < visit.children.size()) {
                const auto child = visit.children[visit.next++];
                const bool known = nodes_[child].state == State::done;
                if (!enter(child) || (known && !addToParent(nodes_[child]))) return false;
                continue;
            }
            auto& node = nodes_[visit.object];
            node.state = State::done;
            path_.pop_back();
            if (!addToParent(node)) return false;
        }
        return true;
    }

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t top_ = 0;
    std::uint64_t table_ = 0;
    std::uint64_t references_ = 0;
    std::vector<Node> nodes_;
    std::vector<Visit> path_;
};

} // namespace

bool isBinaryPropertyList(std::string_view bytes) { return bytes.starts_with("bplist"); }

bool isHarmlessPropertyList(std::string_view bytes) {
    if (isBinaryPropertyList(bytes)) return BinaryNesting(bytes).isHarmless();
    const bool hasNul = bytes.find('\0') != npos; // which XML does not allow
    return !hasNul && XmlNesting(bytes).isShallow();
}

} // namespace ambrel
