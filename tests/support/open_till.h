// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/velnotill.h"

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

/** A till of velnotill.h with a ledger of its own, for tests. */
class OpenTill
{
public:
    explicit OpenTill(quint16 port)
        : m_path(m_folder.filePath(QStringLiteral("till.ledger")).toLocal8Bit())
        , m_settings{sizeof m_settings, 5, port, 20'000, 0, 0, "UB1234567890", "127.0.0.1",
                     m_path.constData()}
    {
        velnotill_open(&m_till, &m_settings);
    }
    ~OpenTill() { close(); }
    Q_DISABLE_COPY_MOVE(OpenTill)

    /** Closes it; a later till may go on with the ledger. */
    int close() { return m_till ? velnotill_close(std::exchange(m_till, nullptr)) : 0; }
    int openAgain() { return velnotill_open(&m_till, &m_settings); }

    operator VelnoTill *() const { return m_till; }
    VelnoTillSettings &settings() { return m_settings; }
    const QByteArray &ledger() const { return m_path; }

private:
    QTemporaryDir m_folder;
    QByteArray m_path;
    VelnoTillSettings m_settings;
    VelnoTill *m_till = nullptr;
};

inline QByteArray problem()
{
    return velnotill_problem();
}

/** Of the orders in these states, as listed. */
inline QStringList keysOf(VelnoTill *till, unsigned states)
{
    QStringList keys;
    velnotill_list(
        till, states,
        [](const char *key, const VelnoTillOutcome *, void *list) {
            static_cast<QStringList *>(list)->append(QString::fromUtf8(key));
        },
        &keys);
    return keys;
}

inline VelnoTillOutcome emptyOutcome()
{
    VelnoTillOutcome outcome{};
    outcome.size = sizeof outcome;
    return outcome;
}

inline constexpr char aReceipt[] =
    R"({"items":[{"name":"Ekmek","price":"12.50","section":1}],"payments":[{"cash":"rest"}]})";
inline constexpr char anotherReceipt[] =
    R"({"items":[{"name":"Ekmek","price":"13.00","section":1}],"payments":[{"cash":"rest"}]})";
inline constexpr char aSlip[] = R"({"encoding":"UTF-8","lines":["Afiyet olsun"]})";
