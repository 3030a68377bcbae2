# SPDX-License-Identifier: Apache-2.0
"""Blocking calls that Ctrl-C ends, and that a coroutine can wait for.

Python runs the handlers of signals on the main thread alone, and only between its own instructions. A call of
the main thread is therefore made on another one, for which it waits in a way that a handler may break.
"""

from __future__ import annotations

import asyncio
import threading
from collections.abc import Callable
from concurrent.futures import Future, wait
from queue import SimpleQueue
from typing import Any, ParamSpec, TypeVar

_T = TypeVar("_T")
_P = ParamSpec("_P")

# Seconds. A signal that comes right before the main thread begins to wait does not wake it; it is seen then.
_LOOK = 0.2
_AGAIN = 0.05  # seconds: an interruption touches only a call that is under way; the first may come before


def interruptible(call: Callable[[], _T], interrupt: Callable[[], None]) -> _T:
    """Makes the call. When the main thread's wait is broken, the call is interrupted and its end awaited."""
    if threading.current_thread() is not threading.main_thread():
        return call()
    future: Future[_T] = Future()
    try:
        _worker().calls.put((future, call))
        while not future.done():
            wait([future], _LOOK)
    except BaseException:
        if not future.cancel():
            _end(future, interrupt)
        raise
    return future.result()


class _Worker:
    """A thread that makes one call after another.

    Python's own pools are no choice: one that Ctrl-C meets while it starts a thread waits for that thread for
    ever when the program ends.
    """

    def __init__(self) -> None:
        self.calls: SimpleQueue[tuple[Future[Any], Callable[[], Any]]] = SimpleQueue()
        threading.Thread(target=self._work, name="velno", daemon=True).start()

    def _work(self) -> None:
        while True:
            future, call = self.calls.get()
            if future.set_running_or_notify_cancel():
                self._make(future, call)
            else:
                _idle.append(self)
            del future, call  # what they hold

    def _make(self, future: Future[Any], call: Callable[[], Any]) -> None:
        try:
            result = call()
        except BaseException as problem:  # it belongs to whoever waits
            _idle.append(self)
            future.set_exception(problem)
        else:
            _idle.append(self)  # before that, so that the next call finds it
            future.set_result(result)


_idle: list[_Worker] = []  # more than one when a handler of a signal calls, too, while the main thread waits


def _worker() -> _Worker:
    try:
        return _idle.pop()
    except IndexError:
        return _Worker()


def _end(future: Future[Any], interrupt: Callable[[], None]) -> None:
    while not future.done():
        try:
            interrupt()
            wait([future], _AGAIN)
        except KeyboardInterrupt:
            continue  # once more: it is being ended


async def in_thread(function: Callable[_P, _T], *arguments: _P.args, **named: _P.kwargs) -> _T:
    """Awaits a method of a Till, a Register or a Sale: `await in_thread(till.sell, receipt, key="4711")`.

    It runs on a thread of its own. When the task is cancelled the call is interrupted, and has ended before
    CancelledError goes on.
    """
    owner = getattr(function, "__self__", None)
    if not callable(getattr(owner, "interrupt", None)):
        raise TypeError("in_thread() takes a method of a Till, a Register or a Sale")
    loop = asyncio.get_running_loop()
    future = loop.run_in_executor(None, lambda: function(*arguments, **named))
    try:
        return await asyncio.shield(future)
    except asyncio.CancelledError:
        while not future.done():
            owner.interrupt()  # type: ignore[union-attr]
            await asyncio.wait([future], timeout=_AGAIN)
        future.exception()  # it was asked for: nobody else will
        raise
