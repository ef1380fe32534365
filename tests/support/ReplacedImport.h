#pragma once

#include <windows.h>

namespace orvel::tests {

/// The module of the tests, which includes the linked parts of the product.
HMODULE TestModule();

/// Replaces a function that a module imports, during its lifetime.
class ReplacedImport {
public:
    /// `name` is exported by the loaded `dll`. Simulated functions are replaced, too.
    ReplacedImport(HMODULE module, const wchar_t* dll, const char* name, void* replacement);
    ReplacedImport(const ReplacedImport&) = delete;
    ReplacedImport& operator=(const ReplacedImport&) = delete;
    ~ReplacedImport();

    /// The function that the module called before.
    template <typename Function>
    Function Original() const
    {
        return reinterpret_cast<Function>(original);
    }

private:
    void** slot; ///< null if the module does not import the function
    void* original;
};

} // namespace orvel::tests
