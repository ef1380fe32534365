// The package with a library that fails on request: see FakeInventory.c.
import assert from "node:assert";
import { test } from "node:test";
import { Worker } from "node:worker_threads";
import { inventory, inventorySync, properties, version } from "orvel-graphic-cards-inventory";

const sleep = 2000;

async function fails(timeout, code, message) {
    const expected = { name: "Error", code, message };
    await assert.rejects(inventory({ timeout }), expected);
    assert.throws(() => inventorySync({ timeout }), expected);
}

test("Each option reaches the library, in its number", async () => {
    const asked = { depth: "graphics", timeout: 4294967295, wake: true, form: "flat" };
    const expected = { depth: 2, timeout: 4294967295, wake: 1, form: 1, text: "ü", liveSnapshots: 0, liveTexts: 0 };
    assert.deepStrictEqual(await inventory(asked), expected);
    assert.deepStrictEqual(inventorySync(asked), expected);
});

test("What is not asked for is the library's default", async () => {
    const expected = { depth: 0, timeout: 0, wake: 0, form: 0, text: "ü", liveSnapshots: 0, liveTexts: 0 };
    assert.deepStrictEqual(await inventory({}), expected);
    assert.deepStrictEqual(inventorySync(), expected);
});

test("A status of the library is an error with a code", async () => {
    await fails(1001, "ORVEL_INVALID_ARGUMENT", "the inventory does not know these options");
    await fails(1002, "ORVEL_OUT_OF_MEMORY", "not enough memory for the inventory");
    await fails(1003, "ORVEL_ERROR", "the inventory failed with status 3");
    await fails(1012, "ORVEL_OUT_OF_MEMORY", "not enough memory for the inventory");
});

test("After failures nothing is left, not even the snapshot without a document", async () => {
    const { liveSnapshots, liveTexts } = await inventory();
    assert.deepStrictEqual({ liveSnapshots, liveTexts }, { liveSnapshots: 0, liveTexts: 0 });
});

test("The table of properties is the library's", () => {
    assert.deepStrictEqual(properties(), [{ name: "fan_speed", type: "number", unit: "rpm", description: "speed of the Ü fan" }]);
    assert.strictEqual(version(), "1.0.0");
});

test("While a snapshot is taken, the main thread goes on", async () => {
    let ticks = 0;
    const timer = setInterval(() => ++ticks, 20);
    await inventory({ timeout: sleep + 500 });
    clearInterval(timer);
    assert.ok(ticks >= 5, `${ticks} ticks`);
});

test("inventorySync blocks the thread", async () => {
    let ticks = 0;
    const timer = setInterval(() => ++ticks, 20);
    inventorySync({ timeout: sleep + 300 });
    clearInterval(timer);
    assert.strictEqual(ticks, 0);
});

test("A worker that ends while it waits for a snapshot disturbs nobody", async () => {
    const worker = new Worker(new URL("./waiting-worker.mjs", import.meta.url));
    await new Promise((resolve) => worker.once("message", resolve));
    await worker.terminate();
    const { liveSnapshots, liveTexts } = await inventory();
    assert.deepStrictEqual({ liveSnapshots, liveTexts }, { liveSnapshots: 0, liveTexts: 0 });
});
