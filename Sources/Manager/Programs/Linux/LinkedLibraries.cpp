#include "Manager/Programs/Linux/LinkedLibraries.h"

#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Pipe.h"

#include <deque>
#include <fcntl.h>
#include <gelf.h>
#include <map>
#include <memory>
#include <sstream>
#include <vector>

namespace korvane {

using ambrel::OwnedFd;
using ambrel::Path;
namespace paths = ambrel::paths;

namespace {

/// What one ELF file says of the libraries it needs.
struct DynamicSection {
    unsigned machine = 0;
    std::vector<std::string> needed;
    std::vector<Path> searchPath; ///< DT_RUNPATH or DT_RPATH, with $ORIGIN replaced
};

struct EndElf {
    void operator()(Elf* elf) const noexcept { elf_end(elf); }
};
using ElfPtr = std::unique_ptr<Elf, EndElf>;

Path withOrigin(std::string folder, const Path& file) {
    const Path origin{paths::deletingLastComponent(file)};
    for (const std::string name : {"$ORIGIN", "${ORIGIN}"}) {
        const auto at = folder.find(name);
        if (at != std::string::npos) folder.replace(at, name.size(), origin);
    }
    return folder;
}

void addSearchPath(DynamicSection& section, const std::string& list, const Path& file) {
    std::istringstream folders(list);
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (!folder.empty()) section.searchPath.push_back(withOrigin(folder, file));
    }
}

void addEntries(DynamicSection& section, Elf* elf, Elf_Scn* part, const GElf_Shdr& header,
                const Path& file) {
    Elf_Data* const data = elf_getdata(part, nullptr);
    if (data == nullptr || header.sh_entsize == 0) return;
    const auto count = header.sh_size / header.sh_entsize;
    for (std::size_t i = 0; i < count; ++i) {
        GElf_Dyn entry;
        if (gelf_getdyn(data, static_cast<int>(i), &entry) == nullptr) return;
        const auto text = [&] {
            const char* found = elf_strptr(elf, header.sh_link, entry.d_un.d_val);
            return std::string(found == nullptr ? "" : found);
        };
        if (entry.d_tag == DT_NEEDED) section.needed.push_back(text());
        if (entry.d_tag == DT_RUNPATH || entry.d_tag == DT_RPATH) {
            addSearchPath(section, text(), file);
        }
    }
}

bool importsIn(Elf* elf, Elf_Scn* part, const GElf_Shdr& header,
               const std::set<std::string>& names) {
    Elf_Data* const data = elf_getdata(part, nullptr);
    if (data == nullptr || header.sh_entsize == 0) return false;
    const auto count = header.sh_size / header.sh_entsize;
    for (std::size_t i = 0; i < count; ++i) {
        GElf_Sym symbol;
        if (gelf_getsym(data, static_cast<int>(i), &symbol) == nullptr) return false;
        const char* found = elf_strptr(elf, header.sh_link, symbol.st_name);
        if (symbol.st_shndx == SHN_UNDEF && found != nullptr && names.contains(found)) return true;
    }
    return false;
}

bool requireLookForImport(const Path& file, const std::set<std::string>& names) {
    if (!ambrel::fileSystem::exists(file) || ambrel::fileSystem::isFolder(file)) return false;
    const auto fd = OwnedFd::open("read", file, O_RDONLY | O_NONBLOCK);
    elf_version(EV_CURRENT);
    const ElfPtr elf(elf_begin(fd.get(), ELF_C_READ, nullptr));
    if (!elf || elf_kind(elf.get()) != ELF_K_ELF) return false;
    Elf_Scn* part = nullptr;
    while ((part = elf_nextscn(elf.get(), part)) != nullptr) {
        GElf_Shdr header;
        const bool isTable = gelf_getshdr(part, &header) != nullptr && header.sh_type == SHT_DYNSYM;
        if (isTable && importsIn(elf.get(), part, header, names)) return true;
    }
    return false;
}

/// Absent for what is no ELF file, or cannot be read.
std::optional<DynamicSection> dynamicSectionOf(const Path& file) {
    if (!ambrel::fileSystem::exists(file) || ambrel::fileSystem::isFolder(file)) return {};
    const auto fd = OwnedFd::open("read", file, O_RDONLY | O_NONBLOCK);
    elf_version(EV_CURRENT);
    const ElfPtr elf(elf_begin(fd.get(), ELF_C_READ, nullptr));
    GElf_Ehdr head;
    if (!elf || elf_kind(elf.get()) != ELF_K_ELF || gelf_getehdr(elf.get(), &head) == nullptr) {
        return std::nullopt;
    }
    DynamicSection section;
    section.machine = head.e_machine;
    Elf_Scn* part = nullptr;
    while ((part = elf_nextscn(elf.get(), part)) != nullptr) {
        GElf_Shdr header;
        const bool isDynamic =
            gelf_getshdr(part, &header) != nullptr && header.sh_type == SHT_DYNAMIC;
        if (isDynamic) addEntries(section, elf.get(), part, header, file);
    }
    return section;
}

std::optional<DynamicSection> tryRead(const Path& file) noexcept {
    try {
        return dynamicSectionOf(file);
    } catch (const std::exception&) {
        return std::nullopt; // what cannot be read tells nothing
    }
}

/// Where the loader finds a library by its name alone, as "ldconfig -p" lists it: one line each,
/// "NAME (TYPE) => PATH".
std::multimap<std::string, Path> loaderCache() {
    std::multimap<std::string, Path> cache;
    try {
        auto pipe = ambrel::Pipe::make();
        ambrel::ChildProcess tool({.executable = "/sbin/ldconfig",
                                   .arguments = {"-p"},
                                   .environment = ambrel::Environment(),
                                   .standardOutput = pipe.writeEnd});
        tool.launch();
        std::istringstream lines(pipe.readToEnd());
        tool.waitUntilExit();
        for (std::string line; std::getline(lines, line);) {
            const auto name = line.find_first_not_of(" \t");
            const auto arrow = line.find(" => ");
            if (name == std::string::npos || arrow == std::string::npos) continue;
            cache.emplace(line.substr(name, line.find(' ', name) - name), line.substr(arrow + 4));
        }
    } catch (const std::exception&) {
        // Without the tool there is no cache: the usual folders remain.
    }
    return cache;
}

class Walk {
public:
    std::set<std::string> from(const Path& program) {
        const auto first = tryRead(program);
        if (!first) return {};
        machine_ = first->machine;
        std::deque<DynamicSection> open{*first};
        while (!open.empty()) {
            const auto section = std::move(open.front());
            open.pop_front();
            for (const auto& name : section.needed) {
                if (!seen_.insert(name).second) continue;
                if (auto next = find(name, section.searchPath)) open.push_back(std::move(*next));
            }
        }
        return std::move(seen_);
    }

