"""ircontrol-host service against a real mosquitto broker, driven with paho-mqtt."""
import collections
import json
import os
import signal
import time
import unittest
import urllib.request

from homehost import Broker, Client, Service, retained, temp_dir

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
        _, state = self.client.next(lambda t, p: t == climate["temperature_state_topic"])
        self.assertEqual(state, b"19")
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

    def test_what_it_was_told_survives_a_restart(self):
        service = Service(self.dir.name, self.broker)
        client = Client(self.broker, "ircontrol/#")
        client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
        client.publish("ircontrol/ZAC00005/mode/set", "heat")
        self.assertEqual(client.result("ircontrol/ZAC00005/mode/set")["errorCode"], "ok")
        # The pairing list edited on the web page: only the cleaner and the air conditioner stay.
        pairing = {"dev_info": [{"codeset": "HRBC0004", "device_index": 4, "type": "oic.d.robotcleaner"},
                                {"codeset": "ZAC00005", "device_index": 5, "type": "oic.d.airconditioner"}]}
        request = urllib.request.Request(service.url + "api/devices", data=json.dumps(pairing).encode(), method="PUT",
                                         headers={"Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=30) as response:
            self.assertEqual(response.status, 200)
        self.assertEqual(service.stop(), 0)
        client.next(lambda t, p: t == "ircontrol/status" and p == b"offline")
        client.close()
        self.assertTrue(os.path.exists(os.path.join(service.state, "devices.json")))
        self.broker.stop()
        self.broker.start()  # nothing retained any more
        service = Service(self.dir.name, self.broker)
        try:
            client = Client(self.broker, "ircontrol/#")
            client.next(lambda t, p: t == "ircontrol/status" and p == b"online")
            configs = retained(self.broker, "homeassistant/", expect=4)
            self.assertEqual(len(configs), 4, sorted(configs))  # the cleaner's three keys and the climate
            states = retained(self.broker, "ircontrol/ZAC00005/")
            self.assertEqual(states.get("ircontrol/ZAC00005/mode/state"), b"heat")
            client.close()
        finally:
            self.assertEqual(service.stop(), 0)

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

    def test_sighup_reconnects_with_the_new_broker_settings_and_a_bad_file_changes_nothing(self):
        service = Service(self.dir.name, self.broker)
        other_dir = temp_dir()
        other = Broker(other_dir.name)
        try:
            client = Client(other, "ircontrol/status")
            text = open(service.config).read()
            with open(service.config, "w") as f:
                f.write(text.replace("[state]", "[state]\ncolour=blue"))
            service.process.send_signal(signal.SIGHUP)
            deadline = time.time() + 30
            while not any("reload refused" in line for line in service.errors) and time.time() < deadline:
                time.sleep(0.05)
            self.assertTrue(any("home.conf:" in line and "colour: unknown key" in line for line in service.errors),
                            "".join(service.errors))
            with open(service.config, "w") as f:
                f.write(text.replace(str(self.broker.port), str(other.port)))
            service.process.send_signal(signal.SIGHUP)
            client.next(lambda t, p: p == b"online", timeout=60)
            client.close()
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
