#include "korvane/CommandLine/Parser.h"

namespace korvane {

namespace {

/// The names that help gives to values.
constexpr std::pair<std::string_view, Takes> namesOfValues[] = {
    {"APP", Takes::application}, {"DIR", Takes::folder},      {"FILE", Takes::file},
    {"KEY", Takes::key},         {"KEY=VALUE", Takes::key},   {"PATH", Takes::file},
    {"SOURCE", Takes::file},     {"PROGRAM", Takes::program}, {"URL", Takes::address},
};

} // namespace

Parser::Parser(std::string description, std::string name)
    : CLI::App(std::move(description), std::move(name)) {
    set_help_flag("-h,--help", "Show this help");
}

void Parser::declare(const CLI::Option* option, Values values) {
    declared_.insert_or_assign(option, std::move(values));
}

Values Parser::valuesOf(const CLI::Option& option) const {
    if (const auto found = declared_.find(&option); found != declared_.end()) return found->second;
    const auto shown = option.get_positional() ? option.get_name(true) : option.get_type_name();
    for (const auto& [name, takes] : namesOfValues) {
        if (name == shown) return {takes};
    }
    return {};
}

} // namespace korvane
