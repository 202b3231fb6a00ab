#include "document/unattached_nodes.hpp"

#include <algorithm>
#include <vector>

namespace pellago {

namespace {

// What hangs off xmlDoc::_private.
struct DocumentState {
  std::vector<xmlNodePtr> unattached;
  EditObserver* observer = nullptr;
};

DocumentState* state_of(xmlDocPtr doc) {
  return doc ? static_cast<DocumentState*>(doc->_private) : nullptr;
}

}  // namespace

void start_tracking_unattached(xmlDocPtr doc) { doc->_private = new DocumentState; }

void track_unattached(xmlNodePtr node) {
  if (DocumentState* state = state_of(node->doc)) state->unattached.push_back(node);
}

EditObserver* observer_of(xmlDocPtr doc) {
  const DocumentState* state = state_of(doc);
  return state ? state->observer : nullptr;
}

void set_observer(xmlDocPtr doc, EditObserver* observer) {
  if (DocumentState* state = state_of(doc)) state->observer = observer;
}

void free_unattached(xmlDocPtr doc) noexcept {
  DocumentState* state = state_of(doc);
  if (!state) return;
  std::vector<xmlNodePtr>& list = state->unattached;
  // A recorded node may have been attached since, to the tree or below another unattached node,
  // and may have been recorded more than once. Only the roots of unattached subtrees are freed,
  // each once, and they are all picked before any is freed.
  std::sort(list.begin(), list.end());
  list.erase(std::unique(list.begin(), list.end()), list.end());
  std::erase_if(list, [](xmlNodePtr node) { return node->parent != nullptr; });
  for (xmlNodePtr node : list) xmlFreeNode(node);
  delete state;
  doc->_private = nullptr;
}

}  // namespace pellago
