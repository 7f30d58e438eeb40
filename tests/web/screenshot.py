"""Writes a screenshot of the web remote after a few requests: screenshot.py OUT.png [WIDTH HEIGHT].
The fan's key map gets one key the service does not accept ("turbo", 15), to show it disabled; the
transmissions go to a dry-run file, so the timeline shows what went on air."""
import json
import os
import sys
import tempfile

import browser
from webhost import WebHost

CATALOGUE = {
    "HFAN0001": {"power": 10, "speed_up": 11, "speed_down": 12, "swing": 13, "timer": 14, "mode": 76, "turbo": 15},
    "HPUR0002": {"power": 10, "fan_up": 11, "fan_down": 12, "sleep": 13, "timer": 14, "mode": 76},
    "HHUM0003": {"power": 10, "mist_up": 11, "mist_down": 12, "auto": 13, "timer": 14, "mode": 76},
    "HRBC0004": {"power": 10, "home": 28, "start": 39},
    "ZAC00005": {"modes": ["auto", "cool", "dry", "fan", "heat"], "fan": ["low", "medium", "high", "auto"]},
}


def main():
    out = sys.argv[1]
    width, height = (int(sys.argv[2]), int(sys.argv[3])) if len(sys.argv) > 3 else (1280, 900)
    with tempfile.TemporaryDirectory() as folder:
        catalogue = os.path.join(folder, "catalogue.json")
        with open(catalogue, "w") as file:
            json.dump({k: json.dumps(v) for k, v in CATALOGUE.items()}, file)
        dry_run = "mode2:" + os.path.join(folder, "ir.mode2")
        with WebHost("--catalogue", catalogue, "--ir-device", dry_run) as host:
            driver = browser.start(width, height)
            try:
                page = browser.Page(driver, host.url)
                page.press("HFAN0001", "power")
                page.wait_answers(1)
                page.press("HRBC0004", "start")
                page.wait_answers(2)
                page.compose(json.dumps({"x.com.korvan.deviceType": "oic.d.fan",
                                         "x.com.korvan.codesetName": "HFAN0001", "x.com.korvan.codesetKey": 15}))
                page.wait_answers(3)
                page.select_request(2)
                driver.execute_script("window.scrollTo(0, 0)")
                driver.save_screenshot(out)
            finally:
                driver.quit()


if __name__ == "__main__":
    main()
