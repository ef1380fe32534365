// Takes snapshots at the depth of workerData.
import { parentPort, workerData } from "node:worker_threads";
import { inventory, inventorySync, properties } from "orvel-graphic-cards-inventory";

const { depth } = workerData;
parentPort.postMessage({
    asynchronous: await inventory({ depth }),
    synchronous: inventorySync({ depth }),
    properties: properties().length,
});
