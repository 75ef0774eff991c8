#!/usr/bin/env python3
"""Random programs through the tools: csmith writes them, a native run says what is right.

For each seed: csmith, the oracle (gcc for 32 bits), the same under UBSan, then velkor-cc +
velkor-run and velkor-opt in each mode. Programs that are not clean under UBSan, or that run too
long, prove nothing: they are skipped and counted. Exit status 0 if no program disagrees.
"""

import argparse
import concurrent.futures
import os
import pathlib
import shutil
import sys
import tempfile
import threading

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent / "exec"))
import pipeline  # noqa: E402

INCLUDE = HERE / "include"
# No 64-bit arithmetic, which the target lacks; no packed structures, on which compilers differ.
CSMITH_FLAGS = ["--no-longlong", "--no-math64", "--no-packed-struct"]
GENERATE_SECONDS = 30
# A native run that takes longer is a program without end, or too long for the judge.
NATIVE_SECONDS = 2
SANITIZED_SECONDS = 10
# Operations that the judge may execute, optimized or not.
STEP_LIMIT = 300_000_000


class Skipped(Exception):
    """The program proves nothing; the text says why."""


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("count", type=int, nargs="?", default=100, help="number of seeds")
    parser.add_argument("--start", type=int, default=1, help="first seed")
    parser.add_argument("--seed", type=int, help="only this seed; says also why it is skipped")
    parser.add_argument("--levels", default="0,1", help="optimizer levels, e.g. 0,1 (or none)")
    parser.add_argument("--modes", default=None,
                        help="modes instead of levels: quick, all, none, names as in run.py")
    parser.add_argument("--bin", default=None, help="folder of the tools (default: newest build)")
    parser.add_argument("--jobs", type=int, default=2, help="programs at a time")
    parser.add_argument("--csmith", default="", help="further csmith options, e.g. '--float'")
    parser.add_argument("--all-failures", action="store_true",
                        help="go through all modes, not only to the first that differs")
    parser.add_argument("--text-form", action="store_true",
                        help="check too that files survive velkor-dis and velkor-as")
    parser.add_argument("--native-only", action="store_true",
                        help="only generate and run natively: tells how many programs are of use")
    parser.add_argument("--keep", default=None, help="folder that receives failing programs")
    return parser.parse_args()


def generate(seed, source, extra):
    # A third of the programs mark functions inline.
    flags = [*CSMITH_FLAGS, *(["--inline-function"] if int(seed) % 3 == 0 else [])]
    command = ["csmith", *flags, *extra.split(), "--seed", seed, "-o", source]
    try:
        pipeline.must_succeed(command, GENERATE_SECONDS, cwd=source.parent)
    except pipeline.StepFailure as failure:
        raise Skipped(f"generator: {failure}") from failure


def native_outcome(source, folder):
    """The oracle's Outcome, or Skipped if the program does not end soon or is not clean."""
    try:
        expected = pipeline.oracle(source, folder, [INCLUDE], seconds=NATIVE_SECONDS)
    except pipeline.StepFailure as failure:
        raise Skipped(f"native run: {failure}") from failure
    try:
        complaint = pipeline.sanitized_complaint(
            source, folder, pipeline.UNDEFINED_FLAGS, [INCLUDE], SANITIZED_SECONDS)
    except pipeline.StepFailure as failure:
        raise Skipped(f"sanitized run: {failure}") from failure
    if complaint:
        raise Skipped(complaint)
    if expected.status >= 128:
        raise Skipped(f"native run: status {expected.status}")
    return expected


def check_seed(seed, arguments, tools, modes):
    """Result: ("passed" | "skipped" | "failed", report lines)."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix=f"velkor-fuzz-{seed}-"))
    source = folder / f"seed{seed}.c"
    try:
        generate(seed, source, arguments.csmith)
        expected = native_outcome(source, folder)
        if arguments.native_only:
            return "passed", []
        failures = pipeline.compare(
            source, expected, tools, modes, folder, [INCLUDE],
            first_only=not arguments.all_failures, text_form=arguments.text_form, repeat=False,
            limit=STEP_LIMIT)
        if failures and failures[0].mode == "cc" and "more than" in failures[0].reason:
            raise Skipped(failures[0].reason)
    except Skipped as reason:
        return "skipped", [f"seed {seed} skipped: {reason}"]
    except Exception as error:  # a fault of the harness must not end the whole run unseen
        return "failed", [f"FAIL seed {seed} [harness] {type(error).__name__}: {error}"]
    finally:
        if arguments.keep and "failures" in locals() and locals()["failures"]:
            pathlib.Path(arguments.keep).mkdir(parents=True, exist_ok=True)
            shutil.copy(source, arguments.keep)
        shutil.rmtree(folder, ignore_errors=True)
    lines = []
    for failure in failures:
        mode = "none" if failure.mode == "cc" else failure.mode
        again = [pathlib.Path(__file__), "--bin", tools.folder, "--seed", seed, f"--modes={mode}"]
        if arguments.csmith:
            again.append(f"--csmith={arguments.csmith}")
        lines.append(f"FAIL seed {seed} [{failure.mode}] {failure.reason}")
        lines.append(f"     {pipeline.shell_line(again)}")
    return ("failed" if failures else "passed"), lines


def main():
    arguments = parse_arguments()
    if not shutil.which("csmith"):
        print("fuzz.py: error: csmith is not installed (Debian package csmith)", file=sys.stderr)
        return 2
    tools = pipeline.Tools(arguments.bin or pipeline.default_tools_folder())
    levels = arguments.levels.split(",")
    named = arguments.modes or (
        "none" if levels == ["none"] else ",".join(f"-o{level}" for level in levels))
    modes = pipeline.choose_modes(named)
    needed = [] if arguments.native_only else ["velkor-cc", "velkor-run"]
    missing = [name for name in needed + ["velkor-opt"] * bool(modes and needed)
               if not tools.has(name)]
    if missing:
        print(f"fuzz.py: error: {tools.folder} has no {', '.join(missing)}", file=sys.stderr)
        return 2

    first = arguments.start if arguments.seed is None else arguments.seed
    seeds = range(first, first + (1 if arguments.seed is not None else arguments.count))
    print(f"seeds {seeds.start} to {seeds.stop - 1}, modes {named}", flush=True)
    totals = {"passed": 0, "skipped": 0, "failed": 0}
    lock = threading.Lock()

    def work(seed):
        verdict, lines = check_seed(seed, arguments, tools, modes)
        with lock:
            totals[verdict] += 1
            if verdict == "failed" or (lines and arguments.seed is not None):
                print("\n".join(lines), flush=True)
            done = sum(totals.values())
            if done % 50 == 0:
                print(f"... {done} of {len(seeds)}", flush=True)

    with concurrent.futures.ThreadPoolExecutor(max_workers=max(1, arguments.jobs)) as pool:
        list(pool.map(work, seeds))
    print(", ".join(f"{count} {verdict}" for verdict, count in totals.items()))
    return 1 if totals["failed"] else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        os._exit(130)
