"""How the optimizer's cost grows with the size of a function, beside opt-14 on the same C source."""
import math
import shutil
import subprocess
import sys
import time

import costs
import shapes

SIZES = [500, 1000, 2000, 4000, 8000, 16000, 32000]
QUICK_SIZES = SIZES[:4]
COUNTED_SIZES = SIZES[::2]
LEVELS = [0, 1, 2]
# A run of so many CPU seconds is not repeated.
LONG_SECONDS = 2
# Behind a run of so many, larger functions of its shape are left out.
LAST_SECONDS = 4


def exponent(points):
    """Least squares of log cost over log size, of pairs (size, cost)."""
    if len(points) < 2:
        return float("nan")
    xs = [math.log(size) for size, _ in points]
    ys = [math.log(max(cost, 1e-6)) for _, cost in points]
    x, y = sum(xs) / len(xs), sum(ys) / len(ys)
    return sum((a - x) * (b - y) for a, b in zip(xs, ys)) / sum((a - x) ** 2 for a in xs)


class Series:
    """The runs of one optimizer at one level over functions of one shape."""

    def __init__(self):
        self.points = []  # (statements, seconds, megabytes)
        self.ended = False  # larger functions are not tried

    def add(self, size, bin_folder, command, prepare):
        if self.ended:
            return
        try:
            cost = costs.best(bin_folder, command, prepare, enough=LONG_SECONDS)
        except costs.Failed as failure:
            print(f"bench: {failure}", file=sys.stderr)
            self.ended = True
            return
        self.points.append((size, cost.cpu, cost.peak))
        self.ended = cost.cpu > LAST_SECONDS

    def exponent(self):
        return exponent([(size, seconds) for size, seconds, _ in self.points])

    def cells(self, sizes):
        """Microseconds a statement by size, megabytes at the largest size, the exponent."""
        by_size = {size: seconds / size * 1e6 for size, seconds, _ in self.points}
        cells = [f"{by_size[size]:8.1f}" if size in by_size else f"{'-':>8}" for size in sizes]
        peak = f"{self.points[-1][2]:9.1f}" if self.points else f"{'-':>9}"
        return "".join(cells) + peak + f"{self.exponent():10.2f}"


def commands(bin_folder, work, level):
    """What runs at a level: (name, command, what to do in front of each run)."""
    icode, copy = work / "function.if", work / "copy.if"
    found = [(f"velkor-opt -o{level}",
              [bin_folder / "velkor-opt", "-q", f"-o{level}", copy, work / "copy.opt"],
              lambda: shutil.copyfile(icode, copy))]
    if level > 0 and shutil.which("opt-14"):
        found.append((f"opt-14 -O{level}",
                      ["opt-14", f"-O{level}", work / "function.bc", "-o", work / "other.bc"],
                      lambda: None))
    return found


def translate(bin_folder, work, text):
    """Writes the C text in the forms that the optimizers read; False if one cannot be made."""
    source = work / "function.c"
    source.write_text(text)
    done = subprocess.run([bin_folder / "velkor-cc", source, "-o", work / "function.if"],
                          capture_output=True, text=True, check=False)
    if done.returncode != 0:
        print(f"bench: velkor-cc: {done.stderr.strip().splitlines()[0]}"[:200], file=sys.stderr)
        return False
    # Binary form for opt-14: reading text is no part of the comparison.
    subprocess.run(["clang-14", "-m32", "-w", "-O0", "-Xclang", "-disable-O0-optnone",
                    "-fbracket-depth=100000", "-c", "-emit-llvm", source, "-o",
                    work / "function.bc"], check=True)
    return True


def measure(bin_folder, work, sizes):
    """Result: Series by (level, shape, name of the optimizer), in the order of measurement."""
    series = {}
    for shape, generate in shapes.SHAPES.items():
        for size in sizes:
            begin = time.perf_counter()
            if not translate(bin_folder, work, generate(size)):
                break
            for level in LEVELS:
                for name, command, prepare in commands(bin_folder, work, level):
                    one = series.setdefault((level, shape, name), Series())
                    one.add(size, bin_folder, command, prepare)
            print(f"  {shape}, {size} statements: {time.perf_counter() - begin:.1f} s",
                  file=sys.stderr)
    return series


def scaling(bin_folder, work, sizes):
    """One table for each level."""
    series = measure(bin_folder, work, sizes)
    for level in LEVELS:
        print(f"\nLevel {level}: CPU microseconds a statement by statements of one function, peak MB "
              f"at the largest, growth exponent")
        print(f"{'shape':18}{'':16}" + "".join(f"{size:8}" for size in sizes) +
              f"{'peak MB':>9}{'exponent':>10}")
        for (at, shape, name), one in series.items():
            if at == level:
                print(f"{shape if name.startswith('velkor') else '':18}{name:16}{one.cells(sizes)}")


def counting(bin_folder, work, sizes):
    """The optimizer alone, in executed instructions."""
    print("\nThousands of instructions a statement by statements of one function, growth exponent")
    print(f"{'shape':18}{'level':6}" + "".join(f"{size:8}" for size in sizes) + f"{'exponent':>10}")
    for shape, generate in shapes.SHAPES.items():
        points = {level: [] for level in LEVELS}
        for size in sizes:
            if not translate(bin_folder, work, generate(size)):
                break
            for level in LEVELS:
                _, command, prepare = commands(bin_folder, work, level)[0]
                prepare()
                points[level].append((size, costs.instructions(command)))
        for level, found in points.items():
            cells = "".join(f"{count / size / 1e3:8.1f}" for size, count in found)
            print(f"{'' if level else shape:18}{f'-o{level}':6}{cells}{exponent(found):10.2f}",
                  flush=True)
