"""What the harnesses share: the oracle, the tool chain, and the comparison of the two.

A C program is compiled natively for 32 bits (the oracle) and sent through velkor-cc, velkor-opt and
velkor-run. Every way through the tools must print the same bytes and end with the same status.
Used by tests/exec/run.py, tests/fuzz/fuzz.py and scripts/reduce.
"""

import base64
import dataclasses
import functools
import hashlib
import json
import os
import pathlib
import shlex
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]

ORACLE_FLAGS = ["-m32", "-msse2", "-mfpmath=sse", "-fwrapv", "-O0", "-w", "-std=gnu99"]
UNDEFINED_FLAGS = ["-fsanitize=undefined", "-fno-sanitize-recover=all"]
ADDRESS_FLAGS = ["-fsanitize=undefined,address", "-fno-sanitize-recover=all"]

# Seconds allowed for one step. A debug run of the optimizer writes long files, hence its room.
COMPILE_SECONDS = 60
OPTIMIZE_SECONDS = 120
RUN_SECONDS = 60
# Operations the judge may execute before it calls a program run-away.
STEP_LIMIT = 200_000_000

JUDGE_STEP_LIMIT = 124
JUDGE_ERROR = 125


@dataclasses.dataclass(frozen=True)
class Mode:
    """One way through the optimizer: its name in reports and the arguments of velkor-opt."""

    name: str
    flags: tuple
    quick: bool


def _mode(flags, quick=False):
    words = tuple(flags.split())
    return Mode("".join(words), words, quick)


# Each option stands at the levels where a pass reads it. Left out are the options that promise
# something about the program which the test programs do not keep (-t, -j), change the language
# (-k, -e), or are read by nothing.
MODES = [
    _mode("-o0", quick=True),
    _mode("-o1", quick=True),
    _mode("-o2", quick=True),
    _mode("-o3", quick=True),
    # Target mode 1 has the 16-bit instruction forms; mode 0 is the default of the rows above.
    _mode("-o0 -v1"),
    _mode("-o1 -v1"),
    _mode("-o2 -v1"),
    _mode("-o3 -v1"),
    _mode("-o2 -v0"),
    _mode("-o1 -z"),
    _mode("-o2 -z"),
    _mode("-o3 -z"),
    _mode("-o1 -a"),
    _mode("-o2 -a"),
    _mode("-o3 -a"),
    _mode("-o1 -f"),
    _mode("-o2 -f"),
    _mode("-o3 -f"),
    _mode("-o1 -h0"),
    _mode("-o2 -h0"),
    _mode("-o2 -h1"),
    _mode("-o3 -h0"),
    _mode("-o3 -i0"),
    _mode("-o3 -i200"),
    _mode("-o3 -p0"),
    _mode("-o3 -p1"),
    _mode("-o3 -p3"),
    _mode("-o2 -r"),
    _mode("-o2 -s"),
    _mode("-o3 -s"),
    # Debug runs, and the passes' other forms that only a debug run can choose.
    _mode("-o1 -#"),
    _mode("-o3 -#"),
    _mode("-o2 -##"),
    _mode("-o2 -#v"),
    _mode("-o3 -#v"),
    _mode("-o2 -# -x1"),
    _mode("-o2 -# -x2"),
    _mode("-o2 -# -x4"),
    _mode("-o3 -# -x6"),
    _mode("-o2 -# -x8"),
    _mode("-o3 -i200 -v1 -z -a"),
]


def choose_modes(text):
    """Modes for the argument of --modes: `quick`, `all`, `none`, or names such as `-o1,-o3-z`.

    Names may be written without the leading dash. A name that is in no row of the table is taken
    as flags of its own: "o2-q" gives `-o2 -q`.
    """
    if text == "none":
        return []
    if text == "all":
        return list(MODES)
    if text == "quick":
        return [mode for mode in MODES if mode.quick]
    chosen = []
    known = {mode.name: mode for mode in MODES}
    for name in text.replace(" -", "-").split(","):
        name = name if name.startswith("-") else "-" + name
        flags = " ".join("-" + part for part in name.split("-")[1:])
        chosen.append(known.get(name) or _mode(flags))
    return chosen


