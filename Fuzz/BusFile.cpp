#include "korvane-runner/Bus/Linux/BusAddress.h"
#include "korvane-runner/Bus/NamePolicy.h"
#include "korvane-runner/Bus/NameSyntax.h"
#include "korvane-runner/Bus/ServiceFile.h"
#include "korvane-runner/Bus/ShownEntry.h"

#include <algorithm>
#include <cstdlib>

using namespace korvane::runner::bus;

namespace {

void require(bool isTrue) {
    if (!isTrue) std::abort();
}

bool holdsNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

/// A service has a name that somebody can own, and a program that can be named to the system.
void checkService(std::string_view text) {
    const auto service = ServiceFile::parse(text);
    if (!service) return;
    require(isBusName(service->name) && !isUniqueName(service->name));
    require(!service->command.empty());
    require(
        std::ranges::none_of(service->command, [](const auto& word) { return holdsNul(word); }));
    ServiceTable table;
    table.add(*service);
    require((table.find(service->name) != nullptr) == service->isStartable());
}

/// An address is the same after programs were told it.
void checkAddress(std::string_view text) {
    const auto address = BusAddress::parse(text, "/run/user/7");
    if (address) require(BusAddress::parse(address->text(), "") == address);
}

/// What one line says is said by the text that it is in.
void checkNames(std::string_view text) {
    const auto line = text.substr(0, text.find('\n'));
    const auto rule = NameRule::parse(line);
    const auto rules = nameRules(line);
    if (rule && !line.starts_with('#')) require(rules == std::vector{*rule});
    nameRules(text);
}

} // namespace

/// Texts that lie in files and variables: services, entries of menus, names, addresses.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    checkService(text);
    checkAddress(text);
    checkNames(text);
    isShownApplication(text);
    return 0;
}
