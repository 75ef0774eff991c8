#!/usr/bin/env python3
"""The examples of the documents: what a page shows must be what the programs print.

tests/docs/run.py --bin FOLDER [--update] [PAGE ...]

A C block of a page is followed by a block that begins with "$ velkor opt example.if OPTIONS
--dump-changed". It shows some of the sections that this prints for the C block ("--- f() after
PASS" and the lines below it). Each section that stands there is compared; sections that a page
leaves out are not. With --update the sections are written anew, for review.
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"
PROMPT = "$ velkor opt example.if "
BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def sections(text):
    """Heading and lines of each section of a dump, in order."""
    parts = re.split(r"^(--- .*)\n", text, flags=re.MULTILINE)
    return list(zip(parts[1::2], parts[2::2]))


def dump(bin_folder, program, options):
    """What `velkor opt --dump-changed` prints for a C program, as sections by heading."""
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        (work / "example.c").write_text(program)
        velkor = bin_folder / "velkor"
        subprocess.run([velkor, "cc", "example.c", "-o", "example.if"], cwd=work, check=True)
        output = subprocess.run([velkor, "opt", "example.if", *options, "-o", "example.opt"],
                                cwd=work, check=True, capture_output=True, text=True).stdout
    return dict(sections(output))


class Page:
    """One document: its text, with the shown sections replaced by what was printed."""

    def __init__(self, path, bin_folder):
        self.examples, self.faults = 0, []
        self.bin_folder = bin_folder
        self.program = None
        self.old = path.read_text()
        self.new = BLOCK.sub(self.block, self.old)

    def block(self, match):
        language, text = match.groups()
        if language == "c":
            self.program = text
        if not text.startswith(PROMPT):
            return match.group(0)
        command, shown = text.split("\n", 1)
        printed = dump(self.bin_folder, self.program, command[len(PROMPT):].split())
        self.examples += 1
        lines = [command + "\n"]
        for heading, _ in sections(shown):
            if heading not in printed:
                self.faults.append(f"{command}\n  prints no section {heading!r}")
            lines.append(f"{heading}\n{printed.get(heading, '')}")
        return f"```{language}\n{''.join(lines)}```"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--bin", type=lambda p: pathlib.Path(p).resolve(), required=True)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("pages", nargs="*", type=pathlib.Path, default=sorted(DOCS.glob("*.md")))
    arguments = parser.parse_args()
    examples = failed = 0
    for path in arguments.pages:
        page = Page(path, arguments.bin)
        examples += page.examples
        if page.new != page.old and not page.faults:
            if arguments.update:
                path.write_text(page.new)
            else:
                page.faults.append("an example differs; see it with --update and git diff")
        for fault in page.faults:
            print(f"FAIL {path.name}: {fault}")
        failed += bool(page.faults)
    print(f"{examples} examples, {failed} pages failed")
    return 1 if failed or not examples else 0


if __name__ == "__main__":
    sys.exit(main())
