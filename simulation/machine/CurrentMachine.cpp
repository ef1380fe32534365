#include "machine/CurrentMachine.h"

#include <mutex>

namespace orvel::simulation {

namespace {

struct Place {
    std::mutex mutex;
    std::shared_ptr<const Machine> machine = std::make_shared<const Machine>();
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
Place& place = *new Place;

} // namespace

std::shared_ptr<const Machine> CurrentMachine()
{
    const std::scoped_lock lock(place.mutex);
    return place.machine;
}

void SetCurrentMachine(std::shared_ptr<const Machine> machine)
{
    const std::scoped_lock lock(place.mutex);
    place.machine = std::move(machine);
}

} // namespace orvel::simulation
