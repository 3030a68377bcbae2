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

/**
 * The process-wide state. Everything but errorDetail and cause is guarded by connectionMutex, which each
 * public function holds for its whole run. The worker thread reads and writes it only while a caller that
 * holds the lock waits for it; it never takes the lock itself.
 */
struct LibraryState
{
    QMutex connectionMutex;
    std::atomic<int> errorDetail = 0; ///< read without the lock
    std::atomic<int> cause = 0;       ///< a VelnoCause; read without the lock
    unsigned int appNo = 0;
    QByteArray activeDevice;                                ///< serial number; empty for none
    QHash<QByteArray, QPointer<QIODevice>> connections;     ///< by serial number; owned, see closeConnection
    QHash<QByteArray, Velno::GMP::MatchExt> pairingRecords; ///< by serial number
    std::unique_ptr<ConnectionThread>
        connectionThread;                   ///< where all sockets live; null while not initialised
    Interruption interruption;              ///< of the public function under way
    unsigned int answerLimit = noTimeLimit; ///< ms for all of an answer
    bool codecSet = false;                  ///< whether the slip has an encoding
    QVector<QByteArray> slipContent;        ///< lines to be printed
};

/** The one state; it lives until the process ends, also for threads that outlast static destruction. */
LibraryState &library();

/** The time of a public function: it holds the lock, and velnoext_interrupt() ends its waits. */
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

/** Sets errorDetail to the argument that is at fault, and the cause. @return `result`, 3 or 4 */
int failed(Result result, int detail);

/** Sets the cause. @return `result` */
int failedBy(Result result, int cause);

/** What every call that has to do with registers begins with: nothing is wrong yet. */
void forgetFailure();

/** The pairing record of the active register; an empty one is inserted for a register never met. */
Velno::GMP::MatchExt &activeRecord();

/** Whether this application may use the raw pass-through and is to forget keys when it closes. */
bool isSpecialApplication();

/** @return 0; 3 (0x300) for null; 4 (0x400) unless the text has exactly 12 characters */
int checkSerialNo(const char *serialNo);

} // namespace Velno::Ext
