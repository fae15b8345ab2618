// The marking pass: projects the selected columns onto the tree and gathers the namespace prolog of the queries.
// Also cuts XPaths into steps.
// Tested by tests/unit/kvxdmxqy_mark_test.cpp and tests/unit/kvxdm_parsexpath_test.cpp.
#include <algorithm>
#include <memory>
#include <string_view>

#include "kvxdmcol.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmxqy_steps.h"
#include "kvxdmxqy_text.h"

namespace {

constexpr char unit[] = "kvxdmxqy";

/** Cuts steps from the end of an XPath. Without a "/" left the step is all that remains, and nothing remains. */
class LastSteps {
 public:
  explicit LastSteps(std::string_view xpath) noexcept : remaining_(xpath) {}

  std::string_view cut() noexcept {
    const std::size_t slash = remaining_.rfind('/');
    const bool found = slash != std::string_view::npos;
    const std::string_view step = found ? remaining_.substr(slash + 1) : remaining_;
    remaining_ = found ? remaining_.substr(0, slash) : std::string_view();
    return step;
  }

 private:
  std::string_view remaining_;
};

}  // namespace

bool XDMMainImpl::markSelected() {
  if (!root_) {
    setErrorMessage(message(unit, __LINE__, 1423));
    return false;
  }
  if (selectedColumns_.getCount() == 0) {
    setErrorMessage(message(unit, __LINE__, 1441));
    return false;
  }
  columnsByXPath_.clear();
  root_->clearSelectedXPaths();
  namespaceProlog_.setNull();
  namespaceMap_.clear();
  ancestorsMarked_ = true;
  ++markingPass_;
  bool marked = true;
  for (int i = 0; marked && i < selectedColumns_.getCount(); ++i) marked = markColumn(column(i));
  namespaceMap_.clear();
  return marked;
}

bool XDMMainImpl::markColumn(XDMColumnImpl* column) {
  const KvbString xpath = column->getXPath();
  LastSteps steps(view(xpath));
  XDMNode* node = column->getNode();
  if (node->nodeType() == 0) {
    if (!static_cast<XDMAttrImpl*>(node)->addSelectedXPath(steps.cut())) return false;
  } else {
    XDMElemImpl* element = static_cast<XDMElemImpl*>(node);
    if (!element->addSelectedXPath(steps.cut()) || !markNamespaces(element)) return false;
  }
  for (XDMElemImpl* ancestor = implOf(node->getParent()); ancestor; ancestor = ancestor->parent()) {
    // An ancestor without room for its step does not end the pass; the generator that goes by these steps fails later.
    if (!ancestor->addSelectedXPath(steps.cut())) ancestorsMarked_ = false;
    if (!markNamespaces(ancestor)) return false;
  }
  columnsByXPath_[xpath] = column;
  return true;
}

bool XDMMainImpl::markNamespaces(XDMElemImpl* element) {
  if (element->declaredInPass() == markingPass_) return true;
  return guarded(this, "(XQuery Namespaces)", nullptr, false, [&] {
    bool recorded = true;
    for (const XDMNSImpl* ns = element->firstNamespace(); ns; ns = XDMElemImpl::next(ns)) {
      if (!declareNamespace(*ns)) return false;
      // Without a URI nothing is recorded, and the declaration is written again whenever it is met.
      if (isEmpty(ns->uri())) recorded = false;
    }
    if (recorded) element->setDeclaredInPass(markingPass_);
    return true;
  });
}

bool XDMMainImpl::declareNamespace(const XDMNSImpl& declaration) {
  KvbString& recorded = namespaceMap_[declaration.prefix()];
  if (isEmpty(recorded)) {
    recorded = declaration.uri();
    return appendToProlog(declaration.prefix(), declaration.uri());
  }
  if (recorded.compare(declaration.uri(), true) == 0) return true;
  setErrorMessage(message(unit, __LINE__, 1442, declaration.prefix(), declaration.uri(), recorded));
  namespaceMap_.clear();
  return false;
}

bool XDMMainImpl::appendToProlog(const KvbString& prefix, const KvbString& uri) noexcept {
  bool failed = false;
  QueryText prolog(namespaceProlog_, failed);
  if (isEmpty(namespaceProlog_)) prolog << "\n\n";
  if (isEmpty(prefix)) {
    prolog << "declare default element namespace \"";
  } else {
    prolog << "declare namespace " << prefix << " = \"";
  }
  prolog << uri << "\";\n";
  if (failed) setErrorMessage(message(unit, __LINE__, 29, "(XQuery Namespaces)"));
  return !failed;
}

KvbString* XDMMainImpl::parseXPath(const KvbString& xpath, int* count) noexcept {
  const std::string_view text = view(xpath);
  const std::size_t capacity = text.size() < 2 ? 1 : 1 + std::count(text.begin() + 1, text.end(), '/');
  std::unique_ptr<KvbString[]> steps(new (std::nothrow) KvbString[capacity]);
  bool failed = !steps;
  *count = 0;
  XPathSteps remaining(text);
  for (std::string_view step; !failed && remaining.next(&step); ++*count) {
    steps[*count].append(step.data(), static_cast<unsigned>(step.size()), &failed);
  }
  if (!failed) return steps.release();
  setErrorMessage(message(unit, __LINE__, 29, "(XPath step array)"));
  *count = 0;
  return nullptr;
}
