#!/usr/bin/env python3
"""Speed and memory of the library and of the program, each figure against something measured in the same run.

    measure.py FOLDER [--rounds N] [--scratch FOLDER] [--quick]

FOLDER holds what is measured: the library, the bench's host that loads it and only converts, the program.

Everything runs on one processor, as under `taskset -c`: the question is how much work is done. Contenders take
turns within a round, each after a sync, and the first round only warms the cache. A figure is the median of the
rounds, with the smallest and the largest behind it. Each run writes into a fresh folder, and nothing is deleted
before the end, because making files where others were just deleted is slow on some file systems. So the table
takes much disk: 50 GiB, or 9 GiB with --quick, which leaves out the large projects.
"""

import argparse
import collections
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

DECK_OUTPUT = "sim.cir"  # rewritten; the other outputs are copied byte by byte
COPIED_OUTPUTS = ("csd dat opt.dat mc.dat sens.dat opt.csd mc.csd sens.csd out out.1 opt.out mc.out sens.out prb mrk "
                  "sim.1op sim.mif").split()
OUTPUTS = [DECK_OUTPUT, *COPIED_OUTPUTS]
CELL_PROFILES = ("ac", "tran")
CELL_OUTPUTS = ("csd", "dat", "mc.out", "mrk", "out", "prb", "sim.1op")
DECK = '.INC "amp-SCHEMATIC1.net"\n.LIB "amp.lib"\n' + "R1 in out 1k ; one of many lines of a deck\n" * 400
SIZE = 8192  # of a file, in bytes
MIB = 1024 * 1024
GIB = 1024 * MIB

# What a command took: seconds on the clock and of processors, and its peak memory in MiB.
Cost = collections.namedtuple("Cost", "seconds processor peak")


# --- what is converted ---

def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


