// SPDX-License-Identifier: Apache-2.0

/**
 * velnoext: drive a paired fiscal cash register from a point-of-sale application.
 *
 * A register is named by its serial number, exactly 12 characters. It reaches the application in one of two
 * ways: directly, when it connects to an address and port that the library listens on, or through a relay
 * server, when the address is "255.255.255.255". On first contact the library pairs with it by itself; the
 * keys stay in memory until the process ends or velnoext_close() forgets them.
 *
 * Threads: every function may be called from any thread, at any time. Calls queue behind one lock, so at most
 * one is at work in a process; a call blocks until it is done. velnoext_interrupt() alone passes by the lock
 * and ends the call under way. The library works on a thread of its own from the first velnoext_initialize()
 * until the last connection is closed. Do not call from an exit handler, not from a signal handler but for
 * velnoext_interrupt(), and not in a child after fork(). When the process ends no thread may be inside any
 * more: interrupt the call and wait for its return.
 *
 * The process: it needs no Qt of its own, and a Qt application object may come and go, on whatever thread;
 * its window stands still while a call on its thread blocks. The locale stays as it is, and a proxy that the
 * application has set is not used for registers. What goes wrong in a pairing, or with the frame of an
 * answer, is also told in a line, see velnoext_set_log(). Once loaded the library stays loaded.
 *
 * Time-outs are milliseconds; 0xFFFFFFFF means no limit. Waiting for the first byte of a register's answer
 * has no limit of its own: a cashier may have to act first. It ends when the connection does, at the latest
 * about a minute after its other end vanished from the network (with the relay that end is the relay, which
 * has to notice when the register is gone), when somebody calls velnoext_interrupt(), or at the limit that
 * velnoext_set_answer_limit() has set.
 *
 * Pointers are borrowed for the call only and belong to the caller; what a function returns as text belongs
 * to the library. Outputs are written on success alone unless a function says otherwise. Text is plain bytes
 * with a terminating zero.
 *
 * Every function that returns int, but velnoext_error_detail() and velnoext_cause(), returns one of these
 * codes; VelnoResult names them. velnoext_cause() tells the finest reason known of the last call that failed:
 *
 *    0  done
 *    1  the library is not or cannot be initialised, the register is unknown or not paired, or (raw
 *       pass-through) the application number is not one that may use it
 *    2  there is no connection, or connecting, sending or receiving failed, time-outs included
 *    3  a pointer is NULL; velnoext_error_detail() is 0x300 + a number that names it
 *    4  a value is not valid; velnoext_error_detail() is 0x400 + a number that names it, or 0, and
 *       velnoext_cause() tells more then
 *    5  the register's answer cannot be read
 *    6  the register is in a state that does not allow the command
 *    7  the register did not take the change of state
 *    8  the register refused
 *    9  the printer has no paper
 *   10  pairing failed
 *   11  encryption produced nothing, or the answer is not authentic
 *   12  the answer's frame is malformed or comes from another register
 *   13  the program's own executable file cannot be read
 */
#ifndef VELNOEXT_H
#define VELNOEXT_H

#include <stddef.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

/* The version that this header belongs to; velnoext_library_version() tells that of the library in use. */
#define VELNOEXT_VERSION_MAJOR 0
#define VELNOEXT_VERSION_MINOR 2
#define VELNOEXT_VERSION_PATCH 0

/** The version as one number, for comparisons: #if VELNOEXT_VERSION >= 200 is 0.2.0 or later. */
#define VELNOEXT_VERSION                                                                                     \
    (VELNOEXT_VERSION_MAJOR * 10000 + VELNOEXT_VERSION_MINOR * 100 + VELNOEXT_VERSION_PATCH)

#if defined(__GNUC__)
#define VELNOEXT_API __attribute__((visibility("default")))
#else
#define VELNOEXT_API
#endif

