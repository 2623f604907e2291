#pragma once

#include "Manager/Operations/CreateRequest.h"
#include "korvane/Output/Surroundings.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What the words and options of "create" said, as they were typed.
struct CreateOptions {
    ambrel::ShortcutKind kind{};
    std::string name;
    std::string subject; ///< the application, address, document or program
    std::vector<std::string> commandArgs;
    std::optional<std::string> home;
    std::optional<std::string> output;
    std::optional<std::string> bundleId;
    std::optional<std::string> strategy;
    std::optional<std::string> icon;
    std::optional<std::string> workingDirectory;
    std::optional<std::string> label;
    std::optional<std::string> labelColor;
    std::optional<std::string> labelPosition;
    std::optional<std::string> runner;
    std::optional<std::string> processName;
    std::vector<std::string> args;    ///< in place of those that are worked out
    std::vector<std::string> addArgs; ///< behind those
    std::vector<std::string> environment;
    std::vector<std::string> plist;
    bool hideIcon = false;
    bool terminal = false;
    std::optional<bool> browser;
    std::optional<bool> openWith;
    std::optional<bool> sharedBus;
    std::optional<bool> hideSecrets;
    bool menuBar = false;
    bool menuBarTemplate = false;
    bool noShareFolders = false;
    bool noProfile = false;
    bool replace = false;
    bool asJson = false;
};

/// The request that the words mean: paths made absolute, names looked up. Throws UsageError for a
/// value that is none of its option's, and Refusal for what is not found.
CreateRequest requestFrom(const CreateOptions& options, const Surroundings& surroundings);

} // namespace korvane
