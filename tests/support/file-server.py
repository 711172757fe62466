"""Serves a folder over plain HTTP on this machine's port 80, with faults on demand. For tests only.

usage: file-server.py FOLDER FAULTS REQUESTS

FAULTS is read anew for every request: a fault, a blank and a path a line. REQUESTS gets the path of
every request as a line of its own, before the answer begins. One line on standard output tells that
the server listens.
"""

import http.server
import os
import sys
import time
import urllib.parse

FOLDER, FAULTS, REQUESTS = sys.argv[1:4]
STALL_SECONDS = 1
MOVED = "/moved"


class Handler(http.server.SimpleHTTPRequestHandler):
    seen = {}

    def __init__(self, *arguments):
        super().__init__(*arguments, directory=FOLDER)

    def do_GET(self):
        path = urllib.parse.unquote(self.path)
        with open(REQUESTS, "a", encoding="utf-8") as requests:
            requests.write(path + "\n")
        Handler.seen[path] = Handler.seen.get(path, 0) + 1
        fault, _, when = self.fault(path).partition("-")
        if when and (when == "once") != (Handler.seen[path] == 1):
            fault = ""
        if fault == "missing":
            self.send_error(404)
        elif fault == "redirect":
            self.answer(302, b"", [("Location", MOVED + self.path)])
        elif fault == "empty":
            self.answer(200, b"")
        elif fault in ("cut", "stall"):
            self.in_two_halves(goes_on=fault == "stall")
        elif path.startswith(MOVED):
            self.path = self.path[len(MOVED) :]
            super().do_GET()
        else:
            super().do_GET()

    def fault(self, path):
        with open(FAULTS, encoding="utf-8") as faults:
            for line in faults:
                name, _, faulty = line.rstrip("\n").partition(" ")
                if faulty == path:
                    return name
        return ""

    def answer(self, status, body, headers=()):
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def in_two_halves(self, goes_on):
        with open(self.translate_path(self.path), "rb") as file:
            body = file.read()
        half = len(body) // 2
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body[:half])
        self.wfile.flush()
        if goes_on:
            time.sleep(STALL_SECONDS)
            self.wfile.write(body[half:])

    def log_message(self, *arguments):
        pass


server = http.server.HTTPServer(("127.0.0.1", 80), Handler)
os.write(1, b"listening\n")
server.serve_forever()
