"""Learning through the web API: POST /api/learn, its steps on the event stream, the written
codesets file and the remote that uses it, against the real ircontrol-host web."""
import json
import os
import tempfile
import unittest

import learnfiles
from test_api import read_events
from webhost import WebHost

PAIRING = {"dev_info": [{"codeset": "MYFAN", "device_index": 1, "type": "oic.d.fan"}]}


def learn_events(host, body):
    """Starts a learn and reads its events until it is saved (and the pages told) or failed."""
    events = []

    def until(event):
        events.append(event)
        if event.get("type") == "learn" and event.get("step") == "failed":
            return True
        return event.get("type") == "devices" and any(e.get("step") == "saved" for e in events)

    status, _, data = host.request("POST", "/api/learn", body)
    assert status == 202, (status, data)
    read_events(host, until, timeout=20)
    return [e for e in events if e.get("type") in ("learn", "devices")]


class LearnBase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        folder = cls.folder.name
        cls.power = learnfiles.sent(folder, "fan", 10, "power.txt")   # nec 0x0408
        cls.speed = learnfiles.sent(folder, "fan", 11, "speed.txt")   # nec 0x0409 (another scancode)
        cls.devices = os.path.join(folder, "devices.json")
        with open(cls.devices, "w") as out:
            json.dump(PAIRING, out)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def start(self, *presses, receiver=True, codesets=True):
        folder = tempfile.mkdtemp(dir=self.folder.name)
        self.sent = os.path.join(folder, "sent.txt")
        self.codesets = learnfiles.codesets(folder)
        with open(self.codesets) as text:
            self.before = text.read()
        options = ["--devices", self.devices, "--timeout", "500", "--ir-device", "mode2:" + self.sent]
        if codesets:
            options += ["--codesets", self.codesets]
        if receiver == "pipe":
            self.pipe = os.path.join(folder, "presses.fifo")
            os.mkfifo(self.pipe)
            options += ["--ir-receiver", self.pipe]
        elif receiver:
            options += ["--ir-receiver", learnfiles.presses(folder, "presses.txt", *presses)]
        host = WebHost(*options)
        self.addCleanup(host.stop)
        return host

    def written(self):
        with open(self.codesets) as text:
            return text.read()



class LearnTest(LearnBase):
    def test_a_learned_key_is_written_and_the_remote_sends_it(self):
        host = self.start(self.power, self.power)
        events = learn_events(host, {"codeset": "MYFAN", "key": "power", "code": 10, "timeoutMs": 2000})
        steps = [(e.get("step") or e["type"], e.get("press")) for e in events]
        self.assertEqual(steps, [("waiting", 1), ("arrived", 1), ("waiting", 2), ("arrived", 2), ("saved", 2),
                                 ("devices", None)])
        for arrived in (events[1], events[3]):
            self.assertEqual((arrived["frame"]["protocol"], arrived["frame"]["scancode"]), ("nec", "0x0408"))
        self.assertTrue(events[4]["reloaded"], events[4])
        written = {c["name"]: c for c in json.loads(self.written())["codesets"]}
        self.assertEqual(written["MYFAN"]["protocol"], "nec")
        self.assertEqual(written["MYFAN"]["keys"]["power"], {"code": 10, "scancode": "0x0408"})
        # Everything that was there is kept.
        before = {c["name"]: c for c in json.loads(self.before)["codesets"]}
        self.assertEqual({k: v for k, v in written.items() if k != "MYFAN"}, before)
        # The remote has the key now, and pressing it sends what was learned.
        _, _, devices = host.request("GET", "/api/devices")
        self.assertEqual(devices["devices"][0]["keys"], [{"name": "power", "code": 10, "allowed": True}])
        status, _, result = host.request("POST", "/api/key", {"type": "fan", "key": 10})
        self.assertEqual((status, result["outcome"]), (200, "ok"), result)
        self.assertTrue(result["ir"][0].get("waveform"), result)
        with open(self.sent) as text:
            self.assertIn("codeset MYFAN, key 10 (power)", text.read())

    def test_presses_that_differ_say_how_and_nothing_is_written(self):
        host = self.start(self.power, self.speed)
        events = learn_events(host, {"codeset": "MYFAN", "key": "power", "code": 10})
        differ = [e for e in events if e.get("step") == "differ"]
        self.assertEqual(len(differ), 1, events)
        self.assertEqual(differ[0]["text"], "a different scancode")
        self.assertEqual((differ[0]["first"]["scancode"], differ[0]["frame"]["scancode"]), ("0x0408", "0x0409"))
        # Asked again from the start, and the file has no more presses.
        self.assertEqual(events[-1]["step"], "failed")
        self.assertIn("no more presses", events[-1]["reason"])
        self.assertEqual(self.written(), self.before)

    def test_refusals_name_what_is_missing(self):
        cases = [
            # name, receiver, codesets, body, status, words
            ("no receiver", False, True, {"codeset": "MYFAN", "key": "power", "code": 10}, 503, "no receiver"),
            ("no codesets file", True, False, {"codeset": "MYFAN", "key": "power", "code": 10}, 503, "--codesets"),
            ("no codeset", True, True, {"key": "power", "code": 10}, 400, "codeset"),
            ("no code", True, True, {"codeset": "MYFAN", "key": "power"}, 400, "code"),
            ("code out of range", True, True, {"codeset": "MYFAN", "key": "p", "code": 2 ** 40}, 400, "range"),
            ("bad wait", True, True, {"codeset": "MYFAN", "key": "p", "code": 1, "timeoutMs": 0}, 400, "timeoutMs"),
            ("not an object", True, True, ["MYFAN"], 400, "object"),
        ]
        for name, receiver, codesets, body, status, words in cases:
            with self.subTest(name):
                host = self.start(self.power, receiver=receiver, codesets=codesets)
                got, _, data = host.request("POST", "/api/learn", body)
                self.assertEqual(got, status, data)
                self.assertIn(words, data["error"])
                self.assertEqual(host.request("DELETE", "/api/learn")[0], 409, "nothing to cancel")
                if status == 503:  # told on the event stream too
                    failed = read_events(host, lambda e: e.get("step") == "failed", timeout=10)[-1]
                    self.assertEqual(failed.get("reason"), data["error"])
                host.stop()

    def test_a_receiver_that_fails_ends_the_learn_with_its_reason(self):
        host = self.start("this is no recording\n")
        events = learn_events(host, {"codeset": "MYFAN", "ac": True})
        self.assertEqual([e["step"] for e in events], ["failed"])
        self.assertIn("neither mode2", events[0]["reason"])
        self.assertEqual(self.written(), self.before)

    def test_a_key_press_is_no_air_conditioner(self):
        host = self.start(self.power)
        events = learn_events(host, {"codeset": "MYAC", "ac": True})
        self.assertEqual([e["step"] for e in events], ["waiting", "arrived", "failed"])
        self.assertIn("not an air conditioner", events[-1]["reason"])


