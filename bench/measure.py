#!/usr/bin/env python3
"""Speed and memory of the program, each figure against something measured in the same run.

    measure.py PROGRAM [--rounds N] [--scratch FOLDER] [--quick]

Every round writes into a fresh folder, because making files anew where others were just deleted is slow on
some file systems; contenders take turns within a round; the file cache is warm. A figure is the median,
with the smallest and the largest of the rounds behind it. --quick leaves out the large projects.
"""

import argparse
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


def run(command):
    """Seconds and peak memory in bytes of a command that succeeds."""
    started = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - started
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command} ended with {process.returncode}")
    return seconds, usage.ru_maxrss * 1024


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
        ratios, peaks, seconds = [], [], []
        for number in range(rounds + 1):
            os.sync()
            copied, _ = run(["cp", "-r", project, self.fresh()])
            os.sync()
            converted, peak = run(self.convert(project, self.fresh()))
            if number == 0:
                continue  # warms the cache
            ratios.append(converted / copied)
            peaks.append(peak / MIB)
            seconds.append(converted)
        self.row(f"{what}: time / cp -r", span(ratios), "at most 1.00")
        bound = 24 + 300 * files / MIB
        self.row(f"{what}: peak memory, MiB", span(peaks, "{:.1f}"), f"at most {bound:.1f}")
        return seconds

    def growth(self, small, large, rounds):
        ratios = []
        for _ in range(rounds):
            os.sync()
            once, _ = run(self.convert(small, self.fresh()))
            os.sync()
            tenfold, _ = run(self.convert(large, self.fresh()))
            ratios.append(tenfold / once)
        self.row("10,000 profiles / 1,000 profiles: time", span(ratios), "at most 11")
        if shutil.which("strace"):
            once = system_calls(self.convert(small, self.fresh()))
            tenfold = system_calls(self.convert(large, self.fresh()))
            self.row("10,000 profiles / 1,000 profiles: system calls", f"{tenfold / once:9.2f}  ({once} calls)",
                     "at most 11")

    def start(self):
        times = [run([self.program, "--version"])[0] * 1000 for _ in range(50)]
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
        small = f"{scratch}/small"
        files = make_project(small, 1000, OUTPUTS, 8192)
        bench.against_copy("1,000 profiles, 18 outputs of 8 KiB", small, files, options.rounds)
        empty = f"{scratch}/empty"
        files = make_project(empty, 1000, [], 8192)
        bench.against_copy("1,000 profiles without outputs", empty, files, options.rounds)
        if not options.quick:
            single = f"{scratch}/single"
            files = make_project(single, 1, ["dat"], 1024 * MIB)
            bench.against_copy("one output of 1 GiB", single, files, options.rounds)
            large = f"{scratch}/large"
            files = make_project(large, 10000, OUTPUTS, 8192)
            bench.growth(small, large, max(3, options.rounds // 2))
            bench.against_copy("10,000 profiles, 18 outputs of 8 KiB", large, files, 1)


main()
