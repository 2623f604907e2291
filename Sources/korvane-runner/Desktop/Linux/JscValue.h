#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/PageValue.h"

#include <jsc/jsc.h>

namespace korvane::runner {

/// A value in a context of the engine that no page reaches.
class JscValue final : public PageValue {
public:
    /// Null is the value that is nothing at all.
    explicit JscValue(GObjectPtr<JSCValue> value) : value_(std::move(value)) {}

    bool isDictionary() const override;
    std::unique_ptr<PageValue> field(const char* name) const override;
    std::optional<double> number() const override;
    std::optional<std::string> text(std::size_t most) const override;

private:
    GObjectPtr<JSCValue> value_;
};

} // namespace korvane::runner
