"""Files the learn tests give the web remote: a codesets file to write into (a copy of the shipped
codesets) and recorded presses, made by sending keys through the tool's dry-run sink."""
import os
import shlex
import shutil
import subprocess

SHIPPED_CODESETS = os.path.join(os.path.dirname(__file__), "..", "..", "infrared", "codesets", "default.json")


def codesets(folder):
    path = os.path.join(folder, "codesets.json")
    shutil.copyfile(SHIPPED_CODESETS, path)
    return path


def sent(folder, type_, key, name):
    """The mode2 text of one key press as the tool sends it (paired codeset of that type)."""
    path = os.path.join(folder, name)
    command = shlex.split(os.environ.get("IRC_TARGET_RUNNER", ""))
    command += [os.environ["IRC_HOST"], "--plugin", os.environ["IRC_PLUGIN"], "--ir-device", "mode2:" + path,
                "key", "--type", type_, "--key", str(key)]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=60)
    with open(path) as text:
        return text.read()


def presses(folder, name, *texts):
    """A receiver file holding the given presses in order."""
    path = os.path.join(folder, name)
    with open(path, "w") as out:
        out.write("".join(texts))
    return path
