#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace VelnoCtl {

/** What stands in front of the commands. */
struct Options
{
    QByteArray serial;  ///< 12 characters; empty when not given
    QByteArray address; ///< to listen on, or the relay's; empty when not given
    quint16 port = 0;   ///< 0 with the relay
    quint32 app = 0;    ///< 0 when not given
    quint32 timeout = 30'000;
    quint32 answerLimit = 0xFFFFFFFF; ///< ms; none
    QByteArray language = "en";
    bool isRelay = false;
    bool isJson = false;
    bool isHelp = false;
    bool isVersion = false;
    QStringList words; ///< the commands with their arguments

    /** Where the register is to be met, for people. */
    QString place() const;
};

/** @return what was wrong and what is accepted, or nothing */
QString parseOptions(const QStringList &arguments, Options *options);

/** Which option is missing to reach a register, and what is accepted; or nothing. */
QString missingTarget(const Options &options);

/** The whole of --version: also whom the build trusts. */
QString versionText();

/** The whole of --help. */
QString helpText();

} // namespace VelnoCtl
