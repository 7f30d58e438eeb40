"""The web remote's HTTP API, against the real ircontrol-host web with the plugin loaded."""
import http.client
import json
import os
import re
import shlex
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest

from webhost import WebHost, wait_until

FAN_OK = {"type": "fan", "key": 10}


def read_events(host, until, timeout=30):
    """Reads the event stream until `until(event)` is true; returns every event read."""
    connection = http.client.HTTPConnection(host.host, host.port, timeout=timeout)
    connection.request("GET", "/api/events")
    response = connection.getresponse()
    assert response.status == 200, response.status
    assert response.getheader("Content-Type").startswith("text/event-stream")
    events = []
    deadline = time.monotonic() + timeout  # the stream's heartbeats would keep a read alive forever
    try:
        while time.monotonic() < deadline:
            line = response.fp.readline()
            if not line:
                break
            if line.startswith(b"data: "):
                event = json.loads(line[6:])
                events.append(event)
                if until(event):
                    break
    finally:
        connection.close()
    return events


class ApiTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.host = WebHost("--timeout", "500")

    @classmethod
    def tearDownClass(cls):
        status, out, err = cls.host.stop()
        assert status == 0, (status, out, err)

    def post(self, path, body, **headers):
        return self.host.request("POST", path, body, headers)

    def test_every_status_has_a_json_error(self):
        authority = f"{self.host.host}:{self.host.port}"
        big = b'{"value":"' + b"x" * (1024 * 1024) + b'"}'
        cases = [
            # name, method, path, body, headers, status
            ("fine", "POST", "/api/key", json.dumps(FAN_OK), {"Content-Type": "application/json"}, 200),
            ("same origin", "POST", "/api/key", json.dumps(FAN_OK),
             {"Content-Type": "application/json", "Origin": "http://" + authority}, 200),
            ("localhost alias", "GET", "/api/devices", None, {"Host": f"localhost:{self.host.port}"}, 200),
            ("queued", "POST", "/api/requests?wait=false", '{"value":"{}"}', {"Content-Type": "application/json"}, 202),
            ("malformed", "POST", "/api/requests", '{"value":', {"Content-Type": "application/json"}, 400),
            ("not an object", "POST", "/api/key", '"fan"', {"Content-Type": "application/json"}, 400),
            ("no value", "POST", "/api/requests", '{"name":"setKeyEvent"}', {"Content-Type": "application/json"}, 400),
            ("bad kind", "POST", "/api/requests", '{"value":"x","kind":"int"}', {"Content-Type": "application/json"}, 400),
            ("unknown type", "POST", "/api/key", '{"type":"toaster","key":1}', {"Content-Type": "application/json"}, 400),
            ("empty list", "POST", "/api/requests", "[]", {"Content-Type": "application/json"}, 400),
            ("no such api", "GET", "/api/nothing", None, {}, 404),
            ("no such page", "GET", "/secret.txt", None, {}, 404),
            ("wrong method", "DELETE", "/api/requests", None, {}, 405),
            ("wrong method on page", "POST", "/", "{}", {"Content-Type": "application/json"}, 405),
            ("wrong method on stream", "POST", "/api/events", "{}", {"Content-Type": "text/plain"}, 405),
            ("too large", "POST", "/api/requests", big, {"Content-Type": "application/json"}, 413),
            ("not json", "POST", "/api/key", json.dumps(FAN_OK), {"Content-Type": "text/plain"}, 415),
            ("no content type", "PUT", "/api/devices", "{}", {}, 415),
            ("other host", "GET", "/api/devices", None, {"Host": f"evil.example:{self.host.port}"}, 403),
            ("other port", "GET", "/api/devices", None, {"Host": f"127.0.0.1:{self.host.port + 1}"}, 403),
            ("other origin", "POST", "/api/key", json.dumps(FAN_OK),
             {"Content-Type": "application/json", "Origin": "http://evil.example"}, 403),
            ("https origin", "GET", "/api/devices", None, {"Origin": "https://" + authority}, 403),
        ]
        for name, method, path, body, headers, status in cases:
            with self.subTest(name):
                got, reply_headers, data = self.host.request(method, path, body, headers)
                self.assertEqual(got, status, data)
                self.assertIsInstance(data, dict)
                if status >= 400:
                    self.assertEqual(data["status"], status)
                    self.assertTrue(data["error"])
                if status == 405:
                    self.assertTrue(reply_headers.get("Allow"))

    def test_key_returns_answer_transmission_and_log(self):
        status, _, result = self.post("/api/key", {"type": "fan", "key": 12, "id": "mine"})
        self.assertEqual(status, 200)
        self.assertEqual(result["clientId"], "mine")
        self.assertIsInstance(result["id"], int)
        self.assertEqual(result["answer"]["errorCode"], "ok")
        self.assertEqual(result["outcome"], "ok")
        self.assertEqual([(t["deviceIndex"], t["key"], t["text"]) for t in result["ir"]], [(1, 12, "hdevice #1 key 12")])
        self.assertLessEqual(result["ir"][0]["onAirStartUs"], result["ir"][0]["onAirEndUs"])
        self.assertLessEqual(result["ir"][0]["onAirEndUs"], result["elapsedUs"])
        self.assertTrue(any("key to be IRBlasted : 12" in line["text"] for line in result["log"]))

    def test_refusals_say_why(self):
        cases = [
            ("/api/key", {"type": "cleaner", "key": 11}, "refused", "unsupported key"),
            ("/api/ac", {"mode": "cool"}, "refused", "invalid mode state"),
            ("/api/requests", {"value": '{"x.com.korvan.deviceType":"oic.d.fan","x.com.korvan.codesetName":"NONE",'
                                        '"x.com.korvan.codesetKey":10}'}, "refused", "d2d_device_index"),
            ("/api/requests", {"value": "{}"}, "unanswered", "deviceType"),
            ("/api/requests", {"name": "setNothing", "value": "{}"}, "unanswered", "setNothing"),
        ]
        for path, body, outcome, why in cases:
            with self.subTest(path=path, body=body):
                status, _, result = self.post(path, body)
                self.assertEqual(status, 200, result)
                self.assertEqual(result["outcome"], outcome)
                self.assertIn(why, result["reason"])
                self.assertEqual(result["ir"], [])
                self.assertEqual(result["answer"] is None, outcome == "unanswered")

    def test_ac_state_reaches_the_blaster_translated(self):
        status, _, result = self.post("/api/ac", {"power": "ON", "mode": "HEAT", "setpoint": 22, "fan": "LOW"})
        self.assertEqual(status, 200)
        tx = result["ir"]
        self.assertEqual([(t["mode"], t["power"], t["coolingSetpoint"], t["fanSpeed"]) for t in tx],
                         [("heat", "on", "22", "low")])

    def test_property_list_is_sent_as_one_request(self):
        # The service answers each property; the result holds the first answer, that of the key.
        body = {"properties": [
            {"name": "setKeyEvent", "value": {"x.com.korvan.deviceType": "oic.d.fan",
                                              "x.com.korvan.codesetName": "HFAN0001", "x.com.korvan.codesetKey": 13}},
            {"name": "setDeviceEvent", "value": "{}"},
        ]}
        status, _, result = self.post("/api/requests", body)
        self.assertEqual(status, 200, result)
        self.assertEqual(result["property"], "setKeyEvent,setDeviceEvent")
        self.assertEqual(result["outcome"], "ok")
        # Both properties of the one request reached the plugin.
        self.assertEqual([t["key"] for t in result["ir"]], [13])
        self.assertTrue(any("setDeviceEvent" in line["text"] for line in result["log"]))

    def test_hostile_bodies_are_refused_and_the_server_keeps_serving(self):
        deep = "[" * 100000 + "]" * 100000
        cases = [
            ("deep nesting", deep.encode(), 400),
            ("deep nesting in an object", ('{"value":' + "{\"a\":" * 5000 + "1" + "}" * 5000 + "}").encode(), 400),
            ("invalid UTF-8", b'{"value":"\xff\xfe\xc3"}', 400),
            ("NUL bytes", b'{"value":"a\x00b"}', 400),
            ("8 MB", b"[" + b"0," * (4 * 1024 * 1024) + b"0]", 413),
        ]
        for name, body, status in cases:
            with self.subTest(name):
                got, _, data = self.host.request("POST", "/api/requests", body, {"Content-Type": "application/json"})
                self.assertEqual(got, status, data)
                self.assertEqual(self.post("/api/key", FAN_OK)[0], 200)

    def test_chunked_8mb_body_is_refused(self):
        connection = http.client.HTTPConnection(self.host.host, self.host.port, timeout=60)
        chunks = (b"x" * 65536 for _ in range(128))
        connection.request("POST", "/api/requests", body=chunks,
                           headers={"Content-Type": "application/json", "Transfer-Encoding": "chunked"},
                           encode_chunked=True)
        self.assertEqual(connection.getresponse().status, 413)
        connection.close()
        self.assertEqual(self.post("/api/key", FAN_OK)[0], 200)

    def test_deeply_nested_payload_text_reaches_the_plugin_without_harm(self):
        status, _, result = self.post("/api/requests", {"value": "[" * 500000})
        self.assertEqual(status, 200)
        self.assertEqual(result["payloadText"], "[" * 500000)
        self.assertEqual(self.post("/api/key", FAN_OK)[0], 200)

    def test_client_gone_before_the_answer_does_not_stop_the_server(self):
        for _ in range(5):
            with socket.create_connection((self.host.host, self.host.port)) as raw:
                body = b'{"value":"{}"}'
                raw.sendall(b"POST /api/requests HTTP/1.1\r\nHost: " + f"{self.host.host}:{self.host.port}".encode() +
                            b"\r\nContent-Type: application/json\r\nContent-Length: " + str(len(body)).encode() +
                            b"\r\n\r\n" + body)
        self.assertEqual(self.post("/api/key", FAN_OK)[0], 200)

    def test_garbage_on_the_socket_is_answered_or_dropped(self):
        for garbage in [b"\x00\xff" * 100 + b"\r\n\r\n", b"GET / HTTP/9.9\r\n\r\n", b"POST /api/key HTTP/1.1\r\n" * 50]:
            with socket.create_connection((self.host.host, self.host.port), timeout=10) as raw:
                raw.sendall(garbage)
                raw.shutdown(socket.SHUT_WR)
                try:
                    raw.recv(4096)
                except OSError:
                    pass
        self.assertEqual(self.post("/api/key", FAN_OK)[0], 200)

    def test_pairing_list_edits_are_validated_like_the_devices_option(self):
        status, _, before = self.host.request("GET", "/api/devices")
        self.assertEqual(status, 200)
        fan = next(d for d in before["devices"] if d["kind"] == "fan")
        self.assertEqual(fan["allowed"], [10, 11, 12, 13, 14, 76])
        self.assertEqual({k["name"]: k["code"] for k in fan["keys"]}["power"], 10)
        bad = [
            ("not JSON", "{", "the pairing list is not valid JSON"),
            ("no list", '{"devices":[]}', 'the pairing list must be a JSON object with a "dev_info" array'),
            ("no index", '{"dev_info":[{"codeset":"A"}]}', 'dev_info[0] needs a string "codeset" and an integer'),
        ]
        for name, text, error in bad:
            with self.subTest(name):
                status, _, data = self.host.request("PUT", "/api/devices", text, {"Content-Type": "application/json"})
                if name == "not JSON":
                    self.assertEqual(status, 400)
                else:
                    self.assertEqual(status, 400, data)
                    self.assertIn(error, data["error"])
        self.assertEqual(self.host.request("GET", "/api/devices")[2], before)
        # A new list reaches the plugin: the fan moves to transmitter 9.
        moved = {"dev_info": [{"codeset": "HFAN0001", "device_index": 9, "type": "oic.d.fan"}]}
        try:
            status, _, after = self.host.request("PUT", "/api/devices", moved)
            self.assertEqual(status, 200, after)
            self.assertEqual([d["device_index"] for d in after["devices"]], [9])
            self.assertEqual(self.post("/api/key", FAN_OK)[2]["ir"][0]["deviceIndex"], 9)
            self.assertEqual(self.post("/api/key", {"type": "cleaner", "key": 10})[0], 400)  # no paired cleaner
        finally:
            self.host.request("PUT", "/api/devices", before["pairing"])

    def test_queued_request_is_answered_on_the_event_stream(self):
        status, _, accepted = self.post("/api/requests?wait=false", {"value": json.dumps(
            {"x.com.korvan.deviceType": "oic.d.robotcleaner", "x.com.korvan.codesetName": "HRBC0004",
             "x.com.korvan.codesetKey": 39})})
        self.assertEqual(status, 202)
        wanted = accepted["id"]
        events = read_events(self.host, lambda e: e["type"] == "answer" and e["id"] == wanted)
        mine = [e["type"] for e in events if e.get("id") == wanted]
        self.assertEqual(mine[0], "request")
        self.assertIn("log", mine)
        self.assertLess(mine.index("transmission"), mine.index("answer"))
        self.assertEqual(events[-1]["answer"]["errorCode"], "ok")

    def test_200_concurrent_clients_are_all_answered(self):
        results = [None] * 200
        barrier = threading.Barrier(len(results))

        def client(i):
            try:
                barrier.wait(30)
                kind = ["fan", "purifier", "humidifier", "cleaner"][i % 4]
                status, _, data = self.host.request("POST", "/api/key", {"type": kind, "key": 10}, timeout=120)
                results[i] = (status, data["answer"]["errorCode"] if status == 200 else data)
            except Exception as error:  # reported below, per client
                results[i] = ("failed", repr(error))

        start = time.monotonic()
        threads = [threading.Thread(target=client, args=(i,)) for i in range(len(results))]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(180)
        elapsed = time.monotonic() - start
        self.assertEqual([r for r in results if r != (200, "ok")], [])
        self.assertLess(elapsed, 180)
        self.assertEqual(self.post("/api/key", FAN_OK)[0], 200)