    bool finds(const std::string& name, const Path& program) {
        const auto own = tryRead(program);
        if (!own) return false;
        machine_ = own->machine;
        return find(name, own->searchPath).has_value();
    }

private:
    std::optional<DynamicSection> find(const std::string& name, const std::vector<Path>& folders) {
        for (const auto& file : candidates(name, folders)) {
            auto section = tryRead(file);
            if (section && section->machine == machine_) return section;
        }
        return std::nullopt;
    }

    std::vector<Path> candidates(const std::string& name, const std::vector<Path>& folders) {
        if (name.find('/') != std::string::npos) return {name};
        std::vector<Path> files;
        for (const auto& folder : folders) files.push_back(paths::join(folder, name));
        const auto [begin, end] = cache_.equal_range(name);
        for (auto entry = begin; entry != end; ++entry) files.push_back(entry->second);
        for (const char* folder : {"/lib", "/usr/lib", "/lib64", "/usr/lib64"}) {
            files.push_back(paths::join(folder, name));
        }
        return files;
    }

    unsigned machine_ = 0;
    std::multimap<std::string, Path> cache_ = loaderCache();
    std::set<std::string> seen_;
};

} // namespace

bool importsAny(const Path& program, const std::set<std::string>& names) {
    try {
        return requireLookForImport(program, names);
    } catch (const std::exception&) {
        return false; // what cannot be read tells nothing
    }
}

std::set<std::string> linkedLibraries(const Path& program) { return Walk().from(program); }

bool isLibraryInstalled(const std::string& name) { return Walk().finds(name, "/proc/self/exe"); }

} // namespace korvane
