# SPDX-License-Identifier: Apache-2.0
"""Says of JSON texts whether a schema accepts them.

schema_verdicts.py SCHEMA reads from standard input one text a line, in hexadecimal digits, and answers each with a
line: "good", or "bad" and why. The schema itself is looked at first, and its examples. References are files beside
the schema; nothing is fetched.
"""

import json
import pathlib
import sys

import jsonschema


def refuse_to_fetch(address):
    raise RuntimeError(f"the schema refers to {address}, which is no file beside it")


def validator(path):
    schema = json.loads(path.read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    resolver = jsonschema.RefResolver(
        path.as_uri(), schema, handlers={"http": refuse_to_fetch, "https": refuse_to_fetch}
    )
    return schema, jsonschema.Draft202012Validator(schema, resolver=resolver)


def verdict(judge, value):
    for error in judge.iter_errors(value):
        return "bad " + " ".join(error.message.split())[:200]
    return "good"


def main():
    schema, judge = validator(pathlib.Path(sys.argv[1]).resolve())
    for example in schema["examples"]:
        print("example", verdict(judge, example))
    for line in sys.stdin:
        print(verdict(judge, json.loads(bytes.fromhex(line).decode("utf-8"))))


main()
