import { parentPort } from "node:worker_threads";
import { inventory, inventorySync, properties } from "orvel-graphic-cards-inventory";

const asynchronous = await inventory({ depth: "system" });
parentPort.postMessage({ asynchronous, synchronous: inventorySync({ depth: "system" }), properties: properties().length });
