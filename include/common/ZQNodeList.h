// Live node lists, their value iterator, and the tree walker that stops before and after
// children.
#pragma once

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"

namespace ZQCommonNS {

class ZQNode;
class ZQNodeIterator;

/// Something that can be walked node by node. Holds no nodes: every answer comes from the tree.
class ZQCOMMON_API ZQNodeIterable : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQNodeIterable, ZQRCObject)

 public:
  ZQNodeIterable() = default;
  ~ZQNodeIterable() override;
  ZQNodeIterable(const ZQNodeIterable&) = delete;
  ZQNodeIterable& operator=(const ZQNodeIterable&) = delete;

  /// An iterator positioned at the first node.
  virtual ZQNodeIterator getIterator();
  /// The first node, or null.
  virtual ZQNode* getFirstNode() = 0;
  /// The last node, or null.
  virtual ZQNode* getLastNode() = 0;
  /// The node after `node`, or null.
  virtual ZQNode* getNextNode(ZQNode* node) = 0;
  /// The node before `node`, or null.
  virtual ZQNode* getPreviousNode(ZQNode* node) = 0;
};

/// An iterable that also counts and indexes; both walk, so both are linear.
class ZQCOMMON_API ZQNodeList : public ZQNodeIterable {
  ZQ_DECLARE_TYPE(ZQNodeList, ZQNodeIterable)

 public:
  ZQNodeList() = default;
  ~ZQNodeList() override;

  /// Number of nodes.
  virtual int getLength() = 0;
  /// The node at `index`, or null outside the list.
  virtual ZQNode* item(int index) = 0;
};

/// The children of one node. Keeps a raw pointer: the list must not outlive the node.
class ZQCOMMON_API ChildNodeList : public ZQNodeList {
  ZQ_DECLARE_TYPE(ChildNodeList, ZQNodeList)

 public:
  explicit ChildNodeList(ZQNode* parent);
  ~ChildNodeList() override;

  ZQNode* getFirstNode() override;
  ZQNode* getLastNode() override;
  ZQNode* getNextNode(ZQNode* node) override;
  ZQNode* getPreviousNode(ZQNode* node) override;
  int getLength() override;
  ZQNode* item(int index) override;

  /// The node whose children are listed.
  ZQNode* getParentNode() const { return m_parent; }

 private:
  ZQNode* m_parent;
};

/// The descendants of a root in document order, the root left out: all of them (mode 0),
/// elements by local name (mode 1) or by namespace and local name (mode 2); "*" matches any.
class ZQCOMMON_API TreeNodeList : public ZQNodeList {
  ZQ_DECLARE_TYPE(TreeNodeList, ZQNodeList)

 public:
  enum Mode : int { MODE_ALL = 0, MODE_NAME = 1, MODE_NAME_NS = 2 };

  /// Every descendant of `root`.
  explicit TreeNodeList(ZQNode* root);
  /// Descendant elements of local name `name` ("*" for any).
  TreeNodeList(ZQNode* root, ZQName name);
  /// Descendant elements of namespace `uri` and local name `name` ("*" for any, in each).
  TreeNodeList(ZQNode* root, ZQName uri, ZQName name);
  ~TreeNodeList() override;

  ZQNode* getFirstNode() override;
  ZQNode* getLastNode() override;
  ZQNode* getNextNode(ZQNode* node) override;
  ZQNode* getPreviousNode(ZQNode* node) override;
  int getLength() override;
  ZQNode* item(int index) override;

  ZQNode* getRootNode() const { return m_root; }
  int getMode() const { return m_mode; }
  ZQName getUri() const { return m_uri; }
  ZQName getName() const { return m_name; }

 private:
  bool matches(const ZQNode* node) const;

  ZQNode* m_root;
  int m_mode;
  ZQName m_uri;
  ZQName m_name;
};

/// A small value iterator over an iterable, which it keeps counted.
class ZQCOMMON_API ZQNodeIterator {
 public:
  ZQNodeIterator() noexcept : m_iterable(), m_next(nullptr) {}
  /// Starts at the iterable's first node; null gives an empty iterator.
  explicit ZQNodeIterator(ZQNodeIterable* iterable);
  ZQNodeIterator(const ZQNodeIterator&) = default;
  ZQNodeIterator& operator=(const ZQNodeIterator&) = default;
  ~ZQNodeIterator() = default;

  /// True while a node is ahead.
  bool hasNextNode() const { return m_next != nullptr; }
  /// The node ahead, moving past it; null at the end.
  ZQNode* nextNode();
  /// True unless the position is at the first node.
  bool hasPreviousNode() const;
  /// Moves back one node and returns it; past the end, moves to the last node.
  ZQNode* previousNode();
  /// Back to the first node.
  void setToStart();
  /// Past the last node.
  void setToEnd() { m_next = nullptr; }

  ZQNodeIterable* getIterable() const { return m_iterable.get(); }

 private:
  ZQPtr<ZQNodeIterable> m_iterable;
  ZQNode* m_next;
};

/// A walker of a subtree that can stop at a node before its children (pre-visit) and after
/// them (post-visit). Setting post-visit by hand at a pre-visit skips the node's children.
class ZQCOMMON_API ZQTreeIterator {
 public:
  enum TraversalOrder : int {
    PRE_ORDER = 1,           ///< each node once, before its children
    POST_ORDER = 2,          ///< each node once, after its children
    PRE_AND_POST_ORDER = 3,  ///< before and after children; a leaf element twice, other leaves once
  };

  /// Null root and current, at a post-visit, both orders.
  ZQTreeIterator() noexcept;
  ZQTreeIterator(const ZQNode* root, const ZQNode* current, bool postVisit, TraversalOrder order);

  ZQNode* getRootNode() const { return m_root; }
  ZQNode* getCurrentNode() const { return m_current; }
  bool atPreVisit() const { return !m_postVisit; }
  bool atPostVisit() const { return m_postVisit; }
  void setAtPreVisit(bool preVisit) { m_postVisit = !preVisit; }
  void setAtPostVisit(bool postVisit) { m_postVisit = postVisit; }
  void setCurrentNode(const ZQNode* node, bool postVisit);
  TraversalOrder getTraversalOrder() const { return m_order; }
  void setTraversalOrder(TraversalOrder order) { m_order = order; }
  /// Current is the root, at its pre-visit.
  void setToStart();
  /// Current is the root, at its post-visit.
  void setToEnd();

  /// Moves one step forward and returns the node reached, or null at the end.
  ZQNode* nextNode();
  /// Moves one step backward and returns the node reached, or null at the start.
  ZQNode* previousNode();
  /// Whether nextNode would give a node; does not move.
  bool hasNextNode() const;
  /// Whether previousNode would give a node; does not move.
  bool hasPreviousNode() const;

  bool operator==(const ZQTreeIterator& other) const {
    return m_root == other.m_root && m_current == other.m_current &&
           m_postVisit == other.m_postVisit && m_order == other.m_order;
  }
  bool operator!=(const ZQTreeIterator& other) const { return !(*this == other); }

 private:
  ZQNode* m_root;
  ZQNode* m_current;
  bool m_postVisit;
  TraversalOrder m_order;
};

}  // namespace ZQCommonNS
