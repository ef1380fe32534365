#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "machine/CurrentMachine.h"
#include "trace/Trace.h"

namespace orvel::simulation {

constexpr int32_t ADLX_OK = 0;
constexpr int32_t ADLX_ALREADY_INITIALIZED = 2;
constexpr int32_t ADLX_FAIL = 3;
constexpr int32_t ADLX_INVALID_ARGS = 4;
constexpr int32_t ADLX_BAD_VER = 5;
constexpr int32_t ADLX_UNKNOWN_INTERFACE = 6;
constexpr int32_t ADLX_TERMINATED = 7;
constexpr int32_t ADLX_ADL_INIT_ERROR = 8;
constexpr int32_t ADLX_ORPHAN_OBJECTS = 11;
constexpr int32_t ADLX_NOT_SUPPORTED = 12;

/// Whether the status is a success of ADLX.
bool AdlxSucceeded(int32_t status);

/// An interface of ADLX.
struct AdlxInterface {
    const char* name;
    void* const* table; // of functions, by the published slot numbers
};

/// What ADLX returns: a pointer to this, whose first member points to the published table of functions. The first
/// parameter of each function is the object itself.
struct AdlxObject {
    AdlxObject(const AdlxInterface& itsInterface, const AdlxGpuModel* itsGpu);
    AdlxObject(const AdlxObject&) = delete;
    AdlxObject& operator=(const AdlxObject&) = delete;
    ~AdlxObject();

    /// The text for the caller; it is valid as long as this object.
    const char* Lend(const std::string& text);

    void* const* table;
    const AdlxInterface* contract;
    const AdlxGpuModel* gpu; // the GPU that the object is or belongs to
    long references = 0;     // of a counted object
    std::map<const std::string*, char*> lentTexts;
};

/// ADLX from its initialisation to its termination, which invalidates all its objects.
class AdlxSession {
public:
    AdlxSession();
    AdlxSession(const AdlxSession&) = delete;
    AdlxSession& operator=(const AdlxSession&) = delete;
    ~AdlxSession();

    /// Not counted; they are valid as long as the session.
    AdlxObject* System() { return system; }
    AdlxObject* Mapping() { return mapping; }

    /// The object of this interface and GPU with a reference added. Created unless it exists already.
    AdlxObject* HandOut(const AdlxInterface& contract, const AdlxGpuModel* gpu);

    /// Releases a reference; the last release invalidates the object. Returns the remaining number.
    long Release(AdlxObject* object);

    /// Whether the pointer is a valid object of this interface.
    bool Has(const AdlxObject* object, const AdlxInterface& contract) const;

    /// The names of the interfaces whose objects the caller has not released.
    std::string HeldObjects() const;

    void* adlContext = nullptr; // passed by the caller; null without one

private:
    LiveObject live{Counted::Adlx};
    AdlxObject* system;
    AdlxObject* mapping;
    std::map<AdlxObject*, LiveObject> counted;
};

/// The state of amdadlx64.dll on the machine in place.
struct AdlxState {
    std::recursive_mutex mutex; // for all objects as well
    std::shared_ptr<const Machine> machine;
    uint64_t itemCalls = 0; // calls of "item at index"
    std::optional<AdlxSession> session;
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
AdlxState& TheAdlx();

} // namespace orvel::simulation
