# SPDX-License-Identifier: Apache-2.0
"""Loads the library named into Python and reads the state of the register on the port given, in two visits.

Then it listens there for a register that never comes, and Ctrl-C ends the call.
"""

import ctypes
import locale
import os
import signal
import sys
import threading


def connect(library, port):
    return library.velnoext_initialize(5, b"UB1234567890", b"127.0.0.1", ctypes.c_ushort(port), 20000)


def read_state(library):
    state = ctypes.c_int(-1)
    code = library.velnoext_ecr_state(5000, ctypes.byref(state))
    print("code", code, "state", state.value)


def interrupted(library, port):
    """Python runs its handlers on the first thread alone, and only between its own instructions: the call is
    made on a second one."""
    results = []
    signal.signal(signal.SIGINT, lambda number, frame: library.velnoext_interrupt())
    caller = threading.Thread(target=lambda: results.append(library.velnoext_initialize(
        5, b"UB1234567890", b"127.0.0.1", ctypes.c_ushort(port), ctypes.c_uint(0xFFFFFFFF))))
    caller.start()
    while caller.is_alive():  # the first may come before the call
        os.kill(os.getpid(), signal.SIGINT)
        caller.join(0.05)
    return results[0]


def main():
    library = ctypes.CDLL(sys.argv[1])
    port = int(sys.argv[2])
    library.velnoext_version.restype = ctypes.c_char_p
    before = locale.setlocale(locale.LC_ALL)
    for _ in range(2):
        print("connected", connect(library, port))
        read_state(library)
        worker = threading.Thread(target=read_state, args=(library,))
        worker.start()
        worker.join()
        library.velnoext_close_all()
    print("version", library.velnoext_version().decode())
    print("locale", "kept" if locale.setlocale(locale.LC_ALL) == before else "changed")
    print("no name", library.velnoext_initialize(5, None, b"127.0.0.1", 1, 1),
          hex(library.velnoext_error_detail()))
    print("interrupted", interrupted(library, port))
    library.velnoext_close()


main()
