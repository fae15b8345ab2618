// Location paths of an XMLMap, turned into nodes of the model.
// Tested by tests/unit/kvxdmmap_path_test.cpp and kvxdmmap_enr_test.cpp.
#include "kvxdmmap_path.h"

#include <memory>
#include <new>
#include <string>

#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmmap_dom.h"
#include "kvxdmtext.h"

namespace xmlmap {
namespace {

/** Cuts the predicate and a leading "@" off the step's text; returns what remains. */
std::string_view separatePredicate(LocationStep* step) {
  std::string_view rest = step->text;
  const auto bracket = rest.find('[');
  if (bracket != std::string_view::npos && bracket > 0) {
    step->predicate = toString(rest.substr(bracket));
    rest = rest.substr(0, bracket);
  }
  if (rest.starts_with('@')) rest.remove_prefix(1);
  return rest;
}

/** Hands out the steps of a path that begins with "/". */
class StepWalk {
 public:
  explicit StepWalk(std::string_view path) : rest_(path) {}

  /** Whether no step follows; a single "/" at the end begins none. */
  bool atEnd() const { return rest_.empty() || rest_ == "/"; }

  std::string_view next() {
    rest_.remove_prefix(1);
    const std::string_view step = rest_.substr(0, rest_.find('/'));
    rest_.remove_prefix(step.size());
    return step;
  }

 private:
  std::string_view rest_;
};

/** Walks a path from the root and makes what is missing. The two path syntaxes derive from it. */
class PathBuilder {
 public:
  PathBuilder(XDMMainImpl* main, bool isTablePath) : main_(main), isTablePath_(isTablePath) {}

  XDMNode* build(std::string_view path) {
    if (!path.starts_with('/')) {
      fail(main_, __LINE__, 1443, "/", toString(path.substr(0, 1)));
      return nullptr;
    }
    StepWalk steps(path);
    XDMNode* reached = takeRoot(steps.next());
    while (reached && !steps.atEnd()) reached = take(steps.next());
    return reached;
  }

 protected:
  ~PathBuilder() = default;

  virtual bool separate(LocationStep* step) = 0;

  /** Finds the prefix of a step that names its namespace otherwise. */
  virtual bool resolve(LocationStep*) { return true; }

  virtual XDMElemImpl* makeRoot(LocationStep* step) = 0;

  /** What must be the name of the root that is there. */
  virtual KvbString rootName(const LocationStep& step) { return toString(step.text); }

  /** Takes note of a step, before its node is made. */
  virtual bool note(const LocationStep&) { return true; }

  /** Of several declarations with the root's prefix the last one becomes the root's namespace. */
  bool declareOnRoot(XDMElemImpl* root, const LocationStep& step, const KvbString& prefix, const KvbString& uri) {
    XDMNSImpl* declaration = root->createNamespace(prefix, uri);
    if (declaration && step.prefix.compare(prefix, true) == 0) root->setNamespace(declaration);
    return declaration != nullptr;
  }

  XDMMainImpl* const main_;

 private:
  XDMNode* takeRoot(std::string_view text) {
    if (text.empty()) {
      fail(main_, __LINE__, 1443, "root", "<empty>");
      return nullptr;
    }
    LocationStep step(text);
    if (!separate(&step)) return nullptr;
    current_ = main_->getRootNode() ? findRoot(&step) : makeRoot(&step);
    return current_ && note(step) ? current_ : nullptr;
  }

  XDMElemImpl* findRoot(LocationStep* step) {
    if (!resolve(step)) return nullptr;
    XDMElemImpl* root = main_->root();
    const KvbString wanted = rootName(*step);
    if (root->getXPath().mid(1, -1).compare(wanted, true) == 0) return root;
    fail(main_, __LINE__, 1443, root->getXPath(), wanted);
    return nullptr;
  }

