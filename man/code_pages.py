# SPDX-License-Identifier: Apache-2.0
"""Makes docs/codes.md and docs/tr/codes.md: every result, cause and detail of the device library in words.

code_pages.py VELNOCTL ROOT COMPILER [--check]

The numbers come from velnoext.h, the words from `velnoctl explain`; how to provoke each is written here,
and a test does it. With --check nothing is written: it fails when a page differs from what would be written.
"""

import json
import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path
from typing import Any

sys.path.insert(0, str(Path(__file__).parent.parent / "bindings" / "generator"))
import header_reader  # noqa: E402  (its folder is named above)
from header_model import Api  # noqa: E402


@dataclass(frozen=True)
class Way:
    """How to see a number: what the simulated programs are started with, and what velnoctl is asked."""

    ask: str
    register: str | None = None  # options of velno-register; None: none is needed
    relay: str | None = None  # options of velno-relay


START_SALE = "start-sale"
LISTEN = "--listen 127.0.0.1:4100"

RESULTS = {
    1: Way("forget"),
    2: Way("login", "--fault close=login"),
    4: Way("section 9", ""),
    5: Way("z", "--fault short-reply"),
    6: Way(START_SALE, "--state 8"),
    7: Way(START_SALE, "--fault error=1"),
    8: Way("login", "--fault refuse=login"),
    9: Way("paper", "--no-paper"),
    10: Way("state", "--fault wrong-authority"),
    11: Way("login", "--fault bad-mac"),
    12: Way("login", "--fault no-mac"),
}

CAUSES = {
    1007: Way("--timeout 100 state"),
    1008: Way("--listen 198.51.100.1:4100 state"),
    3005: Way("login", "--fault close=login"),
    3006: Way("--timeout 200 login", "--fault half-frame"),
    4000: Way("state", "--fault oversize"),
    4001: Way("state", "--fault bad-crc"),
    4002: Way("state", "--fault other-serial"),
    4003: Way("state", "--fault no-message-tag"),
    5000: Way("state", "--fault wrong-app-hash"),
    5001: Way("state", "--fault wrong-authority"),
    5002: Way("state", "--fault bad-signature"),
    6001: Way("--relay state"),
    6003: Way("--relay state", None, ""),
    6004: Way("--relay state", "", "--fault no-echo"),
    6005: Way("--relay state", "", "--fault wrong-echo"),
    7002: Way("--answer-limit 200 login", "--fault mute=login"),
    7006: Way("forget"),
    7007: Way("send 00", ""),
    7009: Way("text Merhaba", ""),
    7011: Way("section 9", ""),
    8001: Way("z", "--fault short-reply"),
    8003: Way("login", "--fault bad-mac"),
    8005: Way("login", "--fault no-mac"),
    8007: Way("login", "--fault huge-frame"),
    9001: Way("login", "--fault refuse=login"),
    9002: Way("paper", "--no-paper"),
    10001: Way(START_SALE, "--fault error=1"),
    10002: Way(START_SALE, "--fault error=2"),
    10004: Way(f"{START_SALE} item 99999.00 Altın", ""),
    10016: Way(START_SALE, "--fault error=16"),
    10032: Way(f"{START_SALE} delete 5", ""),
    10064: Way(START_SALE, "--fault error=64"),
    **{20000 + state: Way(START_SALE, f"--state {state}") for state in (0, 2, 3, 6, 8)},
}


@dataclass(frozen=True)
class Language:
    """The words of a page around those of the library."""

    code: str
    file: str
    title: str
    head: str
    results: str
    causes: str
    register: str
    details: str
    detail_head: str
    provoke: str
    then: str
    comes_with: str
    labels: tuple[str, str]  # of cause and cure, as the library says them


ENGLISH_HEAD = """\
For whoever has a number and wants to know what it means: each with its cause and cure, and with what
provokes it. `velnoctl explain CODE [DETAIL]` says the same, in a program `velnoext_result_text()`,
`velnoext_cause_text()` and `velnoext_detail_text()`. A function returns a result; `velnoext_cause()`
tells why, and `velnoext_error_detail()` which argument was wrong. The pairing window shows a cause,
behind "Eşleme hatası: ".

To try one: start what is named behind "Provoke it", and add `--serial UB1234567890 --connect
127.0.0.1:4100` to `velno-register` (at a relay `--serial UB1234567890 --relay 127.0.0.1:50910`),
`--serial UB1234567890 --listen 127.0.0.1:4100 --app 5` to `velnoctl`, unless it names another place."""

ENGLISH = Language(
    code="en",
    file="docs/codes.md",
    title="Results, causes and details",
    head=ENGLISH_HEAD,
    results="Results",
    causes="Causes",
    register="What a register gives as its reason is added to a base: 10000 + its error, 20000 + its state,\n"
    "30000 + what its display says. The numbers are the register's own; those below are the\n"
    "simulated register's, whose error is a sum of bits.",
    details="Details",
    detail_head="| Detail | What it means |",
    provoke="Provoke it",
    then="then",
    comes_with="Comes with",
    labels=("Cause", "Cure"),
)

