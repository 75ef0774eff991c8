#!/usr/bin/env python3
"""Runs the programs of tests/exec through the tools and compares them with native runs.

For each program: gcc for 32 bits is the oracle, then velkor-cc + velkor-run, then velkor-cc +
velkor-opt + velkor-run in each mode of the table in pipeline.py. Exit status 0 if all agree.
"""

import argparse
import concurrent.futures
import json
import math
import os
import pathlib
import shutil
import sys
import tempfile

sys.dont_write_bytecode = True
import pipeline  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
STATISTICS_LEVELS = ["-o0", "-o1", "-o2", "-o3"]
# Passes that leave the function as it is: analyses, and the writer.
READING_PASSES = {"write_function"}
PASS_FIGURES = ["runs", "changed", "nodes_before", "nodes_after"]


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--bin", default=None, help="folder of the tools (default: newest build)")
    parser.add_argument("--filter", default="", help="only programs whose path contains this text")
    parser.add_argument("--jobs", type=int, default=2, help="programs at a time")
    parser.add_argument("--keep", action="store_true", help="keep the scratch folders of failures")
    parser.add_argument("--modes", default="quick",
                        help="quick, all, none, or names such as -o1,-o3-z (write --modes=-o1)")
    parser.add_argument("--cache", default=str(pipeline.ROOT / "build" / "oracle"),
                        help="folder where the oracle's outcomes are kept")
    parser.add_argument("--stats", action="store_true",
                        help="print dynamic operation counts for each program and level instead")
    parser.add_argument("--passes", type=int, choices=range(4), metavar="LEVEL",
                        help="print instead how many functions each pass changed at this level; "
                             "a pass that changed none anywhere is a failure")
    parser.add_argument("--sanitize", action="store_true",
                        help="check instead that native runs are clean under ASan and UBSan")
    parser.add_argument("--list", action="store_true", help="print the programs and stop")
    return parser.parse_args()


def name_of(source):
    return str(source.relative_to(HERE))


class Scratch:
    """A scratch folder that is removed, or kept and named when asked for."""

    def __init__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="velkor-exec-"))
        self.keep = False

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if not self.keep:
            shutil.rmtree(self.path, ignore_errors=True)


def check_program(source, arguments, tools, modes):
    """Result: list of report lines, empty if the program passes."""
    with Scratch() as scratch:
        try:
            expected = pipeline.oracle(source, scratch.path, cache=arguments.cache)
        except pipeline.StepFailure as failure:
            return [f"FAIL {name_of(source)} [oracle] {failure}"]
        failures = pipeline.compare(source, expected, tools, modes, scratch.path)
        lines = []
        for failure in failures:
            mode = "none" if failure.mode == "cc" else failure.mode
            again = [pathlib.Path(__file__), "--bin", tools.folder, "--filter", name_of(source),
                     f"--modes={mode}"]
            lines.append(f"FAIL {name_of(source)} [{failure.mode}] {failure.reason}\n"
                         f"     {pipeline.shell_line(again)}")
        if failures and arguments.keep:
            scratch.keep = True
            lines.append(f"     files in {scratch.path}")
        return lines


def sanitize_program(source):
    """Result: list of report lines, empty if the native run is clean and repeatable."""
    with Scratch() as scratch:
        lines = []
        try:
            complaint = pipeline.sanitized_complaint(source, scratch.path, pipeline.ADDRESS_FLAGS)
            if complaint:
                lines.append(f"FAIL {name_of(source)} [sanitizers] {complaint}")
            # Neither the level nor another compiler, which evaluates arguments in the opposite
            # order, may change what the program prints.
            plain = pipeline.oracle(source, scratch.path)
            for compiler, level in (("gcc", "-O2"), ("clang-14", "-O0"), ("clang-14", "-O1")):
                if not shutil.which(compiler):
                    continue
                flags = [flag for flag in pipeline.ORACLE_FLAGS if flag != "-O0"] + [level]
                program = scratch.path / "other"
                command = pipeline.native_command(source, program, flags)
                pipeline.must_succeed([compiler, *command[1:]], pipeline.COMPILE_SECONDS)
                status, output, _ = pipeline.run_step([program], pipeline.RUN_SECONDS)
                difference = pipeline.Outcome(status, output).differs_from(plain)
                if difference:
                    lines.append(f"FAIL {name_of(source)} [{compiler} {level}] {difference}")
        except pipeline.StepFailure as failure:
            lines.append(f"FAIL {name_of(source)} [native] {failure}")
        return lines


def run_all(sources, jobs, work):
    """Calls work(source) for each program, `jobs` at a time; prints lines; result: exit status."""
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(1, jobs)) as pool:
        for lines in pool.map(work, sources):
            if lines:
                failed += 1
                print("\n".join(lines), flush=True)
    print(f"{len(sources) - failed} passed, {failed} failed")
    return 1 if failed or not sources else 0


