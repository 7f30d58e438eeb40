"""Stopping a host tool the tests started: one routine for the web remote's and the home
service's tests alike."""
import subprocess


def stop(process, sig, timeout=30):
    """Sends `sig` to `process` if it still runs, waits up to `timeout` seconds for it to end,
    kills it when it does not, and gives back its exit status."""
    if process.poll() is None:
        process.send_signal(sig)
    try:
        process.wait(timeout)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
    return process.returncode
