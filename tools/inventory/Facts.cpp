#include "inventory/Facts.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "inventory/Units.h"

namespace orvel::tools {

namespace {

struct Word {
    std::string_view Name;
    const char* Text;
};

constexpr Word kinds[] = {
    {"pci", "PCI device"},
    {"soc", "part of the system on a chip"},
    {"software", "software, without a device"},
    {"remote", "display of a remote session"},
    {"indirect", "indirect display: another card renders for it"},
    {"paravirtual", "virtual GPU of a virtual machine"},
    {"other", "device on another bus"},
};

constexpr Word sources[] = {
    {"setupapi", "SetupAPI"}, {"driver_key", "the driver's registry key"},
    {"dxgi", "DXGI"},         {"display_config", "the display configuration"},
    {"dxcore", "DXCore"},     {"nvml", "NVML"},
    {"nvapi", "NVAPI"},       {"adlx", "ADLX"},
};

/// "{}" is the source, "{code}" its number.
constexpr Word reasons[] = {
    {"source not present", "{} is not on this computer"},
    {"no such value", "{} has no such value"},
    {"unusable", "{} has a value that cannot be used"},
    {"number without a name", "A number without a known name"},
    {"no device", "Only DXGI lists this adapter"},
    {"not listed", "{} does not list this card"},
    {"cannot be told apart", "It could belong to several cards"},
    {"belongs to the card that renders", "It belongs to the card that renders"},
    {"belongs to the first linked card", "It belongs to the first of the linked cards"},
    {"no LUID", "The card has no LUID to match it by"},
    {"not on PCI", "The card is not on PCI"},
    {"not supported", "The card does not have it, {} reports"},
    {"no source for this vendor", "No interface reports it for this vendor"},
    {"vendor not known", "The vendor is not known"},
    {"driver of another provider", "The driver has another provider"},
    {"refused", "{} refused ({code})"},
    {"no answer", "{} did not answer in time"},
    {"depth", "Not asked at this depth"},
    {"asleep", "Not asked, because a card is asleep (--wake asks anyway)"},
    {"power state not known", "Not asked, because a card may be asleep (--wake asks anyway)"},
};

template <size_t Count>
std::string TextFor(const Word (&words)[Count], const std::string& name)
{
    const auto word = std::find_if(std::begin(words), std::end(words), [&](const Word& each) { return each.Name == name; });
    return word == std::end(words) ? name : word->Text;
}

std::string Replaced(std::string text, std::string_view what, const std::string& by)
{
    const size_t position = text.find(what);
    return position == std::string::npos ? text : text.replace(position, what.size(), by);
}

/// Joins the parts that are not empty.
std::string Joined(std::initializer_list<std::string> parts, std::string_view separator = ", ")
{
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() || part.empty() ? "" : std::string(separator)) + part;
    }
    return text;
}

/// A text between others, or "" where it is empty itself.
std::string Around(const char* before, const std::string& text, const char* after)
{
    return text.empty() ? "" : before + text + after;
}

/// The known values of a card, and which of them have been read.
class CardReader {
public:
    CardReader(const Inventory& itsInventory, const InventoryCard& itsCard) : inventory(itsInventory), card(itsCard) {}

    std::string Text(const char* name)
    {
        const auto* text = Read<std::string>(name);
        return text ? PrintableText(*text) : "";
    }

    /// A number as `toText` writes it; "" where it is not known.
    template <typename ToText>
    std::string Number(const char* name, ToText toText)
    {
        const auto* number = Read<uint64_t>(name);
        return number ? toText(*number) : "";
    }
    std::string Number(const char* name)
    {
        return Number(name, [](uint64_t number) { return std::to_string(number); });
    }

    std::string Flag(const char* name, const char* yes, const char* no)
    {
        const auto* flag = Read<bool>(name);
        return flag ? (*flag ? yes : no) : "";
    }

    const InventoryDisplays* Displays(const char* name) { return Read<InventoryDisplays>(name); }

