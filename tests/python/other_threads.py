"""Whether a call lets other threads of Python run."""

import sys
import threading
import time


def run_during(call):
    """Return whether another thread ran while `call()` did.

    Until this returns, Python takes its lock from no thread that does not give it up, so that a count
    between the two readings of `rounds` proves that `call` gave it up. A busy machine may start the other
    thread too late, hence the repetitions.
    """
    rounds, done = 0, threading.Event()

    def count():
        nonlocal rounds
        while not done.is_set():
            rounds += 1
            time.sleep(0.0002)

    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    other = threading.Thread(target=count)
    other.start()
    try:
        end = time.monotonic() + 60
        while time.monotonic() < end:
            before = rounds
            call()
            if rounds > before:
                return True
        return False
    finally:
        sys.setswitchinterval(interval)
        done.set()
        other.join()
