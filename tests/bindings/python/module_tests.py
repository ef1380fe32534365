"""Tests of the installed module. The library is FakeInventory.c, compiled for this system; the interpreter says that it is for
Windows."""

import asyncio
import sysconfig
import threading
import time
import unittest
from unittest import mock

import orvel_graphic_cards_inventory as package
from orvel_graphic_cards_inventory import InventoryError, inventory, inventory_async, properties, version

SLEEP = 2.0  # seconds of a timeout from which on the library sleeps


class OnWindows(unittest.TestCase):
    def setUp(self):
        patch = mock.patch.object(sysconfig, "get_platform", return_value="win-amd64")
        patch.start()
        self.addCleanup(patch.stop)

    def fails(self, code, message, function, *arguments, **keywords):
        with self.assertRaisesRegex(InventoryError, message) as caught:
            function(*arguments, **keywords)
        self.assertEqual(caught.exception.code, code)

    def every_function_fails(self, code, message):
        for _ in range(2):
            for function in (inventory, properties, version, lambda: asyncio.run(inventory_async())):
                self.fails(code, message, function)


class Working(OnWindows):
    def test_every_argument_reaches_the_library(self):
        expected = {"depth": 2, "timeout": 1500, "wake": 1, "form": 1, "text": "ü", "liveSnapshots": 0, "liveTexts": 0}
        arguments = {"depth": "graphics", "timeout": 1.4999, "wake": True, "form": "flat"}
        self.assertEqual(inventory(**arguments), expected)
        self.assertEqual(asyncio.run(inventory_async(**arguments)), expected)

    def test_without_arguments_there_are_the_defaults(self):
        expected = {"depth": 3, "timeout": 0, "wake": 0, "form": 0, "text": "ü", "liveSnapshots": 0, "liveTexts": 0}
        self.assertEqual(inventory(), expected)
        self.assertEqual(asyncio.run(inventory_async()), expected)

    def test_the_longest_timeout(self):
        self.assertEqual(inventory(timeout=4294967.295)["timeout"], 4294967295)
        self.assertEqual(inventory(timeout=0.0001)["timeout"], 1)

    def test_a_status_is_an_error_with_a_code(self):
        self.fails("ORVEL_INVALID_ARGUMENT", "the inventory does not know these options", inventory, timeout=1.001)
        self.fails("ORVEL_OUT_OF_MEMORY", "not enough memory for the inventory", inventory, timeout=1.002)
        self.fails("ORVEL_ERROR", "the inventory failed with status 3", inventory, timeout=1.003)

    def test_a_snapshot_without_a_document_is_freed(self):
        self.fails("ORVEL_OUT_OF_MEMORY", "not enough memory for the inventory", inventory, timeout=1.012)
        self.assertEqual(inventory()["liveSnapshots"], 0)

    def test_wrong_arguments(self):
        for error, message, arguments in (
            (ValueError, "depth must be one of system, graphics, drivers, not 'all'", {"depth": "all"}),
            (ValueError, r"depth must be one of system, graphics, drivers, not \[2\]", {"depth": [2]}),
            (ValueError, "form must be one of full, flat, not None", {"form": None}),
            (TypeError, "wake must be True or False, not 1", {"wake": 1}),
            (TypeError, "timeout must be a number of seconds, not '5'", {"timeout": "5"}),
            (TypeError, "timeout must be a number of seconds, not True", {"timeout": True}),
            (ValueError, "timeout must be more than 0 and at most 4294967.295 seconds, not 0", {"timeout": 0}),
            (ValueError, "timeout must be more than 0 and at most 4294967.295 seconds, not -1", {"timeout": -1}),
            (ValueError, "timeout must be more than 0 and at most 4294967.295 seconds, not nan", {"timeout": float("nan")}),
            (ValueError, "timeout must be more than 0 and at most 4294967.295 seconds, not 4294967.296", {"timeout": 4294967.296}),
            (TypeError, "unexpected keyword argument 'deep'", {"deep": 5}),
        ):
            with self.subTest(message), self.assertRaisesRegex(error, message):
                inventory(**arguments)
            with self.subTest(message), self.assertRaisesRegex(error, message):
                asyncio.run(inventory_async(**arguments))

    def test_the_table_and_the_version_are_the_librarys(self):
        row = {"name": "fan_speed", "type": "number", "unit": "rpm", "description": "speed of the Ü fan"}
        self.assertEqual(properties(), [row])
        self.assertEqual(version(), "1.0.0")

    def test_other_threads_go_on_while_a_snapshot_is_taken(self):
        thread = threading.Thread(target=inventory, kwargs={"timeout": SLEEP + 0.5})
        start = time.monotonic()
        thread.start()
        time.sleep(0.05)
        elapsed = time.monotonic() - start
        self.assertTrue(thread.is_alive())
        self.assertLess(elapsed, 0.4)
        thread.join()

    def test_the_event_loop_goes_on_while_a_snapshot_is_taken(self):
        async def count():
            ticks = 0
            task = asyncio.create_task(inventory_async(timeout=SLEEP + 0.5))
            while not task.done():
                await asyncio.sleep(0.02)
                ticks += 1
            return ticks

        self.assertGreaterEqual(asyncio.run(count()), 5)

    def test_everything_public_is_there(self):
        for name in package.__all__:
            self.assertTrue(hasattr(package, name), name)


class Newer(OnWindows):
    def test_every_function_fails(self):
        self.every_function_fails("ORVEL_WRONG_LIBRARY", "orvel-graphic-cards-inventory.dll is not of this package's version")


class Missing(OnWindows):
    def test_every_function_fails(self):
        self.every_function_fails("ORVEL_LIBRARY_NOT_LOADED", "orvel-graphic-cards-inventory.dll cannot be loaded: ")


class Elsewhere(OnWindows):
    def setUp(self):
        pass

    def test_every_function_fails(self):
        sentence = "^orvel-graphic-cards-inventory needs Python for 64-bit Windows .win-amd64., and this is linux-x86_64.$"
        self.every_function_fails("ORVEL_UNSUPPORTED_PLATFORM", sentence)


unittest.main()