@dataclasses.dataclass(frozen=True)
class Outcome:
    """What a run shows: its standard output and its status as a shell tells it (128 + signal)."""

    status: int
    output: bytes

    def differs_from(self, expected):
        """Empty text if both agree, else a line that says where they part."""
        if self.output != expected.output:
            mine, right = self.output.splitlines(), expected.output.splitlines()
            for number, (a, b) in enumerate(zip(mine, right), 1):
                if a != b:
                    return f"output line {number}: expected {_shorten(b)}, got {_shorten(a)}"
            if len(mine) != len(right):
                return f"output has {len(mine)} lines, expected {len(right)}"
            return "output differs in its last newline"
        if self.status != expected.status:
            return f"exit status {self.status}, expected {expected.status}"
        return ""


def _shorten(line):
    text = line.decode("latin-1")
    return repr(text if len(text) <= 90 else text[:87] + "...")


class StepFailure(Exception):
    """A step that did not do its work: a tool failed, or ran out of time."""


def run_step(command, seconds, cwd=None, environment=None):
    """Runs a command. Result: (status as a shell tells it, standard output, standard error).

    environment  the variables of the command, None: those of this process
    A command that exceeds `seconds` raises StepFailure.
    """
    try:
        done = subprocess.run(
            [str(word) for word in command],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            cwd=cwd,
            env=environment,
            timeout=seconds,
            check=False,
        )
    except subprocess.TimeoutExpired as error:
        raise StepFailure(f"{pathlib.Path(command[0]).name}: no end after {seconds} s") from error
    except OSError as error:
        raise StepFailure(f"{command[0]}: {error.strerror}") from error
    status = done.returncode if done.returncode >= 0 else 128 - done.returncode
    return status, done.stdout, done.stderr


def must_succeed(command, seconds, cwd=None, environment=None):
    """Runs a command that has to end with status 0; raises StepFailure with its complaint."""
    status, output, complaint = run_step(command, seconds, cwd, environment)
    if status != 0:
        lines = (complaint or output).decode("latin-1").strip().splitlines()
        reason = next((line for line in lines if "error" in line.lower()), lines[0] if lines else "")
        raise StepFailure(f"{pathlib.Path(command[0]).name}: status {status}: {reason.strip()[:300]}")
    return output


# ---- The oracle -------------------------------------------------------------------------------


def oracle(source, folder, includes=(), cache=None, seconds=RUN_SECONDS):
    """Compiles and runs `source` natively in `folder`; result: Outcome.

    With `cache` (a folder) the outcome is kept there under the hash of all that it depends on:
    the program, the headers of the include folders, and the flags.
    """
    entry = None
    if cache is not None:
        digest = hashlib.sha256(" ".join(ORACLE_FLAGS).encode())
        headers = [h for place in includes for h in sorted(pathlib.Path(place).glob("*.h"))]
        for path in [source, *headers]:
            digest.update(pathlib.Path(path).read_bytes() + b"\0")
        entry = pathlib.Path(cache) / (digest.hexdigest() + ".json")
        if entry.exists():
            kept = json.loads(entry.read_text())
            return Outcome(kept["status"], base64.b64decode(kept["output"]))
    program = pathlib.Path(folder) / "oracle"
    must_succeed(native_command(source, program, ORACLE_FLAGS, includes), COMPILE_SECONDS)
    status, output, _ = run_step([program], seconds)
    if entry is not None:
        entry.parent.mkdir(parents=True, exist_ok=True)
        kept = {"status": status, "output": base64.b64encode(output).decode()}
        scratch = entry.with_suffix(f".{os.getpid()}.tmp")
        scratch.write_text(json.dumps(kept))
        scratch.replace(entry)
    return Outcome(status, output)


def native_command(source, program, flags, includes=()):
    """The gcc command that makes `program` from `source`."""
    return ["gcc", *flags, *[f"-I{i}" for i in includes], source, "-o", program, "-lm"]


