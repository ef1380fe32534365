// Each line that follows one with @ts-expect-error is a mistake that the types must notice.
import { inventory, inventorySync, properties, type Property } from "orvel-graphic-cards-inventory";

const full = await inventory({ depth: "graphics", wake: false });
const flat = inventorySync({ form: "flat" });
const [card] = full.cards;
const rows: Property[] = properties();

// @ts-expect-error: no such depth
await inventory({ depth: "all" });
// @ts-expect-error: no such option
inventorySync({ deep: 5 });
// @ts-expect-error: no such property
card.colour;
// @ts-expect-error: may be null
const bytes: number = card.dedicated_memory_bytes.value;
// @ts-expect-error: a text
const id: number | null = flat.cards[0].instance_id;
// @ts-expect-error: not a property's name
rows[0].name = "colour";

// What holds only for some statuses.
if (card.integrated.status === "known") {
    const integrated: boolean = card.integrated.value;
} else {
    const reason: string = card.integrated.reason;
}
if (card.name.status === "failed") {
    const code: number = card.name.code;
}
const heights: (number | null)[] | undefined = card.displays.value?.map((display) => display.height);
