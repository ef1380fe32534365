export * from "./index.js";
