#include "korvane/CommandLine/HelpFormatter.h"

namespace korvane {

HelpFormatter::HelpFormatter(std::vector<std::string> examples, std::string trailing)
    : examples_(std::move(examples)), trailing_(std::move(trailing)) {
    column_width(30);
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode mode) const {
    std::string text = app->get_description() + "\n\nExamples:\n";
    for (const auto& example : examples_) text += "  " + example + "\n";
    text += "\n" + make_usage(app, name.empty() ? app->get_name() : name);
    text += make_positionals(app);
    text += make_groups(app, mode);
    return text;
}

std::string HelpFormatter::make_usage(const CLI::App* app, std::string name) const {
    auto text = CLI::Formatter::make_usage(app, std::move(name));
    if (!trailing_.empty()) text.insert(text.find_last_not_of('\n') + 1, " " + trailing_);
    return text;
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