  XDMNode* take(std::string_view text) {
    if (text.empty()) {
      fail(main_, __LINE__, 1443, "step", "<empty>");
      return nullptr;
    }
    LocationStep step(text);
    step.isAttribute = text.starts_with('@');
    XDMNSImpl* declaration = nullptr;
    if (!separate(&step) || !resolve(&step) || !lookUp(step, &declaration) || !note(step)) return nullptr;
    XDMNode* node = step.isAttribute ? makeAttribute(step, declaration) : makeChild(step, declaration);
    if (!node) fail(main_, __LINE__, 1445, toString(text));
    return node;
  }

  bool lookUp(const LocationStep& step, XDMNSImpl** declaration) {
    if (isEmpty(step.prefix)) return true;
    *declaration = current_->lookupNamespace(step.prefix);
    return *declaration || fail(main_, __LINE__, 1444, toString(step.text));
  }

  XDMNode* makeChild(const LocationStep& step, XDMNSImpl* declaration) {
    bool created = false;
    XDMElemImpl* child = current_->createChild(step.prefix, step.localName, &created);
    if (!child || !child->hasXPath()) return nullptr;
    if (created && declaration) child->setNamespace(declaration);
    if (!isTablePath_) child->setBeenHere();
    current_ = child;
    return child;
  }

  // The element stays the current one, so a step behind an attribute goes to the attribute's element.
  XDMNode* makeAttribute(const LocationStep& step, XDMNSImpl* declaration) {
    bool created = false;
    return current_->createAttribute(declaration, step.localName, &created);
  }

  const bool isTablePath_;
  XDMElemImpl* current_ = nullptr;
};

class PlainPathBuilder final : public PathBuilder {
 public:
  PlainPathBuilder(XDMMainImpl* main, const KvDomNode& output, bool isTablePath)
      : PathBuilder(main, isTablePath), output_(output) {}

 private:
  bool separate(LocationStep* step) override { return separateXPathStep(step); }

  XDMElemImpl* makeRoot(LocationStep* step) override {
    XDMElemImpl* root = main_->createRoot(step->prefix, step->localName);
    return root && root->hasXPath() && declareHeading(root, *step) ? root : nullptr;
  }

  bool declareHeading(XDMElemImpl* root, const LocationStep& rootStep) {
    for (const KvDomNode& entry : ChildrenNamed(firstChildNamed(output_, "HEADING"), "ATTRIBUTE")) {
      const KvbString name = entry.getAttributeValue(attributeNames().name);
      if (!isNamespaceEntry(name)) continue;
      LocationStep step(view(name));
      if (!separateXPathStep(&step)) return false;
      const KvbString prefix = step.prefix.isNull() ? KvbString() : step.localName;
      if (!declareOnRoot(root, rootStep, prefix, entry.getAttributeValue(attributeNames().value))) return false;
    }
    return true;
  }

  const KvDomNode output_;
};

class ExtendedPathBuilder final : public PathBuilder {
 public:
  ExtendedPathBuilder(XDMMainImpl* main, const KvDomNode& namespaces, bool isTablePath)
      : PathBuilder(main, isTablePath), namespaces_(namespaces) {}

  /** The path that was built, with prefixes in place of references. */
  const KvbString& resolvedXPath() const { return resolvedXPath_; }

 private:
  bool separate(LocationStep* step) override { return separateXPathENRStep(step); }

  bool resolve(LocationStep* step) override {
    if (step->reference.isNull()) return true;
    bool failed = false;
    const int id = step->reference.asInt(&failed);
    if (failed || id < 1 || id > main_->getNSList()->getCount()) return fail(main_, __LINE__, 1420);
    step->prefix = declaration(id)->prefix();
    return true;
  }

  XDMElemImpl* makeRoot(LocationStep* step) override {
    if (!readDeclarations() || !resolve(step)) return nullptr;
    XDMElemImpl* root = main_->createRoot(step->prefix, step->localName);
    return root && root->hasXPath() && declareAll(root, *step) ? root : nullptr;
  }

  KvbString rootName(const LocationStep& step) override {
    if (step.reference.isNull()) return PathBuilder::rootName(step);
    if (isEmpty(step.prefix)) return step.localName;
    return toString(std::string(view(step.prefix)).append(":").append(view(step.localName)));
  }

