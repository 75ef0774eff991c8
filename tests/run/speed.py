#!/usr/bin/env python3
"""How many operations a second velkor-run executes: speed.py FOLDER_OF_THE_TOOLS"""

import json
import pathlib
import subprocess
import sys
import tempfile
import time

RUNS = 5


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    tools = pathlib.Path(sys.argv[1])
    source = pathlib.Path(__file__).resolve().parent / "speed.c"
    with tempfile.TemporaryDirectory() as scratch:
        program = str(pathlib.Path(scratch) / "speed.if")
        subprocess.run([tools / "velkor-cc", source, "-o", program], check=True)
        run = [tools / "velkor-run", program]
        counts = json.loads(subprocess.run([run[0], "--stats=json", program], check=True,
                                           capture_output=True, text=True).stderr)
        seconds = []
        for _ in range(RUNS):
            start = time.perf_counter()
            subprocess.run(run, check=True, stdout=subprocess.DEVNULL)
            seconds.append(time.perf_counter() - start)
    best = min(seconds)
    print(f"{counts['operations']} operations, {counts['steps']} steps in {best:.3f} s: "
          f"{counts['operations'] / best / 1e6:.0f} million operations a second")


if __name__ == "__main__":
    main()
