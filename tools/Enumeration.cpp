#include "Enumeration.h"

#include <exception>

#include "GraphicCardEnumeration.h"
#include "GraphicCardLog.h"

namespace orvel::tools {

namespace {

constexpr int everySeverity = 6; // plog's verbose

struct LogTarget {
    const shared::enumeration::GraphicCardEnumeration* Cards;
    std::vector<LogLine>* Lines;
    const std::function<void(const LogLine&)>* OnLine;
};

void TakeLine(int severity, const char* function, const char* message, void* context)
{
    const LogTarget& target = *static_cast<LogTarget*>(context);
    target.Lines->push_back({severity, function, message, target.Cards->size()});
    (*target.OnLine)(target.Lines->back());
}

Card CopyCard(const shared::enumeration::GraphicCardInfo& info)
{
    Card card;
    for (const CardField& field : cardFields) {
        card.push_back(field.Read(info));
    }
    return card;
}

std::optional<Thrown> Query(shared::enumeration::GraphicCardEnumeration& enumeration)
{
    try {
        enumeration.QueryGraphicCards();
        return std::nullopt;
    } catch (long status) {
        return Thrown(status);
    } catch (const std::exception& error) {
        return Thrown(std::string(error.what()));
    } catch (...) {
        return Thrown(std::string("an exception of unknown type"));
    }
}

} // namespace

Report Enumerate(const std::function<void(const LogLine&)>& onLine)
{
    Report report;
    {
        shared::enumeration::GraphicCardEnumeration enumeration;
        LogTarget target{&enumeration, &report.Log, &onLine};
        SetGraphicCardLog(TakeLine, everySeverity, &target);
        report.Error = Query(enumeration);
        SetGraphicCardLog(nullptr, 0, nullptr);
        for (size_t i = 0; i < enumeration.size(); ++i) {
            report.Cards.push_back(CopyCard(*enumeration.get(static_cast<int>(i))));
        }
    }
    return report;
}

} // namespace orvel::tools
