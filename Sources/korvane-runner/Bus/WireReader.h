#pragma once

#include "korvane-runner/Bus/Checked.h"

#include <cstdint>

namespace korvane::runner::bus {

/// The order of the bytes in numbers, by the letter that a message begins with.
enum class ByteOrder : char { little = 'l', big = 'B' };

/// In bytes, without its length and what is padding before its first element.
inline constexpr std::size_t longestArray = 64 * 1024 * 1024;

/// Takes values off a message of a stranger (D-Bus Specification, "Marshaling"), and checks them as
/// a bus does. After the first one that is not right, all others are empty or zero and fault() says
/// what was wrong, so that one question at the end suffices.
class WireReader {
public:
    /// `bytes` begin at a multiple of 8 in the message, and what is read are views of them.
    WireReader(ByteOrder order, std::string_view bytes, std::size_t position = 0)
        : order_(order), bytes_(bytes), position_(position) {}

    std::uint8_t byte();
    std::uint32_t number();        ///< of type "u", "i" or "h"
    std::string_view text();       ///< UTF-8 without zero bytes, of any length
    std::string_view objectPath(); ///< never empty, unless after a fault
    std::string_view signature();  ///< valid, possibly of no type

    /// The position behind an array whose length comes next, with what is padding before its first
    /// element taken off.
    std::size_t arrayEnd(char elementType);
    /// Skips what fills up to a multiple of `size`, which has to be zeros.
    void align(std::size_t size);
    /// Skips a value of one complete type, which is valid.
    void skip(std::string_view type);

    std::size_t position() const { return position_; }
    bool isAtEnd() const { return position_ >= bytes_.size(); }
    bool hasFailed() const { return !fault_.sentence.empty(); }
    Fault fault() const { return fault_; } ///< the first one; empty where all was right
    /// Finds fault with what was read, for a reason that only the caller knows. `sentence` is a
    /// constant.
    void fail(std::string_view sentence);

private:
    std::string_view take(std::size_t size);
    std::string_view textOf(std::size_t size);
    void skipFixed(std::size_t size);
    void skipArray(std::string_view elementType);
    void skipMembers(std::string_view types);
    void skipVariant();

    ByteOrder order_;
    std::string_view bytes_;
    std::size_t position_;
    Fault fault_{};
    int depth_ = 0;
};

} // namespace korvane::runner::bus
