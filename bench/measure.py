#!/usr/bin/env python3
"""Speed and memory of the program, each figure against something measured in the same run.

    measure.py PROGRAM [--rounds N] [--scratch FOLDER] [--quick]

Every round writes into a fresh folder, because making files anew where others were just deleted is slow on
some file systems; contenders take turns within a round; the file cache is warm. A figure is the median,
with the smallest and the largest of the rounds behind it. --quick leaves out the large projects.
"""

import argparse
import collections
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

OUTPUTS = ("csd dat opt.dat mc.dat sens.dat opt.csd mc.csd sens.csd out out.1 opt.out mc.out sens.out prb mrk "
           "sim.1op sim.cir sim.mif").split()
DECK = '.INC "amp-SCHEMATIC1.net"\n.LIB "amp.lib"\n' + "R1 in out 1k ; one of many lines of a deck\n" * 400
MIB = 1024 * 1024

# What a command took: seconds on the clock and of processors, and its peak memory in bytes.
Cost = collections.namedtuple("Cost", "seconds processor peak")


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


def make_project(folder, profiles, outputs, size):
    """A flat project; returns the number of its files."""
    os.makedirs(folder)
    block = os.urandom(min(size, 4 * MIB))
    entries = []
    for number in range(profiles):
        name = f"p{number:05d}"
        base = f"amp-SCHEMATIC1-{name}"
        entries.append({"path": f".\\{base}.sim", "name": name, "schematic": "SCHEMATIC1"})
        write(f"{folder}/{base}.sim",
              (f'ProfileName= "{name}" \nRootSchematics= "SCHEMATIC1" \nNetlistFile= "{base}.sim.cir" \n'
               f'DataFile= "{base}.dat" \nOutFile= "{base}.out" \nAnalysis= "TRAN" \n').encode())
        for output in outputs:
            with open(f"{folder}/{base}.{output}", "wb") as file:
                if output == "sim.cir":
                    file.write(DECK.encode()[:size])
                else:
                    for _ in range(size // len(block)):
                        file.write(block)
    write(f"{folder}/amp.lib", b"* models\n")
    write(f"{folder}/amp-SCHEMATIC1.net", b"* netlist\n")
    write(f"{folder}/amp.dsn", json.dumps({"rootSchematics": ["SCHEMATIC1"]}).encode())
    write(f"{folder}/amp.opj", json.dumps({
        "folders": [{"name": "Design Resources",
                     "files": [{"name": "amp.dsn", "path": ".\\amp.dsn", "type": "Schematic Design"}]}],
        "simulationProfiles": {"active": entries[0]["path"], "profiles": entries}}, indent=2).encode())
    os.sync()
    return len(os.listdir(folder))


def make_library(folder, cells, size=8192):
    """A library whose cells have 30 files each in the old view, two profiles among them."""
    text, block = DECK.encode()[:size], os.urandom(size)
    outputs = ("csd", "dat", "mc.out", "mrk", "out", "prb", "sim.1op")
    for number in range(cells):
        cell = f"cell{number:05d}"
        view = f"{folder}/{cell}/cfg_analog"
        os.makedirs(view)
        texts = [f"{cell}.net", f"{cell}.opt"]
        blocks = [f"{cell}.{end}" for end in ("als", "opj", "par")] + [f"{cell}-{cell}.prp", "amp.lib", "x.inc", "y.stl"]
        blocks += ["board.map", "parts.olb"]
        for profile in ("ac", "tran"):
            texts += [f"{profile}.sim", f"{profile}.sim.cir"]
            blocks += [f"{profile}.{output}" for output in outputs]
        write(f"{view}/master.tag", b"expand.cfg")
        for name in texts:
            write(f"{view}/{name}", text)
        for name in blocks:
            write(f"{view}/{name}", block)
    os.sync()


def add_names_of_profiles(folder, profiles):
    """An optimizer file and an analysis profile that name each profile."""
    bases = [f"amp-SCHEMATIC1-p{number:05d}" for number in range(profiles)]
    write(f"{folder}/amp-SCHEMATIC1.opt", "".join(f'sim "{base}.sim" enabled\r\n' for base in bases).encode())
    keys = " ".join(f'("{base}" 1)' for base in bases)
    measured = "\n".join(f'(m (Profile "{base}.sim") (Goal 1))' for base in bases)
    write(f"{folder}/amp-SCHEMATIC1.aap",
          f'(FILE_TYPE "Advanced Analysis Profile" (Profiles {keys}) (Optimizer (MEASUREMENTS {measured})))'.encode())
    os.sync()


def run(command):
    """The cost of a command that succeeds."""
    started = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - started
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command} ended with {process.returncode}")
    return Cost(seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024)


