#pragma once

#include <stddef.h>

#include "GraphicCardApi.h"

namespace orvel::shared::enumeration {

class GraphicCardInfo;
class GraphicCardList;

/// Finds the graphics adapters of this computer and owns one record for each.
///
/// Construct it, call QueryGraphicCards once, read the records with size and get. The calling thread must have initialised
/// COM (in a single-threaded or a multi-threaded apartment). One enumeration runs at a time in a process, also with several
/// objects. `GraphicCards` in GraphicCards.h wraps it for hosts that want to move it, or to enumerate again.
class ORVEL_GRAPHIC_CARDS_API GraphicCardEnumeration {
public:
    /// An enumeration without records. Throws std::bad_alloc when memory is exhausted.
    GraphicCardEnumeration();

    /// Destroys every record: pointers that get handed out are no longer valid.
    ~GraphicCardEnumeration();

    /// Makes this object refer to the other's records and abandons its own. Meant for objects of which only one will ever be
    /// destroyed; otherwise the records are destroyed twice.
    ORVEL_GRAPHIC_CARDS_SHALLOW GraphicCardEnumeration& operator=(const GraphicCardEnumeration& other);

    GraphicCardEnumeration(const GraphicCardEnumeration&) = delete;

    /// Appends a record for every Intel adapter, for the first NVIDIA GPU and for every AMD adapter, in this order.
    /// A second call appends a second set, so call it once.
    ///
    /// A vendor whose run fails is logged ("Unexpected error occurred: " and the reason) and the next one runs; the records
    /// that it had appended stay. Throws `long`, the status of the query, when the machine's memory modules cannot be asked
    /// of WMI, and std::bad_alloc when memory is exhausted before the first vendor runs.
    void QueryGraphicCards();

    /// Number of records.
    size_t size() const;

    /// The record at `index`, counted from 0; null when there is none. It belongs to this object and dies with it.
    GraphicCardInfo* get(int index) const;

#ifndef _MSC_VER
    /// Fills the first `size` bytes of the object with zeros. Called by code that MSVC generates before a constructor.
    void __autoclassinit2(size_t size);
#endif

private:
    GraphicCardList* list;
};

} // namespace orvel::shared::enumeration
