// SPDX-License-Identifier: Apache-2.0
// velnoext.h for C#. Made by scripts/generate from the header: do not edit.

using System;
using System.Runtime.InteropServices;

namespace Velno.Native
{
    /// <summary>The commands by their number, the first item of every request.</summary>
    public enum VelnoExtMessage
    {
        EcrState = 0,
        Login = 1,
        Logout = 2,
        ChangeState = 3,
        AddSaleItem = 4,
        DeleteSaleItem = 5,
        SaleState = 6,
        ReceiptData = 7,
        CheckPrinterPaper = 8,
        MedicalContribution = 9,
        SectionData = 10,
        PrintReport = 11,
        CurrentZ = 12,
        PrintSlip = 13,
        EndSaleWithInvoice = 14,
        SaleLimit = 15,
        AddMultipleSaleItems = 16,
        LastZDateTime = 17,
        EcrDateTime = 18,
        ActiveAcquirers = 19,
        SaleAcquirers = 20,
    }

    /// <summary>
    /// States of a register. 1, 5 and 7 have a meaning for this library; the others are those of the
    /// simulated register, and a register may answer numbers of its own.
    /// </summary>
    public enum VelnoEcrState
    {
        /// <summary>switched on a moment ago</summary>
        Starting = 0,
        /// <summary>a sale may be started</summary>
        Idle = 1,
        /// <summary>waits for a cashier</summary>
        Locked = 2,
        /// <summary>somebody uses its menu</summary>
        Menu = 3,
        /// <summary>a payment is being made</summary>
        Paying = 4,
        /// <summary>a sale is open: items, payments and its end are expected</summary>
        SaleOpen = 5,
        /// <summary>prints a report</summary>
        Reporting = 6,
        /// <summary>a sale may be started</summary>
        IdleOtherScreen = 7,
        /// <summary>out of order</summary>
        OutOfService = 8,
    }

    /// <summary>The result codes; what each means stands at the head of this file.</summary>
    public enum VelnoResult
    {
        Success = 0,
        NotReady = 1,
        ConnectionFailed = 2,
        NullArgument = 3,
        BadValue = 4,
        ReplyUnreadable = 5,
        WrongState = 6,
        StepNotTaken = 7,
        Refused = 8,
        NoPaper = 9,
        PairingFailed = 10,
        NotAuthentic = 11,
        MalformedReply = 12,
        NoApplicationHash = 13,
    }

    /// <summary>
    /// What velnoext_error_detail() names: 0x3.. a NULL pointer (result 3), 0x4.. a bad value (result
    /// 4). Several functions share a detail; velnoext_detail_text() names each with its argument.
    /// </summary>
    public enum VelnoDetail
    {
        None = 0,
        /// <summary>serial number, buffer, data or frame</summary>
        NullSerialNoOrBuffer = 768,
        NullAddressOrOutput = 769,
        NullStateOrLength = 770,
        NullFirst = 771,
        NullTotals = 772,
        NullReceipt = 773,
        NullItem = 774,
        NullItemList = 775,
        NullInvoice = 776,
        NullList = 777,
        NullCount = 778,
        NullZ = 779,
        NullDateTime = 780,
        NullEncoding = 781,
        /// <summary>or empty</summary>
        NullText = 782,
        NullStyle = 783,
        NullLimit = 784,
        NullLanguage = 785,
        BadSerialNo = 1024,
        BadPort = 1026,
        BadPersonId = 1027,
        BadTaxNumber = 1028,
        BadPrice = 1029,
        BadSection = 1030,
        BadPercentage = 1031,
        BadAmount = 1032,
        BadItemType = 1033,
        BadItemCount = 1034,
        BadInvoiceType = 1035,
        BadIdKind = 1036,
        BadInvoiceMode = 1037,
        BadReference = 1038,
        BadReceiptFirst = 1039,
        BadReceiptSecond = 1040,
        BadEncoding = 1041,
        BadPaymentAmount = 1042,
        BadLineFeeds = 1043,
        BadAnswerLimit = 1044,
        BadLanguage = 1045,
    }

