#pragma once

#include "korvane-runner/Bus/WireReader.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// The few bodies that have names of programs in them. All others are left as they stand.
namespace korvane::runner::bus {

using TextList = std::vector<std::string>;
using TextPairs = std::vector<std::pair<std::string, std::string>>;
/// A value of type "u", "s", "as" or "a{ss}" (D-Bus Specification, "Type System").
using BodyValue = std::variant<std::uint32_t, std::string, TextList, TextPairs>;

/// One value alone, which is not copied as one in braces would be: the C++ library of GCC 12
/// destroys what is not there when there is no memory for the copy of such a value.
inline std::vector<BodyValue> alone(BodyValue value) {
    std::vector<BodyValue> values;
    values.push_back(std::move(value));
    return values;
}

/// The values of a body. Absent where `signature` has other types than a BodyValue, and where the
/// body is not what it says; it is the bus that complains then.
std::optional<std::vector<BodyValue>> tryReadBody(ByteOrder order, std::string_view signature,
                                                  std::string_view body);

/// A body with these values, whose types are its signature.
std::string writtenBody(ByteOrder order, const std::vector<BodyValue>& values);

/// The body of type "a{sv}" with `number` under `key`. Absent where there is no number of type "u"
/// under it, and where the body is not of that type.
std::optional<std::string> tryExchangeNumber(ByteOrder order, std::string_view body,
                                             std::string_view key, std::uint32_t number);

/// The body of type "a{sv}" without what is under `key`. Absent where nothing is under it, and
/// where the body is not of that type.
std::optional<std::string> tryLeaveOut(ByteOrder order, std::string_view body,
                                       std::string_view key);

} // namespace korvane::runner::bus
