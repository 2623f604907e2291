#include "korvane/Verbs/LeftoversVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Operations/Leftovers.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Attempts.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"

#include <array>
#include <ctime>
#include <memory>
#include <ostream>

namespace korvane {

namespace {

/// "412 bytes", "1.3 MB".
std::string sizeText(std::uint64_t bytes) {
    constexpr std::array<const char*, 4> units{"kB", "MB", "GB", "TB"};
    if (bytes < 1000) return counted(bytes, "byte");
    auto tenths = bytes / 100;
    std::size_t unit = 0;
    for (; tenths >= 10'000 && unit + 1 < units.size(); ++unit) tenths /= 1000;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " " + units[unit];
}

std::string formatted(std::chrono::sys_seconds time, const char* format, bool isLocal) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    const auto* known = isLocal ? ::localtime_r(&seconds, &parts) : ::gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    if (known != nullptr) std::strftime(text.data(), text.size(), format, &parts);
    return text.data();
}

void writeTable(const std::vector<LeftoverHome>& homes, const Surroundings& surroundings) {
    Table table;
    table.add({"HOME", "SIZE", "LAST USED"});
    for (const auto& [home, size, lastUsed] : homes) {
        table.add({home, sizeText(size.bytes),
                   lastUsed ? formatted(*lastUsed, "%Y-%m-%d", true) : std::string("?")});
    }
    table.write(surroundings.results);
}

void writeJson(const std::vector<LeftoverHome>& homes, const Surroundings& surroundings) {
    auto array = nlohmann::json::array();
    for (const auto& [home, size, lastUsed] : homes) {
        nlohmann::json object{{"home", json::text(home)}, {"bytes", size.bytes}};
        if (lastUsed) object["lastUsed"] = formatted(*lastUsed, "%Y-%m-%dT%H:%M:%SZ", false);
        array.push_back(std::move(object));
    }
    json::write(array, surroundings.results);
}

int listLeftovers(bool asJson, const Surroundings& surroundings) {
    const auto homes = findLeftovers(surroundings.user, Measure::yes);
    if (asJson) {
        writeJson(homes, surroundings);
    } else if (homes.empty()) {
        say(surroundings, "No instance left a home behind.");
    } else {
        writeTable(homes, surroundings);
        say(surroundings, "Delete one for good with: korvane leftovers delete HOME");
    }
    return 0;
}

struct DeleteOptions {
    std::vector<std::string> homes;
    bool yes = false;
    bool noInput = false;
};

/// Returns false when the user says no.
bool agreed(const DeleteOptions& options, const std::vector<LeftoverHome>& homes,
            const Surroundings& surroundings) {
    if (options.yes) return true;
    std::string places;
    for (const auto& leftover : homes) {
        places += (places.empty() ? "" : ", ") + ambrel::utf8::oneLine(leftover.home) + " (" +
                  sizeText(leftover.size.bytes) + ")";
    }
    const bool canAsk = surroundings.inputIsTerminal && surroundings.messagesAreTerminal;
    if (!canAsk || options.noInput) {
        throw Refusal("Deleting the data in " + places +
                      " cannot be undone, and nobody can be asked. Say so with --yes.");
    }
    return confirm(surroundings, "Delete all data in " + places + " for good?");
}

int deleteLeftovers(const DeleteOptions& options, const Surroundings& surroundings) {
    std::vector<LeftoverHome> homes;
    const auto measure = options.yes ? Measure::no : Measure::yes;
    for (const auto& home : options.homes) {
        homes.push_back(requireLeftover(home, surroundings.user, measure));
    }
    if (!agreed(options, homes, surroundings)) throw Refusal("Nothing was deleted.");
    return attemptEach(homes.size(), surroundings, [&](std::size_t number) {
        const auto& leftover = homes[number];
        removeLeftover(leftover, surroundings.user);
        say(surroundings, "Deleted " + ambrel::utf8::oneLine(leftover.home) + ".");
    });
}

} // namespace

Verb leftoversVerb() {
    return {"leftovers",
            "List the homes that no instance has any more.",
            {"korvane leftovers", "korvane leftovers --json", "korvane leftovers delete Work"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto asJson = std::make_shared<bool>(false);
                options::asJson(app, *asJson);
                return [asJson, &surroundings](const auto&) {
                    return listLeftovers(*asJson, surroundings);
                };
            }};
}

Verb leftoversDeleteVerb() {
    return {"leftovers delete",
            "Delete homes that no instance has any more, with all data.",
            {"korvane leftovers delete Work", "korvane leftovers delete /data/Work --yes"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<DeleteOptions>();
                options::taking(app,
                                options::texts(app, "HOME", given->homes,
                                               "The path, or the name in ~/KorvaneInstances")
                                    ->required()
                                    ->expected(-1),
                                {Takes::folder});
                options::flag(app, "-y,--yes", given->yes, "Do not ask");
                options::flag(app, "--no-input", given->noInput, "Refuse instead of asking");
                return [given, &surroundings](const auto&) {
                    return deleteLeftovers(*given, surroundings);
                };
            }};
}

} // namespace korvane
