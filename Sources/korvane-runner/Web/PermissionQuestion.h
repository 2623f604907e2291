#pragma once

#include "korvane-runner/Desktop/WebWindow.h"

namespace korvane::runner {

/// What a person is asked.
struct Question {
    std::string text;
    std::string yes; ///< the word that agrees
    bool operator==(const Question&) const = default;
};

/// Whether `origin` may have what it wants.
Question permissionQuestion(Permission permission, const std::string& origin);

/// Whether an address may be handed to the program that is registered for its scheme.
Question otherProgramQuestion(const std::string& url);

} // namespace korvane::runner
