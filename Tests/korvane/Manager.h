#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/TempDir.h"

#include <nlohmann/json.hpp>

namespace korvane::test {

/// The built manager in a home of its own, with no entries, icons or instances of the machine in
/// sight. Its standard input is empty.
class Manager {
public:
    Manager();

    ProgramResult run(const Strings& words,
                      const std::map<std::string, std::string>& more = {}) const;
    /// On a terminal, with `input` typed into it; the output holds what both streams showed.
    ProgramResult runOnTerminal(const Strings& words, const std::string& input) const;
    /// What a run that has to succeed wrote to standard output.
    std::string result(const Strings& words) const;
    nlohmann::json json(const Strings& words) const { return nlohmann::json::parse(result(words)); }
    /// Runs "create WORD…" with the built runner and returns the new bundle.
    Path create(Strings words) const;
    /// What a run that has to be refused with `status` wrote to standard error.
    std::string refusal(const Strings& words, int status = 1) const;

    /// The whole command line, for a test that starts it itself.
    Strings command(const Strings& words) const;
    ProgramSetup setup(const Strings& words) const;
    /// The same as the user of asOrdinaryUser(), to whom everything in `tmp` is given.
    ProgramSetup setupAsOrdinaryUser(const Strings& words) const;

    Path applications() const { return home / "Applications"; }
    Path instanceHome(const std::string& name) const { return home / ("KorvaneInstances/" + name); }
    /// An application called `name` among the installed ones; its program writes its arguments.
    Path installApp(const std::string& name, const std::string& identifier) const;
    ambrel::InstanceConfig configOf(const Path& bundle) const;

    TempDir tmp;
    OwnUserHome home;

private:
    ScopedVariable dataHome_;
    ScopedVariable dataDirs_;
    ScopedVariable noColor_;
};

/// A program that every machine with a shell has, as a command instance.
inline const std::string aProgram = "/bin/true";

/// Whether `text` is lines that end in a line break and hold `part` somewhere.
bool says(const std::string& text, const std::string& part);

} // namespace korvane::test
