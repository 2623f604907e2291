#pragma once

#include "korvane/CommandLine/Verb.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// Lays out a verb's help: what it does, examples, usage, options.
class HelpFormatter final : public CLI::Formatter {
public:
    /// Lines are broken at `width`, where there is one.
    HelpFormatter(const Verb& verb, std::optional<std::size_t> width);

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
    std::string make_usage(const CLI::App* app, std::string name) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
    std::string make_option_opts(const CLI::Option* option) const override;

private:
    std::vector<std::string> examples_;
    std::vector<std::string> aliases_;
    std::string trailing_;
    std::optional<std::size_t> width_;
};

} // namespace korvane