def write_random(path, size):
    block = os.urandom(min(size, 4 * MIB))
    with open(path, "wb") as file:
        for _ in range(size // len(block)):
            file.write(block)


def make_project(folder, profiles, outputs, size=SIZE):
    """A flat project; each profile has the outputs."""
    os.makedirs(folder)
    entries = []
    for number in range(profiles):
        name = f"p{number:05d}"
        base = f"amp-SCHEMATIC1-{name}"
        entries.append({"path": f".\\{base}.sim", "name": name, "schematic": "SCHEMATIC1"})
        write(f"{folder}/{base}.sim",
              (f'ProfileName= "{name}" \nRootSchematics= "SCHEMATIC1" \nNetlistFile= "{base}.sim.cir" \n'
               f'DataFile= "{base}.dat" \nOutFile= "{base}.out" \nAnalysis= "TRAN" \n').encode())
        for output in outputs:
            if output == DECK_OUTPUT:
                write(f"{folder}/{base}.{output}", DECK.encode()[:size])
            else:
                write_random(f"{folder}/{base}.{output}", size)
    write(f"{folder}/amp.lib", b"* models\n")
    write(f"{folder}/amp-SCHEMATIC1.net", b"* netlist\n")
    write(f"{folder}/amp.dsn", json.dumps({"rootSchematics": ["SCHEMATIC1"]}).encode())
    write(f"{folder}/amp.opj", json.dumps({
        "folders": [{"name": "Design Resources",
                     "files": [{"name": "amp.dsn", "path": ".\\amp.dsn", "type": "Schematic Design"}]}],
        "simulationProfiles": {"active": entries[0]["path"], "profiles": entries}}, indent=2).encode())
    return folder


def add_names_of_profiles(folder, profiles):
    """An optimizer file and an analysis profile that name each profile."""
    bases = [f"amp-SCHEMATIC1-p{number:05d}" for number in range(profiles)]
    write(f"{folder}/amp-SCHEMATIC1.opt", "".join(f'sim "{base}.sim" enabled\r\n' for base in bases).encode())
    keys = " ".join(f'("{base}" 1)' for base in bases)
    measured = "\n".join(f'(m (Profile "{base}.sim") (Goal 1))' for base in bases)
    write(f"{folder}/amp-SCHEMATIC1.aap",
          f'(FILE_TYPE "Advanced Analysis Profile" (Profiles {keys}) (Optimizer (MEASUREMENTS {measured})))'.encode())
    return folder


def rewritten_in_cell(cell):
    return [f"{cell}.net", f"{cell}.opt", *(f"{profile}.{end}" for profile in CELL_PROFILES
                                            for end in ("sim", "sim.cir"))]


def copied_in_cell(cell):
    return ([f"{cell}.{end}" for end in ("als", "opj", "par")] +
            [f"{cell}-{cell}.prp", "amp.lib", "x.inc", "y.stl", "board.map", "parts.olb"] +
            [f"{profile}.{output}" for profile in CELL_PROFILES for output in CELL_OUTPUTS])


def make_library(folder, cells, with_copied=True):
    """A library whose cells have 30 files each in the old view, 23 of them copied byte by byte."""
    for number in range(cells):
        cell = f"cell{number:05d}"
        view = f"{folder}/{cell}/cfg_analog"
        os.makedirs(view)
        write(f"{view}/master.tag", b"expand.cfg")
        for name in rewritten_in_cell(cell):
            write(f"{view}/{name}", DECK.encode()[:SIZE])
        for name in copied_in_cell(cell) if with_copied else []:
            write_random(f"{view}/{name}", SIZE)
    return folder


# --- running ---

def run(command, output=subprocess.DEVNULL):
    """The cost of a command, which has to succeed."""
    with tempfile.TemporaryFile("w+") as messages:
        started = time.perf_counter()
        process = subprocess.Popen(command, stdout=output, stderr=messages)
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - started
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            messages.seek(0)
            sys.exit(f"{messages.read()}{command} ended with {process.returncode}")
    return Cost(seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024 / MIB)


def run_step(command):
    """The cost of a command that prints the seconds of the step in question."""
    with tempfile.TemporaryFile("w+") as output:
        cost = run(command, output)
        output.seek(0)
        return cost._replace(seconds=float(output.read()))


def system_calls(command):
    with tempfile.NamedTemporaryFile("r") as counts:
        run(["strace", "-f", "-c", "-U", "calls,name", "-o", counts.name, *command])
        return int(re.search(r"(\d+) total", counts.read()).group(1))


def take_turns(rounds, *contenders, runner=run, warm_up=True):
    """The costs of each contender, a list for each. A contender makes the command for its next round."""
    costs = [[] for _ in contenders]
    for number in range(rounds + warm_up):
        for contender, own_costs in zip(contenders, costs):
            command = contender()
            os.sync()
            cost = runner(command)
            if number >= warm_up:
                own_costs.append(cost)
    return costs


def ratios(costs, yardsticks, part="seconds"):
    return [getattr(cost, part) / getattr(yardstick, part) for cost, yardstick in zip(costs, yardsticks)]


def peaks(costs):
    return [cost.peak for cost in costs]


# --- the table ---

def line(what, figure, bound):
    print(f"{what:<70}{figure:<30}{bound}".rstrip(), flush=True)


def row(what, values, bound=None, form="{:.2f}"):
    """The median of `values`, and whether it keeps the bound."""
    median = statistics.median(values)
    figure = f"{form.format(median):>9}"
    if len(values) > 1:
        figure += f"  ({form.format(min(values))} to {form.format(max(values))})"
    kept = "" if bound is None else f"at most {form.format(bound)}"
    if bound is not None and median > bound:
        kept += "   <== MISSED"
    line(what, figure, kept)


class Bench:
    def __init__(self, folder, scratch, rounds):
        self.folder = folder
        self.scratch = scratch
        self.rounds = rounds
        self.large_rounds = max(3, rounds // 2)
        self.fresh_folders = 0

    # What is run.

    def fresh(self, name="run"):
        self.fresh_folders += 1
        return f"{self.scratch}/{name}-{self.fresh_folders:03d}"

    def host(self, flow, *arguments):
        return [f"{self.folder}/tvxconv_bench_host", flow, f"{self.folder}/libtvxconv.so", *arguments]

    def convert(self, project):
        return self.host("draftel", f"{project}/amp.opj", self.fresh())

    def conversions(self, project):
        while True:
            yield self.convert(project)

    def convert_by_program(self, project):
        return [f"{self.folder}/tvxconv", "draftel", f"{project}/amp.opj", "--to", self.fresh()]

    def copy(self, folder):
        return ["cp", "-rp", folder, self.fresh()]

    def copies_to_convert(self, library, count):
        """Copies of a library that have new folders and links to its files. They are made before a file is read
        for the first time: a new link would have the next read write the time of access."""
        copies = [self.fresh("library") for _ in range(count)]
        for copy in copies:
            subprocess.run(["cp", "-rpl", library, copy], check=True)
        return (self.host("tarnet", copy) for copy in copies)

    # What is measured.

    def start(self):
        times = [run([f"{self.folder}/tvxconv", "--version"]).seconds * 1000 for _ in range(50)]
        row("program: --version, ms", times, form="{:.1f}")

    def profiles(self, project):
        copied, converted, by_program = take_turns(
            self.rounds, lambda: self.copy(project), lambda: self.convert(project),
            lambda: self.convert_by_program(project))
        what = "1,000 profiles x 18 outputs x 8 KiB"
        row(f"library, {what}: time / cp -rp", ratios(converted, copied), 0.80)
        row(f"library, {what}: processor time / cp -rp", ratios(converted, copied, "processor"))
        row(f"program, {what}: time / cp -rp", ratios(by_program, copied))

    def profiles_without_outputs(self, project):
        copied, converted = take_turns(self.rounds, lambda: self.copy(project), lambda: self.convert(project))
        row("library, 1,000 profiles without outputs: time / cp -rp", ratios(converted, copied), 3)

    def cells(self, library):
        copies = self.copies_to_convert(library, self.rounds + 1)
        copied, converted = take_turns(self.rounds, lambda: self.copy(library), lambda: next(copies))
        what = "1,000 cells x 30 files x 8 KiB"
        row(f"library, {what}: time / cp -rp", ratios(converted, copied), 0.85)
        row(f"library, {what}: processor time / cp -rp", ratios(converted, copied, "processor"))

    def converted_cells(self, library):
        """Against one look at the marker of each new view."""
        converted = self.fresh("library")
        subprocess.run(["cp", "-rpl", library, converted], check=True)
        run(self.host("tarnet", converted))
        found, again = take_turns(
            self.rounds, lambda: ["find", converted, "-path", "*/tvx_sim_1/master.tag", "-printf", "%s\n"],
            lambda: [f"{self.folder}/tvxconv", "tarnet", converted])
        row("program, 1,000 converted cells again: time / find", ratios(again, found))

    def calls_for_copies(self, what, command, command_without, copies):
        """System calls for each file that is copied byte by byte: what such files add to the same conversion
        without them, and for comparison all calls of the conversion."""
        calls, without = system_calls(command), system_calls(command_without)
        row(f"{what}: system calls for each byte copy", [(calls - without) / copies], 9)
        row(f"{what}: all system calls / byte copies", [calls / copies])

    def one_large_output(self, project):
        output = f"{project}/amp-SCHEMATIC1-p00000.dat"
        copied, converted = take_turns(self.rounds, lambda: ["cp", "-p", output, self.fresh()],
                                       lambda: self.convert(project))
        row("library, one output of 1 GiB: time / cp -p", ratios(converted, copied), 1)

    def growth(self, what, small, large):
        """`small` and `large` yield commands that convert, of which one has ten times as much to do. Returns the
        costs of the large one."""
        calls = system_calls(next(small)), system_calls(next(large))  # warms the cache as well
        once, tenfold = take_turns(self.large_rounds, lambda: next(small), lambda: next(large), warm_up=False)
        row(f"{what}: processor time", ratios(tenfold, once, "processor"), 11)
        row(f"{what}: system calls", [calls[1] / calls[0]], 10.2)
        row(f"{what}: time", ratios(tenfold, once))
        return tenfold

    def growth_of_project(self, what, small, large):
        return self.growth(what, self.conversions(small), self.conversions(large))

    def growth_of_library(self, what, small, large):
        count = self.large_rounds + 1
        return self.growth(what, self.copies_to_convert(small, count), self.copies_to_convert(large, count))

    def attribute_lists(self, mebibytes):
        program = f"{self.folder}/tvxconv_bench_lists"
        listed, json_file = f"{self.scratch}/profile.aap", f"{self.scratch}/profile.json"
        subprocess.run([program, "make", str(mebibytes), listed, json_file], check=True)
        list_read, json_read, list_written, json_written = take_turns(
            self.rounds, lambda: [program, "read-list", listed], lambda: [program, "read-json", json_file],
            lambda: [program, "write-list", listed, self.fresh()],
            lambda: [program, "write-json", json_file, self.fresh()], runner=run_step)
        size = os.path.getsize(listed) / MIB
        what = f"attribute list of {size:.0f} MiB"
        row(f"{what}: reading / RapidJSON", ratios(list_read, json_read), 1.5)
        row(f"{what}: writing / RapidJSON", ratios(list_written, json_written))
        row(f"{what}: peak memory of reading / size", [peak / size for peak in peaks(list_read)], 6)


def measure(bench, scratch, quick):
    line("", "   median  (rounds)", "bound")
    project = make_project(f"{scratch}/project", 1000, OUTPUTS)
    bench.profiles(project)
    library = make_library(f"{scratch}/cells", 1000)
    bench.cells(library)
    decks = make_project(f"{scratch}/decks", 1000, [DECK_OUTPUT])
    bench.calls_for_copies("1,000 profiles", bench.convert(project), bench.convert(decks), 1000 * len(COPIED_OUTPUTS))
    rewritten = make_library(f"{scratch}/rewritten-cells", 1000, with_copied=False)
    bench.calls_for_copies("1,000 cells", next(bench.copies_to_convert(library, 1)), bench.host("tarnet", rewritten),
                           1000 * len(copied_in_cell("cell")))
    empty = make_project(f"{scratch}/empty", 1000, [])
    bench.profiles_without_outputs(empty)
    if os.path.exists(f"{bench.folder}/tvxconv_bench_lists"):  # built where the library to compare with is installed
        bench.attribute_lists(64)
    bench.start()
    bench.converted_cells(library)
    if quick:
        return
    bench.one_large_output(make_project(f"{scratch}/single", 1, ["dat"], GIB))
    large = make_project(f"{scratch}/large-project", 10000, OUTPUTS)
    costs = bench.growth_of_project("10,000 / 1,000 profiles", project, large)
    row("library, 10,000 profiles of 18 files: peak memory, MiB", peaks(costs), 64, "{:.1f}")
    bench.growth_of_library("10,000 / 1,000 cells", library, make_library(f"{scratch}/large-cells", 10000))
    bench.growth_of_project("optimizer of 10,000 / of 1,000 profiles", add_names_of_profiles(empty, 1000),
                            add_names_of_profiles(make_project(f"{scratch}/named", 10000, []), 10000))


def main():
    parser = argparse.ArgumentParser(description="Speed and memory of the library and of the program.")
    parser.add_argument("folder", help="where library, host and program are")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--scratch", default=None, help="a folder on the file system to measure")
    parser.add_argument("--quick", action="store_true", help="leave out the large projects")
    options = parser.parse_args()
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})  # all that is run inherits it
    with tempfile.TemporaryDirectory(prefix="tvxconv-bench-", dir=options.scratch) as scratch:
        measure(Bench(os.path.abspath(options.folder), scratch, options.rounds), scratch, options.quick)


if __name__ == "__main__":
    main()
