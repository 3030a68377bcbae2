// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/session.h"

#include <QByteArrayList>

/** What the tests of the engine ask of its session. */
namespace TestSupport {

inline constexpr char serial[] = "UB1234567890";

/** The session of the process is as if nothing had been said. */
void clearSession();

int checkFrame(const QByteArray &frame, const char *identity, bool parse);
QByteArrayList tagsOf(const QByteArray &body);

/** The value of an element of the body, "missing" when there is none. */
QByteArray valueIn(const QByteArray &body, const char *tag);

/** Lets a session receive what one side prepared. */
void deliver(Velno::GMP::Session &session, const QByteArray &body, Velno::GMP::MessageTag kind,
             bool response);

void deliver(const QByteArray &body, Velno::GMP::MessageTag kind, bool response);

} // namespace TestSupport
