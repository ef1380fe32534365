# Each line with "type: ignore" is a mistake that the types must notice.
from orvel_graphic_cards_inventory import Card, inventory, inventory_async, properties

full = inventory(depth="graphics", wake=False)
flat = inventory(form="flat", timeout=1.5)
card: Card = full["cards"][0]
name: str = properties()[0]["name"]

inventory(depth="all")  # type: ignore[call-overload]
inventory(deep=5)  # type: ignore[call-overload]
card["colour"]  # type: ignore[typeddict-item]
memory: int = card["dedicated_memory_bytes"]["value"]  # type: ignore[assignment]
identifier: int = flat["cards"][0]["instance_id"]  # type: ignore[assignment]


async def heights() -> "list[int | None]":
    snapshot = await inventory_async(form="flat")
    return [display["height"] for card in snapshot["cards"] for display in card["displays"] or []]