    /// <summary>
    /// Why a call failed, as velnoext_cause() tells it. In brackets the results that it comes with.
    /// Numbers below 6000 are those that the pairing window shows behind "Eşleme hatası: ". With result
    /// 10 they tell where the pairing ended; with other results they tell the same fault outside a
    /// pairing. What a register gives as its reason is added to a base: 10000 + its error, 20000 + its
    /// state, 30000 + what its display says, each from 0 to 9999. The numbers are the register's; those
    /// named here are the simulated register's, whose error is a sum of bits. With result 6 the state
    /// is told, or behind the keys of velnoext_cancel_sale() an error that came with it; otherwise of
    /// several reasons the error, else the state, else the display. More causes may be added: treat one
    /// that is not known as its result.
    /// </summary>
    public enum VelnoCause
    {
        None = 0,
        /// <summary>the address to listen on is no IP address (4)</summary>
        AddressInvalid = 1005,
        /// <summary>another program listens there (2, 10)</summary>
        PortInUse = 1006,
        /// <summary>no register connected in time (2, 10)</summary>
        NobodyConnected = 1007,
        /// <summary>a foreign address, or a port that needs privileges (2, 10)</summary>
        CannotListen = 1008,
        /// <summary>the connection was closed before (2, 10)</summary>
        ClosedBeforeSending = 2005,
        /// <summary>the system took no bytes (2, 10)</summary>
        WriteRefused = 2006,
        /// <summary>the register takes no bytes (2, 10)</summary>
        NotSentInTime = 2007,
        /// <summary>a frame of no length (10)</summary>
        EmptyFrame = 3003,
        /// <summary>closed in place of an answer (2, 10)</summary>
        ClosedWhileWaiting = 3005,
        /// <summary>no answer, or not the rest of one, in time (2, 10)</summary>
        SilentRegister = 3006,
        /// <summary>the announced length is wrong or too large (10, 12)</summary>
        FrameLength = 4000,
        /// <summary>damaged on its way (10, 12)</summary>
        FrameCrc = 4001,
        /// <summary>another register answers (10, 12)</summary>
        FrameSerial = 4002,
        /// <summary>no message in it (10)</summary>
        FrameMessage = 4003,
        /// <summary>a result code other than "00" (10)</summary>
        PairingRefused = 5000,
        /// <summary>none, expired, too weak, of an unknown authority (10)</summary>
        CertificateNotTrusted = 5001,
        /// <summary>or a Diffie-Hellman group that this build does not know (10)</summary>
        SignatureInvalid = 5002,
        /// <summary>refused the connection, or silent for 2 s (2)</summary>
        RelayNotAnswering = 6001,
        /// <summary>this computer has no way to it (2)</summary>
        RelayUnreachable = 6002,
        /// <summary>closed when the serial number was named (2)</summary>
        RelayUnknownRegister = 6003,
        /// <summary>no answer to the serial number within 5 s (2)</summary>
        RelaySilent = 6004,
        /// <summary>another answer than the serial number (2)</summary>
        RelayWrongAnswer = 6005,
        /// <summary>the connection was gone before it could be used (2)</summary>
        HandOverFailed = 6010,
        /// <summary>by velnoext_interrupt() (2, 10)</summary>
        Interrupted = 7001,
        /// <summary>that of velnoext_set_answer_limit() (2)</summary>
        AnswerLimitPassed = 7002,
        /// <summary>(1)</summary>
        NotInitialised = 7003,
        /// <summary>(1)</summary>
        NoActiveDevice = 7004,
        /// <summary>(1, 2)</summary>
        NotConnected = 7005,
        /// <summary>the register is not paired (1)</summary>
        KeysAbsent = 7006,
        /// <summary>not with this application number (1)</summary>
        RawNotAllowed = 7007,
        /// <summary>the system gives no further thread (1)</summary>
        NoThread = 7008,
        /// <summary>of the slip (8)</summary>
        NoEncoding = 7009,
        /// <summary>the detail names it (3)</summary>
        NullArgument = 7010,
        /// <summary>the detail names it (4)</summary>
        BadArgument = 7011,
        /// <summary>for the result (4)</summary>
        RoomTooSmall = 7012,
        /// <summary>(4)</summary>
        NegativeLength = 7013,
        /// <summary>the program's own file (13)</summary>
        ProgramUnreadable = 7014,
        /// <summary>no bytes to send, or too many (11)</summary>
        NotEncrypted = 7015,
        /// <summary>authentic, but an item is missing (5)</summary>
        AnswerTooShort = 8001,
        /// <summary>more than 52 bytes (5)</summary>
        SectionNameTooLong = 8002,
        /// <summary>other keys, or changed on its way (11)</summary>
        MacWrong = 8003,
        /// <summary>(11)</summary>
        DecryptedToNothing = 8004,
        /// <summary>one is missing, or unknown (12)</summary>
        ElementsWrong = 8005,
        /// <summary>the answer equals the request (12)</summary>
        RequestReflected = 8006,
        /// <summary>announces more than 1 MiB (2)</summary>
        AnswerTooLong = 8007,
        /// <summary>a flood that nobody asked for (2)</summary>
        EndlessBytes = 8008,
        /// <summary>and no more than that (8)</summary>
        SaidNo = 9001,
        /// <summary>(9)</summary>
        PrinterEmpty = 9002,
        /// <summary>nothing is told of the display (7)</summary>
        DisplayEmpty = 9003,
        /// <summary>an error, state or display below 0 or above 9999 (6, 7, 8)</summary>
        OtherNumber = 9004,
        /// <summary>base of the register's error (6, 7, 8)</summary>
        OfError = 10000,
        /// <summary>a key that means nothing now</summary>
        WrongKey = 10001,
        /// <summary>one that the register does not take</summary>
        WrongValue = 10002,
        /// <summary>sale limit, or more than a receipt holds</summary>
        OverLimit = 10004,
        /// <summary>items stay as they are</summary>
        PaymentBegun = 10008,
        PaperOut = 10016,
        /// <summary>no such item, an empty receipt, no sale</summary>
        NothingThere = 10032,
        /// <summary>it cannot be written</summary>
        NoJournal = 10064,
        /// <summary>base of the register's state, see VelnoEcrState (6, 8)</summary>
        OfState = 20000,
        /// <summary>base of what the display says (7)</summary>
        OfDisplay = 30000,
        /// <summary>an amount is typed, or a question asked</summary>
        DisplayBusy = 30002,
    }

