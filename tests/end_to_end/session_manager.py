#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The session manager of an X11 desktop: prints its address, and ends the session at a line on standard input.

It asks each program to save its state for the end of the session, waits for the reply and asks it to end.
"""

import ctypes
import os
import select
import sys

ICE = ctypes.CDLL("libICE.so.6")
SM = ctypes.CDLL("libSM.so.6")
SAVE_GLOBAL, SAVE_LOCAL = 0, 1
INTERACT_NONE, INTERACT_ANY = 0, 2
POINTER = ctypes.c_void_p
for function in (ICE.IceAcceptConnection, ICE.IceComposeNetworkIdList):
    function.restype = POINTER
ICE.IceGetListenConnectionNumber.argtypes = ICE.IceConnectionNumber.argtypes = [POINTER]

CALLBACKS = ("register_client", "interact_request", "interact_done", "save_yourself_request",
             "save_yourself_phase2_request", "save_yourself_done", "close_connection", "set_properties",
             "delete_properties", "get_properties")
Callback = ctypes.CFUNCTYPE(ctypes.c_int, POINTER, POINTER, POINTER, POINTER)
NewClient = ctypes.CFUNCTYPE(ctypes.c_int, POINTER, POINTER, ctypes.POINTER(ctypes.c_ulong), POINTER, POINTER)
IsAllowed = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p)
# Without one of our own, the library ends this process when a program hangs up.
HangUp = ctypes.CFUNCTYPE(None, POINTER)
ON_HANG_UP = HangUp(lambda _connection: None)


class Entry(ctypes.Structure):
    _fields_ = [("callback", Callback), ("data", POINTER)]


class Manager:
    def __init__(self):
        self._clients = []
        self._is_ending = False
        self._connections = {}
        self._callbacks = [Callback(getattr(self, "_" + name, lambda *_: 1)) for name in CALLBACKS]
        self._new_client = NewClient(self._welcome)
        self._is_allowed = IsAllowed(lambda _host: 1)
        problem = ctypes.create_string_buffer(256)
        count = ctypes.c_int()
        self._listeners = ctypes.POINTER(POINTER)()
        ICE._IceTransNoListen(b"tcp")
        ICE.IceSetIOErrorHandler(ON_HANG_UP)
        if not SM.SmsInitialize(b"test", b"1", self._new_client, None, self._is_allowed, 256, problem) or not \
                ICE.IceListenForConnections(ctypes.byref(count), ctypes.byref(self._listeners), 256, problem):
            sys.exit(problem.value.decode())
        self._listener_of = {}
        for i in range(count.value):
            listener = POINTER(self._listeners[i])
            ICE.IceSetHostBasedAuthProc(listener, self._is_allowed)
            self._listener_of[ICE.IceGetListenConnectionNumber(listener)] = listener
        self.address = ctypes.string_at(ICE.IceComposeNetworkIdList(count, self._listeners)).decode()
        self._count = count

    # The callbacks of the library, by their names.

    def _welcome(self, _connection, _data, mask, callbacks, _reason):
        mask[0] = (1 << len(CALLBACKS)) - 1
        for entry, callback in zip((Entry * len(CALLBACKS)).from_address(callbacks), self._callbacks):
            entry.callback = callback
        return 1

    def _register_client(self, client, _data, previous, _):
        if previous:
            return 0
        SM.SmsRegisterClientReply(POINTER(client), b"1")
        self._clients.append(client)
        SM.SmsSaveYourself(POINTER(client), SAVE_LOCAL, 0, INTERACT_NONE, 0)
        return 1

    def _save_yourself_done(self, client, *_):
        (SM.SmsDie if self._is_ending else SM.SmsSaveComplete)(POINTER(client))
        return 1

    def _close_connection(self, client, *_):
        self._clients.remove(client)
        return 1

    def _end(self):
        self._is_ending = True
        for client in self._clients:
            SM.SmsSaveYourself(POINTER(client), SAVE_GLOBAL, 1, INTERACT_ANY, 0)

    def run(self):
        while True:
            ready, _, _ = select.select([sys.stdin.fileno(), *self._listener_of, *self._connections], [], [])
            for number in ready:
                if number in self._listener_of:
                    status = ctypes.c_int()
                    connection = ICE.IceAcceptConnection(self._listener_of[number], ctypes.byref(status))
                    self._connections[ICE.IceConnectionNumber(connection)] = connection
                elif number in self._connections:
                    if ICE.IceProcessMessages(POINTER(self._connections[number]), None, None):
                        ICE.IceCloseConnection(POINTER(self._connections.pop(number)))
                elif sys.stdin.readline():
                    self._end()
                else:
                    ICE.IceFreeListenObjs(self._count, self._listeners)
                    return


if __name__ == "__main__":
    manager = Manager()
    print(manager.address, flush=True)
    manager.run()
