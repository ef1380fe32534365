#include "trace/Graveyard.h"

#include <array>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <new>

#include "trace/Violations.h"

// An object of COM or ADLX begins with a pointer to its table of functions, whose first parameter is the object. All entries
// of the dead table lead to one function: on 64-bit Windows it may be called with any parameters.

namespace orvel::simulation {

namespace {

constexpr size_t MostGraves = 256;
constexpr size_t TableLength = 64; // the longest table of the interfaces has 27 functions

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
Graveyard& TheGraveyard()
{
    static auto* const graveyard = new Graveyard;
    return *graveyard;
}

int64_t CallOfDeadObject(void* self)
{
    Graveyard& graveyard = TheGraveyard();
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
        auto* const functions = new std::array<void*, TableLength>;
        functions->fill(reinterpret_cast<void*>(&CallOfDeadObject));
        return functions;
    }();
    return table->data();
}

void Poison(void* block, size_t bytes)
{
    void* const* const table = DeadTable();
    std::memset(block, RubbishByte, bytes);
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

void Keep(Graveyard& graveyard, const Grave& grave)
{
    graveyard.graves.push_back(grave);
    if (graveyard.graves.size() > MostGraves) {
        graveyard.objects.erase(graveyard.graves.front().block);
        Free(graveyard.graves.front());
        graveyard.graves.pop_front();
    }
}

} // namespace

void* AllocateObject(size_t bytes)
{
    return ::operator new(bytes);
}

void BuryObject(void* block, size_t bytes, const std::string& name, int32_t answer)
{
    Graveyard& graveyard = TheGraveyard();
    const std::scoped_lock lock(graveyard.mutex);
    Poison(block, bytes);
    graveyard.objects[block] = {name, answer};
    Keep(graveyard, {block, false});
}

void BuryText(char* text, size_t length)
{
    Graveyard& graveyard = TheGraveyard();
    const std::scoped_lock lock(graveyard.mutex);
    std::memset(text, RubbishByte, length);
    Keep(graveyard, {text, true});
}

void* DeadObject(const std::string& name, int32_t answer)
{
    constexpr size_t size = 64; // bytes
    Graveyard& graveyard = TheGraveyard();
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
    static const auto* const text = new std::string(16, static_cast<char>(RubbishByte));
    return text->c_str();
}

} // namespace orvel::simulation
