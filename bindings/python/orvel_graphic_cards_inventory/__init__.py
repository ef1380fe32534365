"""Lists every graphics adapter of a Windows computer, each value with its source or the reason why it is missing.

A snapshot is the JSON document of the C interface. A value is never 0 or "" for "unknown", but None.
"""

import asyncio
import json
import math
from typing import List, Literal, Optional, TypedDict, Union, overload

from .card import Card, Depth, Display, FlatCard, Reason, SourceName, SourceState, Status
from .library import Form, InventoryError, Property, read_properties, read_version, take_json

__all__ = [
    "Card",
    "Depth",
    "Display",
    "FlatCard",
    "FlatInventory",
    "Form",
    "Inventory",
    "InventoryError",
    "Property",
    "Reason",
    "Source",
    "SourceName",
    "SourceState",
    "Status",
    "inventory",
    "inventory_async",
    "properties",
    "version",
]


class Source(TypedDict):
    """How asking a source has ended; `code` is its own number of a failure."""

    name: SourceName
    state: SourceState
    code: Optional[int]
    reason: Optional[Reason]


class Inventory(TypedDict):
    """A snapshot with the source of each value."""

    schema_version: int
    form: Literal["full"]
    depth: Depth
    sources: List[Source]
    cards: List[Card]


class FlatInventory(TypedDict):
    """A snapshot with each value alone."""

    schema_version: int
    form: Literal["flat"]
    depth: Depth
    sources: List[Source]
    cards: List[FlatCard]


_depths = {"system": 1, "graphics": 2, "drivers": 3}
_forms = {"full": 0, "flat": 1}
_largest_timeout = 0xFFFFFFFF


def _choice(choices: "dict[str, int]", name: str, value: object) -> int:
    if not isinstance(value, str) or value not in choices:
        raise ValueError(f"{name} must be one of {', '.join(choices)}, not {value!r}")
    return choices[value]


def _milliseconds(timeout: float) -> int:
    if isinstance(timeout, bool) or not isinstance(timeout, (int, float)):
        raise TypeError(f"timeout must be a number of seconds, not {timeout!r}")
    if not 0 < timeout * 1000 <= _largest_timeout:
        raise ValueError(f"timeout must be more than 0 and at most {_largest_timeout / 1000} seconds, not {timeout!r}")
    return math.ceil(timeout * 1000)


def _take(depth: Depth, timeout: Optional[float], wake: bool, form: Form) -> Union[Inventory, FlatInventory]:
    if not isinstance(wake, bool):
        raise TypeError(f"wake must be True or False, not {wake!r}")
    milliseconds = _milliseconds(timeout) if timeout is not None else 0
    text = take_json(_choice(_depths, "depth", depth), milliseconds, wake, _choice(_forms, "form", form))
    document: Union[Inventory, FlatInventory] = json.loads(text)
    return document


@overload
def inventory(
    *, depth: Depth = ..., timeout: Optional[float] = ..., wake: bool = ..., form: Literal["full"] = ...
) -> Inventory: ...


@overload
def inventory(
    *, depth: Depth = ..., timeout: Optional[float] = ..., wake: bool = ..., form: Literal["flat"]
) -> FlatInventory: ...


def inventory(
    *, depth: Depth = "drivers", timeout: Optional[float] = None, wake: bool = False, form: Form = "full"
) -> Union[Inventory, FlatInventory]:
    """Lists the graphics adapters of this computer.

    depth: "system" asks devices, driver keys and the display configuration; "graphics" also DXGI and DXCore; "drivers" also
    the vendors' libraries. timeout: seconds after which a source that has not answered is abandoned; None: 5. wake: ask the
    vendors' libraries although that wakes sleeping cards. form: "full" has each value with its source, "flat" alone.

    Raises TypeError or ValueError for a wrong argument, and InventoryError when there can be no snapshot.
    """
    return _take(depth, timeout, wake, form)


@overload
async def inventory_async(
    *, depth: Depth = ..., timeout: Optional[float] = ..., wake: bool = ..., form: Literal["full"] = ...
) -> Inventory: ...


@overload
async def inventory_async(
    *, depth: Depth = ..., timeout: Optional[float] = ..., wake: bool = ..., form: Literal["flat"]
) -> FlatInventory: ...


async def inventory_async(
    *, depth: Depth = "drivers", timeout: Optional[float] = None, wake: bool = False, form: Form = "full"
) -> Union[Inventory, FlatInventory]:
    """The same as inventory, on a thread of asyncio's default executor."""
    return await asyncio.to_thread(_take, depth, timeout, wake, form)


def properties() -> List[Property]:
    """The table of properties, in the order of a card's keys."""
    return read_properties()


def version() -> str:
    """Version of the library, such as "1.0.0"."""
    return read_version()
