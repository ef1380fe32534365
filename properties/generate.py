#!/usr/bin/env python3
"""Generates code and documents from properties.toml: generate.py [--check | --count]

Each file named in `regions` has regions that begin with a line "Made from properties/properties.toml by ./dev generate." and
end with "clang-format on" (in documents: "End of what is made"). --check lists the outdated files and exits with 1 if there
are any; --count prints the number of properties. An error in the table exits with 2.
"""

import re
import sys
import textwrap
import tomllib
from pathlib import Path

root = Path(__file__).resolve().parent.parent
mark = "Made from properties/properties.toml by ./dev generate."
columns = 125

zeros = {"unsigned int": "0", "float": "0", "bool": "false", "const char*": '""'}
property_keys = {"type", "unit", "neutral", "zero_is_an_answer", "copied_first", "group", "label", "about"}
vendor_keys = {"unit", "source", "reader", "in_docs", "always"}
# A name of a platform's interface, such as Win32_Bios.SerialNumber.
interface_name = r"\w+(?:(?:_|::|\.)\w+)+|nvmlDevice\w+|DwmIs\w+"


# --- the table ----------------------------------------------------------------------------------------------------------------


class Mistakes(Exception):
    pass


def read_table():
    """The vendors, the units, and the properties, each with its name and a cell per vendor."""
    try:
        table = tomllib.loads((root / "properties/properties.toml").read_text(encoding="utf-8"))
    except tomllib.TOMLDecodeError as error:
        raise Mistakes([str(error)]) from None
    vendors = table["vendors"]
    mistakes = []
    properties = []
    for name, entry in table["properties"].items():
        fields = {key: value for key, value in entry.items() if not isinstance(value, dict)}
        cells = {vendor: {} for vendor in vendors}
        for key, cell in entry.items():
            if not isinstance(cell, dict):
                continue
            for vendor in vendors if key == "every" else key.split(", "):
                if vendor in vendors:
                    cells[vendor] |= cell
                else:
                    mistakes.append(f"{name}: {key} names no vendor")
        properties.append(fields | {"name": name, "cells": cells})
    for item in properties:
        mistakes += [f"{item['name']}: {mistake}" for mistake in mistakes_of(item, table["units"])]
    if mistakes:
        raise Mistakes(mistakes)
    return vendors, table["units"], properties


def mistakes_of(item, units):
    mistakes = [f"no {key}" for key in ("type", "group", "label", "about") if key not in item]
    mistakes += [f"{key} is no key" for key in item.keys() - property_keys - {"name", "cells"}]
    if mistakes:
        return mistakes
    if item["type"] not in zeros:
        mistakes.append(f"type \"{item['type']}\" is not one of {', '.join(zeros)}")
    used = [entry["unit"] for entry in (item, *item["cells"].values()) if "unit" in entry]
    mistakes += [f"unit \"{unit}\" is not in [units]" for unit in used if unit not in units]
    mistakes += [f"about does not say \"{unit}\"" for unit in used if unit not in item["about"]]
    for vendor, cell in item["cells"].items():
        mistakes += [f"{vendor}: {mistake}" for mistake in mistakes_of_cell(cell) or mistakes_of_setting(item, vendor, cell)]
    return mistakes


def mistakes_of_setting(item, vendor, cell):
    """Checks that the code of the vendor, or of all vendors, sets the property if and only if it has a source."""
    own = f"src/vendors/{vendor.lower()}"
    own_sets, base_sets = (sets_property(folder, item["name"]) for folder in (own, "src/vendors"))
    if cell.get("source") == "none":
        return [f"{own}/ sets it, but its source is \"none\""] if own_sets else []
    return [] if own_sets or base_sets else [f"no source in {own}/ sets it"]


def sets_property(folder, name):
    return any(re.search(rf"\.{name}\b", path.read_text(encoding="utf-8")) for path in (root / folder).glob("*.cpp"))


def mistakes_of_cell(cell):
    mistakes = [f"{key} is no key" for key in cell.keys() - vendor_keys]
    if ("source" in cell) == ("always" in cell):
        mistakes.append("a source, or \"none\", is missing" if "source" not in cell else "both source and always")
    if "reader" in cell and not is_logging_operation(cell["reader"]):
        mistakes.append(f"reader {cell['reader']} is no operation in src/ that logs")
    names = re.findall(interface_name, cell.get("source", ""))
    mistakes += [f"in_docs does not name {name}" for name in names if name not in cell.get("in_docs", name)]
    return mistakes


