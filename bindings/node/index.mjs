export { inventory, inventorySync, properties, version } from "./index.js";
