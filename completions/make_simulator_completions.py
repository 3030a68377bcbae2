# SPDX-License-Identifier: Apache-2.0
"""Makes the completions of velno-simulator: make_simulator_completions.py SIMULATOR REGISTER FOLDER

Its options stand behind the command `run`, most of them are velno-register's, and behind -- another program's
words begin.
"""

import sys
from pathlib import Path

import make_completions as common
from make_completions import ProgramHelp, program_help


def bash(told: ProgramHelp) -> str:
    return common.filled("bash-simulator.in", told, {
        "options": " ".join(option.long for option in told.options),
        "commands": " ".join(command.name for command in told.commands),
        "takes": common.table(common.values_of_options(told)),
    })


def zsh(told: ProgramHelp) -> str:
    commands = [common.described(command.name, command.text) for command in told.commands]
    return common.filled("zsh-simulator.in", told, {
        **common.zsh_options(told), "commands": common.zsh_rows(commands),
    })


def fish(told: ProgramHelp) -> str:
    behind_run = " -n '__fish_seen_subcommand_from run'"
    return common.filled("fish-simulator.in", told, {
        "options": "".join(common.fish_option(option, told, behind_run) for option in told.options),
        "commands": "".join(f"complete -c {told.program} -n __fish_use_subcommand -a {command.name} "
                            f"-d {common.fish_quoted(command.text)}\n" for command in told.commands),
    })


def main() -> None:
    told = program_help.read_simulator(Path(sys.argv[1]), Path(sys.argv[2]))
    common.write(Path(sys.argv[3]), told.program, [bash(told), zsh(told), fish(told)])


if __name__ == "__main__":
    main()
