# SPDX-License-Identifier: MIT
"""The publisher's page: a TLS server with a certificate nobody signed, behind a proxy that leads there."""

import os
import socket
import socketserver
import ssl
import subprocess
import tempfile
import threading


def self_signed():
    folder = tempfile.mkdtemp(prefix="page-")
    key, certificate = os.path.join(folder, "key.pem"), os.path.join(folder, "certificate.pem")
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                    "-nodes", "-keyout", key, "-out", certificate, "-days", "2", "-subj", "/CN=nobody"],
                   check=True, stderr=subprocess.DEVNULL)
    return certificate, key


class _Server(socketserver.ThreadingTCPServer):
    allow_reuse_address = True
    daemon_threads = True


class UpdatePage:
    """Answers `reply` to every request of the page, and records what was asked of it and of the proxy."""

    def __init__(self):
        self.reply = b""
        self.requests = []
        self.connects = []
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(*self_signed())
        page = self

        class Page(socketserver.BaseRequestHandler):
            def handle(self):
                try:
                    with context.wrap_socket(self.request, server_side=True) as stream:
                        page.requests.append(_head(stream))
                        stream.sendall(page.reply)
                except OSError:
                    page.requests.append("TLS failed")

        class Proxy(socketserver.BaseRequestHandler):
            def handle(self):
                page.connects.append(_head(self.request))
                with socket.create_connection(("127.0.0.1", page._page.server_address[1])) as other:
                    self.request.sendall(b"HTTP/1.1 200 OK\r\n\r\n")
                    back = threading.Thread(target=_pump, args=(other, self.request), daemon=True)
                    back.start()
                    _pump(self.request, other)
                    back.join(10)

        self._page = _Server(("127.0.0.1", 0), Page)
        self._proxy = _Server(("127.0.0.1", 0), Proxy)
        for server in (self._page, self._proxy):
            threading.Thread(target=server.serve_forever, daemon=True).start()

    @property
    def environment(self):
        return {"https_proxy": f"http://127.0.0.1:{self._proxy.server_address[1]}"}

    def publish(self, body, status="200 OK"):
        data = body if isinstance(body, bytes) else body.encode()
        self.reply = (f"HTTP/1.1 {status}\r\nContent-Length: {len(data)}\r\nConnection: close\r\n\r\n"
                      .encode() + data)

    def stop(self):
        for server in (self._page, self._proxy):
            server.shutdown()
            server.server_close()


def _head(stream):
    data = b""
    while b"\r\n\r\n" not in data:
        piece = stream.recv(4096)
        if not piece:
            break
        data += piece
    return data.decode("latin-1")


def _pump(source, target):
    try:
        while piece := source.recv(65536):
            target.sendall(piece)
        target.shutdown(socket.SHUT_WR)
    except OSError:
        pass