    /// <summary>Units of an item's quantity, as the simulated register prints them.</summary>
    public enum VelnoItemType
    {
        /// <summary>AD</summary>
        Piece = 0,
        /// <summary>KG</summary>
        Kilogram = 1,
        /// <summary>GR</summary>
        Gram = 2,
        /// <summary>LT</summary>
        Litre = 3,
        /// <summary>MT</summary>
        Metre = 4,
        /// <summary>M2</summary>
        SquareMetre = 5,
        /// <summary>M3</summary>
        CubicMetre = 6,
        /// <summary>SA</summary>
        Hour = 7,
    }

    /// <summary>
    /// The places of VelnoEcrSaleTotals.values, as the simulated register tells them; all in kuruş.
    /// Cash + card - change is what has been paid.
    /// </summary>
    public enum VelnoTotal
    {
        /// <summary>all items and the medical contribution, tax contained</summary>
        ToPay = 0,
        /// <summary>the tax within it</summary>
        Tax = 1,
        /// <summary>paid in cash, as handed over</summary>
        Cash = 2,
        /// <summary>paid by card</summary>
        Card = 3,
        /// <summary>what of the cash goes back</summary>
        Change = 4,
    }

    /// <summary>
    /// The keys that pay and end a sale: `type` of velnoext_add_payment() and velnoext_end_sale(). What
    /// they stand for is set on the register; on the simulated one F10 is cash and F11 a card.
    /// </summary>
    public enum VelnoPaymentKey
    {
        /// <summary>cash on the simulated register</summary>
        F10 = 0,
        /// <summary>card on the simulated register</summary>
        F11 = 1,
    }

    /// <summary>Kinds of invoice, as the simulated register takes them.</summary>
    public enum VelnoInvoiceType
    {
        /// <summary>on a printed form, whose number the reference is</summary>
        Paper = 0,
        /// <summary>e-invoice</summary>
        Electronic = 1,
        /// <summary>e-archive</summary>
        Archived = 2,
    }

    /// <summary>Whose number an invoice carries.</summary>
    public enum VelnoIdKind
    {
        /// <summary>identity number, 11 digits</summary>
        Person = 0,
        /// <summary>tax number, 10 digits</summary>
        Company = 1,
    }

    /// <summary>
    /// How what is left to pay is taken when an invoice ends the sale, as the simulated register does.
    /// </summary>
    public enum VelnoInvoiceMode
    {
        RestInCash = 1,
        RestByCard = 2,
    }

    /// <summary>One line of a sale; 84 bytes. Set what is not used to 0.</summary>
    [StructLayout(LayoutKind.Explicit, Size = 84, Pack = 4)]
    public unsafe struct VelnoSaleItem
    {
        /// <summary>of one unit, in kuruş; with 0 the line is a remark on the receipt</summary>
        [FieldOffset(0)] public long price;
        /// <summary>in thousandths: 1000 is one unit</summary>
        [FieldOffset(8)] public int quantity;
        /// <summary>
        /// Adjustment in percent of the line total: below 0 a discount (-10: ten percent off), above 0
        /// a surcharge; 0 for none. -100 or more; the simulated register takes up to 100.
        /// </summary>
        [FieldOffset(12)] public int percentage;
        /// <summary>
        /// Discount in kuruş, which counts while percentage is 0: a positive amount makes the line
        /// cheaper, and there is no surcharge by amount; 0 for none. Not negative, and at most the line
        /// total, which is price times quantity / 1000, rounded half up, and counts as 0 when that is
        /// negative.
        /// </summary>
        [FieldOffset(16)] public long amount;
        /// <summary>
        /// The bytes before the first zero, at most 52 of them; need not end with a zero. They are
        /// passed on as they are: UTF-8 for the simulated register, which reads what is no UTF-8 as
        /// ISO-8859-9. Cut a longer name between two characters.
        /// </summary>
        [FieldOffset(24)] public fixed byte name[53];
        /// <summary>section (department) of the register, 1 to 8: it decides the tax rate</summary>
        [FieldOffset(77)] public sbyte section;
        /// <summary>unit of the quantity, 0 to 7, see VelnoItemType</summary>
        [FieldOffset(80)] public int type;
    }

    /// <summary>
    /// What the register has added up for the open sale; 44 bytes. The register defines what each
    /// number is.
    /// </summary>
    [StructLayout(LayoutKind.Explicit, Size = 44, Pack = 4)]
    public unsafe struct VelnoEcrSaleTotals
    {
        /// <summary>in the order in which the register tells them, see VelnoTotal</summary>
        [FieldOffset(0)] public fixed long values[5];
        /// <summary>
        /// told behind them; the simulated register's number of items that are not deleted
        /// </summary>
        [FieldOffset(40)] public int number;
    }

    /// <summary>Several lines at once; 844 bytes.</summary>
    [StructLayout(LayoutKind.Explicit, Size = 844, Pack = 4)]
    public unsafe struct VelnoSaleItemList
    {
        /// <summary>how many of the items are meant, 1 to 10</summary>
        [FieldOffset(0)] public ushort count;
        [FieldOffset(4)] public VelnoSaleItem items0;
        [FieldOffset(88)] public VelnoSaleItem items1;
        [FieldOffset(172)] public VelnoSaleItem items2;
        [FieldOffset(256)] public VelnoSaleItem items3;
        [FieldOffset(340)] public VelnoSaleItem items4;
        [FieldOffset(424)] public VelnoSaleItem items5;
        [FieldOffset(508)] public VelnoSaleItem items6;
        [FieldOffset(592)] public VelnoSaleItem items7;
        [FieldOffset(676)] public VelnoSaleItem items8;
        [FieldOffset(760)] public VelnoSaleItem items9;
    }

