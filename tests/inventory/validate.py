"""validate.py [--closed] SCHEMA DOCUMENT: prints what a document breaks of a schema, and fails if there is anything.

The schema accepts what later releases append. --closed accepts this release's names only."""

import json
import sys

from jsonschema import Draft202012Validator


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def closed(part):
    """The schema that allows the named properties and the listed examples only."""
    if isinstance(part, list):
        return [closed(each) for each in part]
    if not isinstance(part, dict):
        return part
    part = {name: closed(each) for name, each in part.items()}
    if "required" in part:
        part["additionalProperties"] = False
    if "examples" in part:
        part["enum"] = part["examples"] + [None] * ("null" in part["type"])
    return part


schema = load(sys.argv[-2])
Draft202012Validator.check_schema(schema)
if "--closed" in sys.argv:
    schema = closed(schema)
errors = list(Draft202012Validator(schema).iter_errors(load(sys.argv[-1])))
for error in errors:
    print(f"{error.json_path}: {error.message[:200]}")
sys.exit(1 if errors else 0)
