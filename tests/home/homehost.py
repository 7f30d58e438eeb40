"""A mosquitto broker and `ircontrol-host service` started for a test, and an MQTT client.

The broker is Debian's mosquitto on a loopback port the test picks, always native. The host tool,
its plugin and an optional emulator prefix (qemu-arm in a cross build) come from the environment
ctest sets: IRC_HOST, IRC_PLUGIN, IRC_TARGET_RUNNER (blank-separated, may be empty).
"""
import json
import os
import queue
import re
import shlex
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.error
import urllib.request

import paho.mqtt.client as mqtt

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import hostprocess  # noqa: E402

START_TIMEOUT = 60  # seconds; generous for emulated or loaded machines
MOSQUITTO = "/usr/sbin/mosquitto"


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


class Broker:
    def __init__(self, directory):
        self.port = free_port()
        self.config = os.path.join(directory, "mosquitto.conf")
        with open(self.config, "w") as f:
            f.write(f"listener {self.port} 127.0.0.1\nallow_anonymous true\npersistence false\n"
                    "max_queued_messages 10000\n")
        self.process = None
        self.start()

    def start(self):
        self.process = subprocess.Popen([MOSQUITTO, "-c", self.config], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        deadline = time.time() + START_TIMEOUT
        while time.time() < deadline:
            try:
                socket.create_connection(("127.0.0.1", self.port), 1).close()
                return
            except OSError:
                time.sleep(0.05)
        raise RuntimeError("mosquitto did not start")

    def stop(self):
        if self.process and self.process.poll() is None:
            self.process.kill()
            self.process.wait()


class Service:
    """ircontrol-host --config FILE service, transmitting to a mode2: dry-run file."""

    def __init__(self, directory, broker, extra_config="", args=(), options=()):
        self.directory = directory
        self.mode2 = os.path.join(directory, "ir.mode2")
        self.config = os.path.join(directory, "home.conf")
        self.state = os.path.join(directory, "state")
        with open(self.config, "w") as f:
            f.write(f"[ir]\ntransmitter=mode2:{self.mode2}\n[web]\nlisten=127.0.0.1:0\n"
                    f"[mqtt]\nbroker=mqtt://127.0.0.1:{broker.port}\nclient-id=irtest\n"
                    f"[state]\ndirectory={self.state}\n{extra_config}")
        command = shlex.split(os.environ.get("IRC_TARGET_RUNNER", ""))
        command += [os.environ["IRC_HOST"], "--plugin", os.environ["IRC_PLUGIN"], "--config", self.config]
        command += list(options) + ["service"] + list(args)
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.lines, self.errors = [], []
        found = threading.Event()
        self.url = None

        def read(stream, into):
            for line in stream:
                into.append(line)
                match = re.search(r"serving (http://[^ ]+/)", line)
                if match:
                    self.url = match.group(1)
                    found.set()
            found.set()

        self.readers = [threading.Thread(target=read, args=(self.process.stdout, self.lines), daemon=True),
                        threading.Thread(target=read, args=(self.process.stderr, self.errors), daemon=True)]
        for reader in self.readers:
            reader.start()
        if not found.wait(START_TIMEOUT) or self.url is None:
            self.stop(signal.SIGKILL)
            raise RuntimeError("the service did not start: " + "".join(self.errors))

    def stop(self, sig=signal.SIGTERM, timeout=30):
        hostprocess.stop(self.process, sig, timeout)
        for reader in self.readers:
            reader.join(5)
        self.process.stdout.close()
        self.process.stderr.close()
        return self.process.returncode

    def wait_log(self, text, timeout=30):
        """True once a line of the service's log holds `text`."""
        deadline = time.time() + timeout
        while time.time() < deadline:
            if any(text in line for line in self.errors):
                return True
            time.sleep(0.05)
        return False

    def api(self, method, path, body=None):
        """(status, parsed JSON) of one web API request."""
        request = urllib.request.Request(self.url + path, method=method, data=None if body is None else
                                         json.dumps(body).encode(), headers={"Content-Type": "application/json"})
        try:
            with urllib.request.urlopen(request, timeout=30) as response:
                return response.status, json.loads(response.read())
        except urllib.error.HTTPError as error:
            return error.code, json.loads(error.read())

    def transmissions(self):
        """The header lines of what went on air, in order."""
        if not os.path.exists(self.mode2):
            return []
        with open(self.mode2) as f:
            return [line for line in f if line.startswith("# transmission")]


class Client:
    """A paho-mqtt client collecting every message of the patterns it subscribes to."""

    def __init__(self, broker, *patterns):
        self.messages = queue.Queue()
        self.connected = threading.Event()
        self.client = mqtt.Client(client_id="", clean_session=True)
        self.client.max_queued_messages_set(0)
        self.patterns = patterns

        def on_connect(client, userdata, flags, rc):
            for pattern in self.patterns:
                client.subscribe(pattern, qos=1)
            self.connected.set()

        self.client.on_connect = on_connect
        self.client.on_message = lambda c, u, m: self.messages.put((m.topic, m.payload, m.retain))
        self.client.connect("127.0.0.1", broker.port)
        self.client.loop_start()
        if not self.connected.wait(START_TIMEOUT):
            raise RuntimeError("the test client did not connect")
        time.sleep(0.2)  # let the subscriptions settle

    def publish(self, topic, payload):
        return self.client.publish(topic, payload, qos=1)

    def next(self, predicate=lambda topic, payload: True, timeout=30):
        """The first message (topic, payload bytes) that satisfies the predicate."""
        deadline = time.time() + timeout
        while True:
            remaining = deadline - time.time()
            if remaining <= 0:
                raise AssertionError("no such message within %s s" % timeout)
            try:
                topic, payload, _ = self.messages.get(timeout=remaining)
            except queue.Empty:
                continue
            if predicate(topic, payload):
                return topic, payload

    def result(self, topic, timeout=30):
        """The next result published about a command on `topic`, parsed."""
        _, payload = self.next(lambda t, p: t.endswith("/result") and json.loads(p).get("topic") == topic, timeout)
        return json.loads(payload)

    def close(self):
        self.client.loop_stop()
        self.client.disconnect()


def retained(broker, prefix, settle=1.0, expect=None, timeout=30):
    """Every retained message under `prefix` the broker holds: {topic: payload bytes}. With
    `expect`, looks again until that many are there (the service may still be publishing)."""
    deadline = time.time() + timeout
    while True:
        probe = Client(broker, prefix + "#")
        found = {}
        end = time.time() + settle
        while time.time() < end:
            try:
                topic, payload, retain = probe.messages.get(timeout=0.1)
                if retain:
                    found[topic] = payload
            except queue.Empty:
                pass
        probe.close()
        if expect is None or len(found) == expect or time.time() > deadline:
            return found


def temp_dir():
    return tempfile.TemporaryDirectory(prefix="irc-home-")
