"""Servers other than the hub, for tests of ports that are in use."""

import socket
import threading
from contextlib import contextmanager
from http.server import BaseHTTPRequestHandler, HTTPServer


@contextmanager
def answering_server(port, status=200, shared=False):
    """An HTTP server that answers every request with that status; yields the paths asked for.

    `shared`: other programs may listen on the port too (SO_REUSEPORT).
    """
    paths = []

    class Answer(BaseHTTPRequestHandler):
        def do_GET(self):
            paths.append(self.path)
            self.send_response(status)
            self.end_headers()

        def log_message(self, *_):
            pass

    class Server(HTTPServer):
        allow_reuse_port = shared

    server = Server(("127.0.0.1", port), Answer)
    thread = threading.Thread(target=server.serve_forever, kwargs={"poll_interval": 0.01})
    thread.start()
    try:
        yield paths
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


@contextmanager
def silent_server(port):
    """A server that accepts connections and sends nothing."""
    with socket.create_server(("", port)):
        yield


@contextmanager
def datagram_port(port):
    """A socket that occupies a UDP port."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as holder:
        holder.bind(("", port))
        yield
