#include "snapshot/Snapshot.h"

#include <array>
#include <iterator>
#include <memory>

#include "matching/Cards.h"
#include "matching/DeviceFacts.h"
#include "snapshot/Slot.h"
#include "snapshot/Threads.h"
#include "sources/DisplayConfig.h"
#include "sources/DriverLibraries.h"
#include "sources/DxCore.h"
#include "sources/Dxgi.h"
#include "sources/SetupApi.h"

namespace orvel::shared::inventory {

namespace {

/// What the sources' threads and the caller share.
struct Slots {
    Slot<SetupApiReading> devices;
    Slot<DriverKeysReading> driverKeys;
    Slot<DisplayConfigReading> displays;
    Slot<DxgiReading> dxgi;
    Slot<DxCoreReading> dxCore;
    std::array<Slot<DriverReading>, 3> drivers; ///< in the order of driverSources
};

/// A vendor's driver.
struct DriverSource {
    Source source;
    DriverReading (*read)();
};

constexpr DriverSource driverSources[] = {
    {Source::Nvml, &ReadNvml},
    {Source::Nvapi, &ReadNvapi},
    {Source::Adlx, &ReadAdlx},
};

/// The sources that have been asked.
struct Asked {
    std::shared_ptr<Slots> slots = std::make_shared<Slots>();
    Threads threads;

    /// Runs `read` on a thread. `close` gets the error for what has not come when it ends, or cannot begin.
    template <typename Read, typename Close>
    void Start(Read read, Close close)
    {
        const auto error = threads.Start([slots = slots, read, close] {
            try {
                read(*slots);
            } catch (...) {
                close(*slots, ERROR_NOT_ENOUGH_MEMORY);
            }
        });
        if (error != 0) {
            close(*slots, error);
        }
    }
};

void StartSystem(Asked& asked)
{
    asked.Start(
        [](Slots& all) {
            ReadDevices([&](SetupApiReading reading) { all.devices.Put(std::move(reading)); },
                        [&](DriverKeysReading reading) { all.driverKeys.Put(std::move(reading)); });
        },
        [](Slots& all, uint32_t error) {
            all.devices.Close(error);
            all.driverKeys.Close(error);
        });
    asked.Start([](Slots& all) { all.displays.Put(ReadDisplayConfig()); },
                [](Slots& all, uint32_t error) { all.displays.Close(error); });
}

void StartGraphics(Asked& asked)
{
    asked.Start([](Slots& all) { all.dxgi.Put(ReadDxgi()); }, [](Slots& all, uint32_t error) { all.dxgi.Close(error); });
    asked.Start([](Slots& all) { all.dxCore.Put(ReadDxCore()); },
                [](Slots& all, uint32_t error) { all.dxCore.Close(error); });
}

/// Starts the drivers that may be asked; the others get the reason. Only SetupAPI's devices say whether a card is asleep.
void StartDrivers(Asked& asked, const Options& options, Readings& readings)
{
    for (std::size_t index = 0; index < std::size(driverSources); ++index) {
        const auto& driver = driverSources[index];
        auto& end = readings.End(driver.source);
        end = Known(true);
        if (!options.isWakingAllowed && WouldWake(driver.source, readings.devices)) {
            end = NotAsked(Reason::Asleep);
        } else if (!options.isWakingAllowed && !IsKnown(readings.End(Source::SetupApi))) {
            end = NotAsked(Reason::PowerUnknown);
        } else {
            asked.Start([index](Slots& all) { all.drivers[index].Put(driverSources[index].read()); },
                        [index](Slots& all, uint32_t error) { all.drivers[index].Close(error); });
        }
    }
}

class Deadline {
public:
    explicit Deadline(uint32_t milliseconds) : end(::GetTickCount64() + milliseconds) {}

