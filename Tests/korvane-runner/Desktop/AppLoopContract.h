#pragma once

#include "korvane-runner/Desktop/AppLoop.h"

#include <functional>
#include <memory>

namespace korvane::test {

/// Makes the loop that is tested.
using MakeLoop = std::function<std::unique_ptr<runner::AppLoop>()>;

/// Checks what AppLoop.h promises. Every loop's own tests call it, in subcases.
void checkAppLoop(const MakeLoop& make);

} // namespace korvane::test
