// Selection filters: compiling the filter list into a tree of tests and
// evaluating it on entities.
#include "sdk/SelectionFilter.h"

#include <cmath>
#include <cwctype>
#include <unordered_map>

#include "DbDatabase.h"
#include "DbProxy.h"
#include "DbSymbolTable.h"
#include "ryut.h"
#include "sdk/EntityLists.h"

namespace ryhost {

bool wildcardMatch(const OdString& text, const OdString& pattern) {
  return ryutWcMatch(text.c_str(), pattern.c_str()) == RTNORM;
}

// ---------------------------------------------------------------- the filter tree

namespace {

enum class Op : OdUInt8 {
  kEqual,
  kNotEqual,
  kLess,
  kLessEqual,
  kGreater,
  kGreaterEqual,
  kAny,
  kBitAny,
  kBitEqual
};
enum class ValueKind : OdUInt8 { kString, kReal, kInteger, kPoint };

// Answers remembered per key: a drawing has few classes and usually few
// layers, so a short list searched in order serves before a hash table.
class Memo {
 public:
  const bool* find(const void* key) const {
    for (const auto& [known, answer] : m_few) {
      if (known == key) return &answer;
    }
    if (m_few.size() < kFew) return nullptr;
    auto found = m_many.find(key);
    return found == m_many.end() ? nullptr : &found->second;
  }
  void add(const void* key, bool answer) {
    if (m_few.size() < kFew)
      m_few.emplace_back(key, answer);
    else
      m_many.emplace(key, answer);
  }

