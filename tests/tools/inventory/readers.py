"""Reads the rows and metrics of documents with other people's parsers: readers.py FOLDER. In the folder are NAME.csv,
NAME.ndjson and NAME.openmetrics of each document; the one with the name "hostile" is compared with what it was made from."""

import csv
import json
import pathlib
import sys

from prometheus_client.openmetrics.parser import text_string_to_metric_families as open_metrics
from prometheus_client.parser import text_string_to_metric_families as prometheus_text

NAME = "<script>document.title='owned'</script> \"quoted\", & \\ back\nline"
MONITOR = "翻 <b>\"TV\"</b>, 4K"
NULL = json.loads("null")
ID = "PCI\\VEN_10DE&DEV_2684\\1"


def rows(path):
    with open(path, encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file, strict=True))


def lines(path):
    with open(path, encoding="utf-8") as file:
        return [json.loads(line) for line in file]


def samples(path, parse):
    with open(path, encoding="utf-8", newline="") as file:
        return {
            (sample.name, tuple(sorted(sample.labels.items()))): sample.value
            for family in parse(file.read())
            for sample in family.samples
        }


def check_hostile(folder):
    first, second = rows(folder / "hostile.csv")
    # A spreadsheet shows a line end within a field; Python reads it back.
    assert first["name"] == NAME, first["name"]
    assert first["vendor"] == "'=cmd|' /C calc'!A0", first["vendor"]
    assert first["dedicated_memory_bytes"] == "25769803776"
    assert second["dedicated_memory_bytes"] == "0" and second["instance_id"] == "" and second["displays"] == "none"

    first, second = lines(folder / "hostile.ndjson")
    assert first["name"] == NAME and first["vendor"] == "=cmd|' /C calc'!A0"
    assert first["displays"][0]["monitor_name"] == MONITOR
    assert first["failed_sources"] == [{"name": "dxgi", "code": 1460, "reason": "no answer"}]
    assert second["luid"] == 18446744073709551615 and second["vendor"] == NULL

    for parse in (open_metrics, prometheus_text):
        found = samples(folder / "hostile.openmetrics", parse)
        info = [dict(labels) for (name, labels) in found if name == "orvel_graphics_card_info"]
        assert [labels["card"] for labels in info] == [ID, "no device"], info
        assert info[0]["name"] == NAME and info[0]["vendor"] == "=cmd|' /C calc'!A0"
        card = (("card", ID),)
        assert found["orvel_graphics_card_dedicated_memory_bytes", card] == 25769803776
        assert found["orvel_graphics_card_core_clock_max_hertz", card] == 2.52e9
        assert found["orvel_graphics_card_memory_bus_width_bytes", card] == 48
        assert found["orvel_graphics_card_power_state", card] == 3
        refresh = [value for (name, _), value in found.items() if name == "orvel_graphics_display_refresh_hertz"]
        assert refresh == [59.94], refresh


def check_all(folder):
    """What holds for each document."""
    names = sorted(path.stem for path in folder.glob("*.csv"))
    assert names
    for name in names:
        table, objects = rows(folder / f"{name}.csv"), lines(folder / f"{name}.ndjson")
        assert len(table) == len(objects), name
        metrics = samples(folder / f"{name}.openmetrics", open_metrics)
        assert metrics["orvel_graphics_cards", ()] == len(objects), name
        assert metrics == samples(folder / f"{name}.openmetrics", prometheus_text), name
        for row, item in zip(table, objects):
            assert list(row) == list(item)[3:], name
            for property_name, value in row.items():
                assert (value == "") == (item[property_name] == NULL), (name, property_name)
    print(" ".join(names))


check_hostile(pathlib.Path(sys.argv[1]))
check_all(pathlib.Path(sys.argv[1]))
