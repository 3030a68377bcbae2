# SPDX-License-Identifier: Apache-2.0
"""Prints, for each fuzz target, how many of the lines in fuzz/reach it has run; fails below 95 %.

Run by `scripts/fuzz --coverage`, with the build folder in which the targets have left their profiles."""

import json
import os
import subprocess
import sys

WANTED = 95.0


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def plain_name(demangled):
    """`Velno::GMP::(anonymous namespace)::isField(QByteArray const&, ...)` is isField."""
    name = demangled.replace("(anonymous namespace)", "").replace("operator()", "operator_call")
    name = name.split("(")[0].split("<")[0] if "operator" not in name else name.split("(")[0]
    return name.split("::")[-1].strip()


class Profile:
    """What one target has run: for each file the counts of its lines, and where its functions lie."""

    def __init__(self, folder, target):
        program = f"{folder}/fuzz/fuzz_{target}"
        merged = f"{folder}/logs/{target}.profdata"
        subprocess.run(["llvm-profdata-14", "merge", "-o", merged, f"{folder}/logs/{target}.profraw"], check=True)
        profile = f"-instr-profile={merged}"
        self.counts = self._read_counts(output_of("llvm-cov-14", "export", "-format=lcov", profile, program))
        self.functions = self._read_functions(
            json.loads(output_of("llvm-cov-14", "export", "-skip-expansions", profile, program)))

    @staticmethod
    def _read_counts(text):
        counts, lines = {}, {}
        for record in text.splitlines():
            if record.startswith("SF:"):
                lines = counts.setdefault(os.path.relpath(record[3:]), {})
            elif record.startswith("DA:"):
                line, count = record[3:].split(",")[:2]
                lines[int(line)] = max(lines.get(int(line), 0), int(count))
        return counts

    @staticmethod
    def _read_functions(exported):
        functions = exported["data"][0]["functions"]
        mangled = [function["name"].split(":")[-1] for function in functions]
        names = subprocess.run(["c++filt"], input="\n".join(mangled), check=True, capture_output=True,
                               text=True).stdout.splitlines()
        found = []
        for function, name in zip(functions, names):
            first = min(region[0] for region in function["regions"] if region[5] == 0)
            last = max(region[2] for region in function["regions"] if region[5] == 0)
            found.append((os.path.relpath(function["filenames"][0]), plain_name(name), first, last))
        return found

    def lines_of(self, file, wanted):
        """The lines of a file with their counts; of all functions, of those named, or of all but those with a !."""
        counts = self.counts.get(file)
        if not counts:
            sys.exit(f"fuzz/reach: no line of {file} is in the target")
        left_out = {name[1:] for name in wanted if name.startswith("!")}
        taken = {name for name in wanted if not name.startswith("!")}
        here = [function for function in self.functions if function[0] == file]
        for name in (left_out | taken) - {function[1] for function in here}:
            sys.exit(f"fuzz/reach: {file} has no function {name}")
        selected = set() if taken else set(counts)
        for _, name, first, last in here:
            if name in taken:
                selected |= set(range(first, last + 1))
        for _, name, first, last in here:
            if name in left_out:
                selected -= set(range(first, last + 1))
        return {line: count for line, count in counts.items() if line in selected}


def read_reach():
    reach = {}
    with open("fuzz/reach", encoding="utf-8") as file:
        for line in file:
            words = line.split()
            if words and not words[0].startswith("#"):
                reach.setdefault(words[0], []).append((words[1], words[2:]))
    return reach


def main(folder):
    is_good, total, reached = True, 0, 0
    for target, places in read_reach().items():
        profile = Profile(folder, target)
        lines, missed = [], []
        for file, functions in places:
            counts = profile.lines_of(file, functions)
            lines += counts.values()
            here = [str(line) for line, count in sorted(counts.items()) if count == 0]
            if here:
                missed.append(f"    not {file}: {', '.join(here)}")
        hit = sum(1 for count in lines if count)
        share = 100.0 * hit / len(lines)
        print(f"{target:14} {hit:5} of {len(lines):5} lines {share:6.1f} %", *missed, sep="\n")
        is_good, total, reached = is_good and share >= WANTED, total + len(lines), reached + hit
    print(f"{'all':14} {reached:5} of {total:5} lines {100.0 * reached / total:6.1f} %")
    return 0 if is_good else f"A target reaches less than {WANTED:.0f} % of its lines"


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
