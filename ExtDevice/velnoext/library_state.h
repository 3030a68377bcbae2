// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"
#include "ExtDevice/network/interruption.h"
#include "ExtDevice/velnoext/connection_thread.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <QByteArray>
#include <QHash>
#include <QIODevice>
#include <QMutex>
#include <QPointer>
#include <QVector>

#include <atomic>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>

/** The inside of the device library. */
namespace Velno::Ext {

/** What a public function answers, by the names of this room; velnoext.h tells each code's meaning. */
enum Result {
    Success = VelnoResult_Success,
    NotReady = VelnoResult_NotReady,
    ConnectionFailed = VelnoResult_ConnectionFailed,
    NullArgument = VelnoResult_NullArgument,
    BadValue = VelnoResult_BadValue,
    ReplyUnreadable = VelnoResult_ReplyUnreadable,
    WrongState = VelnoResult_WrongState,
    StepNotTaken = VelnoResult_StepNotTaken,
    Refused = VelnoResult_Refused,
    NoPaper = VelnoResult_NoPaper,
    PairingFailed = VelnoResult_PairingFailed,
    NotAuthentic = VelnoResult_NotAuthentic,
    MalformedReply = VelnoResult_MalformedReply,
    NoApplicationHash = VelnoResult_NoApplicationHash
};

constexpr qsizetype serialNoSize = 12;
constexpr unsigned int noTimeLimit = 0xFFFFFFFF;

/** Owns a connection; null also once somebody else has deleted it, as its parent may. */
struct DeleteDevice
{
    using pointer = QPointer<QIODevice>;
    void operator()(const pointer &device) const { delete device.data(); }
};
using OwnedDevice = std::unique_ptr<QIODevice, DeleteDevice>;

/**
 * Connects a register that is in this process, in place of sockets. Runs on the caller's thread. A record
 * without keys is that of a register that is not paired: it is to be filled then.
 *
 * @return Success, and the connection; or another Result, its cause set by failedBy()
 */
using Connector = std::function<int(const QByteArray &serialNo, Velno::GMP::MatchExt *record,
                                    std::unique_ptr<QIODevice> *connection)>;

/**
 * The process-wide state. Everything but errorDetail and cause is guarded by connectionMutex, which each
 * public function holds for its whole run. The worker thread reads and writes it only while a caller that
 * holds the lock waits for it; it never takes the lock itself. It makes and ends the connections, and lends
 * them to the thread of a call, which sends and receives by itself.
 */
struct LibraryState
{
    QMutex connectionMutex;
    std::atomic<int> errorDetail = 0; ///< read without the lock
    std::atomic<int> cause = 0;       ///< a VelnoCause; read without the lock
    unsigned int appNo = 0;
    QByteArray activeDevice;                                ///< serial number; empty for none
    std::map<QByteArray, OwnedDevice> connections;          ///< by serial number
    QHash<QByteArray, Velno::GMP::MatchExt> pairingRecords; ///< by serial number
    std::unique_ptr<ConnectionThread>
        connectionThread;                   ///< where all sockets live; null while not initialised
    Interruption interruption;              ///< of the public function under way
    unsigned int answerLimit = noTimeLimit; ///< ms for all of an answer
    bool codecSet = false;                  ///< whether the slip has an encoding
    QVector<QByteArray> slipContent;        ///< lines to be printed

    Connector connector; ///< empty: registers come over sockets
};

/** The one state; it lives until the process ends, also for threads that outlast static destruction. */
LibraryState &library();

/** The time of a public function: it holds the lock, nothing is wrong yet, and velnoext_interrupt() ends its
 * waits. */
class PublicCall
{
public:
    PublicCall();

private:
    QMutexLocker<QMutex> m_lock;
    Interruption::Call m_call;
};

/** For a signal handler: what ends the waits of the function under way. Null before the first one. */
Interruption *interruptionOfCalls();

/** Where the engine's lines go; null: to standard output. */
void setLog(void (*line)(const char *text, void *context), void *context);

/** Sets errorDetail to the argument that is at fault, and the cause. @return `result`, 3 or 4 */
int failed(Result result, int detail);

/** Sets the cause. @return `result` */
int failedBy(Result result, int cause);

/** The cause of a wait that brought nothing: an interruption or the answer limit goes before what was seen.
 */
int causeOfWait(int seen);

/** Notes why the connection failed. @return false */
bool brokenBy(int seen);

/** A pointer that the caller has to give, and the detail that names it. */
struct Required
{
    const void *pointer;
    int detail;
};

/** @return 0; 3 with the detail of the first that is null */
int checkPointers(std::initializer_list<Required> pointers);

/** The pairing record of the active register; an empty one is inserted for a register never met. */
Velno::GMP::MatchExt &activeRecord();

/** A register's connection; null for none. */
QIODevice *connectionOf(const QByteArray &serialNo);

/** Whether this application may use the raw pass-through and is to forget keys when it closes. */
bool isSpecialApplication();

/** @return 0; 3 (0x300) for null; 4 (0x400) unless the text has exactly 12 characters */
int checkSerialNo(const char *serialNo);

} // namespace Velno::Ext
