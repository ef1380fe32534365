#!/usr/bin/env python3
"""Writes the types of the bindings from inventory/schema/inventory.schema.json: generate.py [--check]

--check names the files that are not as they would be written, and ends with 1.
"""

import json
import sys
import textwrap
from pathlib import Path

root = Path(__file__).resolve().parent.parent
schema_file = "inventory/schema/inventory.schema.json"
mark = f"Made from {schema_file} by ./dev generate."
columns = 125


def read_schema():
    """The sets of words as (name, words, whether later releases add some); the properties as (name, kind, description)."""
    document = json.loads((root / schema_file).read_text(encoding="utf-8"))
    parts = document["$defs"]
    words = [
        ("Depth", document["properties"]["depth"]["enum"], False),
        ("Status", parts["status"]["enum"], False),
        ("SourceName", parts["source"]["properties"]["name"]["examples"], True),
        ("SourceState", parts["source"]["properties"]["state"]["enum"], False),
        ("Reason", parts["reasonOrNull"]["examples"], True),
    ]
    properties = [
        (name, entry["$ref"].removeprefix("#/$defs/").removesuffix("Value"), entry["description"])
        for name, entry in parts["fullCard"]["properties"].items()
    ]
    return words, properties


def quoted(words):
    return [f'"{word}"' for word in words]


# --- TypeScript ---------------------------------------------------------------------------------------------------------------

script_types = {"text": "string", "number": "number", "flag": "boolean", "displays": "Display[]"}


def script_union(name, words, is_open):
    # The last one keeps the others in an editor's list.
    types = quoted(words) + (["(string & {})"] if is_open else [])
    line = f"export type {name} = {' | '.join(types)};"
    if len(line) <= columns:
        return [line]
    lines = [f"export type {name} ="] + [f"    | {each}" for each in types]
    return lines[:-1] + [lines[-1] + ";"]


def script_file(words, properties):
    lines = [f"// {mark}", "", 'import type { Display } from "./index.js";']
    for each in words:
        lines += [""] + script_union(*each)
    lines += ["", "/** The properties of a card, and the types of their values. */", "export interface Properties {"]
    for name, kind, description in properties:
        lines += [f"    /** {description} */", f"    {name}: {script_types[kind]};"]
    return lines + ["}"]


# --- Python -------------------------------------------------------------------------------------------------------------------

python_types = {"text": "str", "number": "int", "flag": "bool", "displays": "List[Display]"}
python_values = {"text": "TextValue", "number": "NumberValue", "flag": "FlagValue", "displays": "DisplaysValue"}


def python_words(name, words, is_open):
    if is_open:
        comment = textwrap.wrap(f"Such as {', '.join(quoted(words))}; later releases add some.", columns - 2)
        return [f"# {line}" for line in comment] + [f"{name} = str"]
    return [f"{name} = Literal[{', '.join(quoted(words))}]"]


def python_class(name, docstring, fields):
    return ["", "", f"class {name}(TypedDict):", f'    """{docstring}"""', "", *fields]


def python_value(kind):
    fields = [f"value: Optional[{python_types[kind]}]", "status: Status", "source: Optional[SourceName]", "code: Optional[int]",
              "reason: Optional[Reason]"]
    docstring = "A value with its source, or None and the reason."
    return python_class(python_values[kind], docstring, [f"    {field}" for field in fields])


def python_file(words, properties):
    lines = [f'"""{mark}"""', "", "from typing import List, Literal, Optional, TypedDict"]
    for each in words:
        lines += [""] + python_words(*each)
    lines += python_class("Display", "An active display of a card; None where something is not known.", [
        "    gdi_name: Optional[str]", "    monitor_name: Optional[str]", "    width: Optional[int]", "    height: Optional[int]",
        "    refresh_millihertz: Optional[int]", "    connector: Optional[str]", "    primary: Optional[bool]"])
    for kind in python_values:
        lines += python_value(kind)
    full, flat = [], []
    for name, kind, description in properties:
        full += [f"    # {description}", f"    {name}: {python_values[kind]}"]
        flat += [f"    {name}: Optional[{python_types[kind]}]"]
    lines += python_class("Card", "A card, each value with its source.", full)
    return lines + python_class("FlatCard", "A card, each value alone; None where it is not known.", flat)


# --- writing ------------------------------------------------------------------------------------------------------------------


def main():
    words, properties = read_schema()
    files = {
        "bindings/node/card.d.ts": script_file(words, properties),
        "bindings/python/orvel_graphic_cards_inventory/card.py": python_file(words, properties),
    }
    different = []
    for name, lines in files.items():
        path, text = root / name, "\n".join(lines) + "\n"
        if path.exists() and path.read_text(encoding="utf-8") == text:
            continue
        different.append(name)
        if sys.argv[1:] != ["--check"]:
            path.write_text(text, encoding="utf-8")
    if sys.argv[1:] == ["--check"] and different:
        sys.exit("\n".join(f"{name} is not as {schema_file} has it: run ./dev generate" for name in different))


main()
