#pragma once

#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Programs/StartPlan.h"
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
    bool browser = false;
    bool openWith = false;
    bool menuBar = false;
    bool menuBarTemplate = false;
    bool noShareFolders = false;
    bool noProfile = false;
    bool replace = false;
    bool asJson = false;
};

/// A request that is ready for the factory, with everything in it checked and made absolute.
struct PreparedRequest {
    ambrel::WrapperFactory::Request request;
    std::optional<ambrel::AppBundle> target; ///< of an app instance
    std::optional<StartPlan> plan;           ///< of an app instance
    std::optional<ambrel::Path> runner;
};

/// Throws Refusal or UsageError for what cannot become an instance. Writes nothing.
PreparedRequest prepareRequest(const CreateOptions& options, const Surroundings& surroundings);

/// "K=V" split at the first "=". Throws UsageError, naming `option`, without a key or "=".
std::pair<std::string, std::string> keyAndValue(const std::string& text, const std::string& option);

} // namespace korvane
