#pragma once

#include <mutex>

#include "machine/CurrentMachine.h"
#include "wmi/WmiRow.h"

namespace orvel::simulation {

/// The data that all WMI objects of one machine share.
class WmiSession {
public:
    WmiSession(std::shared_ptr<const Machine> machine, Microsoft::WRL::ComPtr<IWbemLocator> systemLocator);

    const WmiModel& Model() const;

    /// False if the machine has no WMI at all.
    bool IsPresent() const;

    /// The rows that match the query. Fails for an unknown class.
    HRESULT Select(const WqlQuery& query, IWbemServices* systemServices, WmiRows& rows) const;

    /// A row of the machine.
    std::shared_ptr<const WmiRow> RowOf(const WmiRowModel& model) const;

    /// The answer that the file has for a query of exactly this text, this time; null for none.
    const WmiQueryAnswer* RecordedAnswer(const std::wstring& text);

    /// Counts the query for every failure entry that its text matches; the first that applies, or null.
    const WmiFailure* PlannedFailure(const std::wstring& text);

    /// Connects to the computer's own WMI if the rows come from there; otherwise does nothing.
    HRESULT ConnectSystem(BSTR name, Microsoft::WRL::ComPtr<IWbemServices>& services) const;

private:
    std::shared_ptr<const Machine> machine;
    Microsoft::WRL::ComPtr<IWbemLocator> locator;
    std::mutex mutex;
    std::vector<uint32_t> queriesSeen;        // for each failure entry
    std::map<std::wstring, size_t> timesSent; // of the queries that the file answers by their text
};

class WmiServices final : public UnusedServices<WmiServices> {
public:
    WmiServices(std::shared_ptr<WmiSession> session, Microsoft::WRL::ComPtr<IWbemServices> systemServices);
    ~WmiServices();

    STDMETHODIMP ExecQuery(BSTR language, BSTR text, LONG flags, IWbemContext* context,
                           IEnumWbemClassObject** rows) override;

private:
    std::shared_ptr<WmiSession> session;
    Microsoft::WRL::ComPtr<IWbemServices> system;
};

/// Waits for the latency of a call on the machine, exact to the microsecond.
void Wait(uint32_t microseconds);

} // namespace orvel::simulation
