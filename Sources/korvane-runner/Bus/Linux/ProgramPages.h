#pragma once

namespace korvane::runner::bus {

/// Takes what this process has read of its program's own file, and not written, out of its memory;
/// what is needed again is read again. For a process that stays, and does little of what its start
/// did: what nobody else has read counts as its own.
void forgetProgramPages() noexcept;

} // namespace korvane::runner::bus
