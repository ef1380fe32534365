// Node.js, a host that MSVC built, uses the enumeration library by its MSVC names on a simulated machine. The arguments are the
// machine, what is expected of it, and the list of the names.
import assert from "node:assert";
import { readFileSync } from "node:fs";
import koffi from "koffi";

const bin = process.env.ORVEL_BIN;
const [machine, expectedFile, names] = process.argv.slice(2);
const expected = JSON.parse(readFileSync(expectedFile, "utf8"));

koffi.load("ole32.dll").func("int32_t CoInitializeEx(void* reserved, uint32_t model)")(null, 0);
const simulation = koffi.load(`${bin}\\simulation\\orvel-simulation.dll`);
const problem = [null];
const status = simulation.func("int OrvelSimulateMachine(const char* path, _Out_ const char** problem)")(machine, problem);
assert.strictEqual(status, 0, problem[0]);

const library = koffi.load(`${bin}\\orvel-graphic-cards-enumeration.dll`);
const enumeration = "GraphicCardEnumeration@enumeration@shared@orvel@@";
const construct = library.func(`??0${enumeration}QEAA@XZ`, "void*", ["void*"]);
const destroy = library.func(`??1${enumeration}QEAA@XZ`, "void", ["void*"]);
const query = library.func(`?QueryGraphicCards@${enumeration}QEAAXXZ`, "void", ["void*"]);
const size = library.func(`?size@${enumeration}QEBA_KXZ`, "size_t", ["void*"]);
const get = library.func(
    `?get@${enumeration}QEBAPEAVGraphicCardInfo@234@H@Z`, "void*", ["void*", "int"]);

// The getters, with the result type that their MSVC name says.
const types = { I: "uint32_t", _N: "bool", M: "float", _K: "uint64_t", PEBD: "const char*" };
const getters = [...readFileSync(names, "utf8").matchAll(/"(\?Get(\w+)@GraphicCardInfo@enumeration@shared@orvel@@QEBA(\w+)XZ)"/g)].map(
    ([, name, property, type]) => ({ property, read: library.func(name, types[type], ["void*"]) }),
);
assert.strictEqual(getters.length, 49);

const lines = [];
const Log = koffi.proto("void Log(int severity, const char* operation, const char* message, void* context)");
const severities = ["", "fatal", "error", "warning", "info"];
const log = koffi.register(
    (severity, operation, message) => lines.push({ severity: severities[severity], function: operation, message }),
    koffi.pointer(Log),
);
const setLog = library.func("SetGraphicCardLog", "void", [koffi.pointer(Log), "int", "void*"]);
setLog(log, 4, null);

const object = koffi.alloc("uint64_t", 1); // the class contains one pointer
const cards = construct(object);
assert.strictEqual(koffi.address(cards), koffi.address(object), "MSVC's constructors return their object");
query(cards);
const records = Array.from({ length: Number(size(cards)) }, (_, index) => {
    const card = get(cards, index);
    return Object.fromEntries(getters.map(({ property, read }) => [property, read(card)]));
});
assert.strictEqual(get(cards, records.length), null);
destroy(cards);
setLog(null, 0, null);

// The library has floats, and the file their shortest decimal text.
const asFloats = (card) => Object.fromEntries(
    Object.entries(card).map(([name, value]) => [name, typeof value === "number" ? Math.fround(value) : value]));
assert.ok(records.length > 0);
assert.deepStrictEqual(records.map(asFloats), expected.cards.map(asFloats));
assert.deepStrictEqual(lines, expected.log);
console.log(`${records.length} cards, ${lines.length} log lines`);
