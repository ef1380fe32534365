#include "OrvelInventory.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "model/Names.h"
#include "snapshot/Snapshot.h"

namespace inventory = orvel::shared::inventory;

struct OrvelInventory {
    inventory::Findings findings;
};

namespace {

using inventory::Answer;
using inventory::Property;
using inventory::Status;

static_assert(static_cast<int>(Status::Known) == ORVEL_INVENTORY_KNOWN);
static_assert(static_cast<int>(Status::Unsupported) == ORVEL_INVENTORY_UNSUPPORTED);
static_assert(static_cast<int>(Status::Unavailable) == ORVEL_INVENTORY_UNAVAILABLE);
static_assert(static_cast<int>(Status::Failed) == ORVEL_INVENTORY_FAILED);
static_assert(static_cast<int>(Status::NotAsked) == ORVEL_INVENTORY_NOT_ASKED);
static_assert(static_cast<int>(inventory::Type::Text) == ORVEL_INVENTORY_TEXT);
static_assert(static_cast<int>(inventory::Type::Number) == ORVEL_INVENTORY_NUMBER);
static_assert(static_cast<int>(inventory::Type::Flag) == ORVEL_INVENTORY_BOOL);
static_assert(static_cast<int>(inventory::Type::Displays) == ORVEL_INVENTORY_DISPLAYS);
static_assert(static_cast<int>(inventory::Depth::System) + 1 == ORVEL_INVENTORY_DEPTH_SYSTEM);
static_assert(static_cast<int>(inventory::Depth::Graphics) + 1 == ORVEL_INVENTORY_DEPTH_GRAPHICS);
static_assert(static_cast<int>(inventory::Depth::Drivers) + 1 == ORVEL_INVENTORY_DEPTH_DRIVERS);

/// Runs what may throw; no exception leaves the library.
template <typename Call>
int32_t Guarded(Call call) noexcept
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return ORVEL_INVENTORY_OUT_OF_MEMORY;
    } catch (...) {
        return ORVEL_INVENTORY_ERROR;
    }
}

// The sizes of the structures in the first release, which no caller's is below.
constexpr uint32_t firstOptionsSize = 16;
constexpr uint32_t firstPropertySize = 32;
constexpr uint32_t firstValueSize = 56;
constexpr uint32_t firstDisplaySize = 48;
constexpr uint32_t firstSourceSize = 32;
static_assert(sizeof(OrvelInventoryOptions) >= firstOptionsSize);
static_assert(sizeof(OrvelInventoryProperty) >= firstPropertySize);
static_assert(sizeof(OrvelInventoryValue) >= firstValueSize);
static_assert(sizeof(OrvelInventoryDisplay) >= firstDisplaySize);
static_assert(sizeof(OrvelInventorySource) >= firstSourceSize);

/// Fills a caller's structure as far as the caller knows it; what only the caller knows becomes zero.
template <typename Structure>
int32_t Fill(const Structure& source, uint32_t firstSize, Structure* target)
{
    if (!target || target->size < firstSize) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    const uint32_t size = target->size;
    std::memset(target, 0, size);
    std::memcpy(target, &source, std::min<size_t>(size, sizeof source));
    target->size = size;
    return ORVEL_INVENTORY_OK;
}

/// The options of a caller, who may know fewer or more than this release; false where they are not valid.
bool Read(const OrvelInventoryOptions* given, inventory::Options& options)
{
    if (!given) {
        return true;
    }
    if (given->size < firstOptionsSize) {
        return false;
    }
    OrvelInventoryOptions known{};
    std::memcpy(&known, given, std::min<size_t>(given->size, sizeof known));
    if (known.depth > ORVEL_INVENTORY_DEPTH_DRIVERS) {
        return false;
    }
    if (known.depth != 0) {
        options.depth = static_cast<inventory::Depth>(known.depth - 1);
    }
    if (known.timeout_milliseconds != 0) {
        options.timeoutMilliseconds = known.timeout_milliseconds;
    }
    options.isWakingAllowed = known.wake != 0;
    return true;
}

const inventory::Value* FindValue(const OrvelInventory* snapshot, uint32_t card, uint32_t property)
{
    if (!snapshot || card >= snapshot->findings.cards.size() || property >= inventory::propertyCount) {
        return nullptr;
    }
    return &snapshot->findings.cards[card].Of(static_cast<Property>(property));
}

int64_t CodeOf(const Answer& answer)
{
    return answer.status == Status::Failed ? answer.code : 0;
}

uint64_t NumberOrFlag(const inventory::Data& data)
{
    if (const auto* flag = std::get_if<bool>(&data)) {
        return *flag ? 1 : 0;
    }
    const auto* number = std::get_if<uint64_t>(&data);
    return number ? *number : 0;
}

