#!/usr/bin/env python3
"""A time-stamping authority for tests, on 127.0.0.1 only: OpenSSL's `ts -reply` answers each POSTed
RFC 3161 request, two seconds after it arrives (so that a token's time differs from the signing's).
Prints the port it listens on and its process id, then serves until killed; logs each token's text to LOG.
Usage: tsa_server.py CONFIG LOG"""
import http.server
import os
import subprocess
import sys
import tempfile
import time

config, log = sys.argv[1], sys.argv[2]


class Authority(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        query = self.rfile.read(int(self.headers.get('Content-Length', 0)))
        time.sleep(2)
        with tempfile.NamedTemporaryFile() as request, tempfile.NamedTemporaryFile() as reply:
            request.write(query)
            request.flush()
            made = subprocess.run(['openssl', 'ts', '-reply', '-config', config, '-queryfile', request.name,
                                   '-out', reply.name], capture_output=True)
            answer = reply.read() if made.returncode == 0 else b''
            text = subprocess.run(['openssl', 'ts', '-reply', '-in', reply.name, '-text'], capture_output=True)
            with open(log, 'ab') as out:
                out.write(text.stdout)
        self.send_response(200 if answer else 500)
        self.send_header('Content-Type', 'application/timestamp-reply')
        self.send_header('Content-Length', str(len(answer)))
        self.end_headers()
        self.wfile.write(answer)

    def log_message(self, *args):
        pass


server = http.server.HTTPServer(('127.0.0.1', 0), Authority)
print(server.server_address[1], os.getpid(), flush=True)
server.serve_forever()
