"""ircontrol-host service against a real mosquitto broker, driven with paho-mqtt."""
import collections
import json
import os
import shlex
import signal
import subprocess
import time
import unittest
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "web"))
import learnfiles  # noqa: E402
from homehost import Broker, Client, Service, retained, temp_dir  # noqa: E402
from webhost import wait_until  # noqa: E402

BUTTON_MEMBERS = {"command_topic", "unique_id", "name", "device", "availability", "payload_press"}
CLIMATE_MEMBERS = {"unique_id", "name", "device", "availability", "modes", "fan_modes", "min_temp", "max_temp",
                   "mode_command_topic", "mode_state_topic", "temperature_command_topic", "temperature_state_topic",
                   "fan_mode_command_topic", "fan_mode_state_topic"}


class RunningService(unittest.TestCase):
    """One broker and one service for the tests that do not restart either."""

    @classmethod
    def setUpClass(cls):
        cls.dir = temp_dir()
        cls.broker = Broker(cls.dir.name)
        cls.service = Service(cls.dir.name, cls.broker)
        cls.client = Client(cls.broker, "ircontrol/#")
        cls.client.next(lambda t, p: t == "ircontrol/status" and p == b"online")

    @classmethod
    def tearDownClass(cls):
        cls.client.close()
        cls.service.stop()
        cls.broker.stop()
        cls.dir.cleanup()

    def discovery(self):
        configs = retained(self.broker, "homeassistant/", expect=22)
        return {topic: json.loads(payload) for topic, payload in configs.items() if payload}

    def test_discovery_configs_carry_what_each_component_needs(self):
        configs = self.discovery()
        components = collections.Counter(topic.split("/")[1] for topic in configs)
        self.assertEqual(components, {"button": 21, "climate": 1})
        for topic, config in configs.items():
            parts = topic.split("/")
            self.assertEqual(len(parts), 5, topic)
            self.assertEqual((parts[0], parts[2], parts[4]), ("homeassistant", "irtest", "config"))
            members = BUTTON_MEMBERS if parts[1] == "button" else CLIMATE_MEMBERS
            self.assertLessEqual(members, set(config), topic)
            self.assertEqual(config["availability"][0]["topic"], "ircontrol/status")
        self.assertEqual(len({c["unique_id"] for c in configs.values()}), len(configs))
        climate = next(c for t, c in configs.items() if "/climate/" in t)
        self.assertEqual(climate["modes"][0], "off")
        self.assertEqual((climate["min_temp"], climate["max_temp"]), (16, 31))

    def test_a_button_press_transmits_its_key_and_is_answered(self):
        configs = self.discovery()
        button = configs["homeassistant/button/irtest/HRBC0004_start/config"]
        before = len(self.service.transmissions())
        self.client.publish(button["command_topic"], button["payload_press"])
        result = self.client.result(button["command_topic"])
        self.assertEqual(result["errorCode"], "ok")
        self.assertEqual(result["ir"][0]["key"], 39)
        sent = self.service.transmissions()[before:]
        self.assertEqual(len(sent), 1)
        self.assertIn("codeset HRBC0004, key 39", sent[0])

    def test_a_climate_command_transmits_the_state_and_publishes_it(self):
        climate = next(c for t, c in self.discovery().items() if "/climate/" in t)
        before = len(self.service.transmissions())
        self.client.publish(climate["temperature_command_topic"], "19.0")
        result = self.client.result(climate["temperature_command_topic"])
        self.assertEqual(result["errorCode"], "ok", result)
        self.assertEqual(result["payload"]["x.com.korvan.acState"]["x.com.korvan.coolingSetpoint"], 19)
        states = retained(self.broker, "ircontrol/ZAC00005/", expect=3)
        self.assertEqual(states[climate["temperature_state_topic"]], b"19")
        sent = self.service.transmissions()[before:]
        self.assertEqual(len(sent), 1)
        self.assertIn("codeset ZAC00005", sent[0])

    def test_hostile_payloads_are_answered_with_errors_and_the_service_goes_on(self):
        cases = [
            ("ircontrol/raw", b"{not json"),
            ("ircontrol/raw", b"\xff\xfe\x00"),
            ("ircontrol/raw", json.dumps({"command": "ac", "setpoint": "hot"}).encode()),
            ("ircontrol/raw", json.dumps({"command": ["key"]}).encode()),
            ("ircontrol/HFAN0001/key", b"k" * (1024 * 1024)),
            ("ircontrol/HFAN0001/key", b"[1,2]"),
            ("ircontrol/NOSUCH01/key", b"power"),
            ("ircontrol/ZAC00005/temperature/set", b"1e400"),
            ("ircontrol/devices/set", b"{\"dev_info\":\"x\"}"),
        ]
        for topic, payload in cases:
            self.client.publish(topic, payload)
            result = self.client.result(topic)
            self.assertEqual(result["outcome"], "error", (topic, payload[:20], result))
            self.assertTrue(result["reason"])
        self.assertIsNone(self.service.process.poll())
        self.client.publish("ircontrol/HFAN0001/key", "power")
        self.assertEqual(self.client.result("ircontrol/HFAN0001/key")["errorCode"], "ok")

    def test_a_thousand_commands_at_once_are_each_answered_in_order_per_appliance(self):
        sequences = {"ircontrol/HFAN0001/key": [10, 11, 12, 13, 14, 76], "ircontrol/HRBC0004/key": [10, 28, 39],
                     "ircontrol/HPUR0002/key": [10, 11, 12, 13, 14, 76, 99]}  # 99 is refused
        sent = collections.defaultdict(list)
        topics = list(sequences)
        for i in range(1000):
            topic = topics[i % len(topics)]
            key = sequences[topic][len(sent[topic]) % len(sequences[topic])]
            sent[topic].append(key)
            self.client.publish(topic, str(key))
        answered = collections.defaultdict(list)
        for _ in range(1000):
            _, payload = self.client.next(lambda t, p: t == "ircontrol/result" and json.loads(p).get("topic") in sent,
                                          timeout=120)
            result = json.loads(payload)
            self.assertIn(result.get("outcome"), ("ok", "refused"), result)
            answered[result["topic"]].append(result["payload"]["x.com.korvan.codesetKey"])
        self.assertEqual(dict(answered), dict(sent))


