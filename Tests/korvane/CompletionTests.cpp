#include "Manager.h"

#include "korvane/Documents/Completions.h"
#include "korvane/Verbs/AllVerbs.h"
#include "korvane/Verbs/ConfigEdit.h"

#include <regex>
#include <sstream>

namespace korvane::test {

namespace {

const std::string share = KORVANE_TEST_SHARE;
const std::string bashFile = share + "/bash-completion/completions/korvane";
const std::string zshFile = share + "/zsh/site-functions/_korvane";
const std::string fishFile = share + "/fish/vendor_completions.d/korvane.fish";

/// The long options that the help of a verb lists.
std::set<std::string> optionsIn(const std::string& help) {
    std::set<std::string> options;
    const std::regex pattern("\n  (?:-[a-z],)?--([a-z-]+)");
    for (auto found = std::sregex_iterator(help.begin(), help.end(), pattern);
         found != std::sregex_iterator(); ++found) {
        options.insert((*found)[1]);
    }
    return options;
}

Strings wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

Strings linesOf(const std::string& text) {
    Strings lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

bool holds(const Strings& list, const std::string& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

/// Says so, and returns true, where this machine has no such shell.
bool lacks(const std::string& shell) {
    if (run(ProgramSetup{.command = {"sh", "-c", "command -v " + shell}}).status == 0) return false;
    MESSAGE("skipped: " << shell << " is not installed here");
    return true;
}

/// A manager with instances and an application, in whose home a shell can complete command lines.
struct Shell {
    Manager manager;
    Path folder = manager.tmp / "work";
    Path bin = manager.tmp / "bin";

    Shell() {
        manager.create({"command", "Two words", aProgram});
        manager.create({"command", "Other", aProgram});
        manager.installApp("Mail", "org.example.mail");
        writeFile(manager.tmp / "share/applications/org.example.Reader.desktop",
                  "[Desktop Entry]\nType=Application\nName=Letter Reader\nExec=/bin/true\n");
        writeFile(folder + "/afile.txt", "");
        writeFile(folder + "/afolder/inside", "");
        writeFile(bin + "/korvane",
                  "#!/bin/sh\nexec " + test::quoted(KORVANE_TEST_MANAGER) + " \"$@\"\n");
        setMode(bin + "/korvane", 0755);
    }

    /// What `script`, with the words in "$@", writes line by line.
    Strings complete(const Strings& shell, const std::string& script, const Strings& words) const {
        auto command = shell;
        command.push_back("cd " + test::quoted(folder) + " || exit 1; PATH=" + test::quoted(bin) +
                          ":$PATH HOME=$PWD; export PATH HOME; " + script);
        command.insert(command.end(), words.begin(), words.end());
        const auto done = korvane::test::run(ProgramSetup{.command = command});
        CHECK(done.error == "");
        return linesOf(done.output);
    }

    /// `words` are those of the command line, the last one being completed.
    Strings bash(const Strings& words) const {
        auto all = words;
        all.insert(all.begin(), "bash"); // the name that messages of the script would begin with
        return complete({"bash", "-c"},
                        ". " + test::quoted(bashFile) +
                            "; COMP_WORDS=(korvane \"$@\"); COMP_CWORD=$#; _korvane; "
                            "((${#COMPREPLY[@]})) && printf '%s\\n' \"${COMPREPLY[@]}\"; :",
                        all);
    }

    /// Without the descriptions that stand behind a tabulator. In fish no words follow a script.
    Strings fish(const std::string& line) const {
        auto lines = complete({"sh", "-c"},
                              "exec fish --no-config -c " +
                                  test::quoted("source " + fishFile + "; complete --do-complete " +
                                               test::quoted(line)),
                              {});
        for (auto& found : lines) found = found.substr(0, found.find('\t'));
        return lines;
    }

    /// A shell on a terminal of its own, in which the completion is asked for by a key.
    Strings zsh(const std::string& line) const;
};

/// Prints, between two marks, what completion would offer for the line in $1; $2 is the folder of
/// the function.
constexpr const char* zshDriver = R"sh(
zmodload zsh/zpty
zpty shell zsh -f -i
{
    zpty -w shell "PS1=; fpath=(${(q)2} \$fpath); autoload -Uz compinit; compinit -u -D"
    zpty -w shell "zstyle ':completion:*' insert-tab false; setopt no_list_beep; bindkey '^I' complete-word"
    zpty -w shell 'compadd() {
        if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then builtin compadd "$@"; return; fi
        local -a hits; local hit
        builtin compadd -A hits "$@"
        for hit in $hits; do print -r -- HI""T":$hit:TIH"; done
    }'
    zpty -w shell 'finish() { print END""MARK; exit }; compprefuncs=(); comppostfuncs=(finish)'
    zpty -w -n shell "$1"$'\t'
    local output=""
    while zpty -r shell output; do
        [[ $output == *HIT:*:TIH* ]] && print -r -- ${${output#*HIT:}%%:TIH*}
        [[ $output == *ENDMARK* ]] && break
    done
} always {
    zpty -d shell
}
)sh";

Strings Shell::zsh(const std::string& line) const {
    return complete({"sh", "-c"},
                    "exec zsh -f -c " + test::quoted(zshDriver) + " zsh " + test::quoted(line) +
                        " " + test::quoted(share + "/zsh/site-functions"),
                    {});
}

} // namespace

TEST_CASE("the manual and the completions know every verb and option") {
    const Manager manager;
    const Strings completions{readFile(bashFile), readFile(zshFile), readFile(fishFile)};
    for (const auto& declared : allVerbs()) {
        auto words = wordsOf(declared.name);
        const auto manual = readFile(share + "/man/man1/korvane-" + words.front() + ".1");
        const auto verb = words.back();
        words.emplace_back("--help");
        for (const auto& option : optionsIn(manager.result(words))) {
            CAPTURE(verb);
            CAPTURE(option);
            // roff writes a dash that is typed as "\-".
            const auto inRoff = std::regex_replace(option, std::regex("-"), "\\-");
            if (option != "help") CHECK(contains(manual, "\\-\\-" + inRoff));
            for (const auto& completion : completions) CHECK(contains(completion, option));
        }
        CHECK(contains(manual, declared.name));
        CHECK(contains(readFile(share + "/man/man1/korvane.1"), declared.name));
        for (const auto& completion : completions) CHECK(contains(completion, verb));
    }
}

TEST_CASE("bash completes what a command takes at each place") {
    const Shell shell;
    struct Row {
        Strings words, offered;
    };
    const std::vector<Row> table{
        {{"mi"}, {"migrate"}},
        {{"create", "co"}, {"command"}},
        {{"profile", ""}, {"check", "--help"}},
        {{"icon", "l"}, {"lint"}},
        {{"icon", "lint", "--j"}, {"--json"}},
        {{"icon", "--j"}, {"--json"}},
        {{"icon", "lint", "--la"}, {}},
        {{"delete", "--da"}, {"--data"}},
        {{"delete", "--data", "Oth"}, {"Other"}},
        {{"show", "Tw"}, {"Two words"}},
        {{"rm", "--da"}, {"--data"}},
        {{"rm", "Tw"}, {"Two words"}},
        {{"ls", "--in", "a"}, {"afolder"}},
        {{"show", "afi"}, {"afile.txt"}},
        {{"show", "Other", "O"}, {}},
        {{"create", "app", "New", "Ma"}, {"Mail"}},
        {{"create", "app", "New", "org.example.m"}, {"org.example.mail"}},
        {{"create", "app", "New", "org.example.R"}, {"org.example.Reader"}},
        {{"create", "app", "New", "Le"}, {"Letter Reader"}},
        {{"create", "app", "New", "afi"}, {}},
        {{"create", "app", "New", "./afi"}, {"./afile.txt"}},
        {{"adopt", "Le"}, {"Letter Reader"}},
        {{"adopt", "org.ex"}, {"org.example.Reader"}},
        {{"adopt", "Ma"}, {}},
        {{"adopt", "afi"}, {}},
        {{"adopt", "./afi"}, {"./afile.txt"}},
        {{"create", "app", "--home", "x", "New", "Ma"}, {"Mail"}},
        {{"create", "app", "--home", "a"}, {"afolder"}},
        {{"create", "app", "--home", "=", "a"}, {"afolder"}},
        {{"create", "app", "--icon", "afi"}, {"afile.txt"}},
        {{"create", "app", "--strategy", "w"}, {"wrapper-identity"}},
        {{"create", "web", "--str"}, {}},
        {{"create", "web", "--label-position", ""}, {"bottom", "center", "top"}},
        {{"create", "web", "--label", ""}, {}},
        {{"create", "command", "New", "--termi"}, {"--terminal"}},
        {{"create", "command", "New", "--env", "A", "bash", "afi"}, {"afile.txt"}},
        {{"create", "command", "New", "bash", "-x", "afi"}, {"afile.txt"}},
        {{"create", "command", "New", "bash", "--termi"}, {}},
        {{"create", "command", "New", "bash", "--", "afi"}, {"afile.txt"}},
        {{"icon", "x", "--output", "afi"}, {"afile.txt"}},
        {{"icon", "x", "-o", "afi"}, {"afile.txt"}},
        {{"icon", "x", "--position", "t"}, {"top"}},
        {{"edit", "Other", "--set", "shareU"}, {"shareUserFolders"}},
        {{"edit", "Other", "--unset", "url", "shareU"}, {"shareUserFolders"}},
        {{"list", "--in", "a"}, {"afolder"}},
    };
    for (const auto& row : table) {
        CAPTURE(row.words);
        CHECK(shell.bash(row.words) == row.offered);
    }
    CHECK(holds(shell.bash({"create", "command", "New", "bas"}), "bash"));
    CHECK(shell.bash({"edit", "Other", "--set", ""}) == edit::keys());
}

TEST_CASE("fish completes what a command takes at each place") {
    if (lacks("fish")) return;
    const Shell shell;
    CHECK(shell.fish("korvane mi") == Strings{"migrate"});
    CHECK(shell.fish("korvane create co") == Strings{"command"});
    CHECK(shell.fish("korvane icon lint --la") == Strings{});
    CHECK(shell.fish("korvane icon lint --j") == Strings{"--json"});
    CHECK(shell.fish("korvane delete --data Oth") == Strings{"Other"});
    CHECK(holds(shell.fish("korvane show Tw"), "Two words"));
    CHECK(holds(shell.fish("korvane rm Tw"), "Two words"));
    CHECK(shell.fish("korvane show Other O") == Strings{});
    CHECK(holds(shell.fish("korvane create app --home x New Ma"), "Mail"));
    CHECK(shell.fish("korvane create app New Lett") == Strings{"Letter Reader"});
    CHECK(shell.fish("korvane adopt org.ex") == Strings{"org.example.Reader"});
    CHECK(shell.fish("korvane adopt afi") == Strings{});
    CHECK(shell.fish("korvane adopt ./afi") == Strings{"./afile.txt"});
    CHECK(holds(shell.fish("korvane create app --icon afi"), "afile.txt"));
    CHECK(holds(shell.fish("korvane create web --home a"), "afolder/"));
    CHECK(shell.fish("korvane create app --strategy wr") == Strings{"wrapper-identity"});
    CHECK(shell.fish("korvane create command New --termi") == Strings{"--terminal"});
    CHECK(holds(shell.fish("korvane create command New bash -x afi"), "afile.txt"));
    CHECK(shell.fish("korvane create command New bash --termi") == Strings{});
    CHECK(shell.fish("korvane icon x --position t") == Strings{"top"});
    CHECK(shell.fish("korvane edit Other --set shareU") == Strings{"shareUserFolders"});
}

TEST_CASE("zsh completes what a command takes at each place") {
    if (lacks("zsh")) return;
    const Shell shell;
    CHECK(shell.zsh("korvane mi") == Strings{"migrate"});
    CHECK(shell.zsh("korvane create co") == Strings{"command"});
    CHECK(shell.zsh("korvane icon lint --j") == Strings{"--json"});
    CHECK(shell.zsh("korvane delete --data Oth") == Strings{"Other"});
    CHECK(shell.zsh("korvane show Tw") == Strings{"Two\\ words"});
    CHECK(shell.zsh("korvane rm Tw") == Strings{"Two\\ words"});
    CHECK(holds(shell.zsh("korvane create app --home x New Ma"), "Mail"));
    CHECK(shell.zsh("korvane create app New Lett") == Strings{"Letter\\ Reader"});
    CHECK(shell.zsh("korvane adopt org.ex") == Strings{"org.example.Reader"});
    CHECK(shell.zsh("korvane adopt afi") == Strings{});
    CHECK(holds(shell.zsh("korvane adopt ./afi"), "afile.txt"));
    CHECK(holds(shell.zsh("korvane create app --icon afi"), "afile.txt"));
    CHECK(holds(shell.zsh("korvane create web --home a"), "afolder"));
    CHECK(shell.zsh("korvane create app --strategy wr") == Strings{"wrapper-identity"});
    CHECK(shell.zsh("korvane create command New --termi") == Strings{"--terminal"});
    CHECK(holds(shell.zsh("korvane create command New bash -x afi"), "afile.txt"));
    CHECK(shell.zsh("korvane create command New bash --termi") == Strings{});
    CHECK(shell.zsh("korvane icon x --position t") == Strings{"top"});
    CHECK(shell.zsh("korvane edit Other --set shareU") == Strings{"shareUserFolders"});
}

} // namespace korvane::test
