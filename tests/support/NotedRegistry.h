#pragma once

#include "ReplacedImport.h"

namespace orvel::tests {

/// Notes each registry key that a module opens, as "registry PATH", as long as it lives.
class NotedRegistry {
public:
    explicit NotedRegistry(HMODULE module);

private:
    ReplacedImport narrow;
    ReplacedImport wide;
};

} // namespace orvel::tests
