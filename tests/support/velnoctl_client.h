// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/hand_made_device.h"
#include "tests/support/plain.h"
#include "tests/support/test_support.h"

#include <QHash>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <functional>

QT_FORWARD_DECLARE_CLASS(QTemporaryDir)

namespace TestSupport {

constexpr int longestWait = 60'000; // ms, for a machine under load and sanitizers

inline const QByteArray yes = plain(true);
inline const QByteArray no = plain(false);

/** The options that send velnoctl to the register UB1234567890 on this port. */
QStringList target(quint16 port);

/** The object of a line that velnoctl printed; an empty one for anything else. */
QJsonObject object(const QByteArray &line);

/** The words of a line; EMPTY stands for an empty one, which splitting would lose. */
QStringList wordsOf(const QString &line);

/** One of the library's texts; no text for a null pointer. */
inline QByteArray text(const char *found)
{
    return found;
}

/** As velnoctl tells a cause, the lines behind the first indented. */
QByteArray causeInWords(int cause);

/** The path of a new file, day.velno, with this content. */
QString fileWith(const QTemporaryDir &folder, const QByteArray &content);

/** velnoctl as a child process, three hours ahead of UTC. */
class Client
{
public:
    /** @param redirection  what a shell would be told behind the arguments; nothing: no shell is in between
     */
    explicit Client(const QStringList &arguments, const QString &redirection = {});
    ~Client();
    Q_DISABLE_COPY_MOVE(Client)

    static QString program();

    /** Ends its input, waits for its end. @return -1 when it does not end in time or was killed */
    int exitCode();

    void say(const QByteArray &text);

    /** Waits for standard output to end with this. */
    bool printed(const QByteArray &text);

    /** Waits for standard error to hold this. */
    bool told(const QByteArray &text);

    void raise(int signal) const;

    QByteArray out; ///< what came so far
    QByteArray err;

private:
    void collect();
    bool waitUntil(const std::function<bool()> &holds);

    QProcess m_process;
};

/** A register that answers each command by its number, and the port where velnoctl is to meet it. */
class Device : public HandMadeDevice
{
public:
    Device();
    ~Device();

    void meet(int times = 1) { pairAndServe(port, times); }

    /** The numbers of the commands that came. */
    QList<int> codes();

    const quint16 port = freePort();
    QHash<int, QByteArray> answers; ///< a command without one finds the connection closed
    std::atomic<bool> isMute = false;

private:
    QList<QByteArray> answerTo(const QByteArray &payload) const;
};

} // namespace TestSupport
