"""What the measuring scripts share."""

import pathlib
import sys
import time

patience = 30  # seconds


def await_(condition, what):
    last = time.monotonic() + patience
    while not (found := condition()):
        if time.monotonic() > last:
            sys.exit(f"there is no {what} after {patience} seconds")
        time.sleep(0.01)
    return found


def pss(process):
    """A process's own memory and its share of what is shared, in kB."""
    rollup = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text()
    return int(rollup.split("\nPss:")[1].split()[0])
