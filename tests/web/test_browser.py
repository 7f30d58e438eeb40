"""The web remote in headless Chromium: the page drives the real plugin through the server."""
import json
import math
import os
import re
import tempfile
import unittest

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

import browser
import learnfiles
from webhost import WebHost

# A fan key map with one key the service does not accept (15), to see it disabled.
CATALOGUE = {
    "HFAN0001": {"power": 10, "speed_up": 11, "turbo": 15},
    "HRBC0004": {"power": 10, "home": 28, "start": 39},
    "ZAC00005": {"modes": ["auto", "cool", "heat"], "fan": ["low", "high"], "setpoint": [18, 26]},
}


class BrowserTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        catalogue = os.path.join(cls.folder.name, "catalogue.json")
        with open(catalogue, "w") as out:
            json.dump({k: json.dumps(v) for k, v in CATALOGUE.items()}, out)
        cls.host = WebHost("--catalogue", catalogue, "--ir-delay", "40")
        cls.driver = browser.start()

    @classmethod
    def tearDownClass(cls):
        cls.driver.quit()
        status, out, err = cls.host.stop()
        cls.folder.cleanup()
        assert status == 0, (status, out, err)

    def setUp(self):
        self.page = browser.Page(self.driver, self.host.url)

    def newest(self):
        return self.page.timeline()[0]

    def test_fan_key_shows_answer_and_transmission(self):
        before = len(self.page.timeline())
        self.page.press("HFAN0001", "speed_up")
        self.assertEqual(self.page.remote_result("HFAN0001"), "ok")
        items = self.page.wait_answers(before + 1)
        _, answer, tx = items[0]
        self.assertEqual(answer, "ok")
        self.assertEqual(len(tx), 1)
        self.assertIn("hdevice #1 key 11 on air", tx[0])

    def test_keys_outside_the_allow_list_are_disabled(self):
        states = {b.get_attribute("data-key"): b.is_enabled()
                  for b in self.page.remote("HFAN0001").find_elements(By.CSS_SELECTOR, ".keys button")}
        self.assertEqual(states, {"power": True, "speed_up": True, "turbo": False})
        # A kind without a key map still gets its accepted keys, by number.
        purifier = [b.get_attribute("data-code")
                    for b in self.page.remote("HPUR0002").find_elements(By.CSS_SELECTOR, ".keys button")]
        self.assertEqual(purifier, ["10", "11", "12", "13", "14", "76"])

    def test_learning_without_a_receiver_says_what_is_missing(self):
        self.page.remote("HFAN0001").find_element(By.CSS_SELECTOR, "button.learn").click()
        self.driver.find_element(By.ID, "learn-key").send_keys("boost")
        self.driver.find_element(By.ID, "learn-code").send_keys("77")
        self.driver.find_element(By.ID, "learn-start").click()
        status = self.driver.find_element(By.ID, "learn-status")
        self.page.wait(lambda d: status.text.startswith("Not started"))
        self.assertIn("no receiver configured", status.text)
        self.assertEqual(status.get_attribute("class"), "result bad")

    def test_refused_key_shows_its_reason(self):
        payload = json.dumps({"x.com.korvan.deviceType": "oic.d.fan", "x.com.korvan.codesetName": "HFAN0001",
                              "x.com.korvan.codesetKey": 15})
        result = self.page.compose(payload)
        self.assertEqual(result, "key_error: unsupported key (code 5)")
        item = self.page.wait(lambda d: self.newest() if "unsupported key" in self.newest()[1] else False)
        self.assertEqual(item[2], [])  # nothing on air
        log = self.page.select_request(item[0])
        self.assertTrue(any("error occured: unsupported key" in line for line in log), log)

    def test_request_without_device_type_says_no_answer_and_why(self):
        result = self.page.compose('{"x.com.korvan.codesetKey":10}')
        self.assertIn("x.com.korvan.deviceType", result)
        self.assertIn("sends no answer", result)

    def test_air_conditioner_state_change(self):
        card = self.page.remote("ZAC00005")
        # The remote offers what the paired codeset's key map reports, and nothing else.
        offered = lambda name: [o.get_attribute("value") for o in Select(card.find_element(By.NAME, name)).options]
        self.assertEqual(offered("mode"), ["AUTO", "COLD", "HEAT"])
        self.assertEqual(offered("fan"), ["LOW", "HIGH"])
        self.assertEqual(offered("power"), ["ON", "OFF"])
        self.assertEqual(card.find_element(By.NAME, "setpoint").get_attribute("min"), "18")
        self.assertEqual(card.find_element(By.NAME, "setpoint").get_attribute("max"), "26")
        Select(card.find_element(By.NAME, "power")).select_by_value("ON")
        Select(card.find_element(By.NAME, "mode")).select_by_value("HEAT")
        Select(card.find_element(By.NAME, "fan")).select_by_value("HIGH")
        setpoint = card.find_element(By.NAME, "setpoint")
        setpoint.clear()
        setpoint.send_keys("21")
        card.find_element(By.CSS_SELECTOR, "button[type=submit]").click()
        self.assertEqual(self.page.remote_result("ZAC00005"), "ok")
        item = self.page.wait(lambda d: self.newest() if self.newest()[2] else False)
        self.assertIn("aircon", item[2][0])
        self.assertIn("mode=heat", item[2][0])
        self.assertIn("setpoint=21", item[2][0])
        self.assertIn("fan=high", item[2][0])

    def test_keyboard_alone_presses_a_key_and_opens_its_log(self):
        key = self.page.key("HRBC0004", "home")
        self.driver.execute_script("arguments[0].focus()", key)
        before = len(self.page.timeline())
        self.driver.switch_to.active_element.send_keys(Keys.ENTER)
        items = self.page.wait_answers(before + 1)
        row = self.driver.find_element(By.CSS_SELECTOR, f'#timeline li[data-id="{items[0][0]}"]')
        self.driver.execute_script("arguments[0].focus()", row)
        self.driver.switch_to.active_element.send_keys(Keys.ENTER)
        self.assertEqual(row.get_attribute("aria-selected"), "true")
        self.page.wait(lambda d: "key to be IRBlastered : 28" in d.find_element(By.ID, "log").text)

    def test_pairing_edit_changes_the_remotes(self):
        original = self.driver.find_element(By.ID, "pairing-text").get_attribute("value")
        edited = {"dev_info": [{"codeset": "HFAN0001", "device_index": 7, "type": "oic.d.fan"},
                               {"codeset": "HRBC0004", "device_index": 4, "type": "oic.d.robotcleaner"}]}
        try:
            self.save_pairing("{not json")
            self.assertIn("not valid JSON", self.driver.find_element(By.ID, "pairing-result").text)
            self.assertEqual(len(self.page.remotes()), 5)
            self.save_pairing(json.dumps(edited))
            self.page.wait(lambda d: self.page.remotes() == ["HFAN0001", "HRBC0004"])
            self.page.press("HFAN0001", "power")
            self.page.wait(lambda d: "hdevice #7 key 10" in " ".join(self.newest()[2]))
        finally:
            self.save_pairing(original)
            self.page.wait(lambda d: len(self.page.remotes()) == 5)

    def save_pairing(self, text):
        area = self.driver.find_element(By.ID, "pairing-text")
        self.driver.execute_script("arguments[0].value = arguments[1]", area, text)
        self.driver.find_element(By.CSS_SELECTOR, "#pairing button[type=submit]").click()
        self.page.wait(lambda d: d.find_element(By.ID, "pairing-result").text)

    def test_phone_width_has_no_sideways_scrolling(self):
        self.driver.set_window_size(390, 844)
        try:
            self.driver.refresh()
            page = browser.Page(self.driver, self.host.url)
            width = self.driver.execute_script("return document.documentElement.scrollWidth")
            inner = self.driver.execute_script("return window.innerWidth")
            self.assertLessEqual(width, inner)
            first = page.key("HFAN0001", "power").rect
            self.assertGreaterEqual(first["height"], 40)  # big enough for a thumb
        finally:
            self.driver.set_window_size(1280, 900)


