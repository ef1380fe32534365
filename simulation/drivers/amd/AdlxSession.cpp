#include "drivers/amd/AdlxSession.h"

#include <algorithm>

#include "drivers/amd/AdlxFunctions.h"
#include "loading/DriverState.h"
#include "trace/Graveyard.h"

namespace orvel::simulation {

namespace {

void Bury(AdlxObject* object)
{
    const std::string name = std::string("adlx ") + object->contract->name;
    object->~AdlxObject();
    BuryObject(object, sizeof *object, name, ADLX_TERMINATED);
}

const DriverState forgottenWithMachine([] {
    AdlxState& state = TheAdlx();
    const std::scoped_lock lock(state.mutex);
    state.session.reset();
    state.machine = CurrentMachine();
    state.itemCalls = 0;
});

} // namespace

bool AdlxSucceeded(int32_t status)
{
    return status <= ADLX_ALREADY_INITIALIZED; // 0, 1 and 2 are successes in ADLX
}

AdlxObject::AdlxObject(const AdlxInterface& itsInterface, const AdlxGpuModel* itsGpu)
    : table(itsInterface.table), contract(&itsInterface), gpu(itsGpu)
{}

AdlxObject::~AdlxObject()
{
    for (const auto& [text, lent] : lentTexts) {
        BuryText(lent, text->size());
    }
}

const char* AdlxObject::Lend(const std::string& text)
{
    char*& lent = lentTexts[&text];
    if (!lent) {
        lent = new char[text.size() + 1];
        std::copy_n(text.c_str(), text.size() + 1, lent);
    }
    return lent;
}

AdlxSession::AdlxSession()
    : system(new AdlxObject(adlxSystemInterface, nullptr)), mapping(new AdlxObject(adlxMappingInterface, nullptr))
{}

AdlxSession::~AdlxSession()
{
    for (const auto& [object, count] : counted) {
        Bury(object);
    }
    Bury(mapping);
    Bury(system);
}

AdlxObject* AdlxSession::HandOut(const AdlxInterface& contract, const AdlxGpuModel* gpu)
{
    const auto isIt = [&](const auto& entry) { return entry.first->contract == &contract && entry.first->gpu == gpu; };
    const auto found = std::ranges::find_if(counted, isIt);
    AdlxObject* const object = found != counted.end() ? found->first : new AdlxObject(contract, gpu);
    counted.try_emplace(object, Counted::Adlx);
    ++object->references;
    return object;
}

long AdlxSession::Release(AdlxObject* object)
{
    const long left = --object->references;
    const std::string call = std::string("adlx Release ") + object->contract->name;
    if (left > 0) {
        RecordCall(call); // the trace has the end of an object
    } else {
        AddToTrace(call);
        counted.erase(object);
        Bury(object);
    }
    return left;
}

bool AdlxSession::Has(const AdlxObject* object, const AdlxInterface& contract) const
{
    const auto found = counted.find(const_cast<AdlxObject*>(object));
    return found != counted.end() && found->first->contract == &contract;
}

std::string AdlxSession::HeldObjects() const
{
    std::string names;
    for (const auto& [object, count] : counted) {
        names += std::string(names.empty() ? "" : ", ") + object->contract->name;
    }
    return names;
}

AdlxState& TheAdlx()
{
    static auto* const state = new AdlxState;
    return *state;
}

} // namespace orvel::simulation
