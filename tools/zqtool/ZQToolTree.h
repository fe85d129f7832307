// The tree listing of zqtool: one line per node of a document, indented by depth. Header-only
// so that the unit tests can list a tree they loaded themselves and compare.
#pragma once

#include <common/ZQCommon.h>

#include <ostream>
#include <string>

#include "ZQToolEvents.h"

namespace zqtool {

/// What a node is, in one word.
inline std::string nodeKind(const ZQCommonNS::ZQNode& node) {
  using ZQCommonNS::ZQNode;
  switch (node.getNodeType()) {
    case ZQNode::ELEMENT_NODE:
      return "element";
    case ZQNode::ATTRIBUTE_NODE:
      return "attribute";
    case ZQNode::TEXT_NODE:
      return "text";
    case ZQNode::PROCESSING_INSTRUCTION_NODE:
      return "pi";
    case ZQNode::DOCUMENT_NODE:
      return "document";
    case ZQNode::DOCUMENT_FRAGMENT_NODE:
      return "fragment";
    default:
      return "node-" + std::to_string(static_cast<int>(node.getNodeType()));
  }
}

/// One line for a node, without indentation: its kind; for an element the qualified name, the
/// {namespace} and the attributes as qname="value"; for a processing instruction the target and
/// its data; for text the text, escaped onto one line.
inline std::string describeNode(const ZQCommonNS::ZQNode& node) {
  using ZQCommonNS::ZQAttr;
  using ZQCommonNS::ZQNamedNodeMap;
  using ZQCommonNS::ZQNode;
  std::string line = nodeKind(node);
  switch (node.getNodeType()) {
    case ZQNode::ELEMENT_NODE: {
      line += ' ' + nameText(node.getNodeName());
      const std::string ns = nameText(node.getNamespaceUri());
      if (!ns.empty()) line += " {" + ns + '}';
      // The attribute map is a hook of derived classes; it never loads.
      if (ZQNamedNodeMap* attrs = node.getAttributes()) {
        const int count = attrs->getLength();
        for (int i = 0; i < count; ++i) {
          const ZQAttr* attr = attrs->item(i);
          if (!attr) continue;
          line += ' ' + nameText(attr->getNodeName()) + '=' +
                  quoteText(attr->getNodeValue().toString());
        }
      }
      break;
    }
    case ZQNode::PROCESSING_INSTRUCTION_NODE:
      line += ' ' + nameText(node.getLocalName()) + ' ' + quoteText(node.getText());
      break;
    case ZQNode::TEXT_NODE:
      line += ' ' + quoteText(node.getText());
      break;
    default:
      break;
  }
  return line;
}

/// Lists `root` and its subtree in document order, `indent` spaces before the root's line and
/// two more per level. The walk goes through the plain accessors, so a document in pull mode
/// loads as it goes, and a parser error comes out of here as a ZQError. Returns the number of
/// lines written.
inline long listTree(ZQCommonNS::ZQNode* root, std::ostream& out, int indent = 0) {
  using ZQCommonNS::ZQNode;
  using ZQCommonNS::ZQTreeIterator;
  long count = 0;
  ZQTreeIterator walk(root, nullptr, false, ZQTreeIterator::PRE_ORDER);
  for (ZQNode* node = walk.nextNode(); node; node = walk.nextNode()) {
    int depth = 0;
    for (const ZQNode* up = node; up && up != root; up = up->getParentNodeFast()) ++depth;
    out << std::string(static_cast<size_t>(indent + 2 * depth), ' ') << describeNode(*node) << '\n';
    ++count;
  }
  return count;
}

/// Nodes below `root` that are in the tree now, counted through the links as they stand,
/// without loading anything.
inline long countBuiltNodes(const ZQCommonNS::ZQNode* root) {
  using ZQCommonNS::ZQNode;
  long count = 0;
  const ZQNode* node = root ? root->getFirstChildFast() : nullptr;
  while (node) {
    ++count;
    if (const ZQNode* child = node->getFirstChildFast()) {
      node = child;
      continue;
    }
    while (node && node != root && !node->getNextSiblingFast()) node = node->getParentNodeFast();
    node = (node && node != root) ? node->getNextSiblingFast() : nullptr;
  }
  return count;
}

}  // namespace zqtool
