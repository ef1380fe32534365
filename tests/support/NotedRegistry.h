#pragma once

#include "ReplacedImport.h"

namespace orvel::tests {

/// Records each registry key that a module opens, as "registry PATH", during its lifetime.
class NotedRegistry {
public:
    explicit NotedRegistry(HMODULE module);

private:
    ReplacedImport narrow;
    ReplacedImport wide;
};

} // namespace orvel::tests
