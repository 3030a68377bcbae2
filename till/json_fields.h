// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/json_value.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace Velno::Receipts {

/** Collects what is wrong: "items[3].section: 9; accepted: 1 to 8". */
class Faults
{
public:
    void add(const QString &path, const QString &found, const QString &accepted);
    qsizetype count() const { return m_faults.size() + m_more; }

    /** All of them; of a thousand and more the number stands in place of the rest. */
    QStringList take();

private:
    QStringList m_faults;
    qsizetype m_more = 0;
};

enum class Need { Required, Optional };

struct Range
{
    qint64 least;
    qint64 most;
};

/** "items[3]" */
QString pathOf(const QString &list, qsizetype index);

/**
 * The fields of one object. Each function takes the field of a name and judges it: nothing when it is not
 * there, or not good; what is wrong then is among the faults. Object and faults must outlive it.
 */
class Fields
{
public:
    /** Refuses what is no object, names that are not accepted, and fields that stand there twice. */
    Fields(const JsonValue &object, const QString &path, const QStringList &accepted, Faults *faults);

    bool has(const QString &name) const { return find(name) != nullptr; }
    const JsonValue *find(const QString &name) const; ///< nullptr: not there
    QString pathTo(const QString &name) const;

    /** "12.50" or whole kuruş; up to mostKurus. @param least  0 or 1; @param orElse  what the caller accepts
     * beside it, for the message */
    std::optional<qint64> amount(const QString &name, Need need, qint64 least,
                                 const QString &orElse = QString()) const;
    /** "1.5" or whole units, in thousandths; above 0. */
    std::optional<qint32> quantity(const QString &name) const;
    std::optional<int> number(const QString &name, Need need, Range range) const;
    bool flag(const QString &name) const; ///< false, unless it is there and true
    /** Up to so many bytes of UTF-8, one at least, no control characters. */
    std::optional<QString> text(const QString &name, Need need, qsizetype mostBytes) const;
    /** One of these words. @return its place among them */
    std::optional<int> word(const QString &name, Need need, const QStringList &words) const;
    /** An identity number: it never appears among the faults. */
    std::optional<QString> identity(const QString &name, const QString &accepted,
                                    const std::function<bool(const QByteArray &)> &isGood) const;
    /** A list of so many values; nullptr: it is not there, or not good. */
    const std::vector<JsonValue> *list(const QString &name, Need need, Range range) const;

    void refuse(const QString &name, const QString &found, const QString &accepted) const;

private:
    /** Has a field that is there read by `read`, which returns nothing for what is not good. What is accepted
     * is put into words only when it is told. */
    template <typename Accepted, typename Read>
    auto take(const QString &name, Need need, const Accepted &accepted, const Read &read) const;

    const JsonValue &m_object;
    QString m_path;
    Faults *m_faults;
};

/** Not empty, and without control characters. */
bool isPlainText(const QString &text);

} // namespace Velno::Receipts
