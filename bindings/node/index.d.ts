import type { Depth, Properties, Reason, SourceName, SourceState } from "./card.js";

export type { Depth, Properties, Reason, SourceName, SourceState, Status } from "./card.js";

/** `full`: each value with its source. `flat`: each value alone, null where it is not known. */
export type Form = "full" | "flat";

export interface Options {
    /**
     * How much is asked; each depth includes those before it. `system`: devices, driver keys, display configuration.
     * `graphics`: also DXGI and DXCore. `drivers`, the default: also the vendors' libraries.
     */
    depth?: Depth;
    /** Milliseconds after which a source that has not answered is abandoned. Default: 5000. */
    timeout?: number;
    /** Ask the vendors' libraries although that wakes sleeping cards. Default: false. */
    wake?: boolean;
    /** Default: `full`. */
    form?: Form;
}

/** A value and where it comes from, or the reason why it is not known. `code` is the source's own number of a failure. */
export type Value<Type> =
    | { value: Type; status: "known"; source: SourceName; code: null; reason: null }
    | { value: null; status: "failed"; source: SourceName; code: number; reason: Reason }
    | { value: null; status: "unsupported" | "unavailable" | "not asked"; source: SourceName | null; code: null; reason: Reason };

/** An active display; null where something is not known. */
export interface Display {
    /** Such as `\\.\DISPLAY1`. */
    gdi_name: string | null;
    monitor_name: string | null;
    /** In pixels. */
    width: number | null;
    /** In pixels. */
    height: number | null;
    refresh_millihertz: number | null;
    /** Such as `HDMI`. */
    connector: string | null;
    primary: boolean | null;
}

export type Card = { [Name in keyof Properties]: Value<Properties[Name]> };

export type FlatCard = { [Name in keyof Properties]: Properties[Name] | null };

/** How asking a source has ended. `code` is its own number of a failure. */
export interface Source {
    name: SourceName;
    state: SourceState;
    code: number | null;
    reason: Reason | null;
}

export interface Inventory<CardType = Card> {
    schema_version: 1;
    form: Form;
    depth: Depth;
    sources: Source[];
    /** In the same order on every run. */
    cards: CardType[];
}

/** A row of the table of properties. */
export interface Property {
    name: keyof Properties;
    type: "text" | "number" | "bool" | "displays";
    /** "" for none. */
    unit: string;
    description: string;
}

/** What every function throws, or its promise rejects with. */
export interface InventoryError extends Error {
    code:
        | "ORVEL_UNSUPPORTED_PLATFORM"
        | "ORVEL_LIBRARY_NOT_LOADED"
        | "ORVEL_WRONG_LIBRARY"
        | "ORVEL_INVALID_ARGUMENT"
        | "ORVEL_OUT_OF_MEMORY"
        | "ORVEL_ERROR";
}

/** Lists the graphics adapters of this computer. Waits on a thread of libuv's pool. */
export function inventory(options: Options & { form: "flat" }): Promise<Inventory<FlatCard>>;
export function inventory(options?: Options & { form?: "full" }): Promise<Inventory>;

/** The same; blocks the calling thread. */
export function inventorySync(options: Options & { form: "flat" }): Inventory<FlatCard>;
export function inventorySync(options?: Options & { form?: "full" }): Inventory;

/** The table of properties, in the order of a card's keys. */
export function properties(): Property[];

/** Version of the library, such as "1.0.0". */
export function version(): string;
