// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/library_test.h"

/** Calls of the device library with arguments that pass; they return its code. */
namespace TestSupport {

int login();
int readState();
int addItem();
int readSaleState();
int addContribution();
int cancelSale();
int readSection();
int readAcquirers();

int initialize(const char *address, quint16 port, unsigned int timeout = brief);

/** The keys that library and register have agreed on. */
Velno::GMP::MatchExt agreedKeys();

/** What a call ends with that is interrupted as soon as it waits. */
int interrupted(const std::function<int()> &call);

/** A paired register answers one call with this plaintext. */
int answered(const QByteArray &plaintext, int (*call)());

} // namespace TestSupport