def dry_run_last(path):
    """(carrier in Hz, [pulse, space, ..., pulse]) of the last transmission in a mode2 dry-run file."""
    with open(path) as file:
        text = file.read()
    header, body = text.rsplit("# transmission ", 1)[1].split("\n", 1)
    durations = [int(line.split()[1]) for line in body.splitlines()][1:-1]  # without the silences
    return int(re.search(r"carrier (\d+) Hz", header).group(1)), durations


class WaveformTest(unittest.TestCase):
    def test_transmission_is_drawn_with_its_text_and_zooms_by_keyboard(self):
        with tempfile.TemporaryDirectory() as folder:
            dry_run = os.path.join(folder, "ir.mode2")
            with WebHost("--ir-device", "mode2:" + dry_run) as host:
                driver = browser.start()
                try:
                    page = browser.Page(driver, host.url)
                    page.press("HFAN0001", "power")
                    self.assertEqual(page.remote_result("HFAN0001"), "ok")
                    figure = page.wait(lambda d: d.find_elements(By.CSS_SELECTOR, "#timeline .wave"))[0]
                    carrier, durations = dry_run_last(dry_run)
                    marks = math.ceil(len(durations) / 2)
                    total_ms = round(sum(durations) / 1000, 1)
                    words = f"{marks} marks, {total_ms:g} ms, {round(carrier / 1000, 1):g} kHz"
                    self.assertEqual(figure.find_element(By.CSS_SELECTOR, "figcaption").text,
                                     f"{words} · on air {total_ms:g} ms")
                    picture = figure.find_element(By.CSS_SELECTOR, "svg")
                    self.assertEqual(picture.get_attribute("role"), "img")
                    self.assertEqual(picture.get_attribute("aria-label"), words)
                    drawn = [int(r.get_attribute("data-us")) for r in picture.find_elements(By.CSS_SELECTOR, "rect.mark")]
                    self.assertEqual(drawn, durations[0::2])
                    # Marks sit where the file has them: the last one ends at the frame's length.
                    last = picture.find_elements(By.CSS_SELECTOR, "rect.mark")[-1]
                    first = picture.find_elements(By.CSS_SELECTOR, "rect.mark")[0]
                    scale = (float(last.get_attribute("x")) + float(last.get_attribute("width"))
                             - float(first.get_attribute("x"))) / (sum(durations) / 1000)
                    self.assertAlmostEqual(scale, 8, delta=0.05)
                    width = float(picture.get_attribute("width"))
                    zoom_in = figure.find_element(By.CSS_SELECTOR, 'button[aria-label="zoom in"]')
                    driver.execute_script("arguments[0].focus()", zoom_in)
                    driver.switch_to.active_element.send_keys(Keys.ENTER)
                    drawn_width = lambda d: float(d.find_element(By.CSS_SELECTOR, "#timeline .wave svg").get_attribute("width"))
                    # Twice the scale: the frame (without the margins) is drawn twice as wide.
                    self.assertTrue(page.wait(lambda d: drawn_width(d) > 1.9 * width))
                    self.assertEqual(figure.find_element(By.CSS_SELECTOR, ".wave-zoom").text, "16 px/ms")
                    # Zooming leaves the selection alone; a click on the drawing selects its request.
                    row = driver.find_element(By.CSS_SELECTOR, "#timeline li")
                    self.assertEqual(row.get_attribute("aria-selected"), "false")
                    driver.find_element(By.CSS_SELECTOR, "#timeline .wave svg").click()
                    page.wait(lambda d: row.get_attribute("aria-selected") == "true")
                    # A frame wider than its box scrolls sideways inside it, not the page.
                    box = driver.find_element(By.CSS_SELECTOR, "#timeline .wave-scroll")
                    self.assertGreater(driver.execute_script("return arguments[0].scrollWidth", box),
                                       driver.execute_script("return arguments[0].clientWidth", box))
                    self.assertLessEqual(driver.execute_script("return document.documentElement.scrollWidth"),
                                         driver.execute_script("return window.innerWidth"))
                finally:
                    driver.quit()


