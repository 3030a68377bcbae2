// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"

#include <QProcess>
#include <QTemporaryDir>

#include <memory>

/** The till of examples/c as a program, at the real velno-register. */
namespace TestSupport {

using namespace Qt::StringLiterals;

inline const QString serialNo = QString::fromLatin1(SimulatedRegister::serial);

/** The till with a register of its own, both of which remember what they sold. */
class Shop
{
public:
    explicit Shop(const QStringList &options = {});

    /** A register process, which finds its journal and holds no keys. */
    void plugIn(const QStringList &options = {});

    void open();
    void type(const QByteArray &lines);
    /** Reads until the till has said this. */
    bool says(const QByteArray &text);
    Outcome close();
    Outcome day(const QByteArray &lines); ///< from opening to closing
    void kill();

    /** Until the till has sent this; what came before is passed over. */
    bool waitForCommand(const QString &command) const;

    QString ledgerFile() const { return m_folder.filePath(u"ledger"_s); }

    /** What the register has printed, a word and a number for each: "receipt 1". */
    QStringList prints();

    std::unique_ptr<SimulatedRegister> reg;

private:
    QTemporaryDir m_folder;
    quint16 m_port;
    std::unique_ptr<QProcess> m_till;
    QByteArray m_output;
};

} // namespace TestSupport
