#pragma once

#include <libxml/tree.h>

namespace pellago {

struct EditObserver;

// Every Document keeps a list of the nodes that were created for it or detached from it, so that
// the nodes still unattached when it dies are freed with it. The list hangs off xmlDoc::_private.

// Gives the document its (empty) list.
void start_tracking_unattached(xmlDocPtr doc);
// Records a node that has just been created for, copied into or detached from its document.
void track_unattached(xmlNodePtr node);
// Frees every recorded node that is still unattached (with its subtree), then the list itself.
void free_unattached(xmlDocPtr doc) noexcept;

// The observer of the document's tree (Document::observe), kept next to the list; none at first.
EditObserver* observer_of(xmlDocPtr doc);
void set_observer(xmlDocPtr doc, EditObserver* observer);

}  // namespace pellago
