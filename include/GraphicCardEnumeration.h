#pragma once

#include <stddef.h>

#include "GraphicCardApi.h"

namespace orvel::shared::enumeration {

class GraphicCardInfo;
class GraphicCardList;

/// Enumerates the graphics adapters of this computer and owns one record for each.
///
/// Construct it, call QueryGraphicCards once, then read the records with size and get. The calling thread must have
/// initialised COM (in a single-threaded or a multi-threaded apartment). Run one enumeration at a time in a process, even
/// with several objects. `GraphicCards` in GraphicCards.h is a movable wrapper that can enumerate again.
class ORVEL_GRAPHIC_CARDS_API GraphicCardEnumeration {
public:
    /// Creates an enumeration without records. Throws std::bad_alloc when memory is exhausted.
    GraphicCardEnumeration();

    /// Destroys every record: pointers returned by get become invalid.
    ~GraphicCardEnumeration();

    /// Makes this object refer to the other's records and abandons its own. Use it only if just one of the two objects is
    /// ever destroyed; otherwise the records are destroyed twice.
    ORVEL_GRAPHIC_CARDS_SHALLOW GraphicCardEnumeration& operator=(const GraphicCardEnumeration& other);

    GraphicCardEnumeration(const GraphicCardEnumeration&) = delete;

    /// Appends a record for every Intel adapter, for the first NVIDIA GPU and for every AMD adapter, in this order.
    /// A second call appends a second set, so call it once.
    ///
    /// If a vendor's run fails, the library logs "Unexpected error occurred: " and the reason, keeps the records that the
    /// run has appended, and runs the next vendor. Throws `long`, the status of the query, if the WMI query for the memory
    /// modules fails, and std::bad_alloc if memory is exhausted before the first vendor runs.
    void QueryGraphicCards();

    /// Returns the number of records.
    size_t size() const;

    /// Returns the record at `index`, counted from 0, or null if `index` is out of range. This object owns the record.
    GraphicCardInfo* get(int index) const;

#ifndef _MSC_VER
    /// Fills the first `size` bytes of the object with zeros. MSVC calls it before a constructor.
    void __autoclassinit2(size_t size);
#endif

private:
    GraphicCardList* list;
};

} // namespace orvel::shared::enumeration