def is_logging_operation(reader, bodies=[]):
    """Whether src/ defines the operation, and its body has a log line. "Class::" is any operation of the class."""
    if not bodies:
        definition = re.compile(r"^(?:[\w:<>*& ]+ )?\*?([\w:]+)\([^;{}]*\)[^;{}]*\n\{\n(.*?)^\}", re.M | re.S)
        for path in (root / "src").rglob("*.cpp"):
            bodies.extend(definition.findall(path.read_text(encoding="utf-8")))
    return any("PLOG" in body for name, body in bodies
               if name == reader or (reader.endswith("::") and name.startswith(reader)))


# --- C++ ----------------------------------------------------------------------------------------------------------------------


def local(item):
    return item["name"][0].lower() + item["name"][1:]


def wrap(text, first, rest):
    return textwrap.wrap(text, columns, initial_indent=first, subsequent_indent=rest, break_long_words=False,
                         break_on_hyphens=False)


def fill(words, first, rest, last):
    """The words as a comma-separated list in wrapped lines, followed by `last`."""
    listed = ", ".join(word.replace(" ", "\0") for word in words) + last # NUL keeps a word that contains a space in one line
    return [line.replace("\0", " ") for line in wrap(listed, first, rest)]


def parameters(properties, first, rest, last):
    return fill([f"{item['type']} {local(item)}" for item in properties], first, rest, last)


def texts(properties):
    """The texts, in the order in which the record copies and releases them."""
    found = [item for item in properties if item["type"] == "const char*"]
    return sorted(found, key=lambda item: "copied_first" not in item)


def header_constructor(properties, **_):
    return parameters(properties, "    GraphicCardInfo(", " " * 20, ");")


def header_getters(properties, **_):
    made = []
    for item in properties:
        made += wrap(item["about"], "    /// ", "    /// ")
        made.append(f"    {item['type']} Get{item['name']}() const;")
    return made


def header_members(properties, **_):
    return [f"    {item['type']} {item['name']};" for item in properties]


def record(properties, **_):
    made = ["GraphicCardInfo::GraphicCardInfo("]
    made += parameters(properties, "    ", "    ", ")")
    members = [f"{item['name']}({local(item)})" for item in properties if item["type"] != "const char*"]
    made += [f"    {':' if i == 0 else ' '} {member}{',' if i + 1 < len(members) else ''}" for i, member in enumerate(members)]
    made += ["{"] + [f"    {item['name']} = CopyText({local(item)});" for item in texts(properties)] + ["}", ""]
    made += ["GraphicCardInfo::~GraphicCardInfo()", "{"]
    made += [f"    ReleaseText({item['name']});" for item in texts(properties)] + ["}"]
    for item in properties:
        made += ["", f"{item['type']} GraphicCardInfo::Get{item['name']}() const", "{", f"    return {item['name']};", "}"]
    return made


def msvc_constructor(properties, **_):
    made = ["void* GraphicCardInfo_MsvcConstructor("]
    made += parameters(properties, "    void* storage, ", "    ", ")")
    made += ["{", "    CallForMsvc([&] {", "        new (storage) GraphicCardInfo("]
    made += fill(map(local, properties), " " * 12, " " * 12, ");")
    return made + ["    });", "    return storage;", "}"]


def gathered(properties, **_):
    forms = {"unsigned int": "uint32_t {} = 0;", "float": "float {} = 0.0F;", "bool": "bool {} = false;",
             "const char*": "std::string {};"}
    return ["    " + forms[item["type"]].format(item["name"]) for item in properties]


def gathered_arguments(properties, **_):
    words = [f"p.{item['name']}" + (".c_str()" if item["type"] == "const char*" else "") for item in properties]
    return ["    return std::make_unique<GraphicCardInfo>("] + fill(words, " " * 8, " " * 8, ");")


