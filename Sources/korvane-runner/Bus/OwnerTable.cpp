#include "korvane-runner/Bus/OwnerTable.h"

#include "korvane-runner/Bus/NameSyntax.h"

namespace korvane::runner::bus {

OwnerTable::Connection OwnerTable::connected(std::string_view uniqueName, std::int64_t process) {
    const auto found = programs_.find(uniqueName);
    if (found != programs_.end()) forget(found);
    programs_.emplace(uniqueName, Program{++lastConnection_, process});
    return lastConnection_;
}

void OwnerTable::disconnected(std::string_view uniqueName, Connection connection) {
    const auto found = programs_.find(uniqueName);
    if (found != programs_.end() && found->second.connection == connection) forget(found);
}

void OwnerTable::forget(Programs::iterator program) {
    for (const auto& name : program->second.names) {
        const auto owner = owners_.find(name);
        if (owner != owners_.end() && owner->second == program->first) owners_.erase(owner);
    }
    programs_.erase(program);
}

// In this order, so that no name is somebody's without being among that one's: there may be no
// memory for either.
void OwnerTable::acquired(std::string_view name, std::string_view uniqueName) {
    const auto program = programs_.find(uniqueName);
    if (isUniqueName(name) || program == programs_.end()) return;
    program->second.names.emplace(name);
    const auto [owner, isNew] = owners_.try_emplace(std::string(name), uniqueName);
    if (isNew || owner->second == uniqueName) return;
    std::string next(uniqueName);
    forgetName(name, owner->second);
    owner->second = std::move(next);
}

// The next owner may have heard of it first: connections are read in any order.
void OwnerTable::lost(std::string_view name, std::string_view uniqueName) {
    const auto found = owners_.find(name);
    if (found == owners_.end() || found->second != uniqueName) return;
    forgetName(name, uniqueName);
    owners_.erase(found);
}

void OwnerTable::forgetName(std::string_view name, std::string_view uniqueName) {
    const auto program = programs_.find(uniqueName);
    if (program == programs_.end()) return;
    auto& names = program->second.names;
    if (const auto found = names.find(name); found != names.end()) names.erase(found);
}

std::optional<std::string> OwnerTable::ownerOf(std::string_view name) const {
    if (isUniqueName(name)) {
        if (programs_.find(name) == programs_.end()) return std::nullopt;
        return std::string(name);
    }
    const auto found = owners_.find(name);
    if (found == owners_.end()) return std::nullopt;
    return found->second;
}

std::vector<std::string> OwnerTable::namesOf(std::string_view uniqueName) const {
    const auto found = programs_.find(uniqueName);
    if (found == programs_.end()) return {};
    const auto& names = found->second.names;
    return {names.begin(), names.end()};
}

std::optional<std::int64_t> OwnerTable::processOf(std::string_view name) const {
    const auto owner = ownerOf(name);
    if (!owner) return std::nullopt;
    const auto found = programs_.find(*owner);
    if (found == programs_.end()) return std::nullopt;
    return found->second.process;
}

} // namespace korvane::runner::bus
