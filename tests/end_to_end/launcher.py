# SPDX-License-Identifier: MIT
"""What a launcher does on Wayland: it asks for the token that lets the program it starts come to the front.

A client of three requests, in the wire format: object, length and opcode, arguments.
"""

import os
import socket
import struct

DISPLAY, REGISTRY, ACTIVATION, TOKEN = 1, 2, 3, 4
GET_REGISTRY, BIND, GET_ACTIVATION_TOKEN, COMMIT = 1, 0, 1, 3
GLOBAL, DONE = 0, 0
MANAGER = "xdg_activation_v1"


def _text(text):
    data = text.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + bytes(-len(data) % 4)


def _read_text(data):
    length, = struct.unpack_from("=I", data)
    return data[4:4 + length - 1].decode()


class _Connection:
    def __init__(self):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(20)
        self._socket.connect(os.environ["WAYLAND_DISPLAY"])
        self._stream = self._socket.makefile("rb")

    def close(self):
        self._stream.close()
        self._socket.close()

    def send(self, target, opcode, arguments=b""):
        self._socket.sendall(struct.pack("=II", target, (8 + len(arguments)) << 16 | opcode) + arguments)

    def wait_for(self, source, opcode, is_it=lambda arguments: True):
        """The arguments of the next such event."""
        while True:
            sender, word = struct.unpack("=II", self._stream.read(8))
            arguments = self._stream.read((word >> 16) - 8)
            if (sender, word & 0xffff) == (source, opcode) and is_it(arguments):
                return arguments


def activation_token():
    connection = _Connection()
    connection.send(DISPLAY, GET_REGISTRY, struct.pack("=I", REGISTRY))
    found = connection.wait_for(REGISTRY, GLOBAL, lambda arguments: _read_text(arguments[4:]) == MANAGER)
    connection.send(REGISTRY, BIND, found[:4] + _text(MANAGER) + struct.pack("=II", 1, ACTIVATION))
    connection.send(ACTIVATION, GET_ACTIVATION_TOKEN, struct.pack("=I", TOKEN))
    connection.send(TOKEN, COMMIT)
    token = _read_text(connection.wait_for(TOKEN, DONE))
    connection.close()
    return token