 private:
  static constexpr size_t kFew = 16;
  std::vector<std::pair<const void*, bool>> m_few;
  std::unordered_map<const void*, bool> m_many;
};

}  // namespace

struct SelectionFilter::Node {
  enum Kind { kAnd, kOr, kXor, kNot, kGroup, kXdata };
  Kind kind = kAnd;
  std::vector<Node> children;
  // A group test: the group, one operator (or one per coordinate) and the value.
  int code = 0;
  ValueKind valueKind = ValueKind::kString;
  Op ops[3] = {Op::kEqual, Op::kEqual, Op::kEqual};
  int opCount = 1;
  OdString text;
  double coords[3] = {0, 0, 0};
  OdInt64 integer = 0;
  // -3: the application names whose extended data the entity must have.
  std::vector<OdString> apps;
  // The answer of a type test per class, of a layer test per layer.
  Memo memo;
};

namespace {

using Node = SelectionFilter::Node;

bool parseOperator(OdString text, Op& op) {
  text.trimLeft().trimRight();
  static const std::pair<const wchar_t*, Op> kOperators[] = {
      {L"=", Op::kEqual}, {L"!=", Op::kNotEqual},  {L"/=", Op::kNotEqual}, {L"<>", Op::kNotEqual},
      {L"<", Op::kLess},  {L"<=", Op::kLessEqual}, {L">", Op::kGreater},   {L">=", Op::kGreaterEqual},
      {L"*", Op::kAny},   {L"&", Op::kBitAny},     {L"&=", Op::kBitEqual},
  };
  for (const auto& [name, value] : kOperators) {
    if (text == name) {
      op = value;
      return true;
    }
  }
  return false;
}

// "<AND", "OR>"…: the logical operator's kind and whether it opens.
bool parseLogical(const OdString& text, Node::Kind& kind, bool& opening) {
  OdString name;
  if (text.getLength() > 1 && text[0] == L'<' && std::iswalpha(static_cast<wint_t>(text[1]))) {
    opening = true;
    name = text.mid(1);
  } else if (text.getLength() > 1 && text[text.getLength() - 1] == L'>' &&
             std::iswalpha(static_cast<wint_t>(text[text.getLength() - 2]))) {
    opening = false;
    name = text.left(text.getLength() - 1);
  } else {
    return false;
  }
  if (name == L"AND")
    kind = Node::kAnd;
  else if (name == L"OR")
    kind = Node::kOr;
  else if (name == L"XOR")
    kind = Node::kXor;
  else if (name == L"NOT")
    kind = Node::kNot;
  else
    return false;
  return true;
}

const wchar_t* logicalName(Node::Kind kind) {
  switch (kind) {
    case Node::kOr: return L"OR";
    case Node::kXor: return L"XOR";
    case Node::kNot: return L"NOT";
    default: return L"AND";
  }
}

bool failWith(OdString* reason, const OdString& why) {
  if (reason) *reason = why;
  return false;
}

// A group test from one filter buffer (operator "=" until told otherwise).
bool makeGroupTest(const resbuf* rb, Node& node, OdString* reason) {
  node.kind = Node::kGroup;
  node.code = rb->restype == RTDXF0 ? 0 : rb->restype;
  const int code = node.code;
  if (code < 0 || (code >= 5000 && rb->restype != RTDXF0)) {
    return failWith(reason, OdString().format(L"group %d cannot be filtered on", code));
  }
  if (code == 0 || code == 8) {
    node.valueKind = ValueKind::kString;
  } else {
    switch (OdDxf::valueTypeOf(code)) {
      case OdDxf::ValueType::kString:
      case OdDxf::ValueType::kHandle: node.valueKind = ValueKind::kString; break;
      case OdDxf::ValueType::kDouble: node.valueKind = ValueKind::kReal; break;
      case OdDxf::ValueType::kPoint: node.valueKind = ValueKind::kPoint; break;
      case OdDxf::ValueType::kInt16:
      case OdDxf::ValueType::kBool:
        node.valueKind = ValueKind::kInteger;
        node.integer = rb->resval.rint;
        break;
      case OdDxf::ValueType::kInt32:
        node.valueKind = ValueKind::kInteger;
        node.integer = rb->resval.rlong;
        break;
      case OdDxf::ValueType::kInt64:
        node.valueKind = ValueKind::kInteger;
        node.integer = rb->resval.mnInt64;
        break;
      case OdDxf::ValueType::kBinary:
        return failWith(reason, OdString().format(L"group %d cannot be filtered on", code));
    }
  }
  if (node.valueKind == ValueKind::kString) node.text = rb->resval.rstring ? rb->resval.rstring : L"";
  if (node.valueKind == ValueKind::kReal) node.coords[0] = rb->resval.rreal;
  if (node.valueKind == ValueKind::kPoint) std::copy(rb->resval.rpoint, rb->resval.rpoint + 3, node.coords);
  return true;
}

// The operator text of a -4 group that applies to the next group.
bool applyRelational(const OdString& text, Node& node, OdString* reason) {
  int start = 0, count = 0;
  for (;;) {
    int comma = text.find(L',', start);
    OdString part = text.mid(start, comma < 0 ? -1 : comma - start);
    if (count == 3 || !parseOperator(part, node.ops[count]))
      return failWith(reason, L"bad operator \"" + text + L"\"");
    ++count;
    if (comma < 0) break;
    start = comma + 1;
  }
  if (count > 1 && node.valueKind != ValueKind::kPoint) {
    return failWith(reason, L"operator \"" + text + L"\" for a group that is not a point");
  }
  node.opCount = count;
  return true;
}

// Reads tests up to the closing operator (or the end of the list when closing is null).
bool parseSequence(const resbuf*& rb, std::vector<Node>& out, const OdString* closing, bool& needsXdata,
                   OdString* reason) {
  while (rb) {
    if (rb->restype == -4) {
      OdString op = rb->resval.rstring ? rb->resval.rstring : L"";
      op.trimLeft().trimRight();
      op.makeUpper();
      Node::Kind kind;
      bool opening = false;
      if (parseLogical(op, kind, opening)) {
        rb = rb->rbnext;
        if (!opening) {
          if (closing && op == *closing) return true;
          return failWith(reason, L"unexpected \"" + op + L"\"");
        }
        Node group;
        group.kind = kind;
        const OdString end = OdString(logicalName(kind)) + L">";
        if (!parseSequence(rb, group.children, &end, needsXdata, reason)) return false;
        const size_t n = group.children.size();
        if ((kind == Node::kNot && n != 1) || (kind == Node::kXor && n != 2) || n == 0) {
          return failWith(reason, L"wrong number of operands for \"<" + OdString(logicalName(kind)) + L"\"");
        }
        out.push_back(std::move(group));
        continue;
      }
      rb = rb->rbnext;
      if (!rb || rb->restype == -4 || rb->restype == -3)
        return failWith(reason, L"\"" + op + L"\" applies to no group");
      Node test;
      if (!makeGroupTest(rb, test, reason) || !applyRelational(op, test, reason)) return false;
      if (test.code >= 1000) needsXdata = true;
      out.push_back(std::move(test));
      rb = rb->rbnext;
      continue;
    }
    if (rb->restype == -3) {
      Node xdata;
      xdata.kind = Node::kXdata;
      for (rb = rb->rbnext; rb && rb->restype == 1001; rb = rb->rbnext) {
        xdata.apps.push_back(rb->resval.rstring ? rb->resval.rstring : L"");
      }
      out.push_back(std::move(xdata));
      continue;
    }
    Node test;
    if (!makeGroupTest(rb, test, reason)) return false;
    if (test.code >= 1000) needsXdata = true;
    out.push_back(std::move(test));
    rb = rb->rbnext;
  }
  if (closing) return failWith(reason, L"missing \"" + *closing + L"\"");
  return true;
}

// ---------------------------------------------------------------- evaluation

// What the tests read of one entity: its type, layer and colour directly,
// its group list when first needed.
class EntityView {
 public:
  // tags: storage for the entity's groups, reused from entity to entity.
  EntityView(const OdDbEntity* entity, bool withXdata, OdDxfTagList& tags)
      : m_entity(entity), m_withXdata(withXdata), m_tags(tags) {}

