// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace TestSupport {

/** A receipt or slip in JSON, and what is to be said of it. */
struct JsonRow
{
    const char *name;
    QByteArray json;
    QStringList faults;                   ///< of the reader, all of them; empty: it is good
    bool schemaKnows = !faults.isEmpty(); ///< whether the schema refuses it, too
};

QList<JsonRow> goodReceipts();
QList<JsonRow> badItems();    ///< receipts
QList<JsonRow> badReceipts(); ///< whose items are good
QList<JsonRow> goodSlips();
QList<JsonRow> badSlips();

} // namespace TestSupport