    /// A fact for each known value that has not been read.
    std::vector<Fact> Others()
    {
        std::vector<Fact> facts;
        for (const InventoryProperty& property : inventory.Table) {
            const bool isNew = !read.contains(property.Name);
            const std::string name = property.Name;
            const std::string text =
                isNew ? Joined({Text(name.c_str()), Number(name.c_str()), Flag(name.c_str(), "yes", "no")}) : std::string();
            facts.push_back({name, Joined({text, text.empty() ? "" : property.Unit}, " ")});
        }
        return facts;
    }

private:
    template <typename Content>
    const Content* Read(const char* name)
    {
        read.insert(name);
        return FindKnown<Content>(inventory, card, name);
    }

    const Inventory& inventory;
    const InventoryCard& card;
    std::set<std::string, std::less<>> read;
};

std::string SubsystemText(uint64_t subsystem)
{
    return "subsystem " + IdentifierText(subsystem & 0xFFFF) + ":" + IdentifierText(subsystem >> 16);
}

std::string AddressText(CardReader& card)
{
    const auto hex = [](int digits) { return [digits](uint64_t number) { return HexText(number, digits); }; };
    const std::string segment = card.Number("pci_segment", hex(4));
    const std::string bus = card.Number("pci_bus", hex(2));
    const std::string device = card.Number("pci_device", hex(2));
    const std::string function = card.Number("pci_function");
    return bus.empty() || device.empty() ? "" : Joined({segment, bus, device}, ":") + Around(".", function, "");
}

std::string IdentifiersText(CardReader& card)
{
    const std::string ids =
        Joined({card.Number("vendor_id", IdentifierText), card.Number("device_id", IdentifierText)}, ":");
    return Joined({AddressText(card), ids, card.Number("subsystem_id", SubsystemText),
                   Around("revision ", card.Number("revision", [](uint64_t number) { return HexText(number, 2); }), "")});
}

std::string KindText(CardReader& card)
{
    const std::string kind = card.Text("kind");
    return Joined(
        {card.Text("vendor"), kind.empty() ? "" : TextFor(kinds, kind), card.Flag("integrated", "integrated", "discrete")});
}

/// Without the system memory that a card keeps for itself where it keeps none, as almost every card.
std::string MemoryText(CardReader& card)
{
    const std::string reserved = card.Number("dedicated_system_memory_bytes", BytesText);
    return Joined({Around("", card.Number("dedicated_memory_bytes", BytesText), " dedicated"),
                   Around("", card.Number("board_memory_bytes", BytesText), " on the board"),
                   reserved == "0 bytes" ? "" : Around("", reserved, " of the system's reserved"),
                   Around("up to ", card.Number("shared_memory_bytes", BytesText), " shared")});
}

std::string MemoryTypeText(CardReader& card)
{
    return Joined({card.Text("memory_type"), Around("", card.Number("memory_bus_width_bits"), " bits"),
                   Around("up to ", card.Number("memory_clock_max_mhz", MegahertzText), "")});
}

std::string CoresText(CardReader& card)
{
    return Joined({card.Number("core_count"), Around("up to ", card.Number("core_clock_max_mhz", MegahertzText), ""),
                   Around("compute capability ", card.Text("compute_capability"), "")});
}

std::string DriverText(CardReader& card)
{
    const std::string marketing = card.Text("driver_version_marketing");
    const std::string version = card.Text("driver_version");
    return Joined({marketing.empty() ? version : marketing + Around(" (", version, ")"), card.Text("driver_date"),
                   card.Text("driver_provider")});
}

std::string StateText(CardReader& card)
{
    const std::string code = card.Number("problem_code");
    const std::string problem = card.Text("problem");
    const std::string power = card.Text("power_state");
    return Joined({code == "0" ? "works" : Around("problem ", Joined({code, Around("(", problem, ")")}, " "), ""),
                   power == "D3" ? "asleep (D3)" : power});
}

std::string LinkText(CardReader& card, const char* generation, const char* lanes)
{
    return Joined({Around("generation ", card.Number(generation), ""), Around("", card.Number(lanes), " lanes")});
}

std::string TemperatureText(CardReader& card)
{
    constexpr char degrees[] = " \xC2\xB0"
                               "C";
    return Joined({Around("slows down at ", card.Number("temperature_slowdown_celsius"), degrees),
                   Around("shuts down at ", card.Number("temperature_shutdown_celsius"), degrees)});
}