  const OdDbEntity* entity() const { return m_entity; }
  // The key under which a type answer is remembered: the class, unless the
  // class names its objects one by one (proxies).
  const void* classKey() const {
    OdRxClass* cls = m_entity->isA();
    return cls->isDerivedFrom(OdDbProxyEntity::desc()) ? nullptr : cls;
  }
  const void* layerKey() const { return m_entity->layerId().stub(); }
  OdString typeName() const { return m_entity->dxfName(); }
  OdString layerName() const {
    OdDbStub* stub = m_entity->layerId().stub();
    auto* layer = stub ? dynamic_cast<const OdDbSymbolTableRecord*>(stub->object) : nullptr;
    return layer ? layer->getName() : OdString();
  }
  OdInt64 color() const {
    const OdCmEntityColor& color = m_entity->entityColor();
    if (color.isByLayer()) return 256;
    if (color.isByBlock()) return 0;
    return color.colorIndex();
  }
  const OdDxfTagList& tags() {
    if (!m_built) {
      entityTags(m_entity, m_tags, m_withXdata);
      m_built = true;
    }
    return m_tags;
  }

 private:
  const OdDbEntity* m_entity;
  bool m_withXdata;
  bool m_built = false;
  OdDxfTagList& m_tags;
};

bool compare(Op op, double value, double wanted) {
  const double tolerance = 1e-10 * std::max({1.0, std::fabs(value), std::fabs(wanted)});
  const bool equal = std::fabs(value - wanted) <= tolerance;
  switch (op) {
    case Op::kEqual: return equal;
    case Op::kNotEqual: return !equal;
    case Op::kLess: return value < wanted && !equal;
    case Op::kLessEqual: return value < wanted || equal;
    case Op::kGreater: return value > wanted && !equal;
    case Op::kGreaterEqual: return value > wanted || equal;
    case Op::kAny: return true;
    case Op::kBitAny: return (static_cast<OdInt64>(value) & static_cast<OdInt64>(wanted)) != 0;
    case Op::kBitEqual: {
      const OdInt64 mask = static_cast<OdInt64>(wanted);
      return (static_cast<OdInt64>(value) & mask) == mask;
    }
  }
  return false;
}

bool compareText(Op op, const OdString& value, const OdString& pattern) {
  switch (op) {
    case Op::kEqual: return wildcardMatch(value, pattern);
    case Op::kNotEqual: return !wildcardMatch(value, pattern);
    case Op::kLess: return value.iCompare(pattern) < 0;
    case Op::kLessEqual: return value.iCompare(pattern) <= 0;
    case Op::kGreater: return value.iCompare(pattern) > 0;
    case Op::kGreaterEqual: return value.iCompare(pattern) >= 0;
    case Op::kAny: return true;
    default: return false;
  }
}

bool testText(const Node& node, const OdString& value) { return compareText(node.ops[0], value, node.text); }

bool testNumber(const Node& node, double value) {
  return compare(node.ops[0], value,
                 node.valueKind == ValueKind::kInteger ? static_cast<double>(node.integer) : node.coords[0]);
}

bool testTag(const Node& node, const OdDxfTag& tag) {
  using OdDxf::ValueType;
  switch (node.valueKind) {
    case ValueKind::kString: return testText(node, tag.type == ValueType::kString ? tag.s : tag.valueText());
    case ValueKind::kReal:
    case ValueKind::kInteger:
      if (tag.type == ValueType::kDouble || tag.type == ValueType::kPoint) return testNumber(node, tag.x);
      if (tag.type == ValueType::kString || tag.type == ValueType::kBinary) return false;
      return testNumber(node, static_cast<double>(tag.i));
    case ValueKind::kPoint: {
      if (tag.type != ValueType::kPoint) return false;
      const double value[3] = {tag.x, tag.y, tag.dims == 3 ? tag.z : 0.0};
      for (int axis = 0; axis < 3; ++axis) {
        const Op op = node.ops[node.opCount == 1 ? 0 : std::min(axis, node.opCount - 1)];
        // Two operators leave z free.
        if (node.opCount == 2 && axis == 2) continue;
        if (!compare(op, value[axis], node.coords[axis])) return false;
      }
      return true;
    }
  }
  return false;
}

// The value a group has when the entity's list leaves it out.
bool defaultTag(int code, OdDxfTag& tag) {
  switch (code) {
    case 6: tag = OdDxfTag::str(6, L"BYLAYER"); return true;
    case 39: tag = OdDxfTag::real(39, 0.0); return true;
    case 48: tag = OdDxfTag::real(48, 1.0); return true;
    case 60: tag = OdDxfTag::integer(60, 0); return true;
    case 66: tag = OdDxfTag::integer(66, 0); return true;
    case 67: tag = OdDxfTag::integer(67, 0); return true;
    case 210: tag = OdDxfTag::point(210, 0, 0, 1); return true;
    default: return false;
  }
}

bool testListGroup(const Node& node, EntityView& view) {
  bool present = false;
  for (const OdDxfTag& tag : view.tags()) {
    if (tag.code != node.code) continue;
    present = true;
    if (testTag(node, tag)) return true;
  }
  OdDxfTag fallback;
  return !present && defaultTag(node.code, fallback) && testTag(node, fallback);
}

template <class ValueFn>
bool testMemoised(Node& node, const void* key, ValueFn value) {
  if (key) {
    if (const bool* known = node.memo.find(key)) return *known;
  }
  const bool result = testText(node, value());
  if (key) node.memo.add(key, result);
  return result;
}

bool testXdata(const Node& node, const EntityView& view) {
  const OdDbObjectExtras* extras = view.entity()->extras();
  if (!extras || extras->xdata.empty()) return false;
  for (const OdString& pattern : node.apps) {
    bool found = false;
    for (const OdDxfTag& tag : extras->xdata) {
      if (tag.code == 1001 && wildcardMatch(tag.s, pattern)) {
        found = true;
        break;
      }
    }
    if (!found) return false;
  }
  return true;
}

bool evaluate(Node& node, EntityView& view) {
  switch (node.kind) {
    case Node::kAnd:
      for (Node& child : node.children) {
        if (!evaluate(child, view)) return false;
      }
      return true;
    case Node::kOr:
      for (Node& child : node.children) {
        if (evaluate(child, view)) return true;
      }
      return false;
    case Node::kXor: return evaluate(node.children[0], view) != evaluate(node.children[1], view);
    case Node::kNot: return !evaluate(node.children[0], view);
    case Node::kXdata: return testXdata(node, view);
    case Node::kGroup: break;
  }
  switch (node.code) {
    case 0: return testMemoised(node, view.classKey(), [&] { return view.typeName(); });
    case 8: return testMemoised(node, view.layerKey(), [&] { return view.layerName(); });
    case 62: return testNumber(node, static_cast<double>(view.color()));
    default: return testListGroup(node, view);
  }
}

}  // namespace

SelectionFilter::SelectionFilter() = default;
SelectionFilter::~SelectionFilter() = default;

bool SelectionFilter::compile(const resbuf* list, OdString* reason) {
  m_root.reset();
  m_needsXdata = false;
  if (!list) return true;
  auto root = std::make_unique<Node>();
  root->kind = Node::kAnd;
  if (!parseSequence(list, root->children, nullptr, m_needsXdata, reason)) return false;
  m_root = std::move(root);
  return true;
}

bool SelectionFilter::acceptsEverything() const { return !m_root || m_root->children.empty(); }

bool SelectionFilter::matches(const OdDbEntity* entity) {
  if (acceptsEverything()) return true;
  EntityView view(entity, m_needsXdata, m_tags);
  return evaluate(*m_root, view);
}

}  // namespace ryhost
