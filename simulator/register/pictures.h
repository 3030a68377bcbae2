// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/pictures/picture_module.h"

namespace Simulator {

/**
 * Loads what draws, from where it lies beside the program; needs a QCoreApplication.
 *
 * @param problem  why there is none, when null is returned
 */
const PictureModule *loadPictureModule(QString *problem);

} // namespace Simulator