std::string EccText(CardReader& card)
{
    return Joined({card.Flag("ecc_enabled", "on", "off"),
                   Around("", card.Number("ecc_corrected_errors"), " corrected errors"),
                   Around("", card.Number("ecc_uncorrected_errors"), " uncorrected errors")});
}

void AddDisplays(std::vector<Fact>& facts, CardReader& card)
{
    const InventoryDisplays* displays = card.Displays("displays");
    if (displays && displays->empty()) {
        facts.push_back({"Displays", "none active"});
    }
    for (size_t i = 0; displays && i < displays->size(); ++i) {
        facts.push_back({"Display " + std::to_string(i + 1), DisplayText((*displays)[i])});
    }
}

std::string SentenceStart(std::string text)
{
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text;
}

} // namespace

std::vector<Fact> FactsOf(const Inventory& inventory, const InventoryCard& card)
{
    CardReader reader(inventory, card);
    reader.Text("name");
    std::vector<Fact> facts = {
        {"Kind", KindText(reader)},
        {"Memory", MemoryText(reader)},
        {"Video memory", MemoryTypeText(reader)},
        {"Cores", CoresText(reader)},
        {"Driver", DriverText(reader)},
        {"Driver files", Joined({reader.Text("driver_inf"), Around("service ", reader.Text("service"), "")})},
        {"State", StateText(reader)},
    };
    AddDisplays(facts, reader);
    const std::vector<Fact> more = {
        {"PCI Express", Joined({LinkText(reader, "pcie_generation", "pcie_lanes"),
                                Around("at most ", LinkText(reader, "pcie_generation_max", "pcie_lanes_max"), "")},
                               "; ")},
        {"Temperature limits", TemperatureText(reader)},
        {"ECC", EccText(reader)},
        {"BIOS", reader.Text("bios_version")},
        {"Serial number", reader.Text("serial_number")},
        {"UUID", reader.Text("uuid")},
        {"Identifiers", IdentifiersText(reader)},
        {"LUID", reader.Number("luid", [](uint64_t luid) { return "0x" + HexText(luid, 1); })},
        {"Instance id", reader.Text("instance_id")},
    };
    facts.insert(facts.end(), more.begin(), more.end());
    const std::vector<Fact> others = reader.Others();
    facts.insert(facts.end(), others.begin(), others.end());
    std::erase_if(facts, [](const Fact& fact) { return fact.Text.empty(); });
    return facts;
}

std::string DisplayText(const InventoryDisplay& display)
{
    const std::string gdiName = PrintableText(display.GdiName.value_or(""));
    const std::string monitor = PrintableText(display.MonitorName.value_or(""));
    const bool hasSize = display.Width && display.Height;
    return Joined({monitor.empty() ? gdiName : monitor + Around(" (", gdiName, ")"),
                   hasSize ? std::to_string(*display.Width) + " x " + std::to_string(*display.Height) : "",
                   display.RefreshMillihertz ? RefreshText(*display.RefreshMillihertz) : "",
                   PrintableText(display.Connector.value_or("")), display.IsPrimary.value_or(false) ? "primary" : ""});
}

std::vector<MissingValues> MissingOf(const Inventory& inventory, const InventoryCard& card)
{
    std::vector<MissingValues> missing;
    for (size_t i = 0; i < card.size(); ++i) {
        if (card[i].End.Status == "known") {
            continue;
        }
        const std::string why = EndText(card[i].End);
        auto group =
            std::find_if(missing.begin(), missing.end(), [&](const MissingValues& each) { return each.Why == why; });
        if (group == missing.end()) {
            group = missing.insert(missing.end(), {why, {}});
        }
        group->Names.push_back(inventory.Table[i].Name);
    }
    return missing;
}

std::string SourceTitle(const std::string& source)
{
    return source.empty() ? "no source" : TextFor(sources, source);
}

std::string EndText(const InventoryEnd& end)
{
    const std::string sentence = Replaced(TextFor(reasons, end.Reason), "{}", SourceTitle(end.Source));
    return SentenceStart(Replaced(sentence, "{code}", end.Code ? CodeText(*end.Code) : "no number"));
}

} // namespace orvel::tools
