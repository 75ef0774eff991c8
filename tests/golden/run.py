#!/usr/bin/env python3
"""Text-form files through the optimizer: each .ic file and what must come out of it.

tests/golden/run.py --bin FOLDER [--update] [FILTER]

A file begins with a line `# velkor-opt OPTIONS`, and may go on with `# status 1` when the run must
fail, with `# shows messages` when what the program prints belongs to what is expected, and with
`# shows debug REGEX` when the lines of the debug file that match do. Beside NAME.ic stands NAME.out: what velkor-dis prints of the output, or what the program
printed when it must fail. With --update the expectations are written anew, for review.
"""
import argparse
import difflib
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent


def directives(text):
    """The options and the expected exit status that a file's first lines ask for."""
    options, status = None, 0
    for line in text.splitlines():
        if line.startswith("# velkor-opt"):
            options = line.split()[2:]
        elif line.startswith("# status"):
            status = int(line.split()[2])
    if options is None:
        raise SystemExit("golden: a file without a line `# velkor-opt OPTIONS`")
    return options, status


def shown_text(text, messages, debug_file):
    """What the file's directives want to see beside the output."""
    shown = ""
    if "# shows messages" in text.splitlines():
        shown += messages
    for pattern in re.findall(r"^# shows debug (.*)$", text, re.MULTILINE):
        lines = debug_file.read_text().splitlines(True)
        shown += "".join(line for line in lines if re.search(pattern, line))
    return "\n# shown\n" + shown if shown else ""


def run(source, bin_folder, work):
    """Returns the output text, or raises RuntimeError with what went wrong."""
    options, expected_status = directives(source.read_text())
    icode, output = work / "file.if", work / "file.opt"
    subprocess.run([bin_folder / "velkor-as", source, "-o", icode], check=True)
    # The program's own name reaches the listing; it shall not depend on where the program stands.
    result = subprocess.run(["velkor-opt", "-q", *options, "file.if", "file.opt"],
                            executable=bin_folder / "velkor-opt", cwd=work, capture_output=True,
                            text=True)
    if result.returncode != expected_status:
        raise RuntimeError(f"exit status {result.returncode}\n{result.stdout}{result.stderr}")
    if expected_status != 0:
        if output.exists() or not icode.exists():
            raise RuntimeError("a failed run left an output file, or took the input")
        return result.stdout
    listing = subprocess.run([bin_folder / "velkor-dis", output], check=True, capture_output=True,
                             text=True).stdout
    return listing + shown_text(source.read_text(), result.stdout, work / "file.odb")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--bin", type=lambda p: pathlib.Path(p).resolve(), required=True)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("filter", nargs="?", default="")
    arguments = parser.parse_args()
    passed = failed = 0
    for source in sorted(HERE.rglob("*.ic")):
        if arguments.filter not in str(source):
            continue
        expectation = source.with_suffix(".out")
        with tempfile.TemporaryDirectory() as folder:
            try:
                text = run(source, arguments.bin, pathlib.Path(folder))
            except (RuntimeError, subprocess.CalledProcessError) as error:
                print(f"FAIL {source.relative_to(HERE)}: {error}")
                failed += 1
                continue
        if arguments.update:
            expectation.write_text(text)
        expected = expectation.read_text() if expectation.exists() else ""
        if text == expected:
            passed += 1
            continue
        failed += 1
        print(f"FAIL {source.relative_to(HERE)}")
        sys.stdout.writelines(difflib.unified_diff(expected.splitlines(True),
                                                   text.splitlines(True), "expected", "found"))
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