class TwoBrowsersTest(unittest.TestCase):
    def test_both_see_the_same_events(self):
        with WebHost() as host:
            first, second = browser.start(), browser.start()
            try:
                a = browser.Page(first, host.url)
                b = browser.Page(second, host.url)
                a.press("HFAN0001", "power")
                b.press("HRBC0004", "start")
                seen_a = a.wait_answers(2)
                seen_b = b.wait_answers(2)
                self.assertEqual(seen_a, seen_b)
                self.assertEqual(sorted(i[0] for i in seen_a), [1, 2])
                self.assertEqual({i[1] for i in seen_a}, {"ok"})
                # A browser that opens later is shown the session so far.
                third = browser.start()
                try:
                    self.assertEqual(browser.Page(third, host.url).wait_answers(2), seen_a)
                finally:
                    third.quit()
            finally:
                first.quit()
                second.quit()


# A frame no protocol reads: learned as its timings, drawn as a waveform of 5 marks.
RAW_PRESS = "space 100000\npulse 3000\nspace 1000\npulse 500\nspace 500\npulse 1500\nspace 500\npulse 500\n" \
            "space 1500\npulse 1000\n"


class LearnBrowserTest(unittest.TestCase):
    def test_a_key_is_learned_after_presses_that_differ_and_the_remote_sends_it(self):
        with tempfile.TemporaryDirectory() as folder:
            devices = os.path.join(folder, "devices.json")
            with open(devices, "w") as out:
                json.dump({"dev_info": [{"codeset": "MYFAN", "device_index": 1, "type": "oic.d.fan"},
                                        {"codeset": "MYAC", "device_index": 2, "type": "oic.d.airconditioner"}]}, out)
            nec = learnfiles.sent(folder, "fan", 10, "nec.txt")
            # nec, then the raw frame: they differ; then the raw frame twice.
            presses = learnfiles.presses(folder, "presses.txt", nec, RAW_PRESS, RAW_PRESS, RAW_PRESS)
            with WebHost("--devices", devices, "--codesets", learnfiles.codesets(folder), "--ir-receiver", presses,
                         "--ir-device", "mode2:" + os.path.join(folder, "sent.txt")) as host:
                driver = browser.start()
                try:
                    self.learn_and_press(browser.Page(driver, host.url))
                finally:
                    driver.quit()

    def learn_and_press(self, page):
        page.remote("MYFAN").find_element(By.CSS_SELECTOR, "button.learn").click()
        page.driver.find_element(By.ID, "learn-key").send_keys("power")
        page.driver.find_element(By.ID, "learn-code").send_keys("10")
        page.driver.find_element(By.ID, "learn-start").click()
        status = page.driver.find_element(By.ID, "learn-status")
        page.wait(lambda d: "Learned 'power'" in status.text)
        self.assertEqual(status.get_attribute("class"), "result ok")
        differ = page.driver.find_elements(By.CSS_SELECTOR, "#learn-steps .learn-differ")
        self.assertEqual(len(differ), 1)
        self.assertIn("a different kind of frame: nec 0x0408, then raw 9 durations", differ[0].text)
        frames = page.driver.find_elements(By.CSS_SELECTOR, "#learn-steps .learn-frame")
        self.assertEqual([f.get_attribute("data-press") for f in frames], ["1", "2", "1", "2"])
        self.assertTrue(frames[0].text.startswith("press 1: nec 0x0408"), frames[0].text)
        self.assertEqual(frames[0].find_elements(By.CSS_SELECTOR, "figure.wave"), [])
        for frame in frames[1:]:
            self.assertEqual(len(frame.find_elements(By.CSS_SELECTOR, "figure.wave rect.mark")), 5)
        # The remote is drawn again from the written file: its key is there and sends.
        page.wait(lambda d: page.key("MYFAN", "power").is_enabled())
        page.press("MYFAN", "power")
        self.assertEqual(page.remote_result("MYFAN"), "ok")
        self.assertIn("hdevice #1 key 10", page.wait_answers(1)[0][2][0])
        # The air conditioner's learn reads the same presses: a key's frame is refused, with why.
        page.remote("MYAC").find_element(By.CSS_SELECTOR, "button.learn").click()
        page.driver.find_element(By.ID, "learn-start").click()
        page.wait(lambda d: status.text.startswith("Not learned"))
        self.assertIn("not an air conditioner protocol", status.text)


if __name__ == "__main__":
    unittest.main()