class LearnFromAPipeTest(LearnBase):
    """A named pipe is a receiver that waits, as a device does: presses come when the test writes them."""

    def test_presses_written_when_asked_for_are_learned(self):
        host = self.start(receiver="pipe")
        writer = None
        asked = []

        def until(event):
            nonlocal writer
            if event.get("step") == "waiting":
                asked.append(event["press"])
                if writer is None:
                    writer = open(self.pipe, "w")  # the server holds the reading end
                writer.write(self.power)
                writer.flush()  # kept open: the press ends by the silence after it
            return event.get("step") in ("saved", "failed")

        status, _, _ = host.request("POST", "/api/learn", {"codeset": "MYFAN", "key": "power", "code": 10,
                                                           "timeoutMs": 10000})
        self.assertEqual(status, 202)
        events = read_events(host, until, timeout=20)
        writer.close()
        self.assertEqual(asked, [1, 2])
        self.assertEqual(events[-1]["step"], "saved", events[-1])
        self.assertIn('"power"', self.written())

    def test_no_press_within_the_wait(self):
        host = self.start(receiver="pipe")
        events = learn_events(host, {"codeset": "MYFAN", "key": "power", "code": 10, "timeoutMs": 300})
        self.assertEqual([e["step"] for e in events], ["waiting", "failed"])
        self.assertEqual(events[-1]["reason"], "no press within 0.3 s on " + self.pipe)
        self.assertEqual(self.written(), self.before)

    def test_one_learn_at_a_time_and_cancel_stops_it(self):
        host = self.start(receiver="pipe")
        body = {"codeset": "MYFAN", "key": "power", "code": 10, "timeoutMs": 600000}
        self.assertEqual(host.request("POST", "/api/learn", body)[0], 202)
        answers = []

        def until(event):
            if event.get("step") == "waiting" and not answers:
                answers.append(host.request("POST", "/api/learn", body)[0])
                answers.append(host.request("DELETE", "/api/learn")[0])
            return event.get("step") == "failed"

        events = read_events(host, until, timeout=20)
        self.assertEqual(answers, [409, 200])
        self.assertEqual(events[-1]["reason"], "cancelled")
        # Done: another may start, and stopping the server ends it.
        self.assertEqual(host.request("POST", "/api/learn", body)[0], 202)
        status, out, err = host.stop()
        self.assertEqual(status, 0, (out, err))
        self.assertIn("library unloaded", out)


if __name__ == "__main__":
    unittest.main()