def sanitized_complaint(source, folder, flags, includes=(), seconds=RUN_SECONDS):
    """Runs `source` under the sanitizers of `flags`; the first complaint, or "" for a clean run.

    -fwrapv stays away here: signed overflow is a complaint.
    """
    program = pathlib.Path(folder) / "sanitized"
    base = [flag for flag in ORACLE_FLAGS if flag != "-fwrapv"]
    must_succeed(native_command(source, program, [*base, *flags], includes), COMPILE_SECONDS)
    _, _, complaint = run_step([program], seconds)
    for line in complaint.decode("latin-1").splitlines():
        if "runtime error" in line or "Sanitizer" in line:
            return line.strip()
    return ""


# ---- Another address space --------------------------------------------------------------------

# Variables that fill a second run's stack from below, and make its heap grow in other steps out of
# memory that is not zero: nothing in the output may depend on where things lie, or on what lay there.
OTHER_ENVIRONMENT = {
    "VELKOR_PADDING": "x" * 60_000,
    "MALLOC_PERTURB_": "165",
    "MALLOC_TOP_PAD_": "1000003",
    "MALLOC_MMAP_THRESHOLD_": "4096",
    "MALLOC_ARENA_MAX": "1",
}


@functools.lru_cache(maxsize=None)
def other_layout_command():
    """Words in front of a command that give it an address space laid out from the other end.

    Without random addresses and with libraries at the bottom, so that it differs from every other
    run. Empty where the system does not allow that (containers may not): the environment is left.
    """
    words = ("setarch", os.uname().machine, "--addr-no-randomize", "--addr-compat-layout")
    try:
        done = subprocess.run([*words, "true"], stdin=subprocess.DEVNULL, capture_output=True,
                              check=False)
    except OSError:
        return ()
    return words if done.returncode == 0 else ()


# ---- The tools --------------------------------------------------------------------------------


