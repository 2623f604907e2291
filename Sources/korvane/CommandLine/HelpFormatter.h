#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace korvane {

/// Lays out a verb's help: what it does, examples, usage, options. `trailing` stands at the end of
/// the usage.
class HelpFormatter final : public CLI::Formatter {
public:
    HelpFormatter(std::vector<std::string> examples, std::string trailing);

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
    std::string make_usage(const CLI::App* app, std::string name) const override;
    std::string make_option_opts(const CLI::Option* option) const override;

private:
    std::vector<std::string> examples_;
    std::string trailing_;
};

} // namespace korvane