OrvelInventoryValue Describe(const inventory::Value& value, Property property)
{
    const auto* text = std::get_if<std::string>(&value.data);
    const auto* displays = std::get_if<inventory::Displays>(&value.data);
    OrvelInventoryValue described{};
    described.type = static_cast<uint32_t>(inventory::RowOf(property).type);
    described.status = static_cast<uint32_t>(value.status);
    described.displays = displays ? static_cast<uint32_t>(displays->size()) : 0;
    described.text = text ? text->c_str() : "";
    described.number = NumberOrFlag(value.data);
    described.code = CodeOf(value);
    described.source = value.source ? inventory::SourceText(*value.source) : nullptr;
    described.reason = inventory::ReasonText(value.reason);
    return described;
}

const char* TextOrNull(const std::optional<std::string>& text)
{
    return text ? text->c_str() : nullptr;
}

OrvelInventoryDisplay Describe(const inventory::Display& display)
{
    OrvelInventoryDisplay described{};
    described.width = display.width.value_or(0);
    described.height = display.height.value_or(0);
    described.primary = display.primary ? *display.primary : -1;
    described.refresh_millihertz = display.refreshMillihertz.value_or(0);
    described.gdi_name = TextOrNull(display.gdiName);
    described.monitor_name = TextOrNull(display.monitorName);
    described.connector = TextOrNull(display.connector);
    return described;
}

} // namespace

uint32_t OrvelInventoryVersion(void)
{
    return ORVEL_INVENTORY_VERSION;
}

int32_t OrvelInventoryTake(const OrvelInventoryOptions* options, OrvelInventory** inventory)
{
    if (!inventory) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    *inventory = nullptr;
    inventory::Options read;
    if (!Read(options, read)) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    return Guarded([&] {
        *inventory = new OrvelInventory{inventory::TakeSnapshot(read)};
        return ORVEL_INVENTORY_OK;
    });
}

void OrvelInventoryFree(OrvelInventory* inventory)
{
    delete inventory;
}

uint32_t OrvelInventoryCardCount(const OrvelInventory* inventory)
{
    return inventory ? static_cast<uint32_t>(inventory->findings.cards.size()) : 0;
}

uint32_t OrvelInventoryPropertyCount(void)
{
    return static_cast<uint32_t>(inventory::propertyCount);
}

int32_t OrvelInventoryGetProperty(uint32_t property, OrvelInventoryProperty* row)
{
    if (property >= inventory::propertyCount) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    const auto& found = inventory::RowOf(static_cast<Property>(property));
    const OrvelInventoryProperty described{0, static_cast<uint32_t>(found.type), found.name, found.unit, found.description};
    return Fill(described, firstPropertySize, row);
}

int32_t OrvelInventoryFindProperty(const char* name, uint32_t* property)
{
    const auto found = name ? inventory::FindProperty(name) : std::nullopt;
    if (!found || !property) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    *property = static_cast<uint32_t>(*found);
    return ORVEL_INVENTORY_OK;
}

int32_t OrvelInventoryGetValue(const OrvelInventory* inventory, uint32_t card, uint32_t property, OrvelInventoryValue* value)
{
    const auto* found = FindValue(inventory, card, property);
    return found ? Fill(Describe(*found, static_cast<Property>(property)), firstValueSize, value)
                 : ORVEL_INVENTORY_INVALID_ARGUMENT;
}

int32_t OrvelInventoryGetDisplay(const OrvelInventory* inventory, uint32_t card, uint32_t index,
                                 OrvelInventoryDisplay* display)
{
    const auto* value = FindValue(inventory, card, static_cast<uint32_t>(Property::Displays));
    const auto* displays = value ? std::get_if<inventory::Displays>(&value->data) : nullptr;
    if (!displays || index >= displays->size()) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    return Fill(Describe((*displays)[index]), firstDisplaySize, display);
}

uint32_t OrvelInventorySourceCount(const OrvelInventory* inventory)
{
    return inventory ? static_cast<uint32_t>(inventory->findings.sources.size()) : 0;
}

int32_t OrvelInventoryGetSource(const OrvelInventory* inventory, uint32_t index, OrvelInventorySource* source)
{
    if (index >= OrvelInventorySourceCount(inventory)) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    const auto& report = inventory->findings.sources[index];
    const OrvelInventorySource described{0, static_cast<uint32_t>(report.end.status), inventory::SourceText(report.source),
                                         CodeOf(report.end), inventory::ReasonText(report.end.reason)};
    return Fill(described, firstSourceSize, source);
}

int32_t OrvelInventoryToJson(const OrvelInventory* inventory, uint32_t form, char** text, size_t* length)
{
    if (!text) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    *text = nullptr;
    if (!inventory || form > ORVEL_INVENTORY_JSON_FLAT) {
        return ORVEL_INVENTORY_INVALID_ARGUMENT;
    }
    return Guarded([&] {
        const auto json = inventory::ToJson(inventory->findings, static_cast<inventory::JsonForm>(form));
        auto copy = std::make_unique<char[]>(json.size() + 1);
        std::copy(json.begin(), json.end(), copy.get());
        if (length) {
            *length = json.size();
        }
        *text = copy.release();
        return ORVEL_INVENTORY_OK;
    });
}

void OrvelInventoryFreeText(char* text)
{
    const std::unique_ptr<char[]> freed(text);
}
