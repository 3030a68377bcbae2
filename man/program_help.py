# SPDX-License-Identifier: Apache-2.0
"""What a program of this project tells of itself with --help, as values.

The manual pages and the completions are made from it, so the programs' own tables stay the only place where
options, commands and faults are written down. velnoctl's commands come from `velnoctl commands` and
`velnoctl help COMMAND`.
A help text that cannot be understood is an error: nothing is left out silently.
"""

import os
import re
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path


@dataclass
class Option:
    names: list[str]  # as they are typed: ["-h", "--help"]
    value: str  # the name of its value, "FILE"; empty for a switch
    text: str

    @property
    def long(self) -> str:
        return self.names[-1]


@dataclass
class Fault:
    name: str
    value: str  # "NN[@STEP]"; empty for one without
    text: str


@dataclass
class Argument:
    usage: str  # "PRICE", "key=KEY", "+ ..."
    accepted: str

    @property
    def key(self) -> str:
        """"section=" of "section=SECTION"; empty for an argument that is known by its place."""
        name, equals, _ = self.usage.partition("=")
        return name + equals if equals else ""


@dataclass
class Command:
    group: str
    name: str
    usage: str
    text: str
    arguments: list[Argument]
    prints: str
    example: str
    is_of_shell: bool  # may stand in velnoctl's shell alone


@dataclass
class ProgramHelp:
    program: str
    usage: str
    description: str
    options: list[Option]
    faults: list[Fault] = field(default_factory=list)
    fault_words: str = ""  # what stands in front of the faults
    fault_remark: str = ""  # and behind them
    commands: list[Command] = field(default_factory=list)
    lines: str = ""  # the lines on standard input that it obeys
    exit_status: str = ""
    environment: str = ""
    example: str = ""


# Every program answers these; where its help has no room for them they are added.
STANDARD_OPTIONS = [
    Option(["-h", "--help"], "", "The help."),
    Option(["-v", "--version"], "", "Version and trust anchors."),
]

_OPTION = re.compile(r"  (?:(-\w), )?(--[a-z0-9-]+)(?: <?([A-Z][^ >]*)>?)?(?: {2,}(\S.*))?$")
_CELL = re.compile(r"(--[a-z-]+)(?: ([A-Z][A-Z:]*))?\s+(.*?)\s*$")
_ROW = re.compile(r"  ([a-z0-9-]+)(?:=(\S+))?\s{2,}(\S.*)$")


def _said_by(program: Path, *arguments: str) -> str:
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen"}
    run = subprocess.run([program, *arguments], capture_output=True, text=True, encoding="utf-8", check=False,
                         env=environment)
    if run.returncode != 0:
        sys.exit(f"{program} {' '.join(arguments)} ended with {run.returncode}: {run.stderr}")
    return run.stdout


def _sentence(paragraph: str, begin: str) -> str:
    """From behind "Exit status:" to the line that begins otherwise, in one line."""
    found = re.search(rf"^{begin}:? ?(.*?)(?=^[A-Z][a-z ]+:|^Trust anchors|\Z)", paragraph, re.M | re.S)
    return " ".join(found.group(1).split()) if found else ""


def _columns(text: str) -> list[Option]:
    """Options in one column, whose texts go on in lines that are set in, or in two columns."""
    options: list[Option] = []
    for line in text.splitlines():
        if len(re.findall(r"(?<= )--[a-z]", line)) > 1 or re.match(r"  --\w+ [A-Z]+  \S", line):
            for cell in re.split(r"\s{2,}(?=--)", "  " + line.strip())[1:]:
                match = _CELL.match(cell)
                if match is None:
                    sys.exit(f"no option can be read from {cell!r}")
                options.append(Option([match[1]], match[2] or "", match[3]))
        elif match := _OPTION.match(line):
            names = [name for name in match.group(1, 2) if name]
            options.append(Option(names, match[3] or "", match[4] or ""))
        elif options and line.startswith(" " * 20):
            options[-1].text = f"{options[-1].text} {line.strip()}".strip()
    return options


def _faults(text: str) -> tuple[str, list[Fault], str]:
    """The words in front of the faults, the faults, and what stands behind them."""
    found = re.search(r"^Faults(?:; (.*?))?:\n((?:  \S[^\n]*\n)+)(.*?)\n", text, re.M | re.S)
    if not found:
        return "", [], ""
    faults = []
    for line in found[2].splitlines():
        match = _ROW.match(line)
        if match is None:
            sys.exit(f"no fault can be read from {line!r}")
        faults.append(Fault(match[1], match[2] or "", match[3]))
    return " ".join((found[1] or "").split()), faults, " ".join(found[3].split())


def _command(program: Path, group: str, name: str, overview: str) -> Command:
    text = _said_by(program, "help", name)
    found = re.match(r"Usage: ([^\n]*)\n  ([^\n]*)\n\n(.*?)\n?Prints: ([^\n]*)\nExample: ([^\n]*)\n$",
                     text, re.S)
    if not found:
        sys.exit(f"the help of {name} cannot be read: {text!r}")
    usage, said, arguments, prints, example = found.groups()
    lines = re.sub(r"\n {8,}", "  ", arguments).splitlines()
    rows = [re.split(r"\s{2,}", line.strip(), maxsplit=1) for line in lines]
    return Command(group, name, usage, said, [Argument(*row) for row in rows], prints, example,
                   name not in overview.split())


def _commands(program: Path, overview: str) -> list[Command]:
    commands = []
    group = ""
    for line in _said_by(program, "commands").splitlines():
        if line and not line.startswith(" "):
            group = line
        elif match := re.match(r"  ([a-z][a-z-]*)", line):
            commands.append(_command(program, group, match[1], overview))
    return commands


def read(program: Path) -> ProgramHelp:
    """Runs the program, which must be one of this project's."""
    text = _said_by(program, "--help")
    found = re.match(r"Usage: ([^\n]*)\n(.*?)\n\n", text, re.S)
    if not found:
        sys.exit(f"{program} --help cannot be read: {text!r}")
    words, faults, remark = _faults(text)
    options = _columns(text)
    named = {option.long for option in options}
    overview = text.partition("\n\n")[2].partition(f"{program.name} commands")[0]
    for option in options:
        if option.long in ("--help", "--version"):
            option.names = next(o.names for o in STANDARD_OPTIONS if o.long == option.long)
    return ProgramHelp(
        program=program.name, usage=found[1], description=" ".join(found[2].split()),
        options=options + [option for option in STANDARD_OPTIONS if option.long not in named],
        faults=faults, fault_words=words, fault_remark=remark,
        commands=_commands(program, overview) if "COMMAND" in found[1] else [],
        lines=_sentence(text, "On standard input"), exit_status=_sentence(text, "Exit status"),
        environment=_sentence(text, "Environment"), example=_sentence(text, "Example"))


def read_simulator(program: Path, register: Path) -> ProgramHelp:
    """Of velno-simulator: its commands, and as options those of `run`, which are also velno-register's."""
    text = _said_by(program, "--help")
    told = read(register)
    told.program = program.name
    told.options = [option for option in told.options if option.long not in ("--help", "--version")]
    told.options += _columns(text.partition("\nOptions of run ")[2])
    rows = re.findall(r"^([a-z-]+) {2,}([^;:.\n]*)", text, re.M)
    told.commands = [Command("", name, "", said, [], "", "", False) for name, said in rows]
    if not {"run", "make-authority"} <= {command.name for command in told.commands}:
        sys.exit(f"{program} --help cannot be read: {text!r}")
    return told