    /// <summary>
    /// Two numbers by which the register knows a receipt; 8 bytes. Both are non-zero for a receipt that
    /// exists.
    /// </summary>
    [StructLayout(LayoutKind.Explicit, Size = 8, Pack = 4)]
    public unsafe struct VelnoReceiptRef
    {
        /// <summary>
        /// the simulated register's: number of the Z report that the receipt counts towards
        /// </summary>
        [FieldOffset(0)] public int first;
        /// <summary>and the receipt's number among those of that report</summary>
        [FieldOffset(4)] public int second;
    }

    /// <summary>What a sale's invoice says of the customer; 48 bytes.</summary>
    [StructLayout(LayoutKind.Explicit, Size = 48, Pack = 4)]
    public unsafe struct VelnoInvoice
    {
        /// <summary>0, 1 or 2, see VelnoInvoiceType</summary>
        [FieldOffset(0)] public uint invoiceType;
        /// <summary>of idNumber, see VelnoIdKind; 0: a person's, 11 digits; 1: a tax number, 10</summary>
        [FieldOffset(4)] public uint idKind;
        /// <summary>the bytes before the first zero; 11111111111 stands for any person</summary>
        [FieldOffset(8)] public fixed byte idNumber[12];
        /// <summary>the bytes before the first zero; with invoiceType 0 there must be 6 to 16</summary>
        [FieldOffset(20)] public fixed byte reference[17];
        /// <summary>1 or 2, see VelnoInvoiceMode</summary>
        [FieldOffset(40)] public int mode;
        /// <summary>not 0: the invoice takes the place of the delivery note (simulated register)</summary>
        [FieldOffset(44)] public int flag;
    }

    /// <summary>
    /// How a text is printed; 8 bytes. The register defines what the two styles look like.
    /// </summary>
    [StructLayout(LayoutKind.Explicit, Size = 8, Pack = 4)]
    public unsafe struct VelnoTextStyle
    {
        /// <summary>0 to 5, 0 being the smallest; it is sent as the bit 4 &lt;&lt; size of a byte</summary>
        [FieldOffset(0)] public int size;
        /// <summary>0 or not</summary>
        [FieldOffset(4)] public byte styleA;
        /// <summary>0 or not</summary>
        [FieldOffset(5)] public byte styleB;
    }

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    public unsafe delegate void velnoext_set_log_line(
        IntPtr text, IntPtr context);

    /// <summary>The functions of velnoext.h.</summary>
    public static unsafe class Velnoext
    {
        private const string Library = "libvelnoext.so.0";

        public const int VELNOEXT_VERSION_MAJOR = 0;

        public const int VELNOEXT_VERSION_MINOR = 2;

        public const int VELNOEXT_VERSION_PATCH = 0;

        /// <summary>
        /// The version as one number, for comparisons: #if VELNOEXT_VERSION &gt;= 200 is 0.2.0 or later.
        /// </summary>
        public const int VELNOEXT_VERSION = 200;

        /// <summary>
        /// The interface's version, "0". The text lives as long as the library. Never blocks.
        /// const char *velnoext_version(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnoext_version();

        /// <summary>
        /// The version of the library in use, "0.2.0" for instance; compare with VELNOEXT_VERSION_MAJOR
        /// and its neighbours, which are those of the header. The text lives as long as the library.
        /// Never blocks.
        /// const char *velnoext_library_version(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnoext_library_version();

        /// <summary>
        /// Connects a register, pairs with it if need be, and makes it the active one. A register that
        /// is connected already is connected afresh; others stay connected. A register that is not yet
        /// paired is met three times on the port given: to be told so, to agree on keys and to stay.
        /// One that is paired is met once. On failure the active register is the one before, other
        /// registers stay connected, and the library's thread goes on until velnoext_close().
        /// appNo: number of the application, under which it is known to whoever runs the registers'
        /// service and gave it out: the one that a technician types into the pairing window as
        /// "Uygulama no". It does not leave this computer; any other number than the two special ones
        /// behaves alike. 999999 takes the relay's port 50900, others 50902. With 999999 and 14242 (the
        /// pairing tool itself) velnoext_close() forgets the keys, and the raw pass-through is open.
        /// The last call's number holds for all registers
        /// serialNo: 12 characters
        /// address: local address to listen on, "0.0.0.0" for all; "255.255.255.255" for the relay. A
        /// register that is not yet paired must come over IPv4: keys are agreed on at the port of every
        /// local IPv4 address, whatever is named here. Afterwards an IPv6 address will do, too
        /// port: TCP port to listen on; ignored with the relay
        /// timeout: ms to wait for each direct connection of the register but that of the key exchange,
        /// which may take 30 s; not used with the relay, which has 2 s to accept and 5 s to answer
        /// Returns 0; 1: the library's thread cannot be started; 2: nobody connected in time, the port
        /// cannot be listened on, the relay refused or does not know the register, the register left;
        /// 3: NULL (detail 0x300 serialNo, 0x301 address); 4: serialNo is not 12 characters long
        /// (0x400), port is 0 (0x402), the address is none (0); 10: pairing failed; 13: the executable
        /// cannot be read
        /// int velnoext_initialize(unsigned int appNo, const char *serialNo, const char *address,
        /// unsigned short port, unsigned int timeout);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_initialize(
            uint appNo,
            byte[] serialNo,
            byte[] address,
            ushort port,
            uint timeout);