class Tools:
    """The programs of one build, found in the folder `bin`."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()

    def path(self, name):
        return self.folder / name

    def has(self, name):
        return self.path(name).is_file()

    def compile(self, source, target, includes=()):
        """C to icode."""
        options = [word for place in includes for word in ("-I", place)]
        must_succeed([self.path("velkor-cc"), *options, "-o", target, source], COMPILE_SECONDS)
        if not pathlib.Path(target).is_file():
            raise StepFailure("velkor-cc: status 0, but no output file")

    def optimize(self, icode, folder, mode, other_layout=False):
        """Optimizes a copy of `icode` in the new folder `folder`; result: path of the output.

        With other_layout the program runs in an address space of another shape.
        The names there are always p.if and p.opt: the command line is written into the file, so
        two runs can only be compared byte for byte if theirs are the same.
        """
        folder = pathlib.Path(folder)
        folder.mkdir()
        shutil.copyfile(icode, folder / "p.if")
        command = [self.path("velkor-opt"), "-q", *mode.flags, "p.if", "p.opt"]
        environment = None
        if other_layout:
            command = [*other_layout_command(), *command]
            environment = {**os.environ, **OTHER_ENVIRONMENT}
        must_succeed(command, OPTIMIZE_SECONDS, cwd=folder, environment=environment)
        if not (folder / "p.opt").is_file():
            raise StepFailure("velkor-opt: status 0, but no output file")
        keeps_input = any("#" in flag for flag in mode.flags)
        if (folder / "p.if").exists() != keeps_input:
            told = "kept" if keeps_input else "consumed"
            raise StepFailure(f"velkor-opt: the input file should have been {told}")
        return folder / "p.opt"

    def check_finished(self, icode):
        """Raises StepFailure unless an optimized file is fit for a code generator."""
        must_succeed([self.path("velkor"), "check", icode], COMPILE_SECONDS)

    def run(self, icode, limit=STEP_LIMIT, seconds=RUN_SECONDS):
        """Runs an icode file; result: Outcome. Errors of the judge itself raise StepFailure."""
        command = [self.path("velkor-run"), "--max-steps", limit, icode]
        status, output, complaint = run_step(command, seconds)
        text = complaint.decode("latin-1")
        if status == JUDGE_STEP_LIMIT:
            raise StepFailure(f"velkor-run: more than {limit} steps")
        if status == JUDGE_ERROR and "velkor-run" in text:
            lines = [line for line in text.splitlines() if "velkor-run" in line]
            raise StepFailure(lines[0][:300])
        if status in (132, 135, 136, 139):
            raise StepFailure(f"velkor-run: ended by signal {status - 128}")
        return Outcome(status, output)

    def statistics(self, icode):
        """Dynamic counts of a run, as the flat record that velkor-run prints."""
        command = [self.path("velkor-run"), "--stats=json", icode]
        _, _, complaint = run_step(command, RUN_SECONDS)
        text = complaint.decode("latin-1")
        start = text.find("{")
        if start < 0:
            raise StepFailure("velkor-run: no statistics: " + text.strip()[:200])
        return json.JSONDecoder().raw_decode(text[start:])[0]

    def check_text_form(self, icode, folder):
        """Raises StepFailure unless velkor-dis then velkor-as gives the same bytes again."""
        text = pathlib.Path(folder) / "text.ic"
        again = pathlib.Path(folder) / "text.bin"
        must_succeed([self.path("velkor-dis"), icode, "-o", text], COMPILE_SECONDS)
        must_succeed([self.path("velkor-as"), text, "-o", again], COMPILE_SECONDS)
        before, after = pathlib.Path(icode).read_bytes(), again.read_bytes()
        if before != after:
            place = next((i for i, (a, b) in enumerate(zip(before, after)) if a != b), None)
            place = min(len(before), len(after)) if place is None else place
            raise StepFailure(f"velkor-dis then velkor-as: bytes differ from offset {place} on")


# ---- The comparison ---------------------------------------------------------------------------


@dataclasses.dataclass
class Failure:
    """A disagreement: in which mode ("cc" = before the optimizer), and what is wrong."""

    mode: str
    reason: str


def compare(source, expected, tools, modes, folder, includes=(), first_only=False,
            text_form=True, repeat=True, limit=STEP_LIMIT):
    """Sends `source` through the tools in every mode and compares with `expected`.

    folder      an empty scratch folder, owned by the caller
    first_only  stop at the first disagreement
    text_form   check also that each file survives the text form
    repeat      check also that a second optimizer run, in another address space, gives the same
                bytes
    Result: list of Failure, empty if all agree.
    """
    folder = pathlib.Path(folder)
    icode = folder / "p.if"
    failures = []

    def check(mode_name, path):
        if text_form and tools.has("velkor-dis") and tools.has("velkor-as"):
            try:
                tools.check_text_form(path, folder)
            except StepFailure as failure:
                failures.append(Failure(mode_name, str(failure)))
        outcome = tools.run(path, limit)
        difference = outcome.differs_from(expected)
        if difference:
            failures.append(Failure(mode_name, difference))
        return outcome

    try:
        tools.compile(source, icode, includes)
        # Where the program is wrong before the optimizer, its modes have nothing to add.
        if check("cc", icode).differs_from(expected) or (failures and first_only):
            return failures
    except StepFailure as failure:
        return [*failures, Failure("cc", str(failure))]

    # Modes often give the same file; one run of the judge is enough for each distinct one.
    seen = set()
    for number, mode in enumerate(modes):
        try:
            result = tools.optimize(icode, folder / f"m{number}", mode)
            if repeat:
                again = tools.optimize(icode, folder / f"m{number}again", mode, other_layout=True)
                if again.read_bytes() != result.read_bytes():
                    failures.append(Failure(mode.name, "a second run gives other bytes"))
            digest = hashlib.sha256(result.read_bytes()).digest()
            if digest not in seen:
                seen.add(digest)
                if tools.has("velkor"):
                    tools.check_finished(result)
                check(mode.name, result)
        except StepFailure as failure:
            failures.append(Failure(mode.name, str(failure)))
        if failures and first_only:
            break
    return failures


def default_tools_folder():
    """The newest build folder that has velkor-run, or build/release/bin if there is none."""
    found = sorted(
        ROOT.glob("build/*/bin/velkor-run"), key=lambda path: path.stat().st_mtime, reverse=True
    )
    return found[0].parent if found else ROOT / "build" / "release" / "bin"


def shell_line(words):
    """A command as it can be pasted into a shell."""
    return " ".join(shlex.quote(str(word)) for word in words)
