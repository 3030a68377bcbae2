// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>

/**
 * Shows on standard output what --help and --version ask for, and on standard error what is wrong. To be
 * called before there is an application object: it needs no display. Qt's own options, such as -platform, are
 * left to that object.
 *
 * @return the exit status; nothing when the window is wanted
 */
std::optional<int> shownInsteadOfAWindow(int argc, const char *const *argv);