def literal(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def field_count(properties, **_):
    return [f"inline constexpr std::size_t propertyCount = {len(properties)};"]


def fields(properties, **_):
    made = []
    for item in properties:
        zero = "true" if item.get("zero_is_an_answer") else "false"
        made.append(f"    {{{literal(item['name'])}, FieldGroup::{item['group']}, {literal(item['label'])}, {zero}, "
                    f"Read<&GraphicCardInfo::Get{item['name']}>}},")
    return made


def source_columns(vendors, properties, **_):
    manufacturer = next(item for item in properties if item["name"] == "Manufacturer")
    names = [literal(manufacturer["cells"][vendor]["always"]) for vendor in vendors]
    return [f"constexpr std::array<std::string_view, {len(vendors)}> manufacturers = {{{', '.join(names)}}};"]


def sources(vendors, units, properties, **_):
    made = []
    for item in properties:
        made.append(f"    {{{literal(item['name'])}, {{{{")
        for vendor in vendors:
            cell = item["cells"][vendor]
            source = "constant" if "always" in cell else cell["source"]
            source = "not available from this vendor" if source == "none" else source
            unit = units.get(cell.get("unit", item.get("unit")), "")
            made.append(f"        {{{literal(source)}, {literal(cell.get('reader', ''))}, {literal(unit)}}},")
        made.append("    }}},")
    return made


# --- documents ----------------------------------------------------------------------------------------------------------------


def in_docs(cell, item, names):
    """A source as the documents show it: without the name of its interface, and with identifiers in backticks."""
    if "always" in cell:
        return f"always `\"{cell['always']}\"`"
    if cell["source"] == "none":
        return f"always `{zeros[item['type']]}`"
    source = re.sub(r"^(WMI|NVAPI|NVML|ADL|ADLX|OpenCL|DXGI) ", "", cell["source"])
    tick = lambda match: f"`{match[0]}`" if match[0] in names or re.fullmatch(interface_name, match[0]) else match[0]
    return cell.get("in_docs", re.sub(interface_name + r"|\w+", tick, source))


def matrix(vendors, properties, **_):
    names = {item["name"] for item in properties}
    made = ["", "| Property | Type | Unit | Neutral value | " + " | ".join(vendors) + " |", "|---" * (4 + len(vendors)) + "|"]
    for item in properties:
        units = [item["unit"]] if "unit" in item else []
        units += [f"{vendor}: {item['cells'][vendor]['unit']}" for vendor in vendors if "unit" in item["cells"][vendor]]
        cells = [f"`{item['name']}`", item["type"], "; ".join(units) or "-", item.get("neutral", f"`{zeros[item['type']]}`")]
        cells += [in_docs(item["cells"][vendor], item, names) for vendor in vendors]
        made.append("| " + " | ".join(cells) + " |")
    return made + [""]


# --- files --------------------------------------------------------------------------------------------------------------------

# The functions that write the regions of each file, in the order of the regions.
regions = {
    "include/GraphicCardInfo.h": [header_constructor, header_getters, header_members],
    "src/record/GraphicCardInfo.cpp": [record],
    "src/record/GraphicCardProperties.h": [gathered],
    "src/record/GraphicCardProperties.cpp": [gathered_arguments],
    "src/abi/MsvcEntryPoints.cpp": [msvc_constructor],
    "tools/CardFields.h": [field_count],
    "tools/CardFields.cpp": [fields],
    "tools/FieldSources.cpp": [source_columns, sources],
    "docs/properties.md": [matrix],
}

region = re.compile(rf"(^[^\n]*{re.escape(mark)}[^\n]*\n(?: *// clang-format off\n)?)(.*?)"
                    r"(^[^\n]*(?:clang-format on|End of what is made)[^\n]*\n)", re.M | re.S)


def made_file(path, table):
    """The file's current text, and its text with generated regions."""
    makers = iter(regions[path])
    text = (root / path).read_text(encoding="utf-8")
    made, count = region.subn(lambda match: match[1] + "".join(line + "\n" for line in next(makers)(**table)) + match[3], text)
    if count != len(regions[path]):
        raise Mistakes([f"{path} has {count} of the regions that begin with \"{mark}\", not {len(regions[path])}"])
    return text, made


def main(arguments):
    try:
        vendors, units, properties = read_table()
        table = {"vendors": vendors, "units": units, "properties": properties}
        files = {path: made_file(path, table) for path in regions}
    except Mistakes as mistakes:
        for mistake in mistakes.args[0]:
            print(f"properties/properties.toml: {mistake}", file=sys.stderr)
        return 2
    if "--count" in arguments:
        print(len(properties))
        return 0
    different = [path for path, (now, made) in files.items() if now != made]
    for path in different:
        if "--check" in arguments:
            print(f"{path} is not as properties/properties.toml has it: run ./dev generate", file=sys.stderr)
        else:
            (root / path).write_text(files[path][1], encoding="utf-8")
    return 1 if different and "--check" in arguments else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
