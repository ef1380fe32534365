#pragma once

#include "CurrentMachine.h"
#include "Trace.h"

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace orvel::simulation {

constexpr int32_t ADLX_OK = 0;
constexpr int32_t ADLX_ALREADY_INITIALIZED = 2;
constexpr int32_t ADLX_FAIL = 3;
constexpr int32_t ADLX_INVALID_ARGS = 4;
constexpr int32_t ADLX_BAD_VER = 5;
constexpr int32_t ADLX_TERMINATED = 7;
constexpr int32_t ADLX_ORPHAN_OBJECTS = 11;
constexpr int32_t ADLX_NOT_SUPPORTED = 12;

/// What ADLX hands out: a pointer to this, whose first member points to the published table of functions. The first
/// parameter of each function is the object itself.
struct AdlxObject {
    AdlxObject(void* const* itsTable, const char* itsName, const AdlxGpuModel* itsGpu = nullptr)
        : table(itsTable), name(itsName), gpu(itsGpu)
    {}

    void* const* table;
    const char* name;        // of the interface
    const AdlxGpuModel* gpu; // the GPU that the object is or speaks about
    long references = 0;
    std::optional<LiveObject> live = {}; // while there are references
};

/// The objects of one machine. There is one of each, however often it is handed out, and it stays in memory when its last
/// reference is gone: a release too many finds it and is told, and a long run does not grow.
class AdlxObjects {
public:
    explicit AdlxObjects(std::shared_ptr<const Machine> machine);

    const AdlxModel& Model() const;

    /// Not counted; they live as long as the machine.
    AdlxObject* System();
    AdlxObject* Mapping();

    AdlxObject* List();
    AdlxObject* Performance();
    AdlxObject* Gpu(size_t index);
    AdlxObject* Support(const AdlxObject* gpu);
    AdlxObject* Metrics(const AdlxObject* gpu);

    /// Whether the pointer is one of this machine's GPUs.
    bool IsGpu(const AdlxObject* object) const;

    /// The number of GPUs that the list reports now.
    uint32_t Size() const;

    /// Counts a call of "item at index".
    void CountItemCall();

    /// Whether somebody holds a reference.
    bool AnyAlive() const;

private:
    std::shared_ptr<const Machine> machine;
    AdlxObject system;
    AdlxObject mapping;
    AdlxObject list;
    AdlxObject performance;
    std::deque<AdlxObject> gpus;
    std::deque<AdlxObject> supports;
    std::deque<AdlxObject> metrics;
    std::atomic<uint64_t> itemCalls = 0;
};

/// The state of amdadlx64.dll on the machine in place.
struct AdlxState {
    std::recursive_mutex mutex; // for all objects as well
    std::unique_ptr<AdlxObjects> objects;
    std::optional<LiveObject> session; // while ADLX is initialised
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
AdlxState& TheAdlx();

} // namespace orvel::simulation
