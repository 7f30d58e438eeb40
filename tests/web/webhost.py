"""Starts `ircontrol-host web` for a test on a loopback port the OS picks, and talks to it.

The binary, the plugin and an optional emulator prefix (qemu-arm for a cross build) come from the
environment that ctest sets: IRC_HOST, IRC_PLUGIN, IRC_TARGET_RUNNER (space-separated, may be empty).
"""
import http.client
import json
import os
import re
import shlex
import signal
import subprocess
import sys
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import hostprocess  # noqa: E402

START_TIMEOUT = 60  # seconds; generous for emulated or loaded machines


class WebHost:
    def __init__(self, *options):
        command = shlex.split(os.environ.get("IRC_TARGET_RUNNER", ""))
        command += [os.environ["IRC_HOST"], "--plugin", os.environ["IRC_PLUGIN"]]
        command += list(options) + ["web", "--listen", "127.0.0.1:0"]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.lines = []
        found = threading.Event()
        self.url = None

        def read():
            for line in self.process.stdout:
                self.lines.append(line)
                match = re.search(r"serving (http://[^ ]+/)", line)
                if match and not found.is_set():
                    self.url = match.group(1)
                    found.set()
            found.set()

        self.reader = threading.Thread(target=read, daemon=True)
        self.reader.start()
        if not found.wait(START_TIMEOUT) or self.url is None:
            self.process.kill()
            raise RuntimeError("ircontrol-host web did not start: " + self.process.stderr.read())
        self.host, port = self.url[len("http://"):-1].rsplit(":", 1)
        self.port = int(port)

    def request(self, method, path, body=None, headers=None, timeout=30):
        """(status, headers, parsed JSON or raw text) of one request on a fresh connection."""
        connection = http.client.HTTPConnection(self.host, self.port, timeout=timeout)
        try:
            all_headers = {}
            if body is not None and not isinstance(body, (bytes, str)):
                body = json.dumps(body)
                all_headers["Content-Type"] = "application/json"
            all_headers.update(headers or {})
            connection.request(method, path, body=body, headers=all_headers)
            response = connection.getresponse()
            raw = response.read()
            try:
                data = json.loads(raw)
            except ValueError:
                data = raw
            return response.status, dict(response.getheaders()), data
        finally:
            connection.close()

    def stop(self, sig=signal.SIGINT, timeout=30):
        """Sends the signal and returns (exit status, stdout text, stderr text)."""
        if self.process.stderr.closed:
            return self.process.returncode, "".join(self.lines), ""
        hostprocess.stop(self.process, sig, timeout)
        self.reader.join(5)
        err = self.process.stderr.read()
        self.process.stdout.close()
        self.process.stderr.close()
        return self.process.returncode, "".join(self.lines), err

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.stop()


def wait_until(predicate, timeout=20, step=0.05):
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        if predicate():
            return True
        time.sleep(step)
    return predicate()
