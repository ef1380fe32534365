// The Node-API addon, which index.js loads. It has no state of its own: each environment (the main thread, every worker) has
// an instance. It throws no C++ exceptions: Node.js installs a handler that would see each.

#include <napi.h>

#include <string>

#include "LateBinding.h"
#include "Library.h"

namespace orvel::bindings {

namespace {

Napi::Error CodedError(Napi::Env env, const std::string& message, const char* code)
{
    auto error = Napi::Error::New(env, message);
    error.Set("code", code);
    return error;
}

Napi::Error LibraryError(Napi::Env env, const Library& library)
{
    std::string message = std::string("orvel-graphic-cards-inventory.dll ") + library.Problem();
    if (library.LoadError() == 0) {
        return CodedError(env, message, "ORVEL_WRONG_LIBRARY");
    }
    message += " (Windows error " + std::to_string(library.LoadError()) + ")";
    return CodedError(env, message, "ORVEL_LIBRARY_NOT_LOADED");
}

Napi::Error SnapshotError(Napi::Env env, int32_t status)
{
    switch (status) {
    case ORVEL_INVENTORY_INVALID_ARGUMENT:
        return CodedError(env, "the inventory does not know these options", "ORVEL_INVALID_ARGUMENT");
    case ORVEL_INVENTORY_OUT_OF_MEMORY:
        return CodedError(env, "not enough memory for the inventory", "ORVEL_OUT_OF_MEMORY");
    default:
        return CodedError(env, "the inventory failed with status " + std::to_string(status), "ORVEL_ERROR");
    }
}

const char* TypeName(uint32_t type)
{
    constexpr const char* names[] = {"text", "number", "bool", "displays"};
    return type < std::size(names) ? names[type] : "unknown";
}

// index.js has checked the options.
struct Request {
    explicit Request(const Napi::CallbackInfo& info)
        : options{sizeof options, info[0].As<Napi::Number>().Uint32Value(), info[1].As<Napi::Number>().Uint32Value(),
                  info[2].As<Napi::Boolean>().Value() ? 1U : 0U},
          form(info[3].As<Napi::Number>().Uint32Value())
    {}
    OrvelInventoryOptions options;
    uint32_t form;
};

// Takes a snapshot on a thread of Node's pool.
class Snapshot : public Napi::AsyncWorker {
public:
    Snapshot(Napi::Env env, SharedLibrary usedLibrary, const Request& asked)
        : AsyncWorker(env), library(std::move(usedLibrary)), request(asked), deferred(env)
    {}
    Napi::Promise Promise() const { return deferred.Promise(); }

protected:
    void Execute() override { taken = TakeJson(*library, request.options, request.form); }
    void OnOK() override
    {
        if (taken.status == ORVEL_INVENTORY_OK) {
            deferred.Resolve(Napi::String::New(Env(), taken.json.get(), taken.bytes));
        } else {
            deferred.Reject(SnapshotError(Env(), taken.status).Value());
        }
    }

private:
    SharedLibrary library;
    Request request;
    Napi::Promise::Deferred deferred;
    Taken taken;
};

class Addon : public Napi::Addon<Addon> {
public:
    Addon(Napi::Env env, Napi::Object exports) : library(std::make_shared<Library>())
    {
        if (library->Problem()) {
            LibraryError(env, *library).ThrowAsJavaScriptException();
            return;
        }
        DefineAddon(exports, {
                                 InstanceMethod("take", &Addon::Take),
                                 InstanceMethod("takeSync", &Addon::TakeSync),
                                 InstanceMethod("properties", &Addon::Properties),
                                 InstanceMethod("version", &Addon::Version),
                             });
    }

private:
    Napi::Value Take(const Napi::CallbackInfo& info)
    {
        auto* snapshot = new Snapshot(info.Env(), library, Request(info)); // deletes itself
        snapshot->Queue();
        return snapshot->Promise();
    }

    Napi::Value TakeSync(const Napi::CallbackInfo& info)
    {
        const Request request(info);
        const Taken taken = TakeJson(*library, request.options, request.form);
        if (taken.status != ORVEL_INVENTORY_OK) {
            SnapshotError(info.Env(), taken.status).ThrowAsJavaScriptException();
            return {};
        }
        return Napi::String::New(info.Env(), taken.json.get(), taken.bytes);
    }

    Napi::Value Properties(const Napi::CallbackInfo& info)
    {
        auto rows = Napi::Array::New(info.Env());
        OrvelInventoryProperty row{sizeof row, 0, nullptr, nullptr, nullptr};
        for (uint32_t property = 0; library->GetProperty(property, &row) == ORVEL_INVENTORY_OK; ++property) {
            auto object = Napi::Object::New(info.Env());
            object.Set("name", row.name);
            object.Set("type", TypeName(row.type));
            object.Set("unit", row.unit);
            object.Set("description", row.description);
            rows.Set(property, object);
        }
        return rows;
    }

    Napi::Value Version(const Napi::CallbackInfo& info) { return Napi::Number::New(info.Env(), library->Version()); }

    SharedLibrary library;
};

} // namespace

} // namespace orvel::bindings

NAPI_MODULE_INIT()
{
    // The host's program is not always called node.exe, so the addon does not import its functions by that name.
    static const char* const missing = orvel::tools::BindLate(::GetModuleHandleW(nullptr));
    static_cast<void>(missing); // functions newer than NAPI_VERSION, which are not used
    return Napi::RegisterModule(env, exports, &orvel::bindings::Addon::Init);
}