        /// <summary>
        /// Makes another connected register the active one. Asks nobody.
        /// serialNo: 12 characters
        /// Returns 0; 1: not connected (the active register stays); 3: NULL (0x300); 4: not 12
        /// characters (0x400)
        /// int velnoext_set_active_device(const char *serialNo);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_set_active_device(byte[] serialNo);

        /// <summary>
        /// The serial number of the active register. Asks nobody.
        /// buffer: room for 13 bytes: 12 characters and a zero
        /// Returns 0; 1: there is none; 3: NULL (0x300)
        /// int velnoext_active_device(char *buffer);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_active_device(IntPtr buffer);

        /// <summary>
        /// What the last call complained about: 0x300 + n for a pointer, 0x400 + n for a value,
        /// otherwise 0. Every call that has to do with registers begins with setting it to 0, closing
        /// included: ask right after the failed call, before another thread calls. Never blocks.
        /// int velnoext_error_detail(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_error_detail();

        /// <summary>
        /// The finest reason known of the last call that failed, see VelnoCause: 0 after one that
        /// succeeded. Set to 0 and read as velnoext_error_detail(): ask right after the failed call,
        /// before another thread calls. Never blocks.
        /// int velnoext_cause(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_cause();

        /// <summary>
        /// Closes the active register's connection; afterwards no register is active. When it was the
        /// last connection, the library returns to the state before velnoext_initialize(), keys apart.
        /// Harmless when nothing is open. Blocks until what was sent has left this computer's buffers,
        /// at most 30 s.
        /// void velnoext_close(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern void velnoext_close();

        /// <summary>
        /// Closes every connection as velnoext_close() does. Does nothing when there is none: what a
        /// first velnoext_initialize() that failed has left is ended by velnoext_close().
        /// void velnoext_close_all(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern void velnoext_close_all();

        /// <summary>
        /// Forgets a register: closes its connection as velnoext_close() does and drops its keys, so
        /// that the next velnoext_initialize() pairs with it anew. For a register that has lost its
        /// keys, or was paired elsewhere since: it ends the connection at every command. Other
        /// registers stay as they are; when it was the active one, none is.
        /// serialNo: 12 characters
        /// Returns 0; 1: neither connected nor paired; 3: NULL (0x300); 4: not 12 characters (0x400)
        /// int velnoext_forget_device(const char *serialNo);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_forget_device(byte[] serialNo);

        /// <summary>
        /// Ends the call that is under way on another thread, or was when the signal came, whatever it
        /// waits for: a register to connect, a pairing, bytes to leave, an answer. That call returns
        /// within 100 ms, with 2, or with 10 when it was exchanging keys, and the register's connection
        /// is closed: a late answer could be taken for that to the next command. What the register has
        /// done must be asked of it, as after every lost answer. A call that was just done returns what
        /// it would have. From any thread, and from a signal handler. Never blocks. Without a call
        /// under way it does nothing; it touches no later call, nor one that still waits for its turn.
        /// void velnoext_interrupt(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern void velnoext_interrupt();

        /// <summary>
        /// Limits the whole wait for an answer: keep-alives, pauses between its bytes and all. When the
        /// limit has passed the call returns 2 and the register's connection is closed, as after
        /// velnoext_interrupt(). It holds for each of the three answers of a key exchange, too, with
        /// all that comes in its place; the call then returns 10.
        /// ms: for all answers from now on; 0xFFFFFFFF, no limit, at the start
        /// Returns 0; 4: 0 ms (0x414)
        /// int velnoext_set_answer_limit(unsigned int ms);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_set_answer_limit(uint ms);

        /// <summary>
        /// Sends the lines that tell what goes wrong in a pairing, or with the frame of an answer, to a
        /// function in place of standard output.
        /// line: called with one line without its line feed, on the thread of the call that is under
        /// way or on the library's own: it must not call the library, velnoext_interrupt() apart. The
        /// text lives until it returns. NULL: standard output, as at the start
        /// context: handed to it; borrowed until another function is set
        /// void velnoext_set_log(void (*line)(const char *text, void *context), void *context);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern void velnoext_set_log(velnoext_set_log_line line, IntPtr context);

        /// <summary>
        /// Chooses the language of all texts, for the whole process; names stay as they are. Takes no
        /// lock; texts that were handed out before stay valid.
        /// language: "en" (as at the start) or "tr"
        /// Returns 0; 3: NULL (0x311); 4: no such language (0x415). Detail and cause are set on failure
        /// alone, so that those of a failed call can be told in both languages
        /// int velnoext_set_language(const char *language);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_set_language(byte[] language);

        /// <summary>
        /// A code's name, lower-case words joined by hyphens: "success", "no-paper"; otherwise
        /// "unknown".
        /// const char *velnoext_result_name(int code);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnoext_result_name(int code);

        /// <summary>
        /// What a code means: exactly three lines, separated by '\n', none behind the last. The first
        /// is the sentence that says what happened; the second begins with "Cause: ", the third with
        /// "Cure: " (in Turkish "Neden: " and "Çözüm: ").
        /// const char *velnoext_result_text(int code);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnoext_result_text(int code);