  bool note(const LocationStep& step) override {
    bool failed = false;
    resolvedXPath_.append(step.isAttribute ? "/@" : "/", &failed);
    if (!isEmpty(step.prefix)) {
      resolvedXPath_.append(step.prefix, &failed);
      resolvedXPath_.append(":", &failed);
    }
    resolvedXPath_.append(step.localName, &failed);
    resolvedXPath_.append(step.predicate, &failed);
    return !failed || fail(main_, __LINE__, 29, "(resolved XPath)");
  }

  bool readDeclarations() {
    for (const KvDomNode& node : ChildrenNamed(namespaces_, "NS")) {
      if (!readDeclaration(node)) return false;
    }
    return true;
  }

  bool readDeclaration(const KvDomNode& node) {
    const KvbString uri = trimmedText(node);
    std::unique_ptr<XDMNSImpl> made(new (std::nothrow)
                                        XDMNSImpl(nullptr, node.getAttributeValue(attributeNames().prefix), uri));
    if (!made) return fail(main_, __LINE__, 29, "(namespace)");
    bool failed = false;
    const int id = node.getAttributeValue(attributeNames().id).asInt(&failed);
    if (failed || !isNextId(id)) return fail(main_, __LINE__, 1420);
    const bool kept = main_->getNSList()->insertItemAt(id - 1, made.get());
    if (kept) made.release();
    return kept || fail(main_, __LINE__, 29, "(insert namespace)");
  }

  // An id goes right behind the one before it; a repeated one thereby ahead of its earlier declaration. Only id 1,
  // which has none before it, cannot come twice.
  bool isNextId(int id) const {
    const int count = main_->getNSList()->getCount();
    return id == 1 ? count == 0 : id > 1 && id - 1 <= count;
  }

  bool declareAll(XDMElemImpl* root, const LocationStep& rootStep) {
    for (int id = 1; id <= main_->getNSList()->getCount(); ++id) {
      if (!declareOnRoot(root, rootStep, declaration(id)->prefix(), declaration(id)->uri())) {
        return fail(main_, __LINE__, 29, "(element namespace)");
      }
    }
    return true;
  }

  XDMNSImpl* declaration(int id) const { return static_cast<XDMNSImpl*>(main_->getNSList()->getItem(id - 1)); }

  const KvDomNode namespaces_;
  KvbString resolvedXPath_;
};

}  // namespace

bool isNamespaceEntry(const KvbString& name) { return view(name) == "xmlns" || view(name).starts_with("xmlns:"); }

bool separateXPathStep(LocationStep* step) {
  const std::string_view rest = separatePredicate(step);
  const auto colon = rest.find(':');
  const bool hasPrefix = colon != std::string_view::npos && colon > 0;
  if (hasPrefix) step->prefix = toString(rest.substr(0, colon));
  step->localName = toString(hasPrefix ? rest.substr(colon + 1) : rest);
  return true;
}

bool separateXPathENRStep(LocationStep* step) {
  std::string_view rest = separatePredicate(step);
  if (rest.starts_with('{')) {
    const auto brace = rest.find('}');
    if (brace == std::string_view::npos || brace == 1) return false;
    step->reference = toString(rest.substr(1, brace - 1));
    rest.remove_prefix(brace + 1);
  }
  step->localName = toString(rest);
  return true;
}

XDMNode* buildFromXPath(XDMMainImpl* main, const KvbString& path, const KvDomNode& output, bool isTablePath) {
  return PlainPathBuilder(main, output, isTablePath).build(view(path));
}

XDMNode* buildFromXPathENR(XDMMainImpl* main, KvbString* path, const KvDomNode& namespaces, bool isTablePath) {
  ExtendedPathBuilder builder(main, namespaces, isTablePath);
  XDMNode* node = builder.build(view(*path));
  if (node) *path = builder.resolvedXPath();
  return node;
}

}  // namespace xmlmap
