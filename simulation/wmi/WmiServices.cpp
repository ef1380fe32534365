#include "wmi/WmiServices.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include <comutil.h>

#include "drivers/HandleTable.h"
#include "machine/Text.h"
#include "windows/SystemScope.h"

namespace orvel::simulation {

namespace {

using Microsoft::WRL::ComPtr;

using Clock = std::chrono::steady_clock;

/// The result of a query, and the time when it is available.
struct WmiAnswer {
    HRESULT status = WBEM_S_NO_ERROR;
    std::shared_ptr<const WqlQuery> query;
    WmiRows rows;
    const WmiFailure* failure = nullptr; // what the machine has planned for it
    HRESULT end = WBEM_S_FALSE;          // in place of a row behind the last
    Clock::time_point ready;
};

/// Sleeping is exact only to a few milliseconds, so the last part is a busy loop.
void WaitUntil(Clock::time_point end)
{
    constexpr auto inexact = std::chrono::milliseconds(2);
    if (const auto left = end - Clock::now(); left > 2 * inexact) {
        std::this_thread::sleep_for(left - inexact);
    }
    while (Clock::now() < end) {
    }
}

class WmiEnumerator final : public UnusedEnumerator<WmiEnumerator> {
public:
    explicit WmiEnumerator(WmiAnswer itsAnswer) : answer(std::move(itsAnswer)), rows(answer.rows) { RecordOutput(handle); }

    STDMETHODIMP Reset() override
    {
        position = 0;
        return WBEM_S_NO_ERROR;
    }

    STDMETHODIMP Skip(LONG, ULONG count) override
    {
        const bool enough = count <= rows.size() - position;
        position = enough ? position + count : rows.size();
        return enough ? WBEM_S_NO_ERROR : WBEM_S_FALSE;
    }

    STDMETHODIMP Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override
    {
        AddToTrace(timeout == static_cast<LONG>(WBEM_INFINITE) ? "wmi next without a limit" : "wmi next", {handle});
        if (!objects || !returned) {
            return Result(WBEM_E_INVALID_PARAMETER);
        }
        *returned = 0;
        if (!IsReadyIn(timeout)) {
            return WBEM_S_TIMEDOUT;
        }
        if (answer.status != WBEM_S_NO_ERROR) {
            return answer.status;
        }
        for (; *returned < count && position < rows.size(); ++*returned, ++position) {
            if (answer.failure && answer.failure->row == position + 1) {
                return answer.failure->status;
            }
            objects[*returned] = new WmiRowObject(answer.query, rows[position]);
        }
        return *returned == count ? S_OK : answer.end;
    }

private:
    bool IsReadyIn(LONG milliseconds) const
    {
        const auto limit = Clock::now() + std::chrono::milliseconds(milliseconds);
        const bool isInTime = milliseconds == static_cast<LONG>(WBEM_INFINITE) || answer.ready <= limit;
        WaitUntil(isInTime ? answer.ready : limit);
        return isInTime;
    }

