"use strict";

const depths = { system: 1, graphics: 2, drivers: 3 };
const forms = { full: 0, flat: 1 };
const largestTimeout = 0xffffffff;

function codedError(Type, code, message) {
    return Object.assign(new Type(message), { code });
}

function invalidArgument(Type, message) {
    return codedError(Type, "ORVEL_INVALID_ARGUMENT", message);
}

function load() {
    if (process.platform !== "win32" || process.arch !== "x64") {
        throw codedError(
            Error,
            "ORVEL_UNSUPPORTED_PLATFORM",
            `orvel-graphic-cards-inventory needs Node.js for 64-bit Windows (win32 x64), and this is ${process.platform} ${process.arch}.`,
        );
    }
    return require("./win32-x64/orvel-graphic-cards-inventory.node");
}

let loaded;
function addon() {
    loaded ??= load();
    return loaded;
}

function choice(choices, name, value) {
    if (!Object.hasOwn(choices, value)) {
        throw invalidArgument(RangeError, `${name} must be one of ${Object.keys(choices).join(", ")}, not ${show(value)}`);
    }
    return choices[value];
}

function show(value) {
    return typeof value === "string" ? JSON.stringify(value) : String(value);
}

const readers = {
    depth: (value) => choice(depths, "depth", value),
    timeout(value) {
        if (!Number.isInteger(value) || value < 1 || value > largestTimeout) {
            throw invalidArgument(
                RangeError,
                `timeout must be a whole number of milliseconds from 1 to ${largestTimeout}, not ${show(value)}`,
            );
        }
        return value;
    },
    wake(value) {
        if (typeof value !== "boolean") {
            throw invalidArgument(TypeError, `wake must be true or false, not ${show(value)}`);
        }
        return value;
    },
    form: (value) => choice(forms, "form", value),
};

// The addon's arguments. 0 is the library's default.
function read(options = {}) {
    if (typeof options !== "object" || options === null) {
        throw invalidArgument(TypeError, `the options must be an object, not ${show(options)}`);
    }
    const values = { depth: 0, timeout: 0, wake: false, form: forms.full };
    for (const [name, value] of Object.entries(options)) {
        if (!Object.hasOwn(readers, name)) {
            throw invalidArgument(TypeError, `there is no option ${show(name)}; there are ${Object.keys(readers).join(", ")}`);
        }
        if (value !== undefined) {
            values[name] = readers[name](value);
        }
    }
    return [values.depth, values.timeout, values.wake, values.form];
}

async function inventory(options) {
    const values = read(options);
    return JSON.parse(await addon().take(...values));
}

function inventorySync(options) {
    const values = read(options);
    return JSON.parse(addon().takeSync(...values));
}

function properties() {
    return addon().properties();
}

function version() {
    const number = addon().version();
    return [Math.floor(number / 10000), Math.floor(number / 100) % 100, number % 100].join(".");
}

module.exports = { inventory, inventorySync, properties, version };
