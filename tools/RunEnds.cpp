#include "RunEnds.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "Messages.h"

namespace orvel::tools {

using shared::enumeration::Vendor;
using shared::enumeration::vendors;

namespace {

constexpr std::string_view unexpected = "Unexpected error occurred: ";

std::string FirstLineOf(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

/// Reads the lines of a log in their order, and collects the ends of runs.
class LogReader {
public:
    void Read(const LogLine& line)
    {
        if (const Vendor* const begun = BegunBy(line)) {
            run = begun;
            warning.clear();
        }
        if (SeverityName(line.Severity) == std::string_view("warning")) {
            warning = FirstLineOf(line.Message);
        } else if (line.Message.starts_with(unexpected)) {
            const std::string message = line.Message.substr(unexpected.size());
            End(message, ExplainMessage(message), warning);
        } else if (const std::string meaning = ExplainLine(line.Message); !meaning.empty()) {
            End(line.Message, meaning, "");
        }
    }

    void End(const std::string& message, const std::string& meaning, const std::string& lastWarning)
    {
        ends.push_back({std::string(run->Name), message, meaning, lastWarning});
        warning.clear();
        if (run + 1 != std::end(vendors)) {
            ++run; // its first line can be the one that ends it
        }
    }

    std::vector<RunEnd> Ends() const { return ends; }

private:
    const Vendor* run = std::begin(vendors);
    std::string warning;
    std::vector<RunEnd> ends;
};

} // namespace

const Vendor* BegunBy(const LogLine& line)
{
    const auto found = std::find_if(std::begin(vendors), std::end(vendors), [&line](const Vendor& vendor) {
        return !vendor.BeginsRun.empty() && line.Function.ends_with(vendor.BeginsRun);
    });
    return found == std::end(vendors) ? nullptr : found;
}

std::vector<RunEnd> EndedRuns(const Report& report)
{
    LogReader reader;
    for (const LogLine& line : report.Log) {
        reader.Read(line);
    }
    if (report.Error) {
        const auto* status = std::get_if<long>(&*report.Error);
        reader.End(Describe(*report.Error),
                   status ? ExplainStatus(*status) : ExplainMessage(std::get<std::string>(*report.Error)), "");
    }
    return reader.Ends();
}

} // namespace orvel::tools
