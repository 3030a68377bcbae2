# SPDX-License-Identifier: Apache-2.0
"""Makes the completions of a program for bash, zsh and fish: make_completions.py PROGRAM FOLDER

Options, commands and faults are those that the program tells with --help (man/program_help.py). What may be
typed for a value is looked up by the name that the help gives the value.
"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "man"))
import program_help  # noqa: E402  (its folder is named above)
from program_help import Argument, Command, Fault, Option, ProgramHelp  # noqa: E402

FILE, FOLDER, ANY = "<file>", "<folder>", "<any>"

# Values whose words are known. What is not here may be anything.
VALUES = {
    "FILE": FILE, "FILE.json": FILE, "DIR": FOLDER,
    "ANSWER": "paid sell-again drop", "FLAG": "no yes", "KINDS": "png text text,png", "LANG": "en tr",
    "LINE": "last", "MEANS": "card cash",
    "STYLE": "a ab b",
}


def typed_fault(fault: Fault) -> str:
    return f"{fault.name}=" if fault.value else fault.name


def words_of(value: str, told: ProgramHelp) -> str:
    if value == "NAME[=VALUE]":
        return " ".join(map(typed_fault, told.faults))
    if value == "COMMAND":
        return " ".join(command.name for command in told.commands)
    return VALUES.get(value, ANY)


def commands_of(told: ProgramHelp) -> list[Command]:
    """Those that may stand on the command line."""
    return [command for command in told.commands if not command.is_of_shell]


def placed(command: Command) -> list[Argument]:
    return [argument for argument in command.arguments if not argument.key and argument.usage != "+ ..."]


def keys_of(command: Command) -> str:
    return " ".join(argument.key for argument in command.arguments if argument.key)


def is_optional(command: Command, argument: Argument) -> bool:
    return f"[{argument.usage}]" in command.usage


def single_quoted(words: str) -> str:
    return "'" + words.replace("'", "'\\''") + "'"


def function_name(told: ProgramHelp) -> str:
    return told.program.replace("-", "_")


def template_text(name: str) -> str:
    return (Path(__file__).parent / name).read_text(encoding="utf-8")


def shared(name: str) -> str:
    """A piece that several templates have, without its licence's line."""
    return template_text(name).partition("\n")[2]


def filled(template: str, told: ProgramHelp, parts: dict[str, str]) -> str:
    text = template_text(template).replace("@offer@", shared("bash-offer.in"))
    text = text.replace("@faults@", shared("zsh-faults.in"))
    for name, part in {"program": told.program, "function": function_name(told), **parts}.items():
        text = text.replace(f"@{name}@", part)
    return text


def table(rows: dict[str, str]) -> str:
    """The rows of a table in bash; those that say nothing are left out."""
    said = "".join(f"\n        [{name}]={single_quoted(words)}" for name, words in rows.items() if words)
    return said + "\n    " if said else ""


def values_of_options(told: ProgramHelp) -> dict[str, str]:
    return {option.long: words_of(option.value, told) for option in told.options if option.value}


def bash(told: ProgramHelp) -> str:
    takes = values_of_options(told)
    arguments: dict[str, str] = {}
    for command in commands_of(told):
        for argument in command.arguments:
            value = argument.usage.partition("=")[2] if argument.key else argument.usage
            if (words := words_of(value, told)) != ANY:
                takes[argument.key.rstrip("=") or argument.usage] = words
        arguments[command.name] = " ".join(f"[{argument.usage}]" if is_optional(command, argument)
                                           else argument.usage for argument in placed(command))
    return filled("bash.in", told, {
        "options": " ".join(name for option in told.options for name in option.names),
        "commands": " ".join(command.name for command in commands_of(told)),
        "takes": table(takes), "arguments": table(arguments),
        "keys": table({command.name: keys_of(command) for command in commands_of(told)}),
    })


def described(name: str, text: str) -> str:
    """A row of _describe in zsh."""
    return single_quoted(f"{name.replace(':', chr(92) + ':')}:{text}")


