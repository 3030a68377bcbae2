"""Loads the library named into Python and reads the state of the register on the port given, in two visits."""

import ctypes
import locale
import sys
import threading


def connect(library, port):
    return library.velnoext_initialize(5, b"UB1234567890", b"127.0.0.1", ctypes.c_ushort(port), 20000)


def read_state(library):
    state = ctypes.c_int(-1)
    code = library.velnoext_ecr_state(5000, ctypes.byref(state))
    print("code", code, "state", state.value)


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


main()
