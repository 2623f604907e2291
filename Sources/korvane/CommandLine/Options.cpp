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

bool mayBeRepeated(const CLI::App& app, const std::string& word) {
    const auto* option = app.get_option_no_throw(word);
    return option != nullptr &&
           option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
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

CLI::Option* choiceOf(CLI::App& app, const std::string& names, std::optional<bool>& value,
                      const std::string& description) {
    return app.add_flag_function(
        names, [&value](std::int64_t count) { value = count > 0; }, description);
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

std::string Rules::trailingUsage() const {
    if (!trailingAfter) return {};
    return apart == Apart::byPosition ? "[ARG...]" : "[-- ARG...]";
}

namespace {

/// Goes through a command line word by word.
class Arranger {
public:
    Arranger(const CLI::App& app, const std::vector<std::string>& words, const Rules& rules)
        : app_(app), words_(words), rules_(rules) {}

    Arguments arranged() {
        while (at_ < words_.size() && words_[at_] != "--" && !isAllApart()) takeNext();
        takeRest();
        return std::move(result_);
    }

private:
    bool isPlain(std::size_t at) const {
        return at < words_.size() && (words_[at].size() < 2 || words_[at][0] != '-');
    }

    std::size_t wanted() const { return rules_.trailingAfter.value_or(words_.size()); }

    bool isAllApart() const {
        return rules_.apart == Apart::byPosition && positionals_ >= wanted();
    }

    void takeNext() {
        const auto& word = words_[at_++];
        if (isEmptyAssignment(app_, word)) {
            result_.parsed.push_back(word.substr(0, word.size() - 1));
            result_.parsed.emplace_back();
            return;
        }
        result_.parsed.push_back(word);
        if (takesNextWord(app_, word) && at_ < words_.size()) {
            result_.parsed.push_back(words_[at_++]);
            takeMoreValues(word);
        } else if (isPlain(at_ - 1)) {
            ++positionals_;
        }
    }

    void takeMoreValues(const std::string& option) {
        if (!rules_.severalValues || positionals_ == 0 || !mayBeRepeated(app_, option)) return;
        while (isPlain(at_)) result_.parsed.insert(result_.parsed.end(), {option, words_[at_++]});
    }

    /// From the first "--" on, or from where all is set apart: no word is an option.
    void takeRest() {
        if (at_ < words_.size() && words_[at_] == "--") {
            if (positionals_ < wanted()) result_.parsed.push_back(words_[at_]);
            ++at_;
        }
        for (; at_ < words_.size(); ++at_) {
            (positionals_ < wanted() ? result_.parsed : result_.trailing).push_back(words_[at_]);
            ++positionals_;
        }
    }

    const CLI::App& app_;
    const std::vector<std::string>& words_;
    const Rules& rules_;
    Arguments result_;
    std::size_t positionals_ = 0;
    std::size_t at_ = 0;
};

} // namespace

Arguments arrange(const CLI::App& app, const std::vector<std::string>& words, const Rules& rules) {
    return Arranger(app, words, rules).arranged();
}

} // namespace korvane::options