def run_step(command):
    """Seconds that a command tells of its own work, and its peak memory in bytes."""
    process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
    output = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command} ended with {process.returncode}")
    return float(output), usage.ru_maxrss * 1024


def system_calls(command):
    with tempfile.NamedTemporaryFile("r") as counts:
        subprocess.run(["strace", "-f", "-c", "-o", counts.name, *command], stdout=subprocess.DEVNULL, check=True)
        total = re.search(r"(\d+)(?:\s+\d+)?\s+total", counts.read())
    return int(total.group(1))


def span(values, form="{:.2f}"):
    return (f"{form.format(statistics.median(values)):>9}  "
            f"({form.format(min(values))} to {form.format(max(values))})")


class Bench:
    def __init__(self, program, scratch, rounds):
        self.program = program
        self.scratch = scratch
        self.rounds = rounds
        self.fresh_folders = 0

    def fresh(self):
        self.fresh_folders += 1
        return f"{self.scratch}/{self.fresh_folders:04d}"

    def convert(self, project, destination):
        return [self.program, "draftel", f"{project}/amp.opj", "--to", destination]

    def row(self, what, figure, bound):
        print(f"{what:<58}{figure:<32}{bound}", flush=True)

    def against_copy(self, what, project, files, rounds):
        ratios, peaks = [], []
        for number in range(rounds + 1):
            os.sync()
            copied = run(["cp", "-r", project, self.fresh()])
            os.sync()
            converted = run(self.convert(project, self.fresh()))
            if number == 0:
                continue  # warms the cache
            ratios.append(converted.seconds / copied.seconds)
            peaks.append(converted.peak / MIB)
        self.row(f"{what}: time / cp -r", span(ratios), "at most 1.00")
        bound = 24 + 300 * files / MIB
        self.row(f"{what}: peak memory, MiB", span(peaks, "{:.1f}"), f"at most {bound:.1f}")

    def growth(self, what, small, large, rounds):
        costs = []
        for _ in range(rounds):
            for project in (small, large):
                os.sync()
                copied = run(["cp", "-r", project, self.fresh()])
                os.sync()
                converted = run(self.convert(project, self.fresh()))
                costs.append((copied, converted))
        self.growth_rows(what, costs)
        if shutil.which("strace"):
            once = system_calls(self.convert(small, self.fresh()))
            tenfold = system_calls(self.convert(large, self.fresh()))
            self.row(f"{what}: system calls", f"{tenfold / once:9.2f}  ({once} calls)", "at most 11")

    def growth_rows(self, what, costs):
        """`costs`: those of copying and of converting, of one and of ten times as much in turn."""
        copied, converted = zip(*costs)

        def growth(costs, part):
            return span([part(large) / part(small) for small, large in zip(costs[::2], costs[1::2])])

        self.row(f"{what}: time", growth(converted, lambda cost: cost.seconds), "at most 11")
        self.row(f"{what}: time of processors", growth(converted, lambda cost: cost.processor), "")
        self.row(f"{what}: time of cp -r", growth(copied, lambda cost: cost.seconds), "")
        against = [converting.seconds / copying.seconds for copying, converting in costs[1::2]]
        self.row(f"{what.split(' / ')[0]}: time / cp -r", span(against), "")

    def convert_library(self, source):
        """Copies the library and converts the copy; the copy, and the cost of both."""
        library = self.fresh()
        os.sync()
        copied = run(["cp", "-r", source, library])
        os.sync()
        return library, copied, run([self.program, "tarnet", library])

    def library(self, what, source, rounds):
        ratios, peaks = [], []
        for number in range(rounds + 1):
            _, copied, converted = self.convert_library(source)
            if number == 0:
                continue  # warms the cache
            ratios.append(converted.seconds / copied.seconds)
            peaks.append(converted.peak / MIB)
        self.row(f"{what}: time / cp -r", span(ratios), "at most 1.00")
        self.row(f"{what}: peak memory, MiB", span(peaks, "{:.1f}"), "at most 32.0")

    def library_growth(self, small, large, rounds):
        costs = []
        for _ in range(rounds):
            for source in (small, large):
                library, *copied_and_converted = self.convert_library(source)
                costs.append(copied_and_converted)
        self.growth_rows("10,000 cells / 1,000 cells", costs)
        peaks = [converted.peak / MIB for _, converted in costs[1::2]]
        self.row("10,000 cells: peak memory, MiB", span(peaks, "{:.1f}"), "at most 32.0")
        ratios, peaks = [], []
        for number in range(rounds + 3):
            # One look at the marker of each new view.
            found = run(["find", library, "-path", "*/tvx_sim_1/master.tag", "-printf", "%s\n"])
            again = run([self.program, "tarnet", library])
            if number == 0:
                continue  # warms the cache
            ratios.append(again.seconds / found.seconds / 2)
            peaks.append(again.peak / MIB)
        self.row("10,000 converted cells again: time / find twice", span(ratios), "at most 1.00")
        self.row("10,000 converted cells again: peak memory, MiB", span(peaks, "{:.1f}"), "at most 32.0")

    def attribute_lists(self, program, mebibytes, rounds):
        listed, json_file = f"{self.scratch}/profile.aap", f"{self.scratch}/profile.json"
        subprocess.run([program, "make", str(mebibytes), listed, json_file], check=True)
        size = os.path.getsize(listed)
        reading, writing, peaks = [], [], []
        for number in range(rounds + 1):
            os.sync()
            list_seconds, peak = run_step([program, "read-list", listed])
            json_seconds, _ = run_step([program, "read-json", json_file])
            os.sync()
            list_written, _ = run_step([program, "write-list", listed, self.fresh()])
            os.sync()
            json_written, _ = run_step([program, "write-json", json_file, self.fresh()])
            if number == 0:
                continue  # warms the cache
            reading.append(list_seconds / json_seconds)
            writing.append(list_written / json_written)
            peaks.append(peak / size)
        what = f"attribute list of {size / MIB:.0f} MiB"
        self.row(f"{what}: reading / RapidJSON", span(reading), "at most 2.00")
        self.row(f"{what}: writing / RapidJSON", span(writing), "at most 2.00")
        self.row(f"{what}: peak memory of reading / size", span(peaks), "at most 6.00")

    def start(self):
        times = [run([self.program, "--version"]).seconds * 1000 for _ in range(50)]
        self.row("--version, ms", span(times, "{:.1f}"), "at most 10")


