#!/usr/bin/env python3
"""Tests of velkor-cc: programs that it must reject, and the form of what it makes of others.

rejected/*.c   the comment at the head says where the first error stands and what it tells:
               error: LINE:COLUMN: MESSAGE
forms/*.c      the comment at the head holds lines "shows: TEXT"; the texts must stand in this order
               in the listing that velkor-dis makes, and "never: TEXT" nowhere in it
Limits of the format and the command line are tried on texts made here.
"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
FAILURES = []


def check(condition, what, detail=""):
    if not condition:
        FAILURES.append(what)
        print(f"FAILED {what}\n{detail}".rstrip())


class Tools:
    def __init__(self, folder):
        self.cc = folder / "velkor-cc"
        self.dis = folder / "velkor-dis"
        self.run = folder / "velkor-run"

    def compile(self, arguments, folder):
        return subprocess.run([self.cc, *arguments], cwd=folder, capture_output=True, text=True,
                              timeout=120)


def expect_error(tools, source, place, message, what, folder):
    output = folder / "out.if"
    outcome = tools.compile(["-o", output, source], folder)
    errors = [line for line in outcome.stderr.splitlines() if " error: " in line]
    wanted = f":{place}: error: {message}"
    check(outcome.returncode == 1, f"{what}: exit status", f"is {outcome.returncode}, not 1")
    check(errors and wanted in errors[0], f"{what}: first error",
          f"wanted {wanted}\n" + outcome.stderr[:600])
    check(not output.exists(), f"{what}: an output file is left")


def rejected(tools, folder):
    for source in sorted((HERE / "rejected").glob("*.c")):
        match = re.search(r"error: (\d+:\d+): (.*?)\s*\*/", source.read_text(), re.S)
        expect_error(tools, source, match[1], match[2], source.name, folder)


def forms(tools, folder):
    for source in sorted((HERE / "forms").glob("*.c")):
        output = folder / "out.if"
        outcome = tools.compile(["-o", output, source], folder)
        check(outcome.returncode == 0, f"{source.name}: compiles", outcome.stderr)
        listing = subprocess.run([tools.dis, output], capture_output=True, text=True).stdout
        lines = [" ".join(line.split()) for line in listing.splitlines()]
        text = "\n".join(lines)
        place = 0
        for kind, wanted in re.findall(r"^ *\*? *(shows|never): (.*?) *(?:\*/)?$",
                                       source.read_text(), re.M):
            if kind == "never":
                check(wanted not in text, f"{source.name}: never {wanted}", listing)
                continue
            found = text.find(wanted, place)
            check(found >= 0, f"{source.name}: shows {wanted}", listing)
            place = max(place, found + len(wanted))


def nested_blocks(depth):
    return ("int f(int x) {\n" + "".join(f"{{ int a{i} = x; x += a{i};\n" for i in range(depth)) +
            "}" * depth + " return x; }\n")


LIMITS = [
    ("scopes", nested_blocks(48), "49:1", "blocks nest deeper than 49 scopes"),
    ("labels", "int f(int x) {\n" + "if (x) x--;\n" * 30000 + "return x; }\n", "30001:1",
     "a function needs more than 29999 labels"),
    ("symbols", "".join(f"int g{i};\n" for i in range(32768)), "32768:5",
     "more than 32767 symbols of file level"),
    ("depth", "int f(int x) {\nreturn " + "x + " * 50001 + "x; }\n", "1:5",
     "an expression nests deeper than 50000 operators"),
]

WITHIN_LIMITS = [
    ("scopes", nested_blocks(47) + "int main(void) { return f(0); }\n", 0, ""),
    ("labels", "int f(int x) {\n" + "if (x) x--;\n" * 29999 +
     "return x; }\nint main(void) { return f(30003); }\n", 4, ""),
    ("depth", "int main(void) {\nint x = 1;\nreturn (" + "-~" * 12000 + "x) & 127; }\n",
     12001 & 127, ""),
    ("literal", "int puts(const char *);\nint main(void) { return puts(\"" + "abcdefgh" * 700 +
     "\") < 0; }\n", 0, "abcdefgh" * 700 + "\n"),
]


def limits(tools, folder):
    source = folder / "limit.c"
    for name, text, place, message in LIMITS:
        source.write_text(text)
        expect_error(tools, source, place, message, f"limit of {name}", folder)
    for name, text, status, printed in WITHIN_LIMITS:
        source.write_text(text)
        outcome = tools.compile([source], folder)
        check(outcome.returncode == 0, f"within the limit of {name}", outcome.stderr[:600])
        run = subprocess.run([tools.run, folder / "limit.if"], capture_output=True, text=True)
        check((run.returncode, run.stdout) == (status, printed),
              f"within the limit of {name}: result", f"{run.returncode} {run.stderr[:300]}")


def command_line(tools, folder):
    (folder / "headers").mkdir()
    (folder / "headers" / "own.h").write_text("#define BASE 40\n")
    (folder / "program.c").write_text(
        "#include <own.h>\n#include <stdlib.h>\n#ifdef GONE\n#error still here\n#endif\n"
        "int main(void) { return abs(-BASE) + MORE + ONE; }\n")
    arguments = ["-Iheaders", "-D", "MORE=1", "-DONE", "-DGONE", "-U", "GONE", "program.c"]
    outcome = tools.compile(arguments, folder)
    check(outcome.returncode == 0 and outcome.stderr == "", "options", outcome.stderr)
    run = subprocess.run([tools.run, folder / "program.if"])
    check(run.returncode == 42, "options: result", str(run.returncode))
    first = (folder / "program.if").read_bytes()
    tools.compile(arguments, folder)
    check(first == (folder / "program.if").read_bytes(), "same bytes on every run")
    for bad in (["-x", "program.c"], [], ["program.c", "program.c"], ["program.c", "-o"]):
        check(tools.compile(bad, folder).returncode == 2, f"bad usage {bad}")
    check(tools.compile(["--help"], folder).returncode == 0, "--help")
    check(tools.compile(["missing.c"], folder).returncode == 1, "missing file")
    outcome = tools.compile(["-o", "missing/program.if", *arguments], folder)
    check(outcome.returncode == 1 and "missing/program.if" in outcome.stderr, "unwritable output",
          outcome.stderr)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--bin", required=True, type=pathlib.Path, help="folder of the tools")
    tools = Tools(parser.parse_args().bin.resolve())
    for test in (rejected, forms, limits, command_line):
        with tempfile.TemporaryDirectory(prefix="velkor-cc-") as folder:
            test(tools, pathlib.Path(folder))
    print(f"{len(FAILURES)} failures")
    return 1 if FAILURES else 0


if __name__ == "__main__":
    sys.exit(main())