    uint32_t Remaining() const
    {
        const uint64_t now = ::GetTickCount64();
        return now < end ? static_cast<uint32_t>(end - now) : 0;
    }

private:
    uint64_t end;
};

/// Wine, when it loads DXGI while it looks for displays, may wait for itself for ever.
void AwaitSystem(const Slots& slots, const Deadline& deadline)
{
    slots.displays.IsClosed(deadline.Remaining());
    slots.driverKeys.IsClosed(deadline.Remaining());
}

void TakeDevices(Slots& slots, const Deadline& deadline, Readings& readings)
{
    auto& setupApiEnd = readings.End(Source::SetupApi);
    if (auto devices = slots.devices.Take(deadline.Remaining(), setupApiEnd)) {
        readings.devices = std::move(devices->devices);
        setupApiEnd = devices->error == 0 ? setupApiEnd : Failed(devices->error);
    }
}

/// What belongs to the devices, which have been taken.
void TakeSystem(Slots& slots, const Deadline& deadline, Readings& readings)
{
    auto& driverKeyEnd = readings.End(Source::DriverKey);
    if (auto driverKeys = slots.driverKeys.Take(deadline.Remaining(), driverKeyEnd)) {
        readings.driverKeys = std::move(*driverKeys);
        const bool isAsked = !readings.devices.empty() || IsKnown(readings.End(Source::SetupApi));
        driverKeyEnd = isAsked ? driverKeyEnd : Unavailable(Reason::NoDevice);
    }
    auto& displayEnd = readings.End(Source::DisplayConfig);
    if (auto displays = slots.displays.Take(deadline.Remaining(), displayEnd)) {
        readings.paths = std::move(displays->paths);
        displayEnd = displays->end;
    }
}

void TakeGraphics(Slots& slots, const Deadline& deadline, Readings& readings)
{
    auto& dxgiEnd = readings.End(Source::Dxgi);
    if (auto dxgi = slots.dxgi.Take(deadline.Remaining(), dxgiEnd)) {
        readings.adapters = std::move(dxgi->adapters);
        dxgiEnd = dxgi->end;
    }
    auto& dxCoreEnd = readings.End(Source::DxCore);
    if (auto dxCore = slots.dxCore.Take(deadline.Remaining(), dxCoreEnd)) {
        readings.integrated = std::move(dxCore->adapters);
        dxCoreEnd = dxCore->end;
    }
}

void TakeDrivers(Slots& slots, const Deadline& deadline, Readings& readings)
{
    for (std::size_t index = 0; index < std::size(driverSources); ++index) {
        const auto source = driverSources[index].source;
        auto& end = readings.End(source);
        if (!IsKnown(end)) {
            continue; // left out
        }
        if (auto driver = slots.drivers[index].Take(deadline.Remaining(), end)) {
            readings.driverDevices[source] = std::move(driver->devices);
            end = driver->end;
        }
    }
}

} // namespace

Findings TakeSnapshot(const Options& options)
{
    const Deadline deadline(options.timeoutMilliseconds);
    Asked asked;
    auto& slots = *asked.slots;
    StartSystem(asked);
    if (options.depth >= Depth::Graphics) {
        AwaitSystem(slots, Deadline(options.timeoutMilliseconds / 2));
        StartGraphics(asked);
    }

    Readings readings;
    readings.ends.fill(NotAsked(Reason::Depth));
    const bool isWithDrivers = options.depth >= Depth::Drivers;
    if (isWithDrivers && options.isWakingAllowed) {
        StartDrivers(asked, options, readings);
    }
    TakeDevices(slots, deadline, readings);
    if (isWithDrivers && !options.isWakingAllowed) {
        StartDrivers(asked, options, readings);
    }
    TakeSystem(slots, deadline, readings);
    if (options.depth >= Depth::Graphics) {
        TakeGraphics(slots, deadline, readings);
    }
    if (isWithDrivers) {
        TakeDrivers(slots, deadline, readings);
    }
    Findings findings{options.depth, ReportsOf(readings), CardsOf(readings)};
    asked.threads.Await(deadline.Remaining());
    return findings;
}

} // namespace orvel::shared::inventory
