"""The C interface of orvel-graphic-cards-inventory.dll, which lies beside this file."""

import ctypes
import functools
import sysconfig
from pathlib import Path
from typing import List, Literal, TypedDict

Form = Literal["full", "flat"]

_file = Path(__file__).with_name("orvel-graphic-cards-inventory.dll")
_version = 10000  # of the C header that this file repeats
_search_system_folder = 0x800  # the DLL imports nothing but Windows' own DLLs
_types = ("text", "number", "bool", "displays")
_problems = {
    1: ("ORVEL_INVALID_ARGUMENT", "the inventory does not know these options"),
    2: ("ORVEL_OUT_OF_MEMORY", "not enough memory for the inventory"),
}


class InventoryError(Exception):
    """There can be no snapshot. `code` is "ORVEL_UNSUPPORTED_PLATFORM", "ORVEL_LIBRARY_NOT_LOADED", "ORVEL_WRONG_LIBRARY",
    "ORVEL_INVALID_ARGUMENT", "ORVEL_OUT_OF_MEMORY" or "ORVEL_ERROR"."""

    def __init__(self, code: str, message: str) -> None:
        super().__init__(message)
        self.code = code


class Property(TypedDict):
    """A row of the table of properties."""

    name: str
    type: str  # "text", "number", "bool" or "displays"
    unit: str  # "" for none
    description: str


class _Options(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint32),
        ("depth", ctypes.c_uint32),
        ("timeout_milliseconds", ctypes.c_uint32),
        ("wake", ctypes.c_uint32),
    ]


class _Property(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint32),
        ("type", ctypes.c_uint32),
        ("name", ctypes.c_char_p),
        ("unit", ctypes.c_char_p),
        ("description", ctypes.c_char_p),
    ]


_functions = {
    "OrvelInventoryVersion": (ctypes.c_uint32, []),
    "OrvelInventoryTake": (ctypes.c_int32, [ctypes.POINTER(_Options), ctypes.POINTER(ctypes.c_void_p)]),
    "OrvelInventoryFree": (None, [ctypes.c_void_p]),
    "OrvelInventoryToJson": (
        ctypes.c_int32,
        [ctypes.c_void_p, ctypes.c_uint32, ctypes.POINTER(ctypes.c_void_p), ctypes.POINTER(ctypes.c_size_t)],
    ),
    "OrvelInventoryFreeText": (None, [ctypes.c_void_p]),
    "OrvelInventoryGetProperty": (ctypes.c_int32, [ctypes.c_uint32, ctypes.POINTER(_Property)]),
}


@functools.lru_cache(maxsize=None)
def _library() -> ctypes.CDLL:
    platform = sysconfig.get_platform()
    if platform != "win-amd64":
        raise InventoryError(
            "ORVEL_UNSUPPORTED_PLATFORM",
            f"orvel-graphic-cards-inventory needs Python for 64-bit Windows (win-amd64), and this is {platform}.",
        )
    try:
        library = ctypes.CDLL(str(_file), winmode=_search_system_folder)
    except OSError as error:
        raise InventoryError("ORVEL_LIBRARY_NOT_LOADED", f"{_file.name} cannot be loaded: {error}") from error
    try:
        for name, (result, arguments) in _functions.items():
            function = getattr(library, name)
            function.restype, function.argtypes = result, arguments
    except AttributeError as error:
        raise _wrong_library() from error
    loaded = library.OrvelInventoryVersion()
    if loaded // 10000 != _version // 10000 or loaded < _version:
        raise _wrong_library()
    return library


def _wrong_library() -> InventoryError:
    return InventoryError("ORVEL_WRONG_LIBRARY", f"{_file.name} is not of this package's version")


def _check(status: int) -> None:
    if status != 0:
        raise InventoryError(*_problems.get(status, ("ORVEL_ERROR", f"the inventory failed with status {status}")))


def take_json(depth: int, milliseconds: int, wake: bool, form: int) -> str:
    """Takes a snapshot, in the numbers of the C interface, and returns its document."""
    library = _library()
    options = _Options(ctypes.sizeof(_Options), depth, milliseconds, wake)
    inventory, text, length = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_size_t()
    try:
        _check(library.OrvelInventoryTake(ctypes.byref(options), ctypes.byref(inventory)))
        _check(library.OrvelInventoryToJson(inventory, form, ctypes.byref(text), ctypes.byref(length)))
        return ctypes.string_at(text.value or 0, length.value).decode("utf-8")
    finally:
        library.OrvelInventoryFreeText(text)
        library.OrvelInventoryFree(inventory)


def read_properties() -> List[Property]:
    library = _library()
    rows: List[Property] = []
    row = _Property(ctypes.sizeof(_Property))
    while library.OrvelInventoryGetProperty(len(rows), ctypes.byref(row)) == 0:
        texts = [text.decode("utf-8") for text in (row.name, row.unit, row.description)]
        kind = _types[row.type] if row.type < len(_types) else "unknown"
        rows.append({"name": texts[0], "type": kind, "unit": texts[1], "description": texts[2]})
    return rows


def read_version() -> str:
    number = _library().OrvelInventoryVersion()
    return f"{number // 10000}.{number // 100 % 100}.{number % 100}"