TURKISH_HEAD = """\
Elinde bir sayı olup ne anlama geldiğini merak edenler için: her biri nedeni, çözümü ve nasıl
denenebileceğiyle. Aynısını `velnoctl --language tr explain KOD [AYRINTI]` da söyler; bir programda
`velnoext_result_text()`, `velnoext_cause_text()` ve `velnoext_detail_text()`. İşlevler bir sonuç
döndürür; nedenini `velnoext_cause()`, hangi değerin yanlış olduğunu `velnoext_error_detail()` söyler.
Eşleme penceresi "Eşleme hatası: " yazısının arkasında bir neden gösterir.

Denemek için: "Denemek için" yazısının arkasındaki programları başlatın; başka bir yer yazmıyorsa
`velno-register` komutuna `--serial UB1234567890 --connect 127.0.0.1:4100` (aktarma sunucusunda `--serial
UB1234567890 --relay 127.0.0.1:50910`), `velnoctl` komutuna `--serial UB1234567890 --listen
127.0.0.1:4100 --app 5` ekleyin."""

TURKISH = Language(
    code="tr",
    file="docs/tr/codes.md",
    title="Sonuçlar, nedenler ve ayrıntılar",
    head=TURKISH_HEAD,
    results="Sonuçlar",
    causes="Nedenler",
    register="Yazarkasanın kendi bildirdiği neden bir tabana eklenir: 10000 + hatası, 20000 + durumu, 30000 +\n"
    "ekranının söylediği. Sayılar yazarkasanındır; aşağıdakiler benzetilmiş yazarkasanınkilerdir,\n"
    "onun hatası bitlerin toplamıdır.",
    details="Ayrıntılar",
    detail_head="| Ayrıntı | Anlamı |",
    provoke="Denemek için",
    then="ardından",
    comes_with="Birlikte geldiği sonuçlar",
    labels=("Neden", "Çözüm"),
)


def explained(velnoctl: Path, language: str, requests: list[str]) -> list[dict[str, Any]]:
    """What velnoctl explains, in the order in which it is asked."""
    words = [word for request in requests for word in ("explain", *request.split())]
    run = subprocess.run([velnoctl, "--json", "--language", language, *words], capture_output=True, text=True,
                         encoding="utf-8", check=False)
    if run.returncode != 0:
        sys.exit(f"velnoctl explain ended with {run.returncode}: {run.stderr}")
    return [json.loads(line)["explained"] for line in run.stdout.splitlines()]


def provoked(way: Way | None, language: Language) -> str:
    if way is None:
        return ""
    steps = []
    if way.relay is not None:
        steps.append(f"`{' '.join(('velno-relay', way.relay)).strip()}`")
    if way.register is not None:
        steps.append(f"`{' '.join(('velno-register', way.register)).strip()}`")
    return f"- **{language.provoke}:** {f', {language.then} '.join([*steps, f'`velnoctl {way.ask}`'])}\n"


def entry(heading: str, sentence: str, cause: str, cure: str, language: Language) -> str:
    labels = language.labels
    return f"### {heading}\n\n{sentence}\n\n- **{labels[0]}:** {cause}\n- **{labels[1]}:** {cure}\n"


def results_part(velnoctl: Path, api: Api, language: Language) -> str:
    numbers = [one.value for one in api.enums["VelnoResult"].values]
    page = f"## {language.results}\n\n"
    for said in explained(velnoctl, language.code, [str(number) for number in numbers]):
        heading = f"{said['code']}: {said['result']}"
        page += entry(heading, said["sentence"], said["cause"], said["cure"], language)
        page += provoked(RESULTS.get(said["code"]), language) + "\n"
    return page


def causes_part(velnoctl: Path, api: Api, language: Language) -> str:
    values = {one.value: one for one in api.enums["VelnoCause"].values if one.value != 0}
    numbers = sorted({*values, *CAUSES})
    page = f"## {language.causes}\n\n"
    for number, said in zip(numbers, explained(velnoctl, language.code, [str(number) for number in numbers])):
        if number == 10000:
            page += f"{language.register}\n\n"
        sentence, *labelled = said["causeText"].split("\n")
        cause, cure = (line.partition(": ")[2] for line in labelled)
        page += entry(f"{number}: {said['causeName']}", sentence, cause, cure, language)
        if number in values and (results := re.search(r"\(([\d, ]+)\)$", values[number].doc.text)):
            page += f"- **{language.comes_with}:** {results[1]}\n"
        page += provoked(CAUSES.get(number), language) + "\n"
    return page


def details_part(velnoctl: Path, api: Api, language: Language) -> str:
    numbers = [one.value for one in api.enums["VelnoDetail"].values if one.value != 0]
    requests = [f"{3 if number < 0x400 else 4} {number}" for number in numbers]
    page = f"## {language.details}\n\n{language.detail_head}\n|---|---|\n"
    for number, said in zip(numbers, explained(velnoctl, language.code, requests)):
        page += f"| 0x{number:X} | {said['detailText']} |\n"
    return page


def page_of(velnoctl: Path, api: Api, language: Language) -> str:
    return (f"# {language.title}\n\n{language.head}\n\n{results_part(velnoctl, api, language)}"
            f"{causes_part(velnoctl, api, language)}{details_part(velnoctl, api, language)}")


def main() -> None:
    velnoctl, root, compiler = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
    api = header_reader.read_api(root, compiler)
    for language in (ENGLISH, TURKISH):
        path = root / language.file
        page = page_of(velnoctl, api, language)
        if sys.argv[4:] != ["--check"]:
            path.write_text(page, encoding="utf-8")
        elif not path.is_file() or path.read_text(encoding="utf-8") != page:
            sys.exit(f"{language.file} is not what the library says: run scripts/codes")


if __name__ == "__main__":
    main()
