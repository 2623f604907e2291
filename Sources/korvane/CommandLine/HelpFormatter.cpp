#include "korvane/CommandLine/HelpFormatter.h"

#include "korvane/Output/Wrapping.h"

#include <algorithm>

namespace korvane {

namespace {

/// How far descriptions are indented: where there is little room they stand below the options.
std::size_t optionColumnsFor(std::optional<std::size_t> width) {
    constexpr std::size_t usual = 30;
    constexpr std::size_t narrow = 6;
    constexpr std::size_t leastRoom = 24;
    return width && *width < usual + leastRoom ? narrow : usual;
}

} // namespace

HelpFormatter::HelpFormatter(const Verb& verb, std::optional<std::size_t> width)
    : examples_(verb.examples), aliases_(verb.aliases), trailing_(verb.rules.trailingUsage()),
      width_(width) {
    column_width(optionColumnsFor(width));
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode mode) const {
    std::string text = wrapped(app->get_description(), 0, width_) + "\n";
    for (const auto& alias : aliases_) text += "In short: korvane " + alias + "\n";
    text += "\nExamples:\n";
    for (const auto& example : examples_) text += "  " + example + "\n";
    text += "\n" + make_usage(app, name.empty() ? app->get_name() : name);
    text += make_positionals(app);
    text += make_groups(app, mode);
    return text;
}

std::string HelpFormatter::make_usage(const CLI::App* app, std::string name) const {
    const auto text = CLI::Formatter::make_usage(app, std::move(name));
    const auto end = text.find_last_not_of('\n') + 1;
    const auto usage = text.substr(0, end) + (trailing_.empty() ? "" : " " + trailing_);
    return wrapped(usage, 2, width_) + text.substr(end);
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    const auto text = CLI::Formatter::make_option_desc(option);
    if (!width_) return text;
    // The lines after the first are indented by what lays the option out.
    const auto columns = std::min(*width_, widestText);
    return wrapped(text, 0, columns - std::min(columns, optionColumnsFor(width_)));
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    std::string text;
    if (option->get_type_size() != 0 && !option->get_positional()) {
        text += " " + option->get_type_name();
    }
    if (option->get_items_expected_max() > 1 ||
        option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll) {
        text += " ...";
    }
    return text;
}

} // namespace korvane
