// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QVector>

/** Queries that other commands share. The lock is the caller's. */
namespace Velno::Ext {

/**
 * Reads the register's state.
 *
 * @param state  written on success
 * @param list   what the register lists behind its state
 * @param extra  when given and the state is 5, the integer that the register adds then
 * @return as velnoext_ecr_state()
 */
int velnoext_ecr_state_impl(unsigned int timeout, int *state, QVector<int> *list, int *extra);

/** Whether a register in this state does nothing at the moment: a sale or a report may begin. */
bool isIdle(int state);

} // namespace Velno::Ext
