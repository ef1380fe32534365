#include "trace/Graveyard.h"

#include <array>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <new>

#include "trace/Violations.h"

// A COM or ADLX object begins with a pointer to its table of functions, whose first parameter is the object. All entries of
// a dead object's table point to one function: on 64-bit Windows it may be called with any parameters.

namespace orvel::simulation {

namespace {

constexpr size_t mostGraves = 256;
constexpr size_t tableLength = 64; // the longest table of the interfaces has 27 functions

struct Grave {
    void* block;
    bool isText;
};

struct Epitaph {
    std::string name;
    int32_t answer;
};

struct Graveyard {
    std::mutex mutex;
    std::deque<Grave> graves; // the oldest first
    std::map<void*, Epitaph> objects;
    std::map<std::string, void*> neverAlive;
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
Graveyard& graveyard = *new Graveyard;

int64_t CallOfDeadObject(void* self)
{
    Epitaph epitaph{"released object", 0};
    {
        const std::scoped_lock lock(graveyard.mutex);
        if (const auto found = graveyard.objects.find(self); found != graveyard.objects.end()) {
            epitaph = found->second;
        }
    }
    AddViolation(epitaph.name, "a call on an object that is not alive");
    return epitaph.answer;
}

void* const* DeadTable()
{
    static const auto* const table = [] {
        auto* const functions = new std::array<void*, tableLength>;
        functions->fill(reinterpret_cast<void*>(&CallOfDeadObject));
        return functions;
    }();
    return table->data();
}

void Poison(void* block, size_t bytes)
{
    void* const* const table = DeadTable();
    std::memset(block, rubbishByte, bytes);
    std::memcpy(block, &table, sizeof table);
}

void Free(const Grave& grave)
{
    if (grave.isText) {
        delete[] static_cast<char*>(grave.block);
    } else {
        ::operator delete(grave.block);
    }
}

void Keep(const Grave& grave)
{
    graveyard.graves.push_back(grave);
    if (graveyard.graves.size() > mostGraves) {
        graveyard.objects.erase(graveyard.graves.front().block);
        Free(graveyard.graves.front());
        graveyard.graves.pop_front();
    }
}

} // namespace

void BuryObject(void* block, size_t bytes, const std::string& name, int32_t answer)
{
    const std::scoped_lock lock(graveyard.mutex);
    Poison(block, bytes);
    graveyard.objects[block] = {name, answer};
    Keep({block, false});
}

void BuryText(char* text, size_t length)
{
    const std::scoped_lock lock(graveyard.mutex);
    std::memset(text, rubbishByte, length);
    Keep({text, true});
}

void* DeadObject(const std::string& name, int32_t answer)
{
    constexpr size_t size = 64; // bytes
    const std::scoped_lock lock(graveyard.mutex);
    void*& block = graveyard.neverAlive[name];
    if (!block) {
        block = ::operator new(size);
        Poison(block, size);
        graveyard.objects[block] = {name, answer};
    }
    return block;
}

const char* DeadText()
{
    static const auto* const text = new std::string(16, static_cast<char>(rubbishByte));
    return text->c_str();
}

} // namespace orvel::simulation