/* Structures have the same layout for every compiler and word size; a wrong one ends the compilation. */
#if defined(__cplusplus) && __cplusplus >= 201103L
#define VELNOEXT_SIZE_IS(type, size) static_assert(sizeof(type) == (size), "layout of " #type)
#define VELNOEXT_OFFSET_IS(type, field, offset)                                                              \
    static_assert(offsetof(type, field) == (offset), "place of " #field " in " #type)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define VELNOEXT_SIZE_IS(type, size) _Static_assert(sizeof(type) == (size), "layout of " #type)
#define VELNOEXT_OFFSET_IS(type, field, offset)                                                              \
    _Static_assert(offsetof(type, field) == (offset), "place of " #field " in " #type)
#else
#define VELNOEXT_SIZE_IS(type, size) typedef char type##_size[sizeof(type) == (size) ? 1 : -1]
#define VELNOEXT_OFFSET_IS(type, field, offset)                                                              \
    typedef char type##_##field##_offset[offsetof(type, field) == (offset) ? 1 : -1]
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The commands by their number, the first item of every request. */
typedef enum VelnoExtMessage {
    VelnoExtMessage_EcrState = 0,
    VelnoExtMessage_Login = 1,
    VelnoExtMessage_Logout = 2,
    VelnoExtMessage_ChangeState = 3,
    VelnoExtMessage_AddSaleItem = 4,
    VelnoExtMessage_DeleteSaleItem = 5,
    VelnoExtMessage_SaleState = 6,
    VelnoExtMessage_ReceiptData = 7,
    VelnoExtMessage_CheckPrinterPaper = 8,
    VelnoExtMessage_MedicalContribution = 9,
    VelnoExtMessage_SectionData = 10,
    VelnoExtMessage_PrintReport = 11,
    VelnoExtMessage_CurrentZ = 12,
    VelnoExtMessage_PrintSlip = 13,
    VelnoExtMessage_EndSaleWithInvoice = 14,
    VelnoExtMessage_SaleLimit = 15,
    VelnoExtMessage_AddMultipleSaleItems = 16,
    VelnoExtMessage_LastZDateTime = 17,
    VelnoExtMessage_EcrDateTime = 18,
    VelnoExtMessage_ActiveAcquirers = 19,
    VelnoExtMessage_SaleAcquirers = 20
} VelnoExtMessage;

/** States of a register. 1, 5 and 7 have a meaning for this library; the others are those of the simulated
 *  register, and a register may answer numbers of its own. */
typedef enum VelnoEcrState {
    VelnoEcrState_Starting = 0,        /**< switched on a moment ago */
    VelnoEcrState_Idle = 1,            /**< a sale may be started */
    VelnoEcrState_Locked = 2,          /**< waits for a cashier */
    VelnoEcrState_Menu = 3,            /**< somebody uses its menu */
    VelnoEcrState_Paying = 4,          /**< a payment is being made */
    VelnoEcrState_SaleOpen = 5,        /**< a sale is open: items, payments and its end are expected */
    VelnoEcrState_Reporting = 6,       /**< prints a report */
    VelnoEcrState_IdleOtherScreen = 7, /**< a sale may be started */
    VelnoEcrState_OutOfService = 8     /**< out of order */
} VelnoEcrState;

/** The result codes; what each means stands at the head of this file. */
typedef enum VelnoResult {
    VelnoResult_Success = 0,
    VelnoResult_NotReady = 1,
    VelnoResult_ConnectionFailed = 2,
    VelnoResult_NullArgument = 3,
    VelnoResult_BadValue = 4,
    VelnoResult_ReplyUnreadable = 5,
    VelnoResult_WrongState = 6,
    VelnoResult_StepNotTaken = 7,
    VelnoResult_Refused = 8,
    VelnoResult_NoPaper = 9,
    VelnoResult_PairingFailed = 10,
    VelnoResult_NotAuthentic = 11,
    VelnoResult_MalformedReply = 12,
    VelnoResult_NoApplicationHash = 13
} VelnoResult;

/** What velnoext_error_detail() names: 0x3.. a NULL pointer (result 3), 0x4.. a bad value (result 4). Several
 *  functions share a detail; velnoext_detail_text() names each with its argument. */
typedef enum VelnoDetail {
    VelnoDetail_None = 0,
    VelnoDetail_NullSerialNoOrBuffer = 0x300, /**< serial number, buffer, data or frame */
    VelnoDetail_NullAddressOrOutput = 0x301,
    VelnoDetail_NullStateOrLength = 0x302,
    VelnoDetail_NullFirst = 0x303,
    VelnoDetail_NullTotals = 0x304,
    VelnoDetail_NullReceipt = 0x305,
    VelnoDetail_NullItem = 0x306,
    VelnoDetail_NullItemList = 0x307,
    VelnoDetail_NullInvoice = 0x308,
    VelnoDetail_NullList = 0x309,
    VelnoDetail_NullCount = 0x30A,
    VelnoDetail_NullZ = 0x30B,
    VelnoDetail_NullDateTime = 0x30C,
    VelnoDetail_NullEncoding = 0x30D,
    VelnoDetail_NullText = 0x30E, /**< or empty */
    VelnoDetail_NullStyle = 0x30F,
    VelnoDetail_NullLimit = 0x310,
    VelnoDetail_NullLanguage = 0x311,
    VelnoDetail_BadSerialNo = 0x400,
    VelnoDetail_BadPort = 0x402,
    VelnoDetail_BadPersonId = 0x403,
    VelnoDetail_BadTaxNumber = 0x404,
    VelnoDetail_BadPrice = 0x405,
    VelnoDetail_BadSection = 0x406,
    VelnoDetail_BadPercentage = 0x407,
    VelnoDetail_BadAmount = 0x408,
    VelnoDetail_BadItemType = 0x409,
    VelnoDetail_BadItemCount = 0x40A,
    VelnoDetail_BadInvoiceType = 0x40B,
    VelnoDetail_BadIdKind = 0x40C,
    VelnoDetail_BadInvoiceMode = 0x40D,
    VelnoDetail_BadReference = 0x40E,
    VelnoDetail_BadReceiptFirst = 0x40F,
    VelnoDetail_BadReceiptSecond = 0x410,
    VelnoDetail_BadEncoding = 0x411,
    VelnoDetail_BadPaymentAmount = 0x412,
    VelnoDetail_BadLineFeeds = 0x413,
    VelnoDetail_BadAnswerLimit = 0x414,
    VelnoDetail_BadLanguage = 0x415
} VelnoDetail;

/**
 * Why a call failed, as velnoext_cause() tells it. In brackets the results that it comes with.
 *
 * Numbers below 6000 are those that the pairing window shows behind "Eşleme hatası: ". With result 10 they
 * tell where the pairing ended; with other results they tell the same fault outside a pairing.
 *
 * What a register gives as its reason is added to a base: 10000 + its error, 20000 + its state, 30000 + what
 * its display says, each from 0 to 9999. The numbers are the register's; those named here are the simulated
 * register's, whose error is a sum of bits. With result 6 the state is told, or behind the keys of
 * velnoext_cancel_sale() an error that came with it; otherwise of several reasons the error, else the state,
 * else the display. More causes may be added: treat one that is not known as its result.
 */
typedef enum VelnoCause {
    VelnoCause_None = 0,

    VelnoCause_AddressInvalid = 1005,  /**< the address to listen on is no IP address (4) */
    VelnoCause_PortInUse = 1006,       /**< another program listens there (2, 10) */
    VelnoCause_NobodyConnected = 1007, /**< no register connected in time (2, 10) */
    VelnoCause_CannotListen = 1008,    /**< a foreign address, or a port that needs privileges (2, 10) */

    VelnoCause_ClosedBeforeSending = 2005, /**< the connection was closed before (2, 10) */
    VelnoCause_WriteRefused = 2006,        /**< the system took no bytes (2, 10) */
    VelnoCause_NotSentInTime = 2007,       /**< the register takes no bytes (2, 10) */

    VelnoCause_EmptyFrame = 3003,         /**< a frame of no length (10) */
    VelnoCause_ClosedWhileWaiting = 3005, /**< closed in place of an answer (2, 10) */
    VelnoCause_SilentRegister = 3006,     /**< no answer, or not the rest of one, in time (2, 10) */

    VelnoCause_FrameLength = 4000,  /**< the announced length is wrong or too large (10, 12) */
    VelnoCause_FrameCrc = 4001,     /**< damaged on its way (10, 12) */
    VelnoCause_FrameSerial = 4002,  /**< another register answers (10, 12) */
    VelnoCause_FrameMessage = 4003, /**< no message in it (10) */

    VelnoCause_PairingRefused = 5000,        /**< a result code other than "00" (10) */
    VelnoCause_CertificateNotTrusted = 5001, /**< none, expired, too weak, of an unknown authority (10) */
    VelnoCause_SignatureInvalid = 5002, /**< or a Diffie-Hellman group that this build does not know (10) */

    VelnoCause_RelayNotAnswering = 6001,    /**< refused the connection, or silent for 2 s (2) */
    VelnoCause_RelayUnreachable = 6002,     /**< this computer has no way to it (2) */
    VelnoCause_RelayUnknownRegister = 6003, /**< closed when the serial number was named (2) */
    VelnoCause_RelaySilent = 6004,          /**< no answer to the serial number within 5 s (2) */
    VelnoCause_RelayWrongAnswer = 6005,     /**< another answer than the serial number (2) */
    VelnoCause_HandOverFailed = 6010,       /**< the connection was gone before it could be used (2) */

    VelnoCause_Interrupted = 7001,       /**< by velnoext_interrupt() (2, 10) */
    VelnoCause_AnswerLimitPassed = 7002, /**< that of velnoext_set_answer_limit() (2) */
    VelnoCause_NotInitialised = 7003,    /**< (1) */
    VelnoCause_NoActiveDevice = 7004,    /**< (1) */
    VelnoCause_NotConnected = 7005,      /**< (1, 2) */
    VelnoCause_KeysAbsent = 7006,        /**< the register is not paired (1) */
    VelnoCause_RawNotAllowed = 7007,     /**< not with this application number (1) */
    VelnoCause_NoThread = 7008,          /**< the system gives no further thread (1) */
    VelnoCause_NoEncoding = 7009,        /**< of the slip (8) */
    VelnoCause_NullArgument = 7010,      /**< the detail names it (3) */
    VelnoCause_BadArgument = 7011,       /**< the detail names it (4) */
    VelnoCause_RoomTooSmall = 7012,      /**< for the result (4) */
    VelnoCause_NegativeLength = 7013,    /**< (4) */
    VelnoCause_ProgramUnreadable = 7014, /**< the program's own file (13) */
    VelnoCause_NotEncrypted = 7015,      /**< no bytes to send, or too many (11) */

    VelnoCause_AnswerTooShort = 8001,     /**< authentic, but an item is missing (5) */
    VelnoCause_SectionNameTooLong = 8002, /**< more than 52 bytes (5) */
    VelnoCause_MacWrong = 8003,           /**< other keys, or changed on its way (11) */
    VelnoCause_DecryptedToNothing = 8004, /**< (11) */
    VelnoCause_ElementsWrong = 8005,      /**< one is missing, or unknown (12) */
    VelnoCause_RequestReflected = 8006,   /**< the answer equals the request (12) */
    VelnoCause_AnswerTooLong = 8007,      /**< announces more than 1 MiB (2) */
    VelnoCause_EndlessBytes = 8008,       /**< a flood that nobody asked for (2) */

    VelnoCause_SaidNo = 9001,       /**< and no more than that (8) */
    VelnoCause_PrinterEmpty = 9002, /**< (9) */
    VelnoCause_DisplayEmpty = 9003, /**< nothing is told of the display (7) */
    VelnoCause_OtherNumber = 9004,  /**< an error, state or display below 0 or above 9999 (6, 7, 8) */

    VelnoCause_OfError = 10000,                       /**< base of the register's error (6, 7, 8) */
    VelnoCause_WrongKey = VelnoCause_OfError + 1,     /**< a key that means nothing now */
    VelnoCause_WrongValue = VelnoCause_OfError + 2,   /**< one that the register does not take */
    VelnoCause_OverLimit = VelnoCause_OfError + 4,    /**< sale limit, or more than a receipt holds */
    VelnoCause_PaymentBegun = VelnoCause_OfError + 8, /**< items stay as they are */
    VelnoCause_PaperOut = VelnoCause_OfError + 16,
    VelnoCause_NothingThere = VelnoCause_OfError + 32, /**< no such item, an empty receipt, no sale */
    VelnoCause_NoJournal = VelnoCause_OfError + 64,    /**< it cannot be written */

    VelnoCause_OfState = 20000, /**< base of the register's state, see VelnoEcrState (6, 8) */

    VelnoCause_OfDisplay = 30000,                     /**< base of what the display says (7) */
    VelnoCause_DisplayBusy = VelnoCause_OfDisplay + 2 /**< an amount is typed, or a question asked */
} VelnoCause;

/* Set-up and connections -------------------------------------------------------------------------------- */

/* A register is connected from velnoext_initialize() until it is closed, and paired while the library holds
 * keys for it. Commands go to the active one. Example, with two registers:
 *
 *     int code = velnoext_initialize(5, "UB1234567890", "0.0.0.0", 4100, 30000);
 *     if (code == 0)
 *         code = velnoext_initialize(5, "UB0000000001", "0.0.0.0", 4101, 30000);
 *     if (code == 0)
 *         code = velnoext_set_active_device("UB1234567890");
 *     if (code != 0)
 *         fprintf(stderr, "register: code %d, detail 0x%X\n", code, (unsigned)velnoext_error_detail());
 *     ...
 *     velnoext_close_all();
 *
 * A command that returns 2 leaves its connection listed: velnoext_initialize() connects the register afresh,
 * without pairing again.
 */

/** The interface's version, "0". The text lives as long as the library. Never blocks. */
VELNOEXT_API const char *velnoext_version(void);

/**
 * The version of the library in use, "0.2.0" for instance; compare with VELNOEXT_VERSION_MAJOR and its
 * neighbours, which are those of the header. The text lives as long as the library. Never blocks.
 */
VELNOEXT_API const char *velnoext_library_version(void);

/**
 * Connects a register, pairs with it if need be, and makes it the active one. A register that is connected
 * already is connected afresh; others stay connected.
 *
 * A register that is not yet paired is met three times on the port given: to be told so, to agree on keys
 * and to stay. One that is paired is met once. On failure the active register is the one before, other
 * registers stay connected, and the library's thread goes on until velnoext_close().
 *
 * @param appNo     number of the application, under which it is known to whoever runs the registers' service
 *                  and gave it out: the one that a technician types into the pairing window as "Uygulama
 *                  no". It does not leave this computer; any other number than the two special ones behaves
 *                  alike. 999999 takes the relay's port 50900, others 50902. With 999999 and 14242 (the
 *                  pairing tool itself) velnoext_close() forgets the keys, and the raw pass-through is open.
 *                  The last call's number holds for all registers
 * @param serialNo  12 characters
 * @param address   local address to listen on, "0.0.0.0" for all; "255.255.255.255" for the relay. A register
 *                  that is not yet paired must come over IPv4: keys are agreed on at the port of every local
 *                  IPv4 address, whatever is named here. Afterwards an IPv6 address will do, too
 * @param port      TCP port to listen on; ignored with the relay
 * @param timeout   ms to wait for each direct connection of the register but that of the key exchange, which
 *                  may take 30 s; not used with the relay, which has 2 s to accept and 5 s to answer
 * @return 0; 1: the library's thread cannot be started; 2: nobody connected in time, the port cannot be
 *         listened on, the relay refused or does not know the register, the register left; 3: NULL (detail
 *         0x300 serialNo, 0x301 address); 4: serialNo is not 12 characters long (0x400), port is 0 (0x402),
 *         the address is none (0); 10: pairing failed; 13: the executable cannot be read
 */
VELNOEXT_API int velnoext_initialize(unsigned int appNo, const char *serialNo, const char *address,
                                     unsigned short port, unsigned int timeout);

/**
 * Makes another connected register the active one. Asks nobody.
 *
 * @param serialNo  12 characters
 * @return 0; 1: not connected (the active register stays); 3: NULL (0x300); 4: not 12 characters (0x400)
 */
VELNOEXT_API int velnoext_set_active_device(const char *serialNo);

/**
 * The serial number of the active register. Asks nobody.
 *
 * @param buffer  room for 13 bytes: 12 characters and a zero
 * @return 0; 1: there is none; 3: NULL (0x300)
 */
VELNOEXT_API int velnoext_active_device(char *buffer);

/**
 * What the last call complained about: 0x300 + n for a pointer, 0x400 + n for a value, otherwise 0. Every
 * call that has to do with registers begins with setting it to 0, closing included: ask right after the
 * failed call, before another thread calls. Never blocks.
 */
VELNOEXT_API int velnoext_error_detail(void);

/**
 * The finest reason known of the last call that failed, see VelnoCause: 0 after one that succeeded. Set to 0
 * and read as velnoext_error_detail(): ask right after the failed call, before another thread calls. Never
 * blocks.
 */
VELNOEXT_API int velnoext_cause(void);

/**
 * Closes the active register's connection; afterwards no register is active. When it was the last
 * connection, the library returns to the state before velnoext_initialize(), keys apart. Harmless when
 * nothing is open. Blocks until what was sent has left this computer's buffers, at most 30 s.
 */
VELNOEXT_API void velnoext_close(void);

/**
 * Closes every connection as velnoext_close() does. Does nothing when there is none: what a first
 * velnoext_initialize() that failed has left is ended by velnoext_close().
 */
VELNOEXT_API void velnoext_close_all(void);

/**
 * Forgets a register: closes its connection as velnoext_close() does and drops its keys, so that the next
 * velnoext_initialize() pairs with it anew. For a register that has lost its keys, or was paired elsewhere
 * since: it ends the connection at every command. Other registers stay as they are; when it was the active
 * one, none is.
 *
 * @param serialNo  12 characters
 * @return 0; 1: neither connected nor paired; 3: NULL (0x300); 4: not 12 characters (0x400)
 */
VELNOEXT_API int velnoext_forget_device(const char *serialNo);

/* A way out of every wait ------------------------------------------------------------------------------- */

/* A call can wait long: for a register to connect, for a cashier who has to act. Example, with Ctrl-C:
 *
 *     static void onInterrupt(int signal) { velnoext_interrupt(); }
 *     ...
 *     signal(SIGINT, onInterrupt);
 *     int code = velnoext_login(5000);      // 2 soon after Ctrl-C
 *
 * A language whose handlers run between its own instructions (Python, Java) makes the call on a second thread
 * and interrupts it from the first.
 */

/**
 * Ends the call that is under way on another thread, or was when the signal came, whatever it waits for: a
 * register to connect, a pairing, bytes to leave, an answer. That call returns within 100 ms, with 2, or with
 * 10 when it was exchanging keys, and the register's connection is closed: a late answer could be taken for
 * that to the next command. What the register has done must be asked of it, as after every lost answer. A
 * call that was just done returns what it would have.
 *
 * From any thread, and from a signal handler. Never blocks. Without a call under way it does nothing; it
 * touches no later call, nor one that still waits for its turn.
 */
VELNOEXT_API void velnoext_interrupt(void);

/**
 * Limits the whole wait for an answer: keep-alives, pauses between its bytes and all. When the limit has
 * passed the call returns 2 and the register's connection is closed, as after velnoext_interrupt(). It holds
 * for each of the three answers of a key exchange, too, with all that comes in its place; the call then
 * returns 10.
 *
 * @param ms  for all answers from now on; 0xFFFFFFFF, no limit, at the start
 * @return 0; 4: 0 ms (0x414)
 */
VELNOEXT_API int velnoext_set_answer_limit(unsigned int ms);

/**
 * Sends the lines that tell what goes wrong in a pairing, or with the frame of an answer, to a function in
 * place of standard output.
 *
 * @param line     called with one line without its line feed, on the thread of the call that is under way or
 * on the library's own: it must not call the library, velnoext_interrupt() apart. The text lives until it
 * returns. NULL: standard output, as at the start
 * @param context  handed to it; borrowed until another function is set
 */
VELNOEXT_API void velnoext_set_log(void (*line)(const char *text, void *context), void *context);

/* Results in words -------------------------------------------------------------------------------------- */

/* For people: a log, a message box, a support call; in English, or in Turkish behind
 * velnoext_set_language("tr"). Each text is UTF-8 (the English ones are plain ASCII), lives as long as the
 * library and is never NULL, also for numbers that no function returns. Never blocks; may be called at any
 * time, before velnoext_initialize() and while another thread is inside the library. Example:
 *
 *     int code = velnoext_login(5000);
 *     int cause = velnoext_cause();
 *     if (code != 0)
 *         fprintf(stderr, "login: %s (%d)\n%s (%d)\n%s\n", velnoext_result_name(code), code,
 *                 velnoext_cause_text(cause), cause, velnoext_detail_text(velnoext_error_detail()));
 */

/**
 * Chooses the language of all texts, for the whole process; names stay as they are. Takes no lock; texts that
 * were handed out before stay valid.
 *
 * @param language  "en" (as at the start) or "tr"
 * @return 0; 3: NULL (0x311); 4: no such language (0x415). Detail and cause are set on failure alone, so that
 *         those of a failed call can be told in both languages
 */
VELNOEXT_API int velnoext_set_language(const char *language);

/** A code's name, lower-case words joined by hyphens: "success", "no-paper"; otherwise "unknown". */
VELNOEXT_API const char *velnoext_result_name(int code);

/**
 * What a code means: exactly three lines, separated by '\n', none behind the last. The first is the sentence
 * that says what happened; the second begins with "Cause: ", the third with "Cure: " (in Turkish "Neden: "
 * and "Çözüm: ").
 */
VELNOEXT_API const char *velnoext_result_text(int code);

/**
 * Which argument velnoext_error_detail() means, in one line. Several functions share a detail: the text then
 * names each with its argument.
 */
VELNOEXT_API const char *velnoext_detail_text(int detail);

/**
 * A cause's name, like that of a code: "port-in-use", "register-paper-out". A register's number that is not
 * known has the name of its base: "register-error", "register-state", "register-display"; all else "unknown".
 */
VELNOEXT_API const char *velnoext_cause_name(int cause);

/** What a cause means: three lines as velnoext_result_text(). Also for the codes of the pairing window. */
VELNOEXT_API const char *velnoext_cause_text(int cause);

/* Raw pass-through -------------------------------------------------------------------------------------- */

/* For the applications 999999 and 14242, which speak commands of their own. Example:
 *
 *     velnoext_send_data(request, requestSize);
 *     int size = sizeof answer;
 *     int code = velnoext_get_data(frame, frameSize, answer, &size);
 */

/**
 * Encrypts bytes, frames them and sends them to the active register. Waits for no answer. What the register
 * answers on this connection must not meet another command, which would take it for its own answer:
 * velnoext_initialize() connects afresh before the next one.
 *
 * @param data    borrowed; needs no terminating zero
 * @param length  bytes, 1 to 65,471
 * @return 0; 1: not initialised, not paired, or another application number; 2: not connected, or not sent
 *         within 2 s; 3: NULL (0x300); 4: negative length; 11: nothing to encrypt, or too much
 */
VELNOEXT_API int velnoext_send_data(const char *data, int length);

/**
 * Checks and decrypts a frame of the active register that the caller received by means of its own. Sends
 * nothing.
 *
 * @param frame         from its 2-byte length on, without the 4 bytes that precede it on a connection
 * @param output        receives the plain bytes, no terminating zero
 * @param outputLength  in: room; out: bytes written
 * @return 0; 1: as for velnoext_send_data(); 2: not connected; 3: NULL (0x300 frame, 0x301 output, 0x302
 *         outputLength); 4: negative frameLength, or the room is too small; 11: not authentic; 12: malformed
 */
VELNOEXT_API int velnoext_get_data(const char *frame, int frameLength, char *output, int *outputLength);

/* Session and queries ----------------------------------------------------------------------------------- */

/* Each asks the active register and can return, besides what it names:
 * 1: not initialised, no active register, not paired; 2: not connected, sending or receiving failed;
 * 5: the answer is too short; 11: not authentic; 12: malformed.
 * timeout: ms of silence allowed in the rest of the answer once its first byte has come.
 *
 * Example:
 *
 *     int z = 0;
 *     if (velnoext_current_z(5000, &z) == 0)
 *         printf("Z %d\n", z);
 */

/**
 * Opens the application's session on the register: it then knows that an application works with it. The
 * session belongs to the register, which keeps it when the connection ends; logging in twice does no harm.
 * This library asks for no login before any command, and the simulated register neither; one in the field may
 * want it before it sells or reports, so log in once after connecting.
 *
 * @return 0; 8: refused, by the simulated register while it starts or is out of service
 */
VELNOEXT_API int velnoext_login(unsigned int timeout);

/** Ends the session. @return 0; 8: refused, by the simulated register while a sale is open */
VELNOEXT_API int velnoext_logout(unsigned int timeout);

/** Whether the printer has paper. @return 0: it has; 9: it has none */
VELNOEXT_API int velnoext_check_printer_paper(unsigned int timeout);

/** The register's state, see VelnoEcrState. @return 0; 3: NULL (0x302) */
VELNOEXT_API int velnoext_ecr_state(unsigned int timeout, int *state);

/**
 * The serial number that the active register gave when it was paired. Asks nobody.
 *
 * A zero is written at the index of this terminal's identity's length, not behind the copied bytes: with the
 * usual 12 characters on both sides the result is an ordinary text.
 *
 * @param buffer  room for at least 17 bytes
 * @return 0; 1: not initialised, no active register, not paired; 3: NULL (0x300)
 */
VELNOEXT_API int velnoext_ecr_serialno(char *buffer);

/**
 * The number of the current Z report.
 *
 * @param z  written also when the register refused
 * @return 0; 3: NULL (0x30B); 8: refused
 */
VELNOEXT_API int velnoext_current_z(unsigned int timeout, int *z);

/**
 * When the last Z report was made, as the register's number; the simulated register's is seconds since 1970.
 *
 * @return 0; 3: NULL (0x30C)
 */
VELNOEXT_API int velnoext_last_z_datetime(unsigned int timeout, int *value);

/** The register's clock, a number like that of the last Z report. @return 0; 3: NULL (0x30C) */
VELNOEXT_API int velnoext_ecr_datetime(unsigned int timeout, int *value);

/** The highest amount that one sale may reach, in kuruş. @return 0; 3: NULL (0x310) */
VELNOEXT_API int velnoext_sale_limit(unsigned int timeout, long long *limit);

/* Sales ------------------------------------------------------------------------------------------------- */

/* A sale is started, filled with items, paid, and ended or cancelled. It can be started while the register's
 * state is 1 or 7; from then on the state is 5 until the sale is over. Money is in the smallest unit of the
 * currency (kuruş: 1250 is 12.50), quantities in thousandths (1500 is 1.5 pieces).
 *
 * Besides what it names, each function can return 1, 2, 5, 11 and 12 as for the queries. After 2, 5, 11 and
 * 12 the register may have done what it was asked for: look with velnoext_sale_state(). timeout: ms of
 * silence allowed in the rest of an answer once its first byte has come. Nothing is sent with 1, 3 and 4.
 *
 * Example:
 *
 *     VelnoEcrSaleTotals totals;
 *     VelnoSaleItem item = {0};
 *     strcpy(item.name, "Ekmek");
 *     item.price = 1250;
 *     item.quantity = 2000;
 *     item.section = 1;
 *     int code = velnoext_start_sale(5000);
 *     if (code == 0)
 *         code = velnoext_add_sale_item(5000, &item, &totals);
 */

#pragma pack(push, 4)

/** Units of an item's quantity, as the simulated register prints them. */
typedef enum VelnoItemType {
    VelnoItemType_Piece = 0,       /**< AD */
    VelnoItemType_Kilogram = 1,    /**< KG */
    VelnoItemType_Gram = 2,        /**< GR */
    VelnoItemType_Litre = 3,       /**< LT */
    VelnoItemType_Metre = 4,       /**< MT */
    VelnoItemType_SquareMetre = 5, /**< M2 */
    VelnoItemType_CubicMetre = 6,  /**< M3 */
    VelnoItemType_Hour = 7         /**< SA */
} VelnoItemType;

/** One line of a sale; 84 bytes. Set what is not used to 0. */
typedef struct VelnoSaleItem
{
    long long price; /**< of one unit, in kuruş; with 0 the line is a remark on the receipt */
    int quantity;    /**< in thousandths: 1000 is one unit */
    /** Adjustment in percent of the line total: below 0 a discount (-10: ten percent off), above 0 a
     *  surcharge; 0 for none. -100 or more; the simulated register takes up to 100. */
    int percentage;
    /** Discount in kuruş, which counts while percentage is 0: a positive amount makes the line cheaper, and
     *  there is no surcharge by amount; 0 for none. Not negative, and at most the line total, which is price
     *  times quantity / 1000, rounded half up, and counts as 0 when that is negative. */
    long long amount;
    /** The bytes before the first zero, at most 52 of them; need not end with a zero. They are passed on as
     *  they are: UTF-8 for the simulated register, which reads what is no UTF-8 as ISO-8859-9. Cut a longer
     *  name between two characters. */
    char name[53];
    signed char section; /**< section (department) of the register, 1 to 8: it decides the tax rate */
    int type;            /**< unit of the quantity, 0 to 7, see VelnoItemType */
} VelnoSaleItem;

/** The places of VelnoEcrSaleTotals.values, as the simulated register tells them; all in kuruş. Cash + card -
 *  change is what has been paid. */
typedef enum VelnoTotal {
    VelnoTotal_ToPay = 0, /**< all items and the medical contribution, tax contained */
    VelnoTotal_Tax = 1,   /**< the tax within it */
    VelnoTotal_Cash = 2,  /**< paid in cash, as handed over */
    VelnoTotal_Card = 3,  /**< paid by card */
    VelnoTotal_Change = 4 /**< what of the cash goes back */
} VelnoTotal;

/** What the register has added up for the open sale; 44 bytes. The register defines what each number is. */
typedef struct VelnoEcrSaleTotals
{
    long long values[5]; /**< in the order in which the register tells them, see VelnoTotal */
    int number; /**< told behind them; the simulated register's number of items that are not deleted */
} VelnoEcrSaleTotals;

/** Several lines at once; 844 bytes. */
typedef struct VelnoSaleItemList
{
    unsigned short count; /**< how many of the items are meant, 1 to 10 */
    VelnoSaleItem items[10];
} VelnoSaleItemList;

/** Two numbers by which the register knows a receipt; 8 bytes. Both are non-zero for a receipt that exists.
 */
typedef struct VelnoReceiptRef
{
    int first;  /**< the simulated register's: number of the Z report that the receipt counts towards */
    int second; /**< and the receipt's number among those of that report */
} VelnoReceiptRef;

#pragma pack(pop)

VELNOEXT_SIZE_IS(VelnoSaleItem, 84);
VELNOEXT_OFFSET_IS(VelnoSaleItem, price, 0);
VELNOEXT_OFFSET_IS(VelnoSaleItem, quantity, 8);
VELNOEXT_OFFSET_IS(VelnoSaleItem, percentage, 12);
VELNOEXT_OFFSET_IS(VelnoSaleItem, amount, 16);
VELNOEXT_OFFSET_IS(VelnoSaleItem, name, 24);
VELNOEXT_OFFSET_IS(VelnoSaleItem, section, 77);
VELNOEXT_OFFSET_IS(VelnoSaleItem, type, 80);
VELNOEXT_SIZE_IS(VelnoEcrSaleTotals, 44);
VELNOEXT_OFFSET_IS(VelnoEcrSaleTotals, values, 0);
VELNOEXT_OFFSET_IS(VelnoEcrSaleTotals, number, 40);
VELNOEXT_SIZE_IS(VelnoSaleItemList, 844);
VELNOEXT_OFFSET_IS(VelnoSaleItemList, count, 0);
VELNOEXT_OFFSET_IS(VelnoSaleItemList, items, 4);
VELNOEXT_SIZE_IS(VelnoReceiptRef, 8);
VELNOEXT_OFFSET_IS(VelnoReceiptRef, first, 0);
VELNOEXT_OFFSET_IS(VelnoReceiptRef, second, 4);

/**
 * Starts a sale: reads the register's state, then has the keys that start one pressed.
 *
 * @return 0; 6: the state is neither 1 nor 7 (nothing was started), or it is not 5 afterwards; 7: the
 * register did not take the step or tells an error of its own
 */
VELNOEXT_API int velnoext_start_sale(unsigned int timeout);

/** Starts a sale that is to end with an invoice, see velnoext_end_sale_with_invoice(). @return as above */
VELNOEXT_API int velnoext_start_sale_with_invoice(unsigned int timeout);

/**
 * How the open sale stands.
 *
 * @param first    the first number of the register's list; written as soon as it has been read, also when the
 *                 rest of the answer cannot be read (5)
 * @param totals   the running totals
 * @param receipt  names the receipt of this sale, for velnoext_receipt_data()
 * @return 0; 3: NULL (0x303 first, 0x304 totals, 0x305 receipt); 6: no sale is open; 7: the register's list
 * is empty; 8: refused
 */
VELNOEXT_API int velnoext_sale_state(unsigned int timeout, int *first, VelnoEcrSaleTotals *totals,
                                     VelnoReceiptRef *receipt);

/**
 * Adds one line to the open sale. With price 0 neither section nor amount is looked at.
 *
 * @param item    only read
 * @param totals  the running totals with this line
 * @return 0; 3: NULL (0x306 item, 0x304 totals); 4: section is not 1 to 8 (0x406), percentage is below -100
 *         (0x407), amount is negative or exceeds the line total (0x408), type is not 0 to 7 (0x409); 6: no
 *         sale is open; 7: the register did not take the step; 8: refused, or the register tells an error
 *         of its own
 */
VELNOEXT_API int velnoext_add_sale_item(unsigned int timeout, VelnoSaleItem *item,
                                        VelnoEcrSaleTotals *totals);

/**
 * Adds up to ten lines to the open sale at once. When one is not valid none is sent.
 *
 * @param list    only read
 * @param totals  the running totals with all lines
 * @return 0; 3: NULL (0x307 list, 0x304 totals); 4: count is not 1 to 10 (0x40A), an item's price is 0
 * (0x405), or an item is not valid, as for velnoext_add_sale_item(); 6, 7, 8: likewise
 */
VELNOEXT_API int velnoext_add_multiple_sale_items(unsigned int timeout, VelnoSaleItemList *list,
                                                  VelnoEcrSaleTotals *totals);

/**
 * Adds a medical contribution to the open sale.
 *
 * @param amount      in kuruş; with 0 the identity number is neither looked at nor sent
 * @param identityNo  11-digit identity number of the person; 11111111111 stands for anybody
 * @return 0; 4: the identity number is not valid (0x403); 6: no sale is open; 7: the register did not take
 * the step or tells an error of its own; 8: refused
 */
VELNOEXT_API int velnoext_add_medical_contribution(unsigned int timeout, long long amount,
                                                   unsigned long long identityNo);

/**
 * Takes the last line out of the open sale.
 *
 * @param totals  the running totals without it
 * @return 0; 3: NULL (0x304); 6: no sale is open; 7: the register did not take the step; 8: refused, or the
 *         register tells an error of its own
 */
VELNOEXT_API int velnoext_delete_last_sale_item(unsigned int timeout, VelnoEcrSaleTotals *totals);

/**
 * Takes the line of this index out of the open sale.
 *
 * @param index   as the register counts its lines; the simulated one from 0, the first line added. A deleted
 * line keeps its index, so that the others keep theirs
 * @param totals  the running totals without it
 * @return as above
 */
VELNOEXT_API int velnoext_delete_sale_item(unsigned int timeout, int index, VelnoEcrSaleTotals *totals);

/* Payment and the end of a sale ------------------------------------------------------------------------- */

/* Payments and the plain end of a sale are keys that the register is made to press. The functions that send
 * them return once the keys have left; whether the register took them is seen from velnoext_sale_state() or
 * velnoext_ecr_state() afterwards. Besides what it names, each function can return 1, 2, 5, 11 and 12 as for
 * the queries. With 1, 3, 4, 7 and 8 the register has changed nothing; with 6 neither, unless
 * velnoext_cancel_sale() had its keys pressed and found another state than 1 behind them. Functions without a
 * time-out of their own allow 2000 ms of silence in the rest of an answer.
 *
 * Example:
 *
 *     int code = velnoext_add_payment(0, 2500);
 *     if (code == 0)
 *         code = velnoext_end_sale(0);
 *     int state = 5;
 *     if (code == 0)
 *         code = velnoext_ecr_state(5000, &state);
 *     if (code == 0 && state == 5)
 *         puts("the register has not ended the sale");
 */

#pragma pack(push, 4)

/** The keys that pay and end a sale: `type` of velnoext_add_payment() and velnoext_end_sale(). What they
 * stand for is set on the register; on the simulated one F10 is cash and F11 a card. */
typedef enum VelnoPaymentKey {
    VelnoPaymentKey_F10 = 0, /**< cash on the simulated register */
    VelnoPaymentKey_F11 = 1  /**< card on the simulated register */
} VelnoPaymentKey;

/** Kinds of invoice, as the simulated register takes them. */
typedef enum VelnoInvoiceType {
    VelnoInvoiceType_Paper = 0,      /**< on a printed form, whose number the reference is */
    VelnoInvoiceType_Electronic = 1, /**< e-invoice */
    VelnoInvoiceType_Archived = 2    /**< e-archive */
} VelnoInvoiceType;

/** Whose number an invoice carries. */
typedef enum VelnoIdKind {
    VelnoIdKind_Person = 0, /**< identity number, 11 digits */
    VelnoIdKind_Company = 1 /**< tax number, 10 digits */
} VelnoIdKind;

/** How what is left to pay is taken when an invoice ends the sale, as the simulated register does. */
typedef enum VelnoInvoiceMode {
    VelnoInvoiceMode_RestInCash = 1,
    VelnoInvoiceMode_RestByCard = 2
} VelnoInvoiceMode;

/** What a sale's invoice says of the customer; 48 bytes. */
typedef struct VelnoInvoice
{
    unsigned int invoiceType; /**< 0, 1 or 2, see VelnoInvoiceType */
    unsigned int idKind; /**< of idNumber, see VelnoIdKind; 0: a person's, 11 digits; 1: a tax number, 10 */
    char idNumber[12];   /**< the bytes before the first zero; 11111111111 stands for any person */
    char reference[17];  /**< the bytes before the first zero; with invoiceType 0 there must be 6 to 16 */
    int mode;            /**< 1 or 2, see VelnoInvoiceMode */
    int flag;            /**< not 0: the invoice takes the place of the delivery note (simulated register) */
} VelnoInvoice;

#pragma pack(pop)

VELNOEXT_SIZE_IS(VelnoInvoice, 48);
VELNOEXT_OFFSET_IS(VelnoInvoice, invoiceType, 0);
VELNOEXT_OFFSET_IS(VelnoInvoice, idKind, 4);
VELNOEXT_OFFSET_IS(VelnoInvoice, idNumber, 8);
VELNOEXT_OFFSET_IS(VelnoInvoice, reference, 20);
VELNOEXT_OFFSET_IS(VelnoInvoice, mode, 40);
VELNOEXT_OFFSET_IS(VelnoInvoice, flag, 44);

/**
 * Pays an amount of the open sale. Does not wait for an answer.
 *
 * @param type    see VelnoPaymentKey; 0: with the key F10 of the register; any other value: with its key F11
 * @param amount  in kuruş, 1 to 999,999,999,999; a larger one is not refused but loses its last digits, as
 * the register takes 12
 * @return 0: the keys are sent; 4: amount is 0 or negative (0x412), which is looked at before all else; 6: no
 *         sale is open; 7: the register did not take the step before; 8: the register is not ready for keys
 */
VELNOEXT_API int velnoext_add_payment(int type, long long amount);

/**
 * Ends the open sale. Does not wait for an answer.
 *
 * @param type  as for velnoext_add_payment()
 * @return 0: the key is sent; 6, 7, 8: as for velnoext_add_payment()
 */
VELNOEXT_API int velnoext_end_sale(int type);

/**
 * Cancels the open sale and waits until the register is idle. Payments that the register refused, and a
 * printer without paper, are no hindrance to the simulated register; without paper it prints nothing of it.
 *
 * @return 0; 6: no sale is open, or the register's state is not 1 afterwards; 7, 8: as for
 *         velnoext_add_payment()
 */
VELNOEXT_API int velnoext_cancel_sale(unsigned int timeout);

/**
 * Ends the open sale with an invoice. The register is not asked for its state before.
 *
 * @param invoice  only read
 * @return 0; 3: NULL (0x308); 4: invoiceType is above 2 (0x40B), idKind above 1 (0x40C), mode not 1 or 2
 *         (0x40D), reference not 6 to 16 bytes long with invoiceType 0 (0x40E), idNumber not valid as a
 *         person's (0x403) or as a tax number (0x404); 8: refused
 */
VELNOEXT_API int velnoext_end_sale_with_invoice(VelnoInvoice *invoice);

/**
 * The totals of a receipt, also of one that has been printed.
 *
 * @param receipt  as velnoext_sale_state() told it; only read
 * @return 0; 3: NULL (0x305 receipt, 0x304 totals); 4: first (0x40F) or second (0x410) is 0; 8: refused
 */
VELNOEXT_API int velnoext_receipt_data(unsigned int timeout, VelnoReceiptRef *receipt,
                                       VelnoEcrSaleTotals *totals);

/**
 * The acquirers (banks) that the register can take cards for, by their numbers.
 *
 * @param list   room for *count numbers
 * @param count  in: room; out: how many were written, or -1 when the room is too small
 * @return 0; 3: NULL (0x309 list, 0x30A count); 4: the room is too small (detail 0)
 */
VELNOEXT_API int velnoext_active_acquirers(unsigned int timeout, int *list, int *count);

/** The acquirers of the sale's payments. @return as above */
VELNOEXT_API int velnoext_acquirers_of_sale(unsigned int timeout, int *list, int *count);

/**
 * What the register knows of a section (department).
 *
 * @param item  in: section, 1 to 8; out: name, ended with a zero, and in quantity a number that the register
 *              defines, the simulated one as the section's tax rate in per cent; nothing else is written
 * @return 0; 3: NULL (0x306); 4: section is not 1 to 8 (0x406); 5 also: the name is longer than 52 bytes
 */
VELNOEXT_API int velnoext_section_data(unsigned int timeout, VelnoSaleItem *item);

/* Printing and reports ---------------------------------------------------------------------------------- */

/* A slip of free text is collected in the library, line by line, and printed at once. It begins with the
 * encoding of its texts, which are passed on as they are: the register reads them in that encoding. There is
 * one slip per process; it belongs to no register until it is printed. The functions that collect it ask
 * nobody, can be called at any time, and return 0, 3, 4 or 8 alone.
 *
 * Example:
 *
 *     VelnoTextStyle normal = {0, 0, 0};
 *     velnoext_printer_set_encoding("UTF-8");
 *     velnoext_printer_add_text("Afiyet olsun", &normal);
 *     velnoext_printer_add_justified_text("Masa", "7", &normal);
 *     velnoext_printer_add_line_feed(3);
 *     int code = velnoext_print_slip(5000, false);
 */

#pragma pack(push, 4)

/** How a text is printed; 8 bytes. The register defines what the two styles look like. */
typedef struct VelnoTextStyle
{
    int size;             /**< 0 to 5, 0 being the smallest; it is sent as the bit 4 << size of a byte */
    unsigned char styleA; /**< 0 or not */
    unsigned char styleB; /**< 0 or not */
} VelnoTextStyle;

#pragma pack(pop)

VELNOEXT_SIZE_IS(VelnoTextStyle, 8);
VELNOEXT_OFFSET_IS(VelnoTextStyle, size, 0);
VELNOEXT_OFFSET_IS(VelnoTextStyle, styleA, 4);
VELNOEXT_OFFSET_IS(VelnoTextStyle, styleB, 5);

/**
 * Sets the encoding of the texts that follow on the slip. May be called again between texts.
 *
 * @param name  as Qt knows it, for example "UTF-8", "windows-1254" or "ISO-8859-9"
 * @return 0; 3: NULL (0x30D); 4: no encoding of this name is known (0x411)
 */
VELNOEXT_API int velnoext_printer_set_encoding(const char *name);

/**
 * Adds a text to the slip. It needs no line feed of its own at its end.
 *
 * @param text   of any length, in the encoding that was set
 * @param style  only read
 * @return 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set for this slip
 */
VELNOEXT_API int velnoext_printer_add_text(const char *text, VelnoTextStyle *style);

/** Adds up to 20 line feeds to the slip. @return 0; 4: more than 20 (0x413); 8: no encoding has been set */
VELNOEXT_API int velnoext_printer_add_line_feed(unsigned int count);

/**
 * Adds a line to the slip of which one text stands at the left and another at the right end.
 *
 * @param style  only read; its size does not matter
 * @return 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set for this slip
 */
VELNOEXT_API int velnoext_printer_add_justified_text(const char *left, const char *right,
                                                     VelnoTextStyle *style);

/**
 * Prints the slip. Once it is on its way it is gone from the library, printed or not, and the next one begins
 * with its encoding; only when there is no connection to send it on does it stay.
 *
 * @param timeout  ms of silence allowed in the rest of the answer once its first byte has come
 * @param flag     sent with the slip; the register defines what it means
 * @return 0; 1: not initialised, no active register, not paired (the slip stays); 2: not connected (it
 * stays), sending or receiving failed (it is gone); 5: the answer is too short; 8: refused; 11: not
 * authentic, or the slip is larger than about 65,000 bytes; 12: malformed
 */
VELNOEXT_API int velnoext_print_slip(unsigned int timeout, bool flag);

/**
 * Prints an X report, the totals of the day so far, on an idle register. Asks for the register's state first;
 * 2000 ms of silence are allowed in the rest of each answer.
 *
 * @return 0; 6: the register's state is neither 1 nor 7; 8: refused; 1, 2, 5, 11, 12 as for the queries
 */
VELNOEXT_API int velnoext_x_report(void);

/** Prints a Z report, which ends the day. As velnoext_x_report(), but in any state: the register decides. */
VELNOEXT_API int velnoext_z_report(void);

#ifdef __cplusplus
}
#endif

#endif