def count_operations(source, tools):
    """Operation counts of a program: unoptimized, then one for each level (None = no run)."""
    counts = []
    with Scratch() as scratch:
        icode = scratch.path / "p.if"
        try:
            tools.compile(source, icode)
            counts.append(operations(tools.statistics(icode)))
        except pipeline.StepFailure as failure:
            print(f"{name_of(source)}: {failure}", file=sys.stderr)
            return [None] * (1 + len(STATISTICS_LEVELS))
        for mode in pipeline.choose_modes(",".join(STATISTICS_LEVELS)):
            try:
                result = tools.optimize(icode, scratch.path / mode.name, mode)
                counts.append(operations(tools.statistics(result)))
            except pipeline.StepFailure as failure:
                print(f"{name_of(source)} [{mode.name}]: {failure}", file=sys.stderr)
                counts.append(None)
    return counts


def operations(record):
    """The number of executed operations in a statistics record of velkor-run."""
    for key in ("operations", "total", "steps"):
        value = record.get(key)
        if isinstance(value, dict):
            value = value.get("total", sum(v for v in value.values() if isinstance(v, int)))
        if isinstance(value, int):
            return value
    raise pipeline.StepFailure(f"velkor-run: no operation count in {sorted(record)}")


def print_statistics(sources, arguments, tools):
    print(f"{'program':34} {'unoptimized':>12}" + "".join(f"{x:>17}" for x in STATISTICS_LEVELS))
    logarithms = [[] for _ in STATISTICS_LEVELS]
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(1, arguments.jobs)) as pool:
        for source, counts in zip(sources, pool.map(lambda s: count_operations(s, tools), sources)):
            base = counts[0]
            cells = []
            for column, count in enumerate(counts[1:]):
                if not base or not count:
                    cells.append(f"{'-':>17}")
                    continue
                logarithms[column].append(math.log(count / base))
                cells.append(f"{count:>10} {count / base:>6.3f}")
            print(f"{name_of(source):34} {base or '-':>12}" + "".join(cells), flush=True)
    means = [f"{math.exp(sum(x) / len(x)):>17.3f}" if x else f"{'-':>17}" for x in logarithms]
    print(f"{'geometric mean of the ratios':34} {'':>12}" + "".join(means))
    return 0


def pass_statistics(source, level, tools):
    """What `velkor opt --stats` says of a program's passes: a record each, in their order."""
    with Scratch() as scratch:
        icode = scratch.path / "p.if"
        tools.compile(source, icode)
        return json.loads(pipeline.must_succeed(
            [tools.path("velkor"), "opt", f"-O{level}", "--stats=json", icode],
            pipeline.OPTIMIZE_SECONDS))


def print_passes(sources, arguments, tools):
    """Sums the passes' statistics over all programs; result: exit status.

    Fails if a pass of the level changed no function of any program: either it has stopped working,
    or no program shows what it is for.
    """
    level = arguments.passes
    sums = {}
    failed = []
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(1, arguments.jobs)) as pool:
        runs = [(source, pool.submit(pass_statistics, source, level, tools)) for source in sources]
        for source, run in runs:
            try:
                for record in run.result():
                    if record["level"] <= level:
                        row = sums.setdefault(record["pass"], dict.fromkeys(PASS_FIGURES, 0))
                        for figure in PASS_FIGURES:
                            row[figure] += record[figure]
            except pipeline.StepFailure as failure:
                failed.append(f"{name_of(source)}: {failure}")
    print(f"{'pass':24} {'runs':>8} {'changed':>8} {'nodes before':>13} {'nodes after':>13}")
    for name, row in sums.items():
        print(f"{name:24} {row['runs']:8} {row['changed']:8} {row['nodes_before']:13} "
              f"{row['nodes_after']:13}")
        if row["changed"] == 0 and name not in READING_PASSES:
            failed.append(f"{name}: changed no function of {len(sources)} programs")
    print("".join(f"FAIL {line}\n" for line in failed), end="")
    return 1 if failed or not sources else 0


def main():
    arguments = parse_arguments()
    sources = sorted(path for path in HERE.glob("*/*.c") if arguments.filter in name_of(path))
    if arguments.list:
        print("\n".join(name_of(source) for source in sources))
        return 0
    if arguments.sanitize:
        return run_all(sources, arguments.jobs, sanitize_program)
    tools = pipeline.Tools(arguments.bin or pipeline.default_tools_folder())
    modes = pipeline.choose_modes(arguments.modes)
    needed = ["velkor-cc", "velkor-run"] + (["velkor-opt"] if modes or arguments.stats else [])
    if arguments.passes is not None:
        needed = ["velkor-cc", "velkor"]
    missing = [name for name in needed if not tools.has(name)]
    if missing:
        print(f"run.py: error: {tools.folder} has no {', '.join(missing)}", file=sys.stderr)
        return 2
    if arguments.passes is not None:
        return print_passes(sources, arguments, tools)
    if arguments.stats:
        return print_statistics(sources, arguments, tools)
    return run_all(sources, arguments.jobs,
                   lambda source: check_program(source, arguments, tools, modes))


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        os._exit(130)
