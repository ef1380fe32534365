// A package whose DLL is missing, damaged or of another version: every function fails with ORVEL_CODE and ORVEL_MESSAGE.
import assert from "node:assert";
import { test } from "node:test";
import { inventory, inventorySync, properties, version } from "orvel-graphic-cards-inventory";

const expected = { name: "Error", code: process.env.ORVEL_CODE, message: process.env.ORVEL_MESSAGE };

test(`Every function fails with ${expected.code}, again and again`, async () => {
    for (let attempt = 0; attempt < 2; ++attempt) {
        await assert.rejects(inventory(), expected);
        assert.throws(inventorySync, expected);
        assert.throws(properties, expected);
        assert.throws(version, expected);
    }
});