    WmiAnswer answer;
    const WmiRows& rows;
    size_t position = 0;
    const void* handle = NewHandle(); // in a recording
};

void TakeAll(IEnumWbemClassObject& source, const WqlQuery& query, WmiRows& rows)
{
    while (true) {
        ComPtr<IWbemClassObject> object;
        ULONG returned = 0;
        if (source.Next(static_cast<LONG>(WBEM_INFINITE), 1, &object, &returned) != WBEM_S_NO_ERROR || returned == 0) {
            return;
        }
        auto row = SystemRow(std::move(object));
        if (IsWanted(query, *row)) {
            rows.push_back(std::move(row));
        }
    }
}

/// The whole class from the computer's own WMI. The condition is applied here, because not every WMI supports all
/// patterns.
HRESULT SelectFromSystem(const WqlQuery& query, IWbemServices& services, WmiRows& rows)
{
    const SystemScope scope;
    const _bstr_t language(L"WQL");
    const _bstr_t text((L"SELECT * FROM " + query.className).c_str());
    ComPtr<IEnumWbemClassObject> source;
    const HRESULT result = services.ExecQuery(language, text, WBEM_FLAG_FORWARD_ONLY, nullptr, &source);
    if (SUCCEEDED(result)) {
        TakeAll(*source.Get(), query, rows);
    }
    return result;
}

} // namespace

WmiSession::WmiSession(std::shared_ptr<const Machine> itsMachine, ComPtr<IWbemLocator> systemLocator)
    : machine(std::move(itsMachine)), locator(std::move(systemLocator)), queriesSeen(machine->wmi.model.failures.size())
{}

const WmiModel& WmiSession::Model() const
{
    return machine->wmi.model;
}

bool WmiSession::IsPresent() const
{
    return machine->wmi.standing == Standing::Simulated;
}

HRESULT WmiSession::Select(const WqlQuery& query, IWbemServices* systemServices, WmiRows& rows) const
{
    if (systemServices) {
        return SelectFromSystem(query, *systemServices, rows);
    }
    const auto found = Model().classes.find(FoldCase(query.className));
    if (found == Model().classes.end()) {
        return Result(WBEM_E_INVALID_CLASS);
    }
    for (const WmiRowModel& model : found->second) {
        auto row = RowOf(model);
        if (IsWanted(query, *row)) {
            rows.push_back(std::move(row));
        }
    }
    return WBEM_S_NO_ERROR;
}

const WmiFailure* WmiSession::PlannedFailure(const std::wstring& text)
{
    const std::scoped_lock lock(mutex);
    const WmiFailure* planned = nullptr;
    for (size_t index = 0; index < queriesSeen.size(); ++index) {
        const WmiFailure& failure = Model().failures[index];
        if (text.find(failure.contains) == std::wstring::npos) {
            continue;
        }
        ++queriesSeen[index];
        if (!planned && (!failure.nth || *failure.nth == queriesSeen[index])) {
            planned = &failure;
        }
    }
    return planned;
}

const WmiQueryAnswer* WmiSession::RecordedAnswer(const std::wstring& text)
{
    const auto recorded = Model().queries.find(text);
    if (recorded == Model().queries.end()) {
        return nullptr;
    }
    const std::scoped_lock lock(mutex);
    const size_t time = timesSent[text]++;
    return &recorded->second[std::min(time, recorded->second.size() - 1)];
}

std::shared_ptr<const WmiRow> WmiSession::RowOf(const WmiRowModel& model) const
{
    return SimulatedRow(std::shared_ptr<const WmiRowModel>(machine, &model));
}

HRESULT WmiSession::ConnectSystem(BSTR name, ComPtr<IWbemServices>& services) const
{
    if (!locator) {
        return WBEM_S_NO_ERROR;
    }
    const SystemScope scope;
    const HRESULT result = locator->ConnectServer(name, nullptr, nullptr, nullptr, 0, nullptr, nullptr, &services);
    if (SUCCEEDED(result)) { // fails for an in-process object, as under Wine, which needs no blanket
        CoSetProxyBlanket(services.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                          RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    }
    return result;
}

WmiServices::WmiServices(std::shared_ptr<WmiSession> itsSession, ComPtr<IWbemServices> systemServices)
    : session(std::move(itsSession)), system(std::move(systemServices))
{}

WmiServices::~WmiServices()
{
    AddToTrace("wmi disconnect");
}

namespace {

void TakeRecorded(const WmiSession& session, const WmiQueryAnswer& recorded, const wchar_t* text, WmiAnswer& answer)
{
    answer.query = std::make_shared<const WqlQuery>(ParseWql(text).value_or(WqlQuery{}));
    (recorded.hasRows ? answer.end : answer.status) = recorded.status.value_or(answer.end);
    for (const WmiRowModel& row : recorded.rows) {
        answer.rows.push_back(session.RowOf(row));
    }
}

WmiAnswer AnswerTo(WmiSession& session, IWbemServices* system, const wchar_t* language, const wchar_t* text)
{
    WmiAnswer answer;
    answer.ready = Clock::now() + std::chrono::microseconds(session.Model().queryMicroseconds);
    if (FoldCase(language) != L"wql") {
        answer.status = Result(WBEM_E_INVALID_QUERY_TYPE);
        return answer;
    }
    answer.failure = session.PlannedFailure(text);
    if (answer.failure && !answer.failure->row) {
        answer.status = answer.failure->status;
    } else if (const WmiQueryAnswer* const recorded = session.RecordedAnswer(text)) {
        TakeRecorded(session, *recorded, text, answer);
    } else if (auto query = ParseWql(text)) {
        answer.query = std::make_shared<const WqlQuery>(std::move(*query));
        answer.status = session.Select(*answer.query, system, answer.rows);
    } else {
        answer.status = Result(WBEM_E_INVALID_QUERY);
    }
    return answer;
}

} // namespace

HRESULT WmiServices::ExecQuery(BSTR language, BSTR text, LONG flags, IWbemContext*, IEnumWbemClassObject** target)
{
    if (target) {
        *target = nullptr;
    }
    if (!target || !language || !text) {
        return Result(WBEM_E_INVALID_PARAMETER);
    }
    AddToTrace("wmi query " + ToUtf8(text));
    WmiAnswer answer = AnswerTo(*session, system.Get(), language, text);
    const bool isLater = (flags & WBEM_FLAG_RETURN_IMMEDIATELY) != 0;
    if (!isLater) {
        WaitUntil(answer.ready);
    }
    // An error that WMI finds while it works on the query is reported with the first row.
    if (answer.status != WBEM_S_NO_ERROR && !(isLater && FAILED(answer.status))) {
        return answer.status;
    }
    *target = new WmiEnumerator(std::move(answer));
    return WBEM_S_NO_ERROR;
}

void Wait(uint32_t microseconds)
{
    WaitUntil(Clock::now() + std::chrono::microseconds(microseconds));
}

} // namespace orvel::simulation
