from orvel_graphic_cards_inventory import inventory

for card in inventory(timeout=2)["cards"]:
    memory = card["dedicated_memory_bytes"]
    print(card["name"]["value"], memory["value"] or memory["reason"])
