#pragma once

#include "Ambrel/Base/RawValue.h"
#include "Manager/Base/Quoting.h"
#include "korvane/CommandLine/UsageError.h"

#include <string>

namespace korvane {

/// The value that `text` names. Throws UsageError, with the known ones, for another text.
template <class Enum> Enum enumFrom(const std::string& text, const std::string& option) {
    if (const auto value = ambrel::fromRawValue<Enum>(text)) return *value;
    throw UsageError(option + " is one of " + ambrel::rawValueList<Enum>() + ", not " +
                     inQuotes(text) + ".");
}

} // namespace korvane
