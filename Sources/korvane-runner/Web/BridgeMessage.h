#pragma once

#include "korvane-runner/Desktop/PageValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace korvane::runner {

/// A page asks for a banner. A text that is missing, or is none, is empty here.
struct NotifyMessage {
    std::string title;
    std::string body;
    bool operator==(const NotifyMessage&) const = default;
};

/// A page sets its badge; 0 where what it gave is no integer.
struct BadgeMessage {
    std::int64_t count = 0;
    bool operator==(const BadgeMessage&) const = default;
};

/// The title of a page has changed, or the page is there.
struct TitleMessage {
    std::string title;
    bool operator==(const TitleMessage&) const = default;
};

using BridgeMessage = std::variant<NotifyMessage, BadgeMessage, TitleMessage>;

/// What `body` asks for, which any frame of any origin may have posted; absent where it is no
/// dictionary, or has no type that is known. Texts are cut behind as much as can be of use: 1,000
/// UTF-16 units for the title of a banner, 10,000 for its body, 100,000 for the title of a page.
std::optional<BridgeMessage> readBridgeMessage(const PageValue& body);

} // namespace korvane::runner