        /// <summary>
        /// Which argument velnoext_error_detail() means, in one line. Several functions share a detail:
        /// the text then names each with its argument.
        /// const char *velnoext_detail_text(int detail);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnoext_detail_text(int detail);

        /// <summary>
        /// A cause's name, like that of a code: "port-in-use", "register-paper-out". A register's
        /// number that is not known has the name of its base: "register-error", "register-state",
        /// "register-display"; all else "unknown".
        /// const char *velnoext_cause_name(int cause);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnoext_cause_name(int cause);

        /// <summary>
        /// What a cause means: three lines as velnoext_result_text(). Also for the codes of the pairing
        /// window.
        /// const char *velnoext_cause_text(int cause);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern IntPtr velnoext_cause_text(int cause);

        /// <summary>
        /// Encrypts bytes, frames them and sends them to the active register. Waits for no answer. What
        /// the register answers on this connection must not meet another command, which would take it
        /// for its own answer: velnoext_initialize() connects afresh before the next one.
        /// data: borrowed; needs no terminating zero
        /// length: bytes, 1 to 65,471
        /// Returns 0; 1: not initialised, not paired, or another application number; 2: not connected,
        /// or not sent within 2 s; 3: NULL (0x300); 4: negative length; 11: nothing to encrypt, or too
        /// much
        /// int velnoext_send_data(const char *data, int length);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_send_data(byte[] data, int length);

