// The installed package on simulated machines, against the document that the command-line tool prints there. ORVEL_MACHINES is a list of
// them. Node.js has no switch for a simulation: koffi starts it, as any host does.
import assert from "node:assert";
import { readFileSync } from "node:fs";
import { test } from "node:test";
import { Worker } from "node:worker_threads";
import koffi from "koffi";
import { inventory, inventorySync } from "orvel-graphic-cards-inventory";

const machines = JSON.parse(readFileSync(process.env.ORVEL_MACHINES, "utf8"));
assert.ok(machines.length > 20);

koffi.load("ole32.dll").func("int32_t CoInitializeEx(void* reserved, uint32_t model)")(null, 0);
const simulation = koffi.load(`${process.env.ORVEL_BIN}\\simulation\\orvel-simulation.dll`);
const simulateFile = simulation.func("int OrvelSimulateMachine(const char* path, _Out_ const char** problem)");
const endSimulation = simulation.func("void OrvelEndSimulation()");

function simulate({ file }) {
    const problem = [null];
    assert.strictEqual(simulateFile(file, problem), 0, problem[0]);
}

function documentOf(machine) {
    return JSON.parse(readFileSync(machine.document, "utf8"));
}

for (const machine of machines) {
    test(`${machine.file} has the tool's inventory`, async () => {
        const { timeout } = machine;
        simulate(machine);
        assert.deepStrictEqual(await inventory({ timeout }), documentOf(machine));
        assert.deepStrictEqual(inventorySync({ timeout }), documentOf(machine));
        endSimulation();
    });
}

test("A worker has the machine that the main thread simulates", async () => {
    const machine = machines.find(({ file }) => file.endsWith("\\machines\\workstation.json"));
    simulate(machine);
    const worker = new Worker(new URL("./worker.mjs", import.meta.url), { workerData: { depth: "drivers" } });
    const { asynchronous, synchronous } = await new Promise((resolve, reject) => worker.on("message", resolve).on("error", reject));
    assert.deepStrictEqual(asynchronous, documentOf(machine));
    assert.deepStrictEqual(synchronous, documentOf(machine));
    endSimulation();
});
