#include "inventory/Page.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "inventory/Facts.h"
#include "inventory/Units.h"

namespace orvel::tools {

namespace {

/// A text in HTML, also within an attribute in double quotes.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char character : PrintableText(text)) {
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

/// <tag attributes>content</tag>; the content is HTML. An element of a block has a line of its own.
std::string Element(const std::string& tag, const std::string& attributes, const std::string& content)
{
    return "<" + tag + (attributes.empty() ? "" : " " + attributes) + ">" + content + "</" + tag + ">";
}

std::string Block(const std::string& tag, const std::string& attributes, const std::string& content)
{
    return Element(tag, attributes, content) + "\n";
}

std::string Class(const char* name)
{
    return std::string("class=\"") + name + "\"";
}

std::string Counted(size_t number, const std::string& thing)
{
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

// --- a card's head
// ------------------------------------------------------------------------------------------------------------

std::string StatePill(const Inventory& inventory, const InventoryCard& card)
{
    const auto* problem = FindKnown<uint64_t>(inventory, card, "problem_code");
    if (problem && *problem != 0) {
        const std::string name = KnownText(inventory, card, "problem");
        return Element("span", Class("pill bad"),
                       "Problem " + std::to_string(*problem) + Escaped(name.empty() ? "" : " \xC2\xB7 " + name));
    }
    if (KnownText(inventory, card, "power_state") == "D3") {
        return Element("span", Class("pill calm"), "Asleep");
    }
    return problem ? Element("span", Class("pill good"), "Works") : "";
}

std::string TextOfFact(const std::vector<Fact>& facts, std::string_view label)
{
    const auto fact = std::find_if(facts.begin(), facts.end(), [&](const Fact& each) { return each.Label == label; });
    return fact == facts.end() ? "" : fact->Text;
}

std::string Head(const Inventory& inventory, const InventoryCard& card, const std::vector<Fact>& facts,
                 const std::string& number)
{
    const std::string kind = TextOfFact(facts, "Kind");
    const std::string title = Block("h2", "id=\"card-" + number + "\"", Escaped(NameOf(inventory, card)));
    return Block("header", Class("card-head"),
                 Element("div", "", title + (kind.empty() ? "" : Block("p", Class("kind"), Escaped(kind)))) +
                     StatePill(inventory, card));
}

// --- memory
// -------------------------------------------------------------------------------------------------------------------

struct MemoryBar {
    const char* Property;
    const char* Label;
    const char* Class;
    bool IsShownAsZero = true; ///< almost no card keeps system memory for itself
};

constexpr MemoryBar memoryBars[] = {
    {"dedicated_memory_bytes", "Dedicated", "dedicated"},
    {"board_memory_bytes", "On the board", "board"},
    {"dedicated_system_memory_bytes", "Reserved of the system's", "reserved", false},
    {"shared_memory_bytes", "Shared with the system, at most", "shared"},
};

/// The largest memory on the page: a full bar.
uint64_t LargestMemory(const Inventory& inventory)
{
    uint64_t largest = 1;
    for (const InventoryCard& card : inventory.Cards) {
        for (const MemoryBar& bar : memoryBars) {
            const auto* bytes = FindKnown<uint64_t>(inventory, card, bar.Property);
            largest = std::max(largest, bytes ? *bytes : 0);
        }
    }
    return largest;
}

std::string BarOf(const MemoryBar& bar, uint64_t bytes, uint64_t largest)
{
    char width[32];
    std::snprintf(width, sizeof width, "style=\"width:%.2f%%\"",
                  100 * static_cast<double>(bytes) / static_cast<double>(largest));
    const std::string fill = Element("span", "class=\"fill " + std::string(bar.Class) + "\" " + width, "");
    return Block("div", Class("memory-row"),
                 Element("dt", "", bar.Label) + Element("dd", "", BytesText(bytes)) +
                     (bytes == 0 ? "" : Element("dd", "class=\"track\" aria-hidden=\"true\"", fill)));
}

/// The memory of a card; where none is known, why not.
std::string Memory(const Inventory& inventory, const InventoryCard& card, uint64_t largest)
{
    std::string rows;
    for (const MemoryBar& bar : memoryBars) {
        const auto* bytes = FindKnown<uint64_t>(inventory, card, bar.Property);
        if (bytes && (*bytes != 0 || bar.IsShownAsZero)) {
            rows += BarOf(bar, *bytes, largest);
        }
    }
    const InventoryValue* dedicated = FindValue(inventory, card, "dedicated_memory_bytes");
    const std::string why = rows.empty() && dedicated ? "Not known. " + EndText(dedicated->End) + "." : "";
    return Block("section", "",
                 Block("h3", "", "Memory") +
                     (rows.empty() ? Block("p", Class("quiet"), Escaped(why)) : Block("dl", Class("memory"), "\n" + rows)));
}

// --- displays and details
// -----------------------------------------------------------------------------------------------------

std::string DisplayItem(const InventoryDisplay& display)
{
    const bool hasSize = display.Width && display.Height;
    const double ratio =
        hasSize && *display.Height > 0 ? static_cast<double>(*display.Width) / static_cast<double>(*display.Height) : 1.78;
    char shape[48];
    std::snprintf(shape, sizeof shape, "style=\"aspect-ratio:%.3f\"", std::clamp(ratio, 0.4, 4.0));
    return Block("li", "",
                 Element("span", "class=\"screen\" aria-hidden=\"true\" " + std::string(shape), "") +
                     Element("span", "", Escaped(DisplayText(display))));
}

std::string Displays(const Inventory& inventory, const InventoryCard& card)
{
    const auto* displays = FindKnown<InventoryDisplays>(inventory, card, "displays");
    if (!displays) {
        return "";
    }
    std::string items;
    for (const InventoryDisplay& display : *displays) {
        items += DisplayItem(display);
    }
    return Block("section", "",
                 Block("h3", "", "Displays") + (items.empty() ? Block("p", Class("quiet"), "None is active.")
                                                              : Block("ul", Class("displays"), "\n" + items)));
}

/// The facts that no other part of the page shows.
std::string Details(const std::vector<Fact>& facts)
{
    std::string rows;
    for (const Fact& fact : facts) {
        const bool isElsewhere = fact.Label == "Kind" || fact.Label == "Memory" || fact.Label.starts_with("Display");
        if (!isElsewhere) {
            rows += Block("div", "", Element("dt", "", Escaped(fact.Label)) + Element("dd", "", Escaped(fact.Text)));
        }
    }
    return rows.empty() ? "" : Block("section", "", Block("h3", "", "Details") + Block("dl", Class("details"), "\n" + rows));
}

// --- what is missing, and the record
// ------------------------------------------------------------------------------------------

std::string Names(const std::vector<std::string>& names)
{
    std::string html;
    for (const std::string& name : names) {
        html += (html.empty() ? "" : " ") + Element("code", "", Escaped(name));
    }
    return html;
}

std::string Missing(const Inventory& inventory, const InventoryCard& card)
{
    std::string items;
    size_t count = 0;
    for (const MissingValues& group : MissingOf(inventory, card)) {
        items += Block("li", "", Element("p", "", Escaped(group.Why)) + Element("p", Class("names"), Names(group.Names)));
        count += group.Names.size();
    }
    return items.empty() ? ""
                         : Block("section", Class("wide"),
                                 Block("h3", "", Counted(count, "value") + (count == 1 ? " is" : " are") + " not known") +
                                     Block("ul", Class("missing"), "\n" + items));
}

std::string Cell(const char* label, const std::string& html)
{
    return Element("td", std::string("data-label=\"") + label + "\"", html);
}

std::string DifferenceTable(const ComparedCard& card)
{
    std::string rows;
    for (const Difference& difference : card.Differences) {
        const std::string record =
            difference.RecordText.empty() ? Element("span", Class("quiet"), "none") : Escaped(difference.RecordText);
        rows +=
            Block("tr", "",
                  Element("th", "scope=\"row\"",
                          Element("code", "", Escaped(difference.Property)) + "<br>" +
                              Element("code", Class("quiet"), Escaped(difference.Field))) +
                      Cell("Record", record) + Cell("Inventory", Element("strong", "", Escaped(difference.InventoryText))) +
                      Cell("Why", Escaped(difference.Why)));
    }
    constexpr char head[] = "<thead><tr><th scope=\"col\">Value</th><th scope=\"col\">Record</th>"
                            "<th scope=\"col\">Inventory</th><th scope=\"col\">Why</th></tr></thead>\n";
    return rows.empty() ? "" : Block("table", Class("record"), head + Block("tbody", "", "\n" + rows));
}

std::string BesideRecord(const Comparison& comparison, size_t index)
{
    const ComparedCard& card = comparison.Cards[index];
    if (!comparison.Problem.empty()) {
        return "";
    }
    std::string text = card.Note.empty() ? "" : Block("p", Class("note"), Escaped(card.Note));
    text += DifferenceTable(card);
    if (!card.Records.empty()) {
        text += Block("p", Class("quiet"),
                      Counted(card.Agreeing, "value") + (card.Agreeing == 1 ? " is" : " are") + " the same.");
    }
    return Block("section", Class("wide"), Block("h3", "", "Beside the 49-property record") + text);
}

std::string CardArticle(const Inventory& inventory, const Comparison& comparison, size_t index, uint64_t largest)
{
    const InventoryCard& card = inventory.Cards[index];
    const std::vector<Fact> facts = FactsOf(inventory, card);
    const std::string number = std::to_string(index + 1);
    const std::string left = Element("div", "", "\n" + Memory(inventory, card, largest) + Displays(inventory, card));
    return Block("article", "class=\"card\" aria-labelledby=\"card-" + number + "\"",
                 "\n" + Head(inventory, card, facts, number) + Block("div", Class("columns"), left + Details(facts)) +
                     Missing(inventory, card) + BesideRecord(comparison, index));
}

// --- the page
// -----------------------------------------------------------------------------------------------------------------

std::string StateClass(const std::string& state)
{
    return state == "answered" ? "good" : state == "failed" ? "bad" : "calm";
}

std::string Sources(const Inventory& inventory)
{
    std::string items;
    for (const InventoryEnd& source : inventory.Sources) {
        std::string title = SourceTitle(source.Source);
        title = title.starts_with("the ") ? "The " + title.substr(4) : title;
        const std::string why = source.Status == "answered" ? "" : EndText(source);
        items += Block("li", "",
                       Element("span", "class=\"pill " + StateClass(source.Status) + "\"", Escaped(source.Status)) +
                           Element("strong", "", Escaped(title)) + Element("span", Class("quiet"), Escaped(why)));
    }
    return items.empty()
               ? ""
               : Block("section", Class("card"), Block("h2", "", "Sources") + Block("ul", Class("sources"), "\n" + items));
}

/// What needs attention before anything else: sources that failed, and a record that is not there.
std::string Alerts(const Inventory& inventory, const Comparison& comparison)
{
    std::string items;
    for (const InventoryEnd& source : inventory.Sources) {
        if (source.Status == "failed") {
            items += Block("li", "", Escaped(EndText(source)) + "; its values are missing below.");
        }
    }
    if (!comparison.Problem.empty()) {
        items += Block("li", "", "There is no record to compare with: " + Escaped(comparison.Problem));
    }
    for (const std::string& sentence : comparison.Unknown) {
        items += Block("li", "", Escaped(sentence));
    }
    return items.empty() ? "" : Block("ul", Class("alerts"), "\n" + items);
}

std::string Origin(const Inventory& inventory, const PageOrigin& origin)
{
    std::string text = "Asked at depth " + Escaped(inventory.Depth);
    for (const std::string& part :
         {origin.Taken, origin.Machine.empty() ? "" : "Simulated: " + origin.Machine, origin.Program}) {
        text += part.empty() ? "" : " <span class=\"dot\">\xC2\xB7</span> " + Escaped(part);
    }
    return text;
}

std::string Headline(const Inventory& inventory)
{
    const size_t count = inventory.Cards.size();
    return count == 0 ? "No graphics adapter" : Counted(count, "graphics adapter");
}

} // namespace

std::string InventoryAsPage(const Inventory& inventory, const Comparison& comparison, const PageOrigin& origin)
{
    const std::string head =
        "<meta charset=\"utf-8\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; img-src "
        "data:\">\n"
        "<link rel=\"icon\" href=\"data:,\">\n" + // otherwise a browser asks for one
        Block("title", "", "Graphics inventory: " + Headline(inventory)) +
        Block("style", "", pageStyle);
    std::string main;
    const uint64_t largest = LargestMemory(inventory);
    for (size_t i = 0; i < inventory.Cards.size(); ++i) {
        main += CardArticle(inventory, comparison, i, largest);
    }
    const std::string top = Block("p", Class("eyebrow"), "Graphics inventory") + Block("h1", "", Headline(inventory)) +
                            Block("p", Class("quiet"), Origin(inventory, origin));
    const std::string body = Block("header", Class("top"), "\n" + top) +
                             Block("main", "", "\n" + Alerts(inventory, comparison) + main + Sources(inventory));
    return "<!DOCTYPE html>\n" +
           Block("html", "lang=\"en\"", "\n" + Block("head", "", "\n" + head) + Block("body", "", "\n" + body));
}

} // namespace orvel::tools