        /// <summary>
        /// Checks and decrypts a frame of the active register that the caller received by means of its
        /// own. Sends nothing.
        /// frame: from its 2-byte length on, without the 4 bytes that precede it on a connection
        /// output: receives the plain bytes, no terminating zero
        /// outputLength: in: room; out: bytes written
        /// Returns 0; 1: as for velnoext_send_data(); 2: not connected; 3: NULL (0x300 frame, 0x301
        /// output, 0x302 outputLength); 4: negative frameLength, or the room is too small; 11: not
        /// authentic; 12: malformed
        /// int velnoext_get_data(const char *frame, int frameLength, char *output, int *outputLength);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_get_data(
            byte[] frame,
            int frameLength,
            IntPtr output,
            int* outputLength);

        /// <summary>
        /// Opens the application's session on the register: it then knows that an application works
        /// with it. The session belongs to the register, which keeps it when the connection ends;
        /// logging in twice does no harm. This library asks for no login before any command, and the
        /// simulated register neither; one in the field may want it before it sells or reports, so log
        /// in once after connecting.
        /// Returns 0; 8: refused, by the simulated register while it starts or is out of service
        /// int velnoext_login(unsigned int timeout);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_login(uint timeout);

        /// <summary>
        /// Ends the session.
        /// Returns 0; 8: refused, by the simulated register while a sale is open
        /// int velnoext_logout(unsigned int timeout);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_logout(uint timeout);

        /// <summary>
        /// Whether the printer has paper.
        /// Returns 0: it has; 9: it has none
        /// int velnoext_check_printer_paper(unsigned int timeout);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_check_printer_paper(uint timeout);

        /// <summary>
        /// The register's state, see VelnoEcrState.
        /// Returns 0; 3: NULL (0x302)
        /// int velnoext_ecr_state(unsigned int timeout, int *state);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_ecr_state(uint timeout, int* state);

        /// <summary>
        /// The serial number that the active register gave when it was paired. Asks nobody. A zero is
        /// written at the index of this terminal's identity's length, not behind the copied bytes: with
        /// the usual 12 characters on both sides the result is an ordinary text.
        /// buffer: room for at least 17 bytes
        /// Returns 0; 1: not initialised, no active register, not paired; 3: NULL (0x300)
        /// int velnoext_ecr_serialno(char *buffer);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_ecr_serialno(IntPtr buffer);

        /// <summary>
        /// The number of the current Z report.
        /// z: written also when the register refused
        /// Returns 0; 3: NULL (0x30B); 8: refused
        /// int velnoext_current_z(unsigned int timeout, int *z);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_current_z(uint timeout, int* z);

        /// <summary>
        /// When the last Z report was made, as the register's number; the simulated register's is
        /// seconds since 1970.
        /// Returns 0; 3: NULL (0x30C)
        /// int velnoext_last_z_datetime(unsigned int timeout, int *value);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_last_z_datetime(uint timeout, int* value);

        /// <summary>
        /// The register's clock, a number like that of the last Z report.
        /// Returns 0; 3: NULL (0x30C)
        /// int velnoext_ecr_datetime(unsigned int timeout, int *value);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_ecr_datetime(uint timeout, int* value);

        /// <summary>
        /// The highest amount that one sale may reach, in kuruş.
        /// Returns 0; 3: NULL (0x310)
        /// int velnoext_sale_limit(unsigned int timeout, long long *limit);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_sale_limit(uint timeout, long* limit);

        /// <summary>
        /// Starts a sale: reads the register's state, then has the keys that start one pressed.
        /// Returns 0; 6: the state is neither 1 nor 7 (nothing was started), or it is not 5 afterwards;
        /// 7: the register did not take the step or tells an error of its own
        /// int velnoext_start_sale(unsigned int timeout);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_start_sale(uint timeout);

        /// <summary>
        /// Starts a sale that is to end with an invoice, see velnoext_end_sale_with_invoice().
        /// Returns as above
        /// int velnoext_start_sale_with_invoice(unsigned int timeout);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_start_sale_with_invoice(uint timeout);

        /// <summary>
        /// How the open sale stands.
        /// first: the first number of the register's list; written as soon as it has been read, also
        /// when the rest of the answer cannot be read (5)
        /// totals: the running totals
        /// receipt: names the receipt of this sale, for velnoext_receipt_data()
        /// Returns 0; 3: NULL (0x303 first, 0x304 totals, 0x305 receipt); 6: no sale is open; 7: the
        /// register's list is empty; 8: refused
        /// int velnoext_sale_state(unsigned int timeout, int *first, VelnoEcrSaleTotals *totals,
        /// VelnoReceiptRef *receipt);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_sale_state(
            uint timeout,
            int* first,
            VelnoEcrSaleTotals* totals,
            VelnoReceiptRef* receipt);

        /// <summary>
        /// Adds one line to the open sale. With price 0 neither section nor amount is looked at.
        /// item: only read
        /// totals: the running totals with this line
        /// Returns 0; 3: NULL (0x306 item, 0x304 totals); 4: section is not 1 to 8 (0x406), percentage
        /// is below -100 (0x407), amount is negative or exceeds the line total (0x408), type is not 0
        /// to 7 (0x409); 6: no sale is open; 7: the register did not take the step; 8: refused, or the
        /// register tells an error of its own
        /// int velnoext_add_sale_item(unsigned int timeout, VelnoSaleItem *item, VelnoEcrSaleTotals
        /// *totals);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_add_sale_item(
            uint timeout,
            VelnoSaleItem* item,
            VelnoEcrSaleTotals* totals);

        /// <summary>
        /// Adds up to ten lines to the open sale at once. When one is not valid none is sent.
        /// list: only read
        /// totals: the running totals with all lines
        /// Returns 0; 3: NULL (0x307 list, 0x304 totals); 4: count is not 1 to 10 (0x40A), an item's
        /// price is 0 (0x405), or an item is not valid, as for velnoext_add_sale_item(); 6, 7, 8:
        /// likewise
        /// int velnoext_add_multiple_sale_items(unsigned int timeout, VelnoSaleItemList *list,
        /// VelnoEcrSaleTotals *totals);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_add_multiple_sale_items(
            uint timeout,
            VelnoSaleItemList* list,
            VelnoEcrSaleTotals* totals);

        /// <summary>
        /// Adds a medical contribution to the open sale.
        /// amount: in kuruş; with 0 the identity number is neither looked at nor sent
        /// identityNo: 11-digit identity number of the person; 11111111111 stands for anybody
        /// Returns 0; 4: the identity number is not valid (0x403); 6: no sale is open; 7: the register
        /// did not take the step or tells an error of its own; 8: refused
        /// int velnoext_add_medical_contribution(unsigned int timeout, long long amount, unsigned long
        /// long identityNo);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_add_medical_contribution(
            uint timeout,
            long amount,
            ulong identityNo);

        /// <summary>
        /// Takes the last line out of the open sale.
        /// totals: the running totals without it
        /// Returns 0; 3: NULL (0x304); 6: no sale is open; 7: the register did not take the step; 8:
        /// refused, or the register tells an error of its own
        /// int velnoext_delete_last_sale_item(unsigned int timeout, VelnoEcrSaleTotals *totals);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_delete_last_sale_item(uint timeout, VelnoEcrSaleTotals* totals);

        /// <summary>
        /// Takes the line of this index out of the open sale.
        /// index: as the register counts its lines; the simulated one from 0, the first line added. A
        /// deleted line keeps its index, so that the others keep theirs
        /// totals: the running totals without it
        /// Returns as above
        /// int velnoext_delete_sale_item(unsigned int timeout, int index, VelnoEcrSaleTotals *totals);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_delete_sale_item(
            uint timeout,
            int index,
            VelnoEcrSaleTotals* totals);

        /// <summary>
        /// Pays an amount of the open sale. Does not wait for an answer.
        /// type: see VelnoPaymentKey; 0: with the key F10 of the register; any other value: with its
        /// key F11
        /// amount: in kuruş, 1 to 999,999,999,999; a larger one is not refused but loses its last
        /// digits, as the register takes 12
        /// Returns 0: the keys are sent; 4: amount is 0 or negative (0x412), which is looked at before
        /// all else; 6: no sale is open; 7: the register did not take the step before; 8: the register
        /// is not ready for keys
        /// int velnoext_add_payment(int type, long long amount);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_add_payment(int type, long amount);

        /// <summary>
        /// Ends the open sale. Does not wait for an answer.
        /// type: as for velnoext_add_payment()
        /// Returns 0: the key is sent; 6, 7, 8: as for velnoext_add_payment()
        /// int velnoext_end_sale(int type);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_end_sale(int type);

        /// <summary>
        /// Cancels the open sale and waits until the register is idle. Payments that the register
        /// refused, and a printer without paper, are no hindrance to the simulated register; without
        /// paper it prints nothing of it.
        /// Returns 0; 6: no sale is open, or the register's state is not 1 afterwards; 7, 8: as for
        /// velnoext_add_payment()
        /// int velnoext_cancel_sale(unsigned int timeout);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_cancel_sale(uint timeout);

        /// <summary>
        /// Ends the open sale with an invoice. The register is not asked for its state before.
        /// invoice: only read
        /// Returns 0; 3: NULL (0x308); 4: invoiceType is above 2 (0x40B), idKind above 1 (0x40C), mode
        /// not 1 or 2 (0x40D), reference not 6 to 16 bytes long with invoiceType 0 (0x40E), idNumber
        /// not valid as a person's (0x403) or as a tax number (0x404); 8: refused
        /// int velnoext_end_sale_with_invoice(VelnoInvoice *invoice);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_end_sale_with_invoice(VelnoInvoice* invoice);

        /// <summary>
        /// The totals of a receipt, also of one that has been printed.
        /// receipt: as velnoext_sale_state() told it; only read
        /// Returns 0; 3: NULL (0x305 receipt, 0x304 totals); 4: first (0x40F) or second (0x410) is 0;
        /// 8: refused
        /// int velnoext_receipt_data(unsigned int timeout, VelnoReceiptRef *receipt, VelnoEcrSaleTotals
        /// *totals);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_receipt_data(
            uint timeout,
            VelnoReceiptRef* receipt,
            VelnoEcrSaleTotals* totals);

        /// <summary>
        /// The acquirers (banks) that the register can take cards for, by their numbers.
        /// list: room for *count numbers
        /// count: in: room; out: how many were written, or -1 when the room is too small
        /// Returns 0; 3: NULL (0x309 list, 0x30A count); 4: the room is too small (detail 0)
        /// int velnoext_active_acquirers(unsigned int timeout, int *list, int *count);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_active_acquirers(uint timeout, int* list, int* count);

        /// <summary>
        /// The acquirers of the sale's payments.
        /// Returns as above
        /// int velnoext_acquirers_of_sale(unsigned int timeout, int *list, int *count);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_acquirers_of_sale(uint timeout, int* list, int* count);

        /// <summary>
        /// What the register knows of a section (department).
        /// item: in: section, 1 to 8; out: name, ended with a zero, and in quantity a number that the
        /// register defines, the simulated one as the section's tax rate in per cent; nothing else is
        /// written
        /// Returns 0; 3: NULL (0x306); 4: section is not 1 to 8 (0x406); 5 also: the name is longer
        /// than 52 bytes
        /// int velnoext_section_data(unsigned int timeout, VelnoSaleItem *item);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_section_data(uint timeout, VelnoSaleItem* item);

        /// <summary>
        /// Sets the encoding of the texts that follow on the slip. May be called again between texts.
        /// name: as Qt knows it, for example "UTF-8", "windows-1254" or "ISO-8859-9"
        /// Returns 0; 3: NULL (0x30D); 4: no encoding of this name is known (0x411)
        /// int velnoext_printer_set_encoding(const char *name);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_printer_set_encoding(byte[] name);

        /// <summary>
        /// Adds a text to the slip. It needs no line feed of its own at its end.
        /// text: of any length, in the encoding that was set
        /// style: only read
        /// Returns 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set
        /// for this slip
        /// int velnoext_printer_add_text(const char *text, VelnoTextStyle *style);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_printer_add_text(byte[] text, VelnoTextStyle* style);

        /// <summary>
        /// Adds up to 20 line feeds to the slip.
        /// Returns 0; 4: more than 20 (0x413); 8: no encoding has been set
        /// int velnoext_printer_add_line_feed(unsigned int count);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_printer_add_line_feed(uint count);

        /// <summary>
        /// Adds a line to the slip of which one text stands at the left and another at the right end.
        /// style: only read; its size does not matter
        /// Returns 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set
        /// for this slip
        /// int velnoext_printer_add_justified_text(const char *left, const char *right, VelnoTextStyle
        /// *style);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_printer_add_justified_text(
            byte[] left,
            byte[] right,
            VelnoTextStyle* style);

        /// <summary>
        /// Prints the slip. Once it is on its way it is gone from the library, printed or not, and the
        /// next one begins with its encoding; only when there is no connection to send it on does it
        /// stay.
        /// timeout: ms of silence allowed in the rest of the answer once its first byte has come
        /// flag: sent with the slip; the register defines what it means
        /// Returns 0; 1: not initialised, no active register, not paired (the slip stays); 2: not
        /// connected (it stays), sending or receiving failed (it is gone); 5: the answer is too short;
        /// 8: refused; 11: not authentic, or the slip is larger than about 65,000 bytes; 12: malformed
        /// int velnoext_print_slip(unsigned int timeout, bool flag);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_print_slip(
            uint timeout,
            [MarshalAs(UnmanagedType.I1)] bool flag);

        /// <summary>
        /// Prints an X report, the totals of the day so far, on an idle register. Asks for the
        /// register's state first; 2000 ms of silence are allowed in the rest of each answer.
        /// Returns 0; 6: the register's state is neither 1 nor 7; 8: refused; 1, 2, 5, 11, 12 as for
        /// the queries
        /// int velnoext_x_report(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_x_report();

        /// <summary>
        /// Prints a Z report, which ends the day. As velnoext_x_report(), but in any state: the
        /// register decides.
        /// int velnoext_z_report(void);
        /// </summary>
        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
        public static extern int velnoext_z_report();
    }
}
