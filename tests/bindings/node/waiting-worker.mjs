import { parentPort } from "node:worker_threads";
import { inventory } from "orvel-graphic-cards-inventory";

const waiting = inventory({ timeout: 2700 });
parentPort.postMessage("waiting");
await waiting;
