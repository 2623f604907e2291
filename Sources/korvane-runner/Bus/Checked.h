#pragma once

#include <optional>
#include <string_view>
#include <utility>

namespace korvane::runner::bus {

/// What is wrong with bytes of a stranger: a sentence without a full stop, a constant.
struct Fault {
    std::string_view sentence;
    bool operator==(const Fault&) const = default;
};

/// What was read, or what was wrong with it. Strangers send anything, so that this is no exception.
template <class Value> class Checked {
public:
    Checked(Value value) : value_(std::move(value)) {} // NOLINT(google-explicit-constructor)
    Checked(Fault fault) : fault_(fault) {}            // NOLINT(google-explicit-constructor)

    explicit operator bool() const { return value_.has_value(); }
    const Value& operator*() const { return *value_; }
    const Value* operator->() const { return &*value_; }
    Value& operator*() { return *value_; }
    Value* operator->() { return &*value_; }
    /// Empty where there is a value.
    std::string_view fault() const { return fault_.sentence; }

private:
    std::optional<Value> value_;
    Fault fault_{};
};

} // namespace korvane::runner::bus
