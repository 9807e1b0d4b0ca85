# SPDX-License-Identifier: MIT
"""What all parts of the demonstration say and wait with."""

import contextlib
import sys
import time


class Failure(Exception):
    """Something that should have happened did not."""


def say(text):
    print(text, file=sys.stderr, flush=True)


def until(what, condition, seconds=30):
    """Waits for a condition and returns what it gave; it may fail on the way with an OSError."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        with contextlib.suppress(OSError):
            if answer := condition():
                return answer
        time.sleep(0.01)
    raise Failure(f"{what}: not within {seconds} s")
