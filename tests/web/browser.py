"""Headless Chromium through WebDriver (Debian's chromium, chromium-driver, python3-selenium) and
the few actions the browser tests take on the web remote's page."""
import shutil
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

FLAGS = [
    "--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--no-first-run", "--disable-extensions", "--disable-default-apps",
]
TIMEOUT = 30


def start(width=1280, height=900):
    profile = tempfile.mkdtemp(prefix="irc-chromium-")
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in FLAGS + ["--user-data-dir=" + profile, f"--window-size={width},{height}"]:
        options.add_argument(flag)
    driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    quit_driver = driver.quit

    def quit_and_clean():
        try:
            quit_driver()
        finally:
            shutil.rmtree(profile, ignore_errors=True)

    driver.quit = quit_and_clean
    return driver


class Page:
    """The web remote open in one browser."""

    def __init__(self, driver, url):
        self.driver = driver
        driver.get(url)
        self.wait(lambda d: d.find_element(By.ID, "status").text == "live")
        self.wait(lambda d: d.find_elements(By.CSS_SELECTOR, ".remote"))

    def wait(self, condition, timeout=TIMEOUT):
        # The page re-renders as events arrive: an element found a moment ago may be gone.
        return WebDriverWait(self.driver, timeout, ignored_exceptions=(StaleElementReferenceException,)).until(condition)

    def remote(self, codeset):
        return self.driver.find_element(By.CSS_SELECTOR, f'.remote[data-codeset="{codeset}"]')

    def remotes(self):
        return self.driver.execute_script(
            "return [...document.querySelectorAll('.remote')].map((card) => card.dataset.codeset)")

    def key(self, codeset, name):
        return self.remote(codeset).find_element(By.CSS_SELECTOR, f'button[data-key="{name}"]')

    def press(self, codeset, name):
        self.wait(lambda d: self.key(codeset, name).click() or True)

    def remote_result(self, codeset):
        output = self.remote(codeset).find_element(By.CSS_SELECTOR, "output")
        self.wait(lambda d: output.text and output.text != "sending…")
        return output.text

    def compose(self, payload, name="setKeyEvent"):
        field = self.driver.find_element(By.ID, "composer-name")
        field.clear()
        field.send_keys(name)
        area = self.driver.find_element(By.ID, "composer-value")
        area.clear()
        area.send_keys(payload)
        self.driver.find_element(By.CSS_SELECTOR, "#composer button[type=submit]").click()
        output = self.driver.find_element(By.ID, "composer-result")
        self.wait(lambda d: output.text and output.text != "sending…")
        return output.text

    def timeline(self):
        """(id, text of the answer, transmission lines) per request, newest first; read in one go."""
        rows = self.driver.execute_script(
            "return [...document.querySelectorAll('#timeline li')].map((li) => [Number(li.dataset.id),"
            " li.querySelector('.answer').textContent, [...li.querySelectorAll('.tx')].map((t) => t.textContent)])")
        return [(row[0], row[1], row[2]) for row in rows]

    def wait_answers(self, count):
        """Waits until `count` requests in the timeline have an outcome, and returns the timeline."""
        def done(_):
            items = self.timeline()
            finished = [i for i in items if i[1] not in ("", "waiting…")]
            return items if len(finished) >= count else False
        return self.wait(done)

    def select_request(self, request_id):
        item = self.driver.find_element(By.CSS_SELECTOR, f'#timeline li[data-id="{request_id}"]')
        item.click()
        self.wait(lambda d: d.find_elements(By.CSS_SELECTOR, "#log li.p4, #log li.p6, #log li.p3"))
        return [li.text for li in self.driver.find_elements(By.CSS_SELECTOR, "#log li")]
