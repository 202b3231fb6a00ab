#include "document/unattached_nodes.hpp"

#include <algorithm>
#include <vector>

namespace pellago {

namespace {

using NodeList = std::vector<xmlNodePtr>;

NodeList* list_of(xmlDocPtr doc) { return static_cast<NodeList*>(doc->_private); }

}  // namespace

void start_tracking_unattached(xmlDocPtr doc) { doc->_private = new NodeList; }

void track_unattached(xmlNodePtr node) {
  if (NodeList* list = list_of(node->doc)) list->push_back(node);
}

void free_unattached(xmlDocPtr doc) noexcept {
  NodeList* list = list_of(doc);
  if (!list) return;
  // A recorded node may have been attached since, to the tree or below another unattached node,
  // and may have been recorded more than once. Only the roots of unattached subtrees are freed,
  // each once, and they are all picked before any is freed.
  std::sort(list->begin(), list->end());
  list->erase(std::unique(list->begin(), list->end()), list->end());
  std::erase_if(*list, [](xmlNodePtr node) { return node->parent != nullptr; });
  for (xmlNodePtr node : *list) xmlFreeNode(node);
  delete list;
  doc->_private = nullptr;
}

}  // namespace pellago
