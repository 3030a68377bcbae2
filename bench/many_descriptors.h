// SPDX-License-Identifier: Apache-2.0

#pragma once

/** Raises this process's limit of open descriptors as far as it may. */
void allowManyDescriptors();
