#include "korvane-runner/Bus/Linux/ProgramPages.h"

#include <cstddef>
#include <link.h>
#include <span>
#include <sys/mman.h>
#include <unistd.h>

namespace korvane::runner::bus {

namespace {

/// A segment as the System V ABI (ELF) has it, of the program that is loaded at `base`. What can be
/// written differs from the file: addresses have been put into it.
void forget(std::size_t base, const ElfW(Phdr) & segment) noexcept {
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) return;
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const auto begin = base + segment.p_vaddr;
    const auto before = begin % page;
    ::madvise(reinterpret_cast<void*>(begin - before), before + segment.p_memsz, MADV_DONTNEED);
}

} // namespace

void forgetProgramPages() noexcept {
    const auto visit = [](dl_phdr_info* object, std::size_t, void*) {
        for (const auto& segment : std::span(object->dlpi_phdr, object->dlpi_phnum)) {
            forget(object->dlpi_addr, segment);
        }
        return 1; // the program is the first that is told, libraries follow
    };
    ::dl_iterate_phdr(visit, nullptr);
}

} // namespace korvane::runner::bus
