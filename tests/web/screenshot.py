"""Writes a screenshot of the web remote after a few requests: screenshot.py OUT.png [WIDTH HEIGHT]."""
import sys

import browser
from webhost import WebHost


def main():
    out = sys.argv[1]
    width, height = (int(sys.argv[2]), int(sys.argv[3])) if len(sys.argv) > 3 else (1280, 900)
    with WebHost("--ir-delay", "70") as host:
        driver = browser.start(width, height)
        try:
            page = browser.Page(driver, host.url)
            page.press("HFAN0001", "power")
            page.wait_answers(1)
            page.press("HRBC0004", "start")
            page.wait_answers(2)
            page.compose('{"x.com.korvan.deviceType":"oic.d.fan","x.com.korvan.codesetName":"HFAN0001","x.com.korvan.codesetKey":39}')
            page.wait_answers(3)
            page.select_request(2)
            driver.save_screenshot(out)
        finally:
            driver.quit()


if __name__ == "__main__":
    main()
