// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/** Values of a register in words. */
namespace VelnoCtl {

/** A state's name; "unnamed" for those that have none here. */
QString stateName(int state);

/** Kuruş as "1234.56 TL". */
QString lira(long long kurus);

/** Seconds since 1970 as this computer's local time, "2026-11-21 16:05:00". */
QString localTime(qint64 seconds);

/** A register's text, read as UTF-8, without what could steer a terminal. */
QString printable(const char *text);

} // namespace VelnoCtl
