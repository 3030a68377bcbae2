// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace Velno::Receipts {

/**
 * JSON as it was written. Qt's own reader makes floating point numbers of 12.0 and of long digits, and keeps
 * one of two members of the same name: of money neither may happen unseen.
 */
struct JsonValue
{
    enum class Kind { Null, True, False, Number, Text, List, Object };

    Kind kind = Kind::Null;
    QString text;                  ///< characters of a text; a number as it was written
    std::vector<JsonValue> values; ///< of a list, of an object's members
    std::vector<QString> names;    ///< of an object's members, in the order in which they were written

    bool isText() const { return kind == Kind::Text; }
    bool isList() const { return kind == Kind::List; }
    bool isObject() const { return kind == Kind::Object; }
};

/**
 * Reads RFC 8259's JSON in UTF-8, of at most 1 MiB, 50,000 values and 8 levels. Takes time in proportion to
 * its length.
 *
 * @param problem  filled on failure: "line 3, column 7: this is no JSON; accepted: a value"
 */
std::optional<JsonValue> readJson(const QByteArray &json, QString *problem);

/** A value in a few words, for a message: `"12,50"`, `9`, `a list`. */
QString inWords(const JsonValue &value);

/** A text as it may stand in a message: shortened, with nothing that is not seen. */
QString shortened(const QString &text);
QString quoted(const QString &text); ///< the same in quotes

} // namespace Velno::Receipts
