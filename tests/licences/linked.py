#!/usr/bin/env python3
"""Compares licenses/components.txt with what is in the programs and DLLs: linked.py SOURCE BUILD LIST PACKAGE=FILE,FILE…

FILE is the path of a program or DLL in the build folder. Each is linked again for the linker's map, which has the objects and the
members of libraries that are in it; Ninja knows the headers of each object. Prints each difference, and ends with 1 when there is one.
"""

import os
import re
import subprocess
import sys
import tempfile
from functools import lru_cache
from pathlib import Path

source, build, list_file = (Path(argument).resolve() for argument in sys.argv[1:4])


def run(command):
    return subprocess.run(command, shell=isinstance(command, str), cwd=build, check=True, text=True, stdout=subprocess.PIPE).stdout


def absolute(path):
    return os.path.normpath(build / path)


def read_list():
    """Each component as (name, pattern, packages)."""
    lines = [line.split() for line in list_file.read_text(encoding="utf-8").splitlines() if line and not line.startswith("#")]
    return [(name, re.compile(pattern), packages.split(",")) for name, pattern, packages, _ in lines]


def command_of(output):
    return run(["ninja", "-t", "commands", "-s", output]).splitlines()[-1]


@lru_cache(maxsize=None)
def objects_of(library):
    """The object files of a library that is built here, by their names in it."""
    return {Path(word).name: word for word in command_of(library).split() if word.endswith(".obj")}


def linked(program):
    """The files in a program: objects, and libraries that others have built."""
    with tempfile.NamedTemporaryFile() as map_file, tempfile.NamedTemporaryFile() as other:
        command = command_of(program).replace(f" -o {program} ", f" -o {other.name} -Wl,-Map,{map_file.name} ")
        run(re.sub(r"-Wl,--out-implib,\S+", "", command))
        text = Path(map_file.name).read_text(encoding="utf-8")
    for path in re.findall(r"^LOAD (\S+)$", text, re.MULTILINE):
        if not path.endswith(".a"):
            yield path
    for library, member in re.findall(r"^(\S+\.a)\(([^)]+)\)$", text, re.MULTILINE):
        if not absolute(library).startswith(f"{build}/"):
            yield library
        elif member in objects_of(library):  # not an import library
            yield objects_of(library)[member]


@lru_cache(maxsize=None)
def headers_of(objects):
    output = run(["ninja", "-t", "deps", *objects])
    return re.findall(r"^ {4}(\S+)$", output, re.MULTILINE)


def foreign_files(program):
    """The absolute paths of what is not this project's own."""
    files = set(linked(program))
    objects = tuple(sorted(path for path in files if absolute(path).startswith(f"{build}/") and path.endswith(".obj")))
    paths = {absolute(path) for path in files | set(headers_of(objects))}
    dependencies = f"{build}/deps/"
    return {path for path in paths if path.startswith(dependencies) or not path.startswith((f"{source}/", f"{build}/"))}


def differences(package, programs, components):
    found = set()
    for program in programs:
        for path in sorted(foreign_files(program)):
            names = {name for name, pattern, _ in components if pattern.search(path)}
            if not names:
                yield f"{package}: {program} contains {path}, of which licenses/components.txt knows nothing"
            found |= names
    listed = {name for name, _, packages in components if package in packages}
    for name in sorted(found - listed):
        yield f"{package}: it contains {name}, and licenses/components.txt says that it does not"
    for name in sorted(listed - found):
        yield f"{package}: licenses/components.txt says that it contains {name}, and it does not"


def main():
    components = read_list()
    wrong = []
    for argument in sys.argv[4:]:
        package, programs = argument.split("=")
        wrong += differences(package, programs.split(","), components)
    print("\n".join(wrong), end="\n" if wrong else "")
    sys.exit(bool(wrong))


main()
