#pragma once

#include <optional>

#include "Answers.h"
#include "vendors/amd/AdlTypes.h"

#include "platform/Handles.h"

namespace orvel::recorder {

/// ADL with a context, as an enumeration has it.
class AdlRecorder {
public:
    AdlRecorder();
    AdlRecorder(const AdlRecorder&) = delete;
    AdlRecorder& operator=(const AdlRecorder&) = delete;
    ~AdlRecorder();

    /// Null where ADL gives none.
    shared::enumeration::ADL_CONTEXT_HANDLE Context() const { return context; }

    /// Whether an inventory uses the context: it needs a success, and the function that destroys it.
    bool IsForInventory() const;

    /// Adds what ADL answers for an adapter of this index, if there is a context.
    void RecordAdapter(int index);

    /// Nothing without the DLL.
    const std::optional<Json>& Section() const { return section; }

private:
    template <typename Function>
    Function Find(const char* name) const;

    shared::enumeration::ModuleHandle module;
    shared::enumeration::ADL_CONTEXT_HANDLE context = nullptr;
    std::optional<Json> section;
};

} // namespace orvel::recorder
