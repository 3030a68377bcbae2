# SPDX-License-Identifier: Apache-2.0
"""Makes the manual page of a program: program_page.py PROGRAM TEMPLATE VERSION DATE OUTPUT

What the program tells of itself with --help fills the lines of the template that begin with "@": @options@,
@faults@, @commands@, @lines@ and @exit@, @version@ and @date@ wherever they stand. All else in the template
is written by hand.
"""

import re
import sys
from pathlib import Path

import program_help
import roff
from program_help import Command, Fault, Option, ProgramHelp


def _option(option: Option) -> str:
    names = ", ".join(roff.bold(name) for name in option.names)
    value = f" {roff.slanted(option.value)}" if option.value else ""
    return roff.tagged(names + value, roff.text(option.text))


def _fault(fault: Fault) -> str:
    value = f"={roff.slanted(fault.value)}" if fault.value else ""
    return roff.tagged(roff.bold(fault.name) + value, roff.text(fault.text))


def _usage(command: Command) -> str:
    name, _, arguments = command.usage.partition(" ")
    return f"{roff.bold(name)} {roff.slanted(arguments)}" if arguments else roff.bold(name)


def _command(command: Command) -> str:
    place = " (in the shell alone)" if command.is_of_shell else ""
    page = roff.tagged(_usage(command), roff.text(f"{command.text}{place}. Prints: {command.prints}."))
    for argument in command.arguments:
        page += f".RS\n{roff.tagged(roff.slanted(argument.usage), roff.text(argument.accepted))}.RE\n"
    return page


def _commands(commands: list[Command]) -> str:
    page = ""
    group = ""
    for command in commands:
        if command.group != group:
            group = command.group
            page += f".SS {roff.text(group)}\n"
        page += _command(command)
    return page


def _faults(told: ProgramHelp) -> str:
    words = f"{roff.text(told.fault_words[:1].upper() + told.fault_words[1:])}.\n" if told.fault_words else ""
    remark = f".PP\n{roff.text(told.fault_remark)}\n" if told.fault_remark else ""
    return words + "".join(map(_fault, told.faults)) + remark


def page(told: ProgramHelp, template: str, version: str, date: str) -> str:
    parts = {
        "options": "".join(map(_option, told.options)),
        "faults": _faults(told),
        "commands": _commands(told.commands),
        "lines": roff.typed(told.lines) + "\n",
        "exit": roff.text(told.exit_status) + "\n",
    }
    made = re.sub(r"^@(\w+)@\n", lambda match: parts.pop(match[1]), template, flags=re.M)
    lost = [name for name, part in parts.items() if part.strip()]
    if lost:
        sys.exit(f"the template of {told.program} has no line for {', '.join(lost)}")
    return made.replace("@version@", version).replace("@date@", date)


def main() -> None:
    program, template, version, date, output = sys.argv[1:]
    told = program_help.read(Path(program))
    made = page(told, Path(template).read_text(encoding="utf-8"), version, date)
    Path(output).write_text(made, encoding="utf-8")


if __name__ == "__main__":
    main()
