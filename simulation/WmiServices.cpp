#include "WmiServices.h"

#include "SystemScope.h"
#include "Text.h"

#include <chrono>
#include <comutil.h>
#include <thread>

namespace orvel::simulation {

namespace {

using Microsoft::WRL::ComPtr;

class WmiEnumerator final : public UnusedEnumerator<WmiEnumerator> {
public:
    WmiEnumerator(std::shared_ptr<const WqlQuery> itsQuery, WmiRows itsRows)
        : query(std::move(itsQuery)), rows(std::move(itsRows))
    {}

    HRESULT STDMETHODCALLTYPE Reset() override
    {
        position = 0;
        return WBEM_S_NO_ERROR;
    }

    HRESULT STDMETHODCALLTYPE Skip(LONG, ULONG count) override
    {
        const bool enough = count <= rows.size() - position;
        position = enough ? position + count : rows.size();
        return enough ? WBEM_S_NO_ERROR : WBEM_S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Next(LONG, ULONG count, IWbemClassObject** objects, ULONG* returned) override
    {
        AddToTrace("wmi next");
        if (objects == nullptr || returned == nullptr)
            return Result(WBEM_E_INVALID_PARAMETER);
        *returned = 0;
        for (; *returned < count && position < rows.size(); ++*returned, ++position)
            objects[*returned] = new WmiRowObject(query, rows[position]);
        return *returned == count ? WBEM_S_NO_ERROR : WBEM_S_FALSE;
    }

private:
    std::shared_ptr<const WqlQuery> query;
    WmiRows rows;
    size_t position = 0;
};

void TakeAll(IEnumWbemClassObject& source, const WqlQuery& query, WmiRows& rows)
{
    while (true) {
        ComPtr<IWbemClassObject> object;
        ULONG returned = 0;
        if (source.Next(static_cast<LONG>(WBEM_INFINITE), 1, &object, &returned) != WBEM_S_NO_ERROR || returned == 0)
            return;
        auto row = SystemRow(std::move(object));
        if (IsWanted(query, *row))
            rows.push_back(std::move(row));
    }
}

/// The whole class from the computer's own WMI; the condition is applied here, as it knows patterns that not every WMI does.
HRESULT SelectFromSystem(const WqlQuery& query, IWbemServices& services, WmiRows& rows)
{
    const SystemScope scope;
    const _bstr_t language(L"WQL");
    const _bstr_t text((L"SELECT * FROM " + query.className).c_str());
    ComPtr<IEnumWbemClassObject> source;
    const HRESULT result = services.ExecQuery(language, text, WBEM_FLAG_FORWARD_ONLY, nullptr, &source);
    if (SUCCEEDED(result))
        TakeAll(*source.Get(), query, rows);
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
    if (systemServices != nullptr)
        return SelectFromSystem(query, *systemServices, rows);
    const auto found = Model().classes.find(FoldCase(query.className));
    if (found == Model().classes.end())
        return Result(WBEM_E_INVALID_CLASS);
    for (const WmiRowModel& model : found->second) {
        auto row = SimulatedRow(std::shared_ptr<const WmiRowModel>(machine, &model));
        if (IsWanted(query, *row))
            rows.push_back(std::move(row));
    }
    return WBEM_S_NO_ERROR;
}

int32_t WmiSession::PlannedFailure(const std::wstring& text)
{
    const std::scoped_lock lock(mutex);
    std::optional<int32_t> status;
    for (size_t index = 0; index < queriesSeen.size(); ++index) {
        const WmiFailure& failure = Model().failures[index];
        if (text.find(failure.contains) == std::wstring::npos)
            continue;
        ++queriesSeen[index];
        if (!status && (!failure.nth || *failure.nth == queriesSeen[index]))
            status = failure.status;
    }
    return status.value_or(0);
}

HRESULT WmiSession::ConnectSystem(BSTR name, ComPtr<IWbemServices>& services) const
{
    if (!locator)
        return WBEM_S_NO_ERROR;
    const SystemScope scope;
    const HRESULT result = locator->ConnectServer(name, nullptr, nullptr, nullptr, 0, nullptr, nullptr, &services);
    if (SUCCEEDED(result)) // an object of this process, as Wine has it, refuses the blanket, and needs none
        CoSetProxyBlanket(services.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                          RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    return result;
}

WmiServices::WmiServices(std::shared_ptr<WmiSession> itsSession, ComPtr<IWbemServices> systemServices)
    : session(std::move(itsSession)), system(std::move(systemServices))
{}

WmiServices::~WmiServices()
{
    AddToTrace("wmi disconnect");
}

HRESULT WmiServices::ExecQuery(const BSTR language, const BSTR text, LONG, IWbemContext*, IEnumWbemClassObject** target)
{
    if (target != nullptr)
        *target = nullptr;
    if (target == nullptr || language == nullptr || text == nullptr)
        return Result(WBEM_E_INVALID_PARAMETER);
    AddToTrace("wmi query " + ToUtf8(text));
    Wait(session->Model().queryMicroseconds);
    if (FoldCase(language) != L"wql")
        return Result(WBEM_E_INVALID_QUERY_TYPE);
    if (const int32_t status = session->PlannedFailure(text); status != 0)
        return status;
    auto query = ParseWql(text);
    if (!query)
        return Result(WBEM_E_INVALID_QUERY);
    WmiRows rows;
    const HRESULT result = session->Select(*query, system.Get(), rows);
    if (SUCCEEDED(result))
        *target = new WmiEnumerator(std::make_shared<const WqlQuery>(std::move(*query)), std::move(rows));
    return result;
}

/// Sleeping is only exact to some milliseconds, so the last part is spent in a loop.
void Wait(uint32_t microseconds)
{
    using Clock = std::chrono::steady_clock;
    constexpr auto inexact = std::chrono::milliseconds(2);
    const auto end = Clock::now() + std::chrono::microseconds(microseconds);
    if (const auto left = end - Clock::now(); left > 2 * inexact)
        std::this_thread::sleep_for(left - inexact);
    while (Clock::now() < end) {
    }
}

} // namespace orvel::simulation
