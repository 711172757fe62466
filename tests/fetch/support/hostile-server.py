"""Serves a folder over HTTP/1.1 on this machine, well or in every way that breaks a rule. For tests
and benchmarks only.

usage: hostile-server.py FOLDER FAULTS REQUESTS DELAY_MS [CERTIFICATE_AND_KEY]

Listens on port 80 of 127.0.0.1 and, with a certificate, on port 443; one line on standard output
tells that it does. Connections are kept, and served at the same time. DELAY_MS passes before a
connection's first answer and before every answer, as on a link with that round trip.

FAULTS is read anew for every request: a JSON list [path, fault, argument, times] a line, of which
the first counts that fits and has not struck so many times. REQUESTS gets a line for every request:
connection number, blank, path. What each fault does stands beside its name below.
"""

import gzip
import http.server
import json
import os
import socket
import ssl
import struct
import sys
import threading
import time
import urllib.parse

FOLDER, FAULTS, REQUESTS = sys.argv[1:4]
DELAY = float(sys.argv[4]) / 1000
BLOCK = b"x" * 65536
LOCK = threading.Lock()
BARRIERS = {}
struck = {}
connections = 0
CONNECTION = threading.local()  # each has a thread of its own


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True
    wbufsize = 1 << 20  # an answer leaves in one piece

    def setup(self):
        super().setup()
        time.sleep(DELAY)

    def do_GET(self):
        path = urllib.parse.unquote(self.path)
        with LOCK:
            with open(REQUESTS, "a", encoding="utf-8", errors="surrogateescape") as requests:
                requests.write(f"{CONNECTION.number} {self.path}\n")
            fault, argument = self.fault(path)
        time.sleep(DELAY)
        try:
            if "Authorization" in self.headers:
                self.status(path, "400")  # nobody is to be told a user's name and password
            elif fault:
                getattr(self, fault)(path, argument)
            else:
                self.good(path)
            self.wfile.flush()
        except OSError:
            self.close_connection = True

    def fault(self, path):
        with open(FAULTS, encoding="utf-8") as faults:
            for line in faults:
                faulty, fault, argument, times = json.loads(line)
                if faulty == path and struck.get(line, 0) < times:
                    struck[line] = struck.get(line, 0) + 1
                    return fault, argument
        return "", ""

    def body(self, path):
        with open(FOLDER + path, "rb") as file:
            return file.read()

    def head(self, status, *headers):
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.end_headers()

    def hang_up(self):
        self.wfile.flush()
        self.close_connection = True

    def good(self, path):
        if not os.path.isfile(FOLDER + path):
            return self.status(path, "404")
        body = self.body(path)
        self.head(200, ("Content-Length", len(body)))
        self.wfile.write(body)

    def await_connections(self, path, argument):  # the file, once so many have ever been opened
        end = time.monotonic() + 10
        while connections < int(argument) and time.monotonic() < end:
            time.sleep(0.01)
        if connections < int(argument):
            return self.status(path, "404")
        self.good(path)

    def together(self, path, argument):  # the file, once so many of these are asked for at a time
        with LOCK:
            barrier = BARRIERS.setdefault(argument, threading.Barrier(int(argument)))
        try:
            barrier.wait(10)
        except threading.BrokenBarrierError:
            return self.status(path, "404")
        self.good(path)

    def status(self, path, argument):  # that status, with a page
        self.head(int(argument), ("Content-Length", 5))
        self.wfile.write(b"sorry")

    def endless_page(self, path, argument):  # that status, with a page in chunks without an end
        self.head(int(argument), ("Transfer-Encoding", "chunked"))
        self.blocks_in_chunks()

    def blocks_in_chunks(self):
        while True:
            self.wfile.write(b"%x\r\n%s\r\n" % (len(BLOCK), BLOCK))

    def redirect(self, path, argument):  # to that address
        self.head(302, ("Location", argument), ("Content-Length", 0))

    def redirect_endless(self, path, argument):  # the same, with a page in chunks without an end
        self.head(302, ("Location", argument), ("Transfer-Encoding", "chunked"))
        self.blocks_in_chunks()

    def redirect_long(self, path, argument):  # the same, with a page of the length announced
        self.head(302, ("Location", argument), ("Content-Length", 100 * len(BLOCK)))
        self.wfile.write(100 * BLOCK)

    def empty(self, path, argument):
        self.head(200, ("Content-Length", 0))

    def cut(self, path, argument):  # half of the body, then the connection closes
        body = self.body(path)
        self.head(200, ("Content-Length", len(body)))
        self.wfile.write(body[: len(body) // 2])
        self.hang_up()

    def reset(self, path, argument):  # half of the body, then the connection breaks
        body = self.body(path)
        self.head(200, ("Content-Length", len(body)))
        self.wfile.write(body[: len(body) // 2])
        self.wfile.flush()
        self.close_connection = True
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        os.close(self.connection.detach())  # without the farewell that comes before it elsewhere

    def hang_up_at_once(self, path, argument):  # no answer
        self.hang_up()

    def stall(self, path, argument):  # half of the body, then nothing more
        body = self.body(path)
        self.head(200, ("Content-Length", len(body)))
        self.wfile.write(body[: len(body) // 2])
        self.wfile.flush()
        time.sleep(600)

    def silent(self, path, argument):  # no answer, and no end of the connection
        time.sleep(600)

    def drip(self, path, argument):  # a byte now and then, so that it never stands still
        self.head(200, ("Content-Length", 1000000))
        while True:
            self.wfile.write(b"x")
            self.wfile.flush()
            time.sleep(0.2)

    def announces_more(self, path, argument):  # than there is, and stays connected
        body = self.body(path)
        self.head(200, ("Content-Length", len(body) + 10))
        self.wfile.write(body)
        self.wfile.flush()
        time.sleep(600)

    def announces_less(self, path, argument):  # than it sends
        body = self.body(path)
        self.head(200, ("Content-Length", len(body) - 3))
        self.wfile.write(body)

    def announces_less_late(self, path, argument):  # the same, what is too much a little later
        body = self.body(path)
        self.head(200, ("Content-Length", len(body) - 3))
        self.wfile.write(body[:-3])
        self.wfile.flush()
        time.sleep(0.1)
        self.wfile.write(body[-3:])

    def encoded(self, path, argument):  # the file, said to have that Content-Encoding
        body = self.body(path)
        self.head(200, ("Content-Encoding", argument), ("Content-Length", len(body)))
        self.wfile.write(body)

    def announces_too_much(self, path, argument):  # a length beyond every limit
        self.head(200, ("Content-Length", 1 << 50))
        self.wfile.write(BLOCK)

    def endless(self, path, argument):  # a body in chunks without an end
        self.endless_page(path, "200")

    def chunked(self, path, argument):  # the file, in chunks
        self.head(200, ("Transfer-Encoding", "chunked"))
        for byte in self.body(path):
            self.wfile.write(b"1\r\n%c\r\n" % byte)
        self.wfile.write(b"0\r\n\r\n")

    def chunked_cut(self, path, argument):  # a first chunk, then the connection closes
        self.head(200, ("Transfer-Encoding", "chunked"))
        self.wfile.write(b"3\r\nabc\r\n")
        self.hang_up()

    def no_length(self, path, argument):  # the body ends with the connection
        self.head(200, ("Connection", "close"))
        self.wfile.write(self.body(path))
        self.hang_up()

    def says(self, path, argument):  # those headers, with "|" between, and the file
        self.head(200, *(line.split(": ") for line in argument.split("|")))
        body = self.body(path)
        if "chunked" in argument:
            body = b"%x\r\n%s\r\n0\r\n\r\n" % (len(body), body)
        self.wfile.write(body)

    def gzip_bomb(self, path, argument):  # a hundred million bytes in a hundred thousand
        bomb = gzip.compress(bytes(100000000), 1)
        self.head(200, (argument, "gzip"), ("Content-Length", len(bomb)))
        self.wfile.write(bomb)

    def endless_head(self, path, argument):
        self.wfile.write(b"HTTP/1.1 200 OK\r\n")
        while True:
            self.wfile.write(b"X-More: " + b"x" * 1000 + b"\r\n")

    def endless_line(self, path, argument):
        self.wfile.write(b"HTTP/1.1 200 OK\r\nX-More: ")
        while True:
            self.wfile.write(BLOCK)

    def other_protocol(self, path, argument):
        self.wfile.write(b"220 ftp ready\r\n")
        self.hang_up()

    def log_message(self, *arguments):
        pass


class Server(http.server.ThreadingHTTPServer):
    request_queue_size = 256

    def finish_request(self, request, client_address):
        global connections
        with LOCK:
            connections += 1
            CONNECTION.number = connections
        super().finish_request(self.secured(request), client_address)

    def secured(self, request):
        return request

    def handle_error(self, request, client_address):
        pass  # clients hang up, as they may


class TlsServer(Server):
    def secured(self, request):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(sys.argv[5])
        return context.wrap_socket(request, server_side=True)


servers = [Server(("127.0.0.1", 80), Handler)]
if len(sys.argv) > 5:
    servers.append(TlsServer(("127.0.0.1", 443), Handler))
for server in servers[1:]:
    threading.Thread(target=server.serve_forever, daemon=True).start()
os.write(1, b"listening\n")
servers[0].serve_forever()