class Restarts(unittest.TestCase):
    def setUp(self):
        self.dir = temp_dir()
        self.broker = Broker(self.dir.name)

    def tearDown(self):
        self.broker.stop()
        self.dir.cleanup()

    def test_the_broker_going_away_and_coming_back_gets_everything_published_again(self):
        service = Service(self.dir.name, self.broker)
        try:
            client = Client(self.broker, "ircontrol/#")
            client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
            client.close()
            self.broker.stop()  # without persistence: the retained configs go with it
            time.sleep(1.5)
            self.broker.start()
            client = Client(self.broker, "ircontrol/#")
            client.next(lambda t, p: t == "ircontrol/status" and p == b"online", timeout=60)
            self.assertEqual(len(retained(self.broker, "homeassistant/", expect=22)), 22, "".join(service.errors))
            client.publish("ircontrol/HFAN0001/key", "speed_up")
            self.assertEqual(client.result("ircontrol/HFAN0001/key")["errorCode"], "ok")
            client.close()
        finally:
            self.assertEqual(service.stop(), 0)

    def restart(self, service, **kwargs):
        """Stops the service, empties the broker of what it retained and starts it again."""
        self.assertEqual(service.stop(), 0, "".join(service.errors))
        self.broker.stop()
        self.broker.start()
        return Service(self.dir.name, self.broker, **kwargs)

    def test_what_it_was_told_survives_a_restart(self):
        service = Service(self.dir.name, self.broker)
        client = Client(self.broker, "ircontrol/#")
        client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
        # An air conditioner's state from the page's shortcut, then as a raw property: each is kept
        # and shown to Home Assistant, the last one winning.
        status, result = service.api("POST", "api/ac", {"power": "ON", "mode": "HEAT", "setpoint": 21, "fan": "LOW"})
        self.assertEqual((status, result["outcome"]), (200, "ok"), result)
        self.assertEqual(retained(self.broker, "ircontrol/ZAC00005/", expect=3)["ircontrol/ZAC00005/temperature/state"],
                         b"21")
        value = {"x.com.korvan.deviceType": "oic.d.airconditioner", "x.com.korvan.codesetName": "ZAC00005",
                 "x.com.korvan.codesetKey": 0,
                 "x.com.korvan.acState": {"x.com.korvan.power": "ON", "x.com.korvan.mode": "HEAT",
                                          "x.com.korvan.coolingSetpoint": 23, "x.com.korvan.fanSpeed": "HIGH"}}
        status, result = service.api("POST", "api/requests", {"name": "setKeyEvent", "value": value})
        self.assertEqual((status, result["outcome"]), (200, "ok"), result)
        client.next(lambda t, p: t == "ircontrol/ZAC00005/fan_mode/state" and p == b"high")
        with open(os.path.join(service.state, "aircon.json")) as kept:
            self.assertEqual(json.load(kept)["ZAC00005"], {"power": "ON", "mode": "HEAT", "setpoint": 23, "fan": "HIGH"})
        # The pairing list edited on the web page: only the cleaner and the air conditioner stay.
        pairing = {"dev_info": [{"codeset": "HRBC0004", "device_index": 4, "type": "oic.d.robotcleaner"},
                                {"codeset": "ZAC00005", "device_index": 5, "type": "oic.d.airconditioner"}]}
        self.assertEqual(service.api("PUT", "api/devices", pairing)[0], 200)
        client.close()
        service = self.restart(service)
        try:
            client = Client(self.broker, "ircontrol/#")
            client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
            configs = retained(self.broker, "homeassistant/", expect=4)
            self.assertEqual(len(configs), 4, sorted(configs))  # the cleaner's three keys and the climate
            states = retained(self.broker, "ircontrol/ZAC00005/", expect=3)
            self.assertEqual(states, {"ircontrol/ZAC00005/mode/state": b"heat",
                                      "ircontrol/ZAC00005/temperature/state": b"23",
                                      "ircontrol/ZAC00005/fan_mode/state": b"high"})
            client.close()
        finally:
            self.assertEqual(service.stop(), 0)

    def test_a_key_learned_on_the_page_works_at_once_and_after_a_restart(self):
        # Two presses of the purifier's power key (rc5) learned as the fan's "boost", code 10.
        press = learnfiles.sent(self.dir.name, "purifier", 10, "press.txt")
        presses = learnfiles.presses(self.dir.name, "presses.txt", press, press)
        service = Service(self.dir.name, self.broker, options=["--ir-receiver", presses])
        client = Client(self.broker, "ircontrol/#")
        client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
        status, started = service.api("POST", "api/learn", {"codeset": "HFAN0001", "key": "boost", "code": 10})
        self.assertEqual(status, 202, started)

        def fan_keys():
            devices = service.api("GET", "api/devices")[1]["devices"]
            return {k["name"]: k["code"] for d in devices if d["codeset"] == "HFAN0001" for k in d["keys"]}

        self.assertTrue(wait_until(lambda: fan_keys().get("boost") == 10), "".join(service.errors))
        self.assertNotIn("power", fan_keys())  # the learned key took its code
        buttons = retained(self.broker, "homeassistant/button/irtest/")
        self.assertIn("homeassistant/button/irtest/HFAN0001_boost/config", buttons)
        self.assertNotIn("homeassistant/button/irtest/HFAN0001_power/config", buttons)
        for attempt in range(2):
            client.publish("ircontrol/HFAN0001/key", "boost")
            self.assertEqual(client.result("ircontrol/HFAN0001/key")["errorCode"], "ok")
            self.assertIn("rc5 scancode 0xc0c", service.transmissions()[-1], attempt)
            client.close()
            if attempt == 0:
                service = self.restart(service)
                client = Client(self.broker, "ircontrol/#")
                client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
        self.assertEqual(service.stop(), 0)
        # The command line's learn, given the service's file, writes beside the page's key.
        press = learnfiles.sent(self.dir.name, "purifier", 13, "sleep.txt")
        presses = learnfiles.presses(self.dir.name, "sleeps.txt", press, press)
        command = shlex.split(os.environ.get("IRC_TARGET_RUNNER", "")) + [
            os.environ["IRC_HOST"], "--plugin", os.environ["IRC_PLUGIN"], "--config", service.config,
            "--ir-receiver", presses, "learn", "--codeset", "HFAN0001", "--key", "turbo", "--code", "11"]
        learn = subprocess.run(command, capture_output=True, text=True, timeout=120)
        self.assertEqual(learn.returncode, 0, learn.stdout + learn.stderr)
        with open(os.path.join(service.state, "learned.json")) as kept:
            learned = json.load(kept)["codesets"]
        self.assertEqual([(c["name"], sorted(c["keys"])) for c in learned], [("HFAN0001", ["boost", "turbo"])])

    def test_a_killed_service_is_marked_offline_by_its_last_will(self):
        service = Service(self.dir.name, self.broker)
        client = Client(self.broker, "ircontrol/status")
        client.next(lambda t, p: p == b"online")
        service.stop(signal.SIGKILL)
        client.next(lambda t, p: p == b"offline", timeout=60)
        client.close()

    def test_a_broker_that_is_down_at_start_is_retried(self):
        self.broker.stop()
        service = Service(self.dir.name, self.broker)
        try:
            time.sleep(1)
            self.broker.start()
            client = Client(self.broker, "ircontrol/status")
            client.next(lambda t, p: p == b"online", timeout=60)
            client.close()
        finally:
            self.assertEqual(service.stop(), 0)

    def test_sighup_applies_the_whole_file_and_a_bad_file_changes_nothing(self):
        codesets = os.path.join(self.dir.name, "codesets.json")
        with open(learnfiles.SHIPPED_CODESETS) as shipped:
            text = shipped.read()
        with open(codesets, "w") as out:
            out.write(text.replace('"speed_up"', '"faster"'))
        service = Service(self.dir.name, self.broker)
        other_dir = temp_dir()
        other = Broker(other_dir.name)
        try:
            client = Client(self.broker, "#")
            client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
            config = open(service.config).read()

            def reload(new_text, expect):
                with open(service.config, "w") as f:
                    f.write(new_text)
                service.errors.clear()
                service.process.send_signal(signal.SIGHUP)
                self.assertTrue(service.wait_log(expect), "".join(service.errors))

            reload(config.replace("[state]", "[state]\ncolour=blue"), "reload refused")
            self.assertTrue(any("home.conf:" in line and "colour: unknown key" in line for line in service.errors))
            reload(config.replace("[ir]\n", "[ir]\ncodesets=" + codesets + "\n")
                   .replace("client-id=irtest", "client-id=irtest\nbase-topic=home2"), "reload: done")
            client.next(lambda t, p: t == "home2/status" and p == b"online")
            configs = retained(self.broker, "homeassistant/button/irtest/")
            self.assertIn("homeassistant/button/irtest/HFAN0001_faster/config", configs)
            self.assertEqual(json.loads(configs["homeassistant/button/irtest/HFAN0001_faster/config"])["command_topic"],
                             "home2/HFAN0001/key")
            self.assertEqual(retained(self.broker, "ircontrol/"), {})  # the old base's status and states
            client.publish("home2/HFAN0001/key", "faster")
            self.assertEqual(client.result("home2/HFAN0001/key")["errorCode"], "ok")
            client.close()
            reload(config.replace(str(self.broker.port), str(other.port)), "reload: done")
            client = Client(other, "ircontrol/status")
            client.next(lambda t, p: p == b"online", timeout=60)
            client.close()
            self.assertEqual(sorted(retained(self.broker, "homeassistant/")), [], "".join(service.errors))  # taken back
            # MQTT off takes everything back; on again, everything is announced again.
            reload("\n".join(line for line in config.splitlines() if not line.startswith("broker=")), "MQTT is off")
            self.assertEqual(retained(other, "ircontrol/"), {})
            reload(config.replace(str(self.broker.port), str(other.port)), "reload: done")
            self.assertEqual(len(retained(other, "homeassistant/", expect=22)), 22, "".join(service.errors))
            self.assertIsNone(service.process.poll())
        finally:
            self.assertEqual(service.stop(), 0)
            other.stop()
            other_dir.cleanup()

    def test_a_bad_configuration_file_is_refused_with_its_line(self):
        with self.assertRaises(RuntimeError) as raised:
            Service(self.dir.name, self.broker, extra_config="[mqtt]\nbase-topic=a/#\n")
        self.assertIn("home.conf:", str(raised.exception))


if __name__ == "__main__":
    unittest.main()