def main():
    parser = argparse.ArgumentParser(description="Speed and memory of the program.")
    parser.add_argument("program")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--scratch", default=None, help="a folder on the file system to measure")
    parser.add_argument("--quick", action="store_true", help="leave out the large projects")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="tvxconv-bench-", dir=options.scratch) as scratch:
        bench = Bench(os.path.abspath(options.program), scratch, options.rounds)
        print(f"{'what':<58}{'median  (rounds)':<32}bound")
        bench.start()
        lists = os.path.join(os.path.dirname(bench.program), "tvxconv_bench_lists")
        if os.path.exists(lists):  # built where the library to compare with is installed
            bench.attribute_lists(lists, 64, max(5, options.rounds))
        small = f"{scratch}/small"
        files = make_project(small, 1000, OUTPUTS, 8192)
        bench.against_copy("1,000 profiles, 18 outputs of 8 KiB", small, files, options.rounds)
        empty = f"{scratch}/empty"
        files = make_project(empty, 1000, [], 8192)
        bench.against_copy("1,000 profiles without outputs", empty, files, options.rounds)
        cells = f"{scratch}/cells"
        make_library(cells, 1000)
        bench.library("1,000 cells of 30 files of 8 KiB", cells, options.rounds)
        if not options.quick:
            single = f"{scratch}/single"
            files = make_project(single, 1, ["dat"], 1024 * MIB)
            bench.against_copy("one output of 1 GiB", single, files, options.rounds)
            large = f"{scratch}/large"
            files = make_project(large, 10000, OUTPUTS, 8192)
            bench.growth("10,000 profiles / 1,000 profiles", small, large, max(3, options.rounds // 2))
            bench.against_copy("10,000 profiles, 18 outputs of 8 KiB", large, files, 1)
            named = f"{scratch}/named"
            make_project(named, 10000, [], 8192)
            add_names_of_profiles(named, 10000)
            add_names_of_profiles(empty, 1000)
            bench.growth("optimizer of 10,000 / of 1,000 profiles", empty, named, max(3, options.rounds // 2))
            many_cells = f"{scratch}/many-cells"
            make_library(many_cells, 10000)
            bench.library_growth(cells, many_cells, max(2, options.rounds // 3))


main()
