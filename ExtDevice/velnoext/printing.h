// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/velnoext.h"

/** How a slip's lines begin. */
namespace Velno::Ext {

/** The first byte of a text: bit 0 style A, bit 1 style B, and of the others the one that its size shifts to.
 */
char attributeOf(const VelnoTextStyle &style);

/** The first byte of a line with a left and a right text, which has one size alone. */
char justifiedAttributeOf(const VelnoTextStyle &style);

} // namespace Velno::Ext
