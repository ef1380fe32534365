#include "machine/WmiModel.h"

#include <array>
#include <sstream>

#include "machine/Text.h"

namespace orvel::simulation {

namespace {

constexpr auto defaultFailure = static_cast<int32_t>(0x80041001); // WBEM_E_FAILED

struct TypeName {
    const char* name;
    WmiType type;
};

constexpr std::array typeNames = {
    TypeName{"EMPTY", WmiType::Empty}, TypeName{"UI4", WmiType::Ui4}, TypeName{"I4", WmiType::I4},
    TypeName{"R4", WmiType::R4},       TypeName{"R8", WmiType::R8},   TypeName{"BSTR", WmiType::Text},
    TypeName{"BOOL", WmiType::Flag},
};

WmiType TypeNamed(const Node& node)
{
    const std::string text = node.Text();
    for (const auto& [name, type] : typeNames) {
        if (text == name) {
            return type;
        }
    }
    node.Refuse("expected \"UI4\", \"I4\", \"R4\", \"R8\", \"BSTR\", \"BOOL\" or \"EMPTY\", found \"" + text + "\"");
}

WmiValue TypedValue(const Node& node, WmiType type)
{
    WmiValue value{type, 0, 0, {}};
    if (type == WmiType::Ui4 || type == WmiType::Uint32) {
        value.whole = static_cast<int64_t>(node.Whole(0, UINT32_MAX));
    } else if (type == WmiType::I4) {
        value.whole = static_cast<int64_t>(node.Whole(INT32_MIN, INT32_MAX));
    } else if (type == WmiType::R4 || type == WmiType::R8) {
        value.real = node.Real();
    } else if (type == WmiType::Flag) {
        value.whole = node.Flag();
    } else if (type == WmiType::Text) {
        value.text = ToWide(node.Text());
    }
    return value;
}

WmiValue PlainValue(const Node& node)
{
    if (node.IsNull()) {
        return {};
    }
    if (node.IsText()) {
        return TypedValue(node, WmiType::Text);
    }
    if (node.IsFlag()) {
        return TypedValue(node, WmiType::Flag);
    }
    if (!node.IsNumber()) {
        node.Refuse("expected a number, a text, true, false, null or an object with \"status\", \"vt\" or \"where\"");
    }
    return TypedValue(node, WmiType::Uint32);
}

std::optional<std::wstring> TextOf(const WmiValue& value)
{
    if (value.type == WmiType::Null || value.type == WmiType::Empty) {
        return std::nullopt;
    }
    if (value.type == WmiType::Text) {
        return value.text;
    }
    if (value.type == WmiType::Flag) {
        return value.whole != 0 ? L"True" : L"False";
    }
    if (value.type != WmiType::R4 && value.type != WmiType::R8) {
        return std::to_wstring(value.whole);
    }
    std::wostringstream text;
    text << value.real;
    return text.str();
}

/// The members of a property that is written as an object, in any order.
struct WrittenProperty {
    std::optional<WmiType> type;
    std::optional<Node> value;
    std::optional<std::string> where;
    std::optional<int32_t> status;
};

WrittenProperty ReadWritten(const Node& node)
{
    WrittenProperty written;
    node.ReadFields({
        {"vt", [&](const Node& member) { written.type = TypeNamed(member); }},
        {"value", [&](const Node& member) { written.value = member; }},
        {"where", [&](const Node& member) { written.where = member.Text(); }},
        {"status", [&](const Node& member) { written.status = member.StatusCode(); }},
    });
    if (!written.value && !written.status) {
        node.Refuse("a property needs \"value\" or \"status\"");
    }
    if (written.type && !written.value) {
        node.Refuse("\"vt\" needs \"value\"");
    }
    if (!written.type && !written.where && !written.status) {
        node.Refuse("\"value\" needs \"vt\", \"where\" or \"status\"");
    }
    return written;
}

void ReadRow(const Node& node, WmiRowModel& target)
{
    for (const auto& [name, property] : node.Members()) {
        const auto [entry, isNew] = target.try_emplace(FoldCase(ToWide(name)));
        if (!isNew) {
            property.Refuse("the property is repeated (names are case-insensitive)");
        }
        ReadInto(property, entry->second);
    }
}

void ReadClasses(const Node& node, WmiModel& target)
{
    for (const auto& [name, rows] : node.Members()) {
        const auto [entry, isNew] = target.classes.try_emplace(FoldCase(ToWide(name)));
        if (!isNew) {
            rows.Refuse("the class is repeated (names are case-insensitive)");
        }
        for (const Node& row : rows.Elements()) {
            ReadRow(row, entry->second.emplace_back());
        }
    }
}

/// Rows of a class by their numbers, counted from 0, or rows of their own.
void ReadQueryRow(const Node& node, const std::vector<WmiRowModel>* rowsOfClass, WmiQueryAnswer& target)
{
    if (node.IsObject()) {
        return ReadRow(node, target.rows.emplace_back());
    }
    if (!rowsOfClass) {
        node.Refuse("the number of a row needs \"class\"");
    }
    const uint64_t index = node.Whole(0, UINT32_MAX);
    if (index >= rowsOfClass->size()) {
        node.Refuse("the class has " + std::to_string(rowsOfClass->size()) + " rows, counted from 0");
    }
    target.rows.push_back((*rowsOfClass)[index]);
}

const std::vector<WmiRowModel>& RowsOfClass(const Node& name, const WmiModel& model)
{
    const auto found = model.classes.find(FoldCase(ToWide(name.Text())));
    if (found == model.classes.end()) {
        name.Refuse("\"classes\" does not have the class \"" + name.Text() + "\"");
    }
    return found->second;
}

void ReadQueryAnswer(const Node& node, const WmiModel& model, WmiQueryAnswer& target)
{
    const std::vector<WmiRowModel>* rowsOfClass = nullptr;
    std::optional<Node> rows;
    node.ReadFields({
        {"class", [&](const Node& name) { rowsOfClass = &RowsOfClass(name, model); }},
        {"rows", [&](const Node& member) { rows = member; }},
        {"status", [&](const Node& status) { target.status = status.StatusCode(); }},
    });
    if (!rows && !target.status) {
        node.Refuse("the answer to a query needs \"rows\" or \"status\"");
    }
    target.hasRows = rows.has_value();
    for (const Node& row : rows ? rows->Elements() : std::vector<Node>()) {
        ReadQueryRow(row, rowsOfClass, target);
    }
}

/// One answer, or one for each time that the query is sent.
void ReadQueries(const Node& node, WmiModel& target)
{
    for (const auto& [text, answer] : node.Members()) {
        const auto answers = answer.IsArray() ? answer.Elements() : std::vector<Node>{answer};
        if (answers.empty()) {
            answer.Refuse("a query needs an answer");
        }
        for (const Node& one : answers) {
            ReadQueryAnswer(one, target, target.queries[ToWide(text)].emplace_back());
        }
    }
}

void ReadRowsSource(const Node& node, WmiModel& target)
{
    if (node.Text() != "system") {
        node.Refuse("expected \"system\", found \"" + node.Text() + "\"");
    }
    target.rowsFromSystem = true;
}

void ReadLatency(const Node& node, WmiModel& target)
{
    node.ReadFields({
        {"connect", Into(target.connectMicroseconds)},
        {"query", Into(target.queryMicroseconds)},
    });
}

} // namespace

void ReadInto(const Node& node, WmiProperty& target)
{
    if (node.IsObject()) {
        const WrittenProperty written = ReadWritten(node);
        target.status = written.status.value_or(0);
        if (written.value) {
            target.value = written.type ? TypedValue(*written.value, *written.type) : PlainValue(*written.value);
        }
        target.seenByQuery = written.where ? std::optional(ToWide(*written.where)) : std::nullopt;
    } else {
        target.value = PlainValue(node);
    }
    if (!target.seenByQuery && target.value) {
        target.seenByQuery = TextOf(*target.value);
    }
}

void ReadInto(const Node& node, WmiFailure& target)
{
    target.status = defaultFailure;
    node.ReadFields({
        {"contains", [&target](const Node& text) { target.contains = ToWide(text.Text()); }},
        {"nth", [&target](const Node& nth) { target.nth = static_cast<uint32_t>(nth.Whole(1, UINT32_MAX)); }},
        {"row", [&target](const Node& row) { target.row = static_cast<uint32_t>(row.Whole(1, UINT32_MAX)); }},
        {"status", [&target](const Node& status) { target.status = status.StatusCode(); }},
    });
}

void ReadInto(const Node& node, WmiModel& target)
{
    std::optional<Node> queries; // refer to the classes, whatever comes first in the file
    node.ReadFields({
        {"connect", Into(target.connect)},
        {"classes", [&target](const Node& classes) { ReadClasses(classes, target); }},
        {"queries", [&queries](const Node& member) { queries = member; }},
        {"rows", [&target](const Node& rows) { ReadRowsSource(rows, target); }},
        {"latency_us", [&target](const Node& latency) { ReadLatency(latency, target); }},
        {"failures", Into(target.failures)},
    });
    if (queries) {
        ReadQueries(*queries, target);
    }
    if (target.rowsFromSystem && node.HasKey("classes")) {
        node.Refuse("\"rows\" stands in place of \"classes\"; only one of them can be given");
    }
}

} // namespace orvel::simulation
