// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringList>

/** The printer's paper: 42 columns, and how words are set on it. */
namespace Simulator {

constexpr int paperWidth = 42;

QString centred(const QString &text);

/** A text at each edge; the left one gives way when there is no room for both. */
QString twoSided(const QString &left, const QString &right);

/** An amount at the right edge, with the asterisk of receipts in front of it. */
QString withAmount(const QString &left, qint64 amount);

/** A line of dashes. */
QString rule();

/** The text in lines that are not longer than the width; at least one line. */
QStringList wrapped(const QString &text, int width);

/** 21.11.2026 and 16:05 in the computer's time zone, from seconds since 1970. */
QString dateText(qint64 seconds);
QString timeText(qint64 seconds);

} // namespace Simulator
