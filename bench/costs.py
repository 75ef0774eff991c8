"""What a command costs: wall-clock time, CPU time, peak memory. Needs `cost` of the same build."""
import dataclasses
import re
import subprocess

# CPU seconds after which a command is stopped.
TIME_LIMIT = 60


class Failed(Exception):
    """The command did not end with status 0; the text names it and its first complaint."""


@dataclasses.dataclass
class Cost:
    wall: float  # seconds
    cpu: float  # seconds, user and system
    peak: float  # megabytes


def run_once(bin_folder, command):
    """Runs the command; result: Cost. Raises Failed."""
    words = [str(word) for word in command]
    done = subprocess.run([bin_folder / "cost", str(TIME_LIMIT), *words], capture_output=True,
                          text=True, errors="replace", check=False)
    complaint = done.stderr.strip().splitlines()[:1]
    if done.returncode != 0:
        raise Failed(f"cost: {''.join(complaint)}")
    wall, cpu, peak, status = done.stdout.split()
    if status != "0":
        raise Failed(f"status {status} after {float(cpu):.1f} s: {' '.join(words)}: "
                     f"{''.join(complaint)[:100]}")
    return Cost(float(wall), float(cpu), int(peak) / 1024)


def best(bin_folder, command, prepare=lambda: None, repeats=3, enough=float("inf")):
    """The least times and the greatest memory of several runs. Raises Failed.

    prepare  called in front of each run
    enough   a run of so many CPU seconds is the last
    """
    result = Cost(float("inf"), float("inf"), 0.0)
    for _ in range(repeats):
        prepare()
        run = run_once(bin_folder, command)
        result = Cost(min(result.wall, run.wall), min(result.cpu, run.cpu),
                      max(result.peak, run.peak))
        if run.cpu >= enough:
            break
    return result


def instructions(command):
    """Instructions that a command executes: the same on every run and under any load, and blind to
    what the caches cost. Raises Failed."""
    words = [str(word) for word in command]
    done = subprocess.run(["valgrind", "--tool=cachegrind", "--cache-sim=no",
                           "--cachegrind-out-file=/dev/null", *words], capture_output=True,
                          text=True, errors="replace", check=False)
    count = re.search(r"I\s+refs:\s+([\d,]+)", done.stderr)
    if done.returncode != 0 or not count:
        raise Failed(f"status {done.returncode}: {' '.join(words)}")
    return int(count[1].replace(",", ""))
