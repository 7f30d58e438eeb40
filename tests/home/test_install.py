"""make install's result: the installed tool runs with the plugin beside it, and the systemd unit
passes `systemd-analyze verify` and scores as hardened in `systemd-analyze security`.

`systemd-analyze verify` checks that ExecStart names an executable file. The tree is installed
into a staging directory, not into /usr, so the unit that is verified is the installed one with
the staging directory put before its paths to the installed tool; everything else is as installed.
"""
import os
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest

BUILD = os.environ["IRC_BINARY_DIR"]


def configured_prefix():
    with open(os.path.join(BUILD, "CMakeCache.txt")) as cache:
        for line in cache:
            if line.startswith("CMAKE_INSTALL_PREFIX:"):
                return line.split("=", 1)[1].strip()
    return "/usr/local"


@unittest.skipUnless(shutil.which("systemd-analyze"), "systemd-analyze is not installed (scripts/install-deps.sh)")
class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.stage = tempfile.TemporaryDirectory(prefix="irc-install-")
        env = dict(os.environ, DESTDIR=cls.stage.name)
        # The configured prefix: the unit's paths were made for it.
        done = subprocess.run(["cmake", "--install", BUILD], env=env, capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError("cmake --install failed: " + done.stderr)
        cls.root = cls.stage.name
        cls.prefix = os.path.join(cls.root, configured_prefix().lstrip("/"))
        with open(os.path.join(cls.prefix, "lib/systemd/system/ircontrol.service")) as f:
            cls.unit_text = f.read()
        tool = re.search(r"^ExecStart=(\S+)", cls.unit_text, re.M).group(1)
        cls.tool_dir = os.path.dirname(tool)
        cls.unit = os.path.join(cls.root, "ircontrol.service")
        with open(cls.unit, "w") as f:
            f.write(cls.unit_text.replace(cls.tool_dir + "/", cls.root + cls.tool_dir + "/"))

    @classmethod
    def tearDownClass(cls):
        cls.stage.cleanup()

    def run_tool(self, *args):
        runner = shlex.split(os.environ.get("IRC_TARGET_RUNNER", ""))
        return subprocess.run(runner + [os.path.join(self.prefix, "bin/ircontrol-host")] + list(args),
                              capture_output=True, text=True, timeout=120)

    def test_the_installed_tool_finds_its_plugin_and_drives_it(self):
        done = self.run_tool("key", "--type", "cleaner", "--key", "home")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("ok", done.stdout)
        for path in ("share/ircontrol/codesets/default.json", "share/doc/ircontrol/home.md",
                     "share/doc/ircontrol/ircontrol.conf"):
            self.assertTrue(os.path.isfile(os.path.join(self.prefix, path)), path)

    def test_the_example_configuration_is_one_the_tool_accepts(self):
        done = self.run_tool("--config", os.path.join(self.prefix, "share/doc/ircontrol/ircontrol.conf"), "devices")
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_the_unit_verifies(self):
        done = subprocess.run(["systemd-analyze", "verify", self.unit], capture_output=True, text=True, timeout=120)
        self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""))

    def test_verify_would_catch_a_broken_unit(self):
        # The check above means something only if verify fails here on a unit that is wrong.
        broken = self.unit + ".broken.service"
        with open(self.unit) as f:
            text = f.read()
        with open(broken, "w") as f:
            f.write(text.replace("ExecStart=" + self.root, "ExecStart=" + self.root + "/missing"))
        done = subprocess.run(["systemd-analyze", "verify", broken], capture_output=True, text=True, timeout=120)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("is not executable", done.stderr)

    def test_the_unit_is_hardened(self):
        done = subprocess.run(["systemd-analyze", "security", "--offline=true", self.unit], capture_output=True,
                              text=True, timeout=120)
        match = re.search(r"Overall exposure level for \S+: (\d+\.\d+)", done.stdout)
        self.assertIsNotNone(match, done.stdout + done.stderr)
        # systemd's scale: 0 safest, 10 most exposed; below 2 it calls a service "OK" or "SAFE".
        self.assertLess(float(match.group(1)), 2.0, done.stdout)


if __name__ == "__main__":
    unittest.main()
