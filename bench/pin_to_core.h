// SPDX-License-Identifier: Apache-2.0

#pragma once

/**
 * Keeps this process, and those it starts, on the core it runs on. Round trips between two processes differ
 * by the kernel's choice of cores more than by the code.
 */
void pinToCore();