class LateAnswerTest(unittest.TestCase):
    def test_an_answer_after_the_timeout_is_published_late(self):
        with WebHost("--ir-delay", "700", "--timeout", "200") as host:
            status, _, result = host.request("POST", "/api/key", FAN_OK)
            self.assertEqual(status, 200)
            self.assertEqual(result["outcome"], "no answer")
            wanted = result["id"]
            events = read_events(host, lambda e: e["type"] == "answer" and e["id"] == wanted and e.get("late"))
            late = events[-1]
            self.assertTrue(late.get("late"), events[-3:])
            self.assertEqual(late["answer"]["errorCode"], "ok")
            self.assertTrue(late["answer"]["late"])
            self.assertEqual(late["outcome"], "ok")
            self.assertEqual(len(late["ir"]), 1)


def host_run(*args, timeout=60):
    """Runs the host tool to its end (a server that starts anyway fails by the timeout)."""
    command = shlex.split(os.environ.get("IRC_TARGET_RUNNER", ""))
    command += [os.environ["IRC_HOST"], "--plugin", os.environ["IRC_PLUGIN"], *args]
    return subprocess.run(command, capture_output=True, text=True, timeout=timeout)


def dry_run_transmissions(path):
    """(header line, [pulse, space, ..., pulse]) per transmission written to a mode2 dry-run file,
    without the silence written before and after each."""
    blocks = []
    with open(path) as file:
        for line in file.read().splitlines():
            if line.startswith("# transmission "):
                blocks.append((line, []))
            else:
                kind, value = line.split()
                blocks[-1][1].append((kind, int(value)))
    found = []
    for header, lines in blocks:
        kinds = [kind for kind, _ in lines]
        middle = len(kinds) - 2
        assert kinds == ["space"] + ["pulse", "space"] * (middle // 2) + ["pulse", "space"], (header, kinds)
        found.append((header, [value for _, value in lines[1:-1]]))
    return found


class IrDeviceTest(unittest.TestCase):
    def test_what_goes_on_air_is_in_the_result_and_the_event_stream(self):
        sends = [
            ("/api/key", FAN_OK, "codeset HFAN0001"),
            ("/api/ac", {"power": "ON", "mode": "HEAT", "setpoint": 22, "fan": "LOW"}, "codeset ZAC00005"),
        ]
        with tempfile.TemporaryDirectory() as folder:
            dry_run = os.path.join(folder, "ir.mode2")
            with WebHost("--ir-device", "mode2:" + dry_run) as host:
                results = []
                for path, body, _ in sends:
                    status, _, result = host.request("POST", path, body)
                    self.assertEqual(status, 200, result)
                    self.assertEqual(result["outcome"], "ok", result)
                    results.append(result)
                last = results[-1]["id"]
                events = read_events(host, lambda e: e["type"] == "answer" and e["id"] == last)
            written = dry_run_transmissions(dry_run)
        self.assertEqual(len(written), len(sends))
        for (path, _, codeset), result, (header, durations) in zip(sends, results, written):
            with self.subTest(path):
                self.assertEqual(len(result["ir"]), 1)
                tx = result["ir"][0]
                self.assertIn(codeset, header)
                self.assertEqual(tx["waveform"], durations)
                self.assertGreater(len(durations), 10)
                self.assertEqual(tx["carrier"], int(re.search(r"carrier (\d+) Hz", header).group(1)))
                self.assertGreater(tx["carrier"], 0)
                self.assertEqual(tx["onAirUs"], sum(durations))
                self.assertEqual(tx["onAirEndUs"] - tx["onAirStartUs"], tx["onAirUs"])
                self.assertNotIn("transmitError", tx)
                # The page draws from the live event as well as from the result.
                live = [e for e in events if e["type"] == "transmission" and e["id"] == result["id"]]
                self.assertEqual([(e["waveform"], e["carrier"]) for e in live], [(durations, tx["carrier"])])

    def test_unusable_device_stops_web_at_start_as_it_stops_key(self):
        cases = [
            ("/dev/null", "--ir-device /dev/null: /dev/null is not a lirc device"),
            ("/nonexistent/lirc7", "--ir-device /nonexistent/lirc7: cannot open /nonexistent/lirc7: no such device"),
            ("mode2:/nonexistent/dir/x", "--ir-device mode2:/nonexistent/dir/x: cannot write /nonexistent/dir/x"),
        ]
        for device, says in cases:
            with self.subTest(device):
                web = host_run("--ir-device", device, "web", "--listen", "127.0.0.1:0")
                self.assertEqual(web.returncode, 1, web.stderr)
                self.assertIn(says, web.stderr)
                self.assertEqual(web.stdout, "")
                key = host_run("--ir-device", device, "key", "--type", "fan", "--key", "10")
                self.assertEqual((web.returncode, web.stderr), (key.returncode, key.stderr))


class StreamLimitTest(unittest.TestCase):
    def test_streams_beyond_the_limit_are_refused_and_freed_on_close(self):
        with WebHost() as host:
            streams = []
            try:
                for _ in range(16):
                    connection = http.client.HTTPConnection(host.host, host.port, timeout=10)
                    connection.request("GET", "/api/events")
                    self.assertEqual(connection.getresponse().status, 200)
                    streams.append(connection)
                self.assertEqual(host.request("GET", "/api/events")[0], 503)
            finally:
                for connection in streams:
                    connection.close()
            self.assertTrue(wait_until(lambda: host.request("GET", "/api/devices")[0] == 200))
            opened = []
            self.assertTrue(wait_until(lambda: stream_opens(host, opened), timeout=30, step=0.5))
            for connection in opened:
                connection.close()


def stream_opens(host, opened):
    connection = http.client.HTTPConnection(host.host, host.port, timeout=10)
    opened.append(connection)
    connection.request("GET", "/api/events")
    return connection.getresponse().status == 200


class ShutdownTest(unittest.TestCase):
    def test_signal_destroys_and_unloads_the_plugin(self):
        for sig in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(signal=sig.name):
                host = WebHost("--ir-delay", "300")
                stream = http.client.HTTPConnection(host.host, host.port, timeout=10)
                stream.request("GET", "/api/events")
                self.assertEqual(stream.getresponse().status, 200)
                for _ in range(3):  # one on air, two queued when the signal comes
                    self.assertEqual(host.request("POST", "/api/key?wait=false", FAN_OK)[0], 202)
                status, out, err = host.stop(sig)
                stream.close()
                self.assertEqual(status, 0, err)
                self.assertIn("stopped; plugin destroyed, library unloaded", out)

    def test_address_in_use_is_reported(self):
        with WebHost() as first:
            import subprocess, os, shlex
            command = shlex.split(os.environ.get("IRC_TARGET_RUNNER", "")) + [
                os.environ["IRC_HOST"], "--plugin", os.environ["IRC_PLUGIN"], "web", "--listen",
                f"127.0.0.1:{first.port}"]
            run = subprocess.run(command, capture_output=True, text=True, timeout=60)
            self.assertEqual(run.returncode, 2)
            self.assertIn("cannot listen on", run.stderr)


if __name__ == "__main__":
    unittest.main()
