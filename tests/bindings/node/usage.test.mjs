// The installed package on this computer, from a program's main thread and from workers.
import assert from "node:assert";
import { createRequire } from "node:module";
import { test } from "node:test";
import { Worker } from "node:worker_threads";
import { inventory, inventorySync, properties, version } from "orvel-graphic-cards-inventory";
import { snapshotByC, tableByC, versionByC } from "./c-interface.mjs";

const forms = { full: 0, flat: 1 };
const depths = { system: 1, graphics: 2, drivers: 3 };

for (const form of Object.keys(forms)) {
    for (const depth of Object.keys(depths)) {
        test(`The ${form} form at depth ${depth} is the C interface's document`, async () => {
            const document = snapshotByC(depths[depth], forms[form]);
            assert.ok(document.cards.length > 0);
            assert.deepStrictEqual(await inventory({ depth, form }), document);
            assert.deepStrictEqual(inventorySync({ depth, form }), document);
        });
    }
}

test("Without options it is the full form at depth drivers", async () => {
    const document = snapshotByC(0, 0);
    assert.strictEqual(document.depth, "drivers");
    assert.deepStrictEqual(await inventory(), document);
    assert.deepStrictEqual(inventorySync({ depth: undefined }), document);
});

test("The properties are the C interface's table, and a card's keys in this order", async () => {
    assert.deepStrictEqual(properties(), tableByC());
    const names = properties().map((row) => row.name);
    const { cards } = await inventory({ form: "flat" });
    assert.deepStrictEqual(Object.keys(cards[0]), names);
});

test("The version is the library's", () => {
    assert.strictEqual(version(), versionByC());
});

test("require gives the same functions as import", () => {
    const required = createRequire(import.meta.url)("orvel-graphic-cards-inventory");
    assert.deepStrictEqual({ ...required }, { inventory, inventorySync, properties, version });
});

const wrongOptions = [
    [5, TypeError, "the options must be an object, not 5"],
    [null, TypeError, "the options must be an object, not null"],
    [{ deep: 5 }, TypeError, 'there is no option "deep"; there are depth, timeout, wake, form'],
    [{ depth: "all" }, RangeError, 'depth must be one of system, graphics, drivers, not "all"'],
    [{ depth: 2 }, RangeError, "depth must be one of system, graphics, drivers, not 2"],
    [{ depth: "toString" }, RangeError, 'depth must be one of system, graphics, drivers, not "toString"'],
    [{ form: null }, RangeError, "form must be one of full, flat, not null"],
    [{ wake: 1 }, TypeError, "wake must be true or false, not 1"],
    ...[0, -1, 1.5, NaN, 2 ** 32, "5"].map((timeout) => [
        { timeout },
        RangeError,
        `timeout must be a whole number of milliseconds from 1 to 4294967295, not ${JSON.stringify(timeout).replace("null", "NaN")}`,
    ]),
];
for (const [options, type, message] of wrongOptions) {
    test(`Wrong options: ${message}`, async () => {
        const expected = { name: type.name, code: "ORVEL_INVALID_ARGUMENT", message };
        await assert.rejects(inventory(options), expected);
        assert.throws(() => inventorySync(options), expected);
    });
}

function runWorker() {
    return new Promise((resolve, reject) => {
        const worker = new Worker(new URL("./worker.mjs", import.meta.url), { workerData: { depth: "system" } });
        worker.on("message", resolve);
        worker.on("error", reject);
    });
}

test("Workers, one after the other and at the same time, get the main thread's snapshot", async () => {
    const document = inventorySync({ depth: "system" });
    const expected = { asynchronous: document, synchronous: document, properties: properties().length };
    assert.deepStrictEqual(await runWorker(), expected);
    const several = await Promise.all([runWorker(), runWorker(), runWorker()]);
    several.push(await runWorker());
    for (const result of several) {
        assert.deepStrictEqual(result, expected);
    }
    assert.deepStrictEqual(inventorySync({ depth: "system" }), document);
});

test("Several snapshots at the same time are alike", async () => {
    const taken = await Promise.all(Array.from({ length: 8 }, () => inventory({ depth: "system" })));
    for (const document of taken) {
        assert.deepStrictEqual(document, taken[0]);
    }
});
