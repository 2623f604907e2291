#include "korvane/CommandLine/Options.h"

namespace korvane::options {

namespace {

CLI::Option* oneEach(CLI::App& app, const std::string& name, const std::string& description,
                     CLI::callback_t take) {
    auto* option = app.add_option(name, std::move(take), description);
    option->expected(1)->allow_extra_args(false)->type_name("TEXT");
    return option;
}

/// The option that `word` names, if it takes its value from the next word.
bool takesNextWord(const CLI::App& app, const std::string& word) {
    if (word.size() < 2 || word[0] != '-') return false;
    const auto* option = app.get_option_no_throw(word);
    return option != nullptr && option->get_items_expected_min() > 0;
}

bool isEmptyAssignment(const CLI::App& app, const std::string& word) {
    return word.starts_with("--") && word.ends_with('=') &&
           takesNextWord(app, word.substr(0, word.size() - 1));
}

} // namespace

CLI::Option* text(CLI::App& app, const std::string& name, std::string& value,
                  const std::string& description) {
    return oneEach(app, name, description, [&value](const CLI::results_t& results) {
        value = results.front();
        return true;
    });
}

CLI::Option* text(CLI::App& app, const std::string& name, std::optional<std::string>& value,
                  const std::string& description) {
    return oneEach(app, name, description, [&value](const CLI::results_t& results) {
        value = results.front();
        return true;
    });
}

CLI::Option* texts(CLI::App& app, const std::string& name, std::vector<std::string>& values,
                   const std::string& description) {
    auto* option = oneEach(app, name, description, [&values](const CLI::results_t& results) {
        values = results;
        return true;
    });
    return option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option* flag(CLI::App& app, const std::string& name, bool& value,
                  const std::string& description) {
    return app.add_flag(name, value, description);
}

CLI::Option* taking(CLI::App& app, CLI::Option* option, Values values) {
    if (auto* parser = dynamic_cast<Parser*>(&app)) parser->declare(option, std::move(values));
    return option;
}

std::string spokenList(const std::vector<std::string>& words) {
    std::string list;
    for (const auto& word : words) {
        if (!list.empty()) list += &word == &words.back() ? " or " : ", ";
        list += word;
    }
    return list;
}

CLI::Option* instanceName(CLI::App& app, std::string& value) {
    auto* option = text(app, "NAME", value, "The instance's name, or its bundle's path");
    return taking(app, option->required(), {Takes::instance});
}

CLI::Option* instanceNames(CLI::App& app, std::vector<std::string>& values) {
    auto* option = texts(app, "NAME", values, "The instances' names, or their bundles' paths");
    option->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args();
    return taking(app, option->required(), {Takes::instance});
}

CLI::Option* asJson(CLI::App& app, bool& value, const std::string& description) {
    return flag(app, "--json", value, description);
}

Arguments arrange(const CLI::App& app, const std::vector<std::string>& words, const Rules& rules) {
    Arguments result;
    std::size_t positionals = 0;
    const auto isPlain = [&](std::size_t at) {
        return at < words.size() && (words[at].size() < 2 || words[at][0] != '-');
    };
    std::size_t i = 0;
    for (; i < words.size() && words[i] != "--"; ++i) {
        const auto& word = words[i];
        if (isEmptyAssignment(app, word)) {
            result.parsed.push_back(word.substr(0, word.size() - 1));
            result.parsed.emplace_back();
            continue;
        }
        result.parsed.push_back(word);
        if (takesNextWord(app, word) && i + 1 < words.size()) {
            result.parsed.push_back(words[++i]);
            while (rules.severalValues && positionals > 0 && isPlain(i + 1)) {
                result.parsed.insert(result.parsed.end(), {word, words[++i]});
            }
        } else if (isPlain(i)) {
            ++positionals;
        }
    }
    const auto wanted = rules.trailingAfter.value_or(words.size());
    if (i < words.size() && positionals < wanted) result.parsed.push_back(words[i]);
    while (++i < words.size()) {
        (positionals < wanted ? result.parsed : result.trailing).push_back(words[i]);
        ++positionals;
    }
    return result;
}

} // namespace korvane::options
