"""The programs of a test. Each runs in a process group of its own, so that nothing of it stays behind."""

import atexit
import os
import shutil
import signal
import subprocess
import tempfile
import time

started = []  # the leaders of all process groups that run


def within(seconds, condition, what):
    """What `condition` returns as soon as that is something. `what`: words, or a function that returns them."""
    end = time.monotonic() + seconds
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what() if callable(what) else what}")
        time.sleep(0.05)


def start(*command, log, **environment):
    """Starts a program. What it prints goes to the file `log`."""
    with open(log, "ab") as output:
        process = subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=output, start_new_session=True, env={**os.environ, **environment})
    started.append(process)
    return process


def stop(process):
    """Ends a program with all that it has started, also when it is stopped by a signal."""
    if process not in started:
        return
    started.remove(process)
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass  # all of the group have ended
    process.wait()


def private_folder():
    """A folder that is gone at the end. Its name is short, since sockets are in it."""
    folder = tempfile.mkdtemp(prefix="orbis-")
    atexit.register(remove, folder)
    return folder


def remove(folder):
    for process in list(started):
        stop(process)
    # A browser that was just killed may still have a file in the making.
    within(10, lambda: shutil.rmtree(folder, ignore_errors=True) or not os.path.exists(folder), f"{folder} is gone")


# A time limit from outside ends the programs, too. A test goes on after any other exception than this one.
signal.signal(signal.SIGTERM, signal.default_int_handler)
