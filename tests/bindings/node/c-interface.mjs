// The inventory's C interface through koffi, as the other way to the same values. ORVEL_BIN is the folder of the DLL.
import koffi from "koffi";

const library = koffi.load(`${process.env.ORVEL_BIN}\\orvel-graphic-cards-inventory.dll`);
const types = ["text", "number", "bool", "displays"];

const Options = koffi.struct("OrvelInventoryOptions", {
    size: "uint32_t",
    depth: "uint32_t",
    timeout_milliseconds: "uint32_t",
    wake: "uint32_t",
});
const Property = koffi.struct("OrvelInventoryProperty", {
    size: "uint32_t",
    type: "uint32_t",
    name: "const char*",
    unit: "const char*",
    description: "const char*",
});

const Version = library.func("uint32_t OrvelInventoryVersion()");
const Take = library.func("int32_t OrvelInventoryTake(const OrvelInventoryOptions* options, _Out_ void** inventory)");
const Free = library.func("void OrvelInventoryFree(void* inventory)");
const ToJson = library.func("int32_t OrvelInventoryToJson(void* inventory, uint32_t form, _Out_ void** text, _Out_ size_t* length)");
const FreeText = library.func("void OrvelInventoryFreeText(void* text)");
const PropertyCount = library.func("uint32_t OrvelInventoryPropertyCount()");
const GetProperty = library.func("int32_t OrvelInventoryGetProperty(uint32_t property, _Inout_ OrvelInventoryProperty* row)");

function succeeded(status) {
    if (status !== 0) {
        throw new Error(`the C interface returned ${status}`);
    }
}

export function snapshotByC(depth, form, timeout = 0) {
    const inventory = [null];
    const text = [null];
    const length = [0];
    succeeded(Take({ size: koffi.sizeof(Options), depth, timeout_milliseconds: timeout, wake: 0 }, inventory));
    succeeded(ToJson(inventory[0], form, text, length));
    const document = JSON.parse(koffi.decode(text[0], "char", Number(length[0])));
    FreeText(text[0]);
    Free(inventory[0]);
    return document;
}

export function tableByC() {
    return Array.from({ length: PropertyCount() }, (_, property) => {
        const row = { size: koffi.sizeof(Property), type: 0, name: null, unit: null, description: null };
        succeeded(GetProperty(property, row));
        return { name: row.name, type: types[row.type], unit: row.unit, description: row.description };
    });
}

export function versionByC() {
    const number = Version();
    return `${Math.floor(number / 10000)}.${Math.floor(number / 100) % 100}.${number % 100}`;
}
