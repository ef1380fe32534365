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

    /// Adds what ADL answers for an adapter of this index.
    void RecordAdapter(int index);

    /// Nothing without the DLL.
    const std::optional<Json>& Section() const { return section; }

private:
    template <typename Function>
    Function Find(const char* name);

    shared::enumeration::ModuleHandle module;
    shared::enumeration::ADL_CONTEXT_HANDLE context = nullptr;
    std::optional<Json> section;
};

} // namespace orvel::recorder