def zsh_option(option: Option, told: ProgramHelp) -> str:
    text = "".join("\\" + sign if sign in "[]:\\" else sign for sign in option.text)
    if not option.value:
        names = "{" + ",".join(option.names) + "}" if len(option.names) > 1 else option.long
        return f"        {names}{single_quoted(f'[{text}]')} \\\n"
    words = words_of(option.value, told)
    action = {FILE: "_files", FOLDER: "_files -/", ANY: " "}.get(words, f"({words})")
    if option.value == "NAME[=VALUE]":
        action = f"_{function_name(told)}_faults"
    repeated = "*" if "repeated" in option.text else ""
    label = option.value.split("[")[0].replace(":", "\\:")
    return f"        {single_quoted(f'{repeated}{option.long}=[{text}]:{label}:{action}')} \\\n"


def zsh_table(rows: dict[str, str]) -> str:
    said = "".join(f"\n        {single_quoted(name)} {single_quoted(words)}"
                   for name, words in rows.items() if words)
    return said + "\n    " if said else ""


def zsh_rows(rows: list[str]) -> str:
    return "".join(f"\n        {row}" for row in rows) + "\n    " if rows else ""


def zsh_options(told: ProgramHelp) -> dict[str, str]:
    plain = [described(fault.name, fault.text) for fault in told.faults if not fault.value]
    valued = [described(typed_fault(fault), fault.text) for fault in told.faults if fault.value]
    return {
        "options": "".join(zsh_option(option, told) for option in told.options),
        "plain_faults": zsh_rows(plain),
        "valued_faults": zsh_rows(valued),
    }


def zsh(told: ProgramHelp) -> str:
    first = {command.name: words_of(placed(command)[0].usage, told)
             for command in commands_of(told) if placed(command)}
    return filled("zsh.in", told, {
        **zsh_options(told),
        "rest": f"'*:command:_{function_name(told)}_words'" if told.commands else "&& return",
        "commands": zsh_rows([described(command.name, command.text) for command in commands_of(told)]),
        "first": zsh_table({command: words for command, words in first.items() if words != ANY}),
        "keys": zsh_table({command.name: keys_of(command) for command in commands_of(told)}),
    })


def fish_quoted(words: str) -> str:
    return "'" + words.replace("\\", "\\\\").replace("'", "\\'") + "'"


def fish_option(option: Option, told: ProgramHelp, condition: str = "") -> str:
    complete = f"complete -c {told.program}{condition}"
    short = "".join(f" -s {name[1]}" for name in option.names if not name.startswith("--"))
    line = f"{complete}{short} -l {option.long[2:]} -d {fish_quoted(option.text)}"
    if not option.value:
        return f"{line}\n"
    if option.value == "NAME[=VALUE]":
        return f"{line} -x\n" + "".join(
            f"{complete} -l {option.long[2:]} -x -a {typed_fault(fault)} "
            f"-d {fish_quoted(fault.text)}\n" for fault in told.faults)
    words = words_of(option.value, told)
    taken = {FILE: "-r -F", FOLDER: "-x -a '(__fish_complete_directories)'", ANY: "-x"}
    return f"{line} {taken.get(words, f'-x -a {fish_quoted(words)}')}\n"


def fish_command(command: Command, told: ProgramHelp) -> str:
    lines = f"complete -c {told.program} -a {command.name} -d {fish_quoted(command.text)}\n"
    words = words_of(placed(command)[0].usage, told) if placed(command) else ANY
    behind = f"complete -c {told.program} -n '__fish_prev_arg_in {command.name}'"
    if words == FILE:
        lines += f"{behind} -F\n"
    elif words != ANY:
        lines += f"{behind} -a {fish_quoted(words)}\n"
    for argument in command.arguments:
        if argument.key:
            lines += (f"complete -c {told.program} -n '__fish_seen_subcommand_from {command.name}' "
                      f"-a {argument.key} -d {fish_quoted(argument.accepted)}\n")
    return lines


def fish(told: ProgramHelp) -> str:
    return filled("fish.in", told, {
        "options": "".join(fish_option(option, told) for option in told.options),
        "commands": "".join(fish_command(command, told) for command in commands_of(told)),
    })


def write(folder: Path, program: str, texts: list[str]) -> None:
    """@param texts  for bash, zsh and fish"""
    names = [f"bash/{program}", f"zsh/_{program}", f"fish/{program}.fish"]
    for name, text in zip(names, texts, strict=True):
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_text(text, encoding="utf-8")


def main() -> None:
    told = program_help.read(Path(sys.argv[1]))
    write(Path(sys.argv[2]), told.program, [bash(told), zsh(told), fish(told)])


if __name__ == "__main__":
    main()
