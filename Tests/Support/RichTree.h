#pragma once

#include "Support/Files.h"

namespace korvane::test {

/// Makes a tree with one item of every kind, odd modes and old times.
void makeRichTree(const Path& top);

/// Checks that the tree at `top` is as makeRichTree() made it.
void checkRichTree(const Path& top);

} // namespace korvane::test
